// Inheritance: every use of a class gets its own copy of the class's definitions, with the parameters filled in.
//
// Parameters are substituted with two values. On a right side the actual value stands for a formal; on a left side it
// is the same value with the indices of the enclosing sets turned into patterns, as left sides need them.

#include <algorithm>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "index.h"
#include "nesting.h"
#include "oz.h"
#include "ozerrors.h"
#include "ozt.h"
#include "unparse.h"
#include "unroll_parts.h"

namespace oz::unrolling {

namespace {

int nr_of_classes = 0;
int depth = 0;           // of inheritance, over parts too
bool left_this = false;  // a class was expanded with too few or too many actuals

// The context that `this` becomes in the classes whose expressions an Inherit at work has asked for; made at the first
// use. The classes of one such group share the node.
struct ThisGroup {
  tAsynt context = nullptr;  // of the instance that the group's definitions are for
  tAsynt node = nullptr;
};
ThisGroup* this_group = nullptr;

// For the direct parents of an instance that is current_instance_context itself.
tAsynt this_context() {
  if (!this_group || this_group->context != current_instance_context) return current_instance_context;
  if (!this_group->node) this_group->node = CopyAsynt(current_instance_context);
  return this_group->node;
}

string printed(tAsynt t) { return Asynt_KeepText(unparse_string(t)); }

// ---- formals and actuals

// What stands for one formal.
struct Value {
  tAsynt formal;  // what its definition defines: the formal, unless an earlier one has its name
  tAsynt lhs;
  tAsynt rhs;
};

// Of two formals with one name the last is substituted first and leaves nothing for the other.
struct Values {
  std::vector<Value> list{};
  std::unordered_map<std::string_view, size_t> by_name{};
};

bool starts_at_this(tAsynt components) {
  return Asynt_Kind(components) == kExpression1 && Asynt_Kind(Expression1_Expression(components)) == kThis;
}

// `this` is the instance; a path from it is a path from the instance's own names.
bool current_place(tAsynt* place, tAsynt context) {
  switch (Asynt_Kind(*place)) {
    case kContext:
    case kPosConv: return false;
    case kThis: *place = context; return false;
    case kFullSymbol:
    case kAbsoluteSymbol: {
      tAsynt* components = components_of(*place);
      if (starts_at_this(*components)) *components = Expression1_Expressions(*components);
      return true;
    }
    default: return true;
  }
}

// Puts values in the places of formals, and a context in the place of `this` unless it is null, in one walk. `left`
// tells which of the two values counts.
class Substitution {
 public:
  Substitution(const Values& values, tAsynt context) : values_(values), context_(context) {}
  Substitution(const Substitution&) = delete;
  Substitution& operator=(const Substitution&) = delete;

  void FormalSubst(tAsynt* place, bool left) {
    for (;;) {
      tAsynt t = *place;
      if (!t) return;
      switch (Asynt_Kind(t)) {
        case kContext:
        case kPosConv: return;
        case kXPattern:  // a pattern variable hides a formal of its name
          if (context_) This2Current(place, context_);
          return;
        case kThis:
          if (context_) *place = context_;
          return;
        case kSymbol:
          if (const Value* v = find(t))
            *place = copy(v, left);
          else if (entered_.enter(t))
            substitute_symbol(t, left);
          return;
        case kXSetDelayed:
        case kXSet:
        case kXRule:
        case kXRuleDelayed:
        case kXUpSet:
        case kXUpSetDelayed:
          if (!entered_.enter(t)) return;
          FormalSubst(&Binary_LHS(t), true);
          place = &Binary_RHS(t);
          continue;
        case kSetOnce: {
          // once f := e is f := (f = e): what keeps the value is all of it a right side.
          if (!entered_.enter(t)) return;
          FormalSubst(&Binary_LHS(t), true);
          place = &Binary_RHS(t);
          if (Asynt_Kind(*place) != kXSet || !entered_.enter(*place)) continue;
          FormalSubst(&Binary_LHS(*place), left);
          place = &Binary_RHS(*place);
          continue;
        }
        case kSimpleFFE:
          if (!entered_.enter(t)) return;
          FormalSubst(&FullFormExpression_Args(t), left);
          FormalSubst(&SimpleFFE_Name(t), left);
          // The two kinds of call have the same fields.
          if (Asynt_Kind(SimpleFFE_Name(t)) != kSymbol) t->yyKind = kComplexFFE;
          return;
        default: break;
      }
      const TreeShape& k = Asynt_Shapes[t->yyKind];
      if (k.child_count == 0 || !entered_.enter(t)) return;
      for (int i = 0; i + 1 < k.child_count; i++) FormalSubst(&tree_raw_slot<tAsynt>(t, k.children[i]), left);
      place = &tree_raw_slot<tAsynt>(t, k.children[k.child_count - 1]);
    }
  }

