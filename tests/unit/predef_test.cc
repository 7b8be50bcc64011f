// Predefined heads: which node an application becomes, and every message about wrong arguments.

#include "predef.h"

#include "support.h"

namespace oz {
namespace {

constexpr tPosition kHere{7, 3};

tAsynt symbol(const std::string& text) { return name(text, kHere); }
tAsynt xlist(const std::vector<tAsynt>& elements) { return mXList(mkNonConvPos(kHere), list(elements)); }

struct Predef : Trees {
  Index* heads = make_index(hash_table, 1);

  Predef() { index_init_predefs(heads); }
  ~Predef() override { delete_index(heads); }

  tAsynt type_of(const std::string& head) const {
    tAsynt* entries = lookup(heads, head.c_str());
    return entries ? SymInfo_Type(entries[0]) : nullptr;
  }

  // The node that head[args] becomes, or the message.
  std::string apply(const std::string& head, const std::vector<tAsynt>& args) const {
    const tAsynt type = type_of(head);
    if (!type) return "no such head";
    std::string result;
    const std::string message = said([&] {
      const tAsynt a = list(args), node = mSimpleFFE(a, symbol(head));
      const tAsynt t = convert_predef_node(kHere, a, PreDef_fun(type), PreDef_type_flag(type), node);
      result = tree_text(t);
      if (!Asynt_IsType(t, kOperator)) return;
      EXPECT_EQ(0, Compare(PosConv_Pos(Operator_PosConv(t)), kHere)) << head;
      EXPECT_EQ(yesConv, PosConv_Converted(Operator_PosConv(t))) << head;
    });
    return message.empty() ? result : message;
  }

