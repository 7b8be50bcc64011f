// Makes a link program out of generated wrappers: reads the template files (.tm) that stand beside them, and writes the
// source that announces the functions to the host and calls their wrappers.
//
//   oztm -o tanks_link.cc tanks.tm
//
// A template file has lines to evaluate in the host, and a block for each function:
//
//   :Evaluate: BeginPackage["Tanks`"]
//   :Begin:
//   :Function:     AL_jetSpeed
//   :Pattern:      jetSpeed[ head_Real]
//   :Arguments:    { head}
//   :ArgumentTypes:{Manual}
//   :ReturnType:   Manual
//   :End:
//
// AL_jetSpeed is a wrapper in C++, al_jetspeed_ one in Fortran, and the program is written in the same language.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "pattern.h"

namespace {

using oz::trimmed;

constexpr int kFailed = 1, kUsage = 2;
constexpr size_t kLongestLine = 1 << 20;

const char* const kHelp =
    "usage: oztm [-o FILE] [--no-main] TEMPLATE...\n"
    "\n"
    "Writes the source of a link program whose functions stand in template files (.tm). It is compiled with the\n"
    "generated code (NAME.cc and NAMEif.cc, or NAME.f90 and NAMEif.f90) and linked with its libraries.\n"
    "\n"
    "  -o FILE     write to FILE instead of standard output\n"
    "  --no-main   leave the main program out: another source has it\n"
    "  --help      this text\n"
    "\n"
    "The status is 0, 1 for a template that makes no sense and for files that cannot be used, 2 for wrong arguments.\n";

// What the host gets to know, in the order of the templates: a function, or a text to evaluate.
struct Entry {
  std::string text;  // the pattern of a function, or the text
  std::vector<std::string> arguments;
  std::string wrapper;  // as it is called in its language; empty for a text
};

struct Request {
  std::vector<const char*> templates;
  const char* output = nullptr;
  bool main = true;
};

enum class Language { unknown, cplusplus, fortran };

std::vector<Entry> entries;
Language language = Language::unknown;
std::map<std::string, std::string> defined_in;  // where each wrapper was met first

// ---- reading

struct Place {
  const char* file;
  size_t line;
};
Place here;

[[noreturn, gnu::format(printf, 1, 2)]] void refuse(const char* format, ...) {
  std::va_list values;
  va_start(values, format);
  std::fputs("oztm: ", stderr);
  std::vfprintf(stderr, format, values);
  std::fputc('\n', stderr);
  va_end(values);
  std::exit(kFailed);
}

// A fault of the template in the line at hand; the part of the line that is shown is kept short.
[[noreturn]] void wrong_line(const char* what, std::string_view shown = {}) {
  constexpr size_t kShown = 60;
  const bool cut = shown.size() > kShown;
  std::fprintf(stderr, "%s:%zu: %s", here.file, here.line, what);
  if (!shown.empty())
    std::fprintf(stderr, ": %.*s%s", static_cast<int>(std::min(shown.size(), kShown)), shown.data(), cut ? "..." : "");
  std::fputc('\n', stderr);
  std::exit(kFailed);
}

bool is_name(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c) || c == '_' || c == '$'; });
}

// The block of one function, as far as it has been read.
struct Block {
  struct Field {
    std::string text;
    size_t line;
  };
  std::map<std::string, Field, std::less<>> fields;
  size_t begin = 0;  // its first line; 0 outside of blocks
};

// The wrapper as its language names it: AL_f, or al_f for the Fortran name al_f_.
std::string wrapper_of(std::string_view function) {
  const bool cplusplus = function.size() > 3 && function.substr(0, 3) == "AL_";
  const bool fortran = function.size() > 4 && function.substr(0, 3) == "al_" && function.back() == '_';
  if (!is_name(function) || !(cplusplus || fortran)) wrong_line("no wrapper is named like this", function);
  const Language l = cplusplus ? Language::cplusplus : Language::fortran;
  if (language != Language::unknown && language != l) wrong_line("wrappers in C++ and in Fortran make no one program");
  language = l;
  return std::string(fortran ? function.substr(0, function.size() - 1) : function);
}

// The name of a result, zc_O1, which Fortran templates list behind the arguments.
bool is_result(const std::string& name) {
  return name.size() > 4 && name.compare(0, 4, "zc_O") == 0 &&
         std::all_of(name.begin() + 4, name.end(), [](unsigned char c) { return std::isdigit(c); });
}

// The arguments in the order on the wire: each one of the pattern once. Results do not come from the host.
std::vector<std::string> wire_order(const oz::Pattern& pattern, std::string_view text) {
  std::vector<std::string> listed, order;
  if (!oz::parse_name_list(text, &listed)) wrong_line("this is no list of names", text);
  std::vector<std::string> left = pattern.names;
  for (const std::string& name : listed) {
    const auto found = std::find(left.begin(), left.end(), name);
    if (found == left.end() && is_result(name)) continue;
    if (found == left.end()) wrong_line("the pattern has no such argument, or it is listed twice", name);
    left.erase(found);
    order.push_back(name);
  }
  if (!left.empty()) wrong_line("an argument of the pattern is not listed", left.front());
  return order;
}

