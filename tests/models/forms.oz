(*
  One function for each way a body can look.
*)
model Forms;

real scale := 2.0;
complex pole := 1.0 + 2.0*I;
real array[2, 3] table;

real branches[real x_, int n_] := Which[x < 0, 0.0, n == 1, x, True, Sqrt[x]];

real chosen[real x_] :=
  Module[{real y},
    If[x > 1, y = x - 1; y = y^2, If[x > 0, y = x, y = -x]];
    Which[y > 10, y = 10, y > 5, y = 5];
    y];

real nested[real a_] := Module[{real b = a}, b = b + 1; Module[{real c}, c = b^3; c]];

{} report[real x_] := CompoundExpression[Print["x is ", x], If[x > 0, Print[x]]];

real sequence[real x_] := CompoundExpression[scale = x, scale*x];

complex turned[complex z_, real phi_] := z*Exp[I*phi]/pole;

real array[2, 2] product[real array[2, 3] a_, real array[3, 2] b_] := a . b;

real array[3] line[int i_, real array[4, 3] a_] := a[[i]];

real array[4, 3] raised[real array[4, 3] a_, real array[3] v_] :=
  Module[{real array[4, 3] b},
    b = a;
    b[[1]] = v;
    b[[2, 3]] = 1.5;
    b];

{real, int, real array[2]} several[real x_] := {x*x, 7, {x, -x}};

real user[real x_] :=
  Module[{real p, int n, real array[2] v},
    {p, n, v} = several[x];
    {p, n} = {p + 1, n - 1};
    p - (-x) + n + v[[2]]];

int remainder[int a_, int b_] := Mod[a, b] - Quotient[a, b];

bool between[real x_, real low_, real high_] := low <= x < high && !(x == 0 || x != x);

real steps[int n_] :=
  Module[{real s = 0.0, int i = 0},
    While[True, i = i + 1; If[i > n, Break[]]; s = s + 1.0*^-3*i];
    s];

int factorial[int n_] := If[n <= 1, 1, n*factorial[n - 1]];

real asked[real x_] := externinfo "" "" "Alg" function();
