// The type of an expression: one rule per kind of node.
//
// Find_type asks a node's operands first and combines what they answer: in 1 + {2.5, x} the list is an array of real,
// and so is the sum. A rule types each operand once, so that the cost of one call is that of the tree below it.

#include "type.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unordered_set>
#include <vector>

#include "Errors.h"
#include "ozerrors.h"
#include "predef.h"
#include "type_rules.h"
#include "unparse.h"

namespace oz {

tAsynt int_type_node = nullptr;
tAsynt real_type_node = nullptr;
tAsynt complex_type_node = nullptr;
tAsynt bool_type_node = nullptr;
tAsynt string_type_node = nullptr;

char insert_conversion_nodes = 0;
int typing_copy = 0;

namespace {

// ---- what has been reported

unsigned long reports = 0;  // made or held back
int silent = 0;             // above 0: reports are held back

std::unordered_set<tAsynt> reported;  // applications whose typing reported something

std::string format_text(const char* fstr, va_list ap) {
  va_list again;
  va_copy(again, ap);
  const int length = std::vsnprintf(nullptr, 0, fstr, again);
  va_end(again);
  std::string text(length > 0 ? static_cast<size_t>(length) : 0, ' ');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, fstr, ap);
  return text;
}

// ---- what is remembered

int memory_level = 0;           // calls of Begin_type_memory that are open
unsigned long memory_turn = 0;  // how often everything was forgotten

// From nodes to their types: pairs in a table of a power of two, at most three quarters full, a free place behind the
// one that the address leads to. What is entered is never taken out one by one.
struct Type_table {
  struct Pair {
    tAsynt node, typ;
  };
  std::vector<Pair> pairs;
  size_t used = 0;

  // The places of a page of memory lie together, since nodes that were made together are asked for together.
  size_t first_place(tAsynt node) const {
    const uintptr_t address = reinterpret_cast<uintptr_t>(node);
    const uintptr_t page = (address >> 12) * 0x9E3779B97F4A7C15u >> 32;
    return ((address >> 4 & 0xFF) + (page << 8)) & (pairs.size() - 1);
  }
  Pair* place(tAsynt node) {
    size_t i = first_place(node);
    while (pairs[i].node && pairs[i].node != node) i = (i + 1) & (pairs.size() - 1);
    return &pairs[i];
  }
  tAsynt find(tAsynt node) { return used > 0 ? place(node)->typ : nullptr; }
  [[gnu::noinline]] void enter(tAsynt node, tAsynt typ) {
    if (4 * (used + 1) > 3 * pairs.size()) grow();
    Pair* pair = place(node);
    if (!pair->node) used++;
    *pair = {node, typ};
  }
  [[gnu::noinline]] void grow() {
    std::vector<Pair> old(pairs.empty() ? 64 : 2 * pairs.size());
    old.swap(pairs);
    for (const Pair& pair : old)
      if (pair.node) *place(pair.node) = pair;
  }
  // No dearer than what was entered since the last time.
  void clear() {
    if (used > 0) pairs.clear();
    if (used > 1000) pairs.shrink_to_fit();
    used = 0;
  }
};
Type_table memory;

}  // namespace

// ---- set-up

void Begintype() {
  int_type_node = mIntType(nullptr);
  real_type_node = mRealType(nullptr);
  complex_type_node = mComplexType(nullptr);
  bool_type_node = mBoolType(nullptr);
  string_type_node = mStringType(nullptr);
  insert_conversion_nodes = 0;
  typing_copy = 0;
  silent = 0;
  reported.clear();
  Drop_operands();
  memory_level = 0;
  Forget_types();
}

void Closetype() {}

// ---- reports

void type_error(tPosition pos, const char* fstr, ...) {
  reports++;
  if (silent) return;
  va_list ap;
  va_start(ap, fstr);
  error_msg_pos2(pos, "%s", format_text(fstr, ap).c_str());
  va_end(ap);
}

void type_warning(tPosition pos, const char* fstr, ...) {
  reports++;
  if (silent) return;
  va_list ap;
  va_start(ap, fstr);
  warning_msg_pos2(pos, "%s", format_text(fstr, ap).c_str());
  va_end(ap);
}

