// The tree kit: ranges, copy, compare, check, dump, browser and traversals, on small trees and on random ones.

#include <random>

#include "support.h"

namespace oz {
namespace {

std::string dump_of(tAsynt t) {
  OutputStream out;
  WriteAsynt(out.f, t);
  return out.str();
}

tAsynt simple(const char* text) { return name(text, {3, 7}); }
tAsynt minus(tAsynt e) { return mXMinus(mkNonConvPos(tPosition{1, 2}), e); }

TEST(TreeKit, DumpOfSharedSymbol) {
  tAsynt x = simple("x");
  tAsynt t = mXPlus(mkNonConvPos(tPosition{1, 12}), list({x, mSymbol(Symbol_SymInfo(x))}));
  EXPECT_EQ(
      " XPlus\n"
      "  PosConv          =  PosConv\n"
      "    Pos              =    1, 12\n"
      "    Converted        = 00 00 00 00 \n"
      "  Expressions      =  Expression1\n"
      "    Expression       =  Symbol\n"
      "      SymInfo          = \n"
      "000001:SimpleSymbol\n"
      "        Pos              =    3,  7\n"
      "        Name             = x\n"
      "        Type             =  NoType\n"
      "    Expressions      =  Expression1\n"
      "      Expression       =  Symbol\n"
      "        SymInfo          = ^1\n"
      "      Expressions      =  Expression0\n",
      dump_of(t));
}

// From indent level 8 on a label is followed by blanks up to the level; a null child and scalars of every size.
TEST(TreeKit, DumpOfLabelsScalarsAndNulls) {
  tAsynt shared = mIntConst(-2);
  tAsynt t = minus(minus(minus(minus(minus(list({shared, shared}))))));
  const std::string text = dump_of(t);
  EXPECT_NE(std::string::npos, text.find("            Expression       = \n000001:     IntConst\n"
                                         "              Val              = fe ff ff ff \n"))
      << text;
  EXPECT_NE(std::string::npos, text.find("              Expression       = ^1\n"));
  EXPECT_EQ(" NoAsynt\n", dump_of(nullptr));
  EXPECT_EQ(
      " Capsule\n"
      "  Readable         = T\n"
      "  Writable         = F\n"
      "  Local            = T\n"
      "  Privileged       =  Symbol0\n"
      "  Body             =  NoAsynt\n",
      dump_of(mCapsule(1, 0, 1, mSymbol0(), nullptr)));
  EXPECT_EQ(
      " RealConst\n"
      "  Val              = 00 00 00 00 00 00 f0 3f \n",
      dump_of(mRealConst(1.0)));
}

TEST(TreeKit, CopyKeepsSharingAndTexts) {
  tAsynt x = simple("x");
  tAsynt t = list({x, mSymbol(Symbol_SymInfo(x))});
  tAsynt u = CopyAsynt(t);
  ASSERT_TRUE(IsEqualAsynt(t, u));
  tAsynt first = Symbol_SymInfo(Expression1_Expression(u));
  EXPECT_EQ(first, Symbol_SymInfo(Expression1_Expression(Expression1_Expressions(u))));
  EXPECT_NE(first, Symbol_SymInfo(x));
  EXPECT_EQ(NamedSymbol_Name(first), NamedSymbol_Name(Symbol_SymInfo(x)));
  EXPECT_EQ(nullptr, CopyAsynt(nullptr));
}

TEST(TreeKit, EqualityLooksAtEveryField) {
  EXPECT_TRUE(IsEqualAsynt(nullptr, nullptr));
  EXPECT_FALSE(IsEqualAsynt(mXTrue(), nullptr));
  EXPECT_FALSE(IsEqualAsynt(mXTrue(), mXFalse()));
  EXPECT_FALSE(IsEqualAsynt(mPosConv(tPosition{1, 1}, nonConv), mPosConv(tPosition{1, 2}, nonConv)));
  EXPECT_FALSE(IsEqualAsynt(mPosConv(tPosition{1, 1}, nonConv), mPosConv(tPosition{1, 1}, yesConv)));
  EXPECT_TRUE(IsEqualAsynt(mStringConst("ab"), mStringConst(std::string("ab").c_str())));
  EXPECT_FALSE(IsEqualAsynt(list({mIntConst(1), mIntConst(2)}), list({mIntConst(1), mIntConst(3)})));
  EXPECT_FALSE(IsEqualAsynt(list({mIntConst(1)}), list({mIntConst(1), mIntConst(2)})));
}

TEST(TreeKit, CheckReportsEveryBadChild) {
  tAsynt bad = mXSubtract(mkNonConvPos(tPosition{1, 1}), mSymbol0(), nullptr);
  testing::internal::CaptureStderr();
  EXPECT_FALSE(CheckAsynt(list({bad})));
  const std::string text = testing::internal::GetCapturedStderr();
  EXPECT_EQ(0u, text.find("CheckTree: parent = XSubtract\nPosConv          = "));
  EXPECT_NE(std::string::npos, text.find("\nselector: LHS child = Symbol0\n\n"));
  EXPECT_NE(std::string::npos, text.find("RHS              = NoAsynt\n\nselector: RHS child = NoAsynt\n\n"));
  EXPECT_TRUE(AsyntMarksAreZero(bad));
  testing::internal::CaptureStderr();
  EXPECT_FALSE(CheckAsynt(list({bad})));
  EXPECT_EQ(text, testing::internal::GetCapturedStderr());
}

TEST(TreeKit, ReverseTakesTheTerminatorAlong) {
  tAsynt one = list({mIntConst(1)});
  EXPECT_EQ(one, ReverseAsynt(one));
  tAsynt terminator = mSymbol0();
  tAsynt a = mSymbol1(simple("a"), mSymbol1(simple("b"), terminator));
  tAsynt b = Symbol1_Symbols(a);
  EXPECT_EQ(b, ReverseAsynt(a));
  EXPECT_EQ(a, Symbol1_Symbols(b));
  EXPECT_EQ(terminator, Symbol1_Symbols(a));
  EXPECT_EQ(terminator, ReverseAsynt(terminator));
  tAsynt pair = mGenericList(one, one);
  EXPECT_EQ(pair, ReverseAsynt(pair));
}

std::vector<int> seen;

TEST(TreeKit, TraversalVisitsEachNodeOnce) {
  tAsynt shared = mIntConst(5);
  tAsynt t = list({minus(shared), minus(shared)});
  seen.clear();
  TraverseAsyntTD(t, [](tAsynt n) { seen.push_back(n->yyKind); });
  EXPECT_EQ(
      (std::vector<int>{kExpression1, kXMinus, kPosConv, kIntConst, kExpression1, kXMinus, kPosConv, kExpression0}),
      seen);
  EXPECT_TRUE(AsyntMarksAreZero(t));
}

// false: no calls below this node, the siblings are visited, and what is shared with the outside still gets its call.
TEST(TreeKit, TraversalWithoutDescent) {
  tAsynt shared = mIntConst(5);
  tAsynt t = mExpression1(mXNot(mkNonConvPos(tPosition{1, 1}), shared), list({minus(mIntConst(6)), shared}));
  seen.clear();
  TraverseAsyntTD2(&t, [](tAsynt* n) -> char {
    seen.push_back((*n)->yyKind == kIntConst ? IntConst_Val(*n) : (*n)->yyKind);
    return (*n)->yyKind != kXNot;
  });
  EXPECT_EQ((std::vector<int>{kExpression1, kXNot, kExpression1, kXMinus, kPosConv, 6, kExpression1, 5, kExpression0}),
            seen);
  EXPECT_TRUE(AsyntMarksAreZero(t));
}

TEST(TreeKit, TraversalGoesOnBelowAReplacement) {
  tAsynt t = list({minus(mIntConst(1))});
  TraverseAsyntTD2(&t, [](tAsynt* n) -> char {
    if ((*n)->yyKind == kXMinus) *n = Unary_Expression(*n);
    return 1;
  });
  EXPECT_EQ(kIntConst, Expression1_Expression(t)->yyKind);
  EXPECT_TRUE(AsyntMarksAreZero(t));
}

// A walk makes the calls that a traversal makes, and none below a replacement.
TEST(TreeKit, WalkStopsAtAReplacement) {
  tAsynt t = list({minus(mIntConst(1)), mIntConst(2)});
  seen.clear();
  WalkAsynt(&t, [](tAsynt* n) -> char {
    seen.push_back((*n)->yyKind);
    if ((*n)->yyKind == kXMinus) *n = minus(mIntConst(3));
    return 1;
  });
  EXPECT_EQ((std::vector<int>{kExpression1, kXMinus, kExpression1, kIntConst, kExpression0}), seen);
  EXPECT_EQ(3, IntConst_Val(Unary_Expression(Expression1_Expression(t))));
}

// Walks have 65,535 numbers. A tree whose nodes bear an old number is walked again when that number comes round.
TEST(TreeKit, WalksNeverRunOutOfNumbers) {
  static int visited;
  const auto count = [](tAsynt*) -> char { return ++visited, 1; };
  tAsynt old = minus(mIntConst(1));
  tAsynt t = mIntConst(2);
  WalkAsynt(&old, count);
  for (int i = 0; i < 65534; i++) WalkAsynt(&t, count);
  for (int i = 0; i < 3; i++) {
    visited = 0;
    WalkAsynt(&old, count);
    EXPECT_EQ(3, visited) << i;
  }
}

// A big tree is checked in another way than a small one; what nobody refers to does not count.
TEST(TreeKit, CheckOfBigTrees) {
  tAsynt cells = list({mIntConst(0)});
  tAsynt last = cells;
  for (int i = 0; i < 300000; i++) cells = mExpression1(mIntConst(i), cells);
  EXPECT_TRUE(CheckAsynt(cells));
  const tAsynt orphan = mXNot(nullptr, nullptr);
  EXPECT_TRUE(CheckAsynt(cells));
  Expression1_Expression(last) = orphan;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(CheckAsynt(cells));
  EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("CheckTree: parent = XNot"));
  Expression1_Expression(last) = mXTrue();
  Operator_PosConv(orphan) = mkNonConvPos(NoPosition);
  Unary_Expression(orphan) = mXTrue();  // later checks look at all nodes
}

TEST(TreeKit, AMillionCellsPassEveryOperation) {
  tAsynt cells = mExpression0();
  for (int i = 0; i < 1000000; i++) cells = mExpression1(mXTrue(), cells);
  tAsynt copy = CopyAsynt(cells);
  EXPECT_TRUE(IsEqualAsynt(cells, copy));
  EXPECT_TRUE(CheckAsynt(copy));
  static int visited;
  visited = 0;
  TraverseAsyntTD2(&copy, [](tAsynt*) -> char { return ++visited, 1; });
  EXPECT_EQ(2000001, visited);
  copy = ReverseAsynt(copy);
  ReleaseAsynt(copy);
  EXPECT_TRUE(AsyntMarksAreZero(cells));
}

TEST(TreeKit, AccessToAWrongKindEndsTheRun) {
  tAsynt t = mIntConst(1);
  EXPECT_EXIT(Unary_Expression(t), testing::ExitedWithCode(1), "Internal compiler error: treekit_test.cc [0-9]+");
  EXPECT_EXIT(Symbol_SymInfo(nullptr), testing::ExitedWithCode(1), "Internal compiler error: treekit_test.cc [0-9]+");
}

// A random well-formed tree: each child is of a kind that its field allows, some nodes are shared.
class RandomTree {
 public:
  explicit RandomTree(unsigned seed) : random_(seed) {}

