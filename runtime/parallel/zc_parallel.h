/* What generated programs with parallel loops are linked with.
 *
 * The loop "ForAll[y[[i]] = f[x[[i]]], {i, 1, n}]" has become a task procedure zc_P1 with a record of arguments and a
 * record of results. The program makes each task procedure known once; the loop then hands over all records at once:
 *
 *   integer, external :: zc_init_func
 *   call zc_P1_init(zc_init_func)         ... zc_P1_id = init_func(zc_P1, in(1), in(2), out(1), out(2))
 *   ...
 *   call zc_parallel(zc_P1_id, n, zc_T1, zc_T2)
 *
 * One source makes three libraries:
 *
 *   g++ -c zc_parallel.cc                 serial: the tasks run one after the other
 *   g++ -c -fopenmp zc_parallel.cc        on all cores: OMP_NUM_THREADS tells how many
 *   mpicxx -c -DZC_MPI zc_parallel.cc     on many machines; with -fopenmp on all cores of each
 *
 * With MPI every process runs the whole program on the same data. Within zc_parallel each takes its share of the tasks,
 * and behind it all have all results. What the program prints it should print where zc_rank() is 0. Nothing needs to be
 * set up or ended by the program.
 *
 * Tasks must not depend on each other, and task procedures must keep no state. Compile Fortran with -fopenmp or
 * -frecursive: otherwise gfortran keeps big local arrays in static memory, which threads would share. */
#ifndef ZC_PARALLEL_H
#define ZC_PARALLEL_H

#ifdef __cplusplus
extern "C" {
#endif

typedef void (*zc_task)(void* result, void* argument);

/* Makes a task procedure known: its number, from 1. The records are neighbours in an array, so that their distance is
 * their size. */
int zc_init_func_(zc_task task, const void* in1, const void* in2, const void* out1, const void* out2);

/* Runs task number id on n records of arguments and fills n records of results. */
void zc_parallel_(const int* id, const int* n, void* in, void* out);

/* This process among those that run the program, from 0, and how many there are. */
int zc_rank(void);
int zc_ranks(void);
int zc_rank_(void);

/* Adds up a vector over all processes, in each of them. */
void zc_sum(double* values, int n);

#ifdef __cplusplus
}
#endif

#endif
