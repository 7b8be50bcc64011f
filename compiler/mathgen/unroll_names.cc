// Names of an instance: relative names become absolute, equal names share one node, indices move out of paths.

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "ozt.h"
#include "unparse.h"
#include "unroll_parts.h"

namespace oz::unrolling {

// A null in front of a symbol says that it stands in a host auxiliary; a Context stands for the log of a part.
struct SymbolLog {
  std::vector<tAsynt> items{};
  std::vector<tAsynt*> indexed{};  // places of names with indices in their paths, or of calls with such heads
};

namespace {

std::deque<SymbolLog> logs;                     // of the top-level instance at work and its parts
std::unordered_map<tAsynt, SymbolLog*> log_of;  // of the parts, by their contexts

bool has_indexed_path(tAsynt info);

bool is_indexed(tAsynt component) {
  if (Asynt_Kind(component) == kSimpleFFE) return true;
  return Asynt_Kind(component) == kSymbol && has_indexed_path(Symbol_SymInfo(component));
}

bool has_indexed_path(tAsynt info) {
  tAsynt* components = components_of(info);
  for (tAsynt l = components ? *components : nullptr; Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l))
    if (is_indexed(Expression1_Expression(l))) return true;
  return false;
}

// ---- absolute names

// Formal parameters and names without a path belong to one function each: they are nobody else's.
bool is_function_local(tAsynt info) {
  if (Asynt_Kind(info) != kAbsoluteSymbol) return false;
  tAsynt components = AbsoluteSymbol_Components(info);
  if (Asynt_Kind(components) != kExpression1) return true;
  tAsynt first = Expression1_Expression(components);
  return Asynt_Kind(first) == kSymbol && Asynt_Kind(Symbol_SymInfo(first)) == kSimpleSymbol &&
         std::string_view(NamedSymbol_Name(Symbol_SymInfo(first))) == "P$";
}

// One walk that makes names absolute. The symbols of one name that share their information go on sharing it, but not
// inside of host auxiliaries, where each keeps its own.
struct AbsolutizeVisit {
  tAsynt context;
  SymbolLog* log;
  Replacements* made;
  PlaceWalk<AbsolutizeVisit>* walk;
  int in_auxiliary = 0;

  void note(tAsynt item) const {
    if (!log) return;
    if (in_auxiliary && Asynt_Kind(item) == kSymbol) log->items.push_back(nullptr);
    log->items.push_back(item);
  }

  tAsynt absolute(tAsynt info, tAsynt path) const {
    return mAbsoluteSymbol(SymInfo_Type(info), SymInfo_Pos(info), NamedSymbol_Name(info), mExpression1(context, path));
  }

  tAsynt absolute_simple(tAsynt info) const {
    if (in_auxiliary) return absolute(info, mExpression0());
    if (tAsynt known = made->of(info)) return known;
    return made->note(info, absolute(info, mExpression0()));
  }

  // The names in a path are those of other objects and stay; the arguments of its indexed components are walked.
  void path(tAsynt components) {
    for (tAsynt l = components; Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l)) {
      tAsynt c = Expression1_Expression(l);
      if (Asynt_Kind(c) == kSimpleFFE) c = SimpleFFE_Name(c);
      if (Asynt_Kind(c) == kSymbol) note(c);
    }
    walk_component_arguments(components, [this](tAsynt* args) { walk->walk(args); });
  }

  void note_place(tAsynt* place) const {
    if (log) log->indexed.push_back(place);
  }

  // A call; the head of one with indices in its path is no place of its own.
  bool call(tAsynt* place) {
    tAsynt t = *place;
    tAsynt head = SimpleFFE_Name(t);
    if (Asynt_Kind(head) != kSymbol || !has_indexed_path(Symbol_SymInfo(head))) return true;
    note_place(place);
    if (!walk->entered.enter(t)) return false;
    walk->walk(&FullFormExpression_Args(t));
    if (walk->entered.enter(head)) symbol(head);
    return false;
  }

  void symbol(tAsynt t) {
    tAsynt info = Symbol_SymInfo(t);
    bool is_ours = true;
    switch (Asynt_Kind(info)) {
      case kSimpleSymbol: Symbol_SymInfo(t) = absolute_simple(info); break;
      case kFullSymbol:
        path(FullSymbol_Components(info));
        Symbol_SymInfo(t) = absolute(info, FullSymbol_Components(info));
        break;
      case kAbsoluteSymbol:
        path(AbsoluteSymbol_Components(info));
        is_ours = is_function_local(info);
        break;
      case kRelativeNest:
        Symbol_SymInfo(t) = mAbsoluteNest(SymInfo_Type(info), SymInfo_Pos(info), RelativeNest_FullFormExpression(info));
        walk->walk(&AbsoluteNest_FullFormExpression(Symbol_SymInfo(t)));
        break;
      default: break;
    }
    note(t);
    if (is_ours) type(SymInfo_Type(Symbol_SymInfo(t)));
  }

