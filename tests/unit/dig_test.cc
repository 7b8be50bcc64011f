// What a finished model declares: functions, types, nests, variables of instances.

#include "dig.h"

#include "ffparse.h"
#include "ffscan.h"
#include "generators.h"

namespace oz {
namespace {

using Dig = ModelText;

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
  for (const auto& [text, functions, messages] : table<3>(R"(
      real f[real x_, int y_] := x; g[_] := 1; real h[2]; h[2] := 1; --> M`f = P$`x -->
      real f[real x_] := x; real f[int k_] := k; real f[bool b_] := 3; --> M`f = 3 --> \
          W Multiple type declaration for M`f, using last one. | W Multiple type declaration for M`f, using last one.
      {real, int} f[real x_] := {x, 1}; --> M`f =  { P$`x, 1 }\s -->
      // The last bracket holds the parameters, those before it the indices of a set; the name is that of the function.
      class C reveal: real h[real y_] := y; k[y_] := y; end; instance o inherits C end;instance s[i] inherits C end; \
          --> o`h = P$`y; s`h = P$`y -->
    )")) {
    std::string found;
    tAsynt model = flat(text);
    EXPECT_EQ(messages, said([&] { found = entries(GetCompilables(model), right_side); })) << text;
    EXPECT_EQ(functions, found) << text;
    EXPECT_TRUE(AsyntMarksAreZero(model));
  }
}

// The definition of y, before and behind: calls become symbols on the element that stands first. A second run changes
// nothing.
TEST_F(Dig, Nests) {
  for (const auto& [text, before, behind] : table<3>(R"(
      real a[1]; y := a[1] + a[2] + 2*a[1]; --> XPlus[M`a[1],M`a[2],XTimes[2,M`a[1]]] --> \
          XPlus[<M`a[1]:Real>,M`a[2],XTimes[2,<M`a[1]:Real>]]
      y := f[f[a[1]]]; int a[1]; --> f[f[M`a[1]]] --> f[f[<M`a[1]:Int>]]
      real a[1][2]; y := a[1][2] + a[1][3] + a[1] + b[a[1][2]][2]; --> \
          XPlus[(M`a[1])[2],(M`a[1])[3],M`a[1],(b[(M`a[1])[2]])[2]] --> XPlus[<(M`a[1])[2]:Real>,(M`a[1])[3],M`a[1],\
          (b[<(M`a[1])[2]:Real>])[2]]
      real a[1]; real a[a[1]]; y := a[a[1]]; --> M`a[M`a[1]] --> <M`a[M`a[1]]:Real>
      real a[1]; y := (#[1])[2] + #2[a[1]]; --> XPlus[((Slot[1])[1])[2],(Slot[2])[M`a[1]]] --> \
          XPlus[((Slot[1])[1])[2],(Slot[2])[<M`a[1]:Real>]]
    )")) {
    tAsynt model = flat(text);
    tAsynt y = definition_of("M`y", model);
    EXPECT_EQ(before, tree_text(Binary_RHS(y)));
    FixNests(model);
    EXPECT_EQ(behind, tree_text(Binary_RHS(y)));
    EXPECT_TRUE(AsyntMarksAreZero(model) && CheckAsynt(model));
    const std::string once = tree_text(model);
    FixNests(model);
    EXPECT_EQ(once, tree_text(model));
  }
}

TEST_F(Dig, TypesOfNames) {
  for (const auto& [text, function, types] : table<3>(R"(
      real f[real x_] := x; w := f[1]; -->  --> M`f = real      real f[real x_] := x; w := f[1]; --> M`f -->
      real load := externinfo "l" "L`" "C" variable(Output load); y := load;real f[real x_] := externinfo "l" "L`" \
          "C" function(Input x); -->  --> M`load = XSetDelayed
      // Without the brackets of the set's indices. k is not used; its definition has the set's index as parameter.
      class C part p inherits D; part q[j] inherits D; reveal: real x; real array[3] v; end;class D reveal: int k := \
          x; real x; end; instance s[i] inherits C end; -->  --> i = int; j = int; s`p`x = real_s[-1]; s`q`x = \
          real_s[-1,-1]; s`v = real_s[-1,3]; s`x = real_s[-1]
    )")) {
    tIndex avoid = make_index(linked_list, 1);
    create_entry(avoid, mEmpty(), function.c_str());  // whose name is no variable
    tAsynt model = flat(text);
    EXPECT_EQ(types, entries(GetVarTypes(model, avoid), type_of_entry)) << text;
    EXPECT_TRUE(AsyntMarksAreZero(model));
  }
}

TEST_F(Dig, ReType) {
  tIndex first = make_index(linked_list, 1), second = make_index(linked_list, 1);
  declare_types("x:real y:int z:real");
  create_entry(first, typed_tree("x"), "x");
  for (const char* key : {"x", "y", "z"}) create_entry(second, typed_tree(key == std::string("x") ? "y" : key), key);
  declare_types("x:none y:none z:bool w:none f:none");
  for (const auto& [text, typed, messages] : table<3>(R"(
      x --> x:Real -->                                          XPlus[x,y,z] --> XPlus[x:Real,y:Int,z:Bool] -->
      // from the first index, the second, and as it was
      f[XSin[x],w,%Pi] --> f[XSin[x:Real],w,%Pi] --> untyped entity: w\nuntyped entity: f\n
    )")) {
    for (char verbosity : {0, 1}) {
      tAsynt result = nullptr;
      const tAsynt body = typed_tree(text);
      EXPECT_EQ(verbosity ? messages : "", message_of([&] { result = ReType(body, first, second, verbosity); }));
      EXPECT_EQ(typed, tree_text(result));
    }
  }
}

TEST_F(Dig, Names) {
  for (const auto& [name, qualifier, entire] : table<3>(R"(
      a`x --> a --> true          a`x --> a`x --> false       a`b`x --> a --> false       a`b`x --> a`b --> true
      ab`x --> a --> false        x --> a --> false           a` --> a --> true           a`x[b`i] --> a --> true
      a`x[b`i]`y --> a --> false                a[b`i]`x --> a[b`i] --> true              a`x[b[c`i]`j] --> a --> true
    )"))
    EXPECT_EQ((entire == "true"), is_entire_qualifier(name.c_str(), qualifier.c_str())) << name;
  declare_types("f:real[3] s:real_s[-1] x:int i:int j:int");
  for (const auto& [head, name] : table<2>(R"(
      f --> f                                f[x] --> f                             s[i][x] --> s
    )"))
    EXPECT_EQ(name, GetName(typed_tree(head)));
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

TEST_F(Dig, IndicesOfSets) {
  for (const auto& [name, type, brackets, leading, shown] : table<5>(R"(
      x[i] --> real_s[-1] --> 1 --> 1 --> x                     x[i][2] --> real_s[-1,-1,3] --> 1 --> 2 --> x[2]
      x[i] --> real_s[3,-1] --> 0 --> 0 --> x[i]                x[i] --> real_s[] --> 0 --> 0 --> x[i]
      x[i] --> real[-1] --> 1 --> 1 --> x[i]
    )")) {
    const tAsynt typ = type_of_text(type);
    const tAsynt nest = mSymbol(mAbsoluteNest(typ, NoPosition, typed_tree(name)));
    const tAsynt dims = ArrayType_Dimensions(typ);
    EXPECT_EQ(std::stoi(brackets), CountDynBrackets(dims)) << type;
    EXPECT_EQ(std::stoi(leading), CountDyns(dims)) << type;
    const bool member = Asynt_Kind(typ) == kArrayType_s;
    for (int nr : {0, 1, 2}) EXPECT_EQ(member && nr == std::stoi(brackets), VerifyDyns(nest, nr)) << type << nr;
    std::string text;
    UnparseWithoutDynBrackets(&text, nest);
    EXPECT_EQ(shown, text);
  }
  EXPECT_FALSE(VerifyDyns(mEmpty(), 0));
  EXPECT_EQ("Error: module dig, routine CountDynBrackets failed\n", message_of([] { CountDynBrackets(mSymbol0()); }));
}

// ---- the kept model

// An attribute of a variable: its entries in quotes; "no index" where the type has no attributes at all.
std::string attribute(const std::string& name, const char* attr) {
  const tAsynt typ = SymInfo_Type(Symbol_SymInfo(find_alltypes(name.c_str())));
  const tAsynt base = Asynt_IsType(typ, kArrayType) ? ArrayType_BasicType(typ) : typ;
  if (!BasicType_attributes(base)) return "no index";
  std::string text;
  for (tAsynt* p = lookup(BasicType_attributes(base), attr); p && *p; p++) text += unparse_string(*p);
  return text;
}

TEST_F(Dig, Attributes) {
  for (const auto& [text, name, unit] : table<3>(R"(
      real x; y := SetAttr[x, "unit", "m"]; --> M`x --> "m"
      real x with unit = "m"; y := {SetAttr[x, "unit", "km"], SetAttr[x, "unit", "cm"]}; --> M`x --> "cm"
      real x with unit = "m"; y := DelAttr[x, "unit"]; --> M`x -->         real x; y := DelAttr[x, "unit"]; --> M`x -->
      int array[3] v; y := SetAttr[v, "unit", 1]; --> M`v --> 1
      real a[1]; y := SetAttr[a[1], "unit", "m"]; --> M`a[1] --> "m"
      class C reveal: real x; y := SetAttr[x, "unit", "m"]; end; instance s[i] inherits C end; --> s`x --> "m"
      // Not of the form: too few or too many arguments, no name of an attribute, another head.
      real x; y := {SetAttr[x, "unit"], SetAttr[x, unit, 1], DelAttr[x], DelAttr[x, "unit", 1], Attr[x, "unit", 1], \
          SetAttr[x, "unit", 1, 2]}; --> M`x --> no index
    )")) {
    keep(text);
    EXPECT_EQ(unit, attribute(name, "unit")) << text;
  }
  for (const auto& [text, message] : table<2>(R"(
      y := SetAttr[x, "unit", "m"]; --> Reattribution error, cannot find x
      real f[real x_] := x; y := DelAttr[f, "unit"]; --> Reattribution error, cannot find M`f
      {real, int} t; y := SetAttr[t, "unit", "m"]; --> Failed to change attribute for M`t\n
    )"))
    EXPECT_EQ(std::string("   0,  0: Fatal       ") + message + "\n", message_of([&] { keep(text); }));
}

// Each name without a type is read as a name of the model. What the model does not know is reported by the reader and
// stays without a type. M is no occurrence of M.
TEST_F(Dig, NamesOfTheModelInAText) {
  keep("real x; real array[3] v; real f[real y_] := y;");
  for (const auto& [text, types, messages] : table<3>(R"(
      oz$Type[M`z, oz$Real] --> -->   a[oz$Type[z, oz$Real], 2] --> a = none --> E1,1 Undefined (variable) symbol: M`a
      g[x, f[v], x] --> f = real; g = none; v = real[3]; x = real --> E1,1 Undefined (variable) symbol: M`g
    )")) {
    ffscan_SetString(text.c_str());
    ffscan_BeginFile("");
    const tAsynt body = ffparse(1);
    std::string found;
    EXPECT_EQ(messages, said([&] { found = entries(GetExternalFuncTypes(body), type_of_entry); }));
    EXPECT_EQ(types, found) << text;
    EXPECT_TRUE(AsyntMarksAreZero(body));
  }
}

// The routine that makes room for a set's variables, on both files; the dimensions of the set stand in front. An
// instance that is no set has its variables declared alone.
TEST_F(Dig, DeclarationsOfInstances) {
  const tAsynt model = keep(
      "class C reveal: real x; real array[3] v; real f[real y_] := y; end; instance a inherits C end;"
      "instance s[i,j] inherits C end;");
  const tIndex variables = GetVarTypes(model, GetCompilables(model));
  SheepFiles files;
  f_module_name = "zc_M";
  const auto declared = [&](const char* text) {
    tAsynt* entry = lookup(instances, text);
    return lines_of(files.f90.added([&] { GenVarDecls(entry[1], entry[2], variables); }));
  };
  EXPECT_EQ("real(zc_real) v(3) | real(zc_real) x", declared("a"));
  EXPECT_EQ("", files.i_f90.str());
  EXPECT_EQ(
      "subroutine s_set_range (oz_Li_R,oz_Lj_R) | use zc_M, oz_this_s => s_set_range | implicit none | "
      "integer(zc_int), intent(in) :: oz_Li_R | integer(zc_int), intent(in) :: oz_Lj_R | "
      "allocate (v(oz_Li_R,oz_Lj_R,3)) | allocate (x(oz_Li_R,oz_Lj_R)) | end subroutine s_set_range | "
      "real(zc_real), pointer :: v(:,:,:) | real(zc_real), pointer :: x(:,:)",
      declared("s"));
  EXPECT_EQ("real(zc_real), target, allocatable, save :: oz_v(:,:)\n",
            files.f90.added([] { Gen_array_decl(find_alltypes("s`v")); }));
  genlang = cplusplus;
  EXPECT_EQ("", declared("s"));
  purge_remembered_vardecls();
}

}  // namespace
}  // namespace oz
