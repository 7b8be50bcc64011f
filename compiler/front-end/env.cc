// Name environments, and the indices that hold the names of an inner scope while the walk is in it.
//
// For
//     class A hide: real x; end;   class B inherits A hide: f[y_] := x + y; end;
// there are environments of A with x, of B with f and, inherited, x; while f's definition is walked the pattern indices
// hold y. The symbol information of a local is the SimpleSymbol that was declared; all others are AbsoluteSymbols.

#include "env.h"

#include <cstdio>
#include <deque>
#include <vector>

#include "Asynt.h"
#include "index.h"
#include "ozerrors.h"

namespace oz {

Env glob_env = nullptr;
Env current_env = nullptr;

namespace {

// One index on a stack: the names entered in it, and those of all the indices below it.
struct Scope {
  Symtab own;
  Symtab outer;
  Symtab all;  // both, once an index has been pushed on top; null if that is out of date
};
using Scopes = std::vector<Scope>;

SymtabPool env_pool;
SymtabPool scope_pool;  // cleared whenever no scope is open

Index* env_index = nullptr;      // every environment but the global one, as nodes, by name
std::deque<env_s> environments;  // the storage of all

Scopes mod_indices;
Scopes pat_indices;
Scopes set_indices;

tAsynt pattern_context = nullptr;  // [P$], the components of every pattern variable
tAsynt global_context = nullptr;   // [the model's name], the components of every declared global

// An index holds tree nodes; an environment travels in it under that type.
tAsynt as_entry(Env env) { return reinterpret_cast<tAsynt>(env); }
Env as_env(tAsynt entry) { return reinterpret_cast<Env>(entry); }

Env new_env(string name, tAsynt obj, tAsynt parents) {
  environments.push_back({obj, parents, name, nullptr, 0});
  return &environments.back();
}

tAsynt absolute(tAsynt syminfo, tAsynt components) {
  return mAbsoluteSymbol(SymInfo_Type(syminfo), SymInfo_Pos(syminfo), NamedSymbol_Name(syminfo), components);
}

// `x; real x;`: the first declaration stays and takes the type of the second.
void take_type(tAsynt taken, tAsynt left) {
  if (Asynt_Kind(SymInfo_Type(taken)) == kNoType) SymInfo_Type(taken) = SymInfo_Type(left);
}

// ---- scopes

void push(Scopes* scopes) {
  Symtab outer = nullptr;
  if (!scopes->empty()) {
    Scope& top = scopes->back();
    if (!top.all) top.all = symtab_unite(&scope_pool, top.own, top.outer, nullptr);
    outer = top.all;
  }
  scopes->push_back({nullptr, outer, nullptr});
}

void pop(Scopes* scopes) {
  if (scopes->empty()) {
    std::fprintf(stderr, "Internal error. Popped too many indices.\n");
    return;
  }
  scopes->pop_back();
  if (mod_indices.empty() && pat_indices.empty() && set_indices.empty()) symtab_clear(&scope_pool);
}

// Binds a name in the top index; in that index an earlier binding stays.
void add(Scopes* scopes, tAsynt syminfo, tAsynt components) {
  const char* name = NamedSymbol_Name(syminfo);
  Scope& top = scopes->back();
  tAsynt* place = symtab_place(&scope_pool, &top.own, symtab_hash(name), name);
  top.all = nullptr;
  if (!*place) *place = absolute(syminfo, components);
}

tAsynt find(const Scopes& scopes, uint32_t hash, const char* name) {
  if (scopes.empty()) return nullptr;
  const tAsynt found = symtab_find(scopes.back().own, hash, name);
  return found ? found : symtab_find(scopes.back().outer, hash, name);
}

tAsynt find(const Scopes& scopes, tAsynt syminfo) {
  if (scopes.empty()) return nullptr;
  const char* name = NamedSymbol_Name(syminfo);
  return find(scopes, symtab_hash(name), name);
}

// ---- environments

tAsynt find(Env env, uint32_t hash, const char* name) { return env ? symtab_find(env->syms, hash, name) : nullptr; }

tAsynt find(Env env, tAsynt syminfo) {
  const char* name = NamedSymbol_Name(syminfo);
  return find(env, symtab_hash(name), name);
}

tAsynt find_or_make_global(tAsynt syminfo, uint32_t hash, const char* name) {
  tAsynt* place = symtab_place(&env_pool, &glob_env->syms, hash, name);
  if (!*place) *place = absolute(syminfo, mExpression0());
  return *place;
}

// ---- inheritance

// An environment on the way to its ancestors: the parents that are still to come.
struct Descent {
  Env env;
  tAsynt rest;
};

void begin_descent(std::vector<Descent>* path, Env env) {
  env->parents_inherited = 1;
  path->push_back({env, env->parents});
}

void do_inherit(Env env, Env parent) { env->syms = symtab_unite(&env_pool, env->syms, parent->syms, take_type); }

// Completes an environment and, before it, its ancestors. The path is kept on a list: a chain of classes may be long.
// An environment that is met while it is in progress closes a cycle; it gives what it has by then, and unrolling
// reports the cycle if an instance uses it.
void find_parents_inherit(Env start) {
  if (start->parents_inherited) return;
  std::vector<Descent> path;
  begin_descent(&path, start);
  while (!path.empty()) {
    const Env env = path.back().env;
    const tAsynt rest = path.back().rest;
    if (Asynt_Kind(rest) != kParent1) {
      path.pop_back();
      continue;
    }
    change_env(Symbol_SymInfo(Parent_Name(Parent1_Parent(rest))));
    if (!current_env->parents_inherited) {
      begin_descent(&path, current_env);
      continue;
    }
    do_inherit(env, current_env);
    path.back().rest = Parent1_Parents(rest);
  }
}

}  // namespace

void init_env() {
  if (env_index) delete_index(env_index);
  env_index = make_index(linked_list, 1);
  environments.clear();
  glob_env = nullptr;
  current_env = nullptr;
  mod_indices.clear();
  pat_indices.clear();
  set_indices.clear();
  symtab_clear(&env_pool);
  symtab_clear(&scope_pool);
  pattern_context = mExpression1(mSymbol(mSimpleSymbol(mNoType(), NoPosition, "P$")), mExpression0());
  global_context = nullptr;
}

Env make_global_env() { return new_env("System`", nullptr, nullptr); }

Env make_env(tAsynt syminfo, tAsynt obj, tAsynt parents) {
  const char* name = NamedSymbol_Name(syminfo);
  const Env env = new_env(name, obj, parents);
  create_entry(env_index, as_entry(env), name);
  return env;
}

Env find_env(const char* key) {
  tAsynt* const entries = lookup(env_index, key);
  if (!entries) die_msg("Unknown_env: %s", key);
  return as_env(entries[0]);
}

void change_env(tAsynt syminfo) { current_env = find_env(NamedSymbol_Name(syminfo)); }

void make_global_context(tAsynt sym) { global_context = mExpression1(sym, mExpression0()); }

void add_local_sym(tAsynt syminfo) {
  const char* name = NamedSymbol_Name(syminfo);
  tAsynt* place = symtab_place(&env_pool, &current_env->syms, symtab_hash(name), name);
  if (*place)
    take_type(*place, syminfo);
  else
    *place = current_env == glob_env ? absolute(syminfo, global_context) : syminfo;
}

void add_pattern_sym(tAsynt syminfo) {
  if (pat_indices.empty())
    std::fprintf(stderr, "Internal error. No pattern index.\n");
  else if (!lookup_pattern(syminfo))
    add(&pat_indices, syminfo, pattern_context);
}

void add_module_sym(tAsynt syminfo) {
  if (mod_indices.empty())
    std::fprintf(stderr, "Internal error. No module index.\n");
  else
    add(&mod_indices, syminfo, mExpression0());
}

void add_set_sym(tAsynt syminfo) {
  if (set_indices.empty())
    std::fprintf(stderr, "Internal error. No set index.\n");
  else
    add(&set_indices, syminfo, mExpression0());
}

void push_pattern_index() { push(&pat_indices); }
void pop_pattern_index() { pop(&pat_indices); }
void push_module_index() { push(&mod_indices); }
void pop_module_index() { pop(&mod_indices); }
void push_set_index() { push(&set_indices); }
void pop_set_index() { pop(&set_indices); }

tAsynt lookup_local(tAsynt syminfo) { return find(current_env, syminfo); }
tAsynt lookup_pattern(tAsynt syminfo) { return find(pat_indices, syminfo); }
tAsynt lookup_module(tAsynt syminfo) { return find(mod_indices, syminfo); }

tAsynt lookup_global(tAsynt syminfo) {
  const char* name = NamedSymbol_Name(syminfo);
  return find_or_make_global(syminfo, symtab_hash(name), name);
}

tAsynt lookup_any(tAsynt syminfo) {
  const char* name = NamedSymbol_Name(syminfo);
  const uint32_t hash = symtab_hash(name);
  tAsynt found = find(mod_indices, hash, name);
  if (!found) found = find(pat_indices, hash, name);
  if (!found) found = find(set_indices, hash, name);
  if (!found && current_env != glob_env) found = find(current_env, hash, name);
  return found ? found : find_or_make_global(syminfo, hash, name);
}

bool is_model_global(tAsynt syminfo) {
  const tAsynt found = find(glob_env, syminfo);
  return found && Asynt_Kind(AbsoluteSymbol_Components(found)) == kExpression1;
}

void inherit_locals() {
  Iter* iter = start_iter(env_index);
  while (tAsynt* const entries = iter_next(iter)) find_parents_inherit(as_env(entries[0]));
}

}  // namespace oz
