// A cursor over the text that the host sent.

#include "ozscanSource.h"

#include <algorithm>
#include <cstring>

#include "ozerrors.h"

namespace oz {

namespace {

const char* source = nullptr;  // the text of the next reading, or null
size_t length = 0;
size_t cursor = 0;

}  // namespace

void ffscan_SetString(const char* s) { source = s; }

tFile ffscan_BeginSource(const char*) {
  if (!source) die_msg("Source string not initialized");
  cursor = 0;
  length = std::strlen(source);
  return 0;
}

size_t ffscan_GetLine(tFile, char* buffer, size_t size) {
  const size_t count = source ? std::min(size, length - cursor) : 0;
  if (count > 0) std::memcpy(buffer, source + cursor, count);
  cursor += count;
  return count;
}

void ffscan_CloseSource(tFile) {
  source = nullptr;
  length = cursor = 0;
}

}  // namespace oz
