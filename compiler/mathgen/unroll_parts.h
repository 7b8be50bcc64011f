// What the files of unrolling share: chains of expressions, walks over places, the state of the instance being built.
#pragma once

#include <vector>

#include "Asynt.h"

namespace oz::unrolling {

// ---- chains: the cells of an Expression list whose end is known, so that joining two costs nothing

struct Chain {
  tAsynt first = nullptr;  // null when empty
  tAsynt last = nullptr;   // the last cell; its tail is null until the chain is finished
};

void append(Chain* chain, tAsynt e);
void prepend(Chain* chain, tAsynt e);

// a followed by b; both are used up.
Chain join(Chain a, Chain b);

// The chain as a list.
tAsynt finish(Chain chain);

// The chain of a list whose cells become the chain's.
Chain chain_of(tAsynt list);

// ---- walks over places
//
// visit is called for each place (slot) in a tree, also when several places hold one node; it returns whether the node
// there is to be entered, which happens once per node. It may put another node in the place, and returns false then.
// The node marks say what was entered; they are 0 again at the end.

// The nodes that the walks at work have entered, the innermost walk's last.
extern std::vector<tAsynt> entered_nodes;

// Notes what is entered while it lives.
struct Entered {
  size_t start = entered_nodes.size();
  Entered() = default;
  Entered(const Entered&) = delete;
  Entered& operator=(const Entered&) = delete;
  ~Entered() {
    for (size_t i = start; i < entered_nodes.size(); i++) entered_nodes[i]->yyMark = 0;
    entered_nodes.resize(start);
  }
  // False if the node was entered before.
  bool enter(tAsynt t) {
    if (t->yyMark != 0) return false;
    t->yyMark = 1;
    entered_nodes.push_back(t);
    return true;
  }
};

// What has come in the place of nodes that the walks at work do not enter: the mark of such a node is the number of its
// replacement, from 1. The marks are 0 again at the end.
struct Replacements {
  struct Replaced {
    tAsynt before;
    tAsynt after;
  };
  std::vector<Replaced> all{};
  Replacements() = default;
  Replacements(const Replacements&) = delete;
  Replacements& operator=(const Replacements&) = delete;
  ~Replacements() { forget_marks(); }
  // Null if there is none.
  tAsynt of(tAsynt t) const { return t->yyMark == 0 ? nullptr : all[t->yyMark - 1].after; }
  tAsynt note(tAsynt before, tAsynt after) {
    all.push_back({before, after});
    before->yyMark = static_cast<uint32_t>(all.size());
    return after;
  }
  void forget_marks() const {
    for (const Replaced& r : all) r.before->yyMark = 0;
  }
};

template <typename Visit>
struct PlaceWalk {
  Visit visit;
  Entered entered{};

