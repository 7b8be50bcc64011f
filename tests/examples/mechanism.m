BeginPackage["Mechanism`", { "Operators`", "Iterators`", "Vectors`", "Plots`" } ];

  Clear["pump`*"];
  Remove["pump`*"];
  Clear["pump`piston`*"];
  Remove["pump`piston`*"];
  Clear["pump`rod`*"];
  Remove["pump`rod`*"];
  Clear["pump`crank`*"];
  Remove["pump`crank`*"];
  Clear["engine`*"];
  Remove["engine`*"];
  Clear["engine`piston`*"];
  Remove["engine`piston`*"];
  Clear["engine`rod`*"];
  Remove["engine`rod`*"];
  Clear["engine`crank`*"];
  Remove["engine`crank`*"];
  Clear["ground`*"];
  Remove["ground`*"];
  Protect[Mechanism`t];
  Mechanism`gravity:=9.81;
  Mechanism`norm[P$`v_]:=Sqrt[P$`v[[1]] ^2+P$`v[[2]] ^2];
  Mechanism`wedge[P$`a_, P$`b_]:=P$`a[[1]] *P$`b[[2]] -P$`a[[2]] *P$`b[[1]] ;
  Mechanism`ground;
  Begin["ground`"];

    DefineIndices[`indices,  {  } ];
    ground`this:=ground;
    (* Instance body: ground *)
    ground`tip:= { 0.0, 0.0 } 

  End[];
  Mechanism`engine;
  Begin["engine`"];

    DefineIndices[`indices,  {  } ];
    engine`this:=engine;
    (* Class: SliderCrank *)
    engine`radius:=0.043;
    engine`ratio:=3.2;
    engine`motor:=310.0;
    engine`crank`drive;
    engine`closure;
    D[engine`energy, Mechanism`t] == engine`crank`power;
    Begin["engine`crank`"];

      DefineIndices[`indices,  {  } ];
      engine`crank`this:=engine`crank;
      (* Class: Body *)
      engine`crank`mass:=0.8;
      engine`crank`inertia:=0.8*0.043^2/12;
      engine`crank`speed:=D[engine`crank`centre, Mechanism`t];
      engine`crank`centre;
      engine`crank`angle;
      engine`crank`kinetic:=0.8*engine`crank`speed.engine`crank`speed/2+(0.8*0.043^2/12)*D[engine`crank`angle[Mechanism`t], Mechanism`t]^2/2;
      engine`crank`potential:=0.8*Mechanism`gravity*engine`crank`centre[[2]] ;
      engine`crank`energy:=engine`crank`kinetic+engine`crank`potential;
      (* Class: Link *)
      engine`crank`long:=0.043;
      engine`crank`mass:=0.8;
      engine`crank`carrier:=ground;
      engine`crank`reaction=Array[engine`crank`oz$reaction$C,  { 2 } ];
      Format[engine`crank`oz$reaction$C[i_]]:=HoldForm[engine`crank`reaction[[i]] ];
      engine`crank`axis:= { Cos[engine`crank`angle[Mechanism`t]], Sin[engine`crank`angle[Mechanism`t]] } ;
      engine`crank`base:=ground`tip;
      engine`crank`tip:=engine`crank`base+0.043*engine`crank`axis;
      engine`crank`centre:=engine`crank`base+0.043/2*engine`crank`axis;
      engine`crank`torque:=Mechanism`wedge[engine`crank`tip-engine`crank`base, engine`crank`reaction];
      (* Class: Driven *)
      engine`crank`speedOfMotor:=310.0;
      engine`crank`long:=0.043;
      engine`crank`mass:=0.8;
      engine`crank`carrier:=ground;
      engine`crank`drive:=(engine`crank`angle')[Mechanism`t] == 310.0;
      engine`crank`power:=engine`crank`torque*310.0;
      (* Instance body: crank *)
    

    End[];
    Begin["engine`rod`"];

      DefineIndices[`indices,  {  } ];
      engine`rod`this:=engine`rod;
      (* Class: Body *)
      engine`rod`mass:=1.1;
      engine`rod`inertia:=1.1*(0.043*3.2)^2/12;
      engine`rod`speed:=D[engine`rod`centre, Mechanism`t];
      engine`rod`centre;
      engine`rod`angle;
      engine`rod`kinetic:=1.1*engine`rod`speed.engine`rod`speed/2+(1.1*(0.043*3.2)^2/12)*D[engine`rod`angle[Mechanism`t], Mechanism`t]^2/2;
      engine`rod`potential:=1.1*Mechanism`gravity*engine`rod`centre[[2]] ;
      engine`rod`energy:=engine`rod`kinetic+engine`rod`potential;
      (* Class: Link *)
      engine`rod`long:=0.043*3.2;
      engine`rod`mass:=1.1;
      engine`rod`carrier:=engine`crank;
      engine`rod`reaction=Array[engine`rod`oz$reaction$C,  { 2 } ];
      Format[engine`rod`oz$reaction$C[i_]]:=HoldForm[engine`rod`reaction[[i]] ];
      engine`rod`axis:= { Cos[engine`rod`angle[Mechanism`t]], Sin[engine`rod`angle[Mechanism`t]] } ;
      engine`rod`base:=engine`crank`tip;
      engine`rod`tip:=engine`rod`base+(0.043*3.2)*engine`rod`axis;
      engine`rod`centre:=engine`rod`base+(0.043*3.2)/2*engine`rod`axis;
      engine`rod`torque:=Mechanism`wedge[engine`rod`tip-engine`rod`base, engine`rod`reaction];
      (* Instance body: rod *)
    

    End[];
    Begin["engine`piston`"];

      DefineIndices[`indices,  {  } ];
      engine`piston`this:=engine`piston;
      (* Class: Body *)
      engine`piston`mass:=0.45;
      engine`piston`inertia:=0.0;
      engine`piston`speed:=D[engine`piston`centre, Mechanism`t];
      engine`piston`centre;
      engine`piston`angle;
      engine`piston`kinetic:=0.45*engine`piston`speed.engine`piston`speed/2+0.0*D[engine`piston`angle[Mechanism`t], Mechanism`t]^2/2;
      engine`piston`potential:=0.45*Mechanism`gravity*engine`piston`centre[[2]] ;
      engine`piston`energy:=engine`piston`kinetic+engine`piston`potential;
      (* Class: Slider *)
      engine`piston`mass:=0.45;
      engine`piston`carrier:=engine`rod;
      engine`piston`angle[P$`at_]:=0.0;
      engine`piston`centre:=engine`rod`tip;
      engine`piston`stroke:=engine`piston`centre[[1]] ;
      engine`piston`guide:=engine`piston`centre[[2]]  == 0.0;
      (* Instance body: piston *)
    

    End[];
    engine`reach:=(engine`reach=0.043*(1+3.2));
    engine`dead:= { engine`reach, 0.043*(3.2-1) } ;
    engine`energy:=engine`crank`energy+engine`rod`energy+engine`piston`energy;
    engine`closure:=engine`rod`tip ==  { engine`piston`stroke, 0.0 } ;
    engine`travel[P$`phi_]:=0.043*(1-Cos[P$`phi])+0.043/(4*3.2)*(1-Cos[2*P$`phi]);
    (* Instance body: engine *)
  

  End[];
  Mechanism`pump;
  Begin["pump`"];

    DefineIndices[`indices,  {  } ];
    pump`this:=pump;
    (* Class: SliderCrank *)
    pump`radius:=0.02;
    pump`ratio:=4.5;
    pump`motor:=52.0;
    pump`crank`drive;
    pump`closure;
    D[pump`energy, Mechanism`t] == pump`crank`power;
    Begin["pump`crank`"];

      DefineIndices[`indices,  {  } ];
      pump`crank`this:=pump`crank;
      (* Class: Body *)
      pump`crank`mass:=0.8;
      pump`crank`inertia:=0.8*0.02^2/12;
      pump`crank`speed:=D[pump`crank`centre, Mechanism`t];
      pump`crank`centre;
      pump`crank`angle;
      pump`crank`kinetic:=0.8*pump`crank`speed.pump`crank`speed/2+(0.8*0.02^2/12)*D[pump`crank`angle[Mechanism`t], Mechanism`t]^2/2;
      pump`crank`potential:=0.8*Mechanism`gravity*pump`crank`centre[[2]] ;
      pump`crank`energy:=pump`crank`kinetic+pump`crank`potential;
      (* Class: Link *)
      pump`crank`long:=0.02;
      pump`crank`mass:=0.8;
      pump`crank`carrier:=ground;
      pump`crank`reaction=Array[pump`crank`oz$reaction$C,  { 2 } ];
      Format[pump`crank`oz$reaction$C[i_]]:=HoldForm[pump`crank`reaction[[i]] ];
      pump`crank`axis:= { Cos[pump`crank`angle[Mechanism`t]], Sin[pump`crank`angle[Mechanism`t]] } ;
      pump`crank`base:=ground`tip;
      pump`crank`tip:=pump`crank`base+0.02*pump`crank`axis;
      pump`crank`centre:=pump`crank`base+0.02/2*pump`crank`axis;
      pump`crank`torque:=Mechanism`wedge[pump`crank`tip-pump`crank`base, pump`crank`reaction];
      (* Class: Driven *)
      pump`crank`speedOfMotor:=52.0;
      pump`crank`long:=0.02;
      pump`crank`mass:=0.8;
      pump`crank`carrier:=ground;
      pump`crank`drive:=(pump`crank`angle')[Mechanism`t] == 52.0;
      pump`crank`power:=pump`crank`torque*52.0;
      (* Instance body: crank *)
    

    End[];
    Begin["pump`rod`"];

      DefineIndices[`indices,  {  } ];
      pump`rod`this:=pump`rod;
      (* Class: Body *)
      pump`rod`mass:=1.1;
      pump`rod`inertia:=1.1*(0.02*4.5)^2/12;
      pump`rod`speed:=D[pump`rod`centre, Mechanism`t];
      pump`rod`centre;
      pump`rod`angle;
      pump`rod`kinetic:=1.1*pump`rod`speed.pump`rod`speed/2+(1.1*(0.02*4.5)^2/12)*D[pump`rod`angle[Mechanism`t], Mechanism`t]^2/2;
      pump`rod`potential:=1.1*Mechanism`gravity*pump`rod`centre[[2]] ;
      pump`rod`energy:=pump`rod`kinetic+pump`rod`potential;
      (* Class: Link *)
      pump`rod`long:=0.02*4.5;
      pump`rod`mass:=1.1;
      pump`rod`carrier:=pump`crank;
      pump`rod`reaction=Array[pump`rod`oz$reaction$C,  { 2 } ];
      Format[pump`rod`oz$reaction$C[i_]]:=HoldForm[pump`rod`reaction[[i]] ];
      pump`rod`axis:= { Cos[pump`rod`angle[Mechanism`t]], Sin[pump`rod`angle[Mechanism`t]] } ;
      pump`rod`base:=pump`crank`tip;
      pump`rod`tip:=pump`rod`base+(0.02*4.5)*pump`rod`axis;
      pump`rod`centre:=pump`rod`base+(0.02*4.5)/2*pump`rod`axis;
      pump`rod`torque:=Mechanism`wedge[pump`rod`tip-pump`rod`base, pump`rod`reaction];
      (* Instance body: rod *)
    

    End[];
    Begin["pump`piston`"];

      DefineIndices[`indices,  {  } ];
      pump`piston`this:=pump`piston;
      (* Class: Body *)
      pump`piston`mass:=0.45;
      pump`piston`inertia:=0.0;
      pump`piston`speed:=D[pump`piston`centre, Mechanism`t];
      pump`piston`centre;
      pump`piston`angle;
      pump`piston`kinetic:=0.45*pump`piston`speed.pump`piston`speed/2+0.0*D[pump`piston`angle[Mechanism`t], Mechanism`t]^2/2;
      pump`piston`potential:=0.45*Mechanism`gravity*pump`piston`centre[[2]] ;
      pump`piston`energy:=pump`piston`kinetic+pump`piston`potential;
      (* Class: Slider *)
      pump`piston`mass:=0.45;
      pump`piston`carrier:=pump`rod;
      pump`piston`angle[P$`at_]:=0.0;
      pump`piston`centre:=pump`rod`tip;
      pump`piston`stroke:=pump`piston`centre[[1]] ;
      pump`piston`guide:=pump`piston`centre[[2]]  == 0.0;
      (* Instance body: piston *)
    

    End[];
    pump`reach:=(pump`reach=0.02*(1+4.5));
    pump`dead:= { pump`reach, 0.02*(4.5-1) } ;
    pump`energy:=pump`crank`energy+pump`rod`energy+pump`piston`energy;
    pump`closure:=pump`rod`tip ==  { pump`piston`stroke, 0.0 } ;
    pump`travel[P$`phi_]:=0.02*(1-Cos[P$`phi])+0.02/(4*4.5)*(1-Cos[2*P$`phi]);
    (* Instance body: pump *)
    pump`travel[P$`phi_]:=pump`radius*(1-Cos[P$`phi]);
    pump`delivered:=Pi*0.03^2*2*pump`radius*pump`motor/(2*Pi)

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
