model M;
  real x; real y; real t;
  real damping := 0.1;
  rates := {{x'[t] == If[damping > y[t], Sin[x[t]*y[t]], x[t]], y'[t] == x[t]*y[t] + damping + t}, {t}};
