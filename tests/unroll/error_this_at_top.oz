model E;
class C(k) end;
instance a inherits C({1, this}) end;
