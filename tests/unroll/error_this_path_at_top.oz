model E;
class C(k) end;
instance a[i] inherits C(this`h) hide: h; end;
