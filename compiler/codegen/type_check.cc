// Checks on types: equality, the bases that an operation wants, and the order in which values fit into places.

#include <cstring>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ozerrors.h"
#include "type_rules.h"

namespace oz {

namespace {

// ---- equality

using Pair = std::pair<tAsynt, tAsynt>;

struct PairHash {
  size_t operator()(const Pair& p) const {
    const std::hash<tAsynt> hash;
    return hash(p.first) * 31 + hash(p.second);
  }
};

bool equal_texts(string a, string b) { return a == b || (a && b && std::strcmp(a, b) == 0); }

// Compares all fields of two nodes of one kind but the children, which go on the list of what is to be compared.
bool equal_fields(tAsynt a, tAsynt b, std::vector<Pair>* todo) {
  const TreeKind& kind = Asynt_Schema.kinds[Asynt_Kind(a)];
  for (size_t i = 0; i < kind.field_count; i++) {
    bool equal = true;
    switch (kind.fields[i].type) {
      case FieldType::tree: todo->emplace_back(tree_raw_slot<tAsynt>(a, i), tree_raw_slot<tAsynt>(b, i)); break;
      case FieldType::character: equal = tree_raw_slot<char>(a, i) == tree_raw_slot<char>(b, i); break;
      case FieldType::text: equal = equal_texts(tree_raw_slot<string>(a, i), tree_raw_slot<string>(b, i)); break;
      case FieldType::position:
        equal = Compare(tree_raw_slot<tPosition>(a, i), tree_raw_slot<tPosition>(b, i)) == 0;
        break;
      case FieldType::word4: equal = tree_raw_slot<uint32_t>(a, i) == tree_raw_slot<uint32_t>(b, i); break;
      case FieldType::word8: equal = tree_raw_slot<uint64_t>(a, i) == tree_raw_slot<uint64_t>(b, i); break;
    }
    if (!equal) return false;
  }
  return true;
}

// A size may name a symbol whose type has that very size again. A pair that is met a second time is taken as equal:
// if it is not, the first visit finds out.
bool equal_trees(tAsynt a, tAsynt b) {
  std::unordered_set<Pair, PairHash> seen;
  std::vector<Pair> todo{{a, b}};
  while (!todo.empty()) {
    const Pair p = todo.back();
    todo.pop_back();
    if (p.first == p.second) continue;
    if (!p.first || !p.second || Asynt_Kind(p.first) != Asynt_Kind(p.second)) return false;
    if (seen.insert(p).second && !equal_fields(p.first, p.second, &todo)) return false;
  }
  return true;
}

}  // namespace

bool Equal_types(tAsynt a, tAsynt b) {
  if (a == b) return true;
  if (Asynt_Kind(a) != Asynt_Kind(b)) return false;
  if (Is_basic(a)) return BasicType_attributes(a) == BasicType_attributes(b);
  return equal_trees(a, b);
}

// ---- families of types

char Check_scalar(tAsynt t) { return Is_basic(t); }

char Check_string_type(tAsynt t) { return Asynt_IsType(t, kStringType); }

char Is_complex(tAsynt t) { return Asynt_IsType(Is_array(t) ? ArrayType_BasicType(t) : t, kComplexType); }

char Is_setmember(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kIntType_s:
    case kRealType_s:
    case kBoolType_s:
    case kArrayType_s:
    case kMultiType_s: return 1;
    default: return 0;
  }
}

// ---- bases

namespace {

// Where a basic type stands in the widening order bool, int, real, complex; string stands apart. 0: no basic type.
enum Base { no_base, bool_base, int_base, real_base, complex_base, string_base };

Base base_of(tAsynt t) {
  if (Asynt_IsType(t, kBoolType)) return bool_base;
  if (Asynt_IsType(t, kIntType)) return int_base;
  if (Asynt_IsType(t, kRealType)) return real_base;
  if (Asynt_IsType(t, kComplexType)) return complex_base;
  return Asynt_IsType(t, kStringType) ? string_base : no_base;
}

bool same_base(tAsynt a, tAsynt b) { return base_of(a) != no_base && base_of(a) == base_of(b); }

}  // namespace

