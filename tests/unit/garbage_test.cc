// What many compiles and commands in one process leave in memory: nothing that grows, and nothing that is still used is
// given back (which sanitizer builds see).
#include <gtest/gtest.h>
#include <malloc.h>

#include <fstream>
#include <string>

#include "Asynt.h"
#include "Memory.h"
#include "al_cmds.h"
#include "commands.h"

namespace oz {
namespace {

struct Garbage : CommandFolder {
  void compile() const { EXPECT_EQ("OK", CommandFolder::compile(kCommandsModel, "-u -o " + folder + "m.m")); }
  void session(const char* language) const {
    EXPECT_EQ("OK", open(language, "m"));
    EXPECT_STREQ("OK", al_generate_variable("Hold[]"));
    for (const char* name : {"Hold[M`speed]", "Hold[M`norm]", "Hold[p`weight]"})
      EXPECT_STREQ("OK", al_generate_function(name, 0));
    EXPECT_STREQ("OK", al_generate_evaluate_function("Hold[M`speed]", "Times[M`g, P$`h, P$`h]", 0));
    EXPECT_STREQ("Function not found: M`none", al_generate_function("Hold[M`none]", 0));
    EXPECT_STREQ("OK", al_close_file());
  }
  // The files of a session and the text for the host.
  std::string files() const {
    std::string all;
    for (const char* name : {"m.m", "m.cc", "m.h", "m.tm", "mif.cc", "m.f90"}) all += contents(name);
    return all;
  }
};

size_t memory() { return Asynt_HeapUsed + MemoryUsed + mallinfo2().uordblks; }

TEST_F(Garbage, ManyCompilesTakeTheMemoryOfOne) {
  constexpr size_t kSlack = 500;  // what the system's allocator holds back for itself, until it has seen all sizes
  for (int i = 0; i < 10; i++) compile();
  const size_t before = memory(), trees = Asynt_HeapUsed;
  for (int i = 0; i < 200; i++) compile();
  EXPECT_EQ(trees, Asynt_HeapUsed);
  EXPECT_LT(memory(), before + 200 * kSlack);
}

TEST_F(Garbage, ManyCommandsTakeABoundedShare) {
  compile();
  session("Fortran90");
  session("C++");
  const std::string first = files();
  for (int i = 0; i < 20; i++) session(i % 2 ? "C++" : "Fortran90");
  const size_t before = memory();
  for (int i = 0; i < 400; i++) session(i % 2 ? "C++" : "Fortran90");
  EXPECT_LT(memory(), before + (3 << 20));
  EXPECT_EQ(first, files()) << "the model has suffered";
}

// The variables of an open file set are declared when it is closed, whatever is compiled in between.
TEST_F(Garbage, ACompileBetweenLeavesAnOpenFileSetWhole) {
  compile();
  session("C++");
  const std::string wanted = files();
  EXPECT_EQ("OK", open("C++", "m"));
  EXPECT_STREQ("OK", al_generate_variable("Hold[]"));
  for (const char* name : {"Hold[M`speed]", "Hold[M`norm]"}) EXPECT_STREQ("OK", al_generate_function(name, 0));
  compile();
  EXPECT_STREQ("OK", al_generate_function("Hold[p`weight]", 0));
  EXPECT_STREQ("OK", al_generate_evaluate_function("Hold[M`speed]", "Times[M`g, P$`h, P$`h]", 0));
  EXPECT_STREQ("OK", al_close_file());
  EXPECT_EQ(wanted, files());
  compile();
  session("C++");
  EXPECT_EQ(wanted, files());
}

}  // namespace
}  // namespace oz
