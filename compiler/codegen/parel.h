// Parallel extraction: a system of equations, or any group of assignments, becomes blocks with declared inputs and
// outputs.
#pragma once

#include "treefwd.h"

namespace oz {

// The ParExec that t becomes.
tAsynt Parallelize(tAsynt t);

}  // namespace oz
