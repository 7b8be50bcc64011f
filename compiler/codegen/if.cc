// Conditionals rebuilt from flat code.
//
// Flat code computes both branches of every conditional:
//
//   T1 = a*b;  T2 = a+1;  T3 = T1+T2;  T4 = If[c, T3, T2];  y = T4
//
// T4 needs T2 whichever way c goes, and T1 and T3 only if c holds:
//
//   T2 = a+1;  If[c, T1 = a*b; T3 = T1+T2; T4 = T3, T4 = T2];  y = T4
//
// What a temporary needs whatever the conditions say is the temporary itself, what its plain operands need, and for a
// conditional what both of its branches need. A context is the code outside of all conditionals or one branch of one of
// them; it computes all that its values need, except what a context around it has computed already. Thus a temporary
// that two conditionals need in one branch each is computed in either branch.
//
// To find what two branches have in common without a set for each temporary, a conditional gets extra edges to common
// temporaries from which all others can be reached; plain and extra edges together then lead to just what a temporary
// needs. Numbers grow along dependences, so the common ones are met by following the edges of both branches downwards
// from the highest number, until one branch has nothing left that the other has not reached. The first context is in
// force everywhere: what it computes is never followed.

#include "if.h"

#include <algorithm>
#include <cstddef>
#include <queue>
#include <utility>
#include <vector>

#include "nesting.h"
#include "ozerrors.h"

