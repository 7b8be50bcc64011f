model E;
class Wheel end;
class Base part w inherits Wheel; end;
class L inherits Base end;
class R inherits Base end;
class B inherits L, R end;
instance a inherits B end;
