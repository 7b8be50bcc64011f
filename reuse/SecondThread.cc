#include "SecondThread.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstddef>
#include <thread>
#include <utility>

namespace oz {

namespace {

// The stack of the first thread may grow to its limit.
size_t stack_size() {
  constexpr size_t kUsual = size_t{8} << 20;
  rlimit limit;
  if (getrlimit(RLIMIT_STACK, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return 8 * kUsual;
  return std::max(kUsual, static_cast<size_t>(limit.rlim_cur));
}

}  // namespace

bool SecondThread::start(std::function<void()> work) {
  static const bool has_core = std::thread::hardware_concurrency() > 1;
  pthread_attr_t attributes;
  if (!has_core || pthread_attr_init(&attributes) != 0) return false;
  pthread_attr_setstacksize(&attributes, stack_size());
  work_ = std::move(work);
  const auto call = [](void* self) -> void* {
    static_cast<SecondThread*>(self)->work_();
    return nullptr;
  };
  is_started_ = true;  // before the thread can look
  if (pthread_create(&thread_, &attributes, call, this) != 0) is_started_ = false;
  pthread_attr_destroy(&attributes);
  return is_started_;
}

void SecondThread::join() {
  if (!is_started_) return;
  pthread_join(thread_, nullptr);
  is_started_ = false;
}

}  // namespace oz
