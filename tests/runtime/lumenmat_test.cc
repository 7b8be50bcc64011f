// The array library: shapes, subscripts, expressions and aliasing over ranks 1 to 4 and all element types, and the
// functions by examples that were worked out by hand, as far as arrays_test has none.

#include "lumenmat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "text.h"

namespace {

template <class F>
std::string error_of(const F& f) {
  try {
    f();
  } catch (const lumen_error& e) {
    return e.what();
  }
  return "";
}

// {{1, 2, 3}, {4, 5, 6}}
doubleNN two_by_three() { return make_lumenN(2, make_lumenN(3, 1.0, 2.0, 3.0), make_lumenN(3, 4.0, 5.0, 6.0)); }

// An array whose elements are their place in a list: 1, 2, 3, ... with the last subscript fastest.
template <class T, int N>
lumen::Array<T, N> counted(const lumen::Shape<N>& s) {
  lumen::Array<T, N> a(s);
  lumen::Index x[N] = {};
  for (int i = 1; i <= a.size(); i++) {
    a.elements()[a.place(x)] = T(i);
    lumen::Array<T, N>::next_listed(x, s.d, N);
  }
  return a;
}

// ---- for all element types and ranks

template <class T, int N>
struct Kind {
  using element = T;
  static constexpr int rank = N;
};

template <class K>
struct ArrayTest : testing::Test {
  using T = typename K::element;
  static constexpr int N = K::rank;
  using A = lumen::Array<T, N>;

