// Sets of small numbers as bit strings. The lowest element of a word is its most significant bit, so that the elements
// of a word ascend with the count of leading zeros. The bounds of a set may be loose: a scan begins and ends with them
// and meets empty words at worst.
#include "Sets.h"

#include <algorithm>
#include <bit>

#include "DynArray.h"
#include "System.h"

namespace oz {

namespace {

constexpr uint32_t kFirstBit = 0x80000000;

uint32_t bit_of(int elmt) { return kFirstBit >> (elmt & 31); }
uint32_t& word_of(const tSet& s, int elmt) { return s.BitsetPtr[elmt >> 5]; }

// The smallest element that is at least from and at most the upper bound, or -1.
int element_from(const tSet& s, int from) {
  if (from > s.LastElmt) return -1;
  int w = from >> 5;
  uint32_t word = s.BitsetPtr[w] & (~uint32_t{0} >> (from & 31));
  while (word == 0) {
    if (++w > s.LastElmt >> 5) return -1;
    word = s.BitsetPtr[w];
  }
  int elmt = w * 32 + std::countl_zero(word);
  return elmt <= s.LastElmt ? elmt : -1;
}

int first_element(const tSet& s) { return element_from(s, s.FirstElmt); }

// LastElmt may be the largest int, so the step must not go past it.
int next_element(const tSet& s, int elmt) { return elmt < s.LastElmt ? element_from(s, elmt + 1) : -1; }

template <typename Op>
void combine(tSet* s1, const tSet& s2, Op op) {
  for (int w = 0; w <= s1->LastBitset; w++) s1->BitsetPtr[w] = op(s1->BitsetPtr[w], s2.BitsetPtr[w]);
  s1->Card = -1;
}

void widen(tSet* s1, const tSet& s2) {
  s1->FirstElmt = std::min(s1->FirstElmt, s2.FirstElmt);
  s1->LastElmt = std::max(s1->LastElmt, s2.LastElmt);
}

}  // namespace

void MakeSet(tSet* Set, int MaxSize) {
  Set->MaxElmt = std::max(MaxSize, 0);
  Set->LastBitset = Set->MaxElmt >> 5;  // a word more when MaxElmt is a multiple of 32, for MaxElmt itself
  size_t words = static_cast<size_t>(Set->LastBitset) + 1;
  char* bits;
  MakeArray(&bits, &words, sizeof(uint32_t));
  if (!bits) Exit(1);
  Set->BitsetPtr = reinterpret_cast<uint32_t*>(bits);
  AssignEmpty(Set);
}

void ReleaseSet(tSet* Set) {
  char* bits = reinterpret_cast<char*>(Set->BitsetPtr);
  size_t words = static_cast<size_t>(Set->LastBitset) + 1;
  ReleaseArray(&bits, &words, sizeof(uint32_t));
  Set->BitsetPtr = nullptr;
}

void Union(tSet* Set1, const tSet& Set2) {
  combine(Set1, Set2, [](uint32_t a, uint32_t b) { return a | b; });
  widen(Set1, Set2);
}

void Difference(tSet* Set1, const tSet& Set2) {
  combine(Set1, Set2, [](uint32_t a, uint32_t b) { return a & ~b; });
}

void Intersection(tSet* Set1, const tSet& Set2) {
  combine(Set1, Set2, [](uint32_t a, uint32_t b) { return a & b; });
  Set1->FirstElmt = std::max(Set1->FirstElmt, Set2.FirstElmt);
  Set1->LastElmt = std::min(Set1->LastElmt, Set2.LastElmt);
}

void SymDiff(tSet* Set1, const tSet& Set2) {
  combine(Set1, Set2, [](uint32_t a, uint32_t b) { return a ^ b; });
  widen(Set1, Set2);
}

void Complement(tSet* Set) {
  for (int w = 0; w <= Set->LastBitset; w++) Set->BitsetPtr[w] = ~Set->BitsetPtr[w];
  Set->BitsetPtr[Set->LastBitset] &= ~uint32_t{0} << (31 - (Set->MaxElmt & 31));
  if (Set->Card >= 0) Set->Card = Set->MaxElmt - Set->Card + 1;
  Set->FirstElmt = 0;
  Set->LastElmt = Set->MaxElmt;
}

void Assign(tSet* Set1, const tSet& Set2) {
  std::copy_n(Set2.BitsetPtr, Set1->LastBitset + 1, Set1->BitsetPtr);
  Set1->Card = Set2.Card;
  Set1->FirstElmt = Set2.FirstElmt;
  Set1->LastElmt = Set2.LastElmt;
}

void AssignElmt(tSet* Set, int Elmt) {
  AssignEmpty(Set);
  word_of(*Set, Elmt) |= bit_of(Elmt);
  Set->Card = 1;
  Set->FirstElmt = Set->LastElmt = Elmt;
}

void AssignEmpty(tSet* Set) {
  std::fill_n(Set->BitsetPtr, Set->LastBitset + 1, 0);
  Set->Card = 0;
  Set->FirstElmt = Set->MaxElmt;
  Set->LastElmt = 0;
}

void Include(tSet* Set, int Elmt) {
  word_of(*Set, Elmt) |= bit_of(Elmt);
  Set->Card = -1;
  Set->FirstElmt = std::min(Set->FirstElmt, Elmt);
  Set->LastElmt = std::max(Set->LastElmt, Elmt);
}

void Exclude(tSet* Set, int Elmt) {
  word_of(*Set, Elmt) &= ~bit_of(Elmt);
  Set->Card = -1;
  if (Elmt == Set->FirstElmt && Elmt < Set->MaxElmt) Set->FirstElmt++;
  if (Elmt == Set->LastElmt && Elmt >= 1) Set->LastElmt--;
}

int Extract(tSet* Set) {
  int elmt = Minimum(Set);
  Exclude(Set, elmt);
  return elmt;
}

int Card(tSet* Set) {
  if (Set->Card < 0) {
    Set->Card = 0;
    for (int e = first_element(*Set); e >= 0; e = next_element(*Set, e)) Set->Card++;
  }
  return Set->Card;
}

int Minimum(tSet* Set) {
  int elmt = first_element(*Set);
  if (elmt < 0) return 0;
  return Set->FirstElmt = elmt;
}

int Maximum(tSet* Set) {
  for (int w = Set->LastElmt >> 5; w >= Set->FirstElmt >> 5; w--) {
    if (Set->BitsetPtr[w] != 0) return Set->LastElmt = w * 32 + 31 - std::countr_zero(Set->BitsetPtr[w]);
  }
  return 0;
}

bool IsElement(int Elmt, const tSet& Set) { return (word_of(Set, Elmt) & bit_of(Elmt)) != 0; }

bool IsSubset(const tSet& Set1, const tSet& Set2) {
  for (int w = 0; w <= Set1.LastBitset; w++)
    if (Set1.BitsetPtr[w] & ~Set2.BitsetPtr[w]) return false;
  return true;
}

bool IsEqual(const tSet& Set1, const tSet& Set2) {
  return std::equal(Set1.BitsetPtr, Set1.BitsetPtr + Set1.LastBitset + 1, Set2.BitsetPtr);
}

bool IsEmpty(const tSet& Set) { return first_element(Set) < 0; }

bool Forall(const tSet& Set, bool (*Proc)(int)) {
  for (int e = first_element(Set); e >= 0; e = next_element(Set, e))
    if (!Proc(e)) return false;
  return true;
}

bool Exists(const tSet& Set, bool (*Proc)(int)) {
  for (int e = first_element(Set); e >= 0; e = next_element(Set, e))
    if (Proc(e)) return true;
  return false;
}

bool Exists1(const tSet& Set, bool (*Proc)(int)) {
  int n = 0;
  for (int e = first_element(Set); e >= 0 && n < 2; e = next_element(Set, e)) n += Proc(e);
  return n == 1;
}

void ForallDo(const tSet& Set, void (*Proc)(int)) {
  for (int e = first_element(Set); e >= 0; e = next_element(Set, e)) Proc(e);
}

// One character separates the elements, whatever it is. Numbers that the set cannot hold are passed over.
void ReadSet(FILE* File, tSet* Set) {
  AssignEmpty(Set);
  int c;
  do {
    c = std::getc(File);
  } while (c != '{' && c != EOF);
  int count = 0;
  while (c != EOF && (c = std::getc(File)) != '}' && c != EOF) {
    int elmt;
    if (std::fscanf(File, "%d", &elmt) != 1 || elmt < 0 || elmt > Set->MaxElmt || IsElement(elmt, *Set)) continue;
    Include(Set, elmt);
    count++;
  }
  Set->Card = count;
}

void WriteSet(FILE* File, const tSet& Set) {
  std::putc('{', File);
  for (int e = first_element(Set); e >= 0; e = next_element(Set, e)) std::fprintf(File, " %d", e);
  std::putc('}', File);
}

}  // namespace oz
