// Types: a table of expressions per subject with the type and the reports that each has, promotion, and the memory.

#include "type.h"

#include "support.h"
#include "type_rules.h"

namespace oz {
namespace {

const char kNames[] =
    "i:int r:real z:complex b:bool s:string u:none i_s:int_s b_s:bool_s "
    "iv:int[3] rv:real[4] zv:complex[3] bv:bool[2] sv:string[2] rs:real_s[-1,3] "
    "im:int[2,3] rm:real[2,3] zm:complex[2,3] bm:bool[2,2] it:int[2,3,4] rt:real[2,3,4] zt:complex[2,3,4] "
    "ml:multi(real,int) "
    "P$`p:real P$`pv:real[2] C`f:real C`g:none";

struct Type : Trees {
  Type() { declare_types(kNames); }
};

// Texts that many rows have, and what stands for them in the tables.
const std::pair<const char*, std::string> kTexts[] = {
    {"Could not evaluate data type for node ", "NOTYPE "},
    {". This may happen if expression is invalid or if it cannot be used in this place.", "*"},
    {"You attempt to call an function which strongly require correct argument types. |  This is illegal to do with "
     "your arguments.",
     "BASE"},
    {"It is illegal to use a boolean value within a numerican expression.", "BOOL"},
    {"The number of dimensions of A in A[B] is too low. Therefore B is  an impossible index in the index expression "
     "list in A[B]. B is ",
     "LOW "},
    {"In  XSetShape[ ", "SHAPE "},
    {", i ]  the call to SetShape sets the dimensions of ", ": "},
    {", or fill array with scalars using a Table[]. Ignore this message if you fixed it.", "*"},
    {"Incompatible types in assignment : | ", "TYPES "},
    {"W7,3 ... left side is ", ""},
    {" | W7,3 .... of type ", ":"},
    {" | W7,3 ... right side is ", " = "},
    {"Import[] can be used only in statements V=Import[...], where V is a local variable ", "PLACE "},
    {"A string expression that stores a file name is expected, but value of type ", "NAME "},
    {"One cannot use single brackets after local variable name (declared at the specified place) of ", "LOCAL "}};

std::string short_texts(std::string text) {
  for (const auto& [whole, tag] : kTexts)
    for (size_t at; (at = text.find(whole)) != std::string::npos;) text.replace(at, std::string(whole).size(), tag);
  return text;
}

void expect_type(const std::string& text, const std::string& type, const std::string& reports) {
  Begintype();
  declare_types(kNames);
  tAsynt t = typed_tree(text);
  tAsynt typ = nullptr;
  EXPECT_EQ(reports, short_texts(said([&] { typ = Find_type(&t); }))) << text;
  EXPECT_EQ(type, type_text(typ)) << text;
}

// good: "expression=type" words of what is typed without a report. The type is null where typing ends in a fatal
// message.
void expect_types(const char* good, const char* rows) {
  for (const std::string& word : words(good)) {
    const size_t equals = word.find('=');
    expect_type(word.substr(0, equals), word.substr(equals + 1), "");
  }
  for (const auto& [text, type, reports] : table<3>(rows)) expect_type(text, type, reports);
}

TEST_F(Type, LeavesAndStatements) {
  expect_types(
      "17=int #17=int 2.5=real XPi=real XE=real XI=complex XTrue=bool \"a\"=string iv=int[3] ml=multi(real,int) "
      "rs=real_s[-1,3] u=none %Sin=predef GeneralConversion[i,int,real]=real XCompoundExpression[XBreak,i,r]=real "
      "XBreak=none XNull=none XVoidFunc=none XPrint[XBlank]=none XPut[XBlank,]=none IReduce[%Plus,iv,&]=int[3] "
      "XIf[b,i,r]=real XIf[b,b,b]=bool XIf[b,b,i]=int XWhich[b,1,b,2.5]=real XWhich[b,b]=bool",
      R"(
          XCompoundExpression[] --> none --> E NOTYPE "Expression0", expression *
          XBlank --> none --> E Blank (_) can be used in Part [[]] only
          XAlternatives[1,2] --> none --> E7,3 Alternatives (|) can be used in Part [[]] only
          XWhile[b,i] --> none --> E NOTYPE "XWhile", expression  XWhile[args...] *
          XIf[i,1,2] --> int --> E Non-bool conditional in If.    XIf[b_s,1,2] --> int --> E Non-bool conditional in If.
          XWhich[i,1,b_s,2] --> int --> \
              E Boolean type expected as argument to Which in i | E Boolean type expected as argument to Which in b_s
          XWhich[] --> null --> F Tried to type empty expression list.
        )");
  tAsynt file = mFilename("f"), odd = typed_tree("XWhich[b,1,b]");
  EXPECT_EQ(string_type_node, Find_type(&file));
  EXPECT_TRUE(contains(message_of([&] { Find_type(&odd); }), "Internal error in line "));
}

TEST_F(Type, Functions) {
  expect_types(
      "XAbs[z]=real XAbs[zv]=real[3] XAbs[i]=int "
      "XGenTypeInformation[bv]=bool[2] XTranspose[rm]=real[3,2] XSort[rv]=real[4] XMean[iv]=real "
      "XVariance[it]=real[3,4] XMedian[rv]=real XMean[rm]=real[3] XMean[zv]=complex XMean[zm]=complex[3] "
      "XTotal[rv]=real XTotal[rm]=real[3] ArcTan2[i,r]=real XMod[i,iv]=int[3] NaturalDivide[r,rv]=int[4] "
      "XQuotient[1,2]=int XComplex[i,r]=complex XExtract[rm,iv]=real OuterProduct[iv,rv]=real[3,4]",
      R"(
          XAbs[b] --> null --> F BOOL          XTranspose[rv] --> null --> F Array of wrong dimension to Transpose.
          XTranspose[r] --> null --> F Non-array argument to Transpose.
          XStandardDeviation[sv] --> real --> \
              E Invalid type passed to StandardDeviation[]. Must be array of Integer, Real or Complex
          XTotal[r] --> none --> E Non-array passed to Total[].   XMod[i,b] --> null --> F Illegal use of bool.
          XComplex[i_s,z] --> complex --> \
              E Complex[] requires two Integer or Real arguments. First argument has a different type. | E Complex[] \
              requires two Integer or Real arguments. Second argument has a different type.
          XExtract[rm,rv] --> null --> F Second argument to Extract must be vector of integers.
          OuterProduct[i,rv] --> real[1,1] --> \
              E OuterProduct requres both arguments be one-dimensional arrays, OuterProduct[i,rv]\s
        )");
}

// By family: what a complex scalar and a vector of integers become; a truth value is refused.
TEST_F(Type, ElementwiseFunctions) {
  for (const auto& [family, of_complex, of_ints] : table<3>(R"(
      XSin XArcSin XSinh XArcSinh XCos XArcCos XCosh XArcCosh XTan XArcTan XTanh XArcTanh XCot XArcCot XCoth XArcCoth \
          XSec XSech XCsc XCsch XExp XLog XSqrt XFractionalPart XConjugate --> complex --> real[3]
      XSign XFloor XCeiling XRound XIntegerPart --> complex --> int[3]              XN XRe XIm XArg --> real --> real[3]
    )"))
    for (const std::string& function : words(family)) {
      expect_type(function + "[z]", of_complex, "");
      expect_type(function + "[iv]", of_ints, "");
      expect_type(function + "[bv]", "null", "F BOOL");
    }
}

TEST_F(Type, Operators) {
  expect_types(
      "XMinus[zv]=complex[3] XNot[bv]=bool[2] XStringLength[s]=int XSubtract[i,rv]=real[4] XPower[i,z]=complex "
      "XDivide[1,2]=real XDivide[iv,2]=real[3] XDivide[z,i]=complex XDivide[iv,z]=complex[3] XDrop[rv,1]=real[4] "
      "XAppend[rm,rv]=real[2,3] XOr[b,b]=bool XAnd[bv,bv]=bool[2] XEqual[b,b]=bool XUnequal[rv,rv]=bool "
      "XGreater[i,r]=bool XLess[i,i]=bool XGreaterEqual[r,r]=bool XLessEqual[s,s]=bool XPlus[i,r,zv]=complex[3] "
      "XTimes[i_s,i]=int Cross[rv,rv]=real[4] XDot[rv,rv]=real "
      "XDot[im,rv]=real[2] XDot[rm,it]=real[2,3,4] XDot[rm,it,iv]=real[2,3] XStringJoin[s,\"a\"]=string "
      "XList[1,2.5]=real[2] XList[XList[1,2],XList[3,4]]=int[2,2] XList[b,b]=bool[2] XInequality[i,XLess,r]=bool "
      "XInequality[b]=bool XInequality[iv,XLess,i,XEqual,iv]=bool[3] XMax[rv]=real XMin[i,r]=real",
      R"(
          XMinus[b] --> null --> F BOOL                           XNot[i] --> int --> E BASE
          XStringLength[i] --> int --> E BASE                     XPower[i,b] --> null --> F7,3 Illegal use of bool.
          XPrepend[rm,r] --> real[2,3] --> E7,3 Ranks of Append/Prepend arguments are invalid.
          XOr[b,i] --> int --> E BASE                             XLess[b,b] --> null --> F BOOL
          XLess[i,iv] --> none --> E NOTYPE "XLess", expression i<iv*
          XDot[rv] --> none --> E NOTYPE "XDot", expression rv*   XDot[rm,rv,rv] --> null --> F7,3 Bad argument to XDot.
          XStringJoin[i,i] --> string --> E BASE
          XInequality[i,XEqual,b] --> null --> F Illegal use of bool.
          XInequality[i,XLess] --> null --> F bad ineq in type checker.
          XMin[i_s,z] --> complex --> E Non-numeric value in Max or Min with 2 arguments.
          XMax[i] --> null --> F Non-array first argument to Extract (or the only argument to  Max or Min).
          XMax[1,2,3] --> null --> F At least one argument must be passed to Min or Max\s
        )");
}

TEST_F(Type, ArrayFunctions) {
  expect_types(
      "XDimensions[rm]=int[2] XSetCols[rm,1]=real[2,3] XSetRows[rv]=real[4] XSetSubMatrix[rm]=real[2,3] "
      "XCols[im,1]=int[2,3] XRows[rm]=real[2,3] XSubMatrix[rm]=real[2,3] XSetSubVector[rv]=real[4] "
      "XSetCol[1,2,iv]=int[3] XSubVector[rv,1,2]=real[4] XSetRow[rm,1,iv]=int[3] "
      "XCol[rm,1]=real[2] XRow[rm,1]=real[3] XSetShape[rv,i]=real[4] XJoin[rv,rv]=real[4] XStringTake[i,3]=string "
      "XStringTake[s,XList[1,2]]=string XQuantile[iv,0.5]=real XQuantile[zm,rv]=complex[2,3] "
      "XQuantile[rm,0.5,rm]=real[3] XFlatten[rt]=real[0] XFlatten[rt,1]=real[0,0] XFlatten[rt,3]=real[0] "
      "XFlatten[rt,99999999999999999999]=real[0]",
      R"(
          XDimensions[3] --> int[0] --> W7,3 Non-array is passed as argument to Dimensions[]
          XDimensions[] --> none --> E NOTYPE "XDimensions", expression  XDimensions[  ] *
          XRows[] --> none --> E NOTYPE "XRows", expression *
          XSetCol[rm,1] --> none --> E NOTYPE "XSetCol", expression rmXSetCol1*
          XCol[rm] --> none --> E NOTYPE "XCol", expression rm*
          XCol[rv,1] --> null --> F7,3 Two-dimensional argument to Column operator expected.
          XCol[rt,1] --> null --> F7,3 Non-array or wrong rank of array in Column operator.
          XRow[rv,1] --> null --> F7,3 Two-dimensional argument to Row operator expected.
          XRow[r,1] --> null --> F7,3 Non-array or wrong rank of array in Row  operator.
          XSetShape[rm,i] --> real[2,3] --> \
              W7,3 SHAPE rm: array but has too few indexes to do that in advance. You have to either declare array  \
              with correct dimensions*\s
          XSetShape[XMinus[rv],i] --> real[4] --> \
              W7,3 SHAPE -rv: -rv  array but it is applied to a fragment of array and therefore makes no effect. You \
              have to either declare array with correct  dimensions*
          XJoin[iv,rm] --> int[3] --> \
              E  Join[] first argument type does not match type of rm | E Join[]  argument type must be array of \
              Integer or Real or Complex
          XJoin[bv,bv] --> bool[2] --> E Join[]  argument type must be array of Integer or Real or Complex
          XJoin[i,1] --> int --> E Join[] first argument type must be array, not scalar | E Join[]  argument type \
              must be array of Integer or Real or Complex
          XStringTake[i,XList[1,s]] --> string --> E BASE | E BASE
          XQuantile[r,0.5] --> real --> E7,3 Invalid 1st argument passed to Quantile[]. Must be array. Got  Real .
          XQuantile[rv,0.5,rv] --> real --> \
              E7,3 Invalid 3rd argument passed to Quantile[]. Must be exactly {{a,b},{c,d}}. Got  Array [4] of  Real .
          XQuantile[rv] --> none --> E NOTYPE "XQuantile", expression rv*
          XFlatten[rt,#1] --> real[2,3,4] --> \
              W7,3 Not a integer constant passed as 2nd argument to Flatten[] (1), cannot derive correct type.
          XFlatten[rt,1,2] --> real[2,3,4] --> W7,3 More than two arguments to Flatten[], cannot derive correct type.
          XFlatten[i] --> real --> E7,3 Invalid 1st argument type passed to Flatten[]. It must be an array.
          XFlatten[] --> none --> E NOTYPE "XFlatten", expression *
        )");
}

TEST_F(Type, Part) {
  expect_types(
      "XPart[rv,1]=real XPart[rt,i]=real[3,4] XPart[rt]=real[2,3,4] XPart[rm,XBlank,1]=real[3] "
      "XPart[rm,Blank[&],%All]=real[2,3] XPart[rm,%Blank,XList[i]]=real[2,3] "
      "XPart[rm,XAlternatives[XBlank,2]]=real[2,3]",
      R"(
          XPart[rm,%List[r],1] --> real[3] --> E7,3 Argument r to Part ([[{}]]) must be integer expression
          XPart[rm,XAlternatives[r,%Blank]] --> real[2,3] --> E BASE
          XPart[rm,r] --> real[3] --> E7,3 Argument r to Part ([[]]) must be integer expression
          XPart[rv,XList[1,2]] --> real --> E7,3 Argument  { 1, 2 }  to Part ([[]]) must be integer expression
          XPart[rv,1,2] --> real --> E7,3 LOW 2                   XPart[i,XBlank] --> int --> E7,3 LOW _
          XPart[] --> none --> E NOTYPE "XPart", expression *
        )");
}

TEST_F(Type, Assignments) {
  expect_types(
      "XSet[r,i]=real XSetDelayed[z,r]=complex XSet[XPart[rv,XBlank],1]=real[4] XSet[%Part[rv,XBlank],1]=real[4] "
      "XSetDelayed[P$`p,1]=real",
      R"(
          XSet[i,r] --> int --> E7,3 TYPES i: Integer  = r: Real\s
          XSet[rv,rm] --> real[4] --> E7,3 TYPES rv: Array [4] of  Real  = rm: Array [2 ,3] of  Real\s
          XSet[i,u] --> int --> E7,3 TYPES i: Integer  = u: undefined type\s
          XSet[rv,1] --> real[4] --> \
              W7,3 Such types in assignment are not supported in typed Algebratica, because assignment modifies \
              variable type. Consider using "var[[_]]=" instead. : | rv: Array [4] of  Real  = 1: Integer\s
          XSet[P$`p,XBlank] --> real --> E7,3 Assignment to function input arguments is not permitted.
        )");
}

TEST_F(Type, Files) {
  expect_types(
      "XSet[rv,XImport[\"a.b.CSV\"]]=real[4] XSet[rv,%Import[\"a.csv\"]]=real[4] XSet[zm,XImport[s]]=complex[2,3] "
      "XSet[iv,XImport[s,\"CSV\"]]=int[3] XSet[iv,XImport[s,\"List\"]]=int[3] XExport[\"a.CSV\",rm]=string "
      "XExport[s,rv]=string XExport[s,rv,\"list\"]=string",
      R"(
          XSet[rv,XImport["a.TXT"]] --> real[4] --> \
              E7,3 Argument to Import[file] has suffix " .txt ", this format is not supported in this version
          XSetDelayed[rv,XImport["a"]] --> real[4] --> \
              E7,3 Argument to Import[file] is " a ", has no suffix. You have to specify a format for Import
          XSet[XPart[rv,1],XImport["a.csv"]] --> real --> E7,3 PLACE .
          XSet[rt,XImport["a.csv"]] --> real[2,3,4] --> \
              E7,3 PLACE of base type Real, Int, Complex , one or two dimensions
          XSet[bv,XImport[s]] --> bool[2] --> E7,3 PLACE of base type Real, Int, Complex , one or two dimensions
          XSet[iv,XImport[i]] --> int[3] --> E7,3 NAME  Integer  found
          XSet[iv,XImport["a","Xls"]] --> int[3] --> E7,3 The format xls  in Import[] is not supported in this version
          XSet[iv,XImport[s,s]] --> int[3] --> E7,3 NAME  String  found
          XSet[iv,XImport["a",s]] --> int[3] --> \
              E NOTYPE "XImport", expression "a"XImports* | E7,3 TYPES iv: Array [3] of  Integer  = "a"XImports: \
              undefined type\s
          XImport["a.csv"] --> none --> E NOTYPE "XImport", expression "a.csv"*
          XExport["a",rv] --> string --> \
              E7,3 First argument to Export[file,arg] is " a ", has no suffix. You have to specify a format for Export
          XExport["a.Xls",rt] --> string --> \
              E7,3 First argument to Export[file,arg] has suffix " .xls ", this format is not supported in this \
              version | E7,3 Second argument to Export["*.csv",arg] must be 1D or 2D array
          XExport[s,1] --> string --> E7,3 Second argument to Export[file,arg] must be 1D or 2D array
          XExport[i,rv] --> none --> E NOTYPE "XExport", expression iXExportrv*
          XExport[s,rt,"Csv"] --> string --> E7,3 Second argument to Export[file,arg,"csv"] must be 1D or 2D array
          XExport[s,rm,"list"] --> string --> E7,3 Second argument to Export[file,arg,"list"] must be 1D  array
          XExport[s,rv,"XLS"] --> string --> E7,3 The format xls  in Export[] is not supported in this version
          XExport[s,rt,s] --> string --> E7,3 Second argument to Export[file,arg,format] must be 1D or 2D array
          XExport[s,rv,i] --> none --> E NOTYPE "XExport", expression sXExportrvXExporti*
          XExport[s] --> none --> E NOTYPE "XExport", expression s*
        )");
}

TEST_F(Type, Applications) {
  expect_types("C`f[b]=real C`g[1]=none C`f[1][2][3][4]=real %Derivative[1][r]=predef", R"(
      r[1] --> real --> E4,2 LOCAL basic type : r               rv[1] --> real[4] --> E4,2 LOCAL array type : rv
      P$`pv[1] --> real[2] --> E4,2 Single brackets can not be used after local argument name : P$`pv
      rv[1][2] --> real[4] --> E4,2 LOCAL array type : rv
    )");
  tAsynt t = typed_tree("C`f[1][2][3][4][5]");
  const std::string deep = message_of([&] { Find_type(&t); });
  EXPECT_EQ(0u, deep.find("Too many symbolic indices:\nC`f[1][2][3][4][5]\n")) << deep;
  EXPECT_TRUE(contains(deep, "Internal error in line "));
}

// A predefined head is typed by the node that it is to become, and the tree stays as it is.
TEST_F(Type, PredefinedHeads) {
  expect_types(
      "%Pi=real %True=bool %Plus[%Sin[i],%Times[2,%Pi]]=real %If[%Less[i,2],%List[1,%Abs[z]],rv]=real[2] "
      "%Inequality[i,%Less,r,%LessEqual,2]=bool %oz$Parallel[%Set[r,i]]=real "
      "%IReduce[%Plus,%Sin[i],%List[i,1,2]]=real XPlus[%Part[rm,1],%N[i,20]]=real[3]",
      "%Sin[b] --> null --> F BOOL   %Sin[1,2] --> null --> F 2 arguments to unary function Sin[1, 2].");
  tAsynt t = typed_tree("%Sort[XPlus[i,%Abs[i]]]");
  const auto reports = [&] { return said([&] { Find_type(&t); }); };
  EXPECT_EQ("E Non-array passed to Sort[].", reports());
  EXPECT_EQ("", reports()) << "reported once";
  EXPECT_EQ("%Sort[XPlus[i:Int,%Abs[i:Int]]]", tree_text(t));
}

// ---- declarations

tAsynt declarations_of(tAsynt t, bool* was_funcall) {
  const std::string text = unparse_string(t);
  *was_funcall = text.rfind("C`g", 0) == 0;
  static std::map<std::string, tAsynt> found;
  if (*was_funcall) return found["g"] = mXSetDelayed(nullptr, typed_tree("C`f[1]"), typed_tree("1"));
  return text == "n[1]" || text == "n[1][2]" || text == "u" ? typed_tree("iv") : nullptr;
}

TEST_F(Type, UntypedNamesAskForTheirDeclaration) {
  declare_types("u:none v:none n:none iv:int[3] C`f:real C`g:none");
  Set_declaration_finder(declarations_of);
  for (const auto& [text, type, after] : table<3>(R"(
      u --> int[3] --> u           v --> none --> v             C`g[1] --> real --> C`g:Real[1]
      n[1] --> int[3] --> <n[1]    n[1][2] --> int[3] --> <(n[1])[2]
      XSin[n[1]] --> real[3] --> XSin[<n[1]                     %Sin[n[1]] --> real[3] --> %Sin[n[1]]
    )")) {
    tAsynt t = typed_tree(text);
    EXPECT_EQ(type, type_text(Find_type(&t))) << text;
    EXPECT_EQ(0u, tree_text(t).find(after)) << tree_text(t);
  }
  EXPECT_EQ("int[3]", type_text(Type_of(typed_tree("u")))) << "the symbol has the type from now on";
  EXPECT_EQ("real", type_text(Type_of(typed_tree("C`g"))));
}

// ---- promotion

// The types, whether a truth value is allowed, what they become.
TEST_F(Type, PromotionOfTwoTypes) {
  for (const auto& [t1, t2, bools, type, reports] : table<5>(R"(
      bool --> bool --> 0 --> null --> F7,3 Illegal use of bool.                    bool --> bool --> 1 --> bool -->
      bool --> int --> 1 --> int -->         int --> bool --> 0 --> null --> F7,3 Illegal use of bool.
      int --> bool --> 1 --> null --> FAILED IntType, BoolType
      bool[2] --> int --> 0 --> null --> F7,3 Illegal use of bool.   int --> bool[2] --> 0 --> null --> \
          F7,3 Illegal use of bool.
      bool[2] --> bool --> 1 --> bool[2] -->                    bool --> bool[2] --> 1 --> bool[2] -->
      real[2] --> real[3] --> 0 --> real[2] -->                 int[2] --> complex --> 0 --> complex[2] -->
      real[2] --> real[3,4] --> 0 --> real[2] --> \
          E7,3 An operation cannot accept two arrays with different number of dimensions; create a loop instead : | \
          E7,3 ... the first type is  Array [2] of  Real  with 1 dimensions | E7,3 ... the second type is  Array [3 ,\
          4] of  Real  with 2 dimensions
      int[2,2] --> real[3] --> 0 --> int[2,2] --> \
          E7,3 An operation cannot accept two arrays with different base types; make an explicit operation to change \
          the type : | E7,3 ... the first type is  Integer  with 2 dimensions | E7,3 ... the second type is  Real  \
          with 1 dimensions
      int --> real_s[-1,2] --> 0 --> real_s[-1,2] -->                      real --> int_s[-1,2] --> 0 --> real[-1,2] -->
      string --> string --> 0 --> string -->        string --> int --> 0 --> null --> FAILED StringType, IntType
      int --> int --> 0 --> int -->                 int --> real_s --> 0 --> real -->
      int --> complex --> 0 --> complex -->         real --> int --> 0 --> real -->
      real --> complex --> 0 --> complex -->        complex --> int --> 0 --> complex -->
      complex --> complex --> 0 --> complex -->     none --> real --> 0 --> null --> UNTYPED NoType.
      real --> none --> 0 --> null --> UNTYPED RealType.
      real[2] --> multi(real) --> 0 --> null --> FAILED ArrayType, MultiType
    )")) {
    std::string expected = reports;
    if (reports.starts_with("FAILED"))
      expected.replace(0, 6,
                       "F7,3 Promote_types failed: one cannot combine these two types in a single expression, they can "
                       "never be compatible:");
    if (reports.starts_with("UNTYPED"))
      expected.replace(0, 7,
                       "F7,3 NoType in type derivation; Possibly a variable is not defined or a formal parameter is "
                       "missing a prefix; Other type is");
    const tAsynt first = type_of_text(t1), second = type_of_text(t2);
    const char allowed = bools == "1";
    tAsynt typ = nullptr;
    EXPECT_EQ(expected, said([&] { typ = Promote_types(tPosition{7, 3}, first, second, allowed); })) << t1 << ' ' << t2;
    EXPECT_EQ(type, type_text(typ)) << t1 << ' ' << t2;
  }
  const tAsynt array = type_of_text("real[2]");
  EXPECT_EQ(array, Promote_types(NoPosition, int_type_node, array, 0)) << "the array itself, not a copy";
}

TEST_F(Type, ValuesAndPlaces) {
  // A row per place, a column per value; "n" is narrower, "i" an initialisation, "." neither.
  const char* types[] = {"none",    "string",  "real",   "int",       "bool",
                         "complex", "real[2]", "int[2]", "real[2,2]", "multi()"};
  const char* expected[] = {
      "nnnnnnnnnn",  // none
      "n.nnnnnnn.",  // string
      "nn...nnnn.",  // real
      "nnn..nnnn.",  // int
      "nnnn.nnnn.",  // bool
      "nn....nnn.",  // complex
      "niiiii..n.",  // real[2]
      "niiiiin.n.",  // int[2]
      "niiiiinn..",  // real[2,2]
      "n.........",  // multi()
  };
  for (int place = 0; place < 10; place++) {
    std::string row;
    for (const char* value : types) {
      const tAsynt t1 = type_of_text(types[place]), t2 = type_of_text(value);
      row += Narrower(t1, t2) ? 'n' : NarrowerInit(t1, t2) ? 'i' : '.';
    }
    EXPECT_EQ(expected[place], row) << types[place];
  }
}

TEST_F(Type, QuestionsAboutTypes) {
  const auto typ = [](const std::string& text) { return type_of_text(text); };
  for (const auto& [t1, t2, same] : table<3>(R"(
      int --> int_s --> 1                    real[2] --> real[3] --> 1              real[2] --> real[3,2] --> 0
      real[2] --> real --> 0                 none --> none --> 0
    )"))
    EXPECT_EQ(same == "1", Check_equal_base(typ(t1), typ(t2)) != 0) << t1 << ' ' << t2;
  for (const char* member : {"int_s", "real_s", "bool_s", "real_s[-1]"}) EXPECT_TRUE(Is_setmember(typ(member)));
  for (const char* other : {"int", "complex_s", "string_s", "real[2]"}) EXPECT_FALSE(Is_setmember(typ(other)));
  EXPECT_EQ("real", type_text(Find_base(typ("real[2]"))));
  EXPECT_EQ("none", type_text(Find_base(typ("multi(real)"))));
  EXPECT_EQ("real[2,3]",
            type_text(merge_arrays(real_type_node, One_dimension(3), ArrayType_Dimensions(typ("real[2,3]")))));
  EXPECT_EQ("E Incompatible array sizes : 3 and 4", said([&] {
              merge_arrays(real_type_node, list({typed_tree("2"), typed_tree("3")}), list({typed_tree("4")}));
            }));
  EXPECT_EQ("real[3]", type_text(Cross_type(typ("int[3]"), typ("real[3]"))));
  EXPECT_EQ("Error: module type, routine Cross_type failed", said([&] { Cross_type(typ("int[3]"), typ("real[4]")); }));
}

// The full-form reader's dimension lists are of another kind; both kinds go together in what is made of them.
TEST_F(Type, DimensionsOfBothListKinds) {
  const tAsynt dims = mIntConst1(mIntConst(5), mIntConst1(mIntConst(6), mIntConst0()));
  SymInfo_Type(info_of("u")) = mArrayType(real_type_node, dims);
  for (const auto& [text, expected] : table<2>(R"(
      XList[u,u] --> real[2,5,6]                                XDot[rm,u] --> real[2,6]
      XTranspose[u] --> real[6,5]                               XTotal[u] --> real[6]
    )")) {
    tAsynt t = typed_tree(text);
    const tAsynt typ = Find_type(&t);
    EXPECT_EQ(expected, type_text(typ)) << text;
    EXPECT_TRUE(CheckAsynt(typ)) << text;
  }
}

// ---- conversions

TEST_F(Type, ConversionNodes) {
  for (const auto& [text, type, after] : table<3>(R"(
      XPlus[i,r] --> real --> XPlus[GeneralConversion[i:Int,Int,Real],r:Real]       XSin[i] --> real --> XSin[i:Int]
      // From the right: real and int are real, complex and that complex; what was converted goes on to the last type.
      XPlus[z,i,r] --> complex --> \
          XPlus[z:Complex,GeneralConversion[i:Int,Int,Complex],GeneralConversion[r:Real,Real,Complex]]
      // A conversion that is there gets the common type, but for the first operand.
      XPlus[r,GeneralConversion[b,bool,int],r] --> real --> \
          XPlus[r:Real,GeneralConversion[GeneralConversion[b:Bool,Bool,Int],Int,Real],r:Real]
      XPlus[i,i,GeneralConversion[b,bool,int]] --> int --> XPlus[i:Int,i:Int,GeneralConversion[b:Bool,Bool,Int]]
      XSubtract[i,z] --> complex --> XSubtract[GeneralConversion[i:Int,Int,Complex],z:Complex]
      // The tests behind the first are converted along with the values.
      XWhich[b,r,b,i] --> real --> \
          XWhich[b:Bool,r:Real,GeneralConversion[b:Bool,Int,Real],GeneralConversion[i:Int,Int,Real]]
      XInequality[i,XLess,r] --> bool --> XInequality[GeneralConversion[i:Int,Int,Real],XLess[null],r:Real]
    )")) {
    tAsynt t = typed_tree(text);
    EXPECT_EQ(type, type_text(Find_type_convert(t))) << text;
    EXPECT_EQ(after, tree_text(t)) << text;
    message_of([&] { Find_type(&t); });  // a converted test of a Which is no boolean any more
    EXPECT_EQ(after, tree_text(t)) << "conversions are made on demand only";
  }
  tAsynt ineq = typed_tree("XInequality[i,XLess,GeneralConversion[i,int,int]]");
  insert_conversion_nodes = 1;
  Change_ineq_type(XInequality_Expressions(ineq), int_type_node, real_type_node);
  insert_conversion_nodes = 0;
  EXPECT_EQ("XInequality[GeneralConversion[i:Int,Int,Real],XLess[null],GeneralConversion[i:Int,Int,Real]]",
            tree_text(ineq));
}

// An array whose size names the array itself, twice over.
tAsynt type_with_own_size(const char* text) {
  declare_types(std::string(text) + ":none");
  const tAsynt symbol = typed_tree(text);
  return SymInfo_Type(Symbol_SymInfo(symbol)) = mArrayType(real_type_node, list({symbol}));
}

TEST_F(Type, EqualityEndsInACircle) {
  EXPECT_TRUE(Equal_types(type_with_own_size("x"), type_with_own_size("x")));
  EXPECT_FALSE(Equal_types(type_with_own_size("x"), type_with_own_size("y")));
  EXPECT_FALSE(Equal_types(mRealType(nullptr), mRealType(make_index(linked_list, 1)))) << "attributes count here";
  EXPECT_FALSE(Equal_types(type_of_text("real[2]"), type_of_text("real[3]")));
}

// ---- side effects, memory, size

TEST_F(Type, EffectsOnTheTree) {
  tAsynt t = typed_tree("XAbs[rv]"), quantile = typed_tree("XQuantile[iv,0.5]"), none = typed_tree("XBreak");
  Find_type(&t);
  EXPECT_EQ("real[4]", type_text(XAbs_Type(t)));
  Find_type(&quantile);
  EXPECT_EQ("real[3]", type_text(Type_of(typed_tree("iv")))) << "an int array is a real one from now on";
  EXPECT_NE(Find_type(&none), Find_type(&none)) << "each NoType is a node of its own";
}

TEST_F(Type, MemoryKeepsTypesUntilTold) {
  tAsynt t = typed_tree("XSin[XPlus[i,r]]"), bad = typed_tree("XSort[r]");
  const auto now = [](tAsynt* e) { return type_text(Find_type(e)); };
  Begin_type_memory();
  EXPECT_EQ("real", now(&t));
  Variadic_Expressions(CUnary_Arg(t)) = list({typed_tree("zv")});
  EXPECT_EQ("real", now(&t)) << "remembered";
  Forget_types();
  EXPECT_EQ("complex[3]", now(&t));
  for (int i = 0; i < 2; i++) EXPECT_EQ("E Non-array passed to Sort[].", said([&] { Find_type(&bad); }));
  End_type_memory();
  Variadic_Expressions(CUnary_Arg(t)) = list({typed_tree("i")});
  EXPECT_EQ("real", now(&t)) << "nothing is remembered outside";
}

// Deep nesting must fit the stack, long lists must not use it, and asking at every level must not cost the square.
TEST_F(Type, DeepAndLong) {
  const tAsynt operands[] = {typed_tree("i"), typed_tree("r")};
  std::vector<tAsynt> levels{operands[0]};
  for (int k = 0; k < kMaxNesting; k++) levels.push_back(mXPlus(nullptr, list({operands[1], levels.back()})));
  Begin_type_memory();
  for (size_t k = levels.size(); k-- > 1;) ASSERT_EQ(real_type_node, Find_type(&levels[k]));
  End_type_memory();
  tAsynt elements = mExpression0();
  for (int k = 0; k < 300000; k++) elements = mExpression1(operands[k % 2], elements);
  tAsynt all = mXList(nullptr, elements);
  EXPECT_EQ("real[300000]", type_text(Find_type_convert(all)));
}

}  // namespace
}  // namespace oz
