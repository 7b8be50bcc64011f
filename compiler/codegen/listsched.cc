// The scheduling instrument.
//
// A round gives each node its priority, the length of the longest path from it to the top, and then places the nodes in
// descending priority, each where it can start first:
//
//   a = x; b = x; c = a + b      list: bottom, x, b, a, c, top
//   cost 0                       bottom, x, b, c, top on processor 1, a on processor 2, beside b
//   cost 20                      a would start 20 later elsewhere: all on processor 1, and the measurement is complete
//
// A node starts on a processor when that is free and all inputs are there; one that was computed elsewhere comes later
// by the cost of a communication. What a round costs must not grow with the product of nodes and processors. On all
// processors that computed none of a node's inputs these arrive at the same time, so that among those only the times at
// which the processors are free matter, and a tree of their minima finds the next better one.

#include "listsched.h"

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

#include "Ddg.h"
#include "ozerrors.h"
#include "smallddg.h"

namespace oz {

namespace {
void leave(int status) { std::exit(status); }
}  // namespace

void (*listsched_Exit)(int status) = leave;

namespace {

constexpr int kComplete = 5;      // the status of a complete measurement
constexpr int kNotScheduled = 1;  // and of a graph with a cycle
constexpr int kCommStep = 20;
constexpr ddg_pri_t kUnset = -1;
constexpr ddg_pri_t kOnPath = -2;  // of a node whose priority is being found

std::vector<tDdg> SchedulingList;  // in descending priority
int NrSched = 0x7fffffff;          // processors in use
tim_t CommTime = 0;                // the cost of an input from elsewhere
int64_t TotComm = 0;               // inputs from elsewhere, summed over each better place that was found
tim_t TotWeight = 0;

__attribute__((format(printf, 2, 3))) void Log(const char* func, const char* format, ...) {
  std::fprintf(stderr, "%s: ", func);
  va_list args;
  va_start(args, format);
  std::vfprintf(stderr, format, args);
  va_end(args);
}

[[noreturn]] void leave_with(int status) {
  listsched_Exit(status);
  std::abort();  // the exit hook must not return
}

[[noreturn]] void not_scheduled() {
  std::fputs("ScheduleNode[listsched]: All children were not scheduled", stderr);
  leave_with(kNotScheduled);
}

// ---- the nodes' data

void AugmentNode(tDdg node) {
  if (Ddg_Kind(node) != kNode) return;
  const tim_t Weight = 1;
  const int parents = NrofNodes(Node_Parents(node)), children = NrofNodes(Node_Children(node));
  Node_Data(node) = mLSData(parents, children, kUnset, -1, -1, Weight, nullptr, 0, 0);
  TotWeight += Weight;
}

void ReAugmentNode(tDdg node) {
  if (Ddg_Kind(node) != kNode) return;
  const tDdg data = Node_Data(node);
  LSData_NrParents(data) = NrofNodes(Node_Parents(node));
  LSData_NrChildren(data) = NrofNodes(Node_Children(node));
  LSData_Priority(data) = kUnset;
  LSData_Level(data) = LSData_Co_level(data) = -1;
}

bool augmented(tDdg node) { return Ddg_Kind(Node_Data(node)) == kLSData; }

// ---- priorities

// A node on the way from the bottom upwards, and the parents that have not been looked at.
struct Step {
  tDdg node;
  tDdg parents;
  ddg_pri_t max;
};

// A node is put on the list in front of all with the same priority, so that among them the last one stands first.
void make_scheduling_list(const std::vector<tDdg>& finished, ddg_pri_t highest) {
  std::vector<size_t> end(static_cast<size_t>(highest) + 1);
  for (tDdg node : finished) end[static_cast<size_t>(highest - LSData_Priority(Node_Data(node)))]++;
  for (size_t p = 1; p < end.size(); p++) end[p] += end[p - 1];
  SchedulingList.assign(finished.size(), nullptr);
  for (tDdg node : finished)
    SchedulingList[--end[static_cast<size_t>(highest - LSData_Priority(Node_Data(node)))]] = node;
}

void step_up(std::vector<Step>* path, tDdg node) {
  LSData_Priority(Node_Data(node)) = kOnPath;
  path->push_back({node, Node_Parents(node), 0});
}

// Gives all nodes above this one their priorities and makes the list; the highest priority, which is this node's.
ddg_pri_t SetPriority(tDdg bottom) {
  std::vector<tDdg> finished;
  std::vector<Step> path;
  step_up(&path, bottom);
  while (!path.empty()) {
    Step& step = path.back();
    const tDdg data = Node_Data(step.node);
    if (Ddg_Kind(step.parents) != kNode1) {
      LSData_Priority(data) = step.max + LSData_Weight(data);
      finished.push_back(step.node);
      path.pop_back();
      continue;
    }
    const tDdg parent = Node1_Node(step.parents);
    const ddg_pri_t priority = LSData_Priority(Node_Data(parent));
    if (priority == kOnPath) not_scheduled();
    if (priority == kUnset) {
      step_up(&path, parent);
      continue;
    }
    step.max = std::max(step.max, priority);
    step.parents = Node1_Nodes(step.parents);
  }
  const ddg_pri_t highest = LSData_Priority(Node_Data(bottom));
  make_scheduling_list(finished, highest);
  return highest;
}

// ---- processors

// What is known of the inputs that a processor computed, while a node is being placed.
struct Processor {
  tDdg sched;      // the node that stands for it in the graph; kept from round to round
  int inputs = 0;  // how many of the node's inputs
};

std::vector<Processor> processors;  // oldest first; NrSched of them are in use
std::vector<tim_t> free_at;         // a tree of minima: element 1 is the root, the leaves are the processors in use

size_t leaves() { return free_at.size() / 2; }

void set_free_at(size_t processor, tim_t time) {
  size_t i = leaves() + processor;
  free_at[i] = time;
  for (i /= 2; i > 0; i /= 2) free_at[i] = std::min(free_at[2 * i], free_at[2 * i + 1]);
}

void grow_tree() {
  const std::vector<tim_t> old(free_at.begin() + static_cast<long>(leaves()), free_at.end());
  free_at.assign(4 * old.size(), INT_MAX);
  std::copy(old.begin(), old.end(), free_at.begin() + static_cast<long>(leaves()));
  for (size_t i = leaves() - 1; i > 0; i--) free_at[i] = std::min(free_at[2 * i], free_at[2 * i + 1]);
}

// The newest of the processors first..end-1 that is free before a time; end if there is none.
size_t newest_free(size_t first, size_t end, tim_t before) {
  size_t low = first + leaves(), high = end + leaves();
  size_t found = 0;  // the subtree with the newest one
  size_t left = 0;
  for (; low < high && !found; low /= 2, high /= 2) {
    if (high % 2 && free_at[--high] < before) found = high;
    if (!found && low % 2) {
      if (free_at[low] < before) left = low;
      low++;
    }
  }
  if (!found) found = left;
  if (!found) return end;
  while (found < leaves()) found = 2 * found + (free_at[2 * found + 1] < before ? 1 : 0);
  return found - leaves();
}

size_t new_processor() {
  const size_t processor = static_cast<size_t>(NrSched++);
  if (processor == processors.size()) processors.push_back({mSched(nullptr, 0.0)});
  Sched_Nodes(processors[processor].sched) = mNode0();
  if (processor == leaves()) grow_tree();
  return processor;
}

// ---- the place of a node

// The inputs of the node that is being placed.
struct Inputs {
  int count = 0;
  tim_t last = 0;            // when the last one is computed,
  size_t last_from = 0;      // by which processor,
  tim_t last_elsewhere = 0;  // and when the last one of all other processors is
  std::vector<size_t> from{};
};

struct Place {
  int64_t start = 0x7fffffff;
  size_t processor = 0;
};

// The number of the processor stands in a field that nothing else uses.
size_t processor_of(tDdg node) { return static_cast<size_t>(LSData_Co_level(Node_Data(node))); }

void add_input(Inputs* in, tDdg child) {
  const size_t from = processor_of(child);
  const tim_t stop = LSData_StopTime(Node_Data(child));
  in->count++;
  if (processors[from].inputs++ == 0) in->from.push_back(from);
  if (stop > in->last) {
    if (in->last_from != from) in->last_elsewhere = in->last;
    in->last = stop;
    in->last_from = from;
  } else if (from != in->last_from) {
    in->last_elsewhere = std::max(in->last_elsewhere, stop);
  }
}

Inputs inputs_of(tDdg node) {
  Inputs in;
  for (tDdg c = Node_Children(node); Ddg_Kind(c) == kNode1; c = Node1_Nodes(c)) add_input(&in, Node1_Node(c));
  std::sort(in.from.begin(), in.from.end(), std::greater<>());
  return in;
}

void take_if_better(Place* best, int64_t start, size_t processor, int comm) {
  if (start >= best->start) return;
  *best = {start, processor};
  TotComm += comm;
}

// Tries the processors first..end-1, none of which has computed an input.
void try_strangers(Place* best, const Inputs& in, size_t first, size_t end) {
  const int64_t arrival = in.count ? int64_t{in.last} + CommTime : 0;
  while (arrival < best->start) {
    const size_t processor = newest_free(first, end, static_cast<tim_t>(best->start));
    if (processor == end) return;
    take_if_better(best, std::max<int64_t>(arrival, free_at[leaves() + processor]), processor, in.count);
    end = processor;
  }
}

// Tries a processor that has computed inputs. These are there when it is free.
void try_owner(Place* best, const Inputs& in, size_t processor) {
  const int comm = in.count - processors[processor].inputs;
  const tim_t last = in.last_from == processor ? in.last_elsewhere : in.last;
  const int64_t arrival = comm ? int64_t{last} + CommTime : 0;
  take_if_better(best, std::max<int64_t>(arrival, free_at[leaves() + processor]), processor, comm);
}

// The processors are tried from the newest to the oldest, a new one last; of equal ones the first stays.
Place best_place(const Inputs& in) {
  Place best;
  size_t end = static_cast<size_t>(NrSched);
  for (size_t owner : in.from) {
    try_strangers(&best, in, owner + 1, end);
    try_owner(&best, in, owner);
    end = owner;
  }
  try_strangers(&best, in, 0, end);
  const int64_t start = in.count ? int64_t{in.last} + CommTime : 0;
  if (start < best.start) {
    take_if_better(&best, start, static_cast<size_t>(NrSched), in.count);
    new_processor();
  }
  return best;
}

// cell becomes the node's place on its processor's list.
void ScheduleNode(tDdg node, tDdg cell) {
  const tDdg data = Node_Data(node);
  if (LSData_NrChildren(data) != 0) not_scheduled();
  const Inputs in = inputs_of(node);
  const Place best = best_place(in);
  for (size_t from : in.from) processors[from].inputs = 0;
  if (best.start >= INT_MAX - LSData_Weight(data)) die_msg("The schedule is too long to be measured");
  const tDdg chosen = processors[best.processor].sched;
  LSData_Sched(data) = chosen;
  LSData_Co_level(data) = static_cast<int>(best.processor);
  LSData_StartTime(data) = static_cast<tim_t>(best.start);
  LSData_StopTime(data) = static_cast<tim_t>(best.start) + LSData_Weight(data);
  Node1_Node(cell) = node;
  Node1_Nodes(cell) = Sched_Nodes(chosen);
  Sched_Nodes(chosen) = cell;
  Sched_Now(chosen) = LSData_StopTime(data);
  set_free_at(best.processor, LSData_StopTime(data));
  for (tDdg p = Node_Parents(node); Ddg_Kind(p) == kNode1; p = Node1_Nodes(p))
    LSData_NrChildren(Node_Data(Node1_Node(p)))--;
}

// ---- rounds

// The length of the schedule; an empty list has no path to the top.
tim_t schedule_length() { return augmented(Ddg_parent) ? LSData_StartTime(Node_Data(Ddg_parent)) : 0; }

void run_round(tim_t comm, std::vector<tDdg>* cells) {
  Log("listsched", "Set Priority\n");
  const ddg_pri_t highest = SetPriority(Ddg_child);
  Log("listsched", "Highest priority: %d\n", highest);
  Log("listsched", "Schedule Nodes\n");
  NrSched = 0;
  CommTime = comm;
  TotComm = 0;
  free_at.assign(2, INT_MAX);
  while (cells->size() < SchedulingList.size()) cells->push_back(nNode1());
  for (size_t i = 0; i < SchedulingList.size(); i++) ScheduleNode(SchedulingList[i], (*cells)[i]);
  std::printf("%6d %4d %8d %8lld\n", comm, NrSched, schedule_length(), static_cast<long long>(TotComm));
  std::fflush(stdout);
}

}  // namespace

// Nodes that are not connected with the bottom hang on a cycle.
void listsched() {
  Log("listsched", "Augmenting Ddg\n");
  TotWeight = 0;
  TraverseDdgTD(Ddg_child, AugmentNode);
  Log("listsched", "Total weight of ddg: %d\n", TotWeight);
  if (ddg_last_node() && !augmented(Ddg_parent)) not_scheduled();
  std::vector<tDdg> cells;  // of the processors' lists
  processors.clear();
  NrSched = 0x7fffffff;
  for (tim_t comm = 0; NrSched != 1; comm += kCommStep) {
    run_round(comm, &cells);
    Log("listsched", "ReAugmenting Ddg\n");
    TraverseDdgTD(Ddg_child, ReAugmentNode);
  }
  leave_with(kComplete);
}

tAsynt scheduleddg(tAsynt tree) {
  BeginDdg();
  Log("partitionddg", "Building Ddg\n");
  const int n = BuildDdg(tree);
  Log("partitionddg", "Number of Nodes: %d\n", n);
  listsched();
}

// ---- the cost of operations

// The first rule that fits a kind holds. So the three figures of XSubtract, XPower and XDivide are out of reach: a
// weighted scheduler would have to take them off the row above.
void OpWeight(tAsynt node, int* weight) {
  const Asynt_tKind k = Asynt_Kind(node);
  if (k > kXGreater) return;
  if (k >= kXSin && k <= kXArcCosh) {
    *weight += 15;
    return;
  }
  if (k >= kXTan && k <= kXCsch) {
    *weight += 30;
    return;
  }
  switch (k) {
    case kXUpSet:
    case kXUpSetDelayed:
    case kXSubtract:
    case kXPower:
    case kXDivide:
    case kXMap:
    case kXMapAll:
    case kComplexFFE:
    case kSimpleFFE:
    case kXIf:
    case kXMinus:
    case kXSet: return;
    case kXSqrt: *weight += 11; return;
    case kXExp:
    case kXLog: *weight += 15; return;
    case kArcTan2: *weight += 30; return;
    case kXGreater: *weight += 1; return;
    default: Log("OpWeight", "Op %d not defined\n", k);
  }
}

}  // namespace oz
