BeginPackage["Places`", { "Operators`", "Iterators`" } ];

  Clear["s`*"];
  Remove["s`*"];
  Clear["call`*"];
  Remove["call`*"];
  Clear["one`*"];
  Remove["one`*"];
  Places`one;
  Begin["one`"];

    DefineIndices[`indices,  {  } ];
    one`this:=one;
    (* Class: C *)
    one`a:=1;
    one`m:=1::"usage";
    (* Instance body: one *)
  

  End[];
  Places`call;
  Begin["call`"];

    DefineIndices[`indices,  {  } ];
    call`this:=call;
    (* Class: C *)
    call`a:=f[2];
    call`m:=f[2]::"usage";
    (* Instance body: call *)
  

  End[];
  Places`s;
  Begin["s`"];

    DefineIndices[`indices,  { i } ];
    Format[s`v[i_]]:=("s["<>(ToString[i])<>"]")<>"`"<>ToString[s`v];
    Format[s`m[i_]]:=("s["<>(ToString[i])<>"]")<>"`"<>ToString[s`m];
    Format[s`g[i_][P$`x_]]:=(("s["<>(ToString[i])<>"]")<>ToString[s`g])[P$`x];
    s`this:=s;
    (* Instance body: s *)
    s`v[i_]:=1;
    s`m[i_]:=s`v::"usage"

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
