BeginPackage["Features`", { "Operators`", "Iterators`" } ];

  Clear["corner`*"];
  Remove["corner`*"];
  Clear["origin`*"];
  Remove["origin`*"];
  Features`origin;
  Begin["origin`"];

    ;
    origin`this:=origin;
    (* Class: Point *)
    origin`position=Array[origin`oz$position$C,  { 2 } ];
    origin`position;
    (* Instance body: origin *)
  

  End[];
  Features`corner;
  Begin["corner`"];

    corner`this:=corner;
    (* Class: Point *)
    corner`position[i_]=Array[corner`oz$position$C[i],  { 2 } ];
    corner`position[i];
    (* Instance body: corner *)
    corner`weight[i_]:=i

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
