// Around the generators: set-up and end for the language of the open file set.
#include "codegen.h"

#include <cstdio>

#include "pompout.h"
#include "sheepunp.h"
#include "type.h"

namespace oz {

int evaluate_function_flag = 0;

void init_code() {
  Begintype();
  if (genlang == cplusplus)
    cpinit();
  else
    finit();
}

// Without a set there is nothing to end.
void exit_code() {
  Closetype();
  if (genlang == cplusplus)
    cpexit();
  else if (genlang != none)
    fexit();
}

void Dumpt(const char* text, tAsynt tree) {
  std::fprintf(stderr, "\n### %s ###\n", text);
  WriteAsynt(stderr, tree);
  std::putc('\n', stderr);
  std::fflush(stderr);
}

}  // namespace oz