// What stands behind a key; faults that are found in it belong to its line.
const std::string& field(const Block& block, const char* key) {
  const auto found = block.fields.find(key);
  if (found == block.fields.end()) {
    here.line = block.begin;
    wrong_line("this block lacks a line", key);
  }
  here.line = found->second.line;
  return found->second.text;
}

// Wrappers read their arguments and send their results themselves.
void need_manual(const Block& block, const char* key, const char* value) {
  if (block.fields.find(key) != block.fields.end() && field(block, key) != value)
    wrong_line("only Manual is possible here", key + field(block, key));
}

void end_block(Block* block) {
  const size_t end = here.line;
  Entry e;
  e.wrapper = wrapper_of(field(*block, ":Function:"));
  e.text = field(*block, ":Pattern:");
  oz::Pattern pattern;
  if (!oz::parse_pattern(e.text, &pattern)) wrong_line("this is no pattern of a call", e.text);
  e.arguments = wire_order(pattern, field(*block, ":Arguments:"));
  need_manual(*block, ":ArgumentTypes:", "{Manual}");
  need_manual(*block, ":ReturnType:", "Manual");
  const auto [first, is_new] =
      defined_in.emplace(e.wrapper, std::string(here.file) + ":" + std::to_string(block->begin));
  here.line = block->begin;
  if (!is_new) wrong_line("a second definition; the first one stands in", first->second);
  here.line = end;
  entries.push_back(std::move(e));
  *block = {};
}

// A line inside of a block.
void read_field(std::string_view line, Block* block) {
  if (line == ":End:") return end_block(block);
  for (const char* key : {":Function:", ":Pattern:", ":Arguments:", ":ArgumentTypes:", ":ReturnType:"}) {
    const size_t length = std::strlen(key);
    if (line.substr(0, length) != key) continue;
    if (!block->fields.emplace(key, Block::Field{std::string(trimmed(line.substr(length))), here.line}).second)
      wrong_line("a second line", key);
    return;
  }
  wrong_line("this is no line of a block", line);
}

// Cuts a comment off the front of the line; whether it goes on in the next one.
bool skip_comment(std::string_view* line) {
  const size_t end = line->find("*/");
  if (end == std::string_view::npos) return true;
  *line = trimmed(line->substr(end + 2));
  return false;
}

void check_characters(const std::string& line) {
  if (line.size() > kLongestLine) wrong_line("the line is too long");
  for (const unsigned char c : line)
    if ((c < ' ' && c != '\t' && c != '\r') || c == 127) wrong_line("this is no text: it has control characters");
}

// A line outside of blocks.
void read_outside(std::string_view line, Block* block, bool* in_comment) {
  const std::string_view evaluate = ":Evaluate:";
  while (line.substr(0, 2) == "/*") {
    line.remove_prefix(2);
    *in_comment = skip_comment(&line);
    if (*in_comment) return;
  }
  if (line.empty() || line.front() == '#') return;
  if (line == ":Begin:")
    block->begin = here.line;
  else if (line.substr(0, evaluate.size()) == evaluate)
    entries.push_back({std::string(trimmed(line.substr(evaluate.size()))), {}, ""});
  else
    wrong_line("this is no line of a template", line);
}

void read_template(const char* file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) refuse("cannot read %s: %s", file, std::strerror(errno));
  here = {file, 0};
  Block block;
  bool in_comment = false;
  for (std::string text; std::getline(in, text);) {
    here.line++;
    check_characters(text);
    std::string_view line = trimmed(text);
    if (in_comment) in_comment = skip_comment(&line);
    if (in_comment) continue;
    if (block.begin && !line.empty())
      read_field(line, &block);
    else if (!block.begin)
      read_outside(line, &block, &in_comment);
  }
  if (in.bad()) refuse("cannot read %s", file);
  if (in_comment) wrong_line("the file ends within a comment");
  if (block.begin) {
    here.line = block.begin;
    wrong_line("this block has no :End:");
  }
}

// ---- writing

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return "{" + text + "}";
}

// A text as a string literal of C++.
std::string quoted(const std::string& text) {
  std::string literal = "\"";
  for (const char c : text) {
    char code[5];
    if (c == '"' || c == '\\')
      literal += std::string("\\") + c;
    else if (c >= ' ' && c <= '~' && c != '?')
      literal += c;
    else
      literal.append(code,
                     static_cast<size_t>(std::snprintf(code, sizeof code, "\\%03o", static_cast<unsigned char>(c))));
  }
  return literal + "\"";
}

