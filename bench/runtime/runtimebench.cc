// Measures functions that are generated from kernels.oz beside the same loops written by hand, in one run; where they
// are installed, Eigen and Blitz++ do the whole-array work, too. Prints one line for each kernel:
//
//   name  hand, ms  generated, ms  their ratio  peer  ms
//
// Generated loops and their hand-written twins must agree to the last bit.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

#include "kernels.h"

#if __has_include(<eigen3/Eigen/Dense>)
#include <eigen3/Eigen/Dense>
#define HAS_EIGEN
#endif
#if __has_include(<blitz/array.h>)
#include <blitz/array.h>
#define HAS_BLITZ
#endif

namespace {

using Values = std::vector<double>;

volatile double kept;  // so that no result counts as unused

// Best of some runs, in milliseconds. Each run is followed by one of the others, so that all meet the same machine.
struct Subject {
  const char* name;
  std::function<double()> run;
  double best = 1e300;
  double result = 0;
};

void measure(const char* kernel, std::vector<Subject> subjects) {
  for (int round = 0; round < 9; round++)
    for (Subject& s : subjects) {
      const auto start = std::chrono::steady_clock::now();
      s.result = s.run();
      const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
      s.best = std::min(s.best, taken.count());
      kept = s.result;
    }
  std::printf("%-28s %9.3f %9.3f %7.2f", kernel, subjects[0].best, subjects[1].best,
              subjects[1].best / subjects[0].best);
  for (size_t i = 2; i < subjects.size(); i++) std::printf("   %s %.3f", subjects[i].name, subjects[i].best);
  std::printf("\n");
  for (const Subject& s : subjects)
    if (std::fabs(s.result - subjects[0].result) > 1e-9 * std::fabs(subjects[0].result)) {
      std::printf("%s of %s gives %.17g, not %.17g\n", kernel, s.name, s.result, subjects[0].result);
      std::exit(1);
    }
}

template <class A>
void need_same(const char* kernel, const A& generated, const Values& hand) {
  if (std::memcmp(generated.data(), hand.data(), hand.size() * sizeof(double)) == 0) return;
  std::printf("%s: the generated loop differs from the one by hand\n", kernel);
  std::exit(1);
}

Values numbers(size_t n) {
  Values v(n);
  unsigned state = 1;
  for (double& x : v) x = (state = state * 1664525u + 1013904223u) / 4294967296.0;
  return v;
}

doubleN vector_of(const Values& v) {
  doubleN a(v.size());
  std::copy(v.begin(), v.end(), a.data());
  return a;
}

doubleNN matrix_of(const Values& v, int m) {
  doubleNN a(m, v.size() / m);
  std::copy(v.begin(), v.end(), a.data());
  return a;
}

// ---- by hand

__attribute__((noinline)) double hand_series(int n) {
  double s = 0, sign = 1;
  for (int i = 1; i <= n; i++) {
    s = s + sign / (i * (i + 0.5));
    sign = -sign;
  }
  return s;
}

void hand_sweep(int m, int n, const double* v, double* w) {
  for (int j = 1; j < n - 1; j++)
    for (int i = 1; i < m - 1; i++)
      w[i + j * m] = 0.25 * (v[i - 1 + j * m] + v[i + 1 + j * m] + v[i + (j - 1) * m] + v[i + (j + 1) * m]);
}

__attribute__((noinline)) Values hand_stencil(int m, int n, const Values& u, int rounds) {
  Values v = u, w = u;
  for (int k = 0; k < rounds; k++) {
    hand_sweep(m, n, v.data(), w.data());
    hand_sweep(m, n, w.data(), v.data());
  }
  return v;
}

__attribute__((noinline)) Values hand_product(int n, const Values& a, const Values& b) {
  Values c(a.size());
  for (int j = 0; j < n; j++)
    for (int k = 0; k < n; k++)
      for (int i = 0; i < n; i++) c[i + j * n] = c[i + j * n] + a[i + k * n] * b[k + j * n];
  return c;
}

__attribute__((noinline)) Values hand_pulls(int n, const Values& x, const Values& mass) {
  Values f(x.size());
  for (int i = 0; i < n; i++)
    for (int j = 0; j < n; j++) {
      const double dx = x[3 * j] - x[3 * i], dy = x[3 * j + 1] - x[3 * i + 1], dz = x[3 * j + 2] - x[3 * i + 2];
      const double r2 = dx * dx + dy * dy + dz * dz + 0.01;
      const double p = mass[j] / (r2 * std::sqrt(r2));
      f[3 * i] = f[3 * i] + p * dx;
      f[3 * i + 1] = f[3 * i + 1] + p * dy;
      f[3 * i + 2] = f[3 * i + 2] + p * dz;
    }
  return f;
}

__attribute__((noinline)) Values hand_horner(const Values& x, const Values& c) {
  Values y(x.size());
  for (size_t i = 0; i < x.size(); i++) {
    double s = 0;
    for (size_t k = 0; k < c.size(); k++) s = s * x[i] + c[k];
    y[i] = s;
  }
  return y;
}

__attribute__((noinline)) Values hand_combined(const Values& a, const Values& b, const Values& c, int rounds) {
  Values d = a;
  for (int k = 0; k < rounds; k++)
    for (size_t i = 0; i < d.size(); i++) d[i] = 0.5 * d[i] + b[i] * c[i] - a[i] / 3.0 + 1.0;
  return d;
}

// ---- the kernels

void scalars() {
  const int n = 3000000;
  if (Kernels_Tseries(n) != hand_series(n)) std::exit(1);
  measure("scalar loop", {{"hand", [=] { return hand_series(n); }}, {"generated", [=] { return Kernels_Tseries(n); }}});
}

void stencils(int m, int n, int rounds) {
  const Values u = numbers(size_t(m) * n);
  const doubleNN a = matrix_of(u, m);
  need_same("stencil", Kernels_Tstencil(m, n, a, 2), hand_stencil(m, n, u, 2));
  need_same("sections", Kernels_Tsections(m, n, a, 2), hand_stencil(m, n, u, 2));
  char title[64];
  std::snprintf(title, sizeof title, "stencil loops %d", m);
  const auto hand = [&] { return hand_stencil(m, n, u, rounds)[m + 1]; };
  measure(title, {{"hand", hand}, {"generated", [&] { return Kernels_Tstencil(m, n, a, rounds)(2, 2); }}});
  std::vector<Subject> subjects = {{"hand", hand},
                                   {"generated", [&] { return Kernels_Tsections(m, n, a, rounds)(2, 2); }}};
#ifdef HAS_EIGEN
  subjects.push_back({"Eigen", [&] {
                        Eigen::ArrayXXd v = Eigen::Map<const Eigen::ArrayXXd>(u.data(), m, n), w = v;
                        const auto sweep = [&](const Eigen::ArrayXXd& from, Eigen::ArrayXXd& to) {
                          to.block(1, 1, m - 2, n - 2) =
                              0.25 * (from.block(0, 1, m - 2, n - 2) + from.block(2, 1, m - 2, n - 2) +
                                      from.block(1, 0, m - 2, n - 2) + from.block(1, 2, m - 2, n - 2));
                        };
                        for (int k = 0; k < rounds; k++) {
                          sweep(v, w);
                          sweep(w, v);
                        }
                        return v(1, 1);
                      }});
#endif
#ifdef HAS_BLITZ
  subjects.push_back({"Blitz++", [&] {
                        using A = blitz::Array<double, 2>;
                        const A given(const_cast<double*>(u.data()), blitz::shape(m, n), blitz::neverDeleteData,
                                      blitz::fortranArray);
                        A v = given.copy(), w = given.copy();
                        const blitz::Range i(2, m - 1), j(2, n - 1);
                        for (int k = 0; k < rounds; k++) {
                          w(i, j) = 0.25 * (v(i - 1, j) + v(i + 1, j) + v(i, j - 1) + v(i, j + 1));
                          v(i, j) = 0.25 * (w(i - 1, j) + w(i + 1, j) + w(i, j - 1) + w(i, j + 1));
                        }
                        return v(2, 2);
                      }});
#endif
  std::snprintf(title, sizeof title, "stencil sections %d", m);
  measure(title, subjects);
}

void products() {
  const int n = 500;
  const Values a = numbers(size_t(n) * n), b = numbers(size_t(n) * n);
  const doubleNN x = matrix_of(a, n), y = matrix_of(b, n);
  need_same("product", Kernels_Tproduct(n, x, y), hand_product(n, a, b));
  const auto hand = [&] { return hand_product(n, a, b)[7]; };
  measure("matrix product loops 500", {{"hand", hand}, {"generated", [&] { return Kernels_Tproduct(n, x, y)(8, 1); }}});
  std::vector<Subject> subjects = {{"hand", hand}, {"generated", [&] { return Kernels_Tdotted(n, x, y)(8, 1); }}};
#ifdef HAS_EIGEN
  subjects.push_back({"Eigen", [&] {
                        const Eigen::Map<const Eigen::MatrixXd> p(a.data(), n, n), q(b.data(), n, n);
                        const Eigen::MatrixXd c = p * q;
                        return c(7, 0);
                      }});
#endif
  measure("matrix product by * 500", subjects);
}

void bodies() {
  const int n = 1000;
  const Values x = numbers(3 * n), mass = numbers(n);
  const doubleNN a = matrix_of(x, 3);
  const doubleN m = vector_of(mass);
  need_same("pulls", Kernels_Tpulls(n, a, m), hand_pulls(n, x, mass));
  measure("N-body 1000", {{"hand", [&] { return hand_pulls(n, x, mass)[5]; }},
                          {"generated", [&] { return Kernels_Tpulls(n, a, m)(3, 2); }}});
}

void polynomials() {
  const int n = 100000, m = 20;
  const Values x = numbers(n), c = numbers(m);
  const doubleN a = vector_of(x), b = vector_of(c);
  need_same("horner", Kernels_Thorner(n, a, m, b), hand_horner(x, c));
  measure("Horner, a vector of 100,000", {{"hand", [&] { return hand_horner(x, c)[9]; }},
                                          {"generated", [&] { return Kernels_Thorner(n, a, m, b)(10); }}});
}

void combinations(int n, int rounds) {
  const Values a = numbers(n), b = numbers(n + 1), c = numbers(n + 2);
  const Values b_cut(b.begin(), b.end() - 1), c_cut(c.begin(), c.end() - 2);
  const doubleN x = vector_of(a), y = vector_of(b_cut), z = vector_of(c_cut);
  need_same("combined", Kernels_Tcombined(n, x, y, z, 2), hand_combined(a, b_cut, c_cut, 2));
  std::vector<Subject> subjects = {{"hand", [&] { return hand_combined(a, b_cut, c_cut, rounds)[3]; }},
                                   {"generated", [&] { return Kernels_Tcombined(n, x, y, z, rounds)(4); }}};
#ifdef HAS_EIGEN
  subjects.push_back({"Eigen", [&] {
                        using Map = Eigen::Map<const Eigen::ArrayXd>;
                        const Map p(a.data(), n), q(b_cut.data(), n), r(c_cut.data(), n);
                        Eigen::ArrayXd d = p;
                        for (int k = 0; k < rounds; k++) d = 0.5 * d + q * r - p / 3.0 + 1.0;
                        return d(3);
                      }});
#endif
#ifdef HAS_BLITZ
  subjects.push_back({"Blitz++", [&] {
                        using A = blitz::Array<double, 1>;
                        const auto given = [&](const Values& v) {
                          return A(const_cast<double*>(v.data()), blitz::shape(n), blitz::neverDeleteData);
                        };
                        const A p = given(a), q = given(b_cut), r = given(c_cut);
                        A d = p.copy();
                        for (int k = 0; k < rounds; k++) d = 0.5 * d + q * r - p / 3.0 + 1.0;
                        return d(3);
                      }});
#endif
  char title[64];
  std::snprintf(title, sizeof title, "whole arrays of %d", n);
  measure(title, subjects);
}

}  // namespace

int main() {
  std::printf("%-28s %9s %9s %7s\n", "kernel", "hand, ms", "generated", "ratio");
  scalars();
  stencils(200, 200, 100);
  stencils(1000, 1000, 4);
  products();
  bodies();
  polynomials();
  combinations(2000, 2000);
  combinations(1000000, 8);
  return 0;
}
