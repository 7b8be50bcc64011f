// Types and arguments of foreign routines, by language.
#pragma once

#include "Asynt.h"

namespace oz {

enum Foreign_language { foreign_fortran, foreign_c, foreign_cpp };

// Closes an open comment with the type as the language calls it and writes the C type of the argument:
// "  INTEGER */ int *".
void CP_foreign_type(Foreign_language language, tAsynt typ, bool isinput);

// Writes the identifier of a name, with a suffix, as an actual argument: " &x_OUT". Types that the language does not
// take write nothing.
void CP_foreign_argument(Foreign_language language, tAsynt typ, bool isinput, tAsynt name, const char* suffix);

}  // namespace oz
