// The heads of the host language that the compiler understands natively, and how an application becomes a node.
#pragma once

#include "Asynt.h"
#include "index.h"

namespace oz {

// Enters all predefined heads: AbsoluteSymbols whose Type is a PreDef.
void index_init_predefs(Index* i);

// The cells of an expression list, up to the first node of another kind.
int expr_list_len(tAsynt args);

// An Iterators list from {variable, min, max} or a list of such; anything else is fatal.
tAsynt mangle_ireduce_iterators(tAsynt exprs);

// The node for the application `node` of a predefined head to args. A wrong number of arguments is fatal.
tAsynt convert_predef_node(tPosition posIn, tAsynt args, void* fun, predef_type type, tAsynt node);

// The node for a predefined symbol that stands alone: fun() for a constant, else t.
tAsynt convert_predef_const_node(tAsynt t, void* fun, predef_type type);

// Reports a symbol without a type. xset is the last assignment seen, or null.
void notype_error(tPosition posIn, tAsynt syminfo, tAsynt xset, int isFunc);

}  // namespace oz
