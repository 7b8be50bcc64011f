(* A context for each instance and each part of it, one level deeper than what it stands in. *)
model Contexts;
packages "Tools`";

size := 4;

class Leaf(k)
hide:
  real value;
  twice := 2 * k;
end Leaf;

class Branch(k)
  part left inherits Leaf(k);
  part right inherits Leaf(k + 1);
hide:
  total := left`value + right`value;
end Branch;

class Bare
end;

instance tree inherits Branch(size)
begin
  total == this`left`twice
end tree;

instance stump inherits Bare
end;
