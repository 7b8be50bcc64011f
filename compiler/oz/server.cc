// See server.h. The caller of "oz -s -d" waits for the parent, and may read the output file as soon as that has ended:
//
//   parent:  fork, stop ........................ go on, end with status 0
//   child:   log, port, connection text, SIGCONT   serve the link, end
//
// The parent stops itself so that nobody sees it end early; the child continues it, again and again, since a signal may
// come before the stop. A pipe, which the parent closes when it goes on, ends the repetition.

#include "server.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Errors.h"
#include "alink.h"
#include "oz.h"
#include "ozerrors.h"

namespace oz {

namespace {

constexpr size_t kLongestName = 1000;
constexpr int kFirstPort = 1742;
constexpr int kLastPort = 65535;

// The parent that waits to be continued, and the pipe that it closes then.
struct WaitingParent {
  pid_t pid = 0;
  int pipe = -1;
};
WaitingParent waiting_parent;

[[noreturn]] void end_with_failure() { std::exit(1); }

// Continues the parent until it has gone on. It may not be our parent any more: then its process id is another's.
void continue_parent() {
  pollfd end = {waiting_parent.pipe, POLLIN, 0};
  while (getppid() == waiting_parent.pid && kill(waiting_parent.pid, SIGCONT) == 0)
    if (poll(&end, 1, 1000) > 0) break;
}

// The way out of fatal messages while the parent waits.
[[noreturn]] void continue_parent_and_end() {
  continue_parent();
  std::exit(1);
}

int wait_as_parent(const int ends[2]) {
  close(ends[0]);
  raise(SIGSTOP);
  close(ends[1]);
  return 0;
}

// What belongs to the parent: its links have been closed by the fork, and fatal messages are not for its host.
void leave_parent(pid_t parent, const int ends[2]) {
  close(ends[1]);
  waiting_parent = {parent, ends[0]};
  Errors_Exit = continue_parent_and_end;
  stdlink = nullptr;
  ALAbort = 0;
  ALDone = 0;
}

void point_at(int descriptor, int from) {
  if (from >= 0) dup2(from, descriptor);
}

// Standard input reads nothing, standard output and error go to a new log file; its name.
std::string open_log() {
  std::string name = "/tmp/oz.log.XXXXXX";
  const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
  const int log = mkostemp(name.data(), O_CLOEXEC);
  point_at(STDIN_FILENO, nowhere);
  point_at(STDOUT_FILENO, log >= 0 ? log : nowhere);
  point_at(STDERR_FILENO, STDOUT_FILENO);
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  if (nowhere > STDERR_FILENO) close(nowhere);
  if (log > STDERR_FILENO) close(log);
  errf = stderr;
  return log >= 0 ? name : "";
}

std::string node_name() {
  utsname names;
  return uname(&names) == 0 ? names.nodename : "localhost";
}

void check_written(int result, int line) {
  if (result < 0) die_msg("Internal error in line %d of %s", line, __FILE__);
}

// What makes the host drop an earlier connection and connect to this server.
void write_connection(FILE* f, int port, const std::string& log) {
  check_written(std::fputs("\nOff[General::spell]\nOff[LinkObject::linkx]\n"
                           "If[ToString[Definition[CodeGeneration`Private`Link]]=!=\"Null\", "
                           "Uninstall[CodeGeneration`Private`Link]];\n"
                           "On[LinkObject::linkx]\nOn[General::spell]\n",
                           f),
                __LINE__);
  check_written(std::fprintf(f,
                             "CodeGeneration`Private`Link = Install[\"%d\", LinkMode->Connect, "
                             "LinkProtocol->\"TCP\", ",
                             port),
                __LINE__);
  check_written(
      std::fprintf(f, "LinkHost->\"%s\"]\n$Epilog:=Uninstall[CodeGeneration`Private`Link]\n", node_name().c_str()),
      __LINE__);
  check_written(std::fprintf(f, "CodeGeneration`Private`Logfile = \"%s\"\n", log.c_str()), __LINE__);
}

[[noreturn]] void serve(const char* ofn) {
  setsid();
  const std::string log = open_log();
  FILE* const f = std::fopen(ofn, "ae");
  if (!f) {
    std::perror("could not append communication commands to oz's output");
    continue_parent_and_end();
  }
  ALEnvironment ep;
  ALMessageHandlerObject handler;
  ALPreOpen(&ep, &handler);
  int port = kFirstPort;
  const ALINK mlp = open_algelink("", &port);
  if (!mlp) die_msg("Could not open algelink!");
  write_connection(f, port, log);
  check_written(std::fclose(f), __LINE__);
  continue_parent();
  close(waiting_parent.pipe);
  Errors_Exit = end_with_failure;
  ALPostOpen(ep, handler, mlp);
  if (!disable_unlink_log && !log.empty()) unlink(log.c_str());
  std::exit(0);
}

}  // namespace

int do_fork(const char* ofn) {
  if (std::strlen(ofn) > kLongestName) die_msg("Internal error in line %d of %s", __LINE__, __FILE__);
  std::fflush(nullptr);  // what waits in a buffer would be written by both processes
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) die_msg("%s", std::strerror(errno));
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) die_msg("%s", std::strerror(errno));
  if (child > 0) return wait_as_parent(ends);
  leave_parent(parent, ends);
  serve(ofn);
}

ALINK open_algelink(const char*, int* base_port_nr) {
  for (; *base_port_nr <= kLastPort; ++*base_port_nr) {
    const std::string port = std::to_string(*base_port_nr);
    const char* const arguments[] = {"-linkmode", "listen", "-linkname", port.c_str(), "-linkprotocol", "TCP"};
    int error = ALErrorNone;
    const ALINK mlp = ALOpen(6, arguments, &error);
    if (mlp || error != ALErrorNameInUse) return mlp;
    sleep(1);
  }
  return nullptr;
}

void ALPreOpen(ALEnvironment* ep, ALMessageHandlerObject* handler) {
  *ep = ALInitialize(nullptr);
  if (!*ep) die_msg("ALPreOpen failure");
  *handler = ALCreateMessageHandler(*ep, ALDefaultHandler, nullptr);
}

void ALPostOpen(ALEnvironment ep, ALMessageHandlerObject handler, ALINK mlp) {
  ALSetMessageHandler(mlp, handler);
  if (ALInstall(mlp)) ServeLink(mlp);
  ALClose(mlp);
  stdlink = nullptr;
  ALDeinitialize(ep);
}

void abort_trap() {
  if (stdlink) {
    ALPutString(stdlink, "FatalError");
    ALFlush(stdlink);
    ALFlush(stdlink);
    ALEndPacket(stdlink);
    ALFlush(stdlink);
    ALClose(stdlink);
    stdlink = nullptr;
  }
  ALAbort = 1;
  ALDone = 1;
}

void last_exit_proc() {
  abort_trap();
  std::exit(1);
}

}  // namespace oz
