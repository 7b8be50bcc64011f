// Fuzz target: the full-form reader. Whatever the text, the tree must be well-formed with all marks zero, and stay so
// when components become parts. Every reading meets what the one before has left.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Asynt.h"
#include "compelim.h"
#include "ffparse.h"
#include "ffscan.h"
#include "fuzz_run.h"

namespace oz {

namespace {

std::string text_of(const char* input) {
  std::string text;
  FILE* f = std::fopen(input, "rb");
  for (int c; (c = std::fgetc(f)) != EOF;) text += static_cast<char>(c);
  std::fclose(f);
  return text;
}

void check_tree(tAsynt tree, const char* pass) {
  if (AsyntMarksAreZero(tree) && CheckAsynt(tree)) return;
  std::fprintf(stderr, "the tree is broken behind %s\n", pass);
  std::abort();
}

void read_text(const char* input) {
  const std::string text = text_of(input);
  ffscan_SetString(text.c_str());
  ffscan_BeginFile("");
  tAsynt tree = ffparse(1);
  check_tree(tree, "ffparse");
  Comp_elim(tree, &tree, nullptr);
  check_tree(tree, "Comp_elim");
}

}  // namespace

}  // namespace oz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  oz::fuzz_run(oz::read_text, data, size);
  return 0;
}
