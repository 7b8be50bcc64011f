// The first thread unrolls and is the only one that makes nodes and gives them back; the second one reads finished
// trees. A batch goes from one to the other as a whole:
//
//   first thread   unroll -> waiting_            done_ -> Asynt_Release
//   second thread            waiting_ -> print -> done_
#include "ahead.h"

#include <utility>

#include "flatten.h"

namespace oz {

namespace {

// So many batches may wait: enough to even out their sizes, and little memory.
constexpr size_t kMostWaiting = 4;

tAsynt* end_of(tAsynt* list) {
  while (Asynt_Kind(*list) == kExpression1) list = &Expression1_Expressions(*list);
  return list;
}

}  // namespace

PrintAhead::~PrintAhead() { end_thread(); }

// The first batch waits for a second one: a small model needs no thread.
void PrintAhead::read(tAsynt statements, Asynt_Batch nodes) {
  give_back();
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return waiting_.size() < kMostWaiting; });
  waiting_.push_back({statements, std::move(nodes)});
  changed_.notify_all();
  const bool is_only_one = waiting_.size() == 1;
  lock.unlock();
  if (!thread_.is_started() && !is_only_one && !thread_.start([this] { work(); })) work();
}

void PrintAhead::complete(tAsynt package) {
  end_thread();
  work();
  give_back();
  tAsynt* end = end_of(&Package_Body(package));
  for (Batch& batch : left_) {
    Asynt_Attach(&batch.nodes);
    *end = batch.statements;
    if (!rest_) rest_ = *end;
    end = end_of(end);
  }
  if (!rest_) rest_ = *end;
  left_.clear();
}

// Prints what waits until no more will come; without a thread, what waits now.
void PrintAhead::work() {
  for (;;) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !waiting_.empty() || at_end_ || !thread_.is_started(); });
    if (waiting_.empty()) return;
    Batch batch = std::move(waiting_.front());
    waiting_.pop_front();
    changed_.notify_all();
    lock.unlock();
    print(std::move(batch));
  }
}

void PrintAhead::print(Batch batch) {
  for (tAsynt l = batch.statements; Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l))
    flatten(&Expression1_Expression(l));
  const bool is_printed = left_.empty() && Asynt_IsGood(batch.nodes) && printed_.add(batch.statements);
  const std::lock_guard lock(mutex_);
  if (is_printed)
    done_.push_back(std::move(batch.nodes));
  else
    left_.push_back(std::move(batch));
}

void PrintAhead::give_back() {
  std::vector<Asynt_Batch> done;
  {
    const std::lock_guard lock(mutex_);
    done.swap(done_);
  }
  for (Asynt_Batch& nodes : done) Asynt_Release(&nodes);
}

void PrintAhead::end_thread() {
  {
    const std::lock_guard lock(mutex_);
    at_end_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

}  // namespace oz
