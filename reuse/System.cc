// Thin layer over the operating system: what the library needs of descriptors, memory and the process, with
// interrupted calls repeated.
#include "System.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace oz {

namespace {
int stored_argc = 0;
char** stored_argv = nullptr;

int open_repeated(const char* name, int flags) {
  int fd;
  do {
    fd = open(name, flags | O_CLOEXEC, 0666);
  } while (fd < 0 && errno == EINTR);
  return fd;
}
}  // namespace

tFile OpenInput(const char* FileName) { return open_repeated(FileName, O_RDONLY); }

tFile OpenOutput(const char* FileName) { return open_repeated(FileName, O_WRONLY | O_CREAT | O_TRUNC); }

long Read(tFile File, char* Buffer, size_t Size) {
  ssize_t n;
  do {
    n = read(File, Buffer, Size);
  } while (n < 0 && errno == EINTR);
  return n;
}

long Write(tFile File, const char* Buffer, size_t Size) {
  size_t done = 0;
  while (done < Size) {
    ssize_t n = write(File, Buffer + done, Size - done);
    if (n >= 0)
      done += static_cast<size_t>(n);
    else if (errno != EINTR)
      return -1;
  }
  return static_cast<long>(done);
}

void Close(tFile File) { close(File); }

bool IsCharacterSpecial(tFile File) {
  struct stat s;
  return fstat(File, &s) == 0 && S_ISCHR(s.st_mode);
}

#ifdef OZ_SANITIZE
char* SysAlloc(size_t ByteCount) { return static_cast<char*>(std::malloc(ByteCount)); }
#else
namespace {

// Small blocks are cut from areas that ask for large pages: a tree of a big model is read from end to end again and
// again, and with pages of 4 KB the time goes into finding the pages. The first areas are small, so that a small run
// stays small.
constexpr size_t kLargePage = size_t{2} << 20;
constexpr size_t kFirstArea = size_t{1} << 20;
constexpr size_t kLargestArea = size_t{16} << 20;
constexpr size_t kLargeBlock = size_t{256} << 10;  // from here on a block is an allocation of its own

char* area_free = nullptr;
size_t area_left = 0;
size_t area_size = kFirstArea;

bool new_area() {
  void* area;
  if (area_size < kLargePage) {
    area = std::malloc(area_size);
  } else {
    area = std::aligned_alloc(kLargePage, area_size);
    if (area) madvise(area, area_size, MADV_HUGEPAGE);
  }
  if (!area) return false;
  area_free = static_cast<char*>(area);
  area_left = area_size;
  if (area_size < kLargestArea) area_size *= 2;
  return true;
}

}  // namespace

char* SysAlloc(size_t ByteCount) {
  if (ByteCount >= kLargeBlock) return static_cast<char*>(std::malloc(ByteCount));
  const size_t size = (ByteCount + 15) & ~size_t{15};
  if (size > area_left && !new_area()) return nullptr;
  char* block = area_free;
  area_free += size;
  area_left -= size;
  return block;
}
#endif

void SysFree(char* a) { std::free(a); }

long Time() {
  timespec t;
  if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t) != 0) return 0;
  return t.tv_sec * 1000L + t.tv_nsec / 1000000L;
}

void PutArgs(int Argc, char** Argv) {
  stored_argc = Argc;
  stored_argv = Argv;
}

int GetArgCount() { return stored_argc; }

void GetArgument(int ArgNum, char* Argument, size_t Size) {
  bool known = ArgNum >= 0 && ArgNum < stored_argc && stored_argv[ArgNum] != nullptr;
  if (Size > 0) std::snprintf(Argument, Size, "%s", known ? stored_argv[ArgNum] : "");
}

int ErrNum() { return errno; }

int System(const char* Command) {
  int status = std::system(Command);
  return status >= 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void Exit(int Status) { std::exit(Status); }

void BEGIN_System() {}

}  // namespace oz
