BeginPackage["First`", { "Operators`", "Iterators`" } ];

  First`gravity:=9.81;
  First`fallTime[P$`height_]:=Sqrt[2*P$`height/First`gravity]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
