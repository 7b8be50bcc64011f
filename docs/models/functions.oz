model Functions;

real norm[int n_, real array[n] v_] :=
  Module[{real s = 0.0, int i},
    For[i = 1, i <= n, i = i + 1, s = s + v[[i]]^2];
    Sqrt[s]];

real array[m] scaled[int m_, int n_, real array[m, n] a_, real array[n] x_, real gain_] :=
  Module[{real array[m] y = a . x},
    gain*y];

{real, real array[n]} balanced[int n_, real array[n] v_] :=
  Module[{real mean = Total[v]/n},
    {mean, v - mean}];

real peak[int n_, real array[n] v_] :=
  Module[{real mean, real array[n] rest},
    {mean, rest} = balanced[n, v];
    Max[rest]/mean];

bool inside[real radius_, complex z_, String name_] := Abs[z] < radius && name != "";
