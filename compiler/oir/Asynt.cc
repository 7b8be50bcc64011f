// The pools of nodes and texts, and the kit's operations under the tree's name.

#include "Asynt.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

#include "Memory.h"
#include "SecondThread.h"
#include "ememory.h"
#include "ozerrors.h"
#include "treekit_ops.h"

#ifdef OZ_SANITIZE
// Nodes and their texts are not returned at the end of the process, so that leak checking has nothing to say.
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
char* spare_pools = nullptr;  // given back, by their previous

PoolTail* tail_of(char* pool) { return reinterpret_cast<PoolTail*>(pool + kPoolSize); }

size_t max_node_size() {
  size_t size = 0;
  for (int k = 0; k < kAsyntKinds; k++)
    if (Asynt_NodeSize(static_cast<unsigned>(k)) > size) size = Asynt_NodeSize(static_cast<unsigned>(k));
  return size;
}

// Below this mark there is room for a node of any kind.
char* pool_limit(char* pool) {
  static const size_t max_size = max_node_size();
  return pool + kPoolSize + 1 - max_size;
}
#endif

// ---- texts

#ifdef OZ_SANITIZE
std::vector<char*> all_texts;
#else
constexpr size_t kTextBlock = 16384;

// What the texts of a block follow.
struct TextHead {
  char* previous;
  size_t size;  // of the whole block
};
char* text_block = nullptr;  // the current one
char* text_free = nullptr;   // its free part
char* text_end = nullptr;

// A new block, with room for a text of so many bytes at least.
void next_text_block(size_t need) {
  const size_t size = sizeof(TextHead) + std::max(need, kTextBlock);
  char* const block = static_cast<char*>(emalloc(size));
  *reinterpret_cast<TextHead*>(block) = {text_block, size};
  text_block = block;
  text_free = block + sizeof(TextHead);
  text_end = block + size;
  Asynt_HeapUsed += size;
}

void release_texts(const Asynt_Place& start) {
  while (text_block != start.text_block) {
    char* const block = text_block;
    text_block = reinterpret_cast<TextHead*>(block)->previous;
    efree(block);
  }
  text_free = start.text_free;
  text_end = text_block ? text_block + reinterpret_cast<TextHead*>(text_block)->size : nullptr;
}
#endif

// Room for a text of so many bytes.
char* text_room(size_t size) {
#ifdef OZ_SANITIZE
  char* const text = static_cast<char*>(emalloc(size));
  all_texts.push_back(text);
  Asynt_HeapUsed += size;
  return text;
#else
  if (static_cast<size_t>(text_end - text_free) < size) next_text_block(size);
  char* const text = text_free;
  text_free += size;
  return text;
#endif
}

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
  char* block = spare_pools;
  if (block)
    spare_pools = tail_of(block)->previous;
  else
    block = Alloc(kPoolSize + sizeof(PoolTail));
  if (!block) die_msg("Out of memory. malloc failed.");
  if (yyBlockList) tail_of(yyBlockList)->end = Asynt_PoolFreePtr;
  tail_of(block)->previous = yyBlockList;
  yyBlockList = block;
  Asynt_HeapUsed += kPoolSize;
  Asynt_PoolFreePtr = block;
  Asynt_PoolMaxPtr = pool_limit(block);
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

// Calls proc on each node that has been made since the place.
template <typename Proc>
void for_nodes_since(const Asynt_Place& start, Proc proc) {
#ifdef OZ_SANITIZE
  for (size_t i = start.nodes; i < all_nodes.size(); i++) proc(reinterpret_cast<tAsynt>(all_nodes[i]));
#else
  if (yyBlockList) tail_of(yyBlockList)->end = Asynt_PoolFreePtr;
  for (char* pool = yyBlockList; pool; pool = tail_of(pool)->previous) {
    const bool first = pool == start.pool;
    for (char *p = first ? start.free : pool, *next; p < tail_of(pool)->end; p = next) {
      const unsigned kind = reinterpret_cast<TreeNode*>(p)->yyKind;
      if (kind >= kAsyntKinds) internal_error(__FILE__, __LINE__);
      next = p + Asynt_NodeSize(kind);
      proc(reinterpret_cast<tAsynt>(p));
    }
    if (first) return;
  }
#endif
}

// Makes all numbers free again.
void forget_walks() {
  for_nodes_since({}, [](tAsynt t) { t->yySeen = 0; });
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
  static const auto kinds = [] {
    std::array<ScannedKind, kAsyntKinds> all;
    for (size_t k = 0; k < all.size(); k++) all[k] = scanned_kind(Asynt_Schema.kinds[k]);
    return all;
  }();
  return kinds.data();
}

