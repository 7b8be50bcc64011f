// The functions of tanks.oz over the link; the model's constants get their values here.

#include "alginter.h"
#include "tanks.h"

int main(int argc, char** argv) {
  Tanks_Tgravity = 9.81;
  return AL_IF_main(argc, argv, AL_IF_functions, AL_IF_function_count);
}
