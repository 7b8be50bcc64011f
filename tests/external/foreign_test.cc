// External functions of all forms, called through their stubs and from generated code. The routines in C and Fortran
// stand beside this file, those in C++ in it.

#include "foreign.h"

#include <gtest/gtest.h>

#include "foreign.icc"

// ---- the routines in C++

void x_values(const double& x, int& j, const lm_complex& z, double& y, const int& i, lm_complex& w, RWCString& s,
              const int& b, int& c) {
  j = i + 1;
  y = x / 2;
  w = z * lm_complex(0, 1);
  s += "!";
  c = !b;
}

doubleN x_repeated(const double& x, const int& n) {
  doubleN v(n);
  v = x;
  return v;
}

int x_counted(doubleN& v) {
  v(-1) = 7;
  return static_cast<int>(v.size());
}

void x_halved(doubleN& v) { v = 0.5 * v; }

void x_taken4(const int& n1, const int& n2, const int& n3, const int& n4, doubleNNNN& a, lm_complexNNNN& b) {
  for (int i = 1; i <= n1; i++)
    for (int j = 1; j <= n2; j++)
      for (int k = 1; k <= n3; k++)
        for (int l = 1; l <= n4; l++) {
          b(l, k, j, i) = 1000 * i + 100 * j + 10 * k + l;
          a(i, j, k, l) += b(l, k, j, i).real();
        }
}

double plain(const double& x) { return 10 * x; }

double x_filled(const double& x, doubleN& v) {
  v = x;
  return x;
}

intN x_counts;

namespace {

using lumen::Array;
using lumen::Shape;

// ---- arrays

// The element with the subscripts of a list.
template <class A, size_t... K>
auto element(const A& a, const std::vector<int>& at, std::index_sequence<K...>) {
  return a(at[K]...);
}

template <class T, class U, int N>
void marks_each_element(void (*stub)(const Array<T, N>&, Array<T, N>&, Array<U, N>&)) {
  constexpr auto kAll = std::make_index_sequence<N>();
  const int sizes[] = {3, 2, 4, 5};
  Shape<N> shape;
  std::copy_n(sizes, N, shape.d);
  Array<T, N> a(shape), changed;
  Array<U, N> digits;
  for (int k = 0; k < a.size(); k++) a.data()[k] = k;
  stub(a, changed, digits);
  std::vector<int> at(N, 1);
  for (int k = 0; k < N;) {
    int mark = 0;
    for (const int subscript : at) mark = 10 * mark + subscript;
    EXPECT_EQ(element(changed, at, kAll), element(a, at, kAll) + T(mark)) << N << ": " << mark;
    EXPECT_EQ(element(digits, {at.rbegin(), at.rend()}, kAll), U(mark)) << N << ": " << mark;
    for (k = 0; k < N && ++at[k] > sizes[k]; k++) at[k] = 1;
  }
}

TEST(ForeignArrays, KeepTheirSubscripts) {
  marks_each_element(f_marked2_ftn);
  marks_each_element(f_marked4_ftn);
  marks_each_element(c_noted4_c);
  marks_each_element(x_taken4_cpp);
}

TEST(ForeignArrays, TellTheirSizes) {
  doubleNN a(2, 3);
  a(1, 1) = 1;
  a(1, 3) = 10;
  a(2, 3) = 100;
  EXPECT_EQ(f_total_ftn(a, 0), 109);
}

// ---- scalars

TEST(ForeignScalars, ComeOutInTheOrderOfTheDirections) {
  const lm_complex z(3, 4), turned(-4, 3);
  int j = 0, c = 1;
  double y = 0;
  lm_complex w;
  f_scalars_ftn(5, 0.5, z, j, y, w);
  EXPECT_TRUE(j == 6 && y == 0.25 && w == turned) << j << " " << y << " " << w;
  c_numbers_c(7, 1.5, z, j, y, w);
  EXPECT_TRUE(j == 8 && y == 0.75 && w == turned) << j << " " << y << " " << w;
  RWCString s;
  x_values_cpp(9, 2.5, z, "text", 1, j, y, w, s, c);
  EXPECT_TRUE(j == 10 && y == 1.25 && w == turned && s == "text!" && c == 0) << j << " " << y << " " << w << s << c;
}

TEST(ForeignScalars, AreValuesOfTheRoutine) {
  EXPECT_EQ(f_power_ftn(2, 10), 1024);
  EXPECT_EQ(f_turned_ftn(lm_complex(3, 4)), lm_complex(-4, 3));
  EXPECT_EQ(c_conjugate_c(lm_complex(3, 4)), lm_complex(3, -4));
  EXPECT_EQ(x_repeated_cpp(2.5, 3)(3), 2.5);
  int n = 0;
  double rest = 0;
  f_division_ftn(7.5, 2, n, rest);
  EXPECT_TRUE(n == 3 && rest == 1.5) << n << " " << rest;
  c_quotient_c(-7.5, 2, n, rest);
  EXPECT_TRUE(n == -4 && rest == 0.5) << n << " " << rest;
}

TEST(ForeignScalars, AreHandedBackByAnArgument) {
  EXPECT_EQ(f_hypotenuse_ftn(3, 4), 5);
  EXPECT_EQ(c_product_c(lm_complex(1, 2), lm_complex(3, 4)), lm_complex(-5, 10));
  const int i = 21;
  EXPECT_EQ(f_doubled_ftn(i), 42);
  EXPECT_EQ(i, 21);
  EXPECT_EQ(x_halved_cpp(make_lumenN(2, 3.0, 5.0))(2), 2.5);
}

TEST(ForeignTexts, CanBeReadAndChanged) {
  EXPECT_EQ(c_length_c("four"), 4);
  EXPECT_EQ(c_capitals_c("m3"), "M3");
  const RWCString s = "abc";
  RWCString changed;
  int n;
  c_replaced_c(s, 1, changed, n);
  EXPECT_TRUE(s == "abc" && changed == "a*c" && n == 'b') << changed << n;
}

// ---- names without a stub, and generated code

TEST(ForeignNames, AreUsedAsTheyStand) {
  doubleN v(2);
  EXPECT_EQ(x_filled(1.5, v), 1.5);
  EXPECT_EQ(v(2), 1.5);
  x_counts = make_lumenN(3, 1, 2, 3);
  EXPECT_EQ(Foreign_Tused(8), 5);  // a quarter of 8, and 3
}

TEST(GeneratedCode, CallsRoutinesOfAllLanguages) {
  // three elements, the last one 7; (2 + 4) - (1 + 3), times 20; twice 5
  EXPECT_EQ(Foreign_Ttogether(5), 3 * 7 + 2 * 20 + 10);
}

}  // namespace
