BeginPackage["Order`", { "Operators`", "Iterators`", "Math`", "Util`" } ];

  Clear["empty`*"];
  Remove["empty`*"];
  Clear["o`*"];
  Remove["o`*"];
  Order`o;
  Begin["o`"];

    DefineIndices[`indices,  {  } ];
    o`this:=o;
    (* Class: Base *)
    o`x:=1;
    o`y:=1;
    (* Class: Right *)
    o`x:=3;
    (* Class: Base *)
    o`x:=1;
    o`y:=1;
    (* Class: Right *)
    o`x:=3;
    (* Class: Base *)
    o`x:=1;
    o`y:=1;
    (* Class: Left *)
    o`x:=2;
    o`z:=2;
    (* Class: Both *)
    o`x:=4;
    o`w:=o`x;
    (* Instance body: o *)
    o`z;
    o`w;
    o`y:=6;
    o`x:=5

  End[];
  Order`empty;
  Begin["empty`"];

    DefineIndices[`indices,  {  } ];
    empty`this:=empty;
    (* Instance body: empty *)
  

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
