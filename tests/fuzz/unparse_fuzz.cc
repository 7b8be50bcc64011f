// Fuzz target: from the source text to the host's definitions, as a run with -u makes them. The model and the package
// that it becomes must be well-formed trees with all marks zero.

#include <cstdio>
#include <cstdlib>

#include "Asynt.h"
#include "env.h"
#include "flatten.h"
#include "fuzz_run.h"
#include "index.h"
#include "name.h"
#include "operator_name.h"
#include "ozerrors.h"
#include "ozt.h"
#include "parse.h"
#include "scan.h"
#include "unparse.h"
#include "unroll.h"

namespace oz {

namespace {

FILE* const nowhere = std::fopen("/dev/null", "w");

void check_tree(const char* pass) {
  if (AsyntMarksAreZero(model_tree) && CheckAsynt(model_tree)) return;
  std::fprintf(stderr, "the tree is broken behind %s\n", pass);
  std::abort();
}

void front_half(const char* input) {
  error_message_uses_input_file = input;
  scan_BeginScanner();
  scan_BeginFile(input);
  bigbuf_init();
  init_oz_index();
  parse();
  Closeparse();
  init_env();
  init_operator_name();
  Qualify(&model_tree);
  ozt(&model_tree);
  check_tree("ozt");
  tIndex instances = nullptr;
  unroll(&model_tree, &instances);
  flatten(&model_tree);
  check_tree("flatten");
  unparse_filep(nowhere, model_tree);
  scan_CloseScanner();
}

}  // namespace

}  // namespace oz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  oz::fuzz_run(oz::front_half, data, size);
  return 0;
}
