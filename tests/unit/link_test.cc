// The link library: one suite over the three devices, and what only sockets can meet.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "algelink.h"
#include "session.h"
#include "tokenio.h"

namespace {

using algelink::append_frame;

// The user's folder for sockets and keys, for the time of the tests.
class Folder : public testing::Environment {
 public:
  void SetUp() override {
    char path[] = "/tmp/ozlinktest.XXXXXX";
    path_ = mkdtemp(path);
    setenv("XDG_RUNTIME_DIR", path_.c_str(), 1);
  }
  void TearDown() override { std::filesystem::remove_all(path_); }

 private:
  std::string path_;
};

[[maybe_unused]] const auto* const folder = testing::AddGlobalTestEnvironment(new Folder);

std::string arguments(const std::string& device, const std::string& mode, const std::string& name) {
  return "-linkprotocol " + device + " -linkmode " + mode + " -linkname " + name;
}

ALINK open(ALEnvironment env, const std::string& device, const std::string& mode, const std::string& name,
           int* error = nullptr) {
  return ALOpenString(env, arguments(device, mode, name).c_str(), error);
}

// Two connected links of one process.
struct Pair {
  ALEnvironment env = ALInitialize(nullptr);
  ALINK a = nullptr;
  ALINK b = nullptr;

  explicit Pair(const std::string& device) {
    a = open(env, device, "listen", device == "TCP" ? "0" : "test");
    EXPECT_NE(a, nullptr);
    b = open(env, device, "connect", ALName(a));
    std::thread listener([this] { EXPECT_EQ(ALConnect(a), 1); });
    EXPECT_EQ(ALConnect(b), 1);
    listener.join();
  }
  ~Pair() { ALEnd(env); }
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;
};

class LinkTest : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Devices, LinkTest, testing::Values("TCP", "SharedMemory", "IntraProcess"),
                         [](const auto& i) { return std::string(i.param); });

std::string get_string(ALINK link) {
  const char* text = nullptr;
  if (!ALGetString(link, &text)) return "error " + std::to_string(ALError(link));
  std::string copy = text;
  ALReleaseString(link, text);
  return copy;
}

TEST_P(LinkTest, EveryTokenArrivesInBothDirections) {
  Pair p(GetParam());
  for (const auto& [from, to] : {std::pair(p.a, p.b), std::pair(p.b, p.a)}) {
    ASSERT_TRUE(ALPutFunction(from, "List", 8) && ALPutInteger64(from, INT64_MIN) && ALPutReal(from, -0.0) &&
                ALPutSymbol(from, "a`b$1") && ALPutString(from, "") &&
                ALPutBigInteger(from, "-123456789012345678901") &&
                ALPutByteString(from, reinterpret_cast<const unsigned char*>("x\0y"), 3));
    // f[1][2], and a string in pieces
    ASSERT_TRUE(ALPutArgCount(from, 1) && ALPutFunction(from, "f", 1) && ALPutInteger(from, 1) &&
                ALPutInteger(from, 2));
    ASSERT_TRUE(ALPutNext(from, ALStringToken));
    ASSERT_TRUE(ALPut8BitCharacters(from, 3, reinterpret_cast<const unsigned char*>("ab"), 2));
    ASSERT_TRUE(ALPut8BitCharacters(from, 0, reinterpret_cast<const unsigned char*>("cde"), 3));
    ASSERT_TRUE(ALEndPacket(from) && ALFlush(from));

    int n, one, two;
    int64_t wide;
    double real;
    const char *symbol, *digits;
    const unsigned char* bytes;
    size_t size;
    ASSERT_TRUE(ALTestHead(to, "List", &n));
    EXPECT_EQ(n, 8);
    ASSERT_TRUE(ALGetInteger64(to, &wide) && ALGetReal(to, &real) && ALGetSymbol(to, &symbol));
    EXPECT_EQ(wide, INT64_MIN);
    EXPECT_TRUE(std::signbit(real) && real == 0);
    EXPECT_STREQ(symbol, "a`b$1");
    EXPECT_EQ(get_string(to), "");
    ASSERT_TRUE(ALGetBigInteger(to, &digits) && ALGetByteString(to, &bytes, &size));
    EXPECT_STREQ(digits, "-123456789012345678901");
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes), size), std::string("x\0y", 3));
    ASSERT_TRUE(ALGetArgCount(to, &n) && ALTestHead(to, "f", &n) && ALGetInteger(to, &one) && ALGetInteger(to, &two));
    EXPECT_EQ(std::pair(one, two), std::pair(1, 2));
    EXPECT_EQ(get_string(to), "abcde");
    EXPECT_EQ(ALGetType(to), ALEndPacketToken);
    EXPECT_TRUE(ALNewPacket(to) && ALNewPacket(to));
  }
}

