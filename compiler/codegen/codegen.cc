// Around the generators: set-up and end for the language of the open file set.
#include "codegen.h"

#include <cstdio>

#include "parel.h"
#include "pompout.h"
#include "sheepout.h"
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

void make_code(tAsynt tree) {
  Begintype();
  Beginparel();
  finit_operator_name();
  const tAsynt v = Parallelize(tree);
  Closeparel();
  Closetype();
  CheckAsynt(v);
  FunparseStmt(v);
}

void Dumpt(const char* text, tAsynt tree) {
  std::fprintf(stderr, "\n### %s ###\n", text);
  WriteAsynt(stderr, tree);
  std::putc('\n', stderr);
  std::fflush(stderr);
}

}  // namespace oz
