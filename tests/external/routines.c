/* The C routines that foreign.oz declares. Complex numbers are pairs of doubles, arrays stand column by column. */
#include <complex.h>
#include <ctype.h>
#include <math.h>
#include <string.h>

double c_rate_c = 0.25;

void c_numbers(double x, int *j, const double *z, double *y, int i, double *w) {
  *j = i + 1;
  *y = x / 2;
  w[0] = -z[1];
  w[1] = z[0];
}

double complex c_conjugate(const double *z) { return z[0] - z[1] * I; }

int c_quotient(double x, double y, double *rest) {
  *rest = x - floor(x / y) * y;
  return (int)floor(x / y);
}

void c_product(const double *z, double *r, const double *w) {
  r[0] = z[0] * w[0] - z[1] * w[1];
  r[1] = z[0] * w[1] + z[1] * w[0];
}

void c_capitals(char *s) {
  for (; *s; s++) *s = (char)toupper(*s);
}

int c_length(const char *s) { return (int)strlen(s); }

/* n: the place of a character that becomes a star; then, what it was. */
void c_replaced(char *s, int *n) {
  const int place = *n;
  *n = s[place];
  s[place] = '*';
}

void c_noted4(int n1, int n2, int n3, int n4, double complex *a, int *b) {
  for (int i = 0; i < n1; i++)
    for (int j = 0; j < n2; j++)
      for (int k = 0; k < n3; k++)
        for (int l = 0; l < n4; l++) {
          const int mark = 1111 + 1000 * i + 100 * j + 10 * k + l;
          a[((l * n3 + k) * n2 + j) * n1 + i] += mark;
          b[((i * n2 + j) * n3 + k) * n4 + l] = mark;
        }
}
