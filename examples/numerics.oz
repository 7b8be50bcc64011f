(*
  Numeric functions.

  A package of typed functions. Every argument, result and local variable has a type, loops are written out, and
  the bodies use nothing that a compiled language lacks, so that each of them can be turned into compiled code. A
  function returns one value, an array, or several values in braces. The last lines declare functions that are
  written in other languages.
*)
model Numerics;

packages "Vectors`", "Matrices`";

real tolerance := 1.0*^-12;
int limit := 200;

(* Value of a polynomial by nested products; the coefficients stand from the constant one upwards. *)
real polynomial[real x_, int n_, real array[n] c_] :=
  Module[{real s = 0.0, int i},
    For[i = n, i >= 1, i = i - 1, s = s*x + c[[i]]];
    s];

(* The polynomial and its derivative in one pass. *)
{real, real} polynomialSlope[real x_, int n_, real array[n] c_] :=
  Module[{real p = 0.0, real q = 0.0, int i},
    For[i = n, i >= 1, i = i - 1,
      q = q*x + p;
      p = p*x + c[[i]]];
    {p, q}];

(* A root of the polynomial by the tangent method. *)
real polynomialRoot[real start_, int n_, real array[n] c_] :=
  Module[{real x = start, real value = 1.0, real slope = 0.0, int rounds = 0},
    While[Abs[value] > tolerance && rounds < limit,
      {value, slope} = polynomialSlope[x, n, c];
      x = x - value/slope;
      rounds = rounds + 1];
    x];

(* Greatest common divisor. *)
int commonDivisor[int a_, int b_] :=
  Module[{int u = a, int v = b, int rest},
    While[v != 0,
      rest = Mod[u, v];
      u = v;
      v = rest];
    u];

(* Points at equal distance, both ends included. *)
real array[n] spaced[real from_, real to_, int n_] :=
  Module[{real array[n] x, real step = (to - from)/(n - 1), int i},
    For[i = 1, i <= n, i = i + 1, x[[i]] = from + (i - 1)*step];
    x];

(* Area under a curve that is given by its values at equal distance. *)
real trapezoid[int n_, real array[n] y_, real step_] :=
  Module[{real s = (y[[1]] + y[[n]])/2, int i},
    For[i = 2, i < n, i = i + 1, s = s + y[[i]]];
    s*step];

(* Smallest and largest element and the mean. *)
{real, real, real} spread[int n_, real array[n] x_] :=
  Module[{real least = x[[1]], real most = x[[1]], real sum = 0.0, int i},
    For[i = 1, i <= n, i = i + 1,
      If[x[[i]] < least, least = x[[i]]];
      If[x[[i]] > most, most = x[[i]]];
      sum = sum + x[[i]]];
    {least, most, sum/n}];

(* Straight line through points by least squares: where it crosses the axis, and its slope. *)
{real, real} straightLine[int n_, real array[n] x_, real array[n] y_] :=
  Module[{real sx = 0.0, real sy = 0.0, real sxx = 0.0, real sxy = 0.0, real slope, int i},
    For[i = 1, i <= n, i = i + 1,
      sx = sx + x[[i]];
      sy = sy + y[[i]];
      sxx = sxx + x[[i]]^2;
      sxy = sxy + x[[i]]*y[[i]]];
    slope = (n*sxy - sx*sy)/(n*sxx - sx^2);
    {(sy - slope*sx)/n, slope}];

(* Matrix times vector. *)
real array[m] applied[int m_, int n_, real array[m, n] a_, real array[n] x_] :=
  Module[{real array[m] y, int i, int j},
    For[i = 1, i <= m, i = i + 1,
      y[[i]] = 0.0;
      For[j = 1, j <= n, j = j + 1,
        y[[i]] = y[[i]] + a[[i, j]]*x[[j]]]];
    y];

(* A system with three diagonals: lower, middle and upper one, and the right side. The first element of
   the lower one and the last of the upper one are not looked at. *)
real array[n] tridiagonal[int n_, real array[n] low_, real array[n] mid_, real array[n] up_, real array[n] rhs_] :=
  Module[{real array[n] c, real array[n] x, real pivot = mid[[1]], int i},
    x[[1]] = rhs[[1]]/pivot;
    For[i = 2, i <= n, i = i + 1,
      c[[i]] = up[[i - 1]]/pivot;
      pivot = mid[[i]] - low[[i]]*c[[i]];
      x[[i]] = (rhs[[i]] - low[[i]]*x[[i - 1]])/pivot];
    For[i = n - 1, i >= 1, i = i - 1, x[[i]] = x[[i]] - c[[i + 1]]*x[[i + 1]]];
    x];

(* One sweep of relaxation over a grid whose rim is held, and the largest change that it made. *)
{real array[m, n], real} relaxed[int m_, int n_, real array[m, n] u_, real weight_] :=
  Module[{real array[m, n] v, real change = 0.0, real delta, int i, int j},
    v = u;
    For[i = 2, i < m, i = i + 1,
      For[j = 2, j < n, j = j + 1,
        delta = weight*((v[[i - 1, j]] + v[[i + 1, j]] + v[[i, j - 1]] + v[[i, j + 1]])/4 - v[[i, j]]);
        v[[i, j]] = v[[i, j]] + delta;
        If[Abs[delta] > change, change = Abs[delta]]]];
    {v, change}];

(* Place of a value in a sorted array by halving; zero where it is smaller than all. *)
int place[real x_, int n_, real array[n] points_] :=
  Module[{int low = 0, int high = n + 1, int middle},
    While[high - low > 1,
      middle = low + high;
      middle = Quotient[middle, 2];
      If[points[[middle]] <= x, low = middle, high = middle]];
    low];

(* Is the integer a prime number? *)
bool prime[int n_] :=
  Module[{int d = 2, bool found = n > 1},
    While[found && d*d <= n,
      If[Mod[n, d] == 0, found = False];
      d = d + 1];
    found];

(* Values of a law with three branches, and its use in a class: an air gap that closes under load. *)
real bilinear[real x_, real knee_, real soft_, real hard_] :=
  If[x < 0, 0.0, If[x < knee, soft*x, soft*knee + hard*(x - knee)]];

(* Functions of other languages. The first two take and give what they are declared to; the others tell in which
   order the foreign routine wants its arguments, which of them it writes, and how long its arrays are. *)
real errorFunction[real x_] := extern "C";
int randomInteger[int low_, int high_] := extern "C++";
real bessel[int order_, real x_] := externinfo "sp" "Special`" "C" function(Input order, Input x);
{real, real} polar[real x_, real y_] :=
  externinfo "geo" "Geometry`" "Fortran" procedure(Input x, Input y, Output radius, Output angle);
{real array[n], int} sorted[int n_, real array[n] x_] :=
  externinfo "lib" "Library`" "C" procedure(size = dim(x, 1), Input x, Output result(size), Output exchanges);

(* A spring that follows the law above; its functions are methods of the object. *)
class Spring(knee, soft, hard)
  hide:
    real force[real x_] := bilinear[x, knee, soft, hard];
  reveal:
    real work[real x_] :=
      Module[{real s = 0.0, real step = x/limit, int i},
        For[i = 1, i <= limit, i = i + 1, s = s + force[(i - 0.5)*step]*step];
        s];
    bool closed[real x_] := x > knee;
end Spring;

instance bumper inherits Spring(0.012, 4.0*^4, 2.5*^6) end bumper;
