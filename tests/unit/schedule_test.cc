// Schedules in both languages: whole texts, derived by hand, and what each kind of variable adds to them.

#include "generators.h"
#include "pompsched.h"
#include "pompunp.h"
#include "sheepsched.h"

namespace oz {
namespace {

tAsynt symbols_of(const std::string& names) {
  std::vector<tAsynt> all;
  for (const std::string& text : words(names)) all.push_back(typed_tree(text));
  return symbols(all);
}

char* no_schedule() { return const_cast<char*>(""); }

// A system with its variables and results, and one worker for each of {what goes in, what comes out, code}.
tAsynt schedule(tAsynt in, tAsynt out, const std::vector<std::array<std::string, 3>>& workers) {
  tAsynt blocks = mInOutExpr0();
  for (size_t i = workers.size(); i-- > 0;) {
    const auto& [worker_in, worker_out, code] = workers[i];
    blocks = mInOutExpr1(mInOutExpr(symbols_of(worker_in), symbols_of(worker_out), typed_tree(code)), blocks);
  }
  return mParExec(mInOutExpr1(mInOutExpr(in, out, mParExec(blocks, no_schedule())), mInOutExpr0()), no_schedule());
}

const std::array<std::string, 3> kIdle = {"", "", "XCompoundExpression[]"};

struct Schedules : SheepText, PompFiles {
  Schedules() {
    genlang = fortran90;
    declare_types(
        "a:real b:real a_out:real b_out:real v:real[3] v_out:real[3] w:real[2,2] k:int z:complex s:string p:bool "
        "T:real");
  }

