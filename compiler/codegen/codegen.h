// The generator of the chosen language, and the files that it writes.
#pragma once

#include "efunc.h"

namespace oz {

// Set while a function with a body from outside is generated: its local declarations have no initialisers.
extern int evaluate_function_flag;

// Set up and end the typing and the generator of genlang, around all the entities of a file set. Java goes the way of
// Fortran, whose files it does not have.
void init_code();
void exit_code();

// Writes a tree under a heading on standard error.
void Dumpt(const char* text, tAsynt tree);

// ---- files

// Creates the files of a set, named by `file` and the endings of the language, and writes their first lines. Null, or
// the system's reason why one of them cannot be written; then none is open.
const char* create_file_set(Language lang, const char* file);

// Writes the last lines, brings all files to the disk and closes them. Null, or the system's reason for the first one
// that could not be written whole.
const char* close_file_set(Language lang);

}  // namespace oz