  // The sizes in the types of its names are things of the instance too.
  void type(tAsynt t) {
    if (Asynt_IsType(t, kArrayType))
      walk->walk(&ArrayType_Dimensions(t));
    else if (Asynt_IsType(t, kMultiType))
      for (tAsynt l = MultiType_Types(t); Asynt_Kind(l) == kType1; l = Type1_Types(l)) type(Type1_Type(l));
  }

  bool operator()(tAsynt* place) {
    tAsynt t = *place;
    switch (Asynt_Kind(t)) {
      case kContext: note(t); return false;
      case kPosConv: return false;
      case kThis:
        *place = mSymbol(mAbsoluteSymbol(mNoType(), NoPosition, "this", mExpression1(context, mExpression0())));
        note(*place);
        return false;
      case kSymbol:
        if (has_indexed_path(Symbol_SymInfo(t))) note_place(place);
        if (walk->entered.enter(t)) symbol(t);
        return false;
      case kSimpleFFE: return call(place);
      case kAlgAuxiliary:
        in_auxiliary++;
        walk->walk(&AlgAuxiliary_Expression(t));
        in_auxiliary--;
        return false;
      default: return true;
    }
  }
};

// ---- sharing

// The names of an instance by their printed text. The node of the last typed occurrence stands for all, or that of the
// first occurrence if none has a type. While the names are being shared, the mark of a symbol information is the number
// of its entry, kLocal for one that is left alone.
class NameSharing {
 public:
  explicit NameSharing(SymbolLog* log) {
    CollectSymis(log);
    DoShareSymis(log);
  }
  ~NameSharing() {
    for (tAsynt info : infos_) info->yyMark = 0;
  }
  NameSharing(const NameSharing&) = delete;
  NameSharing& operator=(const NameSharing&) = delete;

 private:
  static constexpr uint32_t kLocal = 0xffffffff;

  // The number of the entry of an information met for the first time.
  uint32_t enter(tAsynt info) {
    if (is_function_local(info)) return kLocal;
    const std::string_view text = text_of(info);
    const auto place = by_text_.find(text);
    if (place == by_text_.end()) {
      entries_.push_back(info);
      const uint32_t number = static_cast<uint32_t>(entries_.size());
      by_text_.emplace(texts_.emplace_back(text), number);
      return number;
    }
    if (Asynt_Kind(SymInfo_Type(info)) != kNoType) entries_[place->second - 1] = info;
    return place->second;
  }

  // The printed text of an information, good until the next call. Most are names of one context.
  std::string_view text_of(tAsynt info) {
    if (Asynt_Kind(info) != kAbsoluteSymbol || !NamedSymbol_Name(info)) return unparse_string(info);
    tAsynt components = AbsoluteSymbol_Components(info);
    if (Asynt_Kind(components) != kExpression1) return unparse_string(info);
    tAsynt context = Expression1_Expression(components);
    if (Asynt_Kind(context) != kSymbol || Asynt_Kind(Expression1_Expressions(components)) != kExpression0)
      return unparse_string(info);
    if (context != context_) {
      context_ = context;
      text_ = unparse_string(context);
      context_size_ = (text_ += '`').size();
    }
    text_.resize(context_size_);
    return text_ += NamedSymbol_Name(info);
  }

  void CollectSymis(const SymbolLog* log) {
    for (tAsynt item : log->items) {
      if (!item) continue;
      if (Asynt_Kind(item) == kContext) {
        const auto part = log_of.find(item);
        if (part != log_of.end()) CollectSymis(part->second);
        continue;
      }
      tAsynt info = Symbol_SymInfo(item);
      if (info->yyMark != 0) continue;
      info->yyMark = enter(info);
      infos_.push_back(info);
    }
  }

  // Host auxiliaries are left alone.
  void DoShareSymis(const SymbolLog* log) const {
    bool skip = false;
    for (tAsynt item : log->items) {
      if (!item || skip) {
        skip = !item;
        continue;
      }
      if (Asynt_Kind(item) == kContext) {
        const auto part = log_of.find(item);
        if (part != log_of.end()) DoShareSymis(part->second);
        continue;
      }
      const uint32_t number = Symbol_SymInfo(item)->yyMark;
      if (number != kLocal) Symbol_SymInfo(item) = entries_[number - 1];
    }
  }

  std::vector<tAsynt> entries_{};
  std::vector<tAsynt> infos_{};
  std::deque<std::string> texts_{};
  std::unordered_map<std::string_view, uint32_t> by_text_{};
  tAsynt context_ = nullptr;  // whose text text_ begins with
  std::string text_{};
  size_t context_size_ = 0;
};

