// The schema compiler rejects a bad schema with file and line.

#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "support.h"

namespace oz {
namespace {

// Runs mktree on a schema; its standard error, with the scratch folder's name taken out, and its status in front.
std::string run(const std::string& schema) {
  char folder[] = "/tmp/mktreeXXXXXX";
  if (!mkdtemp(folder)) return "no scratch folder";
  const std::string base = std::string(folder) + "/";
  std::ofstream(base + "t.tree") << schema;
  const std::string command = "'" OZ_MKTREE "' " + base + "t.tree " + base + "t.gen 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  std::string text;
  char buffer[256];
  while (std::fgets(buffer, sizeof buffer, pipe)) text += buffer;
  const int status = WEXITSTATUS(pclose(pipe));
  for (size_t at; (at = text.find(base)) != std::string::npos;) text.erase(at, base.size());
  if (std::system(("rm -r " + std::string(folder)).c_str()) != 0) return "scratch folder not removed";
  return std::to_string(status) + " " + text;
}

TEST(MkTree, RejectsBadSchemas) {
  for (const auto& [schema, result] : table<2>(R"(
      tree T\n0 NoT\n1 A { x:int }\n2 B : A { c:A }\n --> 0\s   tree T\n0 NoT\n1 A { any:T }\n --> 0\s
      tree T\n0 NoT\n2 A\n --> 1 t.tree:3: kind A has the wrong number\n
      tree T\n0 NoT\n\n# a comment\n1 A : B\n --> 1 t.tree:5: unknown base B\n
      tree T\n0 NoT\n1 A { x:Nothing }\n --> 1 t.tree:3: unknown kind Nothing\n
      tree T\n0 NoT\n1 NoT\n --> 1 t.tree:3: kind NoT is declared twice\n
      tree T\n0 NoT\n1 A\n2 B\n3 C : A\n --> 1 t.tree:5: kind C lies outside the range of A\n
      tree T\n0 NoT\n1 A : B\n2 B\n --> 1 t.tree:3: kind A stands before its base\n
      tree T\n0 NoT\n1 A { x int }\n --> 1 t.tree:3: expected field:type, found x\n
      tree T\n0 NoT\n1 A { x:int\n --> 1 t.tree:3: the fields are not closed by }\n
      0 NoT\n --> 1 t.tree:0: no line tells the name of the tree\n
    )"))
    EXPECT_EQ(result, run(schema)) << schema;
}

}  // namespace
}  // namespace oz
