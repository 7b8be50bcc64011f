// What the files of the Fortran generator share among themselves.
#pragma once

#include <string>

#include "Asynt.h"

namespace oz {

// A routine that was handed a tree that it is not made for.
[[noreturn]] void sheepunp_abort(const char* routine);

inline bool Is_array_type(const Asynt_Node* typ) { return Asynt_IsType(typ, kArrayType); }

// A cell of an Expressions list.
inline bool Is_cell(const Asynt_Node* list) { return Asynt_Kind(list) == kExpression1; }

// ---- expressions (sheepunp_value.cc, sheepunp_value_part.cc)

// Fatal: the node is not what the place asks for, "An expression" or "A statement".
[[noreturn]] void Refuse_form(tAsynt t, const char* expected, const char* passed);

// The name that is called: a Symbol, or an application that is an element of an instance set.
void Funparse_called_name(tAsynt name);

// The type that the called name was declared with.
tAsynt Called_type(tAsynt application);

// Writes "call f (x, y)" and a line end.
void Funparse_call_statement(tAsynt t);

// Writes a part of an array; its indices, last one first; the whole dimensions that stand for missing indices.
void Funparse_part(tAsynt t);
void Funparse_part_indices(tAsynt list);
void Funparse_section(tAsynt part);

// Over the indices of a part: scalar ones, less 99 for each range; scalar ones alone.
int Part_rank(tAsynt part);
int Part_rank_reduction(tAsynt part);

// ---- statements (sheepunp_stmt.cc, sheepunp_stmt_set.cc)

// FunparseStmt within a statement.
void Funparse_statement(tAsynt t);
void Funparse_set(tAsynt t);

// ---- names (sheepunp_fn_name.cc)

// Foutput_mangled_name and its end; the same for "___i" or "zc_ptr_" put to the name.
void Foutput_name(tAsynt sym);
void Foutput_name_with(const char* before, tAsynt sym, const char* after);

// The name of a function or parameter as the model has it; anything but an AbsoluteSymbol is fatal.
const char* GetOriginalName(tAsynt sym);

// The context of the host that a function belongs to.
std::string GetFunctionPrefixContext(tAsynt sym);

// ---- functions

// A function while it is written: its parameter list is split.
struct Function {
  tAsynt name;    // symbol information
  tAsynt params;  // as handed over; in two pieces while the function is open
  tAsynt args;    // what the head lists
  tAsynt ret;     // the Symbol of the value, null for a subroutine
  bool subr;
};

// Splits the parameters; puts them back.
Function Split_function(tAsynt name, tAsynt params);
void Merge_function(Function* f);

// The head, with the indentation behind it; the end. (sheepunp_fn.cc)
void Foutput_head(const Function& f, char recursive, char pure);
void Foutput_end(const Function& f);

// A "use" line.
void Foutput_use(const std::string& module);

// The declarations of the arguments and the value, by their visitors.
void Declare_arguments(const Function& f, char (*arg)(tAsynt*), char (*ret)(tAsynt*));

// The block of the link template; the link wrapper. (sheepunp_fn_link.cc)
void Foutput_tm(tAsynt name, tAsynt params);
void Foutput_if(tAsynt name, tAsynt params);

// An external function as interface body; a function that the host evaluates. (sheepunp_extern.cc)
void Funparse_external_function(tAsynt name, tAsynt params, char recursive, char pure);
void Funparse_callback_function(tAsynt name, tAsynt params, char recursive, char pure);

}  // namespace oz
