// Measures the compiler for bench/run.
//
//   ozbench scan FILE            scans a model; the number is that of its tokens
//   ozbench parse FILE           scans and parses it; the number is that of the syntax errors
//   ozbench run OUTPUT COMMAND   runs a command whose standard output goes to a file; the number is its status
//
// One line comes out: seconds of processor time, of all threads together; seconds by the clock; peak memory in KiB; the
// number. Processor time is left alone by what else the machine does. A command is started from here rather than from
// the benchmark's script, since a process starts with the peak memory of the one that forked it.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <string>

#include "parse.h"
#include "scan.h"

namespace {

double ProcessorSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// What has gone by since the program began to look.
double ClockSeconds() {
  using Clock = std::chrono::steady_clock;
  static const Clock::time_point start = Clock::now();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

// The peak memory of this program alone: what getrusage tells includes the process that it was forked from.
long PeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) return std::strtol(line.c_str() + 6, nullptr, 10);
  }
  return 0;
}

long Scan() {
  long tokens = 0;
  while (oz::scan_GetToken() != 0) ++tokens;
  return tokens;
}

long Parse() {
  const long errors = oz::parse();
  oz::Closeparse();
  return errors;
}

int MeasureStage(long (*stage)(), const char* file) {
  const double start = ProcessorSeconds();
  ClockSeconds();
  oz::init_oz_index();
  oz::scan_BeginScanner();
  oz::scan_BeginFile(file);
  const long number = stage();
  const double clock = ClockSeconds();
  std::printf("%.6f %.6f %ld %ld\n", ProcessorSeconds() - start, clock, PeakMemory(), number);
  return 0;
}

int MeasureCommand(const char* output, char** command) {
  ClockSeconds();
  const pid_t child = fork();
  if (child == 0) {
    const int fd = open(output, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd >= 0 && dup2(fd, STDOUT_FILENO) >= 0) execvp(command[0], command);
    std::perror(command[0]);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) {
    std::perror("ozbench");
    return 1;
  }
  const double clock = ClockSeconds();
  std::printf("%.6f %.6f %ld %d\n", Seconds(usage.ru_utime) + Seconds(usage.ru_stime), clock, usage.ru_maxrss, status);
  return status == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "scan") == 0) return MeasureStage(Scan, argv[2]);
  if (argc == 3 && std::strcmp(argv[1], "parse") == 0) return MeasureStage(Parse, argv[2]);
  if (argc > 3 && std::strcmp(argv[1], "run") == 0) return MeasureCommand(argv[2], argv + 3);
  std::fprintf(stderr, "usage: ozbench scan FILE | ozbench parse FILE | ozbench run OUTPUT COMMAND ...\n");
  return 2;
}
