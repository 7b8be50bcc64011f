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

// One compiler run on one input file. Result: 0; fatal messages and wrong options end the process.
int standalone_main(int argc, char** argv);

// Prints the banner on standard output and ends the process with status 0.
[[noreturn]] void print_usage_and_exit();

// Sets the disable flags from OZMAT_DISABLE.
void disable_features();

tConversionTag mkNonConv();
tConversionTag mkConv();

// PosConv nodes at a position.
tAsynt mkNonConvPos(tPosition position);
tAsynt mkConvPos(tPosition position);

}  // namespace oz
