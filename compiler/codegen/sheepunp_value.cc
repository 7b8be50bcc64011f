// Expressions of the Fortran generator.
//
// Most kinds are one form: a text with the operands in it, each put in parentheses if it binds no tighter than the
// number says. ArcSinh[a + b] by "log(@6+sqrt(@9**2+1))" is
//
//   log((a+b)+sqrt((a+b)**2+1))
#include <cstring>

#include "Errors.h"
#include "ozerrors.h"
#include "pompunp.h"
#include "sheepout.h"
#include "sheepsched.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"
#include "type.h"
#include "unparse.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*sheepunp_Exit)() = leave;

void sheepunp_abort(const char* routine) {
  std::fprintf(stderr, "Error: module sheepunp, routine %s failed\n", routine);
  sheepunp_Exit();
  std::abort();
}

// ---- precedence

namespace {

// A negative number is written with its sign, and so binds as a negation does.
int constant_pri(bool negative) { return negative ? 7 : 11; }

}  // namespace

int Fpri(tAsynt t) {
  for (;;) {
    if (Asynt_IsType(t, kTypeConversion))
      t = TypeConversion_Expression(t);
    else if (Asynt_IsType(t, kAlgAuxiliary))
      t = AlgAuxiliary_Expression(t);
    else
      break;
  }
  switch (Asynt_Kind(t)) {
    case kXSet: return 1;
    case kXOr: return 2;
    case kXAnd: return 3;
    case kXNot: return 4;
    case kXEqual:
    case kXUnequal:
    case kXGreater:
    case kXLess:
    case kXGreaterEqual:
    case kXLessEqual:
    case kXInequality: return 5;
    case kXSubtract:
    case kXPlus: return 6;
    case kXMinus: return 7;
    case kIntConst: return constant_pri(IntConst_Val(t) < 0);
    case kRealConst: return constant_pri(RealConst_Val(t) < 0);
    case kExactIntConst: return constant_pri(*ExactIntConst_Val(t) == '-');
    case kExactRealConst: return constant_pri(*ExactRealConst_Val(t) == '-');
    case kXTimes:
    case kXDivide:
    case kXArcTanh:  // the rest is written as quotients
    case kXCot:
    case kXCoth:
    case kXArcCoth:
    case kXSec:
    case kXSech:
    case kXCsc:
    case kXCsch: return 8;
    case kXPower: return 9;
    default:
      return Asynt_IsType(t, kConstant) || Asynt_IsType(t, kSymbol) || Asynt_IsType(t, kFullFormExpression) ? 11 : 10;
  }
}

// ---- lists

void Funparse_exprs(tAsynt list, const char* sep) {
  for (; Is_cell(list); list = Expression1_Expressions(list)) {
    FunparseVal(Expression1_Expression(list));
    if (Is_cell(Expression1_Expressions(list))) foutput(sep);
  }
}

void Refuse_form(tAsynt t, const char* expected, const char* passed) {
  die_msg(
      "sheepunp: NEW BEHAVIOUR: %s expected in a place where a %s is passed.  "
      "Can't perform FunparseStmt to unparse node type: %s, CODE: %s",
      expected, passed, Asynt_NodeName(Asynt_Kind(t)), t ? unparse_string(t) : "");
}

