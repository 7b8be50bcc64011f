(* Numerical kernels whose compiled form is measured beside hand-written C++: see runtimebench.cc. *)
model Kernels;

(* Scalars only: a sum of reciprocals with changing signs. *)
real series[int n_] :=
  Module[{real s = 0.0, real sign = 1.0, int i},
    For[i = 1, i <= n, i = i + 1, s = s + sign/(i*(i + 0.5)); sign = -sign];
    s];

(* Mean of the four neighbours, for every place inside a grid, written with loops. *)
real array[m, n] stencil[int m_, int n_, real array[m, n] u_, int rounds_] :=
  Module[{real array[m, n] v, real array[m, n] w, int i, int j, int k},
    v = u;
    w = u;
    For[k = 1, k <= rounds, k = k + 1,
      For[j = 2, j < n, j = j + 1,
        For[i = 2, i < m, i = i + 1,
          w[[i, j]] = 0.25*(v[[i - 1, j]] + v[[i + 1, j]] + v[[i, j - 1]] + v[[i, j + 1]])]];
      For[j = 2, j < n, j = j + 1,
        For[i = 2, i < m, i = i + 1,
          v[[i, j]] = 0.25*(w[[i - 1, j]] + w[[i + 1, j]] + w[[i, j - 1]] + w[[i, j + 1]])]]];
    v];

(* The same with sections. *)
real array[m, n] sections[int m_, int n_, real array[m, n] u_, int rounds_] :=
  Module[{real array[m, n] v, real array[m, n] w, int k},
    v = u;
    w = u;
    For[k = 1, k <= rounds, k = k + 1,
      w[[2|m - 1, 2|n - 1]] = 0.25*(v[[1|m - 2, 2|n - 1]] + v[[3|m, 2|n - 1]] + v[[2|m - 1, 1|n - 2]] +
        v[[2|m - 1, 3|n]]);
      v[[2|m - 1, 2|n - 1]] = 0.25*(w[[1|m - 2, 2|n - 1]] + w[[3|m, 2|n - 1]] + w[[2|m - 1, 1|n - 2]] +
        w[[2|m - 1, 3|n]])];
    v];

real array[n, n] product[int n_, real array[n, n] a_, real array[n, n] b_] :=
  Module[{real array[n, n] c, int i, int j, int k},
    For[j = 1, j <= n, j = j + 1,
      For[k = 1, k <= n, k = k + 1,
        For[i = 1, i <= n, i = i + 1, c[[i, j]] = c[[i, j]] + a[[i, k]]*b[[k, j]]]]];
    c];

real array[n, n] dotted[int n_, real array[n, n] a_, real array[n, n] b_] := a . b;

(* How bodies pull at one another; the rows of the result are the three directions. *)
real array[3, n] pulls[int n_, real array[3, n] x_, real array[n] mass_] :=
  Module[{real array[3, n] f, int i, int j, real dx, real dy, real dz, real r2, real p},
    For[i = 1, i <= n, i = i + 1,
      For[j = 1, j <= n, j = j + 1,
        dx = x[[1, j]] - x[[1, i]];
        dy = x[[2, j]] - x[[2, i]];
        dz = x[[3, j]] - x[[3, i]];
        r2 = dx*dx + dy*dy + dz*dz + 0.01;
        p = mass[[j]]/(r2*Sqrt[r2]);
        f[[1, i]] = f[[1, i]] + p*dx;
        f[[2, i]] = f[[2, i]] + p*dy;
        f[[3, i]] = f[[3, i]] + p*dz]];
    f];

real array[n] horner[int n_, real array[n] x_, int m_, real array[m] c_] :=
  Module[{real array[n] y, real s, int i, int k},
    For[i = 1, i <= n, i = i + 1,
      s = 0.0;
      For[k = 1, k <= m, k = k + 1, s = s*x[[i]] + c[[k]]];
      y[[i]] = s];
    y];

(* Whole arrays in one expression. *)
real array[n] combined[int n_, real array[n] a_, real array[n] b_, real array[n] c_, int rounds_] :=
  Module[{real array[n] d, int k},
    d = a;
    For[k = 1, k <= rounds, k = k + 1, d = 0.5*d + b*c - a/3.0 + 1.0];
    d];
