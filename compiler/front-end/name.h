// Qualification: replaces every symbol that only spells a name by the symbol that it means.
#pragma once

#include "treefwd.h"

namespace oz {

// Walks a Model once; may replace *t. An unknown parent and a kind without a rule are fatal.
void Qualify(tAsynt* t);

}  // namespace oz
