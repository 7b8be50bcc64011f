BeginPackage["Priorities`", { "Operators`", "Iterators`" } ];

  Priorities`a;
  Priorities`b;
  Priorities`c;
  Priorities`subtract:=(Priorities`a-Priorities`b)-Priorities`c;
  Priorities`nested:=Priorities`a-(Priorities`b-Priorities`c);
  Priorities`sum:=Priorities`a+Priorities`b+Priorities`c+-Priorities`a^2+Priorities`b;
  Priorities`power:=Priorities`a^(Priorities`b^Priorities`c);
  Priorities`quotient:=Priorities`a*Priorities`b/Priorities`c*2;
  Priorities`logic:=!Priorities`a&&Priorities`b||Priorities`c;
  Priorities`chain:=Priorities`a+1 < Priorities`b <= Priorities`c;
  Priorities`rule:=Priorities`a/. { Priorities`a->Priorities`b, Priorities`b:>Priorities`c+1 } ;
  Priorities`call:=Priorities`a[Priorities`b][Priorities`c[[1]] ]+(Priorities`b')[Priorities`c]+(#+1 &)[0];
  Priorities`list:= { _, Priorities`a[0], 0+1, Priorities`b[[_,1]]  } ;
  Priorities`statements:=(Priorities`a=1;
  Priorities`b=2;
  Priorities`a);
  Priorities`block:=(Module [ { u,
    t = Priorities`a },
    u=t;
    u]);
  Priorities`patterns[P$`x_, P$`y_Integer, P$`z__, P$`u_.]:=P$`x;
  Priorities`put:=(Priorities`a>>"file");
  Priorities`tag:=(Priorities`a/: Priorities`b[Priorities`a] = Priorities`c);
  Priorities`message:=Priorities`a::"bad";
  Priorities`condition:=v: { _, ___ } /;v == x
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
