// Schedules in both languages: whole texts, derived by hand, and what each kind of variable adds to them.

#include "fatal_text.h"
#include "pompsched.h"
#include "pompunp.h"
#include "sheepsched.h"
#include "sheepunp_text.h"

namespace oz {
namespace {

const char kNames[] =
    "a:real b:real a_out:real b_out:real v:real[3] v_out:real[3] w:real[2,2] k:int z:complex s:string p:bool T:real";

const char kNothing[] = "XCompoundExpression[]";

tAsynt symbols(const std::vector<tAsynt>& names) {
  tAsynt list = mSymbol0();
  for (size_t i = names.size(); i > 0; i--) list = mSymbol1(names[i - 1], list);
  return list;
}

tAsynt symbols(const std::string& names) {
  std::vector<tAsynt> all;
  std::string name;
  for (const char c : names + " ") {
    if (c != ' ')
      name += c;
    else if (!name.empty())
      all.push_back(typed_tree(name)), name.clear();
  }
  return symbols(all);
}

struct Worker {
  const char *in, *out, *code;
};

char* no_schedule() { return const_cast<char*>(""); }

tAsynt schedule(tAsynt in, tAsynt out, const std::vector<Worker>& workers) {
  tAsynt list = mInOutExpr0();
  for (size_t i = workers.size(); i > 0; i--) {
    const Worker& w = workers[i - 1];
    list = mInOutExpr1(mInOutExpr(symbols(w.in), symbols(w.out), typed_tree(w.code)), list);
  }
  const tAsynt outer = mInOutExpr(in, out, mParExec(list, no_schedule()));
  return mParExec(mInOutExpr1(outer, mInOutExpr0()), no_schedule());
}

tAsynt schedule(const char* in, const char* out, const std::vector<Worker>& workers) {
  return schedule(symbols(in), symbols(out), workers);
}

struct Schedules : SheepText {
  OutputStream cc;

  void SetUp() override {
    SheepText::SetUp();
    cpinit_operator_name();
    cpoutput_file = cc.f;
    cpinit();
    declare_types(kNames);
  }
  void TearDown() override {
    cpoutput_file = nullptr;
    cpinit();
    SheepText::TearDown();
  }

