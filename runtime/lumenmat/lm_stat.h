// Statistics of lists. Of a vector they are numbers, of a matrix they go down the columns: a vector with one value for
// each column, and so on for higher ranks.
//
//   total               sum
//   mean                total/n
//   variance            sum of |x - mean|^2 over n - 1: the unbiased estimate
//   standard_deviation  root of the variance
//   median              the middle of the sorted values, or the mean of the two in the middle
//   quantile            with four parameters, as in Hyndman and Fan, "Sample quantiles in statistical packages", The
//                       American Statistician 50 (1996): for the sorted values s of n and the parameters {{a, b},
//                       {c, d}}, let h = a + (n + b)*q; the q-quantile lies between s[floor(h)] and s[ceiling(h)], at
//                       the share c + d*(h - floor(h)) of the way. Places outside 1..n are taken as the nearest end.
//                       Without parameters they are {{0, 0}, {1, 0}}: the smallest value with a share q of all values
//                       at or below it (definition 1 there).
#ifndef LM_STAT_H
#define LM_STAT_H

#include <vector>

#include "lm_list.h"

namespace lumen {

// f of each column's values, from the first to the last subscript; V is the type of a value.
template <class V, class A, class F>
auto by_columns(const char* operation, const A& a, Index least, const F& f) {
  const auto& x = value_of(a);
  constexpr int N = rank_of<A>;
  const Index n = x.shape().d[0];
  if (n < least)
    fail(std::string(operation) + ": at least " + std::to_string(least) + " values are wanted, not " +
         std::to_string(n));
  if constexpr (N == 1) {
    return V(f(x.elements(), n));
  } else {
    Array<V, N - 1> result(part_shape<V>(x.shape()));
    for (Index j = 0; j < result.size(); j++) result.elements()[j] = f(x.elements() + j * n, n);
    return result;
  }
}

template <class T>
T sum_of(const T* x, Index n) {
  T sum = 0;
  for (Index i = 0; i < n; i++) sum = sum + x[i];
  return sum;
}

template <class T>
using mean_type = std::conditional_t<std::is_same_v<T, lm_complex>, lm_complex, double>;

template <class T>
mean_type<T> mean_of(const T* x, Index n) {
  mean_type<T> sum = 0;
  for (Index i = 0; i < n; i++) sum = sum + x[i];
  return sum / static_cast<double>(n);
}

inline double squared(double x) { return x * x; }
inline double squared(const lm_complex& z) { return z.real() * z.real() + z.imag() * z.imag(); }

template <class T>
double variance_of(const T* x, Index n) {
  const mean_type<T> mean = mean_of(x, n);
  double sum = 0;
  for (Index i = 0; i < n; i++) sum += squared(x[i] - mean);
  return sum / static_cast<double>(n - 1);
}

template <class T>
std::vector<T> sorted_values(const T* x, Index n) {
  std::vector<T> s(x, x + n);
  std::sort(s.begin(), s.end(), [](const T& a, const T& b) { return precedes(a, b); });
  return s;
}

template <class T>
mean_type<T> median_of(const T* x, Index n) {
  const std::vector<T> s = sorted_values(x, n);
  const std::size_t middle = s.size() / 2;
  const mean_type<T> upper = s[middle];
  return n % 2 == 1 ? upper : (mean_type<T>(s[middle - 1]) + upper) / 2.0;
}

struct QuantileParameters {
  double a = 0, b = 0, c = 1, d = 0;
};

inline double quantile_of(const std::vector<double>& s, double q, const QuantileParameters& p) {
  if (!(q >= 0 && q <= 1)) fail("Quantile: " + std::to_string(q) + " is not within 0 to 1");
  const double n = static_cast<double>(s.size());
  const double h = p.a + (n + p.b) * q, below = std::floor(h);
  // With 1.0 first, what is not a number is 1, too.
  const auto value = [&](double place) { return s[static_cast<std::size_t>(std::min(std::max(1.0, place), n)) - 1]; };
  const double low = value(below), high = value(std::ceil(h));
  return low + (high - low) * (p.c + p.d * (h - below));
}

template <class P>
QuantileParameters quantile_parameters(const P& p) {
  const auto& m = value_of(p);
  if (m.shape().d[0] != 2 || m.shape().d[1] != 2) fail_shapes("Quantile", shape_text(m.shape()), "{2, 2}");
  return {double(m(1, 1)), double(m(1, 2)), double(m(2, 1)), double(m(2, 2))};
}

template <class T>
std::vector<double> sorted_reals(const T* x, Index n) {
  return sorted_values(std::vector<double>(x, x + n).data(), n);
}

template <class A>
auto quantile(const A& a, double q, const QuantileParameters& p) {
  return by_columns<double>("Quantile", a, 1,
                            [&](const auto* x, Index n) { return quantile_of(sorted_reals(x, n), q, p); });
}

// One part of the result for each q.
template <class A, class Q>
auto quantiles(const A& a, const Q& list, const QuantileParameters& p) {
  const auto& x = value_of(a);
  const auto& q = value_of(list);
  constexpr int N = rank_of<A>;
  const Index n = x.shape().d[0], m = q.size();
  if (n < 1) fail_empty("Quantile");
  Array<double, N> result(with_parts(x.shape(), m));
  for (Index j = 0; j < x.size() / n; j++) {
    const std::vector<double> s = sorted_reals(x.elements() + j * n, n);
    for (Index i = 0; i < m; i++) result.elements()[i + j * m] = quantile_of(s, q.elements()[i], p);
  }
  return result;
}

// ---- by their names in generated code

template <class A, IfArray<A> = 0>
auto lumen_total(const A& a) {
  return by_columns<element_type<A>>("Total", a, 0, [](const auto* x, Index n) { return sum_of(x, n); });
}
template <class A, IfArray<A> = 0>
auto lumen_mean(const A& a) {
  return by_columns<mean_type<element_type<A>>>("Mean", a, 1, [](const auto* x, Index n) { return mean_of(x, n); });
}
template <class A, IfArray<A> = 0>
auto lumen_variance(const A& a) {
  return by_columns<double>("Variance", a, 2, [](const auto* x, Index n) { return variance_of(x, n); });
}
template <class A, IfArray<A> = 0>
auto lumen_standard_deviation(const A& a) {
  return by_columns<double>("StandardDeviation", a, 2,
                            [](const auto* x, Index n) { return std::sqrt(variance_of(x, n)); });
}
template <class A, IfArray<A> = 0>
auto lumen_median(const A& a) {
  return by_columns<mean_type<element_type<A>>>("Median", a, 1, [](const auto* x, Index n) { return median_of(x, n); });
}
template <class A, IfArray<A> = 0>
auto lumen_quantile2(const A& a, double q) {
  return quantile(a, q, {});
}
template <class A, class P, IfArray<A> = 0>
auto lumen_quantile3(const A& a, double q, const P& parameters) {
  return quantile(a, q, quantile_parameters(parameters));
}
template <class A, class Q, IfArray<A> = 0>
auto lumen_quantile2L(const A& a, const Q& q) {
  return quantiles(a, q, {});
}
template <class A, class Q, class P, IfArray<A> = 0>
auto lumen_quantile3L(const A& a, const Q& q, const P& parameters) {
  return quantiles(a, q, quantile_parameters(parameters));
}

}  // namespace lumen

#endif