char Check_base(tAsynt typ, tAsynt t) {
  if (!same_base(typ, Is_array(t) ? ArrayType_BasicType(t) : t))
    type_error(NoPosition,
               "You attempt to call an function which strongly require correct argument types.\n This is illegal to "
               "do with your arguments.");
  return 1;
}

char Check_equal_base(tAsynt typ, tAsynt t) {
  if (!Is_array(typ) || !Is_array(t)) return same_base(typ, t);
  return Check_equal_base(ArrayType_BasicType(typ), ArrayType_BasicType(t)) && Rank(typ) == Rank(t);
}

char Check_nobool(tAsynt t) {
  if (Is_bool(Is_array(t) ? ArrayType_BasicType(t) : t))
    die_msg("It is illegal to use a boolean value within a numerican expression.");
  return 1;
}

// ---- places and values

namespace {

bool Narrower_dim(tAsynt d1, tAsynt d2) { return CPgetDepth(d1) != CPgetDepth(d2); }

}  // namespace

// An array place takes a basic value here; NarrowerInit catches that.
char Narrower(tAsynt t1, tAsynt t2) {
  if (Asynt_Kind(t1) == kNoType || Asynt_Kind(t2) == kNoType) return 1;
  if (Is_basic(t1) && Is_array(t2)) return 1;
  if (Is_array(t1) && Is_array(t2))
    return Narrower(ArrayType_BasicType(t1), ArrayType_BasicType(t2)) ||
           Narrower_dim(ArrayType_Dimensions(t1), ArrayType_Dimensions(t2));
  const Base place = base_of(t1);
  const Base value = base_of(t2);
  if (place == no_base || value == no_base) return 0;
  if (place == string_base || value == string_base) return place != value;
  return value > place;
}

char NarrowerInit(tAsynt t1, tAsynt t2) { return Is_array(t1) && Is_basic(t2); }

// ---- Join

namespace {

bool Check_join2(tAsynt t1, tAsynt t2) {
  if (!Is_array(t1) || !Is_array(t2)) return false;
  const tAsynt base = ArrayType_BasicType(t1);
  return same_base(base, ArrayType_BasicType(t2)) && !Is_bool(base);
}

}  // namespace

void Check_join(tAsynt t1, tAsynt tail) {
  const int rank = Rank(t1);
  for (; Is_cell(tail); tail = Expression1_Expressions(tail)) {
    tAsynt* e = &Expression1_Expression(tail);
    const tAsynt t2 = Find_type(e);
    if (rank != Rank(t2))
      type_error(NoPosition, " Join[] first argument type does not match type of %s", Unparsed(*e).c_str());
    if (rank == 0) type_error(NoPosition, "Join[] first argument type must be array, not scalar");
    if (!Check_join2(t1, t2))
      type_error(NoPosition, "Join[]  argument type must be array of Integer or Real or Complex");
  }
}

tAsynt Find_join_type(tAsynt* first, tAsynt tail) {
  const tAsynt typ = Find_type(first);
  Check_join(typ, tail);
  return typ;
}

// ---- two dimension lists

namespace {

tAsynt drop_dimensions(tAsynt dims, int n) {
  for (; n > 0; n--) dims = More_dimensions(dims);
  return dims;
}

void compare_sizes(tAsynt a, tAsynt b) {
  if (Asynt_Kind(a) != kExactIntConst || Asynt_Kind(b) != kExactIntConst) return;
  if (!equal_texts(ExactIntConst_Val(a), ExactIntConst_Val(b)))
    type_error(NoPosition, "Incompatible array sizes : %s and %s", ExactIntConst_Val(a), ExactIntConst_Val(b));
}

}  // namespace

// The lists are aligned at their ends: {2, 3, 4} and {3, 4} agree.
tAsynt merge_arrays(tAsynt bastyp, tAsynt dim1, tAsynt dim2) {
  const int rank1 = CPgetDepth(dim1);
  const int rank2 = CPgetDepth(dim2);
  tAsynt d1 = drop_dimensions(dim1, rank1 - rank2);
  tAsynt d2 = drop_dimensions(dim2, rank2 - rank1);
  for (; Is_dimension(d1); d1 = More_dimensions(d1), d2 = More_dimensions(d2))
    compare_sizes(Dimension(d1), Dimension(d2));
  return mArrayType(bastyp, rank1 > rank2 ? dim1 : dim2);
}

}  // namespace oz
