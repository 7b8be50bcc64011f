// The tree's pools, and the kit's operations under the tree's name.

#include "Asynt.h"

#include <cstdlib>
#include <iterator>
#include <vector>

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

#ifdef OZ_SANITIZE
std::vector<char*> all_nodes;
#else
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
  all_nodes.push_back(node);
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

// A tree is small if it has at most a node per so many bytes of all nodes: a few in a hundred.
constexpr unsigned long kBytesPerStep = 64UL * 24;

TreeKit<Asynt_Node, alloc_for_copy, Asynt_Shapes> kit{Asynt_Schema};

// ---- numbers of walks

uint16_t walk_number = 0;

void forget_walk(char* node) { reinterpret_cast<TreeNode*>(node)->yySeen = 0; }

// Makes all numbers free again.
void forget_walks() {
#ifdef OZ_SANITIZE
  for (char* node : all_nodes) forget_walk(node);
#else
  if (yyBlockList) tail_of(yyBlockList)->end = Asynt_PoolFreePtr;
  for (char* pool = yyBlockList; pool; pool = tail_of(pool)->previous) {
    for (char *p = pool, *next; p < tail_of(pool)->end; p = next) {
      const unsigned kind = reinterpret_cast<TreeNode*>(p)->yyKind;
      if (kind >= kAsyntKinds) internal_error(__FILE__, __LINE__);
      next = p + Asynt_NodeSize(kind);
      forget_walk(p);
    }
  }
#endif
}

// ---- check

#ifdef OZ_SANITIZE
bool all_nodes_are_good() { return false; }
#else
// What the scan of the pools needs of a kind: the node's size, where its first children are and what they may be. A
// kind with more children, left to the kit, has no size here.
constexpr int kScanned = 3;
struct alignas(32) ScannedKind {
  uint16_t size;
  uint8_t child_count;
  uint8_t offset[kScanned];
  uint32_t range[kScanned];  // the first kind that a child may be, and in the upper half how many may follow
};

ScannedKind scanned_kind(const TreeKind& k) {
  ScannedKind s{};
  if (k.child_count > kScanned) return s;
  s.size = static_cast<uint16_t>(tree_node_size(k));
  s.child_count = k.child_count;
  if (k.child_count > 0)
    for (int i = 0; i < kScanned; i++) s.offset[i] = static_cast<uint8_t>(sizeof(TreeNode) + size_t{8} * k.children[0]);
  for (int i = 0; i < k.child_count; i++) {
    s.offset[i] = static_cast<uint8_t>(sizeof(TreeNode) + size_t{8} * k.children[i]);
    s.range[i] = k.first_kind[i] | static_cast<uint32_t>(k.last_kind[i] - k.first_kind[i]) << 16;
  }
  return s;
}

const ScannedKind* scanned_kinds() {
  static ScannedKind kinds[kAsyntKinds];
  if (kinds[0].size == 0)
    for (int k = 0; k < kAsyntKinds; k++) kinds[k] = scanned_kind(Asynt_Schema.kinds[k]);
  return kinds;
}

// Children whose kinds are still to be looked at. They lie anywhere in the pools: looking at them a batch later leaves
// the memory time to bring them.
struct PendingChildren {
  static constexpr size_t kBatch = 256;
  struct Child {
    const TreeNode* node;
    uint32_t range;
  };
  Child waiting[kBatch + 8 * kScanned];
  size_t count = 0;

  // Which kind follows which is hard to foresee: the children of a node are noted without a branch on their number.
  static size_t add(Child* at, const char* node, const ScannedKind& k) {
    for (int i = 0; i < kScanned; i++) {
      const TreeNode* c = *reinterpret_cast<const TreeNode* const*>(node + k.offset[i]);
      __builtin_prefetch(c);
      at[i] = {c, k.range[i]};
    }
    return k.child_count;
  }

  // Looks at those that wait; whether all are good.
  bool look() {
    static const TreeNode absent{0xffff, 0, 0};
    bool good = true;
    for (size_t i = 0; i < count; i++) {
      const TreeNode* c = waiting[i].node ? waiting[i].node : &absent;
      good &= static_cast<uint16_t>(c->yyKind - waiting[i].range) <= waiting[i].range >> 16;
    }
    count = 0;
    return good;
  }
};

