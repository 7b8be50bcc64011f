model Defs;

instance s[i, j]
  hide:
    real a[3] := 5;
    real b[4];
    real t[int k_] := k*v;
    v;
    l[q_] := Module[{real z = q + y, y}, z + y + v];
    r[q_] := (w[q_] = q; q /. v -> q);
    c := s[i, j + 1]`v - s[v]`t[v];
  begin
    w[v] ^= 3;
    v::usage = "text";
    Format[v] := 5;
    v /: t[v] = 3;
    a[1] += v
end s;
