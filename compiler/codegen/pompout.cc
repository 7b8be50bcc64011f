// The output layer of the C++ generator: files, switches and lines.
//
// A routine writes one piece of text, such as a type name, and the switches around it decide where it lands: in the
// .cc, in the .cc and the .h at once, in the link template. Lines of the .cc and the .h are filled up to column 80,
// call by call: a text is never split, so the choice of pieces by the caller is the choice of the places where a line
// may break.
#include "pompout.h"

#include <cstring>

#include "abbrev.h"
#include "ozerrors.h"

namespace oz {

FILE* cpoutput_file;
FILE* cpoutput_h_file;
FILE* cpoutput_icc_file;
FILE* cpoutput_tm_file;
FILE* cpoutput_if_file;
FILE* cpoutput_lm_file;

int cp_unbreakable_mode;
tAsynt currentBody;

namespace {

constexpr size_t kMaxLine = 80;
constexpr int kIndentStep = 4;
constexpr int kMaxIdentifier = 126;

// Everything that starts afresh with a file set, but for the two variables that others see.
struct State {
  size_t cp_current_line_len;    // characters on the current line of the .cc
  size_t cp_current_line_len_h;  // and of the .h
  bool cp_comment_mode;          // a // comment is open on the line of the .cc
  int cp_indent;                 // in columns
  bool cp_semicolon_output;      // the last significant character of the .cc was ; or }
  // Switches.
  bool cph_output;
  bool cp_tm_output;
  bool cp_if_output;
  bool cp_icc_output;
  bool cp_if_output_too;
  bool cp_h_only_output;
  bool cp_h_icc_output;
};
State state;

std::string mangle_name_buffer;

void put(FILE* file, const char* s) {
  if (file) std::fputs(s, file);
}

bool is_line_end(char c) { return c == '\n' || c == '\r'; }

bool is_space(char c) { return c == ' ' || c == '\t' || is_line_end(c); }

// Keeps account of a character of the .cc.
void note(char c) {
  if (!state.cp_comment_mode) {
    if (c == ';' || c == '}')
      state.cp_semicolon_output = true;
    else if (!is_space(c))
      state.cp_semicolon_output = false;
  }
  if (is_line_end(c)) {
    state.cp_current_line_len = 0;
    state.cp_comment_mode = false;
  } else {
    state.cp_current_line_len++;
  }
}

void output_cc(const char* s) {
  if (!cpoutput_file) return;
  if (state.cp_current_line_len + std::strlen(s) > kMaxLine) cpoutput_continuation_nl();
  for (const char* c = s; *c; c++) note(*c);
  std::fputs(s, cpoutput_file);
}

}  // namespace

// ---- life cycle

void cpinit() {
  init_abbrev(cpoutput_h_file, kMaxIdentifier + 1);
  state = State{};
  cp_unbreakable_mode = 0;
  mangle_name_buffer.clear();
  currentBody = nullptr;
  cpoutput("#include <math.h>\n");
  cpoutput_h("#include \"lumenmat.h\"\n\n");
}

// ---- switches

void cpstart_h_output() { state.cph_output = true; }
void cpend_h_output() { state.cph_output = false; }
void cpstart_tm_output() { state.cp_tm_output = true; }
void cpend_tm_output() { state.cp_tm_output = false; }
void cpstart_if_output() { state.cp_if_output = true; }
void cpend_if_output() { state.cp_if_output = false; }
void cpstart_icc_output() { state.cp_icc_output = true; }
void cpend_icc_output() { state.cp_icc_output = false; }
void cpstart_h_only_output() { state.cp_h_only_output = true; }
void cpend_h_only_output() { state.cp_h_only_output = false; }
void cpstart_h_icc_output() { state.cp_h_icc_output = true; }
void cpend_h_icc_output() { state.cp_h_icc_output = false; }
void cpstart_if_output_too() { state.cp_if_output_too = true; }
void cpend_if_output_too() { state.cp_if_output_too = false; }

// ---- text

// The first switch that is set decides, in this order.
void cpoutput(const char* s) {
  if (state.cp_tm_output) {
    cpoutput_tm(s);
  } else if (state.cp_if_output) {
    cpoutput_if(s);
  } else if (state.cp_h_icc_output) {
    cpoutput_h(s);
    cpoutput_icc(s);
  } else if (state.cp_icc_output) {
    cpoutput_icc(s);
  } else if (state.cp_h_only_output) {
    cpoutput_h(s);
  } else {
    if (state.cp_if_output_too) cpoutput_if(s);
    output_cc(s);
    if (state.cph_output) cpoutput_h(s);
  }
}

void cpoutput_h(const char* s) {
  if (!cpoutput_h_file) return;
  if (state.cp_current_line_len_h + std::strlen(s) > kMaxLine) cpoutput_continuation_nl_h();
  for (const char* c = s; *c; c++) {
    if (is_line_end(*c))
      state.cp_current_line_len_h = 0;
    else
      state.cp_current_line_len_h++;
  }
  std::fputs(s, cpoutput_h_file);
}

void cpoutput_tm(const char* s) { put(cpoutput_tm_file, s); }
void cpoutput_if(const char* s) { put(cpoutput_if_file, s); }
void cpoutput_icc(const char* s) { put(cpoutput_icc_file, s); }

void cpoutput_double_quote() { cpoutput("\""); }

void cpoutput_semicolon() {
  if (!state.cp_semicolon_output) cpoutput(";");
}

// The slashes belong to the comment: they are no significant characters.
void cpoutput_comment() {
  if (state.cp_current_line_len > 0) cpoutput("\n");
  state.cp_comment_mode = true;
  cpoutput("//");
}

void cpoutput_indentation(int mod) {
  if (!cpoutput_file) return;
  const int column = state.cp_indent + mod * kIndentStep;
  for (; column > 0 && state.cp_current_line_len < static_cast<size_t>(column); state.cp_current_line_len++)
    std::putc(' ', cpoutput_file);
}

void cp_modify_indent(int indent_change) {
  state.cp_indent += indent_change * kIndentStep;
  if (state.cp_indent < 0) die_msg("Negative indentation in Fortran unparser.\n");
}

void cpoutput_continuation_nl() {
  if (!cpoutput_file || cp_unbreakable_mode) return;
  if (state.cp_comment_mode) {
    std::fputs("\n//", cpoutput_file);
    state.cp_current_line_len = 2;
    cpoutput_indentation(0);
  } else {
    std::putc('\n', cpoutput_file);
    state.cp_current_line_len = 0;
    cpoutput_indentation(1);
  }
}

void cpoutput_continuation_nl_h() {
  if (!cpoutput_h_file) return;
  std::fputs("\n    ", cpoutput_h_file);
  state.cp_current_line_len_h = 4;
}

void cp_lmlev(int level) {
  static const char* const kLines[] = {"#define LM_N\n", "#define LM_NN\n", "#define LM_NNN\n", "#define LM_NNNN\n"};
  if (level >= 1 && level <= 4) put(cpoutput_lm_file, kLines[level - 1]);
}

int cp_win32() { return 0; }

// ---- identifiers

void cpoutput_mangled_str(const char* s) {
  for (; *s; s++) {
    if (*s == '$')
      mangle_name_buffer += "_D";
    else
      mangle_name_buffer += *s;
  }
}

void cpoutput_mangled_str_capitalize(const char* s) { cpoutput_mangled_str(capitalize(s)); }

void cpflush_mangled_str() {
  if (mangle_name_buffer.size() > kMaxIdentifier)
    warning_msg("A very long identifier %s. Reduce the length to %d symbols ", mangle_name_buffer.c_str(),
                kMaxIdentifier);
  cpoutput(mangle_name_buffer);
  mangle_name_buffer.clear();
}

}  // namespace oz
