// Fortran statements: a row per rule. Margins and empty lines are left out, but in one test.

#include "sheepunp_text.h"

namespace oz {
namespace {

struct Row {
  const char *tree, *text;
};

tAsynt symbol(const char* name) { return typed_tree(name); }
tAsynt out_param(const char* type, unsigned number) {
  return mSymbol(mOutParam(type_of_text(type), NoPosition, number));
}

struct SheepStmt : SheepText {
  void check(const Row* begin, const Row* end) {
    for (const Row* row = begin; row < end; row++) EXPECT_EQ(row->text, statement(row->tree)) << row->tree;
  }
};

TEST_F(SheepStmt, SimpleAndCompound) {
  const Row rows[] = {
      {"XVoidFunc", ""},
      {"&", ""},
      {"Comment", ""},
      {"XCompoundExpression[XSet[x,1],&,XSet[y,2]]", "x = 1 | y = 2"},
      {"XPut[XPlus[x,y]]", "PRINT *, x+y"},
      {"XPrint[x,\"t\",XPlus[x,y]]", "print *, x, \"t\", x+y"},
      {"XBreak", "exit"},
      {"XModule[{},{},XSet[x,1]]", "x = 1"},
      {"XFor[XSet[i,1],XLess[i,3],XSet[i,2],XBreak]", "i = 1 | do while (i < 3) | exit | i = 2 | end do"},
      {"XWhile[XLess[i,3],XSet[i,2]]", "do while (i < 3) | i = 2 | end do"},
      {"sub[x,y]", "call sub (x, y)"},
      {"sub[]", "call sub ()"},
      {"XSetShape[u,3]", "if (associated(u)) nullify(u) | allocate(u(3))"},
      {"XSetShape[a,3]", ""},
  };
  check(std::begin(rows), std::end(rows));
}

TEST_F(SheepStmt, Conditionals) {
  const Row rows[] = {
      {"XIf[p,XSet[x,1],&]", "if (p) then | x = 1 | end if"},
      {"XIf[p,XSet[x,1],XSet[x,2]]", "if (p) then | x = 1 | else | x = 2 | end if"},
      {"XIf[p,XSet[x,1],XIf[q,XSet[x,2],&]]", "if (p) then | x = 1 | else if (q) then | x = 2 | end if"},
      {"XIf[p,&,XIf[q,XSet[x,2],XSet[x,3]]]", "if (p) then | else if (q) then | x = 2 | else | x = 3 | end if"},
      {"XWhich[]", ""},
      {"XWhich[p,XSet[x,1]]", "if (p) then | x = 1 | end if"},
      {"XWhich[p,XSet[x,1],q,&,XTrue,XSet[x,3]]",
       "if (p) then | x = 1 | else if (q) then | else if (.TRUE.) then | x = 3 | end if"},
  };
  check(std::begin(rows), std::end(rows));
}

TEST_F(SheepStmt, Assignments) {
  const Row rows[] = {
      {"XSet[x,XPlus[x,1]]", "x = x+1"},
      {"XSet[x,XSet[y,XSet[i,1]]]", "i = 1 | y = i | x = y"},
      {"XSet[XList[x,y],two[i]]", "call two (i, x, y)"},
      {"XSet[XList[x,y],two[]]", "call two (x, y)"},
      {"XSet[XList[x,y],vec[i]]", "call vec (i, x, y)"},
      {"XSet[XList[x,y],XList[y,XPlus[x,1]]]", "x = y | y = x+1"},
      {"XSet[XList[XList[x,y],i],XList[two[],1]]", "call two (x, y) | i = 1"},
      {"XSet[XList[x,y],List[1,2]]", "x = 1 | y = 2"},
      {"XSet[x,XIf[p,1,XPlus[x,1]]]", "if (p) then | x = 1 | else | x = x+1 | end if"},
      {"XSet[x,XIf[p,XIf[q,1,2],3]]",
       "if (p) then | if (q) then | x = 1 | else | x = 2 | end if | else | x = 3 | end if"},
      {"XSet[XPart[c,i,j],x]", "c(j, i) = x"},
      {"XSet[XPart[c,i],XPlus[a,1]]", "c(:,i) = a+1"},
      {"XSet[XPart[c,XBlank,i],0]", "c(i, :) = 0"},
      {"XSet[XPart[a,XAlternatives[1,2]],b]", "a(1:2) = b"},
      {"XSet[u,w]", "u = w"},
  };
  check(std::begin(rows), std::end(rows));
}

// Results of unknown size are pointers.
TEST_F(SheepStmt, PointerAssignment) {
  const struct {
    const char *type, *value, *text;
  } rows[] = {{"real[0]", "u", "zc_O1 => u"},
              {"real[0]", "a", "zc_O1 = a"},
              {"real[4]", "u", "zc_O1 = u"},
              {"real[0]", "XPlus[u,1]", "zc_O1 = u+1"}};
  for (const auto& row : rows)
    EXPECT_EQ(row.text, statement(mXSet(nullptr, out_param(row.type, 1), typed_tree(row.value))));
}

// Loops stand for the dimensions that the value lacks, where their sizes are plain.
TEST_F(SheepStmt, ScalarsSpreadOverArrays) {
  const tAsynt two = mIntConst1(mIntConst(2), mIntConst1(typed_tree("i"), mIntConst0()));
  const tAsynt four = mExpression1(mIntConst(4), mExpression0());
  const struct {
    tAsynt value, from, to;
    const char* text;
  } rows[] = {
      {symbol("x"), mExpression0(), two, "do I=1,2 | do J=1,i | c(I)(J) = x | end do | end do"},
      {mIntConst(0), mIntConst1(mIntConst(3), mIntConst0()), two, "do I=1,2 | c(I) = 0 | end do"},
      {symbol("x"), mExpression0(), four, "c = x"},
      {symbol("x"), two, mExpression0(), "c = x"},
      {typed_tree("XPlus[x,1]"), mExpression0(), two, "c = x+1"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.text, statement(mXSet(nullptr, symbol("c"), mShapeConversion(row.value, row.from, row.to))));
}

TEST_F(SheepStmt, InitialValues) {
  EXPECT_EQ("x = 1.5D0 | y = x+1 | exit", statement("XModule[{x,i,y},{1.5,&,XPlus[x,1]},XBreak]"));
  EXPECT_EQ("x = 1 | i = 2", statement("XBlock[{x,i},{1,2},&]"));
  for (const char* uneven : {"XBlock[{x},{1,2},&]", "XModule[{x,y},{&},&]"})
    EXPECT_TRUE(contains(report(uneven), "F90 unparser: Internal error in Foutput_var_inits.\n"));
}

TEST_F(SheepStmt, LoopsOverRanges) {
  EXPECT_EQ("do i = 1, j+1 | x = i | end do", statement("Do[XSet[x,i],Iterator[i,1,XPlus[j,1]]]"));
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
  const std::string no_statement =
      "sheepunp: NEW BEHAVIOUR: A statement expected in a place where a single expression is passed.  "
      "Can't perform FunparseStmt to unparse node type: ";
  const struct {
    const char* tree;
    std::string message;
    const char* text;
  } rows[] = {
      {"x", no_statement + "Symbol, CODE: x", ""},
      {"f[x]", no_statement + "SimpleFFE, CODE: f[x]", ""},
      {"g[1][x]", no_statement + "ComplexFFE, CODE: g[1][x]", ""},
      {"ExternBody", no_statement + "ExternBody, CODE: ", ""},
      {"XWhich[p]", "F90 unparser: Bad arguments to Which[], perhaps different length of parameters.\n", "if (p) then"},
      {"XWhich[p,&,q]", "F90 unparser: Bad arguments to Which[], perhaps different length of parameters.\n",
       "if (p) then | else if (q) then"},
      {"XSet[XList[x,y],XList[1]]", "F90 unparser: Number of elements on each side differ in list assignment.\n",
       "x = 1"},
      {"XSet[XList[x,y],f[1,2]]", "F90 unparser: Number of elements on each side differ in list assignment.\n", ""},
      {"XSet[XPart[a,1,2],x]", "F90 unparser: Left side has higher rank than array in a[[1,2]] =x.\n", ""},
      {"XSet[XPart[d,i],a]",
       "F90 unparser: Possibly incompatible ranks in assignment. Rank reduction = 1 levels in d[[i]] =a.",
       "d(:,:,i) = a"},
  };
  for (const auto& row : rows) {
    finit_output();
    std::string said;
    EXPECT_EQ(row.text, lines_of(f90.added([&] { said = report(row.tree); }))) << row.tree;
    EXPECT_TRUE(contains(said, row.message)) << row.tree << said;
  }
}

// Lists of statements and chains of conditionals are walked, not descended into.
TEST_F(SheepStmt, LongAndDeepBodies) {
  tAsynt nest = mXBreak(), value = typed_tree("x");
  for (int level = 0; level < 10000; level++) {
    nest = mXIf(typed_tree("p"), nest, mEmpty());
    value = mXIf(typed_tree("p"), value, typed_tree("y"));
  }
  nest = mXCompoundExpression(nullptr,
                              mExpression1(nest, mExpression1(mXSet(nullptr, symbol("x"), value), mExpression0())));
  foutput_file = nullptr;  // margins as deep as the nesting
  FunparseStmt(nest);
  foutput_file = f90.f;
  tAsynt list = mExpression0();
  tAsynt chain = mEmpty();
  const tAsynt condition = symbol("p");
  for (int n = 0; n < 200000; n++) {
    list = mExpression1(mXBreak(), list);
    chain = mXIf(condition, mEmpty(), chain);
  }
  EXPECT_EQ(200000 * 5U, f90.added([&] { FunparseStmt(mXCompoundExpression(nullptr, list)); }).size());
  EXPECT_EQ("\nend if\n", [&] {
    const std::string text = f90.added([&] { FunparseStmt(chain); });
    return text.substr(text.size() - 8);
  }());
}

}  // namespace
}  // namespace oz
