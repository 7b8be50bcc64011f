// A tree as one short line, for tests to compare with.
//
//   x, `x`, "x"          a Symbol, by the text of its name; a StringConst
//   %Sin                 a Symbol on a predefined name
//   x:Int                a Symbol whose Type is an IntType; attributes follow as Int{unit="m"}
//   a`b`x                a FullSymbol or AbsoluteSymbol, its components in front
//   <f[1]:Real>          a Symbol on a RelativeNest or AbsoluteNest and its Type
//   T1, O1               a Symbol on a TempSymbol, on an OutParam, by their numbers
//   f[x,1]               a SimpleFFE; (f[x])[y] a ComplexFFE
//   17, 2.5              constants by their digits
//   XPlus[a,b]           any other node: its kind and fields; lists in braces, but bare where the list is the only
//   field
//
// Positions are left out, unless asked for: then they stand as @line,column behind the kind or name.
#pragma once

#include <string>

#include "Asynt.h"

namespace oz {

std::string tree_text(tAsynt t, bool positions = false);

}  // namespace oz
