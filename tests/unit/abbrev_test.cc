// Abbreviations of long identifiers: how they count up, and that each name is defined once.

#include "abbrev.h"

#include "support.h"

namespace oz {
namespace {

const std::string kStart = "abcdefghijklmnopqrstuvwxyzabcd";  // 30 characters

// The definitions that a list of names gives; the abbreviations start afresh.
std::string definitions(const std::vector<std::string>& names) {
  OutputStream macros;
  init_abbrev(macros.f, 31);
  for (const std::string& name : names) remember_long(name.c_str());
  init_abbrev(nullptr, 31);
  return macros.str();
}

std::vector<std::string> eleven(const std::string& start) {
  std::vector<std::string> names;
  for (char c = 'a'; c <= 'k'; c++) names.push_back(start + c);
  return names;
}

// The number grows to the left over the name's own characters: ...d9, ...c10 in place of ...cd, ...1100.
TEST(Abbrev, CountsUpAndDefinesOnce) {
  std::vector<std::string> names;
  std::string expected;
  for (int i = 0; i <= 1100; i++) {
    const std::string number = std::to_string(i);
    names.push_back(kStart + "_" + number);
    expected += "#define " + names.back() + " " + kStart.substr(0, 31 - number.size()) + number + "\n";
  }
  names.push_back(names[7]);
  EXPECT_EQ(expected, definitions(names));
}

// The name's own digits are counted on: a 9 carries, and the fourth character is the last that can change. A number
// that another start has taken is passed over.
TEST(Abbrev, CarriesIntoTheName) {
  EXPECT_TRUE(contains(definitions(eleven(kStart.substr(0, 28) + "49")), " " + kStart.substr(0, 28) + "500\n"));
  EXPECT_TRUE(contains(definitions(eleven("aaa8" + std::string(26, '9'))), " aaa9" + std::string(27, '0') + "\n"));
  EXPECT_EXIT(definitions(eleven("aaa" + std::string(27, '9'))), testing::ExitedWithCode(1),
              "Internal error in line [0-9]+ of abbrev");
  const std::string stem = kStart.substr(0, 29);
  std::vector<std::string> names = eleven(stem + "0");
  names.insert(names.begin(), stem + "1x");
  EXPECT_TRUE(contains(definitions(names), "#define " + stem + "0k " + stem + "11\n"));
}

}  // namespace
}  // namespace oz
