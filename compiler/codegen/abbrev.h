// Short stand-ins for identifiers that are longer than Fortran allows.
#pragma once

#include <cstdio>

namespace oz {

// Starts afresh: definitions go to `of` (null: nowhere), abbreviations have max_len characters.
void init_abbrev(FILE* of, int max_len);

// Defines an abbreviation for a name longer than they are, once for each name.
void remember_long(const char* name);

}  // namespace oz