std::string cplusplus_source(const std::string& head, bool with_main) {
  std::string source = "// " + head + "#include \"alginter.h\"\n\n", table;
  for (const Entry& e : entries) {
    if (e.wrapper.empty()) {
      table += "    {" + quoted(e.text) + ", nullptr, nullptr},\n";
      continue;
    }
    source += "extern \"C\" void " + e.wrapper + "();\n";
    table += "    {" + quoted(e.text) + ", " + quoted(joined(e.arguments)) + ", " + e.wrapper + "},\n";
  }
  source += "\nconst AL_IF_function AL_IF_functions[] = {\n" + table + "};\n";
  source += "const int AL_IF_function_count = " + std::to_string(entries.size()) + ";\n";
  if (with_main)
    source +=
        "\nint main(int argc, char** argv) { return AL_IF_main(argc, argv, AL_IF_functions, AL_IF_function_count); }\n";
  return source;
}

// A text as constants of Fortran, no longer than a line can be.
std::string fortran_text(const std::string& text) {
  constexpr size_t kPiece = 80;
  std::string constants;
  for (size_t at = 0; at == 0 || at < text.size(); at += kPiece) {
    constants += at == 0 ? "'" : "'// &\n    '";
    for (const char c : text.substr(at, kPiece)) constants += c == '\'' ? "''" : std::string(1, c);
  }
  return constants + "'";
}

std::string fortran_source(const std::string& head, bool with_main) {
  std::string source = "! " + head + "subroutine alif_install_all()\n  use AlgeLinkInterface\n  implicit none\n", calls;
  for (const Entry& e : entries) {
    if (e.wrapper.empty()) {
      calls += "  call ALIF_EVALUATE( &\n    " + fortran_text(e.text) + ")\n";
      continue;
    }
    source += "  external :: " + e.wrapper + "\n";
    calls += "  call ALIF_INSTALL( &\n    " + fortran_text(e.text) + ", &\n    " + fortran_text(joined(e.arguments)) +
             ", &\n    " + e.wrapper + ")\n";
  }
  source += calls + "end subroutine\n";
  if (with_main)
    source +=
        "\nprogram alif_program\n  use AlgeLinkInterface\n  implicit none\n  external :: alif_install_all\n"
        "  call alif_install_all()\n  call ALIF_MAIN()\nend program\n";
  return source;
}

std::string source_of(const Request& r) {
  std::string head = "The functions of";
  for (const char* file : r.templates) {
    const char* const slash = std::strrchr(file, '/');
    head += std::string(" ") + (slash ? slash + 1 : file);
  }
  for (char& c : head)
    if (c < ' ' || c > '~' || c == '\\') c = '?';
  head += ". Made by oztm; do not edit.\n";
  return language == Language::fortran ? fortran_source(head, r.main) : cplusplus_source(head, r.main);
}

bool write_all(FILE* f, const std::string& text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), f) == text.size();
  return (f == stdout ? std::fflush(f) : std::fclose(f)) == 0 && written;
}

bool is_plain_or_new(const char* name) {
  struct stat state;
  return stat(name, &state) != 0 ? errno == ENOENT : S_ISREG(state.st_mode);
}

// The file appears under its name when it has been written whole; until then the former one stays.
void write_source(const char* output, const std::string& text) {
  if (!output) {
    if (!write_all(stdout, text)) refuse("cannot write to standard output: %s", std::strerror(errno));
    return;
  }
  const bool aside = is_plain_or_new(output);
  const std::string name = aside ? std::string(output) + ".part" : output;
  FILE* const f = std::fopen(name.c_str(), "w");
  const bool done = f && write_all(f, text) && (!aside || std::rename(name.c_str(), output) == 0);
  const int error = errno;
  if (done) return;
  if (aside && f) unlink(name.c_str());
  refuse("cannot write %s: %s", output, std::strerror(error));
}

// ---- arguments

[[noreturn]] void wrong_arguments(const char* why) {
  std::fprintf(stderr, "oztm: %s\n%s", why, kHelp);
  std::exit(kUsage);
}

Request parse_arguments(int argc, char** argv) {
  Request r;
  for (int i = 1; i < argc; i++) {
    const std::string_view word = argv[i];
    if (word == "--help") {
      std::fputs(kHelp, stdout);
      std::exit(0);
    }
    if (word == "--no-main")
      r.main = false;
    else if (word == "-o" && i + 1 < argc)
      r.output = argv[++i];
    else if (word.size() > 1 && word.front() == '-')
      wrong_arguments("no such option, or a file name is missing");
    else
      r.templates.push_back(argv[i]);
  }
  if (r.templates.empty()) wrong_arguments("no template is named");
  return r;
}

}  // namespace

int main(int argc, char** argv) {
  const Request request = parse_arguments(argc, argv);
  for (const char* file : request.templates) read_template(file);
  if (language == Language::unknown) refuse("%s has no function", request.templates.back());
  write_source(request.output, source_of(request));
  return 0;
}
