// The compiler's tree: 302 kinds in a single-inheritance hierarchy, their constructors, accessors and operations.
//
//   nIf: tAsynt nXIf()                     a new node with all fields null
//   mIf: tAsynt mXIf(Condition, T, F)      a new node with these fields, inherited ones first
//   XIf_T(t)                               the field as an lvalue; a node of the wrong kind or null ends the run
//
// Nodes live in pools and are never returned one by one. Texts are shared between copies.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>
#include <vector>

#include "Positions.h"
#include "treefwd.h"
#include "treekit.h"

namespace oz {

// Whether an operator node's position was set by a conversion.
enum tConversionTag { nonConv = 0, yesConv = 1 };

using ozmat_int = int;
using ozmat_real = double;
using voidp = void*;

struct Index;
using pointerToIndex = Index*;

// How a predefined function maps onto a node.
enum predef_type {
  constant = 0,
  cunary = 1,
  cbinary = 2,
  unary = 3,
  binary = 4,
  variadic = 5,
  variadic_two = 6,
  variadic_one_two = 7,
  predef_if = 8,
  predef_abs = 9,
  predef_for = 10,
  predef_forall = 11,
  predef_while = 12,
  predef_3 = 13,
  type_arctan = 14,
  predef_ireduce = 15,
  predef_ineq = 16,
  parallel_annotation = 17,
  predef_put = 18,
  cvariadic = 19,
  cunary_second_ignored = 20
};

struct Asynt_Node : TreeNode {};

// The current pool and the bytes that pools hold in all.
extern char* Asynt_PoolFreePtr;
extern char* Asynt_PoolMaxPtr;
extern unsigned long Asynt_HeapUsed;

// A public root; not used by the driver.
extern tAsynt AsyntRoot;

// Starts a new pool; the start of it. In sanitizer builds: a block of its own for one node of this size.
char* Asynt_Alloc(size_t node_size);

// A node with its head set and its slots not.
inline tAsynt Asynt_NewRaw(unsigned kind, size_t fields) {
  const size_t size = sizeof(TreeNode) + 8 * fields;
#ifdef OZ_SANITIZE
  char* p = Asynt_Alloc(size);
#else
  char* p = Asynt_PoolFreePtr;
  if (p >= Asynt_PoolMaxPtr) [[unlikely]]
    p = Asynt_Alloc(size);
  Asynt_PoolFreePtr = p + size;
#endif
  tAsynt t = reinterpret_cast<tAsynt>(p);
  t->yyKind = static_cast<uint16_t>(kind);
  t->yySeen = 0;
  t->yyMark = 0;
  return t;
}

inline tAsynt Asynt_New(unsigned kind, size_t fields) {
  tAsynt t = Asynt_NewRaw(kind, fields);
  for (size_t i = 0; i < fields; i++) tree_raw_slot<uint64_t>(t, i) = 0;
  return t;
}

#include "Asynt.gen.h"

// The schema's tables: names, fields, ranges.
extern const TreeSchema Asynt_Schema;

// The name and the size of a kind.
inline const char* Asynt_NodeName(unsigned kind) { return Asynt_Schema.kinds[kind].name; }
inline size_t Asynt_NodeSize(unsigned kind) { return tree_node_size(Asynt_Schema.kinds[kind]); }

// Whether t is a node of the kind or of a descendant; false for null.
inline bool Asynt_IsType(const Asynt_Node* t, Asynt_tKind kind) {
  return t != nullptr && t->yyKind >= kind && t->yyKind <= Asynt_TypeRange[kind];
}

// The kind of a node; NoAsynt for null.
inline Asynt_tKind Asynt_Kind(const Asynt_Node* t) {
  return t == nullptr ? kNoAsynt : static_cast<Asynt_tKind>(t->yyKind);
}

// Set-up and closing hooks; there is nothing to do.
void BeginAsynt();
void CloseAsynt();

// A deep copy that reproduces sharing and cycles within the tree; texts are shared with the source. Null gives null.
tAsynt CopyAsynt(tAsynt t);

// The same in two thirds of the time, with 16 bytes more for each node while it works: for the copies that are made of
// each class, not for trees of any size.
tAsynt CopyAsyntQuickly(tAsynt t);

// Structural equality of two trees, positions included; no marks are used.
bool IsEqualAsynt(const Asynt_Node* a, const Asynt_Node* b);

// Whether every reachable child is of the kind that its field declares. Each failure is reported on standard error.
bool CheckAsynt(tAsynt t);

// The text dump: nodes that are referred to more than once get a label at their first place.
void WriteAsynt(FILE* f, tAsynt t);

// One node: its kind and fields; children by address.
void WriteAsyntNode(FILE* f, const Asynt_Node* t);

// The interactive browser on standard input and output: a child's field name, "parent", "quit".
void QueryAsynt(tAsynt t);

// Cuts a tree apart: every child pointer becomes null. No memory is returned.
void ReleaseAsynt(tAsynt t);

// ---- texts and the end of trees
//
// Nodes and their texts are given back in the order in which they were made, the newest first: all since a place.
//
//   const Asynt_Place start = Asynt_Here();
//   ... trees are made ...
//   Asynt_ReleaseSince(start);

// A terminated copy of a text, for a field of a node; it lives as long as the nodes that are made next to it.
string Asynt_KeepText(std::string_view text);

struct Asynt_Place {
  char* pool = nullptr;  // the current pool then
  char* free = nullptr;  // where the next node was to come
  size_t nodes = 0;      // in sanitizer builds, where each node has a block of its own: how many there were
  char* text_block = nullptr;
  char* text_free = nullptr;
  size_t texts = 0;
  unsigned long used = 0;  // Asynt_HeapUsed then
};
Asynt_Place Asynt_Here();

// Gives all nodes and texts back that have been made since; nothing may refer to them any more. The memory is kept for
// new ones.
void Asynt_ReleaseSince(const Asynt_Place& start);

// Bytes of the pools and blocks that nodes and texts have taken since.
unsigned long Asynt_UsedSince(const Asynt_Place& start);

// Nodes and texts that are given back by themselves, whatever is made after them.
//
//   const Asynt_Place start = Asynt_BeginBatch();
//   ... trees are made ...
//   Asynt_Batch batch = Asynt_Detach(start);
//   ... other trees are made, and given back ...
//   Asynt_Release(&batch);
struct Asynt_Batch {
  char* newest_pool = nullptr;  // and by their links those before it; null if there are none
  char* oldest_pool = nullptr;
  char* newest_text = nullptr;
  char* oldest_text = nullptr;
  std::vector<char*> nodes{};  // in sanitizer builds
  std::vector<char*> texts{};
  unsigned long used = 0;
};
Asynt_Place Asynt_BeginBatch();
Asynt_Batch Asynt_Detach(const Asynt_Place& start);

// Gives a batch back; nothing may refer to it any more.
void Asynt_Release(Asynt_Batch* batch);

// Puts a batch back among the others, as if it were made now.
void Asynt_Attach(Asynt_Batch* batch);

// Whether every child of the nodes in a batch is of the kind that its field declares. Reports nothing and changes
// nothing, so that it can be asked on any thread.
bool Asynt_IsGood(const Asynt_Batch& batch);

// Whether a node that was made since the place can be reached from one of these trees. Costs a walk over the trees.
bool Asynt_ReachSince(const Asynt_Place& start, const std::vector<tAsynt>& roots);

// Calls proc on each node once, before its children.
void TraverseAsyntTD(tAsynt t, void (*proc)(tAsynt));

// The same with the node's slot, so that proc can replace the node; the walk goes on below the replacement. If proc
// returns false the subtree below this node gets no calls, and the walk goes on with the siblings; a node first met in
// such a subtree is still visited at a later reference outside.
void TraverseAsyntTD2(tAsynt* t, char (*proc)(tAsynt*));

// The same in half the time, for walks that look at a tree or put leaves in the places of subtrees: the walk does not
// go on below a replacement.
void WalkAsynt(tAsynt* t, char (*proc)(tAsynt*));

// For walks written elsewhere: the number of a walk that begins now. No node's yySeen holds it yet; it is good until
// the next walk begins.
uint16_t Asynt_NewWalk();

// Reverses a list in place; anything but a list cell is returned as it is.
tAsynt ReverseAsynt(tAsynt list);

// Whether all marks in the tree are 0, as they must be between operations. For tests.
bool AsyntMarksAreZero(const Asynt_Node* t);

}  // namespace oz
