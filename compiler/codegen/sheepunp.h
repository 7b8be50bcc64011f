// The Fortran generator: expressions, statements, functions with their link wrappers, and the writers of types, shapes
// and names that the rest of the generator rests on. All text goes to the stream that fout_set selects.
//
//   finit();                                   // module zc_M
//   Funparse_fn(name, params, body, 0, 0);     // real f[real x_] := x + 1 -> "function f(x) result(zc_O1)" ...,
//                                              // the wrapper "subroutine al_f()" and a block of the link template
//   fexit();                                   // end module zc_M
//
// Arrays are stored the other way round than in the model's language: a[[i, j]] becomes a(j, i), and dimensions are
// listed from the last to the first.
#pragma once

#include "Asynt.h"

namespace oz {

// What a failure of the module leaves through; initially Errors_Exit.
extern void (*sheepunp_Exit)();

// ---- expressions and statements (sheepunp_value.cc, sheepunp_stmt.cc)

// How tight a node binds when it is written: 1 an assignment, 11 a symbol. An operand is put in parentheses if it binds
// no tighter than its context.
int Fpri(tAsynt t);

// Writes an expression. Statements and what Fortran has no form for are fatal.
void FunparseVal(tAsynt t);

// Writes a statement with its line end. An expression that is no statement is fatal.
void FunparseStmt(tAsynt t);

// The elements of an Expressions list with a text between them.
void Funparse_exprs(tAsynt list, const char* sep);

// The nest of Do loops that does the same as a parallel loop, the first iterator outermost.
tAsynt Unfold_ForAll(tAsynt body, tAsynt iters);

// Whether a body calls functions of the model.
bool Functionsp(tAsynt body);

// ---- the generated module (sheepunp_fn.cc)

// Open and close the module of the file set that is being generated.
void finit();
void fexit();

// Writes one function: the symbol information of its name, its parameters, its body; whether the head says "recursive",
// "pure". The last parameter of a function with a value is that value.
void Funparse_fn(tAsynt name, tAsynt params, tAsynt body, char recursive, char pure);

// Whether a function has no value: its type is a MultiType without types.
bool IsSubroutine(tAsynt typ);

// Take the value off a parameter list, and put it back. The list is cut in place: in between, orig is in two pieces and
// stands the other way round. A subroutine has all in args, and its ret stays as it was.
void SplitArguments(tAsynt* orig, tAsynt* args, tAsynt* ret, bool subr);
void MergeArguments(tAsynt* orig, tAsynt* args, tAsynt* ret, bool subr);

// ---- types and shapes (sheepunp_fn_type.cc)

// "real(zc_real)" and so on, by the base of the type.
void Foutput_type(tAsynt typ);

// The dimensions of an array type in parentheses, each by its value, or each as ":"; nothing for another type.
void Foutput_array_dims(tAsynt typ);
void Foutput_array_dims_colon(tAsynt typ);

// Whether an array type leaves a dimension open.
bool array_has_unknown_dims(tAsynt typ);

// The number of a type among those that can cross the link, 0 with a report for any other.
int Type_code(tAsynt typ);

// ---- names (sheepunp_fn_name.cc)

// Adds the name of a symbol to the identifier being built; flush_mangled_str ends it.
void Foutput_mangled_name(tAsynt sym);

// The same for the application that an element of an instance set is: a[1][i, j] gives a_L1_R_Li_Cj_R.
void Foutput_nest_name(tAsynt e);

// Writes the name of a symbol, as a Fortran identifier or as it stands in the model.
void Foutput_symbol_name(tAsynt sym, bool mangled);

// ---- declarations (sheepunp_fn_decl.cc)

// The declaration line of a module variable; the symbol under which all members of an instance set share one.
void Foutput_global_var_decl(tAsynt si);
tAsynt WithoutDynIndices(tAsynt si);

// Visitors that declare symbols: parameters and variables of the implementation, of the link wrapper, of a callback.
// The result tells whether to go on below the node.
char Foutput_impl_param_decl(tAsynt* t);
char Foutput_impl_var_decl(tAsynt* t);
char Foutput_if_param_decl(tAsynt* t);
char Foutput_if_var_decl(tAsynt* t);
char Foutput_cb_param_decl(tAsynt* t);
char Foutput_cb_var_decl(tAsynt* t);

}  // namespace oz
