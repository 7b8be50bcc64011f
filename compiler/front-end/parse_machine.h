// What all parse functions stand on: the token at hand, the knowledge of what may follow, and the repair of errors.
//
// Each place in a production has a Rest: what the production can still take. A function that calls another one for a
// part of its production leaves, in a Frame, the Rest that follows the part. So at each moment the places and frames
// tell exactly which tokens can come next, and that is tested before anything is decided:
//
//   ( a + b ] ...      in operand position behind "+": Rest {an expression}, Frame {operators} {")"}, Frame {";"} ...
//
// An unexpected token is reported, tokens are skipped up to one that can come later, and from there on the functions
// take their shortest way, which inserts the tokens that are missing, until the token at hand fits.
#pragma once

#include <cstdint>

#include "scan.h"
#include "tokens.h"

namespace oz::parsing {

// A set of token codes.
struct TokenSet {
  uint64_t bits[2];
  constexpr bool has(int token) const { return (bits[token >> 6] >> (token & 63)) & 1; }
};

constexpr TokenSet operator|(TokenSet a, TokenSet b) { return {{a.bits[0] | b.bits[0], a.bits[1] | b.bits[1]}}; }

constexpr TokenSet without(TokenSet a, int token) {
  a.bits[token >> 6] &= ~(uint64_t{1} << (token & 63));
  return a;
}

template <typename... T>
constexpr TokenSet tokens(T... codes) {
  TokenSet set{};
  ((set.bits[codes >> 6] |= uint64_t{1} << (codes & 63)), ...);
  return set;
}

// What is left of a production. Rests are added up from steps in the order of the production; of an optional part only
// the tokens that begin it are a step.
struct Rest {
  TokenSet first;  // what can come at once
  TokenSet all;    // what can come at any place of the shortest completion
  bool nullable;   // the production can end here
};

// A step that takes one of these tokens, one that takes one or nothing, and the end of a production.
constexpr Rest need(TokenSet set) { return {set, set, false}; }
constexpr Rest need(Token token) { return need(tokens(token)); }
constexpr Rest may(TokenSet set) { return {set, set, true}; }
constexpr Rest may(Token token) { return may(tokens(token)); }
inline constexpr Rest kNothing = may(tokens());

constexpr Rest operator+(const Rest& a, const Rest& b) {
  return {a.nullable ? a.first | b.first : a.first, a.all | b.all, a.nullable && b.nullable};
}

// What follows the part of a production that a called function reads; lives as long as the call.
struct Frame {
  TokenSet accept;   // what can come when the part is complete
  TokenSet restart;  // what can come anywhere on the shortest completion from there to the end of the input
  const Frame* below;
  Frame() : accept{}, restart{}, below(nullptr) {}  // the ground under all frames
  explicit Frame(const Rest& rest);
  ~Frame();
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;
};

// The token at hand; its attribute is scan_Attribute.
extern int token;
extern const Frame* top_frame;

// Starts a parse: reads the first token.
void start();

// The number of syntax errors so far.
int error_count();

// Passes the token at hand.
void next();

// Reports and skips what cannot come at this place, unless a repair is on.
[[gnu::cold, gnu::noinline]] void unexpected(const Rest& place);

// To be called at every place before a decision on the token at hand.
inline void at(const Rest& place) {
  if (place.first.has(token) || (place.nullable && top_frame->accept.has(token))) [[likely]]
    return;
  unexpected(place);
}

// Takes this token, or inserts it where the way of a repair needs it; its attribute.
scan_tScanAttribute take(int code);

// The same with the test of the place before it.
inline scan_tScanAttribute take(int code, const Rest& place) {
  at(place);
  return take(code);
}

inline Frame::Frame(const Rest& rest)
    : accept(rest.nullable ? rest.first | top_frame->accept : rest.first),
      restart(rest.all | top_frame->restart),
      below(top_frame) {
  top_frame = this;
}

inline Frame::~Frame() { top_frame = below; }

}  // namespace oz::parsing
