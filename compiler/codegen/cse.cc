// Common subexpressions by value numbering.
//
// The walk gives each node a number made of its kind and its operands' numbers. An operation whose number and structure
// have been seen before is replaced by the temporary of the first such operation; else it gets a new temporary and is
// put on the list:
//
//   Sin[a + b] + (a + b)       T1 = a + b        (operands are visited from the last to the first)
//                              T2 = Sin[T1]
//                              T3 = T2 + T1      what is left of the expression: T3
//
// Nothing is commutative here, and side effects are not known: a call that is written twice is made once.

#include "cse.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "Errors.h"
#include "csehash.h"
#include "fun.h"
#include "listsched.h"
#include "oz.h"
#include "ozerrors.h"
#include "type.h"
#include "unparse.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*cse_Exit)() = leave;
int temp_no = 1;
int simple_code = 0;
int do_ddg = 0;

namespace {

// ---- the list of assignments

tAsynt temp_set_list = nullptr;     // its head
tAsynt temp_set_p = nullptr;        // the open cell at its end
tAsynt* prev_temp_set = nullptr;    // the link to the open cell
tAsynt last_temp = nullptr;         // the temporary that was put on the list last
std::vector<tAsynt> pending_cells;  // of all lists that are being walked, the innermost on top

[[noreturn]] void routine_failed(const char* routine) {
  std::fprintf(stderr, "Error: module cse, routine %s failed\n", routine);
  cse_Exit();
  std::abort();  // the exit hook must not return
}

void measure(tAsynt set_list) { scheduleddg(set_list); }

[[noreturn]] void no_rule(tAsynt t) { die_msg("Can't handle node %s in Cse.", Asynt_NodeName(Asynt_Kind(t))); }

const char* kind_name(tAsynt t) { return Asynt_NodeName(Asynt_Kind(t)); }

}  // namespace

void (*cse_schedule)(tAsynt set_list) = measure;

tAsynt make_temp_symb(tAsynt typ) {
  const tAsynt temp = mTempSymbol(typ, NoPosition, static_cast<unsigned>(temp_no));
  temp_no++;
  return temp;
}

void init_cse() {
  temp_set_list = temp_set_p = mExpression1(nullptr, nullptr);
  prev_temp_set = &temp_set_list;
  last_temp = nullptr;
  pending_cells.clear();
  cse_init_hashtable();
}

void add_to_set_list(tPosition pos, tAsynt sym, tAsynt val) {
  Expression1_Expression(temp_set_p) = mXSet(mkNonConvPos(pos), sym, val);
  prev_temp_set = &Expression1_Expressions(temp_set_p);
  temp_set_p = *prev_temp_set = mExpression1(nullptr, nullptr);
}

// The open cell is left behind, whole, so that a check of all nodes finds nothing to complain of.
tAsynt cse_close_list(tAsynt end) {
  *prev_temp_set = end;
  Expression1_Expression(temp_set_p) = mEmpty();
  Expression1_Expressions(temp_set_p) = mExpression0();
  return temp_set_list;
}

void find_same(unsigned hash, tAsynt expr, tAsynt* tp) {
  cse_element_t* e = cse_enter(hash, expr);
  if (!e->temp_var) {
    e->temp_var = last_temp = make_temp_symb(Find_type_convert(expr));
    add_to_set_list(NoPosition, mSymbol(e->temp_var), expr);
  }
  *tp = mSymbol(e->temp_var);
}

// ---- the walk

