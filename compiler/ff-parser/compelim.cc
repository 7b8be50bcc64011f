// The host makes an array by Array[oz$x$C, {n}], so its elements come back as calls of oz$x$C; the scanner has marked
// these heads by a ComponentName. The walk knows calls and lists only, since a text that was just read has nothing
// else.

#include "compelim.h"

#include "Asynt.h"
#include "oz.h"
#include "ozerrors.h"
#include "predef.h"

namespace oz {

namespace {

bool is_component(tAsynt call) {
  const tAsynt head = SimpleFFE_Name(call);
  return Asynt_Kind(head) == kSymbol && Asynt_Kind(SymInfo_Type(Symbol_SymInfo(head))) == kComponentName;
}

void check_index(tAsynt call, tPosition position) {
  if (expr_list_len(FullFormExpression_Args(call)) != 1) die_msg_pos2(position, "Too many indices.");
}

tAsynt make_part(tPosition position, tAsynt array, tAsynt index) {
  return mXPart(mkNonConvPos(position), mExpression1(array, index));
}

// oz$x$C[i] becomes x[[i]]; a call around it, oz$x$C[i][j], a part of that.
void eliminate(tAsynt call, tAsynt* place, tAsynt* outer) {
  const tAsynt head = Symbol_SymInfo(SimpleFFE_Name(call));
  const tPosition position = SymInfo_Pos(head);
  if (outer) check_index(*outer, position);
  check_index(call, position);
  Comp_elim(FullFormExpression_Args(call), &FullFormExpression_Args(call), nullptr);
  *place = make_part(position, mSymbol(ComponentName_Name(SymInfo_Type(head))), FullFormExpression_Args(call));
  if (outer) *outer = make_part(position, ComplexFFE_Name(*outer), FullFormExpression_Args(*outer));
}

}  // namespace

void Comp_elim(tAsynt t, tAsynt* place, tAsynt* outer) {
  for (;;) {
    switch (Asynt_Kind(t)) {
      case kComplexFFE:
        Comp_elim(FullFormExpression_Args(t), &FullFormExpression_Args(t), nullptr);
        if (!outer) outer = place;
        place = &ComplexFFE_Name(t);
        break;
      case kExpression1:
        Comp_elim(Expression1_Expression(t), &Expression1_Expression(t), nullptr);
        place = &Expression1_Expressions(t);
        outer = nullptr;
        break;
      case kSimpleFFE:
        if (is_component(t)) return eliminate(t, place, outer);
        place = &FullFormExpression_Args(t);
        outer = nullptr;
        break;
      default: return;
    }
    t = *place;
  }
}

}  // namespace oz
