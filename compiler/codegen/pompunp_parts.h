// What the files of the C++ generator that write expressions and statements share.
#pragma once

#include <string>

#include "pompunp.h"
#include "type.h"

namespace oz {

// ---- expression lists

inline bool CPis_cell(tAsynt list) { return Asynt_Kind(list) == kExpression1; }
inline tAsynt CPhead(tAsynt list) { return Expression1_Expression(list); }
inline tAsynt CPtail(tAsynt list) { return Expression1_Expressions(list); }

// The number of elements; no more than the limit are counted.
int CPlength(tAsynt list, int limit);

// Whether a list has just so many elements; element number n, from 1, of a list that has so many.
inline bool CPhas_length(tAsynt list, int n) { return CPlength(list, n + 1) == n; }
tAsynt CPelement(tAsynt list, int n);

// ---- types and texts

// The type of an expression, which is not replaced.
inline tAsynt CPtype(tAsynt t) { return Find_type(&t); }
inline bool CPis_array(tAsynt t) { return Is_array_type(CPtype(t)); }

// The array type of a value, also where it is the one result of a function; null for other types.
tAsynt CParray_of(tAsynt typ);

// Whether the elements of an array, or a value that is none, are ints.
bool CPis_int_based(tAsynt typ);

// A copy of the source text, for messages and comments.
std::string CPsource(tAsynt t);

// Types are remembered for as long as one of these lives; every writer has one.
struct CPmemory {
  CPmemory();
  ~CPmemory();
  CPmemory(const CPmemory&) = delete;
  CPmemory& operator=(const CPmemory&) = delete;
};

// ---- writing

// Whether t is "_", as a subscript.
bool CPis_blank(tAsynt t);

// An operation on arrays. False, and nothing is written, if there is no C++ for this form of it.
bool CPunparse_array_operation(tAsynt t);

// Operands between texts. An empty text is no piece of its own, at which a line might break.
inline void CPwrite(const char* s) {
  if (*s) cpoutput(s);
}
inline bool CPwrite_call(const char* before, tAsynt a, const char* after = ")") {
  CPwrite(before);
  CPunparseVal(a);
  CPwrite(after);
  return true;
}
inline bool CPwrite_call2(const char* before, tAsynt a, const char* between, tAsynt b, const char* after = ")") {
  CPwrite(before);
  CPunparseVal(a);
  return CPwrite_call(between, b, after);
}
inline bool CPwrite_list_call(const char* before, tAsynt list, const char* after = ")") {
  cpoutput(before);
  CPunparse_exprs(list, ", ");
  cpoutput(after);
  return true;
}

// ---- folding

// Whether an operation is written as its value: it is constant, and of a kind that is folded.
bool CPis_folded(tAsynt t);

// Writes the value of an operation that is folded; false if this one is not.
bool CPwrite_folded(tAsynt t);

// Whether the text of a folded value begins with "-". That of a real value begins with the blanks of its padding.
bool CPfolded_minus(tAsynt t);

// Forgets what has been found out about operations that are not constant.
void CPforget_constants();

}  // namespace oz
