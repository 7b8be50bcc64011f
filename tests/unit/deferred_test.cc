// The walk whose replacements are made behind it.

#include "deferred.h"

#include <gtest/gtest.h>

#include <vector>

#include "Asynt.h"
#include "fatal_text.h"
#include "tree_text.h"

namespace oz {
namespace {

tAsynt list_of(const std::vector<tAsynt>& items) {
  tAsynt list = mExpression0();
  for (size_t i = items.size(); i-- > 0;) list = mExpression1(items[i], list);
  return list;
}

tAsynt name(const char* text) { return mSymbol(mSimpleSymbol(mNoType(), NoPosition, text)); }

int visits;

TEST(Deferred, ReplacementsComeAfterTheWalk) {
  tAsynt x = name("x");
  tAsynt tree = mSimpleFFE(list_of({x, mThis(), mSimpleFFE(list_of({name("x")}), name("g"))}), name("f"));
  visits = 0;
  TraverseAsyntTD3(__LINE__, &tree, [](tAsynt* place) -> char {
    visits++;
    if (Asynt_Kind(*place) == kSymbol) DeferReplacement(place, mSimpleFFE(list_of({*place, mThis()}), name("h")));
    if (Asynt_Kind(*place) == kThis) {
      DeferReplacement(place, name("first"));
      DeferReplacement(place, name("last"));
    }
    // Not into g[x], nor into what a name consists of.
    return Asynt_Kind(*place) != kSymbol && tree_text(*place) != "g[x]";
  });
  EXPECT_EQ("h[f,This][h[x,This],last,g[x]]", tree_text(tree));
  // f[...], three cells, x, this, g[x], the end of the list, f.
  EXPECT_EQ(9, visits);
}

TEST(Deferred, ReportsMarksThatAreNotClear) {
  tAsynt tree = mThis();
  const auto walk = [&tree] { TraverseAsyntTD3(7, &tree, [](tAsynt*) -> char { return 1; }); };
  EXPECT_EQ("", message_of(walk));
  tree->yyMark = 1;
  EXPECT_EQ("Pre-mark failure, line #7\n", message_of(walk));
  tree->yyMark = 0;
  EXPECT_EQ("Post-mark failure, line #8\n", message_of([&tree] {
              TraverseAsyntTD3(8, &tree, [](tAsynt* place) -> char {
                (*place)->yyMark = 5;
                return 1;
              });
            }));
  tree->yyMark = 0;
}

}  // namespace
}  // namespace oz
