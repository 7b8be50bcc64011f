// How each kind of node is spelt in the host language.
#pragma once

#include "Asynt.h"

namespace oz {

// One spelling per kind: the operator, or the kind's own name.
extern const char* operator_name[kAsyntKinds];

// Fills the table.
void init_operator_name();

}  // namespace oz
