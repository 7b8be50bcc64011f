BeginPackage["Heads`", { "Operators`", "Iterators`" } ];

  Clear["t`*"];
  Remove["t`*"];
  Clear["t`p`*"];
  Remove["t`p`*"];
  Clear["n`*"];
  Remove["n`*"];
  Clear["n`g`*"];
  Remove["n`g`*"];
  Clear["n`m`*"];
  Remove["n`m`*"];
  Clear["n`m`r`*"];
  Remove["n`m`r`*"];
  Clear["n`m`p`*"];
  Remove["n`m`p`*"];
  Clear["a`*"];
  Remove["a`*"];
  Clear["a`r`*"];
  Remove["a`r`*"];
  Clear["a`p`*"];
  Remove["a`p`*"];
  Clear["host`*"];
  Remove["host`*"];
  Heads`host;
  Begin["host`"];

    DefineIndices[`indices,  {  } ];
    host`this:=host;
    (* Class: D *)
    host`k:=2;
    host`x:=2;
    host`q:=3;
    (* Instance body: host *)
  

  End[];
  Heads`a;
  Begin["a`"];

    DefineIndices[`indices,  {  } ];
    a`this:=a;
    (* Class: C *)
    a`k:=a`g;
    a`d:=host;
    Begin["a`p`"];

      DefineIndices[`indices,  {  } ];
      a`p`this:=a`p;
      (* Class: D *)
      a`p`k:=q;
      a`p`x:=q;
      a`p`q:=3;
      (* Class: D *)
      a`p`k:=a`h[a`g];
      a`p`x:=a`h[a`g];
      a`p`q:=3;
      (* Class: D *)
      a`p`k:=a;
      a`p`x:=a;
      a`p`q:=3;
      (* Class: D *)
      a`p`k:=a`x;
      a`p`x:=a`x;
      a`p`q:=3;
      (* Class: D *)
      a`p`k:=host`x;
      a`p`x:=host`x;
      a`p`q:=3;
      (* Class: D *)
      a`p`k:=a`g;
      a`p`x:=a`g;
      a`p`q:=3;
      (* Instance body: p *)
    

    End[];
    Begin["a`r`"];

      DefineIndices[`indices,  { i } ];
      Format[a`r`k[i_]]:=("r["<>(ToString[i])<>"]")<>"`"<>ToString[a`r`k];
      Format[a`r`x[i_]]:=("r["<>(ToString[i])<>"]")<>"`"<>ToString[a`r`x];
      Format[a`r`q[i_]]:=("r["<>(ToString[i])<>"]")<>"`"<>ToString[a`r`q];
      a`r`this:=a`r;
      (* Class: D *)
      a`r`k[i_]:=a`g+i;
      a`r`x[i_]:=a`g+i;
      a`r`q[i_]:=3;
      (* Instance body: r *)
    

    End[];
    a`y:=a`r`x[a`g]+b`x[a`g]+host`p`x;
    a`h;
    a`x;
    (* Instance body: a *)
    a`g

  End[];
  Heads`n;
  Begin["n`"];

    DefineIndices[`indices,  {  } ];
    n`this:=n;
    (* Instance body: n *)
    Begin["n`m`"];

      DefineIndices[`indices,  {  } ];
      n`m`this:=n`m;
      (* Class: C *)
      n`m`k:=n`g`x;
      n`m`d:=n`g;
      Begin["n`m`p`"];

        DefineIndices[`indices,  {  } ];
        n`m`p`this:=n`m`p;
        (* Class: D *)
        n`m`p`k:=q;
        n`m`p`x:=q;
        n`m`p`q:=3;
        (* Class: D *)
        n`m`p`k:=n`m`h[n`g`x];
        n`m`p`x:=n`m`h[n`g`x];
        n`m`p`q:=3;
        (* Class: D *)
        n`m`p`k:=n`m;
        n`m`p`x:=n`m;
        n`m`p`q:=3;
        (* Class: D *)
        n`m`p`k:=n`m`x;
        n`m`p`x:=n`m`x;
        n`m`p`q:=3;
        (* Class: D *)
        n`m`p`k:=n`g`x;
        n`m`p`x:=n`g`x;
        n`m`p`q:=3;
        (* Class: D *)
        n`m`p`k:=n`g`x;
        n`m`p`x:=n`g`x;
        n`m`p`q:=3;
        (* Instance body: p *)
      

      End[];
      Begin["n`m`r`"];

        DefineIndices[`indices,  { i } ];
        Format[n`m`r`k[i_]]:=("r["<>(ToString[i])<>"]")<>"`"<>ToString[n`m`r`k];
        Format[n`m`r`x[i_]]:=("r["<>(ToString[i])<>"]")<>"`"<>ToString[n`m`r`x];
        Format[n`m`r`q[i_]]:=("r["<>(ToString[i])<>"]")<>"`"<>ToString[n`m`r`q];
        n`m`r`this:=n`m`r;
        (* Class: D *)
        n`m`r`k[i_]:=n`g`x+i;
        n`m`r`x[i_]:=n`g`x+i;
        n`m`r`q[i_]:=3;
        (* Instance body: r *)
      

      End[];
      n`m`y:=n`m`r`x[n`g`x]+b`x[n`g`x]+n`g`p`x;
      n`m`h;
      n`m`x;
      (* Instance body: m *)
    

    End[];
    Begin["n`g`"];

      DefineIndices[`indices,  {  } ];
      n`g`this:=n`g;
      (* Class: D *)
      n`g`k:=1;
      n`g`x:=1;
      n`g`q:=3;
      (* Instance body: g *)
    

    End[]

  End[];
  Heads`t;
  Begin["t`"];

    DefineIndices[`indices,  { j } ];
    t`this:=t;
    (* Instance body: t *)
    Begin["t`p`"];

      DefineIndices[`indices,  { j } ];
      t`p`this:=t`p;
      (* Class: D *)
      t`p`k[j_]:=t`h[j];
      t`p`x[j_]:=t`h[j];
      t`p`q[j_]:=3;
      (* Class: D *)
      t`p`k[j_]:=t`h+j;
      t`p`x[j_]:=t`h+j;
      t`p`q[j_]:=3;
      (* Instance body: p *)
    

    End[];
    t`h[j]

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
