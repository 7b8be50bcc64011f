BeginPackage["Names`", { "Operators`", "Iterators`" } ];

  Clear["t`*"];
  Remove["t`*"];
  Clear["s`*"];
  Remove["s`*"];
  Clear["s`p`*"];
  Remove["s`p`*"];
  Names`i:=7;
  Names`s;
  Begin["s`"];

    DefineIndices[`indices,  { i } ];
    Format[s`i[i_]]:=("s["<>(ToString[i])<>"]")<>"`"<>ToString[s`i];
    Format[s`k[i_]]:=("s["<>(ToString[i])<>"]")<>"`"<>ToString[s`k];
    Format[s`x[i_]]:=("s["<>(ToString[i])<>"]")<>"`"<>ToString[s`x];
    Format[s`y[i_][(i_)*2]]:=(("s["<>(ToString[i])<>"]")<>ToString[s`y])[i*2];
    Format[s`z[i_]]:=("s["<>(ToString[i])<>"]")<>"`"<>ToString[s`z];
    s`this:=s;
    (* Class: C *)
    s`i[i_]:=i;
    s`k[i_]:=i*2;
    s`x[i_]:=i+i*2;
    s`y[i_][(i_)*2]:=i;
    (* Instance body: s *)
    Begin["s`p`"];

      DefineIndices[`indices,  { i, k } ];
      Format[s`p`i[i_, k_]]:=(("s["<>(ToString[i])<>"]")<>"`"<>("p["<>(ToString[k])<>"]"))<>"`"<>ToString[s`p`i];
      Format[s`p`k[i_, k_]]:=(("s["<>(ToString[i])<>"]")<>"`"<>("p["<>(ToString[k])<>"]"))<>"`"<>ToString[s`p`k];
      Format[s`p`x[i_, k_]]:=(("s["<>(ToString[i])<>"]")<>"`"<>("p["<>(ToString[k])<>"]"))<>"`"<>ToString[s`p`x];
      Format[s`p`y[i_, k_][i_]]:=((("s["<>(ToString[i])<>"]")<>"`"<>("p["<>(ToString[k])<>"]"))<>ToString[s`p`y])[i];
      s`p`this:=s`p;
      (* Class: C *)
      s`p`i[i_, k_]:=k;
      s`p`k[i_, k_]:=i;
      s`p`x[i_, k_]:=k+i;
      s`p`y[i_, k_][i_]:=k;
      (* Instance body: p *)
    

    End[];
    s`z[i_]:=i

  End[];
  Names`t;
  Begin["t`"];

    DefineIndices[`indices,  {  } ];
    t`this:=t;
    (* Class: C *)
    t`i:=t`i;
    t`k:=1;
    t`x:=t`i+1;
    t`y[1]:=t`i;
    (* Instance body: t *)
    t`w:=s`z[t`i]

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
