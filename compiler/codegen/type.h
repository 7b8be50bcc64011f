// Types: the type of any expression on demand, how types combine, and what may be stored where.
//
// A type is a tree node of the Type family. An array's Dimensions are a list with one element per dimension, outermost
// first (Expression1 cells, or IntConst1 cells where the full-form reader made them): IntConst 0 is a size that is not
// known, IntConst -1 an index of the enclosing instance set. Types are shared freely: a change in place shows
// everywhere.
//
//   Begintype();
//   tAsynt typ = Find_type(&XSet_RHS);        // 1 + 2.5 -> RealType, {1, 2} -> ArrayType(IntType, {2})
#pragma once

#include "Asynt.h"

namespace oz {

// ---- set-up

// One shared node per basic type, without attributes; made by Begintype.
extern tAsynt int_type_node, real_type_node, complex_type_node, bool_type_node, string_type_node;

// To be called before any typing; a second call starts afresh.
void Begintype();
void Closetype();

// How a declaration is found for a symbol or an application: it, or null; *was_funcall tells a function from a
// variable. The module that keeps the model sets this once; without it nothing is declared.
using Declaration_finder = tAsynt (*)(tAsynt symbol, bool* was_funcall);
void Set_declaration_finder(Declaration_finder finder);

// ---- the type of an expression

// The type of *t. Reports wrong uses on the way. May replace *t (an application of a declared nest becomes its Symbol)
// and may fill in types of symbols that had none. NoType stands for "no value" and follows most reported errors.
tAsynt Find_type(tAsynt* t);

// The same, and operands whose type differs from the promoted one are wrapped in GeneralConversion nodes.
tAsynt Find_type_convert(tAsynt t);

// Between the two calls (they nest) Find_type remembers the types of operations, so that a generator which asks at
// every level of an expression pays for each node once. The caller promises that nothing but Find_type changes a tree
// or a type that was asked for, or calls Forget_types behind the change. Types found with a message are not kept.
void Begin_type_memory();
void End_type_memory();
void Forget_types();

// ---- questions about types

// A basic type itself, the base of an array, else a new NoType.
tAsynt Find_base(tAsynt typ);

// Whether a type is complex or an array of complex; a string; a member of an instance set. ComplexType_s and
// StringType_s are no members here.
char Is_complex(tAsynt t);
char Check_string_type(tAsynt t);
char Is_setmember(tAsynt t);

// The rank of the type of an expression, 0 for a non-array; the length of a dimension list.
int ArrayRank(tAsynt t);
int CPgetDepth(tAsynt t);

// The position of an operator, else NoPosition.
tPosition GetPos(tAsynt t);

// Whether a value of type t2 cannot be stored in a place of type t1.
char Narrower(tAsynt t1, tAsynt t2);

// Whether a basic value t2 would go into an array place t1.
char NarrowerInit(tAsynt t1, tAsynt t2);

// Whether both are the same basic type, or arrays of it with the same rank. Attributes and sizes do not count.
char Check_equal_base(tAsynt typ, tAsynt t);

// IsEqualAsynt for types: it also ends when a size leads back to the symbol that has the type.
bool Equal_types(tAsynt a, tAsynt b);

// What a declaration gives to its name: the Type of a Symbol; of the head of an application or definition; else NoType.
tAsynt Type_of(tAsynt e);

}  // namespace oz
