// Predefined heads: which node an application becomes, and every message about wrong arguments.

#include "predef.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "fatal_text.h"
#include "operator_name.h"
#include "oz.h"
#include "unparse.h"

namespace oz {
namespace {

constexpr tPosition kHere{7, 3};

tAsynt symbol(const char* name) { return mSymbol(mSimpleSymbol(mNoType(), kHere, name)); }
tAsynt xlist(tAsynt elements) { return mXList(mkNonConvPos(kHere), elements); }

tAsynt list(const std::vector<tAsynt>& elements) {
  tAsynt result = mExpression0();
  for (auto e = elements.rbegin(); e != elements.rend(); ++e) result = mExpression1(*e, result);
  return result;
}

// A tree in one line: names, lists in brackets, "@" for a position with the conversion tag set.
std::string line_of(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kSymbol: return NamedSymbol_Name(Symbol_SymInfo(t));
    case kFilename: return std::string("file:") + Filename_Name(t);
    case kPosConv: {
      const tPosition pos = PosConv_Pos(t);
      const bool here = Compare(pos, kHere) == 0 && PosConv_Converted(t) == yesConv;
      return here ? "@" : "other position";
    }
    default: break;
  }
  const TreeKind& kind = Asynt_Schema.kinds[Asynt_Kind(t)];
  if (Asynt_IsType(t, kExpressions) || Asynt_IsType(t, kIterators)) {
    std::string text;
    for (; Asynt_Schema.kinds[Asynt_Kind(t)].child_count; t = tree_raw_slot<tAsynt>(t, 1))
      text += (text.empty() ? "" : ",") + line_of(tree_raw_slot<tAsynt>(t, 0));
    return "[" + text + "]";
  }
  std::string text = kind.name;
  for (int i = 0; i < kind.child_count; i++)
    text += (i ? "," : "(") + line_of(tree_raw_slot<tAsynt>(t, kind.children[i]));
  return kind.child_count ? text + ")" : text;
}

struct Predef : testing::Test {
  Index* heads = make_index(hash_table, 1);

  Predef() {
    bigbuf_init();
    init_operator_name();
    index_init_predefs(heads);
  }
  ~Predef() override { delete_index(heads); }

  tAsynt type_of(const char* head) const {
    tAsynt* entries = lookup(heads, head);
    return entries ? SymInfo_Type(entries[0]) : nullptr;
  }

  // The node that head[args] becomes, or the message.
  std::string apply(const char* head, const std::vector<tAsynt>& args) const {
    const tAsynt type = type_of(head);
    if (!type) return "no such head";
    std::string result;
    const std::string message = message_of([&] {
      const tAsynt a = list(args);
      const tAsynt node = mSimpleFFE(a, symbol(head));
      result = line_of(convert_predef_node(kHere, a, PreDef_fun(type), PreDef_type_flag(type), node));
    });
    return message.empty() ? result : message;
  }

