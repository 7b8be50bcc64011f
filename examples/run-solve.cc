// Calls the functions of solve.oz, which use LAPACK, BLAS and routines in C and C++, and holds the results against
// closed forms.

#include "check.h"
#include "solve.h"
#include "solve.icc"

namespace {

// Rows of powers of 1, 2, 3, 4. The matrix is not symmetric, so that rows taken for columns are noticed.
doubleNN powers() {
  doubleNN a(4, 4);
  for (int i = 1; i <= 4; i++)
    for (int j = 1; j <= 4; j++) a(i, j) = std::pow(i, j - 1);
  return a;
}

void equations() {
  // The cubic through (1,0), (2,0), (3,0) and (4,-6) is 6 - 11 x + 6 x^2 - x^3.
  const doubleNN a = powers();
  const doubleN b = make_lumenN(4, 0.0, 0.0, 0.0, -6.0);
  const doubleN x = Solve_Tsolution(4, a, b);
  const double expected[] = {6, -11, 6, -1};
  for (int i = 1; i <= 4; i++) check(("coefficient of x^" + std::to_string(i - 1)).c_str(), x(i), expected[i - 1]);
  check("1 + length of a.x - b", 1 + Solve_Tresidual(4, a, x, b), 1);
  check("residual of twice the solution", Solve_Tresidual(4, a, 2 * x, b), 6);
  // The product of all differences of 1, 2, 3, 4.
  check("determinant", Solve_Tdeterminant(4, a), 1 * 1 * 1 * 2 * 2 * 3);
  check("element (2,4), which nobody may have changed", a(2, 4), 8);
}

// All that LAPACK gives. Behind the first step the second column is 0, 1, 2, 3: the greatest stands in row 4.
void factors() {
  const doubleNN a = powers();
  doubleNN lu;
  intN pivots;
  doubleN x;
  int info;
  dgesv_ftn(4, 1, a, make_lumenN(4, 1.0, 2.0, 3.0, 4.0), lu, pivots, x, info);
  check("state", info, 0);
  check("row of the second pivot", pivots(2), 4);
  check("solution for the nodes themselves: 0 + 1 x", x(2), 1);
  doubleNN singular(2, 2);
  dgesv_ftn(2, 1, singular, doubleN(2), lu, pivots, x, info);
  check("state for a matrix of zeros", info, 1);
}

void products() {
  doubleN x(10), y(5);
  for (int i = 1; i <= 10; i++) x(i) = i;
  for (int i = 1; i <= 5; i++) y(i) = i;
  // 1*1 + 3*2 + 5*3 + 7*4 + 9*5: the sum of (2i - 1) i
  check("scalar product with steps of 2 and 1", ddot_ftn(5, x, 2, y, 1), 95);
}

// Waves that vanish beyond the ends keep their form; each round takes them to cos^2(k Pi/(2 (n + 1))) of their height.
void filter() {
  const int n = 20, wave = 3, rounds = 7;
  const double damping = std::pow(std::cos(wave * M_PI / (2 * (n + 1))), 2);
  doubleN v(n), smoothed;
  for (int i = 1; i <= n; i++) v(i) = std::sin(wave * M_PI * i / (n + 1));
  double change;
  filter_smooth_c(v, rounds, smoothed, change);
  check("smoothed wave", smoothed(5), v(5) * std::pow(damping, rounds));
  double highest = 0;
  for (int i = 1; i <= n; i++) highest = std::fmax(highest, std::fabs(v(i)));
  check("greatest change of the last round", Solve_Tripple(v, rounds),
        highest * std::pow(damping, rounds - 1) * (1 - damping));
  check("change in no round at all", Solve_Tripple(v, 0), 0);
}

void statistics() {
  const doubleN v = make_lumenN(6, 8.0, 1.0, 32.0, 4.0, 2.0, 16.0);
  check("median of powers of two", stat_median_cpp(v), 6);
  check("median - mean", Solve_Tskew(6, v), 6 - 63.0 / 6);
}

}  // namespace

int main() {
  equations();
  factors();
  products();
  filter();
  statistics();
  return checked();
}
