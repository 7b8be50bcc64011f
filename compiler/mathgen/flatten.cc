// Splices compound expressions into the body of a Package or Context, so that each definition stands on its own line.

#include "flatten.h"

#include "Asynt.h"

namespace oz {

namespace {

// The place of a list's terminator.
tAsynt* end_of(tAsynt* list) {
  while (Asynt_Kind(*list) == kExpression1) list = &Expression1_Expressions(*list);
  return list;
}

// In a list: an empty compound is dropped, another one gives way to its own list, which is looked at again.
void flatten_list(tAsynt* list) {
  while (Asynt_Kind(*list) == kExpression1) {
    tAsynt item = Expression1_Expression(*list);
    if (Asynt_Kind(item) == kXCompoundExpression) {
      tAsynt rest = Expression1_Expressions(*list);
      *list = Variadic_Expressions(item);
      *end_of(list) = rest;
      continue;
    }
    flatten(&Expression1_Expression(*list));
    list = &Expression1_Expressions(*list);
  }
}

}  // namespace

void flatten(tAsynt* t) {
  switch (Asynt_Kind(*t)) {
    case kPackage: flatten_list(&Package_Body(*t)); return;
    case kContext: flatten_list(&Context_Body(*t)); return;
    default: return;
  }
}

}  // namespace oz
