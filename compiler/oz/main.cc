// The entry: a command-line compiler with -s, else a program that the host starts over the link.

#include "System.h"
#include "oz.h"
#include "ozerrors.h"

int main(int argc, char** argv) {
  oz::BEGIN_System();
  if (oz::installed_by_alg(argc, argv)) oz::die_msg("This build serves no link: start it with -s and a model file");
  return oz::standalone_main(argc, argv);
}
