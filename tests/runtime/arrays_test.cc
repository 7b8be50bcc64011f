// The functions of arrays.oz, generated and compiled: each whole-array operation of the language in the form in which
// generated code writes it, with results worked out by hand.

#include "arrays.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "text.h"

namespace {

TEST(CompiledArrays, GiveWhatTheLanguageMeans) {
  const doubleN a = make_lumenN(2, 1.0, -2.5), b = make_lumenN(2, 4.0, 0.5);
  const doubleN v = make_lumenN(4, 10.0, 20.0, 30.0, 40.0), w = make_lumenN(3, 1.0, 2.0, 3.0);
  const doubleN five = make_lumenN(5, 5.0, 1.0, 4.0, 2.0, 3.0);
  const doubleNN m = make_lumenN(3, w, w + 3, w + 6), square = make_lumenN(2, make_lumenN(2, 1.0, 2.0), b);
  const doubleNN wide = make_lumenN(2, w, w + 3);
  const doubleNNN cube = make_lumenN(2, square, square + 1);
  const intN i = make_lumenN(2, 7, -7), j = make_lumenN(2, 2, 2);
  const lm_complexN z = make_lumenN(2, lm_complex(0, 2), lm_complex(-3, 0));
  const struct {
    std::string value, expected;
  } rows[] = {
      {text(Arrays_Tpicked(v)), "{20, 30}"},
      {text(Arrays_Ttail(v)), "{20, 30, 40}"},
      {text(Arrays_Tcorner(m)), "{{2, 3}, {5, 6}}"},
      {text(Arrays_Tcolumn(m, 3)), "{3, 6, 9}"},
      {text(Arrays_Tlone(m)), "{{4, 5, 6}}"},
      {text(Arrays_Tlast(v)), "40"},
      {text(Arrays_Telement(m)), "6"},
      {text(Arrays_Tlinear(a, b, 2)), "{4.5, -2.5}"},
      {text(Arrays_Tchosen(a, b, 1)), "{5, -2}"},
      {text(Arrays_Tchosen(a, b, 0)), "{-3, -3}"},
      {text(Arrays_Tshifted(a, 1)), "{3, -0.5}"},
      {text(Arrays_Tshifted(a, 0)), "{3, -4}"},
      {text(Arrays_Tproducts(a, b)), "{4, 3.125}"},
      {text(Arrays_Tquotients(a, b)), "{0.25, -5}"},
      {text(Arrays_TintegerQuotients(i, j)), "{3.5, -3.5}"},
      {text(Arrays_Twholes(i, j)), "{3, -4}"},
      {text(Arrays_Trounded(a)), "{5, -10}"},  // 1+1+1+1+1, -3-2-2-2-1
      {text(Arrays_Tsizes(z)), text(make_lumenN(2, 2 + 0 + 2 + M_PI / 2, 3 - 3 + 0 + M_PI))},
      {text(Arrays_Tmixed(z, 1, 2)), "{(-2,3), (-5,1)}"},  // z + I - 2
      {text(Arrays_Tinside(a, 0)) + text(Arrays_Tinside(a, 1)), "{0, 0}{0, 1}"},
      {text(Arrays_Tsame(a, b)) + text(Arrays_Tsame(a, a)), "10"},
      {text(Arrays_Troot(lm_complex(4, 0))), "(18,32)"},
      {text(Arrays_Ttwice(square, a)), "{1.5, -14.625}"},
      {text(Arrays_Tjoined(a, b)), "{1, -2.5, 4, 0.5, 1, -2.5}"},
      {text(Arrays_Tends(a)), "{0.5, 1, -2.5, 1.5}"},
      {text(Arrays_Tdropped(v, 1)), "{20, 40}"},
      {text(Arrays_Tdropped(v, -1)), "{10, 30}"},
      {text(Arrays_Tmiddle(v)), "{20, 30}"},
      {text(Arrays_Tflat(wide)), "{1, 2, 3, 4, 5, 6}"},
      {text(Arrays_Tflatter(cube)), "{{1, 2}, {4, 0.5}, {2, 3}, {5, 1.5}}"},
      {text(Arrays_Tstatistics(five)), "{3, 2.5, 3}"},
      {text(Arrays_Ttotals(make_lumenN(2, a, a))), "{3, -7.5}"},
      {text(Arrays_Tordered(five)), "{1, 2, 3, 4, 5}"},
      {text(Arrays_Tquantiles(five)), "3"},
      {text(Arrays_Textremes(five)), "10"},  // 5 - 1 + 5 + 1
      {text(Arrays_Ttwelve()), "{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}"},
      {text(Arrays_Tsections(w)), "{{1, 2, 3}, {2.5, 4, 7}, {1, 6, 7}}"},
      {text(Arrays_Tmoved(v)), "{20, 20, 40, 60}"},
      {text(Arrays_Tlisted(7)), "{1.5, 2.5}"},
      {text(Arrays_Tplace(m)), "{6, 1}"},
      {text(Arrays_Tswapped(m)), "{4, 8, 12}"},
      {text(Arrays_Tpatched(m, -w)), "{{-1, -2, -1}, {1, 2, -2}, {4, 5, -3}}"},
      {text(Arrays_Tspread()), "5"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.value, row.expected);

  const doubleN f = Arrays_Tfunctions(a);
  for (int k = 1; k <= 2; k++) {
    const double x = a(k);
    EXPECT_DOUBLE_EQ(f(k), std::sin(x) + std::sqrt(std::fabs(x)) + 2 * std::exp(x) + (k == 1 ? 0 : -0.5) + x * x +
                               1 / std::tan(x) + (k == 1 ? 1 : 1.5));
  }
  const lm_complexN waves = Arrays_Twaves(z);
  EXPECT_NEAR(abs(waves(1) - lm_complex(std::exp(-2), -2)), 0, 1e-15);
  EXPECT_NEAR(abs(waves(2) - lm_complex(std::cos(3) - 3, -std::sin(3))), 0, 1e-15);
}

TEST(CompiledArrays, PrintAndUseFiles) {
  const std::string name = testing::TempDir() + "arrays_test.csv";
  const doubleNN m = make_lumenN(2, make_lumenN(2, 0.1, 2.0), make_lumenN(2, -1e300, 1e-9));
  Arrays_Tfiled(name, m);
  EXPECT_TRUE(Arrays_Tagain(name) == m);
  std::remove(name.c_str());
  testing::internal::CaptureStdout();
  Arrays_Tsaid(make_lumenN(2, 1.5, 2.0));
  cout.flush();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "v is {1.5, 2} and 1.5\n");
}

}  // namespace
