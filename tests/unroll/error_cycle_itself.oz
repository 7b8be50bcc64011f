model E;
class Other end;
class A inherits A end;
instance a inherits A end;
