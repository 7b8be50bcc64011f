BeginPackage["M`", { "Operators`", "Iterators`" } ];

  M`a:=1;
  M`b:=a`c[2]`d+Sum[a[k]`e,  { k, 1, 3 } ]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
