BeginPackage["Contexts`", { "Operators`", "Iterators`", "Tools`" } ];

  Clear["stump`*"];
  Remove["stump`*"];
  Clear["tree`*"];
  Remove["tree`*"];
  Clear["tree`right`*"];
  Remove["tree`right`*"];
  Clear["tree`left`*"];
  Remove["tree`left`*"];
  Contexts`size:=4;
  Contexts`tree;
  Begin["tree`"];

    DefineIndices[`indices,  {  } ];
    tree`this:=tree;
    (* Class: Branch *)
    tree`k:=Contexts`size;
    Begin["tree`left`"];

      DefineIndices[`indices,  {  } ];
      tree`left`this:=tree`left;
      (* Class: Leaf *)
      tree`left`k:=Contexts`size;
      tree`left`value;
      tree`left`twice:=2*Contexts`size;
      (* Instance body: left *)
    

    End[];
    Begin["tree`right`"];

      DefineIndices[`indices,  {  } ];
      tree`right`this:=tree`right;
      (* Class: Leaf *)
      tree`right`k:=Contexts`size+1;
      tree`right`value;
      tree`right`twice:=2*(Contexts`size+1);
      (* Instance body: right *)
    

    End[];
    tree`total:=tree`left`value+tree`right`value;
    (* Instance body: tree *)
    tree`total == tree`left`twice

  End[];
  Contexts`stump;
  Begin["stump`"];

    DefineIndices[`indices,  {  } ];
    stump`this:=stump;
    (* Class: Bare *)
    (* Instance body: stump *)
  

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
