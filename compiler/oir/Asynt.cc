// The tree's pools, and the kit's operations under the tree's name.

#include "Asynt.h"

#include <cstdlib>

#include "Memory.h"
#include "ozerrors.h"
#include "treekit_ops.h"

#ifdef OZ_SANITIZE
// Nodes and their texts are never returned, so that leak checking has nothing to say.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }
#endif

namespace oz {

char* Asynt_PoolFreePtr = nullptr;
char* Asynt_PoolMaxPtr = nullptr;
unsigned long Asynt_HeapUsed = 0;
tAsynt AsyntRoot = nullptr;

namespace {

#ifndef OZ_SANITIZE
constexpr size_t kPoolSize = 20480;

// What stands behind the nodes of a pool.
struct PoolTail {
  char* previous;  // the pool before this one
  char* end;       // behind its last node; of the current pool that is Asynt_PoolFreePtr
};
char* yyBlockList = nullptr;  // the current pool

PoolTail* tail_of(char* pool) { return reinterpret_cast<PoolTail*>(pool + kPoolSize); }

size_t max_node_size() {
  size_t size = 0;
  for (int k = 0; k < kAsyntKinds; k++)
    if (Asynt_NodeSize(static_cast<unsigned>(k)) > size) size = Asynt_NodeSize(static_cast<unsigned>(k));
  return size;
}
#endif

tAsynt alloc_for_copy(size_t fields) { return Asynt_NewRaw(kNoAsynt, fields); }

}  // namespace

char* Asynt_Alloc(size_t node_size) {
#ifdef OZ_SANITIZE
  Asynt_HeapUsed += node_size;
  char* node = static_cast<char*>(std::malloc(node_size));
  if (!node) die_msg("Out of memory. malloc failed.");
  return node;
#else
  (void)node_size;
  static const size_t max_size = max_node_size();
  char* block = Alloc(kPoolSize + sizeof(PoolTail));
  if (!block) die_msg("Out of memory. malloc failed.");
  if (yyBlockList) tail_of(yyBlockList)->end = Asynt_PoolFreePtr;
  tail_of(block)->previous = yyBlockList;
  yyBlockList = block;
  Asynt_HeapUsed += kPoolSize;
  Asynt_PoolFreePtr = block;
  // Below this mark there is room for a node of any kind.
  Asynt_PoolMaxPtr = block + kPoolSize + 1 - max_size;
  return block;
#endif
}

void BeginAsynt() {}
void CloseAsynt() {}

namespace {

TreeKit<Asynt_Node> kit{Asynt_Schema, alloc_for_copy};

#ifdef OZ_SANITIZE
bool all_nodes_are_good() { return false; }
#else
// Whether every node in the pools is well-formed, reachable or not. The pools are read front to back, which is many
// times faster than a walk over a big tree; only when a node fails, and it may be one that nobody refers to, does the
// walk decide.
bool all_nodes_are_good() {
  if (!yyBlockList) return true;
  tail_of(yyBlockList)->end = Asynt_PoolFreePtr;
  for (char* pool = yyBlockList; pool; pool = tail_of(pool)->previous) {
    const char* const end = tail_of(pool)->end;
    for (char* p = pool; p < end;) {
      const tAsynt t = reinterpret_cast<tAsynt>(p);
      if (!kit.node_is_good(t)) return false;
      p += tree_node_size(kit.kind_of(t));
    }
  }
  return true;
}
#endif

}  // namespace

tAsynt CopyAsynt(tAsynt t) { return kit.copy(t); }
bool IsEqualAsynt(const Asynt_Node* a, const Asynt_Node* b) { return kit.equal(a, b); }
bool CheckAsynt(tAsynt t) { return (t && all_nodes_are_good()) || kit.check(t); }
void WriteAsynt(FILE* f, tAsynt t) { kit.write(f, t); }
void WriteAsyntNode(FILE* f, const Asynt_Node* t) { kit.write_node(f, t); }
void QueryAsynt(tAsynt t) { kit.query(t); }
void ReleaseAsynt(tAsynt t) { kit.release(t); }
void TraverseAsyntTD(tAsynt t, void (*proc)(tAsynt)) { kit.traverse_td(t, proc); }
void TraverseAsyntTD2(tAsynt* t, char (*proc)(tAsynt*)) { kit.traverse_td2(t, proc); }
tAsynt ReverseAsynt(tAsynt list) { return kit.reverse(list); }
bool AsyntMarksAreZero(const Asynt_Node* t) { return kit.marks_are_zero(t); }

}  // namespace oz
