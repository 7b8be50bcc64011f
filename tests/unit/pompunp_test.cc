// C++ expressions and statements: tables of typed trees and the text that each becomes.

#include "pompunp.h"

#include <cmath>

#include "generators.h"

namespace oz {
namespace {

const char kNames[] =
    "a:real b:real c:bool d:bool i:int j:int n:int x:real y:real z:complex s:string u:none "
    "iv:int[3] jv:int[3] v:real[3] w:real[3] zv:complex[3] im:int[2,3] m:real[2,3] q:real[2,2] t:real[2,3,4] "
    "h:real[2,2,2,2] h5:real[2,2,2,2,2] C`f:real C`g:multi(real,real) C`p:multi() A$:real ";

struct PompUnp : Trees, PompFiles {
  PompUnp() { declare_types(kNames); }

  // What is written from the start of a line.
  template <typename Write>
  std::string written(Write write) {
    cpoutput("\n");
    return cc.added(write);
  }
  std::string value(const std::string& text) {
    return written([&] { CPunparseVal(typed_tree(text)); });
  }
  void expect_values(const char* rows) {
    for (const auto& [input, expected] : table<2>(rows)) {
      std::string text;
      EXPECT_EQ("", message_of([&] { text = value(input); })) << input;
      EXPECT_EQ(expected, text) << input;
    }
  }
  // Lines without margins, joined by " | ".
  void expect_stmts(const char* rows) {
    for (const auto& [input, expected] : table<2>(rows)) {
      const tAsynt t = typed_tree(input);
      std::string text;
      EXPECT_EQ("", message_of([&] { text = written([&] { CPunparseStmt(t); }); })) << input;
      EXPECT_EQ(expected, lines_of(text)) << input;
    }
  }
  // What is written, then a part of the message, which ends what is written when it is fatal.
  void expect_reports(void (*write)(tAsynt), const char* rows) {
    for (const auto& [input, expected, message] : table<3>(rows)) {
      const tAsynt t = typed_tree(input);
      std::string report;
      EXPECT_EQ(expected, written([&] { report = message_of([&] { write(t); }); })) << input;
      EXPECT_TRUE(contains(report, message)) << input;
    }
  }
};

// ---- expressions

TEST_F(PompUnp, Leaves) {
  expect_values(R"(
      x --> x            A$ --> A_D         #-17 --> -17       "a \\\\ b" --> "a \\\\ b"             12 --> 12
      2.5 --> 2.5        XPi --> 3.14159265358979323846        XE --> 2.71828182845904523536
      XI --> lm_complex(0,1)                XTrue --> 1        XFalse --> 0       XNull -->
      GeneralConversion[i,int,real] --> i   ShapeConversion[x,{},{}] --> x
    )");
  EXPECT_EQ(std::string(21, ' ') + "-0.25", written([] { CPunparseVal(mRealConst(-0.25)); }));
  EXPECT_EQ("1.5e-3", written([] { CPunparseVal(mExactRealConst("1.5*^-3")); }));
  EXPECT_EQ("out.dat", written([] { CPunparseVal(mFilename("out.dat")); }));
  cpoutput(xs(70));
  EXPECT_EQ("\"" + xs(90) + "\"\n    y", cc.added([] {  // a string constant is not broken, what follows is
    CPunparseVal(mStringConst(stored(xs(90))));
    cpoutput("y");
  }));
  // Kinds without a type are reported and written.
  expect_reports(CPunparseVal, R"(
      XAll --> XAll --> Could not evaluate data type for node   NonAlgAuxiliary[x] --> x --> Could not evaluate
      BasicConversion[x,real,real] --> x --> Could not evaluate
      & -->  --> Could not evaluate                             Comment -->  --> Could not evaluate
    )");
}

TEST_F(PompUnp, Calls) {
  expect_values(R"(
      C`f[x,i] --> f (x, i)                                     C`f[] --> f ()
      C`f[x][y] --> f (x) (y)                                   XN[C`f[XPlus[x,y]]] --> f (x+y)
    )");
  expect_reports(CPunparseVal, R"(
      C`g[x] -->  --> The function returns multiple values is called in expression. Write a separate statement instead.
    )");
}

TEST_F(PompUnp, FunctionsOfOneArgument) {
  for (const std::string& word :
       words("Sin=sin ArcSin=asin Sinh=sinh ArcSinh=asinh Cos=cos ArcCos=acos Cosh=cosh ArcCosh=acosh Tan=tan "
             "ArcTan=atan "
             "Tanh=tanh ArcTanh=atanh Exp=exp Log=log Sqrt=sqrt Floor=ifloor Ceiling=iceil Round=irint "
             "IntegerPart=IntegerPart FractionalPart=FractionalPart Cot=1/tan Coth=1/tanh Sec=1/cos Sech=1/cosh "
             "Csc=1/sin Csch=1/sinh")) {
    const size_t equals = word.find('=');
    EXPECT_EQ(word.substr(equals + 1) + "(x)", value("X" + word.substr(0, equals) + "[x]"));
  }
  expect_values(R"(
      XAbs[x,none] --> abs(x)               XTranspose[m] --> Transpose(m)        XSort[v] --> lumen_sort(v)
      XMean[v] --> lumen_mean(v)            XVariance[v] --> lumen_variance(v)    XTotal[v] --> lumen_total(v)
      XMedian[v] --> lumen_median(v)        XStandardDeviation[v] --> lumen_standard_deviation(v)    XNot[c] --> !(c)
      XStringLength[s] --> XStringLength(s)                    XCot[XPlus[x,y]] --> 1/tan(x+y)
      XArcCot[XTimes[x,y]] --> atan(1/(x*y))                   XArcCoth[XMinus[x]] --> atanh(1/-x)
      XSign[x] --> sign (x)                 XN[i] --> double (i)                  XN[iv] --> doubleN (iv)
      XN[x] --> x        XGenTypeInformation[x] --> \s /* GenTypeInformation[x ]=  Real */  x        XRe[z] --> re(z)
      XRe[x] --> x       XIm[zv] --> im(zv)                    XIm[x] --> 0       XArg[z] --> arg(z)
      XArg[x] --> 0      XConjugate[z] --> conjugate(z)        XConjugate[x] --> x
    )");
  // The rest of those that go by their kind's own name has no type.
  for (const std::string& kind :
       words("XFactorial XFactorial2 XUnset XLambda XRepeated XRepeatedNull XIncrement XDecrement XPreIncrement "
             "XPreDecrement XFunction XStringReverse XGenCodeString"))
    expect_reports(CPunparseVal, (kind + "[x] --> " + kind + "(x) --> " + kind).c_str());
}

TEST_F(PompUnp, TwoOperands) {
  expect_values(R"(
      ArcTan2[x,y] --> atan2(y, x)                              NaturalDivide[v,w] --> IntegerPart(ElemQuotient(v, w))
      NaturalDivide[XTimes[i,j],n] --> IntegerPart((i*j) / n)   XQuotient[iv,jv] --> floor(ElemQuotient(iv, jv))
      XQuotient[i,XMinus[j]] --> floor(i / -j)                  XMod[XPlus[i,j],n] --> Mod(i+j, n)
      XComplex[x,i] --> lm_complex(x, i)                        XExtract[v,iv] --> v.Extract(iv)
      XExtract[XPlus[v,w],iv] --> (v+w).Extract(iv)             OuterProduct[v,w] --> OuterProduct(v, w)
      XAppend[v,x] --> Append(v,x)                              XPrepend[v,x] --> Prepend(v,x)
      XMinus[XPlus[x,y]] --> -(x+y)                             XMinus[XTimes[x,y]] --> -(x*y)
      XMinus[XMinus[x]] --> -(-x)                               XSubtract[x,XSubtract[y,z]] --> x-(y-z)
      XSubtract[XSubtract[x,y],z] --> (x-y)-z                   XSubtract[x,XTimes[y,z]] --> x-y*z
      XDivide[iv,jv] --> ElemQuotient (doubleN (iv), jv)        XDivide[v,w] --> ElemQuotient (v, w)
      XDivide[i,XTimes[j,n]] --> double (i)/(j*n)               XDivide[iv,i] --> doubleN (iv)/i
      XDivide[XPlus[x,y],XDivide[y,x]] --> (x+y)/(y/x)          XDrop[v,XList[i,j]] --> Drop(v,R(i,j))
      XDrop[v,XList[i]] --> Drop(v,R(i,i))                      XDrop[v,i] --> (i>0 ? Drop(v,R(1,i)):Drop(v,R(i,-1)))
      XPower[x,2] --> (x*x)        XPower[x,3] --> (x*x*x)      XDivide[y,XPower[x,4]] --> y/(x*x*x*x)
      XPower[x,5] --> pow(x, 5)    XPower[x,1] --> pow(x, 1)    XPower[x,i] --> pow(x, i)    XPower[v,2] --> pow(v, 2)
      XPower[XPlus[x,y],2] --> pow(x+y, 2)
    )");
}

// No "--", which is another operator; blanks part the signs of padded reals.
TEST_F(PompUnp, SignsBehindAMinus) {
  expect_values(R"(
      XSubtract[x,XMinus[y]] --> x-(-y)     XSubtract[x,-2] --> x-(-2)            XSubtract[x,#-2] --> x-(-2)
      XSubtract[x,-2.5] --> x-(-2.5)        XSubtract[x,XTimes[2,-3]] --> x-(-6)
      XSubtract[x,XTimes[-2,y]] --> x-(-2*y)                   XSubtract[x,XDivide[XMinus[y],x]] --> x-(-y/x)
      XSubtract[x,XDivide[-4,i]] --> x-double (-4)/i           XSubtract[x,XTimes[XPlus[XMinus[y],x],y]] --> x-(-y+x)*y
      XSubtract[x,GeneralConversion[XMinus[i],int,real]] --> x-(-i)               XSubtract[x,XN[XMinus[y]]] --> x-(-y)
      XSubtract[x,XRe[XSubtract[XMinus[y],x]]] --> x-(-y-x)
      XSubtract[v,XTimes[XMinus[v],w]] --> v-ElemProduct (-v, w)                  XMinus[XFloor[-2.5]] --> -(-3)
      XMinus[-2] --> -(-2)                  XPlus[x,XMinus[y]] --> x+-y           XTimes[-2,x] --> -2*x
    )");
  EXPECT_EQ("x-" + std::string(24, ' ') + "-3", value("XSubtract[x,XTimes[2,-1.5]]"));
}

TEST_F(PompUnp, SeveralOperands) {
  expect_values(R"(
      XOr[c,XAnd[c,d],XOr[d,c]] --> c || c && d || (d || c)    XAnd[c,XOr[d,c]] --> c && (d || c)
      XEqual[i,j] --> i == j                XEqual[i] --> 1    XEqual[c,XEqual[i,j]] --> c == (i == j)
      XGreater[x,y] --> x > y               XLess[a,XPlus[b,x],y] --> a < b+x && b+x < y
      XGreaterEqual[x,y,a,b] --> x >= y && y >= a && a >= b    XLessEqual[x,y] --> x <= y
      XUnequal[x,y,a] --> x != y != a       XPlus[x] --> x     XPlus[x,XPlus[y,a],XTimes[b,x]] --> x+(y+a)+b*x
      XPlus[x,XTimes[XI,XPlus[y,a]]] --> lm_complex(x, y+a)    XPlus[1,XTimes[XI,2]] --> lm_complex(1, 2)
      XPlus[x,XTimes[y,XI]] --> x+y*lm_complex(0,1)            XTimes[x,XPlus[y,a],XTimes[b,x]] --> x*(y+a)*(b*x)
      XTimes[x,v] --> x*v                   XTimes[v,x] --> v*x                   XTimes[x,v,w] --> x*v*w
      XTimes[v,w] --> ElemProduct (v, w)    XTimes[v,XPlus[v,w],x,w] --> ElemProduct (v, ElemProduct (v+w, x*w))
      XTimes[v,XPlus[v,w]] --> ElemProduct (v, (v+w))
      XDot[m,XTranspose[m],XPart[m,1]] --> m*(Transpose(m))*(m(1,All))            XDot[v,w] --> v*w
      Cross[v,w] --> Cross(v, w)            XInequality[a,XLess,XPlus[b,x],XGreaterEqual,y] --> (a < b+x) && (b+x >= y)
      XInequality[a] -->
    )");
  expect_reports(CPunparseVal, R"(
      XOr[] -->  --> Tried to type empty expression list.                           XAnd[] -->  --> Tried to type
      XEqual[] -->  --> Tried to type        XUnequal[] -->  --> Tried to type      XPlus[] -->  --> Tried to type
      XTimes[] -->  --> Tried to type        XStringJoin[s,s] -->  --> StringJoin not supported
      XStringTake[s,XList[1,2]] -->  --> StringTake not supported
    )");
}

TEST_F(PompUnp, Alternatives) {
  expect_values(R"(
      XIf[c,x,XPlus[y,a]] --> \s(( c ) ? ( x ) : ( y+a ))\s     XWhich[c,1] --> ( (c) ? (1) :  ( 1 ) )
      XWhich[c,x,d,y] --> ( (c) ? (x) : ( (d) ? (y) :  ( y ) ))
      XTimes[2,XIf[c,x,y]] --> 2* (( c ) ? ( x ) : ( y ))\s
      XCompoundExpression[XSet[a,1],XSet[b,2],XPlus[a,b]] --> \s( a = 1,b = 2,a+b )\s
      XCompoundExpression[XSet[a,1],XCompoundExpression[XSet[b,2],x]] --> \s( a = 1,b = 2,x )\s
      XCompoundExpression[x] --> \s( x )\s                      XPlus[1,XSet[i,2]] --> 1+(i = 2)
    )");
  expect_reports(CPunparseVal, R"(
      XWhich[c,x,d] --> -->                  XCompoundExpression[] -->  --> Could not evaluate data type
      XCompoundExpression[C`f[x],XSet[a,1],x] --> \s( f (x) (* Small statement(2) expected *) , a = 1,x )\s --> \
          Only simple assignements or output statements (small statements) can be used within compound
      XCompoundExpression[C`f[x],x] --> \s( f (x)(* Small statement(1) expected *) ,x )\s --> expressions. Code:\s
    )");
}

TEST_F(PompUnp, ArrayOperations) {
  expect_values(R"(
      XCols[m,1,2] --> m.Cols(1, 2 )                            XRows[m,i] --> m.Rows(i )
      XSubMatrix[XPlus[m,m],1,2,1,2] --> (m+m).SubMatrix(1, 2, 1, 2 )                        XCol[m,1] --> m.Col(1 )
      XRow[m,1] --> m.Row(1 )      XSubVector[v,1,2] --> v.SubVector(1, 2 )                  XMax[v] --> LumenMax(v)
      XMin[v] --> LumenMin(v)      XMax[x,i] --> Max(x,i)       XMin[x,i] --> Min(x,i)       XJoin[v,w] --> Join(v,w)
      XJoin[v,w,v,XPlus[v,w]] --> Join(v,Join(w,Join(v,v+w)))   XQuantile[v,x] --> lumen_quantile2(v, x)
      XQuantile[v,w] --> lumen_quantile2L(v, w)                 XQuantile[v,x,q] --> lumen_quantile3(v, x, q)
      XQuantile[v,w,q] --> lumen_quantile3L(v, w, q)            XFlatten[m] --> lumen_flatten(m)
      XFlatten[v,1] --> /*1--1*//* rank=1*/v                    XFlatten[m,0] --> /*0--0*//* rank=2*/lumen_flatten0(m)
      XFlatten[m,1] --> /*1--1*//* rank=2*/lumen_flatten(m)     XFlatten[t,0] --> /*0--0*//* rank=3*/lumen_flatten0(t)
      XFlatten[t,1] --> /*1--1*//* rank=3*/lumen_flatten1(t)    XFlatten[t,2] --> /*2--2*//* rank=3*/lumen_flatten(t)
      XFlatten[h,0] --> /*0--0*//* rank=4*/lumen_flatten0(h)    XFlatten[h,1] --> /*1--1*//* rank=4*/lumen_flatten1(h)
      XFlatten[h,2] --> /*2--2*//* rank=4*/lumen_flatten2(h)    XFlatten[h,3] --> /*3--3*//* rank=4*/lumen_flatten(h)
      XFlatten[h5,0] --> /*0--0*//* rank=5*/h5)                 XDimensions[v] --> make_lumenN(1,v.dimension(1))
      XDimensions[h] --> make_lumenN(4,h.dimension(1),h.dimension(2) ,h.dimension(3) ,h.dimension(4))
    )");
  expect_reports(CPunparseVal, R"(
      XFlatten[m,-1] --> /*-1---1*/ --> invalid 2nd argument to Flatten
      XDimensions[h5] -->  --> Dimension[] must be given an argument of  array type\s
      XDimensions[x] --> make_lumenN(4,x.dimension(1),x.dimension(2),x.dimension(3),x.dimension(4))\s --> \
          Unclear type at Dimensions[] in  CPunparse_dimension_non_array_type x may cause problems in future.
      XWhile[c,x] -->  --> An expression returning a single value is expected where a complete statement is detected. \
          Can't perform CPunparseVal to generate code for  node type: "XWhile",  statement " XWhile[args...] "\s
      XQuantile[v] -->  --> node type: "XQuantile              XFlatten[m,1,1] -->  --> node type: "XFlatten
      XImport[s] -->  --> node type: "XImport                  XDimensions[] -->  --> node type: "XDimensions
      XMap[x,y] -->  --> node type: "XMap   XJoin[v] --> Join(v, --> An expression returning a single value is expected
    )");
  expect_reports(CPunparseVal, "XDimensions[m,2] -->  --> Dimension[] with two parameters not implemented");
}

// How many ranks the array library must have.
TEST_F(PompUnp, LevelsOfTheArrayLibrary) {
  for (const auto& [input, expected] : table<2>(R"(
      XCol[m,1] --> #define LM_NN\n          XDimensions[t] --> #define LM_NNN\n    XList[1,x] --> #define LM_NNNN\n
      XDivide[iv,jv] --> #define LM_N\n      XPart[m,1] -->
    )"))
    EXPECT_EQ(expected, levels.added([&] { CPunparseVal(typed_tree(input)); })) << input;
}

TEST_F(PompUnp, Lists) {
  expect_values(R"(
      XList[x] --> \smake_lumenN(1, x )
      XList[XList[1,2],XList[i,j]] --> \smake_lumenN(2,  make_lumenN(2, 1, 2 ),  make_lumenN(2, i, j ) )
      XList[1,2,3,4,5,6,7,8,9,0] --> \smake_lumenN(10, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0 )
    )");
  EXPECT_EQ("lumen_flatten(make_lumenN(2, | make_lumenN(10,1,2,3,4,5,6,7,8,9,0), | make_lumenN(1,i) ))(R(1,11))",
            lines_of(value("XList[1,2,3,4,5,6,7,8,9,0,i]")));
  // The last chunk is empty.
  EXPECT_EQ("lumen_flatten(make_lumenN(2, | make_lumenN(10,1,2,3,4,5,6,7,8,9,0), | make_lumenN(0) ))(R(1,20))",
            lines_of(value("XList[1,2,3,4,5,6,7,8,9,0,1,2,3,4,5,6,7,8,9,0]")));
  const auto ones = [](size_t n) { return mXList(no_place(), list(std::vector<tAsynt>(n, mIntConst(1)))); };
  const tAsynt hundred = ones(100);
  const std::string text = written([&] { CPunparseVal(hundred); });
  EXPECT_TRUE(contains(text, "(make_lumenN(10,\n") && contains(text, "make_lumenN(0) ))(R(1,100))")) << text;
  EXPECT_EQ(text, written([&] { CPunparseVal(hundred); }));  // the list is still there
  std::string report;
  EXPECT_EQ("", written([&] { report = message_of([&] { CPunparseVal(ones(101)); }); }));
  EXPECT_TRUE(
      contains(report, "Expression in {...} should not have more than 100 elements. Use intermediate variable."));
}

TEST_F(PompUnp, Parts) {
  expect_values(R"(
      XPart[v,1] --> v(1)                   XPart[m,2] --> m(2,All)               XPart[t,i] --> t(i,All,All)
      XPart[m,XAlternatives[2,XBlank],XBlank] --> m(R(2,-1), All)
      XPart[m,XAlternatives[XBlank,XPlus[i,j]],XAll] --> m(R(1,i+j), All)
      XPart[m,XAlternatives[XBlank,XBlank],XList[i]] --> m(R(1,-1), R(i,i))       XPart[XPlus[v,w],i] --> (v+w)(i)
      XPart[XTranspose[m],i,j] --> (Transpose(m))(i, j)        XPart[XPart[m,1],2] --> (m(1,All))(2)
      XPart[XDimensions[m],1] --> m.dimension(1)               XPart[XDimensions[XPlus[m,m]],i] --> (m+m).dimension(i)
    )");
}

TEST_F(PompUnp, Folding) {
  expect_values(R"(
      XPlus[2,3] --> 5   XSubtract[2,XTimes[3,4]] --> -10      XTimes[2,XMinus[3],#4] --> -24        XPower[2,-1] --> 0
      XPower[10,9] --> 1000000000           XMinus[XPlus[2,3]] --> -(5)           XMinus[2] --> -2
      XPlus[x,XTimes[2,3]] --> x+6          XPlus[XFloor[2.5],XCeiling[2.5],XRound[2.5],XIntegerPart[-2.5]] --> 5
      XIntegerPart[-2.5] --> -2             ArcTan2[3,4] --> atan2(4, 3)
    )");
  // Reals are padded.
  for (const auto& [input, expected] : table<2>(R"(
      XPlus[2.0,3] --> 5                     XPower[10,12] --> 1000000000000        XDivide[1,4] --> 0.25
      XDivide[1,0] --> inf                   XN[2] --> 2                            XFractionalPart[-2.5] --> -0.5
      XSin[XPi] --> 1.224646799147353e-16    XLog[XE] --> 1                         XN[XMinus[1.5]] --> -1.5
      // cosh(2), the angle of (-1, 0)
      XSech[0.5] --> 3.762195691083631                          XN[ArcTan2[-1,0]] --> 3.141592653589793
      XPlus[XTimes[0.1,3],XSubtract[0.3,0.1]] --> 0.5
    )"))
    EXPECT_EQ(std::string(26 - expected.size(), ' ') + expected, value(input)) << input;
  for (const auto& [function, at_half] : table<2>(R"(
      Sin --> 0.479425538604203             ArcSin --> 0.5235987755982989         Sinh --> 0.5210953054937474
      ArcSinh --> 0.4812118250596035        Cos --> 0.8775825618903728            ArcCos --> 1.047197551196598
      Cosh --> 1.127625965206381            ArcCosh --> nan    Tan --> 0.5463024898437905
      ArcTan --> 0.4636476090008061         Tanh --> 0.46211715726001             ArcTanh --> 0.5493061443340548
      Exp --> 1.648721270700128             Log --> -0.6931471805599453           Sqrt --> 0.7071067811865476
      Cot --> 1.830487721712452             Coth --> 2.163953413738653            Sec --> 1.139493927324549
      Csc --> 2.085829642933488             Csch --> 1.919034751334944            ArcCot --> 1.107148717794090
      Sech --> 3.762195691083631            ArcCoth --> nan    Floor --> 0        Ceiling --> 1      Round --> 0
    )")) {
    const double result = CPevaluate(typed_tree("X" + function + "[0.5]"));
    if (at_half == "nan")
      EXPECT_TRUE(std::isnan(result)) << function;
    else
      EXPECT_NEAR(std::stod(at_half), result, 1e-14) << function;
  }
  // From the right: 1 is lost beside 1e16 unless it meets its like first.
  EXPECT_EQ(1e16 + 2, CPevaluate(typed_tree("XPlus[10000000000000000,1,1]")));
  expect_reports(CPunparseVal, "XSign[2] -->  --> Found non-implemented node for  CPevaluate XSign");
  EXPECT_TRUE(contains(message_of([] { CPevaluateVariadic(typed_tree("XDot[]"), mExpression0()); }),
                       "Bad args CPevaluateVariadic"));
}

// Each level would be looked through from every level above it.
TEST_F(PompUnp, DeepExpressions) {
  constexpr size_t kLevels = kMaxNesting / 2;
  const tAsynt t = nested(kLevels, typed_tree("x"), [](tAsynt core) {
    return mXPlus(no_place(), list({mIntConst(1), mXTimes(no_place(), list({mIntConst(2), core}))}));
  });
  const std::string expected = "1+2*" + repeated("(1+2*", kLevels - 1) + "x" + std::string(kLevels - 1, ')');
  std::string text = written([&] { CPunparseVal(t); });
  std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
  EXPECT_EQ(expected, text);
}

// ---- statements

TEST_F(PompUnp, ControlFlow) {
  expect_stmts(R"(
      XNull -->                    XVoidFunc -->                XBreak --> break;            XCompoundExpression[] -->
      XCompoundExpression[XSet[x,1],C`f[x],XNull,XSet[y,2]] --> x = 1; | f (x); | y = 2;     C`f[x,y] --> f (x, y)
      C`f[x][y] --> f (x) (y)      XWhile[c,XSet[x,1]] --> while (c) | { | x = 1; | }
      XWhile[c,&] --> while (c) | { | }                         XWhile[c,C`f[x]] --> while (c) | { | f (x); | }
      XFor[XSet[i,1],XLess[i,n],XSet[i,XPlus[i,1]],XSet[x,i]] --> i = 1; | while (i < n) | { | x = i; | i = i+1; | }
      Do[XSet[x,i],Iterator[i,1,n]] --> for( i = 1; i <= n; i++) | {\s\s\sx = i; | }
      Do[XSet[x,a],Iterator[a,2.5,n]] --> for( a = 2.5; a <= n; a++) | {\s\s\sx = a; | }
      XIf[c,XSet[x,1],XSet[x,2]] --> if (c) | { | x = 1; | } | else | { | x = 2; | }
      XIf[c,XSet[x,1],XIf[d,XSet[x,2],XSet[x,3]]] --> \
          if (c) | { | x = 1; | } | else if (d) | { | x = 2; | } | else | { | x = 3; | }
      XIf[c,XIf[d,C`f[x],&],C`f[y]] --> if (c) | { | if (d) | { | f (x); | } | } | else | { | f (y); | }
      XWhich[c,XSet[x,1],d,XSet[x,2]] --> if (c) | { | x = 1;} | else if (d) | { | x = 2;}
      XWhich[] -->                           XGenCodeString["x++;"] --> /*GenCode begin */x++;/* end GenCode */
    )");
  EXPECT_EQ(
      "if (c)\n{\n    if (d)\n    {\nf (x);\n    }\n}\nelse\n{\n    f (y);\n}",  // margins, but not of a first call
      written([] { CPunparseStmt(typed_tree("XIf[c,XIf[d,C`f[x],&],C`f[y]]")); }));
  expect_reports(CPunparseStmt, R"(
      XWhich[c] -->  --> Bad arguments to Which[bool,stmt,...],  even number of parameters.
      C`g[x] -->  --> The function C`g is declared as returning multiple values. Therefore it cannot be used within \
          an expression. Write a separate statement such as {a,b,c}=C`g[d]; in order to obtain the output.
      x -->  --> A statement expected in a place where a single expression is detected.  Can't perform CPunparseStmt \
          to generate code for type:" Symbol "
      XPlus[x,y] -->  --> type:" XPlus "                        XGenCodeString[x] -->  --> type:" XGenCodeString "
      XSetDelayed[x,y] -->  --> type:" XSetDelayed "            XExport[s,v,s,s] -->  --> type:" XExport "
      XSetCol[] -->  --> type:" XSetCol "
    )");
}

