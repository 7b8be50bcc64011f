// Arrays, sections of arrays, and expressions that are evaluated in one pass.
//
// a + 2*b makes no array: it is a small value that knows its operands, and its elements are computed when it is
// assigned, passed on or subscripted:
//
//   Binary<Plus, Ref<double,1>, Binary<Times, Scalar<int>, Ref<double,1>>>
//
// Everything with elements derives from Expression<D, T, N>: D its own class, T the element type, N the rank. D offers
//   shape()            the sizes
//   flat()             the elements lie one after another, so that one row spans them all
//   unit()             the elements of each column lie one after another
//   unit_row(x)        a row[i] for i = 0, 1, ... along the first subscript, the other ones being x[1], x[2], ...;
//   strided_row(x)     the second for all layouts, the first where unit() holds
//   at(x)              one element
//   prepared()         somewhere inside stands an array that was computed ahead (see Node): there are no rows then
//   disturbed_by(d)    whether storing elements into d one after another would spoil elements still to be read
// Storage is column-major: x(1,1), x(2,1), ... x(1,2), ...
#ifndef LM_ARRAY_H
#define LM_ARRAY_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "lm_base.h"
#include "lm_scalar.h"

namespace lumen {

template <class T, int N>
class Array;
template <class T, int N>
class Section;

// The elements that are written: the array that they belong to, the first one and the steps to the next.
template <int N>
struct Target {
  const void* array;
  const void* array_end;
  const void* first;
  const Index* step;
};

struct ExpressionBase {};

template <class X>
using plain = std::remove_cv_t<std::remove_reference_t<X>>;

// Something that has elements.
template <class X>
inline constexpr bool has_elements = std::is_base_of_v<ExpressionBase, plain<X>>;

// What int stands before: the conversions that C++ makes without a word.
template <class From, class To>
inline constexpr bool widens = std::is_same_v<From, To> || std::is_same_v<From, int> || std::is_same_v<To, lm_complex>;

template <class From, class To>
inline constexpr bool converts = widens<From, To> || (std::is_same_v<From, double> && std::is_same_v<To, int>);

template <class I>
inline constexpr bool is_range = std::is_same_v<I, R> || std::is_same_v<I, Whole>;
template <class I>
inline constexpr bool is_subscript = std::is_arithmetic_v<I> || is_range<I>;

template <class... I>
inline constexpr int ranges_in = (0 + ... + (is_range<plain<I>> ? 1 : 0));

// ---- rows

template <class T>
struct UnitRow {
  const T* p;
  LM_INLINE T operator[](Index i) const { return p[i]; }
};

template <class T>
struct StridedRow {
  const T* p;
  Index step;
  LM_INLINE T operator[](Index i) const { return p[i * step]; }
};

template <class T>
struct ConstantRow {
  T value;
  LM_INLINE T operator[](Index) const { return value; }
};

// ---- what every expression can do

template <class D, class T, int N>
class Expression : public ExpressionBase {
 public:
  static_assert(N >= 1 && N <= 4, "arrays have one to four dimensions");
  using element = T;
  static constexpr int rank = N;

  const D& self() const { return static_cast<const D&>(*this); }

  // The k-th size, k from 1.
  int dimension(int k) const {
    if (LM_UNLIKELY(k < 1 || k > N))
      fail("dimension(" + std::to_string(k) + ") of an array with " + std::to_string(N) + " dimensions");
    return static_cast<int>(self().shape().d[k - 1]);
  }
  Index size() const { return self().shape().total(); }

  // An element of an expression; with ranges, a new array.
  template <class... I, std::enable_if_t<sizeof...(I) == N && (is_subscript<I> && ...), int> = 0>
  auto operator()(const I&... i) const {
    if constexpr (ranges_in<I...> == 0) {
      const Shape<N> s = self().shape();
      Index x[N];
      int k = 0;
      ((x[k] = checked_offset(static_cast<Index>(i), s.d, N, k), k++), ...);
      return self().at(x);
    } else {
      return Array<T, ranges_in<I...>>(Array<T, N>(*this)(i...));
    }
  }

  // The element at a place that is told by a vector of subscripts.
  template <class V>
  T Extract(const V& place) const {
    const Shape<N> s = self().shape();
    if (LM_UNLIKELY(place.dimension(1) != N))
      fail("Extract: " + std::to_string(place.dimension(1)) + " subscripts for an array " + shape_text(s));
    Index x[N];
    for (int k = 0; k < N; k++) x[k] = checked_offset(static_cast<Index>(place(k + 1)), s.d, N, k);
    return self().at(x);
  }

