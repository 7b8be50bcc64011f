model Second;

real gravity := 9.81;

class Vessel(area)
  hide:
    real level with unit = "m";
  reveal:
    volume := area*level;
    outflow[opening_] := opening*Sqrt[2*gravity*level];
end Vessel;

instance basin inherits Vessel(2.5) end basin;
instance bucket inherits Vessel(0.07) end bucket;
