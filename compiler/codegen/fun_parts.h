// What the files of the module fun share.
#pragma once

#include "Asynt.h"

namespace oz {

// Reports a routine that met a tree it has no rule for, and leaves.
[[noreturn]] void fun_failure(const char* routine);

// ---- instance sets (fun_inst.cc)

// The definition f[i][x] of a member of an instance set becomes f[i, x], and the markers of the set's indices come off
// the declared type. Any other head stays as it is.
void Merge_member_head(tAsynt* head);

// Turns every use of a member of an instance set into an array access x[[i]] or, for a function, into a call f[i, x].
void Transform_instance_set(tAsynt* expr);

// To be called ahead of a definition: nothing of a set has been rewritten yet.
void Forget_members();

}  // namespace oz
