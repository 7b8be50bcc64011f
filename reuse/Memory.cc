// A pool allocator with free lists.
//
// A small block is carved from the current pool of 10240 bytes, a pointer increment. A freed block holds the link of
// its free list in its own first bytes, and its size too when it is large:
//
//   SmallChain[24] -> block of 24 -> block of 24         one list per exact size
//   LargeChain[7]  -> block of 136 -> block of 200       one list per power of two; the best fit is taken and split
//
// Neighbouring free blocks are never merged.
#include "Memory.h"

#include <cstdint>

#include "General.h"
#include "System.h"

namespace oz {

unsigned long MemoryUsed = 0;

namespace {

struct FreeBlock {
  FreeBlock* next;
  size_t size;  // of a large block only; a small one has no room for it
};

constexpr size_t kSmallestBlock = yyMaxAlign;
constexpr size_t kLargestSmall = 62;
constexpr short kFirstClass = 6;
constexpr short kLastClass = 24;
constexpr size_t kPoolSize = 10240;
static_assert(kSmallestBlock >= sizeof(void*) && size_t{1} << kFirstClass >= sizeof(FreeBlock));

FreeBlock* SmallChain[kLargestSmall + 1];
FreeBlock* LargeChain[kLastClass + 1];
char* PoolFreePtr = nullptr;
char* PoolEndPtr = nullptr;

// The size that a request really gets; 0 when it is beyond any memory.
size_t rounded(size_t size) {
  if (size > SIZE_MAX / 2) return 0;
  if (size <= kSmallestBlock) return kSmallestBlock;
  return (size + yyMaxAlign - 1) & yyAlignMasks[yyMaxAlign];
}

// Unlinks the block that *link leads to and hands what it has beyond size back to the free lists.
char* take(FreeBlock** link, size_t size) {
  FreeBlock* b = *link;
  *link = b->next;
  size_t rest = b->size - size;
  char* a = reinterpret_cast<char*>(b);
  if (rest >= kSmallestBlock) Free(rest, a + size);
  return a;
}

// The smallest block of its own size class that is large enough, else the first block of a higher class: every block
// there is large enough.
char* from_large_chains(size_t size) {
  short c = Log2(size);
  if (c > kLastClass) return nullptr;
  FreeBlock** best = nullptr;
  for (FreeBlock** link = &LargeChain[c]; *link; link = &(*link)->next) {
    if ((*link)->size == size) return take(link, size);
    if ((*link)->size > size && (!best || (*link)->size < (*best)->size)) best = link;
  }
  if (best) return take(best, size);
  while (++c <= kLastClass)
    if (LargeChain[c]) return take(&LargeChain[c], size);
  return nullptr;
}

char* from_system(size_t size) {
  char* a = SysAlloc(size);
  if (a) MemoryUsed += size;
  return a;
}

char* from_pool(size_t size) {
  size_t room = static_cast<size_t>(PoolEndPtr - PoolFreePtr);
  if (room < size) {
    if (room > 0) Free(room, PoolFreePtr);
    PoolFreePtr = Alloc(kPoolSize);
    PoolEndPtr = PoolFreePtr ? PoolFreePtr + kPoolSize : nullptr;
    if (!PoolFreePtr) return nullptr;
  }
  char* a = PoolFreePtr;
  PoolFreePtr += size;
  return a;
}

}  // namespace

char* Alloc(size_t ByteCount) {
  size_t size = rounded(ByteCount);
  if (size == 0) return nullptr;
  if (size > kLargestSmall) {
    if (char* a = from_large_chains(size)) return a;
  } else if (FreeBlock* b = SmallChain[size]) {
    SmallChain[size] = b->next;
    return reinterpret_cast<char*>(b);
  }
  return size >= kPoolSize ? from_system(size) : from_pool(size);
}

// A block too large for the chains came from the system in one piece and goes back there.
void Free(size_t ByteCount, char* a) {
  if (!a) return;
  size_t size = rounded(ByteCount);
  FreeBlock* b = reinterpret_cast<FreeBlock*>(a);
  if (size <= kLargestSmall) {
    b->next = SmallChain[size];
    SmallChain[size] = b;
  } else if (Log2(size) <= kLastClass) {
    b->size = size;
    b->next = LargeChain[Log2(size)];
    LargeChain[Log2(size)] = b;
  } else {
    SysFree(a);
    MemoryUsed -= size;
  }
}

void InitMemory() {
  for (FreeBlock*& b : SmallChain) b = nullptr;
  for (FreeBlock*& b : LargeChain) b = nullptr;
  PoolFreePtr = PoolEndPtr = nullptr;
}

}  // namespace oz
