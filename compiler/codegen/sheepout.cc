// The output layer of the Fortran generator: streams, lines and names.
//
// Two files are kept in free form at once. A text that would pass column 130 starts a continuation line, two columns
// deeper than the statement:
//
//   x = a_long_expression + &
//     &the_next_piece
//
// Texts are never split, so the choice of pieces by the caller is the choice of the places where a line may break.
// Inside a comment the next line is a comment too.
#include "sheepout.h"

#include <cstring>

#include "abbrev.h"
#include "index.h"
#include "ozerrors.h"

namespace oz {

FILE* foutput_file;
FILE* foutput_i_file;
FILE* foutput_tm_file;
FILE* foutput_external_file;
FILE* fmacro_file;

std::string f_module_name;
std::string f_cblock_name;
int fcontains;
char forall_atleast_one;
tAsynt forall_init_procs;

// Code 0 is no type that can cross the link: a comment stands in the place of the routine.
const char* const if_func_get[] = {
    "! ERROR: GET ",
#define LINK_TYPE(stem) "get" stem,
#include "sheepout_links.def"
#undef LINK_TYPE
};
const char* const if_func_put[] = {
    "! ERROR: PUT ",
#define LINK_TYPE(stem) "put" stem,
#include "sheepout_links.def"
#undef LINK_TYPE
};
const char* const if_func_cbget[] = {
    "! ERROR: CBGET ",
#define LINK_TYPE(stem) "cbget" stem,
#include "sheepout_links.def"
#undef LINK_TYPE
};

namespace {

constexpr size_t kMaxLine = 130;            // longest line before a continuation
constexpr unsigned kMaxContinuations = 39;  // of one statement, before the warning
constexpr int kMaxAbbreviation = 31;
constexpr size_t kMaxIdentifier = 30;  // a longer one is abbreviated

// One free-form file.
struct Sheet {
  FILE*& file;
  size_t line_len;            // characters on the current line
  unsigned no_of_cont_lines;  // of the current statement
  bool comment_mode;          // the current line is a comment
  int indent;                 // in columns
};

Sheet implementation_file{foutput_file, 0, 0, false, 0};
Sheet interface_file{foutput_i_file, 0, 0, false, 0};

fout_t fout;       // where text goes
fout_t fout_prev;  // where it went before
std::string mangle_name_buffer;
const char* foperator_name[kAsyntKinds];

void put(FILE* file, const char* s) {
  if (file) std::fputs(s, file);
}

// Writes s and keeps account of the line.
void put(Sheet* f, const char* s) {
  if (!f->file) return;
  std::fputs(s, f->file);
  const char* last_line = std::strrchr(s, '\n');
  if (!last_line) {
    f->line_len += std::strlen(s);
    return;
  }
  f->line_len = std::strlen(last_line + 1);
  f->no_of_cont_lines = 0;
  f->comment_mode = false;
}

// Whether s is to start on a new line. A text that begins with a line end adds nothing to the line and never does.
bool overruns(const Sheet& f, const char* s) { return f.file && *s != '\n' && f.line_len + std::strlen(s) > kMaxLine; }

void pad(Sheet* f, int mod) {
  if (!f->file) return;
  const int column = f->indent + 2 * mod;
  for (; column > 0 && f->line_len < static_cast<size_t>(column); f->line_len++) std::putc(' ', f->file);
}

void change_indent(Sheet* f, int indent_change) {
  f->indent += 2 * indent_change;
  if (f->indent >= 0) return;
  f->indent = 0;
  warning_msg("Negative indentation in Fortran unparser.\n");
}

void break_line(Sheet* f) {
  if (!f->file) return;
  if (f->comment_mode) {
    std::fputs("\n!", f->file);
    f->line_len = 1;
    pad(f, 0);
    return;
  }
  std::fputs("&\n", f->file);
  f->line_len = 0;
  pad(f, 1);
  std::putc('&', f->file);
  f->line_len++;
  if (++f->no_of_cont_lines > kMaxContinuations)
    warning_msg("Warning: more than %u continuation lines!", kMaxContinuations);
}

// A break here breaks the interface file too if both are selected: the two then differ in layout only.
void foutput_implementation(const char* s) {
  if (overruns(implementation_file, s)) foutput_continuation_nl();
  put(&implementation_file, s);
}

// Starts a comment of f on a line of its own, writing by `write`.
void open_comment(Sheet* f, const char* mark, void (*write)(const char*)) {
  if (f->line_len > 0) write("\n");
  write(mark);
  f->comment_mode = true;
}

// With both files selected the interface file has had its comment from the _i form already.
void open_comment_here(const char* mark) {
  void (*const as_selected)(const char*) = foutput;
  open_comment(&implementation_file, mark, fout == fout_both ? foutput_implementation : as_selected);
}

void start_afresh(Sheet* f) {
  f->line_len = 0;
  f->no_of_cont_lines = 0;
  f->comment_mode = false;
  f->indent = 0;
}

// What stands behind the escape letter for a character that no Fortran name can hold; 0 for any other.
char escaped(char c) {
  switch (c) {
    case '$': return 'D';
    case ',': return 'C';
    case '[': return 'L';
    case ']': return 'R';
    case '`': return 'T';
    default: return 0;
  }
}

}  // namespace

// ---- streams

void fout_set(fout_t fout_new) {
  fout_prev = fout;
  fout = fout_new;
}

void fout_reset() { fout = fout_prev; }

void finit_output() {
  init_abbrev(fmacro_file, kMaxAbbreviation);
  start_afresh(&implementation_file);
  start_afresh(&interface_file);
  mangle_name_buffer.clear();
}

// ---- text

void foutput(const char* s) {
  switch (fout) {
    case fout_interface: foutput_i(s); return;
    case fout_template: put(foutput_tm_file, s); return;
    case fout_external: put(foutput_external_file, s); return;
    case fout_both: foutput_i(s); break;
    case fout_implementation: break;
  }
  foutput_implementation(s);
}

void foutput_i(const char* s) {
  if (overruns(interface_file, s)) foutput_continuation_nl_i();
  put(&interface_file, s);
}

void foutput_continuation_nl() {
  if (fout != fout_implementation) foutput_continuation_nl_i();
  if (fout != fout_interface) break_line(&implementation_file);
}

void foutput_continuation_nl_i() { break_line(&interface_file); }

void f_modify_indent(int indent_change) {
  if (fout == fout_both || fout == fout_interface) f_modify_indent_i(indent_change);
  if (fout != fout_interface) change_indent(&implementation_file, indent_change);
}

void f_modify_indent_i(int indent_change) { change_indent(&interface_file, indent_change); }

// The external file has no account of its lines: its padding lands in the implementation file.
void foutput_indentation(int mod) {
  if (fout == fout_template) return;
  if (fout == fout_both || fout == fout_interface) foutput_indentation_i(mod);
  if (fout != fout_interface) pad(&implementation_file, mod);
}

void foutput_indentation_i(int mod) { pad(&interface_file, mod); }

void foutput_comment() {
  if (fout != fout_implementation) foutput_comment_i();
  if (fout != fout_interface) open_comment_here("!");
}

void foutput_comment_i() { open_comment(&interface_file, "!", foutput_i); }

void foutput_hpf_directive() {
  if (fout != fout_implementation) foutput_hpf_directive_i();
  if (fout != fout_interface) open_comment_here("!HPF$ ");
}

// Looks at the line of the interface file but writes to whatever is selected, unlike a comment.
void foutput_hpf_directive_i() { open_comment(&interface_file, "!HPF$ ", foutput); }

// ---- numbers and names

void foutput_int(ozmat_int i) { foutput(std::to_string(i)); }

// The exponent makes a literal of double precision.
void foutput_real(ozmat_real r) { foutput(std::to_string(r) + "0d0"); }

void foutput_if_name(const char* originalName) {
  foutput("al_");
  foutput(ToLower(originalName));
}

void foutput_tm_name(const char* originalName) {
  foutput("al_");
  foutput(ToLower(originalName));
  foutput("_");
}

// The escape letter of a first character is no underscore: a Fortran name cannot begin with one.
void foutput_mangled_str(const char* s) {
  for (const char* c = s; *c; c++) {
    const char code = escaped(*c);
    if (code) mangle_name_buffer += c == s ? 'A' : '_';
    mangle_name_buffer += code ? code : *c;
  }
}

void foutput_mangled_int(ozmat_int i) { foutput_mangled_str(std::to_string(i)); }
void foutput_mangled_real(ozmat_real r) { foutput_mangled_str(std::to_string(r)); }

void flush_mangled_str() {
  if (mangle_name_buffer.size() > kMaxIdentifier) remember_long(mangle_name_buffer.c_str());
  foutput(mangle_name_buffer);
  mangle_name_buffer.clear();
}

void finit_operator_name() {
  for (unsigned kind = 0; kind < kAsyntKinds; kind++) foperator_name[kind] = Asynt_NodeName(kind);
#define OPERATOR(kind, text) foperator_name[k##kind] = text;
#include "sheepout_operators.def"
#undef OPERATOR
}

void foutput_operator(tAsynt op) { foutput(foperator_name[Asynt_Kind(op)]); }

std::string ToUpper(const char* inp) {
  std::string copy = inp;
  for (char& c : copy)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return copy;
}

std::string ToLower(const char* inp) {
  std::string copy = inp;
  for (char& c : copy)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return copy;
}

string attribute_value(pointerToIndex attributes, const char* name) {
  tAsynt* entries = lookup(attributes, name);
  return entries && Asynt_IsType(entries[0], kStringConst) ? StringConst_Val(entries[0]) : nullptr;
}

// ---- expression lists

tAsynt LastExpression(tAsynt t) {
  if (!Asynt_IsType(t, kExpression1)) return t;
  while (Asynt_IsType(Expression1_Expressions(t), kExpression1)) t = Expression1_Expressions(t);
  return Expression1_Expression(t);
}

tAsynt ButLastExpression(tAsynt t) {
  if (!Asynt_IsType(t, kExpression1)) return t;
  return ReverseAsynt(Expression1_Expressions(ReverseAsynt(t)));
}

int LengthExpressions(tAsynt t) {
  int n = 0;
  for (; Asynt_IsType(t, kExpression1); t = Expression1_Expressions(t)) n++;
  return n;
}

}  // namespace oz
