// The C++ output layer: routing, lines, comments, semicolons, names, numbers, spellings.

#include "pompout.h"

#include <cerrno>
#include <climits>
#include <cmath>

#include "ememory.h"
#include "generators.h"

namespace oz {
namespace {

struct PompOut : testing::Test, PompFiles {};

// A switch that stands further up decides over those below it; only the last two add to the .cc.
TEST_F(PompOut, Routing) {
  const struct {
    void (*start)();
    void (*end)();
    const char* added[5];  // to the .cc, .h, .icc, .tm, if.cc
  } rows[] = {{cpstart_tm_output, cpend_tm_output, {"", "", "", "t", ""}},
              {cpstart_if_output, cpend_if_output, {"", "", "", "", "t"}},
              {cpstart_h_icc_output, cpend_h_icc_output, {"", "t", "t", "", ""}},
              {cpstart_icc_output, cpend_icc_output, {"", "", "t", "", ""}},
              {cpstart_h_only_output, cpend_h_only_output, {"", "t", "", "", ""}},
              {cpstart_h_output, cpend_h_output, {"t", "t", "", "", "t"}},
              {cpstart_if_output_too, cpend_if_output_too, {"t", "", "", "", "t"}}};
  OutputStream* streams[] = {&cc, &h, &icc, &tm, &wrappers};
  std::string expected[] = {"#include <math.h>\n", "#include \"lumenmat.h\"\n\n", "", "", ""};
  for (const auto& row : rows) {
    row.start();
    row.start();  // switches do not count
  }
  for (const auto& row : rows) {  // with this switch and all below it
    cpoutput("t");
    row.end();
    for (int i = 0; i < 5; i++) EXPECT_EQ(expected[i] += row.added[i], streams[i]->str());
  }
}

TEST_F(PompOut, LinesOf80Characters) {
  const struct {
    size_t before;  // characters on the line
    std::string piece, in_cc, in_h;
  } rows[] = {{79, "y", "y", "y"},
              {79, "yy", "\n        yy", "\n    yy"},
              {80, "y", "\n        y", "\n    y"},
              {79, ";\n", "\n        ;\n", "\n    ;\n"},  // the length of the whole piece counts
              {80, "\ry", "\n        \ry", "\n    \ry"},
              {0, xs(81), "\n        " + xs(81), "\n    " + xs(81)}};
  cp_modify_indent(1);
  cpstart_h_output();
  for (const auto& row : rows) {
    cpoutput("\n" + xs(row.before));
    const size_t before = h.str().size();
    EXPECT_EQ(row.in_cc, cc.added([&] { cpoutput(row.piece); }));
    EXPECT_EQ(row.in_h, h.str().substr(before));
  }
}

TEST_F(PompOut, StringConstantsAndComments) {
  cp_modify_indent(1);
  cp_unbreakable_mode = 1;
  cpoutput_double_quote();
  EXPECT_EQ(xs(200), cc.added([] { cpoutput(xs(200)); }));
  cp_unbreakable_mode = 0;
  EXPECT_EQ("\n        \n//", cc.added(cpoutput_comment));  // a line end is a text like any other
  EXPECT_EQ(xs(78) + "\n//  y\n", cc.added([] { cpoutput(xs(78)), cpoutput("y"), cpoutput("\n"); }));
  EXPECT_EQ(xs(80) + "\n        y", cc.added([] { cpoutput(xs(80)), cpoutput("y"); }));
}

TEST_F(PompOut, Semicolons) {
  const struct {
    const char *before, *comment, *expected;
  } rows[] = {{"a", nullptr, ";"},   {"a;", nullptr, ""},   {"}\n\t\r ", nullptr, ""},
              {"a;b", nullptr, ";"}, {"a", "text;\n", ";"}, {"a;", "text\n", ""}};  // comment text does not count
  for (const auto& row : rows) {
    cpoutput(row.before);
    if (row.comment) cpoutput_comment(), cpoutput(row.comment);
    EXPECT_EQ(row.expected, cc.added(cpoutput_semicolon)) << row.before;
  }
}

// The blanks go to the .cc past all switches, and count there.
TEST_F(PompOut, Indentation) {
  cp_modify_indent(2);
  cp_modify_indent(-1);
  cpstart_tm_output();
  EXPECT_EQ("        ", cc.added([] { cpoutput_indentation(1), cpoutput_indentation(1), cpoutput("t"); }));
  cpend_tm_output();
  EXPECT_EQ(xs(72) + "\n        y", cc.added([] { cpoutput_indentation(-2), cpoutput(xs(72)), cpoutput("y"); }));
  EXPECT_EXIT(cp_modify_indent(-2), testing::ExitedWithCode(1), "Negative indentation in Fortran unparser.");
}

TEST_F(PompOut, Names) {
  cpoutput_mangled_str("$a$$");
  cpoutput_mangled_str_capitalize("b$z_1A");
  cpoutput_mangled_int(-3);
  EXPECT_EQ("_Da_D_DB_DZ_1A-3", cc.added(cpflush_mangled_str));
  std::string report;
  for (size_t length : {126, 500, 127}) {
    cpoutput_mangled_str(xs(length));
    EXPECT_EQ("\n    " + xs(length), cc.added([&] { report = message_of(cpflush_mangled_str); }));
    EXPECT_EQ(length > 126, contains(report, "A very long identifier " + xs(127))) << report;
  }
  EXPECT_TRUE(contains(report, xs(127) + ". Reduce the length to 126 symbols "));
  const char* shorter = cpRemoveAlg("myAlg");
  EXPECT_STREQ("my", shorter);
  efree(const_cast<char*>(shorter));
  for (const char* name : {"Algebra", "myAlgs", "lg", "", "myalg"}) EXPECT_EQ(name, cpRemoveAlg(name));
}

TEST_F(PompOut, Numbers) {
  EXPECT_EQ("-2147483648", cc.added([] { cpoutput_int(INT_MIN); }));
  EXPECT_EQ(std::string(25, ' ') + "2", cc.added([] { cpoutput_real(2); }));
  EXPECT_EQ("   -3.333333333333333e-301", cc.added([] { cpoutput_mangled_real(-1 / 3e300), cpflush_mangled_str(); }));
  EXPECT_EQ("#define LM_N\n#define LM_NNNN\n#define LM_NN\n#define LM_NN\n", levels.added([] {
    for (int level : {1, 4, 0, 5, -1, 2, 2}) cp_lmlev(level);
  }));
}

// Without open files all text is dropped, without a word; a failed write can be seen in the stream.
TEST(PompOutClosed, DropsTextAndShowsFailures) {
  const auto write_much = [] {
    cpinit();
    cpoutput_indentation(1);
    cpstart_h_output();
    cpstart_if_output_too();
    for (auto start : {cpoutput_comment, cpstart_h_icc_output, cpstart_tm_output}) cpoutput(xs(81)), start();
    cpoutput_continuation_nl();
    cpoutput_continuation_nl_h();
    cp_lmlev(1);
    cpinit();
  };
  EXPECT_EQ("", message_of(write_much));
  cpoutput_file = std::fopen("/dev/full", "w");
  std::setvbuf(cpoutput_file, nullptr, _IONBF, 0);
  write_much();
  EXPECT_NE(0, std::ferror(cpoutput_file));
  std::fclose(cpoutput_file);
  cpoutput_file = nullptr;
}

TEST(PompOutText, PowersOfTen) {
  const std::pair<std::string, std::string> rows[] = {
      {"1.5*^-3", "1.5e-3"}, {"2*^3", "2e3"},    {"", ""},
      {"2*", "2e"},          {xs(256), xs(256)}, {xs(255) + "*^", xs(255) + "e"}};
  for (const auto& [text, expected] : rows) EXPECT_EQ(expected, alg_to_exp(text.c_str()));
  const std::string longer = xs(256) + "*^3";
  const char* result = nullptr;
  EXPECT_TRUE(contains(message_of([&] { result = alg_to_exp(longer.c_str()); }), "\"*^3\" is not a numeric constant."));
  EXPECT_EQ(longer.c_str(), result);
}

TEST(PompOutText, ValuesOfNumberText) {
  const struct {
    const char* text;
    double real;
    long integer;
    const char *real_message, *integer_message;  // "" for none
  } rows[] = {{"-7", -7, -7, "", ""},
              {"1000000000000", 1e12, 1000000000000, "", ""},
              {"1.5*^-3", 0.0015, 0, "", "\"1.5*^-3\" is not an integer constant."},
              {"abc", 0, 0, "\"abc\" is not a real constant.", "\"abc\" is not an integer constant."},
              {"-9*^400", -HUGE_VAL, 0, "real \"-9*^400\" is out of range.", "not an integer constant."},
              {"99999999999999999999", 1e20, LONG_MAX, "", "integer \"99999999999999999999\" is out of range."}};
  for (const auto& row : rows) {
    errno = 0;
    const std::string real_report = message_of([&] { EXPECT_DOUBLE_EQ(row.real, alg_atof(row.text)); });
    errno = 0;
    const std::string integer_report = message_of([&] { EXPECT_EQ(row.integer, alg_atoi(row.text)); });
    EXPECT_EQ(!*row.real_message, real_report.empty()) << real_report;
    EXPECT_TRUE(contains(real_report, row.real_message)) << real_report;
    EXPECT_EQ(!*row.integer_message, integer_report.empty()) << integer_report;
    EXPECT_TRUE(contains(integer_report, row.integer_message)) << integer_report;
  }
}

}  // namespace
}  // namespace oz
