// Instance sets: the indices reach every relative name inside the set.
//
//     instance a[i] inherits C end;  with  x := 2*y  in C
//
// gives  a`x[i_] := 2*a`y[i]  in one context for all members, and for the host the rule by which a member prints:
// Format[a`x[i_]] := "a[" <> ToString[i] <> "]" <> "`" <> ToString[a`x].

#include <cstring>
#include <string>
#include <unordered_set>

#include "oz.h"
#include "ozt.h"
#include "unroll_parts.h"

namespace oz::unrolling {

namespace {

// Every list of indices or index patterns that was made; a member carries the very list.
std::unordered_set<tAsynt> index_lists;

tAsynt current_indices_pat = nullptr;

bool is_relative(tAsynt symbol) {
  if (Asynt_Kind(symbol) != kSymbol) return false;
  const Asynt_tKind kind = Asynt_Kind(Symbol_SymInfo(symbol));
  return kind == kSimpleSymbol || kind == kFullSymbol;
}

// ---- types of members

// One marker per index in front of the dimensions.
tAsynt PrependIndexMarkers(tAsynt dimensions) {
  Chain markers;
  for (tAsynt l = current_indices; Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l))
    append(&markers, mIntConst(-1));
  if (!markers.first) return dimensions;
  Expression1_Expressions(markers.last) = dimensions;
  return markers.first;
}

// The type of a member of the set whose declared type this is; the type itself if it says nothing about members.
tAsynt member_type(tAsynt type) {
  switch (Asynt_Kind(type)) {
    case kArrayType_s:
    case kStringType:
    case kStringType_s: return type;
    default: break;
  }
  if (Asynt_IsType(type, kArrayType))
    return mArrayType_s(ArrayType_BasicType(type), PrependIndexMarkers(ArrayType_Dimensions(type)));
  if (Asynt_IsType(type, kMultiType)) return mMultiType_s(MultiType_Types(type));
  if (Asynt_IsType(type, kBasicType)) return mArrayType_s(type, PrependIndexMarkers(mExpression0()));
  return type;
}

void MarkSetMember(tAsynt info) { SymInfo_Type(info) = member_type(SymInfo_Type(info)); }

bool mark_place(tAsynt* place) {
  tAsynt t = *place;
  switch (Asynt_Kind(t)) {
    case kContext:
    case kPosConv: return false;
    case kSimpleSymbol:
    case kFullSymbol:
    case kRelativeNest: MarkSetMember(t); return true;
    default: return true;
  }
}

// ---- indices

bool is_generated_format(tAsynt t) {
  tAsynt lhs = Binary_LHS(t);
  if (Asynt_Kind(lhs) != kSimpleFFE || Asynt_Kind(SimpleFFE_Name(lhs)) != kSymbol) return false;
  tAsynt info = Symbol_SymInfo(SimpleFFE_Name(lhs));
  return Asynt_Kind(info) == kAbsoluteSymbol && Asynt_Kind(AbsoluteSymbol_Components(info)) == kExpression0 &&
         std::strcmp(NamedSymbol_Name(info), "Format") == 0;
}

tAsynt member(tAsynt symbol) {
  MarkSetMember(Symbol_SymInfo(symbol));
  return mSimpleFFE(current_indices, symbol);
}

struct InsertVisit {
  PlaceWalk<InsertVisit>* walk;

  // What lies below a symbol that stays a symbol: the arguments in its path, the element that it names.
  void below_symbol(tAsynt symbol) {
    tAsynt info = Symbol_SymInfo(symbol);
    if (tAsynt* components = components_of(info))
      walk_component_arguments(*components, [this](tAsynt* args) { walk->walk(args); });
    else if (Asynt_Kind(info) == kRelativeNest)
      walk->walk(&RelativeNest_FullFormExpression(info));
  }

  bool enter(tAsynt t) { return walk->entered.enter(t); }

