// Longest match over a buffer of blocks. What has been read ends in bytes of value 0, so that loops over characters
// need no test for the end: they stop at a 0 and only then look whether it is one of the input's. Before a token is
// begun enough bytes are read for the longest look ahead; where a token reaches the end of what has been read, its
// bytes move to the front of the buffer and the next block follows them.
//
// Operators are found in a trie made from the token table: "^:" walks to a node that is no token on its own and falls
// back to "^".

#include "scan.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Asynt.h"
#include "Errors.h"
#include "index.h"
#include "predef.h"
#include "scanSource.h"
#include "scan_names.h"
#include "tokens.h"

namespace oz {

scan_tScanAttribute scan_Attribute{NoPosition, {nullptr}};
const char* scan_TokenPtr = "";
size_t scan_TokenLength = 0;

namespace {

void leave() { Errors_Exit(); }

}  // namespace

void (*scan_Exit)() = leave;

namespace {

// What a byte can begin (other: an operator) and where it can stand.
enum CharClass : uint8_t {
  cOther = 0,
  cLetter = 1,
  cDigit = 2,
  cBlank = 4,
  cTab = 8,
  cNewline = 16,
  cComment = 32,  // what counts inside a comment: its brackets, line ends, tabs, and 0
};

constexpr std::array<uint8_t, 256> make_classes() {
  std::array<uint8_t, 256> classes{};
  for (unsigned c = 'a'; c <= 'z'; c++) classes[c] = cLetter;
  for (unsigned c = 'A'; c <= 'Z'; c++) classes[c] = cLetter;
  for (unsigned c = '0'; c <= '9'; c++) classes[c] = cDigit;
  classes['$'] = cLetter;
  classes[' '] = cBlank;
  classes['\t'] = cTab | cComment;
  classes['\n'] = cNewline | cComment;
  for (unsigned char c : {'(', '*', '\0'}) classes[c] |= cComment;
  return classes;
}

constexpr std::array<uint8_t, 256> kClass = make_classes();

bool is(char c, unsigned classes) { return (kClass[static_cast<unsigned char>(c)] & classes) != 0; }

// The trie of the operators' spellings: node 0 is the root, a step to 0 leads nowhere.
struct OperatorTrie {
  static constexpr int kNodes = 128;
  uint8_t step[kNodes][128] = {};
  uint8_t token[kNodes] = {};  // the token that ends here, or 0
  int used = 1;
};

enum class TokenSort { keyword, oper, other };

constexpr void enter_operator(OperatorTrie* trie, int code, const char* text, TokenSort sort) {
  if (sort != TokenSort::oper) return;
  int node = 0;
  for (; *text; text++) {
    uint8_t& next = trie->step[node][static_cast<unsigned char>(*text)];
    if (next == 0) next = static_cast<uint8_t>(trie->used++);
    node = next;
  }
  trie->token[node] = static_cast<uint8_t>(code);
}

constexpr OperatorTrie make_trie() {
  OperatorTrie trie;
#define TOKEN(name, text, sort) enter_operator(&trie, tok##name, text, TokenSort::sort);
#include "tokens.def"
#undef TOKEN
  return trie;
}

constexpr OperatorTrie kOperators = make_trie();

constexpr size_t kFirstBuffer = 8448;
constexpr int kFiles = 16;       // how deep files can nest
constexpr ptrdiff_t kAhead = 8;  // bytes to see from a token's first one on; also how many 0 bytes end the buffer

// A file at work. The column of a byte at p is p - buffer + shift; in 64 bits no count overflows.
struct Input {
  tFile file;
  bool own;     // opened here, so to be closed
  bool at_end;  // nothing more can be read
  char* buffer;
  size_t size;
  const char* cursor;  // the first byte of the token at work
  const char* limit;   // the end of what has been read
  uint64_t line;
  int64_t shift;
};

Input in;             // the current file, if depth > 0
Input saved[kFiles];  // saved[d]: the file that was current at depth d
int depth = 0;
bool finished = false;          // an input has been read to its end and none was begun since
Index* predef_index = nullptr;  // the predefined names
uint32_t predef_generation = 0;

[[noreturn]] void failure(const char* text) {
  WritePosition(stderr, scan_Attribute.Position);
  std::fputs(text, stderr);
  scan_Exit();
  Exit(1);
}

uint32_t clamped(uint64_t n) { return static_cast<uint32_t>(std::min<uint64_t>(n, UINT32_MAX)); }

tPosition position_of(const char* p) {
  return {clamped(in.line), clamped(static_cast<uint64_t>(p - in.buffer + in.shift))};
}

// Makes room for another block behind the bytes that are kept.
void grow_buffer(size_t kept) {
  if (in.size - kept >= kFirstBuffer / 2) return;
  const size_t size = in.size * 2;
  char* buffer = static_cast<char*>(std::realloc(in.buffer, size));
  if (!buffer) failure(": scan: out of memory\n");
  in.buffer = buffer;
  in.size = size;
}

// Reads on until at least `wanted` bytes from the cursor on are there, or the input ends. Moves the cursor's bytes to
// the front of the buffer.
void refill(ptrdiff_t wanted) {
  size_t kept = static_cast<size_t>(in.limit - in.cursor);
  in.shift += in.cursor - in.buffer;
  if (in.cursor != in.buffer) std::memmove(in.buffer, in.cursor, kept);
  while (!in.at_end && kept < static_cast<size_t>(wanted)) {
    grow_buffer(kept + kAhead);
    const size_t count = scan_GetLine(in.file, in.buffer + kept, in.size - kAhead - kept);
    in.at_end = count == 0;
    kept += count;
  }
  in.cursor = in.buffer;
  in.limit = in.buffer + kept;
  std::memset(in.buffer + kept, 0, kAhead);
}

// q as a place of the token at work, once `ahead` bytes behind it are there or the input ends.
const char* look_ahead(const char* q, ptrdiff_t ahead) {
  if (in.limit - q >= ahead || in.at_end) return q;
  const ptrdiff_t offset = q - in.cursor;
  refill(offset + ahead);
  return in.cursor + offset;
}

void push_file(tFile file, bool own) {
  if (depth == kFiles) failure(": scan: too many nested include files\n");
  char* buffer = static_cast<char*>(std::malloc(kFirstBuffer));
  if (!buffer) failure(": scan: out of memory\n");
  saved[depth++] = in;
  in = {file, own, false, buffer, kFirstBuffer, buffer, buffer, 1, 1};
  std::memset(buffer, 0, kAhead);
}

void pop_file() {
  std::free(in.buffer);
  if (in.own) scan_CloseSource(in.file);
  in = saved[--depth];
  scan_TokenPtr = "";
  scan_TokenLength = 0;
}

// Ends a token in front of q.
int token(int code, const char* q) {
  scan_TokenPtr = in.cursor;
  scan_TokenLength = static_cast<size_t>(q - in.cursor);
  in.cursor = q;
  return code;
}

int text_token(int code, const char* q) {
  scan_Attribute.Text = Asynt_KeepText({in.cursor, static_cast<size_t>(q - in.cursor)});
  return token(code, q);
}

tAsynt find_symbol(ScanName& name, tPosition position) {
  if (name.generation != predef_generation) {
    tAsynt* entries = lookup(predef_index, name.text);
    name.predef = entries ? entries[0] : nullptr;
    name.generation = predef_generation;
  }
  if (!name.predef) return mSimpleSymbol(mNoType(), position, name.text);
  tAsynt copy = CopyAsynt(name.predef);
  if (Asynt_Kind(copy) == kAbsoluteSymbol) SymInfo_Pos(copy) = position;
  return copy;
}

int scan_identifier() {
  const char* q = in.cursor;
  uint64_t hash = kScanHashStart;
  for (;;) {
    for (; is(*q, cLetter | cDigit); q++) hash = scan_hash_step(hash, *q);
    if (q < in.limit || in.at_end) break;
    q = look_ahead(q, 1);
  }
  ScanName& name = scan_intern(in.cursor, static_cast<size_t>(q - in.cursor), hash);
  if (name.keyword) return token(name.keyword, q);
  scan_Attribute.Symbol = find_symbol(name, scan_Attribute.Position);
  return token(tokId, q);
}

const char* skip_digits(const char* q) {
  for (;;) {
    while (is(*q, cDigit)) q++;
    if (q < in.limit || in.at_end) return q;
    q = look_ahead(q, 1);
  }
}

// "*^" digits and "*^" sign digits belong to the number in front; anything else does not.
const char* skip_exponent(const char* q) {
  q = look_ahead(q, 4);
  if (q[0] != '*' || q[1] != '^') return q;
  const ptrdiff_t sign = q[2] == '+' || q[2] == '-';
  return is(q[2 + sign], cDigit) ? skip_digits(q + 2 + sign) : q;
}

int scan_number() {
  const char* q = skip_digits(in.cursor);
  int code = tokInteger;
  if (*q == '.') {
    code = tokReal;
    q = skip_digits(q + 1);
  }
  return text_token(code, skip_exponent(q));
}

int scan_illegal() {
  MessageI("illegal character", xxError, scan_Attribute.Position, xxCharacter, in.cursor);
  in.cursor++;
  return -1;
}

// A string ends on its line; a quote without its partner is an illegal character.
int scan_string() {
  const char* q = in.cursor + 1;
  for (;;) {
    while (*q != '"' && *q != '\n' && *q != 0) q++;
    if (*q != 0) break;
    if (q < in.limit) {
      q++;
    } else {
      if (in.at_end) break;
      q = look_ahead(q, 1);
    }
  }
  if (*q != '"') return scan_illegal();
  scan_Attribute.Text = Asynt_KeepText({in.cursor + 1, static_cast<size_t>(q - in.cursor - 1)});
  return token(tokString, q + 1);
}

int scan_operator() {
  const char* end = in.cursor;
  int code = 0;
  int node = 0;
  for (const char* q = in.cursor; static_cast<unsigned char>(*q) < 128;) {
    node = kOperators.step[node][static_cast<unsigned char>(*q)];
    if (node == 0) break;
    q++;
    if (kOperators.token[node] == 0) continue;
    code = kOperators.token[node];
    end = q;
  }
  return code ? token(code, end) : scan_illegal();
}

void pass_newline(const char* p) {
  in.line++;
  in.shift = in.buffer - p;
}

// The next byte stands at the next of the columns 1, 9, 17, ...
void pass_tab(const char* p) { in.shift += -(p - in.buffer + in.shift) & 7; }

// Skips a comment, inner ones included; without its end the input ends.
void skip_comment() {
  in.cursor += 2;
  for (uint64_t nesting = 1; nesting > 0;) {
    const char* q = in.cursor;
    while (!is(*q, cComment)) q++;
    in.cursor = q;
    if (in.limit - q < 2 && !in.at_end) {
      refill(2);
      continue;
    }
    if (q == in.limit) return Message("unclosed comment", xxError, position_of(q));
    ptrdiff_t width = 1;
    if (*q == '\n') pass_newline(q);
    if (*q == '\t') pass_tab(q);
    if (q[0] == '(' && q[1] == '*') {
      nesting++;
      width = 2;
    } else if (q[0] == '*' && q[1] == ')') {
      nesting--;
      width = 2;
    }
    in.cursor = q + width;
  }
}

void skip_blanks() {
  const char* p = in.cursor;
  for (;; p++) {
    if (*p == ' ') continue;
    if (*p == '\n') {
      pass_newline(p);
    } else if (*p == '\t') {
      pass_tab(p);
    } else {
      break;
    }
  }
  in.cursor = p;
}

int end_of_input() {
  pop_file();
  finished = depth == 0;
  return tokEndOfFile;
}

// The token at the cursor; -1 where there was none.
int scan_here() {
  const char* p = in.cursor;
  scan_Attribute.Position = position_of(p);
  if (is(*p, cLetter)) return scan_identifier();
  if (is(*p, cDigit) || (*p == '.' && is(p[1], cDigit))) return scan_number();
  if (*p == '"') return scan_string();
  if (*p == '(' && p[1] == '*') {
    skip_comment();
    return -1;
  }
  if (p == in.limit) return end_of_input();
  return scan_operator();
}

void copy_token(char* buffer, char (*map)(char)) {
  for (size_t i = 0; i < scan_TokenLength; i++) buffer[i] = map(scan_TokenPtr[i]);
  buffer[scan_TokenLength] = 0;
}

}  // namespace

void scan_BeginScanner() {
  while (depth > 0) pop_file();
  finished = false;
  scan_Attribute = {NoPosition, {nullptr}};
}

void scan_CloseScanner() {}

void scan_BeginFile(const char* name) {
  const tFile file = scan_BeginSource(name);
  if (file < 0) failure(": scan: cannot open input file\n");
  push_file(file, true);
}

void scan_CloseFile() {
  if (depth == 0) failure(": scan: file stack underflow (too many calls of scan_CloseFile)\n");
  pop_file();
}

int scan_GetToken() {
  if (depth == 0) {
    if (finished) return tokEndOfFile;
    push_file(0, false);
  }
  for (;;) {
    skip_blanks();
    if (in.limit - in.cursor < kAhead && !in.at_end) {
      refill(kAhead);
      continue;
    }
    const int code = scan_here();
    if (code >= 0) return code;
  }
}

void scan_ErrorAttribute(int token, scan_tScanAttribute* attribute) {
  attribute->Position = scan_Attribute.Position;
  switch (token) {
    case tokId: attribute->Symbol = mSimpleSymbol(mNoType(), scan_Attribute.Position, ""); break;
    case tokInteger: attribute->Text = "0"; break;
    case tokReal: attribute->Text = "0.0"; break;
    case tokString: attribute->Text = ""; break;
    default: attribute->Text = nullptr; break;
  }
}

size_t scan_GetWord(char* buffer) {
  copy_token(buffer, [](char c) { return c; });
  return scan_TokenLength;
}

size_t scan_GetLower(char* buffer) {
  copy_token(buffer, [](char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return scan_TokenLength;
}

size_t scan_GetUpper(char* buffer) {
  copy_token(buffer, [](char c) { return 'a' <= c && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return scan_TokenLength;
}

void init_oz_index() {
  if (predef_index) delete_index(predef_index);
  predef_index = make_index(hash_table, 1);
  index_init_predefs(predef_index);
  predef_generation++;
}

tAsynt oz_find_symbol(const char* name, tPosition position) {
  uint64_t hash = kScanHashStart;
  for (const char* c = name; *c; c++) hash = scan_hash_step(hash, *c);
  return find_symbol(scan_intern(name, std::strlen(name), hash), position);
}

}  // namespace oz
