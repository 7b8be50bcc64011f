// Operations on arrays as calls of the array library: m[[2]] is m(2,All), {1, 2} is " make_lumenN(2, 1, 2 )".

#include "oz.h"
#include "ozerrors.h"
#include "pompunp_parts.h"

namespace oz {

bool CPis_blank(tAsynt t) {
  if (Asynt_Kind(t) == kXBlank) return true;
  return Asynt_Kind(t) == kBlank && Asynt_Kind(Blank_Head(t)) == kEmpty;
}

void CPa2Dop(tAsynt e, const char* cfun) {
  cp_lmlev(2);
  cpunparse_pri(CPhead(e), 10);
  cpoutput(".");
  cpoutput(cfun);
  CPwrite_list_call("(", CPtail(e), " )");
}

// ---- subscripts

namespace {

// A blank stands for the first or the last place.
void write_range(tAsynt a, tAsynt b) {
  const bool from_first = CPis_blank(a);
  const bool to_last = CPis_blank(b);
  if (from_first && to_last) return cpoutput("R(1,-1)");
  if (from_first)
    CPwrite_call("R(1,", b);
  else if (to_last)
    CPwrite_call("R(", a, ",-1)");
  else
    CPwrite_call2("R(", a, ",", b);
}

void write_list_subscript(tAsynt list) {
  if (CPhas_length(list, 1))
    write_range(CPhead(list), CPhead(list));
  else
    error_msg("Lists of length larger than one are not supported as indexes");
}

}  // namespace

void CPunparse_part_idx(tAsynt idx) {
  if (CPis_blank(idx)) return cpoutput("All");
  switch (Asynt_Kind(idx)) {
    case kXAlternatives: return write_range(Binary_LHS(idx), Binary_RHS(idx));
    case kXAll: return cpoutput("All");
    case kXList: return write_list_subscript(Variadic_Expressions(idx));
    default: return CPunparseVal(idx);
  }
}

void CPunparse_nested_xparts2(tAsynt xp) {
  bool first = true;
  for (tAsynt l = CPtail(Variadic_Expressions(xp)); CPis_cell(l); l = CPtail(l), first = false) {
    if (!first) cpoutput(", ");
    CPunparse_part_idx(CPhead(l));
  }
}

void CPunparse_nested_alls(int i) {
  for (; i > 0; i--) cpoutput(",All");
}

// ---- parts

namespace {

// The array of Dimensions[x][[k]], of which no list of dimensions is made.
tAsynt measured_array(tAsynt t) {
  const tAsynt base = XPartArg(t);
  if (Asynt_Kind(base) != kXDimensions || XPartRealRank(t) != 1) return nullptr;
  return CPis_cell(Variadic_Expressions(base)) ? CPhead(Variadic_Expressions(base)) : nullptr;
}

// Arrays are read by calling them. Missing subscripts take whole dimensions.
bool write_part(tAsynt t) {
  if (!CPis_cell(Variadic_Expressions(t))) return false;
  if (const tAsynt array = measured_array(t)) {
    cpunparse_pri(array, CPpri(t));
    return CPwrite_call(".dimension(", CPelement(Variadic_Expressions(t), 2));
  }
  const tAsynt base = XPartArg(t);
  const int missing = ArrayRank(base) - XPartRealRank(t);
  cpunparse_pri(base, 10);
  cpoutput("(");
  CPunparse_nested_xparts2(t);
  CPunparse_nested_alls(missing);
  cpoutput(")");
  return true;
}

// ---- dimensions

constexpr int kMaxRank = 4;

// The first text, and what follows the array's name, once for each dimension.
struct Dimensions_form {
  const char* head;
  const char* pieces[kMaxRank];
};
constexpr Dimensions_form kDimensionForms[kMaxRank] = {
    {"make_lumenN(1,", {".dimension(1))"}},
    {"make_lumenN(2,", {".dimension(1),", ".dimension(2))"}},
    {"make_lumenN(3,", {".dimension(1),", ".dimension(2) ,", ".dimension(3))"}},
    {"make_lumenN(4,", {".dimension(1),", ".dimension(2) ,", ".dimension(3) ,", ".dimension(4))"}}};
constexpr Dimensions_form kUnknownDimensions = {
    "make_lumenN(4,", {".dimension(1),", ".dimension(2),", ".dimension(3),", ".dimension(4)) "}};

void write_dimensions_by(const Dimensions_form& form, tAsynt array) {
  cpoutput(form.head);
  for (const char* piece : form.pieces) {
    if (!piece) break;
    cpunparse_pri(array, 10);
    cpoutput(piece);
  }
}

[[gnu::noinline]] void write_unknown_dimensions(tAsynt x) {
  warning_msg("Unclear type at Dimensions[] in  CPunparse_dimension_non_array_type %s may cause problems in future.",
              CPsource(x).c_str());
  write_dimensions_by(kUnknownDimensions, x);
  warning_msg("Dimension[] applied to unknown type produces 4-element list");
}

bool write_dimensions(tAsynt list) {
  if (!CPis_cell(list)) return false;
  const tAsynt x = CPhead(list);
  const tAsynt array = CParray_of(CPtype(x));
  const int rank = array ? CPgetDepth(ArrayType_Dimensions(array)) : 0;
  if (CPis_cell(CPtail(list))) {
    error_msg("Dimension[] with two parameters not implemented");
  } else if (!array) {
    write_unknown_dimensions(x);
  } else if (rank < 1 || rank > kMaxRank) {
    error_msg("Dimension[] must be given an argument of  array type ");
  } else {
    cp_lmlev(rank);
    write_dimensions_by(kDimensionForms[rank - 1], x);
  }
  return true;
}

// ---- lists

constexpr int kChunk = 10;
constexpr int kLongestList = 100;

// Chunks of ten that are joined. The last one has what the division leaves over, which is nothing at a multiple of ten:
// its elements are not written.
bool write_long_list(tAsynt list, int n) {
  cpoutput("\n");
  cpoutput_indentation(1);
  cpoutput("lumen_flatten(make_lumenN(");
  const int chunks = (n - 1) / kChunk + 1;
  cpoutput_int(chunks);
  for (int chunk = 1; chunk <= chunks; chunk++) {
    const int size = chunk < chunks ? kChunk : n % kChunk;
    cpoutput(",");
    cpoutput("\n");
    cpoutput_indentation(2);
    cpoutput("make_lumenN(");
    cpoutput_int(size);
    for (int i = 0; i < size; i++, list = CPtail(list)) CPwrite_call(",", CPhead(list), "");
    cpoutput(")");
  }
  cpoutput(" ))(R(1,");
  cpoutput_int(n);
  cpoutput("))");
  return true;
}

bool write_list(tAsynt list) {
  const int n = CPlength(list, kLongestList + 1);
  if (n > kLongestList) {
    error_msg("Expression in {...} should not have more than 100 elements. Use intermediate variable.");
    return true;
  }
  cp_lmlev(4);
  if (n > kChunk) return write_long_list(list, n);
  cpoutput(" make_lumenN(");
  cpoutput_int(n);
  return CPwrite_list_call(", ", list, " )");
}

// ---- other operations

bool write_method(tAsynt list, const char* name) {
  if (!CPis_cell(list)) return false;
  CPa2Dop(list, name);
  return true;
}

bool write_extremum(tAsynt list, const char* of_array, const char* of_two) {
  if (CPhas_length(list, 1)) return CPwrite_call(of_array, CPhead(list));
  return CPhas_length(list, 2) && CPwrite_call2(of_two, CPhead(list), ",", CPelement(list, 2));
}

// Three and more arrays nest to the right: Join(a,Join(b,c)). What is joined with nothing has no C++.
bool write_join(tAsynt list) {
  if (!CPis_cell(list)) return false;
  int open = 0;
  for (; CPis_cell(CPtail(list)) && CPis_cell(CPtail(CPtail(list))); list = CPtail(list), open++)
    CPwrite_call("Join(", CPhead(list), ",");
  if (CPis_cell(CPtail(list)))
    CPwrite_call2("Join(", CPhead(list), ",", CPelement(list, 2));
  else
    CPwrite_call2("Join(", CPhead(list), ",", mXJoin(mkNonConvPos(NoPosition), CPtail(list)));
  for (; open > 0; open--) cpoutput(")");
  return true;
}

bool write_quantile(tAsynt list) {
  const int n = CPlength(list, 4);
  if (n != 2 && n != 3) return false;
  const bool of_list = CPis_array(CPelement(list, 2));
  if (n == 2) return CPwrite_list_call(of_list ? "lumen_quantile2L(" : "lumen_quantile2(", list);
  return CPwrite_list_call(of_list ? "lumen_quantile3L(" : "lumen_quantile3(", list);
}

// By the rank of the array, from 2, and the level: the functions that join fewer levels than there are.
void write_flatten_name(int rank, long level) {
  static const char* const kNames[] = {"lumen_flatten0(", "lumen_flatten1(", "lumen_flatten2("};
  if (rank < 2 || rank > kMaxRank) return;
  cpoutput(level <= rank - 2 ? kNames[level] : "lumen_flatten(");
}

bool write_flatten_level(tAsynt array, tAsynt level) {
  const long n = alg_atoi(ExactIntConst_Val(level));
  cpoutput("/*");
  cpoutput(CPsource(level));
  cpoutput("--");
  cpoutput(std::to_string(n));
  cpoutput("*/");
  if (n < 0) {
    error_msg("invalid 2nd argument to Flatten");
    return true;
  }
  const int rank = ArrayRank(array);
  cpoutput("/* rank=");
  cpoutput_int(rank);
  cpoutput("*/");
  write_flatten_name(rank, n);
  return CPwrite_call("", array, rank == 1 ? "" : ")");
}

bool write_flatten(tAsynt list) {
  if (CPhas_length(list, 1)) return CPwrite_call("lumen_flatten(", CPhead(list));
  if (!CPhas_length(list, 2) || Asynt_Kind(CPelement(list, 2)) != kExactIntConst) return false;
  return write_flatten_level(CPhead(list), CPelement(list, 2));
}

// R counts from the front, and from the back below zero; which way is meant shows only when the program runs.
bool write_drop(tAsynt a, tAsynt what) {
  const tAsynt list = Asynt_Kind(what) == kXList ? Variadic_Expressions(what) : nullptr;
  const int n = CPlength(list, 3);
  if (n == 1 || n == 2) {
    CPwrite_call2("Drop(", a, ",R(", CPhead(list), ",");
    return CPwrite_call("", CPelement(list, n), "))");
  }
  CPwrite_call("(", what, ">0 ? Drop(");
  CPwrite_call("", a, ",R(1,");
  CPwrite_call("", what, ")):Drop(");
  CPwrite_call("", a, ",R(");
  return CPwrite_call("", what, ",-1)))");
}

}  // namespace

bool CPunparse_array_operation(tAsynt t) {
  if (Asynt_Kind(t) == kXDrop) return write_drop(Binary_LHS(t), Binary_RHS(t));
  if (!Asynt_IsType(t, kVariadic)) return false;
  const tAsynt list = Variadic_Expressions(t);
  switch (Asynt_Kind(t)) {
    case kXCols: return write_method(list, "Cols");
    case kXRows: return write_method(list, "Rows");
    case kXSubMatrix: return write_method(list, "SubMatrix");
    case kXCol: return write_method(list, "Col");
    case kXRow: return write_method(list, "Row");
    case kXSubVector: return write_method(list, "SubVector");
    case kXMax: return write_extremum(list, "LumenMax(", "Max(");
    case kXMin: return write_extremum(list, "LumenMin(", "Min(");
    case kXJoin: return write_join(list);
    case kXQuantile: return write_quantile(list);
    case kXFlatten: return write_flatten(list);
    case kXDimensions: return write_dimensions(list);
    case kXList: return write_list(list);
    case kXPart: return write_part(t);
    default: return false;
  }
}

}  // namespace oz
