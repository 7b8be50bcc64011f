// Fortran expressions: a row per rule.

#include "generators.h"

namespace oz {
namespace {

using SheepValue = SheepText;

struct Row {
  const char *tree, *text;
};

// What binds no tighter than its context is put in parentheses: each kind within the level above its own.
TEST_F(SheepValue, Precedence) {
  for (const auto& [tree, pri] : table<2>(R"(
      XSet[x,y] --> 1        XOr[p,q] --> 2         XAnd[p,q] --> 3        XNot[p] --> 4          XEqual[x,y] --> 5
      XUnequal[x,y] --> 5    XGreater[x,y] --> 5    XLess[x,y] --> 5       XLessEqual[x,y] --> 5
      XInequality[x] --> 5   XGreaterEqual[x,y] --> 5                      XSubtract[x,y] --> 6   XPlus[x,y] --> 6
      XMinus[x] --> 7        #-1 --> 7              -1 --> 7               -1.5 --> 7             XTimes[x,y] --> 8
      XDivide[x,y] --> 8     XArcTanh[x] --> 8      XCot[x] --> 8          XCoth[x] --> 8         XArcCoth[x] --> 8
      XSec[x] --> 8          XSech[x] --> 8         XCsc[x] --> 8          XCsch[x] --> 8         XPower[x,y] --> 9
      XSin[x] --> 10         XPart[a,i] --> 10      XList[x] --> 10        NaturalDivide[x,y] --> 10
      #1 --> 11              1 --> 11               1.5 --> 11             XPi --> 11             x --> 11
      f[x] --> 11            "t" --> 11             AlgAuxiliary[XPlus[x]] --> 6                  XArcCot[x] --> 10
      NonAlgAuxiliary[XPlus[x]] --> 10              GeneralConversion[AlgAuxiliary[-1],int,real] --> 7
    )"))
    EXPECT_EQ(std::stoi(pri), Fpri(typed_tree(tree))) << tree;
  EXPECT_EQ(7, Fpri(mRealConst(-0.5)));
  EXPECT_EQ(11, Fpri(mRealConst(0.5)));
  for (const auto& [tree, text] : table<2>(R"(
      XTimes[XPlus[x,y],XTimes[x,y],XPower[x,y],x] --> (x+y)*(x*y)*x**y*x
      XPower[XMinus[x],-2] --> ((-x))**(-2)         XAnd[XOr[p,q],XNot[p],q] --> (p .or. q) .and. .not.(p) .and. q
      XPlus[x,XSubtract[x,y],XTimes[x,y]] --> x+(x-y)+x*y
    )"))
    EXPECT_EQ(text, value(tree)) << tree;
}

TEST_F(SheepValue, FunctionsOfOneArgument) {
  for (const auto& [tree, text] : table<2>(R"(
      XSin[XPlus[x,y]] --> sin(x+y)                             XArcSin[x] --> asin(x)       XSinh[x] --> sinh(x)
      XCos[x] --> cos(x)           XArcCos[x] --> acos(x)       XCosh[x] --> cosh(x)         XTan[x] --> tan(x)
      XArcTan[x] --> atan(x)       XTanh[x] --> tanh(x)         XExp[x] --> exp(x)           XLog[x] --> log(x)
      XSqrt[x] --> sqrt(x)         XAbs[x] --> abs(x)           XCeiling[x] --> ceiling(x)   XRound[x] --> anint(x)
      XTranspose[c] --> transpose(c)                            XArcSinh[XTimes[x,y]] --> log(x*y+sqrt((x*y)**2+1))
      XArcCosh[XPlus[x,y]] --> log((x+y)+sqrt((x+y)**2-1))      XArcTanh[XPlus[x,y]] --> 0.5*log((1+(x+y))/(1-(x+y)))
      XArcCoth[XTimes[x,y]] --> 0.5*log((x*y+1)/(x*y-1))        XCot[x] --> 1/tan(x)         XCoth[x] --> 1/tanh(x)
      XSec[x] --> 1/cos(x)         XSech[x] --> 1/cosh(x)       XCsc[x] --> 1/sin(x)         XCsch[x] --> 1/sinh(x)
      XArcCot[XTimes[x,y]] --> atan(1/(x*y))                    XSign[XPlus[x,y]] --> sign(1.0D0, (x+y))
      XSign[i] --> sign(1, i)      XFloor[XPlus[x,y]] --> floor(real(x+y))                   XIntegerPart[x] --> int(x)
      XFractionalPart[x] --> (x-real(int(x)))                   XTimes[XN[XPlus[i,j]],2] --> i+j*2
      // stands for its argument, and binds as a function
      NonAlgAuxiliary[x] --> x               GeneralConversion[x,int,real] --> x    BasicConversion[x,int,real] --> x
      ShapeConversion[x,i,j] --> x           AlgAuxiliary[x] -->                    XNot[XAnd[p,q]] --> .not.(p .and. q)
      XFactorial[i] --> XFactorial(i)        XMinus[XTimes[x,y]] --> (-x*y)         XMinus[XPlus[x,y]] --> (-(x+y))
    )"))
    EXPECT_EQ(text, value(tree)) << tree;
}

// The parts of complex numbers go to the C++ stream, or nowhere.
TEST_F(SheepValue, ComplexPartsGoToTheOtherGenerator) {
  const Row rows[] = {
      {"XRe[z]", "Re(z)"}, {"XIm[z]", "Im(z)"}, {"XArg[z]", "Arg(z)"}, {"XConjugate[z]", "Conjugate(z)"}};
  for (const Row& row : rows) EXPECT_EQ("", value(row.tree));
  OutputStream cc;
  cpoutput_file = cc.f;
  for (const Row& row : rows) EXPECT_EQ(row.text, cc.added([&] { EXPECT_EQ("", value(row.tree)); }));
  cpoutput_file = nullptr;
}

TEST_F(SheepValue, FunctionsOfTwoArguments) {
  for (const auto& [tree, text] : table<2>(R"(
      ArcTan2[x,XPlus[x,y]] --> atan2(x, x+y)                   NaturalDivide[XPlus[x,y],x] --> (x+y)/x
      XQuotient[XPlus[i,1],2] --> floor(i+1/2)                  XMod[i,XPlus[j,1]] --> mod(i, j+1)
      XComplex[x,y] --> (x, y)     XExtract[d,XList[i,j,k]] --> zc_extract_N0(d, zc_mkpc(i,zc_mkpc(j,zc_mkc(k))))
      XExtract[c,XList[i]] --> zc_extract_N1(c, zc_mkc(i))      XExtract[d,XList[i]] --> zc_extract_N2(d, zc_mkc(i))
      OuterProduct[a,b] --> zc_outer_product(a, b)              XSubtract[x,XSubtract[y,x]] --> x-(y-x)
      XPower[XPower[x,2],y] --> (x**2)**y                       XDivide[5,2] --> real(5)/2
      XDivide[XPlus[i,1],XTimes[i,2]] --> real((i+1))/(i*2)     XDivide[XPlus[x,1],2] --> (x+1)/2
      XDrop[a,2] --> zc_drop_edge(a, 2)                         XDrop[a,XList[2]] --> zc_drop_middle(a, 2, 2)
      XDrop[a,XList[2,3]] --> zc_drop_middle(a, 2, 3)
      XDrop[a,XList[1,2,3]] --> zc_drop_edge(a, zc_mkpc(1,zc_mkpc(2,zc_mkc(3))))
      XAppend[a,x] --> zc_append(a, x)                          XPrepend[a,x] --> zc_prepend(a, x)
    )"))
    EXPECT_EQ(text, value(tree)) << tree;
}

TEST_F(SheepValue, OperatorsAndLists) {
  for (const auto& [tree, text] : table<2>(R"(
      XOr[] --> .FALSE.               XAnd[] --> .TRUE.               XOr[p,q] --> p .or. q           XAnd[p] --> p
      XPlus[] --> 0   XTimes[] --> 1                  XPlus[x,-1] --> x+-1            XTimes[x,-1] --> x*(-1)
      XEqual[] --> .TRUE.             XEqual[x] --> .TRUE.            XEqual[a,b] --> zc_equal(a, b)
      XEqual[x,XPlus[x,y],y] --> x == x+y .and. x+y == y              XEqual[p,XEqual[x,y]] --> p == (x == y)
      XUnequal[a,b] --> .not. (zc_equal(a, b))        XUnequal[x,y,1] --> x /= y /= 1
      XGreater[] --> .TRUE.           XGreater[x] --> .TRUE.          XGreater[x,y] --> x > y
      XLess[x,y,1] --> x < y .and. y < 1              XGreaterEqual[x,y] --> x >= y   XLessEqual[x,y] --> x <= y
      XInequality[x,XLess,y,XEqual,1] --> x < y .and. y == 1          XDot[a,b] --> DOT_PRODUCT(a, b)
      XDot[c,b] --> MATMUL(c, b)      XDot[a,XPlus[b,b]] --> DOT_PRODUCT(a, (b+b))
      XDot[a,b,XPlus[b,b]] --> DOT_PRODUCT(a, b)*(b+b)                XDot[a,b,c,a] --> DOT_PRODUCT(a, b)*MATMUL(c, a)
      XList[1] --> zc_mkc(1)          XList[XList[1,2],a] --> zc_mkpc(zc_mkpc(1,zc_mkc(2)),zc_mkc(a))
      XDimensions[c] --> SHAPE(c)     XMax[a] --> MAXVAL(a)           XMin[a] --> MINVAL(a)
      XMax[x,y] --> MAX(x, y)         XMin[x,y] --> MIN(x, y)         Cross[a,b] --> zc_crossprod_2(a, b)
      Cross[a,b,a] --> zc_crossprod_3(a, b, a)        Cross[a,b,a,b] --> zc_crossprod_4(a, b, a, b)
      XJoin[a,b] --> zc_join(a, b)    XJoin[a,b,u,w] --> zc_join(a, zc_join(b, zc_join(u, w)))
    )"))
    EXPECT_EQ(text, value(tree)) << tree;
}

TEST_F(SheepValue, Parts) {
  for (const auto& [tree, text] : table<2>(R"(
      XPart[c,i,XPlus[j,1]] --> c(j+1, i)                       XPart[d,i] --> d(:,:,i)
      XPart[d,XBlank,XAlternatives[2,XBlank]] --> d(:,2:, :)    XPart[a,XAlternatives[XBlank,3]] --> a(:3)
      XPart[a,XList[i]] --> a(i:i)                              XPart[a,1,2,3] --> a(3, 2, 1)
      // more indices than dimensions
      XPart[XDimensions[d],XPlus[i,1]] --> SIZE(d, 4-(i+1))    XPart[XDimensions[XPlus[c,c]],1] --> SIZE((c+c), 3-1)
      XPart[XDimensions[d],1,2] --> zc_getpart2((SHAPE(d)),2, 1)                  XPart[f[x],1] --> zc_getpart1(f(x),1)
      XPart[XPart[d,1],2,3] --> zc_getpart2((d(:,:,1)),3, 2)   XPart[f[x],1,2,3,4] --> zc_getpart4(f(x),4, 3, 2, 1)
    )"))
    EXPECT_EQ(text, value(tree)) << tree;
}

TEST_F(SheepValue, NamesConstantsAndCalls) {
  for (const auto& [tree, text] : table<2>(R"(
      #-12 --> -12       -12 --> -12        2.50 --> 2.50D0    "a b" --> "a b"    XPi --> 3.1415926535897932_zc_real
      XI --> (0,1.0)     XE --> EXP(1.0)    XTrue --> .TRUE.   XFalse --> .FALSE.                    f[] --> f()
      f[x,XPlus[x,y]] --> f(x, x+y)         g[1][x] --> g_L1_R(x)                 sub[x] --> call sub (x)\n
    )"))
    EXPECT_EQ(text, value(tree)) << tree;
  char digits[][10] = {"1.5*^-3", "1*^3", "1.5e-03", "2"};
  const std::pair<tAsynt, const char*> constants[] = {{mRealConst(2.25), "2.2500000d0"},
                                                      {mFilename(digits[3]), "2"},
                                                      {mExactRealConst(digits[0]), "1.5D-3"},
                                                      {mExactIntConst(digits[1]), "1D3"},
                                                      {mExactRealConst(digits[2]), "1.5D-03"}};
  for (const auto& row : constants) EXPECT_EQ(row.second, f90.added([&] { FunparseVal(row.first); }));
}

TEST_F(SheepValue, NamesOfSymbols) {
  char name[] = "$v", components[] = "M";
  const tAsynt simple = mSymbol(mSimpleSymbol(mNoType(), NoPosition, components));
  const tAsynt path = mExpression1(simple, mExpression0());
  const std::pair<tAsynt, const char*> rows[] = {
      {mAbsoluteSymbol(mRealType(nullptr), NoPosition, name, path), "ADv"},
      {mSimpleSymbol(mNoType(), NoPosition, name), "ADv"},
      {mTempSymbol(mNoType(), NoPosition, 12), "zc_T12"},
      {mOutParam(mNoType(), NoPosition, 3), "zc_O3"},
      {mFullSymbol(mNoType(), NoPosition, name, path), ""},
      {mAbsoluteNest(mNoType(), NoPosition, typed_tree("x[#1][i,-2.5]")), "x_L1_R_Li_C-2.5_R"},
      {mAbsoluteNest(mNoType(), NoPosition, mSimpleFFE(mExpression1(mRealConst(1.5), mExpression0()), simple)),
       "M_L1.500000_R"}};
  for (const auto& row : rows) EXPECT_EQ(row.second, f90.added([&] { FunparseVal(mSymbol(row.first)); }));
  EXPECT_EQ("$v$vzc_O3ADv", f90.added([&] {
    Foutput_symbol_name(rows[0].first, false);
    Foutput_symbol_name(rows[1].first, false);
    Foutput_symbol_name(rows[3].first, false);
    Foutput_symbol_name(rows[0].first, true);
  }));
  EXPECT_TRUE(contains(message_of([&] { Foutput_symbol_name(rows[5].first, false); }),
                       "F90 unparser: Cannot unparse symbol name.\n"));
  EXPECT_TRUE(contains(message_of([] { Foutput_nest_name(typed_tree("x[XPlus[i,1]]")); }),
                       "Error: module sheepunp, routine Foutput_nest_name failed\n"));
}

// An error, after which something has been written, or a fatal message.
TEST_F(SheepValue, Refusals) {
  expect_refusals(FunparseVal,
                  "XDimensions[c,1] --> F90 unparser: Dimensions[] with two parameters not implemented.\\n --> \n"
                  "Cross[a,b,a,b,a] --> F90 unparser: Cross[] with more than four arguments not implemented.\\n --> ");
  expect_refusals(FunparseVal, R"(
      XExtract[a,i] --> F90 unparser: Cannot unparse Extract[].\n -->
      XExtract[a,XList[i,j]] --> F90 unparser: Invalid arguments to Extract[].\n --> \
          ! zc_extract(a, zc_mkpc(i,zc_mkc(j)))
      OuterProduct[a,c] --> F90 unparser: OuterProduct[] is only implemented for vectors.\n -->
      XDrop[c,1] --> F90 unparser: Drop[] must have a list as first argument.\n -->
      XPart[a,XList[1,2]] --> F90 unparser: Lists of length > 1 are not supported as indices.\n --> a()
      XPart[f[x],XBlank] --> F90 unparser: in expr[[idx]] if expr is not a declared variable then idx must be an \
          integer expression. You can introduce a temporary variable. --> zc_getpart1(f(x),)
      two[x] --> F90 unparser: Found function returning multiple values in bad context.\n -->
      XInequality[x,XPlus,y] --> F90 unparser: Bad inequality.\n -->
      XInequality[x,XLess] --> F90 unparser: Bad inequality.\n -->
      XMax[x,y,1] --> sheepunp: NEW BEHAVIOUR: An expression expected in a place where a statement is passed.  Can't \
          perform FunparseStmt to unparse node type: XMax, CODE:\s -->
      XMin[] --> node type: XMin, CODE:\s -->                   XDot[a] --> node type: XDot, CODE:\s -->
      XIf[p,x,y] --> node type: XIf, CODE:\s -->                XSet[x,y] --> node type: XSet, CODE: x=y -->
      XMean[a] --> node type: XMean, CODE:\s -->                XStringJoin[s,s] --> node type: XStringJoin, CODE:\s -->
      XList[] --> Error: module sheepunp, routine funparse_array failed\n -->
      XPart[f[x],1,2,3,4,5] --> Error: module sheepunp, routine Funparse_part failed\n -->
    )");
  const tAsynt t = mXPlus(nullptr, typed_tree("x"));
  EXPECT_TRUE(contains(message_of([&] { FunparseVal(t); }), "F90 unparser: Bad expression x.\n"));
}

// Nesting at the bound of the readers; a long list; a type that is asked for at each level of a deep product.
TEST_F(SheepValue, BigExpressions) {
  tAsynt deep = typed_tree("i");
  const tAsynt f = typed_tree("f");
  for (int level = 0; level < 5000; level++) {
    deep = mXDivide(nullptr, deep, mIntConst(1));
    deep = mSimpleFFE(mExpression1(deep, mExpression0()), f);
  }
  const tAsynt ones = list(std::vector<tAsynt>(200000, mIntConst(1)));
  std::string text;
  message_of([&] { text = f90.added([&] { FunparseStmt(mXPut(deep, nullptr)); }); });
  EXPECT_EQ("PRINT *, ", text.substr(0, 9));
  EXPECT_EQ("f(real(i)/1)/1", text.substr(text.find("real(i)") - 2, 14));
  EXPECT_TRUE(contains(message_of([&] { FunparseVal(mXList(nullptr, ones)); }), "continuation lines"));
}

}  // namespace
}  // namespace oz
