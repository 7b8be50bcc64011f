// Functions as C++: types, identifiers, declarations, and one function in all its files.

#include "pompunp_fn.h"

#include "pomp_model.h"
#include "type_text.h"

namespace oz {
namespace {

using PompFn = PompModel;

// ---- types

TEST_F(PompFn, Types) {
  const struct {
    const char *type, *word, *sizes, *suffix;  // suffix null: fatal
  } rows[] = {{"int", "int ", "", "int"},
              {"bool", "int ", "", "int "},
              {"real", "double ", "", "double"},
              {"complex", "lm_complex ", "", "lm_complex "},
              {"string", "RWCString ", "", ""},
              {"none", "", "", ""},
              {"real_s", "double ", "", "double"},
              {"real[3]", "doubleN ", "(3)", "Ndouble"},
              {"real[3,2]", "doubleNN ", "(3, 2)", "NNdouble"},
              {"real[3,2,1]", "doubleNNN ", "(3, 2, 1)", nullptr},
              {"real[4,3,2,1]", "doubleNNNN ", "(4, 3, 2, 1)", nullptr},
              {"complex[0]", "lm_complexN ", "(0)", "Nlm_complex"},
              {"complex[0,0]", "lm_complexNN ", "(0, 0)", "NNlm_complex"},
              {"complex[0,0,0]", "lm_complexNNN ", "(0, 0, 0)", nullptr},
              {"complex[0,0,0,0]", "lm_complexNNNN ", "(0, 0, 0, 0)", nullptr},
              {"int[5]", "intN ", "(5)", "Nint"},
              {"int[5,6]", "intNN ", "(5, 6)", "NNint"},
              {"int[5,6,7]", "intNNN ", "(5, 6, 7)", nullptr},
              {"int[5,6,7,8]", "intNNNN ", "(5, 6, 7, 8)", nullptr},
              {"bool[5]", "intN ", "(5)", nullptr},
              {"bool[5,6,7,8]", "intNNNN ", "(5, 6, 7, 8)", nullptr},
              {"real_s[-1,3]", "doubleNN ", "(0, 3)", "NNdouble"}};  // the set's index has no size
  for (const auto& row : rows) {
    const tAsynt type = type_of_text(row.type);
    cpoutput("\n");
    EXPECT_EQ(row.word, cc.added([&] { CPoutput_basetype_decl(type); })) << row.type;
    EXPECT_EQ(row.sizes, cc.added([&] { CPoutput_array_dims(type); })) << row.type;
    cpoutput("\n");
    const auto suffix = [&] { CPoutput_basetype_suffix(type); };
    if (row.suffix)
      EXPECT_EQ(row.suffix, cc.added(suffix)) << row.type;
    else
      EXPECT_TRUE(contains(message_of(suffix), "Bad array type.\n")) << row.type;
  }
  for (const char* type : {"string[3]", "none[3]", "real[]", "real[1,1,1,1,1]"})
    EXPECT_TRUE(contains(message_of([&] { CPoutput_basetype_decl(type_of_text(type)); }), "Bad array type.\n")) << type;
  EXPECT_EQ("", cc.added([] { CPoutput_array_dims(type_of_text("real[1,1,1,1,1]")); }));
}

// Each use of an array notes its rank; the .cc is padded ahead of the word.
TEST_F(PompFn, LevelsAndIndentation) {
  cp_modify_indent(1);
  EXPECT_EQ("#define LM_NNN\n#define LM_N\n", levels.added([] {
    for (const char* type : {"int[1,1,1]", "real", "complex[2]"}) CPoutput_basetype_decl(type_of_text(type));
  }));
  EXPECT_EQ("    intNNN double lm_complexN ", cc.str().substr(cc.str().rfind('\n') + 1));
}

TEST_F(PompFn, PatternsOfArguments) {
  const std::string vector = "a_List/;VectorQ[a,NumberQ]", matrix = "a_List/;MatrixQ[a,NumberQ]";
  const std::string flat = "a_/;VectorQ[Flatten[a],NumberQ]&&(Length[Dimensions[a]]==";
  const std::string integers = "a_/;VectorQ[Flatten[a],Function[Head[#1]==Integer]]&&(Length[Dimensions[a]]==";
  const struct {
    const char* type;
    std::string pattern;
    const char *fetch, *level;
  } rows[] = {{"int", "a_Integer", "     get_int(a);\n", ""},
              {"bool", "a_Integer", "     get_int(a);\n", ""},
              {"string", "a_String", "     get_string(a);\n", ""},
              {"real", "a_Real", "     get_double(a);\n", ""},
              {"complex", "a_Complex", "     get_complex(a);\n", ""},
              {"real[0]", vector, "     get_lumenNdouble(a);\n", "N"},
              {"real[0,0]", matrix, "     get_lumenNNdouble(a);\n", "NN"},
              {"real[0,0,0]", flat + "3)", "     get_lumenNNNdouble(a);\n", "NNN"},
              {"real[0,0,0,0]", flat + "4)", "     get_lumenNNNNdouble(a);\n", "NNNN"},
              {"complex[0]", vector, "     get_lumenNcomplex(a);\n", "N"},
              {"complex[0,0]", matrix, "     get_lumenNNcomplex(a);\n", "NN"},
              {"complex[0,0,0]", flat + "3)", "     get_lumenNNNcomplex(a);\n", "NNN"},
              {"complex[0,0,0,0]", flat + "4)", "     get_lumenNNNNcomplex(a);\n", "NNNN"},
              {"string[0]", "a_List/;VectorQ[a,StringQ]", "     get_Nstring(a);\n", ""},
              {"int[0]", vector, "     get_lumenNint(a);\n", "N"},
              {"bool[0,0]", matrix, "     get_lumenNNint(a);\n", "NN"},
              {"bool[0,0,0]", integers + "3)", "     get_lumenNNNint(a);\n", "NNN"},
              {"int[0,0,0,0]", integers + "4)", "    get_lumenNNNNint(a);\n", "NNNN"}};  // one blank less
  for (const auto& row : rows) {
    std::string level;
    const PompTexts added =
        texts([&] { level = levels.added([&] { CPoutput_if_tm_pattern(type_of_text(row.type), "a"); }); });
    EXPECT_EQ(row.pattern, added.tm) << row.type;
    EXPECT_EQ(row.fetch, added.wrappers) << row.type;
    EXPECT_EQ(*row.level ? std::string("#define LM_") + row.level + "\n" : "", level) << row.type;
  }
  for (const char* type : {"string[0,0]", "none", "real[0,0,0,0,0]", "multi(real)"})
    EXPECT_TRUE(contains(message_of([&] { CPoutput_if_tm_pattern(type_of_text(type), "a"); }),
                         "Not implemented yet a algelink option for formal parameters of this type:\n"))
        << type;
}

// ---- identifiers

string text(const char* s) { return s; }

tAsynt symbol(const char* name, tAsynt components = mExpression0()) {
  return mSymbol(mAbsoluteSymbol(mRealType(nullptr), NoPosition, text(name), components));
}
tAsynt list(std::initializer_list<tAsynt> elements) {
  tAsynt result = mExpression0();
  for (auto e = elements.end(); e != elements.begin();) result = mExpression1(*--e, result);
  return result;
}
tAsynt model(const char* name) { return mSymbol(mSimpleSymbol(mNoType(), NoPosition, text(name))); }
tAsynt nest(tAsynt ffe) { return mAbsoluteNest(mRealType(nullptr), NoPosition, ffe); }

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
  const tAsynt in_m = list({model("M")});
  const tAsynt part = symbol("p", list({symbol("a")}));
  const tAsynt cells = mSimpleFFE(list({mExactIntConst("1")}), symbol("c", in_m));
  const struct {
    tAsynt symbol;
    const char *name, *capital;
  } rows[] = {{symbol("x", in_m), "M_Tx", "M_TX"},
              {symbol("u$", in_m), "M_Tu_D", "M_TU_D"},
              {symbol("undeclared", in_m), "undeclared", "UNDECLARED"},
              {symbol("x", list({model("P$")})), "x", "X"},
              {symbol("z", list({part})), "a_Tp_Tz", "a_Tp_TZ"},  // all of the path
              {mSymbol(mSimpleSymbol(mNoType(), NoPosition, "s")), "s", "S"},
              {mSymbol(mTempSymbol(mIntType(nullptr), NoPosition, 12)), "zc_T12", "zc_T12"},
              {mSymbol(mOutParam(mIntType(nullptr), NoPosition, 3)), "zc_O3", "zc_O3"},
              {symbol("fc", in_m), "p_Dfc_c", "p_DFC_c"},
              {symbol("ff", in_m), "qff_ftn", "qFF_ftn"},
              {symbol("fp", in_m), "fp_cpp", "FP_cpp"},
              {symbol("fq", in_m), "rfq", "rFQ"},
              {symbol("faAlg", in_m), "faAlg", "FAALG"},
              {symbol("fx", in_m), "fx", "FX"},
              {symbol("vc", in_m), "pvc_c", "pVC_c"},
              {mSymbol(nest(mComplexFFE(list({symbol("x", in_m), mExactRealConst("2.5")}), cells))),
               "c_L1_R_LM_Tx_C2.5_R", "c_L1_R_LM_Tx_C2.5_R"},
              {mSymbol(nest(mSimpleFFE(list({mIntConst(-3), mRealConst(1)}), symbol("c")))),
               "c_L-3_C                         1_R", "c_L-3_C                         1_R"}};
  for (const auto& row : rows) {
    const tAsynt sym = Symbol_SymInfo(row.symbol);
    cpoutput("\n");
    EXPECT_EQ(row.name, cc.added([&] { CPoutput_mangled_name(sym), cpflush_mangled_str(); }));
    cpoutput("\n");
    EXPECT_EQ(row.capital, cc.added([&] { CPoutput_mangled_name_capitalize(sym), cpflush_mangled_str(); }));
  }
  EXPECT_TRUE(contains(reported([] { CPoutput_nest_name(mStringConst("s")); }),
                       "Error       Illegal expression to output as mangled name:"));
}

TEST_F(PompFn, HostNames) {
  keep(
      "real f[real a_] := extern \"C++\"; real g[real a_] := externinfo \"\" \"ctx`\" \"C\" function();"
      "real k[real a_] := externinfo \"\" \"`\" \"C\" function(); real l[real a_] := externinfo \"\" \"c\" \"C\" "
      "function();");
  const struct {
    tAsynt symbol;
    const char* context;
  } rows[] = {{symbol("f", list({model("M")})), "M"},        {symbol("g", list({model("M")})), "ctx"},
              {symbol("k", list({model("M")})), "M"},        {symbol("l", list({model("M")})), "c"},
              {symbol("h", list({symbol("tank")})), "tank"}, {symbol("h"), ""}};
  for (const auto& row : rows) EXPECT_EQ(row.context, CPfunction_context(Symbol_SymInfo(row.symbol)));
  EXPECT_STREQ("f", CPoriginal_name(Symbol_SymInfo(rows[0].symbol)));
  const std::string report = message_of([] { CPoriginal_name(mTempSymbol(mNoType(), NoPosition, 7)); });
  EXPECT_TRUE(contains(report, "TempSymbol")) << report;
  EXPECT_TRUE(contains(report, "Unexpected kind of  symbol during   GetOriginalName")) << report;
}

// ---- functions

std::string tm_of(const std::string& f, const std::string& patterns, const std::string& arguments) {
  return "\n:Evaluate: BeginPackage[\"M`\"]\n:Evaluate: " + f + ";\n:Evaluate: Begin[\"`Private`\"];\n:Begin:\n" +
         ":Function:     AL_" + f + "\n:Pattern:      " + f + "[" + patterns + "]\n:Arguments:    {" + arguments +
         "}\n:ArgumentTypes:{Manual}\n:ReturnType:   Manual\n:End:\n:Evaluate: End[]\n:Evaluate: EndPackage[]\n";
}
std::string wrapper_of(const std::string& f, const std::string& body) {
  return "\n\nextern \"C\" void AL_" + f + "();\n\nvoid AL_" + f + "()\n{\n" + body + "}\n";
}

TEST_F(PompFn, FunctionInAllFiles) {
  const std::string external = ")\n;  /* EXTERNAL   */\n\n";
  const struct {
    const char *definition, *function;
    std::string cc, h, tm, wrapper;
  } rows[] = {
      {"real f[real x_, int n_] := x;", "f", "double M_Tf ( const double &x, const int &n)\n{\n    return x;\n}\n\n",
       "double M_Tf ( const double &, const int &);\n\n", tm_of("f", " x_Real, n_Integer", " x,n"),
       wrapper_of("f", "     get_double(x);\n     get_int(n);\n     lmif_return(M_Tf( x,n));\n")},
      {"int f[] := 1;", "f", "int M_Tf ()\n{\n    return 1;\n}\n\n", "int M_Tf ();\n\n", tm_of("f", "", ""),
       wrapper_of("f", "     lmif_return(M_Tf());\n")},
      {"{real, int array[2]} f[complex x$_] := {1.5, n}; int array[2] n;", "f",
       "void M_Tf ( const lm_complex &x_D, double &zc_O1, intN &zc_O2)\n{\n    zc_O1 = 1.5;\n    zc_O2 = M_Tn;; "
       "\n}\n\n",
       "void M_Tf ( const lm_complex &, double &, intN &);\n\n", tm_of("f", " x$_Complex", " x$"),
       wrapper_of("f",
                  "     get_complex(x$);\n     double  zc_O1;\n     intN  zc_O2;\n     M_Tf( x$,zc_O1,zc_O2);\n"
                  "     ALPutFunction(stdlink,\"List\",2);\n     lmif_return(zc_O1);\n     lmif_return(zc_O2);\n")},
      {"real array[_] f[real array[0] v_] := Module[{real array[_, 2] a}, v];", "f",
       "doubleN M_Tf ( const doubleN &v)\n{\n    doubleNN a(0, 2);\n\n    return v;\n}\n\n",
       "doubleN M_Tf ( const doubleN &);\n\n", tm_of("f", " v_List/;VectorQ[v,NumberQ]", " v"),
       wrapper_of("f", "     get_lumenNdouble(v);\n     lmif_return(M_Tf( v));\n")},
      {"{} f[bool b_] := Null;", "f", "void M_Tf ( const int &b)\n{\n; \n}\n\n", "void M_Tf ( const int &);\n\n",
       tm_of("f", " b_Integer", " b"), wrapper_of("f", "     get_int(b);\n     M_Tf( b);\n     lmif_return();\n")},
      {"real f[String s_] := extern \"C++\";", "f", "double f ( const RWCString &s)\n;  /* EXTERNAL  C++ */\n\n",
       "double f ( const RWCString &);\n\n", tm_of("f", " s_String", " s"),
       wrapper_of("f", "     get_string(s);\n     lmif_return(f( s));\n")},
      {"{} f[real x_] := externinfo \"p\" \"M\" \"C++\" procedure();", "f", "void pf ( const double &x" + external,
       "void pf ( const double &);\n\n", tm_of("f", " x_Real", " x"),
       wrapper_of("f", "     get_double(x);\n     pf( x);\n     lmif_return();\n")},
      {"real f[real array[0] a_, int k_] := externinfo \"\" \"\" \"C++NOCONST\" function(Input a, InOut k);", "f",
       "double f (      doubleN &a, const int &k" + external, "double f (      doubleN &, const int &);\n\n",
       tm_of("f", " a_List/;VectorQ[a,NumberQ], k_Integer", " a,k"),
       wrapper_of("f", "     get_lumenNdouble(a);\n     get_int(k);\n     lmif_return(f( a,k));\n")}};
  for (const auto& row : rows) {
    keep(row.definition);
    const PompTexts added = function(row.function);
    EXPECT_EQ(row.cc, added.cc);
    EXPECT_EQ(row.h, added.h);
    EXPECT_EQ(row.tm, added.tm);
    EXPECT_EQ(row.wrapper, added.wrappers);
    EXPECT_EQ("", added.icc);
    const PompTexts bare = function(row.function, false);
    EXPECT_EQ(row.cc, bare.cc);
    EXPECT_EQ(row.h, bare.h);
    EXPECT_EQ("", bare.tm + bare.wrappers);
  }
}

// The definition of a callback stands in if.cc: it sends its arguments to the host and waits for the answer.
TEST_F(PompFn, Callbacks) {
  const struct {
    const char *definition, *signature, *wrapper;
  } rows[] = {{"{int, real} askAlg[real x_] := externinfo \"\" \"\" \"Alg\" function();",
               "void askAlg ( const double &x, int &zc_O1, double &zc_O2)\n",
               "\n{\n   AL_IF_start(\"ask\",3);\n\n   lmif_return(x);\n  /* ?? zc_O1 */ \n  /* ?? zc_O2 */ "
               "\n   AL_IF_wait();cb_get();return;\n}\n\n"},
              {"real array[3] askAlg[real x$_, int n_] := externinfo \"\" \"\" \"Alg\" function();",
               "doubleN askAlg ( const double &x_D, const int &n)\n",
               "\n{\n   AL_IF_start(\"ask\",2);\n\n   lmif_return(x_D);\n   lmif_return(n);"
               "\n   AL_IF_wait();\n   doubleN  CB__ret\n;   cb_get(CB__ret);\n  return CB__ret;\n}\n\n"}};
  for (const auto& row : rows) {
    keep(row.definition);
    const PompTexts added = function("askAlg", false);
    EXPECT_EQ(std::string(row.signature) + ";  /* EXTERNAL   */\n\n", added.cc);
    EXPECT_EQ(std::string(row.signature) + row.wrapper, added.wrappers);
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
  const tAsynt untyped = list({typed_tree("u"), typed_tree("x")});
  const PompTexts added = texts([&] { parameters(untyped); });
  EXPECT_EQ(" , const double &x", added.cc);
  EXPECT_EQ(", x_Real u,x", added.tm);
  const tAsynt temporary = list({mSymbol(mTempSymbol(mNoType(), NoPosition, 7))});
  EXPECT_TRUE(contains(message_of([&] { parameters(temporary); }),
                       "Unexpected kind of  symbol during CPmake_param_decl_for_end_of_tm_and_if  "));
}

// ---- bodies

TEST_F(PompFn, BodiesWithVariables) {
  const struct {
    const char *body, *text;
  } rows[] = {{"Module[{real a, int n = 2}, a = x; a]", "    double a;\n    int n = 2;\n    a = x;\n    return a;\n"},
              {"Module[{real a}, a = x; Module[{real b}, b = a; b]]",  // the inner module's variables too
               "    double a;\n    a = x;\n    double b;\n    b = a;\n    return b;\n"},
              // a local array leaves an empty statement behind
              {"(g = x; h = g; Block[{real array[2] c}, h])",
               "    M_Tg = x;\n    M_Th = M_Tg;\n    doubleN c(2);\n\n    return M_Th;\n"}};
  for (const auto& row : rows) {
    keep(std::string("real g; real h; real f[real x_] := ") + row.body + ";");
    EXPECT_EQ(std::string("double M_Tf ( const double &x)\n{\n") + row.text + "}\n\n", function("f").cc);
  }
}

// With a body from outside the variables are temporaries, which need no start values.
TEST_F(PompFn, BodyFromOutside) {
  evaluate_function_flag = 1;
  keep("real f[real x_] := Module[{real a = 1.0, int array[2] b = {1, 2}}, a = x; a];");
  const std::string text = function("f").cc;
  EXPECT_TRUE(contains(text, "{\n    double a;\n    intN b(2);\n") ||
              contains(text, "{\n    intN b(2);\n    double a;\n"))
      << text;
  EXPECT_TRUE(contains(text, "    a = x;\n    return a;\n}\n\n")) << text;
}

TEST_F(PompFn, WrongBodies) {
  declare_types("f:real r:real n:int x:real");
  const tAsynt name = Symbol_SymInfo(typed_tree("f"));
  const auto generate = [&](const std::string& body) {
    return message_of([&] { CPunparse_fn(name, list({typed_tree("r")}), typed_tree(body)); });
  };
  EXPECT_EQ(
      "   0,  0: Error       Type of returned expression (n) must match exactly the return type of the function.\n"
      "   0,  0: Error       ... Expression of type  Integer \n"
      "   0,  0: Error       ... Function of type  Real \n",
      generate("XSet[r,n]"));
  EXPECT_TRUE(contains(cc.str(), "{\n    return n;\n}\n\n"));
  for (const char* body : {"XCompoundExpression[]", "x", "XCompoundExpression[XSet[r,x],x]"}) {
    cpinit();
    EXPECT_TRUE(contains(generate(body), "Malformed function body.")) << body;
  }
  SymInfo_Type(name) = type_of_text("multi(real,int)");
  EXPECT_EQ(
      "   4,  2: Fatal       CPunparse_fn recieved function with multiple return values. Use a separate "
      "statement.\n",
      generate("x"));
}

// A type in a list of one is the value's type.
TEST_F(PompFn, OneOfSeveralValues) {
  declare_types("f:multi(int) r:int x:int");
  glob_genmode_flag = 1;
  EXPECT_EQ("int f ( const int &x)\n{\n    return x;\n}\n\n", cc.added([] {
    CPunparse_fn(Symbol_SymInfo(typed_tree("f")), list({typed_tree("x"), typed_tree("r")}), typed_tree("XSet[r,x]"));
  }));
}

// Also where a function calls itself, whose type says no more than that it has no value, and where the list has one
// type.
TEST_F(PompFn, ResultsInTargets) {
  keep(
      "{real} one[real x_] := {x + 1};\n"
      "{real, int} two[int n_] := Module[{real p, int q}, {p, q} = two[n - 1]; {p, q}];\n"
      "real use[real x_] := Module[{real y}, {y} = one[x]; y];");
  EXPECT_EQ("void M_Tone ( const double &x, double &zc_O1)\n{\n    zc_O1 = x+1;; \n}\n\n", function("one", false).cc);
  EXPECT_EQ(
      "void M_Ttwo ( const int &n, double &zc_O1, int &zc_O2)\n{\n    double p;\n    int q;\n"
      "    M_Ttwo (n-1, p, q);\n    zc_O1 = p;\n    zc_O2 = q;; \n}\n\n",
      function("two", false).cc);
  EXPECT_EQ("double M_Tuse ( const double &x)\n{\n    double y;\n    M_Tone (x, y);\n    return y;\n}\n\n",
            function("use", false).cc);
}

// ---- variables

TEST_F(PompFn, GlobalVariables) {
  keep(
      "real x; real array[2, 3] m; int v := externinfo \"p\" \"\" \"C\" variable();"
      "class C hide: real z; real array[4] w; end C; instance s[i] inherits C end s;");
  const struct {
    const char *name, *in_cc, *in_h;
  } rows[] = {{"M`x", "double M_Tx;\n", "extern double M_Tx;\n"},
              {"M`m", "doubleNN M_Tm(2, 3);\n", "extern doubleNN M_Tm;\n"},
              {"M`v", "/* EXTERNAL only int pv_c; */\n", "extern int pv_c;\n"},
              {"s`z", "doubleN s_Tz(0);\n", "extern doubleN s_Tz;\n"},  // one array for all members of the set
              {"s`w", "doubleNN s_Tw(0, 4);\n", "extern doubleNN s_Tw;\n"}};
  for (const auto& row : rows) {
    const tAsynt declared = find_alltypes(row.name);
    ASSERT_NE(nullptr, declared) << row.name;
    const PompTexts added =
        texts([&] { CPmake_global_var_decl(Asynt_Kind(declared) == kSymbol ? Symbol_SymInfo(declared) : declared); });
    EXPECT_EQ(row.in_cc, added.cc);
    EXPECT_EQ(row.in_h, added.h);
  }
}

}  // namespace
}  // namespace oz
