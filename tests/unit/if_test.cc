// Conditionals rebuilt from lists of assignments to temporaries.
//
// Lists are written "T1 = E; T2 = E; y = T2" with E as support.h reads it; the result as "T1=a*b; If[c, T2=T1,
// T2=a]", where a branch may hold several statements.

#include "if.h"

#include "support.h"

namespace oz {
namespace {

using IfTest = Trees;

tAsynt temporary(unsigned number) { return mSymbol(mTempSymbol(mNoType(), NoPosition, number)); }

char to_temporary(tAsynt* t) {
  if (Asynt_Kind(*t) != kSymbol) return 1;
  const string name = NamedSymbol_Name(Symbol_SymInfo(*t));
  if (*name == 'T') *t = temporary(static_cast<unsigned>(std::strtoul(name + 1, nullptr, 10)));
  return 0;
}

tAsynt list_of(const std::string& text) {
  declare_types(
      "a:real b:real c:bool d:bool y:real z:real T1:real T2:real T3:real T4:real T5:real T6:real T7:real T8:real "
      "T9:real");
  std::string tree = "XCompoundExpression[";
  for (size_t start = 0; start < text.size();) {
    const size_t equals = text.find(" = ", start);
    const size_t end = std::min(text.find("; ", start), text.size());
    tree += (start ? ",XSet[" : "XSet[") + text.substr(start, equals - start) + ',';
    tree += text.substr(equals + 3, end - equals - 3) + ']';
    start = end + 2;
  }
  tAsynt list = typed_tree(tree + ']');
  TraverseAsyntTD2(&list, to_temporary);
  return Variadic_Expressions(list);
}

std::string shown(tAsynt t) {
  if (Asynt_Kind(t) == kXIf) {
    const std::string condition = unparse_string(XIf_Condition(t));
    return "If[" + condition + ", " + shown(XIf_T(t)) + ", " + shown(XIf_F(t)) + "]";
  }
  if (Asynt_Kind(t) != kXCompoundExpression) return unparse_string(t);
  std::string text;
  for (tAsynt p = Variadic_Expressions(t); Asynt_Kind(p) == kExpression1; p = Expression1_Expressions(p))
    text += (text.empty() ? "" : "; ") + shown(Expression1_Expression(p));
  return text;
}

std::string rewritten(const std::string& text) {
  const tAsynt code = rewrite_ifs(list_of(text), 10);
  EXPECT_TRUE(CheckAsynt(code)) << text;
  std::string result = shown(code);
  for (size_t at; (at = result.find("Temp_")) != std::string::npos;) result.replace(at, 5, "T");
  return result;
}

TEST_F(IfTest, WorkedExamples) {
  for (const auto& [list, code] : table<2>(R"(
      // No conditional: temporaries in the order of their numbers, then the real assignments. T3 is needed by nobody.
      T1 = XTimes[a,b]; y = T1; T2 = XMinus[T1]; T3 = XMinus[a]; z = T2 --> T1=a*b; T2=-T1; y=T1; z=T2
      // One branch: needed by y in any case is T2 alone, since {T1} and {} have nothing in common.
      T1 = XTimes[a,b]; T2 = XIf[c,T1,a]; y = T2 --> If[c, T1=a*b; T2=T1, T2=a]; y=T2
      // Both branches: {T1,T2,T3} and {T2} have T2 in common, so T2 moves in front.
      T1 = XTimes[a,b]; T2 = XPlus[a,1]; T3 = XPlus[T1,T2]; T4 = XIf[c,T3,T2]; y = T4 --> \
          T2=a+1; If[c, T1=a*b; T3=T1+T2; T4=T3, T4=T2]; y=T4
      // The condition and a branch: what the condition needs is needed in any case.
      T1 = XTimes[a,b]; T2 = XLess[T1,a]; T3 = XIf[T2,T1,a]; y = T3 --> T1=a*b; T2=T1<a; If[T2, T3=T1, T3=a]; y=T3
      // A branch and the code behind: y needs T1 itself.
      T1 = XTimes[a,b]; T2 = XIf[c,T1,a]; T3 = XPlus[T1,T2]; y = T3 --> T1=a*b; If[c, T2=T1, T2=a]; T3=T1+T2; y=T3
      // One branch each of two conditionals: {T1} with {} twice, so that either computes T1 for itself.
      T1 = XTimes[a,b]; T2 = XIf[c,T1,a]; T3 = XIf[d,b,T1]; y = XPlus[T2,T3] --> \
          If[c, T1=a*b; T2=T1, T2=a]; If[d, T3=b, T1=a*b; T3=T1]; y=T2+T3
      // A conditional in a branch: outside {T3} with {}; in the branch T3's condition needs T1, its branches {T2} and
      // {}.
      T1 = XLess[a,b]; T2 = XMinus[a]; T3 = XIf[T1,T2,b]; T4 = XIf[c,T3,a]; y = T4 --> \
          If[c, T1=a<b; If[T1, T2=-a; T3=T2, T3=b]; T4=T3, T4=a]; y=T4
      // A conditional that both branches need, v = If[c, a*b, a] in If[d, v, v+a*b]. What T2 needs in any case is T2
      // alone, of the branches {T2} and {T1,T2,T3} that is in common. T1 is computed where T2 is and again where T3 is.
      T1 = XTimes[a,b]; T2 = XIf[c,T1,a]; T3 = XPlus[T2,T1]; T4 = XIf[d,T2,T3]; y = T4 --> \
          If[c, T1=a*b; T2=T1, T2=a]; If[d, T4=T2, T1=a*b; T3=T2+T1; T4=T3]; y=T4
      // In common of T3's branches is what T2 needs in any case: T1, in both branches of T2.
      T1 = XTimes[a,b]; T2 = XIf[c,T1,XMinus[T1]]; T3 = XIf[d,T2,T1]; y = T3 --> \
          T1=a*b; If[d, If[c, T2=T1, T2=-T1]; T3=T2, T3=T1]; y=T3
      // A list that gives no value to T1: there is nothing to place.
      T2 = XIf[c,T1,a]; y = XPlus[T1,T2] --> If[c, T2=T1, T2=a]; y=T1+T2
    )"))
    EXPECT_EQ(code, rewritten(list)) << list;
}

// ---- large lists

struct LongList {
  tAsynt list = nullptr;
  tAsynt* end = &list;
  unsigned count = 0;

  tAsynt add(tAsynt value) {
    const tAsynt set = mXSet(mPosConv(NoPosition, nonConv), temporary(++count), value);
    *end = mExpression1(set, nullptr);
    end = &Expression1_Expressions(*end);
    return temporary(count);
  }
  tAsynt rewrite(tAsynt result) {
    *end = mExpression1(mXSet(mPosConv(NoPosition, nonConv), typed_tree("y"), result), mExpression0());
    return rewrite_ifs(list, count);
  }
};

int length_of(tAsynt code) {
  int length = 0;
  for (tAsynt p = Variadic_Expressions(code); Asynt_Kind(p) == kExpression1; p = Expression1_Expressions(p)) length++;
  return length;
}

tAsynt plus(tAsynt x, tAsynt y) {
  return mXPlus(mPosConv(NoPosition, nonConv), mExpression1(x, mExpression1(y, mExpression0())));
}

// v = If[c, v', v'+1] over and over: every v is needed in any case. v = If[c, v', a]: each stands in the one behind.
TEST_F(IfTest, LongChains) {
  declare_types("a:real c:bool y:real");
  const tAsynt a = typed_tree("a"), c = typed_tree("c");
  LongList shared, nested, deeper;
  tAsynt v = shared.add(a), w = nested.add(a), u = deeper.add(a);
  for (int i = 0; i < 1000; i++) {
    const tAsynt sum = shared.add(plus(v, a));
    v = shared.add(mXIf(c, v, sum));
    w = nested.add(mXIf(c, a, nested.add(plus(w, a))));
  }
  EXPECT_EQ(1002, length_of(shared.rewrite(v)));  // the first v, 1000 conditionals, y; each sum stands in a branch
  tAsynt code = nested.rewrite(w);
  for (int i = 0; i < 1000; i++) {
    EXPECT_EQ(i ? 3 : 2, length_of(code));  // the one before, the sum of it, the value; at the end y
    const tAsynt first = Expression1_Expression(Variadic_Expressions(code));
    ASSERT_EQ(kXIf, Asynt_Kind(first));
    code = XIf_F(first);
  }
  for (int i = 0; i < 4000; i++) u = deeper.add(mXIf(c, a, u));
  EXPECT_EQ("   0,  0: Fatal       Conditionals are nested too deeply (more than 3333 levels)\n",
            message_of([&] { deeper.rewrite(u); }));
}

// v = If[c, v', a] + If[d, v', a]: each level doubles the code.
TEST_F(IfTest, CodeThatBranchesRepeat) {
  declare_types("a:real c:bool d:bool y:real");
  const tAsynt a = typed_tree("a");
  LongList list;
  tAsynt v = list.add(a);
  for (int i = 0; i < 30; i++) {
    const tAsynt left = list.add(mXIf(typed_tree("c"), v, a));
    v = list.add(plus(left, list.add(mXIf(typed_tree("d"), v, a))));
  }
  EXPECT_EQ("   0,  0: Fatal       Conditionals share too much code (more than 500000 assignments are repeated)\n",
            message_of([&] { list.rewrite(v); }));
}

}  // namespace
}  // namespace oz
