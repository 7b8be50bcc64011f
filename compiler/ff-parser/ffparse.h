// The full-form reader: from the host's text, heads, brackets, commas, symbols and constants, to a tree.
//
//   ffscan_SetString("Plus[oz$Type[a[1], oz$Real], Times[2, a[1]]]");
//   ffscan_BeginFile("");
//   tAsynt tree = ffparse(0);
#pragma once

#include "Positions.h"
#include "index.h"
#include "treefwd.h"

namespace oz {

// The type markers of annotations, while a text is read.
extern tAsynt ff_oztype_sym, ff_ozmultitype_sym, ff_ozreal_sym, ff_ozint_sym, ff_ozbool_sym, ff_ozarraytype_sym;

// Reads the text that ffscan_BeginFile started on. With cheap_parse the tree is as plain as the text; otherwise
// component names are eliminated and Veri_trans_tree has passed over it. Every fault of the grammar is fatal.
tAsynt ffparse(char cheap_parse);

// The predefined names. They are made once, since a process reads many short texts, and no reader changes them: the
// first call comes before trees that are given back.
const Index* predefined_names();

// Makes the index of names afresh: beside the predefined names it holds the type markers.
void ff_init_index();

// The symbol information of a name: one node for all its occurrences in a text. backq: backquotes in it part the
// components of a context.
tAsynt ff_find_symbol(const char* p, tPosition posIn, char backq);

// ---- type expressions

// From the arguments of oz$ArrayType, a base type and sizes, and of oz$MultiType.
tAsynt make_array_type(tAsynt arrayspec_list);
tAsynt make_multi_type(tAsynt types_list);

// Gives a symbol its type. A symbol that has another one keeps it, with an error message.
void set_sym_type(tAsynt sym, tAsynt type);

}  // namespace oz
