// The verification pass: what becomes of every kind of node, the rewrites of arithmetic and inequalities, every
// message.

#include "veritrans.h"

#include "ffparse.h"
#include "ffscan.h"
#include "support.h"

namespace oz {
namespace {

struct Veritrans : Trees {
  Veritrans() {
    Beginveritrans();
    declare_types(
        "a:real b:real c:real i:int v:real[3] C`f:real u:none C`g:none Private`p:none m:real_s[-1] mi:int_s "
        "h:real[-1]");
  }
};

std::string without(std::string text, const std::string& part) {
  for (size_t at; (at = text.find(part)) != std::string::npos;) text.erase(at, part.size());
  return text;
}

// The walked tree, scalar types left out, and what was reported.
template <typename Walk>
std::string result_of(Walk walk) {
  std::string result;
  const std::string reports = said([&] { result = without(without(tree_text(walk()), ":Real"), ":Int"); });
  return result + (result.empty() || reports.empty() ? "" : " | ") + reports;
}

std::string walked(tAsynt t) {
  return result_of([&] {
    Veri_trans_tree(&t);
    EXPECT_TRUE(CheckAsynt(t));
    return t;
  });
}

std::string verified(const std::string& text) { return walked(typed_tree(text)); }

tAsynt read_text(const std::string& text) {
  ffscan_SetString(text.c_str());
  ffscan_BeginFile("");
  return ffparse(0);
}

void check(const char* rows) {
  for (const auto& [text, expected] : table<2>(rows)) EXPECT_EQ(expected, verified(text)) << text;
}

TEST_F(Veritrans, ProductsAndPowers) {
  check(R"(
      %Times[-1,a] --> XMinus[a]            %Times[#-1,a] --> XMinus[a]           %Times[-1.0,a] --> XTimes[-1.0,a]
      %Times[a,-1] --> XTimes[a,-1]         %Times[-1] --> XTimes[-1]             %Times[] --> XTimes[]
      %Times[-1,a,b] --> XMinus[XTimes[a,b]]                   %Power[a,-1] --> XDivide[1,a]
      %Power[a,#-1] --> XDivide[1,a]        %Power[a,-2] --> XPower[a,-2]
      %Times[a,%Power[b,-1]] --> XDivide[a,b]                  %Times[a,%Divide[#1,b]] --> XDivide[a,b]
      %Times[a,%Divide[2,b]] --> XTimes[a,XDivide[2,b]]        %Times[%Power[b,-1],a,c] --> XDivide[XTimes[a,c],b]
      %Times[a,%Power[b,-1],i,%Power[c,-1]] --> XDivide[XTimes[a,i],XTimes[c,b]]
      %Times[%Power[b,-1],%Power[c,-1]] --> XDivide[XTimes[],XTimes[c,b]]
      %Times[-1,%Power[b,-1]] --> XMinus[XDivide[1,b]]         %Times[-1,a,%Power[b,-1]] --> XMinus[XDivide[a,b]]
      %Plus[a,%Times[-1,%Times[b,%Power[c,-1]]]] --> XPlus[a,XMinus[XDivide[b,c]]]
      XTimes[-1,%Times[-1,a]] --> XTimes[-1,XMinus[a]]
      // a finished product stays
    )");
}

TEST_F(Veritrans, InequalitiesAndDerivatives) {
  check(R"(
      %Inequality[a,%Less,b,%LessEqual,%Plus[a,c]] --> XInequality[a,XLess[],b,XLessEqual[],XPlus[a,c]]
      %Inequality[%Pi,%Unequal,a] --> XInequality[XPi,XUnequal[],a]        %Inequality[%Pi] --> XInequality[XPi]
      %Inequality[] --> F Malformed Inequality:\s   %Inequality[a,%Less] --> F Malformed Inequality:\s
      %Inequality[a,%Less,b,%Sin,c] --> F Malformed Inequality: b; | Sin; | c
      %Inequality[a,b,c] --> F Malformed Inequality: a; | b; | c
      %Inequality[a,1,c] --> F Malformed Inequality: a; | 1; | c
      XInequality[%Pi,XLess[],%Plus[a,b]] --> XInequality[XPi,XLess[],XPlus[a,b]]
      XInequality[a] --> XInequality[a]             XInequality[] --> F Bad inequality in Veri_trans_ineq.
      XInequality[a,XLess[]] --> F Bad inequality in Veri_trans_ineq.      %Derivative[2][a] --> Deriv[2,a]
      %Plus[%Derivative[1][a],%Pi] --> XPlus[Deriv[1,a],XPi]               %Derivative[1][a][b] --> (Deriv[1,a])[b]
      %Derivative[2,a] --> Deriv[2,a]               %Derivative[1,2][a] --> (Deriv[1,2])[a]
      %Derivative[1][a,b] --> F 1 argument(s) to binary function.
      %Derivative[1][2] --> F 1 argument(s) to binary function.
    )");
}

// ---- every kind

// A node of a kind in the notation of typed_tree, all its expressions a leaf.
std::string node_text(const TreeKind& kind, const std::string& leaf) {
  std::string text = std::string(kind.name) + "[";
  for (int i = 0; i < kind.child_count; i++) {
    const unsigned field = kind.fields[kind.children[i]].kind;
    if (field == kExpressions) text += "{" + leaf + "},";
    if (field == kExpression || field == kSymbol) text += leaf + ",";
    if (field == kSymbols || field == kIterators) text += ",";
    if (field == kNoAsynt) text += "{},";
  }
  return text + "]";
}

// Kinds whose expressions are all walked.
const char kWalked[] =
    "XFor XWhile XIf XWhich XPrint XModule XBlock XWith XSin XArcSin XSinh XArcSinh XCos XArcCos XCosh XArcCosh XTan "
    "XArcTan XTanh XArcTanh XCot XArcCot XCoth XArcCoth XSec XSech XCsc XCsch XExp XLog XSqrt XAbs XSign XFloor "
    "XCeiling XRound XTranspose XIntegerPart XFractionalPart XN XGenCodeString XGenTypeInformation XRe XIm XArg "
    "XConjugate XSort XMean XVariance XTotal XMedian XStandardDeviation ArcTan2 NaturalDivide XQuotient XMod XComplex "
    "XExtract OuterProduct ParSet XMinus XNot XStringLength XStringReverse XSubtract XPower XDivide Deriv XSet "
    "XAlternatives XDrop XAppend XPrepend XOr XAnd XEqual XUnequal XGreater XLess XGreaterEqual XLessEqual XPlus "
    "XTimes XDot XStringJoin XCompoundExpression XList XDimensions XSetCols XSetRows XSetSubMatrix XSetCol XSetRow "
    "XCols XRows XSubMatrix XCol XRow XSubVector XSetSubVector XSetShape XMax XMin Cross XJoin XPart XStringTake "
    "XStringDrop XQuantile XFlatten XExport XImport XInequality XPut GeneralConversion ShapeConversion";

// Kinds that the walk leaves alone.
const char kLeft[] =
    "Parameterspec0 OutputParameter OutputSizeParameter XBreak XBlank XAll XVoidFunc XNull IntConst RealConst "
    "StringConst ExactIntConst ExactRealConst Filename XPi XI XE XTrue XFalse Empty Comment Expression0 Symbol0";

// Kinds with a test of their own, and abstract ones.
const char kOther[] =
    "NoAsynt SimpleFFE ComplexFFE Do IReduce ForAll Parameterspec1 InputParameter InputSizeParameter InOutParameter "
    "ExternalDeclaration XSetDelayed Symbol Expression1 Symbol1 "
    "Parameterspec Expression FullFormExpression CUnary CBinary Operator Unary Binary Variadic Constant "
    "TypeConversion";

// What is walked twice must come through as well: bodies are walked when they are read and when their code is made.
TEST_F(Veritrans, EveryKind) {
  const auto names = [](const char* text) {
    const auto all = words(text);
    return std::set<std::string>(all.begin(), all.end());
  };
  const std::set<std::string> walks = names(kWalked), left = names(kLeft), other = names(kOther);
  size_t seen = 0;
  for (unsigned k = 0; k < kAsyntKinds; k++) {
    const TreeKind& kind = Asynt_Schema.kinds[k];
    if (other.count(kind.name)) continue;
    tAsynt t = walks.count(kind.name) ? typed_tree(node_text(kind, "%Pi")) : Asynt_New(k, kind.field_count);
    const std::string report = said([&] { Veri_trans_tree(&t); });
    if (walks.count(kind.name)) {
      EXPECT_EQ(tree_text(typed_tree(node_text(kind, "XPi"))), tree_text(t));
    } else if (left.count(kind.name)) {
      EXPECT_EQ(k, t->yyKind);
    } else {
      EXPECT_EQ(std::string("F Bad tree in Veri_trans_tree. Node type: ") + kind.name, report);
      continue;
    }
    EXPECT_EQ("", report) << kind.name;
    seen++;
  }
  EXPECT_EQ(walks.size() + left.size(), seen);
  for (const char* kind : {"XFor", "XWhile", "XWhich", "XBreak", "XModule", "XBlock", "XWith"}) {
    ce = 1;  // statements can be refused
    EXPECT_EQ(std::string("F Bad tree in Veri_trans_tree. Node type: ") + kind, verified(kind));
    ce = 0;
  }
}

TEST_F(Veritrans, KindsOfTheirOwn) {
  check(R"(
      XSetDelayed[a,%Pi] --> XSet[a,XPi]
      Do[%Pi,Iterator[%Pi,%Pi,%Pi]] --> Do[XPi,Iterator[XPi,XPi,XPi]]             %Pi --> XPi        %Sin --> %Sin
      ForAll[%Pi,{Iterator[%Pi,%Pi,%Pi]},&] --> ForAll[XPi,{Iterator[XPi,XPi,XPi]},Empty]
      IReduce[%Plus,%Pi,{Iterator[%Pi,%Pi,%Pi]},&] --> IReduce[%Plus,XPi,{Iterator[XPi,XPi,XPi]},Empty]
      XPlus[AlgAuxiliary[%Pi],a,AlgAuxiliary[b],%Pi,AlgAuxiliary[c]] --> XPlus[a,XPi]
      XPart[v,Blank[&],%Times[-1,i]] --> XPart[v:ArrayType[Real,{3}],XBlank,XMinus[i]]
      XPart[v,XAlternatives[Blank[&],XAlternatives[1,Blank[&]]]] --> \
          XPart[v:ArrayType[Real,{3}],XAlternatives[XBlank,XAlternatives[1,XBlank]]]
      XPart[v,Blank[a]] --> F Bad tree in Veri_trans_tree. Node type: Blank
    )");
  const tAsynt range = typed_tree("Iterator[%Pi,%Pi,%Pi]");
  EXPECT_EQ("Do[XPi,{Iterator[XPi,XPi,XPi]}]", walked(mDo(typed_tree("%Pi"), mIterator1(range, mIterator0()))));
  EXPECT_EQ("{a,u} | E4,2 Undefined (variable) symbol: u", walked(symbols({typed_tree("a"), typed_tree("u")})));
}

TEST_F(Veritrans, ParametersOfExternals) {
  const auto external = [](tAsynt parameter) {
    return walked(
        mExternalDeclaration("", "", "C", mExternalFunctionReturns(), mParameterspec1(parameter, mParameterspec0())));
  };
  const std::string start = "ExternalDeclaration[\"\",\"\",\"C\",ExternalFunctionReturns,{";
  const std::string undefined = " | E4,2 Undefined (variable) symbol: u";
  EXPECT_EQ(start + "InputParameter[u]}]" + undefined, external(mInputParameter(typed_tree("u"))));
  EXPECT_EQ(start + "InOutParameter[u]}]" + undefined, external(mInOutParameter(typed_tree("u"))));
  EXPECT_EQ(start + "OutputParameter[u]}]", external(mOutputParameter(typed_tree("u"))));
  // A size without a type is an integer.
  tAsynt size = mInputSizeParameter(typed_tree("u"), typed_tree("v"), typed_tree("%Plus[i,1]"));
  EXPECT_EQ(start + "InputSizeParameter[u,v:ArrayType[Real,{3}],XPlus[i,1]]}]", external(size));
  EXPECT_EQ("int", type_text(SymInfo_Type(info_of("u"))));
}

// ---- names

TEST_F(Veritrans, UndefinedNames) {
  check(R"(
      u --> u | E4,2 Undefined (variable) symbol: u             C`f[%Pi][%Pi] --> (C`f[XPi])[XPi]
      Private`p --> Private`p | E4,2 Duplicate (variable) symbol, probably defined twice (e.g.inside and outside \
          package) in different sense: Private`p
      XPlus[C`g[%Pi],%Pi] --> XPlus[C`g[%Pi],XPi] | E4,2 Undefined function symbol,  function not supported: C`g
      m[%Plus[i,1]] --> <m:ArrayType_s[Real,{-1}][XPlus[i,1]]:ArrayType_s[Real,{-1}]>
      %Plus[mi[i],1] --> XPlus[<mi_s[i]_s>,1]
      // An array, but no member of an instance set.
      h[%Pi] --> h:ArrayType[Real,{-1}][XPi] | E4,2 One cannot use single brackets after local variable name \
          (declared at the specified place) of array type : h
    )");
  // A name at no place is reported with the assignment that was passed last.
  tAsynt w = mSymbol(mAbsoluteSymbol(mNoType(), NoPosition, "w", mExpression0()));
  EXPECT_EQ("XCompoundExpression[XSet[a,w]] | E Undefined (variable) symbol: w | Last assignment seen: | a=w",
            walked(compound({set(typed_tree("a"), w)})));
  allow_untyped = 1;
  check("u --> u   C`g[%Pi] --> C`g[XPi]   C`g[%Pi][u] --> (C`g[XPi])[u]");
  allow_untyped = 0;
}

tAsynt declaration;      // what the finder answers
bool declares_function;  // and how

TEST_F(Veritrans, NamesFoundInTheModel) {
  Set_declaration_finder([](tAsynt, bool* was_funcall) {
    *was_funcall = declares_function;
    return declaration;
  });
  declaration = typed_tree("a");
  declares_function = true;
  check(R"(
      u --> u                                C`g[%Pi] --> C`g[%Pi]                  C`g[%Pi] --> C`g[XPi]
    )");  // found once, then walked
  // Where nothing need be typed, an element is looked up as a whole.
  declares_function = false;
  declare_types("a:real g:none h:none i:int");
  allow_untyped = 1;
  check("g[i] --> <g[i]>   h[i][i] --> <(h[i])[i]>");
  allow_untyped = 0;
  declaration = typed_tree("a");
  SymInfo_Type(Symbol_SymInfo(declaration)) = type_of_text("real_s[-1]");
  EXPECT_EQ("<g:ArrayType_s[Real,{-1}][XPlus[i,1]]:ArrayType_s[Real,{-1}]>", verified("g[%Plus[i,1]]"));
  Set_declaration_finder(nullptr);
}

TEST_F(Veritrans, SizesInTypes) {
  tAsynt x = typed_tree("v");
  tAsynt& sizes = ArrayType_Dimensions(SymInfo_Type(Symbol_SymInfo(x)));
  for (const char flag : {0, 1}) {
    // Sizes may be undefined, unknown, and lead back to the symbol.
    sizes = FullFormExpression_Args(typed_tree("C`f[u,%Plus[i,%Power[i,-1]],Blank[&],XDimensions[v]]"));
    allow_untyped = flag;
    EXPECT_EQ("", message_of([&] { Veri_trans_tree(&x); }));
    EXPECT_EQ(flag, allow_untyped);
    EXPECT_EQ("XPlus[i:Int,XDivide[1,i:Int]]", tree_text(Expression1_Expression(Expression1_Expressions(sizes))));
  }
  allow_untyped = 0;
}

// ---- behind the reader

TEST_F(Veritrans, FullFormText) {
  for (const auto& [text, expected] : table<2>(R"(
      f[oz$Type[a, oz$Real]] --> f[a] | E1,1 Undefined function symbol,  function not supported: f
      Plus[b, 1] --> XPlus[b,1] | E1,6 Undefined (variable) symbol: b
      // A component becomes a part; its index is an expression like all others.
      oz$x$C[Times[2, Power[oz$Type[i, oz$Int], -1]]] --> XPart[x,XDivide[2,i]] | E1,1 Undefined (variable) symbol: x
    )"))
    EXPECT_EQ(expected, result_of([&] { return read_text(text); })) << text;
}

TEST_F(Veritrans, DeepAndLongTrees) {
  for (const std::string& text : {repeated("Times[-1, ", kMaxNesting) + "Pi" + repeated("]", kMaxNesting),
                                  "Inequality[0" + repeated(", Less, 1", 20000) + "]",
                                  "Plus[0" + repeated(", Times[-1, Power[2, -1]]", 20000) + "]"})
    EXPECT_EQ("", message_of([&] { EXPECT_TRUE(AsyntMarksAreZero(read_text(text))); }));
}

}  // namespace
}  // namespace oz
