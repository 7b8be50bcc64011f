// The lines of a source file. While reading on to the line that is asked for, the place of every 64th line is noted, so
// that a run with many messages reads the file about once and not once per message. The notes are dropped when another
// file is asked for or the file has changed.
#include "sourceline.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <vector>

namespace oz {

namespace {

constexpr int kLineLimit = 10000;  // with the end mark
constexpr unsigned kNoteEvery = 64;

struct FileId {
  dev_t device;
  ino_t inode;
  off_t size;
  timespec changed;
};

FileId noted_file;
std::vector<off_t> notes;  // notes[i] is the offset of line i * kNoteEvery + 1

bool same_file(const FileId& a, const FileId& b) {
  return a.device == b.device && a.inode == b.inode && a.size == b.size && a.changed.tv_sec == b.changed.tv_sec &&
         a.changed.tv_nsec == b.changed.tv_nsec;
}

// Anything but a regular file is refused: reading a pipe or a terminal again would wait or take input away.
bool identify(const char* file_name, FileId* id) {
  struct stat s;
  if (stat(file_name, &s) != 0 || !S_ISREG(s.st_mode)) return false;
  *id = {s.st_dev, s.st_ino, s.st_size, s.st_mtim};
  return true;
}

// Reads lines up to the one wanted into buffer, beginning at the nearest noted place before it.
bool read_line(FILE* f, unsigned line, char* buffer) {
  size_t note = (line - 1) / kNoteEvery;
  if (note >= notes.size()) note = notes.size() - 1;
  if (fseeko(f, notes[note], SEEK_SET) != 0) return false;
  for (size_t at = note * kNoteEvery + 1; at <= line; at++) {
    if ((at - 1) / kNoteEvery == notes.size()) notes.push_back(ftello(f));
    if (!std::fgets(buffer, kLineLimit, f)) return false;
  }
  return true;
}

}  // namespace

bool append_source_line(const char* file_name, unsigned line, std::string* text) {
  FileId id;
  if (line == 0 || !identify(file_name, &id)) return false;
  if (notes.empty() || !same_file(id, noted_file)) {
    notes.assign(1, 0);
    noted_file = id;
  }
  FILE* f = std::fopen(file_name, "re");
  if (!f) return false;
  std::vector<char> buffer(kLineLimit);
  bool found = read_line(f, line, buffer.data());
  std::fclose(f);
  if (found) text->append(buffer.data());
  return found;
}

}  // namespace oz
