model Orbit;

real x; real y; real u; real v; real t;

rates := {{
    x'[t] == u[t],
    y'[t] == v[t],
    u'[t] == -x[t]/(x[t]^2 + y[t]^2)^1.5,
    v'[t] == If[y[t] > 0, -y[t]/(x[t]^2 + y[t]^2)^1.5, 0.0]},
  {t}};
