#include "bearing.h"

#include "bearing.icc"

#include <math.h>
double Bearing_TlineStiffness ( const double &extent)
{
    return 0.26*Bearing_Tmodulus*pow(extent,         0.8888888888888888);
}

double Bearing_TcontactForce ( const double &stiffness, const double &depth)
{
    return  (( (depth > 0) ) ? ( stiffness*pow(depth,          1.111111111111111
        ) ) : ( 0.0 )) ;
}

double outer_Trotation ( const double &at)
{
    return 0.0;
}

double inner_Tx;
double inner_Ty;
double outer_Tx;
double Bearing_Tmodulus;
double outer_Ty;
doubleN roller_Tlift(0);
