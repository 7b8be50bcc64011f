// Common subexpressions: tables of expressions with the assignments that they become, each derived by hand; the
// numbers, the table's growth, and what may not cost the square or the stack.

#include "cse.h"

#include <cmath>

#include "csehash.h"
#include "support.h"

namespace oz {
namespace {

struct Cse : Trees {
  Cse() { begin(); }
  static void begin() {
    Begintype();
    declare_types("a:int b:int n:int i:int x:real y:real c:bool s:string v:real[3] f:real g:int");
    temp_no = 1;
    init_cse();
  }
};

// The list so far as "T1:int=XPlus[a,b]; ...".
std::string list_text() {
  std::string out;
  for (tAsynt l = cse_close_list(mExpression0()); Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l)) {
    tAsynt lhs = Binary_LHS(Expression1_Expression(l));
    out += code_text(lhs) + ':' + type_text(Find_type(&lhs)) + '=' + code_text(Binary_RHS(Expression1_Expression(l)));
    out += "; ";
  }
  return out;
}

// The assignments, then what is left of the expression; or a part of the message.
void expect_lists(const char* rows) {
  for (const auto& [text, expected] : table<2>(rows)) {
    Cse::begin();
    tAsynt t = typed_tree(text);
    const std::string reports = message_of([&] { oz::Cse(t, &t); });
    EXPECT_EQ(expected, list_text() + code_text(t)) << text << '\n' << reports;
  }
}

template <typename Step>
void expect_results(const char* rows, Step step) {
  for (const auto& [text, expected] : table<2>(rows)) {
    Cse::begin();
    std::string result;
    const std::string report = message_of([&] { result = step(typed_tree(text)); });
    if (report.empty())
      EXPECT_EQ(expected, result) << text;
    else
      EXPECT_TRUE(contains(report, expected)) << text;
  }
}

TEST_F(Cse, OperandsFromTheLastToTheFirst) {
  expect_lists(R"(
      // Leaves stay where they are.
      x --> x   17 --> 17   "s" --> "s"   XPi --> XPi   Iterator[i,1,n] --> Iterator[i,1,n]
      f[XSin[x],XCos[x]] --> T1:real=XCos[x]; T2:real=XSin[x]; T3:real=f[T2,T1]; T3
      XPlus[XSin[x],XCos[x],XTan[x]] --> T1:real=XTan[x]; T2:real=XCos[x]; T3:real=XSin[x]; T4:real=XPlus[T3,T2,T1]; T4
      XSubtract[XSin[x],XCos[x]] --> T1:real=XCos[x]; T2:real=XSin[x]; T3:real=XSubtract[T2,T1]; T3
      ArcTan2[XSin[x],XCos[x]] --> T1:real=XCos[x]; T2:real=XSin[x]; T3:real=ArcTan2[T2,T1]; T3
      XIf[XLess[x,y],XSin[x],XCos[x]] --> \
          T1:real=XCos[x]; T2:real=XSin[x]; T3:bool=XLess[x,y]; T4:real=XIf[T3,T2,T1]; T4
      XInequality[XSin[x],XLess[],y,XLess[],XCos[x]] --> \
          T1:real=XCos[x]; T2:real=XSin[x]; T3:bool=XInequality[T2,XLess[],y,XLess[],T1]; T3
      XMinus[XSin[XCos[x]]] --> T1:real=XCos[x]; T2:real=XSin[T1]; T3:real=XMinus[T2]; T3
      XList[XSin[x],1.5] --> T1:real=XSin[x]; T2:real[2]=XList[T1,1.5]; T2
      // Only the bounds of a reduction are computed once.
      XSin[IReduce[f,XCos[x],{Iterator[i,XPlus[a,1],XPlus[b,2]],Iterator[n,XPlus[b,3],2]},&]] --> \
          T1:int=XPlus[b,3]; T2:int=XPlus[b,2]; T3:int=XPlus[a,1]; T4:real=XSin[IReduce[f,XCos[x],{Iterator[i,T3,T2],\
          Iterator[n,T1,2]},&]]; T4
      // The operand of these is typed wrongly or not at all; the temporary has the type that is left.
      f[XSin[x]][XCos[x]] --> T1:real=XCos[x]; T2:real=XSin[x]; T3:real=f[T2]; T4:real=T3[T1]; T4
      XFor[XSin[x],XCos[x],XTan[x],XExp[x]] --> \
          T1:real=XExp[x]; T2:real=XTan[x]; T3:real=XCos[x]; T4:real=XSin[x]; T5:none=XFor[T4,T3,T2,T1]; T5
      XWhile[XSin[x],XCos[x]] --> T1:real=XCos[x]; T2:real=XSin[x]; T3:none=XWhile[T2,T1]; T3
      XWith[XSin[x],XCos[x],XTan[x]] --> T1:real=XTan[x]; T2:real=XCos[x]; T3:real=XSin[x]; T4:none=XWith[T3,T2,T1]; T4
      NonAlgAuxiliary[XSin[x]] --> T1:real=XSin[x]; T2:none=NonAlgAuxiliary[T1]; T2
    )");
}

TEST_F(Cse, WhatIsShared) {
  expect_lists(R"(
      XTimes[XPlus[a,b],XPlus[a,b]] --> T1:int=XPlus[a,b]; T2:int=XTimes[T1,T1]; T2
      XTimes[XPlus[a,b],XPlus[b,a]] --> T1:int=XPlus[b,a]; T2:int=XPlus[a,b]; T3:int=XTimes[T2,T1]; T3
      XTimes[XPlus[x,1],XPlus[x,1.0]] --> \
          T1:real=XPlus[x,1.0]; T2:real=XPlus[x,GeneralConversion[1,int,real]]; T3:real=XTimes[T2,T1]; T3
      XTimes[XPlus[a,1],XPlus[a,#1]] --> T1:int=XPlus[a,#1]; T2:int=XPlus[a,1]; T3:int=XTimes[T2,T1]; T3
      // The conversions that typing puts around operands of the first do not set it apart.
      XTimes[XPlus[a,x],XPlus[a,x]] --> T1:real=XPlus[GeneralConversion[a,int,real],x]; T2:real=XTimes[T1,T1]; T2
      XTimes[XAbs[x,],XAbs[x,]] --> T1:real=XAbs[x,real]; T2:real=XTimes[T1,T1]; T2
      XTimes[f[x],f[x],g[x]] --> T1:int=g[x]; T2:real=f[x]; T3:real=XTimes[T2,T2,GeneralConversion[T1,int,real]]; T3
      XAnd[XInequality[a,XLess[],b],XInequality[a,XLess[],b],XInequality[a,XGreater[],b]] --> \
          T1:bool=XInequality[a,XGreater[],b]; T2:bool=XInequality[a,XLess[],b]; T3:bool=XAnd[T2,T2,T1]; T3
      XCompoundExpression[XBreak,XBreak] --> T1:none=XBreak; T2:none=(T1;T1); T2
      // Reductions are computed where they stand.
      XPlus[XSin[IReduce[f,x,{Iterator[i,1,n]},&]],XSin[IReduce[f,x,{Iterator[i,1,n]},&]]] --> \
          T1:real=XSin[IReduce[f,x,{Iterator[i,1,n]},&]]; T2:real=XSin[IReduce[f,x,{Iterator[i,1,n]},&]]; \
          T3:real=XPlus[T2,T1]; T3
    )");
}

TEST_F(Cse, IdentityOfLeaves) {
  const auto temporaries = [](tAsynt e1, tAsynt e2) {
    begin();
    tAsynt t = mXEqual(no_place(), list({mXSin(e1), mXSin(e2)}));
    oz::Cse(t, &t);
    return temp_no - 2;  // without the comparison
  };
  const auto named_x = [] { return mSymbol(mAbsoluteSymbol(real_type_node, NoPosition, "x", mExpression0())); };
  const tAsynt x = named_x();
  EXPECT_EQ(1, temporaries(x, mSymbol(Symbol_SymInfo(x))));
  EXPECT_EQ(2, temporaries(x, named_x())) << "one name, two symbols";
  EXPECT_EQ(1, temporaries(mRealConst(2.5), mRealConst(2.5)));
  EXPECT_EQ(2, temporaries(mRealConst(0.0), mRealConst(-0.0)));
  EXPECT_EQ(2, temporaries(mRealConst(NAN), mRealConst(NAN)));
}

TEST_F(Cse, WhatHasNoRule) {
  expect_results(R"(
      XSin[&] --> Can't handle node Empty in Cse.   XPlus[x,XWhich[c,x]] --> Can't handle node XWhich in Cse.
      XNull --> Can't handle node XNull in Cse.     XModule[{x},{1},1] --> Can't handle node Symbol1 in Cse.
      GeneralConversion[x,int,real] --> Can't handle node GeneralConversion in Cse.
      XBlock[{},{},XSin[x]] --> Can't handle node Symbol0 in Cse.          XInequality[] --> Bad inequality:\s
      XInequality[x,XLess[]] --> Bad inequality:\s
    )",
                 [](tAsynt t) { return oz::Cse(t, &t), "no message"; });
  tAsynt t = mXModule(mXList(no_place(), list({})), list({}), mXPi());
  const auto hook = cse_Exit;
  cse_Exit = [] { Errors_Exit(); };
  EXPECT_EQ("Error: module cse, routine Cse failed\n", message_of([&] { oz::Cse(t, &t); }));
  cse_Exit = hook;
}

TEST_F(Cse, Assignments) {
  expect_results(R"(
      XSet[x,XSin[y]] --> T1:real=XSin[y]; x:real=T1;\s         XSet[x,y] --> x:real=y;\s
      XSet[XList[x,y],XList[XSin[y],XSin[x]]] --> T1:real=XSin[y]; T2:real=XSin[x]; y:real=T2; x:real=T1;\s
      XSet[a,XSin[x]] --> Type mismatch for assignment.         XPlus[x,y] --> Bad data to Set_list_cse: XPlus
      XSet[XList[x,a],XList[y,XSin[x]]] --> Type mismatch for assignment.
      XSet[XList[x,y],XList[x]] --> Bad data to Set_list_cse_2: Expression1 Expression0
    )",
                 [](tAsynt t) { return Set_list_cse(t), list_text(); });
}

TEST_F(Cse, FunctionBodies) {
  expect_results(R"(
      x --> x                      IReduce[f,XSin[x],{Iterator[i,1,n]},&] --> IReduce[f,XSin[x],{Iterator[i,1,n]},&]
      XSin[XSin[x]] --> XModule[{T1,T2},{&,&},(T1=XSin[x];T2=XSin[T1];T2)]
      IReduce[f,x,{Iterator[i,1,XPlus[n,1]]},&] --> XModule[{T1},{&},(T1=XPlus[n,1];IReduce[f,x,{Iterator[i,1,T1]},&])]
    )",
                 [](tAsynt t) { return oz::Cse(t, &t), code_text(finish_fun_cse(t)); });
  begin();
  temp_no = 5;
  EXPECT_TRUE(contains(message_of([] { finish_fun_cse(mXPi()); }), "Internal error in line "));
}

