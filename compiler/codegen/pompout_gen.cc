// The part of the C++ output layer that leans on the generator above it.
#include "efunc.h"
#include "pompout.h"
#include "pompunp.h"

namespace oz {

// An operand of its parent's own level is bracketed on either side, so that no rule of associativity is needed.
void cpunparse_pri(tAsynt t, int parent_pri) {
  const bool brackets = CPpri(t) <= parent_pri;
  if (brackets) cpoutput("(");
  CPunparseVal(t);
  if (brackets) cpoutput(")");
}

void cpmake_var_decls(tAsynt t) { WalkAsynt(&t, CPmake_var_decl); }

void cpexit() {
  perform_global_vardecls();
  purge_remembered_vardecls();
}

}  // namespace oz
