// Value numbers of expressions, and the table that finds an expression seen before.
//
// A value number tells little: sums of the same terms in another order have one number, and so have a[[1]] + b[[4]] and
// a[[2]] + b[[3]]. It is part of what makes two expressions the same, but the bucket is chosen by a number that mixes
// the operands as they stand, temporaries in the place of operations; so the chains keep at about two elements.
//
// The table grows by linear hashing: with each two elements the next bucket is split in two.

#include "csehash.h"

#include <cmath>
#include <cstring>
#include <deque>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "hash.h"

namespace oz {

// ---- value numbers

unsigned hash_int(ozmat_int x) {
  char bytes[4];
  std::memcpy(bytes, &x, sizeof bytes);
  return hash_x33_u4(bytes, sizeof bytes);
}

unsigned hash_real(ozmat_real x) {
  char bytes[8];
  std::memcpy(bytes, &x, sizeof bytes);
  return hash_x33_u4(bytes, sizeof bytes);
}

unsigned hash_str(string s) { return s ? hash_x33_u4(s, std::strlen(s)) : 0; }

unsigned value_num0(tAsynt t) { return Asynt_Kind(t); }
unsigned value_num1(tAsynt t, unsigned v0) { return value_num0(t) * 33 + v0; }
unsigned value_num2(tAsynt t, unsigned v0, unsigned v1) { return value_num1(t, v0) * 33 + v1; }
unsigned value_num3(tAsynt t, unsigned v0, unsigned v1, unsigned v2) { return value_num2(t, v0, v1) * 33 + v2; }
unsigned value_num4(tAsynt t, unsigned v0, unsigned v1, unsigned v2, unsigned v3) {
  return value_num3(t, v0, v1, v2) * 33 + v3;
}

namespace {

std::unordered_map<tAsynt, unsigned> serials;  // of symbol informations, from 1

// A bijection on 32 bits that leaves 0 alone: neighbouring serial numbers, added up in value numbers, must not meet.
unsigned scattered(unsigned x) {
  x = (x ^ x >> 16) * 0x7feb352du;
  x = (x ^ x >> 15) * 0x846ca68bu;
  return x ^ x >> 16;
}

}  // namespace

unsigned symbol_num(tAsynt si) {
  const auto next = static_cast<unsigned>(serials.size() + 1);
  return scattered(serials.try_emplace(si, next).first->second);
}

// ---- structural equality

namespace {

tAsynt without_conversions(tAsynt t) {
  while (Asynt_IsType(t, kTypeConversion)) t = TypeConversion_Expression(t);
  return t;
}

bool same_text(string a, string b) { return std::strcmp(a ? a : "", b ? b : "") == 0; }

// The slots of the fields that are compared.
struct Operands {
  size_t first;
  size_t end;
};

// What two nodes of one kind must have in common; none for the kinds that are never the same.
Operands operands(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kComplexFFE:
    case kSimpleFFE:
    case kXWhile:
    case kIterator1:
    case kExpression1: return {0, 2};
    case kXFor: return {0, 4};
    case kXIf:
    case kXModule:
    case kXBlock:
    case kXWith:
    case kIterator: return {0, 3};
    case kXInequality: return {0, 1};
    default: break;
  }
  if (Asynt_IsType(t, kCUnary)) return {0, 1};  // the Type of XAbs comes with typing
  if (Asynt_IsType(t, kCBinary)) return {0, 2};
  if (Asynt_IsType(t, kUnary) || Asynt_IsType(t, kVariadic)) return {1, 2};  // behind the position
  if (Asynt_IsType(t, kBinary)) return {1, 3};
  return {0, 0};
}

// Whether two nodes of one kind without operands are the same. The end of a list of ranges is not: so no reduction is
// the same as another, and each is computed where it stands.
bool same_leaf(tAsynt t1, tAsynt t2) {
  switch (Asynt_Kind(t1)) {
    case kXBreak:
    case kXPi:
    case kXI:
    case kXE:
    case kXTrue:
    case kXFalse:
    case kExpression0: return true;
    case kSymbol: return Symbol_SymInfo(t1) == Symbol_SymInfo(t2);
    case kIntConst: return IntConst_Val(t1) == IntConst_Val(t2);
    case kRealConst: return RealConst_Val(t1) == RealConst_Val(t2);
    case kStringConst: return same_text(StringConst_Val(t1), StringConst_Val(t2));
    case kExactIntConst: return same_text(ExactIntConst_Val(t1), ExactIntConst_Val(t2));
    case kExactRealConst: return same_text(ExactRealConst_Val(t1), ExactRealConst_Val(t2));
    default: return Asynt_IsType(t1, kSymInfo) && t1 == t2;
  }
}

}  // namespace