namespace {

// Numbers the operand in a field and replaces it there.
unsigned number_slot(tAsynt t, size_t slot) {
  tAsynt* operand = &tree_raw_slot<tAsynt>(t, slot);
  return Cse(*operand, operand);
}

// Nodes with so many operands from a slot on, visited from the last to the first.

unsigned number1(tAsynt t, size_t first) { return value_num1(t, number_slot(t, first)); }

unsigned number2(tAsynt t, size_t first) {
  const unsigned v1 = number_slot(t, first + 1);
  return value_num2(t, number_slot(t, first), v1);
}

unsigned number3(tAsynt t, size_t first) {
  const unsigned v2 = number_slot(t, first + 2);
  const unsigned v1 = number_slot(t, first + 1);
  return value_num3(t, number_slot(t, first), v1, v2);
}

unsigned number4(tAsynt t, size_t first) {
  const unsigned v3 = number_slot(t, first + 3);
  const unsigned v2 = number_slot(t, first + 2);
  const unsigned v1 = number_slot(t, first + 1);
  return value_num4(t, number_slot(t, first), v1, v2, v3);
}

// The arguments come before the head, in the tree and here, but the head's number comes first.
unsigned number_call(tAsynt t) {
  const unsigned args = Cse(FullFormExpression_Args(t), &FullFormExpression_Args(t));
  tAsynt* head = Asynt_Kind(t) == kSimpleFFE ? &SimpleFFE_Name(t) : &ComplexFFE_Name(t);
  return value_num2(t, Cse(*head, head), args);
}

// Cells of a list, from the last to the first: as number2 of each, without recursion over the list.
unsigned number_cells(tAsynt list) {
  const Asynt_tKind kind = Asynt_Kind(list);
  const size_t outer = pending_cells.size();
  for (; Asynt_Kind(list) == kind; list = tree_raw_slot<tAsynt>(list, 1)) pending_cells.push_back(list);
  unsigned v = Cse(list, &list);
  while (pending_cells.size() > outer) {
    const tAsynt cell = pending_cells.back();
    v = value_num2(cell, number_slot(cell, 0), v);
    pending_cells.pop_back();
  }
  return v;
}

// e1, op1, e2, op2, e3: op1 has the operands e1 and the rest, which is visited first. Operators are not visited.
unsigned Value_num_ineq(tAsynt list) {
  const size_t outer = pending_cells.size();
  for (;; list = Expression1_Expressions(list)) {
    if (Asynt_Kind(list) != kExpression1) die_msg("Bad inequality: %s", unparse_string(list));
    pending_cells.push_back(list);
    list = Expression1_Expressions(list);
    if (Asynt_Kind(list) == kExpression0) break;
    if (Asynt_Kind(list) != kExpression1) die_msg("Bad inequality: %s", unparse_string(list));
  }
  unsigned v = number_slot(pending_cells.back(), 0);
  for (pending_cells.pop_back(); pending_cells.size() > outer; pending_cells.pop_back()) {
    const tAsynt cell = pending_cells.back();
    v = value_num2(Expression1_Expression(Expression1_Expressions(cell)), number_slot(cell, 0), v);
  }
  return v;
}

unsigned number_inequality(tAsynt t) {
  const unsigned v = Value_num_ineq(XInequality_Expressions(t));
  if (v == 0) no_rule(t);
  return v;
}

// The reader of full-form text leaves a List in the place of the declared symbols. It is no list of expressions, and
// must not become a temporary.
unsigned number_scope(tAsynt t) {
  const tAsynt varlist = Asynt_Kind(t) == kXModule ? XModule_Varlist(t) : XBlock_Varlist(t);
  if (!Asynt_IsType(varlist, kSymbols)) routine_failed("Cse");
  return number3(t, 0);
}

// The number of a node that stays where it is.
unsigned number_fixed(tAsynt t) {
  switch (Asynt_Kind(t)) {
    // What is reduced is computed anew in each step.
    case kIReduce: return value_num1(t, Cse(IReduce_Iter(t), &IReduce_Iter(t)));
    case kSymbol: return symbol_num(Symbol_SymInfo(t));
    case kIntConst: return value_num1(t, hash_int(IntConst_Val(t)));
    case kRealConst: return value_num1(t, hash_real(RealConst_Val(t)));
    case kStringConst: return value_num1(t, hash_str(StringConst_Val(t)));
    case kExactIntConst: return value_num1(t, hash_str(ExactIntConst_Val(t)));
    case kExactRealConst: return value_num1(t, hash_str(ExactRealConst_Val(t)));
    case kXPi:
    case kXI:
    case kXE:
    case kXTrue:
    case kXFalse:
    case kIterator0:
    case kExpression0: return value_num0(t);
    case kIterator1:
    case kExpression1: return number_cells(t);
    case kIterator: return number3(t, 0);
    default: no_rule(t);
  }
}

// Whether a node is an operation, to be computed into a temporary.
bool is_candidate(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kComplexFFE:
    case kSimpleFFE:
    case kXFor:
    case kXWhile:
    case kXIf:
    case kXBreak:
    case kXModule:
    case kXBlock:
    case kXWith:
    case kNonAlgAuxiliary:
    case kXInequality: return true;
    default: break;
  }
  return Asynt_IsType(t, kCUnary) || Asynt_IsType(t, kCBinary) || Asynt_IsType(t, kUnary) || Asynt_IsType(t, kBinary) ||
         Asynt_IsType(t, kVariadic);
}

