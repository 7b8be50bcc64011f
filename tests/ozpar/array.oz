model Array;
real array[3] x; real t;
rates := {{x'[t] == -x[t]}, {t}};
