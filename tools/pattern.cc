// See pattern.h.

#include "pattern.h"

#include <cctype>

namespace oz {

namespace {

bool is_name_char(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '$'; }

// The name at the front of the text, which is cut off; empty if there is none.
std::string_view take_name(std::string_view* text) {
  size_t n = 0;
  while (n < text->size() && is_name_char((*text)[n])) n++;
  if (n > 0 && std::isdigit(static_cast<unsigned char>(text->front()))) n = 0;
  const std::string_view name = text->substr(0, n);
  text->remove_prefix(n);
  return name;
}

// Where the first part of a list ends: at a comma outside of strings and brackets, or at the end of the text. False if
// the brackets do not match.
bool find_end_of_part(std::string_view text, size_t* end) {
  std::string open;
  bool string = false;
  for (*end = 0; *end < text.size(); ++*end) {
    const char c = text[*end];
    if (string && c == '\\') {
      ++*end;
    } else if (c == '"') {
      string = !string;
    } else if (!string && (c == '[' || c == '(' || c == '{')) {
      open += c == '[' ? ']' : c == '(' ? ')' : '}';
    } else if (!string && (c == ']' || c == ')' || c == '}')) {
      if (open.empty() || open.back() != c) return false;
      open.pop_back();
    } else if (!string && c == ',' && open.empty()) {
      return true;
    }
  }
  return !string && open.empty();
}

// The parts of a list, without the blanks around them. A list of blanks has none.
bool split(std::string_view text, std::vector<std::string_view>* parts) {
  if (trimmed(text).empty()) return true;
  for (;;) {
    size_t end;
    if (!find_end_of_part(text, &end)) return false;
    parts->push_back(trimmed(text.substr(0, end)));
    if (end >= text.size()) return true;
    text.remove_prefix(end + 1);
  }
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  const char* const blanks = " \t\r";
  const size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

bool parse_pattern(std::string_view text, Pattern* p) {
  text = trimmed(text);
  p->name = take_name(&text);
  if (p->name.empty() || text.size() < 2 || text.front() != '[' || text.back() != ']') return false;
  std::vector<std::string_view> parts;
  if (!split(text.substr(1, text.size() - 2), &parts)) return false;
  for (std::string_view part : parts) {
    p->names.emplace_back(take_name(&part));
    if (p->names.back().empty() || part.empty() || part.front() != '_') return false;
    part.remove_prefix(1);
    p->types.emplace_back(take_name(&part));
  }
  return true;
}

bool parse_name_list(std::string_view text, std::vector<std::string>* names) {
  text = trimmed(text);
  if (text.size() < 2 || text.front() != '{' || text.back() != '}') return false;
  std::vector<std::string_view> parts;
  if (!split(text.substr(1, text.size() - 2), &parts)) return false;
  for (std::string_view part : parts) {
    names->emplace_back(part);
    for (const char c : part)
      if (!is_name_char(c) && c != '_') return false;
    if (part.empty()) return false;
  }
  return true;
}

}  // namespace oz
