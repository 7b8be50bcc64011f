// What a finished model declares: functions, types, nests, variables of instances.

#include "dig.h"

#include <map>
#include <string>
#include <utility>

#include "fatal_text.h"
#include "flatten.h"
#include "model_text.h"
#include "name.h"
#include "oz.h"
#include "ozt.h"
#include "tree_text.h"
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
      {"real f[real x_, real y_] := x; real g[_] := 1; real h[2] := 1; real a[2];", "M`f = P$`x", ""},
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
      {"real a[1]; y := (#[1])[2];", "", ""},
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
    const char* avoid;  // a function whose name is no variable
    const char* types;
  } rows[] = {
      {"real x; int k := x; y := 2; real array[3] v;", "", "M`k = int; M`v = real[?]; M`x = real"},
      {"real f[real x_] := x + z; real z;", "", "M`z = real"},
  };
  for (const auto& row : rows) {
    tIndex avoid = make_index(linked_list, 1);
    create_entry(avoid, mEmpty(), row.avoid);
    tAsynt model = flat(row.model);
    EXPECT_EQ(row.types, entries(GetVarTypes(model, avoid), type_of_entry)) << row.model;
  }
}

}  // namespace
}  // namespace oz
