// What is asked of the kept model through find_declaration: attributes to change, external names, and the names of a
// host's expression that only the model knows.

#include <cstring>
#include <string>
#include <unordered_set>
#include <vector>

#include "dig.h"
#include "dig_parts.h"
#include "efunc.h"
#include "ffparse.h"
#include "ffscan.h"
#include "ozerrors.h"
#include "unparse.h"

namespace oz {

namespace {

// ---- attributes

// A place for the attributes of a basic type, of an array's base; null for other types.
pointerToIndex* attributes_of(tAsynt typ) {
  if (Asynt_IsType(typ, kArrayType)) typ = ArrayType_BasicType(typ);
  return Asynt_IsType(typ, kBasicType) ? &BasicType_attributes(typ) : nullptr;
}

pointerToIndex* attributes_of_declaration(tAsynt decl) {
  const tAsynt si = Info_of(decl);
  return Asynt_IsType(si, kSymInfo) ? attributes_of(SymInfo_Type(si)) : nullptr;
}

// Sets an attribute of a declaration, without a value takes it away.
void ChangeAttr(tAsynt decl, const char* attr, tAsynt val) {
  pointerToIndex* attributes = attributes_of_declaration(decl);
  if (!attributes) die_msg("Failed to change attribute for %s\n", unparse_string(decl));
  if (!*attributes) *attributes = make_node_index(4);
  while (remove_from_entry(*attributes, attr) >= 1) {
  }
  if (val) add_to_entry(*attributes, val, attr);
}

// The declaration of a variable.
tAsynt declared_variable(tAsynt name) {
  bool was_funcall = false;
  const tAsynt decl = find_declaration(name, &was_funcall);
  if (!decl || was_funcall) die_msg("Reattribution error, cannot find %s", unparse_string(name));
  return decl;
}

// The arguments of a call, as many as there are places for; the number of all of them.
int arguments_of(tAsynt call, tAsynt args[3]) {
  int count = 0;
  for (tAsynt p = FullFormExpression_Args(call); Asynt_Kind(p) == kExpression1; p = Expression1_Expressions(p)) {
    if (count < 3) args[count] = Expression1_Expression(p);
    count++;
  }
  return count;
}

string head_text(tAsynt call) {
  const tAsynt si = Info_of(SimpleFFE_Name(call));
  const string name = Asynt_IsType(si, kNamedSymbol) ? NamedSymbol_Name(si) : nullptr;
  return name ? name : "";
}

char DoModAttrs(tAsynt* t) {
  if (Asynt_Kind(*t) != kSimpleFFE) return 1;
  const string head = head_text(*t);
  const bool set = std::strcmp(head, "SetAttr") == 0;
  if (!set && std::strcmp(head, "DelAttr") != 0) return 1;
  tAsynt args[3] = {};
  if (arguments_of(*t, args) != (set ? 3 : 2) || Asynt_Kind(args[1]) != kStringConst) return 1;
  ChangeAttr(declared_variable(args[0]), StringConst_Val(args[1]), args[2]);
  return 0;
}

}  // namespace

void ReAttribute(tAsynt model) { WalkAsynt(&model, DoModAttrs); }

// ---- external names

char IsExternal(tAsynt t) {
  if (Asynt_Kind(t) == kAbsoluteSymbol) {
    bool was_funcall = false;
    t = find_declaration(t, &was_funcall);
  }
  if (Asynt_Kind(t) != kXSetDelayed) return 0;
  const Asynt_tKind right = Asynt_Kind(Binary_RHS(t));
  return right == kExternBody || right == kExternalDeclaration;
}

// ---- names of the model in a host's expression

namespace {

std::vector<tAsynt> untyped;  // what the walk found

// The path of a name is no occurrence of the names in it.
char CollectExternalFuncTypes(tAsynt* t) {
  if (Asynt_Kind(*t) == kAbsoluteSymbol) return 0;
  if (Asynt_Kind(*t) != kSymbol) return 1;
  if (Asynt_Kind(Symbol_SymInfo(*t)) == kAbsoluteSymbol && !IsTyped(*t)) untyped.push_back(*t);
  return 1;
}

// A name of the model as the reader gives it, with its type.
tAsynt read_model_name(const std::string& name) {
  const std::string text = std::string(model_name) + '`' + name;
  ffscan_SetString(text.c_str());
  ffscan_BeginFile("");
  return ffparse(0);
}

}  // namespace

// The names are gathered first and read when the walk is over: reading is a walk over trees of its own, which may share
// nodes with this one. A name is read once, however often it occurs.
tIndex GetExternalFuncTypes(tAsynt t) {
  tIndex typetable = make_index(hash_table, 100);
  untyped.clear();
  WalkAsynt(&t, CollectExternalFuncTypes);
  std::string key;
  std::unordered_set<std::string> names;
  for (tAsynt symbol : untyped) {
    const std::string name = GetName(symbol);
    if (!names.insert(name).second) continue;
    const tAsynt known = read_model_name(name);
    UnparseWithoutDynBrackets(&key, known);
    create_entry(typetable, known, stripmodelname(key.c_str()));
  }
  untyped.clear();
  return typetable;
}

}  // namespace oz
