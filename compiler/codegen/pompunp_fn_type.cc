// Types of the model as classes of the generated C++: real -> double, complex array[3, n] -> lm_complexNN (3, n).
//
// The array classes are named by their element and one N per dimension; there are four of each. Truth values are
// integers. The _s kinds, members of instance sets, count as their plain kinds.

#include <string>

#include "ozerrors.h"
#include "pompout.h"
#include "pompunp_parts.h"
#include "type.h"

namespace oz {
namespace {

constexpr int kMaxRank = 4;

[[noreturn]] void bad_array() { die_msg("Bad array type.\n"); }

// The dimensions are Expression1 cells, or IntConst1 cells where they were read as numbers.
bool is_dimension(tAsynt dims) { return Asynt_Kind(dims) == kExpression1 || Asynt_Kind(dims) == kIntConst1; }
tAsynt dimension(tAsynt dims) {
  return Asynt_Kind(dims) == kExpression1 ? Expression1_Expression(dims) : IntConst1_IntConst(dims);
}
tAsynt more_dimensions(tAsynt dims) {
  return Asynt_Kind(dims) == kExpression1 ? Expression1_Expressions(dims) : IntConst1_IntConsts(dims);
}

// The elements that arrays are made of; null for others.
const char* element_class(tAsynt base) {
  if (Asynt_IsType(base, kRealType)) return "double";
  if (Asynt_IsType(base, kComplexType)) return "lm_complex";
  return Asynt_IsType(base, kIntType) || Asynt_IsType(base, kBoolType) ? "int" : nullptr;
}

void output_array_class(tAsynt typ) {
  const char* element = element_class(ArrayType_BasicType(typ));
  const int rank = CPgetDepth(ArrayType_Dimensions(typ));
  if (!element || rank < 1 || rank > kMaxRank) bad_array();
  cp_lmlev(rank);
  cpoutput(element + std::string(static_cast<size_t>(rank), 'N') + " ");
}

// Only vectors and matrices are read from files, and no truth values among them.
void output_array_suffix(tAsynt typ) {
  const tAsynt base = ArrayType_BasicType(typ);
  const int rank = CPgetDepth(ArrayType_Dimensions(typ));
  const char* element = element_class(base);
  if (!element || Asynt_IsType(base, kBoolType) || rank < 1 || rank > 2) bad_array();
  cpoutput(std::string(static_cast<size_t>(rank), 'N') + element);
}

// The index of an instance set and "_" are sizes that are not known here.
void output_dimension(tAsynt size) {
  if (CPis_blank(size) || (Asynt_Kind(size) == kIntConst && IntConst_Val(size) == -1))
    cpoutput_int(0);
  else
    CPunparseVal(size);
}

}  // namespace

void CPoutput_basetype_decl(tAsynt typ) {
  cpoutput_indentation(0);
  if (Asynt_IsType(typ, kArrayType)) {
    output_array_class(typ);
  } else if (Asynt_IsType(typ, kStringType)) {
    cpoutput("RWCString ");
  } else if (const char* word = element_class(typ)) {
    cpoutput(std::string(word) + " ");
  }
}

// The blanks behind two of the words are part of the text.
void CPoutput_basetype_suffix(tAsynt typ) {
  if (Asynt_IsType(typ, kArrayType)) {
    output_array_suffix(typ);
  } else if (const char* word = element_class(typ)) {
    const bool blank = Asynt_IsType(typ, kComplexType) || Asynt_IsType(typ, kBoolType);
    cpoutput(std::string(word) + (blank ? " " : ""));
  }
}

void CPoutput_array_dims(tAsynt typ) {
  if (!Asynt_IsType(typ, kArrayType)) return;
  tAsynt dims = ArrayType_Dimensions(typ);
  const int rank = CPgetDepth(dims);
  if (rank < 1 || rank > kMaxRank) return;
  const char* separator = "(";
  for (; is_dimension(dims); dims = more_dimensions(dims)) {
    cpoutput(separator);
    output_dimension(dimension(dims));
    separator = ", ";
  }
  cpoutput(")");
}

}  // namespace oz
