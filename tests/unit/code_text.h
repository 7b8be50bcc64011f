// Generated code as one short line, in the notation that typed_tree reads, for tests to compare with.
//
//   XSin[x], f[x,1], #1, 2.5, "s", &    nodes by kind, applications, constants, an empty statement; as in type_text.h
//   T1, O1                              Symbols on a temporary, an out-parameter
//   {x,y}                               a list that is not the only field of its node
//   a=b, (a;b)                          an assignment, a compound; everywhere without positions
#pragma once

#include <string>

#include "Asynt.h"

namespace oz {

std::string code_text(tAsynt t);

}  // namespace oz
