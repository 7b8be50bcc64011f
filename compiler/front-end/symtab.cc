// Tables of names as tries over the hash of the name, four bits to a branch, with a bucket of a few names as leaf.
//
// Two tables are united by walking down where both have names, and what only one of them has is taken over as it is:
//
//   {a, b, c} with {c, d}:   the parts that hold a and b alone are shared, the branches above c are new

#include "symtab.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string_view>
#include <utility>

#include "Asynt.h"

namespace oz {

struct SymtabNode {
  bool is_bucket;
};

namespace {

constexpr int kHashBits = 32;
constexpr int kDigitBits = 4;
constexpr size_t kWidth = size_t{1} << kDigitBits;
constexpr size_t kBucketLength = 8;  // a longer bucket becomes a branch, unless the hashes have no digits left
constexpr size_t kBlockSize = size_t{1} << 16;

// One name; a bucket is a chain of them.
struct Leaf : SymtabNode {
  uint32_t hash;
  const char* name;
  tAsynt syminfo;
  Leaf* next;
};

struct Branch : SymtabNode {
  Symtab child[kWidth];  // by the next digit of the hash
};

Leaf* as_bucket(Symtab t) { return static_cast<Leaf*>(t); }
Branch* as_branch(Symtab t) { return static_cast<Branch*>(t); }

size_t digit(uint32_t hash, int shift) { return hash >> shift & (kWidth - 1); }

void* allocate(SymtabPool* pool, size_t size) {
  if (pool->block == 0 || pool->used + size > kBlockSize) {
    if (pool->block == pool->blocks.size()) pool->blocks.push_back(new char[kBlockSize]);
    pool->block++;
    pool->used = 0;
  }
  char* place = pool->blocks[pool->block - 1] + pool->used;
  pool->used += size;
  return place;
}

Leaf* new_leaf(SymtabPool* pool, uint32_t hash, const char* name, tAsynt syminfo, Leaf* next) {
  return new (allocate(pool, sizeof(Leaf))) Leaf{{true}, hash, name, syminfo, next};
}

Leaf* copy_leaf(SymtabPool* pool, const Leaf* leaf, Leaf* next) {
  return new_leaf(pool, leaf->hash, leaf->name, leaf->syminfo, next);
}

Branch* new_branch(SymtabPool* pool) { return new (allocate(pool, sizeof(Branch))) Branch{{false}, {}}; }

size_t length(const Leaf* bucket) {
  size_t n = 0;
  for (; bucket; bucket = bucket->next) n++;
  return n;
}

Leaf* find_in_bucket(Leaf* bucket, uint32_t hash, const char* name) {
  while (bucket && (bucket->hash != hash || std::strcmp(bucket->name, name) != 0)) bucket = bucket->next;
  return bucket;
}

// The leaves of a chain as a table, in place: they belong to no other table.
Symtab make_table(SymtabPool* pool, Leaf* chain, int shift) {
  if (shift >= kHashBits || length(chain) <= kBucketLength) return chain;
  Branch* branch = new_branch(pool);
  while (chain) {
    Leaf* next = chain->next;
    Symtab* bucket = &branch->child[digit(chain->hash, shift)];
    chain->next = *bucket ? as_bucket(*bucket) : nullptr;
    *bucket = chain;
    chain = next;
  }
  for (Symtab& child : branch->child)
    if (child) child = make_table(pool, as_bucket(child), shift + kDigitBits);
  return branch;
}

using Clash = void (*)(tAsynt, tAsynt);

// Tells of the names that both buckets have; their number.
size_t compare_buckets(Leaf* first, const Leaf* second, Clash clash) {
  size_t common = 0;
  for (; second; second = second->next) {
    const Leaf* taken = find_in_bucket(first, second->hash, second->name);
    if (!taken) continue;
    common++;
    if (clash && taken->syminfo != second->syminfo) clash(taken->syminfo, second->syminfo);
  }
  return common;
}

Symtab unite_buckets(SymtabPool* pool, Leaf* first, Leaf* second, int shift, Clash clash) {
  const size_t common = compare_buckets(first, second, clash);
  const size_t total = length(first) + length(second) - common;
  if (total == length(first)) return first;
  // One bucket is shared as the end of the new chain: the longer one if there is a choice.
  if (common == 0 && length(first) < length(second)) std::swap(first, second);
  Leaf* result = first;
  if (total > kBucketLength) {
    result = nullptr;
    for (const Leaf* f = first; f; f = f->next) result = copy_leaf(pool, f, result);
  }
  for (const Leaf* s = second; s; s = s->next)
    if (!find_in_bucket(first, s->hash, s->name)) result = copy_leaf(pool, s, result);
  return make_table(pool, result, shift);
}

Symtab unite(SymtabPool* pool, Symtab first, Symtab second, int shift, Clash clash);

Symtab unite_branches(SymtabPool* pool, Branch* first, Branch* second, int shift, Clash clash) {
  Symtab child[kWidth];
  for (size_t i = 0; i < kWidth; i++)
    child[i] = unite(pool, first->child[i], second->child[i], shift + kDigitBits, clash);
  if (std::equal(child, child + kWidth, first->child)) return first;
  if (std::equal(child, child + kWidth, second->child)) return second;
  Branch* result = new_branch(pool);
  std::copy(child, child + kWidth, result->child);
  return result;
}

// The branch with one child replaced.
Branch* with_child(SymtabPool* pool, Branch* branch, size_t which, Symtab child) {
  if (branch->child[which] == child) return branch;
  Branch* result = new_branch(pool);
  *result = *branch;
  result->child[which] = child;
  return result;
}

// A branch with the names of a bucket, which are the first or the second table's.
Symtab unite_bucket(SymtabPool* pool, Branch* branch, Leaf* bucket, bool bucket_first, int shift, Clash clash) {
  for (; bucket; bucket = bucket->next) {
    const size_t i = digit(bucket->hash, shift);
    Leaf* leaf = bucket->next ? copy_leaf(pool, bucket, nullptr) : bucket;
    Symtab child = branch->child[i];
    child = bucket_first ? unite(pool, leaf, child, shift + kDigitBits, clash)
                         : unite(pool, child, leaf, shift + kDigitBits, clash);
    branch = with_child(pool, branch, i, child);
  }
  return branch;
}

Symtab unite(SymtabPool* pool, Symtab first, Symtab second, int shift, Clash clash) {
  if (first == second || !second) return first;
  if (!first) return second;
  if (first->is_bucket && second->is_bucket)
    return unite_buckets(pool, as_bucket(first), as_bucket(second), shift, clash);
  if (first->is_bucket) return unite_bucket(pool, as_branch(second), as_bucket(first), true, shift, clash);
  if (second->is_bucket) return unite_bucket(pool, as_branch(first), as_bucket(second), false, shift, clash);
  return unite_branches(pool, as_branch(first), as_branch(second), shift, clash);
}

}  // namespace

void symtab_clear(SymtabPool* pool) {
  pool->block = 0;
  pool->used = 0;
}

uint32_t symtab_hash(const char* name) {
  const uint64_t hash = std::hash<std::string_view>()(name);
  return static_cast<uint32_t>(hash ^ hash >> 32);
}

tAsynt symtab_find(Symtab table, uint32_t hash, const char* name) {
  for (int shift = 0; table && !table->is_bucket; shift += kDigitBits)
    table = as_branch(table)->child[digit(hash, shift)];
  const Leaf* leaf = table ? find_in_bucket(as_bucket(table), hash, name) : nullptr;
  return leaf ? leaf->syminfo : nullptr;
}

tAsynt* symtab_place(SymtabPool* pool, Symtab* table, uint32_t hash, const char* name) {
  Symtab* at = table;
  int shift = 0;
  for (; *at && !(*at)->is_bucket; shift += kDigitBits) at = &as_branch(*at)->child[digit(hash, shift)];
  Leaf* bucket = *at ? as_bucket(*at) : nullptr;
  Leaf* leaf = find_in_bucket(bucket, hash, name);
  if (!leaf) {
    leaf = new_leaf(pool, hash, name, nullptr, bucket);
    *at = make_table(pool, leaf, shift);
  }
  return &leaf->syminfo;
}

Symtab symtab_unite(SymtabPool* pool, Symtab first, Symtab second, void (*clash)(tAsynt taken, tAsynt left)) {
  return unite(pool, first, second, 0, clash);
}

}  // namespace oz
