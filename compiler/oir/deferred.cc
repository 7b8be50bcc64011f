// A rewrite walk whose replacements are made after the walk.

#include "deferred.h"

#include <cstdio>
#include <utility>
#include <vector>

#include "Asynt.h"

namespace oz {

namespace {

std::vector<std::pair<tAsynt*, tAsynt>> replacements;

bool marks_are_clear(tAsynt t) {
#ifdef OZ_CHECK_PASSES
  return AsyntMarksAreZero(t);
#else
  // The root alone: a walk that went wrong leaves its mark there as well.
  return !t || t->yyMark == 0;
#endif
}

}  // namespace

void TraverseAsyntTD3(int line, tAsynt* tree, char (*proc)(tAsynt*)) {
  if (!marks_are_clear(*tree)) std::fprintf(stderr, "Pre-mark failure, line #%d\n", line);
  TraverseAsyntTD2(tree, proc);
  if (!marks_are_clear(*tree)) std::fprintf(stderr, "Post-mark failure, line #%d\n", line);
  for (const auto& [place, value] : replacements) *place = value;
  replacements.clear();
}

void DeferReplacement(tAsynt* place, tAsynt value) { replacements.emplace_back(place, value); }

}  // namespace oz
