// Fortran statements: a row per rule. Margins and empty lines are left out, but in one test.

#include "generators.h"

namespace oz {
namespace {

struct SheepStmt : SheepText {
  void check(const char* rows) {
    for (const auto& [tree, text] : table<2>(rows)) EXPECT_EQ(text, statement(tree)) << tree;
  }
};

TEST_F(SheepStmt, SimpleAndCompound) {
  check(R"(
      XVoidFunc -->   & -->           Comment -->     XBreak --> exit                 XPut[XPlus[x,y]] --> PRINT *, x+y
      XCompoundExpression[XSet[x,1],&,XSet[y,2]] --> x = 1 | y = 2    XPrint[x,"t",XPlus[x,y]] --> print *, x, "t", x+y
      XFor[XSet[i,1],XLess[i,3],XSet[i,2],XBreak] --> i = 1 | do while (i < 3) | exit | i = 2 | end do
      XWhile[XLess[i,3],XSet[i,2]] --> do while (i < 3) | i = 2 | end do              sub[x,y] --> call sub (x, y)
      sub[] --> call sub ()           XSetShape[u,3] --> if (associated(u)) nullify(u) | allocate(u(3))
      XSetShape[a,3] -->              XIf[p,XSet[x,1],&] --> if (p) then | x = 1 | end if
      XIf[p,XSet[x,1],XSet[x,2]] --> if (p) then | x = 1 | else | x = 2 | end if
      XIf[p,XSet[x,1],XIf[q,XSet[x,2],&]] --> if (p) then | x = 1 | else if (q) then | x = 2 | end if
      XIf[p,&,XIf[q,XSet[x,2],XSet[x,3]]] --> if (p) then | else if (q) then | x = 2 | else | x = 3 | end if
      XWhich[] -->    XWhich[p,XSet[x,1]] --> if (p) then | x = 1 | end if
      XWhich[p,XSet[x,1],q,&,XTrue,XSet[x,3]] --> \
          if (p) then | x = 1 | else if (q) then | else if (.TRUE.) then | x = 3 | end if
      // Local variables take their initial values.
      XModule[{},{},XSet[x,1]] --> x = 1     XModule[{x,i,y},{1.5,&,XPlus[x,1]},XBreak] --> x = 1.5D0 | y = x+1 | exit
      XBlock[{x,i},{1,2},&] --> x = 1 | i = 2
      Do[XSet[x,i],Iterator[i,1,XPlus[j,1]]] --> do i = 1, j+1 | x = i | end do
    )");
}

TEST_F(SheepStmt, Assignments) {
  check(R"(
      XSet[x,XPlus[x,1]] --> x = x+1                            XSet[x,XSet[y,XSet[i,1]]] --> i = 1 | y = i | x = y
      XSet[XList[x,y],two[i]] --> call two (i, x, y)            XSet[XList[x,y],two[]] --> call two (x, y)
      XSet[XList[x,y],vec[i]] --> call vec (i, x, y)            XSet[XList[x,y],XList[y,XPlus[x,1]]] --> x = y | y = x+1
      XSet[XList[XList[x,y],i],XList[two[],1]] --> call two (x, y) | i = 1
      XSet[XList[x,y],List[1,2]] --> x = 1 | y = 2
      XSet[x,XIf[p,XIf[q,1,2],3]] --> if (p) then | if (q) then | x = 1 | else | x = 2 | end if | else | x = 3 | end if
      XSet[XPart[c,i,j],x] --> c(j, i) = x                      XSet[XPart[c,i],XPlus[a,1]] --> c(:,i) = a+1
      XSet[XPart[c,XBlank,i],0] --> c(i, :) = 0                 XSet[XPart[a,XAlternatives[1,2]],b] --> a(1:2) = b
      XSet[u,w] --> u = w
    )");
}

// Results of unknown size are pointers.
TEST_F(SheepStmt, PointerAssignment) {
  for (const auto& [type, value, text] : table<3>(R"(
      real[0] --> u --> zc_O1 => u                              real[0] --> a --> zc_O1 = a
      real[4] --> u --> zc_O1 = u                               real[0] --> XPlus[u,1] --> zc_O1 = u+1
    )"))
    EXPECT_EQ(text, statement(mXSet(nullptr, out_param(type, 1), typed_tree(value))));
}

// Loops stand for the dimensions that the value lacks, where their sizes are plain.
TEST_F(SheepStmt, ScalarsSpreadOverArrays) {
  const tAsynt two = mIntConst1(mIntConst(2), mIntConst1(typed_tree("i"), mIntConst0()));
  const tAsynt four = mExpression1(mIntConst(4), mExpression0());
  const struct {
    tAsynt value, from, to;
    const char* text;
  } rows[] = {
      {typed_tree("x"), mExpression0(), two, "do I=1,2 | do J=1,i | c(I)(J) = x | end do | end do"},
      {mIntConst(0), mIntConst1(mIntConst(3), mIntConst0()), two, "do I=1,2 | c(I) = 0 | end do"},
      {typed_tree("x"), mExpression0(), four, "c = x"},
      {typed_tree("x"), two, mExpression0(), "c = x"},
      {typed_tree("XPlus[x,1]"), mExpression0(), two, "c = x+1"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.text, statement(mXSet(nullptr, typed_tree("c"), mShapeConversion(row.value, row.from, row.to))));
}

TEST_F(SheepStmt, LoopsOverRanges) {
  const tAsynt plain = typed_tree("ForAll[XSet[x,XPlus[i,j]],{Iterator[i,1,3],Iterator[j,1,4]},&]");
  const tAsynt calling = typed_tree("ForAll[XSet[x,f[i]],{Iterator[i,1,3]},&]");
  const char* nest = "do i = 1, 3 | do j = 1, 4 | x = i+j | end do | end do";
  EXPECT_EQ(nest, statement(plain));
  genlang = hpf;
  EXPECT_EQ("forall i = 1, 3 | forall j = 1, 4 | x = i+j | end forall | end forall", statement(plain));
  EXPECT_EQ("!HPF$independent | do i = 1, 3 | x = f(i) | end do", statement(calling));
}

// An element of an instance set is no call.
TEST_F(SheepStmt, FunctionsInBodies) {
  const tAsynt nest = mSymbol(mAbsoluteNest(mRealType(nullptr), NoPosition, typed_tree("x[#1]")));
  EXPECT_FALSE(Functionsp(mXSet(nullptr, nest, typed_tree("XPlus[x,1]"))));
  EXPECT_TRUE(Functionsp(mXSet(nullptr, nest, typed_tree("XPlus[x,g[1][x]]"))));
}

TEST_F(SheepStmt, Layout) {
  const tAsynt t = typed_tree("XIf[p,XWhile[q,XSet[x,1]],XFor[XSet[i,1],q,XSet[i,2],XBreak]]");
  EXPECT_EQ(
      "if (p) then\n  do while (q)\n    x = 1\n\n  end do\n\nelse\n\n  i = 1\n  do while (q)\n    exit\n\n    i = 2\n\n"
      "  end do\n\nend if\n",
      f90.added([&] { FunparseStmt(t); }));
}

TEST_F(SheepStmt, Refusals) {
  expect_refusals(FunparseStmt, R"(
      x --> sheepunp: NEW BEHAVIOUR: A statement expected in a place where a single expression is passed.  Can't \
          perform FunparseStmt to unparse node type: Symbol, CODE: x -->
      f[x] --> type: SimpleFFE, CODE: f[x] -->                  g[1][x] --> type: ComplexFFE, CODE: g[1][x] -->
      ExternBody --> type: ExternBody, CODE:\s -->
      XWhich[p] --> F90 unparser: Bad arguments to Which[], perhaps different length of parameters.\n --> if (p) then
      XWhich[p,&,q] --> F90 unparser: Bad arguments to Which[], perhaps different length of parameters.\n --> \
          if (p) then | else if (q) then
      XSet[XList[x,y],XList[1]] --> F90 unparser: Number of elements on each side differ in list assignment.\n --> x = 1
      XSet[XList[x,y],f[1,2]] --> F90 unparser: Number of elements on each side differ in list assignment.\n -->
      XSet[XPart[a,1,2],x] --> F90 unparser: Left side has higher rank than array in a[[1,2]] =x.\n -->
      XSet[XPart[d,i],a] --> F90 unparser: Possibly incompatible ranks in assignment. Rank reduction = 1 levels in \
          d[[i]] =a. --> d(:,:,i) = a
      XBlock[{x},{1,2},&] --> F90 unparser: Internal error in Foutput_var_inits.\n --> x = 1
      XModule[{x,y},{&},&] --> F90 unparser: Internal error in Foutput_var_inits.\n -->
    )");
}

// Lists of statements and chains of conditionals are walked, not descended into.
TEST_F(SheepStmt, LongAndDeepBodies) {
  tAsynt nest = mXBreak(), value = typed_tree("x");
  for (int level = 0; level < 10000; level++) {
    nest = mXIf(typed_tree("p"), nest, mEmpty());
    value = mXIf(typed_tree("p"), value, typed_tree("y"));
  }
  nest = compound({nest, set(typed_tree("x"), value)});
  foutput_file = nullptr;  // margins as deep as the nesting
  FunparseStmt(nest);
  foutput_file = f90.f;
  const tAsynt condition = typed_tree("p"), many = compound(std::vector<tAsynt>(200000, mXBreak()));
  const tAsynt chain = nested(200000, mEmpty(), [&](tAsynt core) { return mXIf(condition, mEmpty(), core); });
  EXPECT_EQ(200000 * 5U, f90.added([&] { FunparseStmt(many); }).size());
  EXPECT_EQ("\nend if\n", [&] {
    const std::string text = f90.added([&] { FunparseStmt(chain); });
    return text.substr(text.size() - 8);
  }());
}

}  // namespace
}  // namespace oz
