// The compiler's side of a link, with a host in another thread; whole sessions are in tests/link.

#include "alink.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "server.h"

namespace oz {

namespace {

// A host within the process: it gets the connected link, the test's own thread has the program's.
class AlinkTest : public testing::Test {
 protected:
  void SetUp() override {
    ALAbort = 0;
    ALDone = 0;
    env_ = ALInitialize(nullptr);
    host_ = ALOpenString(env_, "-linkprotocol IntraProcess -linkmode listen -linkname alink", nullptr);
    ASSERT_NE(host_, nullptr);
  }
  void TearDown() override {
    ALEnd(env_);
    stdlink = nullptr;
    ALAbort = 0;
    ALDone = 0;
  }

  ALINK connect() {
    program_ = ALOpenString(env_, "-linkprotocol IntraProcess -linkmode connect -linkname alink", nullptr);
    EXPECT_EQ(ALConnect(program_), 1);
    EXPECT_EQ(ALConnect(host_), 1);
    return program_;
  }

  // Tokens that the program has put.
  std::string received(int n) {
    std::string all;
    for (int i = 0; i < n; i++) all += received();
    return all;
  }

  std::string received() {
    ALFlush(program_);
    const char* text;
    int n;
    switch (ALGetType(host_)) {
      case ALStringToken: return ALGetString(host_, &text) ? "\"" + std::string(text) + "\"" : "error";
      case ALSymbolToken: return ALGetSymbol(host_, &text) ? text : "error";
      case ALIntegerToken: return ALGetInteger(host_, &n) ? std::to_string(n) : "error";
      case ALFunctionToken: return ALGetFunction(host_, &text, &n) ? text + std::to_string(n) : "error";
      case ALEndPacketToken: return ALNewPacket(host_) ? "end" : "error";
      default: return "none";
    }
  }

  ALEnvironment env_ = nullptr;
  ALINK host_ = nullptr;
  ALINK program_ = nullptr;
};

int put_seven(ALINK mlp) { return ALNewPacket(mlp) && ALPutInteger(mlp, 7); }
int fail_late(ALINK mlp) {
  const char* text;
  return ALGetString(mlp, &text) && ALGetString(mlp, &text);
}

TEST_F(AlinkTest, ACallIsTestedAgainstItsTable) {
  constexpr func kTable[] = {
      {2, 0, put_seven, "exact"}, {1, 1, put_seven, "at least"}, {-1, 0, put_seven, "any"}, {2, 0, fail_late, "fails"}};
  struct Row {
    int number;
    int arguments;
    const char* answer;
  };
  const Row rows[] = {{0, 2, "7"}, {0, 1, "$Failed"}, {0, 3, "$Failed"}, {1, 0, "$Failed"}, {1, 1, "7"},
                      {1, 4, "7"}, {2, 3, "7"},       {3, 2, "$Failed"}, {4, 0, "$Failed"}, {-1, 0, "$Failed"}};
  connect();
  for (const Row& row : rows) {
    ALPutFunction(host_, "CallPacket", 2);
    ALPutInteger(host_, row.number);
    ALPutFunction(host_, "List", row.arguments);
    for (int i = 0; i < row.arguments; i++) i == 1 ? ALPutSymbol(host_, "x") : ALPutString(host_, "x");
    ALEndPacket(host_);
    ALFlush(host_);
    EXPECT_EQ(ALNextPacket(program_), ALCallPacket);
    EXPECT_TRUE(_ALDoCallPacket(program_, kTable, std::size(kTable)));
    EXPECT_EQ(stdlink == program_, true);
    EXPECT_EQ(received(), row.answer) << row.number << " with " << row.arguments;
    EXPECT_EQ(received(), "end");
  }
}

TEST_F(AlinkTest, TextsOfATableGoOutInPieces) {
  const char* const table[] = {"one", nullptr, "two ", "", "pieces", nullptr, nullptr};
  connect();
  EXPECT_TRUE(_doevalstr(program_, table, 1));
  EXPECT_TRUE(_doevalstr(program_, table, 0));
  EXPECT_EQ(_doevalstr(program_, table, 2), 0);
  EXPECT_EQ(received(2), "\"two pieces\"\"one\"");
}

TEST_F(AlinkTest, AnEvaluationSkipsPacketsUntilItsResult) {
  connect();
  for (const char* head : {"SuspendPacket", "EvaluatePacket", "ReturnPacket"}) {
    ALPutFunction(host_, head, 1);
    ALPutInteger(host_, 1);
    ALEndPacket(host_);
  }
  ALFlush(host_);
  EXPECT_TRUE(ALEvaluateString(program_, "1+1"));
  EXPECT_EQ(received(4), "EvaluatePacket1ToExpression1\"1+1\"end");
  ALAbort = 1;
  EXPECT_FALSE(ALEvaluate(program_, "1"));
}

TEST_F(AlinkTest, MessagesSetTheFlags) {
  struct Row {
    int message, abort, done;
  };
  for (const Row& row :
       {Row{ALTerminateMessage, 1, 1}, {ALInterruptMessage, 1, 0}, {ALAbortMessage, 1, 0}, {4, 0, 0}}) {
    ALAbort = 0;
    ALDone = 0;
    ALDefaultHandler(nullptr, row.message, 0);
    EXPECT_EQ(ALAbort, row.abort) << row.message;
    EXPECT_EQ(ALDone, row.done) << row.message;
  }
}

TEST_F(AlinkTest, AFatalMessageTellsTheHostOfTheCall) {
  abort_trap();  // before the first call there is nobody to tell
  EXPECT_TRUE(ALAbort && ALDone);
  stdlink = connect();
  std::thread trap(abort_trap);
  const char* text = nullptr;
  EXPECT_TRUE(ALGetString(host_, &text));
  EXPECT_STREQ(text, "FatalError");
  EXPECT_TRUE(ALNewPacket(host_));
  EXPECT_EQ(ALWaitForLinkActivity(host_), 0);
  trap.join();
  EXPECT_EQ(stdlink, nullptr);
}

// The whole life of a program: the status tells whether it was asked to end.
TEST_F(AlinkTest, MainEndsAsItIsTold) {
  for (const bool terminate : {true, false}) {
    ALINK host = ALOpenString(env_, "-linkprotocol IntraProcess -linkmode listen -linkname main", nullptr);
    std::thread listener([host, terminate] {
      EXPECT_TRUE(ALConnect(host));
      if (terminate) {
        ALPutMessage(host, ALTerminateMessage, 0);
        EXPECT_EQ(ALWaitForLinkActivity(host), 1);
      }
      ALClose(host);
    });
    ALDone = 0;
    EXPECT_EQ(ALMainString("-linkprotocol IntraProcess -linkmode connect -linkname main"), terminate ? 0 : 1);
    listener.join();
  }
  std::vector<char*> many(128, const_cast<char*>("-linkname"));
  testing::internal::CaptureStderr();
  EXPECT_EQ(ALMainArgv(many.data(), many.data() + many.size()), 1);
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

}  // namespace

}  // namespace oz
