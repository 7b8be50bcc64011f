// Printing the objects of a model while others are still being unrolled.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

#include "SecondThread.h"
#include "unparse.h"
#include "unroll.h"

namespace oz {

// Flattens, checks and prints objects, on a second thread where there is a core for it, and gives their nodes back.
// Objects from the first one on that is not well-formed, or cannot be printed, are left for the run to go on with.
class PrintAhead : public ObjectReader {
 public:
  PrintAhead() = default;
  ~PrintAhead() override;
  PrintAhead(const PrintAhead&) = delete;
  PrintAhead& operator=(const PrintAhead&) = delete;

  void read(tAsynt statements, Asynt_Batch nodes) override;

  // Waits until all has been read. What is left goes to the end of the package's body.
  void complete(tAsynt package);

  // Prints the whole package.
  void write(FILE* f, tAsynt package) const { unparse_package(f, package, printed_, rest_); }

 private:
  struct Batch {
    tAsynt statements;
    Asynt_Batch nodes;
  };

  void work();
  void print(Batch batch);
  void give_back();
  void end_thread();

  StatementsAhead printed_{};
  tAsynt rest_ = nullptr;  // where in the package's body the objects begin that are left
  SecondThread thread_{};

  std::mutex mutex_{};  // guards what follows
  std::condition_variable changed_{};
  std::deque<Batch> waiting_{};
  std::vector<Asynt_Batch> done_{};  // nodes that are not needed any more
  std::deque<Batch> left_{};
  bool at_end_ = false;  // no more will come
};

}  // namespace oz
