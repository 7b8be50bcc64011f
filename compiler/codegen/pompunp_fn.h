// What the files of the C++ generator that write functions and stubs share.
#pragma once

#include <string>

#include "pompunp.h"

namespace oz {

// Adds the identifier of the application that a nest stands for to the mangling buffer: a[1][i, j] gives
// a_L1_R_Li_Cj_R.
void CPoutput_nest_name(tAsynt ffe);

// Writes the identifier of a symbol information at once.
void CPoutput_symbol(tAsynt sym);

// The name of a function or parameter as the host knows it; anything but an AbsoluteSymbol is fatal.
const char* CPoriginal_name(tAsynt sym);

// The package of the host that a function belongs to.
std::string CPfunction_context(tAsynt sym);

// The number of out-parameters of a symbol information if it is the function being written, else 0. Its type tells
// nothing of them: it has become that of a function without a value.
int CPown_results(tAsynt sym);

// Whether a symbol information has a type that can be declared.
bool CPhas_type(tAsynt sym);

// The symbol information of a Symbol, else null.
inline tAsynt CPsymbol_info(tAsynt t) { return Asynt_IsType(t, kSymbol) ? Symbol_SymInfo(t) : nullptr; }

// The first cell of a parameter list that is a parameter: null at the end and, with ignorelast, at the last cell.
tAsynt CPparam_cell(tAsynt list, bool ignorelast);

// Both texts of an external function to the .icc, the declaration of the foreign routine and the function that calls
// it; the prototype of the latter to the .h. The type is that of the value, NoType for a function without one.
void CPunparse_stub(tAsynt name, tAsynt params, tAsynt body, tAsynt type);

}  // namespace oz
