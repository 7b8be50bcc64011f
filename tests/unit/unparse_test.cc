// The source unparser: the text of each kind, and whether it reads as the same tree again; priorities, lists,
// indentation, and what the output layer promises.

#include "unparse.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Asynt.h"
#include "fatal_text.h"
#include "model_text.h"
#include "oz.h"
#include "tree_text.h"

namespace oz {
namespace {

// A node of any kind from its children in field order; an operator's PosConv comes by itself.
tAsynt node(Asynt_tKind kind, std::initializer_list<tAsynt> children) {
  tAsynt t = Asynt_New(kind, Asynt_Schema.kinds[kind].field_count);
  size_t slot = 0;
  if (Asynt_IsType(t, kOperator)) tree_raw_slot<tAsynt>(t, slot++) = mkNonConvPos(tPosition{1, 2});
  for (tAsynt child : children) tree_raw_slot<tAsynt>(t, slot++) = child;
  return t;
}

tAsynt sym(const char* name) { return mSymbol(mSimpleSymbol(mNoType(), tPosition{1, 2}, name)); }
tAsynt num(const char* digits) { return mExactIntConst(digits); }
tAsynt blank() { return mBlank(mEmpty()); }

tAsynt list(std::initializer_list<tAsynt> items) {
  tAsynt result = mExpression0();
  for (auto item = std::rbegin(items); item != std::rend(items); ++item) result = mExpression1(*item, result);
  return result;
}

tAsynt symbols(std::initializer_list<tAsynt> items) {
  tAsynt result = mSymbol0();
  for (auto item = std::rbegin(items); item != std::rend(items); ++item) result = mSymbol1(*item, result);
  return result;
}

tAsynt call(const char* name, std::initializer_list<tAsynt> args) { return mSimpleFFE(list(args), sym(name)); }
tAsynt path(std::initializer_list<tAsynt> components, const char* name) {
  return mSymbol(mAbsoluteSymbol(mNoType(), tPosition{1, 2}, name, list(components)));
}
tAsynt nary(Asynt_tKind kind, std::initializer_list<tAsynt> items) { return node(kind, {list(items)}); }
tAsynt hidden() { return mNonAlgAuxiliary(sym("unseen")); }

tAsynt external() { return mExternalDeclaration("pre", "ctx", "C", mExternalFunctionReturns(), mParameterspec0()); }

struct UnparseTest : ModelText {
  static tAsynt expression(const std::string& text) {
    return Binary_RHS(Particle1_Particle(Model_Globals(parsed("x := (" + text + ");"))));
  }

