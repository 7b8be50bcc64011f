// The scheduling instrument: tables derived by hand, and against a scheduler that tries every processor in turn.
//
// In the derivations B and T are the sentinels, "x 1 P1" says that x starts at 1 on processor 1, and "+2" what a better
// place adds to the sum of communications.

#include "listsched.h"

#include <climits>
#include <random>

#include "graph_list.h"
#include "smallddg.h"
#include "support.h"

namespace oz {
namespace {

struct ListSched : Trees {
  ListSched() {
    listsched_Exit = [](int status) { throw status; };
  }
  ~ListSched() override { listsched_Exit = hook; }
  void (*hook)(int) = listsched_Exit;
};

struct Measured {
  std::string table, log;
  int status = 0;
};

Measured measured(const std::string& text) {
  Measured m;
  const GraphList g(text);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  try {
    scheduleddg(g.list);
  } catch (int status) {
    m.status = status;
  }
  m.table = testing::internal::GetCapturedStdout();
  m.log = testing::internal::GetCapturedStderr();
  return m;
}

std::string fork(int k) {
  std::string text;
  for (int i = 1; i <= k; i++) text += (i > 1 ? "; y" : "y") + std::to_string(i) + "=x";
  return text;
}

TEST_F(ListSched, Tables) {
  const struct {
    std::string list;
    const char* table;
  } rows[] = {
      // B 0, b 1, a 2, T 3, all on P1: a second processor is never sooner.
      {"a=b", "     0    1        3        0\n"},
      {"", "     0    1        0        0\n"},
      // A diamond. Priorities B 5, x 4, a 3, b 3, c 2, T 1; b was numbered before a, so a comes first.
      // Cost 0: x 1 P1, a 2 P1, b: P1 3, new 2 +1 P2; c: P2 3 +1, P1 no sooner; T: P2 4.
      // Cost 20: b 3 P1, c 4, T 5.
      {"a=x; b=x; c=a+b", "     0    2        4        2\n    20    1        5        0\n"},
      // A fork of 3, whose reads come in the order of the list. Cost 0: y1 2 P1; y2: P1 3, new 2 +1 P2; y3: P2 3 +1,
      // new 2 +1 P3; T: P3 3 +2. Cost 20: y1 2, y2 3, y3 4, T 5 on P1.
      {fork(3), "     0    3        3        5\n    20    1        5        0\n"},
      // Forks in general. Cost 0: y2 adds 1, y3 to yk 2 each, T k-1. Cost 20: y21 starts at 22 on P1, which is no later
      // than elsewhere; y22 would start at 23, so that 22 elsewhere is better, +1; T: P2 43 +21, P1 43.
      {fork(22), "     0   22        3       62\n    20    2       43       22\n    40    1       24        0\n"},
  };
  for (const auto& row : rows) {
    const Measured m = measured(row.list);
    EXPECT_EQ(row.table, m.table) << row.list;
    EXPECT_EQ(5, m.status) << row.list;
  }
}

TEST_F(ListSched, Cycles) {
  for (const char* list : {"a=b; b=a", "a=a+1", "a=a+b", "a=a+1; b=a", "x=x; c=x+d", "a=b; c=a; b=c+x"}) {
    const Measured m = measured(list);
    EXPECT_EQ("", m.table) << list;
    EXPECT_EQ(1, m.status) << list;
    EXPECT_TRUE(m.log.ends_with("ScheduleNode[listsched]: All children were not scheduled")) << m.log;
  }
}

// ---- a second scheduler

// The rules one by one on numbers: each node tries all processors, the newest first, and then a new one.
struct Reference {
  std::vector<std::vector<int>> parents, children;  // in the order of the graph's lists
  std::vector<int> priority, order, stop, place, now;
  int start_of_top = 0;
  long communications = 0;

  int number_of(tDdg node, std::vector<tDdg>* nodes) {
    const auto found = std::find(nodes->begin(), nodes->end(), node);
    if (found != nodes->end()) return static_cast<int>(found - nodes->begin());
    nodes->push_back(node);
    return static_cast<int>(nodes->size()) - 1;
  }

  explicit Reference(tDdg bottom) {
    std::vector<tDdg> nodes{bottom};
    for (size_t i = 0; i < nodes.size(); i++) {
      parents.emplace_back();
      children.emplace_back();
      for (tDdg p = Node_Parents(nodes[i]); Ddg_Kind(p) == kNode1; p = Node1_Nodes(p))
        parents[i].push_back(number_of(Node1_Node(p), &nodes));
      for (tDdg c = Node_Children(nodes[i]); Ddg_Kind(c) == kNode1; c = Node1_Nodes(c))
        children[i].push_back(number_of(Node1_Node(c), &nodes));
    }
    priority.assign(nodes.size(), 0);
    stop = place = priority;
    set_priority(0);
  }

