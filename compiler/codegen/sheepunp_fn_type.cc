// Types of the Fortran generator: their words, their shapes, their numbers on the link.
#include <cstring>
#include <vector>

#include "ozerrors.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"
#include "type.h"

namespace oz {

void Foutput_type(tAsynt typ) {
  const tAsynt base = Find_base(typ);
  if (Asynt_IsType(base, kIntType)) return foutput("integer(zc_int)");
  if (Asynt_IsType(base, kRealType)) return foutput("real(zc_real)");
  if (Asynt_IsType(base, kBoolType)) return foutput("logical");
  if (Asynt_IsType(base, kStringType)) return foutput("character(len=zc_strlen)");
  if (Asynt_IsType(base, kComplexType)) return error_msg("Complex data type is not supported in this version.\n");
  error_msg("F90 unparser: Invalid type.\n");
}

bool IsSubroutine(tAsynt typ) { return Asynt_IsType(typ, kMultiType) && Asynt_IsType(MultiType_Types(typ), kType0); }

// ---- shapes

namespace {

// A dimension list has cells of one of two kinds.
bool is_dimension(tAsynt dims) { return Is_cell(dims) || Asynt_IsType(dims, kIntConst1); }
tAsynt dimension(tAsynt dims) { return Is_cell(dims) ? Expression1_Expression(dims) : IntConst1_IntConst(dims); }
tAsynt more_dimensions(tAsynt dims) {
  return Is_cell(dims) ? Expression1_Expressions(dims) : IntConst1_IntConsts(dims);
}

// Sizes that are not known: 0, -1 for the index of an instance set, and the "_" of a declaration.
bool is_unknown(tAsynt size) {
  if (Asynt_IsType(size, kBlank) || Asynt_IsType(size, kXBlank)) return true;
  if (Asynt_IsType(size, kIntConst)) return IntConst_Val(size) == 0 || IntConst_Val(size) == -1;
  if (!Asynt_IsType(size, kExactIntConst)) return false;
  const char* digits = ExactIntConst_Val(size);
  return std::strcmp(digits, "0") == 0 || std::strcmp(digits, "-1") == 0;
}

void size_or_colon(tAsynt size) {
  if (is_unknown(size)) return foutput(":");
  FunparseVal(size);
}

void colon(tAsynt) { foutput(":"); }

// The last dimension comes first.
void write_dims(tAsynt typ, void (*write)(tAsynt)) {
  if (!Is_array_type(typ)) return;
  std::vector<tAsynt> sizes;
  for (tAsynt d = ArrayType_Dimensions(typ); is_dimension(d); d = more_dimensions(d)) sizes.push_back(dimension(d));
  foutput("(");
  for (size_t i = sizes.size(); i > 0; i--) {
    write(sizes[i - 1]);
    if (i > 1) foutput(",");
  }
  foutput(")");
}

}  // namespace

void Foutput_array_dims(tAsynt typ) { write_dims(typ, size_or_colon); }
void Foutput_array_dims_colon(tAsynt typ) { write_dims(typ, colon); }

bool array_has_unknown_dims(tAsynt typ) {
  if (!Is_array_type(typ)) return false;
  tAsynt d = ArrayType_Dimensions(typ);
  if (!is_dimension(d)) sheepunp_abort("array_has_unknown_dims");
  for (; is_dimension(d); d = more_dimensions(d))
    if (is_unknown(dimension(d))) return true;
  return false;
}

// ---- numbers on the link

namespace {

// The codes of a basic type: as a scalar, and as an array of rank 1, which those of rank 2 to 4 follow.
const struct {
  Asynt_tKind kind;
  int scalar;
  int vector;
} kTypeCode[] = {{kIntType, 1, 6}, {kRealType, 2, 10}, {kBoolType, 3, 14}, {kComplexType, 4, 18}, {kStringType, 5, 22}};

constexpr int kMaxLinkRank = 4;

}  // namespace

int Type_code(tAsynt typ) {
  const tAsynt base = Find_base(typ);
  const int rank = Is_array_type(typ) ? CPgetDepth(ArrayType_Dimensions(typ)) : 0;
  for (const auto& row : kTypeCode) {
    if (!Asynt_IsType(base, row.kind) || rank > kMaxLinkRank) continue;
    if (!Is_array_type(typ)) return row.scalar;
    if (rank > 0) return row.vector + rank - 1;
  }
  error_msg("F90 unparser: Invalid type in Type_code.\n");
  return 0;
}

}  // namespace oz
