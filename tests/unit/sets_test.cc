// Bit sets: every operation against a plain set, the upkeep of size and bounds, and the written form.

#include "Sets.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace oz {
namespace {

std::string written(const tSet& s) {
  char* text = nullptr;
  size_t size = 0;
  FILE* f = open_memstream(&text, &size);
  WriteSet(f, s);
  std::fclose(f);
  std::string result(text, size);
  std::free(text);
  return result;
}

std::string written(const std::set<int>& s) {
  std::string text = "{";
  for (int e : s) text += " " + std::to_string(e);
  return text + "}";
}

// All that can be asked of a set, against the same set as a plain one. Card and the bounds must not lie.
void compare(const std::set<int>& want, tSet* s) {
  ASSERT_EQ(written(want), written(*s));
  if (s->Card >= 0) {
    EXPECT_EQ(static_cast<int>(want.size()), s->Card);
  }
  EXPECT_EQ(want.empty(), IsEmpty(*s));
  EXPECT_EQ(static_cast<int>(want.size()), Card(s));
  EXPECT_EQ(want.empty() ? 0 : *want.begin(), Minimum(s));
  EXPECT_EQ(want.empty() ? 0 : *want.rbegin(), Maximum(s));
}

void change(int op, std::set<int>* want, tSet* s, const std::set<int>& other, const tSet& t, int e) {
  std::set<int> old = *want;
  switch (op) {
    case 0: Include(s, e), want->insert(e); break;
    case 1: Exclude(s, e), want->erase(e); break;
    case 2: Union(s, t), want->insert(other.begin(), other.end()); break;
    case 3:
      Difference(s, t);
      for (int x : other) want->erase(x);
      break;
    case 4:
      Intersection(s, t);
      for (int x : old)
        if (!other.count(x)) want->erase(x);
      break;
    case 5:
      SymDiff(s, t);
      for (int x : other)
        if (!want->erase(x)) want->insert(x);
      break;
    case 6:
      Complement(s);
      want->clear();
      for (int x = 0; x <= s->MaxElmt; x++)
        if (!old.count(x)) want->insert(x);
      break;
    case 7: Assign(s, t), *want = other; break;
    case 8: AssignElmt(s, e), *want = {e}; break;
    case 9: AssignEmpty(s), want->clear(); break;
    default: want->erase(Extract(s)); break;
  }
}

TEST(Sets, AgreeWithPlainSets) {
  std::mt19937 random(5);
  for (int max : {0, 31, 32, 63, 100}) {
    tSet s, t;
    MakeSet(&s, max);
    MakeSet(&t, max);
    std::set<int> want, other;
    for (int i = 0; i < 2000; i++) {
      int e = static_cast<int>(random() % static_cast<unsigned>(max + 1));
      int op = static_cast<int>(random() % 24);
      change(op < 11 ? op : op % 2, &want, &s, other, t, e);
      ASSERT_NO_FATAL_FAILURE(compare(want, &s)) << "operation " << op << ", element " << e << ", maximum " << max;
      EXPECT_EQ(want.count(e) == 1, IsElement(e, s));
      EXPECT_EQ(want == other, IsEqual(s, t));
      bool subset = true;
      for (int x : want) subset = subset && other.count(x);
      EXPECT_EQ(subset, IsSubset(s, t));
      if (i % 9 == 0) std::swap(s, t), std::swap(want, other);
    }
    ReleaseSet(&s);
    ReleaseSet(&t);
  }
}

TEST(Sets, SizeAndBounds) {
  tSet s;
  MakeSet(&s, 40);
  auto state = [&s] { return std::vector<int>{s.Card, s.FirstElmt, s.LastElmt}; };
  using State = std::vector<int>;
  EXPECT_EQ((State{0, 40, 0}), state());
  Include(&s, 9);
  EXPECT_EQ((State{-1, 9, 9}), state());
  Include(&s, 33);
  Include(&s, 20);
  EXPECT_EQ((State{-1, 9, 33}), state());
  Exclude(&s, 9);
  EXPECT_EQ((State{-1, 10, 33}), state());
  Exclude(&s, 33);
  EXPECT_EQ((State{-1, 10, 32}), state());
  EXPECT_EQ(1, Card(&s));
  EXPECT_EQ((State{1, 10, 32}), state());
  EXPECT_EQ(20, Minimum(&s));
  EXPECT_EQ((State{1, 20, 32}), state());
  EXPECT_EQ(20, Maximum(&s));
  Complement(&s);
  EXPECT_EQ((State{40, 0, 40}), state());
  EXPECT_EQ(1, s.LastBitset);
  EXPECT_EQ(0xff800000u, s.BitsetPtr[1]) << "nothing behind element 40";
  AssignElmt(&s, 7);
  EXPECT_EQ((State{1, 7, 7}), state());
  ReleaseSet(&s);
}

TEST(Sets, Predicates) {
  tSet s;
  MakeSet(&s, 64);
  for (int e : {2, 5, 64}) Include(&s, e);
  bool (*even)(int) = [](int e) { return e % 2 == 0; };
  bool (*odd)(int) = [](int e) { return e % 2 == 1; };
  EXPECT_TRUE(Exists(s, even) && !Exists1(s, even) && !Forall(s, even));
  EXPECT_TRUE(Exists(s, odd) && Exists1(s, odd));
  Exclude(&s, 5);
  EXPECT_TRUE(Forall(s, even) && !Exists(s, odd) && !Exists1(s, odd));
  ReleaseSet(&s);
}

TEST(Sets, ReadBack) {
  const struct {
    const char* text;
    const char* set;
    int card;
  } rows[] = {{"{ 3 0 31}", "{ 0 3 31}", 3},
              {"set = { 3,5,3,}", "{ 3 5}", 2},
              {"{}", "{}", 0},
              {"{ 32 -1 x 4}", "{ 4}", 1},
              {"{ 7 ", "{ 7}", 1},
              {"no set", "{}", 0}};
  tSet s;
  MakeSet(&s, 31);
  for (const auto& r : rows) {
    FILE* f = fmemopen(const_cast<char*>(r.text), std::string(r.text).size(), "r");
    ReadSet(f, &s);
    std::fclose(f);
    EXPECT_EQ(r.set, written(s)) << r.text;
    EXPECT_EQ(r.card, s.Card) << r.text;
  }
  ReleaseSet(&s);
}

}  // namespace
}  // namespace oz
