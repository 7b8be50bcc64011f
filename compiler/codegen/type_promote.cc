// Promotion: which type two operands have in common, and the conversions that bring them there.
//
// A list of operands is folded from its right end: in {1, 2.5, 3} the last two have the common type real, and the first
// and that result real again. Operands are typed from left to right before the fold, and all in loops, so that neither
// the stack nor the time suffers from a long list.

#include <vector>

#include "ozerrors.h"
#include "type_rules.h"

namespace oz {

namespace {

// ---- two types

[[noreturn]] void illegal_bool(tPosition pos) { die_msg_pos2(pos, "Illegal use of bool."); }

bool is_bool_array(tAsynt t) { return Is_array(t) && Is_bool(ArrayType_BasicType(t)); }

// Three errors about two arrays that do not go together; shown1 and shown2 are what is printed of the types.
tAsynt mismatch(tPosition pos, const char* what, tAsynt shown1, tAsynt shown2, tAsynt t1, tAsynt t2) {
  type_error(pos, "%s", what);
  type_error(pos, "... the first type is %s with %d dimensions", Unparsed(shown1).c_str(), Rank(t1));
  type_error(pos, "... the second type is %s with %d dimensions", Unparsed(shown2).c_str(), Rank(t2));
  return t1;
}

// Arrays do not promote each other: bases and ranks must agree, sizes are not compared.
tAsynt promote_arrays(tPosition pos, tAsynt t1, tAsynt t2) {
  const tAsynt base1 = ArrayType_BasicType(t1);
  const tAsynt base2 = ArrayType_BasicType(t2);
  if (!Check_equal_base(base1, base2))
    return mismatch(pos,
                    "An operation cannot accept two arrays with different base types; make an explicit operation to "
                    "change the type :",
                    base1, base2, t1, t2);
  if (Rank(t1) != Rank(t2))
    return mismatch(pos,
                    "An operation cannot accept two arrays with different number of dimensions; create a loop "
                    "instead :",
                    t1, t2, t1, t2);
  return t1;
}

// An array and a basic type: the array itself, unless its base is promoted to another kind.
tAsynt promote_elements(tPosition pos, tAsynt array, tAsynt basic, char bool_allowed) {
  const tAsynt base = ArrayType_BasicType(array);
  const tAsynt p = Promote_types(pos, base, basic, bool_allowed);
  return Asynt_Kind(p) == Asynt_Kind(base) ? array : mArrayType(p, ArrayType_Dimensions(array));
}

// int, real and complex, each wider than the one before; 0 for any other type.
int width(tAsynt t) {
  if (Asynt_IsType(t, kIntType)) return 1;
  if (Asynt_IsType(t, kRealType)) return 2;
  return Asynt_IsType(t, kComplexType) ? 3 : 0;
}

// The wider of two numeric types, else null.
tAsynt promote_numbers(tAsynt t1, tAsynt t2) {
  const int w1 = width(t1);
  const int w2 = width(t2);
  if (w1 == 0 || w2 == 0) return nullptr;
  switch (w1 > w2 ? w1 : w2) {
    case 1: return int_type_node;
    case 2: return real_type_node;
    default: return complex_type_node;
  }
}

[[noreturn]] void cannot_promote(tPosition pos, tAsynt t1, tAsynt t2) {
  const char* name1 = Asynt_NodeName(Asynt_Kind(t1));
  // The first type is named even if it is the NoType itself; that is the message's fixed form.
  if (Asynt_Kind(t1) == kNoType || Asynt_Kind(t2) == kNoType)
    die_msg_pos2(pos,
                 "NoType in type derivation; Possibly a variable is not defined or a formal parameter is missing a "
                 "prefix; Other type is %s.",
                 name1);
  die_msg_pos2(pos,
               "Promote_types failed: one cannot combine these two types in a single expression, they can never be "
               "compatible: %s, %s",
               name1, Asynt_NodeName(Asynt_Kind(t2)));
}

}  // namespace

// The order of the rules shows: a boolean on the left goes with an int, one on the right does not.
tAsynt Promote_types(tPosition posIn, tAsynt t1, tAsynt t2, char bool_allowed) {
  if (Is_bool(t1)) {
    if (!bool_allowed) illegal_bool(posIn);
    if (Is_bool(t2)) return bool_type_node;
    if (Is_int(t2)) return int_type_node;
  }
  if (!bool_allowed && (Is_bool(t2) || is_bool_array(t1))) illegal_bool(posIn);
  if (Is_array(t1) && Is_array(t2)) return promote_arrays(posIn, t1, t2);
  if (Is_array(t1) && Is_basic(t2)) return promote_elements(posIn, t1, t2, bool_allowed);
  if (!bool_allowed && is_bool_array(t2)) illegal_bool(posIn);
  if (Asynt_IsType(t1, kStringType) && Asynt_IsType(t2, kStringType)) return string_type_node;
  if (const tAsynt number = promote_numbers(t1, t2)) return number;
  if (Is_basic(t1) && Is_array(t2)) return promote_elements(posIn, t2, t1, bool_allowed);
  cannot_promote(posIn, t1, t2);
}

// ---- two operands

void Change_type(tAsynt* t, tAsynt fromtype, tAsynt totype) {
  if (insert_conversion_nodes && !Equal_types(fromtype, totype)) *t = mGeneralConversion(*t, fromtype, totype);
}

tAsynt Promote_typed(tPosition posIn, tAsynt* a, tAsynt ta, tAsynt* b, tAsynt tb, char bool_allowed) {
  const tAsynt p = Promote_types(posIn, ta, tb, bool_allowed);
  Change_type(a, ta, p);
  Change_type(b, tb, p);
  return p;
}

tAsynt Promote(tPosition posIn, tAsynt* a, tAsynt* b, char bool_allowed) {
  const tAsynt ta = Find_type(a);
  return Promote_typed(posIn, a, ta, b, Find_type(b), bool_allowed);
}

// ---- lists of operands

namespace {

// The types of the operands of all lists that are being typed, the innermost list on top.
std::vector<tAsynt> operand_types;

// The types of one list are those from here to the top, and are taken off together.
size_t open_list() { return operand_types.size(); }

void push_type(tAsynt* operand) {
  const tAsynt typ = Find_type(operand);
  operand_types.push_back(typ);
}

// Folds the types from first on: each becomes the promoted type of the list that starts there. The types themselves
// are left in *own if that is not null.
void fold(tPosition pos, size_t first, char bool_allowed, std::vector<tAsynt>* own) {
  if (own) own->assign(operand_types.begin() + static_cast<std::ptrdiff_t>(first), operand_types.end());
  for (size_t i = operand_types.size() - 1; i-- > first;)
    operand_types[i] = Promote_types(pos, operand_types[i], operand_types[i + 1], bool_allowed);
}

// Takes a list off; its common type.
tAsynt close_list(size_t first) {
  const tAsynt p = operand_types[first];
  operand_types.resize(first);
  return p;
}

[[noreturn]] void empty_list(tPosition pos) { die_msg_pos2(pos, "Tried to type empty expression list."); }

// Conversion of a list's operands, from left to right. Each list tail has a promoted type, and the operands in it are
// brought to it and then to that of each longer tail: a conversion node that is there gets the outermost type, whatever
// made it, and an operand without one is wrapped where the promoted type changes first on the way out.
struct Outward {
  tAsynt final = nullptr;  // the common type of the whole list
  tAsynt changed =
      nullptr;  // promoted type of the nearest tail from which the type changes outwards; null: it does not
};

void convert_outward(const Outward& out, tAsynt* operand) {
  if (Asynt_Kind(*operand) == kGeneralConversion)
    GeneralConversion_To(*operand) = out.final;
  else if (out.changed)
    *operand = mGeneralConversion(*operand, out.changed, out.final);
}

// Steps into the tail with the promoted type next, out of the list with the promoted type p.
void step_inward(Outward* out, tAsynt p, tAsynt next) {
  if (!Equal_types(next, p)) out->changed = next;
}

// own: the operands' types; the promoted types are on the stack from first on. Each operand of the list stands at the
// end of a group of so many cells (1, or 2 for a test and its value); the others of the group are only taken outwards.
void convert_list(tAsynt list, const std::vector<tAsynt>& own, size_t first, int group) {
  Outward out;
  out.final = operand_types[first];
  for (size_t i = 0; i < own.size(); i++) {
    for (int k = 1; k < group; k++, list = Expression1_Expressions(list))
      if (i > 0) convert_outward(out, &Expression1_Expression(list));
    tAsynt* operand = &Expression1_Expression(list);
    list = Expression1_Expressions(list);
    const tAsynt p = operand_types[first + i];
    if (i + 1 < own.size()) Change_type(operand, own[i], p);
    if (i > 0) convert_outward(out, operand);
    if (i + 1 < own.size()) step_inward(&out, p, operand_types[first + i + 1]);
  }
}

// Outside the recursive functions, so that their frames stay small.
void fold_and_convert(tPosition pos, tAsynt list, size_t first, int group, char bool_allowed) {
  std::vector<tAsynt> own;
  fold(pos, first, bool_allowed, &own);
  convert_list(list, own, first, group);
}

void fold_list(tPosition pos, tAsynt list, size_t first, int group, char bool_allowed) {
  if (insert_conversion_nodes)
    fold_and_convert(pos, list, first, group, bool_allowed);
  else
    fold(pos, first, bool_allowed, nullptr);
}

}  // namespace

void Drop_operands() { operand_types.clear(); }

tAsynt Promote_exprs(tPosition posIn, tAsynt exprs, char bool_allowed) {
  if (Asynt_Kind(exprs) == kExpression0) empty_list(posIn);
  const size_t first = open_list();
  tAsynt l = exprs;
  for (; Is_cell(l); l = Expression1_Expressions(l)) push_type(&Expression1_Expression(l));
  if (Asynt_Kind(l) != kExpression0) type_internal_error(__LINE__);
  if (!bool_allowed) Check_nobool(operand_types.back());
  fold_list(posIn, exprs, first, 1, bool_allowed);
  return close_list(first);
}

// test, value, test, value, ...: the common type of the values.
tAsynt Promote_exprs_2(tPosition posIn, tAsynt exprs, char bool_allowed) {
  if (Asynt_Kind(exprs) == kExpression0) empty_list(posIn);
  const size_t first = open_list();
  for (tAsynt l = exprs; Asynt_Kind(l) != kExpression0; l = Expression1_Expressions(l)) {
    if (!Is_cell(l) || !Is_cell(Expression1_Expressions(l))) type_internal_error(__LINE__);
    tAsynt* test = &Expression1_Expression(l);
    if (Asynt_Kind(Find_type(test)) != kBoolType)
      type_error(posIn, "Boolean type expected as argument to Which in %s", Unparsed(*test).c_str());
    l = Expression1_Expressions(l);
    push_type(&Expression1_Expression(l));
  }
  if (!bool_allowed) Check_nobool(operand_types.back());
  fold_list(posIn, exprs, first, 2, bool_allowed);
  return close_list(first);
}

// ---- inequalities: e1, op1, e2, op2, ..., en

namespace {

// Steps over an operator: the list from the next operand on, or null at the end.
tAsynt next_operand(tAsynt rest, const char* complaint) {
  if (Asynt_Kind(rest) == kExpression0) return nullptr;
  if (!Is_cell(rest) || !Is_cell(Expression1_Expressions(rest))) die_msg("%s", complaint);
  return Expression1_Expressions(rest);
}

// Wraps each operand but the last where its type and the promoted one differ.
void fold_and_convert_ineq(tAsynt exprs, size_t first) {
  std::vector<tAsynt> own;
  fold(NoPosition, first, 0, &own);
  for (size_t i = 0; i + 1 < own.size(); i++) {
    Change_type(&Expression1_Expression(exprs), own[i], operand_types[first + i]);
    exprs = Expression1_Expressions(Expression1_Expressions(exprs));
  }
}

}  // namespace

// A boolean between == and != needs no check of its own: promotion lets none through here.
tAsynt Promote_ineq(tAsynt exprs) {
  static const char complaint[] = "bad ineq in type checker.";
  if (!Is_cell(exprs)) die_msg("%s", complaint);
  const size_t first = open_list();
  for (tAsynt l = exprs; l; l = next_operand(Expression1_Expressions(l), complaint))
    push_type(&Expression1_Expression(l));
  if (insert_conversion_nodes)
    fold_and_convert_ineq(exprs, first);
  else
    fold(NoPosition, first, 0, nullptr);
  return close_list(first);
}

void Change_ineq_type(tAsynt ineq, tAsynt fromtyp, tAsynt totyp) {
  static const char complaint[] = "bad ineq in type checker";
  if (!Is_cell(ineq)) die_msg("%s", complaint);
  for (tAsynt l = ineq; l; l = next_operand(Expression1_Expressions(l), complaint)) {
    tAsynt* operand = &Expression1_Expression(l);
    if (Asynt_Kind(*operand) == kGeneralConversion)
      GeneralConversion_To(*operand) = totyp;
    else
      Change_type(operand, fromtyp, totyp);
  }
}

// ---- Max and Min

tAsynt Promote_for_min_max(tAsynt exprs) {
  const bool one = Is_cell(exprs) && Asynt_Kind(Expression1_Expressions(exprs)) == kExpression0;
  if (one) return Part_base_type(Find_type(&Expression1_Expression(exprs)));
  const tAsynt second = Is_cell(exprs) ? Expression1_Expressions(exprs) : nullptr;
  if (!Is_cell(second) || Asynt_Kind(Expression1_Expressions(second)) != kExpression0)
    die_msg("At least one argument must be passed to Min or Max ");
  tAsynt* a = &Expression1_Expression(exprs);
  tAsynt* b = &Expression1_Expression(second);
  const tAsynt ta = Find_type(a);
  const tAsynt tb = Find_type(b);
  const auto plain_number = [](tAsynt t) { return Asynt_Kind(t) == kIntType || Asynt_Kind(t) == kRealType; };
  if (!plain_number(ta) || !plain_number(tb))
    type_error(NoPosition, "Non-numeric value in Max or Min with 2 arguments.");
  return Promote_typed(NoPosition, a, ta, b, tb, 0);
}

}  // namespace oz
