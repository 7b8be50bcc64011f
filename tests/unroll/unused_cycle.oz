model Quiet;

class A inherits B hide: x; end;
class B inherits A hide: y := x; end;

class P(m) hide: x := m; end;
class Q(q) inherits P(this) hide: z := y; end;
instance a inherits Q end;
