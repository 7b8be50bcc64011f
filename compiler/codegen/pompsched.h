// The schedule of a system in C++: a function that asks for the start values and fills the state vector, and a function
// that runs one worker on the state vector.
//
//   void zc_initialize_state (double *);
//   void zc_assign_worker (int *, double *, double *);
//   int zc_get_real (double *, char *);                     supplied by the driver
#pragma once

#include <string>

#include "treefwd.h"

namespace oz {

// What a failure of the module leaves through; initially Errors_Exit.
extern void (*pompsched_Exit)();

// Writes the schedule of a ParExec; nothing for a tree of another shape.
void CPunparse_parel(tAsynt t);

// The values of a Symbols list with a text between them.
void CPunparse_symbols(tAsynt t, const std::string& sep);

// The place of a symbol in a Symbols list, from 1; 100000 if it is not there.
int Find_var_in_syms(tAsynt s, tAsynt t);

}  // namespace oz
