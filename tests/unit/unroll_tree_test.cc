// Unrolling: what instances share, paths in paths, trees that no source text gives.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "fatal_text.h"
#include "model_text.h"
#include "name.h"
#include "oz.h"
#include "ozt.h"
#include "tree_text.h"
#include "unroll.h"

namespace oz {
namespace {

struct UnrollTree : ModelText {
  static tAsynt transformed(const std::string& text) {
    tAsynt model = parsed(text);
    Qualify(&model);
    ozt(&model);
    return model;
  }

  static tAsynt unrolled(const std::string& text) {
    tAsynt model = transformed(text);
    tIndex instances;
    unroll(&model, &instances);
    EXPECT_TRUE(CheckAsynt(model)) << text;
    EXPECT_TRUE(AsyntMarksAreZero(model)) << text;
    return model;
  }
};

template <typename Condition>
std::vector<tAsynt> nodes_with(tAsynt tree, Condition condition) {
  static std::vector<tAsynt> nodes;
  nodes.clear();
  TraverseAsyntTD(tree, [](tAsynt t) { nodes.push_back(t); });
  std::vector<tAsynt> result;
  for (tAsynt t : nodes)
    if (condition(t)) result.push_back(t);
  return result;
}

// The symbol information of all symbols with this text.
std::set<tAsynt> informations(tAsynt tree, const std::string& text) {
  std::set<tAsynt> result;
  for (tAsynt t : nodes_with(tree, [](tAsynt n) { return Asynt_Kind(n) == kSymbol; }))
    if (unparse_string(t) == text) result.insert(Symbol_SymInfo(t));
  return result;
}

TEST_F(UnrollTree, InstancesShareNothing) {
  const tAsynt package = unrolled(
      "real array[m] g; class C hide: n := 2; real array[n] v; real x; end; "
      "instance s[i] inherits C begin {x, v, g} end; instance a inherits C begin {x, v, g} end;");
  const struct {
    const char* name;
    const char* symbol;
  } rows[] = {
      {"s`x", "s`x:ArrayType_s[Real,{-1}]"}, {"s`v", "s`v:ArrayType_s[Real,{-1,s`n}]"}, {"a`x", "a`x:Real"},
      {"a`v", "a`v:ArrayType[Real,{a`n}]"},  {"M`g", "M`g:ArrayType[Real,{m}]"},
  };
  for (const auto& row : rows) {
    const std::set<tAsynt> infos = informations(package, row.name);
    EXPECT_FALSE(infos.empty()) << row.name;
    for (tAsynt info : infos) EXPECT_EQ(row.symbol, tree_text(mSymbol(info)));
  }
}

TEST_F(UnrollTree, AuxiliariesForTheHostKeepTheirOwnNames) {
  const tAsynt package = unrolled("instance i hide: array[2] w; u := w + w; end;");
  // The first occurrence, in the call of Array, stands for the others but that in the rule for the elements.
  EXPECT_EQ(2u, informations(package, "i`w").size());
}

TEST_F(UnrollTree, RefusalsOfTreesThatNoTextGives) {
  const auto refusal = [](tAsynt model) {
    return message_of([model] {
      tAsynt t = model;
      tIndex instances;
      unroll(&t, &instances);
    });
  };
  tAsynt model = transformed("instance s[i] end;");
  Symbol1_Symbol(InstanceSet_IndexNames(Object1_Object(Model_Objects(model)))) = mThis();
  EXPECT_EQ("Error: module unroll, routine Patternize failed\n", refusal(model));
  model = transformed("class D end; class C part p inherits D; end; instance i inherits C end;");
  for (tAsynt part : nodes_with(model, [](tAsynt n) { return Asynt_Kind(n) == kPartInstance; }))
    PartInstance_Instance(part) = mEmpty();
  EXPECT_EQ("Error: module unroll, routine Instantiate failed\n", refusal(model));
  model = transformed("class A(q) end; instance a inherits A(h`x) end;");
  for (tAsynt t : nodes_with(model, [](tAsynt n) { return Asynt_Kind(n) == kAbsoluteSymbol; }))
    if (printed(t) == "h`x") AbsoluteSymbol_Components(t) = mExpression1(mThis(), mExpression0());
  EXPECT_EQ("   0,  0: Fatal       AbsoluteSymbol containing this???\n", refusal(model));
}

}  // namespace
}  // namespace oz
