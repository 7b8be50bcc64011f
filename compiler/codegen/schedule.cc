// Sizes and places in the state vector. A place counts variables, not elements, so that what stands behind an array
// overlaps with it: the generated programs and their drivers rely on these numbers.
#include "schedule.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "unparse.h"

namespace oz {

bool Schedule_of(tAsynt t, Schedule* schedule) {
  if (!Asynt_IsType(t, kParExec)) return false;
  const tAsynt blocks = ParExec_InOutExprs(t);
  if (!Asynt_IsType(blocks, kInOutExpr1) || !Asynt_IsType(InOutExpr1_InOutExprs(blocks), kInOutExpr0)) return false;
  const tAsynt outer = InOutExpr1_InOutExpr(blocks);
  const tAsynt inner = InOutExpr_Expr(outer);
  if (!Asynt_IsType(inner, kParExec) || !Asynt_IsType(ParExec_InOutExprs(inner), kInOutExpr1)) return false;
  *schedule = {InOutExpr_In(outer), InOutExpr_Out(outer), ParExec_InOutExprs(inner)};
  return true;
}

// ---- sizes

namespace {

// The value of a dimension that is a number; false for any other.
bool dimension_value(tAsynt dim, long long* value) {
  if (Asynt_IsType(dim, kIntConst)) {
    *value = IntConst_Val(dim);
    return true;
  }
  if (!Asynt_IsType(dim, kExactIntConst)) return false;
  const char* digits = ExactIntConst_Val(dim);
  const size_t length = std::strspn(digits, "0123456789");
  *value = std::atoll(digits);
  return length > 0 && digits[length] == '\0';
}

// A dimension list has cells of one of two kinds.
tAsynt dimension(tAsynt dims) {
  if (Asynt_IsType(dims, kExpression1)) return Expression1_Expression(dims);
  return Asynt_IsType(dims, kIntConst1) ? IntConst1_IntConst(dims) : nullptr;
}

tAsynt more_dimensions(tAsynt dims) {
  return Asynt_IsType(dims, kExpression1) ? Expression1_Expressions(dims) : IntConst1_IntConsts(dims);
}

bool is_end(tAsynt dims) { return Asynt_IsType(dims, kExpression0) || Asynt_IsType(dims, kIntConst0); }

// What is more than a vector can hold is no size either.
int Size_of_array_type(tAsynt dims, Schedule_failure failure) {
  if (is_end(dims)) return 0;
  long long size = 1;
  for (; !is_end(dims); dims = more_dimensions(dims)) {
    const tAsynt dim = dimension(dims);
    long long value = 0;
    if (!dim || !dimension_value(dim, &value) || std::llabs(value) > INT_MAX) failure("Size_of_array_type");
    size *= value;
    if (std::llabs(size) > INT_MAX) failure("Size_of_array_type");
  }
  return static_cast<int>(size);
}

}  // namespace

int Schedule_type_size(tAsynt info, bool texts, Schedule_failure failure) {
  const tAsynt typ = SymInfo_Type(info);
  if (Asynt_IsType(typ, kArrayType)) return Size_of_array_type(ArrayType_Dimensions(typ), failure);
  if (Asynt_IsType(typ, kIntType) || Asynt_IsType(typ, kRealType) || Asynt_IsType(typ, kComplexType)) return 1;
  if (!texts || !Asynt_IsType(typ, kStringType)) failure("Type_size");
  return 1;
}

int Schedule_list_size(tAsynt list, bool texts, Schedule_failure failure) {
  long long size = 0;
  for (; Asynt_IsType(list, kSymbol1); list = Symbol1_Symbols(list)) {
    size += Schedule_type_size(Symbol_SymInfo(Symbol1_Symbol(list)), texts, failure);
    if (size > INT_MAX) failure("Symbol_list_size");
  }
  if (!Asynt_IsType(list, kSymbol0)) failure("Symbol_list_size");
  return static_cast<int>(size);
}

// ---- places

namespace {
constexpr int kNotFound = -100'000;  // less the symbols that were looked at
}  // namespace

Symbol_places Places_of(tAsynt list) {
  Symbol_places places;
  for (; Asynt_IsType(list, kSymbol1); list = Symbol1_Symbols(list))
    places.places[unparse_string(Symbol1_Symbol(list))].emplace_back(Symbol1_Symbol(list), ++places.length);
  return places;
}

int Place_of(const Symbol_places& places, tAsynt s) {
  const auto found = places.places.find(unparse_string(s));
  if (found != places.places.end())
    for (const auto& [symbol, place] : found->second)
      if (IsEqualAsynt(symbol, s)) return place;
  return std::min(kNotFound + places.length, -1);
}

}  // namespace oz
