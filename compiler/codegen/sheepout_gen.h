// What the Fortran output layer asks of the generator above it, besides sheepunp.h.
#pragma once

#include "efunc.h"

namespace oz {

// A visitor that declares what a parallel loop needs and sets forall_atleast_one. The module of the parallel loops sets
// it; without one there is nothing to declare.
extern char (*Fmake_forall_decl)(tAsynt* t);

}  // namespace oz
