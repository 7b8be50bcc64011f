// Parallel loops in Fortran 90: a ForAll of one assignment becomes a task procedure with a record of arguments and a
// record of results, which the run-time library calls once for each element.
//
//   ForAll[y[[i]] = f[x[[i]]], {i, 1, n}]
//
//     do i = 1, n                                    the arguments of all tasks
//       zc_T1(i)%p1 = i
//       zc_T1(i)%p2 = x(i)
//     end do
//     call zc_parallel(zc_P1_id, ((n-1)+1), zc_T1, zc_T2)
//     do i = 1, n                                    their results
//       y(i) = zc_T2(i)%p1
//     end do
//
// The task procedure zc_P1 unpacks a record of arguments, does the assignment and packs its target.
#pragma once

#include "treefwd.h"

namespace oz {

// What a failure of the module leaves through; initially Errors_Exit.
extern void (*sheepforall_Exit)();

// Gives each ForAll of an assignment its task procedure: two temporaries for the records go around the assignment, with
// what they hold. Any other ForAll stays as it is.
void Transform_forall(tAsynt* t);

// Whether a ForAll has been rewritten so.
bool Is_forall_task(tAsynt t);

// Writes the task procedures of a function with these parameters and this body, and their types.
void Funparse_forall_fn(tAsynt params, tAsynt e);

// The statement in the place of a ForAll with this body, iterators and procedure.
void Funparse_forall(tAsynt b, tAsynt i, tAsynt p);

// Visitor: declares the records of the parallel loops and sets forall_atleast_one.
char Fmake_forall_decl(tAsynt* t);

// The subroutine that makes all task procedures known to the run-time library.
void Fmake_forall_parallel_init(tAsynt procs);

}  // namespace oz
