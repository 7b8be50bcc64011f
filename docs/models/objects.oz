model Objects;

real gravity := 9.81;

real total[int n_] :=
  Module[{real s = basin`level, int i},
    For[i = 1, i <= n, i = i + 1, s = s + row[i]`level + row[i]`outflow[0.5]];
    s];

class Vessel(area)
  reveal:
    real level with unit = "m";
    real array[3] inflow;
    real outflow[real opening_] := opening*Sqrt[2*gravity*level] + inflow[[2]];
end Vessel;

instance basin inherits Vessel(2.5) end basin;

instance row[i] inherits Vessel(0.1*i)
  reveal:
    real drop[real factor_] := factor*(level - row[i + 1]`level);
end row;
