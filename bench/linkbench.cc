// Speed of the link: small commands answered a second, and arrays moved, over each device.
//
//   linkbench [COMMANDS [MEGABYTES]]
//   linkbench program PROGRAM MODEL NAME [COMPILES [COMMANDS]]
//
// Both sides are processes of their own. A command is a call packet with a string, answered with a string.
//
// The second form drives the compiler, in the current folder: small commands a second over TCP, and its resident memory
// before and behind many compiles of the model and many commands that generate the function NAME from it.

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "algelink.h"

namespace {

constexpr size_t kArray = 1'000'000;  // numbers in one array

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

void fail(ALINK link, const char* what) {
  std::fprintf(stderr, "linkbench: %s: %s\n", what, link ? ALErrorMessage(link) : "no link");
  std::_Exit(1);
}

ALINK open_link(const char* device, const char* mode, const std::string& name) {
  const std::string text = std::string("-linkprotocol ") + device + " -linkmode " + mode + " -linkname " + name;
  ALINK link = ALOpenString(ALInitialize(nullptr), text.c_str(), nullptr);
  if (!link) fail(link, "open");
  return link;
}

// Answers each string with "OK" and each array with its length, until the link ends.
void serve(ALINK link) {
  while (ALWaitForLinkActivity(link) == 1) {
    int count;
    const char* text;
    double* values;
    size_t n;
    if (ALNextPacket(link) != ALCallPacket || !ALTestHead(link, "List", &count)) return;
    if (ALGetType(link) == ALStringToken) {
      if (!ALGetString(link, &text)) return;
      ALReleaseString(link, text);
      ALNewPacket(link);
      ALPutString(link, "OK");
    } else {
      if (!ALGetReal64List(link, &values, &n)) return;
      ALReleaseReal64List(link, values);
      ALNewPacket(link);
      ALPutInteger64(link, static_cast<int64_t>(n));
    }
    ALEndPacket(link);
  }
}

double time_commands(ALINK link, int n) {
  const auto start = Clock::now();
  for (int i = 0; i < n; i++) {
    const char* answer;
    ALPutFunction(link, "CallPacket", 1);
    ALPutFunction(link, "List", 1);
    ALPutString(link, "Hold[Tank`flow]");
    ALEndPacket(link);
    if (!ALFlush(link) || !ALGetString(link, &answer) || !ALNewPacket(link)) fail(link, "command");
    ALReleaseString(link, answer);
  }
  return n / seconds_since(start);
}

double time_arrays(ALINK link, size_t megabytes) {
  std::vector<double> values(kArray, 1.5);
  const size_t arrays = megabytes * 1'000'000 / (kArray * sizeof(double)) + 1;
  const auto start = Clock::now();
  for (size_t i = 0; i < arrays; i++) {
    int64_t n;
    ALPutFunction(link, "CallPacket", 1);
    ALPutFunction(link, "List", 1);
    ALPutReal64List(link, values.data(), values.size());
    ALEndPacket(link);
    if (!ALFlush(link) || !ALGetInteger64(link, &n) || !ALNewPacket(link)) fail(link, "array");
  }
  return static_cast<double>(arrays * kArray * sizeof(double)) / 1e6 / seconds_since(start);
}

void run(const char* device, int commands, size_t megabytes) {
  ALINK listener = open_link(device, "listen", std::string(device) == "TCP" ? "0" : "linkbench");
  const std::string name = ALName(listener);
  const pid_t child = fork();
  if (child == 0) {
    ALINK link = open_link(device, "connect", name);
    if (!ALConnect(link)) fail(link, "connect");
    serve(link);
    ALClose(link);
    std::_Exit(0);
  }
  if (!ALConnect(listener)) fail(listener, "connect");
  time_commands(listener, commands / 10);
  const double per_second = time_commands(listener, commands);
  const double speed = time_arrays(listener, megabytes);
  std::printf("%-14s %12.0f commands/s %10.0f MB/s of reals\n", device, per_second, speed);
  ALClose(listener);
  waitpid(child, nullptr, 0);
}

// ---- the compiler

constexpr int kCompile = 3, kOpen = 4, kClose = 5, kFunction = 7;
constexpr int kWarmUp = 50;            // calls until the allocator has what it takes
constexpr int kFunctionsASet = 1'000;  // so that the files stay small

// Passes over the definitions; the symbol End is the last of them.
void read_definitions(ALINK link) {
  for (;;) {
    const char* text;
    int n;
    switch (ALGetType(link)) {
      case ALFunctionToken: ALGetFunction(link, &text, &n); break;
      case ALIntegerToken: ALGetInteger(link, &n); break;
      case ALStringToken: ALGetString(link, &text); break;
      case ALSymbolToken:
        if (ALGetSymbol(link, &text) && std::strcmp(text, "End") == 0) return;
        break;
      default: fail(link, "definitions");
    }
  }
}

ALINK start_program(const char* program, pid_t* child) {
  ALINK link = open_link("TCP", "listen", "0");
  const std::string name = ALName(link);
  *child = fork();
  if (*child == 0) {
    execlp(program, program, "-linkmode", "connect", "-linkprotocol", "TCP", "-linkname", name.c_str(), nullptr);
    std::perror(program);
    std::_Exit(127);
  }
  if (!ALConnect(link)) fail(link, "connect");
  read_definitions(link);
  return link;
}

struct Argument {
  const char* text;
  int token = ALStringToken;
  int number = 0;
};

void call(ALINK link, int command, const std::vector<Argument>& arguments, const char* wanted) {
  ALPutFunction(link, "CallPacket", 2);
  ALPutInteger(link, command);
  ALPutFunction(link, "List", static_cast<int>(arguments.size()));
  for (const Argument& a : arguments) {
    if (a.token == ALIntegerToken)
      ALPutInteger(link, a.number);
    else if (a.token == ALSymbolToken)
      ALPutSymbol(link, a.text);
    else
      ALPutString(link, a.text);
  }
  ALEndPacket(link);
  const char* answer;
  if (!ALFlush(link) || !ALGetString(link, &answer) || !ALNewPacket(link)) fail(link, "call");
  if (std::strcmp(answer, wanted) != 0) {
    std::fprintf(stderr, "linkbench: command %d answered %s\n", command, answer);
    std::_Exit(1);
  }
  ALReleaseString(link, answer);
}

long resident_kib(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);)
    if (line.rfind("VmRSS:", 0) == 0) return std::strtol(line.c_str() + 6, nullptr, 10);
  return 0;
}