TEST_F(Cse, ValueNumbers) {
  EXPECT_EQ(35937u, hash_int(1)) << "1 * 33^3";
  EXPECT_EQ(9450300u, hash_int(-1)) << "255 * (33^3 + 33^2 + 33 + 1)";
  EXPECT_EQ(7983u, hash_real(1.0)) << "bytes f0 3f at the end: 240 * 33 + 63";
  EXPECT_EQ(3299u, hash_str("ab")) << "97 * 33 + 98";
  // Kinds: XPlus 173, ExactIntConst 211, Expression0 290, Expression1 291. "1": 211*33 + 49 = 7012, "2": 7013.
  // {2}: (291*33 + 7013)*33 + 290 = 548618. {1,2}: (291*33 + 7012)*33 + 548618 = 1096913. 173*33 + 1096913 = 1102622.
  tAsynt t = typed_tree("XPlus[1,2]");
  EXPECT_EQ(1102622u, oz::Cse(t, &t));
  // A call's head comes before its arguments: (44*33 + f)*33 + {1}, {1} = (9603 + 7012)*33 + 290.
  const tAsynt f = typed_tree("f");
  tAsynt call = typed_tree("f[1]");
  EXPECT_EQ((44 * 33 + symbol_num(Symbol_SymInfo(f))) * 33 + 548585, oz::Cse(call, &call));
  // x < y: the operator's kind 170, then x, then y.
  tAsynt ineq = typed_tree("XInequality[1,XLess[],2]");
  EXPECT_EQ((170u * 33 + 7012) * 33 + 7013, oz::Cse(ineq, &ineq));
}

