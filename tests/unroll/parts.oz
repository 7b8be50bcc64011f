model Parts;

class Wheel(r) hide: c := 2*r; owner := this; end Wheel;

class Axle(r)
  part left inherits Wheel(r);
  part right inherits Wheel(this`width);
  hide: width := r + 1; both := left`c + this`right`c;
end Axle;

instance car
  part front inherits Axle(size);
  part rear inherits Axle(this`size), Wheel(this);
  hide: size := 5; total := front`left`c + size;
  begin rear`both
end car;
