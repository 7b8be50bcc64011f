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
constinit thread_local UpText up{};

namespace {

constexpr size_t kFirstSize = 2000;
constexpr size_t kBlockSize = size_t{64} * 1024;

constinit thread_local char block[kBlockSize]{};
// Where the text in the making goes: a stream or a kept text; to bigbuf if both are null.
constinit thread_local FILE* upfile = nullptr;
constinit thread_local KeptText* upkept = nullptr;

void start(char* room, size_t size, bool pretty) {
  upfile = nullptr;
  up = UpText{room, room + size - 1, nullptr, pretty, pretty, pretty, 0};
}

void put(const char* s, size_t length) {
  if (upkept)
    upkept->append({s, length});
  else
    std::fwrite(s, 1, length, upfile);
}

void flush() {
  put(block, static_cast<size_t>(up.at - block));
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
    if (!upfile && !upkept) {
      grow(length);
    } else {
      flush();
      if (length >= kBlockSize) return put(s, length);
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
  if (upkept) throw FatalAhead{};
  if (!bigbuf) bigbuf_init();
  start(bigbuf, bigbuf_allocated, false);
}

const char* upout_end_string() {
  *up.at = '\0';
  return bigbuf;
}

void upout_begin_file(FILE* f, bool pretty) {
  upkept = nullptr;
  start(block, kBlockSize, pretty);
  upfile = f;
}

void upout_begin_kept(KeptText* kept, int indent) {
  start(block, kBlockSize, true);
  upkept = kept;
  up.indent = indent;
}

void upout_end_file() {
  if (upfile) flush();
  upfile = nullptr;
}

void upout_end_kept() {
  flush();
  upkept = nullptr;
}

void upout_drop_kept() { upkept = nullptr; }

void upout_kept(const KeptText& kept) {
  flush();
  kept.write(upfile);
  up.clash = nullptr;
  up.fresh = up.watch = false;
}

// ---- kept text

void KeptText::append(std::string_view s) {
  constexpr size_t kSmallestBlock = size_t{64} * 1024;
  constexpr size_t kLargestBlock = size_t{1024} * 1024;
  if (s.empty()) return;
  if (empty() || blocks_.back().capacity() - blocks_.back().size() < s.size()) {
    const size_t size = std::min(kSmallestBlock << std::min<size_t>(blocks_.size(), 4), kLargestBlock);
    blocks_.emplace_back().reserve(std::max(size, s.size()));
  }
  blocks_.back().append(s);
}

void KeptText::cut(End end) {
  blocks_.resize(end.blocks);
  if (!empty()) blocks_.back().resize(end.size);
}

void KeptText::write(FILE* f) const {
  for (const std::string& b : blocks_) std::fwrite(b.data(), 1, b.size(), f);
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
