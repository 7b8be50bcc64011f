// Open addressing with linear probing; the size is a power of two and at most half of the slots are taken. The hash is
// not the one that orders the buckets of a table: keys that crowd one bucket there are spread here.
#include "keyfinder.h"

#include <cstring>
#include <functional>
#include <string_view>

#include "ememory.h"
#include "hash.h"

namespace oz {

struct FinderSlot {
  size_t hash;
  element* item;  // null in a free slot
};

struct KeyFinder {
  FinderSlot* slots;
  size_t size;
  size_t taken;
};

namespace {

constexpr size_t kFirstSize = 32;

size_t spread(const char* key, size_t len) { return std::hash<std::string_view>{}({key, len}); }

FinderSlot* free_slots(size_t n) {
  return static_cast<FinderSlot*>(std::memset(emalloc(n * sizeof(FinderSlot)), 0, n * sizeof(FinderSlot)));
}

void place(KeyFinder* f, FinderSlot s) {
  size_t at = s.hash & (f->size - 1);
  while (f->slots[at].item) at = (at + 1) & (f->size - 1);
  f->slots[at] = s;
}

void grow(KeyFinder* f) {
  FinderSlot* old = f->slots;
  size_t old_size = f->size;
  f->size *= 2;
  f->slots = free_slots(f->size);
  for (size_t i = 0; i < old_size; i++)
    if (old[i].item) place(f, old[i]);
  efree(old);
}

}  // namespace

KeyFinder* make_finder() {
  KeyFinder* f = static_cast<KeyFinder*>(emalloc(sizeof(KeyFinder)));
  *f = {free_slots(kFirstSize), kFirstSize, 0};
  return f;
}

void delete_finder(KeyFinder* finder) {
  if (finder) efree(finder->slots);
  efree(finder);
}

element* finder_get(const KeyFinder* finder, const char* key, size_t len) {
  size_t hash = spread(key, len);
  for (size_t at = hash & (finder->size - 1);; at = (at + 1) & (finder->size - 1)) {
    const FinderSlot& s = finder->slots[at];
    if (!s.item || (s.hash == hash && s.item->len == len && std::memcmp(s.item->str, key, len) == 0)) return s.item;
  }
}

void finder_put(KeyFinder* finder, element* item) {
  if (++finder->taken * 2 > finder->size) grow(finder);
  place(finder, {spread(item->str, item->len), item});
}

// The slots behind the freed one, up to the next free slot, are filled in again, so that no search ends at the gap.
void finder_drop(KeyFinder* finder, const element* item) {
  size_t at = spread(item->str, item->len) & (finder->size - 1);
  while (finder->slots[at].item != item) at = (at + 1) & (finder->size - 1);
  finder->slots[at].item = nullptr;
  finder->taken--;
  for (at = (at + 1) & (finder->size - 1); finder->slots[at].item; at = (at + 1) & (finder->size - 1)) {
    FinderSlot s = finder->slots[at];
    finder->slots[at].item = nullptr;
    place(finder, s);
  }
}

}  // namespace oz
