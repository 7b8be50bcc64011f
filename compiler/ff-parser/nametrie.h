// The names of several tokens, such as a[1]: from an expression's tokens to the one symbol that stands for it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "treefwd.h"

namespace oz {

// A place in the trie. 0: no name that was entered leads here.
using NameState = uint32_t;

void nametrie_clear();

// The place of an expression of one token. enter: make it if there is none.
NameState nametrie_token(const char* text, size_t length, bool enter);

// The place one argument on: behind "head[" or "head[a, b" (the head's place is also that of its "[").
NameState nametrie_argument(NameState s, NameState argument, bool enter);

// The place of the call that ends with a "]" here.
NameState nametrie_call(NameState s, bool enter);

// The nest of the name that ends here, or null.
tAsynt nametrie_nest(NameState s);
void nametrie_set_nest(NameState s, tAsynt nest);

}  // namespace oz
