// The functions of bearing.oz over the link; the model's constants get their values here.

#include "alginter.h"
#include "bearing.h"

int main(int argc, char** argv) {
  Bearing_Tmodulus = 2.08e11;
  return AL_IF_main(argc, argv, AL_IF_functions, AL_IF_function_count);
}
