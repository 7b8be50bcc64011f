// Unrolling, as far as its text does not show it: types of names, shared symbols, the index of instances.

#include "unroll.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "fatal_text.h"
#include "model_text.h"
#include "name.h"
#include "oz.h"
#include "ozt.h"

namespace oz {
namespace {

struct Unroll : ModelText {
  tIndex instances = nullptr;

  tAsynt unrolled(const std::string& text) {
    tAsynt t = parsed(text);
    Qualify(&t);
    ozt(&t);
    unroll(&t, &instances);
    return t;
  }
};

std::map<std::string, std::set<tAsynt>> infos_by_name;

bool is_rule_for_output(tAsynt t) {
  return Asynt_Kind(t) == kXSetDelayed && std::string(unparse_string(Binary_LHS(t))).rfind("Format[", 0) == 0;
}

// The nodes of each name in a tree. What is for the host alone has symbols of its own.
std::map<std::string, std::set<tAsynt>>& names_of(tAsynt t) {
  infos_by_name.clear();
  TraverseAsyntTD2(&t, [](tAsynt* place) -> char {
    if (Asynt_Kind(*place) == kAlgAuxiliary || is_rule_for_output(*place)) return false;
    if (Asynt_Kind(*place) == kSymbol) infos_by_name[unparse_string(*place)].insert(Symbol_SymInfo(*place));
    return true;
  });
  EXPECT_TRUE(AsyntMarksAreZero(t));
  EXPECT_TRUE(CheckAsynt(t));
  return infos_by_name;
}

// A type in a word: the kind, and for arrays the dimensions, of which -1 is the marker of an index.
std::string type_text(tAsynt type) {
  std::string text = Asynt_NodeName(Asynt_Kind(type));
  if (!Asynt_IsType(type, kArrayType)) return text;
  text += std::string(" of ") + Asynt_NodeName(Asynt_Kind(ArrayType_BasicType(type)));
  for (tAsynt l = ArrayType_Dimensions(type); Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l))
    text += std::string(" ") + unparse_string(Expression1_Expression(l));
  return text;
}

// A declaration reaches every use of the name in the instance, wherever it stands, and no other instance's.
TEST_F(Unroll, OneNodePerNameWithItsDeclaredType) {
  const char* kClass =
      "class C(n) hide: use := x + y + f[x] + w; real x; int y := x; real f[int k_] := k + x; real g[real k_] := k;"
      "real array[n] w; String s; end;";
  const struct {
    const char* name;
    const char* in_instance;
    const char* in_set;
    const char* in_sets;
  } rows[] = {
      {"x", "RealType", "ArrayType_s of RealType -1", "ArrayType_s of RealType -1 -1"},
      {"y", "IntType", "ArrayType_s of IntType -1", "ArrayType_s of IntType -1 -1"},
      {"f", "RealType", "ArrayType_s of RealType -1", "ArrayType_s of RealType -1 -1"},
      {"w", "ArrayType of RealType 4", "ArrayType_s of RealType -1 4", "ArrayType_s of RealType -1 -1 4"},
      {"s", "StringType", "StringType", "StringType"},
      {"use", "NoType", "NoType", "NoType"},
  };
  tAsynt t = unrolled(std::string(kClass) +
                      "instance a inherits C(4) end; instance b[i] inherits C(4) end;"
                      "instance c[i] part p[j] inherits C(4); part q inherits C(4); end;");
  auto& names = names_of(t);
  const auto check = [&](const std::string& name, const char* type) {
    ASSERT_EQ(1u, names[name].size()) << name;
    EXPECT_EQ(type, type_text(SymInfo_Type(*names[name].begin()))) << name;
  };
  for (const auto& row : rows) {
    check(std::string("a`") + row.name, row.in_instance);
    check(std::string("b`") + row.name, row.in_set);
    check(std::string("c`q`") + row.name, row.in_set);
    check(std::string("c`p`") + row.name, row.in_sets);
  }
  // The parameter k of f is not that of g.
  std::set<std::string> types;
  for (tAsynt info : names["P$`k"]) types.insert(type_text(SymInfo_Type(info)));
  EXPECT_EQ((std::set<std::string>{"IntType", "RealType"}), types);
}

TEST_F(Unroll, IndexOfInstances) {
  tAsynt t =
      unrolled("class C part p[k] inherits D; end; class D end; instance a inherits C end; instance b[i, j] end;");
  ASSERT_EQ(kPackage, Asynt_Kind(t));
  const auto entry = [&](const char* key) { return lookup(instances, key); };
  ASSERT_TRUE(entry("a") && entry("a`p") && entry("b"));
  EXPECT_EQ(nullptr, entry("C"));

  // An instance starts with its name, which its context follows; a part is its context alone.
  EXPECT_EQ("M`a", printed(Expression1_Expression(entry("a")[0])));
  EXPECT_EQ("M`b", printed(Expression1_Expression(entry("b")[0])));
  EXPECT_EQ(kContext, Asynt_Kind(Expression1_Expression(Expression1_Expressions(entry("b")[0]))));
  EXPECT_EQ("a`p", printed(Context_Name(Expression1_Expression(entry("a`p")[0]))));
  EXPECT_EQ("a`p", printed(entry("a`p")[1]));

  EXPECT_EQ("i", printed(Symbol1_Symbol(entry("b")[2])));
  EXPECT_EQ("j", printed(Symbol1_Symbol(Symbol1_Symbols(entry("b")[2]))));
  EXPECT_EQ(kXFalse, Asynt_Kind(entry("b")[3]));

  // The cell of a part is the one in the package.
  tAsynt context = Expression1_Expression(Expression1_Expressions(entry("a")[0]));
  tAsynt cell = Context_Body(context);
  while (Asynt_Kind(cell) == kExpression1 && cell != entry("a`p")[0]) cell = Expression1_Expressions(cell);
  EXPECT_EQ(entry("a`p")[0], cell);
}

TEST_F(Unroll, OnlyModels) {
  tAsynt t = mXTrue();
  unroll(&t, &instances);
  EXPECT_EQ(kXTrue, Asynt_Kind(t));
  EXPECT_EQ(nullptr, instances);
}

TEST_F(Unroll, WhatIsNoObjectIsRefused) {
  EXPECT_EQ("Error: module unroll, routine Objects2Expressions failed\n", message_of([this] {
              tAsynt t = parsed("");
              Model_Objects(t) = mObject1(mXTrue(), mObject0());
              unroll(&t, &instances);
            }));
}

}  // namespace
}  // namespace oz
