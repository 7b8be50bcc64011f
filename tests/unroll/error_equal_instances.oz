model E;
instance a end;
class C end;
instance a[i] end;