namespace {

[[noreturn]] void no_expression(tAsynt t) { Refuse_form(t, "An expression", "statement"); }

// ---- forms

void piece(const char* from, const char* to) {
  if (from != to) foutput(std::string(from, to));
}

// Writes a form: "@6" is the first operand in parentheses if it binds no tighter than 6, "#6" the second one. A point
// in the place of the number is the binding of the node itself.
void write_form(const char* form, tAsynt node, tAsynt first, tAsynt second) {
  const char* start = form;
  for (const char* at = form; *at; at++) {
    if (*at != '@' && *at != '#') continue;
    piece(start, at);
    const int pri = at[1] == '.' ? Fpri(node) : at[1] - '0';
    funparse_pri(*at == '@' ? first : second, pri);
    start = ++at + 1;
  }
  foutput(start);
}

// The forms of functions with one argument that have no name in Fortran or take more than their name.
const char* unary_form(Asynt_tKind kind) {
  switch (kind) {
    case kXArcSinh: return "log(@6+sqrt(@9**2+1))";
    case kXArcCosh: return "log(@6+sqrt(@9**2-1))";
    case kXArcTanh: return "0.5*log((1+@6)/(1-@6))";
    case kXArcCoth: return "0.5*log((@6+1)/(@6-1))";
    case kXCot: return "1/tan(@0)";
    case kXCoth: return "1/tanh(@0)";
    case kXSec: return "1/cos(@0)";
    case kXSech: return "1/cosh(@0)";
    case kXCsc: return "1/sin(@0)";
    case kXCsch: return "1/sinh(@0)";
    case kXArcCot: return "atan(1/@8)";
    case kXFloor: return "floor(real(@0))";
    case kXIntegerPart: return "int(@0)";
    case kXFractionalPart: return "(@0-real(int(@0)))";
    default: return nullptr;
  }
}

// Of functions with two arguments and of operators that are written as such.
const char* binary_form(Asynt_tKind kind) {
  switch (kind) {
    case kArcTan2: return "atan2(@0, #0)";
    case kXQuotient: return "floor(@0/#0)";
    case kXMod: return "mod(@0, #0)";
    case kXComplex: return "(@0, #0)";
    case kXAppend: return "zc_append(@0, #0)";
    case kXPrepend: return "zc_prepend(@0, #0)";
    default: return nullptr;
  }
}

// Name and argument of what Fortran has under one name.
void named_function(tAsynt t, tAsynt arg) {
  foutput_operator(t);
  foutput("(");
  FunparseVal(arg);
  foutput(")");
}

void infix(tAsynt t, tAsynt lhs, tAsynt rhs) {
  funparse_pri(lhs, Fpri(t));
  foutput_operator(t);
  funparse_pri(rhs, Fpri(t));
}

// ---- functions of one argument

// Which of the C++ generator's words; these functions reach no Fortran stream at all.
const char* complex_word(Asynt_tKind kind) {
  switch (kind) {
    case kXRe: return "Re(";
    case kXIm: return "Im(";
    case kXArg: return "Arg(";
    default: return "Conjugate(";
  }
}

// Goes through the C++ generator; without a C++ file the text is dropped.
void complex_function(tAsynt t) {
  if (!cpoutput_file) return;
  cpoutput(complex_word(Asynt_Kind(t)));
  CPunparseVal(CUnary_Arg(t));
  cpoutput(")");
}

// The first argument has the type of the second.
void sign(tAsynt t) {
  foutput("sign(1");
  foutput(Asynt_IsType(Find_type(&CUnary_Arg(t)), kRealType) ? ".0D0, " : ", ");
  funparse_pri(CUnary_Arg(t), Fpri(t));
  foutput(")");
}

void one_argument(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kXSin:
    case kXArcSin:
    case kXSinh:
    case kXCos:
    case kXArcCos:
    case kXCosh:
    case kXTan:
    case kXArcTan:
    case kXTanh:
    case kXExp:
    case kXLog:
    case kXSqrt:
    case kXAbs:
    case kXCeiling:
    case kXRound:
    case kXTranspose: return named_function(t, CUnary_Arg(t));
    case kXSign: return sign(t);
    case kXN: return FunparseVal(CUnary_Arg(t));
    case kXRe:
    case kXIm:
    case kXArg:
    case kXConjugate: return complex_function(t);
    default: break;
  }
  const char* form = unary_form(Asynt_Kind(t));
  if (!form) no_expression(t);
  write_form(form, t, CUnary_Arg(t), nullptr);
}

// ---- functions of two arguments

const char* const kExtract[] = {"zc_extract_N0(", "zc_extract_N1(", "zc_extract_N2(", "zc_extract_N3("};

// By the rank that is left.
void extract(tAsynt t) {
  if (!Asynt_IsType(CBinary_Arg2(t), kXList)) return error_msg("F90 unparser: Cannot unparse Extract[].\n");
  const int rank = ArrayRank(CBinary_Arg1(t)) - LengthExpressions(Variadic_Expressions(CBinary_Arg2(t)));
  if (rank >= 0 && rank <= 3) {
    foutput(kExtract[rank]);
  } else {
    foutput("! zc_extract(");
    error_msg("F90 unparser: Invalid arguments to Extract[].\n");
  }
  write_form("@0, #0)", t, CBinary_Arg1(t), CBinary_Arg2(t));
}

void outer_product(tAsynt t) {
  if (ArrayRank(CBinary_Arg1(t)) != 1 || ArrayRank(CBinary_Arg2(t)) != 1)
    return error_msg("F90 unparser: OuterProduct[] is only implemented for vectors.\n");
  write_form("zc_outer_product(@0, #0)", t, CBinary_Arg1(t), CBinary_Arg2(t));
}

