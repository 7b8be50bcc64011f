BeginPackage["Defs`", { "Operators`", "Iterators`" } ];

  Clear["s`*"];
  Remove["s`*"];
  Defs`s;
  Begin["s`"];

    DefineIndices[`indices,  { i, j } ];
    Format[s`v[i_, j_]]:=("s["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[s`v];
    Format[s`a[i_, j_][3]]:=(("s["<>(ToString[i]<>","<>ToString[j])<>"]")<>ToString[s`a])[3];
    Format[s`t[i_, j_][P$`k_]]:=(("s["<>(ToString[i]<>","<>ToString[j])<>"]")<>ToString[s`t])[P$`k];
    Format[s`l[i_, j_][P$`q_]]:=(("s["<>(ToString[i]<>","<>ToString[j])<>"]")<>ToString[s`l])[P$`q];
    Format[s`r[i_, j_][P$`q_]]:=(("s["<>(ToString[i]<>","<>ToString[j])<>"]")<>ToString[s`r])[P$`q];
    Format[s`c[i_, j_]]:=("s["<>(ToString[i]<>","<>ToString[j])<>"]")<>"`"<>ToString[s`c];
    s`this:=s;
    (* Instance body: s *)
    w[s`v[i_, j_]]^=3;
    s`v::"usage"="text";
    Format[s`v]:=5;
    s`v[i, j]/: s`t[i, j][s`v[i, j]] = 3;
    s`a[i, j][1]+=s`v[i, j];
    s`a[i_, j_][3]:=5;
    s`b[i, j][4];
    s`t[i_, j_][P$`k_]:=P$`k*s`v[i, j];
    s`v[i, j];
    s`l[i_, j_][P$`q_]:=(Module [ { y,
      z = P$`q+y },
      z+y+s`v[i, j]]);
    s`r[i_, j_][P$`q_]:=(w[P$`q_]=P$`q;
    P$`q/.s`v[i, j]->P$`q);
    s`c[i_, j_]:=s`v[i, j+1]-s`t[s`v[i, j]][s`v[i, j]]

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