tAsynt Find_type_reporting_once(tAsynt key, tAsynt* t) {
  const bool again = reported.count(key) != 0;
  const unsigned long before = reports;
  silent += again;
  const tAsynt typ = Find_type(t);
  silent -= again;
  if (reports != before) reported.insert(key);
  return typ;
}

void type_internal_error(int line) { die_msg("Internal error in line %d of %s", line, "type"); }

void type_abort(const char* routine) {
  std::fprintf(stderr, "Error: module type, routine %s failed\n", routine);
  Errors_Exit();
  std::abort();
}

std::string Unparsed(tAsynt t) { return t ? unparse_string(t) : ""; }

tAsynt No_rule(tAsynt t) {
  type_error(NoPosition,
             "Could not evaluate data type for node \"%s\", expression %s. This may happen if expression is invalid or "
             "if it cannot be used in this place.",
             Asynt_NodeName(Asynt_Kind(t)), Unparsed(t).c_str());
  return mNoType();
}

// ---- questions

tPosition GetPos(tAsynt t) {
  if (!Asynt_IsType(t, kOperator)) return NoPosition;
  const tAsynt pos = Operator_PosConv(t);
  return pos ? PosConv_Pos(pos) : NoPosition;
}

tAsynt Find_base(tAsynt typ) {
  if (Is_basic(typ)) return typ;
  return Is_array(typ) ? ArrayType_BasicType(typ) : mNoType();
}

int ArrayRank(tAsynt t) { return Rank(Find_type(&t)); }

tAsynt* Element(tAsynt list, int n) {
  for (; n > 1; n--) list = Expression1_Expressions(list);
  return &Expression1_Expression(list);
}

// ---- rules by shape of the node

