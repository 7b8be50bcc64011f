// Flattening of compound expressions in the bodies of packages and contexts.

#include "flatten.h"

#include <gtest/gtest.h>

#include <vector>

#include "oz.h"
#include "tree_text.h"

namespace oz {
namespace {

tAsynt list_of(const std::vector<tAsynt>& items) {
  tAsynt list = mExpression0();
  for (size_t i = items.size(); i-- > 0;) list = mExpression1(items[i], list);
  return list;
}

tAsynt name(const char* text) { return mSymbol(mSimpleSymbol(mNoType(), NoPosition, text)); }

tAsynt compound(const std::vector<tAsynt>& items) {
  return mXCompoundExpression(mkNonConvPos(NoPosition), list_of(items));
}

TEST(Flatten, CompoundsGiveWayToTheirItems) {
  tAsynt part = mContext(name("c"), list_of({compound({name("d"), compound({})})}));
  tAsynt call = mSimpleFFE(list_of({compound({name("e")})}), name("f"));
  tAsynt t = mPackage(name("p"), mFilename0(),
                      list_of({compound({}), compound({compound({name("a"), compound({name("b")})}), name("c")}), part,
                               call, compound({compound({}), compound({})})}));
  flatten(&t);
  EXPECT_EQ("Package[p,{},{a,b,c,Context[c,{d}],f[XCompoundExpression[e]]}]", tree_text(t));
  tAsynt other = compound({compound({name("a")})});
  flatten(&other);
  EXPECT_EQ("XCompoundExpression[XCompoundExpression[a]]", tree_text(other));
}

}  // namespace
}  // namespace oz
