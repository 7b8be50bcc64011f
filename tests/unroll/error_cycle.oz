model E;
class A inherits C end;
class B inherits A end;
class C inherits B end;
instance a inherits A end;
