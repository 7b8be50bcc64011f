model m;
x := 1;