 private:
  const Value* find(tAsynt symbol) const {
    if (values_.list.empty() || Asynt_Kind(symbol) != kSymbol) return nullptr;
    if (Asynt_Kind(Symbol_SymInfo(symbol)) != kSimpleSymbol) return nullptr;
    const auto found = values_.by_name.find(NamedSymbol_Name(Symbol_SymInfo(symbol)));
    return found == values_.by_name.end() ? nullptr : &values_.list[found->second];
  }

  static tAsynt copy(const Value* v, bool left) { return CopyAsynt(left ? v->lhs : v->rhs); }

  static tAsynt call(tAsynt args, tAsynt head) {
    return Asynt_Kind(head) == kSymbol ? mSimpleFFE(args, head) : mComplexFFE(args, head);
  }

  // A path from a formal, or from a member of it if it is a set, starts at the actual value, and is known from the
  // root.
  void substitute_path(tAsynt symbol, bool left) {
    tAsynt path = Symbol_SymInfo(symbol);
    tAsynt components = FullSymbol_Components(path);
    if (Asynt_Kind(components) != kExpression1) return;
    tAsynt first = Expression1_Expression(components);
    const bool is_member = Asynt_Kind(first) == kSimpleFFE;
    const Value* v = find(is_member ? SimpleFFE_Name(first) : first);
    if (!v) return;
    tAsynt value = copy(v, left);
    if (is_member) value = call(FullFormExpression_Args(first), value);
    tAsynt changed = mExpression1(value, Expression1_Expressions(components));
    Symbol_SymInfo(symbol) = mAbsoluteSymbol(SymInfo_Type(path), SymInfo_Pos(path), NamedSymbol_Name(path), changed);
  }

  void substitute_type(tAsynt type, bool left) {
    if (Asynt_IsType(type, kArrayType) && entered_.enter(type)) FormalSubst(&ArrayType_Dimensions(type), left);
    if (!Asynt_IsType(type, kMultiType) || !entered_.enter(type)) return;
    for (tAsynt l = MultiType_Types(type); Asynt_Kind(l) == kType1; l = Type1_Types(l))
      substitute_type(Type1_Type(l), left);
  }

  // Below a symbol: its path, the element that it names, the sizes in its type.
  void substitute_symbol(tAsynt symbol, bool left) {
    tAsynt info = Symbol_SymInfo(symbol);
    if (tAsynt* components = components_of(info)) {
      if (context_ && starts_at_this(*components)) *components = Expression1_Expressions(*components);
      walk_component_arguments(*components, [&](tAsynt* args) { FormalSubst(args, left); });
      if (Asynt_Kind(info) == kFullSymbol) substitute_path(symbol, left);
    } else if (Asynt_Kind(info) == kRelativeNest && entered_.enter(info)) {
      FormalSubst(&RelativeNest_FullFormExpression(info), left);
    }
    substitute_type(SymInfo_Type(info), left);
  }

  const Values& values_;
  tAsynt context_;  // what `this` becomes
  Entered entered_{};
};

// How deep trees nest. Cells of a list lie side by side.
class Height {
 public:
  int of(tAsynt t) {
    if (!t) return 0;
    if (t->yyMark != 0) return static_cast<int>(t->yyMark);
    const tAsynt start = t;
    int below = 0;
    while (entered_.enter(t)) {
      const TreeShape& k = Asynt_Shapes[t->yyKind];
      if (k.child_count == 0) break;
      for (int i = 0; i + 1 < k.child_count; i++) below = std::max(below, of(tree_raw_slot<tAsynt>(t, k.children[i])));
      const tAsynt last = tree_raw_slot<tAsynt>(t, k.children[k.child_count - 1]);
      if (Asynt_Kind(t) == kExpression1 && last && Asynt_Kind(last) == kExpression1) {
        t = last;
        continue;
      }
      below = std::max(below, of(last));
      break;
    }
    const int height = below + (Asynt_Kind(start) != kExpression1);
    start->yyMark = static_cast<uint32_t>(std::max(height, 1));
    return height;
  }

