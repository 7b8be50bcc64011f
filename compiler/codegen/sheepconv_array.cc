// Sizes of arrays ahead of output. In
//
//   f[x : Real[_]] -> Real[_] := Module[{n = Length[x], v : Real[n], w : Real[_]}, w = x; ... ]
//
// the size of v is declared as Length[x], since a size cannot name a local, and the first assignment to w is preceded
// by XSetShape(w, Dimensions[x][[1]]), since w has no storage before.

#include <cstring>
#include <string_view>
#include <unordered_map>

#include "Asynt.h"
#include "oz.h"
#include "ozerrors.h"
#include "ozt.h"
#include "predef.h"
#include "sheepconv.h"
#include "sheepconv_parts.h"
#include "type.h"
#include "unparse.h"

namespace oz {

int traverse_mode = 0;

namespace {

bool found_first_occurence = false;  // the first assignment has been rewritten; later ones are left alone
tAsynt looking_for = nullptr;        // the symbol information of the array whose first assignment is wanted

// 0, or the "_" of a declaration.
bool is_unknown_size(tAsynt size) {
  if (Asynt_Kind(size) == kBlank) return Asynt_Kind(Blank_Head(size)) == kEmpty;
  return Asynt_Kind(size) == kExactIntConst && std::strcmp(ExactIntConst_Val(size), "0") == 0;
}

// ---- initialisers of locals

struct Local {
  tAsynt si;
  tAsynt init;  // null: the list of initialisers ended before
};

std::unordered_map<std::string_view, Local> locals;  // of the body at work, by name
bool locals_end_badly = false;                       // the list of locals ends in something else than its end

// Whether a body declares locals; and which.
bool is_scope(tAsynt body) { return Asynt_Kind(body) == kXModule || Asynt_Kind(body) == kXBlock; }
tAsynt varlist_of(tAsynt scope) {
  return Asynt_Kind(scope) == kXModule ? XModule_Varlist(scope) : XBlock_Varlist(scope);
}
tAsynt initializers_of(tAsynt scope) {
  return Asynt_Kind(scope) == kXModule ? XModule_Initializers(scope) : XBlock_Initializers(scope);
}

// The first of several locals of one name counts.
void collect_locals(tAsynt scope) {
  locals.clear();
  locals_end_badly = false;
  if (!is_scope(scope)) return;
  tAsynt vars = varlist_of(scope);
  tAsynt inits = initializers_of(scope);
  for (; Asynt_Kind(vars) == kSymbol1; vars = Symbol1_Symbols(vars)) {
    const bool has_init = Asynt_Kind(inits) == kExpression1;
    const tAsynt si = Symbol_SymInfo(Symbol1_Symbol(vars));
    if (Asynt_Kind(si) == kAbsoluteSymbol)
      locals.emplace(NamedSymbol_Name(si), Local{si, has_init ? Expression1_Expression(inits) : nullptr});
    if (has_init) inits = Expression1_Expressions(inits);
  }
  locals_end_badly = Asynt_Kind(vars) != kSymbol0;
}

// Whether a size names a local: as it is written, or by the path that qualification gave it.
bool names_local(tAsynt size, tAsynt local) {
  if (Asynt_Kind(size) == kSimpleSymbol || size == local) return true;
  return IsEqualAsynt(AbsoluteSymbol_Components(size), AbsoluteSymbol_Components(local));
}

// The initialiser of the local that a size names, or null.
tAsynt Find_init_expr(tAsynt sym) {
  const tAsynt si = Symbol_SymInfo(sym);
  if (Asynt_Kind(si) != kSimpleSymbol && Asynt_Kind(si) != kAbsoluteSymbol) return nullptr;
  const auto found = locals.find(NamedSymbol_Name(si));
  if (found == locals.end()) {
    if (locals_end_badly) sheepconv_failed("Find_init_expr");
    return nullptr;
  }
  const Local& local = found->second;
  if (!names_local(si, local.si)) return nullptr;
  if (!local.init) error_msg("Init expression not found.");
  return Asynt_Kind(local.init) == kEmpty ? nullptr : local.init;
}

// ---- definitions

// The element of a cell of a list of sizes, or null at its end.
tAsynt* size_of_cell(tAsynt dims) {
  if (Asynt_Kind(dims) == kExpression1) return &Expression1_Expression(dims);
  return Asynt_Kind(dims) == kIntConst1 ? &IntConst1_IntConst(dims) : nullptr;
}

tAsynt next_size(tAsynt dims) {
  return Asynt_Kind(dims) == kExpression1 ? Expression1_Expressions(dims) : IntConst1_IntConsts(dims);
}

tAsynt* body_of(tAsynt* rhs) {
  switch (Asynt_Kind(*rhs)) {
    case kXModule: return &XModule_Body(*rhs);
    case kXBlock: return &XBlock_Body(*rhs);
    default: return rhs;
  }
}

void Dimensions_init(tAsynt si, tAsynt dims, tAsynt* rhs) {
  while (tAsynt* size = size_of_cell(dims)) {
    if (is_unknown_size(*size)) return Explicit_allocation(si, body_of(rhs));
    const tAsynt init = Asynt_Kind(*size) == kSymbol ? Find_init_expr(*size) : nullptr;
    if (init) *size = init;
    dims = next_size(dims);
  }
}

void init_array(tAsynt si, tAsynt* rhs) {
  const tAsynt typ = SymInfo_Type(si);
  if (Asynt_IsType(typ, kArrayType)) Dimensions_init(si, ArrayType_Dimensions(typ), rhs);
}

void init_parameter(tAsynt arg, tAsynt* rhs) {
  if (Asynt_Kind(arg) == kSymbol && Asynt_Kind(Symbol_SymInfo(arg)) == kOutParam) init_array(Symbol_SymInfo(arg), rhs);
}

void init_local(tAsynt si, tAsynt* rhs) {
  switch (Asynt_Kind(si)) {
    case kAbsoluteSymbol:
    case kOutParam:
    case kTempSymbol: return init_array(si, rhs);
    default: return;
  }
}

}  // namespace

// The body is looked at anew for the locals: the slot of a body without a scope of its own may have become a compound.
void Rewrite_array_init(tAsynt t) {
  if (Asynt_Kind(t) != kXSetDelayed) return;
  tAsynt* rhs = &Binary_RHS(t);
  collect_locals(*rhs);
  const tAsynt lhs = Binary_LHS(t);
  if (Asynt_Kind(lhs) == kSimpleFFE)
    for (tAsynt l = FullFormExpression_Args(lhs); Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l))
      init_parameter(Expression1_Expression(l), rhs);
  if (is_scope(*rhs))
    for (tAsynt l = varlist_of(*rhs); Asynt_Kind(l) == kSymbol1; l = Symbol1_Symbols(l))
      init_local(Symbol_SymInfo(Symbol1_Symbol(l)), rhs);
}

