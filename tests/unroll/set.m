BeginPackage["Sets`", { "Operators`", "Iterators`" } ];

  Clear["ball`*"];
  Remove["ball`*"];
  Sets`ball;
  Begin["ball`"];

    DefineIndices[`indices,  { i } ];
    Format[ball`m[i_]]:=("ball["<>(ToString[i])<>"]")<>"`"<>ToString[ball`m];
    Format[ball`next[i_]]:=("ball["<>(ToString[i])<>"]")<>"`"<>ToString[ball`next];
    Format[ball`mass[i_]]:=("ball["<>(ToString[i])<>"]")<>"`"<>ToString[ball`mass];
    Format[ball`f[i_][P$`x_]]:=(("ball["<>(ToString[i])<>"]")<>ToString[ball`f])[P$`x];
    Format[ball`h[i_][i_]]:=(("ball["<>(ToString[i])<>"]")<>ToString[ball`h])[i];
    Format[ball`own[i_]]:=("ball["<>(ToString[i])<>"]")<>"`"<>ToString[ball`own];
    Format[ball`n[i_]]:=("ball["<>(ToString[i])<>"]")<>"`"<>ToString[ball`n];
    Format[ball`rules[i_]]:=("ball["<>(ToString[i])<>"]")<>"`"<>ToString[ball`rules];
    ball`this:=ball;
    (* Class: Ball *)
    ball`m[i_]:=i;
    ball`next[i_]:=ball[i+1];
    ball`mass[i_]:=i;
    ball`f[i_][P$`x_]:=P$`x*ball`v[i]+ball`v[i+1];
    ball`h[i_][i_]:=1;
    ball`v[i];
    (* Instance body: ball *)
    u:=ball`v[i];
    ball`own[i_]:=ball`f[i][i]+ball`v[1]+ball`f[ball`n[i]][ball`v[i]]+ball`v[i];
    ball`n[i_]:=3;
    ball`rules[i_]:= { ball`v[i]->ball`n[i], ball`v[i]:>ball`n[i] } 

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
