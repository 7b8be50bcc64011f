// What a finished model declares: functions, types, nests, variables of instances.

#include "dig.h"

#include <map>
#include <string>
#include <vector>

#include "efunc.h"
#include "fatal_text.h"
#include "ffparse.h"
#include "ffscan.h"
#include "flatten.h"
#include "model_text.h"
#include "name.h"
#include "output_stream.h"
#include "oz.h"
#include "ozt.h"
#include "sheepout.h"
#include "tree_text.h"
#include "type.h"
#include "type_text.h"
#include "unroll.h"

namespace oz {
namespace {

struct Dig : ModelText {
  tIndex instances = nullptr;

  tAsynt flat(const std::string& text) {
    tAsynt t = parsed(text);
    Qualify(&t);
    ozt(&t);
    unroll(&t, &instances);
    flatten(&t);
    return t;
  }
};

// The keys of an index in the order of their texts, each with its first entry as a describe gives it.
template <typename Describe>
std::string entries(tIndex index, Describe describe) {
  std::map<std::string, std::string> sorted;
  Iter* iter = start_iter(index);
  while (tAsynt* found = iter_next(iter)) {
    const std::string key = iter_key(iter);
    EXPECT_EQ(nullptr, found[1]) << key;
    sorted[key] = describe(found[0]);
  }
  std::string text;
  for (const auto& [key, value] : sorted) text += (text.empty() ? "" : "; ") + key + " = " + value;
  return text;
}

std::string type_of_entry(tAsynt t) {
  return Asynt_Kind(t) == kSymbol ? type_text(SymInfo_Type(Symbol_SymInfo(t))) : Asynt_NodeName(Asynt_Kind(t));
}

std::string right_side(tAsynt definition) { return unparse_string(Binary_RHS(definition)); }

const char* wanted_name;
tAsynt wanted;

tAsynt definition_of(const char* name, tAsynt model) {
  wanted_name = name;
  wanted = nullptr;
  TraverseAsyntTD2(&model, [](tAsynt* t) -> char {
    if (Asynt_Kind(*t) == kXSetDelayed && std::string(wanted_name) == unparse_string(Binary_LHS(*t))) wanted = *t;
    return true;
  });
  return wanted;
}

TEST_F(Dig, Compilables) {
  const struct {
    const char* model;
    const char* functions;
    const char* messages;
  } rows[] = {
      {"real f[real x_] := x; h[x_] := x; real v := 1; w := f[v];", "M`f = P$`x", ""},
      {"real f[real x_, int y_] := x; g[_] := 1; real h[2]; h[2] := 1;", "M`f = P$`x", ""},
      {"real f[real x_] := x; real f[int k_] := k; real f[bool b_] := 3;", "M`f = 3",
       "   0,  0: Warning     Multiple type declaration for M`f, using last one.\n"
       "   0,  0: Warning     Multiple type declaration for M`f, using last one.\n"},
      {"{real, int} f[real x_] := {x, 1};", "M`f =  { P$`x, 1 } ", ""},
      // The last bracket holds the parameters, those before it the indices of a set; the name is that of the function.
      {"class C reveal: real h[real y_] := y; k[y_] := y; end; instance o inherits C end;"
       "instance s[i] inherits C end;",
       "o`h = P$`y; s`h = P$`y", ""},
  };
  for (const auto& row : rows) {
    std::string functions;
    tAsynt model = flat(row.model);
    EXPECT_EQ(row.messages, message_of([&] { functions = entries(GetCompilables(model), right_side); })) << row.model;
    EXPECT_EQ(row.functions, functions) << row.model;
    EXPECT_TRUE(AsyntMarksAreZero(model));
  }
}

// The definition of y, before and behind: calls become symbols on the element that stands first. A second run changes
// nothing.
TEST_F(Dig, Nests) {
  const struct {
    const char* model;
    const char* before;
    const char* behind;
  } rows[] = {
      {"real a[1]; y := a[1] + a[2] + 2*a[1];", "XPlus[M`a[1],M`a[2],XTimes[2,M`a[1]]]",
       "XPlus[<M`a[1]:Real>,M`a[2],XTimes[2,<M`a[1]:Real>]]"},
      {"y := f[f[a[1]]]; int a[1];", "f[f[M`a[1]]]", "f[f[<M`a[1]:Int>]]"},
      {"real a[1][2]; y := a[1][2] + a[1][3] + a[1] + b[a[1][2]][2];",
       "XPlus[(M`a[1])[2],(M`a[1])[3],M`a[1],(b[(M`a[1])[2]])[2]]",
       "XPlus[<(M`a[1])[2]:Real>,(M`a[1])[3],M`a[1],(b[<(M`a[1])[2]:Real>])[2]]"},
      {"real a[1]; real a[a[1]]; y := a[a[1]];", "M`a[M`a[1]]", "<M`a[M`a[1]]:Real>"},
      {"real a[1]; y := (#[1])[2] + #2[a[1]];", "XPlus[((Slot[1])[1])[2],(Slot[2])[M`a[1]]]",
       "XPlus[((Slot[1])[1])[2],(Slot[2])[<M`a[1]:Real>]]"},
  };
  for (const auto& row : rows) {
    tAsynt model = flat(row.model);
    tAsynt y = definition_of("M`y", model);
    EXPECT_EQ(row.before, tree_text(Binary_RHS(y)));
    FixNests(model);
    EXPECT_EQ(row.behind, tree_text(Binary_RHS(y)));
    EXPECT_TRUE(AsyntMarksAreZero(model) && CheckAsynt(model));
    const std::string once = tree_text(model);
    FixNests(model);
    EXPECT_EQ(once, tree_text(model));
  }
}

TEST_F(Dig, TypesOfNames) {
  const struct {
    const char* model;
    const char* avoid;  // a function, whose name is no variable
    const char* types;
  } rows[] = {
      {"real x; int k := x; y := 2; real array[3] v; bool b := Sin[x];", "",
       "M`b = bool; M`k = int; M`v = real[3]; M`x = real"},
      {"real f[real x_] := x; w := f[1];", "", "M`f = real"},
      {"real f[real x_] := x; w := f[1];", "M`f", ""},
      {"real a[1]; int b[i][2]; y := a[1];", "", "M`a[1] = real; M`b[i][2] = int"},
      {"real load := externinfo \"l\" \"L`\" \"C\" variable(Output load); y := load;"
       "real f[real x_] := externinfo \"l\" \"L`\" \"C\" function(Input x);",
       "", "M`load = XSetDelayed"},
      // Without the brackets of the set's indices. k is not used; its definition has the set's index as parameter.
      {"class C part p inherits D; part q[j] inherits D; reveal: real x; real array[3] v; end;"
       "class D reveal: int k := x; real x; end; instance s[i] inherits C end;",
       "", "i = int; j = int; s`p`x = real_s[-1]; s`q`x = real_s[-1,-1]; s`v = real_s[-1,3]; s`x = real_s[-1]"},
  };
  for (const auto& row : rows) {
    tIndex avoid = make_index(linked_list, 1);
    create_entry(avoid, mEmpty(), row.avoid);
    tAsynt model = flat(row.model);
    EXPECT_EQ(row.types, entries(GetVarTypes(model, avoid), type_of_entry)) << row.model;
    EXPECT_TRUE(AsyntMarksAreZero(model));
  }
}

TEST_F(Dig, ReType) {
  const struct {
    const char* body;
    const char* typed;
    const char* messages;  // when they are wanted
  } rows[] = {
      {"x", "x:Real", ""},
      {"XPlus[x,y,z]", "XPlus[x:Real,y:Int,z:Bool]", ""},  // from the first index, the second, and as it was
      {"f[XSin[x],w,%Pi]", "f[XSin[x:Real],w,%Pi]", "untyped entity: w\nuntyped entity: f\n"},
  };
  tIndex first = make_index(linked_list, 1), second = make_index(linked_list, 1);
  declare_types("x:real y:int z:real");
  create_entry(first, typed_tree("x"), "x");
  for (const char* name : {"x", "y", "z"})
    create_entry(second, typed_tree(name == std::string("x") ? "y" : name), name);
  declare_types("x:none y:none z:bool w:none f:none");
  for (const auto& row : rows) {
    for (char verbosity : {0, 1}) {
      tAsynt result = nullptr;
      const tAsynt body = typed_tree(row.body);
      EXPECT_EQ(verbosity ? row.messages : "", message_of([&] { result = ReType(body, first, second, verbosity); }));
      EXPECT_EQ(row.typed, tree_text(result));
    }
  }
}

TEST_F(Dig, Names) {
  const struct {
    const char* name;
    const char* qualifier;
    bool entire;
  } qualifiers[] = {{"a`x", "a", true},          {"a`x", "a`x", false},
                    {"a`b`x", "a", false},       {"a`b`x", "a`b", true},
                    {"ab`x", "a", false},        {"x", "a", false},
                    {"a`", "a", true},           {"a`x[b`i]", "a", true},
                    {"a`x[b`i]`y", "a", false},  {"a[b`i]`x", "a[b`i]", true},
                    {"a`x[b[c`i]`j]", "a", true}};
  for (const auto& row : qualifiers) EXPECT_EQ(row.entire, is_entire_qualifier(row.name, row.qualifier)) << row.name;
  declare_types("f:real[3] s:real_s[-1] x:int i:int j:int");
  const struct {
    const char* head;
    const char* name;
  } heads[] = {{"f", "f"}, {"f[x]", "f"}, {"s[i][x]", "s"}};
  for (const auto& row : heads) EXPECT_STREQ(row.name, GetName(typed_tree(row.head)));
  EXPECT_STREQ("f", GetName(Symbol_SymInfo(typed_tree("f"))));
  for (const char* head : {"f[i][x]", "s[i][j][x]", "17"})
    EXPECT_EQ("Error: module dig, routine GetName failed\n", message_of([&] { GetName(typed_tree(head)); }));
  EXPECT_EQ("   0,  0: Fatal       GetModelName: no model\n", message_of([] { GetModelName(nullptr); }));
  EXPECT_STREQ("M", GetModelName(parsed("")));
  tIndex names = make_index(linked_list, 1);
  for (const char* name : {"a", "b"}) create_entry(names, mEmpty(), name);
  testing::internal::CaptureStdout();
  printkeys(names);
  EXPECT_EQ("b\na\n", testing::internal::GetCapturedStdout());
}

// What belongs to an instance is what its name qualifies wholly, in the order of the index.
TEST_F(Dig, VariablesOfInstances) {
  tAsynt model = flat(
      "real z; class D reveal: real x; real y; end; class C part p inherits D; part q[j] inherits D; reveal: real x; "
      "end;"
      "instance a inherits C end; instance s[i] inherits C end; instance none end;");
  tIndex vars = GetVarTypes(model, nullptr);
  static std::vector<tAsynt> found;
  Iter* instance = start_iter(instances);
  size_t all = 0;
  while (tAsynt* entry = iter_next(instance)) {
    std::vector<tAsynt> expected;
    Iter* var = start_iter(vars);
    while (tAsynt* declared = iter_next(var))
      if (is_entire_qualifier(iter_key(var), iter_key(instance))) expected.push_back(declared[0]);
    found.clear();
    ApplyForInstanceVars([](tAsynt t) { found.push_back(t); }, entry[1], vars);
    EXPECT_EQ(expected, found) << iter_key(instance);
    all += found.size();
  }
  EXPECT_EQ(size_t{10}, all);
}

TEST_F(Dig, IndicesOfSets) {
  const struct {
    const char* name;
    const char* type;
    int brackets, leading;
    const char* text;
  } rows[] = {
      {"x[i]", "real_s[-1]", 1, 1, "x"},      {"x[i][2]", "real_s[-1,-1,3]", 1, 2, "x[2]"},
      {"x[i]", "real_s[3,-1]", 0, 0, "x[i]"}, {"x[i]", "real_s[]", 0, 0, "x[i]"},
      {"x[i]", "real[-1]", 1, 1, "x[i]"},
  };
  for (const auto& row : rows) {
    const tAsynt typ = type_of_text(row.type);
    const tAsynt nest = mSymbol(mAbsoluteNest(typ, NoPosition, typed_tree(row.name)));
    const tAsynt dims = ArrayType_Dimensions(typ);
    EXPECT_EQ(row.brackets, CountDynBrackets(dims)) << row.type;
    EXPECT_EQ(row.leading, CountDyns(dims)) << row.type;
    const bool member = Asynt_Kind(typ) == kArrayType_s;
    for (int nr : {0, 1, 2}) EXPECT_EQ(member && nr == row.brackets, VerifyDyns(nest, nr)) << row.type << nr;
    std::string text;
    UnparseWithoutDynBrackets(&text, nest);
    EXPECT_EQ(row.text, text);
  }
  EXPECT_FALSE(VerifyDyns(mEmpty(), 0));
  EXPECT_EQ("Error: module dig, routine CountDynBrackets failed\n", message_of([] { CountDynBrackets(mSymbol0()); }));
}

// ---- the kept model

struct DigKept : Dig {
  tAsynt model = nullptr;
  tIndex variables = nullptr;

