// The linear-hashing table behind an Index: it never rehashes as a whole, each insertion splits at most one bucket.
#pragma once

#include <cstddef>
#include <cstdint>

#include "keyfinder.h"
#include "treefwd.h"

namespace oz {

// The entries of one key, always ended by null.
struct Index_info {
  int alloced_size;  // capacity of entries
  int used_size;     // entries in use
  tAsynt* entries;
};

// One key with its entries, in a bucket or in a list.
struct element {
  size_t len;     // length of the key with its terminating null
  unsigned hash;  // of the key, in a table; 0 in a list
  char* str;      // owned copy of the key
  element* next;
  Index_info index_info;
};

inline constexpr unsigned kSegmentSize = 256;
inline constexpr unsigned kDirectorySize = 256;
struct segment {
  element* buckets[kSegmentSize];
};

struct hashtable {
  unsigned p;             // next bucket to split
  unsigned maxp_minus_1;  // current power-of-two bucket count less one
  int slack;              // how many more entries may come before the next split
  segment* directory[kDirectorySize];
  element* removed;   // removed keys, kept until the table goes: who iterates may still hold one
  KeyFinder* finder;  // serves the searches once a chain has become long; null before
};

// h = h * 33 + byte over len bytes, taken unsigned.
unsigned hash_x33_u4(const char* str, size_t len);

// A key and its first entry, outside any table. size_hint is the number of entries that there is room for at first.
element* make_element(const char* key, size_t len, tAsynt entry, int size_hint);
void delete_element(element* e);

// Appends an entry. Result: the number of entries.
int append_entry(Index_info* info, tAsynt entry);

// Removes the last entry. Result: how many are left, -1 if there was none. The last one left stays in its slot.
int drop_entry(Index_info* info);

// An empty table of 256 buckets.
hashtable* init_hashtable();
void delete_hashtable(hashtable* table);

// Looks a key up by its text; null when it is not there.
element* find_in_hashtable(const hashtable* table, const char* key);

// Adds a key that is not there.
void add_to_hashtable(hashtable* table, const char* key, tAsynt entry, int size_hint);

// Removes the last entry of a key, and the key with its only entry. Result: how many are left, -1 for an unknown key.
int remove_from_hashtable(hashtable* table, const char* key);

// Iteration by bucket, and from the head of each bucket's chain. The caller starts with bucket -1 and chain null; null
// at the end.
element* next_in_hashtable(const hashtable* table, int* bucket, element** chain);

}  // namespace oz
