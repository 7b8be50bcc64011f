model M;
  real x; real y; real t;
  real damping := 0.1;
  rates := {{x'[t] == y[t], y'[t] == If[x[t] > 0, -x[t], damping] + t}, {t}};
