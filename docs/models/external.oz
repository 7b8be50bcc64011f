model External;

real erf[real x_] := extern "C";
real bessel[int order_, real x_] := externinfo "sp" "Special`" "C" function(Input order, Input x);
{real, real} polar[real x_, real y_] :=
  externinfo "geo" "Geometry`" "Fortran" procedure(Input x, Input y, Output r, Output phi);

real both[real x_] := erf[x] + bessel[0, x];
