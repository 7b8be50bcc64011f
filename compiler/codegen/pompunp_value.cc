// Expressions as C++ text.
//
// Scalars become plain expressions, arrays calls of the array library; a constant operation becomes its value:
//
//   a - b*(2 + 3)        a-b*5
//   {1, 2} + v           " make_lumenN(2, 1, 2 )+v"
//   If[c, x, y]          " (( c ) ? ( x ) : ( y )) "
//
// Each piece of text goes out in one call, and lines break between calls.

#include <vector>

#include "ozerrors.h"
#include "pompsched.h"
#include "pompunp_fn.h"
#include "pompunp_parts.h"
#include "unparse.h"

namespace oz {

// ---- lists

int CPlength(tAsynt list, int limit) {
  int n = 0;
  for (; n < limit && CPis_cell(list); list = CPtail(list)) n++;
  return n;
}

tAsynt CPelement(tAsynt list, int n) {
  for (; n > 1; n--) list = CPtail(list);
  return CPhead(list);
}

// ---- types

tAsynt CParray_of(tAsynt typ) {
  if (Asynt_IsType(typ, kMultiType)) {
    const tAsynt types = MultiType_Types(typ);
    if (Asynt_Kind(types) != kType1 || Asynt_Kind(Type1_Types(types)) == kType1) return nullptr;
    typ = Type1_Type(types);
  }
  return Asynt_IsType(typ, kArrayType) ? typ : nullptr;
}

char Is_array_type(tAsynt typ) { return CParray_of(typ) != nullptr; }

char Is_complex0(tAsynt typ) {
  return Asynt_IsType(Asynt_IsType(typ, kArrayType) ? ArrayType_BasicType(typ) : typ, kComplexType);
}

char Is_mulret_type(tAsynt typ) {
  if (!Asynt_IsType(typ, kMultiType)) return 0;
  const tAsynt types = MultiType_Types(typ);
  return Asynt_Kind(types) == kType1 && Asynt_Kind(Type1_Types(types)) == kType1;
}

bool CPis_int_based(tAsynt typ) {
  const tAsynt array = CParray_of(typ);
  return Asynt_IsType(array ? ArrayType_BasicType(array) : typ, kIntType);
}

std::string CPsource(tAsynt t) { return t ? unparse_string(t) : ""; }

// ---- precedence

namespace {

bool is_negative_constant(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kIntConst: return IntConst_Val(t) < 0;
    case kRealConst: return RealConst_Val(t) < 0;
    case kExactIntConst: return ExactIntConst_Val(t)[0] == '-';
    case kExactRealConst: return ExactRealConst_Val(t)[0] == '-';
    default: return false;
  }
}

}  // namespace

int CPpri(tAsynt t) {
  while (Asynt_IsType(t, kTypeConversion)) t = TypeConversion_Expression(t);
  switch (Asynt_Kind(t)) {
    case kXSet: return 1;
    case kXOr: return 2;
    case kXAnd:
    case kXInequality: return 3;
    case kXEqual:
    case kXUnequal: return 4;
    case kXGreater:
    case kXLess:
    case kXGreaterEqual:
    case kXLessEqual: return 5;
    case kXSubtract:
    case kXPlus: return 6;
    case kXTimes:
    case kXDivide:
    case kXCot:  // these four are written as divisions
    case kXCoth:
    case kXSec:
    case kXSech:
    case kXCsc:
    case kXCsch: return 7;
    case kXMinus:
    case kXNot: return 8;
    case kSymbol: return 11;
    default: break;
  }
  if (Asynt_IsType(t, kConstant)) return is_negative_constant(t) ? 8 : 11;
  return Asynt_IsType(t, kFullFormExpression) ? 11 : 10;
}

// ---- lists of values

void CPunparse_exprs(tAsynt t, const char* sep) {
  for (bool first = true; CPis_cell(t); t = CPtail(t), first = false) {
    if (!first) cpoutput(sep);
    CPunparseVal(CPhead(t));
  }
}

namespace {

[[noreturn, gnu::noinline]] void bad_exprs(tAsynt t) {
  die_msg("Error in fortran unparser, bad exprs: %s", CPsource(t).c_str());
}

}  // namespace

