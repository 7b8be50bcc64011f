// Complex numbers that mix with int and double without casts: 2*z, z+1, pow(z, 3).
#ifndef LM_COMPLEX_H
#define LM_COMPLEX_H

#include <cmath>
#include <complex>
#include <ostream>
#include <type_traits>

namespace lumen {

// Two doubles, the real part first: laid out like DOUBLE COMPLEX of Fortran and double _Complex of C. A product is
// (a*c-b*d, a*d+b*c), with no special case for infinities; quotients and functions are those of std::complex.
class lm_complex {
 public:
  constexpr lm_complex(double re = 0, double im = 0) : v_{re, im} {}
  lm_complex(const std::complex<double>& z) : v_{z.real(), z.imag()} {}
  // a + I*b, as the generator writes it also for complex a and b.
  constexpr lm_complex(const lm_complex& a, const lm_complex& b) : v_{a.v_[0] - b.v_[1], a.v_[1] + b.v_[0]} {}
  operator std::complex<double>() const { return {v_[0], v_[1]}; }

  constexpr double real() const { return v_[0]; }
  constexpr double imag() const { return v_[1]; }
  // For routines of other languages.
  double* pairPtr() { return v_; }
  const double* pairPtr() const { return v_; }

  lm_complex& operator+=(const lm_complex& o) { return *this = *this + o; }
  lm_complex& operator-=(const lm_complex& o) { return *this = *this - o; }
  lm_complex& operator*=(const lm_complex& o) { return *this = *this * o; }
  lm_complex& operator/=(const lm_complex& o) { return *this = *this / o; }

  // The operators are found by their argument's type only; an int or double beside it is converted.
  friend constexpr lm_complex operator+(const lm_complex& a) { return a; }
  friend constexpr lm_complex operator-(const lm_complex& a) { return {-a.v_[0], -a.v_[1]}; }
  friend constexpr lm_complex operator+(const lm_complex& a, const lm_complex& b) {
    return {a.v_[0] + b.v_[0], a.v_[1] + b.v_[1]};
  }
  friend constexpr lm_complex operator-(const lm_complex& a, const lm_complex& b) {
    return {a.v_[0] - b.v_[0], a.v_[1] - b.v_[1]};
  }
  friend constexpr lm_complex operator*(const lm_complex& a, const lm_complex& b) {
    return {a.v_[0] * b.v_[0] - a.v_[1] * b.v_[1], a.v_[0] * b.v_[1] + a.v_[1] * b.v_[0]};
  }
  friend lm_complex operator/(const lm_complex& a, const lm_complex& b) {
    if (b.v_[1] == 0) return {a.v_[0] / b.v_[0], a.v_[1] / b.v_[0]};
    return std::complex<double>(a) / std::complex<double>(b);
  }
  friend constexpr bool operator==(const lm_complex& a, const lm_complex& b) {
    return a.v_[0] == b.v_[0] && a.v_[1] == b.v_[1];
  }
  friend constexpr bool operator!=(const lm_complex& a, const lm_complex& b) { return !(a == b); }
  friend std::ostream& operator<<(std::ostream& out, const lm_complex& a) {
    return out << "(" << a.v_[0] << "," << a.v_[1] << ")";
  }

 private:
  double v_[2];
};

// As arguments and as values of such routines.
static_assert(sizeof(lm_complex) == 2 * sizeof(double) && std::is_standard_layout_v<lm_complex> &&
              std::is_trivially_copyable_v<lm_complex>);

// Elements as routines of other languages get them.
template <class T>
T* foreign_pointer(T* elements) {
  return elements;
}
inline double* foreign_pointer(lm_complex* elements) { return reinterpret_cast<double*>(elements); }
inline const double* foreign_pointer(const lm_complex* elements) { return reinterpret_cast<const double*>(elements); }

inline double re(const lm_complex& z) { return z.real(); }
inline double im(const lm_complex& z) { return z.imag(); }
inline double arg(const lm_complex& z) { return std::atan2(z.imag(), z.real()); }
inline lm_complex conjugate(const lm_complex& z) { return {z.real(), -z.imag()}; }
inline double abs(const lm_complex& z) { return std::hypot(z.real(), z.imag()); }

inline lm_complex sign(const lm_complex& z) { return z == 0.0 ? lm_complex(0) : z / abs(z); }

#define LM_COMPLEX_FUNCTION(f) \
  inline lm_complex f(const lm_complex& z) { return std::f(std::complex<double>(z)); }
LM_COMPLEX_FUNCTION(sin)
LM_COMPLEX_FUNCTION(asin)
LM_COMPLEX_FUNCTION(sinh)
LM_COMPLEX_FUNCTION(asinh)
LM_COMPLEX_FUNCTION(cos)
LM_COMPLEX_FUNCTION(acos)
LM_COMPLEX_FUNCTION(cosh)
LM_COMPLEX_FUNCTION(acosh)
LM_COMPLEX_FUNCTION(tan)
LM_COMPLEX_FUNCTION(atan)
LM_COMPLEX_FUNCTION(tanh)
LM_COMPLEX_FUNCTION(atanh)
LM_COMPLEX_FUNCTION(exp)
LM_COMPLEX_FUNCTION(log)
LM_COMPLEX_FUNCTION(sqrt)
#undef LM_COMPLEX_FUNCTION

// A whole exponent is a run of products, so that pow(z, 2) is z*z and pow(-1, 3) has no imaginary part.
inline lm_complex pow(const lm_complex& z, int n) {
  lm_complex power = 1, square = z;
  for (unsigned m = n < 0 ? 0u - static_cast<unsigned>(n) : static_cast<unsigned>(n); m != 0; m >>= 1) {
    if (m & 1) power *= square;
    square *= square;
  }
  return n < 0 ? 1 / power : power;
}
inline lm_complex pow(const lm_complex& z, double x) { return std::pow(std::complex<double>(z), x); }
inline lm_complex pow(const lm_complex& z, const lm_complex& w) {
  return z == 0.0 && w.real() > 0 ? lm_complex(0)
                                  : lm_complex(std::pow(std::complex<double>(z), std::complex<double>(w)));
}
inline lm_complex pow(double x, const lm_complex& w) { return pow(lm_complex(x), w); }
inline lm_complex pow(int x, const lm_complex& w) { return pow(lm_complex(x), w); }

// The angle of the point (x, y): exp(I*angle) is (x + I*y)/sqrt(x^2 + y^2).
inline lm_complex atan2(const lm_complex& y, const lm_complex& x) {
  const lm_complex turned = log(lm_complex(x, y) / sqrt(x * x + y * y));
  return {turned.imag(), -turned.real()};
}

}  // namespace lumen

#endif
