// Features that the environment leaves out, and the flags that other passes read.

#include <cstdlib>
#include <cstring>

#include "oz.h"

namespace oz {

char disable_Format = 0;
char disable_DefineIndices = 0;
char disable_unlink_log = 0;
char verbose_flag = 0;

void disable_features() {
  // The value has no syntax: each word counts wherever it stands in it.
  const char* value = std::getenv("OZMAT_DISABLE");
  if (!value) value = "";
  disable_Format = std::strstr(value, "Format") != nullptr;
  disable_DefineIndices = std::strstr(value, "DefineIndices") != nullptr;
  disable_unlink_log = std::strstr(value, "unlink_log") != nullptr;
}

tConversionTag mkNonConv() { return nonConv; }
tConversionTag mkConv() { return yesConv; }
tAsynt mkNonConvPos(tPosition position) { return mPosConv(position, mkNonConv()); }
tAsynt mkConvPos(tPosition position) { return mPosConv(position, mkConv()); }

}  // namespace oz
