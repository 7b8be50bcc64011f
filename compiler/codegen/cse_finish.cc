// The end of a list of assignments that is no function body: it stays flat, or its conditionals are rebuilt.
#include "cse.h"
#include "if.h"
#include "oz.h"

namespace oz {

tAsynt finish_cse() {
  const tAsynt list = cse_close_list(mExpression0());
  if (do_ddg) cse_schedule(list);
  const tAsynt result = simple_code ? mXCompoundExpression(mkNonConvPos(NoPosition), list)
                                    : rewrite_ifs(list, static_cast<unsigned>(temp_no));
  CheckAsynt(result);
  return result;
}

}  // namespace oz
