BeginPackage["Globs`", { "Operators`", "Iterators`", "Math`", "Util`" } ];

  Globs`g:=9.81;
  Globs`h;
  Globs`k[1, 2];
  Globs`r;
  Globs`a[3];
  Globs`f[P$`i_, P$`x_]:=P$`i*P$`x;
  Globs`c[P$`x_]:=Globs`g*P$`x;
  Globs`v=Array[Globs`oz$v$C,  { 2, n } ];
  Format[Globs`oz$v$C[i_]]:=HoldForm[Globs`v[[i]] ];
  Globs`w=Array[Globs`oz$w$C,  { 2, n } ];
  Format[Globs`oz$w$C[i_]]:=HoldForm[Globs`w[[i]] ];
  Globs`z=Array[Globs`oz$z$C,  { 3 } ];
  Format[Globs`oz$z$C[i_]]:=HoldForm[Globs`z[[i]] ];
  Globs`z;
  Protect[Globs`s, Globs`t];
  Globs`st:=Globs`g;
  Globs`o:=(Globs`o=u);
  Globs`mt[P$`x_]:= { P$`x, 1 } ;
  Globs`at;
  Globs`q:=inst`x+many`y[Globs`g][Globs`r];
  Globs`md:=(Module [ { d,
    b = Globs`g },
    (b=Array[oz$b$C,  { 2 } ];
    Format[oz$b$C[i_]]:=HoldForm[b[[i]] ]);
    b+d])
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
