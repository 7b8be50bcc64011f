// What the example programs share: printing a result and holding it against a value that was found another way.
#pragma once

#include <cmath>
#include <cstdio>

inline int wrong_results = 0;

// Prints the value; a relative difference above 1e-12 is reported.
inline void check(const char* what, double value, double expected) {
  const bool good = std::fabs(value - expected) <= 1e-12 * std::fmax(std::fabs(expected), 1e-300);
  std::printf("%-44s %.12g", what, value);
  if (!good) std::printf("   WRONG: %.17g is expected", expected);
  std::printf("\n");
  wrong_results += !good;
}

// The exit status of a program.
inline int checked() { return wrong_results == 0 ? 0 : 1; }
