BeginPackage["Plate`", { "Operators`", "Iterators`", "Plots`" } ];

  Clear["plate`*"];
  Remove["plate`*"];
  Clear["cell`*"];
  Remove["cell`*"];
  Plate`rowCount:=6;
  Plate`columnCount:=8;
  Plate`side:=0.05;
  Plate`thickness:=0.004;
  Plate`air:=293.15;
  Plate`heater:=420.0;
  Plate`cell;
  Begin["cell`"];

    DefineIndices[`indices,  { i, j } ];
    Format[cell`down[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`down];
    Format[cell`across[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`across];
    Format[cell`atLeft[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`atLeft];
    Format[cell`atRight[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`atRight];
    Format[cell`atRim[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`atRim];
    Format[cell`edgeTemperature[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`edgeTemperature];
    Format[cell`corner[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`corner];
    Format[cell`conductivity[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`conductivity];
    Format[cell`density[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`density];
    Format[cell`heatCapacity[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`heatCapacity];
    Format[cell`diffusivity[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`diffusivity];
    Format[cell`emissivity[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`emissivity];
    Format[cell`north[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`north];
    Format[cell`south[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`south];
    Format[cell`west[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`west];
    Format[cell`east[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`east];
    Format[cell`fluxWest[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`fluxWest];
    Format[cell`fluxEast[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`fluxEast];
    Format[cell`fluxNorth[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`fluxNorth];
    Format[cell`fluxSouth[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`fluxSouth];
    Format[cell`gathered[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`gathered];
    Format[cell`down[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`down];
    Format[cell`across[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`across];
    Format[cell`north[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`north];
    Format[cell`south[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`south];
    Format[cell`west[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`west];
    Format[cell`east[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`east];
    Format[cell`film[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`film];
    Format[cell`radiation[i_, j_][P$`other_]]:=(("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>ToString[cell`radiation])[P$`other];
    Format[cell`stored[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`stored];
    Format[cell`equation[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`equation];
    Format[cell`rim[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`rim];
    Format[cell`label[i_, j_]]:=("cell["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[cell`label];
    cell`this:=cell;
    (* Class: Edged *)
    cell`down[i_, j_]:=i;
    cell`across[i_, j_]:=j;
    cell`atLeft[i_, j_]:=j == 1;
    cell`atRight[i_, j_]:=j == Plate`columnCount;
    cell`atRim[i_, j_]:=i == 1||i == Plate`rowCount||cell`atRight[i, j];
    cell`temperature[i, j];
    cell`edgeTemperature[i_, j_]:=Which[cell`atLeft[i, j], Plate`heater, cell`atRim[i, j], Plate`air, True, cell`temperature[i, j]];
    cell`corner[i_, j_]:=(i == 1||i == Plate`rowCount)&&(cell`atLeft[i, j]||cell`atRight[i, j]);
    (* Class: Material *)
    cell`conductivity[i_, j_]:=45.0;
    cell`density[i_, j_]:=7850.0;
    cell`heatCapacity[i_, j_]:=470.0;
    cell`diffusivity[i_, j_]:=45.0/(7850.0*470.0);
    (* Class: Steel *)
    cell`emissivity[i_, j_]:=0.35;
    (* Class: Conducting *)
    cell`north[i_, j_]:=cell[i-1, j];
    cell`south[i_, j_]:=cell[i+1, j];
    cell`west[i_, j_]:=cell[i, j-1];
    cell`east[i_, j_]:=cell[i, j+1];
    cell`fluxWest[i_, j_]:=(cell`temperature[i, j-1]-cell`temperature[i, j])/Plate`side;
    cell`fluxEast[i_, j_]:=(cell`temperature[i, j+1]-cell`temperature[i, j])/Plate`side;
    cell`fluxNorth[i_, j_]:=(cell`temperature[i-1, j]-cell`temperature[i, j])/Plate`side;
    cell`fluxSouth[i_, j_]:=(cell`temperature[i+1, j]-cell`temperature[i, j])/Plate`side;
    cell`temperature[i, j];
    cell`gathered[i_, j_]:=cell`fluxWest[i, j]+cell`fluxEast[i, j]+cell`fluxNorth[i, j]+cell`fluxSouth[i, j];
    (* Class: Cell *)
    cell`down[i_, j_]:=i;
    cell`across[i_, j_]:=j;
    cell`north[i_, j_]:=cell[i-1, j];
    cell`south[i_, j_]:=cell[i+1, j];
    cell`west[i_, j_]:=cell[i, j-1];
    cell`east[i_, j_]:=cell[i, j+1];
    cell`rim[i, j];
    cell`film[i_, j_]:=12.5*(Plate`air-cell`temperature[i, j]);
    cell`radiation[i_, j_][P$`other_]:=cell`emissivity[i, j]*5.67*^-8*(P$`other^4-cell`temperature[i, j]^4);
    cell`stored[i_, j_]:=cell`density[i, j]*cell`heatCapacity[i, j]*Plate`thickness*Plate`side^2*cell`temperature[i, j];
    cell`equation[i_, j_]:=cell`temperature[i, j]' == cell`diffusivity[i, j]*cell`gathered[i, j]/Plate`side+(cell`film[i, j]+cell`radiation[i, j][Plate`air])/(cell`density[i, j]*cell`heatCapacity[i, j]*Plate`thickness);
    cell`rim[i_, j_]:=If[cell`atLeft[i, j]||cell`atRim[i, j], cell`temperature[i, j] == cell`edgeTemperature[i, j], cell`equation[i, j]];
    (* Instance body: cell *)
    cell`label[i_, j_]:= { "cell", i, j } 

  End[];
  Plate`plate;
  Begin["plate`"];

    DefineIndices[`indices,  {  } ];
    plate`this:=plate;
    (* Instance body: plate *)
    plate`everywhere[P$`f_]:=Table[P$`f[i, j],  { i, 1, Plate`rowCount } ,  { j, 1, Plate`columnCount } ];
    plate`heat:=Sum[cell`stored[i, j],  { i, 1, Plate`rowCount } ,  { j, 1, Plate`columnCount } ];
    plate`hottest:=Max[plate`everywhere[cell`temperature]];
    plate`inner:=Sum[If[cell`corner[i, j], 0, 1],  { i, 1, Plate`rowCount } ,  { j, 1, Plate`columnCount } ];
    plate`equations:=Flatten[Table[cell`rim[i, j],  { i, 1, Plate`rowCount } ,  { j, 1, Plate`columnCount } ]]

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
