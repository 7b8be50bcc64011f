// Equal array and multiple types of one text are one node, found by a key of its parts: thus types are compared without
// a walk, though a text can build large ones from small ones by naming them:
//
//   oz$Type[a, oz$ArrayType[oz$Real, 2]], oz$Type[b, oz$MultiType[a, a, a]]
//
// The same way a short text could build a type of any depth and any size; the measures beside the nodes bound both.

#include "typepat.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "Asynt.h"
#include "ffparse.h"
#include "ozerrors.h"
#include "predef.h"

namespace oz {

namespace {

constexpr int kMaxTypeDepth = 100;
constexpr int64_t kMaxTypeSize = 1'000'000;

struct Measure {
  int depth;     // types in each other
  int64_t size;  // parts, those that occur more than once counted as often
};

std::unordered_map<std::string, tAsynt> types;       // by the key of their parts
std::unordered_map<tAsynt, Measure> array_or_multi;  // the made ones among them

void add_word(std::string* key, uint64_t word) { key->append(reinterpret_cast<const char*>(&word), sizeof word); }

template <typename T>
uint64_t word_of(T* p) {
  return reinterpret_cast<uintptr_t>(p);
}

// The one node of all types equal to a type that has no parts; what Get_type_node has made is that node itself.
tAsynt representative(tAsynt type) {
  if (array_or_multi.contains(type)) return type;
  std::string key;
  add_word(&key, Asynt_Kind(type));
  if (Asynt_IsType(type, kBasicType)) {
    add_word(&key, word_of(BasicType_attributes(type)));
  } else if (Asynt_Kind(type) == kPreDef) {
    add_word(&key, word_of(static_cast<char*>(PreDef_fun(type))));
    add_word(&key, PreDef_type_flag(type));
  } else if (Asynt_Kind(type) == kComponentName) {
    add_word(&key, word_of(ComponentName_Name(type)));
  } else if (Asynt_Kind(type) != kNoType) {
    add_word(&key, word_of(type));
  }
  return types.try_emplace(key, type).first->second;
}

// A type being measured and keyed.
struct Sum {
  std::string key;
  Measure measure{1, 1};
};

void add_part(Sum* sum, tAsynt type) {
  add_word(&sum->key, word_of(representative(type)));
  const auto known = array_or_multi.find(type);
  const Measure part = known == array_or_multi.end() ? Measure{0, 1} : known->second;
  sum->measure.depth = std::max(sum->measure.depth, part.depth + 1);
  sum->measure.size += part.size;
  if (sum->measure.depth > kMaxTypeDepth) die_msg("Type nested too deeply (more than %d levels).", kMaxTypeDepth);
  if (sum->measure.size > kMaxTypeSize) die_msg("Type too large.");
}

// The node for all types equal to this new one.
tAsynt shared_type(tAsynt type) {
  Sum sum;
  add_word(&sum.key, Asynt_Kind(type));
  if (Asynt_Kind(type) == kArrayType) {
    add_part(&sum, ArrayType_BasicType(type));
    for (tAsynt l = ArrayType_Dimensions(type); Asynt_Kind(l) == kIntConst1; l = IntConst1_IntConsts(l))
      add_word(&sum.key, static_cast<uint64_t>(IntConst_Val(IntConst1_IntConst(l))));
  } else {
    for (tAsynt l = MultiType_Types(type); Asynt_Kind(l) == kType1; l = Type1_Types(l)) add_part(&sum, Type1_Type(l));
  }
  const tAsynt shared = types.try_emplace(std::move(sum.key), type).first->second;
  array_or_multi.try_emplace(shared, sum.measure);
  return shared;
}

}  // namespace

char Do_type_annotation_stuff(tAsynt t) {
  if (Asynt_Kind(t) != kSimpleFFE || Symbol_SymInfo(SimpleFFE_Name(t)) != ff_oztype_sym) return 0;
  const tAsynt args = FullFormExpression_Args(t);
  if (expr_list_len(args) != 2) return 0;
  const tAsynt type = Get_type_node(Expression1_Expression(Expression1_Expressions(args)));
  set_sym_type(Expression1_Expression(args), type);
  return 1;
}

tAsynt Get_type_node(tAsynt t) {
  if (Asynt_Kind(t) == kSymbol) return SymInfo_Type(Symbol_SymInfo(t));
  if (Asynt_Kind(t) == kSimpleFFE) {
    const tAsynt head = Symbol_SymInfo(SimpleFFE_Name(t));
    const tAsynt args = FullFormExpression_Args(t);
    if (head == ff_ozmultitype_sym) return shared_type(mMultiType(make_multi_type(args)));
    if (head == ff_ozarraytype_sym && Asynt_Kind(args) == kExpression1) return shared_type(make_array_type(args));
  }
  // The line number is part of the message's fixed text.
  die_msg("Internal error in line %d of %s", 48, "typepat");
}

bool same_type(tAsynt a, tAsynt b) {
  if (a == b) return true;
  if (array_or_multi.contains(a) && array_or_multi.contains(b)) return false;
  return IsEqualAsynt(a, b);
}

void forget_types() {
  types.clear();
  array_or_multi.clear();
}

}  // namespace oz