void CPunparse_exprs_pri(tAsynt t, int parent_pri, const char* sep) {
  for (bool first = true; CPis_cell(t); t = CPtail(t), first = false) {
    if (!first) cpoutput(sep);
    cpunparse_pri(CPhead(t), parent_pri);
  }
  if (Asynt_Kind(t) != kExpression0) bad_exprs(t);
}

// ---- forms that have a text of their own

namespace {

// The b of a + I b.
tAsynt imaginary_part(tAsynt terms) {
  if (!CPhas_length(terms, 2)) return nullptr;
  const tAsynt second = CPelement(terms, 2);
  if (Asynt_Kind(second) != kXTimes) return nullptr;
  const tAsynt factors = Variadic_Expressions(second);
  if (!CPhas_length(factors, 2) || Asynt_Kind(CPhead(factors)) != kXI) return nullptr;
  return CPelement(factors, 2);
}

// The cell of the last factor that is an array; null without one.
tAsynt last_array(tAsynt factors) {
  tAsynt found = nullptr;
  for (; CPis_cell(factors); factors = CPtail(factors))
    if (CPis_array(CPhead(factors))) found = factors;
  return found;
}

// Whether a product begins with an array and has another one, so that its operator would not multiply the elements.
bool is_array_product(tAsynt t) {
  const tAsynt factors = Variadic_Expressions(t);
  return CPis_cell(factors) && CPis_array(CPhead(factors)) && last_array(factors) != factors;
}

// Whether the operands of a quotient are both arrays or both ints.
bool is_special_quotient(tAsynt t) {
  const tAsynt lt = CPtype(Binary_LHS(t));
  const tAsynt rt = CPtype(Binary_RHS(t));
  return (Is_array_type(lt) && Is_array_type(rt)) || (CPis_int_based(lt) && CPis_int_based(rt));
}

// ---- signs

// What stands first in the text of an operation, and the level that it is bracketed at; null if that is text of the
// operation's own, or an operand that a sign is never the start of.
tAsynt first_operand(tAsynt t, int* pri) {
  const auto list = [t] { return Variadic_Expressions(t); };
  const auto first = [](tAsynt l) { return CPis_cell(l) ? CPhead(l) : nullptr; };
  *pri = 0;
  if (Asynt_IsType(t, kTypeConversion)) return TypeConversion_Expression(t);
  switch (Asynt_Kind(t)) {
    case kNonAlgAuxiliary: return NonAlgAuxiliary_Expression(t);
    case kXN: return CPis_int_based(CPtype(CUnary_Arg(t))) ? nullptr : CUnary_Arg(t);
    case kXRe:
    case kXConjugate: return Is_complex0(CPtype(CUnary_Arg(t))) ? nullptr : CUnary_Arg(t);
    case kXSubtract: *pri = 6; return Binary_LHS(t);
    case kXDivide: *pri = 7; return is_special_quotient(t) ? nullptr : Binary_LHS(t);
    case kXPlus: *pri = 6; return imaginary_part(list()) ? nullptr : first(list());
    case kXTimes: *pri = 7; return is_array_product(t) ? nullptr : first(list());
    default: return nullptr;
  }
}

bool begins_with_minus(tAsynt t) {
  for (int pri = 0; t && CPpri(t) > pri; t = first_operand(t, &pri)) {
    if (CPis_folded(t)) return CPfolded_minus(t);
    if (Asynt_Kind(t) == kXMinus) return true;
    if (Asynt_IsType(t, kConstant)) return Asynt_Kind(t) != kRealConst && is_negative_constant(t);
  }
  return false;
}

// The operand behind a "-": C++ would take "--" for another operator.
void write_behind_minus(tAsynt t, int pri) {
  if (CPpri(t) > pri && begins_with_minus(t))
    CPwrite_call("(", t);
  else
    cpunparse_pri(t, pri);
}

bool write_minus(tAsynt t) {
  cpoutput(cpoperator_name[kXMinus]);
  write_behind_minus(Unary_Expression(t), 8);
  return true;
}

bool write_subtract(tAsynt t) {
  cpunparse_pri(Binary_LHS(t), 6);
  cpoutput(cpoperator_name[kXSubtract]);
  write_behind_minus(Binary_RHS(t), 6);
  return true;
}

// ---- leaves

bool write_symbol(tAsynt t) {
  CPoutput_symbol(Symbol_SymInfo(t));
  return true;
}

bool write_text(const char* s) {
  CPwrite(s);
  return true;
}

bool write_string(tAsynt t) {
  cp_unbreakable_mode = 1;
  cpoutput_double_quote();
  cpoutput(StringConst_Val(t));
  cpoutput_double_quote();
  cp_unbreakable_mode = 0;
  return true;
}

// ---- calls

[[noreturn, gnu::noinline]] void several_results(tAsynt name) {
  const tAsynt symbol = CPsymbol_info(name);
  die_msg_pos2(symbol ? SymInfo_Pos(symbol) : NoPosition,
               "The function returns multiple values is called in expression. Write a separate statement instead.");
}

bool write_application(tAsynt t, tAsynt typ) {
  const bool simple = Asynt_Kind(t) == kSimpleFFE;
  const tAsynt name = simple ? SimpleFFE_Name(t) : ComplexFFE_Name(t);
  if (simple && Is_mulret_type(typ)) several_results(name);
  CPunparseVal(name);
  return CPwrite_list_call(" (", FullFormExpression_Args(t));
}

// name(a), by the kind's own spelling.
bool write_function(tAsynt t, tAsynt arg) {
  cpoutput(cpoperator_name[Asynt_Kind(t)]);
  return CPwrite_call("(", arg);
}

bool write_bracketed_call(const char* before, tAsynt arg, int pri) {
  cpoutput(before);
  cpunparse_pri(arg, pri);
  cpoutput(")");
  return true;
}

// A part of a complex number; what it is of a real one.
bool write_complex_part(const char* before, tAsynt arg, const char* of_real) {
  if (Is_complex0(CPtype(arg))) return CPwrite_call(before, arg);
  if (of_real) return write_text(of_real);
  CPunparseVal(arg);
  return true;
}

bool write_n(tAsynt arg) {
  const tAsynt typ = CPtype(arg);
  if (CPis_int_based(typ))
    CPto_double(arg, typ);
  else
    CPunparseVal(arg);
  return true;
}

bool write_type_information(tAsynt t) {
  const tAsynt arg = CUnary_Arg(t);
  CPwrite_call("  /* GenTypeInformation[", arg, " ]= ");
  cpoutput(CPsource(CPtype(arg)));
  return CPwrite_call("*/  ", arg, "");
}

// ---- two operands

bool write_quotient(const char* of_arrays, const char* of_scalars, tAsynt t) {
  const tAsynt a = CBinary_Arg1(t);
  const tAsynt b = CBinary_Arg2(t);
  if (CPis_array(a) && CPis_array(b)) return CPwrite_call2(of_arrays, a, ", ", b, "))");
  cpoutput(of_scalars);
  cpunparse_pri(a, 7);
  return write_bracketed_call(" / ", b, 7);
}

// The conversion of the left operand keeps the division of ints from truncating.
bool write_divide(tAsynt t) {
  const tAsynt a = Binary_LHS(t);
  const tAsynt b = Binary_RHS(t);
  const tAsynt ta = CPtype(a);
  const tAsynt tb = CPtype(b);
  const bool arrays = Is_array_type(ta) && Is_array_type(tb);
  if (arrays) cpoutput("ElemQuotient (");
  if (CPis_int_based(ta) && CPis_int_based(tb))
    CPto_double(a, ta);
  else if (arrays)
    CPunparseVal(a);
  else
    cpunparse_pri(a, 7);
  if (arrays) return CPwrite_call(", ", b);
  cpoutput(cpoperator_name[kXDivide]);
  cpunparse_pri(b, 7);
  return true;
}

// x^2 is (x*x), up to the fourth power.
long small_power(tAsynt t) {
  const tAsynt exponent = Binary_RHS(t);
  if (Asynt_Kind(Binary_LHS(t)) != kSymbol || Asynt_Kind(exponent) != kExactIntConst) return 0;
  if (CPis_array(Binary_LHS(t))) return 0;
  const long n = alg_atoi(ExactIntConst_Val(exponent));
  return n >= 2 && n <= 4 ? n : 0;
}

bool write_power(tAsynt t) {
  long n = small_power(t);
  if (n == 0) return CPwrite_call2("pow(", Binary_LHS(t), ", ", Binary_RHS(t));
  cpoutput("(");
  for (; n > 1; n--) CPwrite_call("", Binary_LHS(t), cpoperator_name[kXTimes]);
  return CPwrite_call("", Binary_LHS(t));
}

// ---- several operands

bool write_exprs_or(const char* of_none, tAsynt t, int pri) {
  const tAsynt list = Variadic_Expressions(t);
  if (Asynt_Kind(list) == kExpression0) return write_text(of_none);
  CPunparse_exprs_pri(list, pri, cpoperator_name[Asynt_Kind(t)]);
  return true;
}

// a < b < c compares neighbours: a < b && b < c.
bool CPunparse_rel_expr(tAsynt parent, tAsynt list) {
  if (!CPis_cell(list) || !CPis_cell(CPtail(list))) return write_text("1");
  const int pri = CPpri(parent);
  for (;;) {
    cpunparse_pri(CPhead(list), pri);
    cpoutput(cpoperator_name[Asynt_Kind(parent)]);
    list = CPtail(list);
    cpunparse_pri(CPhead(list), pri);
    if (!CPis_cell(CPtail(list))) return true;
    cpoutput(" && ");
  }
}

bool write_plus(tAsynt t) {
  const tAsynt terms = Variadic_Expressions(t);
  const tAsynt b = imaginary_part(terms);
  return b ? CPwrite_call2("lm_complex(", CPhead(terms), ", ", b) : write_exprs_or("0", t, 6);
}

// A product that begins with an array and has another one: ElemProduct (v, w*a).
bool write_array_product(tAsynt factors) {
  const tAsynt last = last_array(factors);
  int open = 0;
  for (; CPis_cell(factors) && factors != last && CPis_array(CPhead(factors)); factors = CPtail(factors), open++)
    CPwrite_call("ElemProduct (", CPhead(factors), ", ");
  CPunparse_exprs_pri(factors, 7, cpoperator_name[kXTimes]);
  for (; open > 0; open--) cpoutput(")");
  return true;
}

bool write_times(tAsynt t, tAsynt typ) {
  if (CPis_cell(Variadic_Expressions(t)) && Is_array_type(typ)) return write_array_product(Variadic_Expressions(t));
  return write_exprs_or("1", t, 7);
}

// An operand, an operator, an operand, and so on.
bool CPunparse_ineq(tAsynt list) {
  for (bool first = true;; first = false) {
    if (!CPis_cell(list)) break;
    const tAsynt a = CPhead(list);
    list = CPtail(list);
    if (Asynt_Kind(list) == kExpression0) return true;
    if (!CPis_cell(list) || !CPis_cell(CPtail(list))) break;
    const tAsynt op = CPhead(list);
    list = CPtail(list);
    if (!first) cpoutput(" && ");
    cpoutput("(");
    cpunparse_pri(a, CPpri(op));
    write_bracketed_call(cpoperator_name[Asynt_Kind(op)], CPhead(list), CPpri(op));
  }
  die_msg("bad ineq in C++ unparser.");
}

// ---- alternatives and sequences

bool write_if(tAsynt t) {
  CPwrite_call(" (( ", XIf_Condition(t), " ) ? ( ");
  return CPwrite_call2("", XIf_T(t), " ) : ( ", XIf_F(t), " )) ");
}

// Where no test holds the last value stands again, since there is no undefined value.
bool CPunparse_which_expr(tAsynt tests, tAsynt prevstat) {
  int open = 0;
  for (; CPis_cell(tests); tests = CPtail(CPtail(tests)), open++) {
    if (!CPis_cell(CPtail(tests))) die_msg("Bad arguments to Which[bool, expr,...], even number of parameters.\n");
    prevstat = CPelement(tests, 2);
    CPwrite_call("( (", CPhead(tests), ") ? (");
    CPwrite_call("", prevstat, ") : ");
  }
  CPwrite_call(" ( ", prevstat, " ) ");
  for (; open > 0; open--) cpoutput(")");
  return true;
}

// The marker stops the C++ compiler.
[[gnu::noinline]] void write_large_statement(tAsynt t, bool before_last) {
  CPunparseStmt(t);
  warning_msg(
      "Only simple assignements or output statements (small statements) can be used within compound expressions. "
      "Code: %s",
      CPsource(t).c_str());
  cpoutput(before_last ? "(* Small statement(1) expected *) ," : " (* Small statement(2) expected *) , ");
}

// Writes all items but the last one as operands of the comma operator; the last.
tAsynt CPunparse_all_but_last_expr(tAsynt t) {
  for (;;) {
    if (Asynt_Kind(t) == kXCompoundExpression) {
      t = Variadic_Expressions(t);
    } else if (!CPis_cell(t)) {
      return t;
    } else if (!CPis_cell(CPtail(t))) {
      t = CPhead(t);
    } else {
      if (CPunparseSmallStmt(CPhead(t)))
        cpoutput(",");
      else
        write_large_statement(CPhead(t), !CPis_cell(CPtail(CPtail(t))));
      t = CPtail(t);
    }
  }
}

bool write_compound(tAsynt t) {
  if (!CPis_cell(Variadic_Expressions(t))) return true;
  cpoutput(" ( ");
  return CPwrite_call("", CPunparse_all_but_last_expr(Variadic_Expressions(t)), " ) ");
}

// ---- the rules

// False: there is no C++ for a value of this kind or form.
bool write_value(tAsynt t, tAsynt typ) {
  const Asynt_tKind kind = Asynt_Kind(t);
  switch (kind) {
    case kSymbol: return write_symbol(t);
    case kIntConst: cpoutput_int(IntConst_Val(t)); return true;
    case kRealConst: cpoutput_real(RealConst_Val(t)); return true;
    case kStringConst: return write_string(t);
    case kExactIntConst: return write_text(alg_to_exp(ExactIntConst_Val(t)));
    case kExactRealConst: return write_text(alg_to_exp(ExactRealConst_Val(t)));
    case kFilename: return write_text(Filename_Name(t));
    case kXPi:
    case kXI:
    case kXE:
    case kXTrue:
    case kXFalse:
    case kXAll: return write_text(cpoperator_name[kind]);
    case kXNull:
    case kEmpty:
    case kComment: return true;
    case kTypeConversion:
    case kGeneralConversion:
    case kBasicConversion:
    case kShapeConversion: return CPwrite_call("", TypeConversion_Expression(t), "");
    case kNonAlgAuxiliary: return CPwrite_call("", NonAlgAuxiliary_Expression(t), "");

    case kComplexFFE:
    case kSimpleFFE: return write_application(t, typ);
    case kXIf: return write_if(t);
    case kXWhich: return CPunparse_which_expr(XWhich_Expressions(t), XWhich_Expressions(t));
    case kXCompoundExpression: return write_compound(t);
    case kXInequality: return CPunparse_ineq(XInequality_Expressions(t));

    case kXCot: return CPwrite_call("1/tan(", CUnary_Arg(t));
    case kXCoth: return CPwrite_call("1/tanh(", CUnary_Arg(t));
    case kXSec: return CPwrite_call("1/cos(", CUnary_Arg(t));
    case kXSech: return CPwrite_call("1/cosh(", CUnary_Arg(t));
    case kXCsc: return CPwrite_call("1/sin(", CUnary_Arg(t));
    case kXCsch: return CPwrite_call("1/sinh(", CUnary_Arg(t));
    case kXArcCot: return write_bracketed_call("atan(1/", CUnary_Arg(t), 7);
    case kXArcCoth: return write_bracketed_call("atanh(1/", CUnary_Arg(t), 7);
    case kXSign: return CPwrite_call("sign (", CUnary_Arg(t));
    case kXIntegerPart: return CPwrite_call("IntegerPart(", CUnary_Arg(t));
    case kXFractionalPart: return CPwrite_call("FractionalPart(", CUnary_Arg(t));
    case kXN: return write_n(CUnary_Arg(t));
    case kXGenTypeInformation: return write_type_information(t);
    case kXRe: return write_complex_part("re(", CUnary_Arg(t), nullptr);
    case kXIm: return write_complex_part("im(", CUnary_Arg(t), "0");
    case kXArg: return write_complex_part("arg(", CUnary_Arg(t), "0");
    case kXConjugate: return write_complex_part("conjugate(", CUnary_Arg(t), nullptr);

    case kUnary:
    case kXNot:
    case kXFactorial:
    case kXFactorial2:
    case kXUnset:
    case kXLambda:
    case kXRepeated:
    case kXRepeatedNull:
    case kXIncrement:
    case kXDecrement:
    case kXPreIncrement:
    case kXPreDecrement:
    case kXFunction:
    case kXStringLength:
    case kXStringReverse: return write_function(t, Unary_Expression(t));
    case kXMinus: return write_minus(t);

    case kArcTan2: return CPwrite_call2("atan2(", CBinary_Arg2(t), ", ", CBinary_Arg1(t));
    case kNaturalDivide: return write_quotient("IntegerPart(ElemQuotient(", "IntegerPart(", t);
    case kXQuotient: return write_quotient("floor(ElemQuotient(", "floor(", t);
    case kXMod: return CPwrite_call2("Mod(", CBinary_Arg1(t), ", ", CBinary_Arg2(t));
    case kXComplex: return CPwrite_call2("lm_complex(", CBinary_Arg1(t), ", ", CBinary_Arg2(t));
    case kXExtract: cpunparse_pri(CBinary_Arg1(t), CPpri(t)); return CPwrite_call(".Extract(", CBinary_Arg2(t));
    case kOuterProduct: return CPwrite_call2("OuterProduct(", CBinary_Arg1(t), ", ", CBinary_Arg2(t));
    case kXSubtract: return write_subtract(t);
    case kXPower: return write_power(t);
    case kXDivide: return write_divide(t);
    case kXAppend: return CPwrite_call2("Append(", Binary_LHS(t), ",", Binary_RHS(t));
    case kXPrepend: return CPwrite_call2("Prepend(", Binary_LHS(t), ",", Binary_RHS(t));

    case kXOr: return write_exprs_or("0", t, 2);
    case kXAnd: return write_exprs_or("1", t, 3);
    case kXEqual:
    case kXGreater:
    case kXLess:
    case kXGreaterEqual:
    case kXLessEqual: return CPunparse_rel_expr(t, Variadic_Expressions(t));
    // No chain of neighbours: a != b != c stays as it is.
    case kXUnequal: return write_exprs_or("", t, 4);
    case kXPlus: return write_plus(t);
    case kXTimes: return write_times(t, typ);
    case kXDot: return write_exprs_or("", t, CPpri(t));
    case kCross: return CPwrite_list_call("Cross(", Variadic_Expressions(t));

    case kXStringJoin: die_msg("StringJoin not supported");
    case kXStringTake: die_msg("StringTake not supported");
    default: return Asynt_IsType(t, kCUnary) ? write_function(t, CUnary_Arg(t)) : CPunparse_array_operation(t);
  }
}

[[noreturn, gnu::noinline]] void no_value(tAsynt t) {
  die_msg(
      "An expression returning a single value is expected where a complete statement is detected. Can't perform "
      "CPunparseVal to generate code for  node type: \"%s\",  statement \"%s\" ",
      Asynt_NodeName(Asynt_Kind(t)), CPsource(t).c_str());
}

int open_memories = 0;

}  // namespace

CPmemory::CPmemory() {
  if (open_memories++ == 0) Begin_type_memory();
}

CPmemory::~CPmemory() {
  if (--open_memories > 0) return;
  End_type_memory();
  CPforget_constants();
}

void CPto_double(tAsynt t, tAsynt typ) {
  const tAsynt array = CParray_of(typ);
  if (array) CPoutput_basetype_decl(mArrayType(real_type_node, ArrayType_Dimensions(array)));
  CPwrite_call(array ? "(" : "double (", t);
}

// Schedules have no type, so they come before all else.
void CPunparseVal(tAsynt t) {
  if (Asynt_Kind(t) == kParExec) return CPunparse_parel(t);
  const CPmemory memory;
  const tAsynt typ = Find_type(&t);
  if (CPwrite_folded(t) || write_value(t, typ)) return;
  if (!CPunparseSmallStmt(t)) no_value(t);
}

}  // namespace oz