  std::string fortran(tAsynt t) {
    return lines_of(f90.added([&] { FunparseStmt(t); }));
  }
  std::string cplusplus(tAsynt t) {
    cpinit();
    return lines_of(cc.added([&] { CPunparseVal(t); }));
  }
  // The lines between two.
  static std::string part(const std::string& lines, const std::string& from, const std::string& to) {
    const size_t start = lines.find(from) + from.size(), end = lines.find(to, start);
    return end - start > 3 ? lines.substr(start + 3, end - start - 6) : "";
  }
};

// Two scalars and two workers. Workers of the Fortran text are labels.
TEST_F(Schedules, WholeTexts) {
  const tAsynt t = schedule(symbols_of("a b"), symbols_of("a_out b_out"),
                            {{"a b", "b_out", "XSet[b_out,XTimes[a,b]]"}, {"a", "a_out", "XSet[a_out,a]"}});
  EXPECT_EQ(
      "subroutine zc_initialize_state (zc_init_state) | implicit none | integer error | real*8 zc_init_state(2) | "
      "real*8 zc_get_real | !Initialize the state vector | error = zc_get_real(zc_init_state(1), 'a') | "
      "error = zc_get_real(zc_init_state(2), 'b') | end | "
      "subroutine zc_assign_worker (zc_WorkerID, zc_yin, zc_yout) | implicit none | integer zc_WorkerID, zc_i | "
      "real*8 zc_yin(2), zc_yout(2) | real(zc_real) a | real(zc_real) b | real(zc_real) b_out | real(zc_real) a_out | "
      "go to (1, 2) zc_WorkerID | stop | 1      continue | a = zc_yin(1) | b = zc_yin(2) | b_out = a*b | "
      "zc_yout(2) = b_out | go to 99 | 2      continue | a = zc_yin(1) | a_out = a | zc_yout(1) = a_out | go to 99 | "
      "99       continue | end",
      fortran(t));
  EXPECT_EQ(
      "#include <stdlib.h> | extern \"C\" | { | void zc_initialize_state (double *); | "
      "void zc_assign_worker (int *, double *, double *); | int zc_get_real (double *, char *); | } | "
      "void zc_initialize_state (double zc_init_state[2]) | { | int error; | //  Initialize the state vector | "
      "error = zc_get_real(&zc_init_state[1], \"a\"); | error = zc_get_real(&zc_init_state[2], \"b\"); | } | "
      "void zc_assign_worker (int *zc_WorkerID, double zc_yin[2], double zc_yout[2]) | { | int zc_i; | double a; | "
      "double b; | double b_out; | double a_out; | switch (*zc_WorkerID) | { | case 1: | a = zc_yin[0]; | "
      "b = zc_yin[1]; | b_out = a*b; | zc_yout[1] = b_out; | break; | case 2: | a = zc_yin[0]; | a_out = a; | "
      "zc_yout[0] = a_out; | break; | default: | exit(1); | } | }",
      cplusplus(t));
}

TEST_F(Schedules, StartValues) {
  const auto starts = [&](const std::string& in) {
    const tAsynt t = schedule(symbols_of(in), symbols_of(""), {kIdle});
    return part(fortran(t), "!Initialize the state vector", "end") + " || " +
           part(cplusplus(t), "//  Initialize the state vector", "}");
  };
  EXPECT_EQ(
      "error = zc_get_real(zc_init_state(1), 'v[0]') | error = zc_get_real(zc_init_state(2), 'v[1]') | "
      "error = zc_get_real(zc_init_state(3), 'v[2]') | error = zc_get_real(zc_init_state(4), 'k') || "
      "error = zc_get_real(&zc_init_state[1], \"v[0]\"); | error = zc_get_real(&zc_init_state[2], \"v[1]\"); | "
      "error = zc_get_real(&zc_init_state[3], \"v[2]\"); | error = zc_get_real(&zc_init_state[4], \"k\");",
      starts("v k"));
  EXPECT_EQ("error = zc_get_real(zc_init_state(1), 'z') || error = zc_get_real(&zc_init_state[1], \"z\");", starts("z"))
      << "a complex value is one element";
  EXPECT_EQ(" || ", starts(""));
  // The quotes of a long name stay on one line.
  declare_types(xs(100) + ":real");
  EXPECT_TRUE(contains(starts(xs(100)), "\"" + xs(100) + "\""));
}

// The case of worker 1, whose code is empty: what goes in and what comes out.
TEST_F(Schedules, Transfers) {
  for (const auto& [order_in, order_out, in, out, in_f90, in_cc] : table<6>(R"(
      // What is no state variable is not read; an output is written in any case.
      a --> a_out --> b --> a_out b_out --> zc_yout(1) = a_out | zc_yout(-99999) = b_out --> \
          zc_yout[0] = a_out; | zc_yout[-100000] = b_out;
      a b --> v_out --> b a --> v_out --> \
          b = zc_yin(2) | a = zc_yin(1) | do zc_i = 1, 3 | zc_yout(zc_i) = v_out(zc_i) | end do --> b = zc_yin[1]; | \
          a = zc_yin[0]; | for (zc_i = 0; zc_i < 3; zc_i++) | zc_yout[zc_i] = v_out(zc_i+1);
      // A place counts variables, so that the array overlaps with what comes behind it.
      a --> a_out v_out b_out -->  --> v_out b_out --> \
          do zc_i = 1, 3 | zc_yout(zc_i+1) = v_out(zc_i) | end do | zc_yout(3) = b_out --> for (zc_i = 0; zc_i < 3; \
          zc_i++) | zc_yout[zc_i+1] = v_out(zc_i+1); | zc_yout[2] = b_out;
    )")) {
    const tAsynt t = schedule(symbols_of(order_in), symbols_of(order_out), {{in, out, kIdle[2]}});
    EXPECT_EQ(in_f90, part(fortran(t), "1      continue", "go to 99"));
    EXPECT_EQ(in_cc, part(cplusplus(t), "case 1:", "break;"));
  }
  // An array that is read is a loop in Fortran, and refused in C++, where its name is taken for a statement.
  const tAsynt t = schedule(symbols_of("a v"), symbols_of(""), {{"v", "", kIdle[2]}, {"w", "", kIdle[2]}});
  EXPECT_EQ("do zc_i = 1, 3 | v(zc_i) = zc_yin(zc_i+1) | end do", part(fortran(t), "1      continue", "go to 99"));
  EXPECT_TRUE(contains(message_of([&] { CPunparseVal(t); }), "code for type:\" Symbol \""));
}

// The size of the state, or the routines that fail, in Fortran and in C++.
TEST_F(Schedules, Sizes) {
  const auto sized = [](tAsynt dims) {
    return symbols({mSymbol(mAbsoluteSymbol(mArrayType(mRealType(nullptr), dims), NoPosition, "u", mExpression0()))});
  };
  const char* bad_size = "sheepsched, routine Size_of_array_type; pompsched, routine Size_of_array_type";
  const std::pair<tAsynt, std::string> rows[] = {
      {symbols_of("a v w k"), "9; 9"},
      {symbols_of("a s"), "sheepsched, routine Type_size; 2"},
      {symbols_of("p"), "sheepsched, routine Type_size; pompsched, routine Type_size"},
      {sized(mIntConst0()), "0; 0"},
      {sized(mIntConst1(mIntConst(2), mIntConst1(mExactIntConst("03"), mIntConst0()))), "6; 6"},
      {sized(list({mExactIntConst("5"), mIntConst(2)})), "10; 10"},
      {sized(list({mExactIntConst("5*^1")})), bad_size},
      {sized(list({typed_tree("k")})), bad_size},
      {sized(list({mExactIntConst("99999999999999999999")})), bad_size},
      {mExpression0(), "sheepsched, routine Symbol_list_size; pompsched, routine Symbol_list_size"}};
  // What is told, or what stands between two texts.
  const auto size = [](const std::string& report, const std::string& text, const std::string& from, const char* to) {
    if (!report.empty()) return report.substr(14, report.rfind(" failed") - 14);
    const size_t start = text.find(from) + from.size();
    return text.substr(start, text.find(to, start) - start);
  };
  for (const auto& [out, expected] : rows) {
    const tAsynt t = schedule(symbols_of(""), out, {kIdle});
    std::string in_f90, in_cc;
    const std::string f90_report = said([&] { in_f90 = fortran(t); });
    const std::string cc_report = said([&] { in_cc = cplusplus(t); });
    EXPECT_EQ(expected, size(f90_report, in_f90, "zc_yout(", ")") + "; " + size(cc_report, in_cc, "_state[", "]"));
  }
}

TEST_F(Schedules, OtherShapes) {
  const tAsynt a = symbols_of("a");
  const tAsynt good = InOutExpr1_InOutExpr(ParExec_InOutExprs(schedule(a, a, {kIdle})));
  for (tAsynt blocks : {mInOutExpr0(), mInOutExpr1(mInOutExpr(a, a, typed_tree("&")), mInOutExpr0()),
                        mInOutExpr1(mInOutExpr(a, a, mParExec(mInOutExpr0(), no_schedule())), mInOutExpr0()),
                        mInOutExpr1(good, mInOutExpr1(good, mInOutExpr0()))}) {
    const tAsynt t = mParExec(blocks, no_schedule());
    EXPECT_EQ("", fortran(t) + cplusplus(t) + f90.added([&] { FunparseVal(t); }));
  }
}

TEST_F(Schedules, ListsOfSymbols) {
  const tAsynt all = symbols_of("a b v");
  EXPECT_EQ("a, b, v", f90.added([&] { Funparse_symbols(all, ", "); }));
  EXPECT_EQ("a; b; v", cc.added([&] { CPunparse_symbols(all, "; "); }));
  EXPECT_EQ(2, Find_var_in_syms(typed_tree("b"), all));
  EXPECT_EQ(100000, Find_var_in_syms(typed_tree("k"), all));
  EXPECT_EQ("Error: module pompsched, routine Find_var_in_syms failed\n",
            message_of([] { Find_var_in_syms(typed_tree("k"), mExpression0()); }));
}

// Cost grows with the size: 50,000 variables, each looked up in lists of as many.
TEST_F(Schedules, ManyVariables) {
  std::vector<tAsynt> names;
  for (unsigned i = 1; i <= 50'000; i++) names.push_back(temporary(i, real_type_node));
  const tAsynt all = symbols(names), t = schedule(all, all, {kIdle});
  const tAsynt worker =
      InOutExpr1_InOutExpr(ParExec_InOutExprs(InOutExpr_Expr(InOutExpr1_InOutExpr(ParExec_InOutExprs(t)))));
  InOutExpr_In(worker) = InOutExpr_Out(worker) = all;
  EXPECT_TRUE(contains(fortran(t), "zc_yout(50000) = zc_T50000 |"));
  EXPECT_TRUE(contains(cplusplus(t), "zc_yout[49999] = zc_T50000; |"));
}

}  // namespace
}  // namespace oz
