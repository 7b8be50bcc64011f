model Grid;

real edge := 5.0;

class Node(row1, row2, left)
  part probe inherits Probe(row1);
  reveal:
    real value with unit = "V";
    slope := value - left`value;
    scaled[f_] := f*value + probe`offset;
end Node;

class Probe(place)
  reveal:
    offset := place*edge;
end Probe;

instance node[i, j] inherits Node(i, j, node[i, j - 1]) end node;

instance corner
  reveal:
    first := node[1, 1]`value + node[1, 1]`scaled[2] + node[2, 1]`probe`offset;
end corner;
