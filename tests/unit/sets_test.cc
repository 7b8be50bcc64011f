// Bit sets: every operation against a plain set, the upkeep of size and bounds, and the written form.

#include "Sets.h"

#include <bitset>
#include <random>

#include "support.h"

namespace oz {
namespace {

constexpr int kLimit = 101;
using Plain = std::bitset<kLimit>;

std::string written(const tSet& s) {
  testing::internal::CaptureStdout();
  WriteSet(stdout, s);
  return testing::internal::GetCapturedStdout();
}

// All that can be asked of a set, against the same set as a plain one. Card and the bounds must not lie.
void compare(const Plain& want, tSet* s) {
  Plain odds;
  for (size_t e = 1; e < kLimit; e += 2) odds.set(e);
  int minimum = 0, maximum = 0, count = static_cast<int>(want.count());
  for (int e = 0; e <= s->MaxElmt; e++) {
    ASSERT_EQ(want[static_cast<size_t>(e)], IsElement(e, *s)) << e;
    if (IsElement(e, *s)) maximum = e;
    if (IsElement(s->MaxElmt - e, *s)) minimum = s->MaxElmt - e;
  }
  EXPECT_TRUE(s->Card == -1 || s->Card == count);
  EXPECT_EQ(want.none(), IsEmpty(*s));
  EXPECT_EQ((want & odds).none(), Forall(*s, [](int e) { return e % 2 == 0; }));
  EXPECT_EQ((want & odds).any(), Exists(*s, [](int e) { return e % 2 == 1; }));
  EXPECT_EQ((want & odds).count() == 1, Exists1(*s, [](int e) { return e % 2 == 1; }));
  EXPECT_EQ(count, Card(s));
  EXPECT_EQ(minimum, Minimum(s));
  EXPECT_EQ(maximum, Maximum(s));
}

void change(int op, Plain* want, tSet* s, const Plain& other, const tSet& t, size_t e) {
  const Plain all = ~Plain() >> static_cast<size_t>(kLimit - 1 - s->MaxElmt), one = Plain(1) << e;
  const int elmt = static_cast<int>(e);
  switch (op) {
    case 0: Include(s, elmt), *want |= one; break;
    case 1: Exclude(s, elmt), *want &= ~one; break;
    case 2: Union(s, t), *want |= other; break;
    case 3: Difference(s, t), *want &= ~other; break;
    case 4: Intersection(s, t), *want &= other; break;
    case 5: SymDiff(s, t), *want ^= other; break;
    case 6: Complement(s), *want ^= all; break;
    case 7: Assign(s, t), *want = other; break;
    case 8: AssignElmt(s, elmt), *want = one; break;
    case 9: AssignEmpty(s), want->reset(); break;
    default: want->reset(static_cast<size_t>(Extract(s))); break;
  }
}

TEST(Sets, AgreeWithPlainSets) {
  std::mt19937 random(5);
  for (int max : {0, 31, 32, 63, 100}) {
    tSet s, t;
    MakeSet(&s, max);
    MakeSet(&t, max);
    Plain want, other;
    for (int i = 0; i < 2000; i++) {
      int op = static_cast<int>(random() % 24);
      change(op < 11 ? op : op % 2, &want, &s, other, t, random() % static_cast<unsigned>(max + 1));
      ASSERT_NO_FATAL_FAILURE(compare(want, &s)) << "operation " << op << ", maximum " << max;
      EXPECT_EQ(want == other, IsEqual(s, t));
      EXPECT_EQ((want & ~other).none(), IsSubset(s, t));
      if (i % 9 == 0) std::swap(s, t), std::swap(want, other);
    }
    ReleaseSet(&s);
    ReleaseSet(&t);
  }
}

TEST(Sets, ReadBack) {
  tSet s;
  MakeSet(&s, 31);
  for (const auto& [text, set, card] : table<3>(R"(
      { 3 0 31} --> { 0 3 31} --> 3          set = { 3,5,3,} --> { 3 5} --> 2       {} --> {} --> 0
      { 32 -1 x 4} --> { 4} --> 1            { 7\s --> { 7} --> 1                   no set --> {} --> 0
    )")) {
    FILE* f = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
    ReadSet(f, &s);
    std::fclose(f);
    EXPECT_EQ(set, written(s)) << text;
    EXPECT_EQ(std::stoi(card), s.Card) << text;
  }
  ReleaseSet(&s);
}

}  // namespace
}  // namespace oz
