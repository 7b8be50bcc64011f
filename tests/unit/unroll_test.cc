// Unrolling and flattening: what each instance receives, in which order and under which names, instance sets, the index
// of instances, which nodes are shared, and the messages.

#include "unroll.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "deferred.h"
#include "fatal_text.h"
#include "flatten.h"
#include "model_text.h"
#include "name.h"
#include "oz.h"
#include "ozt.h"
#include "tree_text.h"

namespace oz {
namespace {

struct Unroll : ModelText {
  ~Unroll() override {
    unroll_Exit = [] { Errors_Exit(); };
  }

  static inline tIndex instances = nullptr;

  static tAsynt transformed(const std::string& text) {
    tAsynt model = parsed(text);
    Qualify(&model);
    ozt(&model);
    return model;
  }

  static tAsynt unrolled(const std::string& text) {
    tAsynt model = transformed(text);
    unroll(&model, &instances);
    EXPECT_TRUE(CheckAsynt(model)) << text;
    EXPECT_TRUE(AsyntMarksAreZero(model)) << text;
    flatten(&model);
    return model;
  }

  // The lines of a package's text without indentation, blank lines and what frames every package and instance; of the
  // clean-up only if it is asked for.
  static std::string lines(tAsynt package, bool clean_up = false) {
    std::istringstream text(printed(package));
    std::string line, result;
    while (std::getline(text, line)) {
      line.erase(0, line.find_first_not_of(' '));
      const bool frame = line.empty() || line.rfind("BeginPackage", 0) == 0 || line == "EndPackage[];" ||
                         line == "DefineIndices[`indices,  {  } ];";
      if (!frame && (line.rfind("Clear[", 0) == 0 || line.rfind("Remove[", 0) == 0) == clean_up) result += line + "\n";
    }
    return result;
  }

  static std::string definitions(const std::string& text) { return lines(unrolled(text)); }

