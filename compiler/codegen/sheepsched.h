// The schedule of a system in Fortran: a routine that asks for the start values and fills the state vector, and a
// routine that runs one worker on the state vector.
//
//   subroutine zc_initialize_state (zc_init_state)
//   subroutine zc_assign_worker (zc_WorkerID, zc_yin, zc_yout)
#pragma once

#include "treefwd.h"

namespace oz {

// What a failure of the module leaves through; initially Errors_Exit.
extern void (*sheepsched_Exit)();

// Writes the schedule of a ParExec; nothing for a tree of another shape.
void Funparse_parel(tAsynt t);

// The names of a Symbols list with a text between them.
void Funparse_symbols(tAsynt t, const char* sep);

}  // namespace oz
