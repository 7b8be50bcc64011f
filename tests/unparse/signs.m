BeginPackage["Signs`", { "Operators`", "Iterators`" } ];

  Signs`a:=1;
  Signs`b:=2;
  Signs`difference:=Signs`a- -Signs`b;
  Signs`opposite:=- --Signs`b;
  Signs`shares:=Signs`a/ .5+ ++Signs`b;
  Signs`decimals:=2*.5-.25;
  Signs`half:=(Signs`a= .5);
  Signs`factorial:=(Signs`a! =Signs`b);
  Signs`scaled:=3 . { Signs`a, Signs`b } . 2
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
