model Names;

(* Inside of a set its index comes ahead of what the model and the classes call the same. *)
real i := 7;

class C(i, k) hide: x := i + k; y[k] := i; end C;

instance s[i] inherits C(i, i*2)
  part p[k] inherits C(k, i);
  hide: z := i;
end s;

instance t inherits C(i, 1) hide: w := s[i]`z; end t;
