// What the generators are told about a body: whether the function calls itself, whether it touches the model's
// variables.

#include <cstring>

#include "efunc.h"
#include "fun.h"
#include "unparse.h"

namespace oz {

namespace {

int found_fun_call = 0;
int found_non_local = 0;

char Look_for_fun(tAsynt* t) {
  if (Asynt_Kind(*t) == kSimpleFFE && std::strcmp(unparse_string(SimpleFFE_Name(*t)), fun_name) == 0) found_fun_call++;
  return 1;
}

// Reading a variable of the model counts as well as writing it: right sides are searched like everything else.
char Look_for_non_local(tAsynt* t) {
  if (Asynt_IsType(*t, kSymbol) && find_alltypes(unparse_string(*t))) found_non_local++;
  return 1;
}

}  // namespace

char recursive_fun(tAsynt rhs) {
  found_fun_call = 0;
  WalkAsynt(&rhs, Look_for_fun);
  return found_fun_call > 0;
}

char pure_fun(tAsynt rhs) {
  found_non_local = 0;
  WalkAsynt(&rhs, Look_for_non_local);
  return found_non_local == 0;
}

}  // namespace oz