  // Parts of matrices and vectors: rows or columns a to b, and rectangles by their rows and columns.
  Array<T, 2> Rows(Index a, Index b) const { return matrix()(R(a, b), All); }
  Array<T, 2> Cols(Index a, Index b) const { return matrix()(All, R(a, b)); }
  template <class A>
  Array<T, 2> Rows(const A& a) const {
    return matrix()(range(a), All);
  }
  template <class A>
  Array<T, 2> Cols(const A& a) const {
    return matrix()(All, range(a));
  }
  Array<T, 1> Row(Index i) const { return matrix()(i, All); }
  Array<T, 1> Col(Index j) const { return matrix()(All, j); }
  Array<T, 2> SubMatrix(Index i1, Index i2, Index j1, Index j2) const { return matrix()(R(i1, i2), R(j1, j2)); }
  template <class A, class B>
  Array<T, 2> SubMatrix(const A& rows, const B& cols) const {
    return matrix()(range(rows), range(cols));
  }
  Array<T, 1> SubVector(Index a, Index b) const { return vector()(R(a, b)); }
  template <class A>
  Array<T, 1> SubVector(const A& a) const {
    return vector()(range(a));
  }

 private:
  static R range(const R& r) { return r; }
  static Whole range(Whole w) { return w; }
  static R range(Index i) { return R(i, i); }

  // Arrays themselves, all else evaluated. Dependent, since Array is not complete here.
  template <class A = Array<T, N>>
  decltype(auto) matrix() const {
    static_assert(N == 2, "a matrix is wanted");
    return evaluated<A>();
  }
  template <class A = Array<T, N>>
  decltype(auto) vector() const {
    static_assert(N == 1, "a vector is wanted");
    return evaluated<A>();
  }
  template <class A>
  decltype(auto) evaluated() const {
    if constexpr (std::is_same_v<D, A>)
      return static_cast<const A&>(self());
    else
      return A(*this);
  }
};

// ---- storing

// The address ranges share bytes.
inline bool overlap(const void* a, const void* a_end, const void* b, const void* b_end) {
  const std::less<const void*> before{};
  return before(a, b_end) && before(b, a_end);
}

#if defined(__clang__)
#define LM_INDEPENDENT _Pragma("clang loop vectorize(assume_safety)")
#elif defined(__GNUC__)
#define LM_INDEPENDENT _Pragma("GCC ivdep")
#else
#define LM_INDEPENDENT
#endif

template <class T, class Row>
LM_INLINE void store_row(T* d, Index n, const Row& row) {
  Index i = 0;
  for (; i + 4 <= n; i += 4) {
    const T t0 = convert<T>(row[i]), t1 = convert<T>(row[i + 1]), t2 = convert<T>(row[i + 2]),
            t3 = convert<T>(row[i + 3]);
    d[i] = t0;
    d[i + 1] = t1;
    d[i + 2] = t2;
    d[i + 3] = t3;
  }
  for (; i < n; i++) d[i] = convert<T>(row[i]);
}

template <class T, class Row>
LM_INLINE void store_row(T* d, Index step, Index n, const Row& row) {
  for (Index i = 0; i < n; i++) d[i * step] = convert<T>(row[i]);
}

// The next column; false behind the last one.
template <int N>
bool next_column(Index* x, const Shape<N>& s) {
  for (int k = 1; k < N; k++) {
    if (++x[k] < s.d[k]) return true;
    x[k] = 0;
  }
  return false;
}

template <int N>
Index offset_of(const Index* x, const Index* step) {
  Index o = 0;
  for (int k = 0; k < N; k++) o += x[k] * step[k];
  return o;
}

template <class T, int N, class E>
LM_COLD void store_elements(T* d, const Shape<N>& s, const Index* step, const E& e) {
  Index x[N] = {};
  do
    for (x[0] = 0; x[0] < s.d[0]; x[0]++) d[offset_of<N>(x, step)] = convert<T>(e.at(x));
  while (next_column<N>(x, s));
}

// All elements of e into the places from d on.
template <class T, int N, class E>
void store(T* d, const Shape<N>& s, const Index* step, bool flat, const E& e) {
  const Index total = s.total();
  if (total == 0) return;
  Index x[N] = {};
  if (LM_UNLIKELY(e.prepared())) return store_elements(d, s, step, e);
  if (flat && e.flat()) return store_row(d, total, e.unit_row(x));
  if (step[0] == 1 && e.unit()) {
    do store_row(d + offset_of<N>(x, step), s.d[0], e.unit_row(x));
    while (next_column<N>(x, s));
    return;
  }
  do store_row(d + offset_of<N>(x, step), step[0], s.d[0], e.strided_row(x));
  while (next_column<N>(x, s));
}

// ---- operands that are numbers

template <class T>
struct Scalar {
  using element = T;
  T value{};
  static bool prepared() { return false; }
  static bool flat() { return true; }
  static bool unit() { return true; }
  ConstantRow<T> unit_row(const Index*) const { return {value}; }
  ConstantRow<T> strided_row(const Index*) const { return {value}; }
  T at(const Index*) const { return value; }
  template <int N>
  bool disturbed_by(const Target<N>&) const {
    return false;
  }
};

// ---- arrays

// What plain arrays and references to them have in common: the elements lie one after another from data on.
template <class D, class T, int N>
class Dense : public Expression<D, T, N> {
 public:
  static bool prepared() { return false; }
  static bool flat() { return true; }
  static bool unit() { return true; }
  UnitRow<T> unit_row(const Index* x) const { return {column(x)}; }
  StridedRow<T> strided_row(const Index* x) const { return {column(x), 1}; }
  T at(const Index* x) const {
    const Array<T, N>& a = this->self().array();
    return a.elements()[a.place(x)];
  }
  bool disturbed_by(const Target<N>& t) const {
    const Array<T, N>& a = this->self().array();
    if (!overlap(a.elements(), a.elements() + a.size(), t.array, t.array_end)) return false;
    Index step[N];
    a.steps(step);
    return t.first != a.elements() || !std::equal(step, step + N, t.step);
  }

