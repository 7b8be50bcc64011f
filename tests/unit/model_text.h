// Models from source text, and trees as text.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "Asynt.h"
#include "env.h"
#include "operator_name.h"
#include "parse.h"
#include "scan.h"
#include "unparse.h"

namespace oz {

struct ModelText : testing::Test {
  ModelText() {
    bigbuf_init();
    init_operator_name();
    init_oz_index();
    init_env();
  }

  // The tree of "model M;" and the text, as the parser leaves it.
  static tAsynt parsed(const std::string& text) {
    char name[] = "/tmp/modeltextXXXXXX";
    close(mkstemp(name));
    std::ofstream(name) << "model M; " << text;
    init_env();
    scan_BeginScanner();
    scan_BeginFile(name);
    EXPECT_EQ(0, parse()) << text;
    Closeparse();
    unlink(name);
    return model_tree;
  }

  static std::string printed(tAsynt t) { return unparse_string(t); }
};

}  // namespace oz
