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

    DefineIndices[`indices,  {  } ];
    a`this:=a;
    (* Class: C *)
    a`k:=1;
    a`x:=1;
    a`v=Array[a`oz$v$C,  { 2 } ];
    (* Instance body: a *)
    Begin["a`p`"];

      DefineIndices[`indices,  {  } ];
      a`p`this:=a`p;
      (* Class: C *)
      a`p`k:=a`x;
      a`p`x:=a`x;
      a`p`v=Array[a`p`oz$v$C,  { 2 } ];
      (* Instance body: p *)
    

    End[]

  End[];
  Thin`s;
  Begin["s`"];

    DefineIndices[`indices,  { i } ];
    s`this:=s;
    (* Class: C *)
    s`k[i_]:=i;
    s`x[i_]:=i;
    s`v[i_]=Array[s`oz$v$C[i],  { 2 } ];
    (* Instance body: s *)
    Begin["s`p`"];

      DefineIndices[`indices,  { i, j } ];
      s`p`this:=s`p;
      (* Class: C *)
      s`p`k[i_, j_]:=j;
      s`p`x[i_, j_]:=j;
      s`p`v[i_, j_]=Array[s`p`oz$v$C[i, j],  { 2 } ];
      (* Instance body: p *)
    

    End[]

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
