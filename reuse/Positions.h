// Places in a source text.
#pragma once

#include <cstdint>
#include <cstdio>

namespace oz {

// A line and a column (of bytes), both from 1. Line 0 says that no source place is known.
struct tPosition {
  uint32_t Line;
  uint32_t Column;
};

inline constexpr tPosition NoPosition{0, 0};

// -1, 0 or 1: by line, then by column.
int Compare(tPosition Position1, tPosition Position2);

// Writes "line,column" in the form "%4d,%3d".
void WritePosition(FILE* File, tPosition Position);

}  // namespace oz
