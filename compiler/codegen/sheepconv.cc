// Reductions and changes of shape ahead of output: what has no form of its own in an expression is computed into a
// temporary, in front of the statement that needs it.
//
//   y = x + 1     the 1 is to be read as an array     T = ShapeConversion(1);  y = x + T
//   y = Sum(...)                                      i = min;  R = body;  Do(R = R + body);  y = R
//
// A reduction starts from its first element, so that no neutral value is needed: the ranges are set to their lower
// bounds, R gets the body there, and the loops run over the rest.

#include "sheepconv.h"

#include <cstdio>
#include <cstdlib>

#include "Asynt.h"
#include "Errors.h"
#include "cse.h"
#include "oz.h"
#include "ozerrors.h"
#include "predef.h"
#include "sheepconv_parts.h"
#include "type.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*sheepconv_Exit)() = leave;

void sheepconv_failed(const char* routine) {
  std::fprintf(stderr, "Error: module sheepconv, routine %s failed\n", routine);
  sheepconv_Exit();
  std::abort();  // the exit hook must not return
}

tAsynt sheepconv_compound(tPosition pos, std::initializer_list<tAsynt> statements) {
  tAsynt list = mExpression0();
  for (const tAsynt* s = statements.end(); s != statements.begin();) list = mExpression1(*--s, list);
  return mXCompoundExpression(mkNonConvPos(pos), list);
}

namespace {

tAsynt compound(std::initializer_list<tAsynt> statements) { return sheepconv_compound(NoPosition, statements); }

tAsynt set(tAsynt lhs, tAsynt rhs) { return mXSet(mkNonConvPos(NoPosition), lhs, rhs); }

// ---- changes of shape

tAsynt Dim(tAsynt typ) {
  if (Asynt_IsType(typ, kBasicType)) return mExpression0();
  if (Asynt_IsType(typ, kArrayType)) return ArrayType_Dimensions(typ);
  sheepconv_failed("Dim");
}

tAsynt reshaped(tAsynt expr, tAsynt from, tAsynt to) { return mShapeConversion(expr, Dim(from), Dim(to)); }

}  // namespace

void Shape_conv(tAsynt* expr, tAsynt from, tAsynt to, tAsynt* toplev) {
  if (Asynt_Kind(*expr) == kSymbol || Asynt_IsType(*expr, kConstant)) {
    const tAsynt temp = make_temp_symb(to);
    *toplev = compound({set(mSymbol(temp), reshaped(*expr, from, to)), *toplev});
    *expr = mSymbol(temp);
    return;
  }
  const tAsynt whole = make_temp_symb(from);
  const tAsynt temp = make_temp_symb(to);
  *toplev = compound({set(mSymbol(whole), *expr), set(mSymbol(temp), reshaped(mSymbol(whole), from, to)), *toplev});
  *expr = mSymbol(temp);
}

// Shapes that are equal are converted all the same.
void Possible_shape_conv(tAsynt* expr, tAsynt from, tAsynt to, tAsynt* toplev) {
  if (Asynt_IsType(to, kArrayType)) Shape_conv(expr, from, to, toplev);
}

// ---- reductions

namespace {

constexpr int kMaxReductionNesting = 10;  // the code doubles with each level
constexpr int kMaxRanges = 500;           // the code grows with the square

// Whether a child of an expression is named by it rather than part of it.
bool is_shared(tAsynt child) { return Asynt_IsType(child, kSymInfo) || Asynt_IsType(child, kType); }

// Another tree of the same expression, for a second place: what is rewritten in place is met in each. Symbol
// information and types are not copied.
tAsynt again(tAsynt t) {
  tAsynt result = t;
  for (tAsynt* where = &result; *where && !is_shared(*where);) {
    const tAsynt old = *where;
    const TreeKind& k = Asynt_Schema.kinds[Asynt_Kind(old)];
    const tAsynt copy = Asynt_New(Asynt_Kind(old), k.field_count);
    for (size_t i = 0; i < k.field_count; i++) tree_raw_slot<uint64_t>(copy, i) = tree_raw_slot<uint64_t>(old, i);
    *where = copy;
    if (k.child_count == 0) break;
    for (int i = 0; i + 1 < k.child_count; i++) {
      tAsynt& child = tree_raw_slot<tAsynt>(copy, k.children[i]);
      child = again(child);
    }
    where = &tree_raw_slot<tAsynt>(copy, k.children[k.child_count - 1]);
  }
  return result;
}

// How many levels of reductions there are in an expression.
int reduction_depth(tAsynt t) {
  int depth = 0;
  int above = 0;
  while (t && !is_shared(t)) {
    above += Asynt_Kind(t) == kIReduce;
    const TreeKind& k = Asynt_Schema.kinds[Asynt_Kind(t)];
    for (int i = 0; i + 1 < k.child_count; i++) {
      const int d = above + reduction_depth(tree_raw_slot<tAsynt>(t, k.children[i]));
      if (d > depth) depth = d;
    }
    t = k.child_count == 0 ? nullptr : tree_raw_slot<tAsynt>(t, k.children[k.child_count - 1]);
  }
  return depth > above ? depth : above;
}

// The first range of a reduction that has one.
tAsynt first_range(tAsynt iter, const char* routine) {
  if (Asynt_Kind(iter) != kIterator1) sheepconv_failed(routine);
  return Iterator1_Iterator(iter);
}

bool is_last_range(tAsynt iter, const char* routine) {
  const tAsynt rest = Iterator1_Iterators(iter);
  if (!Asynt_IsType(rest, kIterators)) sheepconv_failed(routine);
  return Asynt_Kind(rest) == kIterator0;
}

tAsynt one_later(tAsynt range) {
  const tAsynt terms = mExpression1(again(Iterator_Min(range)), mExpression1(mExactIntConst("1"), mExpression0()));
  return mIterator(again(Iterator_Variable(range)), mXPlus(mkNonConvPos(NoPosition), terms),
                   again(Iterator_Max(range)));
}

tAsynt start_of(tAsynt range) { return set(again(Iterator_Variable(range)), again(Iterator_Min(range))); }

}  // namespace

