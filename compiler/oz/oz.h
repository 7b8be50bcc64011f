// The process: modes, options and the order of the passes.
#pragma once

#include <cstdio>

#include "Asynt.h"

namespace oz {

// Features that the environment variable OZMAT_DISABLE leaves out.
extern char disable_Format;         // no generated Format definitions
extern char disable_DefineIndices;  // no DefineIndices around instance indices
extern char disable_unlink_log;     // the compile server keeps its log file

// -V: unrolling prints a trace on standard output.
extern char verbose_flag;

// Assigned the standard error stream at the start of a run.
extern FILE* errf;

// Whether the host started the program: 1 unless "-s" is among the arguments.
int installed_by_alg(int argc, char** argv);

// One compiler run on one input file. Result: 0; fatal messages, wrong options and files that cannot be used end the
// process.
int standalone_main(int argc, char** argv);

// The same for a process that goes on: only fatal messages end it. Result: 0, or not 0 when the run was not made or a
// file could not be written whole. May be called again and again.
int compile_model(int argc, char** argv);

// Prints the banner on standard output and ends the process with status 0.
[[noreturn]] void print_usage_and_exit();

// Sends what follows on standard error to a file, which is made anew. False, with nothing changed, if it cannot be.
bool reopen_stderr(const char* file_name);

// Sets the disable flags from OZMAT_DISABLE.
void disable_features();

tConversionTag mkNonConv();
tConversionTag mkConv();

// PosConv nodes at a position.
tAsynt mkNonConvPos(tPosition position);
tAsynt mkConvPos(tPosition position);

}  // namespace oz