TEST_P(LinkTest, AFailedGetLeavesTheToken) {
  Pair p(GetParam());
  ALPutFunction(p.a, "f", 4);
  ALPutInteger64(p.a, int64_t{1} << 31);
  ALPutByteString(p.a, reinterpret_cast<const unsigned char*>("\0"), 1);
  ALPutSymbol(p.a, "s");
  ALPutReal(p.a, 1.5);
  ALEndPacket(p.a);
  ALFlush(p.a);
  int n;
  const char* text;
  // Each row: an operation that fails, its error. Until the error is cleared nothing else works.
  const auto fails = [&p](int result, int error) {
    EXPECT_EQ(result, 0);
    EXPECT_EQ(ALError(p.b), error);
    int any;
    EXPECT_EQ(ALTestHead(p.b, "f", &any) + ALPutInteger(p.b, 1) + ALFlush(p.b), 0);
    EXPECT_EQ(ALClearError(p.b), 1);
  };
  fails(ALTestHead(p.b, "g", &n), ALErrorType);
  fails(ALNextPacket(p.b), ALErrorNoPacket);
  ASSERT_TRUE(ALTestHead(p.b, "f", &n));
  fails(ALGetInteger(p.b, &n), ALErrorRange);
  fails(ALNextPacket(p.b), ALErrorSequence);
  int64_t wide;
  ASSERT_TRUE(ALGetInteger64(p.b, &wide));
  fails(ALGetString(p.b, &text), ALErrorNullByte);
  const unsigned char* bytes;
  size_t size;
  ASSERT_TRUE(ALGetByteString(p.b, &bytes, &size));
  fails(ALGetString(p.b, &text), ALErrorType);
  fails(ALGetReal64List(p.b, nullptr, nullptr), ALErrorType);
  ASSERT_TRUE(ALGetSymbol(p.b, &text));
  double real;
  ASSERT_TRUE(ALGetReal(p.b, &real));
  fails(ALGetReal(p.b, &real), ALErrorSequence);
  fails(ALEndPacket(p.b), ALErrorSequence);
  EXPECT_TRUE(ALNewPacket(p.b));
}

TEST_P(LinkTest, PutsThatDoNotFitAreRefused) {
  Pair p(GetParam());
  const auto refused = [&p](int result, int error) {
    EXPECT_EQ(result, 0);
    EXPECT_EQ(ALError(p.a), error);
    ALClearError(p.a);
  };
  refused(ALEndPacket(p.a), ALErrorSequence);
  refused(ALPutSymbol(p.a, ""), ALErrorRange);
  refused(ALPutSymbol(p.a, "a b"), ALErrorRange);
  refused(ALPutSymbol(p.a, std::string(1024, 'a').c_str()), ALErrorRange);
  refused(ALPutBigInteger(p.a, "-"), ALErrorRange);
  refused(ALPutFunction(p.a, "f", -1), ALErrorRange);
  refused(ALPutFunction(p.a, "f", (1 << 20) + 1), ALErrorRange);
  ALPutFunction(p.a, "f", 1);
  refused(ALEndPacket(p.a), ALErrorSequence);
  refused(ALPut8BitCharacters(p.a, 0, nullptr, 0), ALErrorSequence);
  ALPutNext(p.a, ALStringToken);
  refused(ALPutInteger(p.a, 1), ALErrorSequence);
  ALPut8BitCharacters(p.a, 2, reinterpret_cast<const unsigned char*>("a"), 1);
  refused(ALPut8BitCharacters(p.a, 2, reinterpret_cast<const unsigned char*>("b"), 1), ALErrorSequence);
}

