// Parallel extraction.
//
// The assignments of a system happen all at once. So all temporaries of all right sides come before the assignments to
// the outputs, whose order does not matter any more:
//
//   {x_out, y_out} = {a*y, x + a*y}       T1 = a*y; T2 = x + T1; y_out = T2; x_out = T1
//                                         reads a, y, x, a, y; writes x_out, y_out
//
// Each occurrence of a symbol is listed. State variables come in the order of the system's own list, behind all others.

#include "parel.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Asynt.h"
#include "Errors.h"
#include "cse.h"
#include "ode.h"
#include "ozerrors.h"
#include "schedule.h"
#include "sheepconv.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "type.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*parel_Exit)() = leave;

namespace {

constexpr int kNotFound = -100000;

tAsynt S0 = nullptr, E0 = nullptr, Ioe0 = nullptr;  // no symbols, no expressions, no blocks

[[noreturn]] void routine_failed(const char* routine) {
  std::fprintf(stderr, "Error: module parel, routine %s failed\n", routine);
  parel_Exit();
  std::abort();  // the exit hook must not return
}

}  // namespace

void Beginparel() {
  S0 = mSymbol0();
  E0 = mExpression0();
  Ioe0 = mInOutExpr0();
}

void Closeparel() {}

// Not found is told by a number that is smaller than any place, and stays below 0 for a list of any length.
int Locate_symbol(tAsynt s, tAsynt list) {
  int walked = 0;
  for (; Asynt_Kind(list) == kSymbol1; list = Symbol1_Symbols(list)) {
    walked++;
    if (IsEqualAsynt(Symbol1_Symbol(list), s)) return walked;
  }
  if (Asynt_Kind(list) != kSymbol0) routine_failed("Locate_symbol");
  return std::min(kNotFound + walked, -1);
}

// ---- what a block reads and writes

