// What the Fortran output layer asks of the generator above it.
#pragma once

#include "efunc.h"

namespace oz {

// Writes an expression; how tight it binds.
void FunparseVal(tAsynt t);
int Fpri(tAsynt t);

// The dimensions of an array type in parentheses, nothing for another type.
void Foutput_array_dims(tAsynt typ);

// Adds the name of a symbol to the identifier being built.
void Foutput_mangled_name(tAsynt sym);

// The declaration line of a module variable.
void Foutput_global_var_decl(tAsynt si);

// Visitors that write declarations: of a local, of a parameter, of what a parallel loop needs.
char Foutput_impl_var_decl(tAsynt* t);
char Foutput_impl_param_decl(tAsynt* t);
char Fmake_forall_decl(tAsynt* t);

}  // namespace oz
