// Arrays as lists: making them from elements, joining, taking apart, flattening, sorting.
//
// The elements of a list are the parts along the first subscript: the rows of a matrix.
#ifndef LM_LIST_H
#define LM_LIST_H

#include <vector>

#include "lm_ops.h"

namespace lumen {

// ---- one part of a list: an element of a vector, a row of a matrix ...

template <class T, int N>
Shape<N - 1> part_shape(const Shape<N>& s) {
  Shape<N - 1> p;
  for (int k = 1; k < N; k++) p.d[k - 1] = s.d[k];
  return p;
}

// Copies n parts of x, from the one numbered `from`, to where y has the one numbered `to`. Both count from zero; the
// other sizes are the same.
template <class T, class U, int N>
void copy_parts(const Array<T, N>& x, Index from, Array<U, N>* y, Index to, Index n) {
  const Index x_rows = x.shape().d[0], y_rows = y->shape().d[0];
  const Index columns = n == 0 ? 0 : x.size() / x_rows;
  for (Index j = 0; j < columns; j++)
    for (Index i = 0; i < n; i++) y->elements()[to + i + j * y_rows] = convert<U>(x.elements()[from + i + j * x_rows]);
}

template <int N>
Shape<N> with_parts(Shape<N> s, Index n) {
  s.d[0] = n;
  return s;
}

template <int N>
void need_same_parts(const char* operation, const Shape<N>& a, const Shape<N>& b) {
  if (LM_UNLIKELY(with_parts(a, 0) != with_parts(b, 0))) fail_shapes(operation, shape_text(a), shape_text(b));
}

template <class A, class B>
using common_element = element_of<std::conditional_t<widens<A, B>, B, A>>;

// ---- {a, b, c}

template <class X, class = void>
struct ListItem {
  static constexpr int rank = 0;
  using element = element_of<plain<X>>;
};
template <class X>
struct ListItem<X, std::enable_if_t<is_array<X>>> {
  static constexpr int rank = rank_of<X>;
  using element = element_type<X>;
};

template <class T, class... Rest>
struct CommonElement {
  using type = T;
};
template <class T, class U, class... Rest>
struct CommonElement<T, U, Rest...> : CommonElement<common_element<T, U>, Rest...> {};

template <class T, int N>
void put_item(Array<T, N + 1>* list, Index place, const Array<T, N>& item) {
  const Index rows = list->shape().d[0];
  for (Index j = 0; j < item.size(); j++) list->elements()[place + j * rows] = item.elements()[j];
}

template <class T, int N, class... Items>
Array<T, N + 1> list_of_arrays(const Items&... items) {
  const Shape<N> shapes[] = {items.shape()...};
  constexpr int n = sizeof...(Items);
  for (int i = 1; i < n; i++) {
    const bool rest = N == 1 && i == n - 1 && shapes[0].d[0] == 10 && shapes[i].d[0] < 10;
    if (shapes[i] != shapes[0] && !rest) fail_shapes("make_lumenN", shape_text(shapes[0]), shape_text(shapes[i]));
  }
  Shape<N + 1> s;
  s.d[0] = n;
  for (int k = 0; k < N; k++) s.d[k + 1] = shapes[0].d[k];
  Array<T, N + 1> list(s);
  Index place = 0;
  (put_item<T, N>(&list, place++, items), ...);
  return list;
}

// make_lumenN(n, x1, ..., xn): the list of n numbers, or of n arrays of one shape. Long lists are written as a list of
// vectors of ten that is flattened afterwards; so the last vector behind such ones may be shorter, and zeros follow.
inline Array<int, 1> make_lumenN(int n) {
  if (n != 0) fail("make_lumenN: no elements, but " + std::to_string(n) + " announced");
  return Array<int, 1>(0);
}
template <class X, class... Rest>
auto make_lumenN(int n, const X& x, const Rest&... rest) {
  if (n != 1 + static_cast<int>(sizeof...(Rest)))
    fail("make_lumenN: " + std::to_string(1 + sizeof...(Rest)) + " elements, but " + std::to_string(n) + " announced");
  using T = typename CommonElement<typename ListItem<X>::element, typename ListItem<Rest>::element...>::type;
  constexpr int N = ListItem<X>::rank;
  static_assert(((ListItem<Rest>::rank == N) && ...), "the elements of a list must have as many dimensions");
  if constexpr (N == 0) {
    const T values[] = {convert<T>(x), convert<T>(rest)...};
    Array<T, 1> list(n);
    std::copy(values, values + n, list.elements());
    return list;
  } else {
    return list_of_arrays<T, N>(Array<T, N>(x), Array<T, N>(rest)...);
  }
}

// ---- joining and dropping

template <class A, class B>
auto joined(const char* operation, const A& a, const B& b) {
  static_assert(rank_of<A> == rank_of<B>, "Join takes arrays of as many dimensions");
  const auto& x = value_of(a);
  const auto& y = value_of(b);
  need_same_parts(operation, x.shape(), y.shape());
  const Index m = x.shape().d[0], n = y.shape().d[0];
  Array<common_element<element_type<A>, element_type<B>>, rank_of<A>> result(with_parts(x.shape(), m + n));
  copy_parts(x, 0, &result, 0, m);
  copy_parts(y, 0, &result, m, n);
  return result;
}
template <class A, class B, IfArrays<A, B> = 0>
auto Join(const A& a, const B& b) {
  return joined("Join", a, b);
}

// One more part: a number for a vector, a row for a matrix.
template <class A, class B, IfArray<A> = 0>
auto Append(const A& a, const B& part) {
  return joined("Append", a, make_lumenN(1, part));
}
template <class A, class B, IfArray<A> = 0>
auto Prepend(const A& a, const B& part) {
  return joined("Prepend", make_lumenN(1, part), a);
}

// Without the parts that are in the range. R(0,-1) is what Drop[a, 0] is written as: nothing is dropped.
template <class A, IfArray<A> = 0>
auto Drop(A&& a, const R& range) {
  const auto& x = value_of(a);
  const R dropped = range.first == 0 && range.last == -1 ? R(1, 0) : range;
  const Span span = span_of(dropped, x.shape().d, rank_of<A>, 0);
  const Index rest = x.shape().d[0] - span.n;
  Array<element_type<A>, rank_of<A>> left(with_parts(x.shape(), rest));
  copy_parts(x, 0, &left, 0, span.start);
  copy_parts(x, span.start + span.n, &left, span.start, rest - span.start);
  return left;
}

// ---- flattening

// The first L + 1 dimensions become one, in the order of lists: the last subscript runs fastest.
template <int L, class A>
auto flatten_levels(const A& a) {
  const auto& x = value_of(a);
  constexpr int N = rank_of<A>, M = N - L;
  using T = element_type<A>;
  Shape<M> s;
  s.d[0] = 1;
  for (int k = 0; k <= L; k++) s.d[0] *= x.shape().d[k];
  for (int k = L + 1; k < N; k++) s.d[k - L] = x.shape().d[k];
  Array<T, M> flat(s);
  if (flat.size() == 0) return flat;
  const Index columns = flat.size() / s.d[0];
  Index place[N] = {};
  for (Index i = 0; i < s.d[0]; i++) {
    const T* from = x.elements() + x.place(place);
    for (Index j = 0; j < columns; j++) flat.elements()[i + j * s.d[0]] = from[j * s.d[0]];
    Array<T, N>::next_listed(place, x.shape().d, L + 1);
  }
  return flat;
}

template <class A, IfArray<A> = 0>
auto lumen_flatten(const A& a) {
  return flatten_levels<rank_of<A> - 1>(a);
}
template <class A, IfArray<A> = 0>
auto lumen_flatten0(const A& a) {
  return flatten_levels<0>(a);
}
template <class A, IfArray<A> = 0>
auto lumen_flatten1(const A& a) {
  return flatten_levels<1>(a);
}
template <class A, IfArray<A> = 0>
auto lumen_flatten2(const A& a) {
  return flatten_levels<2>(a);
}

// ---- order

inline bool precedes(int a, int b) { return a < b; }
// What is not a number comes last, so that sorting has an order.
inline bool precedes(double a, double b) { return a < b || (std::isnan(b) && !std::isnan(a)); }
inline bool precedes(const lm_complex& a, const lm_complex& b) {
  return precedes(a.real(), b.real()) || (!precedes(b.real(), a.real()) && precedes(a.imag(), b.imag()));
}

// Ascending; complex numbers by real part, then imaginary part; rows by their first elements that differ. Equal parts
// stay in their order.
template <class A, IfArray<A> = 0>
auto lumen_sort(const A& a) {
  const auto& x = value_of(a);
  using T = element_type<A>;
  constexpr int N = rank_of<A>;
  const Index n = x.shape().d[0];
  const Index columns = x.size() == 0 ? 0 : x.size() / n;
  std::vector<Index> order(static_cast<std::size_t>(n));
  for (Index i = 0; i < n; i++) order[static_cast<std::size_t>(i)] = i;
  const Array<T, N> listed = Array<T, N>(x);
  const T* v = listed.elements();
  // The columns in the order of lists.
  std::vector<Index> column(static_cast<std::size_t>(columns));
  Index place[N] = {};
  for (Index j = 0; j < columns; j++) {
    column[static_cast<std::size_t>(j)] = listed.place(place);
    Array<T, N>::next_listed(place, listed.shape().d, N);
  }
  std::stable_sort(order.begin(), order.end(), [&](Index p, Index q) {
    for (const Index c : column) {
      if (precedes(v[p + c], v[q + c])) return true;
      if (precedes(v[q + c], v[p + c])) return false;
    }
    return false;
  });
  Array<T, N> sorted(listed.shape());
  for (Index j = 0; j < columns; j++)
    for (Index i = 0; i < n; i++) sorted.elements()[i + j * n] = v[order[static_cast<std::size_t>(i)] + j * n];
  return sorted;
}

// ---- extremes

template <class A, IfArray<A> = 0>
auto LumenMax(const A& a) {
  const auto& x = value_of(a);
  if (x.size() == 0) fail_empty("Max");
  return *std::max_element(x.elements(), x.elements() + x.size());
}
template <class A, IfArray<A> = 0>
auto LumenMin(const A& a) {
  const auto& x = value_of(a);
  if (x.size() == 0) fail_empty("Min");
  return *std::min_element(x.elements(), x.elements() + x.size());
}

}  // namespace lumen

#endif