 private:
  const T* column(const Index* x) const {
    Index start[N];
    start[0] = 0;
    for (int k = 1; k < N; k++) start[k] = x[k];
    const Array<T, N>& a = this->self().array();
    return a.elements() + a.place(start);
  }
};

// An array that lives longer than the expression.
template <class T, int N>
class Ref : public Dense<Ref<T, N>, T, N> {
 public:
  Ref() : a_(nullptr) {}
  explicit Ref(const Array<T, N>& a) : a_(&a) {}
  const Array<T, N>& array() const { return *a_; }
  const Shape<N>& shape() const { return a_->shape(); }

 private:
  const Array<T, N>* a_;
};

// An array with elements of its own.
template <class T, int N>
class Array : public Dense<Array<T, N>, T, N> {
 public:
  // Empty: all sizes are 0.
  Array() : shape_{} {}
  // With sizes, filled with zeros.
  template <class... I, std::enable_if_t<sizeof...(I) == N && (std::is_arithmetic_v<I> && ...), int> = 0>
  LM_INLINE explicit Array(I... sizes) : shape_{{static_cast<Index>(sizes)...}}, data_(zeros(shape_)) {}
  explicit Array(const Shape<N>& s) : shape_(s), data_(zeros(s)) {}

  Array(const Array& a) : shape_(a.shape_), data_(uninitialised(shape_)) { fill_from(a); }
  Array(Array&& a) noexcept : shape_(a.shape_), data_(std::move(a.data_)) { a.shape_ = Shape<N>{}; }
  // The value of an expression; int elements become double where that is wanted.
  template <class D, class U, std::enable_if_t<widens<U, T>, int> = 0>
  Array(const Expression<D, U, N>& e) : shape_(e.self().shape()), data_(uninitialised(shape_)) {
    fill_from(e.self());
  }
  template <class D, class U, std::enable_if_t<!widens<U, T> && converts<U, T>, int> = 0>
  explicit Array(const Expression<D, U, N>& e) : shape_(e.self().shape()), data_(uninitialised(shape_)) {
    fill_from(e.self());
  }

  // An array takes the sizes of what is assigned to it. The same array may occur on the right side, in any place.
  Array& operator=(const Array& a) {
    if (this != &a) assign(a);
    return *this;
  }
  Array& operator=(Array&& a) noexcept {
    swap(a);
    return *this;
  }
  template <class D, class U, std::enable_if_t<converts<U, T>, int> = 0>
  Array& operator=(const Expression<D, U, N>& e) {
    assign(e.self());
    return *this;
  }
  // A number fills the array, which keeps its sizes.
  template <class U, std::enable_if_t<is_number<U> && converts<element_of<U>, T>, int> = 0>
  Array& operator=(const U& value) {
    std::fill_n(elements(), this->size(), convert<T>(value));
    return *this;
  }