// ---- paths with indices

struct Stripped {
  tAsynt info;     // the name without indices in its path
  tAsynt indices;  // those indices, outermost first
};

std::unordered_map<tAsynt, Stripped> stripped;

const Stripped& strip(tAsynt info);

// A component without its indices, which go to the chain. It can be a path itself: r[i]`t is one in r[i]`t`x.
tAsynt bare_component(tAsynt c, Chain* indices) {
  if (Asynt_Kind(c) == kSimpleFFE) {
    tAsynt head = bare_component(SimpleFFE_Name(c), indices);
    Unsetify(&FullFormExpression_Args(c));
    *indices = join(*indices, chain_of(CopyAsynt(FullFormExpression_Args(c))));
    return head;
  }
  if (!is_indexed(c)) return c;
  const Stripped& s = strip(Symbol_SymInfo(c));
  *indices = join(*indices, chain_of(CopyAsynt(s.indices)));
  return mSymbol(s.info);
}

// The components without indices; those go to the chain.
tAsynt RemoveAndCollectIndices(tAsynt components, Chain* indices) {
  Chain bare;
  for (; Asynt_Kind(components) == kExpression1; components = Expression1_Expressions(components))
    append(&bare, bare_component(Expression1_Expression(components), indices));
  return finish(bare);
}

// A name and its indices; the same for every symbol on the same information.
const Stripped& strip(tAsynt info) {
  Stripped& s = stripped[info];
  if (s.info) return s;
  Chain indices;
  tAsynt components = RemoveAndCollectIndices(*components_of(info), &indices);
  const auto make = Asynt_Kind(info) == kFullSymbol ? mFullSymbol : mAbsoluteSymbol;
  s.info = make(SymInfo_Type(info), SymInfo_Pos(info), NamedSymbol_Name(info), components);
  s.indices = finish(indices);
  return s;
}

// Takes the indices out of a symbol's path; null if there are none. A path that is still relative, as one among the
// globals can be, keeps them.
tAsynt taken_indices(tAsynt symbol) {
  if (Asynt_Kind(symbol) != kSymbol || Asynt_Kind(Symbol_SymInfo(symbol)) != kAbsoluteSymbol) return nullptr;
  if (!has_indexed_path(Symbol_SymInfo(symbol))) return nullptr;
  const Stripped& s = strip(Symbol_SymInfo(symbol));
  Symbol_SymInfo(symbol) = s.info;
  return CopyAsynt(s.indices);
}

// A call or a member whose head has indices in its path. The set's own indices come ahead of those of the path, in one
// list; the arguments of a call stay behind them.
void unsetify_call(tAsynt* place, tAsynt indices) {
  tAsynt t = *place;
  tAsynt args = FullFormExpression_Args(t);
  if (is_index_list(args))
    FullFormExpression_Args(t) = AppendExps(args, indices);
  else
    *place = mComplexFFE(args, mSimpleFFE(indices, SimpleFFE_Name(t)));
}

bool unsetify_place(tAsynt* place) {
  tAsynt t = *place;
  switch (Asynt_Kind(t)) {
    case kPosConv: return false;
    case kSymbol: {
      tAsynt indices = taken_indices(t);
      if (!indices) return Asynt_Kind(Symbol_SymInfo(t)) == kAbsoluteNest;
      *place = mSimpleFFE(indices, t);
      return false;
    }
    case kSimpleFFE:
      if (tAsynt indices = taken_indices(SimpleFFE_Name(t))) {
        walk_places(&FullFormExpression_Args(t), unsetify_place);
        unsetify_call(place, indices);
        return false;
      }
      return true;
    default: return true;
  }
}

}  // namespace

void begin_names() { forget_names(); }

void forget_names() {
  logs.clear();
  log_of.clear();
  stripped.clear();
}

SymbolLog* new_symbol_log() { return &logs.emplace_back(); }

void keep_symbol_log(tAsynt context, SymbolLog* log) { log_of[context] = log; }

void Absolutize(tAsynt* t, tAsynt context, SymbolLog* log) {
  Replacements made;
  PlaceWalk<AbsolutizeVisit> walk{{context, log, &made, nullptr}};
  walk.visit.walk = &walk;
  walk.walk(t);
}

void ShareSymis(SymbolLog* log) { const NameSharing sharing(log); }

void Unsetify(const SymbolLog* log) {
  for (tAsynt* place : log->indexed) unsetify_place(place);
}

void close_symbol_logs() {
  for (const SymbolLog& log : logs) Unsetify(&log);
  logs.clear();
  log_of.clear();
}

void Unsetify(tAsynt* t) { walk_places(t, unsetify_place); }

}  // namespace oz::unrolling
