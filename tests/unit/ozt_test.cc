// Declaration transformation: the text of each form, its messages, and that no node ends up in two places.

#include "ozt.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "fatal_text.h"
#include "model_text.h"
#include "name.h"
#include "oz.h"

namespace oz {
namespace {

struct Ozt : ModelText {
  ~Ozt() override { disable_Format = 0; }

  static tAsynt transformed(const std::string& text) {
    tAsynt model = parsed(text);
    Qualify(&model);
    ozt(&model);
    return model;
  }
};

TEST_F(Ozt, DeclarationsBecomeDefinitions) {
  const struct {
    const char* source;
    const char* result;
  } rows[] = {
      {"symbol a, b;", "Protect[M`a, M`b];\n"},
      {"array[3, 0] v;", "M`v=Array[M`oz$v$C,  { 3, _ } ];\nFormat[M`oz$v$C[i_]]:=HoldForm[M`v[[i]] ];\n"},
      {"array[2] f[1], w;",
       "M`f[1]=Array[M`oz$f$C[1],  { 2 } ];\nFormat[M`oz$f$C[1][i_]]:=HoldForm[(M`f[1])[[i]] ];\n"
       "M`w=Array[M`oz$w$C,  { 2 } ];\nFormat[M`oz$w$C[i_]]:=HoldForm[M`w[[i]] ];\n"},
      {"f := Module[{real array[2] w}, w];",
       "M`f:=(Module [ { w },\n(w=Array[oz$w$C,  { 2 } ];\nFormat[oz$w$C[i_]]:=HoldForm[w[[i]] ]);\nw]);\n"},
      {"once k := 1 + 2;", "M`k:=(M`k=1+2);\n"},
      {"once f[x_, 1, g] := x => h;", "M`f[P$`x_, 1, g]:=(M`f[P$`x, 1, g]=Indirect[P$`x, \"h\"]);\n"},
      {"static x := p => q;", "M`x:=Indirect[p, \"q\"];\n"},
      {"class C hide: static x := 1; static f[y_] := y; static N := 2; g := x; end;",
       "class C\nC`x:=1;\nC`f[P$`y_]:=P$`y;\nN:=2;\ng:=x;\nend;\n"},
      {"instance a begin x[i_, j] :== i => k end;",
       "instance a\noz$x$P[P$`i_, j]:=Indirect[P$`i, \"k\"];\nLookup[x[P$`i_, j]]:=oz$x$P[P$`i, j];\nend;\n"},
      {"instance a hide: real y; begin y :== 1 end;", "instance a\noz$y$P:=1;\nLookup[y]:=oz$y$P;\ny;\nend;\n"},
      {"p := a => b => c;", "M`p:=Indirect[Indirect[a, \"b\"], \"c\"];\n"},
      {"p := -f[a => b] + Block[{x = a => b}, {a => b}];",
       "M`p:=-f[Indirect[a, \"b\"]]+(Block [ { x = Indirect[a, \"b\"] },\n { Indirect[a, \"b\"] } ]);\n"},
      {"real f[real x_] := extern \"C\"; g := 1;", ";\nM`g:=1;\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.result, printed(transformed(row.source))) << row.source;
}

TEST_F(Ozt, WithoutFormat) {
  disable_Format = 1;
  EXPECT_EQ("M`v=Array[M`oz$v$C,  { 3 } ];\nM`w=Array[M`oz$w$C,  { 3 } ];\n", printed(transformed("array[3] v, w;")));
}

TEST_F(Ozt, ClassesAreCollected) {
  transformed("class A end; instance a end; class B hide: x; end;");
  ASSERT_NE(nullptr, lookup(class_index, "A"));
  EXPECT_EQ("class B\nx;\nend;\n", printed(lookup(class_index, "B")[0]));
  EXPECT_EQ(nullptr, lookup(class_index, "a"));
}

TEST_F(Ozt, Messages) {
  EXPECT_EQ("   0,  0: Fatal       Multiple definition of class A\n",
            message_of([] { transformed("class A end; class B end; class A end;"); }));
  EXPECT_EQ("Error: module ozt, routine SuffMangle failed\n",
            message_of([] { transformed("instance a begin a + b :== 1 end;"); }));
}

// Every place of an expression holds a node of its own: a pass that visits a node once then meets all places.
void expect_one_place(tAsynt t, std::set<tAsynt>* seen) {
  if (Asynt_IsType(t, kSymInfo)) return;  // occurrences share it
  EXPECT_TRUE(seen->insert(t).second) << Asynt_NodeName(Asynt_Kind(t)) << " stands in two places";
  const TreeKind& kind = Asynt_Schema.kinds[Asynt_Kind(t)];
  for (int i = 0; i < kind.child_count; i++) expect_one_place(tree_raw_slot<tAsynt>(t, kind.children[i]), seen);
}

TEST_F(Ozt, NothingStandsInTwoPlaces) {
  std::set<tAsynt> seen;
  expect_one_place(transformed("array[n, 2] v, w[1]; once f[x_] := x; once k := 1; symbol s;"
                               "class C hide: static y := 2; end; instance a begin x[i_] :== i end;"),
                   &seen);
  EXPECT_TRUE(AsyntMarksAreZero(model_tree));
}

}  // namespace
}  // namespace oz
