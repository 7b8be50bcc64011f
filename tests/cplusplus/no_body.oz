model Tank;

real gravity := 9.81;

(* What runs out of a tank with a level through an opening. *)
real outflow[real level_, real area_] := area*Sqrt[2*gravity*level];
