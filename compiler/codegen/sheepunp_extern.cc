// External functions and callbacks of the Fortran generator. An external function is an interface body, which the
// module includes; a callback is a function of the module that sends its arguments to the host and fetches the value:
//
//   call ALIF_START(1, "f")
//   call putdouble(x)
//   call ALIF_WAIT()
//   call cbgetdouble(zc_O1)
#include "ozerrors.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"

namespace oz {

void Funparse_external_function(tAsynt name, tAsynt params, char recursive, char pure) {
  fout_set(fout_external);
  Function f = Split_function(name, params);
  foutput("! External function ");
  Foutput_symbol_name(name, false);
  foutput("\n");
  Foutput_head(f, recursive, pure);
  Foutput_use("ZentricaPrecision");
  Foutput_use("ZentricaSheep");
  foutput("implicit none\n");
  Declare_arguments(f, Foutput_impl_param_decl, Foutput_impl_var_decl);
  Foutput_end(f);
  Merge_function(&f);
}

namespace {

bool is_variable(tAsynt t) {
  return Asynt_IsType(t, kSymbol) &&
         (Asynt_IsType(Symbol_SymInfo(t), kAbsoluteSymbol) || Asynt_IsType(Symbol_SymInfo(t), kOutParam));
}

// Arrays are sent through a pointer.
char Foutput_cb_put(tAsynt* t) {
  if (!is_variable(*t)) return !Asynt_IsType(*t, kSymbol) && !Asynt_IsType(*t, kAlgAuxiliary);
  const tAsynt sym = Symbol_SymInfo(*t);
  const char* prefix = Is_array_type(SymInfo_Type(sym)) ? "zc_ptr_" : "";
  if (*prefix) {
    foutput_indentation(0);
    Foutput_name_with(prefix, sym, "");
    foutput(" => ");
    Foutput_name(sym);
    foutput("\n");
  }
  foutput_indentation(0);
  foutput("call ");
  foutput(if_func_put[Type_code(SymInfo_Type(sym))]);
  foutput("(");
  Foutput_name_with(prefix, sym, "");
  foutput(")\n");
  return 0;
}

void Foutput_cb_get(tAsynt ret) {
  if (!is_variable(ret)) return error_msg("F90 unparser: Cannot unparse callback return variable.\n");
  foutput_indentation(0);
  foutput("call ");
  foutput(if_func_cbget[Type_code(SymInfo_Type(Symbol_SymInfo(ret)))]);
  foutput("(");
  FunparseVal(ret);
  foutput(")\n");
}

void call_host(const Function& f) {
  foutput_indentation(0);
  foutput("call ALIF_START(");
  foutput_int(LengthExpressions(f.args));
  foutput(", \"");
  foutput(GetOriginalName(f.name));
  foutput("\")\n");
  tAsynt args = f.args;
  TraverseAsyntTD2(&args, Foutput_cb_put);
  foutput_indentation(0);
  foutput("call ALIF_WAIT()\n");
}

}  // namespace

void Funparse_callback_function(tAsynt name, tAsynt params, char recursive, char pure) {
  fout_set(fout_implementation);
  Function f = Split_function(name, params);
  Foutput_head(f, recursive, pure);
  Foutput_use("ZentricaPrecision");
  Foutput_use("AlgeLinkInterface");
  foutput_indentation(0);
  foutput("implicit none\n");
  Declare_arguments(f, Foutput_cb_param_decl, Foutput_cb_var_decl);
  call_host(f);
  if (f.subr) {
    foutput_indentation(0);
    foutput("call cbgetnull()\n");
  } else {
    Foutput_cb_get(f.ret);
  }
  Foutput_end(f);
  Merge_function(&f);
}

}  // namespace oz
