// Signs of life for long runs. A short run prints nothing, and nothing is ever mixed into a file or a pipe.

#include "progress.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace oz {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kQuietSeconds = 2.0;
Clock::time_point start;
bool on_terminal = false;

}  // namespace

void BeginProgress() {
  start = Clock::now();
  on_terminal = isatty(STDERR_FILENO) == 1;
}

void ProgressPass(const char* pass) {
  if (!on_terminal) return;
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  if (seconds > kQuietSeconds) std::fprintf(stderr, "oz: %s done after %.1f s\n", pass, seconds);
}

}  // namespace oz
