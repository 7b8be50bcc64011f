// Checked allocation from the system.
#pragma once

#include <cstddef>

namespace oz {

// size bytes; fatal when there are none. Released by efree.
void* emalloc(size_t size);

// As realloc; without memory it warns and returns null, and the old block stays.
void* erealloc(void* ptr, size_t size);

void efree(void* ptr);

// A copy of a text from emalloc.
char* estrdup(const char* s);

}  // namespace oz
