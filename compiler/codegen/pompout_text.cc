// The texts of the C++ generator that depend on no file: numbers, number text of the host language, names and
// operators.
#include <cerrno>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "ememory.h"
#include "ozerrors.h"
#include "pompout.h"

namespace oz {
namespace {

// Blanks on the left up to 26 columns, which no number of 16 digits passes.
std::string real_text(ozmat_real r) {
  std::string text(26, ' ');
  std::snprintf(text.data(), text.size() + 1, "%26.16g", r);
  return text;
}

}  // namespace

const char* cpoperator_name[kAsyntKinds];

void cpinit_operator_name() {
  for (unsigned kind = 0; kind < kAsyntKinds; kind++) cpoperator_name[kind] = Asynt_NodeName(kind);
#define OPERATOR(kind, text) cpoperator_name[k##kind] = text;
#include "pompout_operators.def"
#undef OPERATOR
}

void cpoutput_int(ozmat_int i) { cpoutput(std::to_string(i)); }
void cpoutput_real(ozmat_real r) { cpoutput(real_text(r)); }
void cpoutput_mangled_int(ozmat_int i) { cpoutput_mangled_str(std::to_string(i)); }
void cpoutput_mangled_real(ozmat_real r) { cpoutput_mangled_str(real_text(r)); }

// The limit is part of what the routine promises.
const char* alg_to_exp(const char* s) {
  constexpr size_t kMaxLength = 256;
  static std::string buffer;
  buffer.clear();
  for (const char* rest = s; *rest; rest++) {
    if (buffer.size() == kMaxLength) {
      warning_msg("\"%s\" is not a numeric constant.", rest);
      return s;
    }
    buffer += *rest == '*' ? 'e' : *rest;
    if (*rest == '*' && rest[1]) rest++;
  }
  return buffer.c_str();
}

// A range error that an earlier call left in errno counts too.
double alg_atof(const char* s) {
  char* rest;
  const double result = std::strtod(alg_to_exp(s), &rest);
  if (std::fabs(result) >= DBL_MAX && errno == ERANGE) warning_msg("real \"%s\" is out of range.", s);
  if (!*rest) return result;
  warning_msg("\"%s\" is not a real constant.", s);
  return 0.0;
}

long alg_atoi(const char* s) {
  char* rest;
  const long result = std::strtol(s, &rest, 10);
  if ((result == LONG_MIN || result == LONG_MAX) && errno == ERANGE) warning_msg("integer \"%s\" is out of range.", s);
  if (!*rest) return result;
  warning_msg("\"%s\" is not an integer constant.", s);
  return 0;
}

std::string capitalize(const char* inp) {
  std::string copy = inp;
  for (char& c : copy)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return copy;
}

const char* cpRemoveAlg(const char* inp) {
  const size_t length = std::strlen(inp);
  if (length < 3 || std::strcmp(inp + length - 3, "Alg") != 0) return inp;
  char* copy = estrdup(inp);
  copy[length - 3] = 0;
  return copy;
}

}  // namespace oz
