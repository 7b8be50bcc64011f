// The link commands as plain functions. Each answers "OK" or an error text, valid until the next command.
//
//   al_compile("m.oz", "", "m.err", "-u -o m.m");
//   al_open_file("C++", "m", "False");
//   al_generate_function("Hold[M`f]", 0);
//   al_close_file();
#pragma once

#include <string>

namespace oz {

// The genmode of the function being generated: nonzero leaves out the link wrappers.
extern int glob_genmode_flag;

// CompileInternal: compiles infile with the command line's options (cut at blanks, in place) and keeps the model.
// Messages go to errfile. outfile is not looked at: the output file comes from -o.
const char* al_compile(const char* infile, const char* outfile, const char* errfile, char* options);

// OpenFileInternal: opens the file set that `file` names, in the place of an open one; lang is Fortran90, HPF, C++ or
// Java in any case of letters, parallel is "true" or anything else. Messages go to "file.erf" from here on.
const char* al_open_file(const char* lang, const char* file, const char* parallel);

// CloseFileInternal: ends the open file set.
const char* al_close_file();

// GenerateVariableInternal, GenerateFunctionInternal, GenerateEvaluateFunctionInternal: heldname is "Hold[NAME]".
const char* al_generate_variable(const char* heldname);
const char* al_generate_function(const char* heldname, int genmode);
const char* al_generate_evaluate_function(const char* heldname, const char* body, int genmode);

// ---- helpers

// Whether the licence allows code generation: always.
bool checklicense();

// Cuts a text at its blanks, in place: an array of the pieces, released by efree.
char** str2opts(char* str, int* nr_of_opts);

// The name in "Hold[NAME]"; an empty text is itself, anything else is fatal.
std::string striphold(const char* s);

// What stands behind the last "/".
const char* basename(const char* path);

}  // namespace oz