void two_arguments(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kNaturalDivide: return infix(t, CBinary_Arg1(t), CBinary_Arg2(t));
    case kXExtract: return extract(t);
    case kOuterProduct: return outer_product(t);
    default: break;
  }
  const char* form = binary_form(Asynt_Kind(t));
  if (!form) no_expression(t);
  write_form(form, t, CBinary_Arg1(t), CBinary_Arg2(t));
}

// ---- operators of two operands

bool is_integer(tAsynt* t) { return Asynt_IsType(Find_base(Find_type(t)), kIntType); }

// Integers are divided as reals.
void divide(tAsynt t) {
  const bool integers = is_integer(&Binary_LHS(t)) && is_integer(&Binary_RHS(t));
  write_form(integers ? "real(@.)" : "@.", t, Binary_LHS(t), nullptr);
  foutput_operator(t);
  funparse_pri(Binary_RHS(t), Fpri(t));
}

// Drop[x, n] from an edge, Drop[x, {n, m}] from within.
void drop(tAsynt t) {
  if (ArrayRank(Binary_LHS(t)) != 1) return error_msg("F90 unparser: Drop[] must have a list as first argument.\n");
  const tAsynt dropped = Binary_RHS(t);
  const int length = Asynt_IsType(dropped, kXList) ? LengthExpressions(Variadic_Expressions(dropped)) : 0;
  const bool middle = length == 1 || length == 2;
  write_form(middle ? "zc_drop_middle(@0, " : "zc_drop_edge(@0, ", t, Binary_LHS(t), nullptr);
  if (middle)
    write_form("@0, #0)", t, Expression1_Expression(Variadic_Expressions(dropped)),
               LastExpression(Variadic_Expressions(dropped)));
  else
    write_form("@0)", t, dropped, nullptr);
}

void two_operands(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kXSubtract:
    case kXPower: return infix(t, Binary_LHS(t), Binary_RHS(t));
    case kXDivide: return divide(t);
    case kXDrop: return drop(t);
    default: break;
  }
  const char* form = binary_form(Asynt_Kind(t));
  if (!form) no_expression(t);
  write_form(form, t, Binary_LHS(t), Binary_RHS(t));
}

// ---- operators of any number of operands

// The operands with the operator between them.
void Funparse_exprs_pri(tAsynt list, int pri, tAsynt op) {
  for (; Is_cell(list); list = Expression1_Expressions(list)) {
    funparse_pri(Expression1_Expression(list), pri);
    if (Is_cell(Expression1_Expressions(list))) foutput_operator(op);
  }
  if (!Asynt_IsType(list, kExpression0))
    die_msg("F90 unparser: Bad expression %s.\n", list ? unparse_string(list) : "");
}

// What the operator gives without operands, or else the operands.
void sum(tAsynt t, const char* neutral) {
  if (Asynt_IsType(Variadic_Expressions(t), kExpression0)) return foutput(neutral);
  Funparse_exprs_pri(Variadic_Expressions(t), Fpri(t), t);
}

// A chain as pairs: a < b .and. b < c.
void Funparse_rel_expr(tAsynt list, int pri, tAsynt op) {
  for (; Is_cell(Expression1_Expressions(list)); list = Expression1_Expressions(list)) {
    const tAsynt rest = Expression1_Expressions(list);
    funparse_pri(Expression1_Expression(list), pri);
    foutput_operator(op);
    funparse_pri(Expression1_Expression(rest), pri);
    if (Is_cell(Expression1_Expressions(rest))) foutput(" .and. ");
  }
}

bool is_relation(tAsynt t) {
  return Asynt_IsType(t, kVariadic) && Asynt_Kind(t) >= kXEqual && Asynt_Kind(t) <= kXLessEqual;
}

// The same for a chain of operands and operators in turn.
void Funparse_ineq(tAsynt t) {
  tAsynt list = XInequality_Expressions(t);
  const int length = LengthExpressions(list);
  if (length < 3 || length % 2 == 0) die_msg("F90 unparser: Bad inequality.\n");
  while (Is_cell(Expression1_Expressions(list))) {
    const tAsynt op = Expression1_Expressions(list);
    const tAsynt rest = Expression1_Expressions(op);
    if (!is_relation(Expression1_Expression(op))) die_msg("F90 unparser: Bad inequality.\n");
    funparse_pri(Expression1_Expression(list), Fpri(t));
    foutput_operator(Expression1_Expression(op));
    funparse_pri(Expression1_Expression(rest), Fpri(t));
    if (Is_cell(Expression1_Expressions(rest))) foutput(" .and. ");
    list = rest;
  }
}