  const Array& array() const { return *this; }
  const Shape<N>& shape() const { return shape_; }
  // The elements, the first subscript fastest.
  T* elements() { return data_.get(); }
  const T* elements() const { return data_.get(); }
  // The same for routines of other languages: complex numbers are pairs of doubles.
  auto data() { return foreign_pointer(elements()); }
  auto data() const { return foreign_pointer(elements()); }
  void swap(Array& o) noexcept {
    std::swap(shape_, o.shape_);
    std::swap(data_, o.data_);
  }

  // New sizes, and zeros; nothing happens if the sizes are these already.
  template <class... I, std::enable_if_t<sizeof...(I) == N && (std::is_arithmetic_v<I> && ...), int> = 0>
  void SetShape(I... sizes) {
    const Shape<N> s{{static_cast<Index>(sizes)...}};
    if (s != shape_) *this = Array(s);
  }

  // reshape(d1, ..., dN, value): new sizes, filled with a number or with the elements of an array in the order in
  // which the language lists them, last subscript fastest.
  template <class... Args>
  void reshape(const Args&... args) {
    static_assert(sizeof...(Args) == N + 1, "reshape takes the sizes and a value");
    reshape_to(std::forward_as_tuple(args...), std::make_index_sequence<N>());
  }

  // ---- elements

  template <class... I, std::enable_if_t<sizeof...(I) == N && (std::is_arithmetic_v<I> && ...), int> = 0>
  LM_INLINE T& operator()(I... i) {
    T* const elements = data_.get();
    return elements[element_place(i...)];
  }
  template <class... I, std::enable_if_t<sizeof...(I) == N && (std::is_arithmetic_v<I> && ...), int> = 0>
  LM_INLINE const T& operator()(I... i) const {
    const T* const elements = data_.get();
    return elements[element_place(i...)];
  }

  // A section shares the elements of an array that lives on; of a passing value it is a copy.
  template <class... I,
            std::enable_if_t<sizeof...(I) == N && (is_subscript<I> && ...) && (ranges_in<I...> > 0), int> = 0>
  Section<T, ranges_in<I...>> operator()(const I&... i) const& {
    return section(i...);
  }
  template <class... I,
            std::enable_if_t<sizeof...(I) == N && (is_subscript<I> && ...) && (ranges_in<I...> > 0), int> = 0>
  Array<T, ranges_in<I...>> operator()(const I&... i) && {
    return section(i...);
  }

  // ---- assignments to sections: Set(subscripts..., value), the value a number or an array of the section's shape
  //
  // Numbers behind the N subscripts are subscripts of the section: x.Set(R(2,4), 1, 3, v) sets x(4, 1). With less of
  // them than the section has dimensions, whole dimensions of it are set.

  template <class... Args>
  void Set(const Args&... args) {
    static_assert(sizeof...(Args) > N, "Set takes a subscript for each dimension and a value");
    set_from(std::forward_as_tuple(args...), std::make_index_sequence<N>(),
             std::make_index_sequence<sizeof...(Args) - N - 1>());
  }
  template <class V>
  void SetRow(Index i, const V& v) {
    Set(i, All, v);
  }
  template <class V>
  void SetCol(Index j, const V& v) {
    Set(All, j, v);
  }
  template <class V>
  void SetRows(Index a, Index b, const V& v) {
    Set(R(a, b), All, v);
  }
  template <class V>
  void SetCols(Index a, Index b, const V& v) {
    Set(All, R(a, b), v);
  }
  template <class V>
  void SetRows(const R& rows, const V& v) {
    Set(rows, All, v);
  }
  template <class V>
  void SetCols(const R& cols, const V& v) {
    Set(All, cols, v);
  }
  template <class V>
  void SetSubMatrix(Index i1, Index i2, Index j1, Index j2, const V& v) {
    Set(R(i1, i2), R(j1, j2), v);
  }
  template <class A, class B, class V>
  void SetSubMatrix(const A& rows, const B& cols, const V& v) {
    Set(rows, cols, v);
  }
  template <class V>
  void SetSubVector(Index a, Index b, const V& v) {
    Set(R(a, b), v);
  }
  template <class V>
  void SetSubVector(const R& r, const V& v) {
    Set(r, v);
  }

  // ---- for the other parts of the library

