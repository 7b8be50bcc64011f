// What the C++ output layer asks of the generator above it.
#pragma once

#include "efunc.h"

namespace oz {

// Writes an expression; how tight it binds.
void CPunparseVal(tAsynt t);
int CPpri(tAsynt t);

}  // namespace oz
