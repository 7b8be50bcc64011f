// Thin layer over the operating system: what the library needs of descriptors, memory and the process, with
// interrupted calls repeated.
#include "System.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <thread>

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
// stays small; later ones are a sixteenth of all before them.
//
// A page costs the system time when it is first touched, as much as a pass over what it holds. Once a run is large, a
// thread of its own touches the pages of the next area while the current one is being filled.
constexpr size_t kLargePage = size_t{2} << 20;
constexpr size_t kFirstArea = size_t{1} << 20;
constexpr size_t kLargestArea = size_t{16} << 20;
constexpr size_t kLargeBlock = size_t{256} << 10;  // from here on a block is an allocation of its own
constexpr size_t kLargeRun = size_t{32} << 20;

struct Area {
  char* start;
  size_t size;
};

Area next_area{nullptr, 0};  // laid out already, or none
char* area_free = nullptr;
size_t area_left = 0;
size_t area_total = 0;  // bytes of all areas so far

size_t next_area_size() {
  if (area_total < kLargePage) return kFirstArea;
  const size_t size = area_total / 16 & ~(kLargePage - 1);
  return std::clamp(size, kLargePage, kLargestArea);
}

Area lay_out_area() {
  const size_t size = next_area_size();
  void* start;
  if (size < kLargePage) {
    start = std::malloc(size);
  } else {
    start = std::aligned_alloc(kLargePage, size);
    if (start) madvise(start, size, MADV_HUGEPAGE);
  }
  return {static_cast<char*>(start), size};
}

// Lets a thread touch the pages of an area. Where there is none to be had the pages come one by one, as elsewhere.
void touch_pages(const Area& area) {
#ifdef MADV_POPULATE_WRITE
  static const bool second_core = std::thread::hardware_concurrency() > 1;
  if (!area.start || !second_core) return;
  try {
    std::thread([area] { madvise(area.start, area.size, MADV_POPULATE_WRITE); }).detach();
  } catch (const std::system_error&) {
  }
#endif
}

bool new_area() {
  const Area area = next_area.start ? next_area : lay_out_area();
  next_area = {nullptr, 0};
  if (!area.start) return false;
  area_free = area.start;
  area_left = area.size;
  area_total += area.size;
  if (area_total >= kLargeRun) touch_pages(next_area = lay_out_area());
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