tAsynt Make_reduction_expr(tAsynt fun, tAsynt R, tAsynt body) {
  const tAsynt args = mExpression1(again(R), mExpression1(again(body), mExpression0()));
  const tAsynt typ = Asynt_Kind(fun) == kSymbol ? SymInfo_Type(Symbol_SymInfo(fun)) : nullptr;
  const tAsynt application = mSimpleFFE(args, again(fun));
  if (Asynt_Kind(typ) != kPreDef) return application;
  return convert_predef_node(SymInfo_Pos(Symbol_SymInfo(fun)), args, PreDef_fun(typ), PreDef_type_flag(typ),
                             application);
}

// Only the innermost loop starts one later; the outer ones run their whole range.
tAsynt Make_do_expr(tAsynt fun, tAsynt body, tAsynt iter, tAsynt R) {
  const tAsynt range = first_range(iter, "Make_do_expr");
  if (is_last_range(iter, "Make_do_expr"))
    return mDo(set(again(R), Make_reduction_expr(fun, R, body)), one_later(range));
  return mDo(Make_do_expr(fun, body, Iterator1_Iterators(iter), R), again(range));
}

tAsynt Make_ireduce_init_expr(tAsynt fun, tAsynt body, tAsynt iter, tAsynt R) {
  const tAsynt range = first_range(iter, "Make_ireduce_init_expr");
  if (is_last_range(iter, "Make_ireduce_init_expr")) return compound({start_of(range), set(again(R), again(body))});
  const tAsynt rest = Iterator1_Iterators(iter);
  const tAsynt start = start_of(range);
  const tAsynt init = Make_ireduce_init_expr(fun, body, rest, R);
  return compound({start, init, Make_do_expr(fun, body, rest, R)});
}

namespace {

void check_reduction(tAsynt t) {
  if (reduction_depth(t) > kMaxReductionNesting)
    die_msg("F90 unparser: Reductions are nested more than %d deep.\n", kMaxReductionNesting);
  int ranges = 0;
  for (tAsynt l = IReduce_Iter(t); Asynt_Kind(l) == kIterator1; l = Iterator1_Iterators(l)) ranges++;
  if (ranges > kMaxRanges) die_msg("F90 unparser: A reduction has more than %d ranges.\n", kMaxRanges);
}

}  // namespace

// The statements of a reduction whose body holds reductions are walked in their turn, since no output knows an IReduce.
void Rewrite_Ireduce(tAsynt* t, tAsynt* toplev) {
  check_reduction(*t);
  const tAsynt fun = IReduce_Function(*t);
  const tAsynt body = IReduce_Body(*t);
  const tAsynt iter = IReduce_Iter(*t);
  const bool nested = reduction_depth(body) > 0;
  const tAsynt R = mSymbol(make_temp_symb(Find_type(&IReduce_Body(*t))));
  tAsynt init = Make_ireduce_init_expr(fun, body, iter, R);
  tAsynt loop = Make_do_expr(fun, body, iter, R);
  const bool is_statement = t == toplev;
  if (nested && !is_statement) {
    Rewrite_shapeconv(&init, &init);
    Rewrite_shapeconv(&loop, &loop);
  }
  *t = R;
  *toplev = compound({init, loop, is_statement ? R : *toplev});
}

// ---- the walk

