model E;
class Max end;
instance a inherits Max end;
