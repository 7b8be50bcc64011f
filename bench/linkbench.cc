// Speed of the link: small commands answered a second, and arrays moved, over each device.
//
//   linkbench [COMMANDS [MEGABYTES]]
//
// Both sides are processes of their own. A command is a call packet with a string, answered with a string.

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
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

}  // namespace

int main(int argc, char** argv) {
  const int commands = argc > 1 ? std::atoi(argv[1]) : 50'000;
  const size_t megabytes = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 4000;
  run("TCP", commands, megabytes);
  run("SharedMemory", commands, megabytes);
  return 0;
}