  static lumen::Shape<N> shape() {
    lumen::Shape<N> s;
    for (int k = 0; k < N; k++) s.d[k] = k + 2;
    return s;
  }
};
using Kinds = testing::Types<Kind<int, 1>, Kind<int, 2>, Kind<int, 3>, Kind<int, 4>, Kind<double, 1>, Kind<double, 2>,
                             Kind<double, 3>, Kind<double, 4>, Kind<lm_complex, 1>, Kind<lm_complex, 2>,
                             Kind<lm_complex, 3>, Kind<lm_complex, 4>>;
TYPED_TEST_SUITE(ArrayTest, Kinds);

TYPED_TEST(ArrayTest, IsAValueOfZerosUntilAssigned) {
  using Values = typename TestFixture::A;
  const Values zeros(TestFixture::shape());
  const Values filled = counted<typename TestFixture::T>(TestFixture::shape());
  Values copy = zeros;
  EXPECT_TRUE(copy == zeros);
  copy = filled;
  EXPECT_TRUE(copy == filled);
  EXPECT_TRUE(copy != zeros);
  EXPECT_TRUE(Values(std::move(copy)) == filled);
  Values empty;
  EXPECT_EQ(empty.size(), 0);
  EXPECT_TRUE(empty + empty == empty);
  empty = filled;
  EXPECT_TRUE(empty == filled);
  empty = 7;
  EXPECT_TRUE(empty.shape() == filled.shape());
  EXPECT_TRUE(empty - 7 == zeros);
}

TYPED_TEST(ArrayTest, ExpressionsAgreeWithElements) {
  using Element = typename TestFixture::T;
  const auto a = counted<Element>(TestFixture::shape());
  typename TestFixture::A x = 3 * a - ElemProduct(a, a) + 1;
  ASSERT_EQ(x.size(), a.size());
  for (lumen::Index i = 0; i < a.size(); i++) {
    const Element e = a.elements()[i];
    EXPECT_TRUE(x.elements()[i] == 3 * e - e * e + 1) << i;
  }
  // The same array on both sides, and a condition between two kinds of expressions.
  x = a;
  x = x + x;
  EXPECT_TRUE(x == 2 * a);
  for (const bool sum : {true, false}) {
    x = ((sum) ? (a + a) : (a - a));
    EXPECT_TRUE(x == (sum ? 2 : 0) * a);
    x = 3 * ((sum) ? (a + a) : (a - a)) - ((sum) ? (-a) : (a));
    EXPECT_TRUE(x == (sum ? 7 : -1) * a);
    EXPECT_TRUE(((sum) ? (a + a) : (a - a)) == ((sum) ? (2 * a) : (0 * a)));
    EXPECT_TRUE(-((sum) ? (a + a) : (a - a)) != a);
  }
  const lumen::Array<lm_complex, TestFixture::N> wide = 2 * a;
  EXPECT_TRUE(wide == a + a);
}

TYPED_TEST(ArrayTest, ShapesMustFit) {
  lumen::Shape<TestFixture::N> other = TestFixture::shape();
  other.d[TestFixture::N - 1]++;
  typename TestFixture::A a(TestFixture::shape());
  const typename TestFixture::A b(other);
  EXPECT_EQ(error_of([&] { a = a + b; }),
            "Plus: the shapes " + lumen::shape_text(a.shape()) + " and " + lumen::shape_text(other) + " do not fit");
}

TYPED_TEST(ArrayTest, FlattenedElementsComeInTheOrderOfLists) {
  using Element = typename TestFixture::T;
  const auto flat = lumen_flatten(counted<Element>(TestFixture::shape()));
  for (int i = 1; i <= flat.dimension(1); i++) EXPECT_TRUE(flat(i) == Element(i)) << i;
}

// ---- subscripts

TEST(Subscripts, CountFromOneAndFromTheEnd) {
  const doubleNN m = two_by_three();
  EXPECT_EQ(m(2, 1), 4);
  EXPECT_EQ(m.elements()[1], 4);  // column by column
  EXPECT_EQ(text(m(2, All)), "{4, 5, 6}");
  EXPECT_EQ(text(m(R(1, 1), R(-2, -1))), "{{2, 3}}");
  EXPECT_EQ(text(m(All, 3)), "{3, 6}");
  EXPECT_EQ(text(m(R(2, 1), 3)), "{}");
  EXPECT_EQ((m + m)(2, 3), 12);
  EXPECT_EQ(text((m + m)(2, All)), "{8, 10, 12}");
  EXPECT_EQ(m.Extract(make_lumenN(2, 1, 3)), 3);
  EXPECT_EQ(m(-1, -3), 4);
  doubleNNNN t = counted<double, 4>({{2, 3, 4, 5}});
  EXPECT_EQ(t(2, 3, 4, 5), 120);
  EXPECT_EQ(text(t(1, R(2, 3), 4, 1)), "{36, 56}");
  EXPECT_EQ(t.dimension(3), 4);
}

TEST(Subscripts, OutsideAreNamedInTheMessage) {
  doubleNN m = two_by_three();
  const struct {
    std::string error, expected;
  } rows[] = {
#ifndef LM_NO_CHECKS
      {error_of([&] { m(3, 1) = 0; }), "subscript 1 of an array {2, 3} is 3, not within 1 to 2"},
      {error_of([&] { m(1, 0) = 0; }), "subscript 2 of an array {2, 3} is 0, not within 1 to 3"},
      {error_of([&] { m(1, -4) = 0; }), "subscript 2 of an array {2, 3} is -4, not within 1 to 3"},
      {error_of([&] { m.Set(All, 2, 3, 0); }), "subscript 1 of an array {2} is 3, not within 1 to 2"},
      {error_of([&] { intN(1) = 3e9; }), "conversion: 3000000000.000000 does not fit into an int"},
#endif
      {error_of([&] { (void)m(R(1, 3), 1); }), "range R(1,3) as subscript 1 of an array {2, 3} is not within 1 to 2"},
      {error_of([&] { (void)m(All, R(3, 1)); }), "range R(3,1) as subscript 2 of an array {2, 3} is not within 1 to 3"},
      {error_of([&] { (void)m.dimension(3); }), "dimension(3) of an array with 2 dimensions"},
      {error_of([&] { m.Set(1, All, make_lumenN(2, 1, 2)); }), "Set: the shapes {3} and {2} do not fit"},
      {error_of([&] { (void)m.Extract(intN()); }), "Extract: 0 subscripts for an array {2, 3}"},
      {error_of([&] { doubleN() * doubleNNN(0, 1 << 30, 1 << 30); }),
       "an array of the shape {1073741824, 1073741824} is too large"},
      {error_of([&] { doubleN v(-1); }), "an array cannot have the shape {-1}"},
      {error_of([&] { doubleNNN v(1 << 30, 1 << 30, 1 << 30); }),
       "an array of the shape {1073741824, 1073741824, 1073741824} is too large"}};
  for (const auto& row : rows) EXPECT_EQ(row.error, row.expected);
}

TEST(Subscripts, SectionsAreSet) {
  doubleNN m(3, 3);
  m.Set(2, All, make_lumenN(3, 1, 2, 3));
  m.Set(R(1, 2), 1, 7);
  m.SetCol(3, make_lumenN(3, 4.5, 5.5, 6.5));
  EXPECT_EQ(text(m), "{{7, 0, 4.5}, {7, 2, 5.5}, {0, 0, 6.5}}");
  m.SetSubMatrix(2, 3, 1, 2, m(R(1, 2), R(2, 3)));
  EXPECT_EQ(text(m), "{{7, 0, 4.5}, {0, 4.5, 5.5}, {2, 5.5, 6.5}}");
  EXPECT_EQ(text(m.SubMatrix(1, 2, 2, 3)), "{{0, 4.5}, {4.5, 5.5}}");
  EXPECT_EQ(text(m.Rows(2, 3)), "{{0, 4.5, 5.5}, {2, 5.5, 6.5}}");
  EXPECT_EQ(text(m.Cols(1, 1)), "{{7}, {0}, {2}}");
  m.SetRows(1, 2, 2 * m.Rows(2, 3));
  EXPECT_EQ(text(m), "{{0, 9, 11}, {4, 11, 13}, {2, 5.5, 6.5}}");
  m.Set(R(2, 3), 3, 1, 1.5);
  m.Set(All, R(2, 3), -1, make_lumenN(2, 7, 8));
  EXPECT_EQ(text(m), "{{0, 9, 11}, {4, 11, 1.5}, {2, 7, 8}}");
  intN v = make_lumenN(4, 1, 2, 3, 4);
  v.SetSubVector(2, 3, 0);
  EXPECT_EQ(text(v) + text(v.SubVector(3, 4)), "{1, 0, 0, 4}{0, 4}");
}

// ---- aliasing

TEST(Aliasing, ElementsAreReadBeforeTheyAreOverwritten) {
  doubleN v = make_lumenN(6, 1, 2, 3, 4, 5, 6);
  v = v + v;
  v.Set(R(2, 6), v(R(1, 5)));
  EXPECT_EQ(text(v), "{2, 2, 4, 6, 8, 10}");
  v.Set(R(1, 5), v(R(2, 6)) + v(R(1, 5)));
  EXPECT_EQ(text(v), "{4, 6, 10, 14, 18, 10}");
  v = v(R(3, -1));
  EXPECT_EQ(text(v), "{10, 14, 18, 10}");
  v = Join(v(R(4, 4)), v);
  EXPECT_EQ(text(v), "{10, 10, 14, 18, 10}");
  doubleNN m = two_by_three();
  m = Transpose(m);
  EXPECT_EQ(text(m), "{{1, 4}, {2, 5}, {3, 6}}");
  m = m * two_by_three();
  EXPECT_EQ(text(m), "{{17, 22, 27}, {22, 29, 36}, {27, 36, 45}}");
  m.Set(All, 1, m(1, All));
  m.Set(1, All, m(R(1, 3), 2));
  EXPECT_EQ(text(m), "{{22, 29, 36}, {22, 29, 36}, {27, 36, 45}}");
  doubleNN square = two_by_three()(All, R(1, 2));
  square.Set(All, All, ElemProduct(square, square(R(1, 2), R(1, 2))));
  EXPECT_EQ(text(square), "{{1, 4}, {16, 25}}");
}

// ---- lists

TEST(Lists, AreMadeAndTakenApart) {
  const intN v = make_lumenN(3, 1, 2, 3);
  EXPECT_EQ(text(make_lumenN(0)), "{}");
  EXPECT_EQ(text(make_lumenN(2, 1, 2.5)), "{1, 2.5}");
  EXPECT_EQ(text(make_lumenN(2, v, 2 * v)), "{{1, 2, 3}, {2, 4, 6}}");
  EXPECT_EQ(text(make_lumenN(2, make_lumenN(1, v), make_lumenN(1, v))), "{{{1, 2, 3}}, {{1, 2, 3}}}");
  // A long list: vectors of ten, of which the last is shorter.
  EXPECT_EQ(text(lumen_flatten(make_lumenN(2, intN(10), make_lumenN(1, 4)))(R(9, 11))), "{0, 0, 4}");
  EXPECT_EQ(error_of([&] { make_lumenN(2, v, make_lumenN(1, 4)); }), "make_lumenN: the shapes {3} and {1} do not fit");
  EXPECT_EQ(error_of([&] { make_lumenN(2, 1); }), "make_lumenN: 1 elements, but 2 announced");
  EXPECT_EQ(text(Append(two_by_three(), 7 * v)), "{{1, 2, 3}, {4, 5, 6}, {7, 14, 21}}");
  EXPECT_EQ(error_of([&] { Append(two_by_three(), make_lumenN(1, 1)); }),
            "Append: the shapes {2, 3} and {1, 1} do not fit");
  EXPECT_EQ(text(Drop(v, R(2, 2))) + text(Drop(v, R(-2, -1))) + text(Drop(v, R(0, -1))), "{1, 3}{1}{1, 2, 3}");
  EXPECT_EQ(error_of([&] { Drop(v, R(0, 2)); }), "range R(0,2) as subscript 1 of an array {3} is not within 1 to 3");
  const intNNN t = counted<int, 3>({{2, 2, 3}});
  EXPECT_EQ(text(lumen_flatten0(t)), text(t));
  EXPECT_EQ(text(lumen_flatten2(counted<int, 4>({{2, 1, 1, 2}}))), "{{1, 2}, {3, 4}}");
  doubleNN r;
  r.reshape(3, 2, two_by_three());
  EXPECT_EQ(text(r), "{{1, 2}, {3, 4}, {5, 6}}");
  r.reshape(1, 2, 9);
  EXPECT_EQ(text(r), "{{9, 9}}");
  EXPECT_EQ(error_of([&] { r.reshape(2, 2, make_lumenN(3, 1, 2, 3)); }),
            "reshape: the shapes {2, 2} and {3} do not fit");
  EXPECT_EQ(text(lumen_sort(make_lumenN(3, make_lumenN(2, 2, 1), make_lumenN(2, 1, 5), make_lumenN(2, 1, 4)))),
            "{{1, 4}, {1, 5}, {2, 1}}");
  EXPECT_EQ(LumenMax(v - 2 * v) + LumenMin(two_by_three()), 0);
  EXPECT_EQ(error_of([] { LumenMax(doubleN()); }), "Max: empty array");
}

// ---- products

TEST(Products, AreThoseOfVectorsAndMatrices) {
  const doubleNN m = two_by_three();
  const doubleN v = make_lumenN(3, 1, 0, -1);
  EXPECT_EQ(v * v, 2);
  EXPECT_EQ(text(m * v), "{-2, -2}");
  EXPECT_EQ(text(make_lumenN(2, 1, 1) * m), "{5, 7, 9}");
  EXPECT_EQ(text(m * Transpose(m)), "{{14, 32}, {32, 77}}");
  EXPECT_EQ(text(counted<int, 3>({{2, 2, 2}}) * make_lumenN(2, 1, 10)), "{{21, 43}, {65, 87}}");
  EXPECT_EQ(error_of([&] { m* m; }), "Dot: the shapes {2, 3} and {2, 3} do not fit");
  EXPECT_EQ(text(doubleNN(2, 0) * doubleNN(0, 2)), "{{0, 0}, {0, 0}}");
  EXPECT_EQ(text(Cross(make_lumenN(3, 1, 0, 0), make_lumenN(3, 0, 1, 0))), "{0, 0, 1}");
  EXPECT_EQ(text(Cross(make_lumenN(2, 1, 0))), "{0, 1}");
  EXPECT_EQ(text(Cross(make_lumenN(4, 1, 0, 0, 0), make_lumenN(4, 0, 1, 0, 0), make_lumenN(4, 0, 0, 1, 0))),
            "{0, 0, 0, 1}");
  EXPECT_EQ(text(Cross(make_lumenN(5, 0, 2, 0, 0, 0), make_lumenN(5, 0, 0, 1, 0, 0),
                       make_lumenN(5, 0.5, 0.0, 0.0, 1.5, 0.0), make_lumenN(5, 0, 0, 0, 0, 1))),
            "{3, 0, 0, -1, 0}");
  EXPECT_EQ(error_of([&] { Cross(v, make_lumenN(2, 1, 2)); }), "Cross: a vector of 3 elements is wanted, not of 2");
  const lm_complexN z = make_lumenN(2, lm_complex(0, 1), 1);
  EXPECT_TRUE(z * z == 0);
}

// Every size around the edges of tiles and blocks, against the sum written out.
TEST(Products, OfLargeMatricesAgreeWithSums) {
  for (const int m : {1, 7, 8, 9, 97})
    for (const int n : {1, 4, 5, 33})
      for (const int k : {1, 8, 257}) {
        doubleNN a(m, k), b(k, n);
        for (int i = 0; i < a.size(); i++) a.elements()[i] = (i * 7 + 3) % 11 - 5;
        for (int i = 0; i < b.size(); i++) b.elements()[i] = (i * 5 + 1) % 13 - 6;
        const doubleNN c = a * b;
        for (int i = 1; i <= m; i++)
          for (int j = 1; j <= n; j++) {
            double sum = 0;
            for (int p = 1; p <= k; p++) sum += a(i, p) * b(p, j);
            ASSERT_EQ(c(i, j), sum) << m << " " << n << " " << k;
          }
      }
}

// ---- functions

TEST(Functions, OfNumbers) {
  EXPECT_EQ(make_lumenN(4, Mod(-7, 3), Mod(7, -3), Mod(-6, 3), Mod(7, -1)), make_lumenN(4, 2, -2, 0, 0));
  EXPECT_EQ(Mod(5.5, -2), -0.5);
  EXPECT_EQ(floor(-7 / 2), -3);  // the division of ints has cut already
  EXPECT_EQ(floor(-7.0 / 2), -4);
  EXPECT_EQ(make_lumenN(2, ifloor(-2.5), iceil(-2.5)), make_lumenN(2, -3, -2));
  EXPECT_EQ(make_lumenN(2, irint(2.5), irint(3.5)), make_lumenN(2, 2, 4));
  EXPECT_EQ(IntegerPart(-2.7), -2);
  EXPECT_EQ(FractionalPart(-2.75), -0.75);
  EXPECT_EQ(make_lumenN(3, sign(-0.5), sign(0), sign(2)), make_lumenN(3, -1, 0, 1));
  EXPECT_EQ(Max(1, 2.5) + Min(-1, 0) + abs(-2.5), 4);
  EXPECT_EQ(XFactorial(5) + XFactorial2(7), 120 + 105);
  EXPECT_EQ(error_of([] { Mod(3, 0); }), "Mod: 3 modulo 0");
#ifndef LM_NO_CHECKS
  EXPECT_EQ(error_of([] { ifloor(1e10); }), "ifloor: 10000000000.000000 does not fit into an int");
#endif
}

TEST(Functions, OfComplexNumbersMixWithOtherNumbers) {
  const lm_complex z(3, 4);
  EXPECT_TRUE(2 * z + 1 == lm_complex(7, 8));
  EXPECT_TRUE(z / lm_complex(0, 2) == lm_complex(2, -1.5));
  EXPECT_TRUE(pow(z, 2) == z * z);
  EXPECT_TRUE(pow(lm_complex(0, 2), -2) == -0.25);
  EXPECT_EQ(abs(z) + re(z) + im(conjugate(z)), 4);
  EXPECT_NEAR(abs(exp(lm_complex(0, 1) * arg(z)) - z / 5), 0, 1e-15);
  EXPECT_NEAR(abs(pow(2, z) - exp(z * std::log(2.0))), 0, 1e-14);
  EXPECT_EQ(text(lm_complexN(make_lumenN(2, z, 1))), "{(3,4), (1,0)}");
  // a + I*b of anything.
  EXPECT_TRUE(lm_complex(z, 2) == lm_complex(3, 6) && lm_complex(1, z) == lm_complex(-3, 3));
  EXPECT_EQ(text(lm_complex(make_lumenN(2, 1, 2), 0.5)) + text(lm_complex(z, make_lumenN(1, z))),
            "{(1,0.5), (2,0.5)}{(-1,7)}");
  for (const double x : {-2.0, 0.5})
    for (const double y : {-1.0, 0.0, 3.0}) EXPECT_NEAR(abs(atan2(lm_complex(y), x) - std::atan2(y, x)), 0, 1e-15);
  EXPECT_NEAR(abs(tan(atan2(make_lumenN(1, z), 2)(1)) - z / 2), 0, 1e-14);
}

TEST(Functions, OfArraysGoElementByElement) {
  const doubleN x = make_lumenN(2, 0.25, -2.5);
  const struct {
    std::string text, expected;
  } rows[] = {{text(abs(x)), "{0.25, 2.5}"},
              {text(pow(2, make_lumenN(2, 3, 4))), "{8, 16}"},
              {text(!make_lumenN(2, 0, 5)), "{1, 0}"},
              {text(floor(make_lumenN(2, 7, -7) / 2)), "{3, -4}"},
              {text((0 < x) || (x <= -2.5)) + text((1 > x) && !(x >= 0)), "{1, 1}{0, 1}"},
              {text(x == 0.25) + text(x != x), "{1, 0}{0, 0}"},
              {text(make_lumenN(2, 0, 1) || make_lumenN(2, 0, 0)), "{0, 1}"},
              {text(atan2(make_lumenN(1, 0.0), make_lumenN(1, 2.0))), "{0}"}};
  for (const auto& row : rows) EXPECT_EQ(row.text, row.expected);
  intN i(2);
  i = floor(x);
  EXPECT_EQ(text(i), "{0, -3}");
  EXPECT_EQ(text((i(2) < 0) ? (x + i) : (i)), "{0.25, -5.5}");
}

// As a whole: arrays of different shapes are different, and only as arrays they do not fit.
TEST(Functions, EqualityIsAlsoATruth) {
  const doubleN x = make_lumenN(2, 1, 2), y = make_lumenN(3, 1, 2, 3);
  EXPECT_TRUE(x == x && !(x == y) && x != y && (x == y || y == y(All)) && make_lumenN(2, 1, 2) == x);
  EXPECT_FALSE(x != x || x == 1 || !(x == x));
  EXPECT_EQ(error_of([&] { const intN equal = x == y; }), "Equal: the shapes {2} and {3} do not fit");
}

TEST(Functions, Statistics) {
  const intN v = make_lumenN(4, 4, 1, 3, 2);
  EXPECT_EQ(lumen_standard_deviation(v), std::sqrt(5.0 / 3));
  EXPECT_EQ(lumen_median(v), 2.5);
  EXPECT_EQ(text(lumen_total(two_by_three())) + text(lumen_mean(two_by_three())), "{5, 7, 9}{2.5, 3.5, 4.5}");
  EXPECT_EQ(text(lumen_variance(two_by_three())), "{4.5, 4.5, 4.5}");
  EXPECT_EQ(lumen_variance(make_lumenN(2, lm_complex(0, 1), lm_complex(0, -1))), 2);
  EXPECT_EQ(lumen_total(doubleN()), 0);
  EXPECT_EQ(text(lumen_sort(make_lumenN(4, 2, NAN, 1, 3))), "{1, 2, 3, nan}");
  const auto no_numbers = make_lumenN(2, make_lumenN(2, NAN, 0.0), make_lumenN(2, 1.0, 0.0));
  EXPECT_TRUE(std::isnan(lumen_quantile3(v, 0.5, no_numbers)));
  EXPECT_EQ(error_of([] { lumen_mean(doubleN()); }), "Mean: at least 1 values are wanted, not 0");

  // The smallest value with a share q at or below it; then with straight lines between the values (definition 7).
  const auto lines = make_lumenN(2, make_lumenN(2, 1, -1), make_lumenN(2, 0, 1));
  const doubleN q = make_lumenN(4, 0, 0.25, 0.3, 1);
  EXPECT_EQ(text(lumen_quantile2L(v, q)), "{1, 1, 2, 4}");
  EXPECT_EQ(text(lumen_quantile3L(v, q, lines)), "{1, 1.75, 1.9, 4}");
  EXPECT_EQ(lumen_quantile2(v, 0.5) + lumen_quantile3(v, 0.5, lines), 4.5);
  EXPECT_EQ(text(lumen_quantile2(two_by_three(), 0.6)), "{4, 5, 6}");
  EXPECT_EQ(text(lumen_quantile2L(two_by_three(), make_lumenN(1, 0.5))), "{{1, 2, 3}}");
}

// ---- texts and files

class Files : public testing::Test {
 protected:
  const std::string name_ = testing::TempDir() + "lumenmat_test.csv";
  void TearDown() override { std::remove(name_.c_str()); }
  void write(const std::string& content) const { std::ofstream(name_) << content; }
};

TEST_F(Files, ComeBackAsTheyWere) {
  const doubleNN m = 1 / (two_by_three() + 2);
  lumen_export1(name_, m, NULL, NULL);
  EXPECT_TRUE(lumen_import1NNdouble(name_) == m);
  const lm_complexN z = make_lumenN(3, lm_complex(1, -0.1), lm_complex(0, 1e-300), lm_complex(-2, 0));
  lumen_export(name_, z, "list", NULL, NULL);
  EXPECT_TRUE(lumen_importNlm_complex(name_, "LIST", NULL, NULL) == z);
  lumen_export1(name_, intN(), NULL, NULL);
  EXPECT_EQ(lumen_import1Nint(name_).size(), 0);
}

TEST_F(Files, AreReadWithBlanksAndRefusedWithReasons) {
  write("1, 2\r\n\n 3 ,4 \n");
  EXPECT_EQ(text(lumen_import1NNint(name_)), "{{1, 2}, {3, 4}}");
  EXPECT_EQ(text(lumen_import1Ndouble(name_)), "{1, 2, 3, 4}");
  write("1,2\n3\n");
  EXPECT_EQ(error_of([&] { lumen_import1NNint(name_); }),
            "Import: " + name_ + ": row 2 has 1 numbers, the first one 2");
  write("1,x\n");
  EXPECT_EQ(error_of([&] { lumen_import1NNint(name_); }), "Import: " + name_ + ", line 1: not a number: 1,x");
  EXPECT_EQ(error_of([&] { lumen_import1Nint("/no/such.csv"); }), "Import: cannot read /no/such.csv");
  EXPECT_EQ(error_of([&] { lumen_importNint("/", "csv", NULL, NULL); }), "Import: cannot read /");
  EXPECT_EQ(error_of([&] { lumen_import1Nint("name"); }), "Import: the name name has no suffix that tells the format");
  EXPECT_EQ(error_of([&] { lumen_importNint(name_, "xls", NULL, NULL); }), "Import: unknown format xls");
  EXPECT_EQ(error_of([&] { lumen_export(name_, two_by_three(), "list", NULL, NULL); }),
            "Export: the format list is for vectors");
  EXPECT_EQ(error_of([&] { lumen_export1("/no/such.csv", intN(1), NULL, NULL); }), "Export: cannot write /no/such.csv");
}

}  // namespace
