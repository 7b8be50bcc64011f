// What the two files of the C++ generator that write statements share.
#pragma once

#include "pompunp_parts.h"

namespace oz {

// An assignment as a statement, with its semicolon. False, and nothing is written, if it is to be a small one.
bool CPunparse_set_statement(tAsynt t);

// An assignment from a file; false if t is none.
bool CPunparse_import(tAsynt t);

// An assignment that can also stand in an expression.
void CPunparse_set(tAsynt t);

}  // namespace oz
