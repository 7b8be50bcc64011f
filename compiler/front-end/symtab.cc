// Tables of names as binary tries over the hash of the name.
//
// A branch stands for the highest bit in which the hashes below it differ; a leaf is one name, and names of equal hash
// hang on a chain. The shape depends on the names alone, so that two tables are united by walking down where both have
// names, and a part that only one of them has is taken over as it is:
//
//   {a, b, c} with {c, d}:   the parts that hold a and b alone are shared, the branches above c are new
//
// The depth is at most 64, whatever the number of names.

#include "symtab.h"

#include <bit>
#include <cstring>
#include <functional>
#include <string_view>

#include "Asynt.h"

namespace oz {

// A leaf or a branch.
struct SymtabNode {
  uint64_t hash;  // of the names; in a branch the bits above `bit` are those of all hashes below it
  int bit;        // of a branch: the highest bit in which the hashes below differ; kLeaf for a leaf
  union {
    SymtabNode* child[2];  // of a branch: the hashes with a 0 and with a 1 in the bit
    struct {
      tAsynt syminfo;
      SymtabNode* next;  // another name with the same hash
    };
  };
};

namespace {

constexpr int kLeaf = -1;
constexpr size_t kBlockNodes = 4096;

SymtabNode* new_node(SymtabPool* pool) {
  const size_t block = pool->used / kBlockNodes;
  if (block == pool->blocks.size()) pool->blocks.push_back(new SymtabNode[kBlockNodes]);
  return &pool->blocks[block][pool->used++ % kBlockNodes];
}

SymtabNode* new_leaf(SymtabPool* pool, uint64_t hash, tAsynt syminfo, SymtabNode* next) {
  SymtabNode* n = new_node(pool);
  n->hash = hash;
  n->bit = kLeaf;
  n->syminfo = syminfo;
  n->next = next;
  return n;
}

int side(uint64_t hash, int bit) { return static_cast<int>(hash >> bit & 1); }

// The branch over two tables whose hashes differ in a bit, that bit being the highest.
SymtabNode* new_branch(SymtabPool* pool, int bit, SymtabNode* a, SymtabNode* b) {
  SymtabNode* n = new_node(pool);
  n->hash = a->hash;
  n->bit = bit;
  n->child[side(a->hash, bit)] = a;
  n->child[side(b->hash, bit)] = b;
  return n;
}

// A copy of a branch with one child replaced; the branch itself if that child is there already.
SymtabNode* with_child(SymtabPool* pool, SymtabNode* branch, int which, SymtabNode* child) {
  if (branch->child[which] == child) return branch;
  return new_branch(pool, branch->bit, child, branch->child[1 - which]);
}

// The highest bit above `bit` in which two hashes differ, or kLeaf.
int highest_difference(uint64_t a, uint64_t b, int bit) {
  const uint64_t difference = a ^ b;
  const int highest = 63 - std::countl_zero(difference);
  return difference != 0 && highest > bit ? highest : kLeaf;
}

bool has_name(const SymtabNode* leaf, const char* name) {
  return std::strcmp(NamedSymbol_Name(leaf->syminfo), name) == 0;
}

// The leaf of a name on a chain of leaves, or null.
SymtabNode* find_on_chain(SymtabNode* leaf, const char* name) {
  while (leaf && !has_name(leaf, name)) leaf = leaf->next;
  return leaf;
}

using Clash = void (*)(tAsynt, tAsynt);

// The first chain and what the second one has beyond it.
SymtabNode* unite_chains(SymtabPool* pool, SymtabNode* first, SymtabNode* second, Clash clash) {
  SymtabNode* result = first;
  for (SymtabNode* s = second; s; s = s->next) {
    const SymtabNode* taken = find_on_chain(first, NamedSymbol_Name(s->syminfo));
    if (!taken)
      result = new_leaf(pool, s->hash, s->syminfo, result);
    else if (clash && taken->syminfo != s->syminfo)
      clash(taken->syminfo, s->syminfo);
  }
  return result;
}

SymtabNode* unite(SymtabPool* pool, SymtabNode* first, SymtabNode* second, Clash clash);

// Both are branches on the same bit.
SymtabNode* unite_branches(SymtabPool* pool, SymtabNode* first, SymtabNode* second, Clash clash) {
  SymtabNode* low = unite(pool, first->child[0], second->child[0], clash);
  SymtabNode* high = unite(pool, first->child[1], second->child[1], clash);
  if (low == first->child[0] && high == first->child[1]) return first;
  if (low == second->child[0] && high == second->child[1]) return second;
  return new_branch(pool, first->bit, low, high);
}

SymtabNode* unite(SymtabPool* pool, SymtabNode* first, SymtabNode* second, Clash clash) {
  if (first == second) return first;
  const int lower_bound = first->bit > second->bit ? first->bit : second->bit;
  const int apart = highest_difference(first->hash, second->hash, lower_bound);
  if (apart != kLeaf) return new_branch(pool, apart, first, second);
  if (first->bit == second->bit)
    return first->bit == kLeaf ? unite_chains(pool, first, second, clash) : unite_branches(pool, first, second, clash);
  if (first->bit > second->bit) {
    const int which = side(second->hash, first->bit);
    return with_child(pool, first, which, unite(pool, first->child[which], second, clash));
  }
  const int which = side(first->hash, second->bit);
  return with_child(pool, second, which, unite(pool, first, second->child[which], clash));
}

}  // namespace

void symtab_clear(SymtabPool* pool) { pool->used = 0; }

uint64_t symtab_hash(const char* name) { return std::hash<std::string_view>()(name); }

tAsynt symtab_find(Symtab table, uint64_t hash, const char* name) {
  if (!table) return nullptr;
  while (table->bit != kLeaf) table = table->child[side(hash, table->bit)];
  if (table->hash != hash) return nullptr;
  const SymtabNode* leaf = find_on_chain(table, name);
  return leaf ? leaf->syminfo : nullptr;
}

tAsynt symtab_add(SymtabPool* pool, Symtab* table, uint64_t hash, tAsynt syminfo) {
  Symtab* place = table;
  while (*place && (*place)->bit != kLeaf && highest_difference((*place)->hash, hash, (*place)->bit) == kLeaf)
    place = &(*place)->child[side(hash, (*place)->bit)];
  if (*place && ((*place)->bit != kLeaf || (*place)->hash != hash)) {
    const int apart = highest_difference((*place)->hash, hash, (*place)->bit);
    *place = new_branch(pool, apart, *place, new_leaf(pool, hash, syminfo, nullptr));
    return syminfo;
  }
  const SymtabNode* leaf = find_on_chain(*place, NamedSymbol_Name(syminfo));
  if (leaf) return leaf->syminfo;
  *place = new_leaf(pool, hash, syminfo, *place);
  return syminfo;
}

Symtab symtab_unite(SymtabPool* pool, Symtab first, Symtab second, void (*clash)(tAsynt taken, tAsynt left)) {
  if (!first) return second;
  if (!second) return first;
  return unite(pool, first, second, clash);
}

}  // namespace oz
