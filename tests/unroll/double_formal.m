BeginPackage["Twice`", { "Operators`", "Iterators`" } ];

  Clear["i`*"];
  Remove["i`*"];
  Twice`i;
  Begin["i`"];

    DefineIndices[`indices,  {  } ];
    i`this:=i;
    (* Class: C *)
    i`a:=1;
    1:=2;
    i`x:=2;
    (* Instance body: i *)
  

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
