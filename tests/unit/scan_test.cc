// The scanner: token classes, longest match, positions, comments, names, blocks of input, messages.

#include <cctype>

#include "model_text.h"
#include "tokens.h"

namespace oz {
namespace {

// A token as a word: an id as it is, int:12, real:2.5, "string", key:class, an operator by its spelling.
std::string word(int token) {
  switch (token) {
    case tokId: return NamedSymbol_Name(scan_Attribute.Symbol);
    case tokInteger: return std::string("int:") + scan_Attribute.Text;
    case tokReal: return std::string("real:") + scan_Attribute.Text;
    case tokString: return std::string("\"") + scan_Attribute.Text + '"';
    default: break;
  }
  const std::string name = parse_TokenName[token];
  return std::isalpha(name[0]) ? "key:" + name : name;
}

// All tokens, with their positions if wanted; the end stands as "end" then.
std::string scanned(const std::string& text, bool positions = false) {
  const SourceFile file(text);
  file.begin();
  std::string words;
  for (bool more = true; more;) {
    const int token = scan_GetToken();
    more = token != tokEndOfFile;
    if (!more && !positions) break;
    if (!words.empty()) words += ' ';
    words += more ? word(token) : "end";
    const tPosition p = scan_Attribute.Position;
    if (positions) words += '@' + std::to_string(p.Line) + ',' + std::to_string(p.Column);
  }
  return words;
}

TEST(Scan, TakesTheLongestToken) {
  for (const auto& [text, words] : table<2>(R"(
      a=.5 --> a =. int:5    x/.5 --> x /. int:5    12*x --> int:12 * x    12*^x --> int:12 * ^ x
      12*^3 --> int:12*^3    1*^-3 1*^+3 1*^- 3 --> int:1*^-3 int:1*^+3 int:1 * ^ - int:3
      1.*^2 .5*^-3 2.5*^3.5 --> real:1.*^2 real:.5*^-3 real:2.5*^3 real:.5                        -1 --> - int:1
      1. 1.. 1... --> real:1. real:1. . real:1. ..                         1.5.2 --> real:1.5 real:.2
      ..5 ...5 --> .. int:5 ... int:5               =! =!= == === ==== --> = ! =!= == === === =
      ^: ^:= ^= :== := --> ^ : ^:= ^= :== :=        / /; /. // //. //@ /// ///@ --> / /; /. // //. //@ // / // /@
      >>>> << <> <= => --> >>> > << <> <= =>        ]] [[[ }{ --> ] ] [[ [ } {
      x_ x__y ____ _.5 x_. --> x _ x __ y ___ _ _. int:5 x _.              ## #1 a`b !! '' --> ## # int:1 a ` b !! ' '
      $x1 $ a$b 1a --> $x1 $ a$b int:1 a
      Class class classes String string real --> Class key:class classes key:String string key:real
      (* (* *) *) a (* " *) b (*) *)c --> a b c     a*) (a)*b --> a * ) ( a ) * b                  -->
    )"))
    EXPECT_EQ(words, scanned(text)) << text;
  EXPECT_EQ("\"\" \"a\xff\x7f(*\" b", scanned("\"\" \"a\xff\x7f(*\" (**) b"));
}

TEST(Scan, EverySpellingIsItsToken) {
  for (int code = tokKeyModel; code < tokUnaryOp; code++) {
    const SourceFile file(parse_TokenName[code]);
    file.begin();
    EXPECT_EQ(code, scan_GetToken()) << parse_TokenName[code];
    EXPECT_EQ(tokEndOfFile, scan_GetToken()) << parse_TokenName[code];
  }
}

TEST(Scan, CountsLinesAndColumns) {
  const struct {
    const char* text;
    const char* words;
  } rows[] = {
      {"a b\n c", "a@1,1 b@1,3 c@2,2 end@2,3"},
      {"\ta\tb", "a@1,9 b@1,17 end@1,18"},
      {"1234567\ta", "int:1234567@1,1 a@1,9 end@1,10"},     // a tab in column 8 leads to 9
      {"12345678\ta", "int:12345678@1,1 a@1,17 end@1,18"},  // in column 9 to 17
      {"\"a\tb\" c", "\"a\tb\"@1,1 c@1,7 end@1,8"},         // inside a string it is one byte
      {"(*\t*)a", "a@1,11 end@1,12"},
      {"(*\n\n*)a\n", "a@3,3 end@4,1"},
      {"(* \xc3\xa5 *)a", "a@1,9 end@1,10"},  // columns count bytes
  };
  for (const auto& row : rows) EXPECT_EQ(row.words, scanned(row.text, true)) << row.text;
}

// A token may lie across the end of a block at any of its bytes.
TEST(Scan, BlocksDoNotShow) {
  const std::string tail = "name123(* c*\tc *)12.5*^-31 =!= \"some text\"(*(**)*)^:=//@";
  const std::string words = "name123 real:12.5*^-31 =!= \"some text\" ^:= //@";
  for (size_t pad = 8448 - 80; pad < 8448; pad++) ASSERT_EQ(words, scanned(std::string(pad, ' ') + tail)) << pad;
  const std::string name(100000, 'x');
  EXPECT_EQ(name + " " + name, scanned(name + " (*" + std::string(100000, '*') + "*)" + name));
  EXPECT_EQ("\"" + name + "\" int:1", scanned("\"" + name + "\"1"));
}

TEST(Scan, ReportsWhatIsNoToken) {
  const struct {
    std::string text;
    std::string messages;
    std::string words;
  } rows[] = {
      {"a \x7f b", "   1,  3: Error       illegal character: \x7f\n", "a b"},
      {"\\\xe5", "   1,  1: Error       illegal character: \\\n   1,  2: Error       illegal character: \xe5\n", ""},
      {std::string("a\0b", 3), std::string("   1,  2: Error       illegal character: \0\n", 43), "a b"},
      {"\"ab\nc\"d\"", "   1,  1: Error       illegal character: \"\n", "ab c \"d\""},
      {"a \"", "   1,  3: Error       illegal character: \"\n", "a"},
      {"(* (* *)", "   1,  9: Error       unclosed comment\n", ""},
      {"a\n(*\n", "   3,  1: Error       unclosed comment\n", "a"},
  };
  for (const auto& row : rows) {
    std::string words;
    EXPECT_EQ(row.messages, message_of([&] { words = scanned(row.text); }));
    EXPECT_EQ(row.words, words);
  }
}

// Every occurrence has nodes of its own; only the text is shared.
TEST(Scan, BindsNames) {
  init_oz_index();
  const SourceFile file("Sin x Sin x");
  file.begin();
  tAsynt symbols[4];
  for (tAsynt& symbol : symbols) scan_GetToken(), symbol = scan_Attribute.Symbol;
  for (const tAsynt* s : {&symbols[0], &symbols[1]}) {
    const bool predefined = s == &symbols[0];
    EXPECT_EQ(predefined ? kAbsoluteSymbol : kSimpleSymbol, Asynt_Kind(s[2]));
    EXPECT_EQ(predefined ? kPreDef : kNoType, Asynt_Kind(SymInfo_Type(s[2])));
    EXPECT_EQ(predefined ? 7u : 11u, SymInfo_Pos(s[2]).Column);
    EXPECT_NE(SymInfo_Type(s[0]), SymInfo_Type(s[2]));
  }
  EXPECT_EQ(NamedSymbol_Name(symbols[1]), NamedSymbol_Name(symbols[3]));
}

TEST(Scan, GivesTheTextOfTheToken) {
  const SourceFile file("  aBc1 \"Xy\"");
  file.begin();
  char text[16];
  scan_GetToken();
  EXPECT_EQ(4u, scan_GetWord(text));
  EXPECT_STREQ("aBc1", text);
  EXPECT_EQ(4u, scan_GetLower(text));
  EXPECT_STREQ("abc1", text);
  scan_GetToken();
  EXPECT_EQ(4u, scan_GetUpper(text));
  EXPECT_STREQ("\"XY\"", text);
}

TEST(Scan, FilesNest) {
  const SourceFile outer("a b");
  const SourceFile inner("x");
  outer.begin();
  EXPECT_EQ("a", word(scan_GetToken()));
  scan_BeginFile(inner.name().c_str());
  EXPECT_EQ("x", word(scan_GetToken()));
  EXPECT_EQ(tokEndOfFile, scan_GetToken());
  EXPECT_EQ("b", word(scan_GetToken()));
  EXPECT_EQ(tokEndOfFile, scan_GetToken());
  EXPECT_EQ(tokEndOfFile, scan_GetToken());
}

TEST(Scan, FileFailures) {
  const SourceFile file("a");
  scan_BeginScanner();
  EXPECT_EQ("   0,  0: scan: cannot open input file\n", message_of([] { scan_BeginFile("/no/such/file"); }));
  EXPECT_EQ("   0,  0: scan: file stack underflow (too many calls of scan_CloseFile)\n",
            message_of([] { scan_CloseFile(); }));
  EXPECT_EQ("   0,  0: scan: too many nested include files\n", message_of([&] {
              for (int i = 0; i < 17; i++) scan_BeginFile(file.name().c_str());
            }));
  scan_BeginScanner();
  scan_BeginFile("/");
  EXPECT_EQ(tokEndOfFile, scan_GetToken());  // a directory reads as empty
  EXPECT_EQ(1u, scan_Attribute.Position.Line);
  EXPECT_EQ(1u, scan_Attribute.Position.Column);
}

}  // namespace
}  // namespace oz
