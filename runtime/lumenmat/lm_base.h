// What all parts of lumenmat share: errors, shapes, ranges.
//
// An error of shape or index throws lumen_error, whose text names the operation, the shapes and the index. With
// LM_NO_CHECKS defined, the checks of single subscripts are left out: x(i) is then one load. A subscript that is not
// within 1..n, nor a constant like -1, is undefined behaviour then; so is a real number without an int near it that
// becomes an int. Shapes and ranges are checked always, since that costs once per operation.
#ifndef LM_BASE_H
#define LM_BASE_H

#include <cstddef>
#include <stdexcept>
#include <string>

#if defined(__GNUC__)
#define LM_COLD __attribute__((noinline, cold))
#define LM_UNLIKELY(c) __builtin_expect(!!(c), 0)
#if defined(__SANITIZE_ADDRESS__)
#define LM_INLINE inline  // with all their checks, functions that must be put in line take minutes to compile
#else
#define LM_INLINE inline __attribute__((always_inline))
#endif
#else
#define LM_COLD
#define LM_UNLIKELY(c) (c)
#define LM_INLINE inline
#endif

/* The calling convention of Fortran routines. Only some compilers need a word there. */
#ifndef ZC_STDCALL
#define ZC_STDCALL
#endif

namespace lumen {

class lumen_error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

using Index = std::ptrdiff_t;

// The sizes of an array, the first subscript's first.
template <int N>
struct Shape {
  Index d[N];

  Index total() const {
    Index n = 1;
    for (int k = 0; k < N; k++) n *= d[k];
    return n;
  }
  bool operator==(const Shape& o) const {
    for (int k = 0; k < N; k++)
      if (d[k] != o.d[k]) return false;
    return true;
  }
  bool operator!=(const Shape& o) const { return !(*this == o); }
};

// "{2, 3}", as the language writes dimensions.
inline std::string shape_text(const Index* d, int n) {
  std::string text = "{";
  for (int k = 0; k < n; k++) text += (k ? ", " : "") + std::to_string(d[k]);
  return text + "}";
}

template <int N>
std::string shape_text(const Shape<N>& s) {
  return shape_text(s.d, N);
}

[[noreturn]] LM_COLD inline void fail(const std::string& text) { throw lumen_error(text); }

[[noreturn]] LM_COLD inline void fail_shapes(const char* operation, const std::string& a, const std::string& b) {
  fail(std::string(operation) + ": the shapes " + a + " and " + b + " do not fit");
}

// Whether a * b is beyond all numbers; else *product is it. Neither is below 0.
LM_INLINE bool product_overflows(Index a, Index b, Index* product) {
#if defined(__GNUC__)
  return __builtin_mul_overflow(a, b, product);
#else
  if (b > 0 && a > PTRDIFF_MAX / b) return true;
  *product = a * b;
  return false;
#endif
}

[[noreturn]] LM_COLD inline void fail_empty(const char* operation) { fail(std::string(operation) + ": empty array"); }

// ---- subscripts

[[noreturn]] LM_COLD inline void fail_subscript(Index i, const Index* d, int rank, int k) {
  fail("subscript " + std::to_string(k + 1) + " of an array " + shape_text(d, rank) + " is " + std::to_string(i) +
       ", not within 1 to " + std::to_string(d[k]));
}

// A subscript below zero counts from the end: -1 is the last element. Nothing is called here that returns, so that the
// loop around may keep sizes and addresses in registers.
LM_INLINE Index index_from_end(Index i, const Index* d, int rank, int k) {
  if (LM_UNLIKELY(i >= 0 || i < -d[k])) fail_subscript(i, d, rank, k);
  return d[k] + i + 1;
}

// The place of subscript i, counted from zero. Without checks only a constant can count from the end.
LM_INLINE Index checked_offset(Index i, const Index* d, int rank, int k) {
#ifndef LM_NO_CHECKS
  if (LM_UNLIKELY(static_cast<std::size_t>(i - 1) >= static_cast<std::size_t>(d[k]))) i = index_from_end(i, d, rank, k);
#else
  (void)rank;
#if defined(__GNUC__) && defined(__OPTIMIZE__)
  if (__builtin_constant_p(i) && i < 0) i += d[k] + 1;
#else
  if (i < 0) i += d[k] + 1;
#endif
#endif
  return i - 1;
}

// The same for an element of an array. The loop around may keep the array's sizes in registers only if nothing gets
// hold of the array: what fails is given them by value. The bounds are compared one by one, since what the loop says of
// its variable often settles the one or the other; n is s.d[k], read beforehand.
template <int N>
[[noreturn]] LM_COLD void fail_subscript(Index i, Shape<N> s, int k) {
  fail_subscript(i, s.d, N, k);
}
template <int N>
LM_INLINE Index element_offset(Index i, Index n, const Shape<N>& s, int k) {
#ifndef LM_NO_CHECKS
  if (LM_UNLIKELY(i < 1 || i > n)) {
    if (LM_UNLIKELY(i >= 0 || i < -n)) fail_subscript(i, s, k);
    i += n + 1;
  }
  return i - 1;
#else
  (void)n;
  return checked_offset(i, s.d, N, k);
#endif
}

// Elements a to b, both included. Ends below zero count from the end: R(1,-1) is everything. R(k,k-1) is empty.
struct R {
  Index first, last;
  R(Index a, Index b) : first(a), last(b) {}
};

// A whole dimension.
struct Whole {};
inline constexpr Whole All{};
inline constexpr Whole XAll{};

// Offset of the first element and number of elements of a range.
struct Span {
  Index start, n;
};

inline Span span_of(Whole, const Index* d, int, int k) { return {0, d[k]}; }

inline Span span_of(const R& r, const Index* d, int rank, int k) {
  const Index a = r.first < 0 ? r.first + d[k] + 1 : r.first;
  const Index b = r.last < 0 ? r.last + d[k] + 1 : r.last;
  if (LM_UNLIKELY(a < 1 || b > d[k] || b < a - 1))
    fail("range R(" + std::to_string(r.first) + "," + std::to_string(r.last) + ") as subscript " +
         std::to_string(k + 1) + " of an array " + shape_text(d, rank) + " is not within 1 to " + std::to_string(d[k]));
  return {a - 1, b - a + 1};
}

inline Span span_of(Index i, const Index* d, int rank, int k) { return span_of(R(i, i), d, rank, k); }

}  // namespace lumen

#endif
