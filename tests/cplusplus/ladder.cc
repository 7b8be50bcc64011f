#include "ladder.h"

#include "ladder.icc"

#include <math.h>
double Ladder_TperSection ( const double &perMetre)
{
    return perMetre*(Ladder_TlineLength/Ladder_Tsections);
}

doubleN section_Tshunt_Tcurrent(0);
double load_Tvoltage;
double Ladder_TlineLength;
doubleN section_Tvoltage(0);
doubleN section_Tcoil_Tvoltage(0);
doubleN section_Tshunt_Tvoltage(0);
double source_Tinner_Tcurrent;
int Ladder_Tsections;
double source_Tinner_Tvoltage;
doubleN section_Tseries_Tcurrent(0);
doubleN section_Tseries_Tvoltage(0);
double load_Tcurrent;
doubleN section_Tcoil_Tcurrent(0);
