// A rewrite walk whose replacements are made after the walk, so that it never meets its own products.
#pragma once

#include "treefwd.h"

namespace oz {

// Runs proc over the tree, top-down; proc returns true to go on into the children and records what it wants replaced
// with DeferReplacement. line is the caller's __LINE__, for the report of a tree whose marks are not clear.
void TraverseAsyntTD3(int line, tAsynt* tree, char (*proc)(tAsynt*));

// To be called by a visitor: *place becomes value when the walk is over, in the order of the calls.
void DeferReplacement(tAsynt* place, tAsynt value);

}  // namespace oz
