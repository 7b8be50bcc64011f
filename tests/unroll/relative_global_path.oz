model M;
a := 1;
b := a`c[2]`d + Sum[a[k]`e, {k, 1, 3}];
