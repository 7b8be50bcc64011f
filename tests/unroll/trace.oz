model Trace;

class Top end;
class W(r) inherits Top hide: x := r; end W;
class C(a, b) inherits W(a + 1) part p inherits W(b); end C;
instance i inherits C(1, {2}) part q[k] inherits W(k); end;
