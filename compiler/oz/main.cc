// The entry: a command-line compiler with -s, else a program that the host starts over the link.

#include "Errors.h"
#include "System.h"
#include "alink.h"
#include "oz.h"
#include "server.h"

#ifdef OZ_SANITIZE
#include <sys/resource.h>

namespace {

// The frames of this build are several times as large as usual. The limit counts when the stack grows.
void enlarge_stack() {
  rlimit limit;
  if (getrlimit(RLIMIT_STACK, &limit) != 0) return;
  limit.rlim_cur = rlim_t{100} << 20;
  if (limit.rlim_max != RLIM_INFINITY && limit.rlim_cur > limit.rlim_max) limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_STACK, &limit);
}

}  // namespace
#else
namespace {
void enlarge_stack() {}
}  // namespace
#endif

int main(int argc, char** argv) {
  enlarge_stack();
  oz::BEGIN_System();
  if (!oz::installed_by_alg(argc, argv)) return oz::standalone_main(argc, argv);
  oz::Errors_Exit = oz::last_exit_proc;
  return oz::ALMain(argc, argv);
}
