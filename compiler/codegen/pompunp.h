// The C++ generator: expressions, statements, functions with their wrappers and templates, stubs of external functions.
//
// Everything is written as it is decided, through pompout.h. Types are asked of type.h at every level; whoever writes
// a whole body puts Begin_type_memory and End_type_memory around it, so that the cost stays that of the body's size.
//
//   CPunparseStmt(t)      x = 1 + a*b          ->  x = 1+a*b;
//   CPunparse_fn(...)     a definition in the .cc, a prototype in the .h, a template entry, a wrapper
#pragma once

#include "Asynt.h"
#include "pompout.h"

namespace oz {

// ---- expressions (pompunp_value.cc)

// Writes an expression. What is none is tried as a small statement; what is none either is fatal.
void CPunparseVal(tAsynt t);

// The values of a list with a separator between them. The second brackets as cpunparse_pri does and is fatal on
// anything but a list.
void CPunparse_exprs(tAsynt t, const char* sep);
void CPunparse_exprs_pri(tAsynt t, int parent_pri, const char* sep);

// How tight a node binds, from 1 (assignment) to 11 (names and constants).
int CPpri(tAsynt t);

// A method call on the first expression of a list, with the others as arguments.
void CPa2Dop(tAsynt e, const char* cfun);

// A value of type typ, converted to real.
void CPto_double(tAsynt t, tAsynt typ);

// Subscripts: one of them; all of an XPart's, separated by ", "; so many whole dimensions (",All" each).
void CPunparse_part_idx(tAsynt idx);
void CPunparse_nested_xparts2(tAsynt xp);
void CPunparse_nested_alls(int i);

// Questions about types: an array, also as the one result of a function; complex or an array of complex; several
// results.
char Is_array_type(tAsynt typ);
char Is_complex0(tAsynt typ);
char Is_mulret_type(tAsynt typ);

// ---- constant expressions (pompunp_const.cc)

char IsConstantExpr(tAsynt expr);
char IsIntegerExpr(tAsynt expr);
double CPevaluate(tAsynt expr);

// The value of a list under an XPlus or an XTimes.
double CPevaluateVariadic(tAsynt parent, tAsynt list);
void CPevaluateAndUnparse(tAsynt expr);

// ---- statements (pompunp_stmt.cc, pompunp_assign.cc)

// Writes a statement; what is none is fatal.
void CPunparseStmt(tAsynt t);

// Writes what may also stand between the commas of an expression, and returns 1; else writes nothing and returns 0.
char CPunparseSmallStmt(tAsynt t);

// A list as a sequence of statements.
void CPunparse_exprs_semicolon(tAsynt t);

// Declarations of local variables, a Symbol1 list, with their initialisers, an Expression1 list. The last comes first.
void CPoutput_var_decls_and_inits(tAsynt v, tAsynt i);

// Assigns element by element between an array and a list: to the array if fromlist is set, else from it.
void cparray_list_set(tAsynt sym, tAsynt exprs, tAsynt indices, int fromlist);

// The assignment t of expr to the section xp of an array.
void CPxpart_special(tAsynt t, tAsynt xp, tAsynt expr);
const char* CPxpart_special_funcname(int rank, int parts);

// {lhs...} = fun[args]: the targets become trailing arguments.
char CPunparse_mulret_funcall(tAsynt lhs, tAsynt args, tAsynt fun);

// Print: one stream statement per item.
void CPunparse_printing(tAsynt list);

// Of an XPart: its base, or t itself if it is none; the number of its subscripts, 0 if it is none; the number of
// scalar ones, with 99 less for each range; the same with ranges counting 0.
tAsynt XPartArg(tAsynt t);
int XPartRealRank(tAsynt t);
int XPartRank(tAsynt t);
int XPartRankReduction(tAsynt t);

// ---- types and identifiers (pompunp_fn.cc)

// The type word, after the indentation.
void CPoutput_basetype_decl(tAsynt typ);

// What tells the import functions for a type apart.
void CPoutput_basetype_suffix(tAsynt typ);

// The constructor arguments of an array; nothing for another type.
void CPoutput_array_dims(tAsynt typ);

// Put the identifier of a symbol (a SymInfo) into the mangling buffer; the caller flushes.
void CPoutput_mangled_name(tAsynt sym);
void CPoutput_mangled_name_capitalize(tAsynt sym);

// ---- functions (pompunp_fn.cc)

void CPunparse_fn(tAsynt name, tAsynt params, tAsynt body);

// A visitor that declares a SymInfo and tells the walk whether to go on below.
char CPmake_var_decl(tAsynt* t);
void CPmake_global_var_decl(tAsynt t);

// Parameters in the .cc and the .h; actual arguments in if.cc and the .tm.
void CPmake_param_decls(tAsynt t, const char* comma, char ignorelast, char cpp_external);
void CPmake_param_decls_for_end_of_tm_and_if(tAsynt t, const char* comma, char ignorelast);

// Output arguments in if.cc: their declarations and number; their way back.
int CPdeclare_outparam(tAsynt t);
void CPpass_lmif(tAsynt t);

// One argument's pattern in the .tm and its fetch in if.cc.
void CPoutput_if_tm_pattern(tAsynt typ, const char* name);

// The head of a template entry and of a wrapper.
void CPoutput_tm_beginning(tAsynt name);

// The wrapper body of a callback function.
void CPmake_param_decls_for_Alg(tAsynt params, tAsynt body, tAsynt name);
void CPmake_param_decls_for_Alg_RetVal(tAsynt params, tAsynt body, tAsynt name, tAsynt type);

// ---- external functions (pompunp_extern.cc)

char Is_Alg(tAsynt t);
char Is_CPP_NOCONST_External(tAsynt t);

// The suffix that an external declaration gives to its name; whether a stub is written for it.
const char* Make_language_suffix(tAsynt t);
char Is_stub_generated(tAsynt t);

void CP_Ftnc_Decl_Extern(tAsynt t, tAsynt b, tAsynt name, tAsynt type);
void CP_Ftnc_make_param_decls(tAsynt t, tAsynt b, const char* comma, char ignorelast);
void CP_Ftnc_Generate_Body(tAsynt name, tAsynt params, tAsynt body, char returnflag);

}  // namespace oz
