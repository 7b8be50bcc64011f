// Output in memory and messages, for tests of what is written.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace oz {

// A stream whose text can be read at any time.
struct OutputStream {
  char* text = nullptr;
  size_t size = 0;
  FILE* f = open_memstream(&text, &size);
  ~OutputStream() {
    std::fclose(f);
    std::free(text);
  }
  std::string str() {
    std::fflush(f);
    return std::string(text, size);
  }
  // What a step adds.
  template <typename Step>
  std::string added(Step step) {
    const size_t before = str().size();
    step();
    return str().substr(before);
  }
};

// What a step reports on standard error.
template <typename Step>
std::string reported(Step step) {
  testing::internal::CaptureStderr();
  step();
  return testing::internal::GetCapturedStderr();
}

inline bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

inline std::string xs(size_t n) { return std::string(n, 'x'); }

}  // namespace oz
