// Names of an instance: relative names become absolute, equal names share one node, indices move out of paths.

#include <string>
#include <string_view>
#include <unordered_map>

#include "ozt.h"
#include "unparse.h"
#include "unroll_parts.h"

namespace oz::unrolling {

namespace {

// ---- absolute names

// One walk that makes names absolute. The symbols of one name that share their information go on sharing it, but not
// inside of host auxiliaries, where each keeps its own.
struct Absolutizer {
  tAsynt context;
  std::unordered_map<tAsynt, tAsynt> made{};
  int in_auxiliary = 0;

  tAsynt absolute(tAsynt info, tAsynt path) const {
    return mAbsoluteSymbol(SymInfo_Type(info), SymInfo_Pos(info), NamedSymbol_Name(info), mExpression1(context, path));
  }

  tAsynt absolute_simple(tAsynt info) {
    if (in_auxiliary) return absolute(info, mExpression0());
    tAsynt& known = made[info];
    if (!known) known = absolute(info, mExpression0());
    return known;
  }
};

struct AbsolutizeVisit {
  Absolutizer* a;
  PlaceWalk<AbsolutizeVisit>* walk;

  void path_arguments(tAsynt components) {
    walk_component_arguments(components, [this](tAsynt* args) { walk->walk(args); });
  }

  void symbol(tAsynt t) {
    tAsynt info = Symbol_SymInfo(t);
    switch (Asynt_Kind(info)) {
      case kSimpleSymbol: Symbol_SymInfo(t) = a->absolute_simple(info); break;
      case kFullSymbol:
        path_arguments(FullSymbol_Components(info));
        Symbol_SymInfo(t) = a->absolute(info, FullSymbol_Components(info));
        break;
      case kAbsoluteSymbol: path_arguments(AbsoluteSymbol_Components(info)); break;
      case kRelativeNest:
        Symbol_SymInfo(t) = mAbsoluteNest(SymInfo_Type(info), SymInfo_Pos(info), RelativeNest_FullFormExpression(info));
        walk->walk(&AbsoluteNest_FullFormExpression(Symbol_SymInfo(t)));
        break;
      default: break;
    }
    type(SymInfo_Type(Symbol_SymInfo(t)));
  }

  // The sizes in types name things of the instance too.
  void type(tAsynt t) {
    if (Asynt_IsType(t, kArrayType))
      walk->walk(&ArrayType_Dimensions(t));
    else if (Asynt_IsType(t, kMultiType))
      for (tAsynt l = MultiType_Types(t); Asynt_Kind(l) == kType1; l = Type1_Types(l)) type(Type1_Type(l));
  }

  bool operator()(tAsynt* place) {
    tAsynt t = *place;
    switch (Asynt_Kind(t)) {
      case kContext:
      case kPosConv: return false;
      case kThis:
        *place = mSymbol(mAbsoluteSymbol(mNoType(), NoPosition, "this", mExpression1(a->context, mExpression0())));
        return false;
      case kSymbol:
        if (t->yyMark == 0) {
          t->yyMark = 1;
          walk->entered.push_back(t);
          symbol(t);
        }
        return false;
      case kAlgAuxiliary:
        a->in_auxiliary++;
        walk->walk(&AlgAuxiliary_Expression(t));
        a->in_auxiliary--;
        return false;
      default: return true;
    }
  }
};

// ---- sharing

// The names of an instance by their printed text. The node of the last typed occurrence stands for all, or that of the
// first occurrence if none has a type.
struct Entry {
  tAsynt node;
  bool typed;
};

struct SharedNames {
  std::unordered_map<std::string, Entry> by_text{};
  std::unordered_map<tAsynt, Entry*> by_node{};
  std::vector<tAsynt> symbols{};  // the Symbols whose information is to be replaced
};

// Formal parameters and names without a path belong to one function each: they are nobody else's.
bool is_function_local(tAsynt info) {
  if (Asynt_Kind(info) != kAbsoluteSymbol) return false;
  tAsynt components = AbsoluteSymbol_Components(info);
  if (Asynt_Kind(components) != kExpression1) return true;
  tAsynt first = Expression1_Expression(components);
  return Asynt_Kind(first) == kSymbol && Asynt_Kind(Symbol_SymInfo(first)) == kSimpleSymbol &&
         std::string_view(NamedSymbol_Name(Symbol_SymInfo(first))) == "P$";
}

void collect_name(SharedNames* names, tAsynt info) {
  Entry*& known = names->by_node[info];
  if (known) return;
  const bool typed = Asynt_Kind(SymInfo_Type(info)) != kNoType;
  const auto [place, fresh] = names->by_text.try_emplace(unparse_string(info), Entry{info, typed});
  known = &place->second;
  if (!fresh && typed) *known = Entry{info, true};
}

struct CollectVisit {
  SharedNames* names;
  PlaceWalk<CollectVisit>* walk;
  int in_auxiliary = 0;

