// Function transformation: a function definition in the form that the generators take.
//
//   Make_code_for_fun("M`f", CopyAsynt(definition));   // rewrites f and hands it to the generator of genlang
//
// The target language, the options of code generation and the name of the function being compiled (genlang, cg_opt,
// fun_name) belong to the module that keeps the model, see efunc.h.
#pragma once

#include "Asynt.h"

namespace oz {

// What a failure of the module leaves through; initially Errors_Exit.
extern void (*fun_Exit)();

// Generates one function from its definition, an XSetDelayed of head and body that is the caller's private copy:
// Prepare_fun, then the generator of genlang. Sets fun_name. Everything that is reported on the way stands under the
// title "In function NAME:". name must live as long as fun_name is read.
void Make_code_for_fun(string name, tAsynt t);

// The rewrites of a definition that all targets share: temporaries are declared, the value becomes assignments to
// out-parameters, the body is verified, and its accesses to members of instance sets become array accesses. An external
// function has its head transformed and no more.
void Prepare_fun(tAsynt t);

// Whether a body applies fun_name; whether it names no variable of the model.
char recursive_fun(tAsynt rhs);
char pure_fun(tAsynt rhs);

// Appends the temporaries of a body to a Symbols list, and an Empty for each to the list of its initializers.
// A temporary that the list holds already is not added.
void collect_temp_vars(tAsynt* sp, tAsynt* ip, tAsynt body);

// A copy of the cells of e1 that ends in e2.
tAsynt append_exprs(tAsynt e1, tAsynt e2);

// An XModule that declares the targets of an assignment list and holds the list as its body.
tAsynt Make_csed_function(tAsynt t);

// The TempSymbol with a number in t, or null.
tAsynt FindTempSi(tAsynt t, int tempno);

// Two lists joined in place; the second if the first is empty.
tAsynt Merge_expressions(tAsynt e1, tAsynt e2);
tAsynt Merge_symbols(tAsynt s1, tAsynt s2);

// The list of a compound, or a one-element list of e.
tAsynt Make_expressions(tAsynt e);

// One XModule with the variables, the initializers and the statements of both, in this order.
tAsynt Merge_xmodules(tAsynt m1, tAsynt m2);

}  // namespace oz
