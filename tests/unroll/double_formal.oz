model Twice;

(* The last of two formals of one name counts in the class; the first one's value gets into the other's definition. *)
class C(a, a) hide: x := a; end C;
instance i inherits C(1, 2) end;
