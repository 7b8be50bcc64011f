BeginPackage["Numerics`", { "Operators`", "Iterators`", "Vectors`", "Matrices`" } ];

  Clear["bumper`*"];
  Remove["bumper`*"];
  Numerics`tolerance:=1.0*^-12;
  Numerics`limit:=200;
  Numerics`polynomial[P$`x_, P$`n_, P$`c_]:=(Module [ { i,
    s = 0.0 },
    For[i=P$`n, i >= 1, i=i-1, s=s*P$`x+P$`c[[i]] ];
    s]);
  Numerics`polynomialSlope[P$`x_, P$`n_, P$`c_]:=(Module [ { i,
    q = 0.0,
    p = 0.0 },
    For[i=P$`n, i >= 1, i=i-1, q=q*P$`x+p;
    p=p*P$`x+P$`c[[i]] ];
     { p, q } ]);
  Numerics`polynomialRoot[P$`start_, P$`n_, P$`c_]:=(Module [ { rounds = 0,
    slope = 0.0,
    value = 1.0,
    x = P$`start },
    While[Abs[value] > Numerics`tolerance&&rounds < Numerics`limit,  { value, slope } =Numerics`polynomialSlope[x, P$`n, P$`c];
    x=x-value/slope;
    rounds=rounds+1];
    x]);
  Numerics`commonDivisor[P$`a_, P$`b_]:=(Module [ { rest,
    v = P$`b,
    u = P$`a },
    While[v != 0, rest=Mod[u, v];
    u=v;
    v=rest];
    u]);
  Numerics`spaced[P$`from_, P$`to_, P$`n_]:=(Module [ { i,
    step = (P$`to-P$`from)/(P$`n-1),
    x },
    (x=Array[oz$x$C,  { P$`n } ];
    Format[oz$x$C[i_]]:=HoldForm[x[[i]] ]);
    (For[i=1, i <= P$`n, i=i+1, x[[i]] =P$`from+(i-1)*step];
    x)]);
  Numerics`trapezoid[P$`n_, P$`y_, P$`step_]:=(Module [ { i,
    s = (P$`y[[1]] +P$`y[[P$`n]] )/2 },
    For[i=2, i < P$`n, i=i+1, s=s+P$`y[[i]] ];
    s*P$`step]);
  Numerics`spread[P$`n_, P$`x_]:=(Module [ { i,
    sum = 0.0,
    most = P$`x[[1]] ,
    least = P$`x[[1]]  },
    For[i=1, i <= P$`n, i=i+1, If[P$`x[[i]]  < least, least=P$`x[[i]] ];
    If[P$`x[[i]]  > most, most=P$`x[[i]] ];
    sum=sum+P$`x[[i]] ];
     { least, most, sum/P$`n } ]);
  Numerics`straightLine[P$`n_, P$`x_, P$`y_]:=(Module [ { i,
    slope,
    sxy = 0.0,
    sxx = 0.0,
    sy = 0.0,
    sx = 0.0 },
    For[i=1, i <= P$`n, i=i+1, sx=sx+P$`x[[i]] ;
    sy=sy+P$`y[[i]] ;
    sxx=sxx+P$`x[[i]] ^2;
    sxy=sxy+P$`x[[i]] *P$`y[[i]] ];
    slope=(P$`n*sxy-sx*sy)/(P$`n*sxx-sx^2);
     { (sy-slope*sx)/P$`n, slope } ]);
  Numerics`applied[P$`m_, P$`n_, P$`a_, P$`x_]:=(Module [ { j,
    i,
    y },
    (y=Array[oz$y$C,  { P$`m } ];
    Format[oz$y$C[i_]]:=HoldForm[y[[i]] ]);
    (For[i=1, i <= P$`m, i=i+1, y[[i]] =0.0;
    For[j=1, j <= P$`n, j=j+1, y[[i]] =y[[i]] +P$`a[[i,j]] *P$`x[[j]] ]];
    y)]);
  Numerics`tridiagonal[P$`n_, P$`low_, P$`mid_, P$`up_, P$`rhs_]:=(Module [ { i,
    pivot = P$`mid[[1]] ,
    x,
    c },
    (x=Array[oz$x$C,  { P$`n } ];
    Format[oz$x$C[i_]]:=HoldForm[x[[i]] ]);
    (c=Array[oz$c$C,  { P$`n } ];
    Format[oz$c$C[i_]]:=HoldForm[c[[i]] ]);
    (x[[1]] =P$`rhs[[1]] /pivot;
    For[i=2, i <= P$`n, i=i+1, c[[i]] =P$`up[[i-1]] /pivot;
    pivot=P$`mid[[i]] -P$`low[[i]] *c[[i]] ;
    x[[i]] =(P$`rhs[[i]] -P$`low[[i]] *x[[i-1]] )/pivot];
    For[i=P$`n-1, i >= 1, i=i-1, x[[i]] =x[[i]] -c[[i+1]] *x[[i+1]] ];
    x)]);
  Numerics`relaxed[P$`m_, P$`n_, P$`u_, P$`weight_]:=(Module [ { j,
    i,
    delta,
    change = 0.0,
    v },
    (v=Array[oz$v$C,  { P$`m, P$`n } ];
    Format[oz$v$C[i_]]:=HoldForm[v[[i]] ]);
    (v=P$`u;
    For[i=2, i < P$`m, i=i+1, For[j=2, j < P$`n, j=j+1, delta=P$`weight*((v[[i-1,j]] +v[[i+1,j]] +v[[i,j-1]] +v[[i,j+1]] )/4-v[[i,j]] );
    v[[i,j]] =v[[i,j]] +delta;
    If[Abs[delta] > change, change=Abs[delta]]]];
     { v, change } )]);
  Numerics`place[P$`x_, P$`n_, P$`points_]:=(Module [ { middle,
    high = P$`n+1,
    low = 0 },
    While[high-low > 1, middle=low+high;
    middle=Quotient[middle, 2];
    If[P$`points[[middle]]  <= P$`x, low=middle, high=middle]];
    low]);
  Numerics`prime[P$`n_]:=(Module [ { found = P$`n > 1,
    d = 2 },
    While[found&&d*d <= P$`n, If[Mod[P$`n, d] == 0, found=False];
    d=d+1];
    found]);
  Numerics`bilinear[P$`x_, P$`knee_, P$`soft_, P$`hard_]:=If[P$`x < 0, 0.0, If[P$`x < P$`knee, P$`soft*P$`x, P$`soft*P$`knee+P$`hard*(P$`x-P$`knee)]];
  Numerics`bumper;
  Begin["bumper`"];

    DefineIndices[`indices,  {  } ];
    bumper`this:=bumper;
    (* Class: Spring *)
    bumper`knee:=0.012;
    bumper`soft:=4.0*^4;
    bumper`hard:=2.5*^6;
    bumper`force[P$`x_]:=Numerics`bilinear[P$`x, 0.012, 4.0*^4, 2.5*^6];
    bumper`work[P$`x_]:=(Module [ { i,
      step = P$`x/Numerics`limit,
      s = 0.0 },
      For[i=1, i <= Numerics`limit, i=i+1, s=s+bumper`force[(i-0.5)*step]*step];
      s]);
    bumper`closed[P$`x_]:=P$`x > 0.012;
    (* Instance body: bumper *)
  

  End[]
EndPackage[];

If[! Or @@ ((# == "P$`")& /@ $ContextPath), AppendTo[$ContextPath, "P$`"]];
