BeginPackage["Thin`", { "Operators`", "Iterators`" } ];

  Clear["s`*"];
  Remove["s`*"];
  Clear["s`p`*"];
  Remove["s`p`*"];
  Clear["a`*"];
  Remove["a`*"];
  Clear["a`p`*"];
  Remove["a`p`*"];
  Thin`a;
  Begin["a`"];

    ;
    a`this:=a;
    (* Class: C *)
    a`k:=1;
    a`x:=1;
    a`v=Array[a`oz$v$C,  { 2 } ];
    Format[a`oz$v$C[i_]]:=HoldForm[a`v[[i]] ];
    (* Instance body: a *)
    Begin["a`p`"];

      ;
      a`p`this:=a`p;
      (* Class: C *)
      a`p`k:=a`x;
      a`p`x:=a`x;
      a`p`v=Array[a`p`oz$v$C,  { 2 } ];
      Format[a`p`oz$v$C[i_]]:=HoldForm[a`p`v[[i]] ];
      (* Instance body: p *)
    

    End[]

  End[];
  Thin`s;
  Begin["s`"];

    Format[s`k[i_]]:=("s["<>(ToString[i])<>"]")<>"`"<>ToString[s`k];
    Format[s`x[i_]]:=("s["<>(ToString[i])<>"]")<>"`"<>ToString[s`x];
    Format[s`v[i_]]:=("s["<>(ToString[i])<>"]")<>"`"<>ToString[s`v];
    s`this:=s;
    (* Class: C *)
    s`k[i_]:=i;
    s`x[i_]:=i;
    s`v[i_]=Array[s`oz$v$C[i],  { 2 } ];
    Format[s`oz$v$C[i_]]:=HoldForm[s`v[[i]] ];
    (* Instance body: s *)
    Begin["s`p`"];

      Format[s`p`k[i_, j_]]:=(("s["<>(ToString[i])<>"]")<>"`"<>("p["<>(ToString[j])<>"]"))<>"`"<>ToString[s`p`k];
      Format[s`p`x[i_, j_]]:=(("s["<>(ToString[i])<>"]")<>"`"<>("p["<>(ToString[j])<>"]"))<>"`"<>ToString[s`p`x];
      Format[s`p`v[i_, j_]]:=(("s["<>(ToString[i])<>"]")<>"`"<>("p["<>(ToString[j])<>"]"))<>"`"<>ToString[s`p`v];
      s`p`this:=s`p;
      (* Class: C *)
      s`p`k[i_, j_]:=j;
      s`p`x[i_, j_]:=j;
      s`p`v[i_, j_]=Array[s`p`oz$v$C[i, j],  { 2 } ];
      Format[s`p`oz$v$C[i_]]:=HoldForm[s`p`v[[i]] ];
      (* Instance body: p *)
    

    End[]

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
