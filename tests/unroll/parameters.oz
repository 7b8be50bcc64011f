model Params;

(* A formal stands for its value everywhere: head of a call, start of a path, size of an array, left side. *)
class Inner(u) hide: iu := u; end Inner;

class C(a, b) inherits Inner(a + b)
  hide:
    sum := a + b + c;
    c := b`x;
    d := a[1] + b`p`q[a];
    f[a_] := a + b;
    a[2] := 7;
    h[a] := k[b];
    here := this`c + k[this];
end C;

class Sized(n)
  hide:
    array[n, n + 1] v;
    real array[n] w;
end Sized;

instance host hide: x := 1; end;

instance i inherits C(m, host) hide: m := 2; end;

(* Formals are replaced from the last to the first: b becomes a, and that a becomes 2*b. *)
class Swap(a, b) hide: s := a - b; t[b] := a; end Swap;
instance j inherits Swap(2*b, a) end;

instance few inherits Swap(1) end;
instance many inherits Swap(1, 2, 3) end;
instance less inherits Inner end;
class Own(o) inherits Inner(this) end Own;
instance own inherits Own end;

instance sized inherits Sized(3) end;
