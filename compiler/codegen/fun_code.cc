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
void Funparse_parallel_fn(tAsynt si, tAsynt args, tAsynt rhs, char is_recursive) {
  Transform_forall(&rhs);
  Funparse_fn(si, args, rhs, is_recursive, 0);
  Funparse_forall_fn(args, rhs);
}

bool is_external(tAsynt rhs) { return Asynt_Kind(rhs) == kExternBody; }
char recursive(tAsynt rhs) { return is_external(rhs) ? 0 : recursive_fun(rhs); }
char pure(tAsynt rhs) { return is_external(rhs) ? 0 : pure_fun(rhs); }

// Hands a prepared function to the generator. Fortran is told whether it calls itself, HPF also whether it is pure.
void Unparse(tAsynt lhs, tAsynt rhs) {
  if (Asynt_Kind(lhs) != kSimpleFFE) die_msg("Unparser: Unknown language.\n");
  tAsynt si = Symbol_SymInfo(SimpleFFE_Name(lhs));
  tAsynt args = FullFormExpression_Args(lhs);
  switch (genlang) {
    case cplusplus: CPunparse_fn(si, args, rhs); return;
    case hpf: Funparse_fn(si, args, rhs, recursive(rhs), pure(rhs)); return;
    case fortran90:
      if (cg_opt.parallel) return Funparse_parallel_fn(si, args, rhs, recursive(rhs));
      Funparse_fn(si, args, rhs, recursive(rhs), 0);
      return;
    default: die_msg("Unparser: Unknown language.\n");
  }
}

}  // namespace

void Make_code_for_fun(string name, tAsynt t) {
  fun_name = name;
  title_msg("In function %s:", fun_name);
  Prepare_fun(t);
  if (!is_external(Binary_RHS(t)) && genlang == fortran90) Rewrite_array_init(t);
  CheckAsynt(t);
  Unparse(Binary_LHS(t), Binary_RHS(t));
  title_msg(nullptr);
}

}  // namespace oz
