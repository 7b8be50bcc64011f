// Parallel loops of generated programs. Each process gets a block of neighbouring tasks, its threads take pieces of the
// block as they become free, and the blocks of results are exchanged at the end.
#include "zc_parallel.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <vector>

#ifdef ZC_MPI
#define OMPI_SKIP_MPICXX 1  // the C interface alone
#include <mpi.h>
#endif
#ifdef _OPENMP
#include <omp.h>
#endif

namespace {

struct Procedure {
  zc_task task;
  std::ptrdiff_t in_size, out_size;  // bytes of a record
};

std::vector<Procedure> procedures;
thread_local bool within_task;  // a loop within a task belongs to the task's process and thread

[[noreturn]] void fail(const char* message, int value) {
  std::fprintf(stderr, "zc_parallel: %s: %d\n", message, value);
#ifdef ZC_MPI
  MPI_Abort(MPI_COMM_WORLD, 1);
#endif
  std::exit(1);
}

// ---- processes

struct Processes {
  int rank = 0;
  int count = 1;
};

#ifdef ZC_MPI

void finalize() {
  int done = 0;
  MPI_Finalized(&done);
  if (!done) MPI_Finalize();
}

const Processes& processes() {
  static const Processes all = [] {
    int running = 0;
    MPI_Initialized(&running);
    if (!running) {
      int provided = 0;
      MPI_Init_thread(nullptr, nullptr, MPI_THREAD_FUNNELED, &provided);
      std::atexit(finalize);
    }
    Processes p;
    MPI_Comm_rank(MPI_COMM_WORLD, &p.rank);
    MPI_Comm_size(MPI_COMM_WORLD, &p.count);
    return p;
  }();
  return all;
}

#else

const Processes& processes() {
  static const Processes alone;
  return alone;
}

#endif

// The first task of a process; that of the process behind the last one is n.
int first_task(int n, int rank) { return static_cast<int>(static_cast<long long>(n) * rank / processes().count); }

#ifdef ZC_MPI

// Every process has computed its block of results; afterwards all have all. Counts are records, so that they stay
// within an int.
void exchange(const Procedure& p, int n, char* out) {
  const int count = processes().count;
  std::vector<int> counts(static_cast<size_t>(count)), starts(static_cast<size_t>(count));
  for (int r = 0; r < count; r++) {
    starts[static_cast<size_t>(r)] = first_task(n, r);
    counts[static_cast<size_t>(r)] = first_task(n, r + 1) - first_task(n, r);
  }
  MPI_Datatype record;
  MPI_Type_contiguous(static_cast<int>(p.out_size), MPI_BYTE, &record);
  MPI_Type_commit(&record);
  MPI_Allgatherv(MPI_IN_PLACE, 0, MPI_DATATYPE_NULL, out, counts.data(), starts.data(), record, MPI_COMM_WORLD);
  MPI_Type_free(&record);
}

#else

void exchange(const Procedure&, int, char*) {}

#endif

// ---- tasks

void run_here(const Procedure& p, int from, int to, char* in, char* out) {
  for (int i = from; i < to; i++) p.task(out + i * p.out_size, in + i * p.in_size);
}

#ifdef _OPENMP

constexpr int kPieces = 64;  // that a thread takes if all tasks cost the same

void run(const Procedure& p, int from, int to, char* in, char* out) {
  const int piece = std::max(1, (to - from) / (kPieces * omp_get_max_threads()));
#pragma omp parallel
  {
    within_task = true;
#pragma omp for schedule(dynamic, piece)
    for (int i = from; i < to; i++) p.task(out + i * p.out_size, in + i * p.in_size);
    within_task = false;
  }
}

#else

void run(const Procedure& p, int from, int to, char* in, char* out) {
  within_task = true;
  run_here(p, from, to, in, out);
  within_task = false;
}

#endif

std::ptrdiff_t distance(const void* a, const void* b) {
  return static_cast<const char*>(b) - static_cast<const char*>(a);
}

}  // namespace

int zc_init_func_(zc_task task, const void* in1, const void* in2, const void* out1, const void* out2) {
  processes();
  procedures.push_back({task, distance(in1, in2), distance(out1, out2)});
  return static_cast<int>(procedures.size());
}

void zc_parallel_(const int* id, const int* n, void* in, void* out) {
  if (*id < 1 || *id > static_cast<int>(procedures.size())) fail("the task procedure has not been made known", *id);
  if (*n <= 0) return;
  const Procedure& p = procedures[static_cast<size_t>(*id) - 1];
  char* const ins = static_cast<char*>(in);
  char* const outs = static_cast<char*>(out);
  if (within_task) return run_here(p, 0, *n, ins, outs);
  run(p, first_task(*n, zc_rank()), first_task(*n, zc_rank() + 1), ins, outs);
  if (zc_ranks() > 1) exchange(p, *n, outs);
}

int zc_rank(void) { return processes().rank; }
int zc_ranks(void) { return processes().count; }
int zc_rank_(void) { return zc_rank(); }

#ifdef ZC_MPI
void zc_sum(double* values, int n) {
  if (zc_ranks() > 1) MPI_Allreduce(MPI_IN_PLACE, values, n, MPI_DOUBLE, MPI_SUM, MPI_COMM_WORLD);
}
#else
void zc_sum(double*, int) {}
#endif