TEST_P(LinkTest, PacketsAreToldApartAndSkipped) {
  Pair p(GetParam());
  const std::pair<const char*, int> packets[] = {
      {"ReturnPacket", 3}, {"CallPacket", 7}, {"SuspendPacket", 17}, {"ResumePacket", 18}, {"EvaluatePacket", 64}};
  for (const auto& [head, code] : packets) {
    ALPutFunction(p.a, head, 1);
    ALPutInteger(p.a, 1);
    ALEndPacket(p.a);
  }
  // Nesting costs nothing: no state depends on its depth.
  constexpr int kDeep = 200'000;
  std::thread writer([&p] {
    for (int i = 0; i < kDeep; i++) ALPutFunction(p.a, "f", 1);
    ALPutInteger(p.a, 1);
    ALEndPacket(p.a);
    ALPutFunction(p.a, "ReturnPacket", 0);
    ALEndPacket(p.a);
    ALFlush(p.a);
  });
  for (const auto& [head, code] : packets) {
    EXPECT_EQ(ALNextPacket(p.b), code);
    EXPECT_TRUE(ALNewPacket(p.b));
  }
  EXPECT_EQ(ALGetType(p.b), ALFunctionToken);
  int n;
  EXPECT_TRUE(ALTestHead(p.b, "f", &n));
  EXPECT_TRUE(ALNewPacket(p.b));
  EXPECT_EQ(ALNextPacket(p.b), ALReturnPacket);
  writer.join();
}

