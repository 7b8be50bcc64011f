BeginPackage["Quiet`", { "Operators`", "Iterators`" } ];

  Clear["a`*"];
  Remove["a`*"];
  Quiet`a;
  Begin["a`"];

    DefineIndices[`indices,  {  } ];
    a`this:=a;
    (* Class: P *)
    a`m:=a;
    a`x:=a;
    (* Class: Q *)
    a`z:=y;
    (* Instance body: a *)
  

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
