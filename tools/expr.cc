// See expr.h.

#include "expr.h"

#include <cctype>
#include <charconv>
#include <cstdlib>

namespace oz {

namespace {

constexpr int kDeepest = 1000;  // nesting of expressions that tools deal with

bool is_name_char(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '$' || c == '`'; }

void skip_blanks(std::string_view* text) {
  while (!text->empty() && std::isspace(static_cast<unsigned char>(text->front()))) text->remove_prefix(1);
}

bool take(std::string_view* text, char c) {
  if (text->empty() || text->front() != c) return false;
  text->remove_prefix(1);
  skip_blanks(text);
  return true;
}

int hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const int letter = std::tolower(static_cast<unsigned char>(c));
  return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

// What stands behind a backslash: ", \, n or xNN.
bool parse_escape(std::string_view* text, std::string* to) {
  if (text->empty()) return false;
  const char c = text->front();
  text->remove_prefix(1);
  if (c == 'x') {
    if (text->size() < 2 || hex_digit((*text)[0]) < 0 || hex_digit((*text)[1]) < 0) return false;
    to->push_back(static_cast<char>(hex_digit((*text)[0]) * 16 + hex_digit((*text)[1])));
    text->remove_prefix(2);
    return true;
  }
  to->push_back(c == 'n' ? '\n' : c);
  return c == 'n' || c == '"' || c == '\\';
}

bool parse_string(std::string_view* text, std::string* to) {
  text->remove_prefix(1);
  while (!text->empty()) {
    const char c = text->front();
    text->remove_prefix(1);
    if (c == '"') return true;
    if (c != '\\')
      to->push_back(c);
    else if (!parse_escape(text, to))
      return false;
  }
  return false;
}

// A number: decimal digits, a real when there is a point or an exponent.
bool parse_number(std::string_view* text, Expr* e) {
  size_t n = text->front() == '-' || text->front() == '+' ? 1 : 0;
  bool real = false, digits = false;
  for (; n < text->size(); n++) {
    const char c = (*text)[n];
    const bool sign_of_exponent = (c == '-' || c == '+') && std::tolower((*text)[n - 1]) == 'e';
    if (c >= '0' && c <= '9')
      digits = true;
    else if (c == '.' || c == 'e' || c == 'E' || sign_of_exponent)
      real = true;
    else
      break;
  }
  e->text = text->substr(0, n);
  text->remove_prefix(n);
  if (real) {
    char* end;
    std::strtod(e->text.c_str(), &end);
    e->type = ALRealToken;
    return digits && *end == '\0';
  }
  int64_t value;
  const char* const first = e->text.c_str() + (e->text[0] == '+' ? 1 : 0);
  const char* const last = e->text.c_str() + e->text.size();
  e->type = std::from_chars(first, last, value).ec == std::errc() ? ALIntegerToken : ALBigIntegerToken;
  return digits;
}

bool parse_at(std::string_view* text, Expr* e, int depth);

bool parse_arguments(std::string_view* text, char end, Expr* e, int depth) {
  if (take(text, end)) return true;
  do {
    e->parts.emplace_back();
    if (!parse_at(text, &e->parts.back(), depth)) return false;
  } while (take(text, ','));
  return take(text, end);
}

bool parse_atom(std::string_view* text, Expr* e) {
  const char c = text->front();
  if (c == '"') {
    e->type = ALStringToken;
    return parse_string(text, &e->text);
  }
  if (std::isdigit(static_cast<unsigned char>(c)) || c == '-' || c == '+' || c == '.') return parse_number(text, e);
  size_t n = 0;
  while (n < text->size() && is_name_char((*text)[n])) n++;
  e->text = text->substr(0, n);
  text->remove_prefix(n);
  return n > 0;
}

bool parse_at(std::string_view* text, Expr* e, int depth) {
  if (depth > kDeepest || text->empty()) return false;
  if (take(text, '{')) {
    *e = make_function("List", {});
    return parse_arguments(text, '}', e, depth + 1);
  }
  if (!parse_atom(text, e)) return false;
  // A bracket belongs to what stands right before it.
  while (!text->empty() && text->front() == '[') {
    take(text, '[');
    Expr call;
    call.type = ALFunctionToken;
    call.parts.push_back(std::move(*e));
    *e = std::move(call);
    if (!parse_arguments(text, ']', e, depth + 1)) return false;
  }
  skip_blanks(text);
  return true;
}

std::string quoted(const std::string& bytes) {
  static const char kHex[] = "0123456789abcdef";
  std::string text = "\"";
  for (const unsigned char c : bytes) {
    if (c == '\n') {
      text += "\\n";
    } else if (c < 32 || c >= 127) {
      text += "\\x";
      text += kHex[c >> 4];
      text += kHex[c & 15];
    } else {
      if (c == '"' || c == '\\') text += '\\';
      text += static_cast<char>(c);
    }
  }
  return text + "\"";
}

std::string real_text(double value) {
  char digits[64];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  std::string text(digits, end);
  if (text.find_first_of(".en") == std::string::npos) text += '.';
  return text;
}

std::string token_text(const Expr& e) {
  if (e.type == ALFunctionToken) return "function " + std::to_string(e.parts.size() - 1);
  return expr_text(e);
}

bool put_at(ALINK link, const Expr& e, Tracer tracer) {
  if (tracer) tracer('>', token_text(e));
  switch (e.type) {
    case ALStringToken:
      return ALPutByteString(link, reinterpret_cast<const unsigned char*>(e.text.data()), e.text.size()) != 0;
    case ALIntegerToken: return ALPutInteger64(link, std::strtoll(e.text.c_str(), nullptr, 10)) != 0;
    case ALBigIntegerToken: return ALPutBigInteger(link, e.text.c_str()) != 0;
    case ALRealToken: return ALPutReal(link, std::strtod(e.text.c_str(), nullptr)) != 0;
    case ALSymbolToken: return ALPutSymbol(link, e.text.c_str()) != 0;
    default: break;
  }
  if (!ALPutArgCount(link, static_cast<int>(e.parts.size()) - 1)) return false;
  for (const Expr& part : e.parts)
    if (!put_at(link, part, tracer)) return false;
  return true;
}

bool get_atom(ALINK link, Expr* e) {
  const char* text;
  const unsigned char* bytes;
  size_t n;
  int64_t integer;
  double real;
  switch (e->type) {
    case ALStringToken:
      if (!ALGetByteString(link, &bytes, &n)) return false;
      e->text.assign(reinterpret_cast<const char*>(bytes), n);
      ALReleaseByteString(link, bytes);
      return true;
    case ALSymbolToken:
    case ALBigIntegerToken:
      if (!(e->type == ALSymbolToken ? ALGetSymbol(link, &text) : ALGetBigInteger(link, &text))) return false;
      e->text = text;
      ALReleaseString(link, text);
      return true;
    case ALIntegerToken:
      if (!ALGetInteger64(link, &integer)) return false;
      e->text = std::to_string(integer);
      return true;
    case ALRealToken:
      if (!ALGetReal(link, &real)) return false;
      e->text = real_text(real);
      return true;
    default: return false;
  }
}

bool get_at(ALINK link, Expr* e, Tracer tracer, int depth) {
  int count = 0;
  e->type = ALGetType(link);
  if (depth > kDeepest) return false;
  if (e->type != ALFunctionToken) {
    if (!get_atom(link, e)) return false;
    if (tracer) tracer('<', token_text(*e));
    return true;
  }
  if (!ALGetArgCount(link, &count)) return false;
  if (tracer) tracer('<', "function " + std::to_string(count));
  for (int i = 0; i <= count; i++) {
    e->parts.emplace_back();
    if (!get_at(link, &e->parts.back(), tracer, depth + 1)) return false;
  }
  return true;
}

void append_parts(const Expr& e, std::string* text) {
  for (size_t i = 1; i < e.parts.size(); i++) {
    if (i > 1) *text += ", ";
    *text += expr_text(e.parts[i]);
  }
}

}  // namespace

bool parse_expr(std::string_view* text, Expr* e) {
  skip_blanks(text);
  return parse_at(text, e, 0);
}

bool parse_exprs(std::string_view text, std::vector<Expr>* all) {
  skip_blanks(&text);
  while (!text.empty()) {
    all->emplace_back();
    if (!parse_expr(&text, &all->back())) return false;
  }
  return true;
}

std::string expr_text(const Expr& e) {
  if (e.type == ALStringToken) return quoted(e.text);
  if (e.type != ALFunctionToken) return e.text;
  const Expr& head = e.parts[0];
  const bool list = head.type == ALSymbolToken && head.text == "List";
  std::string text = list ? "{" : expr_text(head) + "[";
  append_parts(e, &text);
  return text + (list ? "}" : "]");
}

Expr make_function(const std::string& head, std::vector<Expr> arguments) {
  Expr e;
  e.type = ALFunctionToken;
  e.parts.emplace_back();
  e.parts[0].text = head;
  for (Expr& a : arguments) e.parts.push_back(std::move(a));
  return e;
}

Expr make_integer(int64_t value) { return Expr{ALIntegerToken, std::to_string(value), {}}; }

bool put_expr(ALINK link, const Expr& e, Tracer tracer) { return put_at(link, e, tracer); }
bool get_expr(ALINK link, Expr* e, Tracer tracer) {
  *e = Expr();
  return get_at(link, e, tracer, 0);
}

bool parse_hex(std::string_view text, std::string* bytes) {
  skip_blanks(&text);
  while (!text.empty()) {
    if (text.size() < 2 || hex_digit(text[0]) < 0 || hex_digit(text[1]) < 0) return false;
    bytes->push_back(static_cast<char>(hex_digit(text[0]) * 16 + hex_digit(text[1])));
    text.remove_prefix(2);
    skip_blanks(&text);
  }
  return true;
}

}  // namespace oz
