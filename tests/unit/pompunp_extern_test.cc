// External functions: types of foreign routines, arguments, whole stubs.

#include "pompunp_extern.h"

#include "pomp_model.h"
#include "pompunp_fn.h"
#include "type_text.h"

namespace oz {
namespace {

using PompExtern = PompModel;

TEST_F(PompExtern, ForeignTypes) {
  const struct {
    const char *type, *fortran, *c_input, *c_output;
  } rows[] = {
      {"int", "  INTEGER */ int *", "  int /input */ int ", "  int /output-inout */ int *"},
      {"real", "  DOUBLE PRECISION */ double *", "  double/input */ double ", "  double/output-inout */ double *"},
      {"complex", "  DOUBLE COMPLEX */ double *", "  complex/input */ double *", "  complex/output-inout */ double *"},
      {"string", "*/", "  char * /input */ char * ", "  char * /output-inout */ char *"},
      {"bool", "*/", "*/", "*/"},
      {"int[0]", "  INTEGER(#) */  int *", "  int[] */  int *", nullptr},
      {"int[0,0]", "  INTEGER(#,#) */  int *", "  int[col*colsize+row] */  int *", nullptr},
      {"int[0,0,0]", "  INTEGER(#,#,#) */  int *", "  int[3d] */  int *", nullptr},
      {"int[0,0,0,0]", "  INTEGER(#,#,#,#) */  int *", "  int[4d] */  int *", nullptr},
      {"real[0]", "  DOUBLE PRECISION (#) */ double *", "  double */ double *", nullptr},
      {"real[0,0]", "  DOUBLE PRECISION (#,#) */ double *", "  double[col*colsize+row] */ double *", nullptr},
      {"real[0,0,0]", "  DOUBLE PRECISION (#,#,#) */ double *", "  double[3d] */  double *", nullptr},
      {"real[0,0,0,0]", "  DOUBLE PRECISION (#,#,#,#) */ double *", "  double[4d] */  double *", nullptr},
      {"complex[0]", "  DOUBLE COMPLEX (#) */ double *", "  complex */ double *", nullptr},
      {"complex[0,0]", "  DOUBLE COMPLEX (#,#) */ double *", "  complex[col*colsize+row] */ double *", nullptr},
      {"complex[0,0,0]", "  DOUBLE COMPLEX (#,#,#) */ double *", "  complex[3d] */  double *", nullptr},
      {"complex[0,0,0,0]", "  DOUBLE COMPLEX (#,#,#,#) */ double *", "  complex[4d] */  double *", nullptr},
      {"string[0]", "*/", "  char *[] */  char * *", nullptr},
      {"string[0,0]", "*/", "  char *[col*colsize+row] */  char * *", nullptr},
      {"string[0,0,0]", "*/", "  char *[3d] */  char * *", nullptr},
      {"string[0,0,0,0]", "*/", "  char *[4d] */  char * *", nullptr},
      {"bool[0]", "*/", "*/", nullptr}};
  cpstart_icc_output();
  for (const auto& row : rows) {
    const auto written = [&](Foreign_language language, bool isinput) {
      return icc.added([&] { CP_foreign_type(language, type_of_text(row.type), isinput); });
    };
    EXPECT_EQ(row.fortran, written(foreign_fortran, true)) << row.type;
    EXPECT_EQ(row.fortran, written(foreign_fortran, false)) << row.type;
    EXPECT_EQ(row.c_input, written(foreign_c, true)) << row.type;
    EXPECT_EQ(row.c_output ? row.c_output : row.c_input, written(foreign_c, false)) << row.type;
  }
  const auto cpp = [](bool isinput) { CP_foreign_type(foreign_cpp, type_of_text("int[0,0]"), isinput); };
  EXPECT_EQ("*/ const intNN  & ", icc.added([&] { cpp(true); }));
  EXPECT_EQ("*/ intNN  & ", icc.added([&] { cpp(false); }));
  EXPECT_EQ("#define LM_NNN\n#define LM_NNNN\n", levels.added([] {
    CP_foreign_type(foreign_c, type_of_text("int[0,0,0]"), true);
    CP_foreign_type(foreign_fortran, type_of_text("real[0,0,0,0]"), true);
  }));
}

TEST_F(PompExtern, Arguments) {
  const struct {
    const char *type, *fortran, *c_input, *c_output, *cpp_output;
  } rows[] = {
      {"int", " &x_OUT", "  x_OUT", " &((int &)x_OUT)", "(int &)x_OUT"},
      {"real", " &x_OUT", "  x_OUT", " &((double &)x_OUT)", "(double &)x_OUT"},
      {"complex", "((lm_complex &)x_OUT).pairPtr()", "((lm_complex &)x_OUT).pairPtr()", nullptr, "(lm_complex &)x_OUT"},
      {"real[0,0]", "((doubleNN &)x_OUT).data()", "((doubleNN &)x_OUT).data()", nullptr, "(doubleNN &)x_OUT"},
      {"string", "", "((RWCString &)x_OUT).getdata()", nullptr, "(RWCString &)x_OUT"},
      {"bool", "", "", nullptr, "(int &)x_OUT"}};
  declare_types("x:real");
  cpstart_icc_output();
  for (const auto& row : rows) {
    const auto written = [&](Foreign_language language, bool isinput) {
      const tAsynt x = typed_tree("x");
      return icc.added([&] { CP_foreign_argument(language, type_of_text(row.type), isinput, x, "_OUT"); });
    };
    EXPECT_EQ(row.fortran, written(foreign_fortran, true)) << row.type;
    EXPECT_EQ(row.fortran, written(foreign_fortran, false)) << row.type;
    EXPECT_EQ(row.c_input, written(foreign_c, true)) << row.type;
    EXPECT_EQ(row.c_output ? row.c_output : row.c_input, written(foreign_c, false)) << row.type;
    EXPECT_EQ("x_OUT", written(foreign_cpp, true)) << row.type;
    EXPECT_EQ(row.cpp_output, written(foreign_cpp, false)) << row.type;
  }
}

// ---- stubs

// The texts of a foreign declaration in its three parts: the arguments are listed one on a line.
std::string lines(const std::string& before, std::initializer_list<const char*> arguments, const char* after) {
  std::string text = before;
  const char* separator = "";
  for (const char* argument : arguments) {
    text += separator;
    text += argument;
    separator = ",\n        ";
  }
  return text + after;
}

struct Stub_row {
  const char* definition;
  std::string declaration, stub, prototype;
};

TEST_F(PompExtern, Stubs) {
  const Stub_row rows[] = {
      // the routine returns the value
      {"real f[real x_] := externinfo \"p\" \"\" \"C\" function(x);",
       lines("/* BRANCH 2 */\nextern \"C\" { double pf(\n        ", {"/* Input    double/input */ double x"},
             ");\n}\n"),
       " inline double pf_c ( \n       const double &x)\n       {        return pf (\n         /* Input */    x);\n}\n",
       "double pf_c ( const double &);\n\n"},
      {"String f[] := externinfo \"\" \"\" \"C\" procedure();",
       "/* BRANCH 2 */\nextern \"C\" { RWCString f(\n        );\n}\n",
       " inline RWCString f_c ()\n       {        return f (\n         );\n}\n", "RWCString f_c ();\n\n"},
      // one output: a variable of the stub
      {"real f[real x_] := externinfo \"p\" \"\" \"C\" procedure(Input x, Output y);",
       lines("/* BRANCH 2 */\nextern \"C\" { void pf(\n        ",
             {"/* Input    double/input */ double x", "/* Output    double/output-inout */ double *y"}, ");\n}\n"),
       lines(" inline double pf_c ( \n       const double &x)\n       {      double y;\n      pf (\n         ",
             {"/* Input */    x", "/* Output */   &((double &)y)"}, ");\n      return y;\n}\n"),
       "double pf_c ( const double &);\n\n"},
      // one in-out argument is changed in place
      {"real array[0] f[real array[0] v_] := externinfo \"p\" \"\" \"C++\" procedure(InOut v);",
       "/* BRANCH 2 */\nvoid pf(\n        /* InOut   */ doubleN  & v);\n",
       " inline doubleN pf_cpp ( \n       const doubleN &v)\n       {      pf (\n         /* InOut  */  (doubleN "
       "&)v);\n"
       "      return v;\n}\n",
       "doubleN pf_cpp ( const doubleN &);\n\n"},
      // no value: what comes out is copied or gets its shape before the call
      {"{real array[0], real array[0]} f[int n_, real array[0, 0] a_, real array[0] b_] :="
       "  externinfo \"p\" \"\" \"Fortran\" procedure(n, Input a, Output r(n, 2), InOut b);",
       lines("/* BRANCH 1 */\n\n#ifdef _MSC_VER\n#define pf_ PF\n#endif\n\nextern \"C\" { void  ZC_STDCALL pf_(\n      "
             "  ",
             {"/* Input    INTEGER */ int *n", "/* Input    DOUBLE PRECISION (#,#) */ double *a",
              "/* Output-sized    DOUBLE PRECISION (#) */ double *r", "/* InOut     DOUBLE PRECISION (#) */ double *b"},
             ");\n}\n"),
       lines("inline void pf_ftn ( \n       int n, \n       const doubleNN &a, \n       const doubleN &b, \n       "
             "doubleN &r_OUT, \n       doubleN &b_OUT)\n       {\n       r_OUT.SetShape(n,2);\n\n       b_OUT=b;\n"
             "      pf_ (\n         ",
             {"/* Input */   &n", "/* Input */  ((doubleNN &)a).data()", "/* Output */  ((doubleN &)r_OUT).data()",
              "/* InOut  */  ((doubleN &)b_OUT).data()"},
             ");\n}\n"),
       "void pf_ftn ( int , const doubleNN &, const doubleN &, doubleN &, doubleN &);\n\n"},
      // no value, but the routine has one: the first result
      {"{real, int} f[complex z_] := externinfo \"p\" \"\" \"C\" function(z, Output j);",
       lines("/* BRANCH 1 */\nextern \"C\" { double pf(\n        ",
             {"/* Input    complex/input */ double *z", "/* Output    int /output-inout */ int *j"}, ");\n}\n"),
       lines("inline void pf_c ( \n       const lm_complex &z, \n       double &__FUNCVAL___OUT, \n       int &j_OUT)\n"
             "       {       __FUNCVAL___OUT=pf (\n         ",
             {"/* Input */  ((lm_complex &)z).pairPtr()", "/* Output */   &((int &)j_OUT)"}, ");\n}\n"),
       "void pf_c ( const lm_complex &, double &, int &);\n\n"},
      // sizes: a variable of the stub, or an argument
      {"real f[real array[0] v_, int k_] := externinfo \"p\" \"\" \"Fortran\" function(v, n = dim(v, 1), k = dim(v, "
       "1));",
       lines("/* BRANCH 2 */\n\n#ifdef _MSC_VER\n#define pf_ PF\n#endif\n\nextern \"C\" { double  ZC_STDCALL pf_(\n"
             "        ",
             {"/* Input    DOUBLE PRECISION (#) */ double *v", "/* Input-size   INTEGER */ int * n",
              "/* Input-size   INTEGER */ int * k"},
             ");\n}\n"),
       lines(" inline double pf_ftn ( \n       const doubleN &v, \n       int k)\n       {\n"
             "        int n=v.dimension(1);\n\n       k=v.dimension(1);\n        return pf_ (\n         ",
             {"/* Input */  ((doubleN &)v).data()", " &n", " &k"}, ");\n}\n"),
       "double pf_ftn ( const doubleN &, int );\n\n"},
      // an output ahead of an in-out argument counts as the only one in one order of the list, not in the other
      {"real f[int x_] := externinfo \"p\" \"\" \"C\" procedure(Output y, InOut x);",
       lines("/* BRANCH 2 */\nextern \"C\" { double pf(\n        ",
             {"/* Output    double/output-inout */ double *y", "/* InOut     int /output-inout */ int *x"}, ");\n}\n"),
       lines(" inline double pf_c ( \n       const int &x)\n       {\n       x_OUT=x;\n      double y;\n      pf (\n"
             "         ",
             {"/* Output */   &((double &)y)", "/* InOut  */   &((int &)x)"}, ");\n      return y;\n}\n"),
       "double pf_c ( const int &);\n\n"}};
  for (const Stub_row& row : rows) {
    keep(row.definition);
    const PompTexts added = function("f", false);
    EXPECT_EQ(row.declaration + row.stub, added.icc) << row.definition;
    EXPECT_EQ(row.prototype, added.h) << row.definition;
    EXPECT_EQ("", added.cc + added.tm + added.wrappers);
  }
}

// The host sees a stub like any other function.
TEST_F(PompExtern, TemplateAndWrapperOfAStub) {
  keep("{real, real} f[int n_, String s_] := externinfo \"p\" \"ctx`\" \"C\" procedure(n, s, Output a, Output b);");
  const PompTexts added = function("f");
  EXPECT_TRUE(contains(added.tm, ":Evaluate: BeginPackage[\"ctx`\"]\n:Evaluate: f;\n")) << added.tm;
  EXPECT_TRUE(contains(added.tm, ":Pattern:      f[ n_Integer, s_String]\n:Arguments:    { n,s}\n")) << added.tm;
  EXPECT_TRUE(contains(added.wrappers,
                       "     get_int(n);\n     get_string(s);\n     double  zc_O1;\n     double  zc_O2;\n"
                       "     pf_c( n,s,zc_O1,zc_O2);\n"))
      << added.wrappers;
}

// An instance can put a value in the place of a name.
TEST_F(PompExtern, ValueForAName) {
  keep(
      "class C(p) hide: {real, real} f[real x_] := externinfo \"\" \"\" \"C\" procedure(x, p, Output p, InOut p);"
      " end C; instance c inherits C(5) end c;");
  const PompTexts added =
      texts([] { EXPECT_TRUE(contains(message_of([] { funcgen("c`f"); }), "Bad parameter 5 is mentioned")); });
  EXPECT_TRUE(contains(added.icc,
                       "double x,\n        /* Input  */,\n        /* Output    double/output-inout */ double *5,\n"
                       "        /* InOut   */);\n"))
      << added.icc;
}

// What is wrong with a declaration is told, and the text goes on.
TEST_F(PompExtern, Reports) {
  const struct {
    const char *definition, *report, *text;
  } rows[] = {
      {"real f[real x_] := externinfo \"p\" \"\" \"C\" function(x, q);",
       "Bad parameter q is mentioned in parameter specifiers but not in argument list.\n",
       "double x,\n        /* Input  */);\n"},
      {"{real array[2], real} f[real x_] := externinfo \"p\" \"\" \"C\" procedure(Output y, Output z);",
       "Impossible  Output parameter y of array type  - replace Output by InOut array parameter\n",
       "/* Output    double */ double *y,\n"},
      {"real array[2] f[real x_] := externinfo \"p\" \"\" \"Fortran\" function(x);",
       "The return type of external Fortran or C function f cannot be array. Make an external "
       "procedure with more than one InOut or Output parameter instead\n",
       "extern \"C\" {  IMPOSSIBLE_ARRAY_TYPE  ZC_STDCALL pf_(\n"},
      {"{real} f[real x_] := externinfo \"p\" \"\" \"C\" procedure(Output y, Output z);",
       "\nFailed in CP_Ftnc_Get_Idx_Out 2\n", "double *y,\n        /* Output  */z);\n"},
      {"{real, real} f[real x_] := externinfo \"p\" \"\" \"C\" procedure(Output y);",
       "Not enough parameters, remaining is 1\n", "double &y_OUT, \n       double &)\n"},
      {"{real, real} f[real x_] := externinfo \"p\" \"\" \"C\" procedure(InOut x);",
       "Failure of CP_Ftnc_outparams\n\n---Tree dump\n Parameterspec1\n", "double &x_OUT, \n       double &)\n"}};
  for (const auto& row : rows) {
    keep(row.definition);
    glob_genmode_flag = 1;
    std::string report;
    const PompTexts added = texts([&] { report = message_of([] { funcgen("M`f"); }); });
    EXPECT_TRUE(contains(report, row.report)) << report;
    EXPECT_TRUE(contains(added.icc, row.text)) << added.icc;
  }
}

}  // namespace
}  // namespace oz
