/* The C routine that solve.oz declares. */
#include <math.h>

void filter_smooth(int count, double *v, int rounds, double *change) {
  *change = 0;
  for (int round = 1; round <= rounds; round++) {
    double before = 0;
    *change = 0;
    for (int i = 0; i < count; i++) {
      const double old = v[i], after = i + 1 < count ? v[i + 1] : 0;
      v[i] = old / 2 + (before + after) / 4;
      *change = fmax(*change, fabs(v[i] - old));
      before = old;
    }
  }
}
