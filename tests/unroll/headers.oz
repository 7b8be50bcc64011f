model Heads;

(* What a header says is said in the object around. *)
class D(k) hide: x := k; end D;
class F(k) hide: x := k; q := 3; end F;
class C(k, d)
  part p inherits D(k), D(d`x), D(this`x), D(this), D(h[k]), F(q);
  part r[i] inherits D(k + i);
  hide: y := r[k]`x + b[k]`x + d`p`x; h; x;
end C;

instance host inherits D(2) end;
instance a inherits C(g, host) hide: g; end;
instance n
  part m inherits D(g`x), D(this`g);
  part g inherits D(1);
end n;
instance t[j]
  part p inherits D(h + j), D(this`h[j]);
  hide: h;
end t;
