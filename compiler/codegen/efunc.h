// The model that is kept between commands, and the generation of one entity of it.
//
//   remember(model_tree, GetCompilables(model_tree), instances);
//   funcgen("M`f");      // "OK" or "Function not found: M`f"; the text goes to the open file set
//
// Generation works on copies of the kept declarations, so that any number of commands can follow one compile.
#pragma once

#include "Asynt.h"
#include "index.h"

namespace oz {

// ---- what the commands set for the passes

// The language of the open file set; none: no set is open.
enum Language { fortran90 = 0, hpf = 1, cplusplus = 2, java = 3, none = 4 };
extern Language genlang;

// Options of code generation, given when a file set is opened.
struct CG_Options {
  char parallel;  // parallel code is wanted
};
extern CG_Options cg_opt;

// The name of the kept model; "" without one.
extern string model_name;

// The function that is being generated, as it was asked for.
extern string fun_name;

// ---- the kept model

// Keeps a model, its functions and its instances for later commands, in the place of the one before. Attributes that
// the model changes are changed. The indices of functions and instances are released with the model.
void remember(tAsynt model, tIndex c, tIndex i);

// A run of the compiler begins: gives back the trees of the run before and of the commands on it, the kept model with
// them. While a file set is open they stay, since the set may still have to declare the model's variables.
void forget_model();

// A command begins: gives back what the commands before it have made, once that is more than a share of the model. The
// model itself may have come to refer to what they made; that stays.
void collect_garbage();

// The first entry of a key among the functions, among the typed variables; or null.
tAsynt find_compilable(const char* key);
tAsynt find_alltypes(const char* key);

// The declaration of a name, which may have element brackets, a[i][j]: a function's definition (*was_funcall is then
// true), a variable's Symbol, or null. It is what type.h asks, see Set_declaration_finder.
tAsynt find_declaration(tAsynt symbol, bool* was_funcall);

// The name without the kept model's own context.
const char* stripmodelname(const char* s);

// Whether the declared name of a SymInfo is no array.
char is_scalar_var(tAsynt t);

// ---- generation

// Each answers "OK" or an error text, which is valid until the next one. Names and bodies are full-form text.
const char* funcgen(const char* name);                     // a function of the model
const char* efuncgen(const char* name, const char* body);  // a function of the model with another body
const char* vargen(const char* name);                      // an instance's variables, one variable; "": all instances

// ---- declarations of variables

// Declares a variable, a Symbol or the definition (XSetDelayed) of an external one: at once for Fortran 90, else at the
// end of the file set, where each name is declared once.
void remember_vardecl(tAsynt var);

// Writes the declarations that wait; forgets them and which instances have been generated.
void perform_global_vardecls();
void purge_remembered_vardecls();

}  // namespace oz
