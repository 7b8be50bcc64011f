// The dependence graph: what is tied to what, and the operations of its tree on what a tree cannot have.

#include "smallddg.h"

#include <bit>
#include <cstdint>

#include "graph_list.h"
#include "support.h"

namespace oz {
namespace {

using SmallDdg = Trees;

std::string names(tDdg nodes) {
  std::string out;
  for (; Ddg_Kind(nodes) == kNode1; nodes = Node1_Nodes(nodes))
    out += (out.empty() ? "" : " ") + std::string(NamedSymbol_Name(Node_SymInfo(Node1_Node(nodes))));
  return out;
}

// "parents < node < children; ..." of each symbol in the order of the alphabet, then the sentinels' edges.
std::string graph_text(const std::string& text) {
  const GraphList g(text);
  std::string out = std::to_string(BuildDdg(g.list)) + ": ";
  for (const auto& [name, si] : g.symbols) {
    const tDdg node = ddg_node_of(si);
    out += names(Node_Parents(node)) + " < " + name + " < " + names(Node_Children(node)) + "; ";
  }
  EXPECT_TRUE(DdgMarksAreZero(Ddg_parent)) << text;
  EXPECT_TRUE(DdgMarksAreZero(ddg_last_node())) << text;
  return out + "T < " + names(Node_Children(Ddg_parent)) + "; " + names(Node_Parents(Ddg_child)) + " < B";
}

TEST_F(SmallDdg, Graphs) {
  for (const auto& [list, graph] : table<2>(R"(
      // a reads b, then c; each edge goes to the front. The walk from a meets a, then its children c, b.
      a=b+c --> 3: DDG_TOP < a < c b; a < b < DDG_BOTTOM; a < c < DDG_BOTTOM; T < a; b c < B
      a=1 --> 1: DDG_TOP < a < DDG_BOTTOM; T < a; a < B
      a=b+b --> 2: DDG_TOP < a < b b; a a < b < DDG_BOTTOM; T < a; b < B
      // Only the chain of c, which is assigned last, is tied.
      a=b; c=d --> 4:  < a < b; a < b < ; DDG_TOP < c < d; c < d < DDG_BOTTOM; T < c; d < B
      a=b; c=a; d=b --> 4: c < a < b; d a < b < DDG_BOTTOM; DDG_TOP < c < a; DDG_TOP < d < b; T < c d; b < B
      // One node for both assignments; x stays an input of it.
      a=x; a=y --> 3: DDG_TOP < a < y x; a < x < DDG_BOTTOM; a < y < DDG_BOTTOM; T < a; x y < B
      // Nothing is without parents or without children.
      a=b; b=a --> 2: b < a < b; a < b < a; T < ;  < B          --> 0: T < ;  < B
    )"))
    EXPECT_EQ(graph, graph_text(list)) << list;
}

TEST_F(SmallDdg, WhatIsNoAssignmentToASymbolEndsTheList) {
  GraphList g("a=b; c=a");
  Binary_LHS(Expression1_Expression(Expression1_Expressions(g.list))) = mExactIntConst("3");
  EXPECT_EQ(2, BuildDdg(g.list));
  const GraphList twice("a=b; a=c");
  BuildDdg(twice.list);
  EXPECT_EQ(Expression1_Expression(Expression1_Expressions(twice.list)), Node_Op(ddg_node_of(twice.symbols.at("a"))));
  EXPECT_EQ(kExpression0, Asynt_Kind(Node_Op(ddg_node_of(twice.symbols.at("b")))));
}

// A predefined name is no value, and what a symbol's type leads to is not read.
TEST_F(SmallDdg, TypesAndPredefinedNamesAreNotRead) {
  const GraphList g("a=b+c; n=1");
  SymInfo_Type(g.symbols.at("c")) = mPreDef(nullptr, constant);
  SymInfo_Type(g.symbols.at("b")) =
      mArrayType(mRealType(nullptr), mExpression1(mSymbol(g.symbols.at("n")), mExpression0()));
  Expression1_Expressions(g.list) = mExpression0();
  EXPECT_EQ(2, BuildDdg(g.list));
  EXPECT_EQ("b", names(Node_Children(ddg_node_of(g.symbols.at("a")))));
}

TEST_F(SmallDdg, DumpAndBack) {
  const tDdg none = mNode0();
  const tAsynt x = mAbsoluteSymbol(mNoType(), NoPosition, "x", mExpression0());
  const tDdg node = mNode(none, none, x, nullptr, mLSData(1, 2, -1, -1, -1, 1, nullptr, 3, 4));
  const std::string dump =
      " Node1\n"
      "  Node             =  Node\n"
      "    Parents          = \n000001:Node0\n"
      "    Children         = ^1\n"
      "    SymInfo          = x\n"
      "    Op               = 00 00 00 00 00 00 00 00 \n"
      "    Data             =  LSData\n"
      "      NrParents        = 01 00 00 00 \n"
      "      NrChildren       = 02 00 00 00 \n"
      "      Priority         = ff ff ff ff \n"
      "      Level            = ff ff ff ff \n"
      "      Co_level         = ff ff ff ff \n"
      "      Weight           = 01 00 00 00 \n"
      "      StartTime        = 03 00 00 00 \n"
      "      StopTime         = 04 00 00 00 \n"
      "      Sched            =  NoDdg\n"
      "  Nodes            = ^1\n";
  OutputStream out;
  WriteDdg(out.f, mNode1(node, none));
  ASSERT_EQ(dump, out.str());

  FILE* const in = fmemopen(const_cast<char*>(dump.data()), dump.size(), "r");
  const tDdg read = ReadDdg(in);
  std::fclose(in);
  OutputStream again;
  WriteDdg(again.f, read);
  EXPECT_EQ(dump, again.str());
  for (const char* bad : {"", "\n", " Nod\n", " Node1\n  Nodes = ^1\n", " Node1\n  Node             = ^7\n"}) {
    FILE* const f = fmemopen(const_cast<char*>(bad), std::max<size_t>(std::string(bad).size(), 1), "r");
    EXPECT_EQ(nullptr, ReadDdg(f)) << bad;
    std::fclose(f);
  }
}

TEST_F(SmallDdg, CopiesOfACircleAreEqualUntilOneChanges) {
  const GraphList g("a=b+c; d=a+b");
  BuildDdg(g.list);
  const tDdg copy = CopyDdg(Ddg_parent);
  EXPECT_NE(copy, Ddg_parent);
  EXPECT_TRUE(IsEqualDdg(copy, Ddg_parent));
  const tDdg d = Node1_Node(Node_Children(copy));
  EXPECT_EQ(copy, Node1_Node(Node_Parents(d))) << "the copy's links stay within it";
  Node_Children(d) = Node1_Nodes(Node_Children(d));
  EXPECT_FALSE(IsEqualDdg(copy, Ddg_parent));
  EXPECT_TRUE(CheckDdg(copy));
  Node_Data(d) = copy;
  EXPECT_NE("", message_of([&] { EXPECT_FALSE(CheckDdg(copy)); }));
  ReleaseDdg(copy);
  EXPECT_EQ(nullptr, Node_Children(copy));
  EXPECT_TRUE(DdgMarksAreZero(copy));
}

std::string visited;
void note(tDdg t) {
  if (Ddg_Kind(t) == kNode) visited += std::string(NamedSymbol_Name(Node_SymInfo(t))) + " ";
}
char note_above_c(tDdg* t) {
  note(*t);
  return Ddg_Kind(*t) != kNode || !visited.ends_with("c ");
}

TEST_F(SmallDdg, OrdersOfTraversals) {
  // The way from d: its parent, the top, and from there back to d's list of children (c, a); a reads b.
  const GraphList g("a=b; d=a+c");
  BuildDdg(g.list);
  tDdg d = ddg_node_of(g.symbols.at("d"));
  visited.clear();
  TraverseDdgTD(d, note);
  EXPECT_EQ("d DDG_TOP c DDG_BOTTOM b a ", visited);
  visited.clear();
  TraverseDdgBU(d, note);
  EXPECT_EQ("DDG_TOP a b DDG_BOTTOM c d ", visited);
  visited.clear();
  TraverseDdgTD2(&d, note_above_c);
  EXPECT_EQ("d DDG_TOP c a b DDG_BOTTOM ", visited);
  EXPECT_TRUE(DdgMarksAreZero(d));
}

size_t count = 0;

TEST_F(SmallDdg, ALongChainCostsNoStack) {
  std::string text = "x0=y";
  for (int i = 1; i < 100'000; i++) text += ";x" + std::to_string(i) + "=x" + std::to_string(i - 1);
  const GraphList g(text);
  EXPECT_EQ(100'001, BuildDdg(g.list));
  const auto visitor = [](tDdg t) { count += Ddg_Kind(t) == kNode; };
  count = 0;
  TraverseDdgTD(Ddg_child, visitor);
  TraverseDdgBU(Ddg_parent, visitor);
  EXPECT_EQ(2u * 100'003, count);
  EXPECT_TRUE(CheckDdg(Ddg_child));
  EXPECT_TRUE(IsEqualDdg(CopyDdg(Ddg_child), Ddg_child));
}

TEST_F(SmallDdg, PointersAreKeysAsAWhole) {
  Ddg_index* const index = ddg_make_index(0);
  int entries[2];
  // Alike in the lower four bytes.
  const void* const a = std::bit_cast<const void*>(uintptr_t{0x100001000});
  const void* const b = std::bit_cast<const void*>(uintptr_t{0x200001000});
  ddg_create_entry(index, a, &entries[0]);
  EXPECT_EQ(nullptr, ddg_lookup(index, b));
  ddg_create_entry(index, b, &entries[1]);
  EXPECT_EQ(&entries[0], ddg_lookup(index, a));
  EXPECT_EQ(&entries[1], ddg_lookup(index, b));
  ddg_delete_index(index);
}

}  // namespace
}  // namespace oz
