#ifndef bearing_h
#define bearing_h

#define LM_NNNN
/* Level of the library */
#include "lumenmat.h"

double Bearing_TlineStiffness ( const double &);

double Bearing_TcontactForce ( const double &, const double &);

double outer_Trotation ( const double &);

extern double inner_Tx;
extern double inner_Ty;
extern double outer_Tx;
extern double Bearing_Tmodulus;
extern double outer_Ty;
extern doubleN roller_Tlift;
#endif