TEST_F(PompUnp, Assignments) {
  expect_stmts(R"(
      XSet[x,XPlus[y,1]] --> x = y+1;                           XSet[x,XSet[y,1]] --> x = y = 1;
      XSet[x,XIf[c,1,2]] --> if (c) | { | x = 1; | } | else | { | x = 2; | }
      XSet[x,XWhich[c,y]] --> x = ( (c) ? (y) :  ( y ) );       XSet[XList[a,b],C`g[x]] --> g (x, a, b);
      XSet[XList[a,b],C`g[]] --> g (a, b);                      XSet[XList[a,b],XList[1,2]] --> a = 1; | b = 2;
      XSet[XList[a,XList[b,x]],XList[1,XList[y,2]]] --> a = 1; | b = y; | x = 2;
      XSet[XList[],XList[]] -->                                 XSet[XList[a,b],v] --> a = v(1); | b = v(2);
      XSet[XList[XList[a,b],XList[x,y]],m] --> a = m(1, 1); | b = m(1, 2); | x = m(2, 1); | y = m(2, 2);
      XSet[m,XList[XList[1,x],XList[XIf[c,1,2],y]]] --> \
          m.SetShape(2, 2 ); | m(1, 1) = 1; | m(1, 2) = x; | if (c) | { | m(2, 1) = 1; | } | else | { | m(2, 1) = 2; \
          | } | m(2, 2) = y;
      XSet[XPart[m,2],XList[x,y]] --> m(2, 1) = x; | m(2, 2) = y;                 XSet[XPart[v,1],5] --> v(1) = 5;
      XSet[XPart[m,i,j],5] --> m(i, j) = 5;                    XSet[XPart[XPart[t,1],2,3],x] --> t(1, 2, 3) = x;
      XSet[XPart[XPart[XPart[t,1],2],3],x] --> t(1, 2, 3) = x;                    XSet[XPart[m,1],5] --> m.Set(1,All,5);
      XSet[XPart[m,1],v] --> m.Set(1,All,v);                   XSet[XPart[t,XBlank,i],m] --> t.Set(All, i,All,m);
      XSet[XPart[v,XAlternatives[1,XBlank]],w] --> v.Set(R(1,-1),w);
      XSet[XPart[XPart[m,1],XAll],v] --> m.Set(1, All,v);      XSetSubMatrix[m,1,1,q] --> m.SetSubMatrix(1, 1, q );
      XSetSubVector[v,1,w] --> v.SetSubVector(1, w );          XSetCol[m,1,v] --> m.SetCol(1, v );
      XSetRow[m,1,v] --> m.SetRow(1, v );   XSetCols[m,1,q] --> m.SetCols(1, q );
      XSetRows[m,1,q] --> m.SetRows(1, q );                    XSetShape[v,n] --> v.SetShape(n );
    )");
  expect_reports(CPunparseStmt, R"(
      XSet[XList[a,b,x],XList[1]] --> a = 1;\n --> In assignment the lhs list is larger than rhs list. Rest skipped. b
      XSet[XList[a],XList[1,y]] --> a = 1;\n --> In assignment the rhs list is larger than lhs list. Rest skipped. y
      XSet[XList[],XList[1]] -->  --> list. Rest skipped.\s
      XSet[XPart[m,1,2,3],5] --> ; --> \
          Left part of assignment has too many indexes,, i.e. more than rank of the array in  m[[1,2,3]] =5
      XSet[XPart[m,1],m] --> m.Set(1,All,m); --> \
          Suspecting  incompatible ranks in assignment: base rank of LHS asrray =2, reduction or rank due to indexing \
          = 1 levels , RHS expression rank = 2 in m[[1]] =m
    )");
  expect_reports([](tAsynt t) { CPunparseSmallStmt(t); }, R"(
      XSet[XList[a],v] --> \smake_lumenN(1, a ) = v --> \
          Complex assignment with the list in left part cannot be used within expression
    )");
}

