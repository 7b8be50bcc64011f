// Parts of arrays: a[[i, 2|3]] of an array of three dimensions becomes a(:,2:3, i).
//
// The indices stand the other way round, and those that are left out at the end become colons in front.
#include <vector>

#include "ozerrors.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"
#include "type.h"

namespace oz {
namespace {

bool is_range(tAsynt idx) {
  return Asynt_IsType(idx, kXList) || Asynt_IsType(idx, kXAlternatives) || Asynt_IsType(idx, kXBlank);
}

void bound(tAsynt t) {
  if (!Asynt_IsType(t, kXBlank)) FunparseVal(t);
}

void range(tAsynt from, tAsynt to) {
  bound(from);
  foutput(":");
  bound(to);
}

// {i} is a slice of one.
void slice(tAsynt list) {
  if (LengthExpressions(list) != 1)
    return error_msg("F90 unparser: Lists of length > 1 are not supported as indices.\n");
  range(Expression1_Expression(list), Expression1_Expression(list));
}

void Funparse_part_index(tAsynt idx) {
  switch (Asynt_Kind(idx)) {
    case kXBlank: return foutput(":");
    case kXAlternatives: return range(Binary_LHS(idx), Binary_RHS(idx));
    case kXList: return slice(Variadic_Expressions(idx));
    default: FunparseVal(idx);
  }
}

void Funparse_part_index_simple(tAsynt idx) {
  if (!is_range(idx)) return FunparseVal(idx);
  error_msg(
      "F90 unparser: in expr[[idx]] if expr is not a declared variable then idx must be an integer expression. "
      "You can introduce a temporary variable.");
}

void reversed(tAsynt list, void (*write)(tAsynt)) {
  std::vector<tAsynt> indices;
  for (; Is_cell(list); list = Expression1_Expressions(list)) indices.push_back(Expression1_Expression(list));
  for (size_t i = indices.size(); i > 0; i--) {
    write(indices[i - 1]);
    if (i > 1) foutput(", ");
  }
}

void foutput_extra_colon(int n) {
  for (; n > 0; n--) foutput(":,");
}

tAsynt base_of(tAsynt part) { return Expression1_Expression(Variadic_Expressions(part)); }
tAsynt indices_of(tAsynt part) { return Expression1_Expressions(Variadic_Expressions(part)); }

// The sum over the indices of a part.
int XPartTraverse(tAsynt list, int w_range, int w_plain) {
  int sum = 0;
  for (; Is_cell(list); list = Expression1_Expressions(list))
    sum += is_range(Expression1_Expression(list)) ? w_range : w_plain;
  return sum;
}

// Dimensions are numbered from the other end.
void size_of_dimension(tAsynt part, tAsynt array, tAsynt number) {
  foutput("SIZE(");
  funparse_pri(array, Fpri(part));
  foutput(", ");
  foutput_int(ArrayRank(array) + 1);
  foutput("-");
  funparse_pri(number, 6);
  foutput(")");
}

const char* const kGetPart[] = {"zc_getpart1", "zc_getpart2", "zc_getpart3", "zc_getpart4"};

// Fortran takes parts of variables only.
void part_of_value(tAsynt base, tAsynt indices) {
  const int depth = LengthExpressions(indices);
  if (depth < 1 || depth > 4) sheepunp_abort("Funparse_part");
  foutput(kGetPart[depth - 1]);
  foutput("(");
  funparse_pri(base, 10);
  foutput(",");
  reversed(indices, Funparse_part_index_simple);
  foutput(")");
}

}  // namespace

void Funparse_part_indices(tAsynt list) { reversed(list, Funparse_part_index); }

int Part_rank(tAsynt part) { return XPartTraverse(indices_of(part), -99, 1); }
int Part_rank_reduction(tAsynt part) { return XPartTraverse(indices_of(part), 0, 1); }

void Funparse_section(tAsynt part) {
  const tAsynt indices = indices_of(part);
  funparse_pri(base_of(part), 10);
  foutput("(");
  foutput_extra_colon(ArrayRank(base_of(part)) - LengthExpressions(indices));
  Funparse_part_indices(indices);
  foutput(")");
}

void Funparse_part(tAsynt t) {
  if (!Is_cell(Variadic_Expressions(t))) sheepunp_abort("Funparse_part");
  const tAsynt base = base_of(t);
  const tAsynt indices = indices_of(t);
  if (Asynt_IsType(base, kXDimensions) && LengthExpressions(indices) == 1 &&
      LengthExpressions(Variadic_Expressions(base)) == 1)
    return size_of_dimension(t, Expression1_Expression(Variadic_Expressions(base)), Expression1_Expression(indices));
  if (Asynt_IsType(base, kSymbol)) return Funparse_section(t);
  part_of_value(base, indices);
}

}  // namespace oz
