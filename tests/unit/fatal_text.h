// What a call writes to standard error; a fatal message ends the call instead of the process.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "Errors.h"

namespace oz {

template <typename Call>
std::string message_of(Call call) {
  struct Ended {};
  void (*const hook)() = Errors_Exit;
  Errors_Exit = [] { throw Ended(); };
  testing::internal::CaptureStderr();
  try {
    call();
  } catch (const Ended&) {
  }
  Errors_Exit = hook;
  return testing::internal::GetCapturedStderr();
}

}  // namespace oz
