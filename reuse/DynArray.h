// Arrays that grow by doubling, on top of Memory. The element count is the caller's; it is kept in step by these calls.
#pragma once

#include <cstddef>

namespace oz {

// The distance between two elements of size ElmtSize in an array.
size_t AlignedSize(size_t ElmtSize);

// A new array of at least *ElmtCount elements; *ElmtCount is raised so that the byte total is a multiple of 4.
// Without memory: a line on standard error and *ArrayPtr null.
void MakeArray(char** ArrayPtr, size_t* ElmtCount, size_t ElmtSize);

// Doubles the array; the contents are copied and the old block is given back.
// Without memory: a line on standard error and *ArrayPtr null.
void ExtendArray(char** ArrayPtr, size_t* ElmtCount, size_t ElmtSize);

// Gives the array back; *ArrayPtr becomes null.
void ReleaseArray(char** ArrayPtr, size_t* ElmtCount, size_t ElmtSize);

}  // namespace oz
