BeginPackage["Tanks`", { "Operators`", "Iterators`", "Signals`" } ];

  Clear["pilot`*"];
  Remove["pilot`*"];
  Clear["pilot`control`*"];
  Remove["pilot`control`*"];
  Clear["pilot`drain`*"];
  Remove["pilot`drain`*"];
  Clear["pilot`valve`*"];
  Remove["pilot`valve`*"];
  Clear["pilot`lower`*"];
  Remove["pilot`lower`*"];
  Clear["pilot`upper`*"];
  Remove["pilot`upper`*"];
  Clear["laboratory`*"];
  Remove["laboratory`*"];
  Clear["laboratory`control`*"];
  Remove["laboratory`control`*"];
  Clear["laboratory`drain`*"];
  Remove["laboratory`drain`*"];
  Clear["laboratory`valve`*"];
  Remove["laboratory`valve`*"];
  Clear["laboratory`lower`*"];
  Remove["laboratory`lower`*"];
  Clear["laboratory`upper`*"];
  Remove["laboratory`upper`*"];
  Tanks`gravity:=9.81;
  Tanks`density:=998.2;
  Tanks`jetSpeed[P$`head_]:=Sign[P$`head]*Sqrt[2*Tanks`gravity*Abs[P$`head]];
  Tanks`laboratory;
  Begin["laboratory`"];

    DefineIndices[`indices,  {  } ];
    laboratory`this:=laboratory;
    (* Class: Plant *)
    laboratory`scale:=1;
    laboratory`target:=0.35;
    laboratory`upper`inflow == laboratory`pumped;
    laboratory`upper`outflow == laboratory`valve`flow;
    laboratory`lower`inflow == laboratory`valve`flow;
    laboratory`lower`outflow == laboratory`drain`flow;
    Begin["laboratory`upper`"];

      DefineIndices[`indices,  {  } ];
      laboratory`upper`this:=laboratory`upper;
      (* Class: Vessel *)
      laboratory`upper`area:=Pi*(0.25*1)^2;
      laboratory`upper`height:=1.2;
      laboratory`upper`volume:=(Pi*(0.25*1)^2)*laboratory`upper`level;
      laboratory`upper`level;
      laboratory`upper`inflow;
      laboratory`upper`outflow;
      laboratory`upper`fill:=laboratory`upper`level/1.2;
      laboratory`upper`mass:=Tanks`density*laboratory`upper`volume;
      laboratory`upper`pressure:=Tanks`density*Tanks`gravity*laboratory`upper`level;
      laboratory`upper`balance:=(Pi*(0.25*1)^2)*laboratory`upper`level' == laboratory`upper`inflow-laboratory`upper`outflow;
      (* Class: Drum *)
      laboratory`upper`radius:=0.25*1;
      laboratory`upper`height:=1.2;
      laboratory`upper`wall:=2*Pi*(0.25*1)*1.2;
      (* Instance body: upper *)
    

    End[];
    Begin["laboratory`lower`"];

      DefineIndices[`indices,  {  } ];
      laboratory`lower`this:=laboratory`lower;
      (* Class: Vessel *)
      laboratory`lower`area:=Pi*(0.3*1)^2;
      laboratory`lower`height:=0.9;
      laboratory`lower`volume:=(Pi*(0.3*1)^2)*laboratory`lower`level;
      laboratory`lower`level;
      laboratory`lower`inflow;
      laboratory`lower`outflow;
      laboratory`lower`fill:=laboratory`lower`level/0.9;
      laboratory`lower`mass:=Tanks`density*laboratory`lower`volume;
      laboratory`lower`pressure:=Tanks`density*Tanks`gravity*laboratory`lower`level;
      laboratory`lower`balance:=(Pi*(0.3*1)^2)*laboratory`lower`level' == laboratory`lower`inflow-laboratory`lower`outflow;
      (* Class: Drum *)
      laboratory`lower`radius:=0.3*1;
      laboratory`lower`height:=0.9;
      laboratory`lower`wall:=2*Pi*(0.3*1)*0.9;
      (* Instance body: lower *)
    

    End[];
    Begin["laboratory`valve`"];

      DefineIndices[`indices,  {  } ];
      laboratory`valve`this:=laboratory`valve;
      (* Class: Opening *)
      laboratory`valve`bore:=0.02*1;
      laboratory`valve`discharge:=0.62;
      laboratory`valve`area:=Pi*(0.02*1)^2/4;
      laboratory`valve`coefficient:=0.62;
      (* Class: Valve *)
      laboratory`valve`upstream:=laboratory`upper;
      laboratory`valve`downstream:=laboratory`lower;
      laboratory`valve`bore:=0.02*1;
      laboratory`valve`head:=laboratory`upper`level-laboratory`lower`level;
      laboratory`valve`flow:=laboratory`valve`coefficient*laboratory`valve`area*Tanks`jetSpeed[laboratory`valve`head];
      (* Instance body: valve *)
    

    End[];
    Begin["laboratory`drain`"];

      DefineIndices[`indices,  {  } ];
      laboratory`drain`this:=laboratory`drain;
      (* Class: Opening *)
      laboratory`drain`bore:=0.018*1;
      laboratory`drain`discharge:=0.8;
      laboratory`drain`area:=Pi*(0.018*1)^2/4;
      laboratory`drain`coefficient:=0.8;
      (* Class: Drain *)
      laboratory`drain`vessel:=laboratory`lower;
      laboratory`drain`bore:=0.018*1;
      laboratory`drain`flow:=laboratory`drain`coefficient*laboratory`drain`area*Tanks`jetSpeed[laboratory`lower`level];
      (* Instance body: drain *)
    

    End[];
    Begin["laboratory`control`"];

      DefineIndices[`indices,  {  } ];
      laboratory`control`this:=laboratory`control;
      (* Class: Controller *)
      laboratory`control`vessel:=laboratory`lower;
      laboratory`control`target:=0.35;
      laboratory`control`gain:=4.5;
      laboratory`control`resetTime:=60.0;
      laboratory`control`integral;
      laboratory`control`error:=0.35-laboratory`lower`level;
      laboratory`control`memory:=laboratory`control`integral' == laboratory`control`error;
      laboratory`control`demand:=Max[0.0, Min[1.0, 4.5*(laboratory`control`error+laboratory`control`integral/60.0)]];
      (* Instance body: control *)
    

    End[];
    laboratory`pumpLimit:=0.0021*1^2;
    laboratory`pumped:=laboratory`pumpLimit*laboratory`control`demand;
    laboratory`stored:=laboratory`upper`mass+laboratory`lower`mass;
    (* Instance body: laboratory *)
  

  End[];
  Tanks`pilot;
  Begin["pilot`"];

    DefineIndices[`indices,  {  } ];
    pilot`this:=pilot;
    (* Class: Plant *)
    pilot`scale:=3;
    pilot`target:=0.6;
    pilot`upper`inflow == pilot`pumped;
    pilot`upper`outflow == pilot`valve`flow;
    pilot`lower`inflow == pilot`valve`flow;
    pilot`lower`outflow == pilot`drain`flow;
    Begin["pilot`upper`"];

      DefineIndices[`indices,  {  } ];
      pilot`upper`this:=pilot`upper;
      (* Class: Vessel *)
      pilot`upper`area:=Pi*(0.25*3)^2;
      pilot`upper`height:=1.2;
      pilot`upper`volume:=(Pi*(0.25*3)^2)*pilot`upper`level;
      pilot`upper`level;
      pilot`upper`inflow;
      pilot`upper`outflow;
      pilot`upper`fill:=pilot`upper`level/1.2;
      pilot`upper`mass:=Tanks`density*pilot`upper`volume;
      pilot`upper`pressure:=Tanks`density*Tanks`gravity*pilot`upper`level;
      pilot`upper`balance:=(Pi*(0.25*3)^2)*pilot`upper`level' == pilot`upper`inflow-pilot`upper`outflow;
      (* Class: Drum *)
      pilot`upper`radius:=0.25*3;
      pilot`upper`height:=1.2;
      pilot`upper`wall:=2*Pi*(0.25*3)*1.2;
      (* Instance body: upper *)
    

    End[];
    Begin["pilot`lower`"];

      DefineIndices[`indices,  {  } ];
      pilot`lower`this:=pilot`lower;
      (* Class: Vessel *)
      pilot`lower`area:=Pi*(0.3*3)^2;
      pilot`lower`height:=0.9;
      pilot`lower`volume:=(Pi*(0.3*3)^2)*pilot`lower`level;
      pilot`lower`level;
      pilot`lower`inflow;
      pilot`lower`outflow;
      pilot`lower`fill:=pilot`lower`level/0.9;
      pilot`lower`mass:=Tanks`density*pilot`lower`volume;
      pilot`lower`pressure:=Tanks`density*Tanks`gravity*pilot`lower`level;
      pilot`lower`balance:=(Pi*(0.3*3)^2)*pilot`lower`level' == pilot`lower`inflow-pilot`lower`outflow;
      (* Class: Drum *)
      pilot`lower`radius:=0.3*3;
      pilot`lower`height:=0.9;
      pilot`lower`wall:=2*Pi*(0.3*3)*0.9;
      (* Instance body: lower *)
    

    End[];
    Begin["pilot`valve`"];

      DefineIndices[`indices,  {  } ];
      pilot`valve`this:=pilot`valve;
      (* Class: Opening *)
      pilot`valve`bore:=0.02*3;
      pilot`valve`discharge:=0.62;
      pilot`valve`area:=Pi*(0.02*3)^2/4;
      pilot`valve`coefficient:=0.62;
      (* Class: Valve *)
      pilot`valve`upstream:=pilot`upper;
      pilot`valve`downstream:=pilot`lower;
      pilot`valve`bore:=0.02*3;
      pilot`valve`head:=pilot`upper`level-pilot`lower`level;
      pilot`valve`flow:=pilot`valve`coefficient*pilot`valve`area*Tanks`jetSpeed[pilot`valve`head];
      (* Instance body: valve *)
    

    End[];
    Begin["pilot`drain`"];

      DefineIndices[`indices,  {  } ];
      pilot`drain`this:=pilot`drain;
      (* Class: Opening *)
      pilot`drain`bore:=0.018*3;
      pilot`drain`discharge:=0.8;
      pilot`drain`area:=Pi*(0.018*3)^2/4;
      pilot`drain`coefficient:=0.8;
      (* Class: Drain *)
      pilot`drain`vessel:=pilot`lower;
      pilot`drain`bore:=0.018*3;
      pilot`drain`flow:=pilot`drain`coefficient*pilot`drain`area*Tanks`jetSpeed[pilot`lower`level];
      (* Instance body: drain *)
    

    End[];
    Begin["pilot`control`"];

      DefineIndices[`indices,  {  } ];
      pilot`control`this:=pilot`control;
      (* Class: Controller *)
      pilot`control`vessel:=pilot`lower;
      pilot`control`target:=0.6;
      pilot`control`gain:=4.5;
      pilot`control`resetTime:=60.0;
      pilot`control`integral;
      pilot`control`error:=0.6-pilot`lower`level;
      pilot`control`memory:=pilot`control`integral' == pilot`control`error;
      pilot`control`demand:=Max[0.0, Min[1.0, 4.5*(pilot`control`error+pilot`control`integral/60.0)]];
      (* Instance body: control *)
    

    End[];
    pilot`pumpLimit:=0.0021*3^2;
    pilot`pumped:=pilot`pumpLimit*pilot`control`demand;
    pilot`stored:=pilot`upper`mass+pilot`lower`mass;
    (* Instance body: pilot *)
    pilot`pumpLimit:=0.03

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
