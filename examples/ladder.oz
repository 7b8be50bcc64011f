(*
  An electric ladder network.

  A transmission line is approximated by a chain of equal sections, each with a resistor and a coil in line and
  a capacitor across. The sections are an instance set; each is told which section feeds it. A source drives
  the first section through its inner resistance, and a load ends the line.
*)
model Ladder;

symbol t;

int sections := 10;
real lineLength := 150.0;
real amplitude := 5.0;

(* Shares of one section in the values of the whole line. *)
real perSection[real perMetre_] := perMetre*lineLength/sections;

(* Two pins: a voltage across, a current through. *)
class TwoPin
  reveal:
    real voltage with unit = "V";
    real current with unit = "A" start = "0.0";
    power := voltage*current;
end TwoPin;

class Resistor(ohms) inherits TwoPin
  reveal:
    law := voltage == ohms*current;
    heat := ohms*current^2;
end Resistor;

class Coil(henries) inherits TwoPin
  reveal:
    law := voltage == henries*current';
    energy := henries*current^2/2;
end Coil;

class Capacitor(farads) inherits TwoPin
  reveal:
    law := farads*voltage' == current;
    energy := farads*voltage^2/2;
end Capacitor;

(* A capacitor with a leak across it. *)
class LossyCapacitor(farads, siemens) inherits Capacitor(farads)
  reveal:
    law := farads*voltage' == current - siemens*voltage;
    lossAngle[omega_] := ArcTan[siemens/(omega*farads)];
end LossyCapacitor;

(* One section between the one that feeds it and the one that it feeds; the source and the load stand at the ends. *)
class Section(number, feeder, follower)
  part series inherits Resistor(perSection[0.085]);
  part coil inherits Coil(perSection[2.5*^-7]);
  part shunt inherits LossyCapacitor(perSection[1.0*^-10], 2.0*^-9);
  hide:
    entry := If[number == 1, source`terminal, feeder`voltage];
    onward := If[number == sections, load`current, follower`coil`current];
  reveal:
    real voltage := shunt`voltage;
    energy := coil`energy + shunt`energy;
    laws := {series`law, coil`law, shunt`law};
  begin
    series`current == coil`current;
    entry - voltage == series`voltage + coil`voltage;
    coil`current == shunt`current + onward
end Section;

instance section[k] inherits Section(k, section[k - 1], section[k + 1])
  reveal:
    position := k*lineLength/sections;
end section;

(* A source of sine voltage behind its inner resistance. *)
class Source(frequency, resistance)
  part inner inherits Resistor(resistance);
  hide:
    omega := 2*Pi*frequency;
    ideal := amplitude*Sin[omega*t];
  reveal:
    terminal := ideal - inner`voltage;
  begin
    inner`current == section[1]`coil`current
end Source;

instance source inherits Source(1.0*^6, 50.0) end source;

instance load inherits Resistor(50.0)
  begin
    voltage == section[sections]`voltage
end load;

(* Figures of the line as a whole. *)
instance line
  reveal:
    inductance := perSection[2.5*^-7];
    capacitance := perSection[1.0*^-10];
    impedance := Sqrt[inductance/capacitance];
    delay := sections*Sqrt[inductance*capacitance];
    energy := Sum[section[k]`energy, {k, 1, sections}];
    mismatch := (load`ohms - impedance)/(load`ohms + impedance);
end line;
