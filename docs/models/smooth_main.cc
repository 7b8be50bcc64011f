#include <iostream>

#include "solve.h"
#include "solve.icc"

int main() {
  doubleN v(5), smoothed;
  v(3) = 16.0;
  double change;
  filter_smooth_c(v, 2, smoothed, change);
  std::cout << smoothed << ", at last changed by " << change << "\n";
}
