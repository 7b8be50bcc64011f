BeginPackage["Parts`", { "Operators`", "Iterators`" } ];

  Clear["car`*"];
  Remove["car`*"];
  Clear["car`rear`*"];
  Remove["car`rear`*"];
  Clear["car`rear`right`*"];
  Remove["car`rear`right`*"];
  Clear["car`rear`left`*"];
  Remove["car`rear`left`*"];
  Clear["car`front`*"];
  Remove["car`front`*"];
  Clear["car`front`right`*"];
  Remove["car`front`right`*"];
  Clear["car`front`left`*"];
  Remove["car`front`left`*"];
  Parts`car;
  Begin["car`"];

    DefineIndices[`indices,  {  } ];
    car`this:=car;
    (* Instance body: car *)
    car`rear`both;
    Begin["car`front`"];

      DefineIndices[`indices,  {  } ];
      car`front`this:=car`front;
      (* Class: Axle *)
      car`front`r:=car`size;
      Begin["car`front`left`"];

        DefineIndices[`indices,  {  } ];
        car`front`left`this:=car`front`left;
        (* Class: Wheel *)
        car`front`left`r:=car`size;
        car`front`left`c:=2*car`size;
        car`front`left`owner:=car`front`left;
        (* Instance body: left *)
      

      End[];
      Begin["car`front`right`"];

        DefineIndices[`indices,  {  } ];
        car`front`right`this:=car`front`right;
        (* Class: Wheel *)
        car`front`right`r:=car`front`width;
        car`front`right`c:=2*car`front`width;
        car`front`right`owner:=car`front`right;
        (* Instance body: right *)
      

      End[];
      car`front`width:=car`size+1;
      car`front`both:=car`front`left`c+car`front`right`c;
      (* Instance body: front *)
    

    End[];
    Begin["car`rear`"];

      DefineIndices[`indices,  {  } ];
      car`rear`this:=car`rear;
      (* Class: Wheel *)
      car`rear`r:=car;
      car`rear`c:=2*car;
      car`rear`owner:=car`rear;
      (* Class: Axle *)
      car`rear`r:=car`size;
      Begin["car`rear`left`"];

        DefineIndices[`indices,  {  } ];
        car`rear`left`this:=car`rear`left;
        (* Class: Wheel *)
        car`rear`left`r:=car`size;
        car`rear`left`c:=2*car`size;
        car`rear`left`owner:=car`rear`left;
        (* Instance body: left *)
      

      End[];
      Begin["car`rear`right`"];

        DefineIndices[`indices,  {  } ];
        car`rear`right`this:=car`rear`right;
        (* Class: Wheel *)
        car`rear`right`r:=car`rear`width;
        car`rear`right`c:=2*car`rear`width;
        car`rear`right`owner:=car`rear`right;
        (* Instance body: right *)
      

      End[];
      car`rear`width:=car`size+1;
      car`rear`both:=car`rear`left`c+car`rear`right`c;
      (* Instance body: rear *)
    

    End[];
    car`size:=5;
    car`total:=car`front`left`c+car`size

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
