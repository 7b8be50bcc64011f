// Interned identifiers. Table holds one entry per identifier, by number. Two ways lead to an entry: the 256 chained
// buckets of HashTable, which WriteHashTable shows, and Finder, an open-addressed table that grows with the number of
// identifiers and serves the searches, so that a million identifiers cost no more each than a hundred.
#include "Idents.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>

#include "DynArray.h"
#include "System.h"

namespace oz {

namespace {

struct IdentTableEntry {
  tStringRef text;
  size_t length;
  size_t hash;       // of the text, for Finder
  tIdent collision;  // the next older identifier of the bucket, 0 at the end
};

alignas(4) constexpr char kEmptyString[4] = {};  // a stored string of length 0

constexpr size_t kFirstTableSize = 1024;
constexpr size_t kFirstFinderSize = 2048;
constexpr int kBuckets = 256;

// Number 0 is no identifier; number 1 is the empty text, which neither Finder nor a search needs to know.
IdentTableEntry FirstTable[kFirstTableSize] = {{kEmptyString, 0, 0, 0}, {kEmptyString, 0, 0, 0}};
IdentTableEntry* Table = FirstTable;
size_t IdentTableSize = kFirstTableSize;
tIdent IdentCount = NoIdent;
tIdent HashTable[kBuckets] = {NoIdent};

tIdent FirstFinder[kFirstFinderSize];  // 0 is a free slot; the size is always a power of two
tIdent* Finder = FirstFinder;
size_t FinderSize = kFirstFinderSize;

unsigned bucket_of(const char* s, size_t length) {
  auto at = [s](size_t i) { return static_cast<unsigned long>(static_cast<long>(static_cast<signed char>(s[i]))); };
  return static_cast<unsigned>((at(0) + 11 * at(length - 1) + 26 * length) & (kBuckets - 1));
}

[[noreturn]] void no_more_identifiers() {
  std::fputs("MakeIdent: no room for another identifier\n", stderr);
  Exit(1);
}

// The slot of Finder that holds the text, or the free slot where it belongs.
size_t finder_slot(const char* s, size_t length, size_t hash) {
  size_t slot = hash & (FinderSize - 1);
  for (; Finder[slot] != 0; slot = (slot + 1) & (FinderSize - 1)) {
    const IdentTableEntry& e = Table[Finder[slot]];
    if (e.hash == hash && e.length == length && IsEqualSt(e.text, s)) break;
  }
  return slot;
}

// The first of the two tables is static storage, which no free list may get.
void extend(void* array, size_t* count, size_t size, bool is_static) {
  char** a = static_cast<char**>(array);
  if (is_static) {
    const char* first = *a;
    size_t old_bytes = *count * size;
    *count *= 2;
    MakeArray(a, count, size);
    if (*a) std::memcpy(*a, first, old_bytes);
  } else {
    ExtendArray(a, count, size);
  }
  if (!*a) no_more_identifiers();
}

void grow_table() {
  char* a = reinterpret_cast<char*>(Table);
  extend(&a, &IdentTableSize, sizeof(IdentTableEntry), Table == FirstTable);
  Table = reinterpret_cast<IdentTableEntry*>(a);
}

void grow_finder() {
  char* a = reinterpret_cast<char*>(Finder);
  extend(&a, &FinderSize, sizeof(tIdent), Finder == FirstFinder);
  Finder = reinterpret_cast<tIdent*>(a);
  std::memset(Finder, 0, FinderSize * sizeof(tIdent));
  for (tIdent i = NoIdent + 1; i <= IdentCount; i++) {
    size_t slot = Table[i].hash & (FinderSize - 1);
    while (Finder[slot] != 0) slot = (slot + 1) & (FinderSize - 1);
    Finder[slot] = i;
  }
}

tIdent new_ident(const char* s, size_t length, size_t hash, size_t slot) {
  if (IdentCount == INT_MAX) no_more_identifiers();
  IdentCount++;
  if (static_cast<size_t>(IdentCount) == IdentTableSize) grow_table();
  tIdent& bucket = HashTable[bucket_of(s, length)];
  Table[IdentCount] = {PutString(s, length), length, hash, bucket};
  bucket = IdentCount;
  Finder[slot] = IdentCount;
  if (static_cast<size_t>(IdentCount) * 2 > FinderSize) grow_finder();
  return IdentCount;
}

}  // namespace

tIdent MakeIdent(const char* s, size_t length) {
  if (length == 0) return NoIdent;
  size_t hash = std::hash<std::string_view>{}({s, length});
  size_t slot = finder_slot(s, length, hash);
  return Finder[slot] != 0 ? Finder[slot] : new_ident(s, length, hash, slot);
}

void GetString(tIdent i, char* buffer) { StGetString(Table[i].text, buffer); }

tStringRef GetStringRef(tIdent i) { return Table[i].text; }

tIdent MaxIdent() { return IdentCount; }

void WriteIdent(FILE* f, tIdent i) { WriteString(f, Table[i].text); }

void WriteIdents() {
  for (tIdent i = NoIdent; i <= IdentCount; i++) {
    std::printf("%5d ", i);
    WriteIdent(stdout, i);
    std::putchar('\n');
  }
}

void WriteHashTable() {
  for (int b = 0; b < kBuckets; b++) {
    int length = 0;
    for (tIdent i = HashTable[b]; i != 0; i = Table[i].collision) length++;
    std::printf("%5d%5d", b, length);
    for (tIdent i = HashTable[b]; i != 0; i = Table[i].collision) {
      std::putchar(' ');
      WriteIdent(stdout, i);
    }
    std::putchar('\n');
  }
  std::printf("\nIdents = %5d\n", IdentCount);
}

}  // namespace oz
