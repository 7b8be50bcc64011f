// Qualification: what each name of a model means, what environments inherit, and tables of names.

#include "name.h"

#include <random>

#include "model_text.h"
#include "symtab.h"

namespace oz {
namespace {

struct Names : ModelText {
  // The qualified model's text with "!" in front of the name of each absolute symbol.
  static std::string meaning(const std::string& text) {
    const tAsynt model = qualified(text);
    TraverseAsyntTD(model, [](tAsynt t) {
      if (Asynt_Kind(t) == kAbsoluteSymbol)
        NamedSymbol_Name(t) = (new std::string(std::string("!") + NamedSymbol_Name(t)))->c_str();
    });
    return printed(model);
  }

  // The type that a class's or an instance's local has, or null.
  static tAsynt type_of_local(const char* object, const char* name) {
    current_env = find_env(object);
    const tAsynt found = lookup_local(mSimpleSymbol(mNoType(), NoPosition, name));
    return found ? SymInfo_Type(found) : nullptr;
  }
};

TEST_F(Names, MeanWhatTheirScopeSays) {
  for (const auto& [what, source, result] : table<3>(R"(
      a Module variable hides a pattern variable, that a local, that a global --> \
          real g := 9; class C hide: real x; f[x_] := x + g; h[x_] := Module[{x = x, y}, x*y + q]; k := x; end; --> \
          M`!g:=9;\nclass C\nx;\nf[P$`!x_]:=P$`!x+M`!g;\nh[P$`!x_]:=(Module [ { !y,\n!x = P$`!x },\n!x*!y+!q]);\nk:=x;\
          \nend;\n
      pattern variables reach into inner definitions and end with their own --> \
          f[x_] := (g[y_] := x + y); h := x; k := l[z_] -> z; --> M`!f[P$`!x_]:=(!g[P$`!y_]:=P$`!x+P$`!y);\nM`!h:=!x;\
          \nM`!k:=!l[P$`!z_]->P$`!z;\n
      Block binds like Module; initial values are outside, an inner scope ends --> \
          real b := 1; f := Block[{a}, Module[{b = a, a = b}, a + b] + a + b]; --> M`!b:=1;\nM`!f:=(Block [ { !a },\
          \n(Module [ { !a = M`!b,\n!b = !a },\n!a+!b])+!a+M`!b]);\n
      formals, parts and paths --> \
          class W(r) end; class V(k) part p inherits W(k + r); hide: f := p`a; u := q`a + this`k + p[z, k]`a; end; \
          --> class W(r)\nend;\nclass V(k)\npart p inherits W(k+!r);\nf:=p`a;\nu:=q`!a+this`k+p[!z, k]`a;\nend;\n
      the behaviour declares nothing --> class C hide: f := y; begin y := x end; --> class C\n!y:=!x;\nf:=!y;\nend;\n
      inherited names are known ahead of the parent --> \
          class B inherits A hide: f := x; end; class A hide: real x; end; instance b inherits B hide: g := x + f; \
          end; --> class B inherits A\nf:=x;\nend;\nclass A\nx;\nend;\ninstance b inherits B\ng:=x+f;\nend;\n
      predefined names are no locals and keep their meaning --> class C hide: real N := 5; f := N; end; --> \
          class C\n!N:=5;\nf:=!N;\nend;\n
      a predefined name ends the variables of a Module; they are held last first --> \
          real a; real b; f := Module[{a, N, b}, a + b]; --> M`!a;\nM`!b;\nM`!f:=(Module [ { !b,\n!N,\nM`!a },\
          \nM`!a+!b]);\n
      an index hides a global and a local of its name, in its set only --> \
          real i := 1; instance s[i, j] hide: real j; f := i + j; end; instance t hide: f := i; end; --> M`!i:=1;\
          \ninstance s[!i, !j]\n!j;\nf:=!i+!j;\nend;\ninstance t\nf:=M`!i;\nend;\n
      an index of a part hides a local in its line only --> \
          class C(k) end; instance a part p[i] inherits C(i + p); hide: real i; f := i; end; --> class C(k)\nend;\
          \ninstance a\npart p[!i] inherits C(!i+p);\ni;\nf:=i;\nend;\n
    )"))
    EXPECT_EQ(result, meaning(source)) << what;
}

TEST_F(Names, TypesMeetInTheFirstDeclaration) {
  qualified(
      "class Plain hide: x; end; class R hide: real x; end; class I hide: int x; end;"
      "class Late hide: x; real x; int x; end; class Own inherits R hide: x; end;"
      "class First inherits R, I end; class Filled inherits Plain, I end; instance Deep inherits Filled end;");
  const struct {
    const char* object;
    Asynt_tKind type;
  } rows[] = {{"R", kRealType},     {"Late", kRealType},  {"Own", kRealType},
              {"First", kRealType}, {"Filled", kIntType}, {"Deep", kIntType}};
  for (const auto& row : rows) EXPECT_EQ(row.type, Asynt_Kind(type_of_local(row.object, "x"))) << row.object;
  EXPECT_EQ(nullptr, type_of_local("R", "y"));
}

