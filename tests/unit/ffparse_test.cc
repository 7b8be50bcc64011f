// The full-form reader, from a text to the tree and to every message.

#include "ffparse.h"

#include "compelim.h"
#include "ffscan.h"
#include "support.h"
#include "typepat.h"

namespace oz {
namespace {

struct Ffparse : Trees {};

tAsynt read_tree(const std::string& text) {
  ffscan_SetString(text.c_str());
  ffscan_BeginFile("");
  return ffparse(1);
}

// The tree as one line and, behind it, what was reported.
std::string read(const std::string& text) {
  std::string result;
  const std::string reports = said([&] {
    const tAsynt tree = read_tree(text);
    EXPECT_TRUE(CheckAsynt(tree)) << text;
    EXPECT_TRUE(AsyntMarksAreZero(tree)) << text;
    result = tree_text(tree);
  });
  return result + (result.empty() || reports.empty() ? "" : " | ") + reports;
}

std::string eliminated(const std::string& text) {
  std::string result;
  const std::string reports = said([&] {
    tAsynt tree = read_tree(text);
    Comp_elim(tree, &tree, nullptr);
    EXPECT_TRUE(CheckAsynt(tree)) << text;
    result = tree_text(tree, true);
  });
  return result + reports;
}

void check(const char* rows) {
  for (const auto& [text, expected] : table<2>(rows)) EXPECT_EQ(expected, read(text)) << text;
}

// The message of a nesting that is one level too deep.
std::string too_deep(size_t column) {
  return "F1," + std::to_string(column) + " expression nested too deeply (more than " + std::to_string(kMaxNesting) +
         " levels)";
}

TEST_F(Ffparse, Trees) {
  check(R"(
      x --> x         Plus[a, Times[2, b]] --> %Plus[a,%Times[2,b]]   f[] --> f[]     f[a][b][] --> ((f[a])[b])[]
      f[g[1], h[][2], "s"] --> f[g[1],(h[])[2],"s"]   f[a`b`x, a``b, a`] --> f[a`b`x,a``b,a`]
      // Numbers take the generators' form.
      f[12., .5, -3.25, -7, 007] --> f[12.,.5,-3.25,-7,007]
      f[1.5*^3, 1.5*^-3, -.5*^2, -2.5*^-10] --> f[1.5e03,1.5e-03,-.5e02,-2.5e-010]
      f[2000000000, -1999999999, 0002000000000] --> f[2000000000,-1999999999,0002000000000]
      2000000001 --> 2000000001.0 | W1,1 Large integer constant 2000000001.  Converted to real.
      -2000000000 --> -2000000000.0 | W1,1 Large integer constant -2000000000.  Converted to real.
      f[(* one (* two *) " *) a,\nb] --> f[a,b]     x (* never (* closed *) --> x                 (**)x(*)*) --> x
      // Illegal characters are passed over.
      f[@a,1] --> f[a,1] | E1,3 Illegal character: @            -.5 --> .5 | E1,1 Illegal character: -
      f[.,1] --> E1,3 Illegal character: . | F Internal error in line 405 of ffparse
      3*^2 --> E1,2 Illegal character: * | E1,3 Illegal character: ^ | F Internal error in line 288 of ffparse
      (x --> x | E1,1 Illegal character: (
    )");
  EXPECT_EQ("$x1[a\304b]", read("$x1[a\304b]"));
  EXPECT_EQ("f[a,1] | E1,5 Illegal character: \\177", read("f[a,\x7f"
                                                           "1]"));
  EXPECT_EQ("f[a] | E1,3 Illegal character: \" | E1,5 Illegal character: \\351 | E1,6 Illegal character: \"",
            read("f[\"a\xe9\"]"));
  // A tab goes to the next of the columns 1, 9, 17, ..., but is one column wide in a string.
  EXPECT_EQ("f@2,9[\"\t\",x@2,16]", tree_text(read_tree(" (* \n*)\tf[\"\t\", x]"), true));
  EXPECT_EQ("x@1,17", tree_text(read_tree("(*1234\t*)\tx"), true));
  const tAsynt args = FullFormExpression_Args(read_tree("f[x, a`x, a`x, x]"));
  const tAsynt last = Expression1_Expressions(Expression1_Expressions(Expression1_Expressions(args)));
  EXPECT_EQ(Symbol_SymInfo(Expression1_Expression(args)), Symbol_SymInfo(Expression1_Expression(last)));
}

// By message, the texts that end in it.
TEST_F(Ffparse, FaultsOfTheFormAreFatal) {
  const std::pair<const char*, std::vector<const char*>> rows[] = {
      {"F The Evaluate-value generated for Evaluate-function has wrong syntax. Premature EOF found.",
       {"", "f[", "f[a", "f[a,", "oz$Type"}},
      {"F Too many closing brackets.", {"a]", "f[a]]"}},
      {"F I would have prefered an EOF instead of the comma.", {"a, b"}},
      {"F1,5 Unexpected symbol 'g`h'", {"f[] g`h"}},
      {"F1,5 Unexpected symbol 'x'", {"f[1 x]"}},
      {"F1,9 Unexpected symbol 'x'", {"oz$Type x"}},
      {"F Internal error in line 288 of ffparse", {"1 2", "a \"s\"", "oz$Type 1.5"}},
      {"F Internal error in line 345 of ffparse", {"[", "1[2]", "f[["}},
      {"F Internal error in line 368 of ffparse", {"]", "f[a,]", "f[oz$Type]"}},
      {"F Internal error in line 405 of ffparse", {",", "f[,a]", "f[a,,b]", "f[oz$Type,a]"}}};
  for (const auto& [message, texts] : rows)
    for (const char* text : texts) EXPECT_EQ(message, read(text)) << text;
}

TEST_F(Ffparse, AnnotationsGiveTypes) {
  check(R"(
      oz$Type[x, oz$ArrayType[oz$Int, 2, -1]] --> x:ArrayType[Int,{2,-1}]
      oz$Type[x, oz$MultiType[oz$Int, oz$ArrayType[oz$Bool, 0]]] --> x:MultiType[Int,ArrayType[Bool,{0}]]
      f[oz$Type[x, oz$Int], oz$Type[y, x]] --> f[x:Int,y:Int]   oz$Type[oz$Type[x, oz$Real], oz$Real][1] --> x:Real[1]
      oz$Type[x, y, z] --> oz$Type[x,y,z]                       oz$Type[] --> oz$Type[]
      oz$Type[x, oz$ArrayType[oz$Real]] --> x:ArrayType[Real,{0}] | E Strange index type. should be int.
      oz$Type[x, oz$ArrayType[oz$Real, n, 3, 2.5, "7"]] --> \
          x:ArrayType[Real,{0,3,2,7}] | E Strange index type. should be int. | E Strange index type. should be int. | \
          E Strange index type. should be int.
      oz$Type[x, oz$ArrayType[oz$Real, g[1]]] --> x:ArrayType[Real,{0}] | E Strange index type. should be int.
      oz$Type[x, oz$MultiType[oz$Int, oz$MultiType[oz$Int]]] --> F Nested MultiTypes not allowed (?)
      oz$Type[x, oz$ArrayType[]] --> F Internal error in line 48 of typepat
      oz$Type[x, g[oz$Real]] --> F Internal error in line 48 of typepat
      oz$Type[x, 1] --> F Internal error in line 48 of typepat
      // One symbol has one type.
      f[oz$Type[x, oz$Real], oz$Type[x, oz$Real]] --> f[x:Real,x:Real]
      f[oz$Type[x, oz$ArrayType[oz$Real, 2]], oz$Type[x, oz$ArrayType[oz$Real, 2]]] --> \
          f[x:ArrayType[Real,{2}],x:ArrayType[Real,{2}]]
      f[oz$Type[x, oz$ArrayType[oz$Real, 2]], oz$Type[x, oz$ArrayType[oz$Real, 3]]] --> \
          f[x:ArrayType[Real,{2}],x:ArrayType[Real,{2}]] | E Changing type for x! |\s
      f[oz$Type[x, oz$MultiType[oz$Int]], oz$Type[x, oz$MultiType[oz$Int, oz$Int]]] --> \
          f[x:MultiType[Int],x:MultiType[Int]] | E Changing type for x! |\s
      f[oz$Type[a[1], oz$Real], oz$Type[a[1], oz$Int]] --> f[<a[1]:Real>,<a[1]:Real>] | E Changing type for a[1]! |\s
      oz$Type[Sin, oz$Real] --> %Sin | E Changing type for Sin! |\s
      oz$Type[1, oz$Real] --> 1 | E Trying to set type for ExactIntConst. |\s
    )");
  // Named by no annotation, an application is no symbol.
  EXPECT_EQ("E Trying to set type for SimpleFFE. | ",
            said([] { set_sym_type(read_tree("f[1]"), mRealType(nullptr)); }));
}

TEST_F(Ffparse, NamesOfSeveralTokens) {
  check(R"(
      f[a[1], oz$Type[a[1], oz$Real], a[1], a[2], g[a[ 1 ]]] --> f[a[1],<a[1]:Real>,<a[1]:Real>,a[2],g[<a[1]:Real>]]
      // The longest name wins; a shorter one inside counts when the longer one fails.
      f[oz$Type[a[1], oz$Real], oz$Type[b[a[1], 2], oz$Int], b[a[1], 2], b[a[1], 3], b[a[1]]] --> \
          f[<a[1]:Real>,<b[a[1],2]:Int>,<b[a[1],2]:Int>,b[<a[1]:Real>,3],b[<a[1]:Real>]]
      f[oz$Type[a[1], oz$Real], oz$Type[a[1][2], oz$Int], a[1][2], a[1][3]] --> \
          f[<a[1]:Real>,<(a[1])[2]:Int>,<(a[1])[2]:Int>,<a[1]:Real>[3]]
      // Tokens are compared by their text, of whatever length.
      f[oz$Type[a["1"], oz$Int], a[1], a["1"]] --> f[<a["1"]:Int>,a[1],<a["1"]:Int>]
      f[oz$Type[a[abcdefgh1, -1.5], oz$Int], a[abcdefgh1, -1.5], a[abcdefgh2, -1.5], a[abcdefgh, -1.5]] --> \
          f[<a[abcdefgh1,-1.5]:Int>,<a[abcdefgh1,-1.5]:Int>,a[abcdefgh2,-1.5],a[abcdefgh,-1.5]]
      f[oz$Type[a[], oz$Int], a[], a, a[a]] --> f[<a[]:Int>,<a[]:Int>,a,a[a]]
      f[oz$Type[a[1][], oz$Int], oz$Type[a[1][][], oz$Real], a[1][], a[1][][], a[1][2], a[]] --> \
          f[<(a[1])[]:Int>,<((a[1])[])[]:Real>,<(a[1])[]:Int>,<((a[1])[])[]:Real>,(a[1])[2],a[]]
      // Without a comma there is no name, and reading goes on as ever.
      f[oz$Type[a[1]], a[1], oz$Type[a[1], oz$Int], a[1]] --> f[oz$Type[a[1]],a[1],<a[1]:Int>,<a[1]:Int>]
      f[oz$Type[a[1], b, c], a[1]] --> f[oz$Type[<a[1]>,b,c],<a[1]>]
      // An annotation is no part of a name, nor is its symbol of one.
      f[oz$Type[b[a], oz$Int], b[oz$Type[a, oz$Real]]] --> f[<b[a:Real]:Int>,b[a:Real]]
    )");
}

TEST_F(Ffparse, ComponentNamesBecomeParts) {
  for (const auto& [text, expected] : table<2>(R"(
      oz$x$C[3] --> XPart@1,1[x@1,1,3]      f[1, oz$x$C[oz$y$C[1]]] --> f@1,1[1,XPart@1,6[x@1,6,XPart@1,13[y@1,13,1]]]
      oz$x$C[i][j] --> XPart@1,1[XPart@1,1[x@1,1,i@1,8],j@1,11]
      oz$x$C[1][2][3] --> XPart@1,1[(XPart@1,1[x@1,1,1])[2],3]
      g[1][oz$x$C[2]] --> (g@1,1[1])[XPart@1,6[x@1,6,2]]       oz$Tank`v$C[1] --> XPart@1,1[Tank`v@1,1,1]
      Tank`oz$v$C[1] --> XPart@1,1[Tank@1,1`v@1,1,1]           oz$C[oz$x$Cy[1]] --> oz$C@1,1[oz$x$Cy@1,6[1]]
      oz$x$C[1, 2] --> F1,1 Too many indices.                  oz$x$C[] --> F1,1 Too many indices.
      oz$x$C[1, 2][3] --> F1,1 Too many indices.               oz$x$C[1][2, 3] --> F1,1 Too many indices.
    )"))
    EXPECT_EQ(expected, eliminated(text)) << text;
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
    EXPECT_EQ(too_deep(2 * kMaxNesting + 2), said([&] { read_tree(text); }));
  EXPECT_EQ(too_deep(2 * kMaxNesting + 2), said([&] { read_tree("g[" + heads(kMaxNesting) + "]"); }));
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
  EXPECT_EQ("F Type nested too deeply (more than 100 levels).", said([&] { read_tree(deep + "]"); }));
  EXPECT_EQ("F Type too large.", said([&] { read_tree(large + "]"); }));
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
    EXPECT_EQ("F1,39 Unexpected symbol 'y'", read("f[oz$Type[b[2], oz$Int], oz$Type[b[1] y ]"));
  EXPECT_EQ("f[x,a[1],b[2]]", read("f[x, a[1], b[2]]"));
}

TEST_F(Ffparse, TextsOneInAnother) {
  const std::string underflow = "   0,  0: ffscan: file stack underflow (too many calls of ffscan_CloseFile)\n";
  ffscan_Attribute.Position = NoPosition;
  EXPECT_EQ(underflow, message_of([] { ffscan_CloseFile(); }));
  EXPECT_EQ("F Source string not initialized", said([] { ffscan_BeginFile(""); }));
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
