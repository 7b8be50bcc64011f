// Functions of the C++ generator: types, identifiers, declarations, and one function of the model as text in up to
// five files at once.
//
//   CPunparse_fn(name, params, body);   // double f[double x] -> the definition in the .cc, the prototype in the .h,
//                                       // an entry in the .tm, a wrapper in if.cc; an external one as a stub in the
//                                       .icc
//
// A parameter list holds Symbols: of AbsoluteSymbols for what goes in, of OutParams for what comes out. The list of a
// function with a value has one more element at its end, which stands for the value and is no parameter.
#pragma once

#include <string>

#include "Asynt.h"

namespace oz {

// ---- types (pompunp_fn_type.cc)

// Pads the line, then writes the class of a type and a blank: "double ", "lm_complexNN "; nothing for a type without a
// class. An array that has none is fatal.
void CPoutput_basetype_decl(tAsynt typ);

// The ending of the routines that read a value of a type from a file: "int", "NNdouble".
void CPoutput_basetype_suffix(tAsynt typ);

// The constructor arguments of an array, "(3, n)"; nothing for any other type. An index of an instance set is 0.
void CPoutput_array_dims(tAsynt typ);

// ---- identifiers (pompunp_fn_name.cc)

// Adds the identifier of a symbol information to the mangling buffer; the caller flushes. The second form writes the
// last part of the name in upper case.
void CPoutput_mangled_name(tAsynt sym);
void CPoutput_mangled_name_capitalize(tAsynt sym);

// The same for the application that a nest stands for: a[1][i, j] gives a_L1_R_Li_Cj_R.
void CPoutput_nest_name(tAsynt ffe);

// Writes the identifier at once.
void CPoutput_symbol(tAsynt sym);

// The name of a function or parameter as the host knows it; anything but an AbsoluteSymbol is fatal.
const char* CPoriginal_name(tAsynt sym);

// The package of the host that a function belongs to.
std::string CPfunction_context(tAsynt sym);

// ---- declarations (pompunp_fn.cc)

// A visitor that declares a typed symbol information and does not go below one.
char CPmake_var_decl(tAsynt* t);

// Declares a global variable: a symbol information, or the definition (XSetDelayed) of an external variable.
void CPmake_global_var_decl(tAsynt t);

// The pattern of an argument in the .tm and the line that fetches it in if.cc.
void CPoutput_if_tm_pattern(tAsynt typ, const char* name);

// ---- functions (pompunp_fn.cc)

// Generates one function: the symbol information of its name, its parameters, its body.
void CPunparse_fn(tAsynt name, tAsynt params, tAsynt body);

// ---- external functions (pompunp_extern.cc)

// What a body, or the declaration of an external entity, says.
bool Is_Alg(tAsynt t);                   // a callback into the host
bool Is_CPP_NOCONST_External(tAsynt t);  // C++ that changes its arrays: no const on them
bool Is_stub_generated(tAsynt t);        // called through a stub in the .icc

// What the name of the stub ends in: "_c", "_ftn", "_cpp", or nothing where there is none.
const char* Make_language_suffix(tAsynt t);

// The stub of an external function whose foreign routine `body` declares. The type is that of its value, NoType for a
// function without one. Reverses the list of directions, which the parser leaves last first.
void CP_Ftnc_stub(tAsynt name, tAsynt params, tAsynt body, tAsynt type);

}  // namespace oz
