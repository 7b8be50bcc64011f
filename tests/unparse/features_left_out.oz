(* Without DefineIndices and Format: the first statement of an instance is empty, and there are no rules for names. *)
model Features;

class Point
hide:
  real array[2] position;
end Point;

instance origin inherits Point
end;

instance corner[i] inherits Point
hide:
  weight := i;
end corner;
