// The link commands: answers, file sets, the kept model.

#include "al_cmds.h"

#include <filesystem>
#include <fstream>

#include "codegen.h"
#include "commands.h"
#include "ememory.h"
#include "support.h"

namespace oz {
namespace {

namespace fs = std::filesystem;

using Commands = CommandFolder;

// ---- texts

TEST(CommandTexts, StripHold) {
  const struct {
    const char* held;
    const char* name;
  } kCases[] = {
      {"", ""}, {"Hold[]", ""}, {"Hold[M`f]", "M`f"}, {"Hold[M`a[1]]", "M`a[1]"}, {"Hold[Hold[x]]", "Hold[x]"}};
  for (const auto& c : kCases) EXPECT_EQ(c.name, striphold(c.held));
  for (const char* strange : {"f", "Hold[", "hold[f]", "Hold[f] "})
    EXPECT_EQ(
        std::string("   0,  0: Fatal       Code generation requested for entity with strange name:\n") + strange + "\n",
        message_of([&] { striphold(strange); }));
}

TEST(CommandTexts, OptionsAndPaths) {
  char text[] = "  -u -o  out.m ";
  int n = 0;
  char** options = str2opts(text, &n);
  ASSERT_EQ(3, n);
  EXPECT_STREQ("-u", options[0]);
  EXPECT_STREQ("-o", options[1]);
  EXPECT_STREQ("out.m", options[2]);
  efree(options);
  char blank[] = " ";
  efree(str2opts(blank, &n));
  EXPECT_EQ(0, n);
  EXPECT_STREQ("b.c", basename("/x/a/b.c"));
  EXPECT_STREQ("b", basename("b"));
  EXPECT_STREQ("", basename("a/"));
}

// ---- file sets

TEST_F(Commands, JavaHasFilesButNoGenerator) {
  ASSERT_EQ("OK", compile(kCommandsModel));
  ASSERT_EQ("OK", open("JAVA", "s"));
  EXPECT_TRUE(contains(message_of([] { al_generate_function("Hold[M`speed]", 0); }), "Unparser: Unknown language.\n"));
  EXPECT_STREQ("OK", al_close_file());
  EXPECT_EQ("#include \"s.h\"\n\n#include \"s.icc\"\n\n", contents("s.java"));
  EXPECT_EQ("", contents("s.cc"));
}

TEST_F(Commands, AnswersWithoutASet) {
  const std::string no_file = "No file open for code generation";
  EXPECT_EQ("Invalid target language, try Fortran90, HPF, or C++", open("C", "s"));
  EXPECT_EQ("No file open, no file closed.", std::string(al_close_file()));
  EXPECT_EQ(no_file, al_generate_variable("x"));
  EXPECT_EQ(no_file, al_generate_function("x", 1));
  EXPECT_EQ(no_file, al_generate_evaluate_function("x", "y", 0));
  EXPECT_EQ(1, evaluate_function_flag);
  evaluate_function_flag = 0;
  EXPECT_EQ("Could not open errfile", open("C++", "no folder/s"));
  EXPECT_EQ(none, genlang);
  ASSERT_EQ("OK", compile("model M;"));
  EXPECT_STREQ("OK", al_open_file("C++", (folder + "s").c_str(), "TRUE"));
  EXPECT_EQ(1, cg_opt.parallel);
  EXPECT_EQ("OK", open("C++", "t"));
  EXPECT_EQ(0, cg_opt.parallel);
  EXPECT_TRUE(contains(contents("s.h"), "#endif\n")) << "the set before is closed";
}

// Every file of a set counts, whether it cannot be made or cannot be filled.
TEST_F(Commands, SetsThatCannotBeWrittenWhole) {
  ASSERT_EQ("OK", compile("model M;"));
  const struct {
    const char* lang;
    std::vector<const char*> endings;
  } kSets[] = {{"C++", {".cc", ".h", ".icc", ".tm", "if.cc", "lm.h"}},
               {"Fortran90", {".f90", "if.f90", ".f90mac", ".tm", "Ext.f90inc"}}};
  for (const auto& set : kSets)
    for (const char* ending : set.endings) {
      fs::remove(folder + "s" + ending);
      fs::create_directory(folder + "s" + ending);
      EXPECT_EQ("Is a directory", open(set.lang, "s")) << ending;
      EXPECT_EQ(none, genlang);
      fs::remove(folder + "s" + ending);
      fs::create_symlink("/dev/full", folder + "s" + ending);
      EXPECT_EQ("OK", open(set.lang, "s"));
      EXPECT_STREQ("No space left on device", al_close_file()) << ending;
      EXPECT_EQ(none, genlang);
      fs::remove(folder + "s" + ending);
    }
}

// ---- the kept model

TEST_F(Commands, FunctionsAreFoundByTheirNames) {
  ASSERT_EQ("OK", compile(kCommandsModel));
  ASSERT_EQ("OK", open("C++", "s"));
  for (const char* found : {"M`speed", "p`weight", "M`p`weight"})
    EXPECT_STREQ("OK", al_generate_function(("Hold[" + std::string(found) + "]").c_str(), 0)) << found;
  for (const char* missing : {"M`g", "speed", "M`", "17", "\"%s%n\""})
    EXPECT_EQ("Function not found: " + std::string(missing),
              al_generate_function(("Hold[" + std::string(missing) + "]").c_str(), 0));
  EXPECT_TRUE(contains(message_of([] { al_generate_function("Hold[]", 0); }), "Premature EOF"));
}

// An instance once in a file set, and again in the next one.
TEST_F(Commands, InstancesAreDeclaredOnce) {
  ASSERT_EQ("OK", compile(kCommandsModel));
  const struct {
    const char* lang;
    const char* file;
    std::vector<const char*> once;
  } kCases[] = {{"C++", "s.cc", {"double M_Tg", "M_Tw(2)", "double p_Tmass", "q_Tmass(0)"}},
                {"Fortran90", "s.f90", {"end subroutine q_set_range", "  real(zc_real) mass\n"}}};
  for (const auto& c : kCases)
    for (int set = 0; set < 3; set++) {
      ASSERT_EQ("OK", open(c.lang, "s"));
      EXPECT_STREQ("OK", al_generate_variable("Hold[M`g]"));
      EXPECT_STREQ("OK", al_generate_variable("Hold[M`w]"));
      for (const char* name : {"Hold[p]", "Hold[M`p]", "Hold[]", "Hold[q]", "Hold[]"})
        EXPECT_STREQ("OK", al_generate_variable(name)) << name;
      EXPECT_STREQ("Variable not found: M`no", al_generate_variable("Hold[M`no]"));
      EXPECT_STREQ("OK", al_close_file());
      const std::string text = contents(c.file);
      for (const char* once : c.once) {
        const size_t at = text.find(once);
        ASSERT_NE(std::string::npos, at) << once << text;
        EXPECT_EQ(std::string::npos, text.find(once, at + 1)) << once << text;
      }
    }
}

TEST_F(Commands, LongNames) {
  const std::string x = xs(499), model = "M" + x, function = "f" + x;
  ASSERT_EQ("OK",
            compile("model " + model + "; real v" + x + "; real " + function + "[real a" + x + "_] := 2*a" + x + ";"));
  ASSERT_EQ("OK", open("C++", "s"));
  EXPECT_STREQ("OK", al_generate_function(("Hold[" + model + "`" + function + "]").c_str(), 0));
  EXPECT_STREQ("OK", al_generate_variable(("Hold[" + model + "`v" + x + "]").c_str()));
  const std::string unknown = xs(5000);
  EXPECT_EQ("Function not found: " + unknown, al_generate_function(("Hold[" + unknown + "]").c_str(), 0));
  EXPECT_STREQ("OK", al_close_file());
  std::string text = contents("s.cc");
  std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });  // the lines are too long to stay whole
  EXPECT_EQ("#include\"s.h\"#include\"s.icc\"#include<math.h>double" + model + "_T" + function + "(constdouble&a" + x +
                "){return2*a" + x + ";}double" + model + "_Tv" + x + ";",
            text);
}

}  // namespace
}  // namespace oz
