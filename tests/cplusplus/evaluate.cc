#include "evaluate.h"

#include "evaluate.icc"

#include <math.h>
double Tank_Toutflow ( const double &level, const double &area)
{
    double zc_T1;
    double zc_T2;
    double zc_T3;
    double zc_T4;
    double zc_T5;
    zc_T1 = 2*Tank_Tgravity*level;
    zc_T2 = sqrt(zc_T1);
    zc_T3 = area+1;
    zc_T4 = pow(zc_T3, 2);
    zc_T5 = zc_T3*zc_T4*zc_T2;
    return zc_T5;
}

