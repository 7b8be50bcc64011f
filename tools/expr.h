// Expressions as text and on a link, for the tools:  f[1, 2.5, "a\n", {x, y}]
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "algelink.h"

namespace oz {

struct Expr {
  int type = ALSymbolToken;  // a token of algelink.h
  std::string text;          // of a string, a symbol, a number as it is written
  std::vector<Expr> parts;   // of a function: the head and the arguments
};

// Reads one expression from the front of the text, and the blanks behind it. False for anything else.
bool parse_expr(std::string_view* text, Expr* e);

// All blank-separated expressions of a text.
bool parse_exprs(std::string_view text, std::vector<Expr>* all);

std::string expr_text(const Expr& e);

Expr make_function(const std::string& head, std::vector<Expr> arguments);
Expr make_integer(int64_t value);

// Puts and gets an expression; each token is also shown to the tracer, when there is one.
using Tracer = void (*)(char direction, const std::string& token);
bool put_expr(ALINK link, const Expr& e, Tracer tracer);
bool get_expr(ALINK link, Expr* e, Tracer tracer);

// The bytes of hexadecimal digits, between which there may be blanks.
bool parse_hex(std::string_view text, std::string* bytes);

}  // namespace oz