  tAsynt make(unsigned kind, int depth) {
    if (!made_.empty() && random_() % 8 == 0) {
      tAsynt t = made_[random_() % made_.size()];
      if (Asynt_IsType(t, static_cast<Asynt_tKind>(kind))) return t;
    }
    const unsigned chosen = choose(kind, depth);
    const TreeKind& k = Asynt_Schema.kinds[chosen];
    tAsynt t = Asynt_New(chosen, k.field_count);
    for (size_t i = 0; i < k.field_count; i++) fill(t, k.fields[i], i, depth);
    made_.push_back(t);
    return t;
  }

 private:
  // A descendant of the kind; near the bottom the one with the fewest children.
  unsigned choose(unsigned kind, int depth) {
    if (kind == kNoAsynt) kind = kExpression;
    const unsigned last = Asynt_Schema.kinds[kind].last;
    unsigned best = kind + static_cast<unsigned>(random_() % (last - kind + 1));
    if (depth > 0) return best;
    for (unsigned k = kind; k <= last; k++)
      if (Asynt_Schema.kinds[k].child_count < Asynt_Schema.kinds[best].child_count) best = k;
    return best;
  }

  void fill(tAsynt t, const TreeField& field, size_t slot, int depth) {
    static const char* const texts[] = {"", "x", "a name", "42"};
    switch (field.type) {
      case FieldType::tree: tree_raw_slot<tAsynt>(t, slot) = make(field.kind, depth - 1); return;
      case FieldType::character: tree_raw_slot<char>(t, slot) = random_() % 2 == 0; return;
      case FieldType::text: tree_raw_slot<string>(t, slot) = texts[random_() % 4]; return;
      case FieldType::position:
        tree_raw_slot<tPosition>(t, slot) = {static_cast<uint32_t>(random_() % 9),
                                             static_cast<uint32_t>(random_() % 9)};
        return;
      default: tree_raw_slot<uint32_t>(t, slot) = static_cast<uint32_t>(random_() % 3); return;
    }
  }

