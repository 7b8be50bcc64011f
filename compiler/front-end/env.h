// Name environments: one per class and instance, with its own and its inherited locals, and one for the globals.
#pragma once

#include "symtab.h"
#include "treefwd.h"

namespace oz {

struct env_s {
  tAsynt obj;              // the Class, Instance or InstanceSet; null for the global environment
  tAsynt parents;          // its Parents list
  string str;              // its name, the key in the index of environments
  Symtab syms;             // its locals, with the inherited ones once they are there
  char parents_inherited;  // set when the parents' locals have been copied in (or are being copied)
};
using Env = env_s*;

extern Env glob_env;
extern Env current_env;

// Makes the indices and the pattern context; starts afresh in a second run.
void init_env();

// The global environment, named "System`"; not entered in the index.
Env make_global_env();

// An environment under the symbol's Name. Of two with one name the first is found.
Env make_env(tAsynt syminfo, tAsynt obj, tAsynt parents);

// The environment of a name; an unknown name is fatal, "Unknown_env: %s".
Env find_env(const char* key);

// Makes the environment of a symbol's Name current.
void change_env(tAsynt syminfo);

// Sets the context that globals get: the model's name symbol.
void make_global_context(tAsynt sym);

// Enter a SimpleSymbol's name: in the current environment, in the top pattern index, in the top module index, in the
// top index of instance sets. The first entry of a name stays; a local without a type takes that of a later entry.
// Locals are entered before inherit_locals, not behind it.
void add_local_sym(tAsynt syminfo);
void add_pattern_sym(tAsynt syminfo);
void add_module_sym(tAsynt syminfo);
void add_set_sym(tAsynt syminfo);

void push_pattern_index();
void pop_pattern_index();
void push_module_index();
void pop_module_index();
void push_set_index();
void pop_set_index();

// Find the symbol information that a name is bound to; null if it is not bound there. lookup_global never fails: it
// makes a new global. lookup_any asks for a module variable, a pattern variable, the index of a set, a local and a
// global, in this order.
tAsynt lookup_local(tAsynt syminfo);
tAsynt lookup_pattern(tAsynt syminfo);
tAsynt lookup_module(tAsynt syminfo);
tAsynt lookup_global(tAsynt syminfo);
tAsynt lookup_any(tAsynt syminfo);

// Whether a name is that of a global that the model declares.
bool is_model_global(tAsynt syminfo);

// Copies inherited locals into every environment.
void inherit_locals();

}  // namespace oz
