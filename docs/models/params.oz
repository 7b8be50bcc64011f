model Params;

class Sensor(source, gain)
  reveal:
    reading := gain*source`value;
end Sensor;

class Doubled(source) inherits Sensor(source, 2*factor)
  hide:
    factor := 1.5;
end Doubled;

class Machine(speed)
  part motor inherits Motor(speed);
  part probe inherits Doubled(motor);
  part outside inherits Sensor(this, 1);
  reveal:
    value := motor`value + 1;
end Machine;

class Motor(speed)
  reveal:
    value := speed^2;
end Motor;

instance lathe inherits Machine(40) end lathe;
instance gauge inherits Sensor(lathe`motor, 10) end gauge;
