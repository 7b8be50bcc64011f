// The dependence graph: a second tree of the same kit, with the links of a graph in it. Node kinds in Ddg.tree; the
// constructors, accessors and operations are those of Asynt.h under this name.
//
// A graph's links run in circles and its chains are as long as the lists that it is made from, so all operations here
// keep their way in memory and not on the stack.
#pragma once

#include <cstddef>
#include <cstdio>

#include "Asynt.h"
#include "treekit.h"

namespace oz {

// A time or a cost, in the weights of operations; a priority.
using tim_t = int;
using ddg_pri_t = int;

struct Ddg_Node : TreeNode {};
using tDdg = Ddg_Node*;

// A node with its head set and its slots not.
tDdg Ddg_NewRaw(unsigned kind, size_t fields);

inline tDdg Ddg_New(unsigned kind, size_t fields) {
  const tDdg t = Ddg_NewRaw(kind, fields);
  for (size_t i = 0; i < fields; i++) tree_raw_slot<uint64_t>(t, i) = 0;
  return t;
}

#include "Ddg.gen.h"

// The schema's tables: names, fields, ranges.
extern const TreeSchema Ddg_Schema;

inline bool Ddg_IsType(const Ddg_Node* t, Ddg_tKind kind) {
  return t != nullptr && t->yyKind >= kind && t->yyKind <= Ddg_TypeRange[kind];
}

inline Ddg_tKind Ddg_Kind(const Ddg_Node* t) { return t == nullptr ? kNoDdg : static_cast<Ddg_tKind>(t->yyKind); }

// Set-up and closing hooks; there is nothing to do.
void BeginDdg();
void CloseDdg();

// As for the main tree. Two graphs are equal if the same links lead to equal nodes everywhere.
tDdg CopyDdg(tDdg t);
bool IsEqualDdg(const Ddg_Node* a, const Ddg_Node* b);
bool CheckDdg(tDdg t);
void WriteDdg(FILE* f, tDdg t);
void WriteDdgNode(FILE* f, const Ddg_Node* t);
void QueryDdg(tDdg t);
void ReleaseDdg(tDdg t);
tDdg ReverseDdg(tDdg list);

// The graph that WriteDdg wrote. A dump tells symbols by their texts and assignments not at all: a node that is read
// has an AbsoluteSymbol of that text and no assignment. Null at the end of the file and if the text is no dump.
tDdg ReadDdg(FILE* f);

// Calls proc on each node once: before what it leads to, behind it. A node that proc links in is not visited.
void TraverseDdgTD(tDdg t, void (*proc)(tDdg));
void TraverseDdgBU(tDdg t, void (*proc)(tDdg));

// Before what it leads to, with the node's slot; if proc returns false the walk does not go on below this node.
void TraverseDdgTD2(tDdg* t, char (*proc)(tDdg*));

// Whether all marks that can be reached are 0, as they must be between operations. For tests.
bool DdgMarksAreZero(const Ddg_Node* t);

}  // namespace oz
