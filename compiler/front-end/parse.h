// The model parser: from tokens to one Model tree.
#pragma once

#include "treefwd.h"

namespace oz {

// The Model of the last parse. Owned by the tree pools.
extern tAsynt model_tree;

// Set-up and closing; parse calls Beginparse itself.
void Beginparse();
void Closeparse();

// Reads the scanner's tokens up to the end of the input and leaves the tree in model_tree. Syntax errors are reported
// and repaired; a tree is always finished. Result: the number of syntax errors. Nesting beyond a bound is fatal.
int parse();

}  // namespace oz
