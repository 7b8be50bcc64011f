// Digging through a finished model: what can be compiled, the declared type of every name, one symbol for all uses of
// an element such as a[1], changed attributes, and the declarations of the variables of an instance.
//
//   FixNests(model);
//   tIndex functions = GetCompilables(model);         // "f" -> the definition f[real x_] := ...
//   tIndex types = GetVarTypes(model, functions);     // "x" -> the Symbol that carries x's type
//
// The key of a name is its text as the source unparser writes it. The indices are the caller's.
#pragma once

#include <string>

#include "Asynt.h"
#include "index.h"

namespace oz {

// ---- what a model declares

// The typed function definitions (XSetDelayed) by name. Of two definitions of one name the last one counts, with a
// warning.
tIndex GetCompilables(tAsynt model);

// The typed names that are no keys of avoid: each with its first typed Symbol, or with the definition (XSetDelayed) of
// an external variable. The bodies of functions are not searched.
tIndex GetVarTypes(tAsynt model, tIndex avoid);

// For each untyped absolute symbol below t: the symbol as the model knows it, under its name in the model.
tIndex GetExternalFuncTypes(tAsynt t);

// Makes all uses of an element, a[1] in a declaration and a[1] as an application, share the symbol information of the
// first one. A second run changes nothing.
void FixNests(tAsynt model);

// Carries out the SetAttr[name, "attribute", value] and DelAttr[name, "attribute"] forms in the tree.
void ReAttribute(tAsynt model);

// ---- function bodies

// Replaces the untyped symbols of body by their entries in the first or else the second index. With verbosity, names in
// neither are reported on standard error. The result is body, or what replaces it.
tAsynt ReType(tAsynt body, tIndex typetab_prim, tIndex typetab_sec, char verbosity);

// The definition head := body.
tAsynt AssembleFun(tAsynt head, tAsynt body);

// ---- names

// The name that a head defines: of a symbol, an application, a member of an instance set. Valid until the next text is
// unparsed.
string GetName(tAsynt t);

// The name of a model; fatal without one. Valid until the next text is unparsed.
string GetModelName(tAsynt m);

// Whether a name is that of an external function or variable, or a definition makes it one.
char IsExternal(tAsynt t);

// Whether name is a variable of qual itself, not of an instance within it: qual, a backquote, and no other backquote
// outside of square brackets.
int is_entire_qualifier(const char* name, const char* qual);

// Writes each key on a line of standard output.
void printkeys(Index* i);

// ---- indices of instance sets: dimensions IntConst -1 of an ArrayType_s

// 1 if the first dimension is such an index, else 0.
int CountDynBrackets(tAsynt dims);

// How many such indices a list of dimensions begins with.
int CountDyns(tAsynt dims);

// Whether s is a Symbol of a member of an instance set with nr bracket groups for the set's indices.
char VerifyDyns(tAsynt s, int nr);

// The text of a symbol into ubuf, without the bracket groups that are indices of its instance set.
void UnparseWithoutDynBrackets(std::string* ubuf, tAsynt sym);

// ---- declarations of instances

// Declares the variables of an instance: nam is its symbol, inames the index names of an instance set or null, allvars
// the model's variables. Except for C++, a set also gets a routine that allocates its variables.
void GenVarDecls(tAsynt nam, tAsynt inames, tIndex allvars);

// Calls fun with the entry of each variable that belongs to the instance itself.
void ApplyForInstanceVars(void (*fun)(tAsynt), tAsynt inst_name_symbol, Index* all_vars);

// The declaration of the array that holds a variable of all members of a set.
void Gen_array_decl(tAsynt t);

// ---- leaving

// What the end of the module after an internal failure goes through; initially Errors_Exit.
extern void (*dig_Exit)();

}  // namespace oz
