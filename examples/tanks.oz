(*
  Coupled tanks.

  A pump feeds the upper of two tanks, a valve lets the water run into the lower one, and a drain lets it out. A
  controller turns the pump up or down so that the lower level stays at its set point.

  The plant is one class with five parts. The parts know one another through parameters: a valve is told which vessel
  stands before it and which behind it, and reads their levels by path, as in upstream`level.
*)
model Tanks;

packages "Signals`";

(* Constants in SI units. *)
real gravity := 9.81;
real density := 998.2;

(* Speed of a free jet under a head of water; it follows the sign of the head. *)
real jetSpeed[real head_] := Sign[head]*Sqrt[2*gravity*Abs[head]];

(* Anything that holds water. The level starts where the initial value says. *)
class Vessel(area, height)
  hide:
    real volume := area*level;
  reveal:
    real level with unit = "m" start = "0.2";
    real inflow with unit = "m^3/s";
    real outflow with unit = "m^3/s";
    fill := level/height;
    mass := density*volume;
    pressure := density*gravity*level;
    balance := area*level' == inflow - outflow;
end Vessel;

(* An upright drum is a vessel that is described by its radius. *)
class Drum(radius, height) inherits Vessel(Pi*radius^2, height)
  reveal:
    wall := 2*Pi*radius*height;
end Drum;

(* An opening with a coefficient of discharge. *)
class Opening(bore, discharge)
  reveal:
    real area := Pi*bore^2/4;
    coefficient := discharge;
end Opening;

(* A valve between two vessels. *)
class Valve(upstream, downstream, bore) inherits Opening(bore, 0.62)
  hide:
    head := upstream`level - downstream`level;
  reveal:
    flow := coefficient*area*jetSpeed[head];
end Valve;

(* A drain to the open air needs one vessel only. *)
class Drain(vessel, bore) inherits Opening(bore, 0.8)
  reveal:
    flow := coefficient*area*jetSpeed[vessel`level];
end Drain;

(* A controller with a proportional and an integral share, bounded by what the pump can do. *)
class Controller(vessel, target, gain, resetTime)
  hide:
    real integral with start = "0.0";
    error := target - vessel`level;
    memory := integral' == error;
  expose:
    demand := Max[0.0, Min[1.0, gain*(error + integral/resetTime)]];
end Controller;

(* The whole plant; the scale makes laboratory and pilot plant from one description. *)
class Plant(scale, target)
  part upper inherits Drum(0.25*scale, 1.2);
  part lower inherits Drum(0.3*scale, 0.9);
  part valve inherits Valve(upper, lower, 0.02*scale);
  part drain inherits Drain(lower, 0.018*scale);
  part control inherits Controller(lower, target, 4.5, 60.0);
  hide:
    pumpLimit := 0.0021*scale^2;
  expose {control}:
    real pumped := pumpLimit*control`demand;
    stored := upper`mass + lower`mass;
  begin
    upper`inflow == pumped;
    upper`outflow == valve`flow;
    lower`inflow == valve`flow;
    lower`outflow == drain`flow
end Plant;

instance laboratory inherits Plant(1, 0.35)
end laboratory;

(* The pilot plant has a stronger pump; its own definition comes behind the inherited one and replaces it. *)
instance pilot inherits Plant(3, 0.6)
  hide:
    pumpLimit := 0.03;
end pilot;
