(* Operations on whole arrays, one function for each family; those that Fortran has, too, are in fortran/agree.oz. *)
model Arrays;

real array[2] picked[real array[4] v_] := v[[2|3]];
real array[3] tail[real array[4] v_] := v[[2|_]];
real array[2, 2] corner[real array[3, 3] m_] := m[[_|2, 2|_]];
real array[3] column[real array[3, 3] m_, int j_] := m[[All, j]];
real array[1, 3] lone[real array[3, 3] m_] := m[[{2}]];
real last[real array[4] v_] := v[[-1]];
real element[real array[3, 3] m_] := m[[2]][[3]];
real array[2] linear[real array[2] a_, real array[2] b_, real s_] := s*a + b/2 - a/s + 1;
real array[2] chosen[real array[2] a_, real array[2] b_, bool c_] := If[c, a + b, a - b];
real array[2] shifted[real array[2] a_, bool c_] := 1 + If[c, a + 1, 2*a];
real array[2] products[real array[2] a_, real array[2] b_] := a*b*a;
real array[2] quotients[real array[2] a_, real array[2] b_] := a/b;
real array[2] integerQuotients[int array[2] a_, int array[2] b_] := a/b;
int array[2] wholes[int array[2] a_, int array[2] b_] := Quotient[a, b];
int array[2] rounded[real array[2] a_] := Floor[a] + Ceiling[a] + Round[a] + IntegerPart[a] + Sign[a];
real array[2] functions[real array[2] a_] := Sin[a] + Sqrt[Abs[a]] + Exp[a]*2 + FractionalPart[a] + a^2 + Cot[a] + Mod[a, 2];
complex array[2] waves[complex array[2] z_] := Exp[I*z] + Conjugate[z];
real array[2] sizes[complex array[2] z_] := Abs[z] + Re[z] + Im[z] + Arg[z];
complex array[2] mixed[complex array[2] z_, complex w_, real x_] := z + I*(w + I*x);
bool array[2] inside[real array[2] a_, bool c_] := !(a == 1) && -3 <= a < 0 && c;
bool same[real array[2] a_, real array[2] b_] := Equal[a, a] && Unequal[a, b];
complex root[complex z_] := Sqrt[z] + Complex[1, 2]*z^2;
real array[2] twice[real array[2, 2] m_, real array[2] a_] := m . m . a;
real array[6] joined[real array[2] a_, real array[2] b_] := Join[a, b, a];
real array[4] ends[real array[2] a_] := Append[Prepend[a, 0.5], 1.5];
real array[2] dropped[real array[4] a_, int n_] := Drop[Drop[a, n], {2}];
real array[2] middle[real array[4] a_] := Drop[Drop[a, {1, 1}], -1];
real array[6] flat[real array[2, 3] m_] := Flatten[m];
real array[4, 2] flatter[real array[2, 2, 2] t_] := Flatten[t, 1];
real array[3] statistics[real array[5] v_] := {Mean[v], Variance[v], Median[v]};
real array[2] totals[real array[2, 2] m_] := Total[m] + Mean[m] + StandardDeviation[m];
real array[5] ordered[real array[5] v_] := Sort[v];
real quantiles[real array[5] v_] := Quantile[v, 0.5, {{1, -1}, {0, 1}}];
real extremes[real array[5] v_] := Max[v] - Min[v] + Max[v[[1]], 2] + Min[1, 2.5];
int array[12] twelve[] := {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
real array[3, 3] sections[real array[3] v_] :=
  Module[{real array[3, 3] m},
    m[[1]] = v;
    m[[All, 2]] = 2*v;
    m[[2|3, 3]] = 7;
    m[[3, 1]] = m[[1, 1]];
    m[[2, 1]] = v[[2]] + 0.5;
    m];
real array[4] moved[real array[4] v_] :=
  Module[{real array[4] w},
    w = v;
    w[[2|4]] = w[[1|3]];
    w = w + w[[All]];
    w];
real array[2] listed[int n_] :=
  Module[{real array[n] x},
    x = {1.5, 2.5};
    x];
real array[2] place[real array[3, 3] m_] := {Extract[m, {2, 3}], Extract[m, {1, 1}]};
{} filed[String name_, real array[2, 2] m_] := CompoundExpression[Export[name, m]];
real array[2, 2] again[String name_] := Module[{real array[2, 2] m}, m = Import[name]; m];
{} said[real array[2] v_] := CompoundExpression[Print["v is ", v, " and ", v[[1]]]];
real array[3] swapped[real array[3, 3] m_] := row[m, 1] + col[m, 2] + submatrix[m, 1, 2, 1, 2][[1, 1]];
real array[3, 3] patched[real array[3, 3] m_, real array[3] v_] :=
  Module[{real array[3, 3] w = m},
    setrow[w, 1, v];
    setcol[w, 3, v];
    setsubmatrix[w, 2, 3, 1, 2, m[[1|2, 1|2]]];
    w];
real spread[] := Module[{real array[3] v, real array[2, 2] m}, v[[_]] = 0.0; v = v + 1; m[[_, _]] = 2; v . v + m[[2, 2]]];
