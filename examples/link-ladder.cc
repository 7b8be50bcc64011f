// The functions of ladder.oz over the link; the model's constants get their values here.

#include "alginter.h"
#include "ladder.h"

int main(int argc, char** argv) {
  Ladder_Tsections = 10;
  Ladder_TlineLength = 150;
  return AL_IF_main(argc, argv, AL_IF_functions, AL_IF_function_count);
}
