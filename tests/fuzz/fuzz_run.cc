// See fuzz_run.h. A broken invariant of the compiler, told as an internal error, is a finding: the linker directs the
// calls of internal_error to this file, where the process stops.

#include "fuzz_run.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Errors.h"

extern "C" [[noreturn]] void __wrap__ZN2oz14internal_errorEPKci(const char* file, int line) {
  std::fprintf(stderr, "internal error: %s %d\n", file, line);
  std::abort();
}

namespace oz {

namespace {

constexpr long kMemoryLimit = 1024L * 1024;  // in kilobytes

[[noreturn]] void throw_fatal() { throw FatalMessage{}; }

void end_when_memory_is_used_up() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  if (usage.ru_maxrss > kMemoryLimit) _exit(0);
}

}  // namespace

const char* fuzz_input(const uint8_t* data, size_t size) {
  static const int file = memfd_create("input", MFD_CLOEXEC);
  static const std::string name = "/proc/self/fd/" + std::to_string(file);
  if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
  return name.c_str();
}

void fuzz_run(void (*body)(const char* input), const uint8_t* data, size_t size) {
  Errors_Exit = throw_fatal;
  try {
    body(fuzz_input(data, size));
  } catch (const FatalMessage&) {
  }
  end_when_memory_is_used_up();
}

}  // namespace oz
