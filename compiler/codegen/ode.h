// A system of ordinary differential equations as assignments: the unknowns lose their time argument, and each
// derivative becomes an output variable.
//
//   {{x'[t] == -x[t], y'[t] == x[t]}, {t}}        x_out = -x; y_out = x        in: {y, x}   out: {y_out, x_out}
#pragma once

#include "treefwd.h"

namespace oz {

// What a failure of the pass leaves through; initially Errors_Exit.
extern void (*ode_Exit)();

// Transform_diffeqs stands between the two; the first forgets the variables of the system before.
void Beginode();
void Closeode();

// t holds two lists: the equations, and the independent variable. The equations, changed in place, as an expression
// list; *i and *o become the lists of state and output symbols, in the reverse order of the equations.
tAsynt Transform_diffeqs(tAsynt t, tAsynt* i, tAsynt* o);

}  // namespace oz
