BeginPackage["Bearing`", { "Operators`", "Iterators`" } ];

  Clear["roller`*"];
  Remove["roller`*"];
  Clear["roller`outside`*"];
  Remove["roller`outside`*"];
  Clear["roller`inside`*"];
  Remove["roller`inside`*"];
  Clear["cage`*"];
  Remove["cage`*"];
  Clear["inner`*"];
  Remove["inner`*"];
  Clear["outer`*"];
  Remove["outer`*"];
  Protect[Bearing`t];
  Bearing`count:=14;
  Bearing`clearance:=12.0*^-6;
  Bearing`modulus:=2.08*^11;
  Bearing`lineStiffness[P$`extent_]:=0.26*Bearing`modulus*P$`extent^(8/9);
  Bearing`contactForce[P$`stiffness_, P$`depth_]:=If[P$`depth > 0, P$`stiffness*P$`depth^(10/9), 0.0];
  Bearing`outer;
  Begin["outer`"];

    DefineIndices[`indices,  {  } ];
    outer`this:=outer;
    (* Class: Ring *)
    outer`radius:=0.0425;
    outer`x;
    outer`y;
    outer`rotation;
    outer`contour[P$`phi_]:= { outer`x+0.0425*Cos[P$`phi], outer`y+0.0425*Sin[P$`phi] } ;
    (* Class: FixedRing *)
    outer`radius:=0.0425;
    outer`x:=0.0;
    outer`y:=0.0;
    outer`rotation[P$`at_]:=0.0;
    (* Instance body: outer *)
  

  End[];
  Bearing`inner;
  Begin["inner`"];

    DefineIndices[`indices,  {  } ];
    inner`this:=inner;
    (* Class: Ring *)
    inner`radius:=0.0325;
    inner`x;
    inner`y;
    inner`rotation;
    inner`contour[P$`phi_]:= { inner`x+0.0325*Cos[P$`phi], inner`y+0.0325*Sin[P$`phi] } ;
    (* Class: LoadedRing *)
    inner`radius:=0.0325;
    inner`mass:=1.35;
    inner`load:=2400.0;
    inner`forceX:=Sum[roller`inside`force[k]*Cos[roller`angle[k]],  { k, 1, Bearing`count } ];
    inner`forceY:=Sum[roller`inside`force[k]*Sin[roller`angle[k]],  { k, 1, Bearing`count } ];
    inner`equationX:=1.35*inner`x'' == -inner`forceX;
    inner`equationY:=1.35*inner`y'' == -inner`forceY-2400.0;
    (* Instance body: inner *)
  

  End[];
  Bearing`cage;
  Begin["cage`"];

    DefineIndices[`indices,  {  } ];
    cage`this:=cage;
    (* Class: Cage *)
    cage`innerRing:=inner;
    cage`outerRing:=outer;
    cage`share:=inner`radius/(inner`radius+outer`radius);
    cage`rotation[P$`at_]:=cage`share*inner`rotation[P$`at];
    (* Instance body: cage *)
  

  End[];
  Bearing`roller;
  Begin["roller`"];

    DefineIndices[`indices,  { k } ];
    Format[roller`number[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`number];
    Format[roller`spacing[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`spacing];
    Format[roller`angle[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`angle];
    Format[roller`number[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`number];
    Format[roller`diameter[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`diameter];
    Format[roller`long[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`long];
    Format[roller`mass[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`mass];
    Format[roller`balance[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`balance];
    Format[roller`loaded[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`loaded];
    Format[roller`number[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`number];
    Format[roller`diameter[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`diameter];
    Format[roller`long[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`long];
    Format[roller`crown[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`crown];
    Format[roller`reserve[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`reserve];
    Format[roller`life[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`life];
    Format[roller`capacity[k_]]:=("roller["<>(ToString[k])<>"]")<>"`"<>ToString[roller`capacity];
    roller`this:=roller;
    (* Class: Placed *)
    roller`number[k_]:=k;
    roller`spacing[k_]:=2*Pi/Bearing`count;
    roller`angle[k_]:=cage`rotation[Bearing`t]+(k-1)*roller`spacing[k];
    (* Class: Roller *)
    roller`number[k_]:=k;
    roller`diameter[k_]:=0.01;
    roller`long[k_]:=0.012-2*0.0006;
    Begin["roller`inside`"];

      DefineIndices[`indices,  { k } ];
      roller`inside`this:=roller`inside;
      (* Class: Placed *)
      roller`inside`number[k_]:=k;
      roller`inside`spacing[k_]:=2*Pi/Bearing`count;
      roller`inside`angle[k_]:=cage`rotation[Bearing`t]+(k-1)*roller`inside`spacing[k];
      (* Class: Contact *)
      roller`inside`number[k_]:=k;
      roller`inside`ring[k_]:=inner;
      roller`inside`gap[k_]:=Bearing`clearance/4;
      roller`inside`long[k_]:=0.012-2*0.0006;
      roller`inside`side[k_]:=1;
      roller`inside`approach[k_]:=1*(inner`x*Cos[roller`inside`angle[k]]+inner`y*Sin[roller`inside`angle[k]]);
      roller`inside`depth[k_]:=roller`inside`approach[k]-Bearing`clearance/4;
      roller`inside`force[k_]:=Bearing`contactForce[Bearing`lineStiffness[0.012-2*0.0006], roller`inside`depth[k]];
      roller`inside`loss[k_]:=roller`inside`friction[k]*roller`inside`force[k];
      roller`inside`friction[k_]:=0.0018;
      (* Instance body: inside *)
    

    End[];
    Begin["roller`outside`"];

      DefineIndices[`indices,  { k } ];
      roller`outside`this:=roller`outside;
      (* Class: Placed *)
      roller`outside`number[k_]:=k;
      roller`outside`spacing[k_]:=2*Pi/Bearing`count;
      roller`outside`angle[k_]:=cage`rotation[Bearing`t]+(k-1)*roller`outside`spacing[k];
      (* Class: Contact *)
      roller`outside`number[k_]:=k;
      roller`outside`ring[k_]:=outer;
      roller`outside`gap[k_]:=Bearing`clearance/4;
      roller`outside`long[k_]:=0.012-2*0.0006;
      roller`outside`side[k_]:=-1;
      roller`outside`approach[k_]:=-1*(outer`x*Cos[roller`outside`angle[k]]+outer`y*Sin[roller`outside`angle[k]]);
      roller`outside`depth[k_]:=roller`outside`approach[k]-Bearing`clearance/4;
      roller`outside`force[k_]:=Bearing`contactForce[Bearing`lineStiffness[0.012-2*0.0006], roller`outside`depth[k]];
      roller`outside`loss[k_]:=roller`outside`friction[k]*roller`outside`force[k];
      roller`outside`friction[k_]:=0.0018;
      (* Instance body: outside *)
    

    End[];
    roller`mass[k_]:=7810*Pi*0.01^2/4*(0.012-2*0.0006);
    roller`balance[k_]:=roller`mass[k]*roller`lift[k]'' == roller`outside`force[k]-roller`inside`force[k];
    roller`loaded[k_]:=roller`inside`depth[k] > 0;
    roller`lift[k];
    (* Class: CrownedRoller *)
    roller`number[k_]:=k;
    roller`diameter[k_]:=0.01;
    roller`long[k_]:=0.012;
    roller`crown[k_]:=0.0006;
    roller`reserve[k_]:=0.0006/0.012;
    (* Instance body: roller *)
    roller`life[k_]:=If[roller`loaded[k], (roller`capacity[k]/roller`inside`force[k])^(10/3), Infinity];
    roller`capacity[k_]:=9.1*^3

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