  std::mt19937 random_;
  std::vector<tAsynt> made_;
};

TEST(TreeKit, RandomTreesCopyCompareCheckAndDump) {
  for (unsigned seed = 1; seed <= 200; seed++) {
    tAsynt t = RandomTree(seed).make(seed % 2 ? kModel : kExpression, 8);
    ASSERT_TRUE(CheckAsynt(t)) << seed;
    tAsynt u = CopyAsynt(t);
    ASSERT_TRUE(IsEqualAsynt(t, u)) << seed;
    ASSERT_EQ(dump_of(t), dump_of(u)) << seed;
    ASSERT_TRUE(AsyntMarksAreZero(t)) << seed;
    ASSERT_TRUE(AsyntMarksAreZero(u)) << seed;
    static std::vector<tAsynt> met;
    const auto visitor = [](tAsynt* n) -> char { return met.push_back(*n), (*n)->yyKind % 3 != 0; };
    met.clear();
    TraverseAsyntTD2(&u, visitor);
    ASSERT_TRUE(AsyntMarksAreZero(u)) << seed;
    const std::vector<tAsynt> traversed = met;
    met.clear();
    WalkAsynt(&u, visitor);
    ASSERT_EQ(traversed, met) << seed;
    ReleaseAsynt(u);
    ASSERT_TRUE(AsyntMarksAreZero(u)) << seed;
  }
}

}  // namespace
}  // namespace oz
