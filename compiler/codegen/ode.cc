// Differential equations as assignments.
//
//   Derivative[1][x][t] == g[x[t], t]      the time argument of an unknown goes:   Derivative[1][x] == g[x, t]
//                                          time itself gets a fixed name:          Derivative[1][x] == g[x, oz_x]
//                                          the derivative becomes an output:       x_out = g[x, oz_x]
//
// The order of a derivative is not looked at, what is applied to time alone loses it though it be a function, and an
// equation of another form stays as it is and so ends the list of assignments for those who read it. All that is done
// as told and reported.

#include "ode.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_set>

#include "Errors.h"
#include "StringMem.h"
#include "efunc.h"
#include "ememory.h"
#include "oz.h"
#include "ozerrors.h"
#include "type.h"
#include "unparse.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*ode_Exit)() = leave;

namespace {

tAsynt E0 = nullptr, S0 = nullptr;  // no expressions, no symbols
tAsynt TimeVar = nullptr;
tAsynt InVars = nullptr, OutVars = nullptr;
tAsynt equation = nullptr;               // the one at work
std::unordered_set<std::string> solved;  // the variables that have an equation
string used_time = nullptr;              // the name under which time is used; null: it is not

[[noreturn]] void routine_failed(const char* routine) {
  std::fprintf(stderr, "Error: module ode, routine %s failed\n", routine);
  ode_Exit();
  std::abort();  // the exit hook must not return
}

void warn(const char* what) { warning_msg("%s: %s", what, unparse_string(equation)); }

// ---- equations

// Two sides with an equals sign between them.
struct Equation {
  tAsynt left = nullptr, right = nullptr;  // null: it is something else
  tPosition position = NoPosition;
};

// The element at a place of a list, from 0; null behind its end.
tAsynt element_at(tAsynt list, int place) {
  for (; place > 0 && Asynt_Kind(list) == kExpression1; place--) list = Expression1_Expressions(list);
  return Asynt_Kind(list) == kExpression1 ? Expression1_Expression(list) : nullptr;
}

bool has_length(tAsynt list, int n) { return element_at(list, n - 1) && !element_at(list, n); }

// The model language reads a == b as a chain of one comparison: a, the operator, b.
bool is_chained_equation(tAsynt t) {
  return Asynt_Kind(t) == kXInequality && has_length(XInequality_Expressions(t), 3) &&
         Asynt_Kind(element_at(XInequality_Expressions(t), 1)) == kXEqual;
}

Equation sides_of(tAsynt t) {
  if (Asynt_Kind(t) == kXEqual && has_length(Variadic_Expressions(t), 2))
    return {element_at(Variadic_Expressions(t), 0), element_at(Variadic_Expressions(t), 1), GetPos(t)};
  if (!is_chained_equation(t)) return {};
  const tAsynt list = XInequality_Expressions(t);
  return {element_at(list, 0), element_at(list, 2), GetPos(element_at(list, 1))};
}

// ---- time

void Remove_time2(tAsynt* t);

bool is_time(tAsynt t) { return Asynt_Kind(t) == kSymbol && IsEqualAsynt(t, TimeVar); }

bool is_application(tAsynt t) { return Asynt_Kind(t) == kSimpleFFE || Asynt_Kind(t) == kComplexFFE; }

tAsynt* head_of(tAsynt call) { return Asynt_Kind(call) == kSimpleFFE ? &SimpleFFE_Name(call) : &ComplexFFE_Name(call); }

// Whether t is something at the time: applied to the time variable and to nothing else.
bool is_at_time(tAsynt t) {
  return is_application(t) && has_length(FullFormExpression_Args(t), 1) &&
         is_time(element_at(FullFormExpression_Args(t), 0));
}

void remove_time_from_list(tAsynt list) {
  for (; Asynt_Kind(list) == kExpression1; list = Expression1_Expressions(list))
    Remove_time2(&Expression1_Expression(list));
}

// The name in the symbol information changes, and with it all uses of it. Only a plain name does.
void use_time(tAsynt symbol) {
  const tAsynt si = Symbol_SymInfo(symbol);
  if (Asynt_Kind(si) != kAbsoluteSymbol) return;
  if (Asynt_Kind(AbsoluteSymbol_Components(si)) == kExpression0) NamedSymbol_Name(si) = "oz_x";
  used_time = NamedSymbol_Name(si);
}

void remove_time_below(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kSimpleFFE:
    case kComplexFFE:
      remove_time_from_list(FullFormExpression_Args(t));
      Remove_time2(head_of(t));
      return;
    case kXIf:
      Remove_time2(&XIf_Condition(t));
      Remove_time2(&XIf_T(t));
      Remove_time2(&XIf_F(t));
      return;
    case kXInequality:
      if (is_chained_equation(t)) remove_time_from_list(XInequality_Expressions(t));
      return;
    case kNonAlgAuxiliary: Remove_time2(&NonAlgAuxiliary_Expression(t)); return;
    case kExpression1: remove_time_from_list(t); return;
    default: break;
  }
  if (Asynt_IsType(t, kUnary)) return Remove_time2(&Unary_Expression(t));
  if (Asynt_IsType(t, kCUnary)) return Remove_time2(&CUnary_Arg(t));
  if (Asynt_IsType(t, kVariadic)) return remove_time_from_list(Variadic_Expressions(t));
  if (Asynt_IsType(t, kCBinary)) {
    Remove_time2(&CBinary_Arg1(t));
    Remove_time2(&CBinary_Arg2(t));
  } else if (Asynt_IsType(t, kBinary)) {
    Remove_time2(&Binary_LHS(t));
    Remove_time2(&Binary_RHS(t));
  }
}

