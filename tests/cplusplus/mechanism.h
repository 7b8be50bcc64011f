#ifndef mechanism_h
#define mechanism_h

#define LM_NNNN
/* Level of the library */
#include "lumenmat.h"

double Mechanism_Tnorm ( const doubleN &);

double Mechanism_Twedge ( const doubleN &, const doubleN &);

extern doubleN engine_Trod_Tcentre;
extern doubleN pump_Trod_Taxis;
extern doubleN engine_Trod_Tbase;
extern doubleN engine_Tcrank_Tcentre;
extern doubleN pump_Tcrank_Tbase;
extern doubleN engine_Tcrank_Taxis;
extern doubleN ground_Ttip;
extern doubleN pump_Trod_Ttip;
extern doubleN engine_Tpiston_Tspeed;
extern doubleN engine_Trod_Ttip;
extern doubleN pump_Trod_Tcentre;
extern double pump_Tpiston_Tstroke;
extern doubleN pump_Tcrank_Tspeed;
extern doubleN pump_Trod_Tbase;
extern double engine_Tpiston_Tstroke;
extern doubleN engine_Trod_Taxis;
extern doubleN pump_Tcrank_Tcentre;
extern doubleN engine_Tcrank_Tspeed;
extern doubleN pump_Trod_Tspeed;
extern doubleN pump_Tpiston_Tcentre;
extern doubleN pump_Tcrank_Taxis;
extern doubleN engine_Trod_Tspeed;
extern doubleN engine_Tpiston_Tcentre;
extern doubleN pump_Tcrank_Ttip;
extern doubleN engine_Tcrank_Tbase;
extern doubleN pump_Tpiston_Tspeed;
extern doubleN engine_Tcrank_Ttip;
#endif
