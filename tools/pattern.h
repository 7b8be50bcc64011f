// The texts by which a link program defines a function to the host:  f[x_Real, v_List/;VectorQ[v,NumberQ]]  and  {v, x}
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace oz {

struct Pattern {
  std::string name;                // of the function
  std::vector<std::string> names;  // of its arguments
  std::vector<std::string> types;  // what stands behind the blank: Real, List; empty if nothing does
};

// Takes a pattern apart. False, with p in parts, for a text that is none.
bool parse_pattern(std::string_view text, Pattern* p);

// The names of a list in braces, which may be empty. False for anything else.
bool parse_name_list(std::string_view text, std::vector<std::string>* names);

// The text without the blanks around it.
std::string_view trimmed(std::string_view text);

}  // namespace oz
