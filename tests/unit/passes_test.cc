// The passes between the parser and the flat definitions, as far as the text of a whole model does not show them:
// declarations that become definitions, unrolling, flattening, deferred replacements.

#include "ahead.h"
#include "deferred.h"
#include "model_text.h"

namespace oz {
namespace {

// ---- declarations

struct Ozt : ModelText {
  ~Ozt() override { disable_Format = 0; }
};

TEST_F(Ozt, DeclarationsBecomeDefinitions) {
  for (const auto& [source, result] : table<2>(R"(
      symbol a, b; --> Protect[M`a, M`b];\n
      array[3, 0] v; --> M`v=Array[M`oz$v$C,  { 3, _ } ];\nFormat[M`oz$v$C[i_]]:=HoldForm[M`v[[i]] ];\n
      array[2] f[1], w; --> M`f[1]=Array[M`oz$f$C[1],  { 2 } ];\nFormat[M`oz$f$C[1][i_]]:=HoldForm[(M`f[1])[[i]] ];\
          \nM`w=Array[M`oz$w$C,  { 2 } ];\nFormat[M`oz$w$C[i_]]:=HoldForm[M`w[[i]] ];\n
      f := Module[{real array[2] w}, w]; --> \
          M`f:=(Module [ { w },\n(w=Array[oz$w$C,  { 2 } ];\nFormat[oz$w$C[i_]]:=HoldForm[w[[i]] ]);\nw]);\n
      once k := 1 + 2; --> M`k:=(M`k=1+2);\n
      once f[x_, 1, g] := x => h; --> M`f[P$`x_, 1, g]:=(M`f[P$`x, 1, g]=Indirect[P$`x, "h"]);\n
      static x := p => q; --> M`x:=Indirect[p, "q"];\n
      class C hide: static x := 1; static f[y_] := y; static N := 2; g := x; end; --> \
          class C\nC`x:=1;\nC`f[P$`y_]:=P$`y;\nN:=2;\ng:=x;\nend;\n
      instance a begin x[i_, j] :== i => k end; --> \
          instance a\noz$x$P[P$`i_, j]:=Indirect[P$`i, "k"];\nLookup[x[P$`i_, j]]:=oz$x$P[P$`i, j];\nend;\n
      instance a hide: real y; begin y :== 1 end; --> instance a\noz$y$P:=1;\nLookup[y]:=oz$y$P;\ny;\nend;\n
      p := a => b => c; --> M`p:=Indirect[Indirect[a, "b"], "c"];\n
      p := -f[a => b] + Block[{x = a => b}, {a => b}]; --> \
          M`p:=-f[Indirect[a, "b"]]+(Block [ { x = Indirect[a, "b"] },\n { Indirect[a, "b"] } ]);\n
      real f[real x_] := extern "C"; g := 1; --> ;\nM`g:=1;\n
    )"))
    EXPECT_EQ(result, printed(transformed(source))) << source;
}

