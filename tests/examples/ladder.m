BeginPackage["Ladder`", { "Operators`", "Iterators`" } ];

  Clear["line`*"];
  Remove["line`*"];
  Clear["load`*"];
  Remove["load`*"];
  Clear["source`*"];
  Remove["source`*"];
  Clear["source`inner`*"];
  Remove["source`inner`*"];
  Clear["section`*"];
  Remove["section`*"];
  Clear["section`shunt`*"];
  Remove["section`shunt`*"];
  Clear["section`coil`*"];
  Remove["section`coil`*"];
  Clear["section`series`*"];
  Remove["section`series`*"];
  Protect[Ladder`t];
  Ladder`sections:=10;
  Ladder`lineLength:=150.0;
  Ladder`amplitude:=5.0;
  Ladder`perSection[P$`perMetre_]:=P$`perMetre*Ladder`lineLength/Ladder`sections;
  Ladder`section;
  Begin["section`"];

    DefineIndices[`indices,  { k } ];
    Format[section`number[k_]]:=("section["<>(ToString[k])<>"]")<>"`"<>ToString[section`number];
    Format[section`feeder[k_]]:=("section["<>(ToString[k])<>"]")<>"`"<>ToString[section`feeder];
    Format[section`follower[k_]]:=("section["<>(ToString[k])<>"]")<>"`"<>ToString[section`follower];
    Format[section`entry[k_]]:=("section["<>(ToString[k])<>"]")<>"`"<>ToString[section`entry];
    Format[section`onward[k_]]:=("section["<>(ToString[k])<>"]")<>"`"<>ToString[section`onward];
    Format[section`voltage[k_]]:=("section["<>(ToString[k])<>"]")<>"`"<>ToString[section`voltage];
    Format[section`energy[k_]]:=("section["<>(ToString[k])<>"]")<>"`"<>ToString[section`energy];
    Format[section`laws[k_]]:=("section["<>(ToString[k])<>"]")<>"`"<>ToString[section`laws];
    Format[section`position[k_]]:=("section["<>(ToString[k])<>"]")<>"`"<>ToString[section`position];
    section`this:=section;
    (* Class: Section *)
    section`number[k_]:=k;
    section`feeder[k_]:=section[k-1];
    section`follower[k_]:=section[k+1];
    section`series`current[k] == section`coil`current[k];
    section`entry[k]-section`voltage[k] == section`series`voltage[k]+section`coil`voltage[k];
    section`coil`current[k] == section`shunt`current[k]+section`onward[k];
    Begin["section`series`"];

      DefineIndices[`indices,  { k } ];
      section`series`this:=section`series;
      (* Class: TwoPin *)
      section`series`voltage[k];
      section`series`current[k];
      section`series`power[k_]:=section`series`voltage[k]*section`series`current[k];
      (* Class: Resistor *)
      section`series`ohms[k_]:=Ladder`perSection[0.085];
      section`series`law[k_]:=section`series`voltage[k] == Ladder`perSection[0.085]*section`series`current[k];
      section`series`heat[k_]:=Ladder`perSection[0.085]*section`series`current[k]^2;
      (* Instance body: series *)
    

    End[];
    Begin["section`coil`"];

      DefineIndices[`indices,  { k } ];
      section`coil`this:=section`coil;
      (* Class: TwoPin *)
      section`coil`voltage[k];
      section`coil`current[k];
      section`coil`power[k_]:=section`coil`voltage[k]*section`coil`current[k];
      (* Class: Coil *)
      section`coil`henries[k_]:=Ladder`perSection[2.5*^-7];
      section`coil`law[k_]:=section`coil`voltage[k] == Ladder`perSection[2.5*^-7]*section`coil`current[k]';
      section`coil`energy[k_]:=Ladder`perSection[2.5*^-7]*section`coil`current[k]^2/2;
      (* Instance body: coil *)
    

    End[];
    Begin["section`shunt`"];

      DefineIndices[`indices,  { k } ];
      section`shunt`this:=section`shunt;
      (* Class: TwoPin *)
      section`shunt`voltage[k];
      section`shunt`current[k];
      section`shunt`power[k_]:=section`shunt`voltage[k]*section`shunt`current[k];
      (* Class: Capacitor *)
      section`shunt`farads[k_]:=Ladder`perSection[1.0*^-10];
      section`shunt`law[k_]:=Ladder`perSection[1.0*^-10]*section`shunt`voltage[k]' == section`shunt`current[k];
      section`shunt`energy[k_]:=Ladder`perSection[1.0*^-10]*section`shunt`voltage[k]^2/2;
      (* Class: LossyCapacitor *)
      section`shunt`farads[k_]:=Ladder`perSection[1.0*^-10];
      section`shunt`siemens[k_]:=2.0*^-9;
      section`shunt`law[k_]:=Ladder`perSection[1.0*^-10]*section`shunt`voltage[k]' == section`shunt`current[k]-2.0*^-9*section`shunt`voltage[k];
      section`shunt`lossAngle[k_][P$`omega_]:=ArcTan[2.0*^-9/(P$`omega*Ladder`perSection[1.0*^-10])];
      (* Instance body: shunt *)
    

    End[];
    section`entry[k_]:=If[k == 1, source`terminal, section`voltage[k-1]];
    section`onward[k_]:=If[k == Ladder`sections, load`current, section`coil`current[k+1]];
    section`voltage[k_]:=section`shunt`voltage[k];
    section`energy[k_]:=section`coil`energy[k]+section`shunt`energy[k];
    section`laws[k_]:= { section`series`law[k], section`coil`law[k], section`shunt`law[k] } ;
    (* Instance body: section *)
    section`position[k_]:=k*Ladder`lineLength/Ladder`sections

  End[];
  Ladder`source;
  Begin["source`"];

    DefineIndices[`indices,  {  } ];
    source`this:=source;
    (* Class: Source *)
    source`frequency:=1.0*^6;
    source`resistance:=50.0;
    source`inner`current == section`coil`current[1];
    Begin["source`inner`"];

      DefineIndices[`indices,  {  } ];
      source`inner`this:=source`inner;
      (* Class: TwoPin *)
      source`inner`voltage;
      source`inner`current;
      source`inner`power:=source`inner`voltage*source`inner`current;
      (* Class: Resistor *)
      source`inner`ohms:=50.0;
      source`inner`law:=source`inner`voltage == 50.0*source`inner`current;
      source`inner`heat:=50.0*source`inner`current^2;
      (* Instance body: inner *)
    

    End[];
    source`omega:=2*Pi*1.0*^6;
    source`ideal:=Ladder`amplitude*Sin[source`omega*Ladder`t];
    source`terminal:=source`ideal-source`inner`voltage;
    (* Instance body: source *)
  

  End[];
  Ladder`load;
  Begin["load`"];

    DefineIndices[`indices,  {  } ];
    load`this:=load;
    (* Class: TwoPin *)
    load`voltage;
    load`current;
    load`power:=load`voltage*load`current;
    (* Class: Resistor *)
    load`ohms:=50.0;
    load`law:=load`voltage == 50.0*load`current;
    load`heat:=50.0*load`current^2;
    (* Instance body: load *)
    load`voltage == section`voltage[Ladder`sections]

  End[];
  Ladder`line;
  Begin["line`"];

    DefineIndices[`indices,  {  } ];
    line`this:=line;
    (* Instance body: line *)
    line`inductance:=Ladder`perSection[2.5*^-7];
    line`capacitance:=Ladder`perSection[1.0*^-10];
    line`impedance:=Sqrt[line`inductance/line`capacitance];
    line`delay:=Ladder`sections*Sqrt[line`inductance*line`capacitance];
    line`energy:=Sum[section`energy[k],  { k, 1, Ladder`sections } ];
    line`mismatch:=(load`ohms-line`impedance)/(load`ohms+line`impedance)

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
