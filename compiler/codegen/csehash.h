// Value numbers of expressions, and the table that finds an expression seen before.
#pragma once

#include "Asynt.h"

namespace oz {

// ---- value numbers: unsigned arithmetic of 32 bits that wraps

// Over the bytes of the value in memory; over the characters of the text (null counts as empty).
unsigned hash_int(ozmat_int x);
unsigned hash_real(ozmat_real x);
unsigned hash_str(string s);

// A node's number from its kind and the numbers of its operands: ((kind * 33 + v0) * 33 + v1) ...
unsigned value_num0(tAsynt t);
unsigned value_num1(tAsynt t, unsigned v0);
unsigned value_num2(tAsynt t, unsigned v0, unsigned v1);
unsigned value_num3(tAsynt t, unsigned v0, unsigned v1, unsigned v2);
unsigned value_num4(tAsynt t, unsigned v0, unsigned v1, unsigned v2, unsigned v3);

// The number of a symbol information: the same for all its occurrences between two calls of cse_init_hashtable.
unsigned symbol_num(tAsynt si);

// ---- structural equality

// Whether two numbered trees are the same: equal kinds and operands, symbols by the identity of their information.
// Positions do not count, conversions on either side are looked through. A NaN equals nothing, nor does a reduction.
char Is_same(tAsynt t1, tAsynt t2);

// ---- the table: linear hashing, which splits one bucket at a time

struct cse_element_t {
  unsigned hash;    // the value number
  unsigned place;   // what the bucket is chosen by
  tAsynt expr;      // the first expression with this value
  tAsynt temp_var;  // its TempSymbol
  cse_element_t* next;
};

// Empties the table and forgets the numbers of symbols.
void cse_init_hashtable();

// The element of a numbered expression whose value number is hash; a new one has no temporary yet. The expression may
// be changed afterwards by conversions put around its operands, and by nothing else.
cse_element_t* cse_enter(unsigned hash, tAsynt expr);

// Elements and buckets. For tests and measurements.
size_t cse_elements();
size_t cse_buckets();

}  // namespace oz
