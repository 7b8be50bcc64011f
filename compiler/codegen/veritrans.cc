// The verification and transformation pass.
//
// The reader hands over applications, Times[a, Power[b, -1]]; behind this pass stand the nodes that typing and the
// generators know: XDivide(a, b). Arguments are converted before the application that holds them, so that the
// arithmetic rewrites see finished nodes.
//
// The walk meets trees of two origins: applications that were just read, and bodies that it has walked before (an
// evaluate function is walked when it is read and once more when its code is made). Nodes that it makes itself are
// therefore walked through like the other nodes of their family.
//
// Recursion follows nesting; lists are followed in a loop.

#include "veritrans.h"

#include <cstdio>
#include <cstring>
#include <unordered_set>

#include "Asynt.h"
#include "Errors.h"
#include "ffparse.h"
#include "oz.h"
#include "ozerrors.h"
#include "predef.h"
#include "type.h"
#include "unparse.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*veritrans_Exit)() = leave;
char allow_untyped = 0;
char ce = 0;
tAsynt last_XSet_seen = nullptr;

namespace {

// The dimension lists that the walk at work has met: symbols share them, and they can lead back to their own symbol.
std::unordered_set<tAsynt> walked_dimensions;

void walk(tAsynt* t);

// ---- what nodes say

// The PreDef type of a head or symbol, or null.
tAsynt predef_of(tAsynt t) {
  if (!Asynt_IsType(t, kSymbol)) return nullptr;
  tAsynt type = SymInfo_Type(Symbol_SymInfo(t));
  return Asynt_IsType(type, kPreDef) ? type : nullptr;
}

tAsynt symbol_type(tAsynt t) { return SymInfo_Type(Symbol_SymInfo(t)); }
tPosition symbol_position(tAsynt t) { return SymInfo_Pos(Symbol_SymInfo(t)); }

bool is_int_const(tAsynt t, int value, const char* text) {
  if (Asynt_IsType(t, kIntConst)) return IntConst_Val(t) == value;
  return Asynt_IsType(t, kExactIntConst) && std::strcmp(ExactIntConst_Val(t), text) == 0;
}
bool Is_plus1_int(tAsynt t) { return is_int_const(t, 1, "1"); }
bool Is_minus1_int(tAsynt t) { return is_int_const(t, -1, "-1"); }

tAsynt operator_pos(tAsynt t) { return Operator_PosConv(t); }
tPosition operator_position(tAsynt t) { return PosConv_Pos(operator_pos(t)); }

[[noreturn]] void bad_tree(tAsynt t) {
  die_msg("Bad tree in Veri_trans_tree. Node type: %s", Asynt_NodeName(Asynt_Kind(t)));
}

// ---- arithmetic

// The factors of a product without its reciprocals, over their denominators. `link` runs over the links of the factor
// list; each factor 1/d is unlinked and d put in front of the denominators, which so end up in reverse order.
void Transform_times_divide(tPosition Pos, tAsynt* link, tAsynt* parent) {
  tAsynt denominators = nullptr;
  while (Asynt_IsType(*link, kExpression1)) {
    tAsynt factor = Expression1_Expression(*link);
    if (Asynt_IsType(factor, kXDivide) && Is_plus1_int(Binary_LHS(factor))) {
      denominators = mExpression1(Binary_RHS(factor), denominators ? denominators : mExpression0());
      *link = Expression1_Expressions(*link);
    } else {
      link = &Expression1_Expressions(*link);
    }
  }
  if (!Asynt_IsType(*link, kExpression0))
    die_msg_pos2(Pos, "Strange node type in Transform_times_divide: %s", Asynt_NodeName(Asynt_Kind(*link)));
  if (!denominators) return;
  tAsynt factors = Variadic_Expressions(*parent);
  const bool one_factor = expr_list_len(factors) == 1;
  tAsynt numerator = one_factor ? Expression1_Expression(factors) : mXTimes(mkNonConvPos(Pos), factors);
  const bool one_denominator = expr_list_len(denominators) == 1;
  tAsynt denominator =
      one_denominator ? Expression1_Expression(denominators) : mXTimes(mkNonConvPos(Pos), denominators);
  *parent = mXDivide(mkNonConvPos(Pos), numerator, denominator);
}

// Times[-1, ...] becomes a negation, a product with reciprocals a quotient, Power[x, -1] becomes 1/x.
void Transform_minus_times_divide(tAsynt* t) {
  if (Asynt_IsType(*t, kXTimes) && Asynt_IsType(Variadic_Expressions(*t), kExpression1)) {
    const tPosition pos = operator_position(*t);
    tAsynt factors = Variadic_Expressions(*t);
    const int count = expr_list_len(factors);
    const bool negated = count >= 2 && Is_minus1_int(Expression1_Expression(factors));
    if (negated && count == 2) {
      *t = mXMinus(mkNonConvPos(NoPosition), Expression1_Expression(Expression1_Expressions(factors)));
    } else if (negated) {
      tAsynt times = mXTimes(operator_pos(*t), Expression1_Expressions(factors));
      *t = mXMinus(mkNonConvPos(pos), times);
      Transform_times_divide(pos, &Variadic_Expressions(times), &Unary_Expression(*t));
    } else {
      Transform_times_divide(pos, &Variadic_Expressions(*t), t);
    }
  } else if (Asynt_IsType(*t, kXPower) && Is_minus1_int(Binary_RHS(*t))) {
    *t = mXDivide(mkNonConvPos(operator_position(*t)), mExactIntConst("1"), Binary_LHS(*t));
  }
}

// ---- inequalities

[[noreturn]] void malformed_inequality(tAsynt list) { die_msg("Malformed Inequality: %s", unparse_string(list)); }

// The operator node that stands between two operands: the operator's kind with no operands of its own.
tAsynt inequality_operator(tAsynt list) {
  tAsynt op = Asynt_IsType(list, kExpression1) ? Expression1_Expression(list) : nullptr;
  tAsynt predef = predef_of(op);
  if (!predef) return nullptr;
  const predef_type flag = PreDef_type_flag(predef);
  if (flag != variadic && flag != variadic_two) return nullptr;
  using Constructor = tAsynt (*)(tAsynt, tAsynt);
  const auto make = reinterpret_cast<Constructor>(PreDef_fun(predef));
  return make(mkNonConvPos(symbol_position(op)), mExpression0());
}

// The raw list e1, op1, e2, op2, e3 with operands walked and operators turned into nodes. Iterates over the list.
tAsynt Transform_ineq(tAsynt args) {
  tAsynt result = nullptr;
  tAsynt* end = &result;
  tAsynt list = args;
  for (;;) {
    if (!Asynt_IsType(list, kExpression1)) malformed_inequality(list);
    tAsynt rest = Expression1_Expressions(list);
    tAsynt node = nullptr;
    if (!Asynt_IsType(rest, kExpression0)) {
      node = inequality_operator(rest);
      if (!node) malformed_inequality(list);
    }
    walk(&Expression1_Expression(list));
    if (!node) {
      *end = list;
      return result;
    }
    tAsynt op_cell = mExpression1(node, nullptr);
    *end = mExpression1(Expression1_Expression(list), op_cell);
    end = &Expression1_Expressions(op_cell);
    list = Expression1_Expressions(rest);
  }
}

// An inequality that is already built: operands are walked, operators passed over.
void Veri_trans_ineq(tAsynt list) {
  for (;;) {
    if (!Asynt_IsType(list, kExpression1)) die_msg("Bad inequality in Veri_trans_ineq.");
    walk(&Expression1_Expression(list));
    list = Expression1_Expressions(list);
    if (Asynt_IsType(list, kExpression0)) return;
    if (!Asynt_IsType(list, kExpression1)) die_msg("Bad inequality in Veri_trans_ineq.");
    list = Expression1_Expressions(list);
  }
}

// ---- applications

// Derivative[n][x] in its curried form: one integer, one symbol.
bool is_curried_derivative(tAsynt t) {
  tAsynt args = FullFormExpression_Args(t);
  tAsynt inner = ComplexFFE_Name(t);
  if (expr_list_len(args) != 1 || !Asynt_IsType(Expression1_Expression(args), kSymbol)) return false;
  if (!Asynt_IsType(inner, kSimpleFFE) || expr_list_len(FullFormExpression_Args(inner)) != 1) return false;
  if (Asynt_Kind(Expression1_Expression(FullFormExpression_Args(inner))) != kExactIntConst) return false;
  tAsynt predef = predef_of(SimpleFFE_Name(inner));
  return predef && PreDef_fun(predef) == reinterpret_cast<void*>(&mDeriv);
}

tAsynt curried_derivative(tAsynt t) {
  tAsynt inner = ComplexFFE_Name(t);
  return mDeriv(mkConvPos(symbol_position(SimpleFFE_Name(inner))),
                Expression1_Expression(FullFormExpression_Args(inner)),
                Expression1_Expression(FullFormExpression_Args(t)));
}

void walk_complex_call(tAsynt* t) {
  if (is_curried_derivative(*t)) {
    *t = curried_derivative(*t);
    return;
  }
  Find_type(t);
  if (Asynt_Kind(*t) != kComplexFFE) {
    walk(t);
    return;
  }
  walk(&FullFormExpression_Args(*t));
  walk(&ComplexFFE_Name(*t));
}

void walk_predef_call(tAsynt* t, tAsynt predef) {
  tAsynt head = SimpleFFE_Name(*t);
  walk(&FullFormExpression_Args(*t));
  *t = convert_predef_node(symbol_position(head), FullFormExpression_Args(*t), PreDef_fun(predef),
                           PreDef_type_flag(predef), *t);
  Transform_minus_times_divide(t);
}

// An access to a member of an instance set is a nest, which later becomes an array access.
bool becomes_member_nest(tAsynt* t) {
  tAsynt type = symbol_type(SimpleFFE_Name(*t));
  if (!Is_setmember(type)) return false;
  walk(&FullFormExpression_Args(*t));
  *t = mSymbol(mAbsoluteNest(type, NoPosition, *t));
  return true;
}

void walk_simple_call(tAsynt* t) {
  tAsynt head = SimpleFFE_Name(*t);
  if (!Asynt_IsType(head, kSymbol)) bad_tree(*t);
  if (tAsynt predef = predef_of(head)) {
    if (PreDef_type_flag(predef) == predef_ineq)
      *t = mXInequality(Transform_ineq(FullFormExpression_Args(*t)));
    else
      walk_predef_call(t, predef);
    return;
  }
  if (Asynt_IsType(symbol_type(head), kNoType) && !allow_untyped) {
    if (Asynt_IsType(Find_type(&SimpleFFE_Name(*t)), kNoType))
      notype_error(symbol_position(head), Symbol_SymInfo(head), last_XSet_seen, 1);
    else
      becomes_member_nest(t);
    return;
  }
  if (becomes_member_nest(t)) return;
  Find_type(t);
  if (Asynt_Kind(*t) != kSimpleFFE) {
    walk(t);
    return;
  }
  walk(&FullFormExpression_Args(*t));
  walk(&SimpleFFE_Name(*t));
}

// A blank is a size that is not known.
bool is_unnamed_blank(tAsynt t) { return Asynt_Kind(t) == kBlank && Asynt_IsType(Blank_Head(t), kEmpty); }

// The full-form reader makes lists of constants, which have nothing to walk.
void walk_sizes(tAsynt sizes) {
  for (; Asynt_IsType(sizes, kExpression1); sizes = Expression1_Expressions(sizes))
    if (!is_unnamed_blank(Expression1_Expression(sizes))) walk(&Expression1_Expression(sizes));
}

void walk_symbol(tAsynt* t) {
  if (tAsynt predef = predef_of(*t)) {
    *t = convert_predef_const_node(*t, PreDef_fun(predef), PreDef_type_flag(predef));
    return;
  }
  tAsynt type = symbol_type(*t);
  if (Asynt_IsType(type, kNoType) && !allow_untyped) {
    if (Asynt_IsType(Find_type(t), kNoType)) notype_error(symbol_position(*t), Symbol_SymInfo(*t), last_XSet_seen, 0);
    return;
  }
  if (!Asynt_IsType(type, kArrayType) || !walked_dimensions.insert(ArrayType_Dimensions(type)).second) return;
  // The sizes in a declaration may name things that this walk cannot type.
  const char saved = allow_untyped;
  allow_untyped = 1;
  walk_sizes(ArrayType_Dimensions(type));
  allow_untyped = saved;
}

// ---- lists and subscripts

// In the index list of a part, also under "|", an unnamed blank of the model language is the blank of the host.
void blank_index(tAsynt* index) {
  if (is_unnamed_blank(*index)) *index = mXBlank();
  if (Asynt_IsType(*index, kXAlternatives)) {
    blank_index(&Binary_LHS(*index));
    blank_index(&Binary_RHS(*index));
  }
}

void blank_indices(tAsynt list) {
  if (!Asynt_IsType(list, kExpression1)) return;
  for (list = Expression1_Expressions(list); Asynt_IsType(list, kExpression1); list = Expression1_Expressions(list))
    blank_index(&Expression1_Expression(list));
}

// Elements that are meant for the host alone drop out of the list.
void walk_expressions(tAsynt* list) {
  while (Asynt_IsType(*list, kExpression1)) {
    if (Asynt_IsType(Expression1_Expression(*list), kAlgAuxiliary)) {
      *list = Expression1_Expressions(*list);
      continue;
    }
    walk(&Expression1_Expression(*list));
    list = &Expression1_Expressions(*list);
  }
  if (!Asynt_IsType(*list, kExpression0)) walk(list);
}

// Symbol and parameter lists.
template <typename Head, typename Tail>
void walk_cells(tAsynt list, Asynt_tKind cell, Head head, Tail tail) {
  for (; Asynt_Kind(list) == cell; list = tail(list)) walk(head(list));
}

void walk_iterator(tAsynt iterator) {
  walk(&Iterator_Variable(iterator));
  walk(&Iterator_Min(iterator));
  walk(&Iterator_Max(iterator));
}

void walk_iterators(tAsynt list) {
  for (; Asynt_IsType(list, kIterator1); list = Iterator1_Iterators(list)) walk_iterator(Iterator1_Iterator(list));
}

void walk_size_parameter(tAsynt t) {
  // A size parameter without a declared type is an integer.
  if (Asynt_IsType(Find_type(&InputSizeParameter_Name(t)), kNoType))
    set_sym_type(InputSizeParameter_Name(t), mIntType(nullptr));
  walk(&InputSizeParameter_Name(t));
  walk(&InputSizeParameter_ArrayName(t));
  walk(&InputSizeParameter_Size(t));
}

// ---- statements

void refuse_if_ce(tAsynt t) {
  if (ce) bad_tree(t);
}

void walk_set(tAsynt t) {
  last_XSet_seen = t;
  walk(&Binary_LHS(t));
  walk(&Binary_RHS(t));
}

bool is_walked_variadic(unsigned kind) {
  switch (kind) {
    case kXSameQ:
    case kXUnsameQ:
    case kXNonCommutativeMultiply: return false;
    default: return true;
  }
}

// The kinds whose rule is that of their family, and the kinds that end the run.
void walk_family(tAsynt* t) {
  tAsynt n = *t;
  if (Asynt_IsType(n, kConstant)) return;
  if (Asynt_IsType(n, kCUnary)) {
    walk(&CUnary_Arg(n));
  } else if (Asynt_IsType(n, kCBinary)) {
    walk(&CBinary_Arg1(n));
    walk(&CBinary_Arg2(n));
  } else if (Asynt_IsType(n, kVariadic) && is_walked_variadic(n->yyKind)) {
    if (Asynt_Kind(n) == kXPart) blank_indices(Variadic_Expressions(n));
    walk(&Variadic_Expressions(n));
  } else {
    bad_tree(n);
  }
}

void walk(tAsynt* t) {
  tAsynt n = *t;
  if (!n) bad_tree(n);
  switch (Asynt_Kind(n)) {
    case kParameterspec0:
    case kOutputParameter:
    case kOutputSizeParameter:
    case kXBlank:
    case kXAll:
    case kXNull:
    case kXVoidFunc:
    case kEmpty:
    case kComment:
    case kExpression0:
    case kSymbol0: return;
    case kParameterspec1:
      walk_cells(
          n, kParameterspec1, [](tAsynt l) { return &Parameterspec1_Parameterspec(l); },
          [](tAsynt l) { return Parameterspec1_Parameterspecs(l); });
      return;
    case kInputParameter: walk(&InputParameter_Name(n)); return;
    case kInputSizeParameter: walk_size_parameter(n); return;
    case kInOutParameter: walk(&InOutParameter_Name(n)); return;
    case kExternalDeclaration: walk(&ExternalDeclaration_Parameters(n)); return;
    case kComplexFFE: walk_complex_call(t); return;
    case kSimpleFFE: walk_simple_call(t); return;
    case kXFor:
      refuse_if_ce(n);
      walk(&XFor_Start(n));
      walk(&XFor_Test(n));
      walk(&XFor_Incr(n));
      walk(&XFor_Body(n));
      return;
    case kXWhile:
      refuse_if_ce(n);
      walk(&XWhile_Test(n));
      walk(&XWhile_Body(n));
      return;
    case kXIf:
      walk(&XIf_Condition(n));
      walk(&XIf_T(n));
      walk(&XIf_F(n));
      return;
    case kXWhich:
      refuse_if_ce(n);
      walk(&XWhich_Expressions(n));
      return;
    case kDo:
      walk(&Do_Expr(n));
      if (Asynt_Kind(Do_Iter(n)) == kIterator)
        walk_iterator(Do_Iter(n));
      else
        walk_iterators(Do_Iter(n));
      return;
    case kXBreak: refuse_if_ce(n); return;
    case kXPrint: walk(&XPrint_Expressions(n)); return;
    case kIReduce:
      walk(&IReduce_Function(n));
      walk(&IReduce_Body(n));
      walk_iterators(IReduce_Iter(n));
      return;
    case kXModule:
      refuse_if_ce(n);
      walk(&XModule_Varlist(n));
      walk(&XModule_Initializers(n));
      walk(&XModule_Body(n));
      return;
    case kXBlock:
      refuse_if_ce(n);
      walk(&XBlock_Varlist(n));
      walk(&XBlock_Initializers(n));
      walk(&XBlock_Body(n));
      return;
    case kXWith:
      refuse_if_ce(n);
      walk(&XWith_Orig(n));
      walk(&XWith_Replacement(n));
      walk(&XWith_Body(n));
      return;
    case kParSet:
      walk(&ParSet_Lefties(n));
      walk(&ParSet_Rights(n));
      return;
    case kForAll:
      walk(&ForAll_Body(n));
      walk_iterators(ForAll_Iter(n));
      return;
    case kXMinus:
    case kXNot:
    case kXStringLength:
    case kXStringReverse: walk(&Unary_Expression(n)); return;
    case kXSubtract:
    case kXPower:
    case kXDivide:
    case kXAlternatives:
    case kXDrop:
    case kXAppend:
    case kXPrepend:
    case kDeriv:
      walk(&Binary_LHS(n));
      walk(&Binary_RHS(n));
      return;
    // A delayed assignment becomes a plain one in place.
    case kXSetDelayed: n->yyKind = kXSet; [[fallthrough]];
    case kXSet: walk_set(n); return;
    case kXInequality: Veri_trans_ineq(XInequality_Expressions(n)); return;
    case kSymbol: walk_symbol(t); return;
    case kXPut:
      walk(&XPut_Expression(n));
      walk(&XPut_Filename(n));
      return;
    case kGeneralConversion:
    case kShapeConversion: walk(&TypeConversion_Expression(n)); return;
    case kExpression1: walk_expressions(t); return;
    case kSymbol1:
      walk_cells(
          n, kSymbol1, [](tAsynt l) { return &Symbol1_Symbol(l); }, [](tAsynt l) { return Symbol1_Symbols(l); });
      return;
    default: walk_family(t); return;
  }
}

}  // namespace

void Beginveritrans() { last_XSet_seen = nullptr; }
void Closeveritrans() {}

void Veri_trans_tree(tAsynt* t) {
  walked_dimensions.clear();
  walk(t);
}

}  // namespace oz