 private:
  Entered entered_{};
};

// A symbol is a few levels by itself.
constexpr int kMaxValueHeight = kMaxNesting + 10;

// From class to class a value can grow; what the passes recurse over stays bounded.
void check_height(tAsynt value) {
  if (Height().of(value) > kMaxValueHeight)
    die_msg("Parameters are nested too deeply (more than %d levels, in '%s')", kMaxNesting,
            unparse_string(current_instance_context));
}

// The parameters as far as the three lists go together. The formals are substituted from the last to the first, so that
// a formal's value can contain earlier formals, which are substituted in it in turn.
Values make_values(const Actuals& actuals, bool* complete) {
  Values values;
  tAsynt f = actuals.formals;
  tAsynt l = actuals.lhs;
  tAsynt r = actuals.rhs;
  while (Asynt_Kind(f) == kSymbol1 && Asynt_Kind(l) == kExpression1 && Asynt_Kind(r) == kExpression1) {
    const char* name = NamedSymbol_Name(Symbol_SymInfo(Symbol1_Symbol(f)));
    Value v{CopyAsynt(Symbol1_Symbol(f)), CopyAsynt(Expression1_Expression(l)), CopyAsynt(Expression1_Expression(r))};
    if (!values.list.empty()) {
      Substitution(values, nullptr).FormalSubst(&v.formal, true);
      Substitution(values, nullptr).FormalSubst(&v.lhs, true);
      Substitution(values, nullptr).FormalSubst(&v.rhs, false);
    }
    check_height(v.lhs);
    check_height(v.rhs);
    values.by_name[name] = values.list.size();
    values.list.push_back(v);
    f = Symbol1_Symbols(f);
    l = Expression1_Expressions(l);
    r = Expression1_Expressions(r);
  }
  *complete = Asynt_Kind(f) == kSymbol0 && Asynt_Kind(l) == kExpression0 && Asynt_Kind(r) == kExpression0;
  return values;
}

// Fills a class's parameters into its definitions and puts the definitions of the parameters in front.
void Parametrize(Chain* e, const Actuals& actuals) {
  bool complete;
  const Values values = make_values(actuals, &complete);
  if (!complete) left_this = true;
  Substitution(values, complete ? this_context() : nullptr).FormalSubst(&e->first, false);
  Chain definitions;
  for (const Value& v : values.list) append(&definitions, definition(v.formal, v.rhs));
  *e = join(definitions, *e);
}

// ---- the arguments of a parent

[[noreturn]] void this_at_global_level() {
  die_msg(
      "'this' may not be used at the global level!\n                      (probably occured in the header of '%s')\n",
      unparse_string(current_instance_context));
}

tAsynt container_or_die() {
  tAsynt container = ContainerContext(current_instance_context);
  if (!container) this_at_global_level();
  return container;
}

// In the header of an instance `this` is the object around it.
bool container_place(tAsynt* place) {
  switch (Asynt_Kind(*place)) {
    case kContext: return false;
    case kThis: *place = container_or_die(); return false;
    case kSymbol: {
      tAsynt info = Symbol_SymInfo(*place);
      if (Asynt_Kind(info) == kAbsoluteSymbol && starts_at_this(AbsoluteSymbol_Components(info)))
        die_msg("AbsoluteSymbol containing this???");
      if (Asynt_Kind(info) != kFullSymbol || !starts_at_this(FullSymbol_Components(info))) return true;
      tAsynt rest = Expression1_Expressions(FullSymbol_Components(info));
      Symbol_SymInfo(*place) = mAbsoluteSymbol(SymInfo_Type(info), SymInfo_Pos(info), NamedSymbol_Name(info),
                                               mExpression1(container_or_die(), rest));
      return false;
    }
    default: return true;
  }
}

void This2Container(tAsynt* t) { walk_places(t, container_place); }

// Substitutes the formals of the class that names the parent; what is left is known from the object around.
void ParametrizeArglist(tAsynt* args, tAsynt formals, tAsynt actuals) {
  bool complete;
  const Values values = make_values({formals, actuals, actuals}, &complete);
  Substitution(values, nullptr).FormalSubst(args, false);
  if (!complete) return;
  This2Container(args);
  if (tAsynt container = ContainerContext(current_instance_context)) Absolutize(args, container);
}

// ---- classes

void trace_class(tAsynt c, const Actuals& actuals) {
  std::string text = std::string("class ") + unparse_string(Object_Name(c));
  trace(text.c_str());
  text.clear();
  for (tAsynt l = actuals.formals; Asynt_Kind(l) == kSymbol1; l = Symbol1_Symbols(l))
    text += std::string(text.empty() ? "" : ", ") + unparse_string(Symbol1_Symbol(l));
  std::string values;
  for (tAsynt l = actuals.rhs; Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l))
    values += std::string(values.empty() ? "" : ", ") + unparse_string(Expression1_Expression(l));
  trace((text + " -> ").c_str());
  trace(values.c_str());
}

tAsynt find_class(tAsynt name) {
  if (Asynt_Kind(Symbol_SymInfo(name)) != kSimpleSymbol)
    die_msg("'%s' used as class name (reserved).", unparse_string(name));
  const char* key = NamedSymbol_Name(Symbol_SymInfo(name));
  tAsynt* entries = lookup(class_index, key);
  if (!entries) die_msg("Could not inherit from class %s - it doesn't exist!\n", key);
  return entries[0];
}

// A list of parents that is being expanded: that of an instance or of one of its classes.
struct Level {
  tAsynt parents;     // the rest
  tAsynt inheriting;  // the class whose parents they are; null for an instance
  Actuals actuals;
  ThisGroup* outer_group;
  ThisGroup group;
  Chain all{};  // what the parents up to here have given
};

// Begins to inherit from a class: its own parents come first.
Level Inherit(tAsynt parent, const Actuals& actuals) {
  tAsynt c = find_class(Parent_Name(parent));
  if (++depth > nr_of_classes)
    die_msg("Inheritance graph is cyclic (cycle includes class '%s')\n",
            NamedSymbol_Name(Symbol_SymInfo(Parent_Name(parent))));
  tAsynt args_rhs = CopyAsynt(Parent_Args(parent));
  tAsynt args_lhs = CopyAsynt(Parent_Args(parent));
  ParametrizeArglist(&args_rhs, actuals.formals, actuals.rhs);
  ParametrizeArglist(&args_lhs, actuals.formals, actuals.lhs);
  PatternizeIndices(&args_lhs, current_indices);
  const Actuals own{Class_Formals(c), args_lhs, args_rhs};
  if (verbose_flag) trace_class(c, own);
  return {Object_Parents(c), c, own, this_group, {current_instance_context}};
}

// What a class gives: what it has inherited, then its own definitions.
Chain inherited(const Level& level) {
  Chain es = level.all;
  Chain cs = Capsules2Copy(Object_Capsules(level.inheriting), level.actuals);
  Parametrize(&cs, level.actuals);
  append(&es, mComment("Class: ", printed(Object_Name(level.inheriting))));
  depth--;
  return join(es, cs);
}

}  // namespace