unsigned number_candidate(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kComplexFFE:
    case kSimpleFFE: return number_call(t);
    case kXFor: return number4(t, 0);
    case kXWhile: return number2(t, 0);
    case kXIf:
    case kXWith: return number3(t, 0);
    case kXModule:
    case kXBlock: return number_scope(t);
    case kXBreak: return value_num0(t);
    case kNonAlgAuxiliary: return number1(t, 0);
    case kXInequality: return number_inequality(t);
    default: break;
  }
  if (Asynt_IsType(t, kCUnary)) return number1(t, 0);
  if (Asynt_IsType(t, kCBinary)) return number2(t, 0);
  return Asynt_IsType(t, kBinary) ? number2(t, 1) : number1(t, 1);  // behind the position
}

}  // namespace

unsigned Cse(tAsynt t, tAsynt* tp) {
  if (!is_candidate(t)) return number_fixed(t);
  const unsigned v = number_candidate(t);
  find_same(v, t, tp);
  return v;
}

// ---- assignments

namespace {

// The right side of an assignment, numbered, with temporaries in it. The caller's field stays as it is.
tAsynt numbered_value(tAsynt rhs) {
  tAsynt value = rhs;
  Cse(rhs, &value);
  return value;
}

void check_assignment(tAsynt lhs, tAsynt value) {
  const tAsynt lt = Find_type(&lhs);
  if (Narrower(lt, Find_type(&value))) die_msg("Type mismatch for assignment.");
}

}  // namespace

void Set_list_cse(tAsynt t) {
  if (Asynt_Kind(t) != kXSet) die_msg("Bad data to Set_list_cse: %s", kind_name(t));
  const tAsynt lhs = Binary_LHS(t);
  const tAsynt rhs = Binary_RHS(t);
  if (Asynt_Kind(lhs) == kXList && Asynt_Kind(rhs) == kXList)
    return Set_list_cse_2(GetPos(t), Variadic_Expressions(lhs), Variadic_Expressions(rhs));
  const tAsynt value = numbered_value(rhs);
  add_to_set_list(GetPos(t), lhs, value);
  check_assignment(lhs, value);
}

// The assignments are made behind all temporaries, the last one first, so that each right side has been read before a
// left side is written.
void Set_list_cse_2(tPosition Pos, tAsynt lhs, tAsynt rhs) {
  std::vector<std::pair<tAsynt, tAsynt>> sets;
  for (; Asynt_Kind(lhs) == kExpression1 && Asynt_Kind(rhs) == kExpression1;
       lhs = Expression1_Expressions(lhs), rhs = Expression1_Expressions(rhs)) {
    sets.emplace_back(Expression1_Expression(lhs), numbered_value(Expression1_Expression(rhs)));
    check_assignment(sets.back().first, sets.back().second);
  }
  if (Asynt_Kind(lhs) != kExpression0 || Asynt_Kind(rhs) != kExpression0)
    die_msg_pos2(Pos, "Bad data to Set_list_cse_2: %s %s", kind_name(lhs), kind_name(rhs));
  for (; !sets.empty(); sets.pop_back()) add_to_set_list(Pos, sets.back().first, sets.back().second);
}

// ---- the end of a function body

// The operation that was numbered last is the body itself. A reduction stays the value of its body when only its bounds
// have become temporaries.
tAsynt finish_fun_cse(tAsynt tree_body) {
  if (temp_no == 1) return tree_body;
  if (!last_temp || static_cast<int>(TempSymbol_Number(last_temp)) != temp_no - 1)
    die_msg("Internal error in line %d of %s", __LINE__, "cse");
  const tAsynt value = Asynt_Kind(tree_body) == kIReduce ? tree_body : mSymbol(last_temp);
  return Make_csed_function(cse_close_list(mExpression1(value, mExpression0())));
}

}  // namespace oz
