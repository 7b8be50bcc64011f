// External functions: types of foreign routines, arguments, whole stubs.

#include "pompunp_extern.h"

#include "generators.h"
#include "pompunp_fn.h"

namespace oz {
namespace {

using PompExtern = PompModel;

// The words of a text, one blank apart.
std::string squeezed(const std::string& text) {
  std::string out;
  for (const std::string& word : words(text)) out += (out.empty() ? "" : " ") + word;
  return out;
}

// In Fortran, and in C as an input and as an output, "=" where that is the same.
TEST_F(PompExtern, ForeignTypes) {
  cpstart_icc_output();
  for (const auto& [type, fortran, c_input, c_output] : table<4>(R"(
      int --> INTEGER */ int * --> int /input */ int --> int /output-inout */ int *
      real --> DOUBLE PRECISION */ double * --> double/input */ double --> double/output-inout */ double *
      complex --> DOUBLE COMPLEX */ double * --> complex/input */ double * --> complex/output-inout */ double *
      string --> */ --> char * /input */ char * --> char * /output-inout */ char *
      bool --> */ --> */ --> */                                 int[0] --> INTEGER(#) */ int * --> int[] */ int * --> =
      int[0,0] --> INTEGER(#,#) */ int * --> int[col*colsize+row] */ int * --> =
      int[0,0,0,0] --> INTEGER(#,#,#,#) */ int * --> int[4d] */ int * --> =
      real[0] --> DOUBLE PRECISION (#) */ double * --> double */ double * --> =
      real[0,0,0] --> DOUBLE PRECISION (#,#,#) */ double * --> double[3d] */ double * --> =
      complex[0] --> DOUBLE COMPLEX (#) */ double * --> complex */ double * --> =
      complex[0,0,0,0] --> DOUBLE COMPLEX (#,#,#,#) */ double * --> complex[4d] */ double * --> =
      string[0] --> */ --> char *[] */ char * * --> =
      string[0,0,0] --> */ --> char *[3d] */ char * * --> =     string[0,0,0,0] --> */ --> char *[4d] */ char * * --> =
      bool[0] --> */ --> */ --> =
    )")) {
    const auto written = [&, t = type_of_text(type)](Foreign_language language, bool isinput) {
      return squeezed(icc.added([&] { CP_foreign_type(language, t, isinput); }));
    };
    EXPECT_EQ(fortran, written(foreign_fortran, true)) << type;
    EXPECT_EQ(fortran, written(foreign_fortran, false)) << type;
    EXPECT_EQ(c_input, written(foreign_c, true)) << type;
    EXPECT_EQ(c_output == "=" ? c_input : c_output, written(foreign_c, false)) << type;
  }
  const auto cpp = [](bool isinput) { CP_foreign_type(foreign_cpp, type_of_text("int[0,0]"), isinput); };
  EXPECT_EQ("*/ const intNN  & ", icc.added([&] { cpp(true); }));
  EXPECT_EQ("*/ intNN  & ", icc.added([&] { cpp(false); }));
  EXPECT_EQ("#define LM_NNN\n#define LM_NNNN\n", levels.added([] {
    CP_foreign_type(foreign_c, type_of_text("int[0,0,0]"), true);
    CP_foreign_type(foreign_fortran, type_of_text("real[0,0,0,0]"), true);
  }));
}

// The same for arguments, and a C++ output behind them.
TEST_F(PompExtern, Arguments) {
  declare_types("x:real");
  cpstart_icc_output();
  for (const auto& [type, fortran, c_input, c_output, cpp_output] : table<5>(R"(
      int --> &x_OUT --> x_OUT --> &((int &)x_OUT) --> (int &)x_OUT
      complex --> ((lm_complex &)x_OUT).pairPtr() --> ((lm_complex &)x_OUT).pairPtr() --> = --> (lm_complex &)x_OUT
      real[0,0] --> ((doubleNN &)x_OUT).data() --> ((doubleNN &)x_OUT).data() --> = --> (doubleNN &)x_OUT
      string -->  --> ((RWCString &)x_OUT).getdata() --> = --> (RWCString &)x_OUT
      bool -->  -->  --> = --> (int &)x_OUT
    )")) {
    const auto written = [&, t = type_of_text(type)](Foreign_language language, bool isinput) {
      return squeezed(icc.added([&] { CP_foreign_argument(language, t, isinput, typed_tree("x"), "_OUT"); }));
    };
    EXPECT_EQ(fortran, written(foreign_fortran, true)) << type;
    EXPECT_EQ(fortran, written(foreign_fortran, false)) << type;
    EXPECT_EQ(c_input, written(foreign_c, true)) << type;
    EXPECT_EQ(c_output == "=" ? c_input : c_output, written(foreign_c, false)) << type;
    EXPECT_EQ("x_OUT", written(foreign_cpp, true)) << type;
    EXPECT_EQ(cpp_output, written(foreign_cpp, false)) << type;
  }
}

// Declaration and stub of f, and its prototype.
TEST_F(PompExtern, Stubs) {
  for (const auto& [definition, declaration, stub, prototype] : table<4>(R"(
      // one output: a variable of the stub
      real f[real x_] := externinfo "p" "" "C" procedure(Input x, Output y); --> \
          /* BRANCH 2 */ extern "C" { void pf( /* Input double/input */ double x, /* Output double/output-inout */ \
          double *y); } --> inline double pf_c ( const double &x) { double y; pf ( /* Input */ x, /* Output */ \
          &((double &)y)); return y; } --> double pf_c ( const double &);
      // one in-out argument is changed in place
      real array[0] f[real array[0] v_] := externinfo "p" "" "C++" procedure(InOut v); --> \
          /* BRANCH 2 */ void pf( /* InOut */ doubleN & v); --> inline doubleN pf_cpp ( const doubleN &v) { pf ( /* \
          InOut */ (doubleN &)v); return v; } --> doubleN pf_cpp ( const doubleN &);
      // no value: what comes out is copied or gets its shape before the call
      {real array[0], real array[0]} f[int n_, real array[0, 0] a_, real array[0] b_] :=  externinfo "p" "" "Fortran" \
          procedure(n, Input a, Output r(n, 2), InOut b); --> /* BRANCH 1 */ #ifdef _MSC_VER #define pf_ PF #endif \
          extern "C" { void ZC_STDCALL pf_( /* Input INTEGER */ int *n, /* Input DOUBLE PRECISION (#,#) */ double *a, \
          /* Output-sized DOUBLE PRECISION (#) */ double *r, /* InOut DOUBLE PRECISION (#) */ double *b); } --> \
          inline void pf_ftn ( int n, const doubleNN &a, const doubleN &b, doubleN &r_OUT, doubleN &b_OUT) { \
          r_OUT.SetShape(n,2); b_OUT=b; pf_ ( /* Input */ &n, /* Input */ ((doubleNN &)a).data(), /* Output */ \
          ((doubleN &)r_OUT).data(), /* InOut */ ((doubleN &)b_OUT).data()); } --> void pf_ftn ( int , const doubleNN \
          &, const doubleN &, doubleN &, doubleN &);
      // no value, but the routine has one: the first result
      {real, int} f[complex z_] := externinfo "p" "" "C" function(z, Output j); --> \
          /* BRANCH 1 */ extern "C" { double pf( /* Input complex/input */ double *z, /* Output int /output-inout */ \
          int *j); } --> inline void pf_c ( const lm_complex &z, double &__FUNCVAL___OUT, int &j_OUT) { \
          __FUNCVAL___OUT=pf ( /* Input */ ((lm_complex &)z).pairPtr(), /* Output */ &((int &)j_OUT)); } --> void \
          pf_c ( const lm_complex &, double &, int &);
      // sizes: a variable of the stub, or an argument
      real f[real array[0] v_, int k_] := externinfo "p" "" "Fortran" function(v, n = dim(v, 1), k = dim(v, 1)); --> \
          /* BRANCH 2 */ #ifdef _MSC_VER #define pf_ PF #endif extern "C" { double ZC_STDCALL pf_( /* Input DOUBLE \
          PRECISION (#) */ double *v, /* Input-size INTEGER */ int * n, /* Input-size INTEGER */ int * k); } --> \
          inline double pf_ftn ( const doubleN &v, int k) { int n=v.dimension(1); k=v.dimension(1); return pf_ ( /* \
          Input */ ((doubleN &)v).data(), &n, &k); } --> double pf_ftn ( const doubleN &, int );
      // an output ahead of an in-out argument counts as the only one in one order of the list, not in the other
      real f[int x_] := externinfo "p" "" "C" procedure(Output y, InOut x); --> \
          /* BRANCH 2 */ extern "C" { double pf( /* Output double/output-inout */ double *y, /* InOut int \
          /output-inout */ int *x); } --> inline double pf_c ( const int &x) { x_OUT=x; double y; pf ( /* Output */ \
          &((double &)y), /* InOut */ &((int &)x)); return y; } --> double pf_c ( const int &);
    )")) {
    keep(definition);
    const PompTexts added = function("f", false);
    EXPECT_EQ(declaration + ' ' + stub, squeezed(added.icc)) << definition;
    EXPECT_EQ(prototype, squeezed(added.h)) << definition;
    EXPECT_EQ("", added.cc + added.tm + added.wrappers);
  }
}

// What is wrong with a declaration is told, and the text goes on.
TEST_F(PompExtern, Reports) {
  for (const auto& [definition, report, text] : table<3>(R"(
      // An instance can put a value in the place of a name.
      class C(p) hide: {real, real} f[real x_] := externinfo "" "" "C" procedure(x, p, Output p, InOut p); end C; \
          instance M inherits C(5) end M; --> Bad parameter 5 is mentioned --> double x, /* Input */, /* Output \
          double/output-inout */ double *5, /* InOut */); }
      real f[real x_] := externinfo "p" "" "C" function(x, q); --> \
          Bad parameter q is mentioned in parameter specifiers but not in argument list.\n --> double x, /* Input */); }
      {real array[2], real} f[real x_] := externinfo "p" "" "C" procedure(Output y, Output z); --> \
          Impossible  Output parameter y of array type  - replace Output by InOut array parameter\n --> /* Output \
          double */ double *y,
      real array[2] f[real x_] := externinfo "p" "" "Fortran" function(x); --> \
          The return type of external Fortran or C function f cannot be array. Make an external procedure with more \
          than one InOut or Output parameter instead\n --> extern "C" { IMPOSSIBLE_ARRAY_TYPE ZC_STDCALL pf_(
      {real} f[real x_] := externinfo "p" "" "C" procedure(Output y, Output z); --> \
          \nFailed in CP_Ftnc_Get_Idx_Out 2\n --> double *y, /* Output */z);
      {real, real} f[real x_] := externinfo "p" "" "C" procedure(Output y); --> \
          Not enough parameters, remaining is 1\n --> double &y_OUT, double &)
      {real, real} f[real x_] := externinfo "p" "" "C" procedure(InOut x); --> \
          Failure of CP_Ftnc_outparams\n\n---Tree dump\n Parameterspec1\n --> double &x_OUT, double &)
    )")) {
    keep(definition);
    glob_genmode_flag = 1;
    std::string report_text;
    const PompTexts added = texts([&] { report_text = message_of([] { funcgen("M`f"); }); });
    EXPECT_TRUE(contains(report_text, report));
    EXPECT_TRUE(contains(squeezed(added.icc), text));
  }
}

}  // namespace
}  // namespace oz
