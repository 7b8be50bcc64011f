// How deep a model may nest.
#pragma once

namespace oz {

// Levels of an expression: of brackets and operators while it is read, and of the tree that comes out of it. All passes
// recurse over nesting only, so that this many levels fit the usual stack of 8 MB. (The frames of sanitizer builds are
// several times as large; the program asks for a larger stack there.)
inline constexpr int kMaxNesting = 10000;

}  // namespace oz
