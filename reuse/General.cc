// Integer logarithms and alignment. Both logarithms are one machine instruction.
#include "General.h"

#include <bit>

namespace oz {

namespace {
constexpr unsigned long kAll = ~0UL;
}

// Only the entries of powers of two mean something; the others clear nothing.
const unsigned long yyAlignMasks[9] = {kAll, kAll, kAll - 1, kAll, kAll - 3, kAll, kAll, kAll, kAll - 7};

short Log2(unsigned long x) { return x == 0 ? 0 : static_cast<short>(std::bit_width(x) - 1); }

unsigned long Exp2(short y) { return 1UL << y; }

}  // namespace oz
