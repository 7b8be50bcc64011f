// Parallel extraction: a system of equations, or any group of assignments, becomes blocks with declared inputs and
// outputs.
//
//   ParExec: one block, from the state variables to the outputs
//     its code: ParExec: a block for each worker
//       its code: a list of assignments of single operations, the outputs last
#pragma once

#include "treefwd.h"

namespace oz {

// What a failure of the pass leaves through; initially Errors_Exit.
extern void (*parel_Exit)();

// Make the nodes that the blocks share; nothing to do at the end.
void Beginparel();
void Closeparel();

// The ParExec that the system t becomes. Typing must have been begun.
tAsynt Parallelize(tAsynt t);

// Writes the system t as a schedule in Fortran. No command calls it.
void make_code(tAsynt t);

// The place of a symbol in a Symbols list, from 1; negative if it is not there.
int Locate_symbol(tAsynt s, tAsynt list);

}  // namespace oz
