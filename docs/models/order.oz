model Order;

class Left reveal: x := 1; y := 1; end Left;
class Right reveal: x := 2; z := 2; end Right;

instance both inherits Left, Right
  reveal:
    y := 3;
  begin
    x + y + z
end both;
