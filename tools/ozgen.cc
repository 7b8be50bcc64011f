// Generates one file set from a model, for build systems:
//
//   ozgen [-w] [-p] LANGUAGE DIRECTORY NAME MODEL ENTITY...
//
// writes DIRECTORY/NAME.cc and so on. An entity is a function, f:Model/area, a function that the host answers,
// c:Model/ask, or a variable, v:Model/size; "v:" alone stands for all typed variables. With -w there are wrappers for
// calls over the link, but none for what the host answers. With -p parallel loops become tasks. Messages go to standard
// error. The status is 0 if there was no error among them: the files are complete then.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "al_cmds.h"

namespace {

namespace fs = std::filesystem;

// Messages go to files while the commands run: those of the compilation and those of the file set. Both are shown at
// the end, which a fatal error may bring at any time.
struct Messages {
  std::string files[2];
  FILE* shown = nullptr;
  bool complete = false;
} messages;

bool is_error(const std::string& line) {
  return line.find(": Error") != std::string::npos || line.find(": Fatal") != std::string::npos ||
         line.find(": Internal") != std::string::npos;
}

// Shows the messages of a file; whether there is no error among them.
bool show(const std::string& file) {
  std::ifstream in(file);
  bool good = true;
  for (std::string line; std::getline(in, line);) {
    std::fprintf(messages.shown, "%s\n", line.c_str());
    good = good && !is_error(line);
  }
  return good;
}

void finish() {
  std::fflush(nullptr);
  bool good = messages.complete;
  for (const std::string& file : messages.files) good = show(file) && good;
  fs::remove(messages.files[0]);
  std::fflush(messages.shown);
  _exit(good ? 0 : 1);
}

void need_ok(const std::string& answer, const char* what) {
  if (answer == "OK") return;
  std::fprintf(messages.shown, "%s: %s\n", what, answer.c_str());
  std::exit(1);
}

void generate(std::string entity, bool wrappers) {
  std::replace(entity.begin(), entity.end(), '/', '`');
  const std::string name = "Hold[" + entity.substr(2) + "]";
  if (entity.compare(0, 2, "v:") == 0)
    need_ok(oz::al_generate_variable(name.c_str()), entity.c_str());
  else
    need_ok(oz::al_generate_function(name.c_str(), wrappers && entity[0] == 'f' ? 0 : 1), entity.c_str());
}

int usage() {
  std::fputs("usage: ozgen [-w] [-p] LANGUAGE DIRECTORY NAME MODEL {f:FUNCTION | c:CALLBACK | v:VARIABLE}...\n",
             stderr);
  return 2;
}

bool is_entity(const char* text) { return *text && std::strchr("fcv", *text) && text[1] == ':'; }

}  // namespace

int main(int argc, char** argv) {
  bool wrappers = false, tasks = false;
  char** args = argv + std::min(argc, 1);
  for (; args < argv + argc && **args == '-'; args++) {
    wrappers = wrappers || std::strcmp(*args, "-w") == 0;
    tasks = tasks || std::strcmp(*args, "-p") == 0;
    if (std::strcmp(*args, "-w") != 0 && std::strcmp(*args, "-p") != 0) return usage();
  }
  if (argv + argc - args < 5 || !std::all_of(args + 4, argv + argc, is_entity)) return usage();
  const std::string name = args[2];
  std::error_code error;
  const fs::path model = fs::absolute(args[3], error);
  fs::current_path(args[1], error);
  messages.shown = fdopen(dup(STDERR_FILENO), "w");
  if (error || !messages.shown) {
    std::fprintf(stderr, "ozgen: no directory %s\n", args[1]);
    return 1;
  }
  messages.files[0] = name + ".log";
  messages.files[1] = name + ".erf";
  std::atexit(finish);
  std::string options;
  need_ok(oz::al_compile(model.c_str(), "", messages.files[0].c_str(), options.data()), model.c_str());
  need_ok(oz::al_open_file(args[0], name.c_str(), tasks ? "True" : "False"), args[0]);
  for (char** entity = args + 4; entity < argv + argc; entity++) generate(*entity, wrappers);
  need_ok(oz::al_close_file(), "closing the files");
  messages.complete = true;
  return 0;
}
