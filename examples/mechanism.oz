(*
  Planar mechanisms built from links.

  A link hangs with its base on the tip of the link before it, which it gets as a parameter. A chain of links is
  therefore written by naming, for each, the one that carries it. A slider-crank is a class with two links and a slider
  as parts; the two instances at the end are engines of different size.
*)
model Mechanism;

packages "Vectors`", "Plots`";

symbol t;

real gravity := 9.81;

(* Length of a vector in the plane. *)
real norm[real array[2] v_] := Sqrt[v[[1]]^2 + v[[2]]^2];

(* Cross product of two vectors in the plane, a number. *)
real wedge[real array[2] a_, real array[2] b_] := a[[1]]*b[[2]] - a[[2]]*b[[1]];

(* What every moving body has. Where its centre is and how it turns is told by the class that inherits this one. *)
class Body(mass, inertia)
  hide:
    real array[2] speed := D[centre, t];
  reveal:
    centre;
    angle;
    kinetic := mass*(speed . speed)/2 + inertia*D[angle[t], t]^2/2;
    potential := mass*gravity*centre[[2]];
    energy := kinetic + potential;
end Body;

(* A slender rod on the tip of its carrier. *)
class Link(long, mass, carrier) inherits Body(mass, mass*long^2/12)
  hide:
    array[2] reaction;
  reveal:
    real array[2] axis := {Cos[angle[t]], Sin[angle[t]]};
    real array[2] base := carrier`tip;
    real array[2] tip := base + long*axis;
    real array[2] centre := base + long/2*axis;
    torque := wedge[tip - base, reaction];
end Link;

(* A link that a motor turns at a given speed. *)
class Driven(speedOfMotor, long, mass, carrier) inherits Link(long, mass, carrier)
  reveal:
    drive := angle'[t] == speedOfMotor;
    power := torque*speedOfMotor;
end Driven;

(* A block that slides along the x axis; it does not turn. *)
class Slider(mass, carrier) inherits Body(mass, 0.0)
  reveal:
    angle[at_] := 0.0;
    real array[2] centre := carrier`tip;
    real stroke := centre[[1]];
    guide := centre[[2]] == 0.0;
end Slider;

(* Crank, rod and slider. The crank stands on the ground, each other part on the one before it. *)
class SliderCrank(radius, ratio, motor)
  part crank inherits Driven(motor, radius, 0.8, ground);
  part rod inherits Link(radius*ratio, 1.1, crank);
  part piston inherits Slider(0.45, rod);
  hide:
    once reach := radius*(1 + ratio);
    dead := {reach, radius*(ratio - 1)};
  reveal:
    energy := crank`energy + rod`energy + piston`energy;
    closure := rod`tip == {piston`stroke, 0.0};
    travel[phi_] := radius*(1 - Cos[phi]) + radius/(4*ratio)*(1 - Cos[2*phi]);
  begin
    crank`drive;
    closure;
    D[energy, t] == crank`power
end SliderCrank;

(* The fixed frame carries the cranks. *)
instance ground
  reveal:
    real array[2] tip := {0.0, 0.0};
end ground;

instance engine inherits SliderCrank(0.043, 3.2, 310.0)
end engine;

(* A pump on the same frame, turned slowly, with its own law of motion for the piston. *)
instance pump inherits SliderCrank(0.02, 4.5, 52.0)
  reveal:
    travel[phi_] := radius*(1 - Cos[phi]);
    delivered := Pi*0.03^2*2*radius*motor/(2*Pi);
end pump;
