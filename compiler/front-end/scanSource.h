// The source layer of the scanner: files as blocks of bytes.
#pragma once

#include <cstddef>

#include "System.h"

namespace oz {

// Opens a file for the scanner; negative if it cannot be opened.
tFile scan_BeginSource(const char* name);

// Reads up to size bytes; 0 at the end.
size_t scan_GetLine(tFile file, char* buffer, size_t size);

void scan_CloseSource(tFile file);

}  // namespace oz
