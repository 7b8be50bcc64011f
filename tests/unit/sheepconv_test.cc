// The rewrites ahead of Fortran output: tables of trees with what becomes of them, each derived by hand.

#include "sheepconv.h"

#include <gtest/gtest.h>

#include <vector>

#include "code_text.h"
#include "cse.h"
#include "fatal_text.h"
#include "nesting.h"
#include "operator_name.h"
#include "oz.h"
#include "type.h"
#include "type_text.h"
#include "unparse.h"

namespace oz {
namespace {

struct Sheepconv : testing::Test {
  Sheepconv() {
    bigbuf_init();
    init_operator_name();
    begin();
  }
  // Sizes 0 are written as in a declaration without sizes: 0 or _.
  static void begin() {
    Begintype();
    declare_types(
        "a:int n:int i:int j:int x:real y:real c:bool f:real g:real v:real[3] w:real[2,3] "
        "u:real[0,0] p1:real[0] p4:real[0,1,2,3] p5:real[0,0,0,0,0]");
    for (const char* name : {"u", "p1", "p4", "p5"})
      for (tAsynt l = ArrayType_Dimensions(SymInfo_Type(info(name))); Asynt_Kind(l) == kExpression1;
           l = Expression1_Expressions(l))
        if (IntConst_Val(Expression1_Expression(l)) == 0)
          Expression1_Expression(l) = name[1] == '1' ? mBlank(mEmpty()) : mExactIntConst("0");
    temp_no = 1;
  }
  static tAsynt info(const char* name) { return Symbol_SymInfo(typed_tree(name)); }
};

struct Row {
  std::string text;
  std::string expected;  // the tree behind the rewrite, or a message
};

template <typename Rewrite>
void expect_rewrites(const std::vector<Row>& rows, Rewrite rewrite) {
  for (const Row& row : rows) {
    Sheepconv::begin();
    tAsynt t = typed_tree(row.text);
    const std::string message = message_of([&] { rewrite(&t); });
    if (message.empty())
      EXPECT_EQ(row.expected, code_text(t)) << row.text;
    else
      EXPECT_NE(std::string::npos, message.find(row.expected)) << row.text << ": " << message;
  }
}

void rewrite_shapes(tAsynt* t) { Rewrite_shapeconv(t, t); }

// A scalar to be read as an array; and the statement that makes it one.
std::string spread(const std::string& e) { return "GeneralConversion[" + e + ",real,real[3]]"; }
std::string shaped(const std::string& temp, const std::string& e) {
  return temp + "=ShapeConversion[" + e + ",{},{#3}]";
}
const std::string kX = shaped("T1", "x");
const std::string kY = shaped("T1", "y");
const std::string kXY = "(" + shaped("T2", "y") + ";(" + shaped("T1", "x") + ";";

TEST_F(Sheepconv, Conversions) {
  expect_rewrites(
      {
          {"XSet[v," + spread("x") + "]", "(" + kX + ";v=" + spread("T1") + ")"},
          {spread("1.5"), "(" + shaped("T1", "1.5") + ";" + spread("T1") + ")"},
          {spread("XSin[x]"), "(T1=XSin[x];" + shaped("T2", "T1") + ";" + spread("T2") + ")"},
          {"GeneralConversion[v,real[3],real[3]]",
           "(T1=ShapeConversion[v,{#3},{#3}];GeneralConversion[T1,real[3],real[3]])"},
          {"GeneralConversion[v,real[3],real]", "GeneralConversion[v,real[3],real]"},
          {"GeneralConversion[x,none,real[3]]", "Error: module sheepconv, routine Dim failed"},
      },
      rewrite_shapes);
  tAsynt t = typed_tree(spread("XSin[x]"));
  rewrite_shapes(&t);
  EXPECT_TRUE(CheckAsynt(t));
}

TEST_F(Sheepconv, WhereStatementsGo) {
  const std::string x = spread("x");
  const std::string y = spread("y");
  const std::string t = spread("T1");
  const std::string both = spread("T1") + "," + spread("T2");
  expect_rewrites(
      {
          // Branches of a conditional that is a value: in front of the assignment; else each has its own place.
          {"XSet[v,XIf[c," + x + "," + y + "]]", kXY + "v=XIf[c," + both + "]))"},
          {"XIf[c," + x + ",v]", "XIf[c,(" + kX + ";" + t + "),v]"},
          {"XIf[c,v," + y + "]", "XIf[c,v,(" + kY + ";" + t + ")]"},
          {"XIf[" + x + ",1,2]", "(" + kX + ";XIf[" + t + ",1,2])"},
          {"Do[XSet[v," + x + "],Iterator[i,1,n]]", "Do[(" + kX + ";v=" + t + "),Iterator[i,1,n]]"},
          {"XModule[{},{" + x + "}," + y + "]", "XModule[{},{" + x + "},(" + kY + ";" + t + ")]"},
          {"XBlock[{},{" + x + "}," + y + "]", "XBlock[{},{" + x + "},(" + kY + ";" + t + ")]"},
          {"XSin[" + x + "]", "(" + kX + ";XSin[" + t + "])"},
          {"NonAlgAuxiliary[" + x + "]", "(" + kX + ";NonAlgAuxiliary[" + t + "])"},
          {"XInequality[" + x + ",XLess[],y]", "(" + kX + ";XInequality[" + t + ",XLess[],y])"},
          {"XMinus[" + x + "]", "(" + kX + ";XMinus[" + t + "])"},
          {"XPlus[" + x + "," + y + "]", kXY + "XPlus[" + both + "]))"},
          {"XSubtract[" + x + "," + y + "]", kXY + "XSubtract[" + both + "]))"},
          {"OuterProduct[" + x + "," + y + "]", kXY + "OuterProduct[" + both + "]))"},
          {"f[" + x + "," + y + "]", kXY + "f[" + both + "]))"},
          {"f[" + y + "][" + x + "]", kXY + "f[" + spread("T2") + "][" + t + "]))"},
          // Behind an assignment, in front of that assignment.
          {"XList[XSet[x,y],XSin[" + x + "]]", "XList[(" + kX + ";x=y),XSin[" + t + "]]"},
          {"XCompoundExpression[XSet[x,y],XSin[" + x + "]]", "((" + kX + ";x=y);XSin[" + t + "])"},
          {"XCompoundExpression[XSin[x],XSin[" + x + "]]", "(" + kX + ";(XSin[x];XSin[" + t + "]))"},
          {"XList[x,#1,1,1.5,\"s\",XPi,XI,XE,XTrue,XFalse,XList[]]",
           "XList[x,#1,1,1.5,\"s\",XPi,XI,XE,XTrue,XFalse,XList[]]"},
      },
      rewrite_shapes);
  std::vector<Row> refused;
  for (const char* text : {"XWhich[c,x]", "XWhile[c,x]", "XFor[x,c,x,x]", "ForAll[x,{},x]", "&", "XNull", "XBreak",
                           "BasicConversion[x,real,real]"})
    refused.push_back(
        {std::string("XSin[") + text + "]",
         "F90 unparser: Unknown node type in sheepconv: " + std::string(Asynt_NodeName(Asynt_Kind(typed_tree(text))))});
  expect_rewrites(refused, rewrite_shapes);
}

const std::string kRange = "{Iterator[i,1,n]},&]";
const std::string kLater = "Iterator[i,XPlus[1,1],n]]";

TEST_F(Sheepconv, Reductions) {
  const std::string sum = "(i=1;T1=y);Do[T1=XPlus[T1,y]," + kLater;
  const std::string inner = "Do[T1=XPlus[T1,y],Iterator[j,XPlus[2,1],a]]";
  const auto product = [](const std::string& t) {
    return "(j=1;" + t + "=y);Do[" + t + "=XTimes[" + t + ",y],Iterator[j,XPlus[1,1],2]]";
  };
  std::string ranges;
  for (int k = 0; k < 501; k++) ranges += "Iterator[i,1,n],";
  std::string deep = "y";
  for (int k = 0; k < 11; k++) deep = "IReduce[%Plus," + deep + "," + kRange;
  expect_rewrites(
      {
          {"XSet[x,IReduce[f,y," + kRange + "]", "((i=1;T1=y);Do[T1=f[T1,y]," + kLater + ";x=T1)"},
          {"XSet[x,XSin[IReduce[%Plus,y," + kRange + "]]", "(" + sum + ";x=XSin[T1])"},
          {"XSet[x,IReduce[%Plus,y,{Iterator[i,1,n],Iterator[j,2,a]},&]]",
           "((i=1;(j=2;T1=y);" + inner + ");Do[" + inner + ",Iterator[i,1,n]];x=T1)"},
          // A reduction that is a statement: the temporary takes its place behind the loops.
          {"IReduce[%Plus,y," + kRange, "(" + sum + ";T1)"},
          {"XCompoundExpression[XSet[n,a],IReduce[%Plus,y," + kRange + "]", "(n=a;(" + sum + ";T1))"},
          {"XModule[{},{},IReduce[%Plus,y," + kRange + "]", "XModule[{},{},(" + sum + ";T1)]"},
          {"XSet[x,IReduce[%Plus,IReduce[%Times,y,{Iterator[j,1,2]},&]," + kRange + "]",
           "((i=1;(" + product("T2") + ";T1=T2));Do[(" + product("T3") + ";T1=XPlus[T1,T3])," + kLater + ";x=T1)"},
          {"IReduce[%Plus,y,{},&]", "Error: module sheepconv, routine Make_ireduce_init_expr failed"},
          {"IReduce[%Plus,y,{" + ranges + "},&]", "F90 unparser: A reduction has more than 500 ranges."},
          {deep, "F90 unparser: Reductions are nested more than 10 deep."},
      },
      rewrite_shapes);
}

// The body stands at two places; later rewrites in place must meet both. Symbols keep their information.
TEST_F(Sheepconv, BodyOfReductionIsCopied) {
  tAsynt t = typed_tree("IReduce[%Plus,XSin[x]," + kRange);
  rewrite_shapes(&t);
  const tAsynt statements = Variadic_Expressions(t);
  const tAsynt start = Expression1_Expressions(Variadic_Expressions(Expression1_Expression(statements)));
  const tAsynt loop = Do_Expr(Expression1_Expression(Expression1_Expressions(statements)));
  const tAsynt first = Binary_RHS(Expression1_Expression(start));
  const tAsynt rest = Expression1_Expression(Expression1_Expressions(Variadic_Expressions(Binary_RHS(loop))));
  EXPECT_EQ(code_text(first), code_text(rest));
  EXPECT_NE(first, rest);
  EXPECT_NE(CUnary_Arg(first), CUnary_Arg(rest));
  EXPECT_EQ(Symbol_SymInfo(CUnary_Arg(first)), Symbol_SymInfo(CUnary_Arg(rest)));
}

// ---- sizes of arrays

void allocate_u(tAsynt* t) { Explicit_allocation(Sheepconv::info("u"), t); }

const std::string kShape = "XSetShape[u,#2,#3];u=w";

TEST_F(Sheepconv, ShapesOfTheFirstAssignment) {
  const auto size = [](const std::string& array, int k) {
    return "XPart[XDimensions[" + array + "],#" + std::to_string(k) + "]";
  };
  expect_rewrites(
      {
          {"XSet[u,w]", "(" + kShape + ")"},
          {"XSet[u,p1]", "(XSetShape[u," + size("p1", 1) + "];u=p1)"},
          {"XSet[u,p4]", "(XSetShape[u," + size("p4", 1) + "," + size("p4", 2) + "," + size("p4", 3) + "," +
                             size("p4", 4) + "];u=p4)"},
          {"XSet[u,p5]", "u=p5"},
          {"XSet[u,x]", "u=x"},
          {"XSet[u,XList[XList[1,2,3],XList[4]]]", "(XSetShape[u,#2,#3];u=XList[XList[1,2,3],XList[4]])"},
          {"XSet[u,XList[]]", "(XSetShape[u,#0];u=XList[])"},
          {"XSet[u,XList[XList[],x]]", "(XSetShape[u,#2,#0];u=XList[XList[],x])"},
          {"XSet[u,XList[XList[XList[XList[x]]]]]", "(XSetShape[u,#1,#1,#1,#1];u=XList[XList[XList[XList[x]]]])"},
          {"XSet[u,XList[XList[XList[XList[XList[]]]]]]",
           "F90 unparser: List constant with rank > 4 is not permitted."},
          {"XSet[u,f[w]]", "F90 unparser: Cannot unparse the assignment 'u=f[w]'. Array has unknown dimensions."},
      },
      allocate_u);
  // From results of a function, only rank 1 is measured at run time.
  const auto from_result = [](const char* typ) {
    tAsynt set = mXSet(mkNonConvPos(NoPosition), typed_tree("u"),
                       mSymbol(mOutParam(SymInfo_Type(info(typ)), tPosition{9, 8}, 1)));
    allocate_u(&set);
    return set;
  };
  EXPECT_EQ("(XSetShape[u,#2,#3];u=O1)", code_text(from_result("w")));
  EXPECT_EQ("u=O1", code_text(from_result("u")));
  const tAsynt measured = from_result("p1");
  EXPECT_EQ("(XSetShape[u," + size("O1", 1) + "];u=O1)", code_text(measured));
  EXPECT_EQ(9u, GetPos(Expression1_Expression(Variadic_Expressions(measured))).Line) << "where the result is declared";
}

TEST_F(Sheepconv, WalkToTheFirstAssignment) {
  const std::string u = "XSet[u,w]";
  const std::string found = "(" + kShape + ")";
  expect_rewrites(
      {
          {"XFor[" + u + "," + u + "," + u + "," + u + "]", "XFor[u=w,u=w," + found + ",u=w]"},
          {"XFor[x,c,1," + u + "]", "XFor[x,c,1," + found + "]"},
          {"XWhile[" + u + "," + u + "]", "XWhile[u=w," + found + "]"},
          {"XIf[" + u + "," + u + "," + u + "]", "XIf[u=w," + found + ",u=w]"},
          {"XIf[c,x," + u + "]", "XIf[c,x," + found + "]"},
          {"XWhich[c,x,c," + u + "]", "XWhich[c,x,c," + found + "]"},
          {"XWhich[c,x," + u + "]", "XWhich[c,x,u=w]"},
          {"Do[" + u + ",Iterator[i,1,n]]", "Do[" + found + ",Iterator[i,1,n]]"},
          {"XModule[{},{}," + u + "]", "XModule[{},{}," + found + "]"},
          {"XBlock[{},{}," + u + "]", "XBlock[{},{}," + found + "]"},
          {"XCompoundExpression[XSet[x,y]," + u + "," + u + "]", "(x=y;" + found + ";u=w)"},
          {"NonAlgAuxiliary[" + u + "]", "(XSetShape[u,#2,#3];NonAlgAuxiliary[u=w])"},
          {"XSin[" + u + "]", "XSin[u=w]"},
          {"XSet[x,XSin[" + u + "]]", "x=XSin[u=w]"},
          // In a = b = c the right assignment comes first; in {a, b} = {c, d} each pair counts.
          {"XSet[u,XSet[p1,w]]", "(XSetShape[u,XPart[XDimensions[p1],#1]];u=p1=w)"},
          {"XSet[p1," + u + "]", "(XSetShape[u,#2,#3];p1=u=w)"},
          {"XSet[XList[x,u],XList[y,w]]", "(XSetShape[u,#2,#3];XList[x,u]=XList[y,w])"},
          {"XSet[XList[x,u],XList[y]]", "XList[x,u]=XList[y]"},
      },
      allocate_u);
}

TEST_F(Sheepconv, StatementsInThePlaceOfValues) {
  const auto message = [](const std::string& name) {
    return "F90 unparser: '" + name + "' cannot be used as an expression in Fortran90.";
  };
  expect_rewrites(
      {
          {"XSin[XFor[x,c,x,x]]", message("For")},
          {"XPlus[x,XWhile[c,x]]", message("While")},
          {"ArcTan2[x,XIf[c,x,y]]", message("If")},
          {"XSubtract[x,XWhich[c,x]]", message("Which")},
          {"XMinus[GeneralConversion[XInequality[x,XLess[],NonAlgAuxiliary[XFor[x,c,x,x]]],bool,bool]]",
           message("For")},
          {"XIf[c,XFor[x,c,x,x],x]", message("If")},
          {"f[XFor[x,c,x,x]]", "f[XFor[x,c,x,x]]"},
      },
      [](tAsynt* t) {
        traverse_mode = 2;
        Rewrite_f90_expr(t, t);
        traverse_mode = 1;
      });
}

// ---- definitions

TEST_F(Sheepconv, SizesThatNameLocals) {
  struct Case {
    const char* text;
    const char* sizes;  // of p, declared as p[n, _, n]
    const char* code;
  };
  const std::vector<Case> cases = {
      {"XSetDelayed[f[],XModule[{n,p},{XPlus[a,1],&},XSet[p,w]]]", "{XPlus[a,1],0,n}",
       "XSetDelayed[f[],XModule[{n,p},{XPlus[a,1],&},(XSetShape[p,#2,#3];p=w)]]"},
      {"XSetDelayed[f[],XBlock[{p,n},{&,2},1]]", "{2,0,n}", "XSetDelayed[f[],XBlock[{p,n},{&,2},1]]"},
      {"XSetDelayed[f[],XModule[{p,n},{&,&},1]]", "{n,0,n}", "XSetDelayed[f[],XModule[{p,n},{&,&},1]]"},
      {"XSetDelayed[f[],XModule[{p,n},{&},1]]", "{n,0,n}", "Init expression not found."},
      {"XSetDelayed[f[p],XSet[p,w]]", "{n,0,n}", "XSetDelayed[f[p],p=w]"},
      {"XSet[f[],XModule[{n,p},{2,&},1]]", "{n,0,n}", "f[]=XModule[{n,p},{2,&},1]"},
  };
  for (const Case& c : cases) {
    declare_types("a:int n:int f:none w:real[2,3] p:real[1,1,1]");
    const auto n = [] { return mSymbol(mSimpleSymbol(mNoType(), NoPosition, "n")); };
    const tAsynt sizes = mExpression1(n(), mExpression1(mExactIntConst("0"), mExpression1(n(), mExpression0())));
    ArrayType_Dimensions(SymInfo_Type(info("p"))) = sizes;
    tAsynt t = typed_tree(c.text);
    const std::string message = message_of([&] { Rewrite_array_init(t); });
    EXPECT_EQ(c.sizes, code_text(sizes)) << c.text;
    if (message.empty())
      EXPECT_EQ(c.code, code_text(t)) << c.text;
    else
      EXPECT_NE(std::string::npos, message.find(c.code)) << c.text << ": " << message;
  }
}

// A qualified size names a local by its whole path: P$`n is a parameter beside the local n.
TEST_F(Sheepconv, QualifiedSizes) {
  declare_types("f:none n:int P$`n:int p:real[1,1]");
  const tAsynt sizes = ArrayType_Dimensions(SymInfo_Type(info("p")));
  Expression1_Expression(sizes) = typed_tree("P$`n");
  Expression1_Expression(Expression1_Expressions(sizes)) = typed_tree("n");
  Rewrite_array_init(typed_tree("XSetDelayed[f[],XModule[{n,p},{7,&},1]]"));
  EXPECT_EQ("{n,7}", code_text(sizes));
}

// An out-parameter gets its shape too, in a module or in a body without one.
TEST_F(Sheepconv, ResultsOfUnknownSize) {
  const auto rewritten = [](bool module) {
    const tAsynt out = mOutParam(SymInfo_Type(info("u")), NoPosition, 1);
    tAsynt body = mXSet(mkNonConvPos(NoPosition), mSymbol(out), typed_tree("w"));
    if (module) body = mXModule(mSymbol0(), mExpression0(), body);
    const tAsynt head = mSimpleFFE(mExpression1(mSymbol(out), mExpression0()), typed_tree("f"));
    const tAsynt t = mXSetDelayed(mkNonConvPos(NoPosition), head, body);
    Rewrite_array_init(t);
    return code_text(t);
  };
  EXPECT_EQ("XSetDelayed[f[O1],(XSetShape[O1,#2,#3];O1=w)]", rewritten(false));
  EXPECT_EQ("XSetDelayed[f[O1],XModule[{},{},(XSetShape[O1,#2,#3];O1=w)]]", rewritten(true));
}

TEST_F(Sheepconv, DeepNestingAndLongLists) {
  tAsynt deep = typed_tree(spread("x"));
  for (int k = 0; k < kMaxNesting; k++) deep = mXPlus(mkNonConvPos(NoPosition), mExpression1(deep, mExpression0()));
  rewrite_shapes(&deep);
  EXPECT_EQ(kX, code_text(Expression1_Expression(Variadic_Expressions(deep))));

  tAsynt statements = mExpression1(typed_tree("XSet[u,w]"), mExpression0());
  const tAsynt other = typed_tree("XSet[x,y]");
  for (int k = 0; k < 1000000; k++) statements = mExpression1(other, statements);
  tAsynt body = mXCompoundExpression(mkNonConvPos(NoPosition), statements);
  rewrite_shapes(&body);
  allocate_u(&body);
  tAsynt last = Variadic_Expressions(body);
  while (Asynt_Kind(Expression1_Expressions(last)) == kExpression1) last = Expression1_Expressions(last);
  EXPECT_EQ("(" + kShape + ")", code_text(Expression1_Expression(last)));
}

}  // namespace
}  // namespace oz
