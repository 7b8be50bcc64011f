// The texts of identifiers: one table, which is never freed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "treefwd.h"

namespace oz {

// What is known of an identifier's text, however often it occurs.
struct ScanName {
  string text;  // terminated, lives as long as the process; the Name of every symbol that is spelled so
  size_t length;
  int keyword;          // its token code, or 0
  uint32_t generation;  // of the predefined names that `predef` was looked up in
  tAsynt predef;        // the entry of the predefined name, or null
};

// The hash of a text is a fold over its bytes, so that a scanner computes it on the way.
inline constexpr uint64_t kScanHashStart = 0x9E3779B97F4A7C15u;
inline uint64_t scan_hash_step(uint64_t hash, char c) {
  return (hash ^ static_cast<unsigned char>(c)) * 0xD6E8FEB86659FD93u;
}

// The entry of a text; made when it is new.
ScanName& scan_intern(const char* text, size_t length, uint64_t hash);

}  // namespace oz
