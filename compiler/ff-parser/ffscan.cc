// Longest match over the whole text, which is in memory anyway: it is copied into a buffer that ends in bytes of value
// 0, so that loops over characters need no test for the end. A text has no 0 of its own.
//
// A number is written as the host writes it, 1.5*^-3, and its constant holds the form that the generators print,
// 1.5e-03. A name oz$x$C stands for the component named x of a declared array: its symbol says so by its type.

#include "ffscan.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "Asynt.h"
#include "Errors.h"
#include "ffparse.h"
#include "ozerrors.h"
#include "scan_names.h"

namespace oz {

ffscan_tScanAttribute ffscan_Attribute{NoPosition, nullptr, ""};
const char* ffscan_TokenPtr = "";
size_t ffscan_TokenLength = 0;

namespace {

void leave() { Errors_Exit(); }

}  // namespace

void (*ffscan_Exit)() = leave;

namespace {

enum CharClass : uint8_t {
  cLetter = 1,  // begins a name
  cDigit = 2,
  cHigh = 4,       // the byte 196, which a plain name may hold behind its first byte
  cBackquote = 8,  // between the parts of a name
  cComment = 16,   // what counts inside a comment: its brackets, line ends, tabs, and the end
  cNoString = 32,  // what no string holds: a quote, a line end, the end, bytes that are not ASCII
};

constexpr std::array<uint8_t, 256> make_classes() {
  std::array<uint8_t, 256> classes{};
  for (unsigned c = 'a'; c <= 'z'; c++) classes[c] = cLetter;
  for (unsigned c = 'A'; c <= 'Z'; c++) classes[c] = cLetter;
  for (unsigned c = '0'; c <= '9'; c++) classes[c] = cDigit;
  for (unsigned c = 128; c <= 255; c++) classes[c] = cNoString;
  classes['$'] = cLetter;
  classes['`'] = cBackquote;
  classes[196] |= cHigh;
  for (unsigned char c : {'(', '*', '\n', '\t', '\0'}) classes[c] |= cComment;
  for (unsigned char c : {'"', '\n', '\0'}) classes[c] |= cNoString;
  return classes;
}

constexpr std::array<uint8_t, 256> kClass = make_classes();

bool is(char c, unsigned classes) { return (kClass[static_cast<unsigned char>(c)] & classes) != 0; }

constexpr size_t kFirstBuffer = 8448;
constexpr size_t kAhead = 8;  // bytes of value 0 behind the text: the longest look ahead
constexpr int kFiles = 16;    // how deep texts can nest

// A text at work. The column of a byte at p is p - buffer + shift.
struct Input {
  tFile file;
  char* buffer;
  char* cursor;  // the first byte of the token at work
  uint64_t line;
  int64_t shift;
};

Input in;             // the current text, if depth > 0
Input saved[kFiles];  // saved[d]: the text that was current at depth d
int depth = 0;

[[noreturn]] void failure(const char* text) {
  WritePosition(stderr, ffscan_Attribute.Position);
  std::fputs(text, stderr);
  ffscan_Exit();
  Exit(1);
}

uint32_t clamped(uint64_t n) { return static_cast<uint32_t>(std::min<uint64_t>(n, UINT32_MAX)); }

tPosition position_of(const char* p) {
  return {clamped(in.line), clamped(static_cast<uint64_t>(p - in.buffer + in.shift))};
}

char* resized(char* buffer, size_t size) {
  char* larger = static_cast<char*>(std::realloc(buffer, size));
  if (!larger) failure(": ffscan: out of memory\n");
  return larger;
}

// All of the text, block by block.
char* read_text(tFile file) {
  size_t size = kFirstBuffer;
  size_t used = 0;
  char* buffer = resized(nullptr, size);
  while (const size_t count = ffscan_GetLine(file, buffer + used, size - kAhead - used)) {
    used += count;
    if (used == size - kAhead) buffer = resized(buffer, size *= 2);
  }
  std::memset(buffer + used, 0, kAhead);
  return buffer;
}

void pop_file() {
  std::free(in.buffer);
  ffscan_CloseSource(in.file);
  in = saved[--depth];
  ffscan_TokenPtr = "";
  ffscan_TokenLength = 0;
}

// ---- tokens

// Ends a token in front of q.
int token(int code, char* q) {
  ffscan_TokenPtr = in.cursor;
  ffscan_TokenLength = static_cast<size_t>(q - in.cursor);
  in.cursor = q;
  return code;
}

int punctuation(int code, string text) {
  ffscan_Attribute.Node = nullptr;
  ffscan_Attribute.Text = text;
  return token(code, in.cursor + 1);
}

int real_token(string text, char* q) {
  ffscan_Attribute.Text = text;
  ffscan_Attribute.Node = mExactRealConst(text);
  return token(fftReal, q);
}

string text_up_to(const char* q) { return Asynt_KeepText({in.cursor, static_cast<size_t>(q - in.cursor)}); }

int illegal() {
  const unsigned char c = static_cast<unsigned char>(*in.cursor);
  const tPosition at = ffscan_Attribute.Position;
  const bool printable = c >= 32 && c < 127;
  if (printable)
    error_msg_pos(at.Line, at.Column, "Illegal character: %c", c);
  else
    error_msg_pos(at.Line, at.Column, "Illegal character: \\%o", c);
  in.cursor++;
  return -1;
}

// Whether an integer is above 2e9, or not above -2e9: those become real.
bool is_large(const char* digits, const char* end, bool negative) {
  while (digits < end && *digits == '0') digits++;
  const std::string_view value(digits, static_cast<size_t>(end - digits));
  const std::string_view bound = "2000000000";
  if (value.size() != bound.size()) return value.size() > bound.size();
  return negative ? value >= bound : value > bound;
}

int integer(const char* digits, char* q) {
  string text = text_up_to(q);
  if (is_large(digits, q, digits > in.cursor)) {
    warning_msg_pos2(ffscan_Attribute.Position, "Large integer constant %s.  Converted to real.", text);
    const std::string real = std::string(text) + ".0";
    return real_token(Asynt_KeepText(real), q);
  }
  ffscan_Attribute.Text = text;
  ffscan_Attribute.Node = mExactIntConst(text);
  return token(fftInteger, q);
}

char* skip_digits(char* q) {
  while (is(*q, cDigit)) q++;
  return q;
}

// The end of an exponent at q, "*^" or "*^-" and digits, once "e0" or "e-0" stands in its place; null if there is none.
char* convert_exponent(char* q) {
  if (q[0] != '*' || q[1] != '^') return nullptr;
  const bool negative = q[2] == '-';
  if (!is(q[negative ? 3 : 2], cDigit)) return nullptr;
  std::memcpy(q, negative ? "e-0" : "e0", negative ? 3 : 2);
  return skip_digits(q + (negative ? 3 : 2));
}

// Integers and reals. Only digits behind the point allow an exponent, and only with one can a sign stand in front of a
// point: -.5 is an illegal character and .5.
int number() {
  char* const digits = in.cursor + (*in.cursor == '-');
  char* const point = skip_digits(digits);
  if (*point != '.') return point > digits ? integer(digits, point) : illegal();
  char* const end = skip_digits(point + 1);
  const bool fraction = end > point + 1;
  char* const exponent = fraction ? convert_exponent(end) : nullptr;
  if (exponent) return real_token(text_up_to(exponent), exponent);
  const bool is_real = point > digits || (fraction && digits == in.cursor);
  return is_real ? real_token(text_up_to(end), end) : illegal();
}

// A string ends on its line; a quote without its partner is an illegal character.
int string_token() {
  char* q = in.cursor + 1;
  while (!is(*q, cNoString)) q++;
  if (*q != '"') return illegal();
  ffscan_Attribute.Text = Asynt_KeepText({in.cursor + 1, static_cast<size_t>(q - in.cursor - 1)});
  ffscan_Attribute.Node = mStringConst(ffscan_Attribute.Text);
  return token(fftString, q + 1);
}

// ---- names

constexpr std::string_view kMark = "oz$";
constexpr std::string_view kComponent = "$C";

// What stands between the marks of a component's name; its data is null if the marks are not there.
std::string_view unmarked(std::string_view name) {
  if (name.size() < kMark.size() + kComponent.size()) return {};
  if (!name.starts_with(kMark) || !name.ends_with(kComponent)) return {};
  return name.substr(kMark.size(), name.size() - kMark.size() - kComponent.size());
}

// The declared name behind the name of a component, or null: x for oz$x$C, Tank`v for Tank`oz$v$C. The marks may also
// be around the whole path; such a name is taken as one word.
tAsynt component_of(std::string_view name) {
  const size_t last = name.rfind('`') + 1;
  const std::string_view inner = unmarked(name.substr(last));
  if (inner.data()) {
    const std::string path = std::string(name.substr(0, last)) + std::string(inner);
    return ff_find_symbol(path.c_str(), ffscan_Attribute.Position, last > 0);
  }
  const std::string_view path = unmarked(name);
  return path.data() ? ff_find_symbol(std::string(path).c_str(), ffscan_Attribute.Position, 0) : nullptr;
}

int symbol() {
  char* q = in.cursor;
  uint64_t hash = kScanHashStart;
  for (; is(*q, cLetter | cDigit | cHigh); q++) hash = scan_hash_step(hash, *q);
  const bool in_context = *q == '`';
  if (in_context)
    for (; is(*q, cLetter | cDigit | cBackquote); q++) hash = scan_hash_step(hash, *q);
  const ScanName& name = scan_intern(in.cursor, static_cast<size_t>(q - in.cursor), hash);
  const tAsynt info = ff_find_symbol(name.text, ffscan_Attribute.Position, in_context);
  if (q[-1] == 'C' && Asynt_Kind(SymInfo_Type(info)) == kNoType) {
    const tAsynt component = component_of({name.text, name.length});
    if (component) SymInfo_Type(info) = mComponentName(component);
  }
  ffscan_Attribute.Text = name.text;
  ffscan_Attribute.Node = mSymbol(info);
  return token(fftSymbol, q);
}

// ---- what is passed over

void pass_newline(const char* p) {
  in.line++;
  in.shift = in.buffer - p;
}

// The next byte stands at the next of the columns 1, 9, 17, ...
void pass_tab(const char* p) { in.shift += -(p - in.buffer + in.shift) & 7; }

void skip_blanks() {
  char* p = in.cursor;
  for (;; p++) {
    if (*p == '\n')
      pass_newline(p);
    else if (*p == '\t')
      pass_tab(p);
    else if (*p != ' ')
      break;
  }
  in.cursor = p;
}

// Skips a comment, inner ones included; without its end the text ends.
void skip_comment() {
  char* q = in.cursor + 2;
  for (uint64_t nesting = 1; nesting > 0; q++) {
    while (!is(*q, cComment)) q++;
    if (*q == 0) break;
    if (*q == '\n') pass_newline(q);
    if (*q == '\t') pass_tab(q);
    const bool opens = q[0] == '(' && q[1] == '*';
    const bool closes = q[0] == '*' && q[1] == ')';
    if (opens) nesting++;
    if (closes) nesting--;
    if (opens || closes) q++;
  }
  in.cursor = q;
}

// The token at the cursor; -1 where there was none.
int scan_here() {
  const char* p = in.cursor;
  ffscan_Attribute.Position = position_of(p);
  if (is(*p, cLetter)) return symbol();
  switch (*p) {
    case '[': return punctuation(fftOpen, "[");
    case ']': return punctuation(fftClose, "]");
    case ',': return punctuation(fftComma, ",");
    case '"': return string_token();
    case 0: pop_file(); return fftEndOfFile;
    case '(':
      if (p[1] != '*') return illegal();
      skip_comment();
      return -1;
    default: return is(*p, cDigit) || *p == '-' || *p == '.' ? number() : illegal();
  }
}

}  // namespace

void ffscan_BeginFile(const char* name) {
  const tFile file = ffscan_BeginSource(name);
  if (depth == kFiles) failure(": ffscan: too many nested include files\n");
  char* text = read_text(file);
  saved[depth++] = in;
  in = {file, text, text, 1, 1};
}

void ffscan_CloseFile() {
  if (depth == 0) failure(": ffscan: file stack underflow (too many calls of ffscan_CloseFile)\n");
  pop_file();
}

int ffscan_GetToken() {
  while (depth > 0) {
    skip_blanks();
    const int code = scan_here();
    if (code >= 0) return code;
  }
  return fftEndOfFile;
}

}  // namespace oz
