// Functions as C++: types, identifiers, declarations, and one function in all its files.

#include "pompunp_fn.h"

#include "generators.h"

namespace oz {
namespace {

using PompFn = PompModel;

// ---- types

// The word, the sizes and the suffix of each; a suffix "fatal" is none.
TEST_F(PompFn, Types) {
  for (const auto& [type, word, sizes, suffix] : table<4>(R"(
      int --> int\s -->  --> int            bool --> int\s -->  --> int\s         real --> double\s -->  --> double
      none -->  --> -->                     complex --> lm_complex\s -->  --> lm_complex\s
      string --> RWCString\s --> -->        real_s --> double\s -->  --> double
      real[3] --> doubleN\s --> (3) --> Ndouble                real[3,2] --> doubleNN\s --> (3, 2) --> NNdouble
      real[3,2,1] --> doubleNNN\s --> (3, 2, 1) --> fatal      real[4,3,2,1] --> doubleNNNN\s --> (4, 3, 2, 1) --> fatal
      complex[0] --> lm_complexN\s --> (0) --> Nlm_complex
      complex[0,0,0,0] --> lm_complexNNNN\s --> (0, 0, 0, 0) --> fatal            int[5] --> intN\s --> (5) --> Nint
      int[5,6] --> intNN\s --> (5, 6) --> NNint                int[5,6,7] --> intNNN\s --> (5, 6, 7) --> fatal
      int[5,6,7,8] --> intNNNN\s --> (5, 6, 7, 8) --> fatal    bool[5] --> intN\s --> (5) --> fatal
      bool[5,6,7,8] --> intNNNN\s --> (5, 6, 7, 8) --> fatal
      // The set's index has no size.
      real_s[-1,3] --> doubleNN\s --> (0, 3) --> NNdouble
    )")) {
    const tAsynt t = type_of_text(type);
    cpoutput("\n");
    EXPECT_EQ(word, cc.added([&] { CPoutput_basetype_decl(t); })) << type;
    EXPECT_EQ(sizes, cc.added([&] { CPoutput_array_dims(t); })) << type;
    cpoutput("\n");
    std::string report;
    const std::string text = cc.added([&] { report = message_of([&] { CPoutput_basetype_suffix(t); }); });
    EXPECT_EQ(suffix, contains(report, "Bad array type.\n") ? "fatal" : text) << type;
  }
  for (const char* type : {"string[3]", "none[3]", "real[]", "real[1,1,1,1,1]"})
    EXPECT_TRUE(contains(message_of([&] { CPoutput_basetype_decl(type_of_text(type)); }), "Bad array type.\n")) << type;
  EXPECT_EQ("", cc.added([] { CPoutput_array_dims(type_of_text("real[1,1,1,1,1]")); }));
}

// The pattern in the template, the call that fetches the argument, the level of the array library.
TEST_F(PompFn, PatternsOfArguments) {
  for (const auto& [type, pattern, fetch, level] : table<4>(R"(
      int --> a_Integer --> int -->                             bool --> a_Integer --> int -->
      string --> a_String --> string -->                        real --> a_Real --> double -->
      complex --> a_Complex --> complex -->                     real[0] --> VECTOR --> lumenNdouble --> N
      real[0,0] --> MATRIX --> lumenNNdouble --> NN             real[0,0,0] --> NUMBERS==3) --> lumenNNNdouble --> NNN
      real[0,0,0,0] --> NUMBERS==4) --> lumenNNNNdouble --> NNNN
      complex[0] --> VECTOR --> lumenNcomplex --> N             complex[0,0] --> MATRIX --> lumenNNcomplex --> NN
      complex[0,0,0,0] --> NUMBERS==4) --> lumenNNNNcomplex --> NNNN
      string[0] --> a_List/;VectorQ[a,StringQ] --> Nstring -->
      int[0] --> VECTOR --> lumenNint --> N                     bool[0,0] --> MATRIX --> lumenNNint --> NN
      bool[0,0,0] --> INTEGERS==3) --> lumenNNNint --> NNN      int[0,0,0,0] --> INTEGERS==4) --> lumenNNNNint --> NNNN
    )")) {
    std::string added_level, expected = pattern;
    for (const auto& [tag, whole] :
         {std::pair("VECTOR", "a_List/;VectorQ[a,NumberQ]"),
          {"MATRIX", "a_List/;MatrixQ[a,NumberQ]"},
          {"NUMBERS", "a_/;VectorQ[Flatten[a],NumberQ]&&(Length[Dimensions[a]]"},
          {"INTEGERS", "a_/;VectorQ[Flatten[a],Function[Head[#1]==Integer]]&&(Length[Dimensions[a]]"}})
      if (pattern.starts_with(tag)) expected.replace(0, std::string(tag).size(), whole);
    const PompTexts added =
        texts([&] { added_level = levels.added([&] { CPoutput_if_tm_pattern(type_of_text(type), "a"); }); });
    EXPECT_EQ(expected, added.tm) << type;
    EXPECT_EQ("get_" + fetch + "(a);", lines_of(added.wrappers)) << type;
    EXPECT_EQ(level.empty() ? "" : "#define LM_" + level + "\n", added_level) << type;
  }
  for (const char* type : {"string[0,0]", "none", "real[0,0,0,0,0]", "multi(real)"})
    EXPECT_TRUE(contains(message_of([&] { CPoutput_if_tm_pattern(type_of_text(type), "a"); }),
                         "Not implemented yet a algelink option for formal parameters of this type:\n"))
        << type;
}

