// Rewrites of a tree ahead of its output: reductions become loops, changes of shape become assignments to temporaries,
// and arrays get their sizes before they are first assigned.
//
//   y = Sum of x[[i]], i from 1 to n        i = 1;  T = x[[i]];  Do(T = T + x[[i]], {i, 1 + 1, n});  y = T
//
// A rewrite that needs work done first puts it in front of a whole statement: `toplev` and `top` are the slots in which
// that statement stands.
#pragma once

#include "treefwd.h"

namespace oz {

// What a failure of the pass leaves through; initially Errors_Exit.
extern void (*sheepconv_Exit)();

// ---- reductions and changes of shape

// Takes GeneralConversion to arrays and IReduce out of *t, which stands in the statement *toplev.
void Rewrite_shapeconv(tAsynt* t, tAsynt* toplev);

// *expr becomes a temporary of the type `to`, assigned in front of *toplev; the second only if `to` is an array.
void Shape_conv(tAsynt* expr, tAsynt from, tAsynt to, tAsynt* toplev);
void Possible_shape_conv(tAsynt* expr, tAsynt from, tAsynt to, tAsynt* toplev);

// The reduction *t becomes a temporary, computed in front of *toplev. If both are one slot the temporary follows there.
void Rewrite_Ireduce(tAsynt* t, tAsynt* toplev);

// The parts of a reduction to R: fun applied to R and body; the loops; what runs ahead of them.
tAsynt Make_reduction_expr(tAsynt fun, tAsynt R, tAsynt body);
tAsynt Make_do_expr(tAsynt fun, tAsynt body, tAsynt iter, tAsynt R);
tAsynt Make_ireduce_init_expr(tAsynt fun, tAsynt body, tAsynt iter, tAsynt R);

// ---- sizes of arrays

// What the walk to a first assignment does: 1 it looks for the assignment, 2 it reports statements in the place of
// values. Nothing sets 2.
extern int traverse_mode;

// In a function definition: sizes that name initialised locals repeat their initialisers, and arrays of unknown size
// get their shape in front of their first assignment.
void Rewrite_array_init(tAsynt t);

// The first assignment to the array with the symbol information si in *body gets a shape statement in front of it.
void Explicit_allocation(tAsynt si, tAsynt* body);

// The walk to that assignment: a statement in the slot t, an expression; `top` is the enclosing statement's slot.
void Rewrite_f90_stmt(tAsynt* t, tAsynt* top);
void Rewrite_f90_expr(tAsynt* e, tAsynt* top);

// The shape statement of an assignment; of one from a symbol, from a list; of {a, b} = {c, d} by pairs.
void Rewrite_f90_set(tAsynt set, tAsynt* top);
void Rewrite_f90_set_symbol(tAsynt lhs, tAsynt rhs, tAsynt* top);
void Rewrite_f90_set_list(tAsynt lhs, tAsynt rhs, tAsynt* top);
void Rewrite_f90_list_assign(tAsynt set, tAsynt* top);

// The expression for the size of dimension i of s.
tAsynt MakeSize(tAsynt s, int i);

}  // namespace oz
