(* An external procedure in generated Fortran, whose arrays have their subscripts in reverse. *)
model Exchange;

{real array[3, 2], int} exchanged[real array[2, 3] a_, int factor_] :=
  externinfo "" "" "Fortran" procedure(Input a, Input factor, Output b, Output count);

real used[real array[2, 3] a_] :=
  Module[{real array[3, 2] b, int count},
    {b, count} = exchanged[a, 2];
    100*b[[3, 1]] + 10*b[[1, 2]] + count];
