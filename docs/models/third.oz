model Third;

class Vessel(area)
  reveal:
    real level with unit = "m";
    volume := area*level;
end Vessel;

(* A drum is a vessel that is described by its radius. *)
class Drum(radius) inherits Vessel(Pi*radius^2)
  reveal:
    rim := 2*Pi*radius;
end Drum;

(* Two drums and the flow between them. *)
class Pair(radius, flow)
  part upper inherits Drum(radius);
  part lower inherits Drum(2*radius);
  reveal:
    stored := upper`volume + lower`volume;
  begin
    upper`level' == -flow;
    lower`level' == flow
end Pair;

instance plant inherits Pair(0.4, 0.01)
  reveal:
    stored := 1.02*(upper`volume + lower`volume);
end plant;
