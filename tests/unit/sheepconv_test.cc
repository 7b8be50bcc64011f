// The rewrites ahead of Fortran output: tables of trees with what becomes of them, each derived by hand.

#include "sheepconv.h"

#include "cse.h"
#include "support.h"

namespace oz {
namespace {

struct Sheepconv : Trees {
  Sheepconv() { begin(); }
  // Sizes 0 are written as in a declaration without sizes: 0 or _.
  static void begin() {
    Begintype();
    declare_types(
        "a:int n:int i:int j:int x:real y:real c:bool f:real g:real v:real[3] w:real[2,3] "
        "u:real[0,0] p1:real[0] p4:real[0,1,2,3] p5:real[0,0,0,0,0]");
    for (const char* array : {"u", "p1", "p4", "p5"})
      for (tAsynt l = ArrayType_Dimensions(SymInfo_Type(info_of(array))); Asynt_Kind(l) == kExpression1;
           l = Expression1_Expressions(l))
        if (IntConst_Val(Expression1_Expression(l)) == 0)
          Expression1_Expression(l) = array[1] == '1' ? mBlank(mEmpty()) : mExactIntConst("0");
    temp_no = 1;
  }
};

// In the tables, <e> is a scalar to be read as an array, T1<-e the statement that makes it one, "range" a range of i
// with no condition, "later" what follows its first value, SHAPED the first assignment of u with its shape.
std::string spelled(std::string text) {
  const auto replace = [&](const std::string& from, const std::string& to) {
    for (size_t at; (at = text.find(from)) != std::string::npos;) text.replace(at, from.size(), to);
  };
  for (size_t at; (at = text.find("<-")) != std::string::npos;) {
    text.replace(at, 2, "=ShapeConversion[");
    text.insert(text.find(';', at), ",{},{#3}]");
  }
  replace("range", "{Iterator[i,1,n]},&]");
  replace("later", "Iterator[i,XPlus[1,1],n]]");
  replace("SHAPED", "(XSetShape[u,#2,#3];u=w)");
  replace("<", "GeneralConversion[");
  replace(">", ",real,real[3]]");
  return text;
}

// The tree behind the rewrite, or a part of the message.
template <typename Rewrite>
void expect_rewrites(Rewrite rewrite, const std::string& rows) {
  for (const auto& [text, expected] : table<2>(rows.c_str())) {
    Sheepconv::begin();
    tAsynt t = typed_tree(spelled(text));
    const std::string message = message_of([&] { rewrite(&t); });
    if (message.empty())
      EXPECT_EQ(spelled(expected), code_text(t)) << text;
    else
      EXPECT_TRUE(contains(message, expected)) << text;
  }
}

void rewrite_shapes(tAsynt* t) { Rewrite_shapeconv(t, t); }

TEST_F(Sheepconv, Conversions) {
  expect_rewrites(rewrite_shapes, R"(
      XSet[v,<x>] --> (T1<-x;v=<T1>)        <1.5> --> (T1<-1.5;<T1>)              <XSin[x]> --> (T1=XSin[x];T2<-T1;<T2>)
      GeneralConversion[v,real[3],real[3]] --> (T1=ShapeConversion[v,{#3},{#3}];GeneralConversion[T1,real[3],real[3]])
      GeneralConversion[v,real[3],real] --> GeneralConversion[v,real[3],real]
      GeneralConversion[x,none,real[3]] --> Error: module sheepconv, routine Dim failed
    )");
  tAsynt t = typed_tree(spelled("<XSin[x]>"));
  rewrite_shapes(&t);
  EXPECT_TRUE(CheckAsynt(t));
}

TEST_F(Sheepconv, WhereStatementsGo) {
  expect_rewrites(rewrite_shapes, R"(
      // Branches of a conditional that is a value: in front of the assignment; else each has its own place.
      XSet[v,XIf[c,<x>,<y>]] --> (T2<-y;(T1<-x;v=XIf[c,<T1>,<T2>]))        XIf[c,<x>,v] --> XIf[c,(T1<-x;<T1>),v]
      XIf[c,v,<y>] --> XIf[c,v,(T1<-y;<T1>)]        XIf[<x>,1,2] --> (T1<-x;XIf[<T1>,1,2])
      Do[XSet[v,<x>],Iterator[i,1,n]] --> Do[(T1<-x;v=<T1>),Iterator[i,1,n]]
      XModule[{},{<x>},<y>] --> XModule[{},{<x>},(T1<-y;<T1>)]
      XBlock[{},{<x>},<y>] --> XBlock[{},{<x>},(T1<-y;<T1>)]               XSin[<x>] --> (T1<-x;XSin[<T1>])
      NonAlgAuxiliary[<x>] --> (T1<-x;NonAlgAuxiliary[<T1>])
      XInequality[<x>,XLess[],y] --> (T1<-x;XInequality[<T1>,XLess[],y])   XMinus[<x>] --> (T1<-x;XMinus[<T1>])
      XPlus[<x>,<y>] --> (T2<-y;(T1<-x;XPlus[<T1>,<T2>]))
      XSubtract[<x>,<y>] --> (T2<-y;(T1<-x;XSubtract[<T1>,<T2>]))
      OuterProduct[<x>,<y>] --> (T2<-y;(T1<-x;OuterProduct[<T1>,<T2>]))    f[<x>,<y>] --> (T2<-y;(T1<-x;f[<T1>,<T2>]))
      f[<y>][<x>] --> (T2<-y;(T1<-x;f[<T2>][<T1>]))
      // Behind an assignment, in front of that assignment.
      XCompoundExpression[XSet[x,y],XSin[<x>]] --> ((T1<-x;x=y);XSin[<T1>])
      XCompoundExpression[XSin[x],XSin[<x>]] --> (T1<-x;(XSin[x];XSin[<T1>]))
      XList[x,#1,1,1.5,"s",XPi,XI,XE,XTrue,XFalse,XList[]] --> XList[x,#1,1,1.5,"s",XPi,XI,XE,XTrue,XFalse,XList[]]
      XSin[XWhich[c,x]] --> F90 unparser: Unknown node type in sheepconv: XWhich
      XSin[BasicConversion[x,real,real]] --> node type in sheepconv: BasicConversion
    )");
}

TEST_F(Sheepconv, Reductions) {
  expect_rewrites(rewrite_shapes, R"(
      XSet[x,IReduce[f,y,range] --> ((i=1;T1=y);Do[T1=f[T1,y],later;x=T1)
      XSet[x,XSin[IReduce[%Plus,y,range]] --> ((i=1;T1=y);Do[T1=XPlus[T1,y],later;x=XSin[T1])
      XSet[x,IReduce[%Plus,y,{Iterator[i,1,n],Iterator[j,2,a]},&]] --> \
          ((i=1;(j=2;T1=y);Do[T1=XPlus[T1,y],Iterator[j,XPlus[2,1],a]]);Do[Do[T1=XPlus[T1,y],Iterator[j,XPlus[2,1],\
          a]],Iterator[i,1,n]];x=T1)
      // A reduction that is a statement: the temporary takes its place behind the loops.
      XCompoundExpression[XSet[n,a],IReduce[%Plus,y,range] --> (n=a;((i=1;T1=y);Do[T1=XPlus[T1,y],later;T1))
      XModule[{},{},IReduce[%Plus,y,range] --> XModule[{},{},((i=1;T1=y);Do[T1=XPlus[T1,y],later;T1)]
      XSet[x,IReduce[%Plus,IReduce[%Times,y,{Iterator[j,1,2]},&],range] --> \
          ((i=1;((j=1;T2=y);Do[T2=XTimes[T2,y],Iterator[j,XPlus[1,1],2]];T1=T2));Do[((j=1;T3=y);Do[T3=XTimes[T3,y],\
          Iterator[j,XPlus[1,1],2]];T1=XPlus[T1,T3]),later;x=T1)
      IReduce[%Plus,y,{},&] --> Error: module sheepconv, routine Make_ireduce_init_expr failed
    )");
  expect_rewrites(rewrite_shapes, "IReduce[%Plus,y,{" + repeated("Iterator[i,1,n],", 501) +
                                      "},&] --> F90 unparser: A reduction has more than 500 ranges.");
  expect_rewrites(rewrite_shapes, repeated("IReduce[%Plus,", 11) + "y" + repeated(",range", 11) +
                                      " --> F90 unparser: Reductions are nested more than 10 deep.");
}

// The body stands at two places; later rewrites in place must meet both. Symbols keep their information.
TEST_F(Sheepconv, BodyOfReductionIsCopied) {
  tAsynt t = typed_tree(spelled("IReduce[%Plus,XSin[x],range"));
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

void allocate_u(tAsynt* t) { Explicit_allocation(info_of("u"), t); }

TEST_F(Sheepconv, ShapesOfTheFirstAssignment) {
  expect_rewrites(allocate_u, R"(
      XSet[u,w] --> SHAPED                   XSet[u,p1] --> (XSetShape[u,XPart[XDimensions[p1],#1]];u=p1)
      XSet[u,p4] --> (XSetShape[u,XPart[XDimensions[p4],#1],XPart[XDimensions[p4],#2],XPart[XDimensions[p4],#3],\
          XPart[XDimensions[p4],#4]];u=p4)
      XSet[u,p5] --> u=p5          XSet[u,x] --> u=x            XSet[u,XList[]] --> (XSetShape[u,#0];u=XList[])
      XSet[u,XList[XList[1,2,3],XList[4]]] --> (XSetShape[u,#2,#3];u=XList[XList[1,2,3],XList[4]])
      XSet[u,XList[XList[],x]] --> (XSetShape[u,#2,#0];u=XList[XList[],x])
      XSet[u,XList[XList[XList[XList[x]]]]] --> (XSetShape[u,#1,#1,#1,#1];u=XList[XList[XList[XList[x]]]])
      XSet[u,XList[XList[XList[XList[XList[]]]]]] --> F90 unparser: List constant with rank > 4 is not permitted.
      XSet[u,f[w]] --> F90 unparser: Cannot unparse the assignment 'u=f[w]'. Array has unknown dimensions.
    )");
  // From results of a function, only rank 1 is measured at run time.
  const auto from_result = [](const char* typ) {
    tAsynt t = set(typed_tree("u"), mSymbol(mOutParam(SymInfo_Type(info_of(typ)), tPosition{9, 8}, 1)));
    allocate_u(&t);
    return t;
  };
  EXPECT_EQ("(XSetShape[u,#2,#3];u=O1)", code_text(from_result("w")));
  EXPECT_EQ("u=O1", code_text(from_result("u")));
  const tAsynt measured = from_result("p1");
  EXPECT_EQ("(XSetShape[u,XPart[XDimensions[O1],#1]];u=O1)", code_text(measured));
  EXPECT_EQ(9u, GetPos(Expression1_Expression(Variadic_Expressions(measured))).Line) << "where the result is declared";
}

TEST_F(Sheepconv, WalkToTheFirstAssignment) {
  expect_rewrites(allocate_u, R"(
      XFor[XSet[u,w],XSet[u,w],XSet[u,w],XSet[u,w]] --> XFor[u=w,u=w,SHAPED,u=w]
      XFor[x,c,1,XSet[u,w]] --> XFor[x,c,1,SHAPED]             XWhile[XSet[u,w],XSet[u,w]] --> XWhile[u=w,SHAPED]
      XIf[XSet[u,w],XSet[u,w],XSet[u,w]] --> XIf[u=w,SHAPED,u=w]                  XIf[c,x,XSet[u,w]] --> XIf[c,x,SHAPED]
      XWhich[c,x,c,XSet[u,w]] --> XWhich[c,x,c,SHAPED]         XWhich[c,x,XSet[u,w]] --> XWhich[c,x,u=w]
      Do[XSet[u,w],Iterator[i,1,n]] --> Do[SHAPED,Iterator[i,1,n]]
      XModule[{},{},XSet[u,w]] --> XModule[{},{},SHAPED]       XBlock[{},{},XSet[u,w]] --> XBlock[{},{},SHAPED]
      XSin[XSet[u,w]] --> XSin[u=w]         XCompoundExpression[XSet[x,y],XSet[u,w],XSet[u,w]] --> (x=y;SHAPED;u=w)
      NonAlgAuxiliary[XSet[u,w]] --> (XSetShape[u,#2,#3];NonAlgAuxiliary[u=w])
      XSet[x,XSin[XSet[u,w]]] --> x=XSin[u=w]
      // In a = b = c the right assignment comes first; in {a, b} = {c, d} each pair counts.
      XSet[u,XSet[p1,w]] --> (XSetShape[u,XPart[XDimensions[p1],#1]];u=p1=w)
      XSet[p1,XSet[u,w]] --> (XSetShape[u,#2,#3];p1=u=w)
      XSet[XList[x,u],XList[y,w]] --> (XSetShape[u,#2,#3];XList[x,u]=XList[y,w])
      XSet[XList[x,u],XList[y]] --> XList[x,u]=XList[y]
    )");
}

TEST_F(Sheepconv, StatementsInThePlaceOfValues) {
  const auto rewrite = [](tAsynt* t) {
    traverse_mode = 2;
    Rewrite_f90_expr(t, t);
    traverse_mode = 1;
  };
  expect_rewrites(rewrite, R"(
      XSin[XFor[x,c,x,x]] --> F90 unparser: 'For' cannot be used as an expression in Fortran90.
      XPlus[x,XWhile[c,x]] --> 'While' cannot be used           ArcTan2[x,XIf[c,x,y]] --> 'If' cannot be used
      XSubtract[x,XWhich[c,x]] --> 'Which' cannot be used
      XMinus[GeneralConversion[XInequality[x,XLess[],NonAlgAuxiliary[XFor[x,c,x,x]]],bool,bool]] --> \
          'For' cannot be used
      XIf[c,XFor[x,c,x,x],x] --> 'If' cannot be used            f[XFor[x,c,x,x]] --> f[XFor[x,c,x,x]]
    )");
}

// ---- definitions

// The sizes of p, declared as p[n, _, n], and the code.
TEST_F(Sheepconv, SizesThatNameLocals) {
  for (const auto& [text, sizes, code] : table<3>(R"(
      XSetDelayed[f[],XModule[{n,p},{XPlus[a,1],&},XSet[p,w]]] --> {XPlus[a,1],0,n} --> \
          XSetDelayed[f[],XModule[{n,p},{XPlus[a,1],&},(XSetShape[p,#2,#3];p=w)]]
      XSetDelayed[f[],XBlock[{p,n},{&,2},1]] --> {2,0,n} --> XSetDelayed[f[],XBlock[{p,n},{&,2},1]]
      XSetDelayed[f[],XModule[{p,n},{&,&},1]] --> {n,0,n} --> XSetDelayed[f[],XModule[{p,n},{&,&},1]]
      XSetDelayed[f[],XModule[{p,n},{&},1]] --> {n,0,n} --> Init expression not found.
      XSetDelayed[f[p],XSet[p,w]] --> {n,0,n} --> XSetDelayed[f[p],p=w]
      XSet[f[],XModule[{n,p},{2,&},1]] --> {n,0,n} --> f[]=XModule[{n,p},{2,&},1]
    )")) {
    declare_types("a:int n:int f:none w:real[2,3] p:real[1,1,1]");
    const tAsynt dims = list({name("n"), mExactIntConst("0"), name("n")});
    ArrayType_Dimensions(SymInfo_Type(info_of("p"))) = dims;
    tAsynt t = typed_tree(text);
    const std::string message = message_of([&] { Rewrite_array_init(t); });
    EXPECT_EQ(sizes, code_text(dims)) << text;
    if (message.empty())
      EXPECT_EQ(code, code_text(t)) << text;
    else
      EXPECT_TRUE(contains(message, code)) << text;
  }
  // A qualified size names a local by its whole path: P$`n is a parameter beside the local n.
  declare_types("f:none n:int P$`n:int p:real[1,1]");
  const tAsynt dims = list({typed_tree("P$`n"), typed_tree("n")});
  ArrayType_Dimensions(SymInfo_Type(info_of("p"))) = dims;
  Rewrite_array_init(typed_tree("XSetDelayed[f[],XModule[{n,p},{7,&},1]]"));
  EXPECT_EQ("{n,7}", code_text(dims));
}

TEST_F(Sheepconv, DeepNestingAndLongLists) {
  const auto level = [](tAsynt core) { return mXPlus(no_place(), list({core})); };
  tAsynt deep = nested(kMaxNesting, typed_tree(spelled("<x>")), level);
  rewrite_shapes(&deep);
  EXPECT_EQ("T1=ShapeConversion[x,{},{#3}]", code_text(Expression1_Expression(Variadic_Expressions(deep))));

  std::vector<tAsynt> statements(1000000, typed_tree("XSet[x,y]"));
  statements.push_back(typed_tree("XSet[u,w]"));
  tAsynt body = compound(statements);
  rewrite_shapes(&body);
  allocate_u(&body);
  tAsynt last = Variadic_Expressions(body);
  while (Asynt_Kind(Expression1_Expressions(last)) == kExpression1) last = Expression1_Expressions(last);
  EXPECT_EQ("(XSetShape[u,#2,#3];u=w)", code_text(Expression1_Expression(last)));
}

}  // namespace
}  // namespace oz
