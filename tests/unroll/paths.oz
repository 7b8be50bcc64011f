model Paths;

(* Paths from a formal: what stands for it can be a member of a set, a path itself, or a whole set. *)
class Seat(place, bank, other)
begin
  place`load = bank[2]`load;
  {place`sum[x_] -> other`load, bank[place`number]`leg[other]`f[3]}
end Seat;

class Inner part right inherits Seat(this`base, bench, table[3]`tip); end Inner;

instance here inherits Seat(table[1]`tip, bench, chair) end;
instance many[i] inherits Seat(table[i]`tip, house`bench, chair[i]) hide: v := table[chair[v]`n]`x; end many;
instance hall inherits Inner hide: base; end hall;
