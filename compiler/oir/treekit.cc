// The cold exit of a failed field access.

#include "treekit.h"

#include "ozerrors.h"

namespace oz {

void tree_access_failure(const char* file, int line) { internal_error(file, line); }

}  // namespace oz