TEST_P(LinkTest, LargeDataAndEchoes) {
  Pair p(GetParam());
  std::string text(size_t{64} << 20, 'x');
  for (size_t i = 0; i < text.size(); i += 997) text[i] = static_cast<char>('a' + i % 26);
  std::vector<double> numbers(300'000);
  for (size_t i = 0; i < numbers.size(); i++) numbers[i] = static_cast<double>(i) / 3;
  std::thread echo([&p] {
    for (int i = 0; i < 2; i++) {
      EXPECT_TRUE(ALTransferExpression(p.b, p.b));
      EXPECT_TRUE(ALEndPacket(p.b) && ALNewPacket(p.b));
    }
    EXPECT_TRUE(ALFlush(p.b));
  });
  const char* back = nullptr;
  double* values = nullptr;
  size_t n = 0;
  EXPECT_TRUE(ALPutString(p.a, text.c_str()) && ALEndPacket(p.a));
  EXPECT_TRUE(ALGetString(p.a, &back));
  EXPECT_TRUE(back && text == back);
  ALReleaseString(p.a, back);
  EXPECT_TRUE(ALNewPacket(p.a));
  EXPECT_TRUE(ALPutReal64List(p.a, numbers.data(), numbers.size()) && ALEndPacket(p.a));
  ASSERT_TRUE(ALGetReal64List(p.a, &values, &n));
  EXPECT_EQ(std::vector<double>(values, values + n), numbers);
  echo.join();
}

std::atomic<int> delivered;
void count_message(ALINK, int message, int argument) { delivered = delivered * 100 + message * 10 + argument; }

TEST_P(LinkTest, MessagesOvertakeDataAndTerminateEndsAWait) {
  Pair p(GetParam());
  delivered = 0;
  ALSetMessageHandler(p.b, ALCreateMessageHandler(p.env, count_message, nullptr));
  // More than the credit, which the other side does not take.
  const std::string text(600'000, 'x');
  ALPutString(p.a, text.c_str());
  ALEndPacket(p.a);
  algelink::push_output(p.a, algelink::Clock::time_point::max());
  EXPECT_TRUE(ALPutMessage(p.a, ALAbortMessage, 1));
  while (delivered == 0) std::this_thread::yield();
  EXPECT_EQ(delivered, 31);
  EXPECT_EQ(ALWaitForLinkActivity(p.b), 1);
  EXPECT_EQ(get_string(p.b), text);
  EXPECT_TRUE(ALNewPacket(p.b));
  // A terminate message is remembered; what it sets is seen behind the wait. Others do not end it.
  EXPECT_TRUE(ALPutMessage(p.a, ALInterruptMessage, 2));
  EXPECT_TRUE(ALPutMessage(p.a, ALTerminateMessage, 3));
  EXPECT_EQ(ALWaitForLinkActivity(p.b), 0);
  EXPECT_EQ(delivered, 312213);
  EXPECT_EQ(ALError(p.b), ALErrorNone);
  ALPutInteger(p.a, 1);
  ALFlush(p.a);
  EXPECT_EQ(ALWaitForLinkActivity(p.b), 1);
}

TEST_P(LinkTest, WhatWasSentBeforeTheEndIsRead) {
  Pair p(GetParam());
  ALPutString(p.b, "last words");
  std::thread closer([&p] { ALClose(p.b); });
  EXPECT_EQ(ALWaitForLinkActivity(p.a), 1);
  EXPECT_EQ(get_string(p.a), "last words");
  EXPECT_EQ(ALWaitForLinkActivity(p.a), 0);
  EXPECT_EQ(ALGetType(p.a), 0);
  EXPECT_EQ(ALError(p.a), ALErrorClosed);
  EXPECT_EQ(ALClearError(p.a), 0);
  EXPECT_EQ(ALPutInteger(p.a, 1), 0);
  closer.join();
}

TEST_P(LinkTest, APeerThatDropsTheLinkIsNoticed) {
  Pair p(GetParam());
  std::thread dropper([&p] { algelink::drop_session(p.b); });
  EXPECT_EQ(ALWaitForLinkActivity(p.a), 0);
  ALPutInteger(p.a, 1);
  EXPECT_EQ(ALFlush(p.a), 0);
  EXPECT_EQ(ALError(p.a), ALErrorLost);
  dropper.join();
}

TEST_P(LinkTest, AFullPeerDoesNotHoldUpAClose) {
  Pair p(GetParam());
  ALPutString(p.b, std::string(1'000'000, 'x').c_str());
  ALClose(p.b);  // ends after its two seconds; the test counts no time
  EXPECT_EQ(ALWaitForLinkActivity(p.a), 1);
}

int end_wait(ALINK) { return 1; }

TEST_P(LinkTest, TheYieldFunctionEndsAWait) {
  Pair p(GetParam());
  ALSetYieldFunction(p.a, end_wait);
  EXPECT_EQ(ALWaitForLinkActivity(p.a), 0);
  EXPECT_EQ(ALGetType(p.a), 0);
  EXPECT_EQ(ALError(p.a), ALErrorLost);
}

TEST_P(LinkTest, AForkedChildLeavesTheLinkAlone) {
  Pair p(GetParam());
  const pid_t child = fork();
  if (child == 0) {
    const bool dead = ALPutInteger(p.a, 1) && !ALFlush(p.a) && ALError(p.a) == ALErrorLost;
    ALEnd(p.env);
    _exit(dead ? 0 : 1);
  }
  int status;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  ALPutString(p.a, "still here");
  ALFlush(p.a);
  EXPECT_EQ(get_string(p.b), "still here");
}

// Bytes that break the rules of tokens end the link, whatever is asked for; the program goes on.
TEST_P(LinkTest, BrokenTokensEndTheLink) {
  const std::pair<std::string, int> rows[] = {
      {std::string("\x07", 1), ALErrorStream},                                // no such token
      {std::string("\x06", 1), ALErrorStream},                                // the end of no packet
      {std::string("\x05\1\0\0\0\1\1\0f\6", 10), ALErrorStream},              // the end in an expression
      {std::string("\x05\1\0\x10\0", 5), ALErrorLimit},                       // too many arguments
      {std::string("\x01\0\0", 3), ALErrorStream},                            // an empty symbol
      {std::string("\x01\0\4", 3), ALErrorStream},                            // a symbol that is too long
      {std::string("\x01\1\0-", 4), ALErrorStream},                           // no symbol
      {std::string("\x03\xFF\xFF\xFF\xFF", 5), ALErrorLimit},                 // too many digits
      {std::string("\x03\2\0\0\0+a", 7), ALErrorStream},                      // no digits
      {std::string("\x22\1\0\1\0", 5), ALErrorStream},                        // a chunk that is too long
      {std::string("\x22\xFF\xFF\xFF\xFF", 5), ALErrorStream},                // the longest claim
      {std::string("\x05\1\0\0\0\x05\2\0\0\0\1\1\0f\2\1", 16), ALErrorLost},  // half an integer, then the end
  };
  for (const auto& [bytes, error] : rows) {
    Pair p(GetParam());
    p.b->out.bytes = bytes;
    EXPECT_TRUE(ALFlush(p.b));
    std::thread dropper([&] {
      if (error == ALErrorLost) algelink::drop_session(p.b);
    });
    ALGetType(p.a);
    if (ALError(p.a) == ALErrorNone) ALNewPacket(p.a);
    while (ALError(p.a) == ALErrorNone && algelink::skip_token(p.a)) continue;
    if (error == ALErrorLost) {
      EXPECT_GE(ALError(p.a), ALErrorClosed);
    } else {
      EXPECT_EQ(ALError(p.a), error) << testing::PrintToString(bytes);
      EXPECT_EQ(ALWaitForLinkActivity(p.b), 0);
    }
    dropper.join();
  }
}

TEST_P(LinkTest, BrokenFramesEndTheLink) {
  const std::string rows[] = {
      std::string("\0\0\0\0\x09\0\0\0", 8),           // no such type
      std::string("\1\0\0\0\x04\0\0\0x", 9),          // a ping with a payload
      std::string("\0\0\0\0\x04\0\1\0", 8),           // a reserved byte
      std::string("\4\0\0\0\x02\0\0\0\3\0\0\0", 12),  // half a message
      std::string("\1\0\1\0\x01\0\0\0", 8),           // a frame that is too long
      std::string("\xFF\xFF\xFF\xFF\x01\0\0\0", 8),
      [] {  // more than the credit
        std::string all;
        for (int i = 0; i < 5; i++) {
          algelink::append_data_head(&all, 65536);
          all.append(65536, '\2');
        }
        return all;
      }(),
  };
  for (const std::string& bytes : rows) {
    Pair p(GetParam());
    EXPECT_TRUE(algelink::session_control(p.b, bytes));
    // What is read is granted again, so nothing is read before the end has come.
    for (bool dead = false; !dead; std::this_thread::yield()) {
      const std::lock_guard<std::mutex> lock(p.a->shared.mutex);
      dead = p.a->shared.dead != ALErrorNone;
    }
    // A dead link with input left still gives that, and then its error.
    while (ALError(p.a) == ALErrorNone && ALGetType(p.a) != 0) algelink::skip_token(p.a);
    EXPECT_EQ(ALError(p.a), ALErrorStream);
  }
}

TEST(LinkOpenTest, ArgumentsAndNames) {
  const ALEnvironment env = ALInitialize(nullptr);
  for (const char* text :
       {"", "-linkmode", "-linkmode listen", "-linkmode launch -linkname 1", "-linkmode listen -linkname 65536",
        "-linkmode listen -linkname 12x", "-linkmode connect -linkname 0",
        "-linkmode listen -linkname a -linkprotocol Pipes", "-linkmode listen -linkname a/b -linkprotocol SharedMemory",
        "-linkmode listen -linkname a_b -linkprotocol IntraProcess"}) {
    int error = ALErrorNone;
    EXPECT_EQ(ALOpenString(env, text, &error), nullptr) << text;
    EXPECT_EQ(error, ALErrorArguments) << text;
  }
  ALEnd(env);
}

TEST(LinkOpenTest, ConnectingToNobodyIsRefused) {
  const ALEnvironment env = ALInitialize(nullptr);
  for (const std::string device : {"TCP", "SharedMemory", "IntraProcess"}) {
    ALINK link = open(env, device, "connect", device == "TCP" ? "1" : "nobody");
    EXPECT_EQ(ALConnect(link), 0);
    EXPECT_EQ(ALError(link), ALErrorRefused) << device;
  }
  ALINK far = ALOpenString(env, "-linkmode connect -linkname 1742 -linkhost 192.0.2.1", nullptr);
  EXPECT_EQ(ALConnect(far), 0);
  EXPECT_EQ(ALError(far), ALErrorArguments);
  ALEnd(env);
}

// A name is in use as long as its link lives, also when nobody listens any more.
TEST_P(LinkTest, ANameIsInUse) {
  Pair p(GetParam());
  int error = ALErrorNone;
  const std::string name = ALName(p.a);
  if (std::string(GetParam()) != "IntraProcess") {
    EXPECT_EQ(open(p.env, GetParam(), "listen", name, &error), nullptr);
    EXPECT_EQ(error, ALErrorNameInUse);
  }
  ALClose(p.a);
  ALINK next = open(p.env, GetParam(), "listen", name, &error);
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(open(p.env, GetParam(), "listen", name, &error), nullptr);
  EXPECT_EQ(error, ALErrorNameInUse);
}

TEST(LinkOpenTest, ThePrivateFolderMustBePrivate) {
  const ALEnvironment env = ALInitialize(nullptr);
  const std::string path = std::string(std::getenv("XDG_RUNTIME_DIR")) + "/ozlink";
  const std::string key = path + "/tcp-";
  ALINK link = open(env, "TCP", "listen", "0");
  ASSERT_NE(link, nullptr);
  struct stat s;
  ASSERT_EQ(stat((key + ALName(link) + ".key").c_str(), &s), 0);
  EXPECT_EQ(s.st_mode & 0777, 0600U);
  const std::string file = key + ALName(link) + ".key";
  ALClose(link);
  EXPECT_NE(stat(file.c_str(), &s), 0);
  chmod(path.c_str(), 0755);
  int error = ALErrorNone;
  EXPECT_EQ(open(env, "TCP", "listen", "0", &error), nullptr);
  EXPECT_EQ(error, ALErrorRefused);
  chmod(path.c_str(), 0700);
  // A link in the place of a key file is not followed.
  ASSERT_EQ(symlink("/tmp/elsewhere", (path + "/shm-linked.key").c_str()), 0);
  EXPECT_EQ(open(env, "SharedMemory", "listen", "linked", &error), nullptr);
  EXPECT_EQ(error, ALErrorRefused);
  ALEnd(env);
}

int connect_raw(const char* port) {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in a = {};
  a.sin_family = AF_INET;
  a.sin_port = htons(static_cast<uint16_t>(std::atoi(port)));
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a), 0);
  return fd;
}

