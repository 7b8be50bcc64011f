#ifndef outflow_h
#define outflow_h

#define LM_NNNN
/* Level of the library */
#include "lumenmat.h"

double Tank_Toutflow ( const double &, const double &);

#endif