// ---- identifiers

tAsynt symbol(const char* text, const std::vector<tAsynt>& components = {}) {
  return mSymbol(mAbsoluteSymbol(mRealType(nullptr), NoPosition, text, list(components)));
}
tAsynt nest(tAsynt ffe) { return mSymbol(mAbsoluteNest(mRealType(nullptr), NoPosition, ffe)); }

TEST_F(PompFn, Identifiers) {
  keep(
      "real x; real u$; real h[1];"
      "real fc[real a_] := externinfo \"p$\" \"\" \"C\" function(Input a);"
      "real ff[real a_] := externinfo \"q\" \"\" \"Fortran\" function(Input a);"
      "real fp[real a_] := externinfo \"\" \"\" \"C++\" function(Input a);"
      "real fq[real a_] := externinfo \"r\" \"\" \"C++\" function();"
      "real faAlg[real a_] := externinfo \"\" \"\" \"Alg\" function();"
      "real fx[real a_] := extern \"C\";"
      "real vc := externinfo \"p\" \"\" \"C\" variable();"
      "class P hide: real z; end P; class A part p inherits P; end A; instance a inherits A end a;");
  const auto names_of = [&](tAsynt sym) {
    std::string out;
    for (const auto write : {CPoutput_mangled_name, CPoutput_mangled_name_capitalize}) {
      cpoutput("\n");
      out += cc.added([&] { write(Symbol_SymInfo(sym)), cpflush_mangled_str(); }) + ' ';
    }
    return out;
  };
  // Of the model M: the name, and with a capital name.
  for (const auto& [text, names] : table<2>(R"(
      x --> M_Tx M_TX\s            u$ --> M_Tu_D M_TU_D\s       undeclared --> undeclared UNDECLARED\s
      fc --> p_Dfc_c p_DFC_c\s     ff --> qff_ftn qFF_ftn\s     fp --> fp_cpp FP_cpp\s       fq --> rfq rFQ\s
      faAlg --> faAlg FAALG\s      fx --> fx FX\s               vc --> pvc_c pVC_c\s
    )"))
    EXPECT_EQ(names, names_of(symbol(text.c_str(), {name("M")})));
  const tAsynt x = symbol("x", {name("M")});
  const tAsynt cells = mSimpleFFE(list({mExactIntConst("1")}), symbol("c", {name("M")}));
  const std::pair<tAsynt, const char*> rows[] = {
      {symbol("x", {name("P$")}), "x X "},
      {symbol("z", {symbol("p", {symbol("a")})}), "a_Tp_Tz a_Tp_TZ "},  // all of the path
      {name("s"), "s S "},
      {temporary(12), "zc_T12 zc_T12 "},
      {out_param("int", 3), "zc_O3 zc_O3 "},
      {nest(mComplexFFE(list({x, mExactRealConst("2.5")}), cells)), "c_L1_R_LM_Tx_C2.5_R c_L1_R_LM_Tx_C2.5_R "},
      {nest(mSimpleFFE(list({mIntConst(-3), mRealConst(1)}), symbol("c"))),
       "c_L-3_C                         1_R c_L-3_C                         1_R "}};
  for (const auto& [sym, names] : rows) EXPECT_EQ(names, names_of(sym));
  EXPECT_TRUE(contains(message_of([] { CPoutput_nest_name(mStringConst("s")); }),
                       "Error       Illegal expression to output as mangled name:"));
}

TEST_F(PompFn, HostNames) {
  EXPECT_STREQ("f", CPoriginal_name(Symbol_SymInfo(symbol("f", {name("M")}))));
  const std::string report = message_of([] { CPoriginal_name(Symbol_SymInfo(temporary(7))); });
  EXPECT_TRUE(contains(report, "TempSymbol"));
  EXPECT_TRUE(contains(report, "Unexpected kind of  symbol during   GetOriginalName"));
}

// ---- functions

// A function f: the .cc, the .h, pattern and arguments of the template, the wrapper's body.
TEST_F(PompFn, FunctionInAllFiles) {
  for (const auto& [definition, in_cc, in_h, pattern, wrapper] : table<5>(R"(
      int f[] := 1; --> int M_Tf () | { | return 1; | } --> int M_Tf (); --> f[] {} --> lmif_return(M_Tf());
      {real, int array[2]} f[complex x$_] := {1.5, n}; int array[2] n; --> \
          void M_Tf ( const lm_complex &x_D, double &zc_O1, intN &zc_O2) | { | zc_O1 = 1.5; | zc_O2 = M_Tn;;\s | } \
          --> void M_Tf ( const lm_complex &, double &, intN &); --> f[ x$_Complex] {x$} --> get_complex(x$); | \
          double  zc_O1; | intN  zc_O2; | M_Tf( x$,zc_O1,zc_O2); | ALPutFunction(stdlink,"List",2); | \
          lmif_return(zc_O1); | lmif_return(zc_O2);
      real array[_] f[real array[0] v_] := Module[{real array[_, 2] a}, v]; --> \
          doubleN M_Tf ( const doubleN &v) | { | doubleNN a(0, 2); | return v; | } --> doubleN M_Tf ( const doubleN \
          &); --> f[ v_List/;VectorQ[v,NumberQ]] {v} --> get_lumenNdouble(v); | lmif_return(M_Tf( v));
      {} f[bool b_] := Null; --> void M_Tf ( const int &b) | { | ;\s | } --> void M_Tf ( const int &); --> \
          f[ b_Integer] {b} --> get_int(b); | M_Tf( b); | lmif_return();
      real f[String s_] := extern "C++"; --> double f ( const RWCString &s) | ;  /* EXTERNAL  C++ */ --> \
          double f ( const RWCString &); --> f[ s_String] {s} --> get_string(s); | lmif_return(f( s));
      {} f[real x_] := externinfo "p" "M" "C++" procedure(); --> \
          void pf ( const double &x) | ;  /* EXTERNAL\s\s\s*/ --> void pf ( const double &); --> f[ x_Real] {x} --> \
          get_double(x); | pf( x); | lmif_return();
      real f[real array[0] a_, int k_] := externinfo "" "" "C++NOCONST" function(Input a, InOut k); --> \
          double f ( \s\s\s\s doubleN &a, const int &k) | ;  /* EXTERNAL\s\s\s*/ --> double f ( \s\s\s\s doubleN &, \
          const int &); --> f[ a_List/;VectorQ[a,NumberQ], k_Integer] {a,k} --> get_lumenNdouble(a); | get_int(k); | \
          lmif_return(f( a,k));
    )")) {
    keep(definition);
    const PompTexts added = function("f"), bare = function("f", false);
    EXPECT_EQ(in_cc, lines_of(added.cc));
    EXPECT_EQ(in_h, lines_of(added.h));
    const std::string arguments = pattern.substr(pattern.find(" {") + 2);
    EXPECT_EQ(
        ":Evaluate: BeginPackage[\"M`\"] | :Evaluate: f; | :Evaluate: Begin[\"`Private`\"]; | :Begin: | "
        ":Function:     AL_f | :Pattern:      " +
            pattern.substr(0, pattern.find(" {")) + " | :Arguments:    {" + (arguments == "}" ? "" : " ") + arguments +
            " | :ArgumentTypes:{Manual} | :ReturnType:   Manual | :End: | :Evaluate: End[] | "
            ":Evaluate: EndPackage[]",
        lines_of(added.tm));
    EXPECT_EQ("extern \"C\" void AL_f(); | void AL_f() | { | " + wrapper + " | }", lines_of(added.wrappers));
    EXPECT_EQ(added.cc + added.h, bare.cc + bare.h);
    EXPECT_EQ("", added.icc + bare.tm + bare.wrappers);
  }
}

// The definition of a callback stands in if.cc: it sends its arguments to the host and waits for the answer.
TEST_F(PompFn, Callbacks) {
  for (const auto& [definition, signature, body] : table<3>(R"(
      {int, real} askAlg[real x_] --> void askAlg ( const double &x, int &zc_O1, double &zc_O2) --> \
          AL_IF_start("ask",3); | lmif_return(x); | /* ?? zc_O1 */\s | /* ?? zc_O2 */\s | AL_IF_wait();cb_get();return;
      real array[3] askAlg[real x$_, int n_] --> doubleN askAlg ( const double &x_D, const int &n) --> \
          AL_IF_start("ask",2); | lmif_return(x_D); | lmif_return(n); | AL_IF_wait(); | doubleN  CB__ret | ; \s \
          cb_get(CB__ret); | return CB__ret;
    )")) {
    keep(definition + " := externinfo \"\" \"\" \"Alg\" function();");
    const PompTexts added = function("askAlg", false);
    EXPECT_EQ(signature + " | ;  /* EXTERNAL   */", lines_of(added.cc));
    EXPECT_EQ(signature + " | { | " + body + " | }", lines_of(added.wrappers));
    glob_genmode_flag = 0;
    EXPECT_TRUE(contains(message_of([] { funcgen("M`askAlg"); }),
                         "Callback function cannot be called via template. Disable template!"));
    cpend_if_output_too();
  }
}

// A parameter without a type is a comma only; anything else than a name cannot be handed over by the host.
TEST_F(PompFn, OddParameters) {
  const auto parameters = [](tAsynt t) {
    CPmake_param_decls(t, " ", 0, 0);
    CPmake_param_decls_for_end_of_tm_and_if(t, " ", 0);
  };
  declare_types("u:none x:real");
  const PompTexts added = texts([&] { parameters(list({typed_tree("u"), typed_tree("x")})); });
  EXPECT_EQ(" , const double &x", added.cc);
  EXPECT_EQ(", x_Real u,x", added.tm);
  EXPECT_TRUE(contains(message_of([&] { parameters(list({temporary(7)})); }),
                       "Unexpected kind of  symbol during CPmake_param_decl_for_end_of_tm_and_if  "));
}

// ---- bodies

TEST_F(PompFn, Bodies) {
  for (const auto& [function_name, text] : table<2>(R"(
      f --> double M_Tf ( const double &x) | { | double a; | int n = 2; | a = x; | return a; | }
      // The inner module's variables too; a local array leaves an empty statement behind.
      g --> double M_Tg ( const double &x) | { | double a; | a = x; | double b; | b = a; | return b; | }
      h --> double M_Th ( const double &x) | { | M_Tk = x; | M_Tl = M_Tk; | doubleN c(2); | return M_Tl; | }
      // Results go to targets, also where a function calls itself, and where its list has one type.
      one --> void M_Tone ( const double &x, double &zc_O1) | { | zc_O1 = x+1;;\s | }
      two --> void M_Ttwo ( const int &n, double &zc_O1, int &zc_O2) | { | double p; | int q; | M_Ttwo (n-1, p, q); | \
          zc_O1 = p; | zc_O2 = q;;\s | }
      use --> double M_Tuse ( const double &x) | { | double y; | M_Tone (x, y); | return y; | }
    )")) {
    keep(
        "real k; real l; real f[real x_] := Module[{real a, int n = 2}, a = x; a];"
        "real g[real x_] := Module[{real a}, a = x; Module[{real b}, b = a; b]];"
        "real h[real x_] := (k = x; l = k; Block[{real array[2] c}, l]); {real} one[real x_] := {x + 1};"
        "{real, int} two[int n_] := Module[{real p, int q}, {p, q} = two[n - 1]; {p, q}];"
        "real use[real x_] := Module[{real y}, {y} = one[x]; y];");
    EXPECT_EQ(text, lines_of(function(function_name, false).cc));
  }
}

TEST_F(PompFn, WrongBodies) {
  declare_types("f:real r:real n:int x:real");
  const tAsynt f = info_of("f");
  const auto generate = [&](const std::string& body) {
    return said([&] { CPunparse_fn(f, list({typed_tree("r")}), typed_tree(body)); });
  };
  EXPECT_EQ(
      "E Type of returned expression (n) must match exactly the return type of the function. | "
      "E ... Expression of type  Integer  | E ... Function of type  Real ",
      generate("XSet[r,n]"));
  EXPECT_TRUE(contains(cc.str(), "{\n    return n;\n}\n\n"));
  for (const char* body : {"XCompoundExpression[]", "x", "XCompoundExpression[XSet[r,x],x]"}) {
    cpinit();
    EXPECT_TRUE(contains(generate(body), "Malformed function body.")) << body;
  }
  SymInfo_Type(f) = type_of_text("multi(real,int)");
  EXPECT_EQ("F4,2 CPunparse_fn recieved function with multiple return values. Use a separate statement.",
            generate("x"));
  SymInfo_Type(f) = type_of_text("multi(int)");  // a type in a list of one is the value's type
  declare_types("r:int x:int");
  glob_genmode_flag = 1;
  cpinit();
  EXPECT_EQ("int f ( const int &x) | { | return x; | }", lines_of(cc.added([&] {
              CPunparse_fn(f, list({typed_tree("x"), typed_tree("r")}), typed_tree("XSet[r,x]"));
            })));
}

TEST_F(PompFn, GlobalVariables) {
  keep(
      "real x; real array[2, 3] m; int v := externinfo \"p\" \"\" \"C\" variable();"
      "class C hide: real z; real array[4] w; end C; instance s[i] inherits C end s;");
  for (const auto& [variable, in_cc, in_h] : table<3>(R"(
      M`x --> double M_Tx; --> extern double M_Tx;              M`m --> doubleNN M_Tm(2, 3); --> extern doubleNN M_Tm;
      M`v --> /* EXTERNAL only int pv_c; */ --> extern int pv_c;
      // One array for all members of the set.
      s`z --> doubleN s_Tz(0); --> extern doubleN s_Tz;         s`w --> doubleNN s_Tw(0, 4); --> extern doubleNN s_Tw;
    )")) {
    const tAsynt declared = find_alltypes(variable.c_str());
    ASSERT_NE(nullptr, declared) << variable;
    const PompTexts added =
        texts([&] { CPmake_global_var_decl(Asynt_Kind(declared) == kSymbol ? Symbol_SymInfo(declared) : declared); });
    EXPECT_EQ(in_cc, lines_of(added.cc));
    EXPECT_EQ(in_h, lines_of(added.h));
  }
}

}  // namespace
}  // namespace oz
