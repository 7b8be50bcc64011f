// Common subexpressions: an expression becomes a list of assignments of single operations to numbered temporaries, in
// which no value is computed twice.
//
//   (a + b) * (a + b)        T1 = a + b;  T2 = T1 * T1        the expression itself: T2
//
//   temp_no = 1;
//   init_cse();
//   Cse(body, &body);
//   body = finish_fun_cse(body);
#pragma once

#include "Asynt.h"

namespace oz {

// The number of the next temporary. Whoever begins a function sets it to 1; init_cse does not.
extern int temp_no;

// When set, finish_cse leaves the list flat instead of rebuilding conditionals.
extern int simple_code;

// When set, finish_cse hands the list to cse_schedule.
extern int do_ddg;

// What a list is handed to when do_ddg is set; initially the scheduling instrument, which does not return.
extern void (*cse_schedule)(tAsynt set_list);

// What a failure of the pass leaves through; initially Errors_Exit.
extern void (*cse_Exit)();

// A new TempSymbol of a type, with the next number.
tAsynt make_temp_symb(tAsynt typ);

// Begins an empty list of assignments and an empty table of values.
void init_cse();

// Numbers t and replaces operands by temporaries in place; the replacement of t itself, if there is one, goes to *tp.
// The value number of t.
unsigned Cse(tAsynt t, tAsynt* tp);

// Replaces an expression with a value number by the temporary of the same expression, or by a new one.
void find_same(unsigned hash, tAsynt expr, tAsynt* tp);

// Numbers the right side of an assignment and puts the assignment on the list; for {a, b} = {c, d} all right sides
// come before all assignments.
void Set_list_cse(tAsynt t);
void Set_list_cse_2(tPosition Pos, tAsynt lhs, tAsynt rhs);

// Appends the assignment sym = val to the list.
void add_to_set_list(tPosition pos, tAsynt sym, tAsynt val);

// Puts an end behind the last assignment; the list.
tAsynt cse_close_list(tAsynt end);

// Closes the list: an XCompoundExpression of it, or what conditional rewriting makes of it.
tAsynt finish_cse();

// Closes the list of a function body and adds the body's value: a module that declares the temporaries. A body
// without temporaries is returned as it is.
tAsynt finish_fun_cse(tAsynt tree_body);

// A tree by way of parallel extraction to one list.
tAsynt do_cse(tAsynt tree);

}  // namespace oz