  int set_priority(size_t node) {
    if (priority[node]) return priority[node];
    int highest = 0;
    for (int p : parents[node]) highest = std::max(highest, set_priority(static_cast<size_t>(p)));
    priority[node] = highest + 1;
    auto at = order.begin();
    while (at != order.end() && priority[static_cast<size_t>(*at)] > priority[node]) ++at;
    order.insert(at, static_cast<int>(node));
    return priority[node];
  }

  void try_place(size_t node, int processor, int comm, int* best, int* chosen) {
    int time = processor < static_cast<int>(now.size()) ? now[static_cast<size_t>(processor)] : 0;
    int remote = 0;
    for (int c : children[node]) {
      const bool elsewhere = place[static_cast<size_t>(c)] != processor;
      remote += elsewhere;
      time = std::max(time, stop[static_cast<size_t>(c)] + (elsewhere ? comm : 0));
    }
    if (time >= *best) return;
    *best = time;
    *chosen = processor;
    communications += remote;
  }

  std::string line(int comm) {
    now.clear();
    communications = 0;
    for (int n : order) {
      const size_t node = static_cast<size_t>(n);
      int best = INT_MAX, chosen = 0;
      for (int p = static_cast<int>(now.size()) - 1; p >= 0; p--) try_place(node, p, comm, &best, &chosen);
      try_place(node, static_cast<int>(now.size()), comm, &best, &chosen);
      if (chosen == static_cast<int>(now.size())) now.push_back(0);
      place[node] = chosen;
      now[static_cast<size_t>(chosen)] = stop[node] = best + 1;
      start_of_top = best;
    }
    char text[80];
    std::snprintf(text, sizeof text, "%6d %4zu %8d %8ld\n", comm, now.size(), start_of_top, communications);
    return text;
  }

  std::string table() {
    std::string text;
    for (int comm = 0; now.size() != 1; comm += 20) text += line(comm);
    return text;
  }
};

TEST_F(ListSched, AgreesWithTryingAllProcessors) {
  std::mt19937 random(7);
  std::set<std::string> tables;
  for (int round = 0; round < 300; round++) {
    const unsigned width = 1 + random() % 60, size = 1 + random() % 120;
    std::string text = "v0=in";
    for (unsigned i = 1; i <= size; i++) {
      text += "; v" + std::to_string(i) + "=";
      for (unsigned reads = 1 + random() % 3; reads > 0; reads--) {
        const unsigned back = random() % (std::min(i, width) + 1);
        text += (back == 0 ? "in" : "v" + std::to_string(i - back)) + (reads > 1 ? "+" : "");
      }
    }
    const Measured m = measured(text);
    Reference reference(Ddg_child);
    ASSERT_EQ(reference.table(), m.table) << text;
    tables.insert(m.table);
  }
  EXPECT_GT(tables.size(), 100u);
}

TEST_F(ListSched, ManyNodes) {
  std::string chain = "x0=y";
  for (int i = 1; i < 100'000; i++) chain += "; x" + std::to_string(i) + "=x" + std::to_string(i - 1);
  EXPECT_EQ("     0    1   100002        0\n", measured(chain).table);
  // Wide at one place: a fork whose reads are added in pairs, and so on up to one sum.
  std::string tree = fork(4096);
  for (int n = 4096, from = 1; n > 1; from += n, n /= 2)
    for (int i = 0; i < n / 2; i++)
      tree += "; y" + std::to_string(from + n + i) + "=y" + std::to_string(from + 2 * i) + "+y" +
              std::to_string(from + 2 * i + 1);
  // B 0, x 1, reads 2, twelve levels of sums 3 to 14, T 15.
  EXPECT_TRUE(measured(tree).table.starts_with("     0 4096       15 "));
}

TEST_F(ListSched, WeightsOfOperations) {
  const auto weight = [](Asynt_tKind kind) {
    int w = 100;
    OpWeight(Asynt_New(kind, Asynt_Schema.kinds[kind].field_count), &w);
    return w - 100;
  };
  const std::map<int, std::vector<Asynt_tKind>> weights = {
      {0, {kXIf, kXSet, kXLess, kXPlus, kXSubtract, kXPower, kXDivide, kXMinus, kSimpleFFE}},
      {1, {kXGreater}},
      {11, {kXSqrt}},
      {15, {kXSin, kXArcCosh, kXExp, kXLog}},
      {30, {kXTan, kXCsch, kArcTan2}}};
  testing::internal::CaptureStderr();
  for (const auto& [expected, kinds] : weights)
    for (Asynt_tKind kind : kinds) EXPECT_EQ(expected, weight(kind)) << Asynt_NodeName(kind);
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  testing::internal::CaptureStderr();
  weight(kXAbs);
  EXPECT_EQ("OpWeight: Op 85 not defined\n", testing::internal::GetCapturedStderr());
}

}  // namespace
}  // namespace oz