  bool operator()(tAsynt* place) {
    tAsynt t = *place;
    switch (Asynt_Kind(t)) {
      case kPosConv: return false;
      case kSymbol: {
        tAsynt info = Symbol_SymInfo(t);
        if (is_function_local(info)) return true;
        if (t->yyMark != 0) return false;
        collect_name(names, info);
        if (!in_auxiliary) names->symbols.push_back(t);
        return true;
      }
      case kAlgAuxiliary:
        in_auxiliary++;
        walk->walk(&AlgAuxiliary_Expression(t));
        in_auxiliary--;
        return false;
      default: return true;
    }
  }
};

// ---- paths with indices

struct Stripped {
  tAsynt info;     // the name without indices in its path
  tAsynt indices;  // those indices, outermost first; null if there are none
};

std::unordered_map<tAsynt, Stripped> stripped;

// The components with each indexed one replaced by its head; the arguments go to the chain.
tAsynt RemoveAndCollectIndices(tAsynt components, Chain* indices) {
  Chain bare;
  for (; Asynt_Kind(components) == kExpression1; components = Expression1_Expressions(components)) {
    tAsynt c = Expression1_Expression(components);
    if (Asynt_Kind(c) == kSimpleFFE) {
      *indices = join(*indices, chain_of(CopyAsynt(FullFormExpression_Args(c))));
      c = SimpleFFE_Name(c);
    }
    append(&bare, c);
  }
  return finish(bare);
}

bool has_indexed_component(tAsynt components) {
  for (; Asynt_Kind(components) == kExpression1; components = Expression1_Expressions(components))
    if (Asynt_Kind(Expression1_Expression(components)) == kSimpleFFE) return true;
  return false;
}

// A name and its indices; the same for every symbol on the same information.
const Stripped& strip(tAsynt info) {
  Stripped& s = stripped[info];
  if (s.info) return s;
  s.info = info;
  if (Asynt_Kind(info) != kAbsoluteSymbol || !has_indexed_component(AbsoluteSymbol_Components(info))) return s;
  Chain indices;
  tAsynt components = RemoveAndCollectIndices(AbsoluteSymbol_Components(info), &indices);
  s.info = mAbsoluteSymbol(SymInfo_Type(info), SymInfo_Pos(info), NamedSymbol_Name(info), components);
  s.indices = finish(indices);
  return s;
}

// The path's indices behind those of the sets around, in one list; null if the symbol has none of its own.
tAsynt taken_indices(tAsynt symbol) {
  if (Asynt_Kind(symbol) != kSymbol) return nullptr;
  const Stripped& s = strip(Symbol_SymInfo(symbol));
  if (!s.indices) return nullptr;
  Symbol_SymInfo(symbol) = s.info;
  return CopyAsynt(s.indices);
}

// A member's own indices come ahead of those in the path behind them.
bool merge_member_indices(tAsynt call) {
  if (!is_index_list(FullFormExpression_Args(call))) return false;
  tAsynt indices = taken_indices(SimpleFFE_Name(call));
  if (indices) FullFormExpression_Args(call) = AppendExps(FullFormExpression_Args(call), indices);
  return true;
}

bool unsetify_place(tAsynt* place) {
  tAsynt t = *place;
  switch (Asynt_Kind(t)) {
    case kPosConv:
    case kAbsoluteNest: return Asynt_Kind(t) == kAbsoluteNest;
    case kSymbol: {
      tAsynt indices = taken_indices(t);
      if (!indices) return Asynt_Kind(Symbol_SymInfo(t)) == kAbsoluteNest;
      *place = mSimpleFFE(indices, t);
      return false;
    }
    case kSimpleFFE: {
      if (merge_member_indices(t)) return false;
      tAsynt indices = taken_indices(SimpleFFE_Name(t));
      if (!indices) return true;
      tAsynt args = FullFormExpression_Args(t);
      *place = mComplexFFE(args, mSimpleFFE(indices, SimpleFFE_Name(t)));
      walk_places(&FullFormExpression_Args(*place), unsetify_place);
      return false;
    }
    default: return true;
  }
}

}  // namespace

void begin_names() { stripped.clear(); }

void Absolutize(tAsynt* t, tAsynt context) {
  Absolutizer a{context};
  PlaceWalk<AbsolutizeVisit> walk{{&a, nullptr}};
  walk.visit.walk = &walk;
  walk.walk(t);
}

void ShareSymis(tAsynt* t) {
  SharedNames names;
  {
    PlaceWalk<CollectVisit> walk{{&names, nullptr}};
    walk.visit.walk = &walk;
    walk.walk(t);
  }
  for (tAsynt symbol : names.symbols) {
    const Entry* entry = names.by_node[Symbol_SymInfo(symbol)];
    Symbol_SymInfo(symbol) = entry->node;
  }
}

void Unsetify(tAsynt* t) { walk_places(t, unsetify_place); }

}  // namespace oz::unrolling
