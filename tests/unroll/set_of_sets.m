BeginPackage["Nested`", { "Operators`", "Iterators`" } ];

  Clear["b`*"];
  Remove["b`*"];
  Clear["a`*"];
  Remove["a`*"];
  Clear["a`q`*"];
  Remove["a`q`*"];
  Clear["a`p`*"];
  Remove["a`p`*"];
  Nested`a;
  Begin["a`"];

    DefineIndices[`indices,  { j } ];
    Format[a`s[j_]]:=("a["<>(ToString[j])<>"]")<>"`"<>ToString[a`s];
    Format[a`z[j_]]:=("a["<>(ToString[j])<>"]")<>"`"<>ToString[a`z];
    a`this:=a;
    (* Instance body: a *)
    Begin["a`p`"];

      DefineIndices[`indices,  { j, i } ];
      Format[a`p`k[j_, i_]]:=(("a["<>(ToString[j])<>"]")<>"`"<>("p["<>(ToString[i])<>"]"))<>"`"<>ToString[a`p`k];
      Format[a`p`x[j_, i_]]:=(("a["<>(ToString[j])<>"]")<>"`"<>("p["<>(ToString[i])<>"]"))<>"`"<>ToString[a`p`x];
      Format[a`p`y[j_, i_][P$`q_]]:=((("a["<>(ToString[j])<>"]")<>"`"<>("p["<>(ToString[i])<>"]"))<>ToString[a`p`y])[P$`q];
      a`p`this:=a`p;
      (* Class: P *)
      a`p`k[j_, i_]:=i+j;
      a`p`x[j_, i_]:=i+j;
      a`p`y[j_, i_][P$`q_]:=a`p`x[j, i]+P$`q;
      (* Instance body: p *)
    

    End[];
    Begin["a`q`"];

      DefineIndices[`indices,  { j } ];
      a`q`this:=a`q;
      (* Class: P *)
      a`q`k[j_]:=j;
      a`q`x[j_]:=j;
      a`q`y[j_][P$`q_]:=a`q`x[j]+P$`q;
      (* Instance body: q *)
    

    End[];
    a`s[j_]:=a`p`x[j, 2]+a`q`x[j]+a`p`y[j, a`z[j]][a`z[j]];
    a`z[j_]:=1

  End[];
  Nested`b;
  Begin["b`"];

    DefineIndices[`indices,  {  } ];
    b`this:=b;
    (* Instance body: b *)
    b`t:=a`p`x[1, 2]+a`p`y[b`n, m][b`n]+a`z[b`n];
    b`n:=2

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
