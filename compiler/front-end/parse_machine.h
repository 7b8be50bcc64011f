// What all parse functions stand on: the token at hand, the knowledge of what may follow, and the repair of errors.
//
// Each place in a production has a Rest: what the production can still take. A function that calls another one for a
// part of its production leaves, in a Frame, the Rest that follows the part. So at each moment the places and frames
// tell exactly which tokens can come next, and that is tested before anything is decided:
//
//   ( a + b ] ...      in operand position behind "+": Rest {an expression}, Frames {operators} {")"} {";"} ...
//
// An unexpected token is reported, tokens are skipped up to one that can come later, and from there on the functions
// take their shortest way, which inserts the tokens that are missing, until the token at hand fits.
#pragma once

#include <cstdint>

#include "scan.h"
#include "tokens.h"

namespace oz::parsing {

// A set of token codes, as two words of bits. Sets are made whole and never changed: as template arguments, constants
// that were changed after their making can get equal names for different values from g++ 12.
struct TokenSet {
  uint64_t low;
  uint64_t high;
  constexpr bool has(int token) const { return ((token < 64 ? low : high) >> (token & 63)) & 1; }
};

constexpr TokenSet operator|(TokenSet a, TokenSet b) { return {a.low | b.low, a.high | b.high}; }

constexpr uint64_t token_bit(int token, int from) {
  return token >= from && token < from + 64 ? uint64_t{1} << (token - from) : 0;
}

template <typename... T>
constexpr TokenSet tokens(T... codes) {
  return {(token_bit(codes, 0) | ... | 0), (token_bit(codes, 64) | ... | 0)};
}

constexpr TokenSet without(TokenSet a, int token) {
  return {a.low & ~token_bit(token, 0), a.high & ~token_bit(token, 64)};
}

// What is left of a production. Rests are added up from steps in the order of the production; of an optional part only
// the tokens that begin it are a step. They are template arguments, so that none lies on the stack of a function that
// recurses.
struct Rest {
  TokenSet first;  // what can come at once
  TokenSet all;    // what can come at any place of the shortest completion
  bool nullable;   // the production can end here
};

// A step that takes one of these tokens, one that takes one or nothing; steps in a row; a production at its end.
constexpr Rest need(TokenSet set) { return {set, set, false}; }
constexpr Rest need(Token token) { return need(tokens(token)); }
constexpr Rest may(TokenSet set) { return {set, set, true}; }
constexpr Rest may(Token token) { return may(tokens(token)); }
constexpr Rest operator+(const Rest& a, const Rest& b) {
  return {a.nullable ? a.first | b.first : a.first, a.all | b.all, a.nullable && b.nullable};
}
inline constexpr Rest kNothing = may(tokens());

// The token at hand; its attribute is scan_Attribute.
extern int token;

// What follows the parts at work, from the innermost one out.
struct Following {
  TokenSet accept;   // what can come when the innermost part is complete
  TokenSet restart;  // what can come anywhere on the shortest completion from there to the end of the input
};
extern Following* following;

void push_following(const Rest& rest);
inline void pop_following() { following--; }

// Tells, for as long as it lives, what follows the part of a production that a called function reads.
template <Rest rest>
struct Frame {
  Frame() { push_following(rest); }
  ~Frame() { pop_following(); }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;
};

// Starts a parse: reads the first token.
void start();

// The number of syntax errors so far.
int error_count();

// Passes the token at hand.
void next();

// Reports and skips what cannot come at this place, unless a repair is on.
[[gnu::cold, gnu::noinline]] void unexpected(const Rest& place);

// To be called at every place before a decision on the token at hand.
template <Rest place>
inline void at() {
  if (place.first.has(token) || (place.nullable && following->accept.has(token))) [[likely]]
    return;
  unexpected(place);
}

// Takes this token, or inserts it where the way of a repair needs it; its attribute.
scan_tScanAttribute take(int code);

// The same with the test of the place before it.
template <Rest place>
inline scan_tScanAttribute take(int code) {
  at<place>();
  return take(code);
}

}  // namespace oz::parsing
