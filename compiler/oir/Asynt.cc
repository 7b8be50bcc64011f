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
char* yyBlockList = nullptr;  // chain of pools, linked in the word behind the nodes

size_t max_node_size() {
  size_t size = 0;
  for (int k = 0; k < kAsyntKinds; k++)
    if (Asynt_NodeSize(static_cast<unsigned>(k)) > size) size = Asynt_NodeSize(static_cast<unsigned>(k));
  return size;
}
#endif

tAsynt alloc_for_copy(size_t size) { return Asynt_NewRaw(0, (size - sizeof(TreeNode)) / 8); }

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
  char* block = Alloc(kPoolSize + sizeof(char*));
  if (!block) die_msg("Out of memory. malloc failed.");
  *reinterpret_cast<char**>(block + kPoolSize) = yyBlockList;
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
}

tAsynt CopyAsynt(tAsynt t) { return kit.copy(t); }
bool IsEqualAsynt(const Asynt_Node* a, const Asynt_Node* b) { return kit.equal(a, b); }
bool CheckAsynt(tAsynt t) { return kit.check(t); }
void WriteAsynt(FILE* f, tAsynt t) { kit.write(f, t); }
void WriteAsyntNode(FILE* f, const Asynt_Node* t) { kit.write_node(f, t); }
void QueryAsynt(tAsynt t) { kit.query(t); }
void ReleaseAsynt(tAsynt t) { kit.release(t); }
void TraverseAsyntTD(tAsynt t, void (*proc)(tAsynt)) { kit.traverse_td(t, proc); }
void TraverseAsyntTD2(tAsynt* t, char (*proc)(tAsynt*)) { kit.traverse_td2(t, proc); }
tAsynt ReverseAsynt(tAsynt list) { return kit.reverse(list); }
bool AsyntMarksAreZero(const Asynt_Node* t) { return kit.marks_are_zero(t); }

}  // namespace oz
