// Fortran functions: types, declarations, heads, wrappers and templates.

#include "generators.h"
#include "ozerrors.h"
#include "sheepunp_parts.h"

namespace oz {
namespace {

struct SheepFn : SheepText {
  const string kept_model = model_name;

  SheepFn() {
    model_name = "M";
    fcontains = 0;
  }
  ~SheepFn() override { model_name = kept_model; }

  // The symbol information of x with a type.
  static tAsynt named(const std::string& type) {
    declare_types("x:" + type + " n:int");
    return info_of("x");
  }

  // A parameter list x, n, and O1 of a result type unless that is empty.
  static tAsynt params(const std::string& type, const std::string& result) {
    const tAsynt x = mSymbol(named(type)), n = typed_tree("n");
    return result.empty() ? list({x, n}) : list({x, n, out_param(result, 1)});
  }

  static tAsynt function(const std::string& type) {
    declare_types("M`F_g:" + type);
    return info_of("M`F_g");
  }
};

TEST_F(SheepFn, TypesAndCodes) {
  for (const auto& [type, text, routine] : table<3>(R"(
      int --> integer(zc_int) --> getint        real --> real(zc_real) --> getdouble      bool --> logical --> getint
      string --> character(len=zc_strlen) --> getstr          int_s --> integer(zc_int) --> getint
      int[2,2,2,2] --> integer(zc_int) --> getNNNNint         real[2,2,2,2] --> real(zc_real) --> getNNNNdouble
      bool[2,2] --> logical --> getNNint        string[2,2,2] --> character(len=zc_strlen) --> getNNNstr
    )")) {
    foutput("\n");
    EXPECT_EQ(text, f90.added([&] { Foutput_type(type_of_text(type)); }));
    EXPECT_EQ(routine, if_func_get[Type_code(type_of_text(type))]) << type;
  }
  EXPECT_EQ(4, Type_code(type_of_text("complex")));
  EXPECT_EQ(20, Type_code(type_of_text("complex[2,2,2]")));
  for (const char* unknown : {"real[1,1,1,1,1]", "none", "multi(real)"})
    EXPECT_EQ("E F90 unparser: Invalid type in Type_code. | ",
              said([&] { EXPECT_EQ(0, Type_code(type_of_text(unknown))); }));
  EXPECT_TRUE(contains(message_of([] { Foutput_type(type_of_text("complex")); }),
                       "Complex data type is not supported in this version.\n"));
  EXPECT_TRUE(contains(message_of([] { Foutput_type(type_of_text("multi()")); }), "F90 unparser: Invalid type.\n"));
}

TEST_F(SheepFn, Dimensions) {
  declare_types("n:int");
  const tAsynt cells = list({typed_tree("n"), typed_tree("Blank[&]")});
  const tAsynt plain = mIntConst1(typed_tree("3"), mIntConst1(typed_tree("XPlus[n,1]"), mIntConst0()));
  const struct {
    tAsynt type;
    const char *dims, *colons;
    bool unknown;
  } rows[] = {{type_of_text("real"), "", "", false},
              {type_of_text("real[2,3,4]"), "(4,3,2)", "(:,:,:)", false},
              {type_of_text("real[2,0]"), "(:,2)", "(:,:)", true},
              {type_of_text("real_s[-1,2]"), "(2,:)", "(:,:)", true},
              {mArrayType(mRealType(nullptr), cells), "(:,n)", "(:,:)", true},
              {mArrayType(mRealType(nullptr), plain), "(n+1,3)", "(:,:)", false}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.dims, f90.added([&] { Foutput_array_dims(row.type); }));
    EXPECT_EQ(row.colons, f90.added([&] { Foutput_array_dims_colon(row.type); }));
    EXPECT_EQ(row.unknown, array_has_unknown_dims(row.type));
  }
  EXPECT_TRUE(contains(message_of([] { array_has_unknown_dims(type_of_text("real[]")); }),
                       "Error: module sheepunp, routine array_has_unknown_dims failed\n"));
}

// By visitor, for an out-parameter, where it differs, and for any other symbol.
TEST_F(SheepFn, Declarations) {
  const std::map<std::string, char (*)(tAsynt*)> visitors = {
      {"impl_param", Foutput_impl_param_decl}, {"impl_var", Foutput_impl_var_decl},
      {"if_param", Foutput_if_param_decl},     {"if_var", Foutput_if_var_decl},
      {"cb_var", Foutput_cb_var_decl},         {"cb_param", Foutput_cb_param_decl}};
  for (const auto& [visitor, type, for_out, for_other] : table<4>(R"(
      impl_param --> real[0] --> real(zc_real), pointer :: zc_O1(:) --> real(zc_real), intent(in) :: x(:)
      impl_param --> real[2] --> real(zc_real), intent(out) :: zc_O1(2) --> real(zc_real), intent(in) :: x(2)
      impl_var --> real[0,2] --> real(zc_real), pointer :: zc_O1(2,:) --> real(zc_real), pointer :: x(2,:)
      impl_var --> bool[2] --> logical zc_O1(2) --> logical x(2)                    impl_var --> none --> -->
      if_param --> real[2] --> real(zc_real), pointer :: zc_O1(:) --> real(zc_real), pointer :: x(:)
      if_param --> string --> character(len=zc_strlen) zc_O1 --> character(len=zc_strlen) x | integer(zc_int) x___i
      if_var --> real[2,3] --> real(zc_real), pointer :: zc_O1(:,:) --> real(zc_real), pointer :: x(:,:)
      if_var --> string --> character(len=zc_strlen) zc_O1 --> character(len=zc_strlen) x
      cb_var --> real[2] --> real(zc_real), pointer :: zc_O1(:) --> real(zc_real), pointer :: x(:)
      cb_param --> real[2,3] --> real(zc_real), intent(out) :: zc_O1(3,2) --> \
          real(zc_real), target, intent(in) :: x(3,2) | real(zc_real), pointer :: zc_ptr_x(:,:)
      cb_param --> real --> real(zc_real), intent(out) :: zc_O1 --> real(zc_real), intent(in) :: x
    )")) {
    tAsynt out = out_param(type, 1), other = mSymbol(named(type));
    EXPECT_EQ(for_out, lines_of(f90.added([&] { TraverseAsyntTD2(&out, visitors.at(visitor)); })));
    EXPECT_EQ(for_other, lines_of(f90.added([&] { TraverseAsyntTD2(&other, visitors.at(visitor)); })));
  }
  // The symbols in a size are not declared by it, and none is declared twice.
  const tAsynt n = typed_tree("n"), y = temporary(1, mArrayType(mRealType(nullptr), list({n})));
  tAsynt all = list({y, n, y});
  EXPECT_EQ("real(zc_real) zc_T1(n) | integer(zc_int) n",
            lines_of(f90.added([&] { TraverseAsyntTD2(&all, Foutput_impl_var_decl); })));
}

TEST_F(SheepFn, ModuleVariables) {
  declare_types("x:real i:int j:int k:int");
  const auto declared = [&](tAsynt info) { return lines_of(f90.added([&] { Foutput_global_var_decl(info); })); };
  EXPECT_EQ("real(zc_real) x", declared(info_of("x")));
  EXPECT_EQ("integer(zc_int), pointer :: zc_T2(:)", declared(mTempSymbol(type_of_text("int[0]"), NoPosition, 2)));
  for (const auto& [type, nest, text] : table<3>(R"(
      real[2] --> x[#1] --> real(zc_real) x_L1_R(2)             real_s[-1] --> x[i] --> real(zc_real), pointer :: x(:)
      real_s[-1] --> x[i][j][k][#4] --> real(zc_real), pointer :: x_Lj_R_Lk_R_L4_R(:)
      real_s[-1] --> x[i][j][k][i][j] --> real(zc_real), pointer :: x_Li_R_Lj_R_Lk_R_Li_R_Lj_R(:)
    )"))
    EXPECT_EQ(text, declared(mAbsoluteNest(type_of_text(type), NoPosition, typed_tree(nest))));
}

TEST_F(SheepFn, PatternsOfTheTemplate) {
  const tAsynt f = function("real");
  for (const auto& [type, pattern] : table<2>(R"(
      int --> x_Integer            bool --> x_Integer           string --> x_String          real --> x_Real
      complex --> x_/;NumberQ[x]   string[2] --> x_List/;VectorQ[x,StringQ]
      real[2] --> x_List/;VectorQ[x,NumberQ]                    bool[2] --> x_List/;VectorQ[x,NumberQ]
      complex[2,2] --> x_List/;MatrixQ[x,NumberQ]               int[2,2] --> x_List/;MatrixQ[x,NumberQ]
      complex[2,2,2,2] --> x_/;VectorQ[Flatten[x],NumberQ]&&(Length[Dimensions[x]]==4)
      int[2,2,2] --> x_/;VectorQ[Flatten[x],Function[Head[#1]==Integer]]&&(Length[Dimensions[x]]==3)
    )"))
    EXPECT_TRUE(contains(tm.added([&] { Foutput_tm(f, params(type, "real")); }),
                         "F_g[ " + pattern + ",n_Integer]\n:Arguments:    {x, n}\n"));
  for (const char* type : {"string[2,2]", "real[1,1,1,1,1]", "multi()"})
    EXPECT_TRUE(contains(message_of([&] { Foutput_tm(f, params(type, "real")); }),
                         "F90 unparser: Not yet implemented a AlgeLink option for formal parameters of type x.\n"));
  EXPECT_EQ(
      "#ifdef TMLOWERCASE | #define AL_F_G al_f_g | #endif | :Evaluate: BeginPackage[\"M`\"] | :Evaluate: F_g; | "
      ":Evaluate: Begin[\"`Private`\"]; | :Begin: | :Function:     al_f_g_ | :Pattern:      F_g[ x_Real,n_Integer] | "
      ":Arguments:    {x, n, zc_O1} | :ArgumentTypes:{Manual} | :ReturnType:   Manual | :End: | :Evaluate: End[] | "
      ":Evaluate: EndPackage[]",
      lines_of(tm.added([] { Foutput_tm(function("multi()"), params("real", "int")); })));
}

// What stands between the declarations and the end of a wrapper.
TEST_F(SheepFn, Wrappers) {
  for (const auto& [type, param, result, calls] : table<4>(R"(
      real --> real --> real --> call getdouble(x) | call getint(n) | zc_O1 = F_g(x, n) | call putdouble(zc_O1)
      real --> string --> real --> call getstr(x,x___i) | call getint(n) | zc_O1 = F_g(x, n) | call putdouble(zc_O1)
      real --> real[2] --> real[3] --> \
          call getNdouble(x) | call getint(n) | allocate(zc_O1(3)) | zc_O1 = F_g(x, n) | call putNdouble(zc_O1) | \
          deallocate(x) | deallocate(zc_O1)
      real --> real --> real[0] --> \
          call getdouble(x) | call getint(n) | zc_O1 => F_g(x, n) | call putNdouble(zc_O1) | deallocate(zc_O1)
      multi() --> int[2,2] --> bool[4] --> \
          call getNNint(x) | call getint(n) | allocate(zc_O1(4)) | call F_g(x, n, zc_O1) | call ALIF_LIST(1) | call \
          putNint(zc_O1) | deallocate(x) | deallocate(zc_O1)
      multi() --> real -->  --> call getdouble(x) | call getint(n) | call F_g(x, n) | call putnull()
    )")) {
    const tAsynt f = function(type);
    const std::string text = lines_of(i_f90.added([&] { Foutput_if(f, params(param, result)); }));
    EXPECT_TRUE(
        text.starts_with("subroutine al_f_g() | use ZentricaPrecision | use AlgeLinkInterface | use zc_M | "
                         "implicit none | "));
    EXPECT_TRUE(text.ends_with(" | " + calls + " | end subroutine al_f_g")) << text;
  }
  const std::string text =
      i_f90.added([&] { message_of([&] { Foutput_if(function("real"), params("real[1,1,1,1,1]", "real")); }); });
  EXPECT_TRUE(contains(text, "  call ! ERROR: GET (x)\n"));
}

TEST_F(SheepFn, HeadsAndBodies) {
  const tAsynt body = typed_tree("XModule[{x},{1},XCompoundExpression[XBlock[{y},{2},&],XModule[{x,i},{&,&},XBreak]]]");
  f_modify_indent(1);
  Funparse_fn(function("real"), params("real", "real"), body, 1, 1);
  EXPECT_EQ(
      "contains | pure recursive function F_g(x, n) result(zc_O1) | use ZentricaPrecision | use ZentricaSheep | use "
      "zc_system | implicit none | real(zc_real), intent(in) :: x | integer(zc_int), intent(in) :: n | real(zc_real) "
      "zc_O1 | real(zc_real) x | real(zc_real) y | integer(zc_int) i | x = 1 | y = 2 | exit | end function  F_g",
      lines_of(f90.str()));
  EXPECT_TRUE(contains(i_f90.str(), "! Normal Zentrica function\nsubroutine al_f_g()"));
  declare_types("system`h:multi()");
  const std::string text = f90.added([&] { Funparse_fn(info_of("system`h"), list({}), mEmpty(), 0, 0); });
  EXPECT_TRUE(contains(text, "! the \"use zc_system\" directive skipped \n"));
  EXPECT_TRUE(lines_of(text).starts_with("subroutine h() | use ZentricaPrecision")) << text;
}

TEST_F(SheepFn, CallbacksAndExternals) {
  const auto declared_as = [](const char* language) {
    return mExternalDeclaration(nullptr, nullptr, language, nullptr, nullptr);
  };
  const tAsynt f = function("real");
  EXPECT_EQ(
      "! Callback function | function F_g(x, n) result(zc_O1) | use ZentricaPrecision | use AlgeLinkInterface | "
      "implicit "
      "none | real(zc_real), target, intent(in) :: x(2) | real(zc_real), pointer :: zc_ptr_x(:) | integer(zc_int), "
      "intent(in) :: n | real(zc_real) zc_O1 | call ALIF_START(2, \"F_g\") | zc_ptr_x => x | call putNdouble(zc_ptr_x) "
      "| "
      "call putint(n) | call ALIF_WAIT() | call cbgetdouble(zc_O1) | end function  F_g",
      lines_of(f90.added([&] { Funparse_fn(f, params("real[2]", "real"), declared_as("Alg"), 0, 0); })));
  EXPECT_TRUE(
      contains(f90.added([&] { Funparse_fn(function("multi()"), params("real", ""), declared_as("Alg"), 0, 0); }),
               "  call ALIF_WAIT()\n  call cbgetnull()\nend subroutine  F_g\n"));
  EXPECT_EQ("", tm.str() + i_f90.str() + external.str());
  for (int genmode : {1, 0}) {
    glob_genmode_flag = genmode;
    EXPECT_EQ(
        "! External function F_g | function F_g(x, n) result(zc_O1) | use ZentricaPrecision | use ZentricaSheep | "
        "implicit none | real(zc_real), intent(in) :: x | integer(zc_int), intent(in) :: n | real(zc_real) zc_O1(2) | "
        "end function  F_g",
        lines_of(external.added(
            [&] { Funparse_fn(function("real"), params("real", "real[2]"), declared_as("alg"), 0, 0); })));
    EXPECT_EQ(genmode == 1, tm.str().empty());
    EXPECT_TRUE(contains(i_f90.str(), "! External function\nsubroutine al_f_g()\n"));
  }
  // A callback result that has no name of its own.
  EXPECT_TRUE(contains(message_of([&] { Funparse_fn(f, list({temporary(1)}), declared_as("Alg"), 0, 0); }),
                       "F90 unparser: Cannot unparse callback return variable.\n"));
  const std::string report = message_of([] { GetOriginalName(Symbol_SymInfo(temporary(7))); });
  EXPECT_TRUE(contains(report, "TempSymbol"));
  EXPECT_TRUE(contains(report, "F90 unparser: Unexpected kind of symbol during GetOriginalName.\n"));
}

// The outermost name counts, found through instances and their members; else the model's.
TEST_F(SheepFn, Contexts) {
  declare_types("A`t:none t:none");
  const auto below = [](const char* component) {
    return mAbsoluteSymbol(mRealType(nullptr), NoPosition, "h", list({typed_tree(component)}));
  };
  const std::pair<tAsynt, const char*> rows[] = {{info_of("A`t"), "A"},
                                                 {below("A`t"), "A"},
                                                 {below("A`t[#1]"), "A"},
                                                 {mAbsoluteNest(mNoType(), NoPosition, typed_tree("A`t[#1][#2]")), "A"},
                                                 {below("t"), "M"}};
  for (const auto& [info, context] : rows) EXPECT_EQ(context, GetFunctionPrefixContext(info));
}

}  // namespace
}  // namespace oz
