model Globs;

packages "Math`", "Util`";

(* Every form of a global; a class that nobody uses leaves nothing, nor does a circle of such classes. *)
real g := 9.81;
h;
k[1, 2];
real r;
real a[3];
real f[int i_, real x_] := i*x;
c[x_] := g*x;
array[2, n] v, w;
real array[3] z;
symbol s, t;
static st := g;
once o := u;
real ex[real x_] := extern "C";
real ei[real x_] := externinfo "pre" "ctx" "C" function(Input x, Output y(3));
{real, int} mt[real x_] := {x, 1};
real at with unit = "m" tol = "1";
q := inst`x + many[g]`y[r];
md := Module[{real array[2] b = g, d}, b + d];

class Unused(p) inherits Missing hide: x := p; end Unused;
class Missing end;
class A inherits B hide: x; end;
class B inherits A hide: y := x; end;
