// A pool allocator with free lists, for many small blocks that live long.
// Blocks carry no header, so Free must be told the size again.
#pragma once

#include <cstddef>

namespace oz {

// Bytes obtained from the system and not given back to it.
extern unsigned long MemoryUsed;

// A block of at least ByteCount bytes, aligned to yyMaxAlign. Null only when the system has no memory.
char* Alloc(size_t ByteCount);

// Give back a block that Alloc returned for the same ByteCount; null is passed over.
void Free(size_t ByteCount, char* a);

// Forget all free blocks and the current pool (nothing is returned to the system).
void InitMemory();

}  // namespace oz
