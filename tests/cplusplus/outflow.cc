#include "outflow.h"

#include "outflow.icc"

#include <math.h>
double Tank_Toutflow ( const double &level, const double &area)
{
    return area*sqrt(2*Tank_Tgravity*level);
}

