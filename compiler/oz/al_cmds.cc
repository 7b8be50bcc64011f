// What the link commands do. The command line's generation options come here too.
#include "al_cmds.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

#include "codegen.h"
#include "ememory.h"
#include "oz.h"
#include "ozerrors.h"

namespace oz {

int glob_genmode_flag = 0;

namespace {

const char* const kOk = "OK";
const char* const kReject = "reject";
const char* const kNoFile = "No file open for code generation";

bool same_word(const char* a, const char* b) { return strcasecmp(a, b) == 0; }

// The language of a name; none for any other name.
Language language_named(const char* name) {
  static const struct {
    const char* name;
    Language lang;
  } kLanguages[] = {{"fortran90", fortran90}, {"hpf", hpf}, {"C++", cplusplus}, {"Java", java}};
  for (const auto& l : kLanguages)
    if (same_word(name, l.name)) return l.lang;
  return none;
}

// Whether a command may run. What earlier commands left behind is given back first.
bool begin_command() {
  collect_garbage();
  return checklicense();
}

// Ends the open set, whose language is forgotten also when it could not be written whole: its files are closed.
const char* close_set() {
  exit_code();
  if (genlang == none) return "No file open, no file closed.";
  const char* const failure = close_file_set(genlang);
  genlang = none;
  return failure ? failure : kOk;
}

const char* open_set(const char* file) {
  if (!reopen_stderr((std::string(file) + ".erf").c_str())) return "Could not open errfile";
  return create_file_set(genlang, file);
}

}  // namespace

const char* al_compile(const char* infile, const char*, const char* errfile, char* options) {
  int nr_of_opts;
  char** const opts = str2opts(options, &nr_of_opts);
  if (!checklicense()) return kReject;
  if (!reopen_stderr(errfile)) {
    efree(opts);
    return "Could not open errfile";
  }
  std::string no_name, remember_tree = "-R", model = infile;
  std::vector<char*> argv = {no_name.data(), remember_tree.data()};
  argv.insert(argv.end(), opts, opts + nr_of_opts);
  argv.push_back(model.data());
  argv.push_back(nullptr);
  efree(opts);
  return compile_model(static_cast<int>(argv.size()) - 1, argv.data()) == 0 ? kOk : "Internal error";
}

const char* al_open_file(const char* lang, const char* file, const char* parallel) {
  if (!begin_command()) return kReject;
  cg_opt.parallel = same_word(parallel, "true");
  if (genlang != none) al_close_file();
  genlang = language_named(lang);
  if (genlang == none) return "Invalid target language, try Fortran90, HPF, or C++";
  if (const char* failure = open_set(file)) {
    genlang = none;
    return failure;
  }
  init_code();
  return kOk;
}

const char* al_close_file() { return begin_command() ? close_set() : kReject; }

const char* al_generate_variable(const char* heldname) {
  if (!begin_command()) return kReject;
  if (genlang == none) return kNoFile;
  return vargen(striphold(heldname).c_str());
}

const char* al_generate_function(const char* heldname, int genmode) {
  if (!begin_command()) return kReject;
  if (genlang == none) return kNoFile;
  glob_genmode_flag = genmode;
  const char* const answer = funcgen(striphold(heldname).c_str());
  std::fflush(stderr);
  return answer;
}

// The flag stays set when there is no file: the next function with a body of its own clears it.
const char* al_generate_evaluate_function(const char* heldname, const char* body, int genmode) {
  if (!begin_command()) return kReject;
  evaluate_function_flag = 1;
  if (genlang == none) return kNoFile;
  glob_genmode_flag = genmode;
  const char* const answer = efuncgen(striphold(heldname).c_str(), body);
  evaluate_function_flag = 0;
  std::fflush(stderr);
  return answer;
}

bool checklicense() { return true; }

char** str2opts(char* str, int* nr_of_opts) {
  std::vector<char*> words;
  char* rest = nullptr;
  for (char* word = strtok_r(str, " ", &rest); word; word = strtok_r(nullptr, " ", &rest)) words.push_back(word);
  *nr_of_opts = static_cast<int>(words.size());
  // One more, so that no options are an array too.
  char** const opts = static_cast<char**>(emalloc((words.size() + 1) * sizeof(char*)));
  std::copy(words.begin(), words.end(), opts);
  opts[words.size()] = nullptr;
  return opts;
}

std::string striphold(const char* s) {
  static const std::string kHead = "Hold[";
  std::string text = s;
  if (text.empty()) return text;
  if (!text.starts_with(kHead) || !text.ends_with(']'))
    die_msg("Code generation requested for entity with strange name:\n%s", s);
  return text.substr(kHead.size(), text.size() - kHead.size() - 1);
}

const char* basename(const char* path) {
  const char* const slash = std::strrchr(path, '/');
  return slash ? slash + 1 : path;
}

}  // namespace oz