  void keep(const std::string& text) {
    Begintype();
    model = flat(text);
    FixNests(model);
    tIndex functions = GetCompilables(model);
    remember(model, functions, instances);
    variables = GetVarTypes(model, functions);
  }
};

// An attribute of a variable: its entries in quotes; "no index" where the type has no attributes at all.
std::string attribute(const char* name, const char* attr) {
  const tAsynt typ = SymInfo_Type(Symbol_SymInfo(find_alltypes(name)));
  const tAsynt base = Asynt_IsType(typ, kArrayType) ? ArrayType_BasicType(typ) : typ;
  if (!BasicType_attributes(base)) return "no index";
  std::string text;
  for (tAsynt* p = lookup(BasicType_attributes(base), attr); p && *p; p++) text += unparse_string(*p);
  return text;
}

TEST_F(DigKept, Attributes) {
  const struct {
    const char* model;
    const char* name;
    const char* unit;
  } rows[] = {
      {"real x; y := SetAttr[x, \"unit\", \"m\"];", "M`x", "\"m\""},
      {"real x with unit = \"m\"; y := {SetAttr[x, \"unit\", \"km\"], SetAttr[x, \"unit\", \"cm\"]};", "M`x", "\"cm\""},
      {"real x with unit = \"m\"; y := DelAttr[x, \"unit\"];", "M`x", ""},
      {"real x; y := DelAttr[x, \"unit\"];", "M`x", ""},
      {"int array[3] v; y := SetAttr[v, \"unit\", 1];", "M`v", "1"},
      {"real a[1]; y := SetAttr[a[1], \"unit\", \"m\"];", "M`a[1]", "\"m\""},
      {"class C reveal: real x; y := SetAttr[x, \"unit\", \"m\"]; end; instance s[i] inherits C end;", "s`x", "\"m\""},
      // Not of the form: too few or too many arguments, no name of an attribute, another head.
      {"real x; y := {SetAttr[x, \"unit\"], SetAttr[x, unit, 1], DelAttr[x], DelAttr[x, \"unit\", 1], Attr[x, "
       "\"unit\", "
       "1], SetAttr[x, \"unit\", 1, 2]};",
       "M`x", "no index"},
  };
  for (const auto& row : rows) {
    keep(row.model);
    EXPECT_EQ(row.unit, attribute(row.name, "unit")) << row.model;
  }
  const struct {
    const char* model;
    const char* message;
  } failures[] = {
      {"y := SetAttr[x, \"unit\", \"m\"];", "Reattribution error, cannot find x"},
      {"real f[real x_] := x; y := DelAttr[f, \"unit\"];", "Reattribution error, cannot find M`f"},
      {"{real, int} t; y := SetAttr[t, \"unit\", \"m\"];", "Failed to change attribute for M`t\n"},
  };
  for (const auto& row : failures)
    EXPECT_EQ(std::string("   0,  0: Fatal       ") + row.message + "\n", message_of([&] { keep(row.model); }));
}

TEST_F(DigKept, External) {
  keep(
      "real load := externinfo \"l\" \"L`\" \"C\" variable(Output load); real x; real g[real x_] := x;"
      "real f[real x_] := externinfo \"l\" \"L`\" \"C\" function(Input x); real h[real x_] := extern \"C\"; y := "
      "{load, x, unknown};");
  const struct {
    const char* name;
    bool external;
  } rows[] = {{"load", true}, {"f", true}, {"h", true}, {"x", false}, {"g", false}, {"unknown", false}};
  for (const auto& row : rows) {
    const tAsynt name =
        mAbsoluteSymbol(mNoType(), NoPosition, row.name, mExpression1(Model_Name(parsed("")), mExpression0()));
    EXPECT_EQ(row.external, IsExternal(name)) << row.name;
    EXPECT_FALSE(IsExternal(mSymbol(name)));
  }
}

// Each name without a type is read as a name of the model. What the model does not know is reported by the reader and
// stays without a type.
TEST_F(DigKept, NamesOfTheModelInAText) {
  keep("real x; real array[3] v; real f[real y_] := y;");
  const struct {
    const char* text;
    const char* types;
    const char* messages;
  } rows[] = {{"oz$Type[M`z, oz$Real]", "", ""},  // M is no occurrence of M
              {"g[x, f[v], x]", "f = real; g = none; v = real[3]; x = real",
               "   1,  1: Error       Undefined (variable) symbol: M`g\n"},
              {"a[oz$Type[z, oz$Real], 2]", "a = none", "   1,  1: Error       Undefined (variable) symbol: M`a\n"}};
  for (const auto& row : rows) {
    ffscan_SetString(row.text);
    ffscan_BeginFile("");
    const tAsynt body = ffparse(1);
    std::string types;
    EXPECT_EQ(row.messages, message_of([&] { types = entries(GetExternalFuncTypes(body), type_of_entry); }));
    EXPECT_EQ(row.types, types) << row.text;
    EXPECT_TRUE(AsyntMarksAreZero(body));
  }
}

// The routine that makes room for a set's variables, on both files. Its name is renamed where it is defined; the
// dimensions of the set stand in front. An instance that is no set has its variables declared alone.
TEST_F(DigKept, DeclarationsOfInstances) {
  keep(
      "class C reveal: real x; real array[3] v; real f[real y_] := y; end; instance a inherits C end;"
      "instance s[i,j] inherits C end;");
  OutputStream f90, i_f90;
  foutput_file = f90.f;
  foutput_i_file = i_f90.f;
  finit_output();
  fout_set(fout_implementation);
  f_module_name = "zc_M";
  const auto declared = [&](const char* name, Language language) {
    genlang = language;
    tAsynt* entry = lookup(instances, name);
    return f90.added([&] { GenVarDecls(entry[1], entry[2], variables); });
  };
  EXPECT_EQ("", declared("s", cplusplus));
  EXPECT_EQ("", i_f90.str());
  EXPECT_EQ("real(zc_real) v(3)\nreal(zc_real) x\n", declared("a", fortran90));
  EXPECT_EQ("", i_f90.str());
  EXPECT_EQ(
      "subroutine s_set_range (oz_Li_R,oz_Lj_R)\n"
      "  use zc_M, oz_this_s => s_set_range\n"
      "  implicit none\n"
      "  integer(zc_int), intent(in) :: oz_Li_R\n"
      "  integer(zc_int), intent(in) :: oz_Lj_R\n"
      "  allocate (v(oz_Li_R,oz_Lj_R,3))\n"
      "  allocate (x(oz_Li_R,oz_Lj_R))\n"
      "end subroutine s_set_range\n\n"
      "real(zc_real), pointer :: v(:,:,:)\n"
      "real(zc_real), pointer :: x(:,:)\n",
      declared("s", fortran90));
  EXPECT_EQ(
      "interface\n"
      "  subroutine s_set_range (oz_Li_R,oz_Lj_R)\n"
      "    use oz_precision\n"
      "    implicit none\n"
      "    integer(zc_int), intent(in) :: oz_Li_R\n"
      "    integer(zc_int), intent(in) :: oz_Lj_R\n"
      "  end subroutine s_set_range\n"
      "end interface\n\n",
      i_f90.str());
  EXPECT_EQ("real(zc_real), target, allocatable, save :: oz_v(:,:)\n",
            f90.added([&] { Gen_array_decl(find_alltypes("s`v")); }));
  purge_remembered_vardecls();
  foutput_file = foutput_i_file = nullptr;
  genlang = none;
}

}  // namespace
}  // namespace oz
