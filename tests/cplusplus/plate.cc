#include "plate.h"

#include "plate.icc"

#include <math.h>
doubleNN cell_Ttemperature(0, 0);
