// The C++ routine that solve.oz declares. It gets the arrays of generated code as they are.
#include <algorithm>

#include "lumenmat.h"

double stat_median(const doubleN& v) {
  doubleN sorted = v;
  std::sort(sorted.data(), sorted.data() + sorted.size());
  const int n = static_cast<int>(sorted.size());
  return (sorted((n + 1) / 2) + sorted(n / 2 + 1)) / 2;
}
