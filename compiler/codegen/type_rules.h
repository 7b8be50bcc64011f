// What the files of the type module share: reports, lists, the algebra of types, and the rules by subject.
//
// Where a rule says "an array" or "an int" the members of instance sets (the _s kinds) count as well; where it asks for
// the kind itself (Asynt_Kind), they do not.
#pragma once

#include <string>

#include "type.h"

namespace oz {

// ---- state

// Set while Find_type_convert walks: operands are wrapped where their type changes.
extern char insert_conversion_nodes;

// Above 0 while a converted copy of an application is typed: what hangs below belongs to the tree and is not replaced.
extern int typing_copy;

// ---- reports (type.cc)

// Reports of the module; silent while an application is typed again whose reports have been made.
void type_error(tPosition pos, const char* fstr, ...) __attribute__((format(printf, 2, 3)));
void type_warning(tPosition pos, const char* fstr, ...) __attribute__((format(printf, 2, 3)));

// Runs Find_type on *t, silently if key was typed that way before and had something to report.
tAsynt Find_type_reporting_once(tAsynt key, tAsynt* t);

[[noreturn]] void type_internal_error(int line);

// A routine that was handed what it is not made for.
[[noreturn]] void type_abort(const char* routine);

// A copy of a tree's text. For messages only: the cost is that of the whole tree.
std::string Unparsed(tAsynt t);

// The refusal of every rule: reports that t has no type; a new NoType.
tAsynt No_rule(tAsynt t);

// ---- kinds of types

inline bool Is_basic(tAsynt t) { return Asynt_IsType(t, kBasicType); }
inline bool Is_array(tAsynt t) { return Asynt_IsType(t, kArrayType); }
inline bool Is_bool(tAsynt t) { return Asynt_IsType(t, kBoolType); }
inline bool Is_int(tAsynt t) { return Asynt_IsType(t, kIntType); }

char Check_scalar(tAsynt t);

// ---- expression lists

inline bool Is_cell(tAsynt list) { return Asynt_Kind(list) == kExpression1; }

// The place of element n, from 1, of a list that has so many.
tAsynt* Element(tAsynt list, int n);

// ---- dimension lists (type_shape.cc)

// Whether a node is a cell of a dimension list; its size; the cells behind it.
bool Is_dimension(tAsynt dims);
tAsynt Dimension(tAsynt dims);
tAsynt More_dimensions(tAsynt dims);

// The rank of a type, 0 for a non-array.
int Rank(tAsynt typ);

// n in front of the dimensions; the list {n}; a list of n times IntConst 0.
tAsynt Prepend_dimension(int n, tAsynt dims);
tAsynt One_dimension(int n);
tAsynt ListOfZeroes(int n);

// typ with the dimensions of dimtyp if that is an array: the result of an operation that keeps the shape.
tAsynt Make_type(tAsynt typ, tAsynt dimtyp);

// An array without its first dimension; the base if that was the only one.
tAsynt Without_first_dimension(tAsynt array);

// ---- promotion and conversion (type_promote.cc)

tAsynt Promote_types(tPosition posIn, tAsynt t1, tAsynt t2, char bool_allowed);
tAsynt Promote(tPosition posIn, tAsynt* a, tAsynt* b, char bool_allowed);

// The same of operands whose types are known.
tAsynt Promote_typed(tPosition posIn, tAsynt* a, tAsynt ta, tAsynt* b, tAsynt tb, char bool_allowed);

// The common type of a list; of the values of a Which; of an inequality; of the arguments of Max and Min.
tAsynt Promote_exprs(tPosition posIn, tAsynt exprs, char bool_allowed);
tAsynt Promote_exprs_2(tPosition posIn, tAsynt exprs, char bool_allowed);
tAsynt Promote_ineq(tAsynt exprs);
tAsynt Promote_for_min_max(tAsynt exprs);

// Takes off what a list that ended in a fatal message has left behind.
void Drop_operands();

// Wraps *t in a conversion if the types differ and conversions are wanted; the same for each operand of an inequality.
void Change_type(tAsynt* t, tAsynt fromtype, tAsynt totype);
void Change_ineq_type(tAsynt ineq, tAsynt fromtyp, tAsynt totyp);

// ---- checks (type_check.cc)

// Reports an operand of another base; true in every case.
char Check_base(tAsynt typ, tAsynt t);

// Dies of a boolean; else true.
char Check_nobool(tAsynt t);

// The type of the first argument, against which Check_join holds the others.
tAsynt Find_join_type(tAsynt* first, tAsynt tail);
void Check_join(tAsynt t1, tAsynt tail);

tAsynt merge_arrays(tAsynt bastyp, tAsynt dim1, tAsynt dim2);

// ---- shapes (type_shape.cc)

tAsynt Part_base_type(tAsynt t);
tAsynt Part_type2(tPosition pos, tAsynt t, tAsynt idxs);
tAsynt Part_1_type(tPosition pos, tAsynt t);
tAsynt Part_2_type(tPosition pos, tAsynt t);
tAsynt Transpose_type(tAsynt t);
tAsynt Find_dot_type(tPosition pos, tAsynt exprs);
tAsynt Cross_type(tAsynt t1, tAsynt t2);
tAsynt Check_OuterProduct(tAsynt e, tAsynt t1, tAsynt t2);
char Check_Array_of_ints(tAsynt t);
tAsynt Find_list_type(tPosition pos, tAsynt exprs);
tAsynt Find_dimensions_type(tPosition pos, tAsynt t);
tAsynt Find_Mean_Type(tAsynt t, const char* functionName);
tAsynt Find_total_type(tAsynt t);
tAsynt Find_flatten_form(tPosition pos, tAsynt exprs);
tAsynt Find_XQuantile_Type(tPosition pos, tAsynt t1, tAsynt t2, tAsynt t3);

// ---- applications and symbols (type_apply.cc)

tAsynt Find_application_type(tAsynt* t);
tAsynt Find_symbol(tAsynt t);

// Whether e is a symbol in the context of function arguments, P$.
bool Is_function_argument(tAsynt e);

// The operands of e if it is of the kind, or an application of the predefined head whose constructor is fun; else null.
tAsynt Operands_of(tAsynt e, Asynt_tKind kind, voidp fun);

// Whether e is of the kind, or the bare predefined constant whose constructor is fun.
bool Is_constant(tAsynt e, Asynt_tKind kind, voidp fun);

// A constructor as it is stored in a PreDef.
template <typename... Field>
voidp Constructor(tAsynt (*fun)(Field...)) {
  return reinterpret_cast<voidp>(fun);
}

// ---- assignments, files, sizes (type_assign.cc); null: the node has a form without a rule

tAsynt Find_assignment_type(tAsynt t);
tAsynt Find_export_type(tPosition pos, tAsynt exprs);
tAsynt Find_set_shape_type(tAsynt t);

}  // namespace oz
