model Values;

symbol t, phi;

real gain := 2.5*^-3;
int count := 12;
bool fine := gain < 1 && count != 13;
String label := "rotor";
complex pole := -0.2 + 1.7*I;

real array[3] axis := {0.6, 0.0, 0.8};
array[2] unknown;
once table := Table[k^2, {k, 1, count}];

square[x_] := x^2;
real norm[int n_, real array[n] v_] := Module[{real s = 0.0, int i},
  For[i = 1, i <= n, i = i + 1, s = s + v[[i]]^2];
  Sqrt[s]];
{real, real} both[real a_, real b_] := {a + b, a - b};
