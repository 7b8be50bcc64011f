#include "mechanism.h"

#include "mechanism.icc"

#include <math.h>
double Mechanism_Tnorm ( const doubleN &v)
{
    return sqrt(pow(v(1), 2)+pow(v(2), 2));
}

double Mechanism_Twedge ( const doubleN &a, const doubleN &b)
{
    return a(1)*b(2)-a(2)*b(1);
}

doubleN engine_Trod_Tcentre(2);
doubleN pump_Trod_Taxis(2);
doubleN engine_Trod_Tbase(2);
doubleN engine_Tcrank_Tcentre(2);
doubleN pump_Tcrank_Tbase(2);
doubleN engine_Tcrank_Taxis(2);
doubleN ground_Ttip(2);
doubleN pump_Trod_Ttip(2);
doubleN engine_Tpiston_Tspeed(2);
doubleN engine_Trod_Ttip(2);
doubleN pump_Trod_Tcentre(2);
double pump_Tpiston_Tstroke;
doubleN pump_Tcrank_Tspeed(2);
doubleN pump_Trod_Tbase(2);
double engine_Tpiston_Tstroke;
doubleN engine_Trod_Taxis(2);
doubleN pump_Tcrank_Tcentre(2);
doubleN engine_Tcrank_Tspeed(2);
doubleN pump_Trod_Tspeed(2);
doubleN pump_Tpiston_Tcentre(2);
doubleN pump_Tcrank_Taxis(2);
doubleN engine_Trod_Tspeed(2);
doubleN engine_Tpiston_Tcentre(2);
doubleN pump_Tcrank_Ttip(2);
doubleN engine_Tcrank_Tbase(2);
doubleN pump_Tpiston_Tspeed(2);
doubleN engine_Tcrank_Ttip(2);