tAsynt first_of(tAsynt t) { return Expression1_Expression(Variadic_Expressions(t)); }
tAsynt second_of(tAsynt t) { return Expression1_Expression(Expression1_Expressions(Variadic_Expressions(t))); }
int operands_of(tAsynt t) { return LengthExpressions(Variadic_Expressions(t)); }

bool is_array_value(tAsynt* t) { return Is_array_type(Find_type(t)); }

// Whether both of two operands are arrays, which no operator of Fortran compares as wholes.
bool compares_arrays(tAsynt t) {
  if (operands_of(t) != 2) return false;
  tAsynt list = Variadic_Expressions(t);
  return is_array_value(&Expression1_Expression(list)) &&
         is_array_value(&Expression1_Expression(Expression1_Expressions(list)));
}

void relation(tAsynt t) {
  if (operands_of(t) < 2) return foutput(".TRUE.");
  if (Asynt_Kind(t) == kXEqual && compares_arrays(t))
    return write_form("zc_equal(@0, #0)", t, first_of(t), second_of(t));
  Funparse_rel_expr(Variadic_Expressions(t), Fpri(t), t);
}

void unequal(tAsynt t) {
  if (compares_arrays(t)) return write_form(".not. (zc_equal(@0, #0))", t, first_of(t), second_of(t));
  Funparse_exprs_pri(Variadic_Expressions(t), Fpri(t), t);
}

// The last two operands of a product.
void dot_pair(tAsynt t, tAsynt a, tAsynt b) {
  const bool vectors = ArrayRank(a) <= 1 && ArrayRank(b) <= 1;
  write_form(vectors ? "DOT_PRODUCT(@., #.)" : "MATMUL(@., #.)", t, a, b);
}

// Of more than two operands the first two are a scalar that the product of the rest is multiplied by.
void dot(tAsynt t) {
  if (operands_of(t) < 2) no_expression(t);
  tAsynt list = Variadic_Expressions(t);
  for (int left = operands_of(t); left > 2; left -= 2) {
    const tAsynt next = Expression1_Expressions(list);
    write_form("DOT_PRODUCT(@., #.)*", t, Expression1_Expression(list), Expression1_Expression(next));
    list = Expression1_Expressions(next);
  }
  if (!Is_cell(Expression1_Expressions(list))) return funparse_pri(Expression1_Expression(list), Fpri(t));
  dot_pair(t, Expression1_Expression(list), Expression1_Expression(Expression1_Expressions(list)));
}

// A function of two arguments nested over a list: open, element, between, rest, close; the last element in a form.
void nested(tAsynt list, const char* open, const char* between, const char* last_open, const char* last_close) {
  int depth = 0;
  for (; Is_cell(Expression1_Expressions(list)); list = Expression1_Expressions(list), depth++) {
    foutput(open);
    FunparseVal(Expression1_Expression(list));
    foutput(between);
  }
  foutput(last_open);
  FunparseVal(Expression1_Expression(list));
  foutput(last_close);
  for (; depth > 0; depth--) foutput(")");
}

// {1, 2}: zc_mkpc(1,zc_mkc(2)).
void funparse_array(tAsynt list) {
  if (!Is_cell(list)) sheepunp_abort("funparse_array");
  nested(list, "zc_mkpc(", ",", "zc_mkc(", ")");
}

void join(tAsynt t) {
  if (operands_of(t) < 2) no_expression(t);
  nested(Variadic_Expressions(t), "zc_join(", ", ", "", "");
}

void dimensions(tAsynt t) {
  switch (operands_of(t)) {
    case 1: return write_form("SHAPE(@0)", t, first_of(t), nullptr);
    case 2: return error_msg("F90 unparser: Dimensions[] with two parameters not implemented.\n");
    default: no_expression(t);
  }
}

// The greatest or least element of an array, or of two values.
void extremum(tAsynt t, const char* of_array, const char* of_two) {
  switch (operands_of(t)) {
    case 1: return write_form(of_array, t, first_of(t), nullptr);
    case 2: return write_form(of_two, t, first_of(t), second_of(t));
    default: no_expression(t);
  }
}

const char* const kCrossProduct[] = {"zc_crossprod_2(", "zc_crossprod_3(", "zc_crossprod_4("};

void cross(tAsynt t) {
  const int n = operands_of(t);
  if (n < 2) no_expression(t);
  if (n > 4) return error_msg("F90 unparser: Cross[] with more than four arguments not implemented.\n");
  foutput(kCrossProduct[n - 2]);
  Funparse_exprs(Variadic_Expressions(t), ", ");
  foutput(")");
}

