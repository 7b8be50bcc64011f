// Tests of link commands: each has a folder of its own for file sets, and gets standard error back at the end, which a
// compile sends to its log. The model has what variables and functions can be.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "al_cmds.h"

namespace oz {

inline const char* const kCommandsModel = R"(model M;
real g with unit = "m/s^2" := 9.81;
real array[2] w := {1.0, 2.0};
real speed[real h_] := Sqrt[2*g*h];
real norm[int n_, real array[n] x_] :=
  Module[{real s = 0.0, int i}, For[i = 1, i <= n, i = i + 1, s = s + x[[i]]^2]; Sqrt[s]];
class Body
  reveal:
    real mass with unit = "kg";
    real weight[real k_] := k*mass*g;
    f := SetAttr[mass, "unit", "t"];
end Body;
instance p inherits Body end p;
instance q[i] inherits Body end q;
)";

struct CommandFolder : testing::Test {
  char folder_name[32] = "/tmp/commandsXXXXXX";
  std::string folder = std::string(mkdtemp(folder_name)) + "/";
  int saved_stderr = dup(STDERR_FILENO);

  ~CommandFolder() override {
    std::fflush(stderr);
    al_close_file();
    dup2(saved_stderr, STDERR_FILENO);
    close(saved_stderr);
    std::filesystem::remove_all(folder);
  }

  std::string compile(const std::string& text, std::string options = "") const {
    std::ofstream(folder + "m.oz") << text;
    return al_compile((folder + "m.oz").c_str(), "", (folder + "m.log").c_str(), options.data());
  }
  std::string open(const char* lang, const std::string& file) const {
    return al_open_file(lang, (folder + file).c_str(), "False");
  }

  // Of a file of the folder.
  std::string contents(const std::string& file) const {
    std::ifstream f(folder + file, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), {}};
  }
};

}  // namespace oz