// A node that the table of scanned kinds does not describe.
bool odd_node_is_good(const char** p) {
  const tAsynt t = reinterpret_cast<tAsynt>(const_cast<char*>(*p));
  if (!kit.known(t)) return false;
  *p += tree_node_size(kit.kind_of(t));
  return kit.node_is_good(t);
}

// The part of a pool that is still to be read.
struct PoolRest {
  const char* p = nullptr;
  const char* end = nullptr;
};

// Reads pools side by side until one is at its end. Where a node begins is known when the one before it has been looked
// at, so that a pool alone keeps the processor waiting.
template <size_t kPools>
bool nodes_are_good(PoolRest* pools, PendingChildren* children) {
  const ScannedKind* const kinds = scanned_kinds();
  const char* p[kPools];
  for (size_t i = 0; i < kPools; i++) p[i] = pools[i].p;
  const auto all_have_nodes = [&] {
    bool all = true;
    for (size_t i = 0; i < kPools; i++) all &= p[i] < pools[i].end;
    return all;
  };
  size_t count = children->count;
  while (all_have_nodes()) {
#pragma GCC unroll 4
    for (size_t i = 0; i < kPools; i++) {
      const unsigned kind = reinterpret_cast<const TreeNode*>(p[i])->yyKind;
      if (kind >= kAsyntKinds || kinds[kind].size == 0) [[unlikely]] {
        if (!odd_node_is_good(&p[i])) return false;
        continue;
      }
      count += PendingChildren::add(children->waiting + count, p[i], kinds[kind]);
      p[i] += kinds[kind].size;
    }
    if (count < PendingChildren::kBatch) continue;
    children->count = count;
    if (!children->look()) return false;
    count = 0;
  }
  children->count = count;
  for (size_t i = 0; i < kPools; i++) pools[i].p = p[i];
  return true;
}

// Whether every node in the pools is well-formed, reachable or not. The pools are read front to back, which is many
// times faster than a walk over a big tree; only when a node fails, and it may be one that nobody refers to, does the
// walk decide.
bool all_nodes_are_good() {
  if (!yyBlockList) return true;
  tail_of(yyBlockList)->end = Asynt_PoolFreePtr;
  PendingChildren children;
  for (char* pool = yyBlockList; pool;) {
    PoolRest four[4];
    for (size_t i = 0; i < std::size(four) && pool; pool = tail_of(pool)->previous)
      four[i++] = {pool, tail_of(pool)->end};
    if (!nodes_are_good<4>(four, &children)) return false;
    for (PoolRest& rest : four)
      if (!nodes_are_good<1>(&rest, &children)) return false;
  }
  return children.look();
}
#endif

}  // namespace

tAsynt CopyAsynt(tAsynt t) { return kit.copy<true>(t); }
tAsynt CopyAsyntQuickly(tAsynt t) { return kit.copy<false>(t); }
bool IsEqualAsynt(const Asynt_Node* a, const Asynt_Node* b) { return kit.equal(a, b); }

// A small tree is walked, whatever else there is: functions are made one by one from a big model. For a big one all
// nodes are looked at.
bool CheckAsynt(tAsynt t) {
  if (!t) return kit.check(t);
  long left = static_cast<long>(Asynt_HeapUsed / kBytesPerStep);
  const bool good = kit.good_within(t, Asynt_NewWalk(), &left) && (left >= 0 || all_nodes_are_good());
  return good || kit.check(t);
}

void WriteAsynt(FILE* f, tAsynt t) { kit.write(f, t); }
void WriteAsyntNode(FILE* f, const Asynt_Node* t) { kit.write_node(f, t); }
void QueryAsynt(tAsynt t) { kit.query(t); }
void ReleaseAsynt(tAsynt t) { kit.release(t); }
void TraverseAsyntTD(tAsynt t, void (*proc)(tAsynt)) { kit.traverse_td(t, proc); }
void TraverseAsyntTD2(tAsynt* t, char (*proc)(tAsynt*)) { kit.traverse_td2(t, proc); }
void WalkAsynt(tAsynt* t, char (*proc)(tAsynt*)) { kit.walk(t, Asynt_NewWalk(), proc); }

uint16_t Asynt_NewWalk() {
  if (++walk_number == 0) {
    forget_walks();
    walk_number = 1;
  }
  return walk_number;
}

tAsynt ReverseAsynt(tAsynt list) { return kit.reverse(list); }
bool AsyntMarksAreZero(const Asynt_Node* t) { return kit.marks_are_zero(t); }

}  // namespace oz
