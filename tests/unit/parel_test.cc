// Systems of differential equations: what becomes of the equations, and the block that they become, derived by hand.
//
// In the flat lists operands are numbered from the last to the first, and the assignments of a block come behind all
// temporaries in the reverse order of the equations.

#include "parel.h"

#include "cse.h"
#include "ode.h"
#include "sheepout.h"
#include "support.h"

namespace oz {
namespace {

struct Parel : Trees {
  Parel() {
    Beginparel();
    simple_code = 1;
    temp_no = 1;
  }
  ~Parel() override { simple_code = 0; }
};

tAsynt system_of(const std::string& equations, const std::string& time) {
  declare_types("t:real a:real x:real y:real z:real i:int b:bool f:real oz_x:real");
  return typed_tree("XList[XList[" + equations + "],XList" + (time.empty() ? "[{}]" : '[' + time + ']') + "]");
}

tAsynt block_of(tAsynt parexec) { return InOutExpr1_InOutExpr(ParExec_InOutExprs(parexec)); }

// "in -> out: in -> out: code", the system's lists and those of its worker.
std::string schedule_text(const std::string& equations, const std::string& time = "t") {
  temp_no = 1;
  const tAsynt parexec = Parallelize(system_of(equations, time));
  EXPECT_TRUE(CheckAsynt(parexec)) << equations;
  std::string text;
  for (tAsynt block : {block_of(parexec), block_of(InOutExpr_Expr(block_of(parexec)))})
    text += code_text(InOutExpr_In(block)) + " -> " + code_text(InOutExpr_Out(block)) + ": ";
  return text + code_text(InOutExpr_Expr(block_of(InOutExpr_Expr(block_of(parexec)))));
}

TEST_F(Parel, Systems) {
  for (const auto& [equations, schedule] : table<2>(R"(
      // What is no state variable comes first, then z, y, x in the order of the system's list. a*y is shared.
      XEqual[Deriv[1,x],XPlus[x[t],XTimes[a,y[t]]]],XEqual[Deriv[1,y],XTimes[a,y[t]]],XEqual[Deriv[1,z],z[t]] --> \
          {z,y,x} -> {z_out,y_out,x_out}: {a,a,z,y,y,x} -> {x_out,y_out,z_out}: (T1=XTimes[a,y];T2=XPlus[x,T1];\
          z_out=z;y_out=T1;x_out=T2)
      // A comparison of the model language.
      XInequality[Deriv[1,x],XEqual[{}],XMinus[x[t]]] --> {x} -> {x_out}: {x} -> {x_out}: (T1=XMinus[x];x_out=T1)
      // Conditions lose their time too.
      XEqual[Deriv[1,x],XIf[XGreater[x[t],a],XSin[x[t]],a]] --> \
          {x} -> {x_out}: {a,a,x,x} -> {x_out}: (T1=XSin[x];T2=XGreater[x,a];T3=XIf[T2,T1,a];x_out=T3)
      // The value takes the type of the variable.
      XEqual[Deriv[1,x],i] --> {x} -> {x_out}: {i} -> {x_out}: (x_out=GeneralConversion[i,int,real])
    )"))
    EXPECT_EQ("", message_of([&] { EXPECT_EQ(schedule, schedule_text(equations)); })) << equations;
}

// Each is done as told, with a warning.
TEST_F(Parel, WhatIsSilentlyWrongIsReported) {
  for (const auto& [equations, schedule, message] : table<3>(R"(
      XEqual[Deriv[1,x],XPlus[t,x[t]]] --> {x} -> {x_out}: {oz_x,x} -> {x_out}: (T1=XPlus[oz_x,x];x_out=T1) --> \
          oz_x is not set by the schedule
      XEqual[Deriv[2,x],x[t]] --> {x} -> {x_out}: {x} -> {x_out}: (x_out=x) --> \
          A higher derivative is taken for the first one: Derivative[2][x]==x
      XEqual[Deriv[1,x],a],XEqual[Deriv[1,x],x[t]] --> \
          {x,x} -> {x_out,x_out}: {a,x} -> {x_out,x_out}: (x_out=x;x_out=a) --> \
          The variable has an equation already: Derivative[1][x]==x
      // y is left out of the block, but not of the system.
      XEqual[Deriv[1,x],a],XEqual[a,1],XEqual[Deriv[1,y],a] --> {y,x} -> {y_out,x_out}: {a} -> {x_out}: (x_out=a) --> \
          No derivative on the left; this equation and all behind it are left out: a==1
      XEqual[x[t],Deriv[1,x]] --> {} -> {}: {} -> {}: () --> \
          A derivative on the right is not solved; this equation and all behind it are left out: x==Derivative[1][x]
    )")) {
    std::string text;
    EXPECT_EQ("W " + message, said([&] { text = schedule_text(equations); }));
    EXPECT_EQ(schedule, text) << equations;
  }
}

TEST_F(Parel, Refusals) {
  EXPECT_NE(std::string::npos,
            message_of([] { schedule_text("XEqual[Deriv[1,i],XSin[x]]"); }).find("Type mismatch for assignment."));
  for (const char* text :
       {"XList[XList[x]]", "XList[x,XList[t]]", "XList[XList[x],t]", "XList[XList[x],XList[t],x]", "x"})
    EXPECT_EQ("Error: module ode, routine Transform_diffeqs failed\n",
              message_of([&] { Parallelize(typed_tree(text)); }))
        << text;
}

std::string transformed(const std::string& equations, const std::string& time) {
  tAsynt in, out;
  Beginode();
  const std::string code = code_text(Transform_diffeqs(system_of(equations, time), &in, &out));
  return code_text(in) + code_text(out) + code;
}

TEST_F(Parel, Equations) {
  // Without a time variable applications stay.
  EXPECT_EQ("{x}{x_out}{x_out=f[t]}", transformed("XEqual[Deriv[1,x],f[t]]", ""));
  // Two arguments are no time argument, and t is renamed in them.
  EXPECT_EQ("Warning", message_of([] {
                         EXPECT_EQ("{x}{x_out}{x_out=f[oz_x,x]}", transformed("XEqual[Deriv[1,x],f[t,x[t]]]", "t"));
                       }).substr(10, 7));
  // An equation of three sides is none.
  EXPECT_NE("",
            message_of([] { EXPECT_EQ("{}{}{XEqual[Deriv[1,x],a,a]}", transformed("XEqual[Deriv[1,x],a,a]", "t")); }));
}

// x[1], declared as an element, has an element of x_out as its output.
TEST_F(Parel, ElementsOfANest) {
  const auto element = [] { return mSymbol(mAbsoluteNest(mRealType(nullptr), NoPosition, typed_tree("x[1]"))); };
  const tAsynt system = system_of("XEqual[Deriv[1,y],a]", "t");
  const tAsynt equation =
      Expression1_Expression(Variadic_Expressions(Expression1_Expression(Variadic_Expressions(system))));
  const tAsynt deriv = Expression1_Expression(Variadic_Expressions(equation));
  Binary_RHS(deriv) = element();
  const tAsynt parexec = Parallelize(system);
  const auto text = [](tAsynt list) { return std::string(unparse_string(Symbol1_Symbol(list))); };
  EXPECT_EQ("x[1]", text(InOutExpr_In(block_of(parexec))));
  EXPECT_EQ("x_out[1]", text(InOutExpr_Out(block_of(parexec))));

  Binary_RHS(deriv) = mSymbol(mTempSymbol(mRealType(nullptr), NoPosition, 3));
  Variadic_Expressions(Expression1_Expression(Variadic_Expressions(system))) = mExpression1(equation, mExpression0());
  Expression1_Expression(Variadic_Expressions(Expression1_Expression(Variadic_Expressions(system)))) = equation;
  EXPECT_EQ("PrintSymName: Temp_3, Kind: 257\n", message_of([&] { Parallelize(system); }));
}

TEST_F(Parel, PlacesInLists) {
  declare_types("a:real b:real c:real d:real");
  tAsynt list = mSymbol0();
  for (const char* name : {"c", "b", "a"}) list = mSymbol1(typed_tree(name), list);
  EXPECT_EQ(1, Locate_symbol(typed_tree("a"), list));
  EXPECT_EQ(3, Locate_symbol(typed_tree("c"), list));
  EXPECT_EQ(-99997, Locate_symbol(typed_tree("d"), list));
  EXPECT_EQ("Error: module parel, routine Locate_symbol failed\n",
            message_of([&] { Locate_symbol(typed_tree("d"), mExpression0()); }));
}

// No list is walked per element, and nothing is nested by the number of equations.
TEST_F(Parel, ManyEquations) {
  constexpr int n = 100'000;
  std::string names = "t:real ";
  for (int i = 0; i < n; i++) names += "x" + std::to_string(i) + ":real ";
  declare_types(names);
  std::string equations;
  for (int i = 0; i < n; i++) {
    const std::string x = "x" + std::to_string(i);
    equations.append(i ? "," : "").append("XEqual[Deriv[1,").append(x).append("],XTimes[2,").append(x).append("]]");
  }
  const tAsynt parexec = Parallelize(typed_tree("XList[XList[" + equations + "],XList[t]]"));
  int places = 0;
  for (tAsynt l = InOutExpr_In(block_of(parexec)); Asynt_Kind(l) == kSymbol1; l = Symbol1_Symbols(l)) places++;
  EXPECT_EQ(n, places);
  EXPECT_EQ("x99999", code_text(Symbol1_Symbol(InOutExpr_In(block_of(InOutExpr_Expr(block_of(parexec)))))));
}

TEST_F(Parel, OneListOfASystem) {
  EXPECT_EQ("(T1=XMinus[x];x_out=T1)", code_text(do_cse(system_of("XEqual[Deriv[1,x],XMinus[x[t]]]", "t"))));
}

TEST_F(Parel, MakeCodeWritesASchedule) {
  OutputStream out;
  foutput_file = out.f;
  finit_output();
  fout_set(fout_implementation);
  make_code(system_of("XEqual[Deriv[1,x],XSin[x[t]]]", "t"));
  foutput_file = nullptr;
  const std::string text = out.str();
  EXPECT_TRUE(text.starts_with("subroutine zc_initialize_state (zc_init_state)\n")) << text;
  for (const char* line : {"x = zc_yin(1)\n", "zc_T1 = sin(x)\n", "x_out = zc_T1\n", "zc_yout(1) = x_out\n"})
    EXPECT_TRUE(contains(text, line)) << text;
}

}  // namespace
}  // namespace oz
