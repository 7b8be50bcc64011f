(* What is written in another language is not for the host. *)
model Externals;

real cube[real x_] := extern "C";
real norm[real x_, real y_] := externinfo "" "Geometry" "C" function(Input x, Input y);
int before := 1;
real last[real x_] := extern "Fortran";
