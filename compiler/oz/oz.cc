// The compiler run: options, files, the passes in their order.
//
// front_half reads as the list of passes: parse, Qualify, ozt, unroll, flatten, with a dump of the tree between them
// when -t asks for it. Test builds (OZ_CHECK_PASSES) stop behind the first pass that leaves a broken tree or marks.

#include "oz.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "env.h"
#include "flatten.h"
#include "index.h"
#include "name.h"
#include "operator_name.h"
#include "ozerrors.h"
#include "ozt.h"
#include "parse.h"
#include "progress.h"
#include "scan.h"
#include "unparse.h"
#include "unroll.h"

namespace oz {

FILE* errf = nullptr;

namespace {

// Exit status for options and files that cannot be used.
constexpr int kFileStatus = 5;

// Which entity a run generates.
enum code { no_code = 0, fun = 1, var = 2, eval = 3 };

// What the arguments ask for.
struct Options {
  bool remember_tree_flag = false;
  bool unparse_flag = false;
  bool query_tree_flag = false;
  bool daemon_flag = false;
  bool genmode_flag = false;
  bool parallel_flag = false;
  code codegen_flag = no_code;
  const char* codegen_name = nullptr;
  const char* codegen_eval_file_name = nullptr;
  const char* codegen_lang = "Fortran90";
  const char* output_file_name = nullptr;
  const char* tree_file_name = nullptr;
  const char* input_file_name = nullptr;
};

FILE* output_file = nullptr;
FILE* tree_file = nullptr;

// The copy of the input file's name that messages quote lines from.
std::string quoted_file_name;

void set_codegen(Options* o, code flag, const char* name) {
  o->codegen_flag = flag;
  o->codegen_name = name;
}

void set_option(Options* o, int letter) {
  switch (letter) {
    case 's': return;  // its only effect is the choice of the mode
    case 'R': o->remember_tree_flag = true; return;
    case 'V': verbose_flag = 1; return;
    case 'd': o->daemon_flag = true; return;
    case 'u': o->unparse_flag = true; return;
    case 'T': o->query_tree_flag = true; return;
    case 'p': o->parallel_flag = true; return;
    case 'm': o->genmode_flag = true; return;
    case 't': o->tree_file_name = optarg; return;
    case 'o': o->output_file_name = optarg; return;
    case 'f': set_codegen(o, fun, optarg); return;
    case 'v': set_codegen(o, var, optarg); return;
    case 'e': set_codegen(o, eval, optarg); return;
    case 'E': o->codegen_eval_file_name = optarg; return;
    case 'l': o->codegen_lang = optarg; return;
    default: print_usage_and_exit();
  }
}

Options scan_options(int argc, char** argv) {
  Options o;
  int letter;
  while ((letter = getopt(argc, argv, "sRVduTpmt:o:f:v:e:E:l:")) != -1) set_option(&o, letter);
  if (argc - optind != 1) print_usage_and_exit();
  o.input_file_name = argv[optind];
  return o;
}

[[noreturn]] void file_failure(const char* what, const char* name) {
  std::fprintf(stderr, "%s: %s\n", what, name);
  std::exit(kFileStatus);
}

FILE* open_for_writing(const char* name, const char* failure) {
  FILE* f = std::fopen(name, "w");
  if (!f) file_failure(failure, name);
  return f;
}

void open_files(const Options& o) {
  scan_BeginScanner();
  if (std::strcmp(o.input_file_name, "-") != 0) scan_BeginFile(o.input_file_name);
  quoted_file_name = o.input_file_name;
  error_message_uses_input_file = quoted_file_name.c_str();
  if (o.daemon_flag && !o.output_file_name) {
    std::fputs("-d must be used with -o!\n", stderr);
    std::exit(kFileStatus);
  }
  tree_file = o.tree_file_name ? open_for_writing(o.tree_file_name, "Can't open tree file") : nullptr;
  if (o.output_file_name) output_file = open_for_writing(o.output_file_name, "Can't open output file");
}

// Ends a standard stream for the reader at the other end; what is written to it later is lost, silently.
void close_standard_stream(FILE* f, int descriptor) {
  std::fflush(f);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0) return;
  dup2(nowhere, descriptor);
  close(nowhere);
}

// Flushes and closes a file that was written; a file that could not be written whole ends the run.
void close_written(FILE* f, const char* failure, const char* name) {
  bool failed = std::ferror(f) != 0;
  if (std::fflush(f) != 0) failed = true;
  if (f == stdout)
    close_standard_stream(f, STDOUT_FILENO);
  else if (std::fclose(f) != 0)
    failed = true;
  if (failed) file_failure(failure, name);
}

#ifdef OZ_CHECK_PASSES
void check_pass(const char* pass) {
  if (!AsyntMarksAreZero(model_tree)) die_msg("marks are left behind %s", pass);
  if (!CheckAsynt(model_tree)) die_msg("the tree is broken behind %s", pass);
  if (!AsyntMarksAreZero(model_tree)) die_msg("marks are left behind the check of %s", pass);
}
#else
void check_pass(const char*) {}
#endif

void end_pass(const char* pass) {
  check_pass(pass);
  ProgressPass(pass);
}

void dump(const char* heading) {
  if (!tree_file) return;
  std::fputs(heading, tree_file);
  WriteAsynt(tree_file, model_tree);
}

// From the source text to the flat tree. CheckAsynt reports a broken tree itself, and the run goes on with it.
void front_half(tIndex* instances) {
  bigbuf_init();
  init_oz_index();
  parse();
  Closeparse();
  end_pass("parse");
  CheckAsynt(model_tree);
  init_env();
  init_operator_name();
  dump("Before Qualify:\n");
  Qualify(&model_tree);
  end_pass("Qualify");
  CheckAsynt(model_tree);
  dump("Before oz.trafo:\n");
  ozt(&model_tree);
  end_pass("ozt");
  dump("\nAfter ozt.trafo:\n");
  unroll(&model_tree, instances);
  end_pass("unroll");
  flatten(&model_tree);
  end_pass("flatten");
  CheckAsynt(model_tree);
  dump("\nAfter unroll.trafo:\n");
}

// The definitions for the host, and behind them what makes formal parameters print without their context.
void write_definitions(const Options& o) {
  unparse_filep(output_file, model_tree);
  std::fputs("\nIf[! Or @@ ((# == \"P$`\")& /@ $ContextPath), AppendTo[$ContextPath, \"P$`\"]];\n", output_file);
  close_written(output_file, "Can't write output file", o.output_file_name ? o.output_file_name : "standard output");
  output_file = nullptr;
  ProgressPass("unparse");
}

}  // namespace

