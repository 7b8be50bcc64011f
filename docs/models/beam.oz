model Beam;

(* Deflection of a cantilever under loads at its nodes, by the values of a given shape. *)
real array[n] deflection[int n_, real array[n] load_, real stiffness_] :=
  Module[{real array[n] w, int i},
    For[i = 1, i <= n, i = i + 1, w[[i]] = load[[i]]*i^3/(3*stiffness)];
    w];

{real, real} range[real array[3, 2] table_, int i_] :=
  {Min[table[[i]]], Max[0, table[[i, 2]]]};

real array[2] turned[real array[3, 2] a_, real array[3] v_] := v . a;