// A scalar that was read as one for the whole array; dimensions are lists.
TEST_F(PompUnp, SpreadScalars) {
  const auto dims = [](int n) { return list({mIntConst(n), mIntConst(3)}); };
  const auto assigned = [&](const char* e, tAsynt from, tAsynt to) {
    return written([&] { CPunparseStmt(set(typed_tree("m"), mShapeConversion(typed_tree(e), from, to))); });
  };
  EXPECT_EQ("m.reshape(2, 3, x);", assigned("x", dims(1), dims(2)));
  EXPECT_EQ("m = x;", assigned("x", dims(2), dims(2)));
  EXPECT_EQ("m = 2.5;", assigned("2.5", mExpression0(), dims(2)));
  EXPECT_EQ("m = x+y;", assigned("XPlus[x,y]", dims(1), dims(2)));
}

TEST_F(PompUnp, LocalVariables) {
  expect_stmts(R"(
      XModule[{},{},XSet[x,1]] --> x = 1;    XModule[{m},{&},XSet[x,1]] --> doubleNN m(2, 3); | x = 1;
      // The last one first.
      XModule[{i,j},{&,2},XSet[x,1]] --> int j = 2; | int i; | x = 1;      XModule[{u},{2},XSet[x,1]] --> = 2; | x = 1;
      XModule[{v},{XList[1,x]},XSet[x,1]] --> doubleN v(3); | v =  make_lumenN(2, 1, x ); | x = 1;
      XBlock[{y},{&},XSet[x,1]] --> double y; | x = 1;
    )");
  EXPECT_TRUE(contains(message_of([] { CPunparseStmt(typed_tree("XModule[{i,j},{&},XSet[x,1]]")); }),
                       "Internal error in CPoutput_var_decls_and_inits"));
}