namespace {

std::vector<tAsynt> Css_symbols;

// Each occurrence counts, and what its symbol information leads to does not.
char Css_trav(tAsynt* t) {
  if (Asynt_Kind(*t) != kSymbol) return 1;
  const tAsynt si = Symbol_SymInfo(*t);
  if (Asynt_Kind(SymInfo_Type(si)) != kPreDef) Css_symbols.push_back(mSymbol(si));
  return 0;
}

// In the order of places; symbols of one place, which is also that of all that are not on the list, in the order in
// which they were found.
void sort_by_place(std::vector<tAsynt>* symbols, const Symbol_places& order) {
  std::unordered_map<tAsynt, int> known;
  std::vector<std::pair<int, tAsynt>> placed;
  for (tAsynt s : *symbols) {
    const auto [it, first] = known.try_emplace(Symbol_SymInfo(s), 0);
    if (first) it->second = Place_of(order, s);
    placed.emplace_back(it->second, s);
  }
  std::stable_sort(placed.begin(), placed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  for (size_t i = 0; i < placed.size(); i++) (*symbols)[i] = placed[i].second;
}

// Without an order the symbols come the other way round.
tAsynt Collect_symbol_sorted(tAsynt* tree, const Symbol_places& order) {
  Css_symbols.clear();
  TraverseAsyntTD2(tree, Css_trav);
  if (order.length > 0)
    sort_by_place(&Css_symbols, order);
  else
    std::reverse(Css_symbols.begin(), Css_symbols.end());
  tAsynt list = S0;
  for (size_t i = Css_symbols.size(); i-- > 0;) list = mSymbol1(Css_symbols[i], list);
  return list;
}

// ---- the list of a block

// The value of a right side in temporaries, in the type of the left side.
tAsynt extract_value(tAsynt lhs, tAsynt rhs) {
  tAsynt v = rhs;
  Cse(rhs, &v);
  const tAsynt lt = Find_type(&lhs);
  const tAsynt rt = Find_type(&v);
  if (Narrower(lt, rt)) die_msg("Type mismatch for assignment.");
  return Equal_types(lt, rt) ? v : mGeneralConversion(v, rt, lt);
}

void ExtractList(tAsynt lhs, tAsynt rhs) {
  std::vector<std::pair<tAsynt, tAsynt>> sets;
  for (; Asynt_Kind(lhs) == kExpression1 && Asynt_Kind(rhs) == kExpression1;
       lhs = Expression1_Expressions(lhs), rhs = Expression1_Expressions(rhs))
    sets.emplace_back(Expression1_Expression(lhs),
                      extract_value(Expression1_Expression(lhs), Expression1_Expression(rhs)));
  if (Asynt_IsType(lhs, kExpression) && Asynt_IsType(rhs, kExpression)) sets.emplace_back(lhs, extract_value(lhs, rhs));
  for (; !sets.empty(); sets.pop_back()) add_to_set_list(NoPosition, sets.back().first, sets.back().second);
}

// Flattens a block that assigns rights to lefties, which are lists or single expressions.
void flatten_block(tAsynt block, tAsynt lefties, tAsynt rights, const Symbol_places& order) {
  InOutExpr_In(block) = Collect_symbol_sorted(&rights, order);
  InOutExpr_Out(block) = Collect_symbol_sorted(&lefties, order);
  init_cse();
  ExtractList(lefties, rights);
  InOutExpr_Expr(block) = finish_cse();
  Rewrite_shapeconv(&InOutExpr_Expr(block), &InOutExpr_Expr(block));
}

void Vars_Cse_Shape(tAsynt ioes, tAsynt sortorder) {
  const Symbol_places order = Places_of(sortorder);
  for (; Asynt_Kind(ioes) == kInOutExpr1; ioes = InOutExpr1_InOutExprs(ioes)) {
    const tAsynt block = InOutExpr1_InOutExpr(ioes);
    const tAsynt code = InOutExpr_Expr(block);
    if (Asynt_Kind(code) == kParSet) {
      flatten_block(block, ParSet_Lefties(code), ParSet_Rights(code), order);
      continue;
    }
    if (Asynt_Kind(code) != kXSet) return;
    const tAsynt lhs = Binary_LHS(code), rhs = Binary_RHS(code);
    if (Asynt_Kind(lhs) == kXList && Asynt_Kind(rhs) == kXList)
      flatten_block(block, Variadic_Expressions(lhs), Variadic_Expressions(rhs), order);
    else
      flatten_block(block, lhs, rhs, order);
  }
}

// ---- one block of all assignments

// The sides of the assignments, up to the first element that is none.
void SplitLhsRhs(tAsynt e, tAsynt* lhs, tAsynt* rhs) {
  *lhs = *rhs = E0;
  for (; Asynt_Kind(e) == kExpression1; e = Expression1_Expressions(e)) {
    const tAsynt set = Expression1_Expression(e);
    if (Asynt_Kind(set) != kXSet) return;
    *lhs = mExpression1(Binary_LHS(set), E0);
    *rhs = mExpression1(Binary_RHS(set), E0);
    lhs = &Expression1_Expressions(*lhs);
    rhs = &Expression1_Expressions(*rhs);
  }
}

tAsynt one_block(tAsynt in, tAsynt out, tAsynt expr) { return mInOutExpr1(mInOutExpr(in, out, expr), Ioe0); }

tAsynt Sets2InOutExprs(tAsynt e) {
  tAsynt lhs, rhs;
  SplitLhsRhs(e, &lhs, &rhs);
  return one_block(S0, S0, mParSet(lhs, rhs));
}

}  // namespace

tAsynt Parallelize(tAsynt t) {
  if (!S0) Beginparel();
  tAsynt in, out;
  Beginode();
  const tAsynt e = Transform_diffeqs(t, &in, &out);
  Closeode();
  const tAsynt ioes = Sets2InOutExprs(e);
  Vars_Cse_Shape(ioes, in);
  return mParExec(one_block(in, out, mParExec(ioes, "")), "");
}

void make_code(tAsynt t) {
  Begintype();
  Beginparel();
  finit_operator_name();
  const tAsynt v = Parallelize(t);
  Closeparel();
  Closetype();
  CheckAsynt(v);
  FunparseStmt(v);
}

}  // namespace oz
