// The messages of the passes. verror is the body of all of them: it formats the text, adds the source line and a caret
// where a place is known, and sends the text out in pieces:
//
//     12,  7: Error       Unknown class Wheel
//   car :: inherits Wheel;
//
//         ^
#include "ozerrors.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "Errors.h"
#include "System.h"
#include "sourceline.h"

namespace oz {

const char* error_message_uses_input_file = nullptr;

namespace {

constexpr size_t kTextBound = 100000;  // for the indent, the formatted text and its end mark
constexpr size_t kPiece = 250;

std::string title;
bool new_title = false;
size_t indent = 0;
constinit thread_local bool fatals_throw = false;

// Appends the formatted text, at most bound - 1 characters of it.
void append_formatted(std::string* text, size_t bound, const char* fstr, va_list ap) {
  va_list again;
  va_copy(again, ap);
  int needed = std::vsnprintf(nullptr, 0, fstr, ap);
  size_t room = needed < 0 ? bound : std::min(static_cast<size_t>(needed) + 1, bound);
  size_t start = text->size();
  text->resize(start + room);
  std::vsnprintf(text->data() + start, room, fstr, again);
  va_end(again);
  text->resize(start + std::strlen(text->data() + start));
}

// The source line keeps its own line end, so an empty line comes between it and the caret.
void append_source(std::string* text, tPosition pos) {
  std::string line = "\n";
  if (!append_source_line(error_message_uses_input_file, pos.Line, &line)) return;
  *text += line;
  *text += '\n';
  text->append(pos.Column == 0 ? 0 : pos.Column - 1, ' ');
  *text += '^';
}

// Cuts a text into messages. A continuation begins with "..." written over the three characters before it, and the
// character saved from under the end mark is put back relative to the moved start. So the end mark of a continuation
// stays in the text: the first piece has 250 characters, the second "..." and 250, and every further one ends at the
// mark left by its forerunner, three characters behind its dots. Listings rely on this form; it is kept as it is.
void emit_pieces(std::string text, int error_class, tPosition pos) {
  size_t left = text.size();
  text.append(kPiece + 50, '\0');
  char* const start = text.data();
  char* msgptr = start;
  while (left > 0) {
    char saved = msgptr[kPiece];
    msgptr[kPiece] = '\0';
    if (msgptr != start) {
      msgptr -= 3;
      std::memset(msgptr, '.', 3);
    }
    Message(msgptr, error_class, pos);
    msgptr[kPiece] = saved;
    msgptr += kPiece;
    left -= std::min(left, kPiece);
  }
}

void verror(int error_class, tPosition pos, const char* fstr, va_list ap) {
  if (new_title) {
    new_title = false;
    Message(title.c_str(), xxNote, NoPosition);
  }
  std::string text(indent, ' ');
  append_formatted(&text, kTextBound - indent, fstr, ap);
  if (error_message_uses_input_file && pos.Line != 0) append_source(&text, pos);
  emit_pieces(std::move(text), error_class, pos);
}

// A fatal message with an empty text writes no line, but still ends the run.
[[noreturn]] void vdie(tPosition pos, const char* fstr, va_list ap) {
  if (fatals_throw) throw FatalAhead{};
  verror(xxFatal, pos, fstr, ap);
  Errors_Exit();
  Exit(1);
}

}  // namespace

// Hands the arguments behind fstr to verror or vdie.
#define PASS_ON(report) \
  va_list ap;           \
  va_start(ap, fstr);   \
  report;               \
  va_end(ap)

void die_msg(const char* fstr, ...) { PASS_ON(vdie(NoPosition, fstr, ap)); }
void die_msg_pos(unsigned l, unsigned c, const char* fstr, ...) { PASS_ON(vdie({l, c}, fstr, ap)); }
void die_msg_pos2(tPosition pos, const char* fstr, ...) { PASS_ON(vdie(pos, fstr, ap)); }
void error_msg(const char* fstr, ...) { PASS_ON(verror(xxError, NoPosition, fstr, ap)); }
void error_msg_pos(unsigned l, unsigned c, const char* fstr, ...) { PASS_ON(verror(xxError, {l, c}, fstr, ap)); }
void error_msg_pos2(tPosition pos, const char* fstr, ...) { PASS_ON(verror(xxError, pos, fstr, ap)); }
void warning_msg(const char* fstr, ...) { PASS_ON(verror(xxWarning, NoPosition, fstr, ap)); }
void warning_msg_pos2(tPosition pos, const char* fstr, ...) { PASS_ON(verror(xxWarning, pos, fstr, ap)); }

void title_msg(const char* fstr, ...) {
  std::string().swap(title);
  new_title = fstr && *fstr;
  indent = new_title ? 2 : 0;
  if (!new_title) return;
  va_list ap;
  va_start(ap, fstr);
  append_formatted(&title, std::string::npos, fstr, ap);
  va_end(ap);
}

void internal_error(const char* file, int line) {
  const char* slash = std::strrchr(file, '/');
  die_msg("Internal compiler error: %s %d", slash ? slash + 1 : file, line);
}

FatalsThrow::FatalsThrow() { fatals_throw = true; }
FatalsThrow::~FatalsThrow() { fatals_throw = false; }

}  // namespace oz