  // f[y] of a member f is f[i][y].
  void call(tAsynt t) {
    tAsynt head = SimpleFFE_Name(t);
    walk->walk(&FullFormExpression_Args(t));
    if (Asynt_Kind(head) == kSymbol) below_symbol(head);
    if (!is_relative(head)) return;
    // The two kinds of call have the same fields; the node stays, since other places may hold it.
    SimpleFFE_Name(t) = member(head);
    t->yyKind = kComplexFFE;
  }

  bool operator()(tAsynt* place) {
    tAsynt t = *place;
    switch (Asynt_Kind(t)) {
      case kXPattern:
      case kMessage:
      case kContext:
      case kPosConv: return false;
      case kXSetDelayed: return !is_generated_format(t);
      case kSymbol:
        if (enter(t)) below_symbol(t);
        if (is_relative(t)) *place = member(t);
        return false;
      case kSimpleFFE:
        if (enter(t)) call(t);
        return false;
      default: return true;
    }
  }
};

// ---- left sides and Format rules

tAsynt host_text(const char* s) { return mStringConst(s); }
tAsynt StringJoin(tAsynt list) { return mXStringJoin(nowhere(), list); }
tAsynt list_of(tAsynt a) { return mExpression1(a, mExpression0()); }
tAsynt list_of(tAsynt a, tAsynt b) { return mExpression1(a, list_of(b)); }
tAsynt list_of(tAsynt a, tAsynt b, tAsynt c) { return mExpression1(a, list_of(b, c)); }

tAsynt index_string() { return CopyAsynt(current_index_string); }

// Format[x[i_]] := "a[" <> ... <> "]" <> "`" <> ToString[x]
tAsynt variable_format(tAsynt symbol) {
  tAsynt left = mSimpleFFE(current_indices_pat, CopyAsynt(symbol));
  tAsynt right = StringJoin(list_of(index_string(), host_text("`"), FFE1("ToString", CopyAsynt(symbol))));
  return definition(FFE1("Format", left), right);
}

// Format[f[i_][args]] := ("a[" <> ... <> "]" <> ToString[f])[args]
tAsynt function_format(tAsynt symbol, tAsynt args) {
  tAsynt left = mComplexFFE(CopyAsynt(args), mSimpleFFE(current_indices_pat, CopyAsynt(symbol)));
  tAsynt text = StringJoin(list_of(index_string(), FFE1("ToString", CopyAsynt(symbol))));
  return definition(FFE1("Format", left), mComplexFFE(CopyAsynt(args), text));
}

bool is_current_member(tAsynt t) {
  return Asynt_Kind(t) == kSimpleFFE && FullFormExpression_Args(t) == current_indices;
}

// A member that a left side defines; args is null for a variable.
struct DefinedMember {
  tAsynt symbol;
  tAsynt args;
};

struct AdjustVisit {
  PlaceWalk<AdjustVisit>* walk;
  std::vector<DefinedMember>* members;  // their rules are made when the walk is over
  bool in_lhs = false;

  void left_side(tAsynt* lhs) {
    in_lhs = true;
    walk->walk(lhs);
    in_lhs = false;
  }

