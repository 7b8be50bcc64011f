// Members of instance sets.
//
// A variable of the set a[i] is one array over the set, and a function of it takes the indices as its first arguments.
// In the tree both are applications of the member's name to the indices:
//
//   x[i]       becomes  x[[i]]      a`f[i][y]  becomes  a`f[i, y]
//
// A declared type tells a member by its kind, and one size of -1 per index stands in front of an array's own sizes. The
// type of a variable keeps these markers, since the access consumes them. The result of a function is no array over the
// set: the markers come off when its indices become arguments.

#include <unordered_map>
#include <unordered_set>

#include "Asynt.h"
#include "fun.h"
#include "fun_parts.h"
#include "oz.h"
#include "type.h"

namespace oz {

namespace {

// Functions of sets whose type has lost its markers: their other calls are still to be merged.
std::unordered_set<tAsynt> member_functions;

// Nests that an access to a member left over: they are done with, although their type is still a member's.
std::unordered_set<tAsynt> finished_nests;

// The number that the rewriting leaves in each node that it meets, and what stands in the place of those that it
// replaced.
uint16_t rewriting = 0;
std::unordered_map<tAsynt, tAsynt> replaced;

// ---- what is a member

// The call below f[i][x]; null where the head of *t is anything but a call of a name.
tAsynt inner_simple_call(tAsynt t) {
  if (Asynt_Kind(t) != kComplexFFE || !Asynt_IsType(ComplexFFE_Name(t), kSimpleFFE)) return nullptr;
  tAsynt inner = ComplexFFE_Name(t);
  return Asynt_IsType(SimpleFFE_Name(inner), kSymbol) ? inner : nullptr;
}

tAsynt head_info(tAsynt call) { return Symbol_SymInfo(SimpleFFE_Name(call)); }

// A name of another object has no type until it is looked up. It is asked for without being stored: the verification
// gives names their types, and treats those that had none in its own way.
tAsynt declared_type(tAsynt info) {
  if (!Asynt_IsType(SymInfo_Type(info), kNoType) || Asynt_Kind(info) != kAbsoluteSymbol) return SymInfo_Type(info);
  tAsynt probe =
      mSymbol(mAbsoluteSymbol(mNoType(), SymInfo_Pos(info), NamedSymbol_Name(info), AbsoluteSymbol_Components(info)));
  return Find_type(&probe);
}

bool is_member_call(tAsynt call) {
  return member_functions.count(head_info(call)) || Is_setmember(declared_type(head_info(call)));
}

// ---- markers

tAsynt without_leading_markers(tAsynt sizes) {
  for (;;) {
    if (Asynt_IsType(sizes, kExpression1) && Asynt_IsType(Expression1_Expression(sizes), kIntConst) &&
        IntConst_Val(Expression1_Expression(sizes)) == -1)
      sizes = Expression1_Expressions(sizes);
    else
      return sizes;
  }
}

tAsynt without_markers(tAsynt type) {
  switch (Asynt_Kind(type)) {
    case kArrayType_s: {
      tAsynt sizes = without_leading_markers(ArrayType_Dimensions(type));
      if (Asynt_IsType(sizes, kExpression0)) return ArrayType_BasicType(type);
      return mArrayType(ArrayType_BasicType(type), sizes);
    }
    case kMultiType_s: return mMultiType(MultiType_Types(type));
    case kIntType_s: return mIntType(BasicType_attributes(type));
    case kRealType_s: return mRealType(BasicType_attributes(type));
    case kBoolType_s: return mBoolType(BasicType_attributes(type));
    default: return type;
  }
}

// The call f[i][x] as f[i, x]. The cells of the indices are copied, since another call may share them.
tAsynt merged_call(tAsynt t) {
  tAsynt inner = inner_simple_call(t);
  tAsynt info = head_info(inner);
  if (member_functions.insert(info).second) SymInfo_Type(info) = without_markers(declared_type(info));
  return mSimpleFFE(append_exprs(FullFormExpression_Args(inner), FullFormExpression_Args(t)), SimpleFFE_Name(inner));
}

// ---- accesses

void rewrite(tAsynt* slot);

tAsynt Make_xpart(tAsynt s, tAsynt args) {
  if (Asynt_IsType(args, kExpression0)) return s;
  return mXPart(mkNonConvPos(NoPosition), mExpression1(s, args));
}

tAsynt member_nest(tAsynt old, tAsynt expression) {
  tAsynt nest = mAbsoluteNest(SymInfo_Type(old), SymInfo_Pos(old), expression);
  finished_nests.insert(nest);
  return mSymbol(nest);
}

// x[i] of a member x with a type.
tAsynt plain_access(tAsynt call, tAsynt type) {
  rewrite(&FullFormExpression_Args(call));
  SymInfo_Type(head_info(call)) = type;
  return Make_xpart(SimpleFFE_Name(call), FullFormExpression_Args(call));
}

// x[i][j]: the innermost arguments are the indices of the set, what is left stays a nest.
tAsynt access_to_nest(tAsynt nest, tAsynt call) {
  tAsynt inner = ComplexFFE_Name(call);
  rewrite(&FullFormExpression_Args(call));
  rewrite(&FullFormExpression_Args(inner));
  tAsynt below = mSimpleFFE(FullFormExpression_Args(call), SimpleFFE_Name(inner));
  return Make_xpart(member_nest(nest, below), FullFormExpression_Args(inner));
}

// x[i][j][k], likewise.
tAsynt access_to_deep_nest(tAsynt nest, tAsynt call) {
  tAsynt middle = ComplexFFE_Name(call);
  tAsynt inner = ComplexFFE_Name(middle);
  rewrite(&FullFormExpression_Args(call));
  rewrite(&FullFormExpression_Args(middle));
  rewrite(&FullFormExpression_Args(inner));
  tAsynt below = mSimpleFFE(FullFormExpression_Args(middle), SimpleFFE_Name(inner));
  return Make_xpart(member_nest(nest, mComplexFFE(FullFormExpression_Args(call), below)),
                    FullFormExpression_Args(inner));
}

// The nest of a member as an array access; null when it is no member's, or has another shape.
tAsynt nest_access(tAsynt nest) {
  if (!Is_setmember(SymInfo_Type(nest)) || finished_nests.count(nest)) return nullptr;
  tAsynt call = AbsoluteNest_FullFormExpression(nest);
  if (Asynt_IsType(call, kSimpleFFE))
    return Asynt_IsType(SimpleFFE_Name(call), kSymbol) ? plain_access(call, SymInfo_Type(nest)) : nullptr;
  if (inner_simple_call(call)) return access_to_nest(nest, call);
  if (Asynt_Kind(call) == kComplexFFE && inner_simple_call(ComplexFFE_Name(call)))
    return access_to_deep_nest(nest, call);
  return nullptr;
}

// What a use of a member becomes; null for any other node.
tAsynt member_use(tAsynt t) {
  if (Asynt_Kind(t) == kSymbol && Asynt_Kind(Symbol_SymInfo(t)) == kAbsoluteNest) return nest_access(Symbol_SymInfo(t));
  if (Asynt_Kind(t) == kSimpleFFE && Asynt_IsType(SimpleFFE_Name(t), kSymbol)) {
    if (member_functions.count(head_info(t))) return nullptr;
    tAsynt type = declared_type(head_info(t));
    return Is_setmember(type) ? plain_access(t, type) : nullptr;
  }
  tAsynt inner = inner_simple_call(t);
  if (!inner || !is_member_call(inner)) return nullptr;
  rewrite(&FullFormExpression_Args(inner));
  rewrite(&FullFormExpression_Args(t));
  return merged_call(t);
}

// Rewrites below a slot. A node that several places share is rewritten once, and all of them get the result.
// Recursion follows nesting, the last child of a node is followed in the loop.
void rewrite(tAsynt* slot) {
  while (*slot) {
    tAsynt t = *slot;
    const TreeKind& kind = Asynt_Schema.kinds[Asynt_Kind(t)];
    if (kind.child_count == 0) return;
    if (t->yySeen == rewriting) {
      const auto known = replaced.find(t);
      if (known != replaced.end()) *slot = known->second;
      return;
    }
    t->yySeen = rewriting;
    if (Asynt_Kind(t) == kAlgAuxiliary) return;
    if (tAsynt use = member_use(t)) {
      *slot = replaced[t] = use;
      use->yySeen = rewriting;
      return;
    }
    for (int i = 0; i + 1 < kind.child_count; i++) rewrite(&tree_raw_slot<tAsynt>(t, kind.children[i]));
    slot = &tree_raw_slot<tAsynt>(t, kind.children[kind.child_count - 1]);
  }
}

// ---- is there anything to do?

bool found_candidate = false;

// A name without a type is one of a path, which is no member, or of another object, which may be one.
char Look_for_candidates(tAsynt* t) {
  if (Asynt_Kind(*t) != kSymbol) return !found_candidate;
  tAsynt info = Symbol_SymInfo(*t);
  const bool unknown = Asynt_Kind(info) == kAbsoluteSymbol && Asynt_IsType(SymInfo_Type(info), kNoType);
  if (Asynt_Kind(info) == kAbsoluteNest || unknown || Is_setmember(SymInfo_Type(info))) found_candidate = true;
  return !found_candidate;
}

// Most functions use no member of a set: this walk is many times faster than the rewriting.
bool may_use_members(tAsynt* expr) {
  found_candidate = !member_functions.empty();
  WalkAsynt(expr, Look_for_candidates);
  return found_candidate;
}

}  // namespace

void Merge_member_head(tAsynt* head) {
  tAsynt inner = inner_simple_call(*head);
  if (!inner || !is_member_call(inner)) return;
  *head = merged_call(*head);
  CheckAsynt(*head);
}

void Transform_instance_set(tAsynt* expr) {
  if (!may_use_members(expr)) return;
  rewriting = Asynt_NewWalk();
  rewrite(expr);
  replaced.clear();
}

void Forget_members() {
  member_functions.clear();
  finished_nests.clear();
}

}  // namespace oz
