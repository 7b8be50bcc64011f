model Thin;

class C(k) hide: x := k; array[2] v; end C;
instance a inherits C(1)
  part p inherits C(x); end;
instance s[i] inherits C(i)
  part p[j] inherits C(j);
end s;
