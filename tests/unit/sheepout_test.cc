// The Fortran output layer: lines, continuations and comments on two files, names, numbers, spellings, lists.

#include "sheepout.h"

#include <climits>
#include <string_view>

#include "generators.h"

namespace oz {
namespace {

using namespace std::string_view_literals;

struct SheepOut : testing::Test, SheepFiles {};

TEST_F(SheepOut, LinesOf130Characters) {
  const struct {
    size_t before;  // characters on the line
    std::string piece, expected;
  } rows[] = {
      {129, "y", "y"},
      {129, "yy", "&\n  &yy"},
      {130, "y", "&\n  &y"},
      {130, "\n", "\n"},          // a line end never breaks the line first
      {129, ")\n", "&\n  &)\n"},  // the length of the whole piece counts
      {0, xs(131), "&\n  &" + xs(131)},
  };
  for (const auto& row : rows) {
    foutput(xs(row.before));
    EXPECT_EQ(row.expected, f90.added([&] { foutput(row.piece); }));
    foutput("\n");
  }
}

// The indentation and the "&" of a continuation line count: 7 + 123 characters fill it.
TEST_F(SheepOut, Indentation) {
  f_modify_indent(1);
  EXPECT_TRUE(contains(message_of([] { f_modify_indent(-2); }), "Negative indentation in Fortran unparser.\n"));
  f_modify_indent(2);                                   // from 0
  for (int mod : {0, 0, -3}) foutput_indentation(mod);  // pads to a column, so that a second call adds nothing
  for (size_t length : {127, 123, 1}) foutput(xs(length));
  EXPECT_EQ("    &\n      &" + xs(127) + "&\n      &" + xs(123) + "&\n      &x", f90.str());
}

TEST_F(SheepOut, CommentsContinueAsComments) {
  f_modify_indent(1);
  foutput("a");
  foutput_comment();
  foutput(xs(129));
  foutput("y\n");
  foutput_hpf_directive();
  foutput(xs(125));
  foutput("\n" + xs(130));
  foutput("z");
  EXPECT_EQ("a\n!" + xs(129) + "\n! y\n!HPF$ \n! " + xs(125) + "\n" + xs(130) + "&\n    &z", f90.str());
}

TEST_F(SheepOut, FortiethContinuationWarns) {
  for (int statement = 0; statement < 2; statement++) {
    for (int i = 0; i < 39; i++) EXPECT_EQ("", message_of(foutput_continuation_nl));
    EXPECT_TRUE(contains(message_of(foutput_continuation_nl), "Warning: more than 39 continuation lines!"));
    foutput("\n");
  }
}

TEST_F(SheepOut, SelectedStreams) {
  const struct {
    fout_t selected;
    const char* added[4];  // to the interface, implementation, template, external file
  } rows[] = {{fout_interface, {"  t", "", "", ""}},
              {fout_implementation, {"", "  t", "", ""}},
              {fout_both, {"  t", "  t", "", ""}},
              {fout_template, {"", "", "t", ""}},
              {fout_external, {"", "  ", "", "t"}}};  // pads in the implementation file
  OutputStream* streams[] = {&i_f90, &f90, &tm, &external};
  for (const auto& row : rows) {
    finit_output();
    fout_set(row.selected);
    std::string expected[4];
    for (int i = 0; i < 4; i++) expected[i] = streams[i]->str() + row.added[i];
    f_modify_indent(1);
    foutput_indentation(0);
    foutput("t");
    for (int i = 0; i < 4; i++) EXPECT_EQ(expected[i], streams[i]->str());
  }
  fout_reset();  // from external back to template, and no further
  fout_reset();
  EXPECT_EQ("t", tm.added([] { foutput("t"); }));
}

// The implementation file's break breaks the interface file as well, behind the text that caused it.
TEST_F(SheepOut, BothFiles) {
  foutput(xs(10));
  fout_set(fout_both);
  foutput(xs(125));
  foutput_comment();
  foutput("c\n");
  EXPECT_EQ(xs(10) + "&\n  &" + xs(125) + "\n!c\n", f90.str());
  EXPECT_EQ(xs(125) + "&\n  &\n!c\n", i_f90.str());
  // The interface form of a directive writes to the selected file, that of a comment to the interface file.
  fout_set(fout_implementation);
  EXPECT_EQ("!HPF$ ", f90.added(foutput_hpf_directive_i));
  EXPECT_EQ("!", i_f90.added(foutput_comment_i));
}

TEST_F(SheepOut, Names) {
  for (const auto& [first, second, expected] : table<3>(R"(
      plain_ --> 1 --> plain_1                                  $a --> $b --> ADaADb
      // the escape letter starts anew in each part
      a$b,c[1]`d -->  --> a_Db_Cc_L1_R_Td                       , --> []` --> ACAL_R_T
    )")) {
    foutput_mangled_str(first);
    foutput_mangled_str(second);
    EXPECT_EQ(expected, f90.added(flush_mangled_str));
  }
  EXPECT_EQ("al_myfun_xal_myfun_x_", f90.added([] { foutput_if_name("MyFun_X"), foutput_tm_name("MyFun_X"); }));
  EXPECT_EQ("ABZ_1\xe4", ToUpper("abZ_1\xe4"));
}

TEST_F(SheepOut, LongNamesAreWrittenWholeAndAbbreviated) {
  const std::string name = "AD" + xs(498);
  for (size_t length : {30, 31, 500}) {
    foutput_mangled_str("$" + xs(length - 2));
    flush_mangled_str();
    foutput("\n");
  }
  EXPECT_EQ(name.substr(0, 30) + "\n" + name.substr(0, 31) + "\n&\n  &" + name + "\n", f90.str());
  EXPECT_EQ("#define " + name.substr(0, 31) + " " + name.substr(0, 30) + "0\n" +  //
                "#define " + name + " " + name.substr(0, 30) + "1\n",
            macros.str());
}

TEST_F(SheepOut, Numbers) {
  EXPECT_EQ("-2147483648", f90.added([] { foutput_int(INT_MIN); }));
  EXPECT_EQ("-0.5000000d0", f90.added([] { foutput_real(-0.5); }));
  EXPECT_EQ("-122.250000",
            f90.added([] { foutput_mangled_int(-12), foutput_mangled_real(2.25), flush_mangled_str(); }));
  EXPECT_EQ("&\n  &"sv.size() + 301 + ".0000000d0"sv.size(), f90.added([] { foutput_real(1e300); }).size());
}

TEST_F(SheepOut, LinkRoutines) {
  EXPECT_STREQ("! ERROR: CBGET ", if_func_cbget[0]);
  EXPECT_STREQ("putNNNNint", if_func_put[17]);  // truth values of rank 4
  EXPECT_STREQ("getNNNNstr", if_func_get[25]);
}

TEST(SheepOutAttributes, TextValuesOnly) {
  Index* attributes = make_index(linked_list, 1);
  add_to_entry(attributes, mStringConst("first"), "align");
  add_to_entry(attributes, mStringConst("second"), "align");
  add_to_entry(attributes, mIntConst(1), "onto");
  EXPECT_STREQ("first", attribute_value(attributes, "align"));
  for (const char* name : {"onto", "unit"}) EXPECT_EQ(nullptr, attribute_value(attributes, name));
  EXPECT_EQ(nullptr, attribute_value(nullptr, "align"));
  delete_index(attributes);
}

TEST(SheepOutLists, LastAndTheOthers) {
  for (int length : {1, 2, 200000}) {
    tAsynt list = mExpression0();
    for (int i = length; i >= 1; i--) list = mExpression1(mIntConst(i), list);
    EXPECT_EQ(length, LengthExpressions(list));
    EXPECT_EQ(length, IntConst_Val(LastExpression(list)));
    tAsynt front = ButLastExpression(list);
    EXPECT_EQ(length - 1, LengthExpressions(front));
    if (length == 1) continue;
    EXPECT_EQ(1, IntConst_Val(Expression1_Expression(front)));
  }
  for (tAsynt other : {nXPi(), mExpression0()}) {
    EXPECT_EQ(other, LastExpression(other));
    EXPECT_EQ(other, ButLastExpression(other));
  }
}

// Without open files all text is dropped, without a word; a failed write can be seen in the stream.
TEST(SheepOutClosed, DropsTextAndShowsFailures) {
  const auto write_much = [] {
    finit_output();
    for (fout_t selected : {fout_interface, fout_both, fout_template, fout_external, fout_implementation}) {
      fout_set(selected);
      f_modify_indent(1);
      for (int i = 0; i < 40; i++) foutput_indentation(0), foutput(xs(131));
      foutput_comment();
      foutput_hpf_directive();
    }
  };
  EXPECT_EQ("", message_of(write_much));
  foutput_file = std::fopen("/dev/full", "w");
  std::setvbuf(foutput_file, nullptr, _IONBF, 0);
  message_of(write_much);
  EXPECT_NE(0, std::ferror(foutput_file));
  std::fclose(foutput_file);
  foutput_file = nullptr;
}

}  // namespace
}  // namespace oz