  // The same for the first so many of the symbols a, b, c, d, e.
  std::string apply(const std::string& head, size_t count) const {
    std::vector<tAsynt> args;
    for (const char* text : {"a", "b", "c", "d", "e"})
      if (args.size() < count) args.push_back(symbol(text));
    return apply(head, args);
  }
};

// The kind that each head stands for, by the smallest number of arguments that is accepted: X and the head, but here.
TEST_F(Predef, EveryHeadHasItsKind) {
  std::map<std::string, std::string> kinds;
  for (const auto& [head, kind] : table<2>(R"(
      Derivative --> Deriv   Cross --> Cross        NaturalDivide --> NaturalDivide               Rational --> XDivide
      OuterProduct --> OuterProduct                 SetDelayed --> XSet    setcols --> XSetCols   setrows --> XSetRows
      setrow --> XSetRow     setcol --> XSetCol     cols --> XCols         rows --> XRows         col --> XCol
      row --> XRow           setsubmatrix --> XSetSubMatrix                submatrix --> XSubMatrix
      setsubvec --> XSetSubVector                   subvec --> XSubVector                         setshape --> XSetShape
    )"))
    kinds[head] = kind;
  const std::set<std::string> special = {"ForAll", "Put", "IReduce", "Inequality", "oz$Parallel"};
  int count = 0;
  Iter* iter = start_iter(heads);
  while (iter_next(iter)) {
    count++;
    const std::string head = iter_key(iter);
    if (special.count(head)) continue;  // their arguments have a form of their own
    std::string result;
    for (size_t n = 0; n <= 3 && (result.empty() || result[0] == 'F'); n++) result = apply(head, n);
    EXPECT_EQ(kinds.count(head) ? kinds[head] : "X" + head, result.substr(0, result.find('['))) << head;
  }
  EXPECT_EQ(126, count);
}

TEST_F(Predef, ApplicationsByNumberOfArguments) {
  for (const auto& [head, count, result] : table<3>(R"(
      Pi --> 0 --> XPi   Pi --> 1 --> F7,3 Constant  with argument list, 1 arguments.
      Sin --> 0 --> F7,3 0 arguments to unary function Sin[].                     Sin --> 1 --> XSin[a]
      Mod --> 1 --> F7,3 1 argument(s) to binary function.     Mod --> 2 --> XMod[a,b]
      Mod --> 3 --> F7,3 3 argument(s) to binary function.     Not --> 0 --> F7,3 0 arguments to unary function Not[].
      Not --> 1 --> XNot[a]               Power --> 1 --> F7,3 1 argument(s) to binary function.
      Power --> 2 --> XPower[a,b]         Derivative --> 2 --> Deriv[a,b]     Plus --> 0 --> XPlus[]
      Plus --> 3 --> XPlus[a,b,c]       Less --> 3 --> XLess[a,b,c]       Unequal --> 2 --> XUnequal[a,b]
      Unequal --> 3 --> F7,3 3 argument(s) to binary function.
      Dimensions --> 0 --> F7,3 0 argument(s) to binary or unary  function.
      Dimensions --> 1 --> XDimensions[a]                  Dimensions --> 2 --> XDimensions[a,b]
      Dimensions --> 3 --> F7,3 3 argument(s) to binary or unary  function.
      If --> 1 --> F7,3 Wrong no of args to If.                If --> 2 --> XIf[a,b,Empty]
      If --> 3 --> XIf[a,b,c]               If --> 4 --> F7,3 Wrong no of args to If.
      Abs --> 1 --> XAbs[a,NoType]          Abs --> 2 --> F7,3 Wrong no of args to Abs.
      For --> 2 --> F7,3 Wrong no of args to For.              For --> 3 --> XFor[a,b,c,Empty]
      For --> 4 --> XFor[a,b,c,d]           For --> 5 --> F7,3 Wrong no of args to For.
      While --> 0 --> F7,3 Wrong no of args to While.          While --> 1 --> XWhile[a,Empty]
      While --> 2 --> XWhile[a,b]           While --> 3 --> F7,3 Wrong no of args to While.
      Module --> 2 --> F7,3 Expected 3 arguments here.         Module --> 3 --> XModule[a,b,c]
      With --> 4 --> F7,3 Expected 3 arguments here.           ArcTan --> 0 --> F7,3 Wrong number of args to arctan: 0
      ArcTan --> 1 --> XArcTan[a]           ArcTan --> 2 --> ArcTan2[a,b]
      ArcTan --> 3 --> F7,3 Wrong number of args to arctan: 3                     Print --> 0 --> XPrint[]
      Which --> 2 --> XWhich[a,b]         N --> 0 --> F One or two arguments expected              N --> 1 --> XN[a]
      N --> 2 --> XN[a]                     N --> 3 --> F One or two arguments expected
      Put --> 1 --> F7,3 1 argument(s) to Put function.        ForAll --> 1 --> F7,3 Wrong no of args to ForAll.
      IReduce --> 2 --> F7,3 Wrong number of args for IReduce
      Inequality --> 3 --> F Internal error in line 428 of predef
      oz$Parallel --> 1 --> F7,3 Bad oz$Parallel annotation.   oz$Parallel --> 2 --> F7,3 Bad oz$Parallel annotation.
    )"))
    EXPECT_EQ(result, apply(head, std::stoul(count))) << head << " " << count;
}

TEST_F(Predef, ArgumentsOfAForm) {
  const tAsynt a = symbol("a"), b = symbol("b"), pair = xlist({a, b});
  EXPECT_EQ("XPut[a,Filename[\"f.m\"]]", apply("Put", {a, mStringConst("f.m")}));
  EXPECT_EQ("F7,3 The file of Put is not a constant: b", apply("Put", {a, b}));
  const auto set_to = [](tAsynt l, tAsynt r) { return mXSet(mkConvPos(kHere), l, r); };
  EXPECT_EQ("XSet[a,b]", apply("oz$Parallel", {set_to(a, b)}));
  EXPECT_EQ("ParSet[{a,b},{a}]", apply("oz$Parallel", {set_to(pair, xlist({a}))}));
  EXPECT_EQ("F7,3 Bad oz$Parallel annotation.", apply("oz$Parallel", {set_to(pair, b)}));

  const tAsynt i = xlist({symbol("i"), symbol("1"), symbol("n")}), j = xlist({symbol("j"), symbol("2"), symbol("m")});
  const tAsynt short_one = xlist({symbol("k"), symbol("3")});
  const std::pair<tAsynt, std::string> rows[] = {{i, "{Iterator[i,1,n]}"},
                                                 {xlist({i, j}), "{Iterator[i,1,n],Iterator[j,2,m]}"},
                                                 {symbol("i"), "F Bad IReduce."},
                                                 {xlist({}), "F Empty IReduce iterator list."},
                                                 {short_one, "F Bad iterator in IReduce."},
                                                 {xlist({i, short_one}), "F Bad iterator in IReduce"},
                                                 {xlist({i, symbol("j")}), "F Bad iterator in IReduce"}};
  for (const auto& [iterators, result] : rows) {
    const bool good = result[0] == '{';
    EXPECT_EQ(good ? "IReduce[f,e," + result + ",Empty]" : result,
              apply("IReduce", {symbol("f"), symbol("e"), iterators}));
    EXPECT_EQ(good ? "ForAll[e," + result + ",Empty]" : result, apply("ForAll", {symbol("e"), iterators}));
  }
}

TEST_F(Predef, ABareHeadIsAValueUnlessItIsAConstant) {
  const tAsynt t = symbol("x");
  const auto bare = [&](const char* head) {
    return convert_predef_const_node(t, PreDef_fun(type_of(head)), PreDef_type_flag(type_of(head)));
  };
  EXPECT_EQ(t, bare("Sin"));
  EXPECT_EQ(t, bare("IReduce"));
  EXPECT_EQ(kXPi, Asynt_Kind(bare("Pi")));
  EXPECT_NE(bare("Null"), bare("Null"));
}

TEST_F(Predef, UntypedSymbols) {
  const auto absolute = [](const std::vector<tAsynt>& path) {
    return mAbsoluteSymbol(mNoType(), kHere, "x", list(path));
  };
  const tAsynt indexed = mSimpleFFE(list({symbol("i")}), symbol("s"));
  const tAsynt assignment = mXSet(mkNonConvPos(kHere), symbol("x"), symbol("y"));
  const auto report = [&](tAsynt info, int is_function, tPosition p = kHere) {
    return said([&] { notype_error(p, info, assignment, is_function); });
  };
  EXPECT_EQ("E7,3 Undefined (variable) symbol: x", report(absolute({}), 0));
  EXPECT_EQ("E7,3 Undefined (variable) symbol: t`s`x", report(absolute({symbol("t"), indexed}), 0));
  EXPECT_EQ("E7,3 Undefined function symbol,  function not supported: t`x", report(absolute({symbol("t")}), 1));
  EXPECT_EQ(
      "E7,3 Duplicate (variable) symbol, probably defined twice (e.g.inside and outside package) in different sense: "
      "t`Private`x",
      report(absolute({symbol("t"), symbol("Private")}), 0));
  EXPECT_EQ("E7,3 Undefined (variable) symbol: of type <TempSymbol> | ", report(mTempSymbol(mNoType(), kHere, 1), 0));
  EXPECT_EQ("E0,3 Undefined (variable) symbol: x | Last assignment seen: | x=y", report(absolute({}), 0, {0, 3}));
  // A path longer than any buffer of the messages' pieces comes out whole, piece by piece.
  EXPECT_TRUE(contains(report(absolute({symbol(std::string(300, 'y'))}), 0), std::string(200, 'y')));
}

}  // namespace
}  // namespace oz
