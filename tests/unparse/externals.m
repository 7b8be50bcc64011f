BeginPackage["Externals`", { "Operators`", "Iterators`" } ];

  Externals`before:=1
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
