// Parallel loops in Fortran: the rewrite, the statement, declarations, task procedures. The order of what travels is
// the reverse of the order in the hash table: the buckets of one-letter names i j x y are 137 170 120 153, that of
// "b[[i]] ", which ends in a blank, is 219.

#include "sheepforall.h"

#include "cse.h"
#include "generators.h"

namespace oz {
namespace {

const char kOne[] = "ForAll[XSet[XPart[a,i],XPlus[XPart[b,i],XPart[b,i],x]],{Iterator[i,1,4]},&]";
const char kTwo[] = "ForAll[XSet[x,XTimes[i,y]],{Iterator[i,1,3],Iterator[j,2,k]},&]";

struct SheepForAll : SheepText {
  void SetUp() override {
    SheepText::SetUp();
    f_cblock_name = "M";
    f_module_name = "zc_M";
    forall_init_procs = mSymbol0();
    temp_no = 1;
  }

  static tAsynt transformed(const std::string& text) {
    tAsynt t = typed_tree(text);
    Transform_forall(&t);
    return t;
  }

  // The number of a loop's task procedure, which runs on through the process, becomes "#".
  static std::string with_number(tAsynt forall, std::string text, const std::string& before) {
    const std::string name = before + std::to_string(TempSymbol_Number(Symbol_SymInfo(ForAll_Procedure(forall))));
    for (size_t at = 0; (at = text.find(name, at)) != std::string::npos;)
      text.replace(at + before.size(), name.size() - before.size(), "#");
    return text;
  }
  static std::string numbered(tAsynt forall, const std::string& text) { return with_number(forall, text, "zc_P"); }
};

TEST_F(SheepForAll, Rewrite) {
  const struct {
    const char *forall, *rewritten;
  } rows[] = {
      // What occurs twice travels once, a part of an array as one value, the iterators in front.
      {kOne,
       "ForAll[XModule[{T1,T2},{XList[i,XPart[b,i],x],XList[XPart[a,i]]},"
       "XPart[a,i]=XPlus[XPart[b,i],XPart[b,i],x]],{Iterator[i,1,4]},T#]"},
      // An iterator that is read travels a second time.
      {kTwo,
       "ForAll[XModule[{T1,T2},{XList[i,j,y,i],XList[x]},x=XTimes[i,y]],"
       "{Iterator[i,1,3],Iterator[j,2,k]},T#]"},
      {"ForAll[XSet[XList[x,y],1],{Iterator[i,1,4]},&]",
       "ForAll[XModule[{T1,T2},{XList[i],XList[y,x]},XList[x,y]=1],{Iterator[i,1,4]},T#]"},
  };
  unsigned last = 0;
  for (const auto& row : rows) {
    temp_no = 1;
    const tAsynt t = transformed(row.forall);
    EXPECT_EQ(row.rewritten, with_number(t, code_text(t), "},T"));
    EXPECT_TRUE(Is_forall_task(t));
    const unsigned number = TempSymbol_Number(Symbol_SymInfo(ForAll_Procedure(t)));
    EXPECT_EQ(last ? last + 1 : number, number);
    last = number;
    const tAsynt ins = Expression1_Expression(XModule_Initializers(ForAll_Body(t)));
    EXPECT_EQ(7, PosConv_Pos(Operator_PosConv(ins)).Line);
  }
  for (const char* body : {"XCompoundExpression[XSet[x,1],XSet[y,2]]", "XModule[{x},{&},XSet[x,1]]"}) {
    const std::string text = "ForAll[" + std::string(body) + ",{Iterator[i,1,4]},&]";
    EXPECT_EQ(code_text(typed_tree(text)), code_text(transformed(text)));
    EXPECT_FALSE(Is_forall_task(transformed(text)));
  }
}

TEST_F(SheepForAll, Statement) {
  const struct {
    const char *forall, *text;
  } rows[] = {
      {kOne,
       "do i = 1, 4 | zc_T1(i)%p1 = i | zc_T1(i)%p2 = b(i) | zc_T1(i)%p3 = x | end do | "
       "call zc_parallel(zc_P#_id, ((4-1)+1), zc_T1, zc_T2) | "
       "do i = 1, 4 | a(i) = zc_T2(i)%p1 | end do"},
      {kTwo,
       "do i = 1, 3 | do j = 2, k | zc_T1(i,j)%p1 = i | zc_T1(i,j)%p2 = j | zc_T1(i,j)%p3 = y | "
       "zc_T1(i,j)%p4 = i | end do | end do | "
       "call zc_parallel(zc_P#_id, ((3-1)+1)*((k-2)+1), zc_T1, zc_T2) | "
       "do i = 1, 3 | do j = 2, k | x = zc_T2(i,j)%p1 | end do | end do"},
      // Without a variable on the left there is nothing to take apart.
      {"ForAll[XSet[1,x],{Iterator[i,1,4]},&]",
       "do i = 1, 4 | zc_T1(i)%p1 = i | zc_T1(i)%p2 = x | end do | "
       "call zc_parallel(zc_P#_id, ((4-1)+1), zc_T1, zc_T2)"},
  };
  for (const auto& row : rows) {
    temp_no = 1;
    const tAsynt t = transformed(row.forall);
    EXPECT_EQ(row.text, numbered(t, statement(t)));
  }
  // The next statement has a line of its own.
  const tAsynt both = compound({transformed(kOne), typed_tree("XSet[y,2]")});
  EXPECT_TRUE(contains(statement(both), "end do | y = 2"));
  // Loops that are no tasks: not rewritten, with another body, with a body of the other kind of scope.
  EXPECT_EQ("do i = 1, 4 | a(i) = b(i)+b(i)+x | end do", statement(kOne));
  EXPECT_EQ("do i = 1, 3 | do j = 2, k | x = 1 | y = 2 | end do | end do",
            statement(transformed("ForAll[XCompoundExpression[XSet[x,1],XSet[y,2]],"
                                  "{Iterator[i,1,3],Iterator[j,2,k]},&]")));
}

TEST_F(SheepForAll, Failures) {
  tAsynt loop = transformed(kOne);
  ForAll_Iter(loop) = mExpression0();
  tAsynt plain = typed_tree(kOne);
  ForAll_Iter(plain) = mExpression0();
  const struct {
    void (*call)(tAsynt);
    tAsynt t;
    const char* routine;
  } rows[] = {
      {[](tAsynt t) { Transform_forall(&t); }, plain, "Prepend_iter_vars"},
      {[](tAsynt t) { fmake_forall_decls(t); }, loop, "Foutput_iter_dims"},
      {FunparseStmt, loop, "Funparse_pack_forall"},
      {Fmake_forall_parallel_init, loop, "Fmake_forall_parallel_init"},
  };
  for (const auto& row : rows)
    EXPECT_TRUE(contains(message_of([&] { row.call(row.t); }),
                         std::string("Error: module sheepforall, routine ") + row.routine + " failed\n"))
        << row.routine;
}

TEST_F(SheepForAll, Registration) {
  EXPECT_EQ("", f90.added([] { Fmake_forall_parallel_init(mSymbol0()); }));
  const tAsynt procs = mSymbol1(mSymbol(mTempSymbol(int_type_node, NoPosition, 4)),
                                mSymbol1(mSymbol(mTempSymbol(int_type_node, NoPosition, 3)), mSymbol0()));
  std::string declared;
  const std::string text = f90.added([&] { declared = i_f90.added([&] { Fmake_forall_parallel_init(procs); }); });
  EXPECT_EQ(
      "interface | subroutine zc_init_parallel(init_func) | use zc_M, zc_this => zc_init_parallel | "
      "use ZentricaPrecision | implicit none | integer, external :: init_func | "
      "end subroutine oz_init_parallel | end interface",
      lines_of(declared));
  EXPECT_EQ(
      "subroutine zc_init_parallel(init_func) | use zc_M, zc_this => zc_init_parallel | implicit none | "
      "integer, external :: init_func | external zc_P4_init | external zc_P3_init | "
      "!One call for each ForAll function | call zc_P4_init(init_func) | call zc_P3_init(init_func) | "
      "end subroutine oz_init_parallel",
      lines_of(text));
}

}  // namespace
}  // namespace oz
