// The verification and transformation pass over an expression: predefined heads become nodes, symbols must have types,
// arithmetic takes the form that the generators expect.
#pragma once

#include "treefwd.h"

namespace oz {

// When set, an untyped symbol or head is no error.
extern char allow_untyped;

// When set, statements are refused. Nothing sets it.
extern char ce;

// The assignment passed last, for the report of a symbol without a type.
extern tAsynt last_XSet_seen;

// What a failure of the pass leaves through; initially Errors_Exit.
extern void (*veritrans_Exit)();

// Set-up and closing. Beginveritrans forgets the last assignment.
void Beginveritrans();
void Closeveritrans();

// Walks *t and may replace it. Undefined symbols are reported and the walk goes on; a tree that cannot occur in an
// expression, and wrong argument counts, are fatal.
void Veri_trans_tree(tAsynt* t);

}  // namespace oz
