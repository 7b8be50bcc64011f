model Rate;

real array[2] rate[real t_, real array[2] y_] := y;
