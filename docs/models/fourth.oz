model Fourth;

class Cell(before, after)
  reveal:
    real heat with unit = "J";
    equation := heat' == before`heat - 2*heat + after`heat;
end Cell;

instance rod[i] inherits Cell(rod[i - 1], rod[i + 1]) end rod;

instance whole
  reveal:
    total := Sum[rod[k]`heat, {k, 1, 20}];
end whole;
