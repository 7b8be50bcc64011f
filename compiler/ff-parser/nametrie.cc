// A name is one whole expression, so names are found bottom-up: every expression that is closed has a place in the
// trie, and steps to it go from the places of its parts. For a[1,b[2]] the steps are
//
//   a  -(1)->  "a[1"  -(b[2])->  "a[1,b[2]"  -]->  a[1,b[2]]
//
// where the step over b[2] is labelled by its own place. Each token costs one look-up however many names contain it and
// however deep they nest, and the longest name wins because the enclosing expression is closed last.
//
// Places come in pairs, so that the step over "]" needs no look-up: it goes from an even number to the odd one behind
// it. From an odd one, as in a[1][], it is the step over the argument 0, which no argument is.

#include "nametrie.h"

#include <cstring>
#include <vector>

#include "ozerrors.h"
#include "scan_names.h"

namespace oz {

namespace {

// What is known of a pair of places.
struct Places {
  string text;      // of a token that is not short, on the even one
  tAsynt nests[2];  // the names that end there, or null
};

struct Slot {
  uint64_t key;
  NameState target;  // 0: free
};

// Open addressing; the number of slots is a power of two.
struct StepTable {
  std::vector<Slot> slots;
  size_t used = 0;
};

std::vector<Places> pairs;  // pair 0 is no place
StepTable short_tokens;     // key: the bytes of the token
StepTable long_tokens;      // key: the hash of the token's text
StepTable arguments;        // key: the place and that of the argument

NameState new_place() {
  if (pairs.empty()) pairs.push_back({});
  if (pairs.size() > UINT32_MAX / 2) die_msg("Too many names.");
  pairs.push_back({});
  return static_cast<NameState>(2 * (pairs.size() - 1));
}

size_t first_slot(const StepTable* table, uint64_t key) {
  return ((key ^ key >> 32) * 0x9E3779B97F4A7C15u >> 32) & (table->slots.size() - 1);
}

size_t next_slot(const StepTable* table, size_t i) { return (i + 1) & (table->slots.size() - 1); }

// The slot of a key for which same(target) holds, or the free one where it belongs. The table has a free slot.
template <typename Same>
Slot* find_slot(StepTable* table, uint64_t key, Same same) {
  size_t i = first_slot(table, key);
  while (table->slots[i].target && !(table->slots[i].key == key && same(table->slots[i].target)))
    i = next_slot(table, i);
  return &table->slots[i];
}

void make_room(StepTable* table) {
  if (2 * (table->used + 1) <= table->slots.size()) return;
  std::vector<Slot> old(table->slots.empty() ? 64 : 2 * table->slots.size());
  old.swap(table->slots);
  for (const Slot& slot : old)
    if (slot.target) *find_slot(table, slot.key, [](NameState) { return false; }) = slot;
}

template <typename Same>
NameState step(StepTable* table, uint64_t key, bool enter, Same same) {
  if (enter)
    make_room(table);
  else if (table->used == 0)
    return 0;
  Slot* slot = find_slot(table, key, same);
  if (slot->target || !enter) return slot->target;
  table->used++;
  *slot = {key, new_place()};
  return slot->target;
}

// A token holds no byte of value 0, so its bytes alone tell its length.
NameState short_token(const char* text, size_t length, bool enter) {
  uint64_t key = 0;
  std::memcpy(&key, text, length);
  return step(&short_tokens, key, enter, [](NameState) { return true; });
}

NameState argument_step(NameState s, NameState argument, bool enter) {
  return step(&arguments, uint64_t{s} << 32 | argument, enter, [](NameState) { return true; });
}

uint64_t hash_of(const char* text, size_t length) {
  uint64_t hash = kScanHashStart;
  for (size_t i = 0; i < length; i++) hash = scan_hash_step(hash, text[i]);
  return hash;
}

}  // namespace

void nametrie_clear() {
  std::vector<Places>().swap(pairs);
  short_tokens = {};
  long_tokens = {};
  arguments = {};
}

NameState nametrie_token(const char* text, size_t length, bool enter) {
  if (pairs.empty() && !enter) return 0;
  if (length <= sizeof(uint64_t)) return short_token(text, length, enter);
  const uint64_t hash = hash_of(text, length);
  const auto same = [text, length](NameState s) {
    return std::strncmp(pairs[s / 2].text, text, length) == 0 && pairs[s / 2].text[length] == 0;
  };
  const NameState s = step(&long_tokens, hash, enter, same);
  if (s && !pairs[s / 2].text) pairs[s / 2].text = scan_intern(text, length, hash).text;
  return s;
}

NameState nametrie_argument(NameState s, NameState argument, bool enter) {
  return s && argument ? argument_step(s, argument, enter) : 0;
}

NameState nametrie_call(NameState s, bool enter) {
  if (s % 2 == 1) return argument_step(s, 0, enter);
  return s ? s + 1 : 0;
}

tAsynt nametrie_nest(NameState s) { return s ? pairs[s / 2].nests[s % 2] : nullptr; }

void nametrie_set_nest(NameState s, tAsynt nest) { pairs[s / 2].nests[s % 2] = nest; }

}  // namespace oz
