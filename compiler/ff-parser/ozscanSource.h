// The source layer of the full-form scanner: one text in memory, handed out in blocks.
#pragma once

#include <cstddef>

#include "System.h"

namespace oz {

// Sets the text of the next reading. It stays the caller's and must last until ffscan_BeginFile has returned.
void ffscan_SetString(const char* s);

// Goes to the start of the text; the name is not looked at. Fatal when no text was set.
tFile ffscan_BeginSource(const char* name);

// Copies up to size bytes; 0 at the end.
size_t ffscan_GetLine(tFile file, char* buffer, size_t size);

// Forgets the text, so that every reading needs one of its own.
void ffscan_CloseSource(tFile file);

}  // namespace oz
