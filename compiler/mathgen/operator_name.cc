// How each kind of node is spelt in the host language: its own name, unless operator_name.def says otherwise.

#include "operator_name.h"

namespace oz {

const char* operator_name[kAsyntKinds];

void init_operator_name() {
  for (unsigned kind = 0; kind < kAsyntKinds; kind++) operator_name[kind] = Asynt_NodeName(kind);
#define SPELT(kind, priority, spelling, clash) operator_name[k##kind] = spelling;
#include "operator_name.def"
}

}  // namespace oz
