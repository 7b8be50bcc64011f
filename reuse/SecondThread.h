// A thread beside the first one, where the machine has a core for it.
#pragma once

#include <pthread.h>

#include <functional>

namespace oz {

class SecondThread {
 public:
  SecondThread() = default;
  ~SecondThread() { join(); }
  SecondThread(const SecondThread&) = delete;
  SecondThread& operator=(const SecondThread&) = delete;

  // Begins to do the work, which must not throw, on a thread with as much stack as the first one has. False, with
  // nothing done, if there is but one core or no thread to be had.
  bool start(std::function<void()> work);

  bool is_started() const { return is_started_; }

  // Waits until the work is done; nothing if it was not started.
  void join();

 private:
  std::function<void()> work_{};
  pthread_t thread_{};
  bool is_started_ = false;
};

}  // namespace oz
