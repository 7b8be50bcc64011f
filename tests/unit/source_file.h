// Source text as the scanner's input.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "scan.h"

namespace oz {

// A file without a place in the file system, open as long as the object lives.
class SourceFile {
 public:
  explicit SourceFile(const std::string& text) : file_(memfd_create("source", MFD_CLOEXEC)) {
    if (write(file_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) std::abort();
  }
  ~SourceFile() { close(file_); }
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;
  std::string name() const { return "/proc/self/fd/" + std::to_string(file_); }

  // Makes it the scanner's only input.
  void begin() const {
    scan_BeginScanner();
    scan_BeginFile(name().c_str());
  }

 private:
  int file_;
};

}  // namespace oz
