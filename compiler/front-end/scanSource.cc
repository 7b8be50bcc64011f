// The scanner's files, over the system's descriptors.

#include "scanSource.h"

namespace oz {

tFile scan_BeginSource(const char* name) { return OpenInput(name); }

size_t scan_GetLine(tFile file, char* buffer, size_t size) {
  // What cannot be read, a directory for example, reads as empty.
  const long count = Read(file, buffer, size);
  return count < 0 ? 0 : static_cast<size_t>(count);
}

void scan_CloseSource(tFile file) { Close(file); }

}  // namespace oz
