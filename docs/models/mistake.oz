model Mistake;

class Vessel(area)
  reveal:
    volume := area*;
end Vessel;

instance basin inherits Vessel(2) end basin;
