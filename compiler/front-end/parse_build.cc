// Nodes that take more than one constructor call.

#include "parse_build.h"

#include <algorithm>
#include <climits>

#include "Errors.h"
#include "nesting.h"
#include "oz.h"
#include "ozerrors.h"
#include "scan.h"

namespace oz::parsing {
namespace {

// The Variadic made last, and the last cell of its list. An operand that is a Variadic at its top was made after all
// that is in it, so that this is the one to know when the operand is complete.
struct {
  tAsynt tree;
  tAsynt cell;
} last_made;

bool is_call(tAsynt t) { return Asynt_IsType(t, kFullFormExpression); }

// A cell's tail is its second and last field.
tAsynt* tail(tAsynt cell) { return &tree_raw_slot<tAsynt>(cell, 1); }

tAsynt pair(tAsynt a, tAsynt b) { return mExpression1(a, mExpression1(b, mExpression0())); }

// The first argument denotes an element unless it is a pattern variable.
bool denotes_element(tAsynt call) {
  const tAsynt args = FullFormExpression_Args(call);
  return Asynt_Kind(args) == kExpression1 && Asynt_Kind(Expression1_Expression(args)) != kXPattern;
}

// The context elements up to the last one, and the last one.
tAsynt cut_last(tAsynt* exprs) {
  tAsynt* end = exprs;
  while (Asynt_Kind(Expression1_Expressions(*end)) == kExpression1) end = &Expression1_Expressions(*end);
  const tAsynt element = Expression1_Expression(*end);
  *end = Expression1_Expressions(*end);
  return element;
}

tAsynt full_symbol(tAsynt symbol, tAsynt components) {
  const tAsynt info = Symbol_SymInfo(symbol);
  return mSymbol(mFullSymbol(mNoType(), SymInfo_Pos(info), NamedSymbol_Name(info), components));
}

// The innermost call of f[x][y]...
tAsynt innermost_call(tAsynt call) {
  while (Asynt_Kind(call) == kComplexFFE) call = ComplexFFE_Name(call);
  if (Asynt_Kind(call) != kSimpleFFE) die_msg("interal error in make_full_symbol()");
  return call;
}

void store_attributes(tAsynt type, Index* atts) {
  if (Asynt_IsType(type, kArrayType)) type = ArrayType_BasicType(type);
  if (Asynt_IsType(type, kBasicType)) BasicType_attributes(type) = atts;
}

bool is_alphanumeric(char c) { return ('0' <= c && c <= '9') || ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z'); }

}  // namespace

void nested_too_deeply() {
  die_msg_pos2(scan_Attribute.Position, "expression nested too deeply (more than %d levels)", kMaxNesting);
}

Operand node(tAsynt tree, int depth_below) {
  if (depth_below >= kMaxNesting) nested_too_deeply();
  return {tree, depth_below + 1};
}

void append(List* list, tAsynt cell) {
  *list->hole = cell;
  list->hole = tail(cell);
}

tAsynt finish(List* list, tAsynt terminator) {
  *list->hole = terminator;
  return list->head;
}

tAsynt here() { return mkNonConvPos(scan_Attribute.Position); }

tAsynt make_unary(Asynt_tKind kind, tAsynt expression) {
  const tAsynt t = Asynt_New(kind, 2);
  Operator_PosConv(t) = here();
  Unary_Expression(t) = expression;
  return t;
}

tAsynt make_binary(Asynt_tKind kind, tAsynt lhs, tAsynt rhs) {
  const tAsynt t = Asynt_New(kind, 3);
  Operator_PosConv(t) = here();
  Binary_LHS(t) = lhs;
  Binary_RHS(t) = rhs;
  return t;
}

tAsynt make_list(Asynt_tKind kind, tAsynt expressions) {
  const tAsynt t = Asynt_New(kind, 2);
  Operator_PosConv(t) = here();
  Variadic_Expressions(t) = expressions;
  return t;
}

tAsynt last_cell(Asynt_tKind kind, tAsynt tree) {
  if (Asynt_Kind(tree) != kind) return nullptr;
  if (tree == last_made.tree) return last_made.cell;
  tAsynt cell = Variadic_Expressions(tree);
  while (Asynt_Kind(*tail(cell)) == kExpression1) cell = *tail(cell);
  return cell;
}

Operand make_variadic(Asynt_tKind kind, const Operand& lop, tAsynt lop_last, const Operand& rop) {
  const bool left = Asynt_Kind(lop.tree) == kind;
  const bool right = Asynt_Kind(rop.tree) == kind;
  if (left && right) {
    last_made = {lop.tree, last_cell(kind, rop.tree)};
    *tail(lop_last) = Variadic_Expressions(rop.tree);
    return {lop.tree, std::max(lop.depth, rop.depth)};
  }
  if (left) {
    last_made = {lop.tree, mExpression1(rop.tree, *tail(lop_last))};
    *tail(lop_last) = last_made.cell;
    return node(lop.tree, std::max(lop.depth - 1, rop.depth));
  }
  if (right) {
    last_made = {rop.tree, last_cell(kind, rop.tree)};
    Variadic_Expressions(rop.tree) = mExpression1(lop.tree, Variadic_Expressions(rop.tree));
    return node(rop.tree, std::max(lop.depth, rop.depth - 1));
  }
  const tAsynt list = pair(lop.tree, rop.tree);
  last_made = {make_list(kind, list), *tail(list)};
  return node(last_made.tree, std::max(lop.depth, rop.depth));
}

Operand make_prefix_plus(const Operand& expr) {
  const tAsynt cell = mExpression1(expr.tree, mExpression0());
  last_made = {make_list(kXPlus, cell), cell};
  return node(last_made.tree, expr.depth);
}

Operand make_derivative(const Operand& expr) {
  if (Asynt_Kind(expr.tree) != kDeriv) return node(mDeriv(here(), mIntConst(1), expr.tree), expr.depth);
  ozmat_int& order = IntConst_Val(Binary_LHS(expr.tree));
  if (order < INT_MAX) order++;
  return expr;
}

tAsynt make_funcall(tAsynt fun, tAsynt params) {
  return Asynt_Kind(fun) == kSymbol ? mSimpleFFE(params, fun) : mComplexFFE(params, fun);
}

Operand make_part(const Operand& lhs, const Operands& rhs) {
  if (Asynt_Kind(rhs.list) == kExpression0) return lhs;
  return node(make_list(kXPart, mExpression1(lhs.tree, rhs.list)), std::max(lhs.depth, rhs.depth));
}

tAsynt make_full_symbol(tAsynt exprs) {
  if (Asynt_Kind(Expression1_Expressions(exprs)) == kExpression0) return Expression1_Expression(exprs);
  const tAsynt last = cut_last(&exprs);
  if (Asynt_Kind(last) == kSymbol) return full_symbol(last, exprs);
  if (Asynt_Kind(last) == kSimpleFFE)
    return mSimpleFFE(FullFormExpression_Args(last), full_symbol(SimpleFFE_Name(last), exprs));
  const tAsynt call = innermost_call(last);
  SimpleFFE_Name(call) = full_symbol(SimpleFFE_Name(call), exprs);
  return last;
}

tAsynt set_type(tAsynt name, tAsynt type, Index* atts) {
  if (Asynt_Kind(type) == kNoType) return name;
  store_attributes(type, atts);
  if (Asynt_Kind(name) == kSymbol) {
    SymInfo_Type(Symbol_SymInfo(name)) = type;
    return name;
  }
  if (!is_call(name)) return name;
  if (denotes_element(name)) return mSymbol(mRelativeNest(type, NoPosition, name));
  if (Asynt_Kind(name) == kComplexFFE)
    return mSimpleFFE(FullFormExpression_Args(name), mSymbol(mRelativeNest(type, NoPosition, ComplexFFE_Name(name))));
  SymInfo_Type(Symbol_SymInfo(SimpleFFE_Name(name))) = type;
  return name;
}

tAsynt make_array_decls(tAsynt syms, tAsynt expr) {
  List list;
  for (; Asynt_Kind(syms) == kSymbol1; syms = Symbol1_Symbols(syms)) {
    const tAsynt symbol = Symbol1_Symbol(syms);
    const tAsynt type = SymInfo_Type(Symbol_SymInfo(symbol));
    if (!Asynt_IsType(type, kArrayType)) continue;
    const tAsynt decl = mArrayDecl(mExpression1(symbol, mExpression0()), ArrayType_Dimensions(type));
    append(&list, mExpression1(decl, nullptr));
  }
  if (!list.head) return expr;
  append(&list, mExpression1(expr, nullptr));
  return make_list(kXCompoundExpression, finish(&list, mExpression0()));
}

string check_package_name(string str) {
  const tPosition pos = scan_Attribute.Position;
  if (!*str) {
    Message("Empty package name", xxError, pos);
    return str;
  }
  bool legal = true;
  const char* c = str;
  for (; *c; c++) legal = legal && (is_alphanumeric(*c) || *c == '$' || *c == '`');
  if (!legal) Message("Illegal character in package name", xxError, pos);
  if (c[-1] != '`') Message("Illegal package name (must end with `)", xxError, pos);
  return str;
}

int atoi_and_free(string str) {
  // The text itself is the scanner's and stays.
  long long n = 0;
  for (; '0' <= *str && *str <= '9' && n <= INT_MAX; str++) n = n * 10 + (*str - '0');
  return static_cast<int>(std::min<long long>(n, INT_MAX));
}

}  // namespace oz::parsing
