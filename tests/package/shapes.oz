model Shapes;

real factor := 2.0;

real area[int n_, real array[n] x_, real array[n] y_] :=
  Module[{real twice = x[[n]]*y[[1]] - x[[1]]*y[[n]], int i},
    For[i = 1, i < n, i = i + 1, twice = twice + x[[i]]*y[[i + 1]] - x[[i + 1]]*y[[i]]];
    twice/2];

class Half
  reveal:
    real array[2] grown[real array[2] v_] := factor*v/2;
end Half;

class Square
  part half inherits Half;
end Square;

instance square inherits Square end square;
