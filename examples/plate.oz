(*
  Heat in a plate.

  The plate is cut into rows and columns of cells: one instance set with two indices. A cell gets its four neighbours
  as parameters, the actual parameters being other members of the same set. The edges are chosen by the cell's
  own place: a neighbour that lies outside is replaced by the value of the edge.
*)
model Plate;

packages "Plots`";

int rowCount := 6;
int columnCount := 8;
real side := 0.05;                (* of a cell, in m *)
real thickness := 0.004;

(* Values at the four edges; the left edge is heated, the others give heat to the air. *)
real air := 293.15;
real heater := 420.0;

(* A material in the fewest numbers that conduction needs. *)
class Material(conductivity, density, heatCapacity)
  reveal:
    diffusivity := conductivity/(density*heatCapacity);
end Material;

class Steel inherits Material(45.0, 7850.0, 470.0)
  reveal:
    emissivity := 0.35;
end Steel;

(* Conduction between a cell and four others. *)
class Conducting(north, south, west, east)
  hide:
    fluxWest := (west`temperature - temperature)/side;
    fluxEast := (east`temperature - temperature)/side;
    fluxNorth := (north`temperature - temperature)/side;
    fluxSouth := (south`temperature - temperature)/side;
  reveal:
    real temperature with unit = "K" start = "293.15";
    gathered := fluxWest + fluxEast + fluxNorth + fluxSouth;
end Conducting;

(* A place in the plate, counted down and across from the corner, and what the edges do to it. *)
class Edged(down, across)
  hide:
    bool atLeft := across == 1;
    bool atRight := across == columnCount;
    bool atRim := down == 1 || down == rowCount || atRight;
  reveal:
    temperature;
    edgeTemperature := Which[atLeft, heater, atRim, air, True, temperature];
    corner := (down == 1 || down == rowCount) && (atLeft || atRight);
end Edged;

(* A cell of the plate: what conducts, of a material, in its place. *)
class Cell(down, across, north, south, west, east)
  inherits Conducting(north, south, west, east), Steel, Edged(down, across)
  hide:
    film := 12.5*(air - temperature);
    radiation[other_] := emissivity*5.67*^-8*(other^4 - temperature^4);
  reveal:
    stored := density*heatCapacity*thickness*side^2*temperature;
    equation := temperature' == diffusivity*gathered/side + (film + radiation[air])/(density*heatCapacity*thickness);
    rim := If[atLeft || atRim, temperature == edgeTemperature, equation];
  begin
    rim
end Cell;

instance cell[i, j] inherits Cell(i, j, cell[i - 1, j], cell[i + 1, j], cell[i, j - 1], cell[i, j + 1])
  expose:
    label := {"cell", i, j};
end cell;

(* The plate as a whole looks at all its cells. *)
instance plate
  hide:
    everywhere[f_] := Table[f[i, j], {i, 1, rowCount}, {j, 1, columnCount}];
  reveal:
    heat := Sum[cell[i, j]`stored, {i, 1, rowCount}, {j, 1, columnCount}];
    hottest := Max[everywhere[cell`temperature]];
    inner := Sum[If[cell[i, j]`corner, 0, 1], {i, 1, rowCount}, {j, 1, columnCount}];
    equations := Flatten[Table[cell[i, j]`rim, {i, 1, rowCount}, {j, 1, columnCount}]];
end plate;