// Strangers come and go, send nonsense, or stay and say nothing; then a good peer connects.
TEST(LinkOpenTest, StrangersDoNotKeepAGoodPeerOut) {
  const ALEnvironment env = ALInitialize(nullptr);
  ALINK a = open(env, "TCP", "listen", "0");
  std::thread listener([a] { EXPECT_EQ(ALConnect(a), 1); });
  std::vector<int> silent;
  for (int i = 0; i < 1000; i++) {
    const int fd = connect_raw(ALName(a));
    if (i % 3 == 1) send(fd, "GET / HTTP/1.0\r\n\r\n", 18, MSG_NOSIGNAL);
    if (i % 50 == 0)
      silent.push_back(fd);
    else
      close(fd);
  }
  for (int i = 0; i < 2; i++) {
    ALINK bad = open(env, "TCP", "connect", ALName(a));
    (i ? bad->mischief.wrong_key : bad->mischief.wrong_version) = true;
    EXPECT_EQ(ALConnect(bad), 0);
    EXPECT_EQ(ALError(bad), ALErrorRefused);
  }
  ALINK good = open(env, "TCP", "connect", ALName(a));
  EXPECT_EQ(ALConnect(good), 1);
  listener.join();
  for (const int fd : silent) close(fd);
  ALEnd(env);
}

