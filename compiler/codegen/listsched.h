// A measuring instrument: how a flat list of assignments would spread over processors. It places the dependence graph
// again and again with a rising cost of communication and prints a line of figures for each:
//
//        0    2        4        7        cost, processors in use, length of the schedule, communications
//       20    1        6        0
//
// The measurement is complete when one processor is the best choice. Nothing reaches the generators from here.
#pragma once

#include "Asynt.h"

namespace oz {

// What the measurement leaves through: status 5 when the table is complete, 1 when the graph has a cycle. Initially
// exit; a hook may throw.
extern void (*listsched_Exit)(int status);

// Builds the graph of an expression list and measures it. Does not return.
[[noreturn]] tAsynt scheduleddg(tAsynt tree);

// The rounds over the graph that was built last. Does not return.
[[noreturn]] void listsched();

// Adds to *weight what one operation of a kind costs. The rounds do not use it: all nodes weigh 1.
void OpWeight(tAsynt node, int* weight);

}  // namespace oz
