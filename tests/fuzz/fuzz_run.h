// What the fuzz targets share: an input as a file that the scanner can open, and a way out of fatal messages that does
// not end the process.
#pragma once

#include <cstddef>
#include <cstdint>

namespace oz {

// Thrown in the place of ending the process.
struct FatalMessage {};

// Makes the bytes the content of the fuzz target's input file; its name.
const char* fuzz_input(const uint8_t* data, size_t size);

// Runs what a fatal message may end. Memory of a run is never returned, as in the compiler itself: when much has piled
// up the process ends with status 0, and the script starts it again on the corpus that has grown meanwhile.
void fuzz_run(void (*body)(const char* input), const uint8_t* data, size_t size);

}  // namespace oz
