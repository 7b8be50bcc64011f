model E;
class C end;
class C hide: x := 1; end;
