// The codes of the model language's tokens.
#pragma once

namespace oz {

enum Token : int {
#define TOKEN(name, text, sort) tok##name,
#include "tokens.def"
#undef TOKEN
};

inline constexpr int kTokenCount = tokUnaryOp + 1;
static_assert(kTokenCount == 112, "token codes run from 0 to 111");

// What messages call a token; from tokKeyModel to the one before tokUnaryOp also its spelling.
inline constexpr const char* parse_TokenName[kTokenCount] = {
#define TOKEN(name, text, sort) text,
#include "tokens.def"
#undef TOKEN
};

}  // namespace oz
