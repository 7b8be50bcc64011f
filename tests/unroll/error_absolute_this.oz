model E;
class D(y) end;
class C(m) inherits D(m`x) end;
class B(q) inherits C(this) end;
instance a inherits B end;