TEST_F(Names, Messages) {
  for (const auto& [source, message] : table<2>(R"(
      class A inherits Base end; --> Unknown_env: Base\n
      f[N_] := 1; --> Unimplemented type in Find_pattern: AbsoluteSymbol\n\n
      instance a begin f[Module[{x}, x]] := 1 end; --> Unimplemented type in Find_pattern: XModule\n\n
    )"))
    EXPECT_EQ(std::string("   0,  0: Fatal       ") + message, message_of([&] { qualified(source); })) << source;
  const auto model_of = [](tAsynt particle) {
    const tAsynt name = mSymbol(mSimpleSymbol(mNoType(), NoPosition, "M"));
    return mModel(name, mFilename0(), mParticle1(particle, mParticle0()), mObject0());
  };
  tAsynt slot = model_of(mSlot(1));
  EXPECT_EQ("   0,  0: Fatal       Unimplemented type in Find_locals: Slot\n\n", message_of([&] { Qualify(&slot); }));
  tAsynt comment = model_of(mXSetDelayed(mkNonConvPos(NoPosition), Model_Name(slot), mComment("a", "b")));
  EXPECT_EQ("   0,  0: Fatal       Unimplemented type in Qualify: Comment\n\n", message_of([&] { Qualify(&comment); }));
}

TEST_F(Names, EmptyStacksAreReported) {
  const tAsynt x = mSimpleSymbol(mNoType(), NoPosition, "x");
  EXPECT_EQ("Internal error. No pattern index.\n", message_of([&] { add_pattern_sym(x); }));
  EXPECT_EQ("Internal error. No module index.\n", message_of([&] { add_module_sym(x); }));
  EXPECT_EQ("Internal error. Popped too many indices.\n", message_of([] { pop_pattern_index(); }));
  EXPECT_EQ("Internal error. Popped too many indices.\n", message_of([] { pop_module_index(); }));
  EXPECT_EQ(nullptr, lookup_pattern(x));
  EXPECT_EQ(nullptr, lookup_module(x));
}

// Copying all inherited names would take the square of the chain's length.
TEST_F(Names, LongChainsOfClasses) {
  constexpr int kLength = 100000;
  std::string text;
  for (int i = 0; i < kLength; i++) {
    const std::string n = std::to_string(i);
    text += "class C" + n;
    if (i + 1 < kLength) text += " inherits C" + std::to_string(i + 1);
    text += " hide: real x" + n + "; end;\n";
  }
  qualified(text);
  EXPECT_NE(nullptr, type_of_local("C0", "x99999"));
  EXPECT_NE(nullptr, type_of_local("C0", "x0"));
  EXPECT_EQ(nullptr, type_of_local("C99999", "x0"));
}

// Tables against maps: names with few different hashes, two of which differ in the last digit only, so that deep
// branches and long buckets of equal hash occur.
TEST(SymbolTables, UniteLikeMaps) {
  std::mt19937 random(1);
  SymtabPool pool;
  std::vector<tAsynt> symbols;
  symbols.reserve(60);
  for (int i = 0; i < 60; i++)
    symbols.push_back(mSimpleSymbol(mNoType(), NoPosition, (new std::string(std::to_string(i % 40)))->c_str()));
  const auto hash = [](tAsynt s) {
    const uint32_t n = static_cast<uint32_t>(std::stoul(NamedSymbol_Name(s))) % 4;
    return n % 3 | n << 28;
  };
  using Map = std::map<std::string, tAsynt>;
  std::vector<std::pair<Symtab, Map>> tables;
  static int clashes;
  for (int round = 0; round < 2000; round++) {
    Symtab table = nullptr;
    Map map;
    for (size_t n = random() % 30; n > 0; n--) {
      const tAsynt s = symbols[random() % symbols.size()];
      map.emplace(NamedSymbol_Name(s), s);
      tAsynt* place = symtab_place(&pool, &table, hash(s), NamedSymbol_Name(s));
      if (!*place) *place = s;
      EXPECT_EQ(map[NamedSymbol_Name(s)], *place);
    }
    if (!tables.empty()) {
      const auto& [other, other_map] = tables[random() % tables.size()];
      int expected = 0;
      for (const auto& [name, s] : other_map) expected += !map.emplace(name, s).second && map[name] != s;
      clashes = 0;
      table = symtab_unite(&pool, table, other, [](tAsynt, tAsynt) { clashes++; });
      EXPECT_EQ(expected, clashes);
    }
    tables.emplace_back(table, map);
  }
  for (const auto& [table, map] : tables)
    for (const tAsynt s : symbols) {
      const auto at = map.find(NamedSymbol_Name(s));
      ASSERT_EQ(at == map.end() ? nullptr : at->second, symtab_find(table, hash(s), NamedSymbol_Name(s)));
    }
}

}  // namespace
}  // namespace oz
