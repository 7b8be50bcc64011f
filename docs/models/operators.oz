model Operators;

a1 := x - y - z;
a2 := x/y*z;
a3 := x*y/z;
a4 := -x^2 + -x/y;
a5 := x^y . z;
a6 := p == q < r;
a7 := !p && q || r;
a8 := u /. {x -> 1, y -> 2};
a9 := f @ x;
b1 := x // f // g;
b2 := x ~ f ~ y;
b3 := (# + 1 &) /@ {1, 2, 3};
b4 := y''[t] + y'[t];
b5 := m[[1, 2]] + m[[3]];
b6 := If[p, (u = 1; v = 2), w];
b7 := n!;
b8 := "text" <> label;
