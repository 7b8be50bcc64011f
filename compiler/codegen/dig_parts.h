// What the sources of the search through models share.
#pragma once

#include "Asynt.h"

namespace oz {

// Reports that a routine met what it has no rule for, and leaves.
[[noreturn]] void dig_abort(const char* routine);

// The symbol information of a Symbol; anything else is itself.
tAsynt Info_of(tAsynt t);

// Whether a name or the name of a head was declared with a type. Predefined names do not count.
bool IsTyped(tAsynt t);

// Whether a dimension stands for an index of the enclosing instance set.
bool Is_dyn(tAsynt dimension);

// Head and tail of a list of dimensions; whether it goes on. Lists of any other kind end the run.
bool Has_dimension(tAsynt dims, const char* routine);
tAsynt First_dimension(tAsynt dims);
tAsynt Other_dimensions(tAsynt dims);

}  // namespace oz
