// The source unparser: the text of each kind, and whether it reads as the same tree again; priorities, lists,
// indentation, and what the output layer promises.

#include "unparse.h"

#include <random>

#include "model_text.h"

namespace oz {
namespace {

struct UnparseTest : ModelText {
  UnparseTest() {
    declare_types("a:none b:none c:none f:none g:none h:none i:none j:none u:none v:none w:none x:none");
  }

  static tAsynt expression(const std::string& text) {
    return Binary_RHS(Particle1_Particle(Model_Globals(parsed("x := (" + text + ");"))));
  }

  // The text is as given, and reads as the same tree again.
  static void expect_to_read_again(const char* rows) {
    for (const auto& [source, text] : table<2>(rows)) {
      const tAsynt tree = expression(source);
      EXPECT_EQ(text, printed(tree));
      EXPECT_EQ(tree_text(tree), tree_text(expression(text))) << text;
    }
  }
  static void expect_texts(const char* rows) {
    for (const auto& [tree, text] : table<2>(rows)) EXPECT_EQ(text, printed(typed_tree(tree))) << tree;
  }
  static void expect_texts(const std::vector<std::pair<tAsynt, const char*>>& rows) {
    for (const auto& [tree, text] : rows) EXPECT_EQ(text, printed(tree));
  }
};

tAsynt path(const std::vector<tAsynt>& components, const char* last) {
  return mSymbol(mAbsoluteSymbol(mNoType(), NoPosition, last, list(components)));
}

// What one of the stream printers writes.
std::string text_of(void (*print)(FILE*, tAsynt), tAsynt tree) {
  OutputStream out;
  print(out.f, tree);
  return out.str();
}

TEST_F(UnparseTest, Declarations) {
  const tAsynt model = parsed(
      "packages \"A`\", \"B`\"; g := 1; real k;"
      "class A(p, q) inherits B(2, 0), C part w[i, j] inherits D(i); part v inherits D; hide {g}: x; y := 1; end;"
      "class B end; instance a expose: static z := 2; once o := 3; end a; instance s[i] inherits A(i, 2) end;");
  EXPECT_EQ(
      "g:=1;\nk;\n"
      "class A(p, q) inherits B(2, 0), C\npart w[i, j] inherits D(i);\npart v inherits D;\nx;\ny:=1;\nend;\n"
      "class B\nend;\n"
      "instance a\nz:=2;\no:=3;\nend;\n"
      "instance s[i] inherits A(i, 2)\nend;\n",
      printed(model));
  EXPECT_EQ("\"A`\", \"B`\"", printed(Model_Packages(model)));
}

TEST_F(UnparseTest, Types) {
  for (const auto& [type, text] : table<2>(R"(
      real[3,0] --> \sArray [3 ,0] of  Real\s       int_s[-1] --> \sArray [-1] of  Integer\s      string --> \sString\s
      multi(complex,bool) --> \sMultiType:[  Complex  Bool \s ]\s          none --> \sundefined type\s
    )"))
    EXPECT_EQ(text, printed(type_of_text(type)));
  expect_texts({{mArrayType(mRealType(nullptr), list({typed_tree("0")})), " Array [_] of  Real "},
                {mPreDef(nullptr, cunary), "Predef"}});
}

TEST_F(UnparseTest, ExpressionsThatReadAgain) {
  expect_to_read_again(R"(
      f[] --> f[]     f[a + b, 0, (a; b)] --> f[a+b, 0, a;\nb]        f[i][x][] --> f[i][x][]         x'[t] --> (x')[t]
      (#&)[1] --> (# &)[1]            a[[2]][1] --> (a[[2]] )[1]      f[x][[y, 1]] --> (f[x])[[y,1]]\s
      {} --> \s{  }\s                 {a, {1, b}} --> \s{ a,  { 1, b }  }\s           `a`p[2]`x --> a`p[2]`x
      this`h`x[i] --> this`h`x[i]     this --> this   1.5*^3 + 12*^-2 + .5 + 1. --> 1.5*^3+12*^-2+.5+1.
      "a \\ %s" --> "a \\ %s"         #[##, #3, ##2] --> #[##, #3, ##2]               f::bad --> f::"bad"
      f::bad::Latin --> f::"bad"::"Latin"             a + 2*b + 0 --> a+2*b+0         a - b - c --> (a-b)-c
      a - (b - c) --> a-(b-c)         -a^2 --> -a^2   a^b^c --> a^(b^c)               a*b/c --> a*b/c
      (a + b)! --> (a+b)!             (a + b)''' --> (a+b)'''         !a && b || c --> !a&&b||c
      a :== b + 1 --> a:==b+1         a = b := c --> a=(b:=c)         f[i] => x --> (f[i])=>x
      a + b < 0 == (c || d) --> a+b < 0 == (c||d)     (a = b + 1); (b; c) --> a=b+1;\nb;\nc
      a = 1 >> f --> a=1>>"f"         (a >> f) >>> g --> (a>>"f")>>>"g"               << f --> << "f"
      t /: a + b = c = d --> t/: a+b = c=d            t /: a := d --> t/: a := d      t /: a =. --> t/: a =.
      f[x_, y__, z___, _, u_.] --> f[x_, y__, z___, _, u_.]           x___Integer --> x___Integer
      x__ a + b --> x__(a+b)          x : a + b /; c --> x:a+b/;c
      Module[{u = 1}, u; v] --> Module [ { u = 1 },\nu;\nv]           Block[{}, u] --> Block [ {  },\nu]
    )");
}

// An expression with parentheses around every operand. Left out is what the model language reads otherwise than the
// host: the postfix "!" and the head of a blank, which reach further, and an operator without an operand.
std::string random_expression(std::mt19937* random, int depth) {
  static const auto leaves = words("a b 2 .5 1. \"s\" # this f[x_]"), prefixes = words("- ! ++ --"),
                    postfixes = words("' !! ++ -- .. ... & [] =>x"),
                    infixes = words(
                        "<> ** . * + ^ / - === =!= && || | == < >= /; -> :> /. //. += -= *= /= = := ^:= ? "
                        "/@ ; @@ :== //@");
  const auto one_of = [=](const std::vector<std::string>& texts) { return texts[(*random)() % texts.size()]; };
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
    texts += "x := (" + printed(Binary_RHS(Particle1_Particle(t))) + ");";
  tAsynt after = Model_Globals(parsed(texts));
  for (; Asynt_Kind(before) == kParticle1; before = Particle1_Particles(before), after = Particle1_Particles(after))
    ASSERT_EQ(tree_text(Particle1_Particle(before)), tree_text(Particle1_Particle(after)))
        << printed(Particle1_Particle(before));
}

TEST_F(UnparseTest, FormsOfThePasses) {
  expect_texts(R"(
      AlgAuxiliary[XSet[a,XPlus[a,b]]] --> a=a+b                XTimes[2,AlgAuxiliary[XPlus[a,b]]] --> 2*(a+b)
      & -->                        NonAlgAuxiliary[a] -->
      XCompoundExpression[XPlus[a,b],XCompoundExpression[a,b]] --> a+b;\n(a;\nb)
      XCompoundExpression[XSet[a,b]] --> a=b                    XCompoundExpression[] -->    XUnset[f[a]] --> f[a]=.
      Optional[XPattern[x,Blank[&]],1] --> x_.                  Optional[Blank[&],&] --> _.
      // A prefix plus prints as its operand.
      XPlus[XPlus[a,b]] --> (a+b)                   XTimes[2,XPlus[a]] --> 2*a
      XPower[XPlus[a],2] --> (a)^2                  XSin[XPlus[a,b]] --> XSin[a+b]
      Deriv[2,XPlus[a,b]] --> Derivative[2][a+b]    XMod[XPlus[a,b],0] --> XMod[a+b,0]            XMax[a,0] --> aXMax0
      XDrop[XPlus[a,b],0] --> Drop [ a+b , 0 ]\s    XIf[c,a,b] --> \sXIf[args...]\s               #-12 --> -12
      XPi --> Pi[]           XI --> I\s             XAll --> All           XBlank --> _
      // In a list of items "0" stands for an unknown size; an argument or an operand keeps it.
      XList[0,1] --> \s{ _, 1 }\s     XPart[0,0,a] --> 0[[_,a]]\s     XDimensions[a,0] --> \sXDimensions[ a, _ ]\s
      XSetShape[a,0] --> \sXSetShape[ a, _ ]\s        XJoin[a,0] --> \sJoin[ a, _ ]\s
      Cross[a,0] --> Cross[a, _]      f[0,XPlus[a,0]] --> f[0, a+0]   XSet[a,0] --> a=0
    )");
  expect_texts({{path({}, "Protect"), "Protect"},
                {path({name("a"), typed_tree("f[2]")}, "x"), "a`f[2]`x"},
                {path({path({}, "")}, "indices"), "`indices"},
                {mSymbol(mAbsoluteNest(mNoType(), NoPosition, typed_tree("a[i]"))), "a[i]"},
                {temporary(7), "Temp_7"},
                {mSymbol(mOutParam(mNoType(), {12, 3}, 2)), "Output (return) parameter no. 2 at line 12:3 "},
                {symbols({name("a"), name("b")}), "ab"},
                {mComment("Class: ", "A"), "(* Class: A *)\n"},
                {mRealConst(0.5), "0.500000"}});
}

// An operator of this kind around an operand.
tAsynt around(Asynt_tKind kind, tAsynt operand) {
  const auto is = [=](Asynt_tKind family) { return kind >= family && kind <= Asynt_TypeRange[family]; };
  const tAsynt t = Asynt_New(kind, Asynt_Schema.kinds[kind].field_count), b = name("b");
  if (kind == kXInequality) return mXInequality(list({b, mXLess(no_place(), mExpression0()), operand}));
  size_t slot = 0;
  if (Asynt_IsType(t, kOperator)) tree_raw_slot<tAsynt>(t, slot++) = no_place();
  std::vector<tAsynt> fields = {b, operand};
  if (is(kVariadic)) fields = {kind == kXPart ? list({operand, b}) : list({b, operand})};
  if (is(kUnary)) fields = {operand};
  if (kind == kXPut || kind == kXPutAppend) fields = {operand, mFilename("f")};
  if (kind == kIndirect) fields = {operand, b};
  if (kind == kDeriv) fields = {mIntConst(1), operand};
  for (tAsynt field : fields) tree_raw_slot<tAsynt>(t, slot++) = field;
  return t;
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
    return printed(around(outer, around(inner, name("a")))).find('(') != std::string::npos;
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
  expect_to_read_again(R"(
      a - (-b) --> a- -b     a - (--b) --> a- --b   -(--b) --> - --b       -(-b) --> -(-b)        -(++b) --> -++b
      a + (++b) + (-b) + (--b) --> a+ ++b+-b+--b    a++ + b --> a+++b      a-- - b --> a---b      (a!) = b --> a! =b
      a!! = b --> a!!=b      a = .5 --> a= .5       a := .5 --> a:=.5      a / .5 --> a/ .5       2 * .5 --> 2*.5
      2 . v . 3 --> 2 .v. 3                         1 .. --> 1 ..          (_).. --> _ ..
    )");
  expect_texts(R"(
      XDot[Blank[h],v] --> _h.v    XSubtract[a,#-1] --> a- -1   XSubtract[a,XPlus[XPreDecrement[b]]] --> a- --b
      XUnequal[XFactorial[a],b] --> a! !=b                      XLess[a,XGet[]] --> a< << "file"
    )");
}

// What whole models do not show: what is left out at the start and the end of a package, and a context alone.
TEST_F(UnparseTest, PackagesAndContexts) {
  const tAsynt external = mExternalDeclaration("pre", "ctx", "C", mExternalFunctionReturns(), mParameterspec0());
  const tAsynt external_function = mXSetDelayed(no_place(), typed_tree("g[]"), external);
  const tAsynt hidden = mNonAlgAuxiliary(name("unseen"));
  const tAsynt bare = mContext(path({}, "b"), list({name("this"), mComment("Instance body: ", "b")}));
  const tAsynt inner = mContext(path({}, "a"), list({mEmpty(), external_function, name("x"), hidden}));
  EXPECT_EQ("BeginPackage[\"Tank`\"];\n\n  g;\n  Begin[\"a`\"];\n\n    ;\n    x\n\n  End[]\nEndPackage[];\n",
            text_of(unparse_filep, mPackage(name("Tank"), mFilename0(), list({hidden, name("g"), inner}))));
  EXPECT_EQ("Begin[\"b`\"];\n\nthis;\n(* Instance body: b *)\n\n\nEnd[]", text_of(unparse_file, bare));
  EXPECT_EQ("BeginPackage[\"m`\"];\n\n\nEndPackage[];\n",
            text_of(unparse_filep, mPackage(name("m"), mFilename0(), mExpression0())));
}

// A group ends at its first "]".
TEST_F(UnparseTest, SkippedBrackets) {
  for (const auto& [tree, count, result, text] : table<4>(R"(
      a[i][j] --> 0 --> 1 --> a[i][j]        a[i][j] --> 1 --> 1 --> a[j]           a[i][j] --> 2 --> 1 --> a
      a[i][j] --> 3 --> 0 --> a[i][j]        a --> 1 --> 0 --> a                    a --> 0 --> 1 --> a
      a[b[i]] --> 1 --> 1 --> a]             a[b[i]] --> 2 --> 0 --> a[b[i]]
    )")) {
    std::string out;
    EXPECT_EQ(result == "1", unparse_and_skip_brackets(&out, typed_tree(tree), std::stoi(count)));
    EXPECT_EQ(text, out);
  }
}

TEST_F(UnparseTest, LongListsAndDeepTrees) {
  constexpr size_t kItems = 1000000;
  const std::string sum = "7" + repeated("+7", kItems - 1);
  const tAsynt plus = mXPlus(no_place(), list(std::vector<tAsynt>(kItems, typed_tree("7"))));
  EXPECT_EQ(sum, printed(plus));
  EXPECT_EQ(sum, text_of(unparse_filep, plus));
  const std::string longest(200000, 'n');
  const tAsynt names = mSimpleFFE(list({name(longest), name("x"), name(longest)}), name("f"));
  EXPECT_EQ("f[" + longest + ", x, " + longest + "]", text_of(unparse_file, names));
  EXPECT_EQ("f[" + longest + ", x, " + longest + "]", printed(names));
#ifdef OZ_SANITIZE
  constexpr int kLevels = 500;  // the sanitizers' frames are many times larger
#else
  constexpr int kLevels = 5000;  // of two operators each
#endif
  const tAsynt deep = nested(kLevels, name("a"), [](tAsynt core) {
    return mXTimes(no_place(), list({name("b"), mXPlus(no_place(), list({core, typed_tree("1")}))}));
  });
  EXPECT_EQ(repeated("b*(", kLevels) + "a" + repeated("+1)", kLevels), printed(deep));
}

TEST_F(UnparseTest, Streams) {
  OutputStream out;
  std::fputs("<", out.f);
  unparse_file(out.f, name("a"));
  std::fputs("><", out.f);
  unparse_filep(out.f, name("b"));
  std::fputs(">", out.f);
  EXPECT_EQ("<a><b>", out.str()) << "in its order";
  FILE* full = std::fopen("/dev/full", "w");
  unparse_file(full, name(xs(100000)));
  EXPECT_TRUE(std::ferror(full) != 0 || std::fflush(full) != 0) << "a full disk is seen by the caller";
  std::fclose(full);
}

// A mistake in the tree is fatal. What was printed before it has reached the stream, and the printer starts afresh.
TEST_F(UnparseTest, MistakesInTheTree) {
  const tAsynt chain = typed_tree("XInequality[a,XLess[]]");
  const std::pair<tAsynt, const char*> rows[] = {
      {chain, "F Malformed inequality list: a; | "},
      {typed_tree("XInequality[a,b,c]"), "F Malformed inequality list: a; | b; | c"},
      {typed_tree("XModule[{u,v},{1},u]"), "F Bad input to Unparse_init_list"},
      {mContext(name("a"), name("b")), "F Impossible kind of node in Unparse_exprs = Symbol"}};
  for (const auto& [tree, text] : rows) EXPECT_EQ(text, said([&, t = tree] { unparse_string(t); }));
  const auto print_and_fail = [](FILE* f, tAsynt t) { message_of([=] { unparse_filep(f, t); }); };
  EXPECT_EQ("f[a < ", text_of(print_and_fail, mSimpleFFE(list({chain}), name("f"))));
  EXPECT_EQ("a", printed(name("a")));
}

}  // namespace
}  // namespace oz