  Index place(const Index* x) const {
    Index o = x[N - 1];
    for (int k = N - 2; k >= 0; k--) o = o * shape_.d[k] + x[k];
    return o;
  }
  void steps(Index* step) const {
    step[0] = 1;
    for (int k = 1; k < N; k++) step[k] = step[k - 1] * shape_.d[k - 1];
  }

 private:
  // All bits zero are the number 0 for every element type, and calloc has large arrays of it for nothing.
  struct Free {
    void operator()(T* p) const { std::free(p); }
  };
  using Storage = std::unique_ptr<T[], Free>;

  Shape<N> shape_;
  Storage data_;

  // Sizes are handed on by value, and all but what fails is put in line: a local array, which nothing gets hold of
  // then, can have its sizes in registers.
  [[noreturn]] LM_COLD static void fail_sizes(Shape<N> s) {
    for (int k = 0; k < N; k++)
      if (s.d[k] < 0) fail("an array cannot have the shape " + shape_text(s));
    fail("an array of the shape " + shape_text(s) + " is too large");
  }
  [[noreturn]] LM_COLD static void fail_memory(Shape<N> s) {
    fail("no memory for an array of the shape " + shape_text(s));
  }
  LM_INLINE static std::size_t checked_bytes(Shape<N> s) {
    Index n = sizeof(T);
    for (int k = 0; k < N; k++)
      if (LM_UNLIKELY(s.d[k] < 0 || product_overflows(n, s.d[k], &n))) fail_sizes(s);
    return static_cast<std::size_t>(n);
  }
  LM_INLINE static Storage checked_storage(Shape<N> s, std::size_t bytes, void* p) {
    if (LM_UNLIKELY(!p && bytes > 0)) fail_memory(s);
    return Storage(static_cast<T*>(p));
  }
  LM_INLINE static Storage zeros(Shape<N> s) {
    const std::size_t bytes = checked_bytes(s);
    return checked_storage(s, bytes, std::calloc(bytes, 1));
  }
  static Storage uninitialised(Shape<N> s) {
    const std::size_t bytes = checked_bytes(s);
    return checked_storage(s, bytes, std::malloc(bytes));
  }

  template <class E>
  void fill_from(const E& e) {
    Index step[N];
    steps(step);
    store(elements(), shape_, step, true, e);
  }

  template <class E>
  void assign(const E& e) {
    const Shape<N> s = e.shape();
    Index step[N];
    steps(step);
    const Target<N> target{elements(), elements() + this->size(), elements(), step};
    if (s != shape_ || e.disturbed_by(target)) {
      Array fresh(s, nullptr);
      fresh.fill_from(e);
      swap(fresh);
    } else {
      store(elements(), shape_, step, true, e);
    }
  }
  Array(const Shape<N>& s, std::nullptr_t) : shape_(s), data_(uninitialised(s)) {}

  // The sizes are read ahead of the first check: what is read behind a way out of a loop is read in the loop.
  template <class... I>
  LM_INLINE Index element_place(I... i) const {
    static_assert(sizeof...(I) == N);
    const Index x[N] = {static_cast<Index>(i)...};
    const Index n0 = shape_.d[0];
    if constexpr (N == 1) {
      return element_offset(x[0], n0, shape_, 0);
    } else if constexpr (N == 2) {
      const Index n1 = shape_.d[1];
      return element_offset(x[0], n0, shape_, 0) + n0 * element_offset(x[1], n1, shape_, 1);
    } else if constexpr (N == 3) {
      const Index n1 = shape_.d[1], n2 = shape_.d[2];
      return element_offset(x[0], n0, shape_, 0) +
             n0 * (element_offset(x[1], n1, shape_, 1) + n1 * element_offset(x[2], n2, shape_, 2));
    } else {
      const Index n1 = shape_.d[1], n2 = shape_.d[2], n3 = shape_.d[3];
      return element_offset(x[0], n0, shape_, 0) +
             n0 * (element_offset(x[1], n1, shape_, 1) +
                   n1 * (element_offset(x[2], n2, shape_, 2) + n2 * element_offset(x[3], n3, shape_, 3)));
    }
  }

  // From 0, for a subscript beside ranges; it is checked like these.
  static Index section_offset(Index x, const Index* dims, int rank, int k) {
    if (LM_UNLIKELY(x < 1 || x > dims[k])) x = index_from_end(x, dims, rank, k);
    return x - 1;
  }

