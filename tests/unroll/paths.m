BeginPackage["Paths`", { "Operators`", "Iterators`" } ];

  Clear["hall`*"];
  Remove["hall`*"];
  Clear["hall`right`*"];
  Remove["hall`right`*"];
  Clear["many`*"];
  Remove["many`*"];
  Clear["here`*"];
  Remove["here`*"];
  Paths`here;
  Begin["here`"];

    DefineIndices[`indices,  {  } ];
    here`this:=here;
    (* Class: Seat *)
    here`place:=table`tip[1];
    here`bank:=bench;
    here`other:=chair;
    table`tip`load[1]=bench`load[2];
     { table`tip`sum[1][P$`x_]->chair`load, bench`leg`f[table`tip`number[1], chair][3] } ;
    (* Instance body: here *)
  

  End[];
  Paths`many;
  Begin["many`"];

    DefineIndices[`indices,  { i } ];
    Format[many`place[i_]]:=("many["<>(ToString[i])<>"]")<>"`"<>ToString[many`place];
    Format[many`bank[i_]]:=("many["<>(ToString[i])<>"]")<>"`"<>ToString[many`bank];
    Format[many`other[i_]]:=("many["<>(ToString[i])<>"]")<>"`"<>ToString[many`other];
    Format[many`v[i_]]:=("many["<>(ToString[i])<>"]")<>"`"<>ToString[many`v];
    many`this:=many;
    (* Class: Seat *)
    many`place[i_]:=table`tip[i];
    many`bank[i_]:=house`bench;
    many`other[i_]:=chair[i];
    table`tip`load[i_]=house`bench`load[2];
     { table`tip`sum[i_][P$`x_]->chair`load[i], house`bench`leg`f[table`tip`number[i], chair[i]][3] } ;
    (* Instance body: many *)
    many`v[i_]:=table`x[chair`n[many`v[i]]]

  End[];
  Paths`hall;
  Begin["hall`"];

    DefineIndices[`indices,  {  } ];
    hall`this:=hall;
    (* Class: Inner *)
    Begin["hall`right`"];

      DefineIndices[`indices,  {  } ];
      hall`right`this:=hall`right;
      (* Class: Seat *)
      hall`right`place:=hall`base;
      hall`right`bank:=bench;
      hall`right`other:=table`tip[3];
      hall`base`load=bench`load[2];
       { hall`base`sum[P$`x_]->table`tip`load[3], bench`leg`f[hall`base`number, table`tip[3]][3] } ;
      (* Instance body: right *)
    

    End[];
    (* Instance body: hall *)
    hall`base

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
