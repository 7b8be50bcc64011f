// What an array prints, which the tests of the array library compare.
#pragma once

#include <sstream>
#include <string>

template <class A>
std::string text(const A& a) {
  std::ostringstream out;
  out << a;
  return out.str();
}
