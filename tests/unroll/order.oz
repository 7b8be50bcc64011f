model Order;
packages "Math`", "Util`";

class Base hide: x := 1; y := 1; end Base;
class Left inherits Base hide: x := 2; z := 2; end Left;
class Right inherits Base hide: x := 3; end Right;
class Both inherits Left, Right
  hide: x := 4;
  reveal: w := x;
end Both;

instance o inherits Both, Right
  expose {w}: y := 6;
  hide: x := 5;
  begin z; w
end o;

instance empty end;
