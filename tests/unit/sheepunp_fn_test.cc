// Fortran functions: types, declarations, heads, wrappers and templates; whole file sets are compared elsewhere.

#include "al_cmds.h"
#include "ozerrors.h"
#include "sheepunp_parts.h"
#include "sheepunp_text.h"

namespace oz {
namespace {

tAsynt out_param(const char* type, unsigned number) {
  return mSymbol(mOutParam(type_of_text(type), NoPosition, number));
}

struct SheepFn : SheepText {
  const string kept_model = model_name;

  SheepFn() {
    model_name = const_cast<char*>("M");
    fcontains = 0;
  }
  ~SheepFn() override { model_name = kept_model; }

  // The symbol information of x with a type.
  static tAsynt named(const std::string& type) {
    declare_types("x:" + type + " n:int");
    return Symbol_SymInfo(typed_tree("x"));
  }

  // A parameter list x, n, and O1 of a result type unless that is empty.
  static tAsynt params(const std::string& type, const std::string& result) {
    const tAsynt x = mSymbol(named(type));
    tAsynt list = result.empty() ? mExpression0() : mExpression1(out_param(result.c_str(), 1), mExpression0());
    list = mExpression1(typed_tree("n"), list);
    return mExpression1(x, list);
  }

  static tAsynt function(const std::string& type) {
    declare_types("M`F_g:" + type);
    return Symbol_SymInfo(typed_tree("M`F_g"));
  }
};

TEST_F(SheepFn, TypesAndCodes) {
  const struct {
    const char *type, *text, *routine;
  } rows[] = {{"int", "integer(zc_int)", "getint"},
              {"real", "real(zc_real)", "getdouble"},
              {"bool", "logical", "getint"},
              {"string", "character(len=zc_strlen)", "getstr"},
              {"int_s", "integer(zc_int)", "getint"},
              {"real[2]", "real(zc_real)", "getNdouble"},
              {"int[2]", "integer(zc_int)", "getNint"},
              {"int[2,2,2,2]", "integer(zc_int)", "getNNNNint"},
              {"real[2,2,2,2]", "real(zc_real)", "getNNNNdouble"},
              {"bool[2,2]", "logical", "getNNint"},
              {"string[2,2,2]", "character(len=zc_strlen)", "getNNNstr"}};
  for (const auto& row : rows) {
    foutput("\n");
    EXPECT_EQ(row.text, f90.added([&] { Foutput_type(type_of_text(row.type)); }));
    EXPECT_STREQ(row.routine, if_func_get[Type_code(type_of_text(row.type))]) << row.type;
  }
  EXPECT_EQ(4, Type_code(type_of_text("complex")));
  EXPECT_EQ(20, Type_code(type_of_text("complex[2,2,2]")));
  for (const char* unknown : {"real[1,1,1,1,1]", "none", "multi(real)"})
    EXPECT_TRUE(contains(message_of([&] { EXPECT_EQ(0, Type_code(type_of_text(unknown))); }),
                         "F90 unparser: Invalid type in Type_code.\n"));
  EXPECT_TRUE(contains(message_of([] { Foutput_type(type_of_text("complex")); }),
                       "Complex data type is not supported in this version.\n"));
  EXPECT_TRUE(contains(message_of([] { Foutput_type(type_of_text("multi()")); }), "F90 unparser: Invalid type.\n"));
}

TEST_F(SheepFn, Dimensions) {
  declare_types("n:int");
  const tAsynt list = mExpression1(typed_tree("n"), mExpression1(typed_tree("Blank[&]"), mExpression0()));
  const tAsynt plain = mIntConst1(typed_tree("3"), mIntConst1(typed_tree("XPlus[n,1]"), mIntConst0()));
  const struct {
    tAsynt type;
    const char *dims, *colons;
    bool unknown;
  } rows[] = {{type_of_text("real"), "", "", false},
              {type_of_text("real[2,3,4]"), "(4,3,2)", "(:,:,:)", false},
              {type_of_text("real[2,0]"), "(:,2)", "(:,:)", true},
              {type_of_text("real_s[-1,2]"), "(2,:)", "(:,:)", true},
              {mArrayType(mRealType(nullptr), list), "(:,n)", "(:,:)", true},
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
  const struct {
    char (*visitor)(tAsynt*);
    const char *type, *out, *other;
  } rows[] = {
      {Foutput_impl_param_decl, "real[0]", "real(zc_real), pointer :: zc_O1(:)", "real(zc_real), intent(in) :: x(:)"},
      {Foutput_impl_param_decl, "real[2]", "real(zc_real), intent(out) :: zc_O1(2)",
       "real(zc_real), intent(in) :: x(2)"},
      {Foutput_impl_param_decl, "int", "integer(zc_int), intent(out) :: zc_O1", "integer(zc_int), intent(in) :: x"},
      {Foutput_impl_var_decl, "real[0,2]", "real(zc_real), pointer :: zc_O1(2,:)", "real(zc_real), pointer :: x(2,:)"},
      {Foutput_impl_var_decl, "bool[2]", "logical zc_O1(2)", "logical x(2)"},
      {Foutput_if_param_decl, "real[2]", "real(zc_real), pointer :: zc_O1(:)", "real(zc_real), pointer :: x(:)"},
      {Foutput_if_param_decl, "real", "real(zc_real) zc_O1", "real(zc_real) x"},
      {Foutput_if_param_decl, "string", "character(len=zc_strlen) zc_O1",
       "character(len=zc_strlen) x | integer(zc_int) x___i"},
      {Foutput_if_var_decl, "real[2,3]", "real(zc_real), pointer :: zc_O1(:,:)", "real(zc_real), pointer :: x(:,:)"},
      {Foutput_if_var_decl, "string", "character(len=zc_strlen) zc_O1", "character(len=zc_strlen) x"},
      {Foutput_cb_var_decl, "real[2]", "real(zc_real), pointer :: zc_O1(:)", "real(zc_real), pointer :: x(:)"},
      {Foutput_cb_var_decl, "int", "integer(zc_int) zc_O1", "integer(zc_int) x"},
      {Foutput_cb_param_decl, "real[2,3]", "real(zc_real), intent(out) :: zc_O1(3,2)",
       "real(zc_real), target, intent(in) :: x(3,2) | real(zc_real), pointer :: zc_ptr_x(:,:)"},
      {Foutput_cb_param_decl, "real", "real(zc_real), intent(out) :: zc_O1", "real(zc_real), intent(in) :: x"},
      {Foutput_impl_var_decl, "none", "", ""},
  };
  for (const auto& row : rows) {
    tAsynt out = out_param(row.type, 1), other = mSymbol(named(row.type));
    EXPECT_EQ(row.out, lines_of(f90.added([&] { TraverseAsyntTD2(&out, row.visitor); })));
    EXPECT_EQ(row.other, lines_of(f90.added([&] { TraverseAsyntTD2(&other, row.visitor); })));
  }
  // The symbols in a size are not declared by it, and none is declared twice.
  const tAsynt n = typed_tree("n"), sizes = mExpression1(n, mExpression0());
  const tAsynt y = mSymbol(mTempSymbol(mArrayType(mRealType(nullptr), sizes), NoPosition, 1));
  tAsynt list = mExpression1(y, mExpression1(n, mExpression1(y, mExpression0())));
  EXPECT_EQ("real(zc_real) zc_T1(n) | integer(zc_int) n",
            lines_of(f90.added([&] { TraverseAsyntTD2(&list, Foutput_impl_var_decl); })));
}

TEST_F(SheepFn, ModuleVariables) {
  const auto nest = [](const char* type, const char* e) {
    return mAbsoluteNest(type_of_text(type), NoPosition, typed_tree(e));
  };
  declare_types("x:real i:int j:int k:int");
  const std::pair<tAsynt, const char*> rows[] = {
      {Symbol_SymInfo(typed_tree("x")), "real(zc_real) x"},
      {mTempSymbol(type_of_text("int[0]"), NoPosition, 2), "integer(zc_int), pointer :: zc_T2(:)"},
      {nest("real[2]", "x[#1]"), "real(zc_real) x_L1_R(2)"},
      {nest("real_s[-1]", "x[i]"), "real(zc_real), pointer :: x(:)"},
      {nest("real_s[-1,3]", "x[i][j,#2]"), "real(zc_real), pointer :: x_Lj_C2_R(:,:)"},
      {nest("real_s[-1]", "x[i][j][k]"), "real(zc_real), pointer :: x_Lj_R_Lk_R(:)"},
      {nest("real_s[-1]", "x[i][j][k][#4]"), "real(zc_real), pointer :: x_Lj_R_Lk_R_L4_R(:)"},
      {nest("real_s[-1]", "x[i][j][k][i][j]"), "real(zc_real), pointer :: x_Li_R_Lj_R_Lk_R_Li_R_Lj_R(:)"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.second, lines_of(f90.added([&] { Foutput_global_var_decl(row.first); })));
}

TEST_F(SheepFn, PatternsOfTheTemplate) {
  const char* numbers3 = "x_/;VectorQ[Flatten[x],NumberQ]&&(Length[Dimensions[x]]==3)";
  const char* numbers4 = "x_/;VectorQ[Flatten[x],NumberQ]&&(Length[Dimensions[x]]==4)";
  const char* integers3 = "x_/;VectorQ[Flatten[x],Function[Head[#1]==Integer]]&&(Length[Dimensions[x]]==3)";
  const char* integers4 = "x_/;VectorQ[Flatten[x],Function[Head[#1]==Integer]]&&(Length[Dimensions[x]]==4)";
  const std::pair<const char*, const char*> rows[] = {{"int", "x_Integer"},
                                                      {"bool", "x_Integer"},
                                                      {"string", "x_String"},
                                                      {"real", "x_Real"},
                                                      {"complex", "x_/;NumberQ[x]"},
                                                      {"string[2]", "x_List/;VectorQ[x,StringQ]"},
                                                      {"real[2]", "x_List/;VectorQ[x,NumberQ]"},
                                                      {"bool[2]", "x_List/;VectorQ[x,NumberQ]"},
                                                      {"complex[2,2]", "x_List/;MatrixQ[x,NumberQ]"},
                                                      {"int[2,2]", "x_List/;MatrixQ[x,NumberQ]"},
                                                      {"real[2,2,2]", numbers3},
                                                      {"complex[2,2,2,2]", numbers4},
                                                      {"int[2,2,2]", integers3},
                                                      {"bool[2,2,2,2]", integers4}};
  const tAsynt f = function("real");
  for (const auto& row : rows) {
    const std::string text = tm.added([&] { Foutput_tm(f, params(row.first, "real")); });
    EXPECT_TRUE(contains(text, std::string("F_g[ ") + row.second + ",n_Integer]\n:Arguments:    {x, n}\n")) << text;
  }
  for (const char* type : {"string[2,2]", "real[1,1,1,1,1]", "multi()"})
    EXPECT_TRUE(contains(message_of([&] { Foutput_tm(f, params(type, "real")); }),
                         "F90 unparser: Not yet implemented a AlgeLink option for formal parameters of type x.\n"));
}

TEST_F(SheepFn, WholeTemplate) {
  Foutput_tm(function("multi()"), params("real", "int"));
  EXPECT_EQ(
      "\n#ifdef TMLOWERCASE\n#define AL_F_G al_f_g\n#endif\n\n:Evaluate: BeginPackage[\"M`\"]\n:Evaluate: F_g;\n"
      ":Evaluate: Begin[\"`Private`\"];\n:Begin:\n:Function:     al_f_g_\n:Pattern:      F_g[ x_Real,n_Integer]\n"
      ":Arguments:    {x, n, zc_O1}\n:ArgumentTypes:{Manual}\n:ReturnType:   Manual\n:End:\n:Evaluate: End[]\n"
      ":Evaluate: EndPackage[]\n",
      tm.str());
}

// What stands between the declarations and the end of a wrapper.
TEST_F(SheepFn, Wrappers) {
  const struct {
    const char *function, *param, *result, *text;
  } rows[] = {
      {"real", "real", "real", "call getdouble(x) | call getint(n) | zc_O1 = F_g(x, n) | call putdouble(zc_O1)"},
      {"real", "string", "real", "call getstr(x,x___i) | call getint(n) | zc_O1 = F_g(x, n) | call putdouble(zc_O1)"},
      {"real", "real[2]", "real[3]",
       "call getNdouble(x) | call getint(n) | allocate(zc_O1(3)) | zc_O1 = F_g(x, n) | call putNdouble(zc_O1) | "
       "deallocate(x) | deallocate(zc_O1)"},
      {"real", "real", "real[0]",
       "call getdouble(x) | call getint(n) | zc_O1 => F_g(x, n) | call putNdouble(zc_O1) | deallocate(zc_O1)"},
      {"multi()", "int[2,2]", "bool[4]",
       "call getNNint(x) | call getint(n) | allocate(zc_O1(4)) | call F_g(x, n, zc_O1) | call ALIF_LIST(1) | "
       "call putNint(zc_O1) | deallocate(x) | deallocate(zc_O1)"},
      {"multi()", "real", "", "call getdouble(x) | call getint(n) | call F_g(x, n) | call putnull()"},
  };
  for (const auto& row : rows) {
    const tAsynt f = function(row.function);
    const std::string text = lines_of(i_f90.added([&] { Foutput_if(f, params(row.param, row.result)); }));
    const std::string head =
        "subroutine al_f_g() | use ZentricaPrecision | use AlgeLinkInterface | use zc_M | implicit none | ";
    EXPECT_EQ(0U, text.find(head)) << text;
    const std::string tail = std::string(" | ") + row.text + " | end subroutine al_f_g";
    ASSERT_LT(tail.size(), text.size());
    EXPECT_EQ(tail, text.substr(text.size() - tail.size()));
  }
  const std::string text =
      i_f90.added([&] { reported([&] { Foutput_if(function("real"), params("real[1,1,1,1,1]", "real")); }); });
  EXPECT_TRUE(contains(text, "  call ! ERROR: GET (x)\n")) << text;
}

TEST_F(SheepFn, HeadsAndBodies) {
  const tAsynt body = typed_tree("XModule[{x},{1},XCompoundExpression[XBlock[{y},{2},&],XModule[{x,i},{&,&},XBreak]]]");
  f_modify_indent(1);
  Funparse_fn(function("real"), params("real", "real"), body, 1, 1);
  const char* use = "use ZentricaPrecision | use ZentricaSheep | use zc_system | implicit none | ";
  EXPECT_EQ(std::string("contains | pure recursive function F_g(x, n) result(zc_O1) | ") + use +
                "real(zc_real), intent(in) :: x | integer(zc_int), intent(in) :: n | real(zc_real) zc_O1 | "
                "real(zc_real) x | real(zc_real) y | integer(zc_int) i | x = 1 | y = 2 | exit | end function  F_g",
            lines_of(f90.str()));
  EXPECT_TRUE(contains(i_f90.str(), "! Normal Zentrica function\nsubroutine al_f_g()"));
  const tAsynt none = mExpression0();
  declare_types("system`h:multi()");
  const std::string text =
      f90.added([&] { Funparse_fn(Symbol_SymInfo(typed_tree("system`h")), none, mEmpty(), 0, 0); });
  EXPECT_TRUE(contains(text, "! the \"use zc_system\" directive skipped \n"));
  EXPECT_EQ(0U, lines_of(text).find("subroutine h() | use ZentricaPrecision")) << text;
}

tAsynt declared_as(const char* language) {
  return mExternalDeclaration(nullptr, nullptr, const_cast<char*>(language), nullptr, nullptr);
}

TEST_F(SheepFn, CallbacksAndExternals) {
  const char* head =
      "! Callback function | function F_g(x, n) result(zc_O1) | use ZentricaPrecision | "
      "use AlgeLinkInterface | implicit none | real(zc_real), target, intent(in) :: x(2) | "
      "real(zc_real), pointer :: zc_ptr_x(:) | integer(zc_int), intent(in) :: n | ";
  const char* call =
      "call ALIF_START(2, \"F_g\") | zc_ptr_x => x | call putNdouble(zc_ptr_x) | call putint(n) | "
      "call ALIF_WAIT() | ";
  const tAsynt f = function("real");
  EXPECT_EQ(std::string(head) + "real(zc_real) zc_O1 | " + call + "call cbgetdouble(zc_O1) | end function  F_g",
            lines_of(f90.added([&] { Funparse_fn(f, params("real[2]", "real"), declared_as("Alg"), 0, 0); })));
  EXPECT_TRUE(
      contains(f90.added([&] { Funparse_fn(function("multi()"), params("real", ""), declared_as("Alg"), 0, 0); }),
               "  call ALIF_WAIT()\n  call cbgetnull()\nend subroutine  F_g\n"));
  EXPECT_EQ("", tm.str() + i_f90.str() + external.str());
  std::string before;
  for (int genmode : {1, 0}) {
    glob_genmode_flag = genmode;
    Funparse_fn(function("real"), params("real", "real[2]"), declared_as("alg"), 0, 0);
    EXPECT_EQ(genmode == 0, contains(tm.str(), ":End:"));
    EXPECT_TRUE(contains(i_f90.str(), "! External function\nsubroutine al_f_g()\n"));
    EXPECT_EQ(
        "! External function F_g | function F_g(x, n) result(zc_O1) | use ZentricaPrecision | use ZentricaSheep | "
        "implicit none | real(zc_real), intent(in) :: x | integer(zc_int), intent(in) :: n | "
        "real(zc_real) zc_O1(2) | end function  F_g",
        lines_of(external.str().substr(before.size())));
    before = external.str();
  }
  glob_genmode_flag = 0;
}

// A callback result that has no name of its own.
TEST_F(SheepFn, RefusedNames) {
  const tAsynt list = mExpression1(mSymbol(mTempSymbol(type_of_text("real"), NoPosition, 1)), mExpression0());
  EXPECT_TRUE(contains(message_of([&] { Funparse_fn(function("real"), list, declared_as("Alg"), 0, 0); }),
                       "F90 unparser: Cannot unparse callback return variable.\n"));
  const std::string said = message_of([] { GetOriginalName(mTempSymbol(mNoType(), NoPosition, 7)); });
  EXPECT_TRUE(contains(said, "TempSymbol")) << said;
  EXPECT_TRUE(contains(said, "F90 unparser: Unexpected kind of symbol during GetOriginalName.\n"));
}

// The outermost name counts, found through instances and their members; else the model's.
TEST_F(SheepFn, Contexts) {
  declare_types("A`t:none t:none");
  const auto below = [](tAsynt component) {
    return mAbsoluteSymbol(mRealType(nullptr), NoPosition, const_cast<char*>("h"),
                           mExpression1(component, mExpression0()));
  };
  EXPECT_EQ("A", GetFunctionPrefixContext(Symbol_SymInfo(typed_tree("A`t"))));
  EXPECT_EQ("A", GetFunctionPrefixContext(below(typed_tree("A`t"))));
  EXPECT_EQ("A", GetFunctionPrefixContext(below(typed_tree("A`t[#1]"))));
  EXPECT_EQ("A", GetFunctionPrefixContext(mAbsoluteNest(mNoType(), NoPosition, typed_tree("A`t[#1][#2]"))));
  EXPECT_EQ("M", GetFunctionPrefixContext(below(typed_tree("t"))));
}

TEST_F(SheepFn, SplittingPutsBack) {
  for (int length : {1, 2, 5}) {
    tAsynt list = mExpression0();
    for (int i = length; i >= 1; i--) list = mExpression1(mIntConst(i), list);
    const tAsynt before = CopyAsynt(list);
    tAsynt args = list, ret = nullptr;
    SplitArguments(&list, &args, &ret, false);
    EXPECT_EQ(length - 1, LengthExpressions(args));
    EXPECT_EQ(length, IntConst_Val(ret));
    if (length > 1) {
      EXPECT_EQ(1, IntConst_Val(Expression1_Expression(args)));
    }
    MergeArguments(&list, &args, &ret, false);
    EXPECT_TRUE(IsEqualAsynt(before, list));
  }
}

TEST_F(SheepFn, Module) {
  finit();
  fexit();
  EXPECT_EQ(
      "module zc_M\n\n  use ZentricaPrecision\n  use ZentricaSheep\n  implicit none\n\n  interface\n"
      "  ! Declarations of external functions (if any)\n  include   'MExt.f90inc'\n  end interface\n\n\n"
      "end module zc_M\n",
      f90.str());
}

}  // namespace
}  // namespace oz
