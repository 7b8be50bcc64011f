// One function from its definition to the generator of the target language.

#include "Asynt.h"
#include "efunc.h"
#include "fun.h"
#include "ozerrors.h"
#include "pompunp_fn.h"
#include "sheepconv.h"
#include "sheepforall.h"
#include "sheepunp.h"

namespace oz {

namespace {

// The text of the task procedures follows that of the function.
void Funparse_parallel_fn(tAsynt si, tAsynt args, tAsynt rhs, char recursive) {
  Transform_forall(&rhs);
  Funparse_fn(si, args, rhs, recursive, 0);
  Funparse_forall_fn(args, rhs);
}

// Hands a prepared function to the generator. Only HPF has pure functions.
void Unparse(tAsynt lhs, tAsynt rhs, char recursive, char pure) {
  if (Asynt_Kind(lhs) != kSimpleFFE) die_msg("Unparser: Unknown language.\n");
  tAsynt si = Symbol_SymInfo(SimpleFFE_Name(lhs));
  tAsynt args = FullFormExpression_Args(lhs);
  switch (genlang) {
    case cplusplus: CPunparse_fn(si, args, rhs); return;
    case hpf: Funparse_fn(si, args, rhs, recursive, pure); return;
    case fortran90:
      if (cg_opt.parallel) return Funparse_parallel_fn(si, args, rhs, recursive);
      Funparse_fn(si, args, rhs, recursive, 0);
      return;
    default: die_msg("Unparser: Unknown language.\n");
  }
}

}  // namespace

void Make_code_for_fun(string name, tAsynt t) {
  fun_name = name;
  title_msg("In function %s:", fun_name);
  Prepare_fun(t);
  const bool external = Asynt_Kind(Binary_RHS(t)) == kExternBody;
  if (!external && genlang == fortran90) Rewrite_array_init(t);
  const char recursive = external ? 0 : recursive_fun(Binary_RHS(t));
  const char pure = external ? 0 : pure_fun(Binary_RHS(t));
  CheckAsynt(t);
  Unparse(Binary_LHS(t), Binary_RHS(t), recursive, pure);
  title_msg(nullptr);
}

}  // namespace oz
