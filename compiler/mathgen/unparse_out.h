// The output layer of the source unparser: pieces of text to a string, to a stream or to a text that is kept.
//
// A printer hands over its text in pieces. To a string, and to a stream without indentation, the pieces follow each
// other as they are. With indentation a piece behind a line end is preceded by two blanks per level; line ends inside a
// piece have no such effect. A piece that would run together with the operator before it is kept apart by a blank:
//
//   upout("a"); upout_guarded("-", "-"); upout("--x");      a- --x
#pragma once

#include <cstdio>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>

#include "treefwd.h"

namespace oz {

// The text that a thread is making. File output is gathered in a block of its own, so that bigbuf keeps the last
// string.
struct UpText {
  char* at;           // where the next piece goes
  char* end;          // the end of the room, with a byte kept for a terminator
  const char* clash;  // characters that must not follow directly; null if all may
  bool pretty;        // whether line starts are indented
  bool fresh;         // the next piece starts a line
  bool watch;         // the next piece needs more than copying
  int indent;         // depth of indentation
};
extern constinit thread_local UpText up;

// A text that waits for its turn. It grows in blocks, so that it is never moved.
class KeptText {
 public:
  void append(std::string_view s);
  bool empty() const { return blocks_.empty(); }

  // Its end, and what makes this its end again.
  struct End {
    size_t blocks;
    size_t size;  // of the last one
  };
  End end() const { return {blocks_.size(), empty() ? 0 : blocks_.back().size()}; }
  void cut(End end);

  void write(FILE* f) const;

 private:
  std::deque<std::string> blocks_{};
};

// Start a text in bigbuf or on a stream. A text that was left unfinished, by a jump out of a fatal message, is dropped.
void upout_begin_string();
void upout_begin_file(FILE* f, bool pretty);

// Starts an indented text behind what is kept, on a line of its own, and ends it. In between a string cannot be made,
// since bigbuf is the first thread's: only messages want one, and the attempt is thrown like a fatal message.
void upout_begin_kept(KeptText* kept, int indent);
void upout_end_kept();

// Ends it without what is still gathered.
void upout_drop_kept();

// End it: with a terminator, the result is bigbuf; by writing out what is gathered, which does nothing to a string.
const char* upout_end_string();
void upout_end_file();

// What was kept, as pieces of the text on a stream.
void upout_kept(const KeptText& kept);

// A piece that starts a line, may clash with the one before it or does not fit.
void upout_slow(const char* s, size_t length);

// Appends a piece.
inline void upout(std::string_view s) {
  if (s.empty()) return;
  if (up.watch || s.size() > static_cast<size_t>(up.end - up.at)) [[unlikely]]
    return upout_slow(s.data(), s.size());
  std::memcpy(up.at, s.data(), s.size());
  up.at += s.size();
  if (s.back() == '\n' && up.pretty) up.fresh = up.watch = true;
}

// Keeps the next piece apart if it begins with one of these characters.
inline void upout_guard(const char* clash) {
  up.clash = clash;
  up.watch = true;
}

}  // namespace oz