  bool operator()(tAsynt* place) {
    tAsynt t = *place;
    switch (Asynt_Kind(t)) {
      case kXSet:
      case kXSetDelayed:
      case kSetOnce:
      case kXRule:
      case kXRuleDelayed:
      case kXUpSet:
      case kXUpSetDelayed: left_side(&Binary_LHS(t)); return false;
      case kPartInstance:
      case kContext:
      case kPosConv:
      case kXPattern: return false;
      case kSimpleFFE:
        if (!in_lhs || !is_current_member(t)) return true;
        FullFormExpression_Args(t) = current_indices_pat;
        members->push_back({SimpleFFE_Name(t), nullptr});
        return false;
      case kComplexFFE:
        if (!in_lhs || !is_current_member(ComplexFFE_Name(t))) return true;
        FullFormExpression_Args(ComplexFFE_Name(t)) = current_indices_pat;
        members->push_back({SimpleFFE_Name(ComplexFFE_Name(t)), FullFormExpression_Args(t)});
        return false;
      default: return true;
    }
  }
};

// ToString[i], ",", ToString[j]
tAsynt MkIndicesExps(tAsynt indices) {
  Chain chain;
  for (; Asynt_Kind(indices) == kExpression1; indices = Expression1_Expressions(indices)) {
    if (chain.first) append(&chain, host_text(","));
    append(&chain, FFE1("ToString", Expression1_Expression(indices)));
  }
  return finish(chain);
}

bool is_named(tAsynt symbol, const char* name) {
  tAsynt info = Symbol_SymInfo(symbol);
  return Asynt_IsType(info, kNamedSymbol) && std::strcmp(NamedSymbol_Name(info), name) == 0;
}

// Symbols of a name become patterns, also in the indices of paths.
void PatternizeIndex(tAsynt* actuals, const char* name) {
  walk_places(actuals, [name](tAsynt* place) {
    tAsynt t = *place;
    switch (Asynt_Kind(t)) {
      case kXPattern:
      case kPosConv: return false;
      case kSymbol:
        if (is_named(t, name))
          *place = mXPattern(t, blank_empty);
        else if (tAsynt* components = components_of(Symbol_SymInfo(t)))
          walk_component_arguments(*components, [name](tAsynt* args) { PatternizeIndex(args, name); });
        return false;
      default: return true;
    }
  });
}

}  // namespace

void begin_sets() { forget_sets(); }

void forget_sets() {
  index_lists.clear();
  current_indices_pat = nullptr;
}

bool is_index_list(tAsynt list) { return index_lists.count(list) != 0; }

void MarkSetMembers(tAsynt* t) { walk_places(t, mark_place); }

void InsertIndices(tAsynt* t) {
  index_lists.insert(current_indices);
  current_indices_pat = patternized(current_indices);
  PlaceWalk<InsertVisit> walk{{nullptr}};
  walk.visit.walk = &walk;
  walk.walk(t);
}

void AdjustTopLHS(tAsynt* t, Chain* format_list) {
  std::vector<DefinedMember> members;
  {
    PlaceWalk<AdjustVisit> walk{{nullptr, &members}};
    walk.visit.walk = &walk;
    walk.walk(t);
  }
  if (disable_Format || !format_list) return;
  for (const DefinedMember& m : members)
    append(format_list, m.args ? function_format(m.symbol, m.args) : variable_format(m.symbol));
}

void NukeRightPatterns(Chain format_list) {
  for (tAsynt l = format_list.first; l; l = Expression1_Expressions(l))
    NukePatterns(&Binary_RHS(Expression1_Expression(l)));
}

void PatternizeIndices(tAsynt* actuals, tAsynt indices) {
  for (; Asynt_Kind(indices) == kExpression1; indices = Expression1_Expressions(indices)) {
    tAsynt index = Expression1_Expression(indices);
    if (Asynt_Kind(index) == kSymbol && Asynt_IsType(Symbol_SymInfo(index), kNamedSymbol))
      PatternizeIndex(actuals, NamedSymbol_Name(Symbol_SymInfo(index)));
  }
}

tAsynt patternized(tAsynt indices) {
  Chain chain;
  for (; Asynt_Kind(indices) == kExpression1; indices = Expression1_Expressions(indices)) {
    if (Asynt_Kind(Expression1_Expression(indices)) != kSymbol) routine_failed("Patternize");
    append(&chain, mXPattern(CopyAsynt(Expression1_Expression(indices)), blank_empty));
  }
  tAsynt list = finish(chain);
  index_lists.insert(list);
  return list;
}

tAsynt AddToIndexString(tAsynt current, tAsynt inst, tAsynt indices) {
  const std::string name = std::string(NamedSymbol_Name(Symbol_SymInfo(Object_Name(inst)))) + "[";
  tAsynt part =
      StringJoin(list_of(host_text(Asynt_KeepText(name)), StringJoin(MkIndicesExps(indices)), host_text("]")));
  return current ? StringJoin(list_of(current, host_text("`"), part)) : part;
}

}  // namespace oz::unrolling