void operands(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kXOr: return sum(t, ".FALSE.");
    case kXAnd: return sum(t, ".TRUE.");
    case kXPlus: return sum(t, "0");
    case kXTimes: return sum(t, "1");
    case kXEqual:
    case kXGreater:
    case kXLess:
    case kXGreaterEqual:
    case kXLessEqual: return relation(t);
    case kXUnequal: return unequal(t);
    case kXDot: return dot(t);
    case kXList: return funparse_array(Variadic_Expressions(t));
    case kXDimensions: return dimensions(t);
    case kXMax: return extremum(t, "MAXVAL(@0)", "MAX(@0, #0)");
    case kXMin: return extremum(t, "MINVAL(@0)", "MIN(@0, #0)");
    case kCross: return cross(t);
    case kXJoin: return join(t);
    case kXPart: return Funparse_part(t);
    default: no_expression(t);
  }
}

// ---- constants

// A number by its digits. The exponent of an exact number stands behind "*^" or "e".
void exact_number(const char* digits, const char* plain_end) {
  const std::string text = digits;
  size_t end = text.find("*^");
  const size_t skip = end == std::string::npos ? 1 : 2;
  if (skip == 1) end = text.find_first_of("eE");
  if (end == std::string::npos) return foutput(text + plain_end);
  foutput(text.substr(0, end) + "D" + text.substr(end + skip));
}

void text_constant(const char* text) {
  foutput("\"");
  foutput(text);
  foutput("\"");
}

void literal(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kIntConst: return foutput_int(IntConst_Val(t));
    case kRealConst: return foutput_real(RealConst_Val(t));
    case kStringConst: return text_constant(StringConst_Val(t));
    case kExactIntConst: return exact_number(ExactIntConst_Val(t), "");
    case kExactRealConst: return exact_number(ExactRealConst_Val(t), "D0");
    case kFilename: return foutput(Filename_Name(t));
    case kXPi:
    case kXI:
    case kXE:
    case kXTrue:
    case kXFalse: return foutput_operator(t);
    default: no_expression(t);
  }
}

}  // namespace

// ---- calls

namespace {

tAsynt called(tAsynt t) { return Asynt_IsType(t, kSimpleFFE) ? SimpleFFE_Name(t) : ComplexFFE_Name(t); }

// A function applied; a subroutine gives a statement, wherever it stands.
void application(tAsynt t) {
  const tAsynt typ = Called_type(t);
  if (IsSubroutine(typ)) return Funparse_call_statement(t);
  if (Asynt_IsType(typ, kMultiType))
    die_msg("F90 unparser: Found function returning multiple values in bad context.\n");
  Funparse_called_name(called(t));
  foutput("(");
  Funparse_exprs(FullFormExpression_Args(t), ", ");
  foutput(")");
}

}  // namespace

tAsynt Called_type(tAsynt application) { return Type_of(application); }

// A call can be of an element of an instance set, f[1][x]; it has one name.
void Funparse_called_name(tAsynt name) {
  if (Asynt_IsType(name, kSymbol)) return Foutput_name(Symbol_SymInfo(name));
  Foutput_nest_name(name);
  flush_mangled_str();
}

void Funparse_call_statement(tAsynt t) {
  foutput("call");
  foutput(" ");
  Funparse_called_name(called(t));
  foutput(" (");
  Funparse_exprs(FullFormExpression_Args(t), ", ");
  foutput(")");
  foutput("\n");
}

// ---- the entry point

void FunparseVal(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kComplexFFE:
    case kSimpleFFE: return application(t);
    case kAlgAuxiliary: return;
    case kNonAlgAuxiliary: return FunparseVal(NonAlgAuxiliary_Expression(t));
    case kGeneralConversion:
    case kBasicConversion:
    case kShapeConversion: return FunparseVal(TypeConversion_Expression(t));
    case kXMinus: return write_form("(-@.)", t, Unary_Expression(t), nullptr);
    case kXInequality: return Funparse_ineq(t);
    case kSymbol: return Foutput_name(Symbol_SymInfo(t));
    case kParExec: return Funparse_parel(t);
    default: break;
  }
  if (Asynt_IsType(t, kCUnary)) return one_argument(t);
  if (Asynt_IsType(t, kCBinary)) return two_arguments(t);
  if (Asynt_IsType(t, kUnary)) return named_function(t, Unary_Expression(t));
  if (Asynt_IsType(t, kBinary)) return two_operands(t);
  if (Asynt_IsType(t, kVariadic)) return operands(t);
  if (Asynt_IsType(t, kConstant)) return literal(t);
  no_expression(t);
}

}  // namespace oz
