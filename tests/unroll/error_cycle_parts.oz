model E;
class A part p inherits B; end;
class B part q inherits A; end;
instance a inherits A end;
