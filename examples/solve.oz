(*
  Functions of other languages at work.

  Systems of linear equations are solved by LAPACK and residuals measured by BLAS, two libraries of Fortran; a filter
  is written in C, a statistic in C++. Each declaration tells the prefix of the foreign name, the context in the host,
  the language, and the arguments in the order in which the foreign routine wants them. The functions behind them use
  the declared ones like any others.
*)
model Solve;

(* LAPACK: dgesv(N, NRHS, A, LDA, IPIV, B, LDB, INFO) puts the factors of A into A and the solution into B. *)
{real array[n, n], int array[n], real array[n], int} dgesv[int n_, int sides_, real array[n, n] a_, real array[n] b_] :=
  externinfo "" "Lapack`" "Fortran"
    procedure(Input n, Input sides, InOut a, lda = dim(a, 1), Output pivots(n), InOut b, ldb = dim(b, 1), Output info);

(* BLAS: ddot(N, X, INCX, Y, INCY). *)
real ddot[int n_, real array[n] x_, int xstep_, real array[n] y_, int ystep_] :=
  externinfo "" "Blas`" "Fortran" function(Input n, Input x, Input xstep, Input y, Input ystep);

(* C: each round replaces an element by a quarter of its neighbours and half of itself, with zeros beyond the ends. The
   second result is the greatest change in the last round. *)
{real array[0], real} smooth[real array[0] v_, int rounds_] :=
  externinfo "filter_" "Filter`" "C" procedure(count = dim(v, 1), InOut v, Input rounds, Output change);

(* C++: takes the array as it is. *)
real median[real array[0] v_] := externinfo "stat_" "Statistics`" "C++" function(Input v);

(* The solution x of a . x = b. *)
real array[n] solution[int n_, real array[n, n] a_, real array[n] b_] :=
  Module[{real array[n, n] factors, int array[n] pivots, real array[n] x, int info},
    {factors, pivots, x, info} = dgesv[n, 1, a, b];
    If[info != 0, Print["the matrix is singular: pivot ", info]];
    x];

(* The product of the diagonal of the factors; each exchange of two rows turns the sign. *)
real determinant[int n_, real array[n, n] a_] :=
  Module[{real array[n, n] factors, int array[n] pivots, real array[n] x, int info, real d = 1.0, int i},
    For[i = 1, i <= n, i = i + 1, x[[i]] = 0.0];
    {factors, pivots, x, info} = dgesv[n, 1, a, x];
    For[i = 1, i <= n, i = i + 1,
      d = d*factors[[i, i]];
      If[pivots[[i]] != i, d = -d]];
    d];

(* Length of a . x - b. *)
real residual[int n_, real array[n, n] a_, real array[n] x_, real array[n] b_] :=
  Module[{real array[n] r},
    r = a . x - b;
    Sqrt[ddot[n, r, 1, r, 1]]];

(* The greatest change in the last of so many rounds of smoothing. *)
real ripple[real array[0] v_, int rounds_] :=
  Module[{real array[0] smoothed, real change},
    {smoothed, change} = smooth[v, rounds];
    change];

(* How far the middle value is from the mean. *)
real skew[int n_, real array[n] v_] :=
  Module[{real s = 0.0, int i},
    For[i = 1, i <= n, i = i + 1, s = s + v[[i]]];
    median[v] - s/n];