TEST_F(PompUnp, OutputAndFiles) {
  expect_stmts(R"(
      XPrint[] --> cout << "\\n";            XPrint["x=",XPlus[x,1]] --> cout << "x="; | cout << (x+1); | cout << "\\n";
      XPut[XPlus[x,y],] --> std::ofstream tmpfile("file"); | tmpfile << x+y<< "\\n" ; | tmpfile.close();
      XSet[v,XImport["a.csv"]] --> v=lumen_import1Ndouble("a.csv");
      XSetDelayed[im,XImport[s]] --> im=lumen_import1NNint(s);
      XSet[zv,XImport[s,"list"]] --> zv=lumen_importNlm_complex(s,"list",NULL,NULL);
      XIf[c,XSet[x,XImport[s]],&] --> if (c) | { | x=lumen_import1double(s); | }
      XExport[s,v] --> lumen_export1(s,v, NULL, NULL);
      XExport[s,v,"csv"] --> lumen_export(s,v,"csv", NULL, NULL);
    )");
  expect_reports(CPunparseStmt, R"(XSet[v,XImport[s,s]] --> v =\s --> node type: "XImport")");
  const auto put = [&](const char* e) { return written([&] { CPunparseStmt(mXPut(typed_tree(e), mFilename(""))); }); };
  EXPECT_EQ("cout << (x+1) /*  */;", put("XPlus[x,1]"));
  EXPECT_EQ("cout << \"done\"/*  */;", put("\"done\""));
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