  // Where the elements lie that are chosen by the subscripts. Numbers drop their dimension.
  template <int M>
  struct Layout {
    Index start = 0;
    Shape<M> shape{};
    Index step[M] = {};
    int filled = 0;
  };
  template <int M, class I>
  void choose(Layout<M>* l, const Index* step, const I& i, int k) const {
    if constexpr (is_range<I>) {
      const Span span = span_of(i, shape_.d, N, k);
      l->start += span.start * step[k];
      l->shape.d[l->filled] = span.n;
      l->step[l->filled++] = step[k];
    } else {
      l->start += section_offset(static_cast<Index>(i), shape_.d, N, k) * step[k];
    }
  }
  template <class... I>
  Layout<ranges_in<I...>> layout(const I&... i) const {
    Index step[N];
    steps(step);
    Layout<ranges_in<I...>> l;
    int k = 0;
    (choose(&l, step, i, k++), ...);
    return l;
  }
  template <class... I>
  Section<T, ranges_in<I...>> section(const I&... i) const {
    const auto l = layout(i...);
    return Section<T, ranges_in<I...>>(elements() + l.start, l.shape, l.step);
  }

  template <class Tuple, std::size_t... K, std::size_t... L>
  void set_from(const Tuple& args, std::index_sequence<K...>, std::index_sequence<L...>) {
    const std::array<Index, sizeof...(L)> within{static_cast<Index>(std::get<N + L>(args))...};
    set_section(std::get<N + sizeof...(L)>(args), within, std::get<K>(args)...);
  }
  template <class V, std::size_t E, class... I>
  void set_section(const V& v, const std::array<Index, E>& within, const I&... i) {
    constexpr int M = ranges_in<I...>;
    static_assert(E <= M, "Set has more subscripts than the section has dimensions");
    if constexpr (M == 0) {
      (*this)(i...) = convert<T>(v);
    } else {
      auto l = layout(i...);
      for (std::size_t k = 0; k < E; k++) l.start += section_offset(within[k], l.shape.d, M, k) * l.step[k];
      if constexpr (E == M) {
        data_[l.start] = convert<T>(v);
      } else {
        Shape<M - E> s;
        std::copy(l.shape.d + E, l.shape.d + M, s.d);
        store_section(s, data_.get() + l.start, l.step + E, v);
      }
    }
  }
  template <int M, class V>
  void store_section(const Shape<M>& s, T* d, const Index* step, const V& v) {
    if constexpr (is_number<V>) {
      store(d, s, step, false, Scalar<element_of<V>>{static_cast<element_of<V>>(v)});
    } else {
      static_assert(V::rank == M, "the value of Set must be a number or have the rank of the section");
      static_assert(converts<typename V::element, T>, "the value of Set has elements that do not fit into the array");
      if (v.shape() != s) fail_shapes("Set", shape_text(s), shape_text(v.shape()));
      const Target<M> target{elements(), elements() + this->size(), d, step};
      if (v.disturbed_by(target))
        store(d, s, step, false, Array<typename V::element, M>(v));
      else
        store(d, s, step, false, v);
    }
  }
  template <class Tuple, std::size_t... K>
  void reshape_to(const Tuple& args, std::index_sequence<K...>) {
    Array fresh(std::get<K>(args)...);
    const auto& value = std::get<N>(args);
    using V = plain<decltype(value)>;
    if constexpr (is_number<V>)
      fresh = value;
    else
      fresh.take_listed(value);
    swap(fresh);
  }
  template <class D, class U, int M>
  void take_listed(const Expression<D, U, M>& e) {
    const Shape<M> from = e.self().shape();
    if (from.total() != this->size()) fail_shapes("reshape", shape_text(shape_), shape_text(from));
    Index x[M] = {}, y[N] = {};
    for (Index n = this->size(); n > 0; n--) {
      data_[place(y)] = convert<T>(e.self().at(x));
      next_listed(x, from.d, M);
      next_listed(y, shape_.d, N);
    }
  }

