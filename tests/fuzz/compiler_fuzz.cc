// Fuzz targets: the scanner, the full-form reader, and the way from the source text to the host's definitions. Which of
// them a program runs is told by FUZZ_BODY, the name of a function below. A broken invariant of the compiler, told as
// an internal error, is a finding: the linker directs the calls of internal_error to this file, where the process
// stops.

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Asynt.h"
#include "Errors.h"
#include "ahead.h"
#include "compelim.h"
#include "env.h"
#include "ffparse.h"
#include "ffscan.h"
#include "flatten.h"
#include "index.h"
#include "name.h"
#include "operator_name.h"
#include "ozerrors.h"
#include "ozt.h"
#include "parse.h"
#include "scan.h"
#include "unparse.h"
#include "unroll.h"

extern "C" [[noreturn]] void __wrap__ZN2oz14internal_errorEPKci(const char* file, int line) {
  std::fprintf(stderr, "internal error: %s %d\n", file, line);
  std::abort();
}

namespace oz {
namespace fuzz {

using Text = std::string;

// The trees must be well-formed, with all marks zero.
void check_tree(tAsynt tree, const char* pass) {
  if (AsyntMarksAreZero(tree) && CheckAsynt(tree)) return;
  std::fprintf(stderr, "the tree is broken behind %s\n", pass);
  std::abort();
}

// The text as a file that the scanner can open; its name.
const char* file_of(const Text& text) {
  static const int file = memfd_create("input", MFD_CLOEXEC);
  static const std::string name = "/proc/self/fd/" + std::to_string(file);
  if (ftruncate(file, 0) != 0 || pwrite(file, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
    std::abort();
  return name.c_str();
}

// Every token must move on in the text, and the text must end.
void scan(const Text& text) {
  static const bool ready = (init_oz_index(), true);
  (void)ready;
  scan_BeginScanner();
  scan_BeginFile(file_of(text));
  tPosition last = NoPosition;
  while (scan_GetToken() != 0) {
    if (scan_TokenLength == 0 || Compare(last, scan_Attribute.Position) >= 0) std::abort();
    last = scan_Attribute.Position;
  }
  if (Compare(last, scan_Attribute.Position) > 0) std::abort();
  scan_CloseScanner();
}

// Also when components become parts. Every reading meets what the one before has left.
void ffparse(const Text& text) {
  ffscan_SetString(text.c_str());
  ffscan_BeginFile("");
  tAsynt tree = oz::ffparse(1);
  check_tree(tree, "ffparse");
  Comp_elim(tree, &tree, nullptr);
  check_tree(tree, "Comp_elim");
}

// The definitions of a model, the objects printed behind the package or ahead of it.
Text definitions(const Text& text, bool is_ahead) {
  error_message_uses_input_file = file_of(text);
  scan_BeginScanner();
  scan_BeginFile(error_message_uses_input_file);
  bigbuf_init();
  init_oz_index();
  parse();
  Closeparse();
  init_env();
  init_operator_name();
  Qualify(&model_tree);
  ozt(&model_tree);
  check_tree(model_tree, "ozt");
  tIndex instances = nullptr;
  PrintAhead ahead;
  if (is_ahead)
    unroll_for_reader(&model_tree, &ahead);
  else
    unroll(&model_tree, &instances);
  const bool is_package = Asynt_Kind(model_tree) == kPackage;
  if (is_ahead && is_package) ahead.complete(model_tree);
  flatten(&model_tree);
  check_tree(model_tree, "flatten");
  char* printed = nullptr;
  size_t size = 0;
  FILE* const f = open_memstream(&printed, &size);
  if (is_ahead && is_package)
    ahead.write(f, model_tree);
  else
    unparse_filep(f, model_tree);
  std::fclose(f);
  Text result(printed, size);
  std::free(printed);
  scan_CloseScanner();
  return result;
}

// As a run with -u does it, and one that keeps the tree.
void unparse(const Text& text) {
  if (definitions(text, true) != definitions(text, false)) std::abort();
}

// Thrown in the place of ending the process.
struct FatalMessage {};

constexpr long kMemoryLimit = 1024L * 1024;  // in kilobytes

}  // namespace fuzz
}  // namespace oz

// Memory of a run is never returned, as in the compiler itself: when much has piled up the process ends with status 0,
// and the script starts it again on the corpus that has grown meanwhile.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  oz::Errors_Exit = [] { throw oz::fuzz::FatalMessage{}; };
  try {
    oz::fuzz::FUZZ_BODY(std::string(reinterpret_cast<const char*>(data), size));
  } catch (const oz::fuzz::FatalMessage&) {
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  if (usage.ru_maxrss > oz::fuzz::kMemoryLimit) _exit(0);
  return 0;
}
