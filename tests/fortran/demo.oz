(* A file set in Fortran: a variable, recursion, a result of unknown size, several results, a callback, an external. *)
model Demo;

real array[3, 2] table;

int factorial[int n_] := If[n < 2, 1, n*factorial[n - 1]];

real host[real x_, int n_, real array[n] y_] := externinfo "" "Demo`" "Alg" function(Input x, Input n, Input y);
real bessel[int order_, real x_] := externinfo "sp" "Special`" "C" function(Input order, Input x);

real array[0] pair[real x_] := {x, host[x, 2, {1.0, 2.0}]};

{real, int} largest[real array[3, 2] a_] :=
  Module[{real most = a[[1, 1]], int row = 1, int i},
    For[i = 2, i <= 3, i = i + 1,
      If[a[[i, 1]] > most, most = a[[i, 1]]; row = i]];
    {most, row}];

real reach[real x_] :=
  Module[{real most, int row},
    {most, row} = largest[table];
    ArcSinh[most + x]*bessel[row, x]/Cot[x]];

(* Names that are longer than the target allows, and a line that is. *)
real named[real distanceOfTheFarthestPointOnTheRim_, real distanceOfTheFarthestPointOnTheHub_] :=
  distanceOfTheFarthestPointOnTheRim*Sqrt[distanceOfTheFarthestPointOnTheRim^2 + distanceOfTheFarthestPointOnTheHub^2]
  + distanceOfTheFarthestPointOnTheHub;
