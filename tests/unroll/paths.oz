model Paths;

(* Paths from a formal: what stands for it can be a member of a set, a path itself, or a whole set. *)
class Seat(place, row, other)
begin
  place`load = row[2]`load;
  {place`sum[x_] -> other`load, row[place`number]`part[other]`f[3]}
end Seat;

class Inner part right inherits Seat(this`base, bench, table[3]`end); end Inner;

instance here inherits Seat(table[1]`end, bench, chair) end;
instance many[i] inherits Seat(table[i]`end, house`bench, chair[i]) hide: v := table[chair[v]`n]`x; end many;
instance hall inherits Inner hide: base; end hall;
