// See keyfile.h.

#include "keyfile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "algelink.h"

namespace algelink {

namespace {

// A file of ours that nobody else has a name for.
bool is_own_file(int fd) {
  struct stat s;
  return fstat(fd, &s) == 0 && S_ISREG(s.st_mode) && s.st_uid == geteuid() && s.st_nlink == 1;
}

// Whether the path still leads to the open file: its former owner may have removed it between open and lock.
bool is_still_there(int fd, const std::string& path) {
  struct stat opened, named;
  return fstat(fd, &opened) == 0 && lstat(path.c_str(), &named) == 0 && opened.st_ino == named.st_ino &&
         opened.st_dev == named.st_dev;
}

int open_locked(const std::string& path, int* error) {
  for (;;) {
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600);
    if (fd < 0) {
      *error = errno == ELOOP ? ALErrorRefused : ALErrorSystem;
      return -1;
    }
    if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
      *error = errno == EWOULDBLOCK ? ALErrorNameInUse : ALErrorSystem;
      close(fd);
      return -1;
    }
    if (is_own_file(fd) && is_still_there(fd, path)) return fd;
    const bool foreign = is_still_there(fd, path);
    close(fd);
    if (!foreign) continue;
    *error = ALErrorRefused;
    return -1;
  }
}

bool random_bytes(unsigned char* to, size_t n) {
  size_t have = 0;
  while (have < n) {
    const ssize_t got = getrandom(to + have, n - have, 0);
    if (got < 0 && errno != EINTR) return false;
    if (got > 0) have += static_cast<size_t>(got);
  }
  return true;
}

}  // namespace

bool key_folder(std::string* folder, bool make) {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime && runtime[0] == '/')
    *folder = std::string(runtime) + "/ozlink";
  else
    *folder = "/tmp/ozlink-" + std::to_string(geteuid());
  if (make && mkdir(folder->c_str(), 0700) != 0 && errno != EEXIST) return false;
  struct stat s;
  if (lstat(folder->c_str(), &s) != 0) return false;
  return S_ISDIR(s.st_mode) && s.st_uid == geteuid() && (s.st_mode & 077) == 0;
}

int make_key_file(const std::string& name, KeyFile* file) {
  std::string folder;
  if (!key_folder(&folder, true)) return ALErrorRefused;
  const std::string path = folder + "/" + name + ".key";
  int error = ALErrorSystem;
  const int fd = open_locked(path, &error);
  if (fd < 0) return error;
  file->lock = fd;
  file->path = path;
  const bool written = random_bytes(file->key, kKeySize) && fchmod(fd, 0600) == 0 && ftruncate(fd, 0) == 0 &&
                       pwrite(fd, file->key, kKeySize, 0) == static_cast<ssize_t>(kKeySize);
  if (written) return ALErrorNone;
  remove_key_file(file);
  return ALErrorSystem;
}

int read_key_file(const std::string& name, KeyFile* file) {
  std::string folder;
  if (!key_folder(&folder, false)) return ALErrorRefused;
  const std::string path = folder + "/" + name + ".key";
  const int fd = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) return ALErrorRefused;
  const bool whole = is_own_file(fd) && pread(fd, file->key, kKeySize, 0) == static_cast<ssize_t>(kKeySize);
  close(fd);
  return whole ? ALErrorNone : ALErrorRefused;
}

void remove_key_file(KeyFile* file) {
  if (file->lock < 0) return;
  unlink(file->path.c_str());  // before the lock goes, so that nobody takes the file over meanwhile
  close(file->lock);
  file->lock = -1;
}

bool same_proof(const unsigned char* a, const unsigned char* b) {
  // Every byte is looked at, so that the time tells nothing about where they differ.
  unsigned char difference = 0;
  for (size_t i = 0; i < kProofSize; i++) difference = static_cast<unsigned char>(difference | (a[i] ^ b[i]));
  return difference == 0;
}

}  // namespace algelink
