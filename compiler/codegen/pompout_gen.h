// What the C++ output layer asks of the generator above it.
#pragma once

#include "Asynt.h"

namespace oz {

// Writes an expression; how tight it binds.
void CPunparseVal(tAsynt t);
int CPpri(tAsynt t);

// Declares the global variables that were remembered; forgets them.
void perform_global_vardecls();
void purge_remembered_vardecls();

}  // namespace oz
