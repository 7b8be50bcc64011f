(*
  Roller bearing.

  An inner ring turns on a set of rollers inside a fixed outer ring. The rollers are one instance set: roller[k] is the
  k-th of them, and each definition of the class Roller stands for all. Every roller has two parts of its own, the
  contact with the inner ring and the contact with the outer one.
*)
model Bearing;

symbol t;

int count := 14;
real clearance := 12.0*^-6;
real modulus := 2.08*^11;

(* Stiffness of a line contact from the effective length of the roller, in newton per metre. *)
real lineStiffness[real extent_] := 0.26*modulus*extent^(8/9);

(* A law for the force between two bodies that touch: none while they are apart. *)
real contactForce[real stiffness_, real depth_] := If[depth > 0, stiffness*depth^(10/9), 0.0];

(* A ring: a circle with a centre that may move. *)
class Ring(radius)
  reveal:
    real x;
    real y;
    rotation;
    contour[phi_] := {x + radius*Cos[phi], y + radius*Sin[phi]};
end Ring;

class FixedRing(radius) inherits Ring(radius)
  reveal:
    real x := 0.0;
    real y := 0.0;
    real rotation[real at_] := 0.0;
end FixedRing;

(* The inner ring carries the load of the shaft and the forces of all rollers. *)
class LoadedRing(radius, mass, load) inherits Ring(radius)
  hide:
    forceX := Sum[roller[k]`inside`force*Cos[roller[k]`angle], {k, 1, count}];
    forceY := Sum[roller[k]`inside`force*Sin[roller[k]`angle], {k, 1, count}];
  reveal:
    equationX := mass*x'' == -forceX;
    equationY := mass*y'' == -forceY - load;
end LoadedRing;

(* What stands at the place of a numbered roller on the cage. *)
class Placed(number)
  hide:
    spacing := 2*Pi/count;
  reveal:
    angle := cage`rotation[t] + (number - 1)*spacing;
end Placed;

(* One contact of a roller with a ring; the side is 1 for the inner ring and -1 for the outer ring. *)
class Contact(number, ring, gap, long, side) inherits Placed(number)
  hide:
    approach := side*(ring`x*Cos[angle] + ring`y*Sin[angle]);
  reveal:
    real depth := approach - gap;
    real force := contactForce[lineStiffness[long], depth];
    loss := friction*force;
    friction := 0.0018;
end Contact;

(* A roller with its two contacts. *)
class Roller(number, diameter, long) inherits Placed(number)
  part inside inherits Contact(number, inner, clearance/4, long, 1);
  part outside inherits Contact(number, outer, clearance/4, long, -1);
  hide:
    mass := 7810*Pi*diameter^2/4*long;
  reveal:
    balance := mass*lift'' == outside`force - inside`force;
    loaded := inside`depth > 0;
  expose {inner, outer}:
    real lift with unit = "m" start = "0.0";
end Roller;

(* A crowned roller bears on a shorter line. *)
class CrownedRoller(number, diameter, long, crown) inherits Roller(number, diameter, long - 2*crown)
  reveal:
    reserve := crown/long;
end CrownedRoller;

(* The cage turns at the mean speed of the two races. How the inner ring turns is told later, and so its type. *)
class Cage(innerRing, outerRing)
  hide:
    share := innerRing`radius/(innerRing`radius + outerRing`radius);
  reveal:
    rotation[at_] := share*innerRing`rotation[at];
end Cage;

instance outer inherits FixedRing(0.0425) end outer;

instance inner inherits LoadedRing(0.0325, 1.35, 2400.0) end inner;

instance cage inherits Cage(inner, outer) end cage;

instance roller[k] inherits CrownedRoller(k, 0.01, 0.012, 0.0006)
  reveal:
    life := If[loaded, (capacity/inside`force)^(10/3), Infinity];
    capacity := 9.1*^3;
end roller;
