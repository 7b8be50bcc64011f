// Types: a table of expressions per subject with the type and the reports that each has, promotion, and the memory.

#include "type.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <sstream>

#include "fatal_text.h"
#include "index.h"
#include "nesting.h"
#include "operator_name.h"
#include "tree_text.h"
#include "type_rules.h"
#include "type_text.h"
#include "unparse.h"

namespace oz {
namespace {

// Reports as "E7,3 text" lines: the class's first letter, and the place if there is one. A text that came out in pieces
// of 250 characters, the further ones behind "...", is put together again.
std::string short_reports(const std::string& text) {
  std::istringstream lines(text);
  std::string out;
  size_t length = 0;
  for (std::string line; std::getline(lines, line);) {
    std::string start = out.empty() ? "" : "\n";
    unsigned row, column;
    int head = 0;
    if (std::sscanf(line.c_str(), "%u,%u: %n", &row, &column, &head) == 2 && head > 0) {
      start += line[static_cast<size_t>(head)];
      start += (row ? std::to_string(row) + ',' + std::to_string(column) : "") + ' ';
      line = line.substr(static_cast<size_t>(head) + std::strlen("Error       "));
    }
    out += length >= 250 ? line.substr(3) : start + line;
    length = line.size();
  }
  return out;
}

const char kNames[] =
    "i:int r:real z:complex b:bool s:string u:none i_s:int_s b_s:bool_s "
    "iv:int[3] rv:real[4] zv:complex[3] bv:bool[2] sv:string[2] rs:real_s[-1,3] "
    "im:int[2,3] rm:real[2,3] zm:complex[2,3] bm:bool[2,2] it:int[2,3,4] rt:real[2,3,4] zt:complex[2,3,4] "
    "ml:multi(real,int) "
    "P$`p:real P$`pv:real[2] C`f:real C`g:none";

struct Type : testing::Test {
  Type() {
    bigbuf_init();
    init_operator_name();
    Begintype();
    declare_types(kNames);
    Set_declaration_finder(nullptr);
  }
};

struct Row {
  const char* text;
  const char* type;     // null: typing ends in a fatal message
  const char* reports;  // as short_reports gives them
};

void expect_type(const std::string& text, const std::string& type, const std::string& expected) {
  Begintype();
  declare_types(kNames);
  tAsynt t = typed_tree(text);
  tAsynt typ = nullptr;
  const std::string reports = message_of([&] { typ = Find_type(&t); });
  EXPECT_EQ(type, type_text(typ)) << text;
  EXPECT_EQ(expected, short_reports(reports)) << text;
}

// good: "expression=type" words of what is typed without a report.
void expect_types(const std::string& good, const std::vector<Row>& rows) {
  std::istringstream words(good);
  for (std::string word; words >> word;) {
    const size_t equals = word.find('=');
    expect_type(word.substr(0, equals), word.substr(equals + 1), "");
  }
  for (const Row& row : rows) expect_type(row.text, row.type ? row.type : "null", row.reports);
}

#define NO_RULE(kind, text)                                                \
  "E Could not evaluate data type for node \"" kind "\", expression " text \
  ". This may happen if expression is invalid or if it cannot be used in this place."
#define WRONG_BASE                                                                              \
  "E You attempt to call an function which strongly require correct argument types.\n This is " \
  "illegal to do with your arguments."
#define NO_BOOL "F It is illegal to use a boolean value within a numerican expression."

TEST_F(Type, LeavesAndStatements) {
  expect_types(
      "17=int #17=int 2.5=real XPi=real XE=real XI=complex XTrue=bool \"a\"=string iv=int[3] ml=multi(real,int) "
      "rs=real_s[-1,3] u=none %Sin=predef GeneralConversion[i,int,real]=real XCompoundExpression[XBreak,i,r]=real "
      "XBreak=none XNull=none XVoidFunc=none XPrint[XBlank]=none XPut[XBlank,]=none IReduce[%Plus,iv,&]=int[3] "
      "XIf[b,i,r]=real XIf[b,b,b]=bool XIf[b,b,i]=int XWhich[b,1,b,2.5]=real XWhich[b,b]=bool",
      {
          {"XCompoundExpression[]", "none", NO_RULE("Expression0", "")},
          {"XBlank", "none", "E Blank (_) can be used in Part [[]] only"},
          {"XAlternatives[1,2]", "none", "E7,3 Alternatives (|) can be used in Part [[]] only"},
          {"XAll", "none", NO_RULE("XAll", "All")},
          {"XWhile[b,i]", "none", NO_RULE("XWhile", " XWhile[args...] ")},
          {"XGenCodeString[s]", "none", NO_RULE("XGenCodeString", "XGenCodeString[s]")},
          {"XStringReverse[s]", "none", NO_RULE("XStringReverse", "sXStringReverse")},
          {"XIf[i,1,2]", "int", "E Non-bool conditional in If."},
          {"XIf[b_s,1,2]", "int", "E Non-bool conditional in If."},
          {"XWhich[i,1,b_s,2]", "int",
           "E Boolean type expected as argument to Which in i\nE Boolean type expected as argument to Which in b_s"},
          {"XWhich[]", nullptr, "F Tried to type empty expression list."},
          {"XPlus[]", nullptr, "F7,3 Tried to type empty expression list."},
      });
  tAsynt file = mFilename("f");
  EXPECT_EQ(string_type_node, Find_type(&file));
  const std::string odd = message_of([] {
    tAsynt t = typed_tree("XWhich[b,1,b]");
    Find_type(&t);
  });
  EXPECT_NE(std::string::npos, odd.find("Internal error in line ")) << odd;
}

TEST_F(Type, Functions) {
  expect_types(
      "XAbs[z]=real XAbs[zv]=real[3] XAbs[i]=int "
      "XGenTypeInformation[bv]=bool[2] XTranspose[rm]=real[3,2] XSort[rv]=real[4] XMean[iv]=real "
      "XVariance[it]=real[3,4] XMedian[rv]=real XMean[rm]=real[3] XMean[zv]=complex XMean[zm]=complex[3] "
      "XTotal[rv]=real XTotal[rm]=real[3] ArcTan2[i,r]=real XMod[i,iv]=int[3] NaturalDivide[r,rv]=int[4] "
      "XQuotient[1,2]=int XComplex[i,r]=complex XExtract[rm,iv]=real OuterProduct[iv,rv]=real[3,4]",
      {
          {"XAbs[b]", nullptr, NO_BOOL},
          {"XTranspose[rv]", nullptr, "F Array of wrong dimension to Transpose."},
          {"XTranspose[r]", nullptr, "F Non-array argument to Transpose."},
          {"XSort[r]", "real", "E Non-array passed to Sort[]."},
          {"XStandardDeviation[sv]", "real",
           "E Invalid type passed to StandardDeviation[]. Must be array of Integer, Real or Complex"},
          {"XTotal[r]", "none", "E Non-array passed to Total[]."},
          {"XMod[i,b]", nullptr, "F Illegal use of bool."},
          {"XComplex[i_s,z]", "complex",
           "E Complex[] requires two Integer or Real arguments. First argument has a different type.\n"
           "E Complex[] requires two Integer or Real arguments. Second argument has a different type."},
          {"XExtract[rm,rv]", nullptr, "F Second argument to Extract must be vector of integers."},
          {"XExtract[r,iv]", nullptr, "F Non-array first argument to Extract (or the only argument to  Max or Min)."},
          {"OuterProduct[i,rv]", "real[1,1]",
           "E OuterProduct requres both arguments be one-dimensional arrays, OuterProduct[i,rv] "},
      });
}

TEST_F(Type, ElementwiseFunctions) {
  struct Family {
    const char *names, *of_complex, *of_ints;
  };
  const Family families[] = {
      {"XSin XArcSin XSinh XArcSinh XCos XArcCos XCosh XArcCosh XTan XArcTan XTanh XArcTanh XCot XArcCot XCoth "
       "XArcCoth XSec XSech XCsc XCsch XExp XLog XSqrt XFractionalPart XConjugate",
       "complex", "real[3]"},
      {"XSign XFloor XCeiling XRound XIntegerPart", "complex", "int[3]"},
      {"XN XRe XIm XArg", "real", "real[3]"},
  };
  for (const Family& family : families) {
    std::istringstream names(family.names);
    for (std::string name; names >> name;) {
      expect_type(name + "[z]", family.of_complex, "");
      expect_type(name + "[iv]", family.of_ints, "");
      expect_type(name + "[bv]", "null", NO_BOOL);
    }
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
      {
          {"XMinus[b]", nullptr, NO_BOOL},
          {"XNot[i]", "int", WRONG_BASE},
          {"XStringLength[i]", "int", WRONG_BASE},
          {"XPower[i,b]", nullptr, "F7,3 Illegal use of bool."},
          {"XPrepend[rm,r]", "real[2,3]", "E7,3 Ranks of Append/Prepend arguments are invalid."},
          {"XOr[b,i]", "int", WRONG_BASE},
          {"XLess[b,b]", nullptr, NO_BOOL},
          {"XLess[i,iv]", "none", NO_RULE("XLess", "i<iv")},
          {"XDot[rv]", "none", NO_RULE("XDot", "rv")},
          {"XDot[rm,rv,rv]", nullptr, "F7,3 Bad argument to XDot."},
          {"XStringJoin[i,i]", "string", WRONG_BASE},
          {"XStringDrop[s,1]", "none", NO_RULE("XStringDrop", "sXStringDrop1")},
          {"XInequality[i,XEqual,b]", nullptr, "F Illegal use of bool."},
          {"XInequality[i,XLess]", nullptr, "F bad ineq in type checker."},
          {"XMin[i_s,z]", "complex", "E Non-numeric value in Max or Min with 2 arguments."},
          {"XMax[i]", nullptr, "F Non-array first argument to Extract (or the only argument to  Max or Min)."},
          {"XMax[1,2,3]", nullptr, "F At least one argument must be passed to Min or Max "},
      });
}

#define SET_SHAPE(x, text, more)                                                           \
  "W7,3 In  XSetShape[ " x ", i ]  the call to SetShape sets the dimensions of " text more \
  ", or fill array with scalars using a Table[]. Ignore this message if you fixed it."

TEST_F(Type, ArrayFunctions) {
  expect_types(
      "XDimensions[rm]=int[2] XSetCols[rm,1]=real[2,3] XSetRows[rv]=real[4] XSetSubMatrix[rm]=real[2,3] "
      "XCols[im,1]=int[2,3] XRows[rm]=real[2,3] XSubMatrix[rm]=real[2,3] XSetSubVector[rv]=real[4] "
      "XSetCol[1,2,iv]=int[3] XSubVector[rv,1,2]=real[4] XSetRow[rm,1,iv]=int[3] "
      "XCol[rm,1]=real[2] XRow[rm,1]=real[3] XSetShape[rv,i]=real[4] XJoin[rv,rv]=real[4] XStringTake[i,3]=string "
      "XStringTake[s,XList[1,2]]=string XQuantile[iv,0.5]=real XQuantile[zm,rv]=complex[2,3] "
      "XQuantile[rm,0.5,rm]=real[3] XFlatten[rt]=real[0] XFlatten[rt,1]=real[0,0] XFlatten[rt,3]=real[0] "
      "XFlatten[rt,99999999999999999999]=real[0]",
      {
          {"XDimensions[3]", "int[0]", "W7,3 Non-array is passed as argument to Dimensions[]"},
          {"XDimensions[]", "none", NO_RULE("XDimensions", " XDimensions[  ] ")},
          {"XRows[]", "none", NO_RULE("XRows", "")},
          {"XSetCol[rm,1]", "none", NO_RULE("XSetCol", "rmXSetCol1")},
          {"XCol[rm]", "none", NO_RULE("XCol", "rm")},
          {"XCol[rv,1]", nullptr, "F7,3 Two-dimensional argument to Column operator expected."},
          {"XCol[rt,1]", nullptr, "F7,3 Non-array or wrong rank of array in Column operator."},
          {"XRow[rv,1]", nullptr, "F7,3 Two-dimensional argument to Row operator expected."},
          {"XRow[r,1]", nullptr, "F7,3 Non-array or wrong rank of array in Row  operator."},
          {"XSetShape[rm,i]", "real[2,3]",
           SET_SHAPE("rm", "array but has too few indexes to do that in advance. You have to either declare array ",
                     " with correct dimensions") " "},
          {"XSetShape[XMinus[rv],i]", "real[4]",
           SET_SHAPE(
               "-rv",
               "-rv  array but it is applied to a fragment of array and therefore makes no effect. You have to either ",
               "declare array with correct  dimensions")},
          {"XJoin[iv,rm]", "int[3]",
           "E  Join[] first argument type does not match type of rm\n"
           "E Join[]  argument type must be array of Integer or Real or Complex"},
          {"XJoin[bv,bv]", "bool[2]", "E Join[]  argument type must be array of Integer or Real or Complex"},
          {"XJoin[i,1]", "int",
           "E Join[] first argument type must be array, not scalar\n"
           "E Join[]  argument type must be array of Integer or Real or Complex"},
          {"XStringTake[i,XList[1,s]]", "string", WRONG_BASE "\n" WRONG_BASE},
          {"XQuantile[r,0.5]", "real", "E7,3 Invalid 1st argument passed to Quantile[]. Must be array. Got  Real ."},
          {"XQuantile[rv,0.5,rv]", "real",
           "E7,3 Invalid 3rd argument passed to Quantile[]. Must be exactly {{a,b},{c,d}}. Got  Array [4] of  Real ."},
          {"XQuantile[rv]", "none", NO_RULE("XQuantile", "rv")},
          {"XFlatten[rt,#1]", "real[2,3,4]",
           "W7,3 Not a integer constant passed as 2nd argument to Flatten[] (1), cannot derive correct type."},
          {"XFlatten[rt,1,2]", "real[2,3,4]", "W7,3 More than two arguments to Flatten[], cannot derive correct type."},
          {"XFlatten[i]", "real", "E7,3 Invalid 1st argument type passed to Flatten[]. It must be an array."},
          {"XFlatten[]", "none", NO_RULE("XFlatten", "")},
      });
}

#define TOO_LOW                                                                                              \
  "E7,3 The number of dimensions of A in A[B] is too low. Therefore B is  an impossible index in the index " \
  "expression list in A[B]. B is "

TEST_F(Type, Part) {
  expect_types(
      "XPart[rv,1]=real XPart[rt,i]=real[3,4] XPart[rt]=real[2,3,4] XPart[rm,XBlank,1]=real[3] "
      "XPart[rm,Blank[&],%All]=real[2,3] XPart[rm,%Blank,XList[i]]=real[2,3] "
      "XPart[rm,XAlternatives[XBlank,2]]=real[2,3]",
      {
          {"XPart[rm,%List[r],1]", "real[3]", "E7,3 Argument r to Part ([[{}]]) must be integer expression"},
          {"XPart[rm,XAlternatives[r,%Blank]]", "real[2,3]", WRONG_BASE},
          {"XPart[rm,r]", "real[3]", "E7,3 Argument r to Part ([[]]) must be integer expression"},
          {"XPart[rv,XList[1,2]]", "real", "E7,3 Argument  { 1, 2 }  to Part ([[]]) must be integer expression"},
          {"XPart[rv,1,2]", "real", TOO_LOW "2"},
          {"XPart[i,XBlank]", "int", TOO_LOW "_"},
          {"XPart[]", "none", NO_RULE("XPart", "")},
      });
}

#define SIDES(l, lt, r, rt)                                                            \
  "\nW7,3 ... left side is " l "\nW7,3 .... of type " lt "\nW7,3 ... right side is " r \
  "\n"                                                                                 \
  "W7,3 .... of type " rt

TEST_F(Type, Assignments) {
  expect_types(
      "XSet[r,i]=real XSetDelayed[z,r]=complex XSet[XPart[rv,XBlank],1]=real[4] XSet[%Part[rv,XBlank],1]=real[4] "
      "XSetDelayed[P$`p,1]=real",
      {
          {"XSet[i,r]", "int", "E7,3 Incompatible types in assignment :" SIDES("i", " Integer ", "r", " Real ")},
          {"XSet[rv,rm]", "real[4]",
           "E7,3 Incompatible types in assignment :" SIDES("rv", " Array [4] of  Real ", "rm",
                                                           " Array [2 ,3] of  Real ")},
          {"XSet[rv,1]", "real[4]",
           "W7,3 Such types in assignment are not supported in typed Algebratica, because assignment modifies variable "
           "type. Consider using \"var[[_]]=\" instead. :" SIDES("rv", " Array [4] of  Real ", "1", " Integer ")},
          {"XSet[i,u]", "int",
           "E7,3 Incompatible types in assignment :" SIDES("i", " Integer ", "u", " undefined type ")},
          {"XSet[P$`p,XBlank]", "real", "E7,3 Assignment to function input arguments is not permitted."},
      });
}

#define IMPORT_PLACE "E7,3 Import[] can be used only in statements V=Import[...], where V is a local variable "
#define NO_FILE "E7,3 A string expression that stores a file name is expected, but value of type "

TEST_F(Type, Files) {
  expect_types(
      "XSet[rv,XImport[\"a.b.CSV\"]]=real[4] XSet[rv,%Import[\"a.csv\"]]=real[4] XSet[zm,XImport[s]]=complex[2,3] "
      "XSet[iv,XImport[s,\"CSV\"]]=int[3] XSet[iv,XImport[s,\"List\"]]=int[3] XExport[\"a.CSV\",rm]=string "
      "XExport[s,rv]=string XExport[s,rv,\"list\"]=string",
      {
          {"XSet[rv,XImport[\"a.TXT\"]]", "real[4]",
           "E7,3 Argument to Import[file] has suffix \" .txt \", this format is not supported in this version"},
          {"XSetDelayed[rv,XImport[\"a\"]]", "real[4]",
           "E7,3 Argument to Import[file] is \" a \", has no suffix. You have to specify a format for Import"},
          {"XSet[XPart[rv,1],XImport[\"a.csv\"]]", "real", IMPORT_PLACE "."},
          {"XSet[rt,XImport[\"a.csv\"]]", "real[2,3,4]",
           IMPORT_PLACE "of base type Real, Int, Complex , one or two dimensions"},
          {"XSet[bv,XImport[s]]", "bool[2]", IMPORT_PLACE "of base type Real, Int, Complex , one or two dimensions"},
          {"XSet[iv,XImport[i]]", "int[3]", NO_FILE " Integer  found"},
          {"XSet[iv,XImport[\"a\",\"Xls\"]]", "int[3]",
           "E7,3 The format xls  in Import[] is not supported in this version"},
          {"XSet[iv,XImport[s,s]]", "int[3]", NO_FILE " String  found"},
          {"XSet[iv,XImport[\"a\",s]]", "int[3]",
           NO_RULE("XImport", "\"a\"XImports") "\nE7,3 Incompatible types in assignment :" SIDES(
               "iv", " Array [3] of  Integer ", "\"a\"XImports", " undefined type ")},
          {"XImport[\"a.csv\"]", "none", NO_RULE("XImport", "\"a.csv\"")},
          {"XExport[\"a\",rv]", "string",
           "E7,3 First argument to Export[file,arg] is \" a \", has no suffix. You have to specify a format for "
           "Export"},
          {"XExport[\"a.Xls\",rt]", "string",
           "E7,3 First argument to Export[file,arg] has suffix \" .xls \", this format is not supported in this "
           "version\n"
           "E7,3 Second argument to Export[\"*.csv\",arg] must be 1D or 2D array"},
          {"XExport[s,1]", "string", "E7,3 Second argument to Export[file,arg] must be 1D or 2D array"},
          {"XExport[i,rv]", "none", NO_RULE("XExport", "iXExportrv")},
          {"XExport[s,rt,\"Csv\"]", "string",
           "E7,3 Second argument to Export[file,arg,\"csv\"] must be 1D or 2D array"},
          {"XExport[s,rm,\"list\"]", "string", "E7,3 Second argument to Export[file,arg,\"list\"] must be 1D  array"},
          {"XExport[s,rv,\"XLS\"]", "string", "E7,3 The format xls  in Export[] is not supported in this version"},
          {"XExport[s,rt,s]", "string", "E7,3 Second argument to Export[file,arg,format] must be 1D or 2D array"},
          {"XExport[s,rv,i]", "none", NO_RULE("XExport", "sXExportrvXExporti")},
          {"XExport[s]", "none", NO_RULE("XExport", "s")},
      });
}

#define LOCAL_BRACKETS \
  "E4,2 One cannot use single brackets after local variable name (declared at the specified place) of "

TEST_F(Type, Applications) {
  expect_types("C`f[b]=real C`g[1]=none C`f[1][2][3][4]=real %Derivative[1][r]=predef",
               {
                   {"r[1]", "real", LOCAL_BRACKETS "basic type : r"},
                   {"rv[1]", "real[4]", LOCAL_BRACKETS "array type : rv"},
                   {"P$`pv[1]", "real[2]", "E4,2 Single brackets can not be used after local argument name : P$`pv"},
                   {"rv[1][2]", "real[4]", LOCAL_BRACKETS "array type : rv"},
               });
  const std::string deep = message_of([] {
    tAsynt t = typed_tree("C`f[1][2][3][4][5]");
    Find_type(&t);
  });
  EXPECT_EQ(0u, deep.find("Too many symbolic indices:\nC`f[1][2][3][4][5]\n")) << deep;
  EXPECT_NE(std::string::npos, deep.find("Internal error in line ")) << deep;
}

// A predefined head is typed by the node that it is to become, and the tree stays as it is.
TEST_F(Type, PredefinedHeads) {
  expect_types(
      "%Pi=real %True=bool %Plus[%Sin[i],%Times[2,%Pi]]=real %If[%Less[i,2],%List[1,%Abs[z]],rv]=real[2] "
      "%Inequality[i,%Less,r,%LessEqual,2]=bool %oz$Parallel[%Set[r,i]]=real "
      "%IReduce[%Plus,%Sin[i],%List[i,1,2]]=real XPlus[%Part[rm,1],%N[i,20]]=real[3]",
      {
          {"%Sin[b]", nullptr, NO_BOOL},
          {"%Sin[1,2]", nullptr, "F 2 arguments to unary function Sin[1, 2]."},
      });
  tAsynt t = typed_tree("%Sort[XPlus[i,%Abs[i]]]");
  const auto reports_of = [&] { return short_reports(message_of([&] { Find_type(&t); })); };
  EXPECT_EQ("E Non-array passed to Sort[].", reports_of());
  EXPECT_EQ("", reports_of()) << "reported once";
  EXPECT_EQ("%Sort[XPlus[i:Int,%Abs[i:Int]]]", tree_text(t));
}

// ---- declarations

tAsynt declarations_of(tAsynt t, bool* was_funcall) {
  const std::string name = unparse_string(t);
  *was_funcall = name.rfind("C`g", 0) == 0;
  static std::map<std::string, tAsynt> found;
  if (*was_funcall) return found["g"] = mXSetDelayed(nullptr, typed_tree("C`f[1]"), typed_tree("1"));
  return name == "n[1]" || name == "n[1][2]" || name == "u" ? typed_tree("iv") : nullptr;
}

TEST_F(Type, UntypedNamesAskForTheirDeclaration) {
  declare_types("u:none v:none n:none iv:int[3] C`f:real C`g:none");
  Set_declaration_finder(declarations_of);
  struct Case {
    const char *text, *type, *after;
  };
  const Case cases[] = {
      {"u", "int[3]", "u"},
      {"v", "none", "v"},
      {"C`g[1]", "real", "C`g:Real[1]"},
      {"n[1]", "int[3]", "<n[1]"},
      {"n[1][2]", "int[3]", "<(n[1])[2]"},
      {"XSin[n[1]]", "real[3]", "XSin[<n[1]"},
      {"%Sin[n[1]]", "real[3]", "%Sin[n[1]]"},
  };
  for (const Case& c : cases) {
    tAsynt t = typed_tree(c.text);
    EXPECT_EQ(c.type, type_text(Find_type(&t))) << c.text;
    EXPECT_EQ(0u, tree_text(t).find(c.after)) << tree_text(t);
  }
  EXPECT_EQ("int[3]", type_text(Type_of(typed_tree("u")))) << "the symbol has the type from now on";
  EXPECT_EQ("real", type_text(Type_of(typed_tree("C`g"))));
  EXPECT_EQ("none", type_text(Type_of(typed_tree("v"))));
}

// ---- promotion

TEST_F(Type, PromotionOfTwoTypes) {
  struct Case {
    const char *t1, *t2;
    char bool_allowed;
    const char *type, *reports;
  };
  const char illegal[] = "F7,3 Illegal use of bool.";
  const auto no_type = [](const char* name) {
    return std::string(
               "F7,3 NoType in type derivation; Possibly a variable is not defined or a formal parameter is "
               "missing a prefix; Other type is ") +
           name + ".";
  };
  const std::string first = no_type("NoType");
  const std::string second = no_type("RealType");
  const auto failed = [](const char* names) {
    return std::string(
               "F7,3 Promote_types failed: one cannot combine these two types in a single expression, they can "
               "never be compatible: ") +
           names;
  };
  const std::string int_bool = failed("IntType, BoolType");
  const std::string bool_real = failed("BoolType, RealType");
  const std::string string_int = failed("StringType, IntType");
  const std::string array_multi = failed("ArrayType, MultiType");
  const Case cases[] = {
      {"bool", "bool", 0, nullptr, illegal},
      {"bool", "bool", 1, "bool", ""},
      {"bool", "int", 1, "int", ""},
      {"int", "bool", 0, nullptr, illegal},
      {"int", "bool", 1, nullptr, int_bool.c_str()},
      {"bool", "real", 1, nullptr, bool_real.c_str()},
      {"bool[2]", "int", 0, nullptr, illegal},
      {"int", "bool[2]", 0, nullptr, illegal},
      {"bool[2]", "bool", 1, "bool[2]", ""},
      {"bool", "bool[2]", 1, "bool[2]", ""},
      {"real[2]", "real[3]", 0, "real[2]", ""},
      {"real[2]", "real[3,4]", 0, "real[2]",
       "E7,3 An operation cannot accept two arrays with different number of dimensions; create a loop instead :\n"
       "E7,3 ... the first type is  Array [2] of  Real  with 1 dimensions\n"
       "E7,3 ... the second type is  Array [3 ,4] of  Real  with 2 dimensions"},
      {"int[2,2]", "real[3]", 0, "int[2,2]",
       "E7,3 An operation cannot accept two arrays with different base types; make an explicit operation to change the "
       "type :\n"
       "E7,3 ... the first type is  Integer  with 2 dimensions\n"
       "E7,3 ... the second type is  Real  with 1 dimensions"},
      {"int[2]", "complex", 0, "complex[2]", ""},
      {"int", "real_s[-1,2]", 0, "real_s[-1,2]", ""},
      {"real", "int_s[-1,2]", 0, "real[-1,2]", ""},
      {"string", "string", 0, "string", ""},
      {"string", "int", 0, nullptr, string_int.c_str()},
      {"int", "int", 0, "int", ""},
      {"int", "real_s", 0, "real", ""},
      {"int", "complex", 0, "complex", ""},
      {"real", "int", 0, "real", ""},
      {"real", "complex", 0, "complex", ""},
      {"complex", "int", 0, "complex", ""},
      {"complex", "complex", 0, "complex", ""},
      {"none", "real", 0, nullptr, first.c_str()},
      {"real", "none", 0, nullptr, second.c_str()},
      {"real[2]", "multi(real)", 0, nullptr, array_multi.c_str()},
  };
  for (const Case& c : cases) {
    const tAsynt t1 = type_of_text(c.t1);
    const tAsynt t2 = type_of_text(c.t2);
    tAsynt typ = nullptr;
    const auto promote = [&] { typ = Promote_types(tPosition{7, 3}, t1, t2, c.bool_allowed); };
    const std::string reports = message_of(promote);
    EXPECT_EQ(c.type ? c.type : "null", type_text(typ)) << c.t1 << ' ' << c.t2;
    EXPECT_EQ(c.reports, short_reports(reports)) << c.t1 << ' ' << c.t2;
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
      const tAsynt t1 = type_of_text(types[place]);
      const tAsynt t2 = type_of_text(value);
      row += Narrower(t1, t2) ? 'n' : NarrowerInit(t1, t2) ? 'i' : '.';
    }
    EXPECT_EQ(expected[place], row) << types[place];
  }
}

TEST_F(Type, QuestionsAboutTypes) {
  const auto typ = [](const char* text) { return type_of_text(text); };
  EXPECT_TRUE(Check_equal_base(typ("int"), typ("int_s")));
  EXPECT_TRUE(Check_equal_base(typ("real[2]"), typ("real[3]")));
  EXPECT_FALSE(Check_equal_base(typ("real[2]"), typ("real[3,2]")));
  EXPECT_FALSE(Check_equal_base(typ("real[2]"), typ("real")));
  EXPECT_FALSE(Check_equal_base(typ("none"), typ("none")));
  for (const char* member : {"int_s", "real_s", "bool_s", "real_s[-1]"}) EXPECT_TRUE(Is_setmember(typ(member)));
  for (const char* other : {"int", "complex_s", "string_s", "real[2]"}) EXPECT_FALSE(Is_setmember(typ(other)));
  EXPECT_EQ("real", type_text(Find_base(typ("real[2]"))));
  EXPECT_EQ("none", type_text(Find_base(typ("multi(real)"))));
  EXPECT_EQ("real[2,3]", type_text(merge_arrays(real_type_node, typ("int[3]")->yyKind ? One_dimension(3) : nullptr,
                                                ArrayType_Dimensions(typ("real[2,3]")))));
  const tAsynt four = mExpression1(typed_tree("4"), mExpression0());
  const tAsynt two_three = mExpression1(typed_tree("2"), mExpression1(typed_tree("3"), mExpression0()));
  EXPECT_EQ("E Incompatible array sizes : 3 and 4",
            short_reports(message_of([&] { merge_arrays(real_type_node, two_three, four); })));
  EXPECT_EQ("real[3]", type_text(Cross_type(typ("int[3]"), typ("real[3]"))));
  EXPECT_EQ("Error: module type, routine Cross_type failed",
            short_reports(message_of([&] { Cross_type(typ("int[3]"), typ("real[4]")); })));
}

// The full-form reader's dimension lists are of another kind; both kinds go together in what is made of them.
TEST_F(Type, DimensionsOfBothListKinds) {
  const tAsynt dims = mIntConst1(mIntConst(5), mIntConst1(mIntConst(6), mIntConst0()));
  SymInfo_Type(Symbol_SymInfo(typed_tree("u"))) = mArrayType(real_type_node, dims);
  const std::pair<const char*, const char*> cases[] = {{"XList[u,u]", "real[2,5,6]"},
                                                       {"XDot[rm,u]", "real[2,6]"},
                                                       {"XTranspose[u]", "real[6,5]"},
                                                       {"XTotal[u]", "real[6]"}};
  for (const auto& [text, expected] : cases) {
    tAsynt t = typed_tree(text);
    const tAsynt typ = Find_type(&t);
    EXPECT_EQ(expected, type_text(typ)) << text;
    EXPECT_TRUE(CheckAsynt(typ)) << text;
  }
}

// ---- conversions

TEST_F(Type, ConversionNodes) {
  struct Case {
    const char *text, *type, *after;
  };
  const Case cases[] = {
      {"XPlus[i,r]", "real", "XPlus[GeneralConversion[i:Int,Int,Real],r:Real]"},
      // From the right: real and int are real, complex and that complex; what was converted goes on to the last type.
      {"XPlus[z,i,r]", "complex",
       "XPlus[z:Complex,GeneralConversion[i:Int,Int,Complex],GeneralConversion[r:Real,Real,Complex]]"},
      {"XPlus[r,i,i]", "real", "XPlus[r:Real,GeneralConversion[i:Int,Int,Real],GeneralConversion[i:Int,Int,Real]]"},
      {"XPlus[i,i,i]", "int", "XPlus[i:Int,i:Int,i:Int]"},
      // A conversion that is there gets the common type, but for the first operand.
      {"XPlus[r,GeneralConversion[b,bool,int],r]", "real",
       "XPlus[r:Real,GeneralConversion[GeneralConversion[b:Bool,Bool,Int],Int,Real],r:Real]"},
      {"XPlus[i,i,GeneralConversion[b,bool,int]]", "int", "XPlus[i:Int,i:Int,GeneralConversion[b:Bool,Bool,Int]]"},
      {"XSubtract[i,z]", "complex", "XSubtract[GeneralConversion[i:Int,Int,Complex],z:Complex]"},
      // The tests behind the first are converted along with the values.
      {"XWhich[b,r,b,i]", "real",
       "XWhich[b:Bool,r:Real,GeneralConversion[b:Bool,Int,Real],GeneralConversion[i:Int,Int,Real]]"},
      {"XInequality[i,XLess,r]", "bool", "XInequality[GeneralConversion[i:Int,Int,Real],XLess[null],r:Real]"},
      {"XSin[i]", "real", "XSin[i:Int]"},
  };
  for (const Case& c : cases) {
    tAsynt t = typed_tree(c.text);
    EXPECT_EQ(c.type, type_text(Find_type_convert(t))) << c.text;
    EXPECT_EQ(c.after, tree_text(t)) << c.text;
    const std::string once = tree_text(t);
    message_of([&] { Find_type(&t); });  // a converted test of a Which is no boolean any more
    EXPECT_EQ(once, tree_text(t)) << "conversions are made on demand only";
  }
  tAsynt ineq = typed_tree("XInequality[i,XLess,GeneralConversion[i,int,int]]");
  insert_conversion_nodes = 1;
  Change_ineq_type(XInequality_Expressions(ineq), int_type_node, real_type_node);
  insert_conversion_nodes = 0;
  EXPECT_EQ("XInequality[GeneralConversion[i:Int,Int,Real],XLess[null],GeneralConversion[i:Int,Int,Real]]",
            tree_text(ineq));
}

// An array whose size names the array itself, twice over.
tAsynt type_with_own_size(const char* name) {
  declare_types(std::string(name) + ":none");
  const tAsynt symbol = typed_tree(name);
  return SymInfo_Type(Symbol_SymInfo(symbol)) = mArrayType(real_type_node, mExpression1(symbol, mExpression0()));
}

TEST_F(Type, EqualityEndsInACircle) {
  EXPECT_TRUE(Equal_types(type_with_own_size("x"), type_with_own_size("x")));
  EXPECT_FALSE(Equal_types(type_with_own_size("x"), type_with_own_size("y")));
  EXPECT_FALSE(Equal_types(mRealType(nullptr), mRealType(make_index(linked_list, 1)))) << "attributes count here";
  EXPECT_FALSE(Equal_types(type_of_text("real[2]"), type_of_text("real[3]")));
}

// ---- side effects, memory, size

TEST_F(Type, EffectsOnTheTree) {
  tAsynt t = typed_tree("XAbs[rv]");
  Find_type(&t);
  EXPECT_EQ("real[4]", type_text(XAbs_Type(t)));
  tAsynt quantile = typed_tree("XQuantile[iv,0.5]");
  Find_type(&quantile);
  EXPECT_EQ("real[3]", type_text(Type_of(typed_tree("iv")))) << "an int array is a real one from now on";
  tAsynt none = typed_tree("XBreak");
  EXPECT_NE(Find_type(&none), Find_type(&none)) << "each NoType is a node of its own";
}

TEST_F(Type, MemoryKeepsTypesUntilTold) {
  tAsynt t = typed_tree("XSin[XPlus[i,r]]");
  tAsynt bad = typed_tree("XSort[r]");
  const auto now = [](tAsynt* e) { return type_text(Find_type(e)); };
  Begin_type_memory();
  EXPECT_EQ("real", now(&t));
  Variadic_Expressions(CUnary_Arg(t)) = mExpression1(typed_tree("zv"), mExpression0());
  EXPECT_EQ("real", now(&t)) << "remembered";
  Forget_types();
  EXPECT_EQ("complex[3]", now(&t));
  for (int i = 0; i < 2; i++)
    EXPECT_EQ("E Non-array passed to Sort[].", short_reports(message_of([&] { Find_type(&bad); })));
  End_type_memory();
  Variadic_Expressions(CUnary_Arg(t)) = mExpression1(typed_tree("i"), mExpression0());
  EXPECT_EQ("real", now(&t)) << "nothing is remembered outside";
}

// Deep nesting must fit the stack, long lists must not use it, and asking at every level must not cost the square.
TEST_F(Type, DeepAndLong) {
  const tAsynt operands[] = {typed_tree("i"), typed_tree("r")};
  tAsynt deep = operands[0];
  std::vector<tAsynt> levels;
  for (int k = 0; k < kMaxNesting; k++) {
    deep = mXPlus(nullptr, mExpression1(operands[1], mExpression1(deep, mExpression0())));
    levels.push_back(deep);
  }
  Begin_type_memory();
  for (size_t k = levels.size(); k-- > 0;) ASSERT_EQ(real_type_node, Find_type(&levels[k]));
  End_type_memory();
  tAsynt elements = mExpression0();
  for (int k = 0; k < 300000; k++) elements = mExpression1(operands[k % 2], elements);
  tAsynt list = mXList(nullptr, elements);
  EXPECT_EQ("real[300000]", type_text(Find_type_convert(list)));
}

}  // namespace
}  // namespace oz