namespace {

// An operation on each element: keeps the operand's shape and gives it the base, or complex if a complex one stays so.
tAsynt elementwise(tAsynt* operand, tAsynt base, bool complex_stays) {
  const tAsynt typ = Find_type(operand);
  if (complex_stays && Is_complex(typ)) return Make_type(complex_type_node, typ);
  Check_nobool(typ);
  return Make_type(base, typ);
}

tAsynt find_abs(tAsynt t) {
  const tAsynt typ = Find_type(&CUnary_Arg(t));
  XAbs_Type(t) = typ;
  if (Is_complex(typ)) return Make_type(real_type_node, typ);
  Check_nobool(typ);
  return typ;
}

tAsynt find_sort(tAsynt t) {
  const tAsynt typ = Find_type(&CUnary_Arg(t));
  if (!Is_array(typ)) type_error(NoPosition, "Non-array passed to Sort[].");
  return typ;
}

tAsynt find_if(tAsynt t) {
  if (Asynt_Kind(Find_type(&XIf_Condition(t))) != kBoolType) type_error(NoPosition, "Non-bool conditional in If.");
  return Promote(NoPosition, &XIf_T(t), &XIf_F(t), 1);
}

tAsynt promote_args(tAsynt t) { return Promote(NoPosition, &CBinary_Arg1(t), &CBinary_Arg2(t), 0); }

tAsynt find_quotient(tAsynt t) {
  const tAsynt typ = promote_args(t);
  Check_nobool(typ);
  return Make_type(int_type_node, typ);
}

tAsynt find_complex(tAsynt t) {
  const auto fits = [](tAsynt typ) { return Asynt_Kind(typ) == kIntType || Asynt_Kind(typ) == kRealType; };
  if (!fits(Find_type(&CBinary_Arg1(t))))
    type_error(NoPosition, "Complex[] requires two Integer or Real arguments. First argument has a different type.");
  if (!fits(Find_type(&CBinary_Arg2(t))))
    type_error(NoPosition, "Complex[] requires two Integer or Real arguments. Second argument has a different type.");
  return complex_type_node;
}

tAsynt find_extract(tAsynt t) {
  Check_Array_of_ints(Find_type(&CBinary_Arg2(t)));
  return Part_base_type(Find_type(&CBinary_Arg1(t)));
}

tAsynt find_outer_product(tAsynt t) {
  const tAsynt t1 = Find_type(&CBinary_Arg1(t));
  return Check_OuterProduct(t, t1, Find_type(&CBinary_Arg2(t)));
}

tAsynt find_minus(tAsynt t) {
  const tAsynt typ = Find_type(&Unary_Expression(t));
  Check_nobool(typ);
  return typ;
}

tAsynt find_not(tAsynt t) {
  const tAsynt typ = Find_type(&Unary_Expression(t));
  Check_base(bool_type_node, typ);
  return typ;
}

tAsynt find_string_length(tAsynt t) {
  Check_base(string_type_node, Find_type(&Unary_Expression(t)));
  return int_type_node;
}

// An int divided by an int is real.
tAsynt find_divide(tAsynt t) {
  const tAsynt lt = Find_type(&Binary_LHS(t));
  const tAsynt rt = Find_type(&Binary_RHS(t));
  const tAsynt typ = Promote_typed(GetPos(t), &Binary_LHS(t), lt, &Binary_RHS(t), rt, 0);
  Check_nobool(typ);
  return Make_type(Is_complex(lt) || Is_complex(rt) ? complex_type_node : real_type_node, typ);
}

tAsynt find_append(tAsynt t) {
  const tAsynt typ = Find_type(&Binary_LHS(t));
  if (Rank(typ) != Rank(Find_type(&Binary_RHS(t))) + 1)
    type_error(GetPos(t), "Ranks of Append/Prepend arguments are invalid.");
  return typ;
}

tAsynt promote_all(tAsynt t, char bool_allowed) {
  return Promote_exprs(GetPos(t), Variadic_Expressions(t), bool_allowed);
}

tAsynt find_and_or(tAsynt t) {
  const tAsynt typ = promote_all(t, 1);
  Check_base(bool_type_node, typ);
  return typ;
}

tAsynt find_equal(tAsynt t) {
  promote_all(t, 1);
  return bool_type_node;
}

tAsynt find_comparison(tAsynt t) { return Check_scalar(promote_all(t, 0)) ? bool_type_node : nullptr; }

tAsynt find_string_join(tAsynt t) {
  Check_base(string_type_node, promote_all(t, 0));
  return string_type_node;
}

// ---- rules that depend on the arguments of a variadic node; null: no rule for this form

// Argument number n if there are so many, else null; with exactly set, if there are just so many as it says.
tAsynt* argument(tAsynt t, int n, int exactly = 0) {
  tAsynt l = Variadic_Expressions(t);
  int count = 0;
  tAsynt* found = nullptr;
  for (; Is_cell(l); l = Expression1_Expressions(l))
    if (++count == n) {
      found = &Expression1_Expression(l);
      if (exactly == 0) break;
    }
  return exactly == 0 || count == exactly ? found : nullptr;
}

tAsynt type_of_argument(tAsynt t, int n, int exactly = 0) {
  tAsynt* a = argument(t, n, exactly);
  return a ? Find_type(a) : nullptr;
}

tAsynt find_col(tAsynt t) {
  const tAsynt typ = type_of_argument(t, 1, 2);
  return typ ? Part_2_type(GetPos(t), typ) : nullptr;
}

tAsynt find_row(tAsynt t) {
  const tAsynt typ = type_of_argument(t, 1, 2);
  return typ ? Part_1_type(GetPos(t), typ) : nullptr;
}

tAsynt find_dimensions(tAsynt t) {
  const tAsynt typ = type_of_argument(t, 1);
  return typ ? Find_dimensions_type(GetPos(t), typ) : nullptr;
}

tAsynt find_join(tAsynt t) {
  tAsynt* first = argument(t, 1);
  return first ? Find_join_type(first, Expression1_Expressions(Variadic_Expressions(t))) : nullptr;
}

tAsynt find_part(tAsynt t) {
  const tAsynt typ = type_of_argument(t, 1);
  return typ ? Part_type2(GetPos(t), typ, Expression1_Expressions(Variadic_Expressions(t))) : nullptr;
}

// StringTake[s, {a, b}]; any other form is taken as it is.
tAsynt find_string_take(tAsynt t) {
  tAsynt* range = argument(t, 2, 2);
  const tAsynt bounds = range ? Operands_of(*range, kXList, Constructor(mXList)) : nullptr;
  if (bounds && expr_list_len(bounds) == 2) {
    Check_base(int_type_node, Find_type(Element(bounds, 1)));
    Check_base(int_type_node, Find_type(Element(bounds, 2)));
    Check_base(string_type_node, Find_type(argument(t, 1)));
  }
  return string_type_node;
}

// Quantile[x, q] and Quantile[x, q, {{a, b}, {c, d}}].
tAsynt find_quantile(tAsynt t) {
  const int n = expr_list_len(Variadic_Expressions(t));
  if (n != 2 && n != 3) return nullptr;
  const tAsynt t1 = type_of_argument(t, 1);
  const tAsynt t2 = type_of_argument(t, 2);
  const tAsynt t3 =
      n == 3 ? type_of_argument(t, 3) : mArrayType(real_type_node, Prepend_dimension(2, One_dimension(2)));
  return Find_XQuantile_Type(GetPos(t), t1, t2, t3);
}

// ---- other nodes

// The type of the last of some expressions; an empty list has no rule.
tAsynt find_sequence(tAsynt list) {
  tAsynt typ = nullptr;
  for (; Is_cell(list); list = Expression1_Expressions(list)) typ = Find_type(&Expression1_Expression(list));
  return typ;
}

tAsynt find_shape_conversion(tAsynt t) {
  return mArrayType(Find_base(Find_type(&TypeConversion_Expression(t))), ShapeConversion_To(t));
}

tAsynt misplaced(tAsynt t, const char* what) {
  type_error(GetPos(t), "%s", what);
  return mNoType();
}

// ---- the rules

// Null: the node has no rule, or a form without one.
tAsynt type_by_rule(tAsynt* where) {
  const tAsynt t = *where;
  switch (Asynt_Kind(t)) {
    case kComplexFFE:
    case kSimpleFFE: return Find_application_type(where);
    case kXIf: return find_if(t);
    case kXWhich: return Promote_exprs_2(NoPosition, XWhich_Expressions(t), 1);
    case kXBreak:
    case kXPrint:
    case kXVoidFunc:
    case kXNull:
    case kXPut: return mNoType();
    case kXBlank: return misplaced(t, "Blank (_) can be used in Part [[]] only");
    case kIReduce: return Find_type(&IReduce_Body(t));

    case kXSin:
    case kXArcSin:
    case kXSinh:
    case kXArcSinh:
    case kXCos:
    case kXArcCos:
    case kXCosh:
    case kXArcCosh:
    case kXTan:
    case kXArcTan:
    case kXTanh:
    case kXArcTanh:
    case kXCot:
    case kXArcCot:
    case kXCoth:
    case kXArcCoth:
    case kXSec:
    case kXSech:
    case kXCsc:
    case kXCsch:
    case kXExp:
    case kXLog:
    case kXSqrt:
    case kXFractionalPart:
    case kXConjugate: return elementwise(&CUnary_Arg(t), real_type_node, true);
    case kXAbs: return find_abs(t);
    case kXSign:
    case kXFloor:
    case kXCeiling:
    case kXRound:
    case kXIntegerPart: return elementwise(&CUnary_Arg(t), int_type_node, true);
    case kXTranspose: return Transpose_type(Find_type(&CUnary_Arg(t)));
    case kXN:
    case kXRe:
    case kXIm:
    case kXArg: return elementwise(&CUnary_Arg(t), real_type_node, false);
    case kXGenTypeInformation: return Find_type(&CUnary_Arg(t));
    case kXSort: return find_sort(t);
    case kXMean: return Find_Mean_Type(Find_type(&CUnary_Arg(t)), "Mean");
    case kXVariance: return Find_Mean_Type(Find_type(&CUnary_Arg(t)), "Variance");
    case kXTotal: return Find_total_type(Find_type(&CUnary_Arg(t)));
    case kXMedian: return Find_Mean_Type(Find_type(&CUnary_Arg(t)), "Median");
    case kXStandardDeviation: return Find_Mean_Type(Find_type(&CUnary_Arg(t)), "StandardDeviation");

    case kArcTan2:
    case kXMod: return promote_args(t);
    case kNaturalDivide: return Make_type(int_type_node, promote_args(t));
    case kXQuotient: return find_quotient(t);
    case kXComplex: return find_complex(t);
    case kXExtract: return find_extract(t);
    case kOuterProduct: return find_outer_product(t);

    case kXMinus: return find_minus(t);
    case kXNot: return find_not(t);
    case kXStringLength: return find_string_length(t);

    case kXSubtract:
    case kXPower: return Promote(GetPos(t), &Binary_LHS(t), &Binary_RHS(t), 0);
    case kXDivide: return find_divide(t);
    case kXSet:
    case kXSetDelayed: return Find_assignment_type(t);
    case kXAlternatives: return misplaced(t, "Alternatives (|) can be used in Part [[]] only");
    case kXDrop: return Find_type(&Binary_LHS(t));
    case kXAppend:
    case kXPrepend: return find_append(t);

    case kXOr:
    case kXAnd: return find_and_or(t);
    case kXEqual:
    case kXUnequal: return find_equal(t);
    case kXGreater:
    case kXLess:
    case kXGreaterEqual:
    case kXLessEqual: return find_comparison(t);
    case kXPlus:
    case kXTimes:
    case kCross: return promote_all(t, 0);
    case kXDot: return Find_dot_type(GetPos(t), Variadic_Expressions(t));
    case kXStringJoin: return find_string_join(t);
    case kXCompoundExpression: return Find_type(&Variadic_Expressions(t));
    case kXList: return Find_list_type(GetPos(t), Variadic_Expressions(t));
    case kXDimensions: return find_dimensions(t);
    case kXSetCols:
    case kXSetRows:
    case kXSetSubMatrix:
    case kXCols:
    case kXRows:
    case kXSubMatrix:
    case kXSubVector:
    case kXSetSubVector: return type_of_argument(t, 1);
    case kXSetCol:
    case kXSetRow: return type_of_argument(t, 3, 3);
    case kXCol: return find_col(t);
    case kXRow: return find_row(t);
    case kXSetShape: return Find_set_shape_type(t);
    case kXMax:
    case kXMin: return Promote_for_min_max(Variadic_Expressions(t));
    case kXJoin: return find_join(t);
    case kXPart: return find_part(t);
    case kXStringTake: return find_string_take(t);
    case kXQuantile: return find_quantile(t);
    case kXFlatten: return Find_flatten_form(GetPos(t), Variadic_Expressions(t));
    case kXExport: return Find_export_type(GetPos(t), Variadic_Expressions(t));
    case kXInequality: return Make_type(bool_type_node, Promote_ineq(XInequality_Expressions(t)));

    case kSymbol: return Find_symbol(t);
    case kIntConst:
    case kExactIntConst: return int_type_node;
    case kRealConst:
    case kExactRealConst:
    case kXPi:
    case kXE: return real_type_node;
    case kStringConst:
    case kFilename: return string_type_node;
    case kXI: return complex_type_node;
    case kXTrue:
    case kXFalse: return bool_type_node;
    case kGeneralConversion: return GeneralConversion_To(t);
    case kShapeConversion: return find_shape_conversion(t);
    case kExpression1: return find_sequence(t);
    default: return nullptr;
  }
}

tAsynt type_or_refusal(tAsynt* t) {
  const tAsynt typ = type_by_rule(t);
  return typ ? typ : No_rule(*t);
}

// ---- the memory

// Leaves and applications answer at once, and applications may have to be replaced.
bool worth_remembering(tAsynt t) {
  return Asynt_IsType(t, kExpression) && !Asynt_IsType(t, kFullFormExpression) && !Asynt_IsType(t, kConstant) &&
         Asynt_Kind(t) != kSymbol;
}

bool memory_is_on(tAsynt t) {
  return memory_level > 0 && typing_copy == 0 && !insert_conversion_nodes && worth_remembering(t);
}

tAsynt remembered_type(tAsynt* t) {
  const tAsynt node = *t;
  // Whoever gets a NoType may count on its being his own.
  if (const tAsynt known = memory.find(node)) return Asynt_Kind(known) == kNoType ? mNoType() : known;
  const unsigned long reports_before = reports;
  const unsigned long turn_before = memory_turn;
  const tAsynt typ = type_or_refusal(t);
  if (reports == reports_before && memory_turn == turn_before) memory.enter(node, typ);
  return typ;
}

}  // namespace

void Begin_type_memory() {
  if (memory_level++ == 0) Forget_types();
}

void End_type_memory() {
  if (memory_level > 0 && --memory_level == 0) Forget_types();
}

void Forget_types() {
  memory_turn++;
  memory.clear();
}

// ---- the entry points

tAsynt Find_type(tAsynt* t) { return memory_is_on(*t) ? remembered_type(t) : type_or_refusal(t); }

tAsynt Find_type_convert(tAsynt t) {
  insert_conversion_nodes = 1;
  const tAsynt typ = Find_type(&t);
  insert_conversion_nodes = 0;
  Forget_types();
  return typ;
}

}  // namespace oz
