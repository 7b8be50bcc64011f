model Places;

(* A formal in a place of names gives way to its value, whatever that is; a member of a set to its indexed name. *)
class C(a)
  hide:
    m := a::usage;
end C;

instance one inherits C(1) end;
instance call inherits C(f[2]) end;

instance s[i]
  hide:
    v := 1;
    m := v::usage;
    real g[real x_] := externinfo "p" "c" "C" function(Input v, Output v, InOut x);
end s;