  // The text is as given, and reads as the same tree again.
  static void expect_to_read_again(const std::vector<std::pair<const char*, const char*>>& rows) {
    for (const auto& [source, text] : rows) {
      tAsynt tree = expression(source);
      EXPECT_STREQ(text, unparse_string(tree));
      EXPECT_EQ(tree_text(tree), tree_text(expression(text))) << text;
    }
  }
};

struct Row {
  tAsynt tree;
  const char* text;
};

void expect_rows(const std::vector<Row>& rows) {
  for (const Row& row : rows) EXPECT_STREQ(row.text, unparse_string(row.tree));
}

// What one of the stream printers writes.
std::string text_of(void (*print)(FILE*, tAsynt), tAsynt tree) {
  char* text = nullptr;
  size_t size = 0;
  FILE* f = open_memstream(&text, &size);
  print(f, tree);
  std::fclose(f);
  std::string result(text, size);
  std::free(text);
  return result;
}

TEST_F(UnparseTest, Declarations) {
  tAsynt model = parsed(
      "packages \"A`\", \"B`\"; g := 1; real k;"
      "class A(p, q) inherits B(2, 0), C part w[i, j] inherits D(i); part v inherits D; hide {g}: x; y := 1; end;"
      "class B end; instance a expose: static z := 2; once o := 3; end a; instance s[i] inherits A(i, 2) end;");
  EXPECT_STREQ(
      "g:=1;\nk;\n"
      "class A(p, q) inherits B(2, 0), C\npart w[i, j] inherits D(i);\npart v inherits D;\nx;\ny:=1;\nend;\n"
      "class B\nend;\n"
      "instance a\nz:=2;\no:=3;\nend;\n"
      "instance s[i] inherits A(i, 2)\nend;\n",
      unparse_string(model));
  EXPECT_STREQ("\"A`\", \"B`\"", unparse_string(Model_Packages(model)));
}

TEST_F(UnparseTest, Types) {
  expect_rows({
      {mArrayType(mRealType(nullptr), list({num("3"), num("0"), mIntConst(0)})), " Array [3 ,_ ,0] of  Real "},
      {mArrayType_s(mIntType_s(nullptr), mIntConst1(mIntConst(-1), mIntConst0())), " Array [-1] of  Integer "},
      {mMultiType(mType1(mComplexType(nullptr), mType1(mBoolType(nullptr), mType0()))),
       " MultiType:[  Complex  Bool   ] "},
      {mStringType(nullptr), " String "},
      {mNoType(), " undefined type "},
      {mPreDef(nullptr, cunary), "Predef"},
  });
}

TEST_F(UnparseTest, ExpressionsThatReadAgain) {
  expect_to_read_again({
      {"f[]", "f[]"},
      {"f[a + b, 0, (a; b)]", "f[a+b, 0, a;\nb]"},
      {"f[i][x][]", "f[i][x][]"},
      {"x'[t]", "(x')[t]"},
      {"(#&)[1]", "(# &)[1]"},
      {"a[[2]][1]", "(a[[2]] )[1]"},
      {"f[x][[y, 1]]", "(f[x])[[y,1]] "},
      {"{}", " {  } "},
      {"{a, {1, b}}", " { a,  { 1, b }  } "},
      {"`a`p[2]`x", "a`p[2]`x"},
      {"this`h`x[i]", "this`h`x[i]"},
      {"this", "this"},
      {"1.5*^3 + 12*^-2 + .5 + 1.", "1.5*^3+12*^-2+.5+1."},
      {"\"a \\ %s\"", "\"a \\ %s\""},
      {"#[##, #3, ##2]", "#[##, #3, ##2]"},
      {"f::bad", "f::\"bad\""},
      {"f::bad::Latin", "f::\"bad\"::\"Latin\""},
      {"a + 2*b + 0", "a+2*b+0"},
      {"a - b - c", "(a-b)-c"},
      {"a - (b - c)", "a-(b-c)"},
      {"-a^2", "-a^2"},
      {"a^b^c", "a^(b^c)"},
      {"a*b/c", "a*b/c"},
      {"(a + b)!", "(a+b)!"},
      {"(a + b)'''", "(a+b)'''"},
      {"!a && b || c", "!a&&b||c"},
      {"a :== b + 1", "a:==b+1"},
      {"a = b := c", "a=(b:=c)"},
      {"f[i] => x", "(f[i])=>x"},
      {"a + b < 0 == (c || d)", "a+b < 0 == (c||d)"},
      {"(a = b + 1); (b; c)", "a=b+1;\nb;\nc"},
      {"a = 1 >> f", "a=1>>\"f\""},
      {"(a >> f) >>> g", "(a>>\"f\")>>>\"g\""},
      {"<< f", "<< \"f\""},
      {"t /: a + b = c = d", "t/: a+b = c=d"},
      {"t /: a := d", "t/: a := d"},
      {"t /: a =.", "t/: a =."},
      {"f[x_, y__, z___, _, u_.]", "f[x_, y__, z___, _, u_.]"},
      {"x___Integer", "x___Integer"},
      {"x__ a + b", "x__(a+b)"},
      {"x : a + b /; c", "x:a+b/;c"},
      {"Module[{u = 1}, u; v]", "Module [ { u = 1 },\nu;\nv]"},
      {"Block[{}, u]", "Block [ {  },\nu]"},
  });
}

// An expression with parentheses around every operand. Left out is what the model language reads otherwise than the
// host: the postfix "!" and the head of a blank, which reach further, and an operator without an operand.
std::string random_expression(std::mt19937* random, int depth) {
  static const char* const leaves[] = {"a", "b", "2", ".5", "1.", "\"s\"", "#", "this", "f[x_]"};
  static const char* const prefixes[] = {"-", "!", "++", "--"};
  static const char* const postfixes[] = {"'", "!!", "++", "--", "..", "...", "&", "[]", "=>x"};
  static const char* const infixes[] = {
      "<>", "**", ".",  "*",   "+",  "^",  "/",  "-",  "===", "=!=", "&&",  "||", "|",  "==", "<",  ">=",  "/;",
      "->", ":>", "/.", "//.", "+=", "-=", "*=", "/=", "=",   ":=",  "^:=", "?",  "/@", ";",  "@@", ":==", "//@"};
  const auto one_of = [=](const auto& texts) { return std::string(texts[(*random)() % std::size(texts)]); };
  const auto operand = [=] { return "(" + random_expression(random, depth - 1) + ")"; };
  const unsigned form = depth == 0 ? 0 : (*random)() % 16;
  if (form == 0) return one_of(leaves);
  if (form < 3) return one_of(prefixes) + operand();
  if (form < 6) return operand() + one_of(postfixes);
  if (form == 6) return operand() + "[[" + operand() + "]]";
  if (form == 7) return operand() + "[" + operand() + "," + operand() + "]";
  if (form == 8) return "{" + operand() + "," + operand() + "}";
  return operand() + one_of(infixes) + operand();
}

TEST_F(UnparseTest, RandomExpressionsReadAgain) {
  std::mt19937 random(1);
  std::string sources, texts;
  for (int i = 0; i < 5000; i++) sources += "x := (" + random_expression(&random, 1 + i % 5) + ");";
  tAsynt before = Model_Globals(parsed(sources));
  for (tAsynt t = before; Asynt_Kind(t) == kParticle1; t = Particle1_Particles(t))
    texts += std::string("x := (") + unparse_string(Binary_RHS(Particle1_Particle(t))) + ");";
  tAsynt after = Model_Globals(parsed(texts));
  for (; Asynt_Kind(before) == kParticle1; before = Particle1_Particles(before), after = Particle1_Particles(after))
    ASSERT_EQ(tree_text(Particle1_Particle(before)), tree_text(Particle1_Particle(after)))
        << unparse_string(Particle1_Particle(before));
}

TEST_F(UnparseTest, FormsOfThePasses) {
  tAsynt sum = nary(kXPlus, {sym("a"), sym("b")});
  tAsynt set = node(kXSet, {sym("a"), sum});
  tAsynt x_ = mXPattern(sym("x"), blank());
  expect_rows({
      {path({}, "Protect"), "Protect"},
      {path({sym("a"), call("p", {num("2")})}, "x"), "a`p[2]`x"},
      {path({path({}, "")}, "indices"), "`indices"},
      {mSymbol(mAbsoluteNest(mNoType(), tPosition{1, 2}, call("a", {sym("i")}))), "a[i]"},
      {mSymbol(mTempSymbol(mNoType(), tPosition{1, 2}, 7)), "Temp_7"},
      {mSymbol(mOutParam(mNoType(), tPosition{12, 3}, 2)), "Output (return) parameter no. 2 at line 12:3 "},
      {symbols({sym("a"), sym("b")}), "ab"},
      {mAlgAuxiliary(set), "a=a+b"},
      {nary(kXTimes, {num("2"), mAlgAuxiliary(sum)}), "2*(a+b)"},
      {hidden(), ""},
      {mEmpty(), ""},
      {mComment("Class: ", "A"), "(* Class: A *)\n"},
      {nary(kXCompoundExpression, {sum, nary(kXCompoundExpression, {sym("a"), sym("b")})}), "a+b;\n(a;\nb)"},
      {nary(kXCompoundExpression, {set}), "a=a+b"},
      {nary(kXCompoundExpression, {}), ""},
      {mOptional(x_, num("1")), "x_."},
      {mOptional(blank(), mEmpty()), "_."},
      {node(kXUnset, {call("f", {x_})}), "f[x_]=."},
      {nary(kXPlus, {sum}), "(a+b)"},  // a prefix plus prints as its operand
      {nary(kXTimes, {num("2"), nary(kXPlus, {sym("a")})}), "2*a"},
      {node(kXPower, {nary(kXPlus, {sym("a")}), num("2")}), "(a)^2"},
      {node(kXSin, {sum}), "XSin[a+b]"},
      {node(kDeriv, {num("2"), sum}), "Derivative[2][a+b]"},
      {node(kXMod, {sum, num("0")}), "XMod[a+b,0]"},
      {nary(kXMax, {sym("a"), num("0")}), "aXMax0"},
      {node(kXDrop, {sum, num("0")}), "Drop [ a+b , 0 ] "},
      {node(kXIf, {sym("c"), sum, sum}), " XIf[args...] "},
      {mIntConst(-12), "-12"},
      {mRealConst(0.5), "0.500000"},
      {mXPi(), "Pi[]"},
      {mXI(), "I "},
      {mXAll(), "All"},
      {mXBlank(), "_"},
  });
}

// In a list of items "0" stands for an unknown size; an argument or an operand keeps it.
TEST_F(UnparseTest, ZeroInLists) {
  tAsynt zero = num("0");
  expect_rows({
      {nary(kXList, {zero, num("1")}), " { _, 1 } "},
      {nary(kXPart, {zero, zero, sym("a")}), "0[[_,a]] "},
      {nary(kXDimensions, {sym("a"), zero}), " XDimensions[ a, _ ] "},
      {nary(kXSetShape, {sym("a"), zero}), " XSetShape[ a, _ ] "},
      {nary(kXJoin, {sym("a"), zero}), " Join[ a, _ ] "},
      {nary(kCross, {sym("a"), zero}), "Cross[a, _]"},
      {call("f", {zero, nary(kXPlus, {sym("a"), zero})}), "f[0, a+0]"},
      {node(kXSet, {sym("a"), zero}), "a=0"},
  });
}

// An operator of this kind around an operand.
tAsynt around(Asynt_tKind kind, tAsynt operand) {
  const auto is = [=](Asynt_tKind family) { return kind >= family && kind <= Asynt_TypeRange[family]; };
  if (kind == kXPut || kind == kXPutAppend) return node(kind, {operand, mFilename("f")});
  if (kind == kDeriv) return node(kind, {mIntConst(1), operand});
  if (kind == kXPart) return nary(kind, {operand, sym("b")});
  if (kind == kIndirect) return node(kind, {operand, sym("b")});
  if (kind == kXInequality) return mXInequality(list({sym("b"), nary(kXLess, {}), operand}));
  if (is(kUnary)) return node(kind, {operand});
  if (is(kVariadic)) return nary(kind, {sym("b"), operand});
  return node(kind, {sym("b"), operand});
}

// Operators in ascending priority, next between two levels; neighbours within a level must bracket each other.
TEST_F(UnparseTest, ParenthesesByPriority) {
  constexpr Asynt_tKind next = kNoAsynt;
  // clang-format off
  const Asynt_tKind order[] = {
      kXPut, kXPutAppend, next, kXSet, kXSetDelayed, kXUpSet, kXUpSetDelayed, kXUnset, kSetStatic, kSetOnce,
      kSubstitute, next, kXFunction, next, kXAddTo, kXSubtractFrom, kXTimesBy, kXDivideBy, next, kXReplaceAll,
      kXReplaceRepeated, next, kXRule, kXRuleDelayed, next, kXCondition, next, kXPattern, next, kXAlternatives,
      next, kXRepeated, kXRepeatedNull, next, kXOr, next, kXAnd, next, kXNot, next, kXSameQ, kXUnsameQ, next,
      kXEqual, kXUnequal, kXGreater, kXLess, kXGreaterEqual, kXLessEqual, kXInequality, next, kXPlus, kXSubtract,
      next, kXTimes, next, kXDivide, next, kXMinus, next, kXPower, next, kXDot, next, kXNonCommutativeMultiply,
      next, kXStringJoin, next, kDeriv, next, kXFactorial, kXFactorial2, next, kXMap, kXMapAll, kXApply, next,
      kXIncrement, kXDecrement, kXPreIncrement, kXPreDecrement, next, kIndirect, kXPart, next, kXPatternTest};
  // clang-format on
  const auto bracketed = [](Asynt_tKind outer, Asynt_tKind inner) {
    return std::string(unparse_string(around(outer, around(inner, sym("a"))))).find('(') != std::string::npos;
  };
  Asynt_tKind low = order[0];
  for (size_t i = 1; i < std::size(order); i++) {
    const bool same_level = order[i] != next;
    if (!same_level) i++;
    const Asynt_tKind high = order[i];
    EXPECT_TRUE(bracketed(high, high) && bracketed(high, low)) << Asynt_NodeName(high);
    EXPECT_EQ(same_level, bracketed(low, high)) << Asynt_NodeName(low) << " " << Asynt_NodeName(high);
    low = high;
  }
}

// Neighbours that the host would read as one operator or number are kept apart, others are not.
TEST_F(UnparseTest, SignsThatWouldRunTogether) {
  expect_to_read_again({
      {"a - (-b)", "a- -b"},
      {"a - (--b)", "a- --b"},
      {"-(--b)", "- --b"},
      {"-(-b)", "-(-b)"},
      {"-(++b)", "-++b"},
      {"a + (++b) + (-b) + (--b)", "a+ ++b+-b+--b"},
      {"a++ + b", "a+++b"},
      {"a-- - b", "a---b"},
      {"(a!) = b", "a! =b"},
      {"a!! = b", "a!!=b"},
      {"a = .5", "a= .5"},
      {"a := .5", "a:=.5"},
      {"a / .5", "a/ .5"},
      {"2 * .5", "2*.5"},
      {"2 . v . 3", "2 .v. 3"},
      {"1 ..", "1 .."},
      {"(_)..", "_ .."},
  });
  expect_rows({
      {nary(kXDot, {mBlank(sym("h")), sym("v")}), "_h.v"},
      {node(kXSubtract, {sym("a"), mIntConst(-1)}), "a- -1"},
      {node(kXSubtract, {sym("a"), nary(kXPlus, {node(kXPreDecrement, {sym("b")})})}), "a- --b"},
      {nary(kXUnequal, {node(kXFactorial, {sym("a")}), sym("b")}), "a! !=b"},
      {nary(kXLess, {sym("a"), mXGet(mFilename("f"))}), "a< << \"f\""},
  });
}

TEST_F(UnparseTest, PackageWithIndentation) {
  tAsynt external_function = node(kXSetDelayed, {call("g", {}), external()});
  tAsynt module = mXModule(symbols({sym("u"), sym("v"), sym("w")}), list({num("1"), mEmpty(), sym("u")}),
                           nary(kXCompoundExpression, {sym("u"), sym("v")}));
  tAsynt part = mContext(path({sym("a")}, "p"), list({sym("z")}));
  tAsynt bare = mContext(path({}, "b"), list({sym("this"), mComment("Instance body: ", "b")}));
  tAsynt inner = mContext(path({}, "a"), list({mEmpty(), mComment("Class: ", "A"), external_function, sym("x"),
                                               node(kXSetDelayed, {sym("f"), module}), hidden(), part}));
  tAsynt needs = mFilename1(mFilename("Operators`"), mFilename1(mFilename("Iterators`"), mFilename0()));
  tAsynt package = mPackage(sym("Tank"), needs, list({hidden(), sym("g"), sym("a"), inner, bare}));
  const char* const text =
      "BeginPackage[\"Tank`\", { \"Operators`\", \"Iterators`\" } ];\n"
      "\n"
      "  g;\n"
      "  a;\n"
      "  Begin[\"a`\"];\n"
      "\n"
      "    ;\n"
      "    (* Class: A *)\n"
      "    x;\n"
      "    f:=(Module [ { u = 1,\n"
      "      v,\n"
      "      w = u },\n"
      "      u;\n"
      "      v]);\n"
      "    Begin[\"a`p`\"];\n"
      "\n"
      "      z\n"
      "\n"
      "    End[]\n"
      "\n"
      "  End[];\n"
      "  Begin[\"b`\"];\n"
      "\n"
      "    this;\n"
      "    (* Instance body: b *)\n"
      "  \n"
      "\n"
      "  End[]\n"
      "EndPackage[];\n";
  EXPECT_EQ(text, text_of(unparse_filep, package));
  EXPECT_EQ("Begin[\"b`\"];\n\nthis;\n(* Instance body: b *)\n\n\nEnd[]", text_of(unparse_file, bare));
  EXPECT_EQ("BeginPackage[\"m`\"];\n\n\nEndPackage[];\n",
            text_of(unparse_filep, mPackage(sym("m"), mFilename0(), mExpression0())));
}

TEST_F(UnparseTest, SkippedBrackets) {
  tAsynt two = mComplexFFE(list({sym("j")}), call("a", {sym("i")}));
  tAsynt nested = call("a", {call("b", {sym("i")})});
  const struct {
    tAsynt tree;
    int count;
    bool result;
    const char* text;
  } rows[] = {
      {two, 0, true, "a[i][j]"},
      {two, 1, true, "a[j]"},
      {two, 2, true, "a"},
      {two, 3, false, "a[i][j]"},
      {sym("a"), 1, false, "a"},
      {sym("a"), 0, true, "a"},
      {nested, 1, true, "a]"},  // a group ends at its first
                                // "]"
      {nested, 2, false, "a[b[i]]"},
  };
  for (const auto& row : rows) {
    std::string text;
    EXPECT_EQ(row.result, unparse_and_skip_brackets(&text, row.tree, row.count));
    EXPECT_EQ(row.text, text);
  }
}

TEST_F(UnparseTest, LongListsAndPieces) {
  constexpr int kItems = 1000000;
  tAsynt items = mExpression0();
  for (int i = 0; i < kItems; i++) items = mExpression1(num("7"), items);
  std::string sum = "7";
  for (int i = 1; i < kItems; i++) sum += "+7";
  EXPECT_EQ(sum, unparse_string(node(kXPlus, {items})));
  EXPECT_EQ(sum, text_of(unparse_filep, node(kXPlus, {items})));
  const std::string name(200000, 'n');
  tAsynt names = call("f", {sym(name.c_str()), sym("x"), sym(name.c_str())});
  EXPECT_EQ("f[" + name + ", x, " + name + "]", text_of(unparse_file, names));
  EXPECT_EQ("f[" + name + ", x, " + name + "]", unparse_string(names));
}

TEST_F(UnparseTest, DeepNesting) {
#ifdef OZ_SANITIZE
  constexpr int kLevels = 500;  // the sanitizers' frames are many times larger
#else
  constexpr int kLevels = 5000;  // of two operators each
#endif
  tAsynt t = sym("a");
  std::string text = "a";
  for (int i = 0; i < kLevels; i++) {
    t = nary(kXTimes, {sym("b"), nary(kXPlus, {t, num("1")})});
    text = "b*(" + text + "+1)";
  }
  EXPECT_EQ(text, unparse_string(t));
}

TEST_F(UnparseTest, StreamKeepsItsOrder) {
  char* text = nullptr;
  size_t size = 0;
  FILE* f = open_memstream(&text, &size);
  std::fputs("<", f);
  unparse_file(f, sym("a"));
  std::fputs("><", f);
  unparse_filep(f, sym("b"));
  std::fputs(">", f);
  std::fclose(f);
  EXPECT_STREQ("<a><b>", text);
  std::free(text);
}

TEST_F(UnparseTest, FullDiskIsSeenByTheCaller) {
  FILE* f = std::fopen("/dev/full", "w");
  ASSERT_NE(nullptr, f);
  unparse_file(f, sym(std::string(100000, 'n').c_str()));
  EXPECT_TRUE(std::ferror(f) != 0 || std::fflush(f) != 0);
  std::fclose(f);
}

// A mistake in the tree is fatal. What was printed before it has reached the stream, and the printer starts afresh.
TEST_F(UnparseTest, MistakesInTheTree) {
  tAsynt chain = list({sym("a"), nary(kXLess, {})});
  tAsynt vars = symbols({sym("u"), sym("v")});
  const Row rows[] = {
      {mXInequality(chain), "   0,  0: Fatal       Malformed inequality list: a;\n\n"},
      {mXInequality(list({sym("a"), sym("b"), sym("c")})),
       "   0,  0: Fatal       Malformed inequality list: a;\nb;\nc\n"},
      {mXModule(vars, list({num("1")}), sym("u")), "   0,  0: Fatal       Bad input to Unparse_init_list\n"},
      {mContext(sym("a"), sym("b")), "   0,  0: Fatal       Impossible kind of node in Unparse_exprs = Symbol\n"},
  };
  for (const Row& row : rows) EXPECT_EQ(row.text, message_of([&] { unparse_string(row.tree); }));
  const auto print_and_fail = [](FILE* f, tAsynt t) { message_of([=] { unparse_filep(f, t); }); };
  EXPECT_EQ("f[a < ", text_of(print_and_fail, call("f", {mXInequality(chain)})));
  EXPECT_STREQ("a", unparse_string(sym("a")));
}

}  // namespace
}  // namespace oz