  // The first node of a kind whose text is this.
  static tAsynt find(tAsynt tree, Asynt_tKind kind, const std::string& text) {
    static std::vector<tAsynt> nodes;
    nodes.clear();
    TraverseAsyntTD(tree, [](tAsynt t) { nodes.push_back(t); });
    for (tAsynt t : nodes)
      if (Asynt_Kind(t) == kind && printed(t) == text) return t;
    ADD_FAILURE() << "no " << text;
    return nullptr;
  }
};

struct Row {
  const char* what;
  const char* source;
  const char* result;
};

TEST_F(Unroll, InstancesReceiveTheDefinitionsOfTheirClasses) {
  const Row rows[] = {
      {"classes alone produce nothing", "real g := 1; class C hide: x := 1; end;", "M`g:=1\n"},
      {"parents in reverse order, the classes behind their parents, the instance last",
       "class A hide: x := 1; end; class B hide: x := 2; end; class D inherits A, B hide: x := 3; end; "
       "instance i inherits D hide: x := 4; end;",
       "M`i;\nBegin[\"i`\"];\ni`this:=i;\n(* Class: B *)\ni`x:=2;\n(* Class: A *)\ni`x:=1;\n(* Class: D *)\ni`x:=3;\n"
       "(* Instance body: i *)\ni`x:=4\nEnd[]\n"},
      {"the behaviour first, then parts, then the other blocks; parts keep their place",
       "class D end; class C part p inherits D; part q inherits D; hide: x := 1; expose: y := 2; begin x == y end; "
       "instance i inherits C end;",
       "M`i;\nBegin[\"i`\"];\ni`this:=i;\n(* Class: C *)\ni`x == i`y;\n"
       "Begin[\"i`p`\"];\ni`p`this:=i`p;\n(* Class: D *)\n(* Instance body: p *)\nEnd[];\n"
       "Begin[\"i`q`\"];\ni`q`this:=i`q;\n(* Class: D *)\n(* Instance body: q *)\nEnd[];\n"
       "i`x:=1;\ni`y:=2;\n(* Instance body: i *)\nEnd[]\n"},
      {"static, once and `this` in an instance",
       "class Ball hide: static rho := 7.85; once k := 2; mine := this; way := this`k; end; "
       "instance b inherits Ball hide: t := rho; end;",
       "M`b;\nBegin[\"b`\"];\nb`this:=b;\n(* Class: Ball "
       "*)\nb`Ball`rho:=7.85;\nb`k:=(b`k=2);\nb`mine:=b;\nb`way:=b`k;\n"
       "(* Instance body: b *)\nb`t:=b`rho\nEnd[]\n"},
      {"sizes and patterns, elements and messages",
       "instance i hide: n := 2; real x[1]; x[1] := n; f[y_, n] := y + n; begin f::usage = \"u\" end;",
       "M`i;\nBegin[\"i`\"];\ni`this:=i;\n(* Instance body: i "
       "*)\ni`f::\"usage\"=\"u\";\ni`n:=2;\ni`x[1];\ni`x[1]:=i`n;\n"
       "i`f[P$`y_, i`n]:=P$`y+i`n\nEnd[]\n"},
  };
  for (const Row& row : rows) EXPECT_EQ(row.result, definitions(row.source)) << row.what;
}

TEST_F(Unroll, ParametersAreFilledIn) {
  const Row rows[] = {
      {"one definition per parameter; a later actual can contain earlier formals; a pattern variable hides a formal",
       "class C(p, q) hide: s := p + q; f[p_] := p; end; instance i inherits C(a, p + 1) hide: t := p; end;",
       "M`i;\nBegin[\"i`\"];\ni`this:=i;\n(* Class: C *)\ni`p:=a;\ni`q:=a+1;\ni`s:=a+(a+1);\ni`f[P$`p_]:=P$`p;\n"
       "(* Instance body: i *)\ni`t:=i`p\nEnd[]\n"},
      {"too few and too many actuals: the leading parameters only",
       "class C(p, q) hide: s := p + q; t := this; end; instance i inherits C(1), C(2, 3, 4) end;",
       "M`i;\nBegin[\"i`\"];\ni`this:=i;\n(* Class: C *)\ni`p:=2;\ni`q:=3;\ni`s:=2+3;\ni`t:=i;\n"
       "(* Class: C *)\ni`p:=1;\ni`s:=1+i`q;\ni`t:=i;\n(* Instance body: i *)\nEnd[]\n"},
      {"a header's formals are filled in before the rest is known from the object around",
       "class A(q) hide: y := q; end; class B(k) inherits A(k + 1) hide: z := k; end; "
       "class Car(m) part w inherits B(m); part u inherits A(n); hide: n := 3; end; instance a inherits Car(2) end;",
       "M`a;\nBegin[\"a`\"];\na`this:=a;\n(* Class: Car *)\na`m:=2;\n"
       "Begin[\"a`w`\"];\na`w`this:=a`w;\n(* Class: A *)\na`w`q:=2+1;\na`w`y:=2+1;\n"
       "(* Class: B *)\na`w`k:=2;\na`w`z:=2;\n(* Instance body: w *)\nEnd[];\n"
       "Begin[\"a`u`\"];\na`u`this:=a`u;\n(* Class: A *)\na`u`q:=a`n;\na`u`y:=a`n;\n(* Instance body: u *)\nEnd[];\n"
       "a`n:=3;\n(* Instance body: a *)\nEnd[]\n"},
      {"`this` in a header is the object around; a path from a formal starts at the actual value",
       "class W(c, n) hide: x := c`m + c; y := n; end; class Car part w inherits W(this, this`m); hide: m := 1; end; "
       "instance v inherits Car end;",
       "M`v;\nBegin[\"v`\"];\nv`this:=v;\n(* Class: Car *)\n"
       "Begin[\"v`w`\"];\nv`w`this:=v`w;\n(* Class: W *)\nv`w`c:=v;\nv`w`n:=v`m;\nv`w`x:=v`m+v;\nv`w`y:=v`m;\n"
       "(* Instance body: w *)\nEnd[];\nv`m:=1;\n(* Instance body: v *)\nEnd[]\n"},
      {"a formal can stand for a set or be called",
       "class C(wheels, f) hide: x := wheels[2]`y + f[3]; end; instance i inherits C(r, g) end;",
       "M`i;\nBegin[\"i`\"];\ni`this:=i;\n(* Class: C *)\ni`wheels:=r;\ni`f:=g;\ni`x:=r`y[2]+g[3];\n"
       "(* Instance body: i *)\nEnd[]\n"},
  };
  for (const Row& row : rows) EXPECT_EQ(row.result, definitions(row.source)) << row.what;
}

TEST_F(Unroll, SetsAreIndexedByPatterns) {
  const Row rows[] = {
      {"patterns left, plain indices right; rules for what left sides define, but not for declarations",
       "class C(n) hide: f[n] := n; g := {n -> n}; real x; once k := x; f[y_] := x + y; end; "
       "instance s[i, j] inherits C(i) end;",
       "M`s;\nBegin[\"s`\"];\nDefineIndices[`indices,  { i, j } ];\n"
       "Format[s`n[i_, j_]]:=(\"s[\"<>(ToString[i]<>\",\"<>ToString[j])<>\"]\")<>\"`\"<>ToString[s`n];\n"
       "Format[s`f[i_, j_][i_]]:=((\"s[\"<>(ToString[i]<>\",\"<>ToString[j])<>\"]\")<>ToString[s`f])[i];\n"
       "Format[s`g[i_, j_]]:=(\"s[\"<>(ToString[i]<>\",\"<>ToString[j])<>\"]\")<>\"`\"<>ToString[s`g];\n"
       "Format[s`k[i_, j_]]:=(\"s[\"<>(ToString[i]<>\",\"<>ToString[j])<>\"]\")<>\"`\"<>ToString[s`k];\n"
       "Format[s`f[i_, j_][P$`y_]]:=((\"s[\"<>(ToString[i]<>\",\"<>ToString[j])<>\"]\")<>ToString[s`f])[P$`y];\n"
       "s`this:=s;\n(* Class: C *)\ns`n[i_, j_]:=i;\ns`f[i_, j_][i_]:=i;\ns`g[i_, j_]:= { i_->i } ;\ns`x[i, j];\n"
       "s`k[i_, j_]:=(s`k[i, j]=s`x[i, j]);\ns`f[i_, j_][P$`y_]:=s`x[i, j]+P$`y;\n(* Instance body: s *)\nEnd[]\n"},
      {"parts of members: indices outermost first, rules only from sets",
       "class C(n) hide: x := n; end; class A part p[k] inherits C(k); part q inherits C(1); "
       "hide: z := p[2]`x + q`x + p[z]`f[3]; end; instance a[j] inherits A end;",
       "M`a;\nBegin[\"a`\"];\nDefineIndices[`indices,  { j } ];\n"
       "Format[a`z[j_]]:=(\"a[\"<>(ToString[j])<>\"]\")<>\"`\"<>ToString[a`z];\na`this:=a;\n(* Class: A *)\n"
       "Begin[\"a`p`\"];\nDefineIndices[`indices,  { j, k } ];\n"
       "Format[a`p`n[j_, k_]]:=((\"a[\"<>(ToString[j])<>\"]\")<>\"`\"<>(\"p[\"<>(ToString[k])<>\"]\"))<>\"`\"<>"
       "ToString[a`p`n];\n"
       "Format[a`p`x[j_, k_]]:=((\"a[\"<>(ToString[j])<>\"]\")<>\"`\"<>(\"p[\"<>(ToString[k])<>\"]\"))<>\"`\"<>"
       "ToString[a`p`x];\n"
       "a`p`this:=a`p;\n(* Class: C *)\na`p`n[j_, k_]:=k;\na`p`x[j_, k_]:=k;\n(* Instance body: p *)\nEnd[];\n"
       "Begin[\"a`q`\"];\nDefineIndices[`indices,  { j } ];\na`q`this:=a`q;\n(* Class: C *)\na`q`n[j_]:=1;\n"
       "a`q`x[j_]:=1;\n(* Instance body: q *)\nEnd[];\n"
       "a`z[j_]:=a`p`x[j, 2]+a`q`x[j]+a`p`f[j, a`z[j]][3];\n(* Instance body: a *)\nEnd[]\n"},
  };
  for (const Row& row : rows) EXPECT_EQ(row.result, definitions(row.source)) << row.what;
}

// The rules by which members print are left out here.
TEST_F(Unroll, WhatTheIndicesReach) {
  const Row rows[] = {
      {"elements of arrays: their rule gets no indices", "instance s[k] hide: array[3] v; w := v[[2]]; end;",
       "s`this:=s;\n(* Instance body: s *)\ns`v[k_]=Array[s`oz$v$C[k],  { 3 } ];\n"
       "Format[s`oz$v$C[i_]]:=HoldForm[s`v[[i]] ];\ns`w[k_]:=(s`v[k])[[2]] \nEnd[]\n"},
      {"the arguments in paths; paths as actual values, on both sides",
       "class C(q) begin q`y := q`y; q`f[x_] -> q[1]`y end; "
       "instance s[i] inherits C(r[i]`t) hide: u := b[c[e]`d]`x; c := i; end;",
       "s`this:=s;\n(* Class: C *)\ns`q[i_]:=r`t[i];\nr`t`y[i_]:=r`t`y[i];\nr`t`f[i_][P$`x_]->r`t`y[i, 1];\n"
       "(* Instance body: s *)\ns`u[i_]:=b`x[s`c`d[i, e]];\ns`c[i_]:=i\nEnd[]\n"},
      {"messages and tagged definitions stay; names of the model and of functions have no indices",
       "real g := 1; instance s[i] hide: x; f[y_] := Module[{z = y}, z + g]; begin x::t; x /: h[x] = i end;",
       "s`this:=s;\n(* Instance body: s *)\ns`x::\"t\";\ns`x[i]/: h[s`x[i]] = i;\ns`x[i];\n"
       "s`f[i_][P$`y_]:=(Module [ { z = P$`y },\nz+M`g])\nEnd[]\n"},
      {"an index wins over a name of the object", "instance s[i] hide: real i; x := i; end;",
       "s`this:=s;\n(* Instance body: s *)\ni;\ns`x[i_]:=i\nEnd[]\n"},
      {"paths in globals", "x := a[1]`b[k]`c + a[b[2]`d]`f[3];", "M`x:=a`b`c[1, k]+a`f[b`d[2]][3]\n"},
  };
  for (const Row& row : rows) {
    std::istringstream all(definitions(row.source));
    std::string line, text;
    while (std::getline(all, line)) {
      if (line.rfind("s`this", 0) == 0) text.clear();
      if (line.find("ToString") == std::string::npos) text += line + "\n";
    }
    EXPECT_EQ(row.result, text) << row.what;
  }
}

TEST_F(Unroll, TypesOfMembersKnowTheirIndices) {
  const tAsynt package = unrolled(
      "class C hide: real x; real array[3] v; {real, int} f[real y_] := {y, 1}; String t; u; "
      "real e[1] with unit = \"m\"; end; instance s[i, j] inherits C begin x + u end; instance a inherits C end;");
  const struct {
    const char* name;
    const char* symbol;
  } rows[] = {
      {"s`x", "s`x:ArrayType_s[Real,{-1,-1}]"},
      {"s`v", "s`v:ArrayType_s[Real,{-1,-1,3}]"},
      {"s`f", "s`f:MultiType_s[Real,Int]"},
      {"s`t", "s`t:String"},
      {"s`u", "s`u"},
      {"s`e[i, j][1]", "<(s`e[i:Int,j:Int])[1]:ArrayType_s[Real{unit=\"m\"},{-1,-1}]>"},
      {"P$`y", "P$`y:Real"},
      {"a`x", "a`x:Real"},
      {"a`v", "a`v:ArrayType[Real,{3}]"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.symbol, tree_text(find(package, kSymbol, row.name)));
}

// The symbol information of all symbols with this text.
std::set<tAsynt> informations(tAsynt tree, const std::string& text) {
  static std::vector<tAsynt> symbols;
  symbols.clear();
  TraverseAsyntTD(tree, [](tAsynt t) {
    if (Asynt_Kind(t) == kSymbol) symbols.push_back(t);
  });
  std::set<tAsynt> result;
  for (tAsynt t : symbols)
    if (unparse_string(t) == text) result.insert(Symbol_SymInfo(t));
  return result;
}

TEST_F(Unroll, OccurrencesOfANameShareItsType) {
  const tAsynt package = unrolled(
      "class C part p inherits D; hide: x := 1; real x; y := x + p`z; real f[real n_] := n; real g[int n_] := n; "
      "array[2] w; "
      "u := w; end; class D hide: z := 2; real z; end; instance i inherits C hide: int x; v := x; end;");
  const std::set<tAsynt> x = informations(package, "i`x");
  ASSERT_EQ(1u, x.size());
  EXPECT_EQ("i`x:Int", tree_text(mSymbol(*x.begin()))) << "the last type that was declared";
  EXPECT_EQ(1u, informations(package, "i`p`z").size()) << "also over the border of a part";
  EXPECT_EQ(2u, informations(package, "P$`n").size()) << "each function has parameters of its own";
  // The first occurrence, in the call of Array, stands for the others but that in the rule for the elements: in host
  // auxiliaries each keeps its own.
  EXPECT_EQ(2u, informations(package, "i`w").size());
}

TEST_F(Unroll, InstancesShareNothing) {
  const tAsynt package = unrolled(
      "real array[m] g; class C hide: n := 2; real array[n] v; real x; end; "
      "instance s[i] inherits C begin {x, v, g} end; instance a inherits C begin {x, v, g} end;");
  const struct {
    const char* name;
    const char* symbol;
  } rows[] = {
      {"s`x", "s`x:ArrayType_s[Real,{-1}]"}, {"s`v", "s`v:ArrayType_s[Real,{-1,s`n}]"}, {"a`x", "a`x:Real"},
      {"a`v", "a`v:ArrayType[Real,{a`n}]"},  {"M`g", "M`g:ArrayType[Real,{m}]"},
  };
  for (const auto& row : rows)
    for (tAsynt info : informations(package, row.name)) EXPECT_EQ(row.symbol, tree_text(mSymbol(info)));
}

TEST_F(Unroll, InstancesAreIndexed) {
  const tAsynt package = unrolled(
      "class D end; class C part p inherits D; part q[k] inherits D; end; instance a "
      "inherits C end; instance b[i, j] inherits C end;");
  const struct {
    const char* name;
    const char* indices;  // null for a single instance
    bool is_part;
  } rows[] = {{"a", nullptr, false}, {"a`p", nullptr, true}, {"a`q", "k", true},
              {"b", "ij", false},    {"b`p", nullptr, true}, {"b`q", "k", true}};
  for (const auto& row : rows) {
    const tAsynt* entries = lookup(instances, row.name);
    ASSERT_NE(nullptr, entries) << row.name;
    EXPECT_EQ(entries[0], find(package, kExpression1, printed(entries[0]))) << "a cell of the package";
    const tAsynt start = row.is_part ? entries[0] : Expression1_Expressions(entries[0]);
    EXPECT_EQ(row.name, printed(Context_Name(Expression1_Expression(start))));
    if (!row.is_part) {
      EXPECT_EQ(std::string("M`") + row.name, printed(Expression1_Expression(entries[0])));
    }
    EXPECT_EQ(row.name, printed(entries[1]));
    EXPECT_EQ(kSymbol, Asynt_Kind(entries[1]));
    if (!row.indices) {
      EXPECT_EQ(nullptr, entries[2]) << row.name;
      continue;
    }
    EXPECT_EQ(row.indices, printed(entries[2]));
    EXPECT_EQ(kXFalse, Asynt_Kind(entries[3]));
    EXPECT_EQ(nullptr, entries[4]);
  }
}

TEST_F(Unroll, ThePackageFirstClearsWhatAnEarlierLoadLeft) {
  const char* const model =
      "class D end; class C part p inherits D; part q inherits D; end; instance a inherits C end; instance b end;";
  const char* const expected =
      "Clear[\"b`*\"];\nRemove[\"b`*\"];\nClear[\"a`*\"];\nRemove[\"a`*\"];\nClear[\"a`q`*\"];\n"
      "Remove[\"a`q`*\"];\nClear[\"a`p`*\"];\nRemove[\"a`p`*\"];\n";
  EXPECT_EQ(expected, lines(unrolled(model), true));
  EXPECT_EQ(expected, lines(unrolled(model), true)) << "a second run starts afresh";
}

TEST_F(Unroll, OtherTreesAreLeftAlone) {
  instances = nullptr;
  for (tAsynt tree : {mThis(), mModel(nullptr, mFilename0(), mParticle0(), mObject0())}) {
    tAsynt t = tree;
    unroll(&t, &instances);
    EXPECT_EQ(tree, t);
    EXPECT_EQ(nullptr, instances);
  }
}

TEST_F(Unroll, Messages) {
  const struct {
    const char* source;
    const char* message;
  } rows[] = {
      {"class N hide: x; end; instance a inherits N end;", "'N' used as class name (reserved)."},
      {"instance b end; instance a inherits b end;", "Could not inherit from class b - it doesn't exist!\n"},
      {"class A inherits B end; class B inherits A end; class D inherits B end; instance a inherits D end;",
       "Inheritance graph is cyclic (cycle includes class 'B')\n"},
      {"class A part p inherits A; end; instance a inherits A end;",
       "Inheritance graph is cyclic (cycle includes class 'A')\n"},
      {"instance a end; instance a end;", "Could not create_entry"},
      {"class A end; class B part p inherits A; end; class C inherits B, B end; instance a inherits C end;",
       "Could not create_entry"},
      {"class A(x) end; instance a inherits A(1 + this) end;",
       "'this' may not be used at the global level!\n                      (probably occured in the header of 'a')\n"},
      {"class A(x) end; instance a inherits A(this`y) end;",
       "'this' may not be used at the global level!\n                      (probably occured in the header of 'a')\n"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(std::string("   0,  0: Fatal       ") + row.message + "\n", message_of([&row] { unrolled(row.source); }))
        << row.source;
  EXPECT_EQ("M`g:=1\n", definitions("g := 1; class A inherits B end; class B inherits A end;"))
      << "a cycle that no instance uses";
}

// Trees that no source text gives.
TEST_F(Unroll, MessagesForBrokenTrees) {
  const auto unroll_it = [](tAsynt model) {
    return message_of([model] {
      tAsynt t = model;
      unroll(&t, &instances);
    });
  };
  tAsynt model = transformed("class A(q) end; instance a inherits A(h`x) end;");
  Symbol_SymInfo(find(model, kSymbol, "h`x")) =
      mAbsoluteSymbol(mNoType(), NoPosition, "x", mExpression1(mThis(), mExpression0()));
  EXPECT_EQ("   0,  0: Fatal       AbsoluteSymbol containing this???\n", unroll_it(model));
  model = transformed("instance a end;");
  Object1_Object(Model_Objects(model)) = mEmpty();
  EXPECT_EQ("Error: module unroll, routine Objects2Expressions failed\n", unroll_it(model));
  model = transformed("instance s[i] end;");
  Symbol1_Symbol(InstanceSet_IndexNames(Object1_Object(Model_Objects(model)))) = mThis();
  EXPECT_EQ("Error: module unroll, routine Patternize failed\n", unroll_it(model));
  model = transformed("class D end; class C part p inherits D; end; instance i inherits C end;");
  PartInstance_Instance(find(model, kPartInstance, "part p inherits D")) = mEmpty();
  EXPECT_EQ("Error: module unroll, routine Instantiate failed\n", unroll_it(model));
}

// ---- flatten

tAsynt list_of(const std::vector<tAsynt>& items) {
  tAsynt list = mExpression0();
  for (size_t i = items.size(); i-- > 0;) list = mExpression1(items[i], list);
  return list;
}

tAsynt name(const char* text) { return mSymbol(mSimpleSymbol(mNoType(), NoPosition, text)); }

tAsynt compound(const std::vector<tAsynt>& items) {
  return mXCompoundExpression(mkNonConvPos(NoPosition), list_of(items));
}

TEST(Flatten, CompoundsGiveWayToTheirItems) {
  tAsynt part = mContext(name("c"), list_of({compound({name("d"), compound({})})}));
  tAsynt call = mSimpleFFE(list_of({compound({name("e")})}), name("f"));
  tAsynt t = mPackage(name("p"), mFilename0(),
                      list_of({compound({}), compound({compound({name("a"), compound({name("b")})}), name("c")}), part,
                               call, compound({compound({}), compound({})})}));
  flatten(&t);
  EXPECT_EQ("Package[p,{},{a,b,c,Context[c,{d}],f[XCompoundExpression[e]]}]", tree_text(t));
  tAsynt other = compound({compound({name("a")})});
  flatten(&other);
  EXPECT_EQ("XCompoundExpression[XCompoundExpression[a]]", tree_text(other));
}

// ---- deferred replacement

int visits;

TEST(Deferred, ReplacementsComeAfterTheWalk) {
  tAsynt x = name("x");
  tAsynt tree = mSimpleFFE(list_of({x, mThis(), mSimpleFFE(list_of({name("x")}), name("g"))}), name("f"));
  visits = 0;
  TraverseAsyntTD3(__LINE__, &tree, [](tAsynt* place) -> char {
    visits++;
    if (Asynt_Kind(*place) == kSymbol) DeferReplacement(place, mSimpleFFE(list_of({*place, mThis()}), name("h")));
    if (Asynt_Kind(*place) == kThis) {
      DeferReplacement(place, name("first"));
      DeferReplacement(place, name("last"));
    }
    // Not into g[x], nor into what a name consists of.
    return Asynt_Kind(*place) != kSymbol && tree_text(*place) != "g[x]";
  });
  EXPECT_EQ("h[f,This][h[x,This],last,g[x]]", tree_text(tree));
  // f[...], three cells, x, this, g[x], the end of the list, f.
  EXPECT_EQ(9, visits);
}

TEST(Deferred, ReportsMarksThatAreNotClear) {
  tAsynt tree = mThis();
  const auto walk = [&tree] { TraverseAsyntTD3(7, &tree, [](tAsynt*) -> char { return 1; }); };
  EXPECT_EQ("", message_of(walk));
  tree->yyMark = 1;
  EXPECT_EQ("Pre-mark failure, line #7\n", message_of(walk));
  tree->yyMark = 0;
  EXPECT_EQ("Post-mark failure, line #8\n", message_of([&tree] {
              TraverseAsyntTD3(8, &tree, [](tAsynt* place) -> char {
                (*place)->yyMark = 5;
                return 1;
              });
            }));
  tree->yyMark = 0;
}

}  // namespace
}  // namespace oz
