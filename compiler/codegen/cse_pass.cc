// A tree by way of parallel extraction to one list of assignments.
#include "cse.h"
#include "parel.h"

namespace oz {

tAsynt do_cse(tAsynt tree) {
  init_cse();
  Parallelize(tree);
  return finish_cse();
}

}  // namespace oz
