// What the files of the Fortran rewrites share.
#pragma once

#include <initializer_list>

#include "Asynt.h"

namespace oz {

// A routine that was handed what it is not made for.
[[noreturn]] void sheepconv_failed(const char* routine);

// The statements in a row.
tAsynt sheepconv_compound(tPosition pos, std::initializer_list<tAsynt> statements);

}  // namespace oz