void begin_inheritance(int classes) {
  nr_of_classes = classes;
  depth = 0;
  this_group = nullptr;
  left_this = false;
}

bool this_is_left() { return left_this; }

void This2Current(tAsynt* t, tAsynt context) {
  walk_places(t, [context](tAsynt* place) { return current_place(place, context); });
}

void TakeOwn(tAsynt* t, tAsynt context) {
  Replacements own;
  walk_places(t, [&own, context](tAsynt* place) {
    if (Asynt_Kind(*place) != kSimpleSymbol) return current_place(place, context);
    tAsynt type = SymInfo_Type(*place);
    const bool changes = Asynt_IsType(type, kBasicType) ? current_index_string != nullptr : Asynt_Kind(type) != kNoType;
    if (!changes) return false;
    tAsynt info = own.of(*place);
    if (!info) info = own.note(*place, mSimpleSymbol(type, SymInfo_Pos(*place), NamedSymbol_Name(*place)));
    *place = info;
    return false;
  });
  // Behind the walk, since copying needs the marks.
  own.forget_marks();
  for (const auto& [shared, info] : own.all) SymInfo_Type(info) = CopyAsynt(SymInfo_Type(shared));
}

// The classes on the way to an ancestor are kept on a list: a chain of classes may be long.
Chain Parents2Expressions(tAsynt parents, const Actuals& actuals) {
  std::deque<Level> levels;
  levels.push_back({parents, nullptr, actuals, this_group, {}});
  for (;;) {
    Level& top = levels.back();
    if (Asynt_Kind(top.parents) == kParent1) {
      tAsynt parent = Parent1_Parent(top.parents);
      top.parents = Parent1_Parents(top.parents);
      levels.push_back(Inherit(parent, top.actuals));
      this_group = &levels.back().group;
      continue;
    }
    if (!top.inheriting) return top.all;
    this_group = top.outer_group;
    const Chain chain = inherited(top);
    levels.pop_back();
    levels.back().all = join(chain, levels.back().all);
  }
}

}  // namespace oz::unrolling
