// Interned identifiers: equal texts get equal numbers.
#pragma once

#include <cstddef>
#include <cstdio>

#include "StringMem.h"

namespace oz {

// The number of an identifier, from 1 up.
using tIdent = int;

// The identifier of the empty text.
inline constexpr tIdent NoIdent = 1;

// The identifier of the first length characters of s; made when it is new.
tIdent MakeIdent(const char* s, size_t length);

// Copies the text of an identifier into buffer (its length + 1 bytes) and terminates it.
void GetString(tIdent i, char* buffer);

// The stored text of an identifier.
tStringRef GetStringRef(tIdent i);

// The highest identifier in use.
tIdent MaxIdent();

// Writes the text of an identifier, whatever its length.
void WriteIdent(FILE* f, tIdent i);

// Debugging lists on standard output: all identifiers; all hash buckets with their chains.
void WriteIdents();
void WriteHashTable();

}  // namespace oz
