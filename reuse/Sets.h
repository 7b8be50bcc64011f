// Sets of small numbers as bit strings, with a cached size and loose bounds.
// Both sets of a binary operation must have been made with the same size.
#pragma once

#include <cstdint>
#include <cstdio>

namespace oz {

struct tSet {
  int MaxElmt;          // largest element the set can hold
  int LastBitset;       // index of the last word
  uint32_t* BitsetPtr;  // element e is bit 0x80000000 >> (e & 31) of word e >> 5
  int Card;             // number of elements, -1 when not known
  int FirstElmt;        // all elements lie between FirstElmt and LastElmt; both may be loose
  int LastElmt;
};

// Makes an empty set for the elements 0 to MaxSize; released by ReleaseSet.
void MakeSet(tSet* Set, int MaxSize);
void ReleaseSet(tSet* Set);

// Assignments: the first set is changed.
void Union(tSet* Set1, const tSet& Set2);
void Difference(tSet* Set1, const tSet& Set2);
void Intersection(tSet* Set1, const tSet& Set2);
void SymDiff(tSet* Set1, const tSet& Set2);
void Complement(tSet* Set);
void Assign(tSet* Set1, const tSet& Set2);
void AssignElmt(tSet* Set, int Elmt);
void AssignEmpty(tSet* Set);

void Include(tSet* Set, int Elmt);
void Exclude(tSet* Set, int Elmt);

// Removes and returns the smallest element; 0 for an empty set.
int Extract(tSet* Set);

// The number of elements; stored in the set.
int Card(tSet* Set);

// The smallest and the largest element, 0 for an empty set; the bound that was found is tightened.
int Minimum(tSet* Set);
int Maximum(tSet* Set);

bool IsElement(int Elmt, const tSet& Set);
bool IsSubset(const tSet& Set1, const tSet& Set2);
bool IsEqual(const tSet& Set1, const tSet& Set2);
bool IsEmpty(const tSet& Set);

// Whether a predicate holds for all, for some, for exactly one element.
bool Forall(const tSet& Set, bool (*Proc)(int));
bool Exists(const tSet& Set, bool (*Proc)(int));
bool Exists1(const tSet& Set, bool (*Proc)(int));

// Calls Proc for each element in ascending order.
void ForallDo(const tSet& Set, void (*Proc)(int));

// Reads a set in the form that WriteSet writes: "{", " %d" per element, "}".
void ReadSet(FILE* File, tSet* Set);
void WriteSet(FILE* File, const tSet& Set);

}  // namespace oz