void compile(ALINK link, const char* model, int n) {
  for (int i = 0; i < n; i++) call(link, kCompile, {{model}, {""}, {"messages"}, {""}}, "OK");
}

void generate(ALINK link, const std::string& name, int n) {
  for (int i = 0; i < n; i++) {
    if (i % kFunctionsASet == 0) call(link, kOpen, {{"C++"}, {"generated"}, {"False", ALSymbolToken}}, "OK");
    call(link, kFunction, {{name.c_str()}, {"", ALIntegerToken, 1}}, "OK");
  }
  call(link, kClose, {}, "OK");
}

double close_nothing(ALINK link, int n) {
  const auto start = Clock::now();
  for (int i = 0; i < n; i++) call(link, kClose, {}, "No file open, no file closed.");
  return n / seconds_since(start);
}

void run_program(const char* program, const char* model, const std::string& name, int compiles, int commands) {
  pid_t child;
  ALINK link = start_program(program, &child);
  compile(link, model, kWarmUp);
  generate(link, name, 2 * kFunctionsASet);
  compile(link, model, kWarmUp);
  close_nothing(link, commands / 10);
  const double per_second = close_nothing(link, commands);
  const long before = resident_kib(child);
  auto start = Clock::now();
  compile(link, model, compiles);
  const double compiled = compiles / seconds_since(start);
  start = Clock::now();
  generate(link, name, commands);
  const double generated = commands / seconds_since(start);
  std::printf("%-14s %12.0f commands/s %10.0f compiles/s %10.0f functions/s %10ld KiB before %10ld KiB behind\n",
              "compiler", per_second, compiled, generated, before, resident_kib(child));
  ALClose(link);
  waitpid(child, nullptr, 0);
}

int number_at(int argc, char** argv, int i, int otherwise) { return argc > i ? std::atoi(argv[i]) : otherwise; }

}  // namespace

int main(int argc, char** argv) {
  if (argc > 4 && std::strcmp(argv[1], "program") == 0) {
    run_program(argv[2], argv[3], std::string("Hold[") + argv[4] + "]", number_at(argc, argv, 5, 1'000),
                number_at(argc, argv, 6, 100'000));
    return 0;
  }
  const int commands = argc > 1 ? std::atoi(argv[1]) : 50'000;
  const size_t megabytes = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 4000;
  run("TCP", commands, megabytes);
  run("SharedMemory", commands, megabytes);
  return 0;
}
