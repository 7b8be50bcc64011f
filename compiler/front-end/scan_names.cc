// Open addressing over the entries of all identifiers: a slot holds a part of the hash beside the entry's number, so
// that a wrong entry is hardly ever looked at. Keywords are entered when the table is made.

#include "scan_names.h"

#include <cstring>
#include <deque>
#include <vector>

#include "Memory.h"
#include "ozerrors.h"
#include "tokens.h"

namespace oz {
namespace {

// The free part of the current block of texts.
char* text_free = nullptr;
size_t text_left = 0;
constexpr size_t kTextBlock = 16384;

char* take_bytes(size_t size) {
  if (size > kTextBlock / 4) return Alloc(size);
  if (size > text_left) {
    text_free = Alloc(kTextBlock);
    text_left = text_free ? kTextBlock : 0;
    if (!text_free) return nullptr;
  }
  char* bytes = text_free;
  text_free += size;
  text_left -= size;
  return bytes;
}

string keep_name(const char* text, size_t length) {
  char* copy = take_bytes(length + 1);
  if (!copy) die_msg("Out of memory. malloc failed.");
  std::memcpy(copy, text, length);
  copy[length] = 0;
  return copy;
}

struct NameSlot {
  uint64_t hash;
  ScanName* name;  // null: free
};

struct NameTable {
  std::vector<NameSlot> slots;
  std::deque<ScanName> names;  // never move
};

size_t first_slot(const NameTable* table, uint64_t hash) { return (hash >> 32) & (table->slots.size() - 1); }
size_t next_slot(const NameTable* table, size_t i) { return (i + 1) & (table->slots.size() - 1); }

NameSlot* find_slot(NameTable* table, const char* text, size_t length, uint64_t hash) {
  for (size_t i = first_slot(table, hash);; i = next_slot(table, i)) {
    NameSlot* slot = &table->slots[i];
    if (!slot->name) return slot;
    if (slot->hash == hash && slot->name->length == length && std::memcmp(slot->name->text, text, length) == 0)
      return slot;
  }
}

void double_slots(NameTable* table) {
  std::vector<NameSlot> old(table->slots.size() * 2);
  old.swap(table->slots);
  for (const NameSlot& slot : old) {
    if (!slot.name) continue;
    size_t i = first_slot(table, slot.hash);
    while (table->slots[i].name) i = next_slot(table, i);
    table->slots[i] = slot;
  }
}

ScanName& intern(NameTable* table, const char* text, size_t length, uint64_t hash) {
  NameSlot* slot = find_slot(table, text, length, hash);
  if (slot->name) return *slot->name;
  table->names.push_back({keep_name(text, length), length, 0, 0, nullptr});
  ScanName& name = table->names.back();
  *slot = {hash, &name};
  if (2 * table->names.size() > table->slots.size()) double_slots(table);
  return name;
}

enum class TokenSort { keyword, oper, other };

void enter_keyword(NameTable* table, int code, const char* text, TokenSort sort) {
  if (sort != TokenSort::keyword) return;
  uint64_t hash = kScanHashStart;
  for (const char* c = text; *c; c++) hash = scan_hash_step(hash, *c);
  intern(table, text, std::strlen(text), hash).keyword = code;
}

NameTable make_table() {
  NameTable table;
  table.slots.resize(4096);
#define TOKEN(name, text, sort) enter_keyword(&table, tok##name, text, TokenSort::sort);
#include "tokens.def"
#undef TOKEN
  return table;
}

}  // namespace

ScanName& scan_intern(const char* text, size_t length, uint64_t hash) {
  static NameTable table = make_table();
  return intern(&table, text, length, hash);
}

}  // namespace oz