namespace oz {

namespace {

using Numbers = std::vector<unsigned>;

// A temporary. Number 0 stands for the assignments to real variables.
struct Record {
  tAsynt set = nullptr;          // its assignment
  tAsynt conditional = nullptr;  // the right side, if that is an XIf
  Numbers needs;                 // what the value needs in any case
  Numbers then_needs, else_needs;
  bool visible = false;       // computed by a context around
  unsigned char reached = 0;  // by which branch, while a conditional is looked at
};

std::vector<Record> var_deps;

// The assignments to real variables, in their order.
tAsynt saved_sets = nullptr;
tAsynt* saved_sets_lp = nullptr;

// Where the operands of the expression at work are noted.
Numbers* current_dep = nullptr;

// How deep the contexts being written are nested, and how many assignments have been written. A temporary that many
// branches need stands in each of them, so that a short list can ask for more code than there is room for.
int level = 0;
size_t written = 0;
constexpr int kMaxContexts = kMaxNesting / 3;  // each is a conditional, a sequence and its list
constexpr size_t kMaxCopies = 500'000;         // assignments beyond the length of the list

Record& record(unsigned number) {
  if (number >= var_deps.size()) internal_error(__FILE__, __LINE__);
  return var_deps[number];
}

// ---- what depends on what

char add_dep_to_tree(tAsynt* t) {
  if (Asynt_Kind(*t) != kSymbol) return 1;
  const tAsynt si = Symbol_SymInfo(*t);
  if (Asynt_Kind(si) == kTempSymbol) current_dep->push_back(TempSymbol_Number(si));
  return 0;
}

void add_deps(tAsynt expr, Numbers* needs) {
  current_dep = needs;
  TraverseAsyntTD2(&expr, add_dep_to_tree);
}

void insert_temporary(unsigned number, tAsynt set) {
  Record& r = record(number);
  const tAsynt expr = Binary_RHS(set);
  r.set = set;
  if (Asynt_Kind(expr) != kXIf) return add_deps(expr, &r.needs);
  r.conditional = expr;
  add_deps(XIf_Condition(expr), &r.needs);
  add_deps(XIf_T(expr), &r.then_needs);
  add_deps(XIf_F(expr), &r.else_needs);
}

void insert_var_dep(tAsynt set) {
  const tAsynt var = Binary_LHS(set);
  const tAsynt si = Asynt_Kind(var) == kSymbol ? Symbol_SymInfo(var) : nullptr;
  if (Asynt_Kind(si) == kTempSymbol) return insert_temporary(TempSymbol_Number(si), set);
  *saved_sets_lp = mExpression1(set, nullptr);
  saved_sets_lp = &Expression1_Expressions(*saved_sets_lp);
  add_deps(Binary_RHS(set), &record(0).needs);
}

void build_dep_graph(tAsynt set_list, unsigned max_varno) {
  var_deps.assign(size_t{max_varno} + 1, {});
  saved_sets_lp = &saved_sets;
  for (; Asynt_Kind(set_list) == kExpression1; set_list = Expression1_Expressions(set_list))
    insert_var_dep(Expression1_Expression(set_list));
  *saved_sets_lp = mExpression0();
}

// ---- what a context computes

// Makes visible all that is needed and is not visible yet, and adds it to vars.
void reach(const Numbers& needed, Numbers* vars) {
  Numbers todo = needed;
  while (!todo.empty()) {
    const unsigned number = todo.back();
    todo.pop_back();
    Record& r = record(number);
    if (r.visible) continue;
    r.visible = true;
    vars->push_back(number);
    todo.insert(todo.end(), r.needs.begin(), r.needs.end());
  }
}

// ---- what both branches of a conditional need

constexpr unsigned char kThen = 1, kElse = 2, kBoth = 3;
constexpr unsigned char kBelow = 7;  // needed by something that both need

// The walk over the two branches of a conditional.
struct Branches {
  std::priority_queue<unsigned> pending{};
  int waiting[kBelow + 1] = {};  // how many pending temporaries were reached by each branch, by both
  Numbers seen{};
};

void touch(Branches* b, unsigned number, unsigned char from) {
  Record& r = record(number);
  const unsigned char now = r.reached | from;
  if (r.visible || now == r.reached) return;
  if (r.reached == 0) {
    b->seen.push_back(number);
    b->pending.push(number);
  } else {
    b->waiting[r.reached]--;
  }
  r.reached = now;
  b->waiting[now]++;
}

// Temporaries from which all that both branches need can be reached.
Numbers common_needs(const Record& conditional) {
  Branches b;
  Numbers common;
  for (unsigned number : conditional.then_needs) touch(&b, number, kThen);
  for (unsigned number : conditional.else_needs) touch(&b, number, kElse);
  while (b.waiting[kBoth] > 0 || (b.waiting[kThen] > 0 && b.waiting[kElse] > 0)) {
    const unsigned number = b.pending.top();
    b.pending.pop();
    const unsigned char by = record(number).reached;
    b.waiting[by]--;
    if (by == kBoth) common.push_back(number);
    for (unsigned need : record(number).needs)
      if (need < number) touch(&b, need, by == kBoth ? kBelow : by);
  }
  for (unsigned number : b.seen) record(number).reached = 0;
  return common;
}

// Gives each conditional its extra edges, in ascending order, so that they are there when a later one is looked at. The
// temporaries that the first context computes.
Numbers place_common_needs() {
  Numbers first;
  reach({0}, &first);
  for (unsigned number = 1; number < var_deps.size(); number++) {
    Record& r = var_deps[number];
    if (!r.conditional) continue;
    const Numbers common = common_needs(r);
    r.needs.insert(r.needs.end(), common.begin(), common.end());
    if (r.visible) reach(common, &first);
  }
  return first;
}

// ---- structured code

tAsynt no_conversion() { return mPosConv(NoPosition, nonConv); }

tAsynt output_code(Numbers vars, tAsynt last_expr);

// A branch: what it computes, and its value assigned to the conditional's temporary.
tAsynt output_branch(const Numbers& needs, tAsynt symbol, tAsynt value) {
  Numbers vars;
  reach(needs, &vars);
  const tAsynt set = mXSet(no_conversion(), symbol, value);
  return output_code(std::move(vars), mExpression1(set, mExpression0()));
}

tAsynt output_if(const Record& r) {
  if (++level > kMaxContexts) die_msg("Conditionals are nested too deeply (more than %d levels)", kMaxContexts);
  const tAsynt symbol = Binary_LHS(r.set);
  const tAsynt no = output_branch(r.else_needs, symbol, XIf_F(r.conditional));
  const tAsynt yes = output_branch(r.then_needs, symbol, XIf_T(r.conditional));
  level--;
  return mXIf(XIf_Condition(r.conditional), yes, no);
}

// The temporaries of a context, which are visible, in the order of their numbers; then a list of expressions. Behind it
// they are visible no more.
tAsynt output_code(Numbers vars, tAsynt last_expr) {
  const tAsynt code = mXCompoundExpression(no_conversion(), last_expr);
  tAsynt* end = &Variadic_Expressions(code);
  std::sort(vars.begin(), vars.end());
  for (unsigned number : vars) {
    const Record& r = record(number);
    if (number == 0 || !r.set) continue;
    if (++written > var_deps.size() + kMaxCopies)
      die_msg("Conditionals share too much code (more than %zu assignments are repeated)", kMaxCopies);
    *end = mExpression1(r.conditional ? output_if(r) : r.set, last_expr);
    end = &Expression1_Expressions(*end);
  }
  for (unsigned number : vars) record(number).visible = false;
  return code;
}

}  // namespace

tAsynt rewrite_ifs(tAsynt set_list, unsigned max_varno) {
  level = 0;
  written = 0;
  build_dep_graph(set_list, max_varno);
  Numbers first = place_common_needs();
  const tAsynt code = output_code(std::move(first), saved_sets);
  var_deps.clear();
  return code;
}

}  // namespace oz