  std::string fortran(tAsynt t) {
    return f90.added([&] { FunparseStmt(t); });
  }
  std::string cplusplus(tAsynt t) {
    cpinit();
    return cc.added([&] { CPunparseVal(t); });
  }
  // The lines between two, without margins.
  static std::string part(const std::string& text, const std::string& from, const std::string& to) {
    const std::string lines = lines_of(text) + " | ";
    const size_t start = lines.find(from) + from.size() + 3;
    const size_t end = lines.find(to, start);
    return start > end || end == std::string::npos ? lines : lines.substr(start, end < start + 3 ? 0 : end - start - 3);
  }
  std::string f_starts(tAsynt t) { return part(fortran(t), "!Initialize the state vector", "end"); }
  std::string cp_starts(tAsynt t) { return part(cplusplus(t), "//  Initialize the state vector", "}"); }
};

// Two scalars and two workers. Workers of the Fortran text are labels, which begin in the second column.
TEST_F(Schedules, WholeTexts) {
  const tAsynt t =
      schedule("a b", "a_out b_out", {{"a b", "b_out", "XSet[b_out,XTimes[a,b]]"}, {"a", "a_out", "XSet[a_out,a]"}});
  EXPECT_EQ(
      "subroutine zc_initialize_state (zc_init_state)\n"
      "  implicit none\n"
      "  integer error\n"
      "  real*8 zc_init_state(2)\n"
      "  real*8 zc_get_real\n"
      "!Initialize the state vector\n"
      "  error = zc_get_real(zc_init_state(1), 'a')\n"
      "  error = zc_get_real(zc_init_state(2), 'b')\n"
      "end\n\n\n"
      "subroutine zc_assign_worker (zc_WorkerID, zc_yin, zc_yout)\n"
      "  implicit none\n"
      "  integer zc_WorkerID, zc_i\n"
      "  real*8 zc_yin(2), zc_yout(2)\n"
      "  real(zc_real) a\n"
      "  real(zc_real) b\n"
      "  real(zc_real) b_out\n"
      "  real(zc_real) a_out\n"
      "\n"
      "  go to (1, 2) zc_WorkerID\n"
      "  stop\n\n"
      " 1      continue\n"
      "  a = zc_yin(1)\n"
      "  b = zc_yin(2)\n"
      "  b_out = a*b\n"
      "\n"
      "  zc_yout(2) = b_out\n"
      "  go to 99\n"
      " 2      continue\n"
      "  a = zc_yin(1)\n"
      "  a_out = a\n"
      "\n"
      "  zc_yout(1) = a_out\n"
      "  go to 99\n"
      " 99       continue\n"
      "end\n",
      fortran(t));
  EXPECT_EQ(
      "\n#include <stdlib.h>\n\n"
      "extern \"C\"\n"
      "{\n"
      "    void zc_initialize_state (double *);\n"
      "    void zc_assign_worker (int *, double *, double *);\n"
      "    int zc_get_real (double *, char *);\n"
      "}\n\n"
      "void zc_initialize_state (double zc_init_state[2])\n"
      "{\n"
      "    int error;\n"
      "//  Initialize the state vector\n"
      "    error = zc_get_real(&zc_init_state[1], \"a\");\n"
      "    error = zc_get_real(&zc_init_state[2], \"b\");\n"
      "}\n\n\n"
      "void zc_assign_worker (int *zc_WorkerID, double zc_yin[2], double zc_yout[2])\n"
      "{\n"
      "    int zc_i;\n"
      "    double a;\n"
      "    double b;\n"
      "    double b_out;\n"
      "    double a_out;\n"
      "\n"
      "    switch (*zc_WorkerID)\n"
      "    {\n"
      "    case 1:\n"
      "        a = zc_yin[0];\n"
      "        b = zc_yin[1];\n"
      "        b_out = a*b;\n"
      "        zc_yout[1] = b_out;\n"
      "        break;\n\n"
      "    case 2:\n"
      "        a = zc_yin[0];\n"
      "        a_out = a;\n"
      "        zc_yout[0] = a_out;\n"
      "        break;\n\n"
      "    default:\n"
      "        exit(1);\n"
      "    }\n"
      "}\n",
      cplusplus(t));
}

TEST_F(Schedules, StartValues) {
  const struct {
    const char *in, *f90, *cc;
  } rows[] = {
      {"a v k",
       "error = zc_get_real(zc_init_state(1), 'a') | error = zc_get_real(zc_init_state(2), 'v[0]') | "
       "error = zc_get_real(zc_init_state(3), 'v[1]') | error = zc_get_real(zc_init_state(4), 'v[2]') | "
       "error = zc_get_real(zc_init_state(5), 'k')",
       "error = zc_get_real(&zc_init_state[1], \"a\"); | error = zc_get_real(&zc_init_state[2], \"v[0]\"); | "
       "error = zc_get_real(&zc_init_state[3], \"v[1]\"); | error = zc_get_real(&zc_init_state[4], \"v[2]\"); | "
       "error = zc_get_real(&zc_init_state[5], \"k\");"},
      {"z b",  // a complex value is one element
       "error = zc_get_real(zc_init_state(1), 'z') | error = zc_get_real(zc_init_state(2), 'b')",
       "error = zc_get_real(&zc_init_state[1], \"z\"); | error = zc_get_real(&zc_init_state[2], \"b\");"},
      {"", "", ""},
  };
  for (const auto& row : rows) {
    const tAsynt t = schedule(row.in, "", {{"", "", kNothing}});
    EXPECT_EQ(row.f90, f_starts(t)) << row.in;
    EXPECT_EQ(row.cc, cp_starts(t)) << row.in;
  }
  // The quotes of a long name stay on one line.
  const std::string name = xs(100);
  declare_types(name + ":real");
  EXPECT_TRUE(contains(cplusplus(schedule(name.c_str(), "", {{"", "", kNothing}})), "\"" + name + "\""));
}

// The case of worker 1, whose code is empty: what goes in and what comes out.
TEST_F(Schedules, Transfers) {
  const struct {
    const char *order_in, *order_out, *in, *out, *f90, *cc;
  } rows[] = {
      // What is no state variable is not read; an output is written in any case.
      {"a", "a_out", "b", "a_out b_out", "zc_yout(1) = a_out | zc_yout(-99999) = b_out",
       "zc_yout[0] = a_out; | zc_yout[-100000] = b_out;"},
      {"a b", "v_out", "b a", "v_out",
       "b = zc_yin(2) | a = zc_yin(1) | do zc_i = 1, 3 | zc_yout(zc_i) = v_out(zc_i) | end do",
       "b = zc_yin[1]; | a = zc_yin[0]; | for (zc_i = 0; zc_i < 3; zc_i++) | zc_yout[zc_i] = v_out(zc_i+1);"},
      // A place counts variables, so that the array overlaps with what comes behind it.
      {"a", "a_out v_out b_out", "", "v_out b_out",
       "do zc_i = 1, 3 | zc_yout(zc_i+1) = v_out(zc_i) | end do | zc_yout(3) = b_out",
       "for (zc_i = 0; zc_i < 3; zc_i++) | zc_yout[zc_i+1] = v_out(zc_i+1); | zc_yout[2] = b_out;"},
  };
  for (const auto& row : rows) {
    const tAsynt t = schedule(row.order_in, row.order_out, {{row.in, row.out, kNothing}});
    EXPECT_EQ(row.f90, part(fortran(t), "1      continue", "go to 99"));
    EXPECT_EQ(row.cc, part(cplusplus(t), "case 1:", "break;"));
  }
  // An array that is read is a loop in Fortran, and refused in C++, where its name is taken for a statement.
  const tAsynt t = schedule("a v", "", {{"v", "", kNothing}, {"w", "", kNothing}});
  EXPECT_EQ("do zc_i = 1, 3 | v(zc_i) = zc_yin(zc_i+1) | end do", part(fortran(t), "1      continue", "go to 99"));
  EXPECT_TRUE(contains(message_of([&] { CPunparseVal(t); }), "code for type:\" Symbol \""));
}

TEST_F(Schedules, Sizes) {
  const auto sized = [](tAsynt dims) {
    const tAsynt typ = mArrayType(mRealType(nullptr), dims);
    return symbols({mSymbol(mAbsoluteSymbol(typ, NoPosition, "u", mExpression0()))});
  };
  const auto cell = [](tAsynt d, tAsynt rest) { return mExpression1(d, rest); };
  const tAsynt end = mExpression0();
  const struct {
    tAsynt out;
    const char *size, *f90_fails, *cc_fails;
  } rows[] = {
      {symbols("a v w k"), "9", nullptr, nullptr},
      {symbols("a s"), "2", "sheepsched, routine Type_size", nullptr},
      {symbols("p"), "", "sheepsched, routine Type_size", "pompsched, routine Type_size"},
      {sized(end), "0", nullptr, nullptr},
      {sized(mIntConst0()), "0", nullptr, nullptr},
      {sized(mIntConst1(mIntConst(2), mIntConst1(mExactIntConst("03"), mIntConst0()))), "6", nullptr, nullptr},
      {sized(cell(mExactIntConst("5"), cell(mIntConst(2), end))), "10", nullptr, nullptr},
      {sized(cell(mExactIntConst("5*^1"), end)), "", "sheepsched, routine Size_of_array_type",
       "pompsched, routine Size_of_array_type"},
      {sized(cell(typed_tree("k"), end)), "", "sheepsched, routine Size_of_array_type",
       "pompsched, routine Size_of_array_type"},
      {sized(cell(mExactIntConst("99999999999999999999"), end)), "", "sheepsched, routine Size_of_array_type",
       "pompsched, routine Size_of_array_type"},
      {mExpression0(), "", "sheepsched, routine Symbol_list_size", "pompsched, routine Symbol_list_size"},
  };
  for (const auto& row : rows) {
    const tAsynt t = schedule(symbols(""), row.out, {{"", "", kNothing}});
    std::string text;
    std::string said = message_of([&] { text = f90.added([&] { FunparseStmt(t); }); });
    const std::string size = row.size;
    EXPECT_TRUE(row.f90_fails ? contains(said, "Error: module " + std::string(row.f90_fails) + " failed\n")
                              : contains(text, "real*8 zc_yin(" + size + "), zc_yout(" + size + ")\n"))
        << text << said;
    said = message_of([&] { text = cplusplus(t); });
    EXPECT_TRUE(row.cc_fails ? contains(said, "Error: module " + std::string(row.cc_fails) + " failed\n")
                             : contains(text, "double zc_init_state[" + size + "]"))
        << text << said;
  }
}

TEST_F(Schedules, OtherShapes) {
  const tAsynt block = mInOutExpr(symbols("a"), symbols("a"), typed_tree("&"));
  const tAsynt inner = mInOutExpr(symbols("a"), symbols("a"), mParExec(mInOutExpr0(), no_schedule()));
  const tAsynt good = InOutExpr1_InOutExpr(ParExec_InOutExprs(schedule("a", "a", {{"", "", kNothing}})));
  const tAsynt lists[] = {mInOutExpr0(), mInOutExpr1(block, mInOutExpr0()), mInOutExpr1(inner, mInOutExpr0()),
                          mInOutExpr1(good, mInOutExpr1(good, mInOutExpr0()))};
  for (tAsynt list : lists) {
    const tAsynt t = mParExec(list, no_schedule());
    EXPECT_EQ("", fortran(t));
    EXPECT_EQ("", f90.added([&] { FunparseVal(t); }));
    EXPECT_EQ("", cplusplus(t));
  }
}

TEST_F(Schedules, ListsOfSymbols) {
  const tAsynt list = symbols("a b v");
  EXPECT_EQ("a, b, v", f90.added([&] { Funparse_symbols(list, ", "); }));
  EXPECT_EQ("a; b; v", cc.added([&] { CPunparse_symbols(list, "; "); }));
  EXPECT_EQ(2, Find_var_in_syms(typed_tree("b"), list));
  EXPECT_EQ(100000, Find_var_in_syms(typed_tree("k"), list));
  EXPECT_EQ("Error: module pompsched, routine Find_var_in_syms failed\n",
            message_of([] { Find_var_in_syms(typed_tree("k"), mExpression0()); }));
}

// Cost grows with the size: 50,000 variables, each looked up in lists of as many.
TEST_F(Schedules, ManyVariables) {
  std::vector<tAsynt> names;
  for (unsigned i = 1; i <= 50'000; i++) names.push_back(mSymbol(mTempSymbol(real_type_node, NoPosition, i)));
  const tAsynt all = symbols(names);
  const tAsynt t = schedule(all, all, {{"", "", kNothing}});
  const tAsynt worker =
      InOutExpr1_InOutExpr(ParExec_InOutExprs(InOutExpr_Expr(InOutExpr1_InOutExpr(ParExec_InOutExprs(t)))));
  InOutExpr_In(worker) = InOutExpr_Out(worker) = all;
  EXPECT_TRUE(contains(fortran(t), "zc_yout(50000) = zc_T50000\n"));
  EXPECT_TRUE(contains(cplusplus(t), "zc_yout[49999] = zc_T50000;\n"));
}

}  // namespace
}  // namespace oz