char Is_same(tAsynt t1, tAsynt t2) {
  for (;;) {
    t1 = without_conversions(t1);
    t2 = without_conversions(t2);
    if (!t1 || Asynt_Kind(t1) != Asynt_Kind(t2)) return 0;
    const Operands o = operands(t1);
    if (o.end == 0) return same_leaf(t1, t2);
    for (size_t i = o.first; i + 1 < o.end; i++)
      if (!Is_same(tree_raw_slot<tAsynt>(t1, i), tree_raw_slot<tAsynt>(t2, i))) return 0;
    t1 = tree_raw_slot<tAsynt>(t1, o.end - 1);
    t2 = tree_raw_slot<tAsynt>(t2, o.end - 1);
  }
}

// ---- the table

namespace {

constexpr unsigned kFirstBuckets = 256;
constexpr int kPerBucket = 2;

struct cse_hashtable_t {
  unsigned p = 0;                             // next bucket to split
  unsigned maxp_minus_1 = kFirstBuckets - 1;  // current mask
  int slack = kFirstBuckets * kPerBucket;     // elements left before the next split
  std::vector<cse_element_t*> buckets = std::vector<cse_element_t*>(kFirstBuckets);
  std::deque<cse_element_t> elements;
  unsigned long unique = 0;  // operands so far that equal no other
};

cse_hashtable_t cse_hashtab;

uint64_t mixed(uint64_t h, uint64_t x) {
  h = (h ^ x) * 0x9e3779b97f4a7c15u;
  return h ^ h >> 29;
}

uint64_t text_mark(string s) { return std::hash<std::string_view>()(s ? s : ""); }

uint64_t real_mark(ozmat_real x) {
  uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return std::isnan(x) ? ++cse_hashtab.unique : bits;
}

// Equal for operands that are the same, and different for most others. An address serves for a symbol: which bucket an
// expression is in shows nowhere.
uint64_t operand_mark(tAsynt t) {
  t = without_conversions(t);
  switch (Asynt_Kind(t)) {
    case kSymbol: return reinterpret_cast<uintptr_t>(Symbol_SymInfo(t));
    case kIntConst: return static_cast<uint64_t>(IntConst_Val(t));
    case kRealConst: return real_mark(RealConst_Val(t));
    case kStringConst: return text_mark(StringConst_Val(t));
    case kExactIntConst: return text_mark(ExactIntConst_Val(t));
    case kExactRealConst: return text_mark(ExactRealConst_Val(t));
    case kIReduce: return ++cse_hashtab.unique;
    default: return 0;
  }
}

uint64_t mix_operand(uint64_t h, tAsynt t) {
  return mixed(mixed(h, Asynt_Kind(without_conversions(t))), operand_mark(t));
}

unsigned place_of(tAsynt expr) {
  uint64_t h = mixed(0, Asynt_Kind(expr));
  const Operands o = operands(expr);
  for (size_t i = o.first; i < o.end; i++) {
    tAsynt t = tree_raw_slot<tAsynt>(expr, i);
    for (; Asynt_Kind(t) == kExpression1; t = Expression1_Expressions(t)) h = mix_operand(h, Expression1_Expression(t));
    h = mix_operand(h, t);
  }
  return static_cast<unsigned>(h ^ h >> 32);
}

cse_element_t** bucket_of(unsigned place) {
  const unsigned mask = cse_hashtab.maxp_minus_1;
  unsigned a = place & mask;
  if (a < cse_hashtab.p) a = place & (2 * mask + 1);  // has been split
  return &cse_hashtab.buckets[a];
}

void push(cse_element_t** chain, cse_element_t* e) {
  e->next = *chain;
  *chain = e;
}

// Splits bucket p: its elements go where one more bit of their places says.
void cse_expandtable() {
  cse_hashtable_t& table = cse_hashtab;
  const unsigned bit = table.maxp_minus_1 + 1;
  cse_element_t* chains[2] = {nullptr, nullptr};
  for (cse_element_t *e = table.buckets[table.p], *next; e; e = next) {
    next = e->next;
    push(&chains[(e->place & bit) != 0], e);
  }
  table.buckets[table.p] = chains[0];
  table.buckets.push_back(chains[1]);
  if (++table.p > table.maxp_minus_1) {
    table.maxp_minus_1 = 2 * table.maxp_minus_1 + 1;
    table.p = 0;
  }
  table.slack += kPerBucket;
}

cse_element_t* cse_insert(unsigned hash, unsigned place, tAsynt expr) {
  cse_hashtab.elements.push_back({hash, place, expr, nullptr, nullptr});
  cse_element_t* e = &cse_hashtab.elements.back();
  push(bucket_of(place), e);
  if (--cse_hashtab.slack < 0) cse_expandtable();
  return e;
}

}  // namespace

void cse_init_hashtable() {
  cse_hashtab = {};
  serials.clear();
}

cse_element_t* cse_enter(unsigned hash, tAsynt expr) {
  const unsigned place = place_of(expr);
  for (cse_element_t* e = *bucket_of(place); e; e = e->next)
    if (e->place == place && e->hash == hash && Is_same(e->expr, expr)) return e;
  return cse_insert(hash, place, expr);
}

size_t cse_elements() { return cse_hashtab.elements.size(); }
size_t cse_buckets() { return cse_hashtab.buckets.size(); }

}  // namespace oz