void Remove_time2(tAsynt* t) {
  if (is_at_time(*t)) {
    const tAsynt head = *head_of(*t);
    if (find_compilable(unparse_string(head))) warn("A function of time is taken for a variable");
    *t = head;
    return;
  }
  remove_time_below(*t);
  if (is_time(*t)) use_time(*t);
}

void Remove_time(tAsynt exprs, tAsynt time) {
  if (Asynt_Kind(time) != kExpression1) return;
  TimeVar = Expression1_Expression(time);
  for (; Asynt_Kind(exprs) == kExpression1; exprs = Expression1_Expressions(exprs)) {
    equation = Expression1_Expression(exprs);
    Remove_time2(&Expression1_Expression(exprs));
  }
  if (used_time) warning_msg("%s is not set by the schedule", used_time);
}

// ---- derivatives

string output_name(string name) {
  const std::string text = std::string(name) + "_out";
  return static_cast<string>(std::memcpy(emalloc(text.size() + 1), text.c_str(), text.size() + 1));
}

tAsynt output_symbol(tAsynt si) {
  return mAbsoluteSymbol(SymInfo_Type(si), SymInfo_Pos(si), output_name(NamedSymbol_Name(si)),
                         AbsoluteSymbol_Components(si));
}

// The output that belongs to an element such as x[1], or null: of the head's symbol, with the same arguments.
tAsynt output_element(tAsynt si) {
  const tAsynt call = AbsoluteNest_FullFormExpression(si);
  if (Asynt_Kind(call) != kSimpleFFE || Asynt_Kind(SimpleFFE_Name(call)) != kSymbol) return nullptr;
  const tAsynt head = Symbol_SymInfo(SimpleFFE_Name(call));
  if (Asynt_Kind(head) != kAbsoluteSymbol) return nullptr;
  return mAbsoluteNest(SymInfo_Type(si), SymInfo_Pos(si),
                       mSimpleFFE(FullFormExpression_Args(call), mSymbol(output_symbol(head))));
}

// Takes the symbol information of a state variable; that of its output takes its place.
void SeparateVars(tAsynt* s) {
  tAsynt output = nullptr;
  if (Asynt_Kind(*s) == kAbsoluteSymbol) output = output_symbol(*s);
  if (Asynt_Kind(*s) == kAbsoluteNest) output = output_element(*s);
  if (!output) {
    std::fprintf(stderr, "PrintSymName: %s, Kind: %d\n", unparse_string(mSymbol(*s)), Asynt_Kind(*s));
    return;
  }
  InVars = mSymbol1(mSymbol(*s), InVars);
  *s = output;
  OutVars = mSymbol1(mSymbol(output), OutVars);
}

bool is_derivative(tAsynt t) { return Asynt_Kind(t) == kDeriv && Asynt_Kind(Binary_RHS(t)) == kSymbol; }

bool is_first_order(tAsynt order) {
  if (Asynt_Kind(order) == kIntConst) return IntConst_Val(order) == 1;
  return Asynt_Kind(order) == kExactIntConst && std::strcmp(ExactIntConst_Val(order), "1") == 0;
}

// A derivative on the left becomes an assignment to its output. False for any other equation.
bool to_assignment(tAsynt* t) {
  const Equation e = sides_of(*t);
  if (!is_derivative(e.left)) return false;
  if (!is_first_order(Binary_LHS(e.left))) warn("A higher derivative is taken for the first one");
  const tAsynt variable = Binary_RHS(e.left);
  if (!solved.insert(unparse_string(variable)).second) warn("The variable has an equation already");
  SeparateVars(&Symbol_SymInfo(variable));
  *t = mXSet(mkConvPos(e.position), variable, e.right);
  return true;
}

// What stays as it is ends the list later on, but the variables behind it have been counted.
void Remove_deriv(tAsynt t) {
  for (; Asynt_Kind(t) == kExpression1; t = Expression1_Expressions(t)) {
    equation = Expression1_Expression(t);
    if (to_assignment(&Expression1_Expression(t))) continue;
    const Equation e = sides_of(equation);
    warn(is_derivative(e.right)
             ? "A derivative on the right is not solved; this equation and all behind it are left out"
             : "No derivative on the left; this equation and all behind it are left out");
  }
}

}  // namespace

void Beginode() {
  E0 = mExpression0();
  S0 = mSymbol0();
  InVars = OutVars = S0;
}

void Closeode() {}

tAsynt Transform_diffeqs(tAsynt t, tAsynt* i, tAsynt* o) {
  const bool listed = Asynt_IsType(t, kVariadic) && has_length(Variadic_Expressions(t), 2);
  const tAsynt equations = listed ? element_at(Variadic_Expressions(t), 0) : nullptr;
  const tAsynt time = listed ? element_at(Variadic_Expressions(t), 1) : nullptr;
  if (Asynt_Kind(equations) != kXList || Asynt_Kind(time) != kXList) routine_failed("Transform_diffeqs");
  used_time = nullptr;
  solved.clear();
  Remove_time(Variadic_Expressions(equations), Variadic_Expressions(time));
  Remove_deriv(Variadic_Expressions(equations));
  CheckAsynt(Variadic_Expressions(equations));
  *i = InVars;
  *o = OutVars;
  return Variadic_Expressions(equations);
}

}  // namespace oz
