(* Parallel loops: many passes that do next to nothing, and fewer that each take a while. *)
model Loops;

real settled[real x_, int steps_] :=
  Module[{real s = x, int j},
    For[j = 1, j <= steps, j = j + 1, s = s + 1/(s*s + j)];
    s];

real array[1000000] cheap[real array[1000000] x_, real c_] :=
  Module[{int i, real array[1000000] y},
    ForAll[y[[i]] = x[[i]]*c + 1, {i, 1, 1000000}];
    y];

real array[50000] costly[real array[50000] x_, int steps_] :=
  Module[{int i, real array[50000] y},
    ForAll[y[[i]] = settled[x[[i]], steps], {i, 1, 50000}];
    y];
