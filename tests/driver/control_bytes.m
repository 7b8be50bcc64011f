BeginPackage["m`", { "Operators`", "Iterators`" } ];

  m`x:=a;
  m`z:=1
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
