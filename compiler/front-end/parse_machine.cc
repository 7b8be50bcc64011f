// The token at hand and the repair of errors.

#include "parse_machine.h"

#include <string>
#include <vector>

#include "Errors.h"

namespace oz::parsing {

int token = tokEndOfFile;

namespace {

constexpr size_t kExpectedLength = 255;  // of the list of expected tokens

std::vector<Following> frames;  // the first one lies under all others: nothing can follow
bool repairing = false;         // from a syntax error until a token of the input is taken
int errors = 0;

// The names in the order of the codes, up to the first one that does not fit.
std::string names_of(TokenSet set) {
  std::string names;
  for (int code = 0; code < kTokenCount; code++) {
    if (!set.has(code)) continue;
    const std::string name = parse_TokenName[code];
    if (names.size() + (names.empty() ? 0 : 1) + name.size() > kExpectedLength) break;
    if (!names.empty()) names += ' ';
    names += name;
  }
  return names;
}

void report_expected(TokenSet expected) {
  const std::string names = names_of(expected);
  ErrorMessage(xxSyntaxError, xxError, scan_Attribute.Position);
  ErrorMessageI(xxExpectedTokens, xxInformation, scan_Attribute.Position, xxString, names.c_str());
}

void skip_to(TokenSet restart) {
  if (restart.has(token)) return;
  while (!restart.has(token)) token = scan_GetToken();
  ErrorMessage(xxRestartPoint, xxInformation, scan_Attribute.Position);
}

}  // namespace

Following* following = nullptr;

void push_following(const Rest& rest) {
  if (following == &frames.back()) {
    frames.resize(2 * frames.size());
    following = &frames[frames.size() / 2 - 1];
  }
  const Following below = *following++;
  following->accept = rest.nullable ? rest.first | below.accept : rest.first;
  following->restart = rest.all | below.restart;
}

void start() {
  if (frames.empty()) frames.resize(256);
  following = frames.data();
  repairing = false;
  errors = 0;
  token = scan_GetToken();
}

int error_count() { return errors; }

void next() {
  repairing = false;
  token = scan_GetToken();
}

void unexpected(const Rest& place) {
  if (repairing) return;
  errors++;
  report_expected(place.nullable ? place.first | following->accept : place.first);
  skip_to(place.all | following->restart | tokens(tokEndOfFile));
  repairing = true;
}

scan_tScanAttribute take(int code) {
  scan_tScanAttribute attribute = scan_Attribute;
  if (token == code) {
    next();
    return attribute;
  }
  ErrorMessageI(xxTokenInserted, xxRepair, scan_Attribute.Position, xxString, parse_TokenName[code]);
  scan_ErrorAttribute(code, &attribute);
  return attribute;
}

}  // namespace oz::parsing
