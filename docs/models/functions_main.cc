#include <iostream>

#include "functions.h"

int main() {
  doubleN v(3), rest;
  v(1) = 1.0;
  v(2) = 2.0;
  v(3) = 6.0;
  double mean;
  Functions_Tbalanced(3, v, mean, rest);
  std::cout << mean << " " << rest(1) << " " << rest(3) << "\n";
}
