(* Signs that the host would read as one operator are kept apart. *)
model Signs;

a := 1;
b := 2;
difference := a - (-b);
opposite := -(--b);
shares := a / .5 + (++b);
decimals := 2 * .5 - .25;
half := (a = .5);
factorial := ((a!) = b);
scaled := 3 . {a, b} . 2;
