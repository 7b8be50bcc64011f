model First;

real gravity := 9.81;
real fallTime[real height_] := Sqrt[2*height/gravity];
