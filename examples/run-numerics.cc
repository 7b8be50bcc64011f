// Calls the functions of numerics.oz and holds the results against closed forms.

#include "check.h"
#include "numerics.h"

// The routines that the model only declares. They belong to other libraries; these will do here.
double errorFunction(const double& x) { return std::erf(x); }
int randomInteger(const int& low, const int& high) { return (low + high) / 2; }
extern "C" double spbessel(int order, double x) { return jn(order, x); }
extern "C" void geopolar_(double* x, double* y, double* radius, double* angle) {
  *radius = std::hypot(*x, *y);
  *angle = std::atan2(*y, *x);
}
extern "C" void libsorted(int size, double* x, double* result, int* exchanges) {
  *exchanges = 0;
  for (int i = 0; i < size; i++) {
    int k = i;
    for (; k > 0 && result[k - 1] > x[i]; k--, ++*exchanges) result[k] = result[k - 1];
    result[k] = x[i];
  }
}
#include "numerics.icc"

namespace {

void polynomials() {
  // 6 - 11 x + 6 x^2 - x^3 = -(x-1)(x-2)(x-3)
  const doubleN c = make_lumenN(4, 6.0, -11.0, 6.0, -1.0);
  check("polynomial at 5", Numerics_Tpolynomial(5, 4, c), -(5 - 1) * (5 - 2) * (5 - 3.0));
  double value, slope;
  Numerics_TpolynomialSlope(5, 4, c, value, slope);
  check("its slope there", slope, -26);
  check("the root beside 0.5", Numerics_TpolynomialRoot(0.5, 4, c), 1);
}

void points() {
  const int n = 101;
  const doubleN x = Numerics_Tspaced(-1, 1, n);
  check("the last of the spaced points", x(-1), 1);
  // The trapezoidal rule is exact for a straight line.
  check("area under 3 + 2x", Numerics_Ttrapezoid(n, 3 + 2 * x, x(2) - x(1)), 6);
  double least, most, mean;
  Numerics_Tspread(n, x, least, most, mean);
  check("least", least, -1);
  check("most", most, 1);
  check("1 + mean", 1 + mean, 1);
  double at0, slope;
  Numerics_TstraightLine(n, x, 0.25 - 4 * x, at0, slope);
  check("straight line: at 0", at0, 0.25);
  check("straight line: slope", slope, -4);
  check("place of 0.501", Numerics_Tplace(0.501, n, x), 76);
}

void matrices() {
  // Row i of the Hilbert matrix times (1, 1, 1) is the sum of 1/i to 1/(i+2).
  doubleNN hilbert(2, 3);
  for (int i = 1; i <= 2; i++)
    for (int j = 1; j <= 3; j++) hilbert(i, j) = 1.0 / (i + j - 1);
  doubleN ones(3);
  ones = 1;
  const doubleN y = Numerics_Tapplied(2, 3, hilbert, ones);
  check("first row of the Hilbert matrix", y(1), 11.0 / 6);
  check("second row", y(2), 13.0 / 12);
  const doubleN product = hilbert * ones;
  check("the same by *", product(2), 13.0 / 12);
  // -u'' = 2 with u = 0 at both ends of n + 1 steps: u = x (1 - x), which second differences meet exactly.
  const int n = 50;
  const double h = 1.0 / (n + 1);
  doubleN low(n), middle(n), right(n);
  low = -1;
  middle = 2;
  right = 2 * h * h;
  const doubleN u = Numerics_Ttridiagonal(n, low, middle, low, right);
  check("three diagonals, element 10", u(10), 10 * h * (1 - 10 * h));
}

// A field that is linear in both directions solves the grid's equations: a sweep must not change it.
void relaxation() {
  doubleNN plane(5, 7), swept;
  for (int i = 1; i <= 5; i++)
    for (int j = 1; j <= 7; j++) plane(i, j) = 2 * i - 3 * j;
  double change;
  Numerics_Trelaxed(5, 7, plane, 1.5, swept, change);
  check("1 + change of a plane field", 1 + change, 1);
  check("element (3,4) of it", swept(3, 4), -6);
  // A peak of 1 has lifted two of its neighbours by 1/4 when its own turn comes; then it sinks to (1/4 + 1/4)/4.
  plane(3, 4) += 1;
  Numerics_Trelaxed(5, 7, plane, 1, swept, change);
  check("largest change with a peak", change, 7.0 / 8);
}

void numbers() {
  check("common divisor of 1071 and 462", Numerics_TcommonDivisor(1071, 462), 21);
  int primes = 0;
  for (int n = 1; n <= 1000; n++) primes += Numerics_Tprime(n);
  check("prime numbers up to 1000", primes, 168);
  check("bilinear law beyond the knee", Numerics_Tbilinear(3, 2, 10, 100), 120);
  // The middle points of steps that the knee falls between two of: the exact work of the spring.
  check("work of the bumper, 24 mm", bumper_Twork(0.024),
        4e4 * 0.012 * 0.012 / 2 + 4e4 * 0.012 * 0.012 + 2.5e6 * 0.012 * 0.012 / 2);
  check("bumper closed at 13 mm", bumper_Tclosed(0.013), 1);
}

void other_languages() {
  check("error function of 0.5", errorFunction(0.5), 0.5204998778130465);
  check("Bessel function J0 of 1", spbessel_c(0, 1), 0.7651976865579666);
  double radius, angle;
  geopolar_ftn(3, 4, radius, angle);
  check("radius of (3, 4)", radius, 5);
  check("its angle", angle, 0.9272952180016122);
  doubleN ordered;
  int exchanges;
  libsorted_c(3, make_lumenN(3, 2.5, 1.5, -1.0), ordered, exchanges);
  check("the least of three numbers", ordered(1), -1);
  check("exchanges that sort them", exchanges, 3);
}

}  // namespace

int main() {
  Numerics_Ttolerance = 1e-12;
  Numerics_Tlimit = 200;
  polynomials();
  points();
  matrices();
  relaxation();
  numbers();
  other_languages();
  return checked();
}
