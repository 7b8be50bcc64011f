// Loops of many tasks, and a loop within each task, straight on the run-time library. Prints what does not agree.
#include <cstdio>
#include <vector>

#include "zc_parallel.h"

namespace {

struct In {
  int i;
  double x;
};
struct Out {
  double y;
};

int inner_id;

void square(void* result, void* argument) {
  const In& in = *static_cast<In*>(argument);
  static_cast<Out*>(result)->y = in.i + in.x * in.x;
}

// The sum of 0 .. i - 1, by a loop within the loop.
void sum(void* result, void* argument) {
  const int n = static_cast<In*>(argument)->i;
  std::vector<In> in(static_cast<size_t>(n));
  std::vector<Out> out(static_cast<size_t>(n));
  for (int i = 0; i < n; i++) in[static_cast<size_t>(i)] = {i, 0};
  zc_parallel_(&inner_id, &n, in.data(), out.data());
  double& y = static_cast<Out*>(result)->y;
  y = 0;
  for (const Out& o : out) y += o.y;
}

int made_known(zc_task task) {
  const In in[2] = {};
  const Out out[2] = {};
  return zc_init_func_(task, &in[0], &in[1], &out[0], &out[1]);
}

}  // namespace

int main() {
  inner_id = made_known(square);
  const int outer_id = made_known(sum);
  for (const int n : {0, 1, 2, 3, 7, 1000, 100'000}) {
    std::vector<In> in(static_cast<size_t>(n));
    std::vector<Out> squares(static_cast<size_t>(n)), sums(static_cast<size_t>(n));
    for (int i = 0; i < n; i++) in[static_cast<size_t>(i)] = {i, 0.5};
    zc_parallel_(&inner_id, &n, in.data(), squares.data());
    for (int i = 0; i < n; i++)
      if (squares[static_cast<size_t>(i)].y != i + 0.25) std::printf("%d of %d on rank %d\n", i, n, zc_rank());
    if (n > 1000) continue;
    zc_parallel_(&outer_id, &n, in.data(), sums.data());
    for (int i = 0; i < n; i++)
      if (sums[static_cast<size_t>(i)].y != i * (i - 1) / 2) std::printf("sum %d of %d on rank %d\n", i, n, zc_rank());
  }
  const int unknown = 3, one = 1;
  In in;
  Out out;
  zc_parallel_(&unknown, &one, &in, &out);
}
