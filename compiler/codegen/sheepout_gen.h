// What the Fortran output layer asks of the generator above it, besides sheepunp.h.
#pragma once

#include "Asynt.h"

namespace oz {

// The language of the open file set; none: no set is open.
enum Language { fortran90 = 0, hpf = 1, cplusplus = 2, java = 3, none = 4 };
extern Language genlang;

// A visitor that declares what a parallel loop needs.
char Fmake_forall_decl(tAsynt* t);

}  // namespace oz