// A link to another process, which does something with its end; for devices that reach there.
struct OtherProcess {
  ALEnvironment env = ALInitialize(nullptr);
  ALINK a;
  pid_t child;

  OtherProcess(const std::string& device, const char* name, void (*live)(ALINK))
      : a(open(env, device, "listen", device == "TCP" ? "0" : name)), child(fork()) {
    if (child == 0) {
      ALINK b = open(ALInitialize(nullptr), device, "connect", ALName(a));
      if (ALConnect(b)) live(b);
      _exit(1);
    }
    EXPECT_EQ(ALConnect(a), 1);
  }
  void kill() const { ::kill(child, SIGKILL); }
  ~OtherProcess() {
    kill();
    waitpid(child, nullptr, 0);
    ALEnd(env);
  }
};

TEST_P(LinkTest, AKilledPeerIsNoticed) {
  if (std::string(GetParam()) == "IntraProcess") return;
  const OtherProcess other(GetParam(), "killed", [](ALINK b) {
    ALPutString(b, std::string(100'000, 'x').c_str());
    ALFlush(b);
    for (;;) pause();
  });
  EXPECT_EQ(get_string(other.a), std::string(100'000, 'x'));
  other.kill();
  EXPECT_EQ(ALWaitForLinkActivity(other.a), 0);
}

// With a limit of one second: a stopped process says nothing any more, an idle one still answers pings.
TEST_P(LinkTest, SilenceIsNoticedAndIdlenessIsNoSilence) {
  if (std::string(GetParam()) == "IntraProcess") return;
  setenv("OZLINK_DEAD_AFTER", "1", 1);
  const OtherProcess other(GetParam(), "silent", [](ALINK b) {
    ALWaitForLinkActivity(b);
    raise(SIGSTOP);
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  EXPECT_TRUE(ALPutInteger(other.a, 1) && ALFlush(other.a));  // the child stops itself
  EXPECT_EQ(ALWaitForLinkActivity(other.a), 0);
  EXPECT_EQ(ALGetType(other.a), 0);
  EXPECT_EQ(ALError(other.a), ALErrorLost);
  unsetenv("OZLINK_DEAD_AFTER");
}

}  // namespace