 public:
  // The place that follows in a list: the last subscript runs fastest.
  static void next_listed(Index* x, const Index* d, int n) {
    for (int k = n - 1; k >= 0; k--) {
      if (++x[k] < d[k]) return;
      x[k] = 0;
    }
  }
};

// ---- sections

// Some of the elements of an array; to be read.
template <class T, int N>
class Section : public Expression<Section<T, N>, T, N> {
 public:
  Section() : data_(nullptr), shape_{}, step_{} {}
  Section(const T* data, const Shape<N>& s, const Index* step) : data_(data), shape_(s) {
    std::copy(step, step + N, step_);
  }
  const Shape<N>& shape() const { return shape_; }
  static bool prepared() { return false; }
  bool unit() const { return step_[0] == 1; }
  bool flat() const {
    Index run = 1;
    for (int k = 0; k < N; k++) {
      if (step_[k] != run && shape_.d[k] > 1) return false;
      run *= shape_.d[k];
    }
    return step_[0] == 1;
  }
  UnitRow<T> unit_row(const Index* x) const { return {data_ + column(x)}; }
  StridedRow<T> strided_row(const Index* x) const { return {data_ + column(x), step_[0]}; }
  T at(const Index* x) const { return data_[offset_of<N>(x, step_)]; }
  bool disturbed_by(const Target<N>& t) const {
    if (shape_.total() == 0 || !overlap(data_, data_ + reach(), t.array, t.array_end)) return false;
    return t.first != data_ || !std::equal(step_, step_ + N, t.step);
  }

 private:
  const T* data_;
  Shape<N> shape_;
  Index step_[N];

  Index column(const Index* x) const {
    Index o = 0;
    for (int k = 1; k < N; k++) o += x[k] * step_[k];
    return o;
  }
  // Behind the last element.
  Index reach() const {
    Index o = 1;
    for (int k = 0; k < N; k++) o += (shape_.d[k] - 1) * step_[k];
    return o;
  }
};

// ---- operands

template <class X>
struct ArrayOf : std::false_type {};
template <class T, int N>
struct ArrayOf<Array<T, N>> : std::true_type {};

// An argument that stands for an array.
template <class X>
inline constexpr bool is_array = has_elements<X>;

// How an expression keeps an operand: arrays that live on by reference, all else by value.
template <class X>
auto as_operand(X&& x) {
  if constexpr (!has_elements<X>)
    return Scalar<element_of<plain<X>>>{static_cast<element_of<plain<X>>>(x)};
  else if constexpr (ArrayOf<plain<X>>::value && std::is_lvalue_reference_v<X>)
    return Ref<typename plain<X>::element, plain<X>::rank>(x);
  else
    return plain<X>(std::forward<X>(x));
}
template <class X>
using operand_of = decltype(as_operand(std::declval<X>()));

// ---- nodes

template <class Op, class A>
struct UnaryRow {
  A a;
  LM_INLINE auto operator[](Index i) const { return Op::apply(a[i]); }
};

template <class Op, class A, class B>
struct BinaryRow {
  A a;
  B b;
  LM_INLINE auto operator[](Index i) const { return Op::apply(a[i], b[i]); }
};

template <class Op, class... E>
using result_of = element_of<decltype(Op::apply(std::declval<typename E::element>()...))>;

// A conditional expression needs branches of one type: c ? a+b : a-b. So one kind of node can turn into another one,
// whose operands stay empty then; instead it has an array that was computed ahead. Which kind turns into which is
// decided by the order of their names, since C++ wants only one of the two ways to exist. Sections turn into nodes, and
// so does everything of an element type that widens to the node's, arrays as well.
template <class X>
constexpr std::string_view name_of() {
#if defined(__GNUC__)
  return __PRETTY_FUNCTION__;
#else
  return __FUNCSIG__;
#endif
}

template <class X>
struct IsSection : std::false_type {};
template <class T, int N>
struct IsSection<Section<T, N>> : std::true_type {};

template <class From, class To>
constexpr bool turns_into() {
  if constexpr (!has_elements<From> || std::is_same_v<From, To>)
    return false;
  else if constexpr (From::rank != To::rank)
    return false;
  else if constexpr (!std::is_same_v<typename From::element, typename To::element>)
    return widens<typename From::element, typename To::element>;
  else if constexpr (ArrayOf<From>::value)
    return false;
  else
    return IsSection<From>::value || name_of<From>() < name_of<To>();
}

// The array that was computed ahead, or none.
template <class T, int N>
class Prepared {
 public:
  Prepared() = default;
  template <class E>
  explicit Prepared(const E& e) : array_(new Array<T, N>(e)) {}
  Prepared(const Prepared& o) : array_(o.array_ ? new Array<T, N>(*o.array_) : nullptr) {}
  Prepared(Prepared&& o) noexcept : array_(std::exchange(o.array_, nullptr)) {}
  Prepared& operator=(const Prepared&) = delete;
  ~Prepared() { delete array_; }

  explicit operator bool() const { return array_ != nullptr; }
  const Array<T, N>* operator->() const { return array_; }

