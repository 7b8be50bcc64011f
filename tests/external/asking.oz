(* Functions that the host answers, and one that asks it: a value, an array, nothing. *)
model Asking;

real rate[real x_, int n_, real array[0] v_, String s_] := externinfo "" "Host`" "Alg" function();
int array[2, 2] table[int n_] := externinfo "" "Host`" "Alg" function();
{} note[String s_] := externinfo "" "Host`" "Alg" procedure();

real fed[real x_, int n_, String s_] :=
  Module[{real array[2] v, int array[2, 2] t},
    v[[1]] = x;
    v[[2]] = 2*x;
    note[s];
    t = table[n];
    rate[x, n, v, s] + 10*t[[1, 2]]];
