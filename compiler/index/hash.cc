// Linear hashing. The table has maxp_minus_1 + 1 + p buckets: those below p have been split in this round and use one
// more bit of the hash. With 256 buckets and p = 1, the keys of the old bucket 0 lie in buckets 0 and 256:
//
//   hash & 255 = 0  ->  below p  ->  hash & 511  ->  bucket 0 or 256
//   hash & 255 = 7  ->  bucket 7
//
// slack counts how many keys may still come until the next bucket is split; there are two keys to a bucket on average.
// The table stops at 65536 buckets. Its order is visible to who iterates, so a KeyFinder beside it takes over the
// searches when chains become long, and nothing in the order changes.
#include "hash.h"

#include <climits>
#include <cstring>

#include "ememory.h"
#include "ozerrors.h"

namespace oz {

namespace {

constexpr unsigned kMaxBuckets = kSegmentSize * kDirectorySize;
constexpr unsigned kFirstBuckets = 256;
constexpr int kKeysPerBucket = 2;
constexpr int kLongChain = 16;

element*& bucket_at(const hashtable* t, unsigned b) { return t->directory[b >> 8]->buckets[b & 255]; }

unsigned bucket_of(const hashtable* t, unsigned hash) {
  unsigned b = hash & t->maxp_minus_1;
  return b < t->p ? hash & (2 * t->maxp_minus_1 + 1) : b;
}

segment* new_segment() {
  segment* s = static_cast<segment*>(emalloc(sizeof(segment)));
  for (element*& b : s->buckets) b = nullptr;
  return s;
}

// The bytes of n entries.
size_t slots(int n) { return static_cast<size_t>(n) * sizeof(void*); }

void push(element** chain, element* e) {
  e->next = *chain;
  *chain = e;
}

// Splits bucket p. Each key of its chain moves, head first, to the head of one of two new chains, so that the order
// within them is reversed.
void expandtable(hashtable* t) {
  unsigned added = t->maxp_minus_1 + 1 + t->p;
  if (added >= kMaxBuckets) return;
  if (added % kSegmentSize == 0) t->directory[added >> 8] = new_segment();
  unsigned deciding_bit = t->maxp_minus_1 + 1;
  unsigned split = t->p++;
  if (t->p > t->maxp_minus_1) {
    t->maxp_minus_1 = 2 * t->maxp_minus_1 + 1;
    t->p = 0;
  }
  t->slack += kKeysPerBucket;
  element* e = bucket_at(t, split);
  bucket_at(t, split) = bucket_at(t, added) = nullptr;
  while (e) {
    element* rest = e->next;
    push(&bucket_at(t, e->hash & deciding_bit ? added : split), e);
    e = rest;
  }
}

// Undoes the latest split: the chain of the last bucket goes to the end of the bucket that it came from.
void shrinktable(hashtable* t) {
  unsigned last = t->maxp_minus_1 + t->p;
  if (last == 0) return;
  if (t->p == 0)
    t->p = t->maxp_minus_1 >>= 1;
  else
    t->p--;
  t->slack -= kKeysPerBucket;
  element** end = &bucket_at(t, t->p);
  while (*end) end = &(*end)->next;
  *end = bucket_at(t, last);
  bucket_at(t, last) = nullptr;
  if (last % kSegmentSize == 0) {
    efree(t->directory[last >> 8]);
    t->directory[last >> 8] = nullptr;
  }
}

// The keys of a chain, up to one more than makes it long.
int chain_length(const element* e) {
  int n = 0;
  for (; e && n <= kLongChain; e = e->next) n++;
  return n;
}

void start_finder(hashtable* t) {
  t->finder = make_finder();
  int bucket = -1;
  element* chain = nullptr;
  while (element* e = next_in_hashtable(t, &bucket, &chain)) finder_put(t->finder, e);
}

void delete_chain(element* e) {
  while (e) {
    element* rest = e->next;
    delete_element(e);
    e = rest;
  }
}

void unlink_element(hashtable* t, element* e) {
  element** link = &bucket_at(t, bucket_of(t, e->hash));
  while (*link != e) link = &(*link)->next;
  *link = e->next;
  if (t->finder) finder_drop(t->finder, e);
  push(&t->removed, e);
}

}  // namespace

unsigned hash_x33_u4(const char* str, size_t len) {
  const unsigned char* s = reinterpret_cast<const unsigned char*>(str);
  unsigned h = 0;
  for (; len >= 4; len -= 4, s += 4) h = (((h * 33 + s[0]) * 33 + s[1]) * 33 + s[2]) * 33 + s[3];
  for (; len > 0; len--) h = h * 33 + *s++;
  return h;
}

element* make_element(const char* key, size_t len, tAsynt entry, int size_hint) {
  element* e = static_cast<element*>(emalloc(sizeof(element)));
  *e = {len, 0, static_cast<char*>(std::memcpy(emalloc(len), key, len)), nullptr, {size_hint + 1, 1, nullptr}};
  e->index_info.entries = static_cast<tAsynt*>(emalloc(slots(size_hint + 1)));
  e->index_info.entries[0] = entry;
  e->index_info.entries[1] = nullptr;
  return e;
}

void delete_element(element* e) {
  efree(e->str);
  efree(e->index_info.entries);
  efree(e);
}

int append_entry(Index_info* info, tAsynt entry) {
  if (info->alloced_size <= info->used_size + 1) {
    if (info->alloced_size > INT_MAX / 2) die_msg("Too many entries of one name.");
    info->alloced_size *= 2;
    void* grown = erealloc(info->entries, slots(info->alloced_size));
    if (!grown) die_msg("Out of memory. malloc failed.");
    info->entries = static_cast<tAsynt*>(grown);
  }
  info->entries[info->used_size++] = entry;
  info->entries[info->used_size] = nullptr;
  return info->used_size;
}

int drop_entry(Index_info* info) {
  if (info->used_size == 0) return -1;
  info->used_size--;
  if (info->used_size > 0) info->entries[info->used_size] = nullptr;
  return info->used_size;
}

hashtable* init_hashtable() {
  hashtable* t = static_cast<hashtable*>(emalloc(sizeof(hashtable)));
  *t = {0, kFirstBuckets - 1, kKeysPerBucket * static_cast<int>(kFirstBuckets), {}, nullptr, nullptr};
  t->directory[0] = new_segment();
  return t;
}

void delete_hashtable(hashtable* table) {
  unsigned last = table->p + table->maxp_minus_1;
  for (unsigned b = last + 1; b-- > 0;) delete_chain(bucket_at(table, b));
  for (unsigned s = 0; s <= last >> 8; s++) efree(table->directory[s]);
  delete_chain(table->removed);
  delete_finder(table->finder);
  efree(table);
}

element* find_in_hashtable(const hashtable* table, const char* key) {
  size_t len = std::strlen(key) + 1;
  if (table->finder) return finder_get(table->finder, key, len);
  unsigned hash = hash_x33_u4(key, len);
  element* e = bucket_at(table, bucket_of(table, hash));
  while (e && !(e->hash == hash && e->len == len && std::memcmp(e->str, key, len) == 0)) e = e->next;
  return e;
}

void add_to_hashtable(hashtable* table, const char* key, tAsynt entry, int size_hint) {
  size_t len = std::strlen(key) + 1;
  element* e = make_element(key, len, entry, size_hint);
  e->hash = hash_x33_u4(key, len);
  element** chain = &bucket_at(table, bucket_of(table, e->hash));
  push(chain, e);
  if (table->finder)
    finder_put(table->finder, e);
  else if (chain_length(*chain) > kLongChain)
    start_finder(table);
  if (--table->slack < 0) expandtable(table);
}

int remove_from_hashtable(hashtable* table, const char* key) {
  element* e = find_in_hashtable(table, key);
  if (!e) return -1;
  int left = drop_entry(&e->index_info);
  if (left > 0) return left;
  unlink_element(table, e);
  if (++table->slack > static_cast<int>(table->p + table->maxp_minus_1 + 1)) shrinktable(table);
  return 0;
}

element* next_in_hashtable(const hashtable* table, int* bucket, element** chain) {
  while (!*chain) {
    if (*bucket >= static_cast<int>(table->p + table->maxp_minus_1)) return nullptr;
    *chain = bucket_at(table, static_cast<unsigned>(++*bucket));
  }
  element* e = *chain;
  *chain = e->next;
  return e;
}

}  // namespace oz
