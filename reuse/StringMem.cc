// A store of counted strings that is never freed. Blocks are chained, the newest first; within a block the strings
// follow each other, each padded so that the next length is aligned:
//
//   header | 5 "hello" . . . | 2 "ab" . . | ...
#include "StringMem.h"

#include <cstdint>
#include <cstring>

#include "General.h"
#include "Memory.h"
#include "System.h"

namespace oz {

namespace {

using Length = uint32_t;

struct BlockHeader {
  BlockHeader* next;
  char* end;  // behind the last string; stored when the block is full
};

constexpr size_t kBlockSize = 20480;

BlockHeader* BlockList = nullptr;
size_t MemorySpaceLeft = 0;
char* MemoryFreePtr = nullptr;

size_t space_of(size_t length) { return (sizeof(Length) + length + alignof(Length) - 1) & ~(alignof(Length) - 1); }

[[noreturn]] void no_room(const char* why) {
  std::fprintf(stderr, "PutString: %s\n", why);
  Exit(1);
}

// Closes the current block, its unused end going to the free lists, and opens one with at least need bytes.
void next_block(size_t need) {
  if (BlockList) {
    BlockList->end = MemoryFreePtr;
    size_t skipped = -reinterpret_cast<uintptr_t>(MemoryFreePtr) & (yyMaxAlign - 1);
    if (MemorySpaceLeft >= skipped + yyMaxAlign)
      Free((MemorySpaceLeft - skipped) & yyAlignMasks[yyMaxAlign], MemoryFreePtr + skipped);
  }
  MemorySpaceLeft = need > kBlockSize ? need : kBlockSize;
  char* block = Alloc(sizeof(BlockHeader) + MemorySpaceLeft);
  if (!block) no_room("out of memory");
  BlockHeader* header = reinterpret_cast<BlockHeader*>(block);
  header->next = BlockList;
  BlockList = header;
  MemoryFreePtr = block + sizeof(BlockHeader);
}

}  // namespace

tStringRef PutString(const char* s, size_t length) {
  if (length > UINT32_MAX) no_room("text of more than 4 GB");
  size_t need = space_of(length);
  if (MemorySpaceLeft < need) next_block(need);
  char* ref = MemoryFreePtr;
  Length stored = static_cast<Length>(length);
  std::memcpy(ref, &stored, sizeof stored);
  if (length > 0) std::memcpy(ref + sizeof stored, s, length);
  MemoryFreePtr += need;
  MemorySpaceLeft -= need;
  return ref;
}

size_t LengthSt(tStringRef ref) {
  Length length;
  std::memcpy(&length, ref, sizeof length);
  return length;
}

const char* TextSt(tStringRef ref) { return ref + sizeof(Length); }

void StGetString(tStringRef ref, char* buffer) {
  size_t length = LengthSt(ref);
  std::memcpy(buffer, TextSt(ref), length);
  buffer[length] = '\0';
}

bool IsEqualSt(tStringRef ref, const char* s) { return std::memcmp(TextSt(ref), s, LengthSt(ref)) == 0; }

void WriteString(FILE* f, tStringRef ref) { std::fwrite(TextSt(ref), 1, LengthSt(ref), f); }

void WriteStringMemory() {
  long bytes = 0;
  for (const BlockHeader* b = BlockList; b; b = b->next) {
    const char* end = b == BlockList ? MemoryFreePtr : b->end;
    for (const char* s = reinterpret_cast<const char*>(b + 1); s < end; s += space_of(LengthSt(s))) {
      std::printf("%8lx ", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(s)));
      WriteString(stdout, s);
      std::putchar('\n');
      bytes += static_cast<long>(space_of(LengthSt(s)));
    }
  }
  std::printf("\n%5ld Bytes\n", bytes);
}

}  // namespace oz
