// C++ expressions and statements: tables of typed trees and the text that each becomes.

#include "pompunp.h"

#include <cmath>
#include <vector>

#include "fatal_text.h"
#include "nesting.h"
#include "operator_name.h"
#include "output_stream.h"
#include "oz.h"
#include "type.h"
#include "type_text.h"
#include "unparse.h"

namespace oz {
namespace {

const char kNames[] =
    "a:real b:real c:bool d:bool i:int j:int n:int x:real y:real z:complex s:string u:none "
    "iv:int[3] jv:int[3] v:real[3] w:real[3] zv:complex[3] im:int[2,3] m:real[2,3] q:real[2,2] t:real[2,3,4] "
    "h:real[2,2,2,2] h5:real[2,2,2,2,2] C`f:real C`g:multi(real,real) C`p:multi() A$:real ";

struct Row {
  const char* input;
  std::string expected;
};
using Rows = std::vector<Row>;

struct PompUnp : testing::Test {
  OutputStream cc, levels;

  PompUnp() {
    bigbuf_init();
    init_operator_name();
    cpinit_operator_name();
    Begintype();
    Set_declaration_finder(nullptr);
    declare_types(kNames);
    cpoutput_file = cc.f;
    cpoutput_lm_file = levels.f;
    cpinit();
  }
  ~PompUnp() override {
    cpoutput_file = cpoutput_lm_file = nullptr;
    cpinit();
  }

