// Messages: the form of a line, storing and sorting, titles, quoted source lines, the cutting of long texts, and the
// ways in which a run ends.

#include "Errors.h"

#include <fstream>

#include "Idents.h"
#include "Sets.h"
#include "ememory.h"
#include "ozerrors.h"
#include "support.h"

namespace oz {
namespace {

TEST(Errors, LineForms) {
  const int integer = -4;
  const short small = 12;
  const long large = 5000000000;
  const double real = 0.5;
  const bool no = false;
  const char character = 'q';
  tSet set;
  MakeSet(&set, 10);
  Include(&set, 3);
  const tIdent ident = MakeIdent("rho", 3);
  const struct {
    int code, error_class, info_class;
    const void* info;
    const char* line;
  } rows[] = {
      {0, 2, 0, nullptr, "  12,  7: Restriction \n"},
      {1, 3, 0, nullptr, "  12,  7: Error       syntax error\n"},
      {2, 7, 7, "id ;", "  12,  7: Information expected tokens: id ;\n"},
      {3, 7, 0, nullptr, "  12,  7: Information restart point\n"},
      {4, 5, 9, &ident, "  12,  7: Repair      token inserted : rho\n"},
      {5, 4, 1, &integer, "  12,  7: Warning     too many errors : -4\n"},
      {6, 6, 2, &small, "  12,  7: Note         error code: 6: 12\n"},
      {-1, 8, 3, &large, "  12,  7: Error class: 8  error code: -1: 5000000000\n"},
      {1, 0, 4, &real, "  12,  7: Error class: 0 syntax error: 5.000000e-01\n"},
      {1, 3, 5, &no, "  12,  7: Error       syntax error: F\n"},
      {1, 3, 6, &character, "  12,  7: Error       syntax error: q\n"},
      {1, 3, 8, &set, "  12,  7: Error       syntax error: { 3}\n"},
      {1, 3, 10, &set, "  12,  7: Error       syntax error: info class: 10\n"},
  };
  for (const auto& r : rows)
    EXPECT_EQ(r.line, message_of([&] { ErrorMessageI(r.code, r.error_class, {12, 7}, r.info_class, r.info); }));
  EXPECT_EQ("12345,1234: Error       bad wheel: rho\n", message_of([&] {
              MessageI("bad wheel", xxError, {12345, 1234}, xxIdent, &ident);
            }));
  ReleaseSet(&set);
}

std::string stored_messages() {
  testing::internal::CaptureStdout();
  WriteMessages(stdout);
  return testing::internal::GetCapturedStdout();
}

TEST(Errors, StoredMessagesAreSortedAndKeepTheirValues) {
  StoreMessages(true);
  std::string info = "one";
  tSet set;
  MakeSet(&set, 10);
  Include(&set, 3);
  Message("third", xxError, {2, 9});
  MessageI("fourth", xxError, {10, 1}, xxString, info.c_str());
  MessageI("first", xxError, {2, 8}, xxSet, &set);
  ErrorMessage(xxSyntaxError, xxError, {10, 1});
  info = "two";
  Exclude(&set, 3);
  EXPECT_EQ(
      "   2,  8: Error       first: { 3}\n"
      "   2,  9: Error       third\n"
      "  10,  1: Error       fourth: one\n"
      "  10,  1: Error       syntax error\n",
      stored_messages());
  StoreMessages(true);
  EXPECT_EQ("", stored_messages());
  ReleaseSet(&set);
  StoreMessages(false);
}

TEST(Errors, TheHundredAndFirstMessageReplacesTheLast) {
  StoreMessages(true);
  for (unsigned i = 1; i <= 102; i++) MessageI("m", xxError, {i, 1}, xxString, "x");
  std::string text = stored_messages();
  EXPECT_EQ(100, std::count(text.begin(), text.end(), '\n'));
  EXPECT_EQ("  99,  1: Error       m: x\n 100,  1: Restriction too many errors \n", text.substr(text.find("  99,")));
  StoreMessages(true);
  StoreMessages(false);
}

TEST(ErrorsDeathTest, FatalMessagesEndTheRun) {
  EXPECT_EXIT(Message("no more", xxFatal, {1, 2}), testing::ExitedWithCode(1), "^   1,  2: Fatal       no more\n$");
  EXPECT_EXIT(
      {
        StoreMessages(true);
        Message("b", xxFatal + 1, {3, 1});
        Message("a", xxFatal, {2, 1});
      },
      testing::ExitedWithCode(1), "^   2,  1: Fatal       a\n   3,  1: Restriction b\n$");
  EXPECT_EXIT(
      {
        Errors_Exit = [] { std::_Exit(7); };
        die_msg_pos(4, 5, "wheel %d of %s", 3, "car");
      },
      testing::ExitedWithCode(7), "^   4,  5: Fatal       wheel 3 of car\n$");
  EXPECT_EXIT(
      {
        Errors_Exit = [] {};
        die_msg("%s", "");
      },
      testing::ExitedWithCode(1), "^$")
      << "a hook that returns does not let the run go on";
  EXPECT_EXIT(internal_error("compiler/oz/oz.cc", 12), testing::ExitedWithCode(1),
              "^   0,  0: Fatal       Internal compiler error: oz.cc 12\n$");
  std::string text(251, 'x');
  EXPECT_EXIT(die_msg_pos2(NoPosition, "%s", text.c_str()), testing::ExitedWithCode(1), "^[^\n]*:[^\n]*xx\n$")
      << "only the first piece goes out";
}

#ifndef OZ_SANITIZE
TEST(ErrorsDeathTest, NoMemory) {
  EXPECT_EXIT(emalloc(size_t{1} << 62), testing::ExitedWithCode(1),
              "^   0,  0: Fatal       Out of memory. malloc failed.\n$");
  char* text = estrdup("kept");
  EXPECT_EQ("   0,  0: Warning     Out of memory. realloc failed.\n",
            message_of([&] { EXPECT_EQ(nullptr, erealloc(text, size_t{1} << 62)); }));
  EXPECT_STREQ("kept", text);
  efree(text);
}
#endif

// Character i of the text is letter i mod 26, so that pieces can be followed by hand.
std::string letters(size_t n) {
  std::string s(n, ' ');
  for (size_t i = 0; i < n; i++) s[i] = static_cast<char>('a' + i % 26);
  return s;
}

// The saved character of a continuation goes three places too early, and its end mark stays. With 600 characters the
// third piece starts behind character 499 and has "...", then character 500 (g) put over 497, 498 (e), 499 (f), and
// then the mark. With 1000 the fourth has 747 (t), 745 (r), 746 (s) in the same way.
TEST(OzErrors, LongTextsAreCutIntoPieces) {
  const struct {
    size_t length;
    std::vector<std::string> pieces;
  } rows[] = {
      {249, {letters(249)}},
      {250, {letters(250)}},
      {251, {letters(250), "..." + letters(251).substr(250)}},
      {500, {letters(250), "..." + letters(500).substr(250)}},
      {501, {letters(250), "..." + letters(500).substr(250), "...gef"}},
      {600, {letters(250), "..." + letters(500).substr(250), "...gef"}},
      {1000, {letters(250), "..." + letters(500).substr(250), "...gef", "...trs"}},
  };
  for (const auto& r : rows) {
    std::string expected;
    for (const std::string& p : r.pieces) expected += "   0,  0: Error       " + p + "\n";
    EXPECT_EQ(expected, message_of([&] { error_msg("%s", letters(r.length).c_str()); })) << r.length;
  }
}

// The text is bounded to 99,999 characters, which are 400 pieces.
TEST(OzErrors, TheTextIsBounded) {
  std::string out = message_of([] { warning_msg("%s", letters(300000).c_str()); });
  EXPECT_EQ(400, std::count(out.begin(), out.end(), '\n'));
}

TEST(OzErrors, TheTitleComesOnceAndIndents) {
  EXPECT_EQ("", message_of([] { title_msg("In %s:", "f"); }));
  EXPECT_EQ(
      "   0,  0: Note        In f:\n"
      "   0,  0: Warning       one\n"
      "   3,  4: Error         two\n",
      message_of([] { warning_msg("one"), error_msg_pos(3, 4, "two"); }));
  title_msg("unused");
  title_msg(nullptr);
  EXPECT_EQ("   0,  0: Error       three\n", message_of([] { error_msg("three"); }));
  std::string text(5000, 't');
  title_msg("%s", text.c_str());
  EXPECT_EQ("   0,  0: Note        " + text + "\n   0,  0: Error         four\n",
            message_of([] { error_msg("four"); }));
  title_msg(nullptr);
}

class QuotedSource : public testing::Test {
 protected:
  void TearDown() override {
    error_message_uses_input_file = nullptr;
    std::remove(name_.c_str());
  }
  void Write(const std::string& text) {
    std::ofstream(name_, std::ios::binary) << text;
    error_message_uses_input_file = name_.c_str();
  }
  // What stands behind the text of a message at a position.
  static std::string Quoted(unsigned line, unsigned column) {
    char head[40];
    std::string out = message_of([&] { error_msg_pos2({line, column}, "bad"); });
    size_t n = static_cast<size_t>(std::snprintf(head, sizeof head, "%4u,%3u: Error       bad", line, column));
    EXPECT_EQ(head, out.substr(0, n));
    return out.substr(n);
  }
  std::string name_ = testing::TempDir() + "oz_quoted_source";
};

TEST_F(QuotedSource, LineAndCaret) {
  Write("one\ntwo\nlast");
  for (const auto& [line, column, quoted] : table<3>(R"(
      1 --> 3 --> \none\n\n  ^\n             2 --> 0 --> \ntwo\n\n^\n               2 --> 1 --> \ntwo\n\n^\n
      3 --> 6 --> \nlast\n\s\s\s  ^\n        4 --> 1 --> \n                         4000000000 --> 1 --> \n
    )"))
    EXPECT_EQ(quoted, Quoted(std::stoul(line), std::stoul(column))) << std::stoul(line) << "," << std::stoul(column);
  EXPECT_EQ("   0,  0: Error       no place\n", message_of([] { error_msg("no place"); }));
  for (const char* unreadable : {"/nowhere/model.oz", "-", "/", "/dev/zero"}) {
    error_message_uses_input_file = unreadable;
    EXPECT_EQ("\n", Quoted(1, 1)) << unreadable;
  }
}

TEST_F(QuotedSource, LinesAreFoundInAnyOrderAndInAChangedFile) {
  std::string text;
  for (int i = 1; i <= 500; i++) text += "line " + std::to_string(i) + "\n";
  Write(text);
  for (unsigned line : {3, 400, 64, 65, 129, 500, 1}) {
    EXPECT_EQ("\nline " + std::to_string(line) + "\n\n^\n", Quoted(line, 1));
  }
  Write("a new first line\n" + text);
  EXPECT_EQ("\nline 399\n\n^\n", Quoted(400, 1));
}

// A line of 12,000 characters counts as two, the second of 2,002 with its line end. The message is cut like any other:
// "bad" and a line end take four characters of the first piece.
TEST_F(QuotedSource, LongLines) {
  Write(std::string(12000, 'u') + "\nshort\n");
  EXPECT_EQ("\nshort\n\n^\n", Quoted(3, 1));
  std::string quoted = Quoted(2, 1);
  EXPECT_TRUE(quoted.starts_with("\n" + std::string(246, 'u') + "\n   2,  1: Error       ...uuu")) << quoted;
  // 4 + 2,002 characters, a line end and the caret are nine pieces; the head of the first is cut off.
  EXPECT_EQ(8, std::count(quoted.begin(), quoted.end(), ':'));
  // The caret may stand far behind the line: 4 + 6 + 1 + 65,535 characters are 263 pieces.
  Write("short\n");
  quoted = Quoted(1, 65535);
  EXPECT_EQ(262, std::count(quoted.begin(), quoted.end(), ':'));
}

}  // namespace
}  // namespace oz
