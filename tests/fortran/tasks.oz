(* Parallel loops: one range, two ranges, and a body that stays a loop. *)
model Tasks;

real bump[real x_, real y_] := x*x + y;

real array[4] scaled[real array[4] x_, real c_] :=
  Module[{int i, real array[4] y},
    ForAll[y[[i]] = bump[x[[i]], c], {i, 1, 4}];
    y];

real array[2, 3] grid[real h_] :=
  Module[{int i, int j, real array[2, 3] g},
    ForAll[g[[i, j]] = i*h + j, {{i, 1, 2}, {j, 1, 3}}];
    g];

real array[4] twice[real array[4] x_] :=
  Module[{int i, real array[4] y, real t},
    ForAll[CompoundExpression[t = 2*x[[i]], y[[i]] = t], {i, 1, 4}];
    y];
