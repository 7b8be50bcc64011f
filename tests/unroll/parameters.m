BeginPackage["Params`", { "Operators`", "Iterators`" } ];

  Clear["sized`*"];
  Remove["sized`*"];
  Clear["less`*"];
  Remove["less`*"];
  Clear["many`*"];
  Remove["many`*"];
  Clear["few`*"];
  Remove["few`*"];
  Clear["j`*"];
  Remove["j`*"];
  Clear["i`*"];
  Remove["i`*"];
  Clear["host`*"];
  Remove["host`*"];
  Params`host;
  Begin["host`"];

    DefineIndices[`indices,  {  } ];
    host`this:=host;
    (* Instance body: host *)
    host`x:=1

  End[];
  Params`i;
  Begin["i`"];

    DefineIndices[`indices,  {  } ];
    i`this:=i;
    (* Class: Inner *)
    i`u:=i`m+host;
    i`iu:=i`m+host;
    (* Class: C *)
    i`a:=i`m;
    i`b:=host;
    i`sum:=i`m+host+i`c;
    i`c:=host`x;
    i`d:=i`m[1]+host`p`q[i`m];
    i`f[P$`a_]:=P$`a+host;
    i`m[2]:=7;
    i`h[i`m]:=k[host];
    i`here:=i`c+k[i];
    (* Instance body: i *)
    i`m:=2

  End[];
  Params`j;
  Begin["j`"];

    DefineIndices[`indices,  {  } ];
    j`this:=j;
    (* Class: Swap *)
    j`a:=2*j`b;
    j`b:=2*j`b;
    j`s:=2*j`b-2*j`b;
    j`t[2*j`b]:=2*j`b;
    (* Instance body: j *)
  

  End[];
  Params`few;
  Begin["few`"];

    DefineIndices[`indices,  {  } ];
    few`this:=few;
    (* Class: Inner *)
    few`u:=1+few`b;
    few`iu:=1+few`b;
    (* Class: C *)
    few`a:=1;
    few`sum:=1+few`b+few`c;
    few`c:=few`b`x;
    few`d:=1[1]+few`b`p`q[1];
    few`f[P$`a_]:=P$`a+few`b;
    1[2]:=7;
    few`h[1]:=k[few`b];
    few`here:=few`c+k[few];
    (* Instance body: few *)
  

  End[];
  Params`many;
  Begin["many`"];

    DefineIndices[`indices,  {  } ];
    many`this:=many;
    (* Class: Swap *)
    many`a:=1;
    many`b:=2;
    many`s:=1-2;
    many`t[2]:=1;
    (* Instance body: many *)
  

  End[];
  Params`less;
  Begin["less`"];

    DefineIndices[`indices,  {  } ];
    less`this:=less;
    (* Class: Inner *)
    less`iu:=less`u;
    (* Instance body: less *)
  

  End[];
  Params`sized;
  Begin["sized`"];

    DefineIndices[`indices,  {  } ];
    sized`this:=sized;
    (* Class: Sized *)
    sized`n:=3;
    sized`v=Array[sized`oz$v$C,  { 3, 3+1 } ];
    Format[sized`oz$v$C[i_]]:=HoldForm[sized`v[[i]] ];
    sized`w=Array[sized`oz$w$C,  { 3 } ];
    Format[sized`oz$w$C[i_]]:=HoldForm[sized`w[[i]] ];
    sized`w;
    (* Instance body: sized *)
  

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
