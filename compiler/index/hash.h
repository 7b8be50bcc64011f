// The linear-hashing table behind an Index: it never rehashes as a whole, each insertion splits at most one bucket.
#pragma once

#include <cstddef>
#include <cstdint>

#include "treefwd.h"

namespace oz {

// The entries of one key, always ended by null.
struct Index_info {
  int alloced_size;  // capacity of entries
  int used_size;     // entries in use
  tAsynt* entries;
};

// One key in a bucket.
struct element {
  unsigned len;   // length of the key with its terminating null
  unsigned hash;
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
};

// h = h * 33 + byte over len bytes, taken unsigned.
unsigned hash_x33_u4(const char* str, size_t len);

}  // namespace oz
