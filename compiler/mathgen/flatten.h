// Splices nested compound expressions into the body of a Package or Context.
#pragma once

#include "treefwd.h"

namespace oz {

void flatten(tAsynt* t);

}  // namespace oz
