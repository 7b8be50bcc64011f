// The cold exit of a failed field access.

#include "treekit.h"

#include "ozerrors.h"

namespace oz {

void tree_access_failure(std::source_location at) { internal_error(at.file_name(), static_cast<int>(at.line())); }

}  // namespace oz
