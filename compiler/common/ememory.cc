// Checked allocation from the system. The message that there is no memory needs some itself: a reserve is held for it.
#include "ememory.h"

#include <cstdlib>
#include <cstring>

#include "ozerrors.h"

namespace oz {

namespace {

constexpr size_t kReserve = 65536;
void* reserve = nullptr;

void release_reserve() {
  std::free(reserve);
  reserve = nullptr;
}

}  // namespace

void* emalloc(size_t size) {
  if (!reserve) reserve = std::malloc(kReserve);
  void* p = std::malloc(size > 0 ? size : 1);
  if (!p) {
    release_reserve();
    die_msg("Out of memory. malloc failed.");
  }
  return p;
}

void* erealloc(void* ptr, size_t size) {
  void* p = std::realloc(ptr, size > 0 ? size : 1);
  if (!p) {
    release_reserve();
    warning_msg("Out of memory. realloc failed.");
  }
  return p;
}

void efree(void* ptr) { std::free(ptr); }

char* estrdup(const char* s) {
  size_t size = std::strlen(s) + 1;
  return static_cast<char*>(std::memcpy(emalloc(size), s, size));
}

}  // namespace oz
