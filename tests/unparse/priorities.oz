(* An operand of the same priority stands in parentheses on both sides. *)
model Priorities;

a; b; c;
subtract := a - b - c;
nested := a - (b - c);
sum := a + (b + c) + -a^2 + +b;
power := a^b^c;
quotient := a*b/c*2;
logic := !a && b || c;
chain := a + 1 < b <= c;
rule := a /. {a -> b, b :> c + 1};
call := a[b][c[[1]]] + b'[c] + (# + 1 &)[0];
list := {0, a[0], 0 + 1, b[[0, 1]]};
statements := (a = 1; b = 2; a);
block := Module[{t = a, u}, u = t; u];
patterns[x_, y_Integer, z__, u_.] := x;
put := a >> file;
tag := (a /: b[a] = c);
message := a::bad;
condition := (v : {_, ___} /; v == x);
