// The kept model and the functions that generate one entity of it.
//
// The model of the last compile stays in four indices: functions, typed variables, instances, and the variables whose
// declarations wait for the end of the file set. A name that a command asks for is read like any other full-form text
// and looked up by the text that it prints as.
#include "efunc.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "cse.h"
#include "dig.h"
#include "ffparse.h"
#include "ffscan.h"
#include "fun.h"
#include "ozerrors.h"
#include "pompunp.h"
#include "sheepconv.h"
#include "sheepout.h"
#include "type.h"
#include "unparse.h"
#include "veritrans.h"

namespace oz {

Language genlang = none;
CG_Options cg_opt = {0};
string model_name = "";
string fun_name = "";

namespace {

constexpr int kKeptEntries = 32;  // expected per key of the waiting declarations

const char* const kOk = "OK";

tAsynt saved_model = nullptr;
tIndex compilables = nullptr;
tIndex instances = nullptr;
tIndex alltypes = nullptr;
tIndex deferred_decls = nullptr;
tIndex generated_instances = nullptr;  // of the open file set

size_t longest_key = 0;  // of compilables and alltypes

std::string model_name_text;
std::string fun_name_text;
std::string strbuf;  // the text of a failed command; a name at work

tAsynt first_entry(tIndex index, const char* key) {
  const tAsynt* entries = lookup(index, key);
  return entries ? entries[0] : nullptr;
}

void measure_keys(tIndex index) {
  Iter* keys = start_iter(index);
  while (iter_next(keys)) longest_key = std::max(longest_key, std::strlen(iter_key(keys)));
}

const char* not_found(const char* what, const char* name) {
  strbuf = std::string(what) + " not found: " + name;
  return strbuf.c_str();
}

// ---- what a command asks for

// What a text of the host stands for. Its names get their types later.
tAsynt read_text(const char* text, char cheap_parse) {
  ffscan_SetString(text);
  ffscan_BeginFile("");
  allow_untyped = 1;
  const tAsynt tree = ffparse(cheap_parse);
  allow_untyped = 0;
  return tree;
}

// The definition of a function, or null.
tAsynt find_function(const char* name) {
  bool was_funcall = false;
  const tAsynt definition = find_declaration(read_text(name, 1), &was_funcall);
  return was_funcall ? definition : nullptr;
}

// The members of an instance do not bear the model's name, so a name that does is tried without it too.
tAsynt find_requested_function(const char* name) {
  const tAsynt definition = find_function(name);
  const char* const bare = stripmodelname(name);
  return definition || bare == name || *bare == '\0' ? definition : find_function(bare);
}

void begin_entity() {
  simple_code = 1;
  do_ddg = 0;
  Begintype();
}

void make_code_for(const char* name, tAsynt definition) {
  fun_name_text = name;
  fun_name = fun_name_text.c_str();
  Make_code_for_fun(fun_name, definition);
}

// ---- evaluate functions

// The parameters' types come before the model's; names that neither knows are functions defined elsewhere.
tAsynt typed_body(tAsynt tree_header, tAsynt body) {
  const tIndex locals = GetVarTypes(tree_header, compilables);
  body = ReType(body, locals, alltypes, 0);
  const tIndex externals = GetExternalFuncTypes(body);
  body = ReType(body, externals, alltypes, 1);
  delete_index(locals);
  delete_index(externals);
  return body;
}

tAsynt without_common_subexpressions(tAsynt body) {
  temp_no = 1;
  init_cse();
  Cse(body, &body);
  body = finish_fun_cse(body);
  Rewrite_shapeconv(&body, &body);
  return body;
}

// ---- variables

// An entry list of the instances: where the instance starts in the package, its name, and for a set the names of its
// indices. A file set declares the variables of an instance once.
void generate_instance(const tAsynt* entries, const char* key) {
  if (!generated_instances) generated_instances = make_index(hash_table, 1);
  if (!create_entry(generated_instances, entries[0], key)) return;
  const tAsynt name = entries[1];
  if (name) GenVarDecls(name, entries[2], alltypes);
}

void generate_all_instances() {
  if (!instances) return;
  Iter* keys = start_iter(instances);
  while (const tAsynt* entries = iter_next(keys)) generate_instance(entries, iter_key(keys));
}

void forget(tIndex* index) {
  if (*index) delete_index(*index);
  *index = nullptr;
}

// What remember has been given or made, but for the instances, which a second call gets again.
void forget_indices() {
  forget(&compilables);
  forget(&alltypes);
}

// ---- memory

// The first node of all runs, and the first behind the kept model.
std::optional<Asynt_Place> run_start;
Asynt_Place model_end;

// What commands may leave behind before it is looked for. To look means to walk over the model, which must not be done
// more often than it pays. Sanitizer builds do it each time, so that they find who still uses what is given back.
unsigned long tolerated_garbage() {
#ifdef OZ_SANITIZE
  return 0;
#else
  constexpr unsigned long kSmall = 1 << 20;
  return kSmall + (model_end.used - run_start->used) / 4;
#endif
}

// What modules hold between commands is made afresh: the nodes of the types, and the list of task procedures, of which
// nobody asks for earlier ones.
void release_since(const Asynt_Place& start) {
  Asynt_ReleaseSince(start);
  Begintype();
  forall_init_procs = mSymbol0();
}

void add_entries(tIndex index, std::vector<tAsynt>* roots) {
  if (!index) return;
  Iter* keys = start_iter(index);
  while (const tAsynt* entries = iter_next(keys))
    for (; *entries; entries++) roots->push_back(*entries);
}

// What declares a waiting variable: symbol information, or a definition. Null for what is neither.
tAsynt declared_thing(tAsynt var) {
  if (Asynt_IsType(var, kSymbol)) return Symbol_SymInfo(var);
  return Asynt_IsType(var, kXSetDelayed) ? var : nullptr;
}

}  // namespace

// ---- the kept model

void remember(tAsynt model, tIndex c, tIndex i) {
  forget_indices();
  saved_model = model;
  compilables = c;
  instances = i;
  alltypes = GetVarTypes(saved_model, compilables);
  longest_key = 0;
  measure_keys(compilables);
  measure_keys(alltypes);
  Set_declaration_finder(find_declaration);
  ReAttribute(saved_model);
  model_name_text = GetModelName(saved_model);
  model_name = model_name_text.c_str();
  forget(&generated_instances);
  model_end = Asynt_Here();
}

void forget_model() {
  if (!run_start) {
    predefined_names();  // made once for all runs
    run_start = Asynt_Here();
    return;
  }
  if (genlang != none) return;
  forget_indices();
  forget(&instances);
  saved_model = nullptr;
  delete_node_indices();
  release_since(*run_start);
  model_end = *run_start;
}

void collect_garbage() {
  if (!saved_model || Asynt_UsedSince(model_end) <= tolerated_garbage()) return;
  std::vector<tAsynt> roots = {saved_model};
  for (const tIndex index : {compilables, alltypes, instances, deferred_decls, generated_instances})
    add_entries(index, &roots);
  if (Asynt_ReachSince(model_end, roots))
    model_end = Asynt_Here();
  else
    release_since(model_end);
}

tAsynt find_compilable(const char* key) { return first_entry(compilables, key); }

tAsynt find_alltypes(const char* key) { return first_entry(alltypes, key); }

// a[i][j] is looked up as it stands, then without its first bracket group, then without its first two, ... A variable
// counts without so many groups only if they are the indices of its instance set.
tAsynt find_declaration(tAsynt symbol, bool* was_funcall) {
  *was_funcall = false;
  const std::string text = unparse_string(symbol);
  const size_t start = std::min(text.find('['), text.size());
  size_t end = start;
  std::string key;
  for (int skipcount = 0;; skipcount++) {
    const size_t length = start + (text.size() - end);
    if (length <= longest_key) {
      key.assign(text, 0, start).append(text, end);
      const tAsynt definition = find_compilable(key.c_str());
      *was_funcall = definition != nullptr;
      const tAsynt found = definition ? definition : find_alltypes(key.c_str());
      if (found) return definition || skipcount == 0 || VerifyDyns(found, skipcount) ? found : nullptr;
    }
    if (end >= text.size() || text[end] != '[') return nullptr;
    end = text.find(']', end);
    if (end == std::string::npos) return nullptr;
    end++;
  }
}

const char* stripmodelname(const char* s) {
  const size_t length = model_name_text.size();
  return std::strncmp(s, model_name, length) == 0 && s[length] == '`' ? s + length + 1 : s;
}

char is_scalar_var(tAsynt t) { return !Asynt_IsType(SymInfo_Type(t), kArrayType); }

// ---- generation

const char* funcgen(const char* name) {
  begin_entity();
  const tAsynt definition = find_requested_function(name);
  if (!definition) return not_found("Function", name);
  make_code_for(name, CopyAsynt(definition));
  return kOk;
}

const char* efuncgen(const char* name, const char* body) {
  begin_entity();
  const tAsynt definition = find_requested_function(name);
  if (!definition) return not_found("Function", name);
  const tAsynt tree_header = CopyAsynt(Binary_LHS(definition));
  const tAsynt tree_body = without_common_subexpressions(typed_body(tree_header, read_text(body, 0)));
  make_code_for(name, AssembleFun(tree_header, tree_body));
  return kOk;
}

const char* vargen(const char* name) {
  if (*name == '\0') {
    generate_all_instances();
    return kOk;
  }
  const char* const bare = stripmodelname(name);
  if (const tAsynt* entries = lookup(instances, bare)) {
    generate_instance(entries, bare);
    return kOk;
  }
  const tAsynt variable = find_alltypes(name);
  if (!variable) return not_found("Variable", name);
  remember_vardecl(variable);
  return kOk;
}

// ---- declarations of variables

void remember_vardecl(tAsynt var) {
  if (genlang == fortran90) {
    const tAsynt thing = declared_thing(var);
    if (!thing) die_msg("F90 unparser: Invalid symbol in remember_vardecl.\n");
    fmake_global_var_decl(thing);
    return;
  }
  if (!deferred_decls) deferred_decls = make_index(hash_table, kKeptEntries);
  UnparseWithoutDynBrackets(&strbuf, Asynt_IsType(var, kXSetDelayed) ? Binary_LHS(var) : var);
  create_entry(deferred_decls, var, strbuf.c_str());
}

void perform_global_vardecls() {
  if (!deferred_decls) return;
  Iter* keys = start_iter(deferred_decls);
  while (const tAsynt* entries = iter_next(keys)) {
    const tAsynt thing = declared_thing(entries[0]);
    if (!thing) die_msg("ugly SymInfo in deferred_decls(1)");
    if (genlang == cplusplus) CPmake_global_var_decl(thing);
  }
}

void purge_remembered_vardecls() {
  forget(&deferred_decls);
  forget(&generated_instances);
}

}  // namespace oz
