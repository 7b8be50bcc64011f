BeginPackage["Forms`", { "Operators`", "Iterators`" } ];

  Clear["two`*"];
  Remove["two`*"];
  Clear["one`*"];
  Remove["one`*"];
  Forms`one;
  Begin["one`"];

    DefineIndices[`indices,  {  } ];
    one`this:=one;
    (* Class: K *)
    one`c:=2;
    one`oz$y$P[P$`x_]:=P$`x*2;
    Lookup[one`y[P$`x_]]:=one`oz$y$P[P$`x];
    one`y;
    one`k:=(one`k=2);
    one`t[P$`x_]:=(one`t[P$`x]=P$`x+one`k);
    one`n[2]:=(one`n[2]=one`k);
    one`K`u:=2;
    one`K`w[P$`x_]:=P$`x+one`u;
    one`m=Array[one`oz$m$C,  { 2, 2 } ];
    Format[one`oz$m$C[i_]]:=HoldForm[one`m[[i]] ];
    one`m;
    Protect[one`sy, one`sz];
    one`link:=Indirect[Indirect[one`k, "u"], "y"];
    (* Instance body: one *)
  

  End[];
  Forms`two;
  Begin["two`"];

    DefineIndices[`indices,  { i } ];
    Format[two`c[i_]]:=("two["<>(ToString[i])<>"]")<>"`"<>ToString[two`c];
    Format[two`oz$y$P[i_][P$`x_]]:=(("two["<>(ToString[i])<>"]")<>ToString[two`oz$y$P])[P$`x];
    Format[two`y[i_][P$`x_]]:=(("two["<>(ToString[i])<>"]")<>ToString[two`y])[P$`x];
    Format[two`k[i_]]:=("two["<>(ToString[i])<>"]")<>"`"<>ToString[two`k];
    Format[two`t[i_][P$`x_]]:=(("two["<>(ToString[i])<>"]")<>ToString[two`t])[P$`x];
    Format[two`n[i_][i_]]:=(("two["<>(ToString[i])<>"]")<>ToString[two`n])[i];
    Format[two`K`u[i_]]:=("two["<>(ToString[i])<>"]")<>"`"<>ToString[two`K`u];
    Format[two`K`w[i_][P$`x_]]:=(("two["<>(ToString[i])<>"]")<>ToString[two`K`w])[P$`x];
    Format[two`m[i_]]:=("two["<>(ToString[i])<>"]")<>"`"<>ToString[two`m];
    Format[two`link[i_]]:=("two["<>(ToString[i])<>"]")<>"`"<>ToString[two`link];
    two`this:=two;
    (* Class: K *)
    two`c[i_]:=i;
    two`oz$y$P[i_][P$`x_]:=P$`x*i;
    Lookup[two`y[i_][P$`x_]]:=two`oz$y$P[i][P$`x];
    two`y[i];
    two`k[i_]:=(two`k[i]=i);
    two`t[i_][P$`x_]:=(two`t[i][P$`x]=P$`x+two`k[i]);
    two`n[i_][i_]:=(two`n[i][i]=two`k[i]);
    two`K`u[i_]:=i;
    two`K`w[i_][P$`x_]:=P$`x+two`u[i];
    two`m[i_]=Array[two`oz$m$C[i],  { i, 2 } ];
    Format[two`oz$m$C[i_]]:=HoldForm[two`m[[i]] ];
    two`m[i];
    Protect[two`sy[i], two`sz[i]];
    two`link[i_]:=Indirect[Indirect[two`k[i], "u"], "y"];
    (* Instance body: two *)
  

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
