model Blanks;

f := x_ + 1;
g[x_] := x + 1;
