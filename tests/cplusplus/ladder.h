#ifndef ladder_h
#define ladder_h

#define LM_NNNN
/* Level of the library */
#include "lumenmat.h"

double Ladder_TperSection ( const double &);

extern doubleN section_Tshunt_Tcurrent;
extern double load_Tvoltage;
extern double Ladder_TlineLength;
extern doubleN section_Tvoltage;
extern doubleN section_Tcoil_Tvoltage;
extern doubleN section_Tshunt_Tvoltage;
extern double source_Tinner_Tcurrent;
extern int Ladder_Tsections;
extern double source_Tinner_Tvoltage;
extern doubleN section_Tseries_Tcurrent;
extern doubleN section_Tseries_Tvoltage;
extern double load_Tcurrent;
extern doubleN section_Tcoil_Tcurrent;
#endif