void Explicit_allocation(tAsynt si, tAsynt* body) {
  found_first_occurence = false;
  looking_for = si;
  traverse_mode = 1;
  Rewrite_f90_stmt(body, body);
}

// ---- the walk to the first assignment

namespace {

// Whether two symbol informations tell of one symbol. The types are compared last: a size may lead back to the symbol.
bool same_symbol(tAsynt a, tAsynt b) {
  if (a == b) return true;
  if (Asynt_Kind(a) != Asynt_Kind(b) || Compare(SymInfo_Pos(a), SymInfo_Pos(b)) != 0) return false;
  switch (Asynt_Kind(a)) {
    case kOutParam:
      if (OutParam_Number(a) != OutParam_Number(b)) return false;
      break;
    case kTempSymbol:
      if (TempSymbol_Number(a) != TempSymbol_Number(b)) return false;
      break;
    case kAbsoluteSymbol:
      if (std::strcmp(NamedSymbol_Name(a), NamedSymbol_Name(b)) != 0) return false;
      if (!IsEqualAsynt(AbsoluteSymbol_Components(a), AbsoluteSymbol_Components(b))) return false;
      break;
    default: return IsEqualAsynt(a, b);
  }
  return Equal_types(SymInfo_Type(a), SymInfo_Type(b));
}

bool is_wanted(tAsynt lhs) {
  return traverse_mode == 1 && Asynt_Kind(lhs) == kSymbol && same_symbol(Symbol_SymInfo(lhs), looking_for);
}

// a = b = c: b = c is met first, then a = b.
void walk_chain(tAsynt set, tAsynt* top) {
  const tAsynt pos = mkNonConvPos(PosConv_Pos(Operator_PosConv(set)));
  const tAsynt outer = mXSet(pos, Binary_LHS(set), Binary_LHS(Binary_RHS(set)));
  Rewrite_f90_stmt(&Binary_RHS(set), top);
  tAsynt statement = outer;
  Rewrite_f90_stmt(&statement, top);
}

void walk_assignment(tAsynt set, tAsynt* top) {
  if (Asynt_Kind(Binary_RHS(set)) == kXSet) return walk_chain(set, top);
  if (Asynt_Kind(Binary_LHS(set)) == kXList && Asynt_Kind(Binary_RHS(set)) == kXList)
    return Rewrite_f90_list_assign(set, top);
  if (is_wanted(Binary_LHS(set))) return Rewrite_f90_set(set, top);
  Rewrite_f90_expr(&Binary_RHS(set), top);
}

void walk_own(tAsynt* slot) { Rewrite_f90_stmt(slot, slot); }

void walk_for(tAsynt t, tAsynt* top) {
  Rewrite_f90_expr(&XFor_Start(t), top);
  Rewrite_f90_expr(&XFor_Test(t), top);
  walk_own(&XFor_Incr(t));
  walk_own(&XFor_Body(t));
}

// test, value, test, value, ...
void walk_which(tAsynt t, tAsynt* top) {
  for (tAsynt l = XWhich_Expressions(t); Asynt_Kind(l) == kExpression1;) {
    const tAsynt value = Expression1_Expressions(l);
    if (Asynt_Kind(value) != kExpression1) return;
    Rewrite_f90_expr(&Expression1_Expression(l), top);
    walk_own(&Expression1_Expression(value));
    l = Expression1_Expressions(value);
  }
}

}  // namespace