TEST_F(Ozt, ClassesAndMessages) {
  disable_Format = 1;
  EXPECT_EQ("M`v=Array[M`oz$v$C,  { 3 } ];\nM`w=Array[M`oz$w$C,  { 3 } ];\n", printed(transformed("array[3] v, w;")));
  transformed("class A end; instance a end; class B hide: x; end;");
  ASSERT_NE(nullptr, lookup(class_index, "A"));
  EXPECT_EQ("class B\nx;\nend;\n", printed(lookup(class_index, "B")[0]));
  EXPECT_EQ(nullptr, lookup(class_index, "a"));
  EXPECT_EQ("F Multiple definition of class A", said([] { transformed("class A end; class B end; class A end;"); }));
  EXPECT_EQ("Error: module ozt, routine SuffMangle failed",
            said([] { transformed("instance a begin a + b :== 1 end;"); }));
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

// ---- unrolling

using Unroll = ModelText;

std::map<std::string, std::set<tAsynt>> infos_by_name;

bool is_rule_for_output(tAsynt t) {
  return Asynt_Kind(t) == kXSetDelayed && std::string(unparse_string(Binary_LHS(t))).rfind("Format[", 0) == 0;
}

// A declaration reaches every use of the name in the instance, wherever it stands, and no other instance's. What is for
// the host alone has symbols of its own.
TEST_F(Unroll, OneNodePerNameWithItsDeclaredType) {
  tAsynt t = unrolled(
      "class C(n) hide: use := x + y + f[x] + w; real x; int y := x; real f[int k_] := k + x; real g[real k_] := k;"
      "real array[n] w; String s; end; instance a inherits C(4) end; instance b[i] inherits C(4) end;"
      "instance c[i] part p[j] inherits C(4); part q inherits C(4); end;");
  infos_by_name.clear();
  TraverseAsyntTD2(&t, [](tAsynt* place) -> char {
    if (Asynt_Kind(*place) == kAlgAuxiliary || is_rule_for_output(*place)) return false;
    if (Asynt_Kind(*place) == kSymbol) infos_by_name[unparse_string(*place)].insert(Symbol_SymInfo(*place));
    return true;
  });
  const auto type_of = [](const std::string& text) {
    const std::set<tAsynt>& infos = infos_by_name[text];
    return infos.size() == 1 ? type_text(SymInfo_Type(*infos.begin())) : std::to_string(infos.size()) + " nodes";
  };
  for (const auto& [text, in_instance, in_set, in_sets] : table<4>(R"(
      x --> real --> real_s[-1] --> real_s[-1,-1]               y --> int --> int_s[-1] --> int_s[-1,-1]
      f --> real --> real_s[-1] --> real_s[-1,-1]               w --> real[4] --> real_s[-1,4] --> real_s[-1,-1,4]
      s --> string --> string --> string                        use --> none --> none --> none
    )")) {
    EXPECT_EQ(in_instance, type_of("a`" + text));
    EXPECT_EQ(in_set, type_of("b`" + text));
    EXPECT_EQ(in_set, type_of("c`q`" + text));
    EXPECT_EQ(in_sets, type_of("c`p`" + text));
  }
  // The parameter k of f is not that of g.
  std::set<std::string> types;
  for (tAsynt info : infos_by_name["P$`k"]) types.insert(type_text(SymInfo_Type(info)));
  EXPECT_EQ((std::set<std::string>{"int", "real"}), types);
}

TEST_F(Unroll, IndexOfInstances) {
  unrolled("class C part p[k] inherits D; end; class D end; instance a inherits C end; instance b[i, j] end;");
  const auto entry = [&](const char* key) { return lookup(instances, key); };
  ASSERT_TRUE(entry("a") && entry("a`p") && entry("b") && !entry("C"));
  // An instance starts with its name, which its context follows; a part is its context alone.
  EXPECT_EQ("M`b", printed(Expression1_Expression(entry("b")[0])));
  EXPECT_EQ(kContext, Asynt_Kind(Expression1_Expression(Expression1_Expressions(entry("b")[0]))));
  EXPECT_EQ("a`p", printed(Context_Name(Expression1_Expression(entry("a`p")[0]))));
  EXPECT_EQ("a`p", printed(entry("a`p")[1]));
  EXPECT_EQ("ij", printed(entry("b")[2]));
  EXPECT_EQ(kXFalse, Asynt_Kind(entry("b")[3]));
  // The cell of a part is the one in the package.
  tAsynt cell = Context_Body(Expression1_Expression(Expression1_Expressions(entry("a")[0])));
  while (Asynt_Kind(cell) == kExpression1 && cell != entry("a`p")[0]) cell = Expression1_Expressions(cell);
  EXPECT_EQ(entry("a`p")[0], cell);
}

template <typename Condition>
std::vector<tAsynt> nodes_with(tAsynt tree, Condition condition) {
  static std::vector<tAsynt> nodes;
  nodes.clear();
  TraverseAsyntTD(tree, [](tAsynt t) { nodes.push_back(t); });
  std::erase_if(nodes, [&](tAsynt t) { return !condition(t); });
  return nodes;
}

TEST_F(Unroll, TreesThatNoTextGives) {
  const auto refusal = [&](tAsynt model) { return said([&] { unroll(&model, &instances); }); };
  EXPECT_EQ("", refusal(mXTrue())) << "what is no model is left alone";
  tAsynt model = parsed("");
  Model_Objects(model) = mObject1(mXTrue(), mObject0());
  EXPECT_EQ("Error: module unroll, routine Objects2Expressions failed", refusal(model));
  model = transformed("instance s[i] end;");
  Symbol1_Symbol(InstanceSet_IndexNames(Object1_Object(Model_Objects(model)))) = mThis();
  EXPECT_EQ("Error: module unroll, routine Patternize failed", refusal(model));
  model = transformed("class D end; class C part p inherits D; end; instance i inherits C end;");
  for (tAsynt part : nodes_with(model, [](tAsynt n) { return Asynt_Kind(n) == kPartInstance; }))
    PartInstance_Instance(part) = mEmpty();
  EXPECT_EQ("Error: module unroll, routine Instantiate failed", refusal(model));
  model = transformed("class A(q) end; instance a inherits A(h`x) end;");
  for (tAsynt t : nodes_with(model, [](tAsynt n) { return Asynt_Kind(n) == kAbsoluteSymbol; }))
    if (printed(t) == "h`x") AbsoluteSymbol_Components(t) = list({mThis()});
  EXPECT_EQ("F AbsoluteSymbol containing this???", refusal(model));
}

// ---- printing ahead

// Enough objects for many batches. What they share with the globals, with their classes and with each other stays.
TEST_F(Unroll, ObjectsArePrintedAhead) {
  std::string text =
      "use := t4; real g := t3`x + t7[2]`x; u := {t5`x, 2}; class D(k) reveal: real array[2] y; z := k "
      "+ g; end;"
      "class C(n) inherits D(n) part p inherits D(this`x); reveal: real x; once h := n*y + t1`x; real f[real y_] := "
      "h*y; (* c *) end;";
  for (int i = 0; i < 400; i++)
    text += "instance t" + std::to_string(i) + (i % 7 == 0 ? "[i, j] inherits C(i + j)" : " inherits C(t0[1, 2]`x)") +
            " reveal: real w := x + p`z; q := {n, this`x}; end;";
  const auto text_of_run = [](auto print) {
    OutputStream out;
    print(out.f);
    return out.str();
  };
  tAsynt model = transformed(text);
  unsigned long used = Asynt_HeapUsed;
  unroll(&model, &instances);
  const unsigned long whole_tree = Asynt_HeapUsed - used;
  flatten(&model);
  const std::string whole = text_of_run([&](FILE* f) { unparse_filep(f, model); });
  model = transformed(text);
  PrintAhead ahead;
  used = Asynt_HeapUsed;
  unroll_for_reader(&model, &ahead);
  ahead.complete(model);
  EXPECT_LT(Asynt_HeapUsed - used, whole_tree / 5) << "the objects are gone";
  flatten(&model);
  EXPECT_TRUE(CheckAsynt(model));
  EXPECT_EQ(whole, text_of_run([&](FILE* f) { ahead.write(f, model); }));
}

// From an object on that cannot be printed or is not well-formed, all are left: the message comes in its turn.
TEST_F(Unroll, WhatCannotBePrintedAheadIsLeft) {
  for (const bool is_broken : {true, false}) {
    PrintAhead ahead;
    for (int i = 0; i < 6; i++) {
      const Asynt_Place start = Asynt_BeginBatch();
      const tAsynt bad = is_broken ? mXNot(mPosConv(NoPosition, nonConv), mType0()) : mXInequality(list({}));
      const tAsynt statements = list({i == 3 ? bad : name("a")});
      ahead.read(statements, Asynt_Detach(start));
    }
    tAsynt package = mPackage(name("m"), mFilename0(), list({name("g")}));
    ahead.complete(package);
    EXPECT_EQ(!is_broken, CheckAsynt(package));
    OutputStream out;
    const std::string message = said([&] { ahead.write(out.f, package); });
    const std::string head = "BeginPackage[\"m`\"];\n\n  g;\n  a;\n  a;\n  a";
    if (is_broken) {
      EXPECT_EQ(head + ";\n  !( );\n  a;\n  a\nEndPackage[];\n", out.str());
    } else {
      EXPECT_EQ("F Malformed inequality list: ", message);
      EXPECT_EQ(head + ";\n", out.str());
    }
  }
}

// ---- flattening

TEST(Flatten, CompoundsGiveWayToTheirItems) {
  tAsynt part = mContext(name("c"), list({compound({name("d"), compound({})})}));
  tAsynt call = mSimpleFFE(list({compound({name("e")})}), name("f"));
  tAsynt t = mPackage(name("p"), mFilename0(),
                      list({compound({}), compound({compound({name("a"), compound({name("b")})}), name("c")}), part,
                            call, compound({compound({}), compound({})})}));
  flatten(&t);
  EXPECT_EQ("Package[p,{},{a,b,c,Context[c,{d}],f[XCompoundExpression[e]]}]", tree_text(t));
  tAsynt other = compound({compound({name("a")})});
  flatten(&other);
  EXPECT_EQ("XCompoundExpression[XCompoundExpression[a]]", tree_text(other));
}

// ---- replacements behind a walk

int visits;

TEST(Deferred, ReplacementsComeAfterTheWalk) {
  tAsynt tree = mSimpleFFE(list({name("x"), mThis(), mSimpleFFE(list({name("x")}), name("g"))}), name("f"));
  visits = 0;
  TraverseAsyntTD3(__LINE__, &tree, [](tAsynt* place) -> char {
    visits++;
    if (Asynt_Kind(*place) == kSymbol) DeferReplacement(place, mSimpleFFE(list({*place, mThis()}), name("h")));
    if (Asynt_Kind(*place) == kThis) {
      DeferReplacement(place, name("first"));
      DeferReplacement(place, name("last"));
    }
    // Not into g[x], nor into what a name consists of.
    return Asynt_Kind(*place) != kSymbol && tree_text(*place) != "g[x]";
  });
  EXPECT_EQ("h[f,This][h[x,This],last,g[x]]", tree_text(tree));
  EXPECT_EQ(9, visits);  // f[...], three cells, x, this, g[x], the end of the list, f
  tree = mThis();
  const auto walk = [&] { TraverseAsyntTD3(7, &tree, [](tAsynt* place) -> char { return (*place)->yyMark = 5, 1; }); };
  EXPECT_EQ("Post-mark failure, line #7\n", message_of(walk));
  EXPECT_TRUE(contains(message_of(walk), "Pre-mark failure, line #7\n"));
  tree->yyMark = 0;
}

}  // namespace
}  // namespace oz
