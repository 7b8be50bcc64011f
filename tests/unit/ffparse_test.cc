// The full-form reader, from a text to the tree and to every message.

#include "ffparse.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Asynt.h"
#include "compelim.h"
#include "fatal_text.h"
#include "ffscan.h"
#include "nesting.h"
#include "operator_name.h"
#include "tree_text.h"
#include "typepat.h"
#include "unparse.h"

namespace oz {
namespace {

struct Ffparse : testing::Test {
  Ffparse() {
    bigbuf_init();
    init_operator_name();
  }
};

tAsynt read_tree(const std::string& text) {
  ffscan_SetString(text.c_str());
  ffscan_BeginFile("");
  return ffparse(1);
}

// The tree as one line and, behind it, what was reported.
std::string read(const std::string& text) {
  std::string result;
  const std::string messages = message_of([&] {
    const tAsynt tree = read_tree(text);
    EXPECT_TRUE(CheckAsynt(tree)) << text;
    EXPECT_TRUE(AsyntMarksAreZero(tree)) << text;
    result = tree_text(tree);
  });
  return result + messages;
}

std::string eliminated(const std::string& text) {
  std::string result;
  const std::string messages = message_of([&] {
    tAsynt tree = read_tree(text);
    Comp_elim(tree, &tree, nullptr);
    EXPECT_TRUE(CheckAsynt(tree)) << text;
    result = tree_text(tree, true);
  });
  return result + messages;
}

std::string fatal(const std::string& text, const std::string& position = "   0,  0") {
  return position + ": Fatal       " + text + "\n";
}

std::string error(const std::string& text, const std::string& position = "   0,  0") {
  return position + ": Error       " + text + "\n";
}

std::string repeated(const std::string& text, size_t n) {
  std::string result;
  for (size_t i = 0; i < n; i++) result += text;
  return result;
}

struct Row {
  std::string text, expected;
};

void check(std::string (*run)(const std::string&), const std::vector<Row>& rows) {
  for (const Row& row : rows) EXPECT_EQ(row.expected, run(row.text)) << row.text.substr(0, 200);
}

// The message of a nesting that is one level too deep.
std::string too_deep(size_t column) {
  const std::string levels = std::to_string(kMaxNesting);
  return fatal("expression nested too deeply (more than " + levels + " levels)", "   1," + std::to_string(column));
}

TEST_F(Ffparse, Trees) {
  check(read, {
                  {"x", "x"},
                  {"Plus[a, Times[2, b]]", "%Plus[a,%Times[2,b]]"},
                  {"f[]", "f[]"},
                  {"f[a][b][]", "((f[a])[b])[]"},
                  {"f[g[1], h[][2], \"s\"]", "f[g[1],(h[])[2],\"s\"]"},
                  {"f[a`b`x, a``b, a`]", "f[a`b`x,a``b,a`]"},
                  {"$x1[a\304b]", "$x1[a\304b]"},
              });
  const tAsynt args = FullFormExpression_Args(read_tree("f[x, a`x, a`x, x]"));
  const tAsynt last = Expression1_Expressions(Expression1_Expressions(Expression1_Expressions(args)));
  EXPECT_EQ(Symbol_SymInfo(Expression1_Expression(args)), Symbol_SymInfo(Expression1_Expression(last)));
}

TEST_F(Ffparse, NumbersTakeTheGeneratorsForm) {
  const auto large = [](const char* position, const char* text) {
    return position + std::string(": Warning     Large integer constant ") + text + ".  Converted to real.\n";
  };
  check(read, {
                  {"f[12., .5, -3.25, -7, 007]", "f[12.,.5,-3.25,-7,007]"},
                  {"f[1.5*^3, 1.5*^-3, -.5*^2, -2.5*^-10]", "f[1.5e03,1.5e-03,-.5e02,-2.5e-010]"},
                  {"f[2000000000, -1999999999, 0002000000000]", "f[2000000000,-1999999999,0002000000000]"},
                  {"2000000001", "2000000001.0" + large("   1,  1", "2000000001")},
                  {"-2000000000", "-2000000000.0" + large("   1,  1", "-2000000000")},
                  {"\n  30000000000", "30000000000.0" + large("   2,  3", "30000000000")},
              });
}

TEST_F(Ffparse, BlanksAndComments) {
  check(read, {
                  {"f[(* one (* two *) \" *) a,\n\tb]", "f[a,b]"},
                  {"x (* never (* closed *)", "x"},
                  {"(**)x(*)*)", "x"},
              });
  // A tab goes to the next of the columns 1, 9, 17, ..., but is one column wide in a string.
  EXPECT_EQ("f@2,9[\"\t\",x@2,16]", tree_text(read_tree(" (* \n*)\tf[\"\t\", x]"), true));
  EXPECT_EQ("x@1,17", tree_text(read_tree("(*1234\t*)\tx"), true));
}

TEST_F(Ffparse, IllegalCharactersArePassedOver) {
  const auto illegal = [](const char* position, const std::string& c) {
    return error("Illegal character: " + c, position);
  };
  check(read, {
                  {"f[@a,\x7f"
                   "1]",
                   "f[a,1]" + illegal("   1,  3", "@") + illegal("   1,  6", "\\177")},
                  {"-.5", ".5" + illegal("   1,  1", "-")},
                  {"f[.,1]", illegal("   1,  3", ".") + fatal("Internal error in line 405 of ffparse")},
                  {"f[\"a\xe9\"]",
                   "f[a]" + illegal("   1,  3", "\"") + illegal("   1,  5", "\\351") + illegal("   1,  6", "\"")},
                  {"3*^2", illegal("   1,  2", "*") + illegal("   1,  3", "^") +
                               fatal("Internal error in line 288 of ffparse")},
                  {"12.*^2", illegal("   1,  4", "*") + illegal("   1,  5", "^") +
                                 fatal("Internal error in line 288 of ffparse")},
                  {"(x", "x" + illegal("   1,  1", "(")},
              });
}

TEST_F(Ffparse, FaultsOfTheFormAreFatal) {
  const std::string eof =
      fatal("The Evaluate-value generated for Evaluate-function has wrong syntax. Premature EOF found.");
  const auto internal = [](int line) {
    return fatal("Internal error in line " + std::to_string(line) + " of ffparse");
  };
  check(read, {
                  {"", eof},
                  {"f[", eof},
                  {"f[a", eof},
                  {"f[a,", eof},
                  {"oz$Type", eof},
                  {"a]", fatal("Too many closing brackets.")},
                  {"f[a]]", fatal("Too many closing brackets.")},
                  {"a, b", fatal("I would have prefered an EOF instead of the comma.")},
                  {"f[] g`h", fatal("Unexpected symbol 'g`h'", "   1,  5")},
                  {"f[1 x]", fatal("Unexpected symbol 'x'", "   1,  5")},
                  {"oz$Type x", fatal("Unexpected symbol 'x'", "   1,  9")},
                  {"1 2", internal(288)},
                  {"a \"s\"", internal(288)},
                  {"oz$Type 1.5", internal(288)},
                  {"[", internal(345)},
                  {"1[2]", internal(345)},
                  {"f[[", internal(345)},
                  {"]", internal(368)},
                  {"f[a,]", internal(368)},
                  {"f[oz$Type]", internal(368)},
                  {",", internal(405)},
                  {"f[,a]", internal(405)},
                  {"f[a,,b]", internal(405)},
                  {"f[oz$Type,a]", internal(405)},
              });
}

TEST_F(Ffparse, AnnotationsGiveTypes) {
  const std::string size = error("Strange index type. should be int.");
  const std::string internal = fatal("Internal error in line 48 of typepat");
  check(read,
        {
            {"f[oz$Type[x, oz$Real], x]", "f[x:Real,x:Real]"},
            {"oz$Type[x, oz$ArrayType[oz$Int, 2, -1]]", "x:ArrayType[Int,{2,-1}]"},
            {"oz$Type[x, oz$MultiType[oz$Int, oz$ArrayType[oz$Bool, 0]]]", "x:MultiType[Int,ArrayType[Bool,{0}]]"},
            {"f[oz$Type[x, oz$Int], oz$Type[y, x]]", "f[x:Int,y:Int]"},
            {"oz$Type[oz$Type[x, oz$Real], oz$Real][1]", "x:Real[1]"},
            {"oz$Type[x, y, z]", "oz$Type[x,y,z]"},
            {"oz$Type[]", "oz$Type[]"},
            {"oz$Type[x, oz$ArrayType[oz$Real]]", "x:ArrayType[Real,{0}]" + size},
            {"oz$Type[x, oz$ArrayType[oz$Real, n, 3, g[1], 2.5, \"7\"]]",
             "x:ArrayType[Real,{0,3,0,2,7}]" + size + size + size + size},
            {"oz$Type[x, oz$MultiType[oz$Int, oz$MultiType[oz$Int]]]", fatal("Nested MultiTypes not allowed (?)")},
            {"oz$Type[x, oz$ArrayType[]]", internal},
            {"oz$Type[x, g[oz$Real]]", internal},
            {"oz$Type[x, g[1][2]]", internal},
            {"oz$Type[x, 1]", internal},
        });
}

TEST_F(Ffparse, OneSymbolHasOneType) {
  const auto changing = [](const std::string& name) { return error("Changing type for " + name + "!\n"); };
  const auto twice = [](const std::string& name, const std::string& a, const std::string& b) {
    return "f[oz$Type[" + name + ", " + a + "], oz$Type[" + name + ", " + b + "]]";
  };
  check(read, {
                  {twice("x", "oz$Real", "oz$Real"), "f[x:Real,x:Real]"},
                  {twice("x", "oz$Real", "oz$Int"), "f[x:Real,x:Real]" + changing("x")},
                  {twice("x", "oz$ArrayType[oz$Real, 2]", "oz$ArrayType[oz$Real, 2]"),
                   "f[x:ArrayType[Real,{2}],x:ArrayType[Real,{2}]]"},
                  {twice("x", "oz$ArrayType[oz$Real, 2]", "oz$ArrayType[oz$Real, 3]"),
                   "f[x:ArrayType[Real,{2}],x:ArrayType[Real,{2}]]" + changing("x")},
                  {twice("x", "oz$MultiType[oz$Int]", "oz$MultiType[oz$Int, oz$Int]"),
                   "f[x:MultiType[Int],x:MultiType[Int]]" + changing("x")},
                  {twice("a[1]", "oz$Real", "oz$Int"), "f[<a[1]:Real>,<a[1]:Real>]" + changing("a[1]")},
                  {"oz$Type[Sin, oz$Real]", "%Sin" + changing("Sin")},
                  {"oz$Type[1, oz$Real]", "1" + error("Trying to set type for ExactIntConst.\n")},
              });
  // Named by no annotation, an application is no symbol.
  const std::string message = message_of([] { set_sym_type(read_tree("f[1]"), mRealType(nullptr)); });
  EXPECT_EQ(error("Trying to set type for SimpleFFE.\n"), message);
}

TEST_F(Ffparse, NamesOfSeveralTokens) {
  check(read,
        {
            {"f[a[1], oz$Type[a[1], oz$Real], a[1], a[2], g[a[ 1 ]]]",
             "f[a[1],<a[1]:Real>,<a[1]:Real>,a[2],g[<a[1]:Real>]]"},
            // The longest name wins; a shorter one inside counts when the longer one fails.
            {"f[oz$Type[a[1], oz$Real], oz$Type[b[a[1], 2], oz$Int], b[a[1], 2], b[a[1], 3], b[a[1]]]",
             "f[<a[1]:Real>,<b[a[1],2]:Int>,<b[a[1],2]:Int>,b[<a[1]:Real>,3],b[<a[1]:Real>]]"},
            {"f[oz$Type[a[1], oz$Real], oz$Type[a[1][2], oz$Int], a[1][2], a[1][3]]",
             "f[<a[1]:Real>,<(a[1])[2]:Int>,<(a[1])[2]:Int>,<a[1]:Real>[3]]"},
            // Tokens are compared by their text, of whatever length.
            {"f[oz$Type[a[\"1\"], oz$Int], a[1], a[\"1\"]]", "f[<a[\"1\"]:Int>,a[1],<a[\"1\"]:Int>]"},
            {"f[oz$Type[a[abcdefgh1, -1.5], oz$Int], a[abcdefgh1, -1.5], a[abcdefgh2, -1.5], a[abcdefgh, -1.5]]",
             "f[<a[abcdefgh1,-1.5]:Int>,<a[abcdefgh1,-1.5]:Int>,a[abcdefgh2,-1.5],a[abcdefgh,-1.5]]"},
            {"f[oz$Type[a[], oz$Int], a[], a, a[a]]", "f[<a[]:Int>,<a[]:Int>,a,a[a]]"},
            {"f[oz$Type[a[1][], oz$Int], oz$Type[a[1][][], oz$Real], a[1][], a[1][][], a[1][2], a[]]",
             "f[<(a[1])[]:Int>,<((a[1])[])[]:Real>,<(a[1])[]:Int>,<((a[1])[])[]:Real>,(a[1])[2],a[]]"},
            // Without a comma there is no name, and reading goes on as ever.
            {"f[oz$Type[a[1]], a[1], oz$Type[a[1], oz$Int], a[1]]", "f[oz$Type[a[1]],a[1],<a[1]:Int>,<a[1]:Int>]"},
            {"f[oz$Type[a[1], b, c], a[1]]", "f[oz$Type[<a[1]>,b,c],<a[1]>]"},
            // An annotation is no part of a name, nor is its symbol of one.
            {"f[oz$Type[b[a], oz$Int], b[oz$Type[a, oz$Real]]]", "f[<b[a:Real]:Int>,b[a:Real]]"},
            {"f[oz$Type[b[oz$Type[a[1], oz$Real], 2], oz$Int], b[a[1], 2]]",
             "f[b[<a[1]:Real>,2],b[<a[1]:Real>,2]]" + error("Trying to set type for SimpleFFE.\n")},
        });
}

TEST_F(Ffparse, ComponentNamesBecomeParts) {
  const std::string indices = fatal("Too many indices.", "   1,  1");
  check(eliminated, {
                        {"oz$x$C[3]", "XPart@1,1[x@1,1,3]"},
                        {"f[1, oz$x$C[oz$y$C[1]]]", "f@1,1[1,XPart@1,6[x@1,6,XPart@1,13[y@1,13,1]]]"},
                        {"oz$x$C[i][j]", "XPart@1,1[XPart@1,1[x@1,1,i@1,8],j@1,11]"},
                        {"oz$x$C[1][2][3]", "XPart@1,1[(XPart@1,1[x@1,1,1])[2],3]"},
                        {"g[1][oz$x$C[2]]", "(g@1,1[1])[XPart@1,6[x@1,6,2]]"},
                        {"oz$Tank`v$C[1]", "XPart@1,1[Tank`v@1,1,1]"},
                        {"Tank`oz$v$C[1]", "XPart@1,1[Tank@1,1`v@1,1,1]"},
                        {"oz$C[oz$x$Cy[1]]", "oz$C@1,1[oz$x$Cy@1,6[1]]"},
                        {"oz$x$C[1, 2]", indices},
                        {"oz$x$C[]", indices},
                        {"oz$x$C[1, 2][3]", indices},
                        {"oz$x$C[1][2, 3]", indices},
                    });
}

TEST_F(Ffparse, NestingIsBounded) {
  const auto nested = [](size_t n) { return repeated("f[", n) + "x" + repeated("]", n); };
  const auto heads = [](size_t n) { return "f" + repeated("[]", n); };
  for (const std::string& text : {nested(kMaxNesting), heads(kMaxNesting)})
    EXPECT_EQ("", message_of([&] {
                tAsynt tree = read_tree(text);
                Comp_elim(tree, &tree, nullptr);
                EXPECT_TRUE(CheckAsynt(tree));
              }));
  for (const std::string& text : {nested(kMaxNesting + 1), heads(kMaxNesting + 1), heads(50 * kMaxNesting)})
    EXPECT_EQ(too_deep(2 * kMaxNesting + 2), message_of([&] { read_tree(text); }));
  EXPECT_EQ(too_deep(2 * kMaxNesting + 2), message_of([&] { read_tree("g[" + heads(kMaxNesting) + "]"); }));
  EXPECT_EQ("", message_of([] { read_tree("oz$x$C" + repeated("[1]", 1000)); }));
}

TEST_F(Ffparse, TypesThatGrowFromNamedOnesAreBounded) {
  const auto type_of = [](int i) { return "oz$Type[v" + std::to_string(i) + ", oz$"; };
  std::string deep = "f[oz$Type[v0, oz$Real]";
  std::string large = deep;
  for (int i = 1; i <= 101; i++) {
    const std::string before = "v" + std::to_string(i - 1);
    deep += ", " + type_of(i) + "ArrayType[" + before + ", 2]]";
    large += ", " + type_of(i) + "ArrayType[oz$MultiType[" + before + ", " + before + "], 2]]";
  }
  EXPECT_EQ(fatal("Type nested too deeply (more than 100 levels)."), message_of([&] { read_tree(deep + "]"); }));
  EXPECT_EQ(fatal("Type too large."), message_of([&] { read_tree(large + "]"); }));
}

TEST_F(Ffparse, LongTextsAndManyNames) {
  const int count = 100000;
  std::string text = "f[";
  for (int i = 0; i < count; i++) text += "oz$Type[a[" + std::to_string(i) + "], oz$Real], ";
  for (int i = 0; i < count; i++) text += "a[" + std::to_string(i) + "], ";
  text += repeated("x", 100000) + ", " + repeated("y`", 50000) + "z]";
  std::vector<tAsynt> args;
  const tAsynt tree = read_tree(text);
  EXPECT_TRUE(CheckAsynt(tree));
  for (tAsynt l = FullFormExpression_Args(tree); Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l))
    args.push_back(Symbol_SymInfo(Expression1_Expression(l)));
  ASSERT_EQ(2 * count + 2, static_cast<int>(args.size()));
  for (int i = 0; i < count; i++) ASSERT_EQ(args[i], args[count + i]) << i;
  EXPECT_EQ(repeated("x", 100000), NamedSymbol_Name(args[2 * count]));
  EXPECT_EQ("z", std::string(NamedSymbol_Name(args[2 * count + 1])));
}

TEST_F(Ffparse, EveryReadingStartsAfresh) {
  EXPECT_EQ("f[x:Real,<a[1]:Int>]", read("f[oz$Type[x, oz$Real], oz$Type[a[1], oz$Int]]"));
  // Also behind readings that were cut short, more than texts can nest.
  for (int i = 0; i < 20; i++)
    EXPECT_EQ(fatal("Unexpected symbol 'y'", "   1, 39"), read("f[oz$Type[b[2], oz$Int], oz$Type[b[1] y ]"));
  EXPECT_EQ("f[x,a[1],b[2]]", read("f[x, a[1], b[2]]"));
}

TEST_F(Ffparse, TextsOneInAnother) {
  const std::string underflow = "   0,  0: ffscan: file stack underflow (too many calls of ffscan_CloseFile)\n";
  ffscan_Attribute.Position = NoPosition;
  EXPECT_EQ(underflow, message_of([] { ffscan_CloseFile(); }));
  EXPECT_EQ(fatal("Source string not initialized"), message_of([] { ffscan_BeginFile(""); }));
  ffscan_SetString("1, 2");
  ffscan_BeginFile("");
  EXPECT_EQ(fftInteger, ffscan_GetToken());
  ffscan_SetString("\"s\"");
  ffscan_BeginFile("");
  EXPECT_EQ(fftString, ffscan_GetToken());
  EXPECT_EQ(fftEndOfFile, ffscan_GetToken());
  EXPECT_EQ(fftComma, ffscan_GetToken());
  ffscan_SetString("x");
  EXPECT_EQ("   1,  2: ffscan: too many nested include files\n", message_of([] {
              for (int i = 0; i < 16; i++) ffscan_BeginFile("");
            }));
  for (int i = 0; i < 16; i++) ffscan_CloseFile();
  EXPECT_EQ(fftEndOfFile, ffscan_GetToken());
}

}  // namespace
}  // namespace oz
