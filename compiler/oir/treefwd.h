// The handle of a tree node, for headers that need no more.
#pragma once

namespace oz {

struct Asynt_Node;
using tAsynt = Asynt_Node*;

// The text fields of nodes. The characters are shared between copies and live as long as the process.
using string = const char*;

}  // namespace oz