// What stands behind the first assignment need not be looked at.
void Rewrite_f90_stmt(tAsynt* where, tAsynt* top) {
  if (found_first_occurence && traverse_mode == 1) return;
  const tAsynt t = *where;
  switch (Asynt_Kind(t)) {
    case kXFor: return walk_for(t, top);
    case kXWhile: Rewrite_f90_expr(&XWhile_Test(t), top); return walk_own(&XWhile_Body(t));
    case kXIf:
      Rewrite_f90_expr(&XIf_Condition(t), top);
      walk_own(&XIf_T(t));
      return walk_own(&XIf_F(t));
    case kXWhich: return walk_which(t, top);
    case kDo: return walk_own(&Do_Expr(t));
    case kXModule: return walk_own(&XModule_Body(t));
    case kXBlock: return walk_own(&XBlock_Body(t));
    case kXCompoundExpression: return Rewrite_f90_stmt(&Variadic_Expressions(t), top);
    case kNonAlgAuxiliary: return Rewrite_f90_stmt(&NonAlgAuxiliary_Expression(t), top);
    case kExpression1:
      for (tAsynt l = t; Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l))
        walk_own(&Expression1_Expression(l));
      return;
    case kXSet: return walk_assignment(t, top);
    default: return;
  }
}

void Rewrite_f90_list_assign(tAsynt set, tAsynt* top) {
  tAsynt lhs = Variadic_Expressions(Binary_LHS(set));
  tAsynt rhs = Variadic_Expressions(Binary_RHS(set));
  for (; Asynt_Kind(lhs) == kExpression1 && Asynt_Kind(rhs) == kExpression1;
       lhs = Expression1_Expressions(lhs), rhs = Expression1_Expressions(rhs)) {
    tAsynt pair = mXSet(mkNonConvPos(NoPosition), Expression1_Expression(lhs), Expression1_Expression(rhs));
    Rewrite_f90_stmt(&pair, top);
  }
}

// ---- statements in the place of values

namespace {

void not_an_expression(const char* name) {
  error_msg("F90 unparser: '%s' cannot be used as an expression in Fortran90.\n", name);
}

void walk_operands(tAsynt t, tAsynt* top) {
  if (Asynt_IsType(t, kCUnary)) return Rewrite_f90_expr(&CUnary_Arg(t), top);
  if (Asynt_IsType(t, kUnary)) return Rewrite_f90_expr(&Unary_Expression(t), top);
  if (Asynt_IsType(t, kVariadic)) return Rewrite_f90_expr(&Variadic_Expressions(t), top);
  if (Asynt_IsType(t, kTypeConversion)) return Rewrite_f90_expr(&TypeConversion_Expression(t), top);
  if (Asynt_IsType(t, kCBinary)) {
    Rewrite_f90_expr(&CBinary_Arg1(t), top);
    return Rewrite_f90_expr(&CBinary_Arg2(t), top);
  }
  if (Asynt_IsType(t, kBinary)) {
    Rewrite_f90_expr(&Binary_LHS(t), top);
    return Rewrite_f90_expr(&Binary_RHS(t), top);
  }
}

}  // namespace