 private:
  Array<T, N>* array_ = nullptr;
};

template <class Op, class A>
class Unary : public Expression<Unary<Op, A>, result_of<Op, A>, A::rank> {
 public:
  static constexpr int N = A::rank;
  using T = result_of<Op, A>;
  Unary() = default;
  explicit Unary(A a) : a_(std::move(a)) {}
  template <class E, std::enable_if_t<turns_into<E, Unary>(), int> = 0>
  Unary(const E& e) : ready_(e) {}

  Shape<N> shape() const { return ready_ ? ready_->shape() : a_.shape(); }
  bool prepared() const { return ready_ || a_.prepared(); }
  bool flat() const { return a_.flat(); }
  bool unit() const { return a_.unit(); }
  auto unit_row(const Index* x) const { return row(a_.unit_row(x)); }
  auto strided_row(const Index* x) const { return row(a_.strided_row(x)); }
  T at(const Index* x) const { return ready_ ? ready_->at(x) : static_cast<T>(Op::apply(a_.at(x))); }
  bool disturbed_by(const Target<N>& t) const { return !ready_ && a_.disturbed_by(t); }

 private:
  A a_;
  Prepared<T, N> ready_;
  template <class RowA>
  static UnaryRow<Op, RowA> row(const RowA& a) {
    return {a};
  }
};

template <class E, class = void>
struct RankOf {
  static constexpr int value = 0;
};
template <class E>
struct RankOf<E, std::enable_if_t<has_elements<E>>> {
  static constexpr int value = E::rank;
};

// Operations whose value may be wanted as a whole, too (see Comparison): their operands need not fit before elements
// are asked for.
template <class Op>
inline constexpr bool of_truth = false;

// One of the operands may be a number.
template <class Op, class A, class B>
class Binary : public Expression<Binary<Op, A, B>, result_of<Op, A, B>, std::max(RankOf<A>::value, RankOf<B>::value)> {
 public:
  static constexpr int N = std::max(RankOf<A>::value, RankOf<B>::value);
  using T = result_of<Op, A, B>;
  Binary() = default;
  Binary(A a, B b) : a_(std::move(a)), b_(std::move(b)) {
    if constexpr (has_elements<A> && has_elements<B>) {
      static_assert(A::rank == B::rank, "the operands must have as many dimensions");
      if constexpr (!of_truth<Op>) need_same_shapes();
    }
  }
  template <class E, std::enable_if_t<turns_into<E, Binary>(), int> = 0>
  Binary(const E& e) : ready_(e) {}

  Shape<N> shape() const {
    if (ready_) return ready_->shape();
    if constexpr (has_elements<A> && has_elements<B> && of_truth<Op>) need_same_shapes();
    if constexpr (has_elements<A>)
      return a_.shape();
    else
      return b_.shape();
  }
  bool prepared() const { return ready_ || a_.prepared() || b_.prepared(); }
  bool flat() const { return a_.flat() && b_.flat(); }
  bool unit() const { return a_.unit() && b_.unit(); }
  auto unit_row(const Index* x) const { return row(a_.unit_row(x), b_.unit_row(x)); }
  auto strided_row(const Index* x) const { return row(a_.strided_row(x), b_.strided_row(x)); }
  T at(const Index* x) const { return ready_ ? ready_->at(x) : static_cast<T>(Op::apply(a_.at(x), b_.at(x))); }
  bool disturbed_by(const Target<N>& t) const { return !ready_ && (a_.disturbed_by(t) || b_.disturbed_by(t)); }

 protected:
  A a_;
  B b_;

 private:
  Prepared<T, N> ready_;
  template <class RowA, class RowB>
  static BinaryRow<Op, RowA, RowB> row(const RowA& a, const RowB& b) {
    return {a, b};
  }
  void need_same_shapes() const {
    if (LM_UNLIKELY(a_.shape() != b_.shape())) fail_shapes(Op::name(), shape_text(a_.shape()), shape_text(b_.shape()));
  }
};

// The value of an argument as an array; an array itself is not copied.
template <class T, int N>
const Array<T, N>& value_of(const Array<T, N>& a) {
  return a;
}
template <class D, class T, int N, std::enable_if_t<!ArrayOf<D>::value, int> = 0>
Array<T, N> value_of(const Expression<D, T, N>& e) {
  return Array<T, N>(e);
}

// The type of that value.
template <class X>
using value_type = plain<decltype(value_of(std::declval<const plain<X>&>()))>;
template <class X>
using element_type = typename value_type<X>::element;
template <class X>
inline constexpr int rank_of = value_type<X>::rank;

}  // namespace lumen

#endif
