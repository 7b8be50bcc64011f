// Measures the compiler for bench/run.
//
//   ozbench scan FILE            time of scanning a model, and the number of its tokens
//   ozbench parse FILE           time of scanning and parsing it, and the number of syntax errors
//   ozbench run OUTPUT COMMAND   time and peak memory of a command whose standard output goes to a file
//
// One line comes out: seconds, peak memory in KiB, the number. A command is started from here rather than from the
// benchmark's script, since a process starts with the peak memory of the one that forked it.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>

#include "parse.h"
#include "scan.h"

namespace {

using Clock = std::chrono::steady_clock;

void Report(Clock::time_point start, const rusage& usage, long number) {
  const std::chrono::duration<double> elapsed = Clock::now() - start;
  std::printf("%.6f %ld %ld\n", elapsed.count(), usage.ru_maxrss, number);
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
  const Clock::time_point start = Clock::now();
  oz::init_oz_index();
  oz::scan_BeginScanner();
  oz::scan_BeginFile(file);
  const long number = stage();
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  Report(start, usage, number);
  return 0;
}

int MeasureCommand(const char* output, char** command) {
  const Clock::time_point start = Clock::now();
  const pid_t child = fork();
  if (child == 0) {
    const int fd = open(output, O_WRONLY | O_CREAT | O_TRUNC, 0666);
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
  Report(start, usage, status);
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