// Changes nothing.
void Rewrite_f90_expr(tAsynt* e, tAsynt* top) {
  if (traverse_mode != 2) return;
  const tAsynt t = *e;
  switch (Asynt_Kind(t)) {
    case kXFor: return not_an_expression("For");
    case kXWhile: return not_an_expression("While");
    case kXIf: return not_an_expression("If");
    case kXWhich: return not_an_expression("Which");
    case kXInequality: return Rewrite_f90_expr(&XInequality_Expressions(t), top);
    case kNonAlgAuxiliary: return Rewrite_f90_expr(&NonAlgAuxiliary_Expression(t), top);
    case kExpression1:
      for (tAsynt l = t; Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l))
        Rewrite_f90_expr(&Expression1_Expression(l), top);
      return;
    default: return walk_operands(t, top);
  }
}

// ---- shape statements

tAsynt MakeSize(tAsynt s, int i) {
  const tAsynt sizes = mXDimensions(mkNonConvPos(NoPosition), mExpression1(s, mExpression0()));
  return mXPart(mkNonConvPos(NoPosition), mExpression1(sizes, mExpression1(mIntConst(i), mExpression0())));
}

namespace {

// The array on the left gets the sizes, in front of the statement.
void put_shape(tPosition pos, tAsynt lhs, tAsynt sizes, tAsynt* top) {
  const tAsynt target = mSymbol(Symbol_SymInfo(lhs));
  *top = sheepconv_compound(NoPosition, {mXSetShape(mkNonConvPos(pos), mExpression1(target, sizes)), *top});
}

bool has_unknown_size(tAsynt dims) {
  for (tAsynt* size; (size = size_of_cell(dims)) != nullptr; dims = next_size(dims))
    if (is_unknown_size(*size)) return true;
  return false;
}

// The sizes of an array that has them at run time; rank is at least 1.
tAsynt run_time_sizes(tAsynt si, int rank) {
  tAsynt sizes = mExpression0();
  for (int i = rank; i >= 1; i--) sizes = mExpression1(MakeSize(mSymbol(si), i), sizes);
  return sizes;
}

tAsynt as_expressions(tAsynt dims) { return Asynt_IsType(dims, kIntConsts) ? IntConsts2Expressions(dims) : dims; }

}  // namespace

// Sizes that are found at run time go up to rank 4, those of a result to rank 1 only; that is meant so.
void Rewrite_f90_set_symbol(tAsynt lhs, tAsynt rhs, tAsynt* top) {
  const tAsynt si = Symbol_SymInfo(rhs);
  const bool is_result = Asynt_Kind(si) == kOutParam;
  if (!is_result && Asynt_Kind(si) != kAbsoluteSymbol) return;
  const tAsynt typ = SymInfo_Type(si);
  if (!Asynt_IsType(typ, kArrayType)) return;
  const tAsynt dims = ArrayType_Dimensions(typ);
  if (!has_unknown_size(dims)) return put_shape(NoPosition, lhs, as_expressions(dims), top);
  const int rank = CPgetDepth(dims);
  if (rank <= (is_result ? 1 : 4)) put_shape(SymInfo_Pos(si), lhs, run_time_sizes(si, rank), top);
}

// Only the first elements are looked at: {{1, 2, 3}, {4, 5, 6}} has the sizes 2 and 3.
void Rewrite_f90_set_list(tAsynt lhs, tAsynt rhs, tAsynt* top) {
  constexpr int kMaxRank = 4;
  int lengths[kMaxRank];
  int rank = 0;
  while (Asynt_Kind(rhs) == kXList) {
    if (rank == kMaxRank) return error_msg("F90 unparser: List constant with rank > 4 is not permitted.\n");
    const tAsynt elements = Variadic_Expressions(rhs);
    lengths[rank++] = expr_list_len(elements);
    rhs = Asynt_Kind(elements) == kExpression1 ? Expression1_Expression(elements) : nullptr;
  }
  tAsynt sizes = mExpression0();
  while (rank > 0) sizes = mExpression1(mIntConst(lengths[--rank]), sizes);
  put_shape(NoPosition, lhs, sizes, top);
}

void Rewrite_f90_set(tAsynt set, tAsynt* top) {
  if (found_first_occurence) return;
  found_first_occurence = true;
  switch (Asynt_Kind(Binary_RHS(set))) {
    case kSymbol: return Rewrite_f90_set_symbol(Binary_LHS(set), Binary_RHS(set), top);
    case kXList: return Rewrite_f90_set_list(Binary_LHS(set), Binary_RHS(set), top);
    default:
      error_msg("F90 unparser: Cannot unparse the assignment '%s'. Array has unknown dimensions.\n",
                unparse_string(set));
  }
}

}  // namespace oz
