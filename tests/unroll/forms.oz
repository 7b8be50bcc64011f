model Forms;

(* The forms of definitions, in an instance and in a set. *)
class K(c)
  hide:
    y;
    once k := c;
    once t[x_] := x + k;
    once n[c] := k;
    static u := c;
    static w[x_] := x + u;
    real array[c, 2] m;
    symbol sy, sz;
    link := k => u => y;
  begin
    y[x_] :== x*c
end K;

instance one inherits K(2) end;
instance two[i] inherits K(i) end;
