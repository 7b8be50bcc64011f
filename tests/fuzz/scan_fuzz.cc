// Fuzz target: the scanner alone. Every token must move on in the text, and the text must end.

#include <cstdlib>

#include "Positions.h"
#include "fuzz_run.h"
#include "scan.h"

namespace oz {

namespace {

void scan_all(const char* input) {
  static const bool ready = (init_oz_index(), true);
  (void)ready;
  scan_BeginScanner();
  scan_BeginFile(input);
  tPosition last = NoPosition;
  while (scan_GetToken() != 0) {
    if (scan_TokenLength == 0 || Compare(last, scan_Attribute.Position) >= 0) std::abort();
    last = scan_Attribute.Position;
  }
  if (Compare(last, scan_Attribute.Position) > 0) std::abort();
  scan_CloseScanner();
}

}  // namespace

}  // namespace oz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  oz::fuzz_run(oz::scan_all, data, size);
  return 0;
}
