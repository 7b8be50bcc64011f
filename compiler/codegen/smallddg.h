// The dependence graph of a flat list of assignments: a node per symbol, an edge from each assigned symbol to each
// symbol on its right side, and a sentinel at either end.
//
//   T1 = a + b; y = T1        top -> y -> T1 -> a, b -> bottom      an arrow leads from a node to its children
#pragma once

#include "Ddg.h"

namespace oz {

// The sentinels: the parent of all nodes that nothing is computed from, the child of all that read nothing.
extern tDdg Ddg_parent;
extern tDdg Ddg_child;

// Builds the graph of an expression list; it ends at the first element that assigns to no symbol. The number of nodes,
// the sentinels not counted. Only what is connected with the last assignment is tied to the sentinels.
int BuildDdg(tAsynt t);

// The length of a list of nodes.
int NrofNodes(tDdg nodes);

// The node that was assigned last, null without any assignment; the node of a symbol, null if the list does not name
// it.
tDdg ddg_last_node();
tDdg ddg_node_of(tAsynt symbol_information);

// A map from pointers. The hint is the number of entries that there is room for at a key, at least 1. No key is entered
// twice; a lookup of a key that is not there gives null.
struct Ddg_index;
Ddg_index* ddg_make_index(int entry_size_hint);
void ddg_create_entry(Ddg_index* index, const void* key, void* entry);
void* ddg_lookup(const Ddg_index* index, const void* key);
void ddg_delete_index(Ddg_index* index);

}  // namespace oz
