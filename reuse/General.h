// Integer logarithms and alignment.
#pragma once

#include <cstddef>

namespace oz {

// The largest alignment that any object of the tree or of the library needs, in bytes.
inline constexpr short yyMaxAlign = 8;

// yyAlignMasks[a] clears the low bits of an address or size for alignment a (a power of two up to 8).
extern const unsigned long yyAlignMasks[9];

// The floor of the base-2 logarithm of x; 0 for x = 0.
short Log2(unsigned long x);

// 2 to the power y, 0 <= y <= 63.
unsigned long Exp2(short y);

}  // namespace oz
