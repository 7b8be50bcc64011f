BeginPackage["`", { "Operators`", "Iterators`" } ];


EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
