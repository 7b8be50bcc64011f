(*
  Forms that every target has, one function for each group: compiled in two languages they give the same numbers.
*)
model Agree;

real circular[real x_] := Sin[x] + Cos[x] + Tan[x] + Sinh[x] + Cosh[x] + Tanh[x];
real inverse[real x_] := ArcSin[x/4] + ArcCos[x/4] + ArcTan[x] + ArcSinh[x] + ArcCosh[x^2 + 2] + ArcTanh[x/4];
real reciprocal[real x_] := Cot[x] + Coth[x] + Sec[x] + Sech[x] + Csc[x] + Csch[x];
real growth[real x_] := Exp[x] + Log[x^2 + 1] + Sqrt[Abs[x]] + E*x + Pi;
real ofIntegers[int n_] := Sqrt[n^2] + Exp[1] + Log[n^2 + 1] + Sin[n] + Cos[n] + ArcTan[n] + Tanh[n];
real powers[real x_] := x^3 + (x^2 + 1)^0.5 + 2.0^x + Abs[x]^(1/3) - x^(-2);
int rounded[real x_] := Floor[x] + 10*Ceiling[x] + 100*Round[x] + 1000*IntegerPart[x] + 10000*Sign[x];
int halves[int n_] := Round[n + 0.5];
int signs[int n_] := Sign[n] + 10*Sign[n*0.5] + Floor[n] + Ceiling[n];
real fraction[real x_] := FractionalPart[x];
int remainder[int a_, int b_] := Mod[a, b];
real remainders[real x_, real y_, int n_] := Mod[x, y] + 10*Mod[x, n] + 100*Mod[n, y];
int quotient[int n_] := Quotient[n^2, 3];
real extremes[int n_, real x_] := Max[0, x] + 10*Min[n, x] + 100*Max[n, 1] + 1000*Min[x, 0.5];
real angle[real x_, real y_, int n_] := ArcTan[x, y] + 10*ArcTan[n, x] + 100*ArcTan[n, 1];
real ratio[int a_, int b_] := a/b + 1/3;
bool chain[real x_, real y_, int n_] := x < y && !(n == 1) || x + y > 0.5 && n != 2;
real chosen[real x_, real y_] := Module[{real s}, s = If[x > y, x - y, y*2]; If[s > 3, s = 3]; s];

real product[real array[3] a_, real array[3] b_] := a . b;
real array[2] applied[real array[2, 3] a_, real array[3] v_] := a . v;
real array[3] fromLeft[real array[2] v_, real array[2, 3] a_] := v . a;
real array[2, 4] matrices[real array[2, 3] a_, real array[3, 4] b_] := a . b;
real array[3, 2] turned[real array[2, 3] a_] := Transpose[a];
real array[3] across[real array[3] a_, real array[3] b_] := Cross[a, b];
real array[2, 3] outer[real array[2] a_, real array[3] b_] := OuterProduct[a, b];
real array[3] elements[real array[3] a_, real x_] := Sin[a]*x + 2*a - 1;
real bounds[real array[4] a_] := Max[a] - 3*Min[a];

real array[2, 3] rows[real x_, real y_] := {{x, y, 1}, {2, x*y, 3.5}};
real array[5] joined[real array[2] a_, real array[3] b_] := Join[a, b];
real array[4] shortened[real array[5] a_] := Drop[a, 1];
real array[0] longer[real array[n] a_, real x_, int n_] := Module[{real array[n] b}, b = x*a; b];
real element[real array[2, 3] a_, real array[3, 2] b_] := (a . b)[[1, 2]] + a[[2, 3]] - b[[3, 1]];
real array[3] section[real array[2, 3] a_, real array[3] v_, real array[2] u_, int i_] :=
  Module[{real array[2, 3] b}, b = a; b[[i]] = v; b[[_, 2]] = u; b[[1]] + b[[2]]];
int sizes[real array[2, 3] a_] := 10*Dimensions[a][[1]] + Dimensions[a][[2]];
int array[2] shapes[real array[2, 3] a_] := Dimensions[a];

{real, int, real array[2]} several[real x_, int n_] := {x*n, n + 1, {x, -x}};
real receiver[real x_, int n_] := Module[{real p, int q, real array[2] v}, {p, q, v} = several[x, n]; p + 10*q + v[[1]]];
