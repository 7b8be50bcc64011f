// Shapes: dimension lists, and the operations that take dimensions away, add them or exchange them.

#include <cstdlib>
#include <vector>

#include "ozerrors.h"
#include "predef.h"
#include "type_rules.h"

namespace oz {

// ---- dimension lists

bool Is_dimension(tAsynt dims) { return Is_cell(dims) || Asynt_Kind(dims) == kIntConst1; }

tAsynt Dimension(tAsynt dims) { return Is_cell(dims) ? Expression1_Expression(dims) : IntConst1_IntConst(dims); }

tAsynt More_dimensions(tAsynt dims) {
  return Is_cell(dims) ? Expression1_Expressions(dims) : IntConst1_IntConsts(dims);
}

int CPgetDepth(tAsynt t) {
  int n = 0;
  for (; Is_dimension(t); t = More_dimensions(t)) n++;
  return n;
}

int Rank(tAsynt typ) { return Is_array(typ) ? CPgetDepth(ArrayType_Dimensions(typ)) : 0; }

namespace {

// The list as Expression cells, as it must be when cells of that kind go in front of it.
tAsynt as_expressions(tAsynt dims) {
  if (Asynt_IsType(dims, kExpressions)) return dims;
  const tAsynt end = mExpression0();
  tAsynt result = end;
  for (tAsynt* tail = &result; Is_dimension(dims); dims = More_dimensions(dims)) {
    *tail = mExpression1(Dimension(dims), end);
    tail = &Expression1_Expressions(*tail);
  }
  return result;
}

tAsynt two_dimensions(tAsynt d1, tAsynt d2) { return mExpression1(d1, mExpression1(d2, mExpression0())); }

}  // namespace

tAsynt Prepend_dimension(int n, tAsynt dims) { return mExpression1(mIntConst(n), as_expressions(dims)); }

tAsynt One_dimension(int n) { return mExpression1(mIntConst(n), mExpression0()); }

tAsynt ListOfZeroes(int n) {
  tAsynt list = mExpression0();
  for (; n > 0; n--) list = mExpression1(mIntConst(0), list);
  return list;
}

tAsynt Make_type(tAsynt typ, tAsynt dimtyp) {
  return Is_array(dimtyp) ? mArrayType(typ, ArrayType_Dimensions(dimtyp)) : typ;
}

tAsynt Without_first_dimension(tAsynt array) {
  const tAsynt dims = ArrayType_Dimensions(array);
  const tAsynt rest = Is_dimension(dims) ? More_dimensions(dims) : dims;
  return Is_dimension(rest) ? mArrayType(ArrayType_BasicType(array), rest) : ArrayType_BasicType(array);
}

// ---- Part

tAsynt Part_base_type(tAsynt t) {
  if (!Is_array(t)) die_msg("Non-array first argument to Extract (or the only argument to  Max or Min).");
  return ArrayType_BasicType(t);
}

namespace {

// "_", also before it is converted.
bool is_blank(tAsynt e) {
  if (Asynt_Kind(e) == kBlank) return Asynt_Kind(Blank_Head(e)) == kEmpty;
  return Is_constant(e, kXBlank, Constructor(mXBlank));
}

bool keeps_dimension(tAsynt index) { return is_blank(index) || Is_constant(index, kXAll, Constructor(mXAll)); }

void Check_blank_or_int(tAsynt* a) {
  if (!is_blank(*a)) Check_base(int_type_node, Find_type(a));
}

// a | b as an index.
bool check_alternatives(tAsynt index) {
  if (Asynt_Kind(index) == kXAlternatives) {
    Check_blank_or_int(&Binary_LHS(index));
    Check_blank_or_int(&Binary_RHS(index));
    return true;
  }
  const tAsynt operands = Operands_of(index, kXAlternatives, Constructor(mXAlternatives));
  if (!operands || expr_list_len(operands) != 2) return false;
  Check_blank_or_int(Element(operands, 1));
  Check_blank_or_int(Element(operands, 2));
  return true;
}

// {i} as an index.
bool check_one_index_list(tPosition pos, tAsynt index) {
  const tAsynt list = Operands_of(index, kXList, Constructor(mXList));
  if (!list || expr_list_len(list) != 1) return false;
  tAsynt* element = Element(list, 1);
  if (!Is_int(Find_type(element)))
    type_error(pos, "Argument %s to Part ([[{}]]) must be integer expression", Unparsed(*element).c_str());
  return true;
}

}  // namespace

// Indices that keep their dimension consume none of t, so that the next index is held against the same one.
tAsynt Part_type2(tPosition pos, tAsynt t, tAsynt idxs) {
  for (; Is_cell(idxs); idxs = Expression1_Expressions(idxs)) {
    tAsynt* index = &Expression1_Expression(idxs);
    if (Is_array(t) && (keeps_dimension(*index) || check_one_index_list(pos, *index) || check_alternatives(*index)))
      continue;
    if (!Is_array(t) || !Is_dimension(ArrayType_Dimensions(t))) {
      type_error(pos,
                 "The number of dimensions of A in A[B] is too low. Therefore B is  an impossible index in the index "
                 "expression list in A[B]. B is %s",
                 Unparsed(idxs).c_str());
      return t;
    }
    if (!Is_int(Find_type(index)))
      type_error(pos, "Argument %s to Part ([[]]) must be integer expression", Unparsed(*index).c_str());
    t = Without_first_dimension(t);
  }
  return t;
}

// ---- rows, columns, products

namespace {

tAsynt first_size(tAsynt array) { return Dimension(ArrayType_Dimensions(array)); }

tAsynt second_size(tAsynt matrix) { return Dimension(More_dimensions(ArrayType_Dimensions(matrix))); }

tAsynt vector_of(tAsynt matrix, tAsynt size) {
  return mArrayType(ArrayType_BasicType(matrix), mExpression1(size, mExpression0()));
}

}  // namespace

// A column has as many elements as there are rows.
tAsynt Part_2_type(tPosition pos, tAsynt t) {
  if (Rank(t) == 2) return vector_of(t, first_size(t));
  if (Rank(t) == 1) die_msg_pos2(pos, "Two-dimensional argument to Column operator expected.");
  die_msg_pos2(pos, "Non-array or wrong rank of array in Column operator.");
}

tAsynt Part_1_type(tPosition pos, tAsynt t) {
  if (Rank(t) == 2) return vector_of(t, second_size(t));
  if (Rank(t) == 1) die_msg_pos2(pos, "Two-dimensional argument to Row operator expected.");
  die_msg_pos2(pos, "Non-array or wrong rank of array in Row  operator.");
}

tAsynt Transpose_type(tAsynt t) {
  if (!Is_array(t)) die_msg("Non-array argument to Transpose.");
  if (Rank(t) != 2) die_msg("Array of wrong dimension to Transpose.");
  return mArrayType(ArrayType_BasicType(t), two_dimensions(second_size(t), first_size(t)));
}

namespace {

// All of d1 but its last dimension, then all of d2 but its first.
tAsynt Dot_type2(tAsynt d1, tAsynt d2) {
  const tAsynt rest = as_expressions(Is_dimension(d2) ? More_dimensions(d2) : d2);
  tAsynt result = rest;
  tAsynt* tail = &result;
  for (; Is_dimension(d1) && Is_dimension(More_dimensions(d1)); d1 = More_dimensions(d1)) {
    *tail = mExpression1(Dimension(d1), rest);
    tail = &Expression1_Expressions(*tail);
  }
  return result;
}

tAsynt Dot_type(tPosition pos, tAsynt t1, tAsynt t2) {
  if (!Is_array(t1) || !Is_array(t2)) die_msg_pos2(pos, "Bad argument to XDot.");
  const tAsynt base = Promote_types(pos, ArrayType_BasicType(t1), ArrayType_BasicType(t2), 0);
  if (Rank(t1) == 1 && Rank(t2) == 1) return base;
  return mArrayType(base, Dot_type2(ArrayType_Dimensions(t1), ArrayType_Dimensions(t2)));
}

}  // namespace

// a . b . c is a . (b . c).
tAsynt Find_dot_type(tPosition pos, tAsynt exprs) {
  if (!Is_cell(exprs) || !Is_cell(Expression1_Expressions(exprs))) return nullptr;
  std::vector<tAsynt> types;
  for (; Is_cell(exprs); exprs = Expression1_Expressions(exprs))
    types.push_back(Find_type(&Expression1_Expression(exprs)));
  tAsynt typ = types.back();
  for (size_t i = types.size() - 1; i-- > 0;) typ = Dot_type(pos, types[i], typ);
  return typ;
}

tAsynt Cross_type(tAsynt t1, tAsynt t2) {
  const auto three = [](tAsynt t) {
    if (Rank(t) != 1) return false;
    const tAsynt size = first_size(t);
    if (Asynt_Kind(size) == kExactIntConst) return std::string(ExactIntConst_Val(size)) == "3";
    return Asynt_Kind(size) == kIntConst && IntConst_Val(size) == 3;
  };
  if (!three(t1) || !three(t2)) type_abort("Cross_type");
  return mArrayType(Promote_types(NoPosition, ArrayType_BasicType(t1), ArrayType_BasicType(t2), 0), One_dimension(3));
}

tAsynt Check_OuterProduct(tAsynt e, tAsynt t1, tAsynt t2) {
  if (Rank(t1) == 1 && Rank(t2) == 1)
    return mArrayType(Promote_types(NoPosition, ArrayType_BasicType(t1), ArrayType_BasicType(t2), 0),
                      two_dimensions(first_size(t1), first_size(t2)));
  type_error(NoPosition, "OuterProduct requres both arguments be one-dimensional arrays, %s ", Unparsed(e).c_str());
  return mArrayType(real_type_node, Prepend_dimension(1, One_dimension(1)));
}

char Check_Array_of_ints(tAsynt t) {
  if (Rank(t) != 1 || !Is_int(ArrayType_BasicType(t)))
    die_msg("Second argument to Extract must be vector of integers.");
  return 1;
}

// ---- lists

// {{1, 2}, {3, 4}} has the rank of its nesting; the inner sizes are those of the elements' common type.
tAsynt Find_list_type(tPosition pos, tAsynt exprs) {
  const tAsynt e = Promote_exprs(pos, exprs, 1);
  const int n = expr_list_len(exprs);
  if (!Is_array(e)) return mArrayType(e, One_dimension(n));
  return mArrayType(ArrayType_BasicType(e), Prepend_dimension(n, ArrayType_Dimensions(e)));
}

tAsynt Find_dimensions_type(tPosition pos, tAsynt t) {
  if (!Is_array(t)) type_warning(pos, "Non-array is passed as argument to Dimensions[]");
  return mArrayType(int_type_node, One_dimension(Rank(t)));
}

// ---- statistics

tAsynt Find_Mean_Type(tAsynt t, const char* functionName) {
  const tAsynt base = Is_array(t) ? ArrayType_BasicType(t) : nullptr;
  if (Is_int(base) || Asynt_IsType(base, kRealType)) {
    const tAsynt rest = Without_first_dimension(t);
    return !Is_array(rest) || Is_int(base) ? Make_type(real_type_node, rest) : rest;
  }
  if (Asynt_IsType(base, kComplexType)) {
    const tAsynt rest = Without_first_dimension(t);
    return Is_array(rest) ? rest : complex_type_node;
  }
  type_error(NoPosition, "Invalid type passed to %s[]. Must be array of Integer, Real or Complex", functionName);
  return real_type_node;
}

tAsynt Find_total_type(tAsynt t) {
  if (Is_array(t)) return Part_type2(NoPosition, t, One_dimension(1));
  type_error(NoPosition, "Non-array passed to Total[].");
  return mNoType();
}

namespace {

// An int base becomes real in place: a declared array is a real one from then on.
tAsynt ConvertIntBaseToRealBase(tAsynt t) {
  if (Is_int(t)) return real_type_node;
  if (Is_array(t) && Is_int(ArrayType_BasicType(t))) {
    ArrayType_BasicType(t) = real_type_node;
    Forget_types();
  }
  return t;
}

}  // namespace

tAsynt Find_XQuantile_Type(tPosition pos, tAsynt t1, tAsynt t2, tAsynt t3) {
  if (!Is_array(t1)) {
    type_error(pos, "Invalid 1st argument passed to Quantile[]. Must be array. Got %s.", Unparsed(t1).c_str());
    return real_type_node;
  }
  if (Rank(t3) != 2) {
    type_error(pos, "Invalid 3rd argument passed to Quantile[]. Must be exactly {{a,b},{c,d}}. Got %s.",
               Unparsed(t3).c_str());
    return real_type_node;
  }
  const tAsynt typ = ConvertIntBaseToRealBase(t1);
  return Rank(t2) == 1 ? typ : Without_first_dimension(typ);
}

// ---- Flatten

namespace {

// A level far below zero would ask for as many dimensions; no real rank comes near this.
constexpr long kMaxLevel = 1000;

long level_value(string text) {
  const long level = std::strtol(text, nullptr, 10);
  return level < -kMaxLevel ? -kMaxLevel : level;
}

tAsynt Find_Flatten_Type(tPosition pos, tAsynt t, string level) {
  if (!Is_array(t)) {
    type_error(pos, "Invalid 1st argument type passed to Flatten[]. It must be an array.");
    return real_type_node;
  }
  const long rank = Rank(t);
  const long value = level_value(level);
  return mArrayType(ArrayType_BasicType(t), ListOfZeroes(value >= rank ? 1 : static_cast<int>(rank - value)));
}

}  // namespace

tAsynt Find_flatten_form(tPosition pos, tAsynt exprs) {
  if (!Is_cell(exprs)) return nullptr;
  const tAsynt typ = Find_type(&Expression1_Expression(exprs));
  const int n = expr_list_len(exprs);
  if (n == 1) return Find_Flatten_Type(pos, typ, "99");
  if (n > 2) {
    type_warning(pos, "More than two arguments to Flatten[], cannot derive correct type.");
    return typ;
  }
  const tAsynt level = *Element(exprs, 2);
  if (Asynt_Kind(level) == kExactIntConst) return Find_Flatten_Type(pos, typ, ExactIntConst_Val(level));
  type_warning(pos, "Not a integer constant passed as 2nd argument to Flatten[] (%s), cannot derive correct type.",
               Unparsed(level).c_str());
  return typ;
}

}  // namespace oz
