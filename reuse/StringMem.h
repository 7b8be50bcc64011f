// A store of counted strings that is never freed.
#pragma once

#include <cstddef>
#include <cstdio>

namespace oz {

// A stored string: a 32-bit length followed by the characters, without terminator.
using tStringRef = const char*;

// Copies length characters into the store.
tStringRef PutString(const char* s, size_t length);

// Copies a stored string into buffer (length + 1 bytes) and terminates it.
void StGetString(tStringRef ref, char* buffer);

// The length of a stored string, and its first character.
size_t LengthSt(tStringRef ref);
const char* TextSt(tStringRef ref);

// Whether the stored characters equal the first characters of s, which must have at least as many.
bool IsEqualSt(tStringRef ref, const char* s);

// Writes a stored string, whatever its length.
void WriteString(FILE* f, tStringRef ref);

// Lists every stored string with its address, and the bytes used, on standard output.
void WriteStringMemory();

}  // namespace oz
