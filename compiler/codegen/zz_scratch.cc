// scratch
#include "Asynt.h"
namespace oz {
__attribute__((weak)) char Fmake_forall_decl(tAsynt*) { return 0; }
__attribute__((weak)) char Foutput_impl_param_decl(tAsynt*) { return 0; }
__attribute__((weak)) char Foutput_impl_var_decl(tAsynt*) { return 0; }
__attribute__((weak)) int CPpri(tAsynt) { return 0; }
__attribute__((weak)) int Fpri(tAsynt) { return 0; }
__attribute__((weak)) tAsynt WithoutDynIndices(tAsynt) { return 0; }
__attribute__((weak)) void CPoutput_var_decls_and_inits(tAsynt, tAsynt) {}
__attribute__((weak)) void CPunparseStmt(tAsynt) {}
__attribute__((weak)) void CPunparseVal(tAsynt) {}
__attribute__((weak)) void CPunparse_exprs(tAsynt, const char*) {}
__attribute__((weak)) void Foutput_array_dims(tAsynt) {}
__attribute__((weak)) void Foutput_global_var_decl(tAsynt) {}
__attribute__((weak)) void Foutput_mangled_name(tAsynt) {}
__attribute__((weak)) void Foutput_type(tAsynt) {}
__attribute__((weak)) void FunparseVal(tAsynt) {}
__attribute__((weak)) void Funparse_fn(tAsynt, tAsynt, tAsynt, char, char) {}
__attribute__((weak)) void Rewrite_array_init(tAsynt) {}
__attribute__((weak)) void Rewrite_shapeconv(tAsynt*, tAsynt*) {}
__attribute__((weak)) void fexit() {}
__attribute__((weak)) void finit() {}
}
