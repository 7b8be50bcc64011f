// The compiler run: options, files, the passes in their order.
//
// front_half reads as the list of passes: parse, Qualify, ozt, unroll, flatten, with a dump of the tree between them
// when -t asks for it. Test builds (OZ_CHECK_PASSES) stop behind the first pass that leaves a broken tree or marks.
// Behind it the model can be printed, browsed, made into a file set with one entity, and kept for later commands.

#include "oz.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "ahead.h"
#include "codegen.h"
#include "dig.h"
#include "driver_parts.h"
#include "env.h"
#include "flatten.h"
#include "index.h"
#include "name.h"
#include "operator_name.h"
#include "ozerrors.h"
#include "ozt.h"
#include "parse.h"
#include "pompout.h"
#include "progress.h"
#include "scan.h"
#include "server.h"
#include "sheepout.h"
#include "unparse.h"
#include "unroll.h"

namespace oz {

FILE* errf = nullptr;

namespace {

// How a run ends: well, with wrong options, and with options or files that cannot be used.
constexpr int kDone = 0;
constexpr int kUsage = -1;
constexpr int kFileStatus = 5;

FILE* output_file = nullptr;
FILE* tree_file = nullptr;

// The copy of the input file's name that messages quote lines from.
std::string quoted_file_name;

void set_codegen(Options* o, code flag, const char* name) {
  o->codegen_flag = flag;
  o->codegen_name = name;
}

// Whether there is such an option.
bool set_option(Options* o, int letter) {
  switch (letter) {
    case 's': return true;  // its only effect is the choice of the mode
    case 'R': o->remember_tree_flag = true; return true;
    case 'V': verbose_flag = 1; return true;
    case 'd': o->daemon_flag = true; return true;
    case 'u': o->unparse_flag = true; return true;
    case 'T': o->query_tree_flag = true; return true;
    case 'p': o->parallel_flag = true; return true;
    case 'm': o->genmode_flag = true; return true;
    case 't': o->tree_file_name = optarg; return true;
    case 'o': o->output_file_name = optarg; return true;
    case 'f': set_codegen(o, fun, optarg); return true;
    case 'v': set_codegen(o, var, optarg); return true;
    case 'e': set_codegen(o, eval, optarg); return true;
    case 'E': o->codegen_eval_file_name = optarg; return true;
    case 'l': o->codegen_lang = optarg; return true;
    default: return false;
  }
}

// Whether the arguments are such as a run can use. Each run looks at its own arguments from the first one on.
bool scan_options(int argc, char** argv, Options* o) {
  optind = 0;
  for (int letter; (letter = getopt(argc, argv, "sRVduTpmt:o:f:v:e:E:l:")) != -1;)
    if (!set_option(o, letter)) return false;
  if (argc - optind != 1) return false;
  o->input_file_name = argv[optind];
  return true;
}

bool open_for_writing(FILE** f, const char* name, const char* failure) {
  *f = std::fopen(name, "w");
  if (!*f) std::fprintf(stderr, "%s: %s\n", failure, name);
  return *f != nullptr;
}

bool open_files(const Options& o) {
  scan_BeginScanner();
  if (std::strcmp(o.input_file_name, "-") != 0) scan_BeginFile(o.input_file_name);
  quoted_file_name = o.input_file_name;
  error_message_uses_input_file = quoted_file_name.c_str();
  if (o.daemon_flag && !o.output_file_name) {
    std::fputs("-d must be used with -o!\n", stderr);
    return false;
  }
  if (o.tree_file_name && !open_for_writing(&tree_file, o.tree_file_name, "Can't open tree file")) return false;
  return !o.output_file_name || open_for_writing(&output_file, o.output_file_name, "Can't open output file");
}

// Ends a standard stream for the reader at the other end; what is written to it later is lost, silently.
void close_standard_stream(FILE* f, int descriptor) {
  std::fflush(f);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0) return;
  dup2(nowhere, descriptor);
  close(nowhere);
}

// Flushes and closes a file that was written; whether it was written whole. Without a file there is nothing to do.
bool close_written(FILE** stream, const char* failure, const char* name) {
  FILE* const f = *stream;
  *stream = nullptr;
  if (!f) return true;
  bool failed = std::ferror(f) != 0;
  if (std::fflush(f) != 0) failed = true;
  if (f == stdout)
    close_standard_stream(f, STDOUT_FILENO);
  else if (std::fclose(f) != 0)
    failed = true;
  if (failed) std::fprintf(stderr, "%s: %s\n", failure, name);
  return !failed;
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

// Whether the definitions for the host are all that is wanted of the flat tree. The objects are printed as soon as they
// are complete, then, and their nodes serve the next ones: a big model becomes several times as big when it is
// unrolled.
bool only_definitions(const Options& o) {
  return o.unparse_flag && !tree_file && !o.query_tree_flag && o.codegen_flag == no_code && !o.daemon_flag &&
         !o.remember_tree_flag;
}

// From the source text to the flat tree, without the objects that are printed ahead. CheckAsynt reports a broken tree
// itself, and the run goes on with it.
void front_half(PrintAhead* ahead, tIndex* instances) {
  forget_model();
  bigbuf_init();
  init_oz_index();
  parse();
  Closeparse();
  end_pass("parse");
  CheckAsynt(model_tree);
  init_env();
  finit_operator_name();
  cpinit_operator_name();
  init_operator_name();
  dump("Before Qualify:\n");
  Qualify(&model_tree);
  end_pass("Qualify");
  CheckAsynt(model_tree);
  dump("Before oz.trafo:\n");
  ozt(&model_tree);
  end_pass("ozt");
  dump("\nAfter ozt.trafo:\n");
  if (ahead)
    unroll_for_reader(&model_tree, ahead);
  else
    unroll(&model_tree, instances);
  if (ahead && Asynt_Kind(model_tree) == kPackage) ahead->complete(model_tree);
  end_pass("unroll");
  flatten(&model_tree);
  end_pass("flatten");
  CheckAsynt(model_tree);
  dump("\nAfter unroll.trafo:\n");
}

// The definitions for the host, and behind them what makes formal parameters print without their context.
bool write_definitions(const Options& o, const PrintAhead* ahead) {
  if (ahead && Asynt_Kind(model_tree) == kPackage)
    ahead->write(output_file, model_tree);
  else
    unparse_filep(output_file, model_tree);
  std::fputs("\nIf[! Or @@ ((# == \"P$`\")& /@ $ContextPath), AppendTo[$ContextPath, \"P$`\"]];\n", output_file);
  const char* const name = o.output_file_name ? o.output_file_name : "standard output";
  if (!close_written(&output_file, "Can't write output file", name)) return false;
  ProgressPass("unparse");
  return true;
}

// From here on the model survives the run.
void keep_model(tIndex instances) {
  dump("\nBefore FixNests :\n");
  if (tree_file) std::fflush(tree_file);
  FixNests(model_tree);
  dump("\nAfter FixNests :\n");
  if (tree_file) std::fflush(tree_file);
  remember(model_tree, GetCompilables(model_tree), instances);
}

// What is done with the flat tree. False when a file could not be written whole.
bool back_half(const Options& o, const PrintAhead* ahead, tIndex instances) {
  if (o.unparse_flag && !write_definitions(o, ahead)) return false;
  if (o.query_tree_flag) QueryAsynt(model_tree);
  if (o.codegen_flag != no_code) {
    FixNests(model_tree);
    remember(model_tree, GetCompilables(model_tree), instances);
    generate_entity(o);
  }
  if (o.daemon_flag || o.remember_tree_flag) keep_model(instances);
  if (!close_written(&tree_file, "Can't write tree file", o.tree_file_name)) return false;
  if (output_file == stdout) return true;
  return close_written(&output_file, "Can't write output file", o.output_file_name);
}

void close_files() {
  if (tree_file) std::fclose(tree_file);
  if (output_file && output_file != stdout) std::fclose(output_file);
  tree_file = nullptr;
  output_file = nullptr;
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

int compile_model(int argc, char** argv) {
  BeginProgress();
  tree_file = nullptr;
  output_file = stdout;
  errf = stderr;
  disable_features();
  Options o;
  if (!scan_options(argc, argv, &o)) return kUsage;
  tIndex instances = nullptr;
  bool done = open_files(o);
  if (done) {
    PrintAhead printing;
    PrintAhead* const ahead = only_definitions(o) ? &printing : nullptr;
    front_half(ahead, &instances);
    done = back_half(o, ahead, instances);
    scan_CloseScanner();
  }
  close_files();
  if (!done) return kFileStatus;
  if (o.daemon_flag) return do_fork(o.output_file_name);
  close_standard_stream(stderr, STDERR_FILENO);
  return kDone;
}

int standalone_main(int argc, char** argv) {
  const int status = compile_model(argc, argv);
  if (status == kUsage) print_usage_and_exit();
  if (status != kDone) std::exit(status);
  return status;
}

}  // namespace oz
