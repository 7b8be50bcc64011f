// Types as one short word, and typed expressions from one short line, for tests to compare with and to start from.
//
// Types:
//   int, real, complex, bool, string, none    basic types and NoType; int_s and so on for members of instance sets
//   real[2,0], real_s[-1,3]                   an ArrayType, an ArrayType_s; sizes by their digits
//   multi(real,int[0])                        a MultiType; predef any PreDef
//
// Expressions:
//   x, C`f            a Symbol on an AbsoluteSymbol with the type it was declared with; %Pi on a predefined name
//   x[i], x[i][j]     a SimpleFFE, a ComplexFFE; %Sin[x] an application of a predefined head
//   17, #17, 2.5, "a" an ExactIntConst, an IntConst, an ExactRealConst, a StringConst
//   XPlus[i,2.5]      the node of that kind; a list field takes all arguments that are left. Operators stand at 7, 3
//   {a,b}             as a field: a list of it, of ranges Iterator[i,1,n], of Symbols; without braces the latter are
//   empty &                 an empty statement, the Expression of the kind Empty
#pragma once

#include <string>

#include "Asynt.h"

namespace oz {

std::string type_text(tAsynt type);

// The type of a text as above. Anything wrong in a text ends the test program.
tAsynt type_of_text(const std::string& text);

// The types of names in expressions from now on, "i:int x:real[3] C`f:none"; earlier declarations are dropped. Each
// name has one symbol information, declared at 4, 2.
void declare_types(const std::string& declarations);

tAsynt typed_tree(const std::string& text);

}  // namespace oz
