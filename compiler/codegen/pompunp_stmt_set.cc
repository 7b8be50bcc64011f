// Assignments.
//
// What C++ can do in one go becomes one statement; lists are taken apart:
//
//   x[[1, 2]] = u           x(1, 2) = u;
//   m[[1]] = v              m.Set(1,All,v);
//   {a, b} = {1, 2}         a = 1;  b = 2;                      in this order, without temporaries
//   {a, b} = v              a = v(1);  b = v(2);
//   x = {1, 2}              x.SetShape(2 );  x(1) = 1;  x(2) = 2;
//   {a, b} = f[c]           f (c, a, b);
//   x = If[c, 1, 2]         if (c) { x = 1; } else { x = 2; }

#include <vector>

#include "oz.h"
#include "ozerrors.h"
#include "pompunp_fn.h"
#include "pompunp_stmt.h"

namespace oz {
namespace {

tAsynt make_set(tAsynt original, tAsynt lhs, tAsynt rhs) { return mXSet(Operator_PosConv(original), lhs, rhs); }

void next_line() {
  cpoutput("\n");
  cpoutput_indentation(0);
}

}  // namespace

// ---- the part family

namespace {

bool is_part(tAsynt t) { return Asynt_Kind(t) == kXPart && CPis_cell(Variadic_Expressions(t)); }

bool is_range(tAsynt subscript) {
  switch (Asynt_Kind(subscript)) {
    case kXList:
    case kXAlternatives:
    case kXAll: return true;
    default: return CPis_blank(subscript);
  }
}

int count_subscripts(tAsynt part, int of_range) {
  int n = 0;
  for (tAsynt l = CPtail(Variadic_Expressions(part)); CPis_cell(l); l = CPtail(l))
    n += is_range(CPhead(l)) ? of_range : 1;
  return n;
}

}  // namespace

tAsynt XPartArg(tAsynt t) { return is_part(t) ? CPhead(Variadic_Expressions(t)) : t; }

int XPartRealRank(tAsynt t) { return is_part(t) ? count_subscripts(t, 1) : 0; }

// One range makes it negative, and so different from every rank.
int XPartRank(tAsynt t) {
  if (!is_part(t)) die_msg("XPartRank bad arg");
  return count_subscripts(t, -99);
}

int XPartRankReduction(tAsynt t) {
  if (!is_part(t)) die_msg("XPartRankReduction bad arg");
  return count_subscripts(t, 0);
}

// ---- sections

namespace {

[[gnu::noinline]] void warn_of_ranks(tAsynt t, int rank, int reduction, int rhsrank) {
  warning_msg(
      "Suspecting  incompatible ranks in assignment: base rank of LHS asrray =%d, reduction or rank due to indexing = "
      "%d levels , RHS expression rank = %d in %s",
      rank, reduction, rhsrank, CPsource(t).c_str());
}

}  // namespace

// A scalar fits every section.
void CPxpart_special(tAsynt t, tAsynt xp, tAsynt expr) {
  const tAsynt base = XPartArg(xp);
  const int rank = ArrayRank(base);
  const int rhsrank = ArrayRank(expr);
  cpoutput_indentation(0);
  cpunparse_pri(base, 10);
  cpoutput(".Set(");
  CPunparse_nested_xparts2(xp);
  CPunparse_nested_alls(rank - XPartRealRank(xp));
  CPwrite_call(",", expr);
  const int reduction = XPartRankReduction(xp);
  if (rank - reduction != rhsrank && rhsrank != 0) warn_of_ranks(t, rank, reduction, rhsrank);
}

const char* CPxpart_special_funcname(int rank, int parts) {
  switch (10 * rank + parts) {
    case 43: return ".SetVector123";
    case 42: return ".SetMatrix12";
    case 41: return ".SetTensor1";
    case 32: return ".SetVector12";
    case 31: return ".SetMatrix1";
    case 21: return ".SetRow";
    default: return nullptr;
  }
}

// ---- element by element

namespace {

using Subscripts = std::vector<tAsynt>;

tAsynt make_part(tAsynt sym, const Subscripts& subscripts) {
  tAsynt list = mExpression0();
  for (size_t n = subscripts.size(); n > 0; n--) list = mExpression1(subscripts[n - 1], list);
  return mXPart(mkNonConvPos(NoPosition), mExpression1(sym, list));
}

void cparray_list_set2(tAsynt sym, tAsynt exprs, Subscripts* subscripts, bool fromlist) {
  for (int i = 1; CPis_cell(exprs); exprs = CPtail(exprs), i++) {
    const tAsynt element = CPhead(exprs);
    subscripts->push_back(mIntConst(i));
    if (Asynt_Kind(element) == kXList) {
      cparray_list_set2(sym, Variadic_Expressions(element), subscripts, fromlist);
    } else {
      cpoutput_indentation(0);
      const tAsynt part = make_part(sym, *subscripts);
      const tAsynt pos = mkNonConvPos(NoPosition);
      CPunparseStmt(fromlist ? mXSet(pos, part, element) : mXSet(pos, element, part));
      cpoutput("\n");
    }
    subscripts->pop_back();
  }
}

}  // namespace

void cparray_list_set(tAsynt sym, tAsynt exprs, tAsynt indices, int fromlist) {
  if (is_part(sym)) {
    indices = CPtail(Variadic_Expressions(sym));
    sym = CPhead(Variadic_Expressions(sym));
  }
  Subscripts subscripts;
  for (; CPis_cell(indices); indices = CPtail(indices)) subscripts.push_back(CPhead(indices));
  cparray_list_set2(sym, exprs, &subscripts, fromlist != 0);
}

// ---- assignments of lists

namespace {

// Pairs from the front; one list may be longer.
void write_pairs(tAsynt t, tAsynt lefties, tAsynt rights) {
  while (CPis_cell(lefties) && CPis_cell(rights)) {
    CPunparseStmt(make_set(t, CPhead(lefties), CPhead(rights)));
    next_line();
    lefties = CPtail(lefties);
    rights = CPtail(rights);
  }
  if (CPis_cell(rights))
    warning_msg("In assignment the rhs list is larger than lhs list. Rest skipped. %s",
                CPsource(CPhead(rights)).c_str());
  if (CPis_cell(lefties))
    warning_msg("In assignment the lhs list is larger than rhs list. Rest skipped. %s",
                CPsource(CPhead(lefties)).c_str());
}

void write_list_target(tAsynt t) {
  const tAsynt targets = Variadic_Expressions(Binary_LHS(t));
  tAsynt rhs = Binary_RHS(t);
  if (Asynt_Kind(rhs) == kSimpleFFE) {
    Find_type(&rhs);  // a declared function's symbol has its type from here on
    if (Asynt_Kind(rhs) == kSimpleFFE &&
        CPunparse_mulret_funcall(targets, FullFormExpression_Args(rhs), SimpleFFE_Name(rhs)))
      return;
  }
  if (Asynt_Kind(rhs) == kXList)
    write_pairs(t, targets, Variadic_Expressions(rhs));
  else
    cparray_list_set(rhs, targets, nullptr, 0);
}

tAsynt cpFindShape(tAsynt t) {
  const tAsynt typ = CPtype(t);
  if (Asynt_IsType(typ, kArrayType)) return ArrayType_Dimensions(typ);
  warning_msg("cpFindShape: List evaluates wrong type %s for %s", CPsource(typ).c_str(), CPsource(t).c_str());
  return mExpression0();
}

// The array takes its shape first and is filled then.
void write_list_value(tAsynt t) {
  const tAsynt lhs = Binary_LHS(t);
  const tAsynt elements = Variadic_Expressions(Binary_RHS(t));
  if (Asynt_Kind(lhs) != kXPart) {
    const tAsynt shape = mExpression1(lhs, cpFindShape(Binary_RHS(t)));
    CPunparseStmt(mXSetShape(Operator_PosConv(t), shape));
    next_line();
  }
  cparray_list_set(lhs, elements, nullptr, 1);
}

// x = If[c, a, b] assigns in both branches.
void write_conditional_value(tAsynt t) {
  const tAsynt value = Binary_RHS(t);
  const tAsynt no = XIf_F(value);
  CPunparseStmt(mXIf(XIf_Condition(value), make_set(t, Binary_LHS(t), XIf_T(value)),
                     Asynt_Kind(no) == kEmpty ? no : make_set(t, Binary_LHS(t), no)));
}

// A function declared with a list of one type hands its result out like one of several.
bool hands_out(tAsynt fun, tAsynt targets) {
  const tAsynt typ = CPtype(fun);
  if (!Asynt_IsType(typ, kMultiType)) return false;
  const int own = CPown_results(CPsymbol_info(fun));
  if (Is_mulret_type(typ) || own > 1) return true;
  const bool one = own == 1 || Asynt_Kind(MultiType_Types(typ)) == kType1;
  return one && CPhas_length(targets, 1);
}

}  // namespace

char CPunparse_mulret_funcall(tAsynt lhs, tAsynt args, tAsynt fun) {
  if (!hands_out(fun, lhs)) return 0;
  cpoutput_indentation(0);
  CPunparseVal(fun);
  CPwrite_list_call(" (", args, CPis_cell(args) ? ", " : "");
  CPunparse_exprs(lhs, ", ");
  cpoutput(");");
  return 1;
}

// ---- from files

bool CPunparse_import(tAsynt t) {
  const tAsynt import = Binary_RHS(t);
  const tAsynt args = Asynt_Kind(import) == kXImport ? Variadic_Expressions(import) : nullptr;
  const int n = CPlength(args, 3);
  const bool has_format = n == 2 && Asynt_Kind(CPelement(args, 2)) == kStringConst;
  if (n != 1 && !has_format) return false;
  cpoutput_indentation(0);
  CPwrite_call("", Binary_LHS(t), has_format ? "=lumen_import" : "=lumen_import1");
  CPoutput_basetype_suffix(CPtype(Binary_LHS(t)));
  if (has_format)
    CPwrite_call2("(", CPhead(args), ",", CPelement(args, 2), ",NULL,NULL)");
  else
    CPwrite_call("(", CPhead(args));
  cpoutput(";");
  return true;
}

// ---- statements

bool CPunparse_set_statement(tAsynt t) {
  if (CPunparse_import(t)) return true;
  const Asynt_tKind value = Asynt_Kind(Binary_RHS(t));
  if (Asynt_Kind(Binary_LHS(t)) == kXList)
    write_list_target(t);
  else if (value == kXList)
    write_list_value(t);
  else if (value == kXIf)
    write_conditional_value(t);
  else
    return false;
  return true;
}

// ---- small assignments

namespace {

// a[[i]][[j]] as a[[i, j]], at any depth; null if the base is no part itself.
tAsynt merged_part(tAsynt part) {
  if (!is_part(part) || !is_part(XPartArg(part))) return nullptr;
  Subscripts subscripts;
  for (; is_part(part); part = XPartArg(part)) {
    Subscripts inner;
    for (tAsynt l = CPtail(Variadic_Expressions(part)); CPis_cell(l); l = CPtail(l)) inner.push_back(CPhead(l));
    subscripts.insert(subscripts.end(), inner.rbegin(), inner.rend());  // last one first
  }
  return make_part(part, Subscripts(subscripts.rbegin(), subscripts.rend()));
}

[[gnu::noinline]] void too_many_indexes(tAsynt t) {
  error_msg_pos2(GetPos(t), "Left part of assignment has too many indexes,%s %s",
                 ", i.e. more than rank of the array in ", CPsource(t).c_str());
}

[[gnu::noinline]] void warn_of_list_target(tAsynt t) {
  warning_msg_pos2(GetPos(t), "Complex assignment with the list in left part cannot be used within expression %s %s.",
                   ", wrong code is generated for ", CPsource(t).c_str());
}

// False: as many subscripts as dimensions, or no part; that is an assignment like any other.
bool write_section(tAsynt t) {
  const tAsynt lhs = Binary_LHS(t);
  if (!is_part(lhs)) return false;
  const int missing = ArrayRank(XPartArg(lhs)) - XPartRank(lhs);
  if (missing > 0) CPxpart_special(t, lhs, Binary_RHS(t));
  if (missing < 0) too_many_indexes(t);
  return missing != 0;
}

// A scalar spread over an array.
bool write_spread(tAsynt t) {
  const tAsynt rhs = Binary_RHS(t);
  if (Asynt_Kind(rhs) != kShapeConversion) return false;
  const tAsynt value = TypeConversion_Expression(rhs);
  if (!Asynt_IsType(value, kConstant) && Asynt_Kind(value) != kSymbol) return false;
  const tAsynt from = ShapeConversion_From(rhs);
  const tAsynt to = ShapeConversion_To(rhs);
  cpoutput_indentation(0);
  if (!CPis_cell(from) || IsEqualAsynt(from, to)) return CPwrite_call2("", Binary_LHS(t), " = ", value, "");
  CPwrite_call("", Binary_LHS(t), ".reshape(");
  CPunparse_exprs(to, ", ");
  return CPwrite_call(", ", value);
}

}  // namespace

void CPunparse_set(tAsynt t) {
  if (const tAsynt merged = merged_part(Binary_LHS(t))) {
    CPunparseSmallStmt(make_set(t, merged, Binary_RHS(t)));
    return;
  }
  if (write_section(t) || write_spread(t)) return;
  if (Asynt_Kind(Binary_LHS(t)) == kXList) warn_of_list_target(t);
  cpoutput_indentation(0);
  cpunparse_pri(Binary_LHS(t), 1);
  CPwrite_call(cpoperator_name[kXSet], Binary_RHS(t), "");
}

}  // namespace oz
