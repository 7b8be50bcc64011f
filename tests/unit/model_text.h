// Models from source text, as far as a test wants them taken.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include "al_cmds.h"
#include "dig.h"
#include "efunc.h"
#include "env.h"
#include "flatten.h"
#include "name.h"
#include "ozt.h"
#include "parse.h"
#include "scan.h"
#include "support.h"
#include "unroll.h"

namespace oz {

// A file without a place in the file system, open as long as the object lives.
class SourceFile {
 public:
  explicit SourceFile(const std::string& text) : file_(memfd_create("source", MFD_CLOEXEC)) {
    if (write(file_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) std::abort();
  }
  ~SourceFile() { close(file_); }
  SourceFile(const SourceFile&) = delete;
  SourceFile& operator=(const SourceFile&) = delete;
  std::string name() const { return "/proc/self/fd/" + std::to_string(file_); }

  // Makes it the scanner's only input.
  void begin() const {
    scan_BeginScanner();
    scan_BeginFile(name().c_str());
  }

 private:
  int file_;
};

struct ModelText : Trees {
  tIndex instances = nullptr;

  ModelText() {
    init_oz_index();
    init_env();
  }

  // The tree of "model M;" and the text, as the parser leaves it; then behind each further pass.
  static tAsynt parsed(const std::string& text) {
    const SourceFile file("model M; " + text);
    init_env();
    file.begin();
    EXPECT_EQ(0, parse()) << text;
    Closeparse();
    return model_tree;
  }
  static tAsynt qualified(const std::string& text) {
    tAsynt model = parsed(text);
    Qualify(&model);
    return model;
  }
  static tAsynt transformed(const std::string& text) {
    tAsynt model = qualified(text);
    ozt(&model);
    return model;
  }
  tAsynt unrolled(const std::string& text) {
    tAsynt model = transformed(text);
    unroll(&model, &instances);
    EXPECT_TRUE(CheckAsynt(model)) << text;
    EXPECT_TRUE(AsyntMarksAreZero(model)) << text;
    return model;
  }
  tAsynt flat(const std::string& text) {
    tAsynt model = unrolled(text);
    flatten(&model);
    return model;
  }

  // Keeps the model for the commands.
  tAsynt keep(const std::string& text) {
    Begintype();
    const tAsynt model = flat(text);
    FixNests(model);
    remember(model, GetCompilables(model), instances);
    return model;
  }

  static std::string printed(tAsynt t) { return unparse_string(t); }
};

}  // namespace oz
