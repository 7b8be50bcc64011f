model Nested;

class P(k) hide: x := k; y[q_] := x + q; end P;

instance a[j]
  part p[i] inherits P(i + j);
  part q inherits P(j);
  hide: s := p[2]`x + q`x + p[z]`y[z]; z := 1;
end a;

(* From outside a path keeps its indices as written, and the call's arguments stay behind them. *)
instance b hide: t := a[1]`p[2]`x + a[n]`p[m]`y[n] + a[n]`z; n := 2; end b;
