// Tests of link commands: each has a folder of its own for file sets, and gets standard error back at the end, which a
// compile sends to its log.
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

  // Of a file of the folder.
  std::string contents(const std::string& file) const {
    std::ifstream f(folder + file, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), {}};
  }
};

}  // namespace oz
