// The graph of a list of assignments.
//
// Each symbol has one node, found by the address of its symbol information; a symbol that a right side reads twice
// makes two edges. All lists grow at the front. Nodes without parents, and nodes without children, are tied to a
// sentinel at the end, in one walk from the last assignment: a chain that shares nothing with it stays out.

#include "smallddg.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <unordered_map>
#include <vector>

#include "hash.h"

namespace oz {

tDdg Ddg_parent = nullptr;
tDdg Ddg_child = nullptr;

// A table with keys of one size: the digits of the pointer.
struct Ddg_index {
  hashtable* table;
  int entry_size_hint;
};

namespace {

Ddg_index* ISym = nullptr;
tDdg N0 = nullptr, D0 = nullptr;    // no nodes, no data
tAsynt E0 = nullptr, T0 = nullptr;  // no expressions, NoType
tDdg Lhs = nullptr;                 // the node of the left side at work, at the end the last one
int nrNodes = 0;

struct PointerKey {
  char text[2 * sizeof(void*) + 1] = {};
  explicit PointerKey(const void* p) {
    std::to_chars(text, text + sizeof text - 1, reinterpret_cast<uintptr_t>(p), 16);
  }
};

tDdg sentinel(const char* name) { return mNode(N0, N0, mAbsoluteSymbol(T0, NoPosition, name, mExpression0()), E0, D0); }

tDdg FindNode(tAsynt si) {
  if (void* const found = ddg_lookup(ISym, si)) return static_cast<tDdg>(found);
  const tDdg node = mNode(N0, N0, si, E0, D0);
  nrNodes++;
  ddg_create_entry(ISym, si, node);
  return node;
}

bool is_predefined(tAsynt si) { return Asynt_Kind(SymInfo_Type(si)) == kPreDef; }

// Each occurrence counts, and what a symbol's information leads to (its type, its sizes) does not.
char AddDependency(tAsynt* t) {
  if (Asynt_Kind(*t) != kSymbol) return 1;
  const tAsynt si = Symbol_SymInfo(*t);
  if (is_predefined(si)) return 0;
  const tDdg rhs = FindNode(si);
  Node_Parents(rhs) = mNode1(Lhs, Node_Parents(rhs));
  Node_Children(Lhs) = mNode1(rhs, Node_Children(Lhs));
  return 0;
}

void TraverseExpr(tAsynt e) {
  for (; Asynt_Kind(e) == kExpression1; e = Expression1_Expressions(e)) {
    const tAsynt set = Expression1_Expression(e);
    if (Asynt_Kind(set) != kXSet || Asynt_Kind(Binary_LHS(set)) != kSymbol) return;
    Lhs = FindNode(Symbol_SymInfo(Binary_LHS(set)));
    Node_Op(Lhs) = set;
    tAsynt rhs = Binary_RHS(set);
    TraverseAsyntTD2(&rhs, AddDependency);
  }
}

void FixEndNodes(tDdg node) {
  if (Ddg_Kind(node) != kNode) return;
  if (Node_Parents(node) == N0) {
    Node_Parents(node) = mNode1(Ddg_parent, N0);
    Node_Children(Ddg_parent) = mNode1(node, Node_Children(Ddg_parent));
  }
  if (Node_Children(node) == N0) {
    Node_Children(node) = mNode1(Ddg_child, N0);
    Node_Parents(Ddg_child) = mNode1(node, Node_Parents(Ddg_child));
  }
}

}  // namespace

int BuildDdg(tAsynt t) {
  N0 = mNode0();
  D0 = mNodeDataNULL();
  E0 = mExpression0();
  T0 = mNoType();
  Ddg_parent = sentinel("DDG_TOP");
  Ddg_child = sentinel("DDG_BOTTOM");
  ddg_delete_index(ISym);
  ISym = ddg_make_index(1);
  Lhs = nullptr;
  nrNodes = 0;
  TraverseExpr(t);
  TraverseDdgTD(Lhs, FixEndNodes);
  CheckDdg(Ddg_parent);
  return nrNodes;
}

int NrofNodes(tDdg nodes) {
  int n = 0;
  for (; Ddg_Kind(nodes) == kNode1; nodes = Node1_Nodes(nodes)) n++;
  return n;
}

tDdg ddg_last_node() { return Lhs; }

tDdg ddg_node_of(tAsynt symbol_information) {
  return ISym ? static_cast<tDdg>(ddg_lookup(ISym, symbol_information)) : nullptr;
}

// ---- the map

Ddg_index* ddg_make_index(int entry_size_hint) { return new Ddg_index{init_hashtable(), std::max(entry_size_hint, 1)}; }

void ddg_create_entry(Ddg_index* index, const void* key, void* entry) {
  add_to_hashtable(index->table, PointerKey(key).text, static_cast<tAsynt>(entry), index->entry_size_hint);
}

void* ddg_lookup(const Ddg_index* index, const void* key) {
  const element* const found = find_in_hashtable(index->table, PointerKey(key).text);
  return found ? found->index_info.entries[0] : nullptr;
}

void ddg_delete_index(Ddg_index* index) {
  if (!index) return;
  delete_hashtable(index->table);
  delete index;
}

}  // namespace oz
