// Component elimination: oz$x$C[i], the host's name for an element of the declared array x, becomes x[[i]].
#pragma once

#include "treefwd.h"

namespace oz {

// t is held at *place; *outer is the outermost call that has t as its head, or outer is null.
void Comp_elim(tAsynt t, tAsynt* place, tAsynt* outer);

}  // namespace oz