  // What is written from the start of a line.
  template <typename Write>
  std::string written(Write write) {
    cpoutput("\n");
    return cc.added(write);
  }
  void expect_texts(void (*write)(tAsynt), const Rows& rows) {
    for (const Row& row : rows) {
      std::string report;
      EXPECT_EQ(row.expected, written([&] { report = message_of([&] { write(typed_tree(row.input)); }); }))
          << row.input;
      EXPECT_EQ("", report) << row.input;
    }
  }
  void expect_values(const Rows& rows) { expect_texts(CPunparseVal, rows); }
  void expect_stmts(const Rows& rows) { expect_texts(CPunparseStmt, rows); }
  // Text and messages, which end what is written when they are fatal.
  void expect_reports(void (*write)(tAsynt), const char* input, const std::string& text, const char* message) {
    std::string report;
    EXPECT_EQ(text, written([&] { report = message_of([&] { write(typed_tree(input)); }); })) << input;
    EXPECT_TRUE(contains(report, message)) << input << '\n' << report;
  }
};

// A real constant as it is printed.
std::string real(const std::string& digits) { return std::string(26 - digits.size(), ' ') + digits; }

void small_stmt(tAsynt t) { CPunparseSmallStmt(t); }

// ---- expressions

TEST_F(PompUnp, Leaves) {
  expect_values({{"x", "x"},
                 {"A$", "A_D"},
                 {"#-17", "-17"},
                 {"\"a \\\\ b\"", "\"a \\\\ b\""},
                 {"12", "12"},
                 {"2.5", "2.5"},
                 {"XPi", "3.14159265358979323846"},
                 {"XE", "2.71828182845904523536"},
                 {"XI", "lm_complex(0,1)"},
                 {"XTrue", "1"},
                 {"XFalse", "0"},
                 {"XNull", ""},
                 {"GeneralConversion[i,int,real]", "i"},
                 {"ShapeConversion[x,{},{}]", "x"}});
  EXPECT_EQ(real("-0.25"), written([] { CPunparseVal(mRealConst(-0.25)); }));
  EXPECT_EQ("1.5e-3", written([] { CPunparseVal(mExactRealConst(const_cast<char*>("1.5*^-3"))); }));
  EXPECT_EQ("out.dat", written([] { CPunparseVal(mFilename(const_cast<char*>("out.dat"))); }));
  cpoutput(xs(70));
  EXPECT_EQ("\"" + xs(90) + "\"\n    y", cc.added([] {  // a string constant is not broken, what follows is
    CPunparseVal(mStringConst(const_cast<char*>(xs(90).c_str())));
    cpoutput("y");
  }));
  // Kinds without a type are reported and written.
  const char kNoRule[] = "Could not evaluate data type for node";
  expect_reports(CPunparseVal, "XAll", "XAll", kNoRule);
  expect_reports(CPunparseVal, "NonAlgAuxiliary[x]", "x", kNoRule);
  expect_reports(CPunparseVal, "BasicConversion[x,real,real]", "x", kNoRule);
  expect_reports(CPunparseVal, "&", "", kNoRule);
  expect_reports(CPunparseVal, "Comment", "", kNoRule);
}

TEST_F(PompUnp, Calls) {
  expect_values(
      {{"C`f[x,i]", "f (x, i)"}, {"C`f[]", "f ()"}, {"C`f[x][y]", "f (x) (y)"}, {"XN[C`f[XPlus[x,y]]]", "f (x+y)"}});
  expect_reports(CPunparseVal, "C`g[x]", "",
                 "The function returns multiple values is called in expression. Write a separate statement instead.");
}

TEST_F(PompUnp, FunctionsOfOneArgument) {
  expect_values({{"XSin[x]", "sin(x)"},
                 {"XArcSin[x]", "asin(x)"},
                 {"XSinh[x]", "sinh(x)"},
                 {"XArcSinh[x]", "asinh(x)"},
                 {"XCos[x]", "cos(x)"},
                 {"XArcCos[x]", "acos(x)"},
                 {"XCosh[x]", "cosh(x)"},
                 {"XArcCosh[x]", "acosh(x)"},
                 {"XTan[x]", "tan(x)"},
                 {"XArcTan[x]", "atan(x)"},
                 {"XTanh[x]", "tanh(x)"},
                 {"XArcTanh[x]", "atanh(x)"},
                 {"XExp[x]", "exp(x)"},
                 {"XLog[x]", "log(x)"},
                 {"XSqrt[x]", "sqrt(x)"},
                 {"XAbs[x,none]", "abs(x)"},
                 {"XFloor[x]", "ifloor(x)"},
                 {"XCeiling[x]", "iceil(x)"},
                 {"XRound[x]", "irint(x)"},
                 {"XTranspose[m]", "Transpose(m)"},
                 {"XSort[v]", "lumen_sort(v)"},
                 {"XMean[v]", "lumen_mean(v)"},
                 {"XVariance[v]", "lumen_variance(v)"},
                 {"XTotal[v]", "lumen_total(v)"},
                 {"XMedian[v]", "lumen_median(v)"},
                 {"XStandardDeviation[v]", "lumen_standard_deviation(v)"},
                 {"XNot[c]", "!(c)"},
                 {"XStringLength[s]", "XStringLength(s)"},
                 {"XCot[XPlus[x,y]]", "1/tan(x+y)"},
                 {"XCoth[x]", "1/tanh(x)"},
                 {"XSec[x]", "1/cos(x)"},
                 {"XSech[x]", "1/cosh(x)"},
                 {"XCsc[x]", "1/sin(x)"},
                 {"XCsch[x]", "1/sinh(x)"},
                 {"XArcCot[XTimes[x,y]]", "atan(1/(x*y))"},
                 {"XArcCoth[XMinus[x]]", "atanh(1/-x)"},
                 {"XSign[x]", "sign (x)"},
                 {"XIntegerPart[x]", "IntegerPart(x)"},
                 {"XFractionalPart[x]", "FractionalPart(x)"},
                 {"XN[i]", "double (i)"},
                 {"XN[iv]", "doubleN (iv)"},
                 {"XN[x]", "x"},
                 {"XGenTypeInformation[x]", "  /* GenTypeInformation[x ]=  Real */  x"},
                 {"XRe[z]", "re(z)"},
                 {"XRe[x]", "x"},
                 {"XIm[zv]", "im(zv)"},
                 {"XIm[x]", "0"},
                 {"XArg[z]", "arg(z)"},
                 {"XArg[x]", "0"},
                 {"XConjugate[z]", "conjugate(z)"},
                 {"XConjugate[x]", "x"}});
  // The rest of those that go by their kind's own name has no type.
  for (const char* kind :
       {"XFactorial", "XFactorial2", "XUnset", "XLambda", "XRepeated", "XRepeatedNull", "XIncrement", "XDecrement",
        "XPreIncrement", "XPreDecrement", "XFunction", "XStringReverse", "XGenCodeString"})
    expect_reports(CPunparseVal, (std::string(kind) + "[x]").c_str(), std::string(kind) + "(x)", kind);
}

TEST_F(PompUnp, TwoOperands) {
  expect_values({{"ArcTan2[x,y]", "atan2(y, x)"},
                 {"NaturalDivide[v,w]", "IntegerPart(ElemQuotient(v, w))"},
                 {"NaturalDivide[XTimes[i,j],n]", "IntegerPart((i*j) / n)"},
                 {"XQuotient[iv,jv]", "floor(ElemQuotient(iv, jv))"},
                 {"XQuotient[i,XMinus[j]]", "floor(i / -j)"},
                 {"XMod[XPlus[i,j],n]", "Mod(i+j, n)"},
                 {"XComplex[x,i]", "lm_complex(x, i)"},
                 {"XExtract[v,iv]", "v.Extract(iv)"},
                 {"XExtract[XPlus[v,w],iv]", "(v+w).Extract(iv)"},
                 {"OuterProduct[v,w]", "OuterProduct(v, w)"},
                 {"XAppend[v,x]", "Append(v,x)"},
                 {"XPrepend[v,x]", "Prepend(v,x)"},
                 {"XMinus[XPlus[x,y]]", "-(x+y)"},
                 {"XMinus[XTimes[x,y]]", "-(x*y)"},
                 {"XMinus[XMinus[x]]", "-(-x)"},
                 {"XSubtract[x,XSubtract[y,z]]", "x-(y-z)"},
                 {"XSubtract[XSubtract[x,y],z]", "(x-y)-z"},
                 {"XSubtract[x,XTimes[y,z]]", "x-y*z"},
                 {"XDivide[iv,jv]", "ElemQuotient (doubleN (iv), jv)"},
                 {"XDivide[v,w]", "ElemQuotient (v, w)"},
                 {"XDivide[i,XTimes[j,n]]", "double (i)/(j*n)"},
                 {"XDivide[iv,i]", "doubleN (iv)/i"},
                 {"XDivide[XPlus[x,y],XDivide[y,x]]", "(x+y)/(y/x)"},
                 {"XDrop[v,XList[i,j]]", "Drop(v,R(i,j))"},
                 {"XDrop[v,XList[i]]", "Drop(v,R(i,i))"},
                 {"XDrop[v,i]", "(i>0 ? Drop(v,R(1,i)):Drop(v,R(i,-1)))"},
                 {"XPower[x,2]", "(x*x)"},
                 {"XPower[x,3]", "(x*x*x)"},
                 {"XDivide[y,XPower[x,4]]", "y/(x*x*x*x)"},
                 {"XPower[x,5]", "pow(x, 5)"},
                 {"XPower[x,1]", "pow(x, 1)"},
                 {"XPower[x,i]", "pow(x, i)"},
                 {"XPower[v,2]", "pow(v, 2)"},
                 {"XPower[XPlus[x,y],2]", "pow(x+y, 2)"}});
}

// No "--", which is another operator; blanks part the signs of padded reals.
TEST_F(PompUnp, SignsBehindAMinus) {
  expect_values({{"XSubtract[x,XMinus[y]]", "x-(-y)"},
                 {"XSubtract[x,-2]", "x-(-2)"},
                 {"XSubtract[x,#-2]", "x-(-2)"},
                 {"XSubtract[x,-2.5]", "x-(-2.5)"},
                 {"XSubtract[x,XTimes[2,-3]]", "x-(-6)"},
                 {"XSubtract[x,XTimes[2,-1.5]]", "x-" + real("-3")},
                 {"XSubtract[x,XTimes[-2,y]]", "x-(-2*y)"},
                 {"XSubtract[x,XDivide[XMinus[y],x]]", "x-(-y/x)"},
                 {"XSubtract[x,XDivide[-4,i]]", "x-double (-4)/i"},
                 {"XSubtract[x,XTimes[XPlus[XMinus[y],x],y]]", "x-(-y+x)*y"},
                 {"XSubtract[x,GeneralConversion[XMinus[i],int,real]]", "x-(-i)"},
                 {"XSubtract[x,XN[XMinus[y]]]", "x-(-y)"},
                 {"XSubtract[x,XRe[XSubtract[XMinus[y],x]]]", "x-(-y-x)"},
                 {"XSubtract[v,XTimes[XMinus[v],w]]", "v-ElemProduct (-v, w)"},
                 {"XMinus[XFloor[-2.5]]", "-(-3)"},
                 {"XMinus[-2]", "-(-2)"},
                 {"XPlus[x,XMinus[y]]", "x+-y"},
                 {"XTimes[-2,x]", "-2*x"}});
}

TEST_F(PompUnp, SeveralOperands) {
  expect_values({{"XOr[c,XAnd[c,d],XOr[d,c]]", "c || c && d || (d || c)"},
                 {"XAnd[c,XOr[d,c]]", "c && (d || c)"},
                 {"XEqual[i,j]", "i == j"},
                 {"XEqual[i]", "1"},
                 {"XEqual[c,XEqual[i,j]]", "c == (i == j)"},
                 {"XGreater[x,y]", "x > y"},
                 {"XLess[a,XPlus[b,x],y]", "a < b+x && b+x < y"},
                 {"XGreaterEqual[x,y,a,b]", "x >= y && y >= a && a >= b"},
                 {"XLessEqual[x,y]", "x <= y"},
                 {"XUnequal[x,y,a]", "x != y != a"},
                 {"XPlus[x]", "x"},
                 {"XPlus[x,XPlus[y,a],XTimes[b,x]]", "x+(y+a)+b*x"},
                 {"XPlus[x,XTimes[XI,XPlus[y,a]]]", "lm_complex(x, y+a)"},
                 {"XPlus[1,XTimes[XI,2]]", "lm_complex(1, 2)"},
                 {"XPlus[x,XTimes[y,XI]]", "x+y*lm_complex(0,1)"},
                 {"XTimes[x,XPlus[y,a],XTimes[b,x]]", "x*(y+a)*(b*x)"},
                 {"XTimes[x,v]", "x*v"},
                 {"XTimes[v,x]", "v*x"},
                 {"XTimes[x,v,w]", "x*v*w"},
                 {"XTimes[v,w]", "ElemProduct (v, w)"},
                 {"XTimes[v,XPlus[v,w],x,w]", "ElemProduct (v, ElemProduct (v+w, x*w))"},
                 {"XTimes[v,XPlus[v,w]]", "ElemProduct (v, (v+w))"},
                 {"XDot[m,XTranspose[m],XPart[m,1]]", "m*(Transpose(m))*(m(1,All))"},
                 {"XDot[v,w]", "v*w"},
                 {"Cross[v,w]", "Cross(v, w)"},
                 {"XInequality[a,XLess,XPlus[b,x],XGreaterEqual,y]", "(a < b+x) && (b+x >= y)"},
                 {"XInequality[a]", ""}});
  for (const char* input : {"XOr[]", "XAnd[]", "XEqual[]", "XUnequal[]", "XPlus[]", "XTimes[]"})
    expect_reports(CPunparseVal, input, "", "Tried to type empty expression list.");
  expect_reports(CPunparseVal, "XStringJoin[s,s]", "", "StringJoin not supported");
  expect_reports(CPunparseVal, "XStringTake[s,XList[1,2]]", "", "StringTake not supported");
}

TEST_F(PompUnp, Alternatives) {
  expect_values({{"XIf[c,x,XPlus[y,a]]", " (( c ) ? ( x ) : ( y+a )) "},
                 {"XWhich[c,1]", "( (c) ? (1) :  ( 1 ) )"},
                 {"XWhich[c,x,d,y]", "( (c) ? (x) : ( (d) ? (y) :  ( y ) ))"},
                 {"XTimes[2,XIf[c,x,y]]", "2* (( c ) ? ( x ) : ( y )) "},
                 {"XCompoundExpression[XSet[a,1],XSet[b,2],XPlus[a,b]]", " ( a = 1,b = 2,a+b ) "},
                 {"XCompoundExpression[XSet[a,1],XCompoundExpression[XSet[b,2],x]]", " ( a = 1,b = 2,x ) "},
                 {"XCompoundExpression[x]", " ( x ) "},
                 {"XPlus[1,XSet[i,2]]", "1+(i = 2)"}});
  expect_reports(CPunparseVal, "XWhich[c,x,d]", "", "");
  expect_reports(CPunparseVal, "XCompoundExpression[]", "", "Could not evaluate data type");
  const char kLarge[] = "Only simple assignements or output statements (small statements) can be used within compound";
  expect_reports(CPunparseVal, "XCompoundExpression[C`f[x],XSet[a,1],x]",
                 " ( f (x) (* Small statement(2) expected *) , a = 1,x ) ", kLarge);
  expect_reports(CPunparseVal, "XCompoundExpression[C`f[x],x]", " ( f (x)(* Small statement(1) expected *) ,x ) ",
                 "expressions. Code: ");
}

TEST_F(PompUnp, ArrayOperations) {
  expect_values({{"XCols[m,1,2]", "m.Cols(1, 2 )"},
                 {"XRows[m,i]", "m.Rows(i )"},
                 {"XSubMatrix[XPlus[m,m],1,2,1,2]", "(m+m).SubMatrix(1, 2, 1, 2 )"},
                 {"XCol[m,1]", "m.Col(1 )"},
                 {"XRow[m,1]", "m.Row(1 )"},
                 {"XSubVector[v,1,2]", "v.SubVector(1, 2 )"},
                 {"XMax[v]", "LumenMax(v)"},
                 {"XMin[v]", "LumenMin(v)"},
                 {"XMax[x,i]", "Max(x,i)"},
                 {"XMin[x,i]", "Min(x,i)"},
                 {"XJoin[v,w]", "Join(v,w)"},
                 {"XJoin[v,w,v,XPlus[v,w]]", "Join(v,Join(w,Join(v,v+w)))"},
                 {"XQuantile[v,x]", "lumen_quantile2(v, x)"},
                 {"XQuantile[v,w]", "lumen_quantile2L(v, w)"},
                 {"XQuantile[v,x,q]", "lumen_quantile3(v, x, q)"},
                 {"XQuantile[v,w,q]", "lumen_quantile3L(v, w, q)"},
                 {"XFlatten[m]", "lumen_flatten(m)"},
                 {"XFlatten[v,1]", "/*1--1*//* rank=1*/v"},
                 {"XFlatten[m,0]", "/*0--0*//* rank=2*/lumen_flatten0(m)"},
                 {"XFlatten[m,1]", "/*1--1*//* rank=2*/lumen_flatten(m)"},
                 {"XFlatten[t,0]", "/*0--0*//* rank=3*/lumen_flatten0(t)"},
                 {"XFlatten[t,1]", "/*1--1*//* rank=3*/lumen_flatten1(t)"},
                 {"XFlatten[t,2]", "/*2--2*//* rank=3*/lumen_flatten(t)"},
                 {"XFlatten[h,0]", "/*0--0*//* rank=4*/lumen_flatten0(h)"},
                 {"XFlatten[h,1]", "/*1--1*//* rank=4*/lumen_flatten1(h)"},
                 {"XFlatten[h,2]", "/*2--2*//* rank=4*/lumen_flatten2(h)"},
                 {"XFlatten[h,3]", "/*3--3*//* rank=4*/lumen_flatten(h)"},
                 {"XFlatten[h5,0]", "/*0--0*//* rank=5*/h5)"},
                 {"XDimensions[v]", "make_lumenN(1,v.dimension(1))"},
                 {"XDimensions[m]", "make_lumenN(2,m.dimension(1),m.dimension(2))"},
                 {"XDimensions[t]", "make_lumenN(3,t.dimension(1),t.dimension(2) ,t.dimension(3))"},
                 {"XDimensions[h]", "make_lumenN(4,h.dimension(1),h.dimension(2) ,h.dimension(3) ,h.dimension(4))"}});
  expect_reports(CPunparseVal, "XFlatten[m,-1]", "/*-1---1*/", "invalid 2nd argument to Flatten");
  expect_reports(CPunparseVal, "XDimensions[h5]", "", "Dimension[] must be given an argument of  array type ");
  expect_reports(CPunparseVal, "XDimensions[m,2]", "", "Dimension[] with two parameters not implemented");
  expect_reports(CPunparseVal, "XDimensions[x]",
                 "make_lumenN(4,x.dimension(1),x.dimension(2),x.dimension(3),x.dimension(4)) ",
                 "Unclear type at Dimensions[] in  CPunparse_dimension_non_array_type x may cause problems in future.");
  const char kNoValue[] =
      "An expression returning a single value is expected where a complete statement is detected. Can't perform "
      "CPunparseVal to generate code for  node type: \"";
  expect_reports(CPunparseVal, "XWhile[c,x]", "", "XWhile\",  statement \" XWhile[args...] \" ");
  for (const char* input : {"XQuantile[v]", "XFlatten[m,1,1]", "XImport[s]", "XDimensions[]", "XMap[x,y]"})
    expect_reports(CPunparseVal, input, "", kNoValue);
  expect_reports(CPunparseVal, "XJoin[v]", "Join(v,", kNoValue);
}

// How many ranks the array library must have.
TEST_F(PompUnp, LevelsOfTheArrayLibrary) {
  const struct {
    const char *input, *levels;
  } rows[] = {{"XCol[m,1]", "#define LM_NN\n"},
              {"XDimensions[t]", "#define LM_NNN\n"},
              {"XList[1,x]", "#define LM_NNNN\n"},
              {"XDivide[iv,jv]", "#define LM_N\n"},
              {"XPart[m,1]", ""}};
  for (const auto& row : rows)
    EXPECT_EQ(row.levels, levels.added([&] { CPunparseVal(typed_tree(row.input)); })) << row.input;
}

TEST_F(PompUnp, Lists) {
  expect_values({{"XList[x]", " make_lumenN(1, x )"},
                 {"XList[XList[1,2],XList[i,j]]", " make_lumenN(2,  make_lumenN(2, 1, 2 ),  make_lumenN(2, i, j ) )"},
                 {"XList[1,2,3,4,5,6,7,8,9,0]", " make_lumenN(10, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0 )"},
                 {"XList[1,2,3,4,5,6,7,8,9,0,i]",
                  "\n    lumen_flatten(make_lumenN(2,\n        make_lumenN(10,1,2,3,4,5,6,7,8,9,0),\n        "
                  "make_lumenN(1,i) ))(R(1,11))"},
                 {"XList[1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6,7,8,9,0]",  // the last chunk is empty
                  "\n    lumen_flatten(make_lumenN(2,\n        make_lumenN(10,1,2,3,4,5,6,7,8,9,0),\n        "
                  "make_lumenN(0) ))(R(1,20))"}});
  const auto ones = [](int n) {
    tAsynt list = mExpression0();
    for (; n > 0; n--) list = mExpression1(mIntConst(1), list);
    return mXList(mkNonConvPos(NoPosition), list);
  };
  const tAsynt hundred = ones(100);
  const std::string text = written([&] { CPunparseVal(hundred); });
  EXPECT_TRUE(contains(text, "(make_lumenN(10,\n") && contains(text, "make_lumenN(0) ))(R(1,100))")) << text;
  EXPECT_EQ(text, written([&] { CPunparseVal(hundred); }));  // the list is still there
  std::string report;
  EXPECT_EQ("", written([&] { report = reported([&] { CPunparseVal(ones(101)); }); }));
  EXPECT_TRUE(
      contains(report, "Expression in {...} should not have more than 100 elements. Use intermediate variable."));
}

TEST_F(PompUnp, Parts) {
  expect_values({{"XPart[v,1]", "v(1)"},
                 {"XPart[m,2]", "m(2,All)"},
                 {"XPart[t,i]", "t(i,All,All)"},
                 {"XPart[m,XAlternatives[2,3],1]", "m(R(2,3), 1)"},
                 {"XPart[m,XAlternatives[2,XBlank],XBlank]", "m(R(2,-1), All)"},
                 {"XPart[m,XAlternatives[XBlank,XPlus[i,j]],XAll]", "m(R(1,i+j), All)"},
                 {"XPart[m,XAlternatives[XBlank,XBlank],XList[i]]", "m(R(1,-1), R(i,i))"},
                 {"XPart[XPlus[v,w],i]", "(v+w)(i)"},
                 {"XPart[XTranspose[m],i,j]", "(Transpose(m))(i, j)"},
                 {"XPart[XPart[m,1],2]", "(m(1,All))(2)"},
                 {"XPart[XDimensions[m],1]", "m.dimension(1)"},
                 {"XPart[XDimensions[XPlus[m,m]],i]", "(m+m).dimension(i)"}});
}

TEST_F(PompUnp, Folding) {
  expect_values({{"XPlus[2,3]", "5"},
                 {"XPlus[2.0,3]", real("5")},
                 {"XSubtract[2,XTimes[3,4]]", "-10"},
                 {"XTimes[2,XMinus[3],#4]", "-24"},
                 {"XPower[2,-1]", "0"},
                 {"XPower[10,9]", "1000000000"},
                 {"XPower[10,12]", real("1000000000000")},
                 {"XMinus[XPlus[2,3]]", "-(5)"},
                 {"XMinus[2]", "-2"},
                 {"XDivide[1,4]", real("0.25")},
                 {"XDivide[1,0]", real("inf")},
                 {"XPlus[x,XTimes[2,3]]", "x+6"},
                 {"XPlus[XFloor[2.5],XCeiling[2.5],XRound[2.5],XIntegerPart[-2.5]]", "5"},
                 {"XIntegerPart[-2.5]", "-2"},
                 {"XFractionalPart[-2.5]", real("-0.5")},
                 {"XN[2]", real("2")},
                 {"XSin[XPi]", real("1.224646799147353e-16")},
                 {"XLog[XE]", real("1")},
                 {"XSech[0.5]", real("3.762195691083631")},         // cosh(2)
                 {"XN[ArcTan2[-1,0]]", real("3.141592653589793")},  // the angle of (-1, 0)
                 {"XN[XMinus[1.5]]", real("-1.5")},
                 {"XPlus[XTimes[0.1,3],XSubtract[0.3,0.1]]", real("0.5")},
                 {"ArcTan2[3,4]", "atan2(4, 3)"}});
  const struct {
    const char* kind;
    double at_half;
  } functions[] = {{"XSin", 0.479425538604203},
                   {"XArcSin", 0.5235987755982989},
                   {"XSinh", 0.5210953054937474},
                   {"XArcSinh", 0.4812118250596035},
                   {"XCos", 0.8775825618903728},
                   {"XArcCos", 1.047197551196598},
                   {"XCosh", 1.127625965206381},
                   {"XArcCosh", std::nan("")},
                   {"XTan", 0.5463024898437905},
                   {"XArcTan", 0.4636476090008061},
                   {"XTanh", 0.46211715726001},
                   {"XArcTanh", 0.5493061443340548},
                   {"XExp", 1.648721270700128},
                   {"XLog", -0.6931471805599453},
                   {"XSqrt", 0.7071067811865476},
                   {"XCot", 1.830487721712452},
                   {"XCoth", 2.163953413738653},
                   {"XSec", 1.139493927324549},
                   {"XCsc", 2.085829642933488},
                   {"XCsch", 1.919034751334944},
                   {"XArcCot", 1.107148717794090},
                   {"XSech", 3.762195691083631},
                   {"XArcCoth", std::nan("")},
                   {"XFloor", 0},
                   {"XCeiling", 1},
                   {"XRound", 0}};
  for (const auto& f : functions) {
    const double result = CPevaluate(typed_tree(std::string(f.kind) + "[0.5]"));
    if (std::isnan(f.at_half))
      EXPECT_TRUE(std::isnan(result)) << f.kind;
    else
      EXPECT_NEAR(f.at_half, result, 1e-14) << f.kind;
  }
  // From the right: 1 is lost beside 1e16 unless it meets its like first.
  EXPECT_EQ(1e16 + 2, CPevaluate(typed_tree("XPlus[10000000000000000,1,1]")));
  expect_reports(CPunparseVal, "XSign[2]", "", "Found non-implemented node for  CPevaluate XSign");
  EXPECT_TRUE(contains(message_of([] { CPevaluateVariadic(typed_tree("XDot[]"), mExpression0()); }),
                       "Bad args CPevaluateVariadic"));
}

// Each level would be looked through from every level above it.
TEST_F(PompUnp, DeepExpressions) {
  constexpr size_t kLevels = kMaxNesting / 2;
  tAsynt t = typed_tree("x");
  std::string expected = "1+2*";
  for (size_t i = 0; i < kLevels; i++) {
    const tAsynt product =
        mXTimes(mkNonConvPos(NoPosition), mExpression1(mIntConst(2), mExpression1(t, mExpression0())));
    t = mXPlus(mkNonConvPos(NoPosition), mExpression1(mIntConst(1), mExpression1(product, mExpression0())));
    if (i > 0) expected += "(1+2*";
  }
  expected += "x" + std::string(kLevels - 1, ')');
  std::string text = written([&] { CPunparseVal(t); });
  std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
  EXPECT_EQ(expected, text);
}

// ---- statements

TEST_F(PompUnp, ControlFlow) {
  expect_stmts(
      {{"XNull", ""},
       {"XVoidFunc", ""},
       {"XBreak", "break;"},
       {"XCompoundExpression[]", ""},
       {"XCompoundExpression[XSet[x,1],C`f[x],XNull,XSet[y,2]]", "x = 1;\nf (x);\n\ny = 2;"},
       {"C`f[x,y]", "f (x, y)"},
       {"C`f[x][y]", "f (x) (y)"},
       {"XWhile[c,XSet[x,1]]", "while (c)\n{\n    x = 1;\n}"},
       {"XWhile[c,&]", "while (c)\n{\n\n}"},
       {"XWhile[c,C`f[x]]", "while (c)\n{\nf (x);\n}"},
       {"XFor[XSet[i,1],XLess[i,n],XSet[i,XPlus[i,1]],XSet[x,i]]",
        "i = 1;\nwhile (i < n)\n{\n    x = i;\n    i = i+1;\n}"},
       {"Do[XSet[x,i],Iterator[i,1,n]]", "for( i = 1; i <= n; i++)\n{   x = i;\n}"},
       {"Do[XSet[x,a],Iterator[a,2.5,n]]", "for( a = 2.5; a <= n; a++)\n{   x = a;\n}"},
       {"XIf[c,XSet[x,1],&]", "if (c)\n{\n    x = 1;\n}"},
       {"XIf[c,XSet[x,1],XSet[x,2]]", "if (c)\n{\n    x = 1;\n}\nelse\n{\n    x = 2;\n}"},
       {"XIf[c,XSet[x,1],XIf[d,XSet[x,2],&]]", "if (c)\n{\n    x = 1;\n}\nelse if (d)\n{\n    x = 2;\n}"},
       {"XIf[c,XSet[x,1],XIf[d,XSet[x,2],XSet[x,3]]]",
        "if (c)\n{\n    x = 1;\n}\nelse if (d)\n{\n    x = 2;\n}\nelse\n{\n    x = 3;\n}"},
       {"XIf[c,XIf[d,C`f[x],&],C`f[y]]", "if (c)\n{\n    if (d)\n    {\nf (x);\n    }\n}\nelse\n{\n    f (y);\n}"},
       {"XWhich[c,XSet[x,1],d,XSet[x,2]]", "if (c)\n{\n    x = 1;}\nelse if (d)\n{\n    x = 2;}\n"},
       {"XWhich[]", ""},
       {"XGenCodeString[\"x++;\"]", "/*GenCode begin */x++;/* end GenCode */"}});
  expect_reports(CPunparseStmt, "XWhich[c]", "", "Bad arguments to Which[bool,stmt,...],  even number of parameters.");
  expect_reports(CPunparseStmt, "C`g[x]", "",
                 "The function C`g is declared as returning multiple values. Therefore it cannot be used within an "
                 "expression. Write a separate statement such as {a,b,c}=C`g[d]; in order to obtain the output.");
  const char kNoStatement[] =
      "A statement expected in a place where a single expression is detected.  Can't perform CPunparseStmt to generate "
      "code for type:\" ";
  for (const char* input :
       {"x", "XPlus[x,y]", "XGenCodeString[x]", "XSetDelayed[x,y]", "XExport[s,v,s,s]", "XSetCol[]"})
    expect_reports(CPunparseStmt, input, "", kNoStatement);
}

TEST_F(PompUnp, Assignments) {
  expect_stmts({{"XSet[x,XPlus[y,1]]", "x = y+1;"},
                {"XSet[x,XSet[y,1]]", "x = y = 1;"},
                {"XSet[x,XIf[c,1,2]]", "if (c)\n{\n    x = 1;\n}\nelse\n{\n    x = 2;\n}"},
                {"XSet[x,XWhich[c,y]]", "x = ( (c) ? (y) :  ( y ) );"},
                {"XSet[XList[a,b],C`g[x]]", "g (x, a, b);"},
                {"XSet[XList[a,b],C`g[]]", "g (a, b);"},
                {"XSet[XList[a,b],XList[1,2]]", "a = 1;\nb = 2;\n"},
                {"XSet[XList[a,XList[b,x]],XList[1,XList[y,2]]]", "a = 1;\nb = y;\nx = 2;\n\n"},
                {"XSet[XList[],XList[]]", ""},
                {"XSet[XList[a,b],v]", "a = v(1);\nb = v(2);\n"},
                {"XSet[XList[XList[a,b],XList[x,y]],m]", "a = m(1, 1);\nb = m(1, 2);\nx = m(2, 1);\ny = m(2, 2);\n"},
                {"XSet[v,XList[1,2]]", "v.SetShape(2 );\nv(1) = 1;\nv(2) = 2;\n"},
                {"XSet[m,XList[XList[1,x],XList[XIf[c,1,2],y]]]",
                 "m.SetShape(2, 2 );\nm(1, 1) = 1;\nm(1, 2) = x;\nif (c)\n{\n    m(2, 1) = 1;\n}\nelse\n{\n"
                 "    m(2, 1) = 2;\n}\nm(2, 2) = y;\n"},
                {"XSet[XPart[m,2],XList[x,y]]", "m(2, 1) = x;\nm(2, 2) = y;\n"},
                {"XSet[XPart[v,1],5]", "v(1) = 5;"},
                {"XSet[XPart[m,i,j],5]", "m(i, j) = 5;"},
                {"XSet[XPart[XPart[t,1],2,3],x]", "t(1, 2, 3) = x;"},
                {"XSet[XPart[XPart[XPart[t,1],2],3],x]", "t(1, 2, 3) = x;"},
                {"XSet[XPart[m,1],5]", "m.Set(1,All,5);"},
                {"XSet[XPart[m,1],v]", "m.Set(1,All,v);"},
                {"XSet[XPart[t,XBlank,i],m]", "t.Set(All, i,All,m);"},
                {"XSet[XPart[v,XAlternatives[1,XBlank]],w]", "v.Set(R(1,-1),w);"},
                {"XSet[XPart[XPart[m,1],XAll],v]", "m.Set(1, All,v);"},
                {"XSetSubMatrix[m,1,1,q]", "m.SetSubMatrix(1, 1, q );"},
                {"XSetSubVector[v,1,w]", "v.SetSubVector(1, w );"},
                {"XSetCol[m,1,v]", "m.SetCol(1, v );"},
                {"XSetRow[m,1,v]", "m.SetRow(1, v );"},
                {"XSetCols[m,1,q]", "m.SetCols(1, q );"},
                {"XSetRows[m,1,q]", "m.SetRows(1, q );"},
                {"XSetShape[v,n]", "v.SetShape(n );"}});
  const char kRest[] = "list. Rest skipped. ";
  expect_reports(CPunparseStmt, "XSet[XList[a,b,x],XList[1]]", "a = 1;\n",
                 "In assignment the lhs list is larger than rhs list. Rest skipped. b");
  expect_reports(CPunparseStmt, "XSet[XList[a],XList[1,y]]", "a = 1;\n",
                 "In assignment the rhs list is larger than lhs list. Rest skipped. y");
  expect_reports(CPunparseStmt, "XSet[XList[],XList[1]]", "", kRest);
  expect_reports(CPunparseStmt, "XSet[XPart[m,1,2,3],5]", ";",
                 "Left part of assignment has too many indexes,, i.e. more than rank of the array in  m[[1,2,3]] =5");
  expect_reports(CPunparseStmt, "XSet[XPart[m,1],m]", "m.Set(1,All,m);",
                 "Suspecting  incompatible ranks in assignment: base rank of LHS asrray =2, reduction or rank due to "
                 "indexing = 1 levels , RHS expression rank = 2 in m[[1]] =m");
  expect_reports(small_stmt, "XSet[XList[a],v]", " make_lumenN(1, a ) = v",
                 "Complex assignment with the list in left part cannot be used within expression");
}

// A scalar that was read as one for the whole array; dimensions are lists.
TEST_F(PompUnp, SpreadScalars) {
  const auto dims = [](int n) { return mExpression1(mIntConst(n), mExpression1(mIntConst(3), mExpression0())); };
  const auto assigned = [&](const char* value, tAsynt from, tAsynt to) {
    const tAsynt conversion = mShapeConversion(typed_tree(value), from, to);
    return written([&] { CPunparseStmt(mXSet(mkNonConvPos(NoPosition), typed_tree("m"), conversion)); });
  };
  EXPECT_EQ("m.reshape(2, 3, x);", assigned("x", dims(1), dims(2)));
  EXPECT_EQ("m = x;", assigned("x", dims(2), dims(2)));
  EXPECT_EQ("m = 2.5;", assigned("2.5", mExpression0(), dims(2)));
  EXPECT_EQ("m = x+y;", assigned("XPlus[x,y]", dims(1), dims(2)));
}

tAsynt symbols(std::initializer_list<const char*> names) {
  tAsynt list = mSymbol0();
  for (const char* const* name = names.end(); name != names.begin();) list = mSymbol1(typed_tree(*--name), list);
  return list;
}

TEST_F(PompUnp, LocalVariables) {
  const auto declared = [&](std::initializer_list<const char*> names, const char* initializers) {
    const tAsynt list = Variadic_Expressions(typed_tree(std::string("XList[") + initializers + "]"));
    return written([&] { CPunparseStmt(mXModule(symbols(names), list, typed_tree("XSet[x,1]"))); });
  };
  EXPECT_EQ("x = 1;", declared({}, ""));
  EXPECT_EQ("int j = 2;\nint i;\nx = 1;", declared({"i", "j"}, "&,2"));  // the last one first
  EXPECT_EQ("doubleNN m(2, 3);\nx = 1;", declared({"m"}, "&"));
  EXPECT_EQ("doubleN v(3);\nv =  make_lumenN(2, 1, x );\nx = 1;", declared({"v"}, "XList[1,x]"));
  EXPECT_EQ(" = 2;\nx = 1;", declared({"u"}, "2"));
  EXPECT_EQ("double y;\nx = 1;", written([] {
              CPunparseStmt(mXBlock(symbols({"y"}), mExpression1(mEmpty(), mExpression0()), typed_tree("XSet[x,1]")));
            }));
  EXPECT_TRUE(contains(message_of([&] {
                         declared({"i", "j"}, "&");
                       }),
                       "Internal error in CPoutput_var_decls_and_inits"));
}

TEST_F(PompUnp, OutputAndFiles) {
  expect_stmts({{"XPrint[]", "cout << \"\\n\";"},
                {"XPrint[\"x=\",XPlus[x,1]]", "cout << \"x=\";\ncout << (x+1);\ncout << \"\\n\";"},
                {"XPut[XPlus[x,y],]", "std::ofstream tmpfile(\"file\");\ntmpfile << x+y<< \"\\n\" ;\ntmpfile.close();"},
                {"XSet[v,XImport[\"a.csv\"]]", "v=lumen_import1Ndouble(\"a.csv\");"},
                {"XSetDelayed[im,XImport[s]]", "im=lumen_import1NNint(s);"},
                {"XSet[zv,XImport[s,\"list\"]]", "zv=lumen_importNlm_complex(s,\"list\",NULL,NULL);"},
                {"XIf[c,XSet[x,XImport[s]],&]", "if (c)\n{\n    x=lumen_import1double(s);\n}"},
                {"XExport[s,v]", "lumen_export1(s,v, NULL, NULL);"},
                {"XExport[s,v,\"csv\"]", "lumen_export(s,v,\"csv\", NULL, NULL);"}});
  expect_reports(CPunparseStmt, "XSet[v,XImport[s,s]]", "v = ", "node type: \"XImport\"");
  const auto put = [&](const char* e) {
    return written([&] { CPunparseStmt(mXPut(typed_tree(e), mFilename(const_cast<char*>("")))); });
  };
  EXPECT_EQ("cout << (x+1) /*  */;", put("XPlus[x,1]"));
  EXPECT_EQ("cout << \"done\"/*  */;", put("\"done\""));
}

// A schedule has a writer of its own, as a value only.
TEST_F(PompUnp, Schedules) {
  const tAsynt schedule = mParExec(mInOutExpr0(), const_cast<char*>(""));
  EXPECT_EQ("", written([&] { CPunparseVal(schedule); }));
  EXPECT_TRUE(contains(message_of([&] { CPunparseStmt(schedule); }), "code for type:\" ParExec \""));
}

TEST_F(PompUnp, PartRanks) {
  const tAsynt part = typed_tree("XPart[t,i,XBlank,XAlternatives[1,2]]");
  EXPECT_EQ("t", written([&] { CPunparseVal(XPartArg(part)); }));
  EXPECT_EQ(3, XPartRealRank(part));
  EXPECT_EQ(1 - 2 * 99, XPartRank(part));
  EXPECT_EQ(1, XPartRankReduction(part));
  const tAsynt x = typed_tree("x");
  EXPECT_EQ(x, XPartArg(x));
  EXPECT_EQ(0, XPartRealRank(x));
  EXPECT_TRUE(contains(message_of([&] { XPartRank(x); }), "XPartRank bad arg"));
  EXPECT_TRUE(contains(message_of([&] { XPartRankReduction(x); }), "XPartRankReduction bad arg"));
  EXPECT_STREQ(".SetMatrix12", CPxpart_special_funcname(4, 2));
  EXPECT_STREQ(".SetRow", CPxpart_special_funcname(2, 1));
}
}  // namespace
}  // namespace oz