int installed_by_alg(int argc, char** argv) {
  for (int i = argc - 1; i >= 1; i--)
    if (std::strcmp(argv[i], "-s") == 0) return 0;
  return 1;
}

void print_usage_and_exit() {
  std::puts(
      "usage: oz -s [-uVTRdpm] [-o FILE] [-t FILE] [-f NAME | -v NAME | -e NAME -E FILE] [-l LANGUAGE] "
      "MODEL (\"-\" is standard input)");
  std::exit(0);
}

int standalone_main(int argc, char** argv) {
  BeginProgress();
  output_file = stdout;
  errf = stderr;
  disable_features();
  const Options o = scan_options(argc, argv);
  open_files(o);
  tIndex instances = nullptr;
  front_half(&instances);
  if (tree_file) close_written(tree_file, "Can't write tree file", o.tree_file_name);
  tree_file = nullptr;
  if (o.unparse_flag) write_definitions(o);
  if (o.query_tree_flag) QueryAsynt(model_tree);
  if (o.codegen_flag != no_code)
    die_msg("This build generates no code: -f, -v and -e cannot be used (%s)", o.codegen_name);
  if (o.daemon_flag || o.remember_tree_flag)
    die_msg("This build keeps no model for later commands: -d and -R cannot be used");
  if (output_file && output_file != stdout) close_written(output_file, "Can't write output file", o.output_file_name);
  scan_CloseScanner();
  close_standard_stream(stderr, STDERR_FILENO);
  return 0;
}

}  // namespace oz