  // The same for the first so many of the symbols a, b, c, d, e.
  std::string apply(const char* head, size_t count) const {
    std::vector<tAsynt> args;
    for (const char* name : {"a", "b", "c", "d", "e"})
      if (args.size() < count) args.push_back(symbol(name));
    return apply(head, args);
  }
};

// The kind that each head stands for, by the smallest number of arguments that is accepted.
TEST_F(Predef, EveryHeadHasItsKind) {
  const struct {
    const char* head;
    const char* kind;
  } exceptions[] = {
      {"Derivative", "Deriv"},
      {"Cross", "Cross"},
      {"ForAll", "ForAll"},
      {"NaturalDivide", "NaturalDivide"},
      {"Rational", "XDivide"},
      {"OuterProduct", "OuterProduct"},
      {"SetDelayed", "XSet"},
      {"setcols", "XSetCols"},
      {"setrows", "XSetRows"},
      {"setrow", "XSetRow"},
      {"setcol", "XSetCol"},
      {"cols", "XCols"},
      {"rows", "XRows"},
      {"col", "XCol"},
      {"row", "XRow"},
      {"setsubmatrix", "XSetSubMatrix"},
      {"submatrix", "XSubMatrix"},
      {"setsubvec", "XSetSubVector"},
      {"subvec", "XSubVector"},
      {"setshape", "XSetShape"},
      {"IReduce", "IReduce"},
      {"oz$Parallel", "none"},
      {"Inequality", "none"},
  };
  const std::set<std::string> special = {"ForAll", "Put", "IReduce", "Inequality", "oz$Parallel"};
  int count = 0;
  Iter* iter = start_iter(heads);
  while (iter_next(iter)) {
    count++;
    const std::string head = iter_key(iter);
    if (special.count(head)) continue;  // their arguments have a form of their own
    std::string kind = "X" + head;
    for (const auto& row : exceptions)
      if (head == row.head) kind = row.kind;
    std::string result;
    for (size_t n = 0; n <= 3; n++) {
      result = apply(head.c_str(), n);
      if (result.find("Fatal") == std::string::npos) break;
    }
    EXPECT_EQ(kind, result.substr(0, result.find('('))) << head;
  }
  EXPECT_EQ(126, count);
}

TEST_F(Predef, ApplicationsByNumberOfArguments) {
  const struct {
    const char* head;
    size_t count;
    const char* result;
  } rows[] = {
      {"Pi", 0, "XPi"},
      {"Pi", 1, "   7,  3: Fatal       Constant  with argument list, 1 arguments.\n"},
      {"Sin", 0, "   7,  3: Fatal       0 arguments to unary function Sin[].\n"},
      {"Sin", 1, "XSin(a)"},
      {"Sin", 2, "   7,  3: Fatal       2 arguments to unary function Sin[a, b].\n"},
      {"Mod", 1, "   7,  3: Fatal       1 argument(s) to binary function.\n"},
      {"Mod", 2, "XMod(a,b)"},
      {"Mod", 3, "   7,  3: Fatal       3 argument(s) to binary function.\n"},
      {"Not", 0, "   7,  3: Fatal       0 arguments to unary function Not[].\n"},
      {"Not", 1, "XNot(@,a)"},
      {"Power", 1, "   7,  3: Fatal       1 argument(s) to binary function.\n"},
      {"Power", 2, "XPower(@,a,b)"},
      {"Derivative", 2, "Deriv(@,a,b)"},
      {"Plus", 0, "XPlus(@,[])"},
      {"Plus", 3, "XPlus(@,[a,b,c])"},
      {"Less", 3, "XLess(@,[a,b,c])"},
      {"Unequal", 2, "XUnequal(@,[a,b])"},
      {"Unequal", 3, "   7,  3: Fatal       3 argument(s) to binary function.\n"},
      {"Dimensions", 0, "   7,  3: Fatal       0 argument(s) to binary or unary  function.\n"},
      {"Dimensions", 1, "XDimensions(@,[a])"},
      {"Dimensions", 2, "XDimensions(@,[a,b])"},
      {"Dimensions", 3, "   7,  3: Fatal       3 argument(s) to binary or unary  function.\n"},
      {"If", 1, "   7,  3: Fatal       Wrong no of args to If.\n"},
      {"If", 2, "XIf(a,b,Empty)"},
      {"If", 3, "XIf(a,b,c)"},
      {"If", 4, "   7,  3: Fatal       Wrong no of args to If.\n"},
      {"Abs", 1, "XAbs(a,NoType)"},
      {"Abs", 2, "   7,  3: Fatal       Wrong no of args to Abs.\n"},
      {"For", 2, "   7,  3: Fatal       Wrong no of args to For.\n"},
      {"For", 3, "XFor(a,b,c,Empty)"},
      {"For", 4, "XFor(a,b,c,d)"},
      {"For", 5, "   7,  3: Fatal       Wrong no of args to For.\n"},
      {"While", 0, "   7,  3: Fatal       Wrong no of args to While.\n"},
      {"While", 1, "XWhile(a,Empty)"},
      {"While", 2, "XWhile(a,b)"},
      {"While", 3, "   7,  3: Fatal       Wrong no of args to While.\n"},
      {"Module", 2, "   7,  3: Fatal       Expected 3 arguments here.\n"},
      {"Module", 3, "XModule(a,b,c)"},
      {"With", 4, "   7,  3: Fatal       Expected 3 arguments here.\n"},
      {"ArcTan", 0, "   7,  3: Fatal       Wrong number of args to arctan: 0\n"},
      {"ArcTan", 1, "XArcTan(a)"},
      {"ArcTan", 2, "ArcTan2(a,b)"},
      {"ArcTan", 3, "   7,  3: Fatal       Wrong number of args to arctan: 3\n"},
      {"Print", 0, "XPrint([])"},
      {"Which", 2, "XWhich([a,b])"},
      {"N", 0, "   0,  0: Fatal       One or two arguments expected\n"},
      {"N", 1, "XN(a)"},
      {"N", 2, "XN(a)"},
      {"N", 3, "   0,  0: Fatal       One or two arguments expected\n"},
      {"Put", 1, "   7,  3: Fatal       1 argument(s) to Put function.\n"},
      {"ForAll", 1, "   7,  3: Fatal       Wrong no of args to ForAll.\n"},
      {"IReduce", 2, "   7,  3: Fatal       Wrong number of args for IReduce\n"},
      {"Inequality", 3, "   0,  0: Fatal       Internal error in line 428 of predef\n"},
      {"oz$Parallel", 1, "   7,  3: Fatal       Bad oz$Parallel annotation.\n"},
      {"oz$Parallel", 2, "   7,  3: Fatal       Bad oz$Parallel annotation.\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.result, apply(row.head, row.count)) << row.head << " " << row.count;
}

TEST_F(Predef, FilesAndParallelAssignments) {
  const tAsynt a = symbol("a");
  const tAsynt b = symbol("b");
  EXPECT_EQ("XPut(a,file:f.m)", apply("Put", {a, mStringConst("f.m")}));
  EXPECT_EQ("   7,  3: Fatal       The file of Put is not a constant: b\n", apply("Put", {a, b}));

  const auto set = [](tAsynt l, tAsynt r) { return mXSet(mkConvPos(kHere), l, r); };
  const tAsynt pair = xlist(list({a, b}));
  EXPECT_EQ("XSet(@,a,b)", apply("oz$Parallel", {set(a, b)}));
  EXPECT_EQ("ParSet([a,b],[a])", apply("oz$Parallel", {set(pair, xlist(list({a})))}));
  EXPECT_EQ("   7,  3: Fatal       Bad oz$Parallel annotation.\n", apply("oz$Parallel", {set(pair, b)}));
}

TEST_F(Predef, Iterators) {
  const tAsynt i = xlist(list({symbol("i"), symbol("1"), symbol("n")}));
  const tAsynt j = xlist(list({symbol("j"), symbol("2"), symbol("m")}));
  const tAsynt short_one = xlist(list({symbol("k"), symbol("3")}));
  const struct {
    tAsynt iterators;
    const char* result;
  } rows[] = {
      {i, "[Iterator(i,1,n)]"},
      {xlist(list({i, j})), "[Iterator(i,1,n),Iterator(j,2,m)]"},
      {symbol("i"), "   0,  0: Fatal       Bad IReduce.\n"},
      {xlist(mExpression0()), "   0,  0: Fatal       Empty IReduce iterator list.\n"},
      {short_one, "   0,  0: Fatal       Bad iterator in IReduce.\n"},
      {xlist(list({i, short_one})), "   0,  0: Fatal       Bad iterator in IReduce\n"},
      {xlist(list({i, symbol("j")})), "   0,  0: Fatal       Bad iterator in IReduce\n"},
  };
  for (const auto& row : rows) {
    const std::string result = row.result;
    const bool good = result.find("Fatal") == std::string::npos;
    EXPECT_EQ(good ? "IReduce(f,e," + result + ",Empty)" : result,
              apply("IReduce", {symbol("f"), symbol("e"), row.iterators}));
    EXPECT_EQ(good ? "ForAll(e," + result + ",Empty)" : result, apply("ForAll", {symbol("e"), row.iterators}));
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
  const std::string long_name(300, 'y');
  const tAsynt assignment = mXSet(mkNonConvPos(kHere), symbol("x"), symbol("y"));
  const struct {
    tAsynt syminfo;
    int is_function;
    tPosition position;
    std::string message;
  } rows[] = {
      {absolute({}), 0, kHere, "   7,  3: Error       Undefined (variable) symbol: x\n"},
      {absolute({symbol("t"), indexed}), 0, kHere, "   7,  3: Error       Undefined (variable) symbol: t`s`x\n"},
      {absolute({symbol("t")}), 1, kHere,
       "   7,  3: Error       Undefined function symbol,  function not supported: t`x\n"},
      {absolute({symbol("t"), symbol("Private")}), 0, kHere,
       "   7,  3: Error       Duplicate (variable) symbol, probably defined twice (e.g.inside and outside package) in "
       "different sense: t`Private`x\n"},
      {mTempSymbol(mNoType(), kHere, 1), 0, kHere,
       "   7,  3: Error       Undefined (variable) symbol: of type <TempSymbol>\n\n"},
      {absolute({}), 0, tPosition{0, 3},
       "   0,  3: Error       Undefined (variable) symbol: x\nLast assignment seen:\nx=y\n"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.message, message_of([&] { notype_error(row.position, row.syminfo, assignment, row.is_function); }));
  // A path longer than any buffer of the messages' pieces comes out whole, piece by piece.
  const std::string text = message_of([&] { notype_error(kHere, absolute({symbol(long_name.c_str())}), nullptr, 0); });
  EXPECT_NE(std::string::npos, text.find(std::string(200, 'y')));
}

}  // namespace
}  // namespace oz
