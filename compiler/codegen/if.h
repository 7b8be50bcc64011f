// Conditionals rebuilt from flat code: a list of assignments to numbered temporaries becomes statements in which each
// temporary is computed in the innermost branch that needs it, and once in front of a conditional that needs it in
// both.
//
//   T1 = a*b; T2 = If[c, T1, a]; y = T2    ->    If[c, T1 = a*b; T2 = T1, T2 = a]; y = T2
#pragma once

#include "Asynt.h"

namespace oz {

// set_list is a list of XSet nodes, closed by Expression0; no temporary in it has a number above max_varno. The
// assignments to real variables keep their order, and temporaries that none of them needs are left out. The result is
// an XCompoundExpression; nodes of the list are used in it.
tAsynt rewrite_ifs(tAsynt set_list, unsigned max_varno);

}  // namespace oz