namespace {

// A reduction that is a statement of its own has its bounds from the statements before it, and stays behind them.
void walk_statements(tAsynt list, tAsynt* toplev) {
  for (; Asynt_Kind(list) == kExpression1; list = Expression1_Expressions(list)) {
    tAsynt* head = &Expression1_Expression(list);
    if (Asynt_Kind(*head) == kXSet) toplev = head;
    Rewrite_shapeconv(head, Asynt_Kind(*head) == kIReduce ? head : toplev);
  }
}

// Behind an assignment, what is hoisted lands in front of that assignment.
void walk_list(tAsynt list, tAsynt* toplev) {
  for (; Asynt_Kind(list) == kExpression1; list = Expression1_Expressions(list)) {
    tAsynt* head = &Expression1_Expression(list);
    if (Asynt_Kind(*head) == kXSet) toplev = head;
    Rewrite_shapeconv(head, toplev);
  }
}

// Both branches of a conditional that is a value are computed in front of the whole assignment.
void walk_set(tAsynt t, tAsynt* toplev) {
  Rewrite_shapeconv(&Binary_LHS(t), toplev);
  const tAsynt rhs = Binary_RHS(t);
  if (Asynt_Kind(rhs) != kXIf) return Rewrite_shapeconv(&Binary_RHS(t), toplev);
  Rewrite_shapeconv(&XIf_Condition(rhs), toplev);
  Rewrite_shapeconv(&XIf_T(rhs), toplev);
  Rewrite_shapeconv(&XIf_F(rhs), toplev);
}

void walk_if(tAsynt t, tAsynt* toplev) {
  Rewrite_shapeconv(&XIf_Condition(t), toplev);
  Rewrite_shapeconv(&XIf_T(t), &XIf_T(t));
  Rewrite_shapeconv(&XIf_F(t), &XIf_F(t));
}

void walk_conversion(tAsynt t, tAsynt* toplev) {
  tAsynt* expr = &TypeConversion_Expression(t);
  Rewrite_shapeconv(expr, toplev);
  Possible_shape_conv(expr, GeneralConversion_From(t), GeneralConversion_To(t), toplev);
}

void walk_call(tAsynt t, tAsynt* toplev) {
  Rewrite_shapeconv(&FullFormExpression_Args(t), toplev);
  Rewrite_shapeconv(Asynt_Kind(t) == kSimpleFFE ? &SimpleFFE_Name(t) : &ComplexFFE_Name(t), toplev);
}

// A family whose members are all walked alike.
void walk_family(tAsynt t, tAsynt* toplev) {
  if (Asynt_IsType(t, kCUnary)) return Rewrite_shapeconv(&CUnary_Arg(t), toplev);
  if (Asynt_IsType(t, kUnary)) return Rewrite_shapeconv(&Unary_Expression(t), toplev);
  if (Asynt_IsType(t, kVariadic)) return Rewrite_shapeconv(&Variadic_Expressions(t), toplev);
  if (Asynt_IsType(t, kCBinary)) {
    Rewrite_shapeconv(&CBinary_Arg1(t), toplev);
    return Rewrite_shapeconv(&CBinary_Arg2(t), toplev);
  }
  if (Asynt_IsType(t, kBinary)) {
    Rewrite_shapeconv(&Binary_LHS(t), toplev);
    return Rewrite_shapeconv(&Binary_RHS(t), toplev);
  }
  if (Asynt_IsType(t, kConstant)) return;
  die_msg("F90 unparser: Unknown node type in sheepconv: %s\n", Asynt_NodeName(Asynt_Kind(t)));
}

}  // namespace

void Rewrite_shapeconv(tAsynt* where, tAsynt* toplev) {
  const tAsynt t = *where;
  switch (Asynt_Kind(t)) {
    case kSymbol:
    case kExpression0: return;
    case kComplexFFE:
    case kSimpleFFE: return walk_call(t, toplev);
    case kXIf: return walk_if(t, toplev);
    case kDo: return Rewrite_shapeconv(&Do_Expr(t), &Do_Expr(t));
    case kIReduce: Rewrite_Ireduce(where, toplev); return Rewrite_shapeconv(where, toplev);
    case kXModule: return Rewrite_shapeconv(&XModule_Body(t), &XModule_Body(t));
    case kXBlock: return Rewrite_shapeconv(&XBlock_Body(t), &XBlock_Body(t));
    case kXSet: return walk_set(t, toplev);
    case kXCompoundExpression: return walk_statements(Variadic_Expressions(t), toplev);
    case kXInequality: return Rewrite_shapeconv(&XInequality_Expressions(t), toplev);
    case kNonAlgAuxiliary: return Rewrite_shapeconv(&NonAlgAuxiliary_Expression(t), toplev);
    case kGeneralConversion: return walk_conversion(t, toplev);
    case kExpression1: return walk_list(t, toplev);
    default: return walk_family(t, toplev);
  }
}

}  // namespace oz
