#ifndef plate_h
#define plate_h

#define LM_NNNN
/* Level of the library */
#include "lumenmat.h"

extern doubleNN cell_Ttemperature;
#endif
