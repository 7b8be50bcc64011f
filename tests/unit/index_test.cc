// The symbol index: both representations against a plain map, their orders, and the growth of the table.

#include "index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "hash.h"

namespace oz {
namespace {

// The index never looks into a node, so a number can stand for one.
tAsynt node(size_t n) { return reinterpret_cast<tAsynt>(n); }

std::vector<size_t> numbers(tAsynt* entries) {
  std::vector<size_t> v;
  for (; entries && *entries; entries++) v.push_back(reinterpret_cast<size_t>(*entries));
  return v;
}

std::vector<std::string> keys(const Index* index) {
  std::vector<std::string> v;
  for (Iter* i = start_iter(index); iter_next(i);) v.emplace_back(iter_key(i));
  return v;
}

using Numbers = std::vector<size_t>;
using Keys = std::vector<std::string>;

class BothIndices : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Types, BothIndices, testing::Values(linked_list, hash_table));

// A word of n's eight bits, "ab" for 0 and "bA" for 1: the table gives all of them the same hash.
std::string colliding(size_t n) {
  std::string s;
  for (size_t bit = 0; bit < 8; bit++) s += n >> bit & 1 ? "bA" : "ab";
  return s;
}

// Long enough a run to pass from plain chains to side tables, to split and to shrink.
TEST_P(BothIndices, AgreeWithAPlainMap) {
  std::mt19937 random(11);
  Index* index = make_index(GetParam(), 1);
  std::map<std::string, Numbers> want;
  Keys newest_first;
  for (size_t i = 1; i <= 30000; i++) {
    std::string key = random() % 4 ? "k" + std::to_string(random() % 3000) : colliding(random() % 256);
    Numbers& entries = want[key];
    bool known = std::find(newest_first.begin(), newest_first.end(), key) != newest_first.end();
    bool growing = random() % 4 < (i / 6000 % 2 ? 1 : 3);
    if (growing && random() % 2) {
      EXPECT_EQ(entries.empty(), create_entry(index, node(i), key.c_str()));
      if (entries.empty()) entries.push_back(i);
    } else if (growing) {
      entries.push_back(i);
      EXPECT_EQ(static_cast<int>(entries.size()), add_to_entry(index, node(i), key.c_str()));
    } else {
      EXPECT_EQ(static_cast<int>(entries.size()) - 1, remove_from_entry(index, key.c_str()));
      if (!entries.empty()) entries.pop_back();
    }
    if (!known && !entries.empty()) newest_first.insert(newest_first.begin(), key);
    ASSERT_EQ(entries, numbers(lookup(index, key.c_str()))) << key;
  }
  if (GetParam() == linked_list) {
    EXPECT_EQ(newest_first, keys(index));
  }
  std::map<std::string, int> seen;
  for (const std::string& k : keys(index)) seen[k]++;
  for (const auto& [key, entries] : want) {
    EXPECT_EQ(entries, numbers(lookup(index, key.c_str())));
    EXPECT_TRUE(entries.empty() || seen[key] == 1) << key;
  }
  delete_index(index);
}

TEST(List, KeepsItsKeysInOrderWhateverHappensToTheirEntries) {
  Index* index = make_index(linked_list, 1);
  Keys expected;
  for (size_t i = 1; i <= 20; i++) {
    create_entry(index, node(i), std::to_string(i).c_str());
    expected.insert(expected.begin(), std::to_string(i));
  }
  EXPECT_EQ(0, remove_from_entry(index, "7"));
  EXPECT_EQ(nullptr, lookup(index, "7"));
  EXPECT_EQ(-1, remove_from_entry(index, "7"));
  EXPECT_EQ(expected, keys(index));
  Iter* iter = start_iter(index);
  for (int i = 0; i < 13; i++) iter_next(iter);
  EXPECT_EQ(Numbers{7}, numbers(iter_next(iter))) << "the entry taken last still stands in its slot";
  EXPECT_EQ(1, create_entry(index, node(70), "7"));
  EXPECT_EQ(Numbers{70}, numbers(lookup(index, "7")));
  EXPECT_EQ(expected, keys(index));
  clear_index(index);
  EXPECT_EQ(nullptr, lookup(index, "3"));
  EXPECT_EQ(Keys{}, keys(index));
  EXPECT_EQ(1, create_entry(index, node(1), "3"));
  EXPECT_EQ(Keys{"3"}, keys(index));
  delete_index(index);
}

TEST(Table, HashFunction) {
  EXPECT_EQ(0u, hash_x33_u4("", 1));
  EXPECT_EQ(255u * 33, hash_x33_u4("\xff", 2)) << "bytes are unsigned";
  EXPECT_EQ(((97u * 33 + 98) * 33 + 99) * 33, hash_x33_u4("abc", 4));
  EXPECT_EQ(((((97u * 33 + 98) * 33 + 99) * 33 + 100) * 33 + 101) * 33, hash_x33_u4("abcde", 6));
}

TEST(Table, SplitsAtThe513thKeyAndShrinks) {
  hashtable* t = init_hashtable();
  for (int i = 1; i <= 512; i++) add_to_hashtable(t, std::to_string(i).c_str(), node(1), 1);
  EXPECT_EQ(0u, t->p);
  EXPECT_EQ(0, t->slack);
  add_to_hashtable(t, "513", node(1), 1);
  EXPECT_EQ(1u, t->p);
  EXPECT_EQ(1, t->slack);
  ASSERT_NE(nullptr, t->directory[1]);
  for (element* e = t->directory[0]->buckets[0]; e; e = e->next) EXPECT_EQ(0u, e->hash & 511);
  for (element* e = t->directory[1]->buckets[0]; e; e = e->next) EXPECT_EQ(256u, e->hash & 511);
  delete_hashtable(t);

  // 512 free places are more than the 256 buckets that one key leaves behind: the last bucket goes to its half.
  t = init_hashtable();
  add_to_hashtable(t, "a", node(1), 1);
  EXPECT_EQ(0, remove_from_hashtable(t, "a"));
  EXPECT_EQ(127u, t->p);
  EXPECT_EQ(127u, t->maxp_minus_1);
  EXPECT_EQ(510, t->slack);
  // Down to the one bucket that never goes, and up again.
  for (int i = 0; i < 300; i++) {
    add_to_hashtable(t, "a", node(1), 1);
    EXPECT_EQ(0, remove_from_hashtable(t, "a"));
  }
  EXPECT_EQ(0u, t->p + t->maxp_minus_1);
  for (int i = 0; i < 1000; i++) add_to_hashtable(t, std::to_string(i).c_str(), node(1), 1);
  for (int i = 0; i < 1000; i++) EXPECT_NE(nullptr, find_in_hashtable(t, std::to_string(i).c_str()));
  delete_hashtable(t);
}

TEST(Table, StopsAt65536Buckets) {
  constexpr size_t kMany = 140000;
  hashtable* t = init_hashtable();
  auto key = [](size_t i) { return "key" + std::to_string(i * 7919); };
  for (size_t i = 1; i <= kMany; i++) add_to_hashtable(t, key(i).c_str(), node(i), 1);
  EXPECT_EQ(65535u, t->p + t->maxp_minus_1);
  for (size_t i = 1; i <= kMany; i++) ASSERT_NE(nullptr, find_in_hashtable(t, key(i).c_str()));
  std::set<std::string> all;
  int bucket = -1;
  element* chain = nullptr;
  while (const element* e = next_in_hashtable(t, &bucket, &chain)) all.insert(e->str);
  EXPECT_EQ(kMany, all.size());
  delete_hashtable(t);
}

}  // namespace
}  // namespace oz