TEST_F(Cse, SameTrees) {
  struct Pair {
    const char *a, *b;
    bool same;
  };
  for (const auto& [a, b, same] : table<3>(R"(
      XPlus[a,XSin[x]] --> XPlus[a,XSin[x]] --> true          XPlus[a,b] --> XPlus[a,b,n] --> false
      XPlus[a,b] --> XTimes[a,b] --> false      XSin[GeneralConversion[a,int,real]] --> XSin[a] --> true
      XSin[a] --> GeneralConversion[XSin[BasicConversion[GeneralConversion[a,int,real],int,real]],int,real] --> true
      XSin[a] --> GeneralConversion[a,int,real] --> false     XFor[x,c,x,1] --> XFor[x,c,x,1] --> true
      XFor[x,c,x,1] --> XFor[x,c,x,2] --> false               XWith[x,c,1] --> XWith[y,c,1] --> false
      XIf[c,1,2] --> XIf[c,1,2] --> true        XWhile[c,f[x]] --> XWhile[c,f[x]] --> true
      XInequality[a,XLess[],b] --> XInequality[a,XGreater[],b] --> false    ArcTan2[a,b] --> ArcTan2[b,a] --> false
      XPower[a,b] --> XPower[a,b] --> true      f[a][b] --> f[a][b] --> true              f[a][b] --> f[b][b] --> false
      XList[XPi,XI,XE,XTrue,XFalse,XBreak,#1,1.5,"s"] --> XList[XPi,XI,XE,XTrue,XFalse,XBreak,#1,1.5,"s"] --> true
      "s" --> "t" --> false       #1 --> #2 --> false         Iterator[i,1,n] --> Iterator[i,1,n] --> true
      IReduce[f,x,{Iterator[i,1,n]},&] --> IReduce[f,x,{Iterator[i,1,n]},&] --> false     XNull --> XNull --> false
      & --> & --> false
    )"))
    EXPECT_EQ((same == "true"), Is_same(typed_tree(a), typed_tree(b)) != 0) << a << ' ' << b;
}

// One bucket is split by the 513th element and by each second one from there.
TEST_F(Cse, TableGrowsByOneBucket) {
  constexpr int kCount = 100000;
  const auto expr = [](int k) { return mXSin(mIntConst(k)); };
  std::vector<cse_element_t*> elements;
  for (int k = 1; k <= kCount; k++) {
    elements.push_back(cse_enter(7, expr(k)));
    const int splits = k <= 512 ? 0 : (k - 511) / 2;
    ASSERT_EQ(256u + static_cast<unsigned>(splits), cse_buckets()) << k;
  }
  for (int k = 1; k <= kCount; k++) ASSERT_EQ(elements[static_cast<size_t>(k - 1)], cse_enter(7, expr(k))) << k;
  EXPECT_NE(elements[0], cse_enter(8, expr(1))) << "another value number is another value";
  EXPECT_EQ(kCount + 1u, cse_elements());
}

// All products a[[i]] * b[[j]] with the same i + j have one value number.
TEST_F(Cse, LongListsDeepNestingAndEqualNumbers) {
  constexpr int kSide = 400;
  tAsynt terms = mExpression0();
  const tAsynt v = typed_tree("v");
  const auto part = [&](int k) { return mXPart(no_place(), list({mSymbol(Symbol_SymInfo(v)), mIntConst(k)})); };
  for (int k = 0; k < kSide * kSide; k++)
    terms = mExpression1(mXSubtract(no_place(), part(k / kSide), part(k % kSide)), terms);
  tAsynt sum = mXPlus(no_place(), terms);
  oz::Cse(sum, &sum);
  EXPECT_EQ(kSide * kSide + kSide + 1, temp_no - 1);

  begin();
  tAsynt deep = nested(kMaxNesting, typed_tree("x"), [](tAsynt core) { return mXPlus(no_place(), list({core})); });
  oz::Cse(deep, &deep);
  EXPECT_EQ(kMaxNesting, temp_no - 1);
}

}  // namespace
}  // namespace oz
