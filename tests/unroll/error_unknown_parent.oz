model E;
class C inherits Nowhere end;
instance a inherits C end;
