model Names;

real shared := 1.0;

class Thing(size)
  hide:
    real weight;
    shift[shared_] := shared + weight;
    sum[n_] := Module[{weight = n}, weight + size + shared];
  reveal:
    total := weight + shared + levle;
end Thing;

instance box inherits Thing(3) end box;

instance shelf
  reveal:
    load := box`total + Names`shared;
end shelf;