  void walk(tAsynt* place) {
    for (;;) {
      if (!*place || !visit(place)) return;
      tAsynt t = *place;
      const TreeShape& k = Asynt_Shapes[t->yyKind];
      if (k.child_count == 0 || !entered.enter(t)) return;
      for (int i = 0; i + 1 < k.child_count; i++) walk(&tree_raw_slot<tAsynt>(t, k.children[i]));
      place = &tree_raw_slot<tAsynt>(t, k.children[k.child_count - 1]);
    }
  }
};

// Walks all places of a tree, the given one first.
template <typename Visit>
void walk_places(tAsynt* tree, Visit visit) {
  PlaceWalk<Visit> w{visit};
  w.walk(tree);
}

// ---- the state of a run

extern tAsynt model_name;                // Name of the Model
extern tAsynt current_instance_context;  // a Symbol that names the instance being built; null at the top
extern tAsynt current_indices;           // index names of all enclosing sets, outermost first
extern tAsynt current_index_string;      // yields the printed path of the current member; null outside of sets
extern tAsynt blank_empty;               // Blank(Empty)

// The module's refusal: reports the routine and leaves through unroll_Exit.
[[noreturn]] void routine_failed(const char* routine);

// Whether a reader takes the objects, with all that was made for them. What is changed in an object must be its own
// then: nodes of the model, which outlive it, are copied first.
bool objects_are_read();

// A position node at no place.
tAsynt nowhere();

// The definition lhs := rhs.
tAsynt definition(tAsynt lhs, tAsynt rhs);

// The first component of a context, or null.
tAsynt ContainerContext(tAsynt ctx);

// The first component of a path, or null. syminfo is a FullSymbol or AbsoluteSymbol.
tAsynt* components_of(tAsynt syminfo);

// Calls walk on the arguments of the indexed components of a path. An actual value in a path can be a path itself.
template <typename Walk>
void walk_component_arguments(tAsynt components, Walk walk) {
  for (; Asynt_Kind(components) == kExpression1; components = Expression1_Expressions(components)) {
    tAsynt c = Expression1_Expression(components);
    if (Asynt_Kind(c) == kSimpleFFE) {
      walk(&FullFormExpression_Args(c));
      c = SimpleFFE_Name(c);
    }
    if (Asynt_Kind(c) != kSymbol) continue;
    if (tAsynt* inner = components_of(Symbol_SymInfo(c))) walk_component_arguments(*inner, walk);
  }
}

// ---- instances (unroll.cc)

// The expressions of the capsules of an object, in source order. Part instances are built on the way; the parameters
// are those of the class around them.
struct Actuals {
  tAsynt formals;  // Symbols of the class
  tAsynt lhs;      // what they stand for on left sides, an Expression list
  tAsynt rhs;      // and on right sides
};

Chain Capsules2Expressions(tAsynt capsules, const Actuals& actuals);

// The same as a fresh copy; the contexts of parts are the ones that were built, not copies.
Chain Capsules2Copy(tAsynt capsules, const Actuals& actuals);

void trace(const char* text);

// ---- inheritance (unroll_inherit.cc)

void begin_inheritance(int nr_of_classes);

// The definitions inherited from a list of parents, the first parent's last.
Chain Parents2Expressions(tAsynt parents, const Actuals& actuals);

// Whether a class was expanded whose actuals are not as many as its formals: `this` may be left in its definitions.
bool this_is_left();

// `this` in a tree becomes `context`; a path from it loses it.
void This2Current(tAsynt* t, tAsynt context);

// The same in an instance's own definitions. These are no copies, and their names are the very nodes of the classes
// that declare them: names whose types unrolling changes get nodes of their own, so that other instances do not see it.
void TakeOwn(tAsynt* t, tAsynt context);

// ---- names and indices (unroll_names.cc)

void begin_names();

// The symbols of an instance in the order in which they stand in its context; those of the parts are in their places.
struct SymbolLog;

// Relative names become names under the context. The symbols are noted in the log unless that is null.
void Absolutize(tAsynt* t, tAsynt context, SymbolLog* log = nullptr);

// A log for the instance to be built, which the log of the instance around it will contain.
SymbolLog* new_symbol_log();

// Makes the log of a part known under its context.
void keep_symbol_log(tAsynt context, SymbolLog* log);

// Occurrences of one name in an instance share one node, which has the type that is declared anywhere in it.
void ShareSymis(SymbolLog* log);

// Moves indices out of the paths in a tree: a[1]`x becomes a`x[1].
void Unsetify(tAsynt* t);

// Does the same for all names in the logs made so far, and drops the logs.
void close_symbol_logs();

// Forgets what is known of names, whose nodes are about to be given back.
void forget_names();

// ---- instance sets (unroll_index.cc)

void begin_sets();

// Forgets the index lists, whose nodes are about to be given back.
void forget_sets();

// The types of the members in a tree get one marker per index.
void MarkSetMembers(tAsynt* t);

// Every relative name gets the indices.
void InsertIndices(tAsynt* t);

// Left sides get index patterns; the Format rules of the members that they define are added to the chain,
// if there is one.
void AdjustTopLHS(tAsynt* t, Chain* format_list);

// In the values of Format rules patterns become plain names.
void NukeRightPatterns(Chain format_list);

// Symbols named like an index become patterns.
void PatternizeIndices(tAsynt* actuals, tAsynt indices);

// A copy of an index list with each index turned into a pattern; both lists are known as index lists from now on.
tAsynt patternized(tAsynt indices);
bool is_index_list(tAsynt list);

// What yields the printed path of a member of the set, behind that of the enclosing set's member.
tAsynt AddToIndexString(tAsynt current, tAsynt inst, tAsynt indices);

}  // namespace oz::unrolling