// Children whose kinds are still to be looked at. They lie anywhere in the pools: looking at them a batch later leaves
// the memory time to bring them.
struct PendingChildren {
  static constexpr size_t kBatch = 256;
  struct Child {
    const TreeNode* node;
    uint32_t range;
  };
  Child waiting[kBatch + size_t{8} * kScanned];
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

// Whether every node of some pools is well-formed, reachable or not. The pools are read front to back, which is many
// times faster than a walk over a big tree; only when a node fails, and it may be one that nobody refers to, does the
// walk decide.
bool pools_are_good(char* const* pools, size_t count) {
  PendingChildren children;
  for (size_t i = 0; i < count; i += 4) {
    PoolRest four[4];
    for (size_t k = 0; k < std::size(four) && i + k < count; k++) four[k] = {pools[i + k], tail_of(pools[i + k])->end};
    if (!nodes_are_good<4>(four, &children)) return false;
    for (PoolRest& rest : four)
      if (!nodes_are_good<1>(&rest, &children)) return false;
  }
  return children.look();
}

// A pool and those before it.
std::vector<char*> pools_from(char* newest) {
  std::vector<char*> pools;
  for (char* pool = newest; pool; pool = tail_of(pool)->previous) pools.push_back(pool);
  return pools;
}

// Many pools are shared out between two threads, so many at a time.
bool all_nodes_are_good() {
  constexpr size_t kAtOnce = 256;
  if (yyBlockList) tail_of(yyBlockList)->end = Asynt_PoolFreePtr;
  const std::vector<char*> pools = pools_from(yyBlockList);
  std::atomic<size_t> next{0};
  std::atomic<bool> good{true};
  const auto look = [&] {
    for (size_t i; good && (i = next.fetch_add(kAtOnce)) < pools.size();)
      if (!pools_are_good(pools.data() + i, std::min(kAtOnce, pools.size() - i))) good = false;
  };
  SecondThread second;
  if (pools.size() > kAtOnce) second.start(look);
  look();
  second.join();
  return good;
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

// ---- texts and the end of trees

string Asynt_KeepText(std::string_view text) {
  char* const copy = text_room(text.size() + 1);
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

Asynt_Place Asynt_Here() {
#ifdef OZ_SANITIZE
  return {nullptr, nullptr, all_nodes.size(), nullptr, nullptr, all_texts.size(), Asynt_HeapUsed};
#else
  return {yyBlockList, Asynt_PoolFreePtr, 0, text_block, text_free, 0, Asynt_HeapUsed};
#endif
}

void Asynt_ReleaseSince(const Asynt_Place& start) {
#ifdef OZ_SANITIZE
  for (size_t i = start.nodes; i < all_nodes.size(); i++) std::free(all_nodes[i]);
  all_nodes.resize(start.nodes);
  for (size_t i = start.texts; i < all_texts.size(); i++) std::free(all_texts[i]);
  all_texts.resize(start.texts);
#else
  while (yyBlockList != start.pool) {
    char* const pool = yyBlockList;
    yyBlockList = tail_of(pool)->previous;
    tail_of(pool)->previous = spare_pools;
    spare_pools = pool;
  }
  Asynt_PoolFreePtr = start.free;
  Asynt_PoolMaxPtr = yyBlockList ? pool_limit(yyBlockList) : nullptr;
  release_texts(start);
#endif
  Asynt_HeapUsed = start.used;
}

// ---- batches

#ifdef OZ_SANITIZE
Asynt_Place Asynt_BeginBatch() { return Asynt_Here(); }

Asynt_Batch Asynt_Detach(const Asynt_Place& start) {
  Asynt_Batch batch;
  const auto take = [](std::vector<char*>* from, size_t first, std::vector<char*>* to) {
    to->assign(from->begin() + static_cast<long>(first), from->end());
    from->resize(first);
  };
  take(&all_nodes, start.nodes, &batch.nodes);
  take(&all_texts, start.texts, &batch.texts);
  batch.used = Asynt_HeapUsed - start.used;
  Asynt_HeapUsed = start.used;
  return batch;
}

void Asynt_Release(Asynt_Batch* batch) {
  for (char* node : batch->nodes) std::free(node);
  for (char* text : batch->texts) std::free(text);
  *batch = {};
}

void Asynt_Attach(Asynt_Batch* batch) {
  all_nodes.insert(all_nodes.end(), batch->nodes.begin(), batch->nodes.end());
  all_texts.insert(all_texts.end(), batch->texts.begin(), batch->texts.end());
  Asynt_HeapUsed += batch->used;
  *batch = {};
}

bool Asynt_IsGood(const Asynt_Batch& batch) {
  return std::all_of(batch.nodes.begin(), batch.nodes.end(),
                     [](const char* node) { return kit.node_is_good(reinterpret_cast<const Asynt_Node*>(node)); });
}
#else
namespace {

TextHead* head_of(char* block) { return reinterpret_cast<TextHead*>(block); }

// The last one of a list, by their links, before `end`.
template <typename Previous>
char* oldest_of(char* newest, const char* end, Previous previous) {
  char* at = newest;
  while (previous(at) != end) at = previous(at);
  return at;
}

char*& previous_pool(char* pool) { return tail_of(pool)->previous; }
char*& previous_text(char* block) { return head_of(block)->previous; }

// Goes on in the newest pool and text block.
void go_on_at(char* node, char* text) {
  Asynt_PoolFreePtr = node;
  Asynt_PoolMaxPtr = yyBlockList ? pool_limit(yyBlockList) : nullptr;
  text_free = text;
  text_end = text_block ? text_block + head_of(text_block)->size : nullptr;
}

}  // namespace

// A batch begins with a pool and a text block of its own.
Asynt_Place Asynt_BeginBatch() {
  const Asynt_Place start = Asynt_Here();
  Asynt_PoolMaxPtr = Asynt_PoolFreePtr;
  text_end = text_free;
  return start;
}

Asynt_Batch Asynt_Detach(const Asynt_Place& start) {
  Asynt_Batch batch;
  if (yyBlockList != start.pool) {
    tail_of(yyBlockList)->end = Asynt_PoolFreePtr;
    batch.newest_pool = yyBlockList;
    batch.oldest_pool = oldest_of(yyBlockList, start.pool, previous_pool);
    previous_pool(batch.oldest_pool) = nullptr;
    yyBlockList = start.pool;
  }
  if (text_block != start.text_block) {
    batch.newest_text = text_block;
    batch.oldest_text = oldest_of(text_block, start.text_block, previous_text);
    previous_text(batch.oldest_text) = nullptr;
    text_block = start.text_block;
  }
  go_on_at(start.free, start.text_free);
  batch.used = Asynt_HeapUsed - start.used;
  Asynt_HeapUsed = start.used;
  return batch;
}

void Asynt_Release(Asynt_Batch* batch) {
  if (batch->newest_pool) {
    previous_pool(batch->oldest_pool) = spare_pools;
    spare_pools = batch->newest_pool;
  }
  while (char* const block = batch->newest_text) {
    batch->newest_text = previous_text(block);
    efree(block);
  }
  *batch = {};
}

// The pools and text blocks go on where the batch left off: behind its nodes there may be no room for a text more.
void Asynt_Attach(Asynt_Batch* batch) {
  if (yyBlockList) tail_of(yyBlockList)->end = Asynt_PoolFreePtr;
  if (batch->newest_pool) {
    previous_pool(batch->oldest_pool) = yyBlockList;
    yyBlockList = batch->newest_pool;
    Asynt_PoolFreePtr = Asynt_PoolMaxPtr = tail_of(yyBlockList)->end;
  }
  if (batch->newest_text) {
    previous_text(batch->oldest_text) = text_block;
    text_block = batch->newest_text;
    text_free = text_end = text_block + head_of(text_block)->size;
  }
  Asynt_HeapUsed += batch->used;
  *batch = {};
}

bool Asynt_IsGood(const Asynt_Batch& batch) {
  const std::vector<char*> pools = pools_from(batch.newest_pool);
  return pools_are_good(pools.data(), pools.size());
}
#endif

unsigned long Asynt_UsedSince(const Asynt_Place& start) { return Asynt_HeapUsed - start.used; }

namespace {

// Whether a walk from t meets a node that bears the number `wanted`; the walk leaves its own.
bool reaches(tAsynt t, uint16_t wanted, uint16_t number) {
  while (t && t->yySeen != number) {
    if (t->yySeen == wanted) return true;
    t->yySeen = number;
    const TreeKind& k = kit.kind_of(t);
    if (k.child_count == 0) return false;
    for (int i = 0; i + 1 < k.child_count; i++)
      if (reaches(kit.child(t, k.children[i]), wanted, number)) return true;
    t = kit.child(t, k.children[k.child_count - 1]);
  }
  return false;
}

}  // namespace

bool Asynt_ReachSince(const Asynt_Place& start, const std::vector<tAsynt>& roots) {
  uint16_t made_since = Asynt_NewWalk();
  const uint16_t number = Asynt_NewWalk();
  if (number < made_since) made_since = number + 1;  // all numbers have become free in between
  for_nodes_since(start, [made_since](tAsynt t) { t->yySeen = made_since; });
  const bool found =
      std::any_of(roots.begin(), roots.end(), [=](tAsynt root) { return reaches(root, made_since, number); });
  for_nodes_since(start, [](tAsynt t) { t->yySeen = 0; });
  return found;
}

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
