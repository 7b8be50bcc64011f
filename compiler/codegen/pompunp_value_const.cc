// Constant expressions: 2 + 3 is written as 5, Sin[0.5] as its value.
//
// Every operation is asked whether it is constant before it is written. In 1 + 2*(3 + 4*(... x ...)) each level would
// look through all levels below it to find the x; so the operations on the way to an operand that is not constant are
// kept until they are written themselves.

#include <cmath>
#include <limits>
#include <unordered_set>
#include <vector>

#include "ozerrors.h"
#include "pompunp_parts.h"

namespace oz {
namespace {

std::unordered_set<tAsynt> not_constant;

// The last question ended at an operand that is no operation: asking again costs no more than it did.
bool ended_at_leaf = false;

bool is_constant_list(tAsynt list) {
  for (; CPis_cell(list); list = CPtail(list))
    if (!IsConstantExpr(CPhead(list))) return false;
  return IsConstantExpr(list);
}

// The same question about the operands; *leaf: there are none.
bool has_constant_operands(tAsynt t, bool* leaf) {
  const Asynt_tKind kind = Asynt_Kind(t);
  if (kind >= kCUnary && kind <= kXStandardDeviation) return IsConstantExpr(CUnary_Arg(t));
  switch (kind) {
    case kArcTan2: return IsConstantExpr(CBinary_Arg1(t)) && IsConstantExpr(CBinary_Arg2(t));
    case kXMinus: return IsConstantExpr(Unary_Expression(t));
    case kXSubtract:
    case kXPower:
    case kXDivide: return IsConstantExpr(Binary_LHS(t)) && IsConstantExpr(Binary_RHS(t));
    case kXPlus:
    case kXTimes: return is_constant_list(Variadic_Expressions(t));
    case kExpression1: return is_constant_list(t);
    default: *leaf = true; return false;
  }
}

bool is_folded_kind(Asynt_tKind kind) {
  if (kind == kXStringJoin || kind == kXList || kind == kXStringTake) return false;
  return (kind >= kCUnary && kind <= kXStandardDeviation) || (kind >= kBinary && kind <= kXPrepend) ||
         (kind >= kVariadic && kind <= kXImport);
}

bool fits_int(double value) {
  return value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
}

}  // namespace

// ---- questions

char IsConstantExpr(tAsynt expr) {
  switch (Asynt_Kind(expr)) {
    case kIntConst:
    case kRealConst:
    case kExactIntConst:
    case kExactRealConst:
    case kXPi:
    case kXE:
    case kXTrue:
    case kXFalse:
    case kExpression0: return 1;
    default: break;
  }
  if (!not_constant.empty() && not_constant.count(expr)) {
    ended_at_leaf = false;
    return 0;
  }
  bool leaf = false;
  if (has_constant_operands(expr, &leaf)) return 1;
  if (!leaf && !ended_at_leaf) not_constant.insert(expr);
  ended_at_leaf = leaf;
  return 0;
}

char IsIntegerExpr(tAsynt expr) {
  switch (Asynt_Kind(expr)) {
    case kXFloor:
    case kXCeiling:
    case kXRound:
    case kXIntegerPart:
    case kIntConst:
    case kExactIntConst:
    case kXTrue:
    case kXFalse:
    case kExpression0: return 1;
    case kXMinus: return IsIntegerExpr(Unary_Expression(expr));
    case kXPlus:
    case kXTimes: return IsIntegerExpr(Variadic_Expressions(expr));
    case kXSubtract:
    case kXPower: return IsIntegerExpr(Binary_LHS(expr)) && IsIntegerExpr(Binary_RHS(expr));
    case kExpression1:
      for (; CPis_cell(expr); expr = CPtail(expr))
        if (!IsIntegerExpr(CPhead(expr))) return 0;
      return IsIntegerExpr(expr);
    default: return 0;
  }
}

bool CPis_folded(tAsynt t) { return is_folded_kind(Asynt_Kind(t)) && IsConstantExpr(t); }

void CPforget_constants() {
  if (!not_constant.empty()) not_constant = {};
}

// ---- values

namespace {

double function_value(Asynt_tKind kind, double x) {
  switch (kind) {
    case kXSin: return std::sin(x);
    case kXArcSin: return std::asin(x);
    case kXSinh: return std::sinh(x);
    case kXArcSinh: return std::asinh(x);
    case kXCos: return std::cos(x);
    case kXArcCos: return std::acos(x);
    case kXCosh: return std::cosh(x);
    case kXArcCosh: return std::acosh(x);
    case kXTan: return std::tan(x);
    case kXArcTan: return std::atan(x);
    case kXTanh: return std::tanh(x);
    case kXArcTanh: return std::atanh(x);
    case kXExp: return std::exp(x);
    case kXLog: return std::log(x);
    case kXSqrt: return std::sqrt(x);
    case kXFloor: return std::floor(x);
    case kXCeiling: return std::ceil(x);
    case kXRound: return std::rint(x);
    case kXCot: return 1 / std::tan(x);
    case kXCoth: return 1 / std::tanh(x);
    case kXSec: return 1 / std::cos(x);
    case kXSech: return std::cosh(1 / x);  // not 1/cosh(x), which the same function is where it is not constant
    case kXCsc: return 1 / std::sin(x);
    case kXCsch: return 1 / std::sinh(x);
    case kXArcCot: return std::atan(1 / x);
    case kXArcCoth: return std::atanh(1 / x);
    case kXIntegerPart: return std::trunc(x);
    case kXFractionalPart: return x - std::trunc(x);
    case kXN: return x;
    default: die_msg("Found non-implemented node for  CPevaluate %s", Asynt_NodeName(kind));
  }
}

}  // namespace

double CPevaluate(tAsynt expr) {
  const Asynt_tKind kind = Asynt_Kind(expr);
  switch (kind) {
    case kArcTan2: return std::atan2(CPevaluate(CBinary_Arg2(expr)), CPevaluate(CBinary_Arg1(expr)));
    case kXMinus: return -CPevaluate(Unary_Expression(expr));
    case kXSubtract: return CPevaluate(Binary_LHS(expr)) - CPevaluate(Binary_RHS(expr));
    case kXDivide: return CPevaluate(Binary_LHS(expr)) / CPevaluate(Binary_RHS(expr));
    case kXPower: return std::pow(CPevaluate(Binary_LHS(expr)), CPevaluate(Binary_RHS(expr)));
    case kXPlus:
    case kXTimes: return CPevaluateVariadic(expr, Variadic_Expressions(expr));
    case kIntConst: return IntConst_Val(expr);
    case kRealConst: return RealConst_Val(expr);
    case kExactIntConst: return static_cast<double>(alg_atoi(ExactIntConst_Val(expr)));
    case kExactRealConst: return alg_atof(ExactRealConst_Val(expr));
    case kXPi: return 3.141592653589793;
    case kXE: return 2.718281828459045;
    case kXTrue: return 1;
    case kXFalse: return 0;
    default: return function_value(kind, Asynt_IsType(expr, kCUnary) ? CPevaluate(CUnary_Arg(expr)) : 0);
  }
}

// From the right end: a + (b + (c + 0)), whose last bits may differ from those of ((a + b) + c).
double CPevaluateVariadic(tAsynt parent, tAsynt list) {
  const bool plus = Asynt_Kind(parent) == kXPlus;
  std::vector<double> values;
  for (; CPis_cell(list); list = CPtail(list)) values.push_back(CPevaluate(CPhead(list)));
  if (Asynt_Kind(list) != kExpression0 || (!plus && Asynt_Kind(parent) != kXTimes))
    die_msg("Bad args CPevaluateVariadic");
  double result = plus ? 0 : 1;
  for (; !values.empty(); values.pop_back()) result = plus ? values.back() + result : values.back() * result;
  return result;
}

// A whole number that no int holds is written as a real one is.
void CPevaluateAndUnparse(tAsynt expr) {
  const bool whole = IsIntegerExpr(expr);
  const double value = whole ? std::rint(CPevaluate(expr)) : CPevaluate(expr);
  if (whole && fits_int(value))
    cpoutput_int(static_cast<int>(value));
  else
    cpoutput_real(value);
}

bool CPwrite_folded(tAsynt t) {
  const Asynt_tKind kind = Asynt_Kind(t);
  if (is_folded_kind(kind)) {
    if (IsConstantExpr(t)) {
      CPevaluateAndUnparse(t);
      return true;
    }
  } else if (kind != kXMinus && kind != kArcTan2) {
    return false;
  }
  if (!not_constant.empty()) not_constant.erase(t);
  return false;
}

bool CPfolded_minus(tAsynt t) {
  if (!IsIntegerExpr(t)) return false;
  const double value = std::rint(CPevaluate(t));
  return fits_int(value) && value < 0;
}

}  // namespace oz
