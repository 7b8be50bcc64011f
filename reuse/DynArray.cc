// Arrays that grow by doubling. The caller keeps the pointer and the count: `MakeArray(&p, &n, sizeof(T))`.
#include "DynArray.h"

#include <cstdio>
#include <cstring>

#include "General.h"
#include "Memory.h"

namespace oz {

namespace {
// Count times stride bytes, or null with a line on standard error, also when the product is beyond any memory.
char* array_block(const char* who, size_t count, size_t stride) {
  size_t bytes;
  char* a = __builtin_mul_overflow(count, stride, &bytes) ? nullptr : Alloc(bytes);
  if (!a) std::fprintf(stderr, "%s: out of memory\n", who);
  return a;
}
}  // namespace

// An element smaller than yyMaxAlign is aligned to the smallest power of two that holds it.
size_t AlignedSize(size_t ElmtSize) {
  size_t align = yyMaxAlign;
  if (ElmtSize < align) align = ElmtSize <= 1 ? 1 : Exp2(Log2(2 * ElmtSize - 2));
  return (ElmtSize + align - 1) & yyAlignMasks[align];
}

void MakeArray(char** ArrayPtr, size_t* ElmtCount, size_t ElmtSize) {
  size_t stride = AlignedSize(ElmtSize);
  if (stride % 4 == 2) *ElmtCount += *ElmtCount & 1;
  if (stride & 1) *ElmtCount = (*ElmtCount + 3) & ~size_t{3};
  *ArrayPtr = array_block("MakeArray", *ElmtCount, stride);
}

void ExtendArray(char** ArrayPtr, size_t* ElmtCount, size_t ElmtSize) {
  size_t stride = AlignedSize(ElmtSize);
  char* old = *ArrayPtr;
  *ArrayPtr = *ElmtCount > *ElmtCount * 2 ? nullptr : array_block("ExtendArray", *ElmtCount * 2, stride);
  if (*ArrayPtr) std::memcpy(*ArrayPtr, old, *ElmtCount * stride);
  Free(*ElmtCount * stride, old);
  *ElmtCount *= 2;
}

void ReleaseArray(char** ArrayPtr, size_t* ElmtCount, size_t ElmtSize) {
  Free(*ElmtCount * AlignedSize(ElmtSize), *ArrayPtr);
  *ArrayPtr = nullptr;
}

}  // namespace oz
