// Pools and free lists, growing arrays, the string store and identifiers.

#include "Memory.h"

#include <cstdint>
#include <cstring>

#include "DynArray.h"
#include "Idents.h"
#include "System.h"
#include "support.h"

namespace oz {
namespace {

// Starts a test with a pool of its own.
char* start_pool() {
  InitMemory();
  return Alloc(8) + 8;
}

TEST(Memory, SmallBlocksComeFromThePoolAndAreReusedBySize) {
  char* next = start_pool();
  for (size_t size : {0, 1, 4, 8}) {
    EXPECT_EQ(next, Alloc(size)) << size;  // each gets 8 bytes
    next += 8;
  }
  EXPECT_EQ(next, Alloc(17));
  Free(17, next);
  EXPECT_EQ(next + 24, Alloc(25)) << "the free block of 24 is too small";
  EXPECT_EQ(next, Alloc(24));
}

TEST(Memory, LargeBlocksAreTakenByBestFitAndSplit) {
  start_pool();
  char* a = Alloc(200);
  char* b = Alloc(136);
  char* c = Alloc(168);
  char* d = Alloc(512);
  for (auto [size, block] : {std::pair{200, a}, {136, b}, {168, c}, {512, d}}) Free(static_cast<size_t>(size), block);
  EXPECT_EQ(c, Alloc(160)) << "168 fits better than 200";
  EXPECT_EQ(c + 160, Alloc(8)) << "what is left of 168";
  EXPECT_EQ(b, Alloc(136)) << "an exact fit";
  EXPECT_EQ(a, Alloc(130));
  EXPECT_EQ(a + 136, Alloc(64));
  EXPECT_EQ(d, Alloc(250)) << "from a higher class, when the own class has nothing";
  EXPECT_EQ(d + 256, Alloc(256));
}

TEST(Memory, TheEndOfAPoolIsNotLost) {
  char* first = start_pool();
  EXPECT_EQ(first, Alloc(10240 - 8 - 8));
  char* other = Alloc(24);
  EXPECT_NE(first + 10240 - 8 - 8, other);
  EXPECT_EQ(first + 10240 - 8 - 8, Alloc(8));
  EXPECT_EQ(other + 24, Alloc(8));
}

TEST(Memory, BigBlocksComeFromTheSystem) {
  char* next = start_pool();
  unsigned long before = MemoryUsed;
  char* a = Alloc(10239);
  EXPECT_EQ(10240u, MemoryUsed - before);
  EXPECT_EQ(next, Alloc(8)) << "the pool is untouched";
  Free(10239, a);
  EXPECT_EQ(a, Alloc(10240));
  Free(10240, a);
  EXPECT_EQ(a, Alloc(8192)) << "the free block is split";

  before = MemoryUsed;
  char* huge = Alloc(size_t{1} << 25);
  ASSERT_NE(nullptr, huge);
  Free(size_t{1} << 25, huge);
  EXPECT_EQ(before, MemoryUsed) << "a block beyond the size classes goes back";
  EXPECT_EQ(nullptr, Alloc(SIZE_MAX));
  InitMemory();
}

TEST(DynArray, StrideAndCount) {
  for (const auto& [size, stride, asked, count] : table<4>(R"(
      1 --> 1 --> 5 --> 8          2 --> 2 --> 5 --> 6          3 --> 4 --> 5 --> 5          4 --> 4 --> 1 --> 1
      5 --> 8 --> 3 --> 3          8 --> 8 --> 1 --> 1          9 --> 16 --> 1 --> 1         6 --> 8 --> 2 --> 2
    )")) {
    EXPECT_EQ(std::stoul(stride), AlignedSize(std::stoul(size))) << std::stoul(size);
    char* a;
    size_t n = std::stoul(asked);
    MakeArray(&a, &n, std::stoul(size));
    EXPECT_EQ(std::stoul(count), n) << std::stoul(size);
    ReleaseArray(&a, &n, std::stoul(size));
    EXPECT_EQ(nullptr, a);
  }
}

TEST(DynArray, GrowsWithItsContents) {
  char* a;
  size_t n = 3;
  MakeArray(&a, &n, sizeof(int));
  for (int i = 0; i < 3; i++) reinterpret_cast<int*>(a)[i] = i + 7;
  char* old = a;
  ExtendArray(&a, &n, sizeof(int));
  EXPECT_EQ(6u, n);
  for (int i = 0; i < 3; i++) EXPECT_EQ(i + 7, reinterpret_cast<int*>(a)[i]);
  EXPECT_EQ(old, Alloc(3 * sizeof(int))) << "the old block was given back";
  ReleaseArray(&a, &n, sizeof(int));

  testing::internal::CaptureStderr();
  n = SIZE_MAX / 2;
  MakeArray(&a, &n, 8);
  EXPECT_EQ("MakeArray: out of memory\n", testing::internal::GetCapturedStderr());
  EXPECT_EQ(nullptr, a);
}

// Other users of the same memory must not be hit by the store handing back the ends of its blocks.
TEST(StringMem, StringsStayWhole) {
  std::vector<tStringRef> refs;
  std::vector<std::string> texts;
  for (size_t i = 0; i < 3000; i++) {
    texts.emplace_back((i * 37) % 90 + (i % 500 == 3 ? 30000 : 0), static_cast<char>('a' + i % 26));
    refs.push_back(PutString(texts[i].data(), texts[i].size()));
    std::memset(Alloc(i % 100), 0xff, i % 100);
  }
  for (size_t i = 0; i < refs.size(); i++) {
    std::string out(LengthSt(refs[i]) + 1, '?');
    StGetString(refs[i], out.data());
    ASSERT_EQ(texts[i] + '\0', out) << i;
  }
}

TEST(Idents, EqualTextsShareANumber) {
  EXPECT_EQ(NoIdent, MakeIdent(nullptr, 0));
  tIdent wheel = MakeIdent("wheelbase", 5);
  EXPECT_EQ(wheel, MakeIdent("wheel", 5));
  EXPECT_NE(wheel, MakeIdent("wheelbase", 9));
  EXPECT_NE(MakeIdent("a\0b", 3), MakeIdent("a\0c", 3));
  std::string text(70000, 'x');
  tIdent big = MakeIdent(text.data(), text.size());
  EXPECT_EQ(70000u, LengthSt(GetStringRef(big)));
  testing::internal::CaptureStdout();
  WriteIdent(stdout, big);
  EXPECT_EQ(text, testing::internal::GetCapturedStdout());
}

TEST(Idents, ManyIdentifiers) {
  constexpr int kMany = 100000;
  tIdent first = MaxIdent() + 1;
  for (int round = 0; round < 2; round++) {
    for (int i = 0; i < kMany; i++) {
      std::string s = "many_" + std::to_string(i);
      ASSERT_EQ(first + i, MakeIdent(s.data(), s.size()));
    }
  }
  EXPECT_EQ(first + kMany - 1, MaxIdent());
  char text[20];
  GetString(first + 77777, text);
  EXPECT_STREQ("many_77777", text);
}

// The bucket is (first + 11 * last + 26 * length) & 255 over signed characters:
// "a~?b": 97 + 11 * 98 + 104 = 1279, 255; the byte e9 alone: -23 - 253 + 26 = -250, 6. The newest comes first.
TEST(Idents, BucketsAreListed) {
  MakeIdent("a~1b", 4);
  MakeIdent("a~2b", 4);
  MakeIdent("\xe9", 1);
  testing::internal::CaptureStdout();
  WriteHashTable();
  std::string list = "\n" + testing::internal::GetCapturedStdout();
  auto line = [&list](const char* head) {
    size_t at = list.find(head);
    return at == std::string::npos ? "" : list.substr(at + 1, list.find('\n', at + 1) - at - 1);
  };
  EXPECT_NE(std::string::npos, line("\n  255").find(" a~2b a~1b"));
  EXPECT_NE(std::string::npos, line("\n    6").find(" \xe9"));
  char count[40];
  std::snprintf(count, sizeof count, "Idents = %5d", MaxIdent());
  EXPECT_EQ(count, line("\nIdents"));
}

}  // namespace
}  // namespace oz
