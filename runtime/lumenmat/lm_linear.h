// Products of vectors and matrices.
//
// a*b of two arrays is Dot: the last dimension of a is summed over together with the first one of b. Two vectors give
// a number, matrix and vector a vector, two matrices a matrix; no complex number is conjugated. In column-major storage
// every such product is one of matrices: a as (all but its last size) x (last size), b as (first size) x (the others).
#ifndef LM_LINEAR_H
#define LM_LINEAR_H

#include <numeric>
#include <vector>

#include "lm_ops.h"

namespace lumen {

// ---- kernels: c (m x n) = a (m x k) * b (k x n), all column-major

#if defined(__GNUC__) && defined(__SSE2__)
#define LM_VECTOR_KERNEL

// Blocks of a and b are copied into the order in which they are used; a tile of c, as many rows as a vector register
// holds twice and four columns, stays in registers. Products are summed up in the order of k, block after block, with
// one rounding per operation: all widths of registers give the same bits.
template <int W>
struct Kernel {
  using Vector __attribute__((vector_size(W * sizeof(double)), aligned(8), may_alias)) = double;
  static constexpr Index kRows = 2 * W, kCols = 4;
};

constexpr Index kBlockRows = 96, kBlockDepth = 256, kBlockCols = 1024;

// Strips of `width` lines, filled up with zeros.
inline void pack(double* to, const double* from, Index lines, Index depth, Index line_step, Index depth_step,
                 Index width) {
  for (Index i = 0; i < lines; i += width) {
    const Index present = std::min(width, lines - i);
    for (Index p = 0; p < depth; p++, to += width) {
      const double* source = from + i * line_step + p * depth_step;
      Index l = 0;
      for (; l < present; l++) to[l] = source[l * line_step];
      for (; l < width; l++) to[l] = 0;
    }
  }
}

// A tile of sums, to be added to c.
template <int W>
LM_INLINE void tile(const double* a, const double* b, Index depth, double* c, Index c_step, Index rows, Index cols) {
  using K = Kernel<W>;
  using Vector = typename K::Vector;
  Vector s00{}, s10{}, s01{}, s11{}, s02{}, s12{}, s03{}, s13{};
  for (Index p = 0; p < depth; p++, a += K::kRows, b += K::kCols) {
    const Vector a0 = *reinterpret_cast<const Vector*>(a), a1 = *reinterpret_cast<const Vector*>(a + W);
    s00 += a0 * b[0];
    s10 += a1 * b[0];
    s01 += a0 * b[1];
    s11 += a1 * b[1];
    s02 += a0 * b[2];
    s12 += a1 * b[2];
    s03 += a0 * b[3];
    s13 += a1 * b[3];
  }
  const Vector sums[4][2] = {{s00, s10}, {s01, s11}, {s02, s12}, {s03, s13}};
  for (Index j = 0; j < cols; j++)
    for (Index i = 0; i < rows; i++) c[i + j * c_step] += sums[j][i / W][i % W];
}

template <int W>
LM_INLINE void block(const double* a, const double* b, Index rows, Index depth, Index cols, double* c, Index c_step) {
  using K = Kernel<W>;
  for (Index j = 0; j < cols; j += K::kCols)
    for (Index i = 0; i < rows; i += K::kRows)
      tile<W>(a + i * depth, b + j * depth, depth, c + i + j * c_step, c_step, std::min(K::kRows, rows - i),
              std::min(K::kCols, cols - j));
}

#if defined(__x86_64__)
__attribute__((target("avx"))) inline void block_avx(const double* a, const double* b, Index rows, Index depth,
                                                     Index cols, double* c, Index c_step) {
  block<4>(a, b, rows, depth, cols, c, c_step);
}
#endif

inline Index rounded_up(Index n, Index unit) { return (n + unit - 1) / unit * unit; }

inline void multiply_blocked(const double* a, const double* b, double* c, Index m, Index k, Index n) {
#if defined(__x86_64__)
  const bool wide = __builtin_cpu_supports("avx");
#else
  const bool wide = false;
#endif
  const Index strip = wide ? 8 : Kernel<2>::kRows;
  std::vector<double> packed_a(static_cast<std::size_t>(rounded_up(kBlockRows, strip) * kBlockDepth));
  std::vector<double> packed_b(
      static_cast<std::size_t>(rounded_up(std::min(n, kBlockCols), 4) * std::min(k, kBlockDepth)));
  std::fill_n(c, m * n, 0.0);
  for (Index j = 0; j < n; j += kBlockCols)
    for (Index p = 0; p < k; p += kBlockDepth) {
      const Index cols = std::min(kBlockCols, n - j), depth = std::min(kBlockDepth, k - p);
      pack(packed_b.data(), b + p + j * k, cols, depth, k, 1, 4);
      for (Index i = 0; i < m; i += kBlockRows) {
        const Index rows = std::min(kBlockRows, m - i);
        pack(packed_a.data(), a + i + p * m, rows, depth, 1, m, strip);
#if defined(__x86_64__)
        if (wide) {
          block_avx(packed_a.data(), packed_b.data(), rows, depth, cols, c + i + j * m, m);
          continue;
        }
#endif
        block<2>(packed_a.data(), packed_b.data(), rows, depth, cols, c + i + j * m, m);
      }
    }
}
#endif

// Column by column; the plain way, and the faster one for small matrices.
template <class T, class A, class B>
void multiply_columns(const A* a, const B* b, T* c, Index m, Index k, Index n) {
  for (Index j = 0; j < n; j++) {
    T* d = c + j * m;
    std::fill_n(d, m, T(0));
    for (Index p = 0; p < k; p++) {
      const B factor = b[p + j * k];
      const A* column = a + p * m;
      for (Index i = 0; i < m; i++) d[i] = d[i] + column[i] * factor;
    }
  }
}

template <class T, class A, class B>
void multiply(const A* a, const B* b, T* c, Index m, Index k, Index n) {
#ifdef LM_VECTOR_KERNEL
  if constexpr (std::is_same_v<A, double> && std::is_same_v<B, double>)
    if (m >= 8 && n >= 4 && k >= 8) return multiply_blocked(a, b, c, m, k, n);
#endif
  multiply_columns(a, b, c, m, k, n);
}

// ---- Dot

template <class A, class B, IfArrays<A, B> = 0>
auto operator*(A&& a, B&& b) {
  const auto& x = value_of(a);
  const auto& y = value_of(b);
  constexpr int p = rank_of<A>, q = rank_of<B>;
  static_assert(p + q - 2 <= 4, "the product would have more than four dimensions");
  using S = element_type<A>;
  using U = element_type<B>;
  using T = element_of<decltype(std::declval<S>() * std::declval<U>())>;
  const Index k = y.shape().d[0];
  if (LM_UNLIKELY(x.shape().d[p - 1] != k)) fail_shapes("Dot", shape_text(x.shape()), shape_text(y.shape()));
  if constexpr (p == 1 && q == 1) {
    T sum = 0;
    for (Index i = 0; i < k; i++) sum = sum + x.elements()[i] * y.elements()[i];
    return sum;
  } else {
    Shape<p + q - 2> s;
    for (int i = 0; i < p - 1; i++) s.d[i] = x.shape().d[i];
    for (int i = 1; i < q; i++) s.d[p - 2 + i] = y.shape().d[i];
    Array<T, p + q - 2> c(s);
    if (c.size() == 0) return c;
    const Index m = std::accumulate(s.d, s.d + p - 1, Index{1}, std::multiplies<Index>{}), n = c.size() / m;
    multiply(x.elements(), y.elements(), c.elements(), m, k, n);
    return c;
  }
}

// ---- other products

template <class A, IfArray<A> = 0>
auto Transpose(A&& a) {
  static_assert(rank_of<A> == 2, "Transpose takes a matrix");
  const auto& x = value_of(a);
  const Index m = x.shape().d[0], n = x.shape().d[1];
  Array<element_type<A>, 2> t(n, m);
  for (Index i = 0; i < m; i++)
    for (Index j = 0; j < n; j++) t.elements()[j + i * n] = x.elements()[i + j * m];
  return t;
}

template <class A, class B, IfArrays<A, B> = 0>
auto OuterProduct(A&& a, B&& b) {
  static_assert(rank_of<A> == 1 && rank_of<B> == 1, "OuterProduct takes two vectors");
  const auto& x = value_of(a);
  const auto& y = value_of(b);
  using T = element_of<decltype(std::declval<element_type<A>>() * std::declval<element_type<B>>())>;
  const Index m = x.size(), n = y.size();
  Array<T, 2> c(m, n);
  for (Index j = 0; j < n; j++)
    for (Index i = 0; i < m; i++) c.elements()[i + j * m] = x.elements()[i] * y.elements()[j];
  return c;
}

inline void need_size(const char* operation, Index n, Index wanted) {
  if (LM_UNLIKELY(n != wanted))
    fail(std::string(operation) + ": a vector of " + std::to_string(wanted) + " elements is wanted, not of " +
         std::to_string(n));
}

// The vector that is perpendicular to all arguments, one argument fewer than the space has dimensions.
template <class A, IfArray<A> = 0>
auto Cross(A&& a) {
  const auto& x = value_of(a);
  need_size("Cross", x.size(), 2);
  Array<element_type<A>, 1> c(2);
  c(1) = -x(2);
  c(2) = x(1);
  return c;
}

template <class A, class B, IfArrays<A, B> = 0>
auto Cross(A&& a, B&& b) {
  const auto& x = value_of(a);
  const auto& y = value_of(b);
  need_size("Cross", x.size(), 3);
  need_size("Cross", y.size(), 3);
  Array<element_of<decltype(x(1) * y(1))>, 1> c(3);
  c(1) = x(2) * y(3) - x(3) * y(2);
  c(2) = x(3) * y(1) - x(1) * y(3);
  c(3) = x(1) * y(2) - x(2) * y(1);
  return c;
}

// The determinant of K vectors in K of their places.
template <int K, class T>
T determinant(const Array<T, 1>* vectors, const int* places) {
  if constexpr (K == 1) {
    return vectors[0](places[0]);
  } else {
    T sum = 0;
    int rest[K - 1];
    for (int k = 0; k < K; k++) {
      std::copy(places, places + k, rest);
      std::copy(places + k + 1, places + K, rest + k);
      const T term = vectors[0](places[k]) * determinant<K - 1>(vectors + 1, rest);
      sum = k % 2 == 0 ? sum + term : sum - term;
    }
    return sum;
  }
}

template <class... A, std::enable_if_t<(sizeof...(A) > 2) && (is_array<A> && ...), int> = 0>
auto Cross(A&&... a) {
  constexpr int K = sizeof...(A);
  using T = element_of<decltype((std::declval<element_type<A>>() * ...))>;
  const Array<T, 1> vectors[] = {Array<T, 1>(value_of(a))...};
  for (const Array<T, 1>& v : vectors) need_size("Cross", v.size(), K + 1);
  Array<T, 1> result(K + 1);
  for (int i = 1; i <= K + 1; i++) {
    int places[K];
    for (int k = 0; k < K; k++) places[k] = k + 1 < i ? k + 1 : k + 2;
    const T minor = determinant<K>(vectors, places);
    result(i) = (K + 1 + i) % 2 == 0 ? minor : T(0) - minor;
  }
  return result;
}

}  // namespace lumen

#endif
