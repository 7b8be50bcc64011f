// The output layer of the source unparser. A string grows in bigbuf, which doubles when it is full. Text for a stream
// is gathered in one block, which goes to the stream whenever it is full and at the end, so that it keeps its order
// with what others write to the stream. A stream that fails keeps its error mark; the caller looks at ferror.

#include "unparse_out.h"

#include <algorithm>

#include "ememory.h"
#include "ozerrors.h"
#include "unparse.h"

namespace oz {

char* bigbuf = nullptr;
size_t bigbuf_allocated = 0;
UpText up;

namespace {

constexpr size_t kFirstSize = 2000;
constexpr size_t kBlockSize = size_t{64} * 1024;

char block[kBlockSize];
FILE* upfile = nullptr;  // the stream of the text in the making, null for a string

void start(FILE* f, char* room, size_t size, bool pretty) {
  upfile = f;
  up = UpText{room, room + size - 1, nullptr, pretty, pretty, pretty, 0};
}

void flush() {
  std::fwrite(block, 1, static_cast<size_t>(up.at - block), upfile);
  up.at = block;
}

// Doubles bigbuf until length more bytes fit.
void grow(size_t length) {
  const size_t used = static_cast<size_t>(up.at - bigbuf);
  size_t size = bigbuf_allocated;
  while (size - used <= length) size *= 2;
  char* bigger = static_cast<char*>(erealloc(bigbuf, size));
  if (!bigger) die_msg("Out of memory. realloc failed.");
  bigbuf = bigger;
  bigbuf_allocated = size;
  up.at = bigbuf + used;
  up.end = bigbuf + size - 1;
}

void append(const char* s, size_t length) {
  if (length > static_cast<size_t>(up.end - up.at)) {
    if (!upfile) {
      grow(length);
    } else {
      flush();
      if (length >= kBlockSize) {
        std::fwrite(s, 1, length, upfile);
        return;
      }
    }
  }
  std::memcpy(up.at, s, length);
  up.at += length;
}

void append_blanks(size_t count) {
  constexpr std::string_view kBlanks = "                                ";
  for (; count > 0; count -= std::min(count, kBlanks.size())) append(kBlanks.data(), std::min(count, kBlanks.size()));
}

}  // namespace

void bigbuf_init() {
  if (bigbuf) efree(bigbuf);
  bigbuf = static_cast<char*>(emalloc(kFirstSize));
  bigbuf_allocated = kFirstSize;
}

void upout_begin_string() {
  if (!bigbuf) bigbuf_init();
  start(nullptr, bigbuf, bigbuf_allocated, false);
}

const char* upout_end_string() {
  *up.at = '\0';
  return bigbuf;
}

void upout_begin_file(FILE* f, bool pretty) { start(f, block, kBlockSize, pretty); }

void upout_end_file() {
  if (upfile) flush();
  upfile = nullptr;
}

void upout_slow(const char* s, size_t length) {
  if (up.fresh)
    append_blanks(2 * static_cast<size_t>(up.indent));
  else if (up.clash && std::strchr(up.clash, *s))
    append(" ", 1);
  append(s, length);
  up.clash = nullptr;
  up.fresh = up.watch = up.pretty && s[length - 1] == '\n';
}

}  // namespace oz
