// Functions of numbers. Those that C++ has are used as they are; here stand the others.
#ifndef LM_SCALAR_H
#define LM_SCALAR_H

#include <math.h>
#include <stdlib.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <type_traits>

#include "lm_base.h"
#include "lm_complex.h"

namespace lumen {

template <class T>
inline constexpr bool is_number = std::is_arithmetic_v<T> || std::is_same_v<T, lm_complex>;

// The element type that a number has in an array.
template <class T>
using element_of = std::conditional_t<std::is_same_v<T, lm_complex>, lm_complex,
                                      std::conditional_t<std::is_floating_point_v<T>, double, int>>;

inline int to_int(double x, const char* operation) {
#ifndef LM_NO_CHECKS
  if (LM_UNLIKELY(!(x >= INT_MIN && x <= INT_MAX)))
    fail(std::string(operation) + ": " + std::to_string(x) + " does not fit into an int");
#else
  (void)operation;
#endif
  return static_cast<int>(x);
}

// A value of one element type as another; a real one loses its fraction in an int.
template <class To, class From>
LM_INLINE To convert(const From& v) {
  if constexpr (std::is_same_v<To, int> && std::is_floating_point_v<From>)
    return to_int(v, "conversion");
  else
    return static_cast<To>(v);
}

// ---- rounding

inline int ifloor(double x) { return to_int(std::floor(x), "ifloor"); }
inline int iceil(double x) { return to_int(std::ceil(x), "iceil"); }
// Halves go to the even neighbour.
inline int irint(double x) { return to_int(std::rint(x), "irint"); }
inline int ifloor(int x) { return x; }
inline int iceil(int x) { return x; }
inline int irint(int x) { return x; }
inline lm_complex ifloor(const lm_complex& z) { return {std::floor(z.real()), std::floor(z.imag())}; }
inline lm_complex iceil(const lm_complex& z) { return {std::ceil(z.real()), std::ceil(z.imag())}; }
inline lm_complex irint(const lm_complex& z) { return {std::rint(z.real()), std::rint(z.imag())}; }

// Quotient[a, b] is written floor(a / b). Of two ints the division has already cut the fraction off.
inline int floor(int x) { return x; }

// Towards zero.
inline int IntegerPart(double x) { return to_int(std::trunc(x), "IntegerPart"); }
inline int IntegerPart(int x) { return x; }
inline lm_complex IntegerPart(const lm_complex& z) { return {std::trunc(z.real()), std::trunc(z.imag())}; }

inline double FractionalPart(double x) { return x - std::trunc(x); }
inline double FractionalPart(int) { return 0; }
inline lm_complex FractionalPart(const lm_complex& z) { return {FractionalPart(z.real()), FractionalPart(z.imag())}; }

inline int sign(double x) { return x > 0 ? 1 : x < 0 ? -1 : 0; }
inline int sign(int x) { return x > 0 ? 1 : x < 0 ? -1 : 0; }

// ---- two arguments

// m - n*Floor[m/n]: the result has the sign of n.
inline int Mod(int m, int n) {
  if (LM_UNLIKELY(n == 0)) fail("Mod: " + std::to_string(m) + " modulo 0");
  if (n == -1) return 0;
  const int r = m % n;
  return r != 0 && (r < 0) != (n < 0) ? r + n : r;
}
inline double Mod(double m, double n) {
  const double r = std::fmod(m, n);
  return r != 0 && (r < 0) != (n < 0) ? r + n : r;
}
inline double Mod(int m, double n) { return Mod(static_cast<double>(m), n); }
inline double Mod(double m, int n) { return Mod(m, static_cast<double>(n)); }
inline lm_complex Mod(const lm_complex& m, const lm_complex& n) {
  const lm_complex q = m / n;
  return m - n * lm_complex(std::rint(q.real()), std::rint(q.imag()));
}

template <class A, class B, std::enable_if_t<std::is_arithmetic_v<A> && std::is_arithmetic_v<B>, int> = 0>
constexpr std::common_type_t<A, B> Max(A a, B b) {
  using T = std::common_type_t<A, B>;
  return T(a) < T(b) ? T(b) : T(a);
}
template <class A, class B, std::enable_if_t<std::is_arithmetic_v<A> && std::is_arithmetic_v<B>, int> = 0>
constexpr std::common_type_t<A, B> Min(A a, B b) {
  using T = std::common_type_t<A, B>;
  return T(b) < T(a) ? T(b) : T(a);
}

// ---- factorials

inline double XFactorial(double x) { return std::tgamma(x + 1); }
inline int XFactorial(int n) {
  if (n < 0 || n > 12) fail("Factorial: " + std::to_string(n) + " is not within 0 to 12");
  int f = 1;
  for (; n > 1; n--) f *= n;
  return f;
}
inline int XFactorial2(int n) {
  if (n < -1 || n > 19) fail("Factorial2: " + std::to_string(n) + " is not within -1 to 19");
  int f = 1;
  for (; n > 1; n -= 2) f *= n;
  return f;
}

}  // namespace lumen

#endif
