// The module that the Fortran generator writes, and its functions:
//
//   module zc_M
//     ...
//   contains
//
//     function f(x) result(zc_O1)
//       ...
//     end function  f
//   end module zc_M
#include <cstring>
#include <vector>

#include "al_cmds.h"
#include "dig.h"
#include "efunc.h"
#include "ozerrors.h"
#include "sheepforall.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"
#include "type.h"

namespace oz {

// ---- the module

namespace {

void line(const std::string& text) {
  foutput_indentation(0);
  foutput(text);
  foutput("\n");
}

}  // namespace

void Foutput_use(const std::string& module) {
  foutput_indentation(0);
  foutput("use ");
  foutput(module);
  foutput("\n");
}

void finit() {
  finit_output();
  finit_operator_name();
  forall_init_procs = mSymbol0();
  f_cblock_name = model_name;
  f_module_name = "zc_" + f_cblock_name;
  fout_set(fout_implementation);
  foutput("module ");
  foutput(f_module_name);
  foutput("\n\n");
  f_modify_indent(1);
  Foutput_use("ZentricaPrecision");
  Foutput_use("ZentricaSheep");
  line("implicit none\n");
  line("interface");
  line("! Declarations of external functions (if any)");
  line("include   '" + f_cblock_name + "Ext.f90inc'");
  line("end interface");
  fcontains = 0;
}

void fexit() {
  purge_remembered_vardecls();
  fout_set(fout_implementation);
  f_modify_indent(-1);
  foutput("\n\n");
  foutput("end module ");
  foutput(f_module_name);
  foutput("\n");
}

// ---- parameter lists

void SplitArguments(tAsynt* orig, tAsynt* args, tAsynt* ret, bool subr) {
  if (subr) {
    *args = *orig;
    *ret = nullptr;
    return;
  }
  if (!Is_cell(*orig)) return;
  *orig = ReverseAsynt(*orig);
  *args = Expression1_Expressions(*orig) = ReverseAsynt(Expression1_Expressions(*orig));
  *ret = Expression1_Expression(*orig);
}

void MergeArguments(tAsynt* orig, tAsynt*, tAsynt*, bool subr) {
  if (subr || !Is_cell(*orig)) return;
  Expression1_Expressions(*orig) = ReverseAsynt(Expression1_Expressions(*orig));
  *orig = ReverseAsynt(*orig);
}

Function Split_function(tAsynt name, tAsynt params) {
  Function f{name, params, params, nullptr, IsSubroutine(SymInfo_Type(name))};
  SplitArguments(&f.params, &f.args, &f.ret, f.subr);
  if (!f.subr && !f.ret) sheepunp_abort("SplitArguments");
  return f;
}

void Merge_function(Function* f) { MergeArguments(&f->params, &f->args, &f->ret, f->subr); }

// ---- heads and ends

namespace {

const char* function_word(const Function& f) { return f.subr ? "subroutine " : "function "; }

}  // namespace

void Foutput_head(const Function& f, char recursive, char pure) {
  foutput_indentation(0);
  if (pure) foutput("pure ");
  if (recursive) foutput("recursive ");
  foutput(function_word(f));
  Foutput_name(f.name);
  foutput("(");
  Funparse_exprs(f.args, ", ");
  if (!f.subr) {
    foutput(") result(");
    FunparseVal(f.ret);
  }
  foutput(")\n\n");
  f_modify_indent(1);
}

// Two blanks stand before the name.
void Foutput_end(const Function& f) {
  f_modify_indent(-1);
  foutput_indentation(0);
  foutput("end ");
  foutput(function_word(f));
  foutput(" ");
  Foutput_name(f.name);
  foutput("\n\n");
}

void Declare_arguments(const Function& f, char (*arg)(tAsynt*), char (*ret)(tAsynt*)) {
  tAsynt args = f.args;
  TraverseAsyntTD2(&args, arg);
  tAsynt value = f.ret;
  if (value) TraverseAsyntTD2(&value, ret);
}

// ---- normal functions

namespace {

std::vector<tAsynt> scopes;  // the variable lists of a body, outer ones first

// The variables of a parallel loop that has become tasks are declared as records.
char collect_scopes(tAsynt* t) {
  if (Is_forall_task(*t)) return 0;
  if (Asynt_IsType(*t, kXModule)) scopes.push_back(XModule_Varlist(*t));
  if (Asynt_IsType(*t, kXBlock)) scopes.push_back(XBlock_Varlist(*t));
  return !Asynt_IsType(*t, kSymInfo) && !Asynt_IsType(*t, kAlgAuxiliary);
}

// All variables of a body as one list of symbols: Fortran has one scope only.
tAsynt variables_of(tAsynt body) {
  scopes.clear();
  TraverseAsyntTD2(&body, collect_scopes);
  const tAsynt end = mSymbol0();
  tAsynt result = end;
  tAsynt* tail = &result;
  for (tAsynt list : scopes)
    for (; Asynt_IsType(list, kSymbol1); list = Symbol1_Symbols(list)) {
      *tail = mSymbol1(Symbol1_Symbol(list), end);
      tail = &Symbol1_Symbols(*tail);
    }
  return result;
}

void begin_contains() {
  if (fcontains) return;
  fcontains = 1;
  foutput("\n");
  f_modify_indent(-1);
  foutput_indentation(0);
  foutput("contains\n\n");
  f_modify_indent(1);
}

// The modules of the run-time library; functions of the last one cannot use it.
void use_runtime(tAsynt name) {
  Foutput_use("ZentricaPrecision");
  Foutput_use("ZentricaSheep");
  if (GetFunctionPrefixContext(name) != "system")
    Foutput_use("zc_system");
  else
    line("! the \"use zc_system\" directive skipped ");
  line("implicit none");
}

void Funparse_normal_function(tAsynt name, tAsynt params, tAsynt body, char recursive, char pure) {
  fout_set(fout_implementation);
  Function f = Split_function(name, params);
  begin_contains();
  Foutput_head(f, recursive, pure);
  use_runtime(name);
  Declare_arguments(f, Foutput_impl_param_decl, Foutput_impl_var_decl);
  fmake_var_decls(variables_of(body));
  fmake_forall_decls(body);
  if (forall_atleast_one) foutput("\n");
  FunparseStmt(body);
  Foutput_end(f);
  Merge_function(&f);
}

void comment(fout_t stream, const char* text) {
  fout_set(stream);
  line(text);
}

bool Is_Algebratica(tAsynt body) {
  const char* language = ExternalDeclaration_Language(body);
  return language && std::strcmp(language, "Alg") == 0;
}

void write_function(tAsynt name, tAsynt params, tAsynt body, char recursive, char pure) {
  if (!Asynt_IsType(body, kExternalDeclaration)) {
    comment(fout_interface, "! Normal Zentrica function");
    Foutput_tm(name, params);
    Foutput_if(name, params);
    return Funparse_normal_function(name, params, body, recursive, pure);
  }
  if (Is_Algebratica(body)) {
    comment(fout_implementation, "! Callback function");
    return Funparse_callback_function(name, params, recursive, pure);
  }
  comment(fout_interface, "! External function");
  if (!glob_genmode_flag) Foutput_tm(name, params);
  Foutput_if(name, params);
  Funparse_external_function(name, params, recursive, pure);
}

}  // namespace

void Funparse_fn(tAsynt name, tAsynt params, tAsynt body, char recursive, char pure) {
  Begin_type_memory();
  write_function(name, params, body, recursive, pure);
  End_type_memory();
}

}  // namespace oz
