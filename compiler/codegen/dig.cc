// What a finished model declares. Each search is one walk over the tree, whose visitor tells whether to go on below:
//
//   GetCompilables   real f[real x_] := x^2;         f -> the whole definition
//   GetVarTypes      real level; y := level + 1;     level -> the Symbol that carries the type
//   FixNests         real a[1]; ... y := a[1] + 1;   the call a[1] becomes a Symbol on the element that was declared
//
// What is meant for the host alone (AlgAuxiliary) is passed over by all of them.

#include "dig.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Errors.h"
#include "dig_parts.h"
#include "ozerrors.h"
#include "type.h"
#include "unparse.h"

namespace oz {

namespace {

void leave() { Errors_Exit(); }

}  // namespace

void (*dig_Exit)() = leave;

namespace {

// What the walk at work fills or reads.
tIndex compilable = nullptr;
tIndex typetable = nullptr;
tIndex avoid_these = nullptr;
tIndex typetab1 = nullptr, typetab2 = nullptr;
char verbose = 0;  // whether ReType reports names without a type

// The first element of each name and index, alive during FixNests; the heads of these elements, and how long the
// longest of their texts is.
tIndex initial_nests = nullptr;
std::unordered_set<std::string> nest_heads;
size_t longest_nest = 0;

bool is_nest(tAsynt t) { return Asynt_Kind(t) == kRelativeNest || Asynt_Kind(t) == kAbsoluteNest; }

bool is_declared_type(tAsynt typ) {
  const Asynt_tKind kind = Asynt_Kind(typ);
  return kind != kNoAsynt && kind != kNoType && kind != kPreDef;
}

// The head symbol's name of f[...], and of a member of an instance set f[...][i]; null for other calls.
tAsynt called_name(tAsynt t) {
  if (Asynt_Kind(t) == kSimpleFFE) return SimpleFFE_Name(t);
  if (Asynt_Kind(t) != kComplexFFE || Asynt_Kind(ComplexFFE_Name(t)) != kSimpleFFE) return nullptr;
  const tAsynt name = SimpleFFE_Name(ComplexFFE_Name(t));
  return Asynt_Kind(name) == kSymbol && Is_setmember(SymInfo_Type(Symbol_SymInfo(name))) ? name : nullptr;
}

}  // namespace

void dig_abort(const char* routine) {
  std::fprintf(stderr, "Error: module dig, routine %s failed\n", routine);
  dig_Exit();
  std::abort();
}

tAsynt Info_of(tAsynt t) { return Asynt_Kind(t) == kSymbol ? Symbol_SymInfo(t) : t; }

bool IsTyped(tAsynt t) {
  const tAsynt name = Asynt_IsType(t, kFullFormExpression) ? called_name(t) : t;
  return Asynt_Kind(name) == kSymbol && is_declared_type(SymInfo_Type(Symbol_SymInfo(name)));
}

// ---- names

string GetName(tAsynt t) {
  if (Asynt_Kind(t) == kSymbol || Asynt_IsType(t, kSymInfo)) return unparse_string(t);
  const tAsynt name = called_name(t);
  if (!name) dig_abort("GetName");
  return GetName(name);
}

string GetModelName(tAsynt m) {
  if (!m) die_msg("GetModelName: no model");
  return GetName(Asynt_Kind(m) == kPackage ? Package_Name(m) : Model_Name(m));
}

int is_entire_qualifier(const char* name, const char* qual) {
  const size_t length = std::strlen(qual);
  if (std::strncmp(name, qual, length) != 0 || name[length] != '`') return 0;
  int depth = 0;
  for (const char* p = name + length + 1; *p; p++) {
    if (*p == '[') depth++;
    if (*p == ']') depth--;
    if (*p == '`' && depth == 0) return 0;
  }
  return 1;
}

void printkeys(Index* i) {
  Iter* iter = start_iter(i);
  while (iter_next(iter)) std::puts(iter_key(iter));
}

// ---- dimensions

bool Is_dyn(tAsynt dimension) { return Asynt_Kind(dimension) == kIntConst && IntConst_Val(dimension) == -1; }

bool Has_dimension(tAsynt dims, const char* routine) {
  switch (Asynt_Kind(dims)) {
    case kExpression1:
    case kIntConst1: return true;
    case kExpression0:
    case kIntConst0: return false;
    default: dig_abort(routine);
  }
}

tAsynt First_dimension(tAsynt dims) {
  return Asynt_Kind(dims) == kIntConst1 ? IntConst1_IntConst(dims) : Expression1_Expression(dims);
}

tAsynt Other_dimensions(tAsynt dims) {
  return Asynt_Kind(dims) == kIntConst1 ? IntConst1_IntConsts(dims) : Expression1_Expressions(dims);
}

int CountDynBrackets(tAsynt dims) { return Has_dimension(dims, "CountDynBrackets") && Is_dyn(First_dimension(dims)); }

int CountDyns(tAsynt dims) {
  int count = 0;
  for (; Has_dimension(dims, "CountDyns") && Is_dyn(First_dimension(dims)); dims = Other_dimensions(dims)) count++;
  return count;
}

char VerifyDyns(tAsynt s, int nr) {
  if (Asynt_Kind(s) != kSymbol) return 0;
  const tAsynt typ = SymInfo_Type(Symbol_SymInfo(s));
  return Asynt_Kind(typ) == kArrayType_s && CountDynBrackets(ArrayType_Dimensions(typ)) == nr;
}

void UnparseWithoutDynBrackets(std::string* ubuf, tAsynt sym) {
  const tAsynt si = Info_of(sym);
  if (is_nest(si) && Asynt_Kind(SymInfo_Type(si)) == kArrayType_s)
    unparse_and_skip_brackets(ubuf, sym, CountDynBrackets(ArrayType_Dimensions(SymInfo_Type(si))));
  else
    *ubuf = unparse_string(sym);
}

// ---- function definitions

namespace {

// Whether a name stands in the context of formal parameters.
bool is_parameter(tAsynt name) {
  const tAsynt si = Info_of(name);
  if (Asynt_Kind(si) != kAbsoluteSymbol) return false;
  const tAsynt path = AbsoluteSymbol_Components(si);
  if (Asynt_Kind(path) != kExpression1) return false;
  const tAsynt first = Info_of(Expression1_Expression(path));
  return Asynt_Kind(first) == kSimpleSymbol && NamedSymbol_Name(first) &&
         std::strcmp(NamedSymbol_Name(first), "P$") == 0;
}

bool GoodFuncArgs(tAsynt list) {
  for (; Asynt_Kind(list) == kExpression1; list = Expression1_Expressions(list)) {
    const tAsynt arg = Expression1_Expression(list);
    if (Asynt_Kind(arg) != kXPattern || !is_parameter(XPattern_Name(arg))) return false;
  }
  return true;
}

// The last definition of a name wins.
void enter_compilable(tAsynt definition, const std::string& name) {
  if (create_entry(compilable, definition, name.c_str())) return;
  warning_msg("Multiple type declaration for %s, using last one.", name.c_str());
  while (remove_from_entry(compilable, name.c_str()) > 0) {
  }
  create_entry(compilable, definition, name.c_str());
}

char CollectCompilables(tAsynt* t) {
  if (Asynt_Kind(*t) == kAlgAuxiliary) return 0;
  if (Asynt_Kind(*t) != kXSetDelayed) return 1;
  const tAsynt head = Binary_LHS(*t);
  if (!Asynt_IsType(head, kFullFormExpression)) return 1;
  if (IsTyped(head) && GoodFuncArgs(FullFormExpression_Args(head))) enter_compilable(*t, GetName(head));
  return 0;
}

}  // namespace

tIndex GetCompilables(tAsynt model) {
  compilable = make_index(hash_table, 100);
  WalkAsynt(&model, CollectCompilables);
  return compilable;
}

tAsynt AssembleFun(tAsynt head, tAsynt body) { return mXSetDelayed(mPosConv(NoPosition, nonConv), head, body); }

// ---- nests

namespace {

// The name in front of all brackets of a call.
tAsynt innermost_head(tAsynt t) {
  for (;;) {
    if (Asynt_Kind(t) == kSimpleFFE)
      t = SimpleFFE_Name(t);
    else if (Asynt_Kind(t) == kComplexFFE)
      t = ComplexFFE_Name(t);
    else
      return t;
  }
}

tAsynt nest_call(tAsynt nest) {
  return Asynt_Kind(nest) == kRelativeNest ? RelativeNest_FullFormExpression(nest)
                                           : AbsoluteNest_FullFormExpression(nest);
}

char CollectNests(tAsynt* t) {
  if (!is_nest(*t)) return 1;
  const char* text = unparse_string(*t);
  longest_nest = std::max(longest_nest, std::strlen(text));
  create_entry(initial_nests, *t, text);
  nest_heads.insert(unparse_string(innermost_head(nest_call(*t))));
  return 0;
}

// Takes what t prints at least off what is left, a character for a name or constant and two for the brackets of a call;
// stops below 0.
// Recursion follows nesting, as calls within calls do; arguments are followed on their list.
void take_leaves(tAsynt t, long* left) {
  while (t && *left >= 0) {
    const TreeKind& kind = Asynt_Schema.kinds[t->yyKind];
    if (Asynt_IsType(t, kType) || Asynt_Kind(t) == kNonAlgAuxiliary) return;  // not printed
    if (Asynt_Kind(t) == kSymbol || Asynt_IsType(t, kConstant)) {
      --*left;
      return;
    }
    if (kind.child_count == 0) return;
    if (Asynt_IsType(t, kFullFormExpression)) *left -= 2;
    for (int i = 0; i + 1 < kind.child_count && *left >= 0; i++)
      take_leaves(tree_raw_slot<tAsynt>(t, kind.children[i]), left);
    t = tree_raw_slot<tAsynt>(t, kind.children[kind.child_count - 1]);
  }
}

// Whether a call can have the text of a nest. Most calls are told apart by their heads, so that calls nested in one
// another are not printed again at each level.
bool may_be_nest(tAsynt call) {
  const tAsynt head = innermost_head(call);
  if (Asynt_Kind(head) == kSymbol && nest_heads.count(unparse_string(head)) == 0) return false;
  long left = static_cast<long>(longest_nest);
  take_leaves(call, &left);
  return left >= 0;
}

char SyncNests(tAsynt* t) {
  if (is_nest(*t) || Asynt_Kind(*t) == kAlgAuxiliary) return 0;
  if (!Asynt_IsType(*t, kFullFormExpression) || !may_be_nest(*t)) return 1;
  tAsynt* entries = lookup(initial_nests, unparse_string(*t));
  if (!entries) return 1;
  *t = mSymbol(entries[0]);
  return 0;
}

}  // namespace

void FixNests(tAsynt model) {
  initial_nests = make_index(hash_table, 100);
  longest_nest = 0;
  WalkAsynt(&model, CollectNests);
  if (longest_nest > 0) WalkAsynt(&model, SyncNests);
  nest_heads.clear();
  delete_index(initial_nests);
  initial_nests = nullptr;
}

// ---- variables of instances

namespace {

// The index whose variables stand in instance_vars, by the instance that they belong to, in the index's order. All
// instances of a model are asked for one after the other, and so its variables are sorted out once.
tIndex grouped = nullptr;
std::unordered_map<std::string, std::vector<tAsynt>> instance_vars;

// Where the last component of a name begins: behind the last backquote outside of brackets, 0 without one.
size_t last_component(std::string_view name) {
  size_t start = 0;
  int depth = 0;
  for (size_t i = 0; i < name.size(); i++) {
    if (name[i] == '[') depth++;
    if (name[i] == ']') depth--;
    if (name[i] == '`' && depth == 0) start = i + 1;
  }
  return start;
}

void group_variables(tIndex vars) {
  instance_vars.clear();
  Iter* iter = start_iter(vars);
  while (tAsynt* entries = iter_next(iter)) {
    const std::string_view name = iter_key(iter);
    const size_t start = last_component(name);
    if (start > 0) instance_vars[std::string(name.substr(0, start - 1))].push_back(entries[0]);
  }
  grouped = vars;
}

}  // namespace

void ApplyForInstanceVars(void (*fun)(tAsynt), tAsynt inst_name_symbol, Index* all_vars) {
  if (grouped != all_vars) group_variables(all_vars);
  const auto vars = instance_vars.find(unparse_string(inst_name_symbol));
  if (vars == instance_vars.end()) return;
  for (tAsynt entry : vars->second) fun(entry);
}

// ---- types of names

namespace {

void enter_type(tAsynt entry, const char* key) {
  if (!lookup(avoid_these, key)) create_entry(typetable, entry, key);
}

bool is_external_variable(tAsynt definition) {
  const tAsynt right = Binary_RHS(definition);
  return Asynt_Kind(Binary_LHS(definition)) == kSymbol && Asynt_Kind(right) == kExternalDeclaration &&
         Asynt_Kind(ExternalDeclaration_Returns(right)) == kExternalVariableReturns;
}

void enter_symbol(tAsynt symbol) {
  static std::string key;
  const tAsynt si = Symbol_SymInfo(symbol);
  if (Asynt_Kind(si) == kAbsoluteNest)
    UnparseWithoutDynBrackets(&key, symbol);
  else
    key = unparse_string(symbol);
  enter_type(symbol, key.c_str());
}

char CollectVarTypes(tAsynt* t) {
  switch (Asynt_Kind(*t)) {
    case kAlgAuxiliary: return 0;
    case kXSetDelayed:
      if (!is_external_variable(*t)) return !Asynt_IsType(Binary_LHS(*t), kFullFormExpression);
      enter_type(*t, unparse_string(Binary_LHS(*t)));
      return 0;
    case kSymbol:
      if (!IsTyped(*t)) return 1;
      enter_symbol(*t);
      return 0;
    default: return 1;
  }
}

tAsynt* typed_entry(const char* name) {
  tAsynt* entries = lookup(typetab1, name);
  return entries ? entries : lookup(typetab2, name);
}

char SyncTypes(tAsynt* t) {
  if (Asynt_Kind(*t) == kAlgAuxiliary) return 0;
  if (Asynt_Kind(*t) != kSymbol) return 1;
  if (Asynt_Kind(SymInfo_Type(Symbol_SymInfo(*t))) != kNoType) return 0;
  const char* name = unparse_string(*t);
  tAsynt* entries = typed_entry(name);
  if (entries)
    *t = entries[0];
  else if (verbose)
    std::fprintf(stderr, "untyped entity: %s\n", name);
  return 0;
}

}  // namespace

tIndex GetVarTypes(tAsynt model, tIndex avoid) {
  avoid_these = avoid;
  typetable = make_index(hash_table, 100);
  grouped = nullptr;
  WalkAsynt(&model, CollectVarTypes);
  return typetable;
}

tAsynt ReType(tAsynt body, tIndex typetab_prim, tIndex typetab_sec, char verbosity) {
  typetab1 = typetab_prim;
  typetab2 = typetab_sec;
  verbose = verbosity;
  WalkAsynt(&body, SyncTypes);
  return body;
}

}  // namespace oz
