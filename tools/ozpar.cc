// Schedules of systems of differential equations.
//
//   ozpar --language=C++ system.txt          the schedule as C++ text on standard output
//   ozpar --table --model=ladder.oz rates    what the scheduling instrument measures of the definition "rates"
//
// A system is List[{equations}, {time}] in full-form text with types, or a definition of that form in a model. Its
// right sides become one list of single operations; the options tell what of the way is written.
#include <fcntl.h>
#include <getopt.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Asynt.h"
#include "Errors.h"
#include "codegen.h"
#include "compelim.h"
#include "cse.h"
#include "efunc.h"
#include "ffparse.h"
#include "ffscan.h"
#include "listsched.h"
#include "ode.h"
#include "operator_name.h"
#include "oz.h"
#include "ozerrors.h"
#include "parel.h"
#include "parse.h"
#include "pompout.h"
#include "pompunp.h"
#include "schedule.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "smallddg.h"
#include "type.h"
#include "unparse.h"
#include "veritrans.h"

using namespace oz;

namespace {

constexpr int kFileStatus = 5;  // of wrong options, and of files that cannot be used

const char* const kHelp =
    "usage: ozpar [OPTION]... [FILE]\n"
    "       ozpar [OPTION]... --model=MODEL NAME\n"
    "\n"
    "Writes the schedule of a system of differential equations. The system is read from FILE or standard input as\n"
    "full-form text, or it is the definition NAME of a model:\n"
    "\n"
    "  List[List[Equal[Derivative[1][oz$Type[x, oz$Real]][oz$Type[t, oz$Real]], Minus[x[t]]]], List[t]]\n"
    "  rates := {{x'[t] == -x[t]}, {t}};\n"
    "\n"
    "  --language=LANG   the language of the schedule: Fortran90 (the default) or C++\n"
    "  --flat            leave conditionals flat: both branches are computed\n"
    "  --table           instead of the schedule: how many processors the system would use, by the cost of "
    "communication\n"
    "  --graph           instead of the schedule: the dependence graph for Graphviz\n"
    "  --list            instead of the schedule: the list of operations, before and after its conditionals are "
    "rebuilt\n"
    "  --output=FILE     write to FILE instead of standard output\n"
    "  --help            this text\n"
    "\n"
    "The status is 0, 1 for a system that cannot be compiled, 5 for wrong options and files that cannot be used.\n";

enum Product { schedule, table, graph, lists };

struct Request {
  Language language = fortran90;
  Product product = schedule;
  bool flat = false;
  const char* model = nullptr;
  const char* output = nullptr;
  const char* source = "-";  // the file of the text, or the name of the definition
};

[[noreturn, gnu::format(printf, 1, 2)]] void refuse(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::fputs("ozpar: ", stderr);
  std::vfprintf(stderr, format, args);
  std::fputc('\n', stderr);
  va_end(args);
  std::exit(kFileStatus);
}

// ---- the command line

Language language_named(const char* name) {
  for (const char* fortran : {"Fortran90", "Fortran"})
    if (strcasecmp(name, fortran) == 0) return fortran90;
  if (strcasecmp(name, "C++") == 0) return cplusplus;
  refuse("there is no schedule in the language '%s', try Fortran90 or C++", name);
}

void set_product(Request* r, Product product) {
  if (r->product != schedule && r->product != product) refuse("only one of --table, --graph and --list can be written");
  r->product = product;
}

Request read_arguments(int argc, char** argv) {
  static const option kOptions[] = {{"language", required_argument, nullptr, 'l'},
                                    {"flat", no_argument, nullptr, 'f'},
                                    {"table", no_argument, nullptr, 't'},
                                    {"graph", no_argument, nullptr, 'g'},
                                    {"list", no_argument, nullptr, 'i'},
                                    {"model", required_argument, nullptr, 'm'},
                                    {"output", required_argument, nullptr, 'o'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  Request r;
  for (int letter; (letter = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    switch (letter) {
      case 'l': r.language = language_named(optarg); break;
      case 'f': r.flat = true; break;
      case 't': set_product(&r, table); break;
      case 'g': set_product(&r, graph); break;
      case 'i': set_product(&r, lists); break;
      case 'm': r.model = optarg; break;
      case 'o': r.output = optarg; break;
      case 'h': std::fputs(kHelp, stdout); std::exit(0);
      default: std::fputs("Try 'ozpar --help'.\n", stderr); std::exit(kFileStatus);
    }
  }
  if (argc - optind > 1) refuse("one system at a time, '%s' is too much", argv[optind + 1]);
  if (argc - optind == 1) r.source = argv[optind];
  if (r.model && argc == optind) refuse("--model needs the name of a definition");
  return r;
}

// ---- where the system comes from

std::string read_text(const char* file) {
  const bool standard = std::strcmp(file, "-") == 0;
  FILE* const f = standard ? stdin : std::fopen(file, "r");
  if (!f) refuse("cannot read '%s': %s", file, std::strerror(errno));
  std::string text;
  char block[4096];
  while (const size_t got = std::fread(block, 1, sizeof block, f)) text.append(block, got);
  if (std::ferror(f)) refuse("cannot read '%s': %s", file, std::strerror(errno));
  if (!standard) std::fclose(f);
  if (text.find('\0') != std::string::npos) refuse("'%s' is no text", file);
  if (text.find_first_not_of(" \t\r\n") == std::string::npos) refuse("'%s' is empty", file);
  return text;
}

// The second of two lists holds the time variable. Neither list has become a node of its own kind in text that has only
// been read.
tAsynt items_of(tAsynt list) {
  if (Asynt_Kind(list) == kSimpleFFE) return FullFormExpression_Args(list);
  return Asynt_Kind(list) == kXList ? Variadic_Expressions(list) : nullptr;
}

tAsynt first_of(tAsynt list) {
  const tAsynt items = items_of(list);
  return Asynt_Kind(items) == kExpression1 ? Expression1_Expression(items) : nullptr;
}

tAsynt time_variable(tAsynt system) {
  const tAsynt equations = items_of(system);
  const tAsynt rest = Asynt_Kind(equations) == kExpression1 ? Expression1_Expressions(equations) : nullptr;
  const tAsynt symbol = Asynt_Kind(rest) == kExpression1 ? first_of(Expression1_Expression(rest)) : nullptr;
  return Asynt_Kind(symbol) == kSymbol ? symbol : nullptr;
}

tAsynt time_symbol = nullptr;

bool is_function(tAsynt head) {
  if (Asynt_Kind(head) == kSymbol && Asynt_Kind(SymInfo_Type(Symbol_SymInfo(head))) == kPreDef) return true;
  return find_compilable(unparse_string(head)) != nullptr;
}

// x[t] becomes x, but Sin[t] and applied functions of the model stay.
char drop_time(tAsynt* t) {
  while (Asynt_Kind(*t) == kSimpleFFE || Asynt_Kind(*t) == kComplexFFE) {
    const tAsynt args = FullFormExpression_Args(*t);
    if (Asynt_Kind(args) != kExpression1 || Asynt_Kind(Expression1_Expressions(args)) != kExpression0) break;
    const tAsynt head = Asynt_Kind(*t) == kSimpleFFE ? SimpleFFE_Name(*t) : ComplexFFE_Name(*t);
    if (!IsEqualAsynt(Expression1_Expression(args), time_symbol) || is_function(head)) break;
    *t = head;
  }
  return Asynt_Kind(*t) != kSymbol;
}

[[noreturn]] void no_type(tAsynt symbol) {
  std::fprintf(stderr, "ozpar: no type is known of '%s'\n", unparse_string(symbol));
  std::exit(1);
}

std::unordered_set<tAsynt> applied;  // heads, which may be functions of elsewhere

char need_types(tAsynt* t) {
  if (Asynt_Kind(*t) == kSimpleFFE) applied.insert(SimpleFFE_Name(*t));
  if (Asynt_Kind(*t) != kSymbol) return 1;
  bool is_call = false;
  if (Asynt_Kind(SymInfo_Type(Symbol_SymInfo(*t))) == kNoType && !applied.contains(*t) &&
      !find_declaration(*t, &is_call))
    no_type(*t);
  return 0;
}

// A variable of a basic type cannot be applied, not even to time. So the unknowns lose their argument before types are
// looked at; what else is applied to time is seen to when the derivatives are.
tAsynt verified(tAsynt system) {
  Begintype();
  time_symbol = time_variable(system);
  if (time_symbol) TraverseAsyntTD2(&system, drop_time);
  allow_untyped = 1;
  Veri_trans_tree(&system);
  allow_untyped = 0;
  if (tAsynt equations = first_of(system); Asynt_Kind(equations) == kXList) TraverseAsyntTD2(&equations, need_types);
  return system;
}

const char* being_read = nullptr;  // the text that the reader is at work on

// The reader, which is made for texts of the host, says little of what is wrong with others.
void blame_text() {
  if (being_read) std::fprintf(stderr, "ozpar: '%s' cannot be read as a system in full-form text\n", being_read);
}

tAsynt system_in_text(const char* file) {
  const std::string text = read_text(file);
  being_read = file;
  std::atexit(blame_text);
  ffscan_SetString(text.c_str());
  ffscan_BeginFile("");
  tAsynt tree = ffparse(1);
  Comp_elim(tree, &tree, nullptr);
  being_read = nullptr;
  return verified(tree);
}

// Runs the compiler up to the kept model. It ends standard error, which is wanted further on.
void compile(const char* model) {
  struct stat what {};
  if (stat(model, &what) == 0 && S_ISDIR(what.st_mode)) refuse("cannot read '%s': %s", model, std::strerror(EISDIR));
  const int messages = dup(STDERR_FILENO);
  std::string program = "ozpar", keep = "-R", file = model;
  char* arguments[] = {program.data(), keep.data(), file.data(), nullptr};
  const int status = compile_model(3, arguments);
  std::fflush(stderr);
  dup2(messages, STDERR_FILENO);
  close(messages);
  if (status != 0) std::exit(kFileStatus);
}

const char* wanted_name = nullptr;
tAsynt wanted_definition = nullptr;

char find_definition(tAsynt* t) {
  if (Asynt_Kind(*t) == kAlgAuxiliary) return 0;
  if (Asynt_Kind(*t) != kXSetDelayed && Asynt_Kind(*t) != kXSet) return 1;
  const std::string name = unparse_string(Binary_LHS(*t));
  if (name == wanted_name || stripmodelname(name.c_str()) == std::string(wanted_name)) wanted_definition = *t;
  return 0;
}

tAsynt system_in_model(const char* model, const char* name) {
  compile(model);
  wanted_name = name;
  TraverseAsyntTD2(&model_tree, find_definition);
  if (!wanted_definition) refuse("the model has no definition '%s'", name);
  return verified(CopyAsynt(Binary_RHS(wanted_definition)));
}

// ---- the list of operations

const char* output_name = "standard output";

const char* unfinished = nullptr;  // the file that is being written

// Nobody shall take the beginning of a schedule for a schedule.
void remove_unfinished() {
  struct stat what {};
  if (unfinished && stat(unfinished, &what) == 0 && S_ISREG(what.st_mode)) unlink(unfinished);
}

void open_output(const char* file) {
  output_name = file;
  if (!std::freopen(file, "w", stdout)) refuse("cannot write '%s': %s", file, std::strerror(errno));
  unfinished = file;
  std::atexit(remove_unfinished);
}

void close_output() {
  const bool failed = std::ferror(stdout) != 0;
  if (std::fclose(stdout) != 0 || failed) refuse("cannot write '%s'", output_name);
  unfinished = nullptr;
}

// The printer of sources has no form for a conversion, and the generators write what is inside.
char drop_conversion(tAsynt* t) {
  while (Asynt_Kind(*t) == kGeneralConversion) *t = TypeConversion_Expression(*t);
  return 1;
}

void drop_conversions(tAsynt code) { TraverseAsyntTD2(&code, drop_conversion); }

std::string text_of(tAsynt t) {
  if (Asynt_Kind(t) != kXSet || Asynt_Kind(Binary_RHS(t)) != kXIf) return unparse_string(t);
  const tAsynt conditional = Binary_RHS(t);
  return text_of(Binary_LHS(t)) + "=If[" + text_of(XIf_Condition(conditional)) + ", " + text_of(XIf_T(conditional)) +
         ", " + text_of(XIf_F(conditional)) + "]";
}

// Each statement on its line, those of a branch further in.
void write_statement(tAsynt t, int indent) {
  if (Asynt_Kind(t) == kXCompoundExpression) {
    for (tAsynt l = Variadic_Expressions(t); Asynt_Kind(l) == kExpression1; l = Expression1_Expressions(l))
      write_statement(Expression1_Expression(l), indent);
    return;
  }
  if (Asynt_Kind(t) != kXIf) {
    std::printf("%*s%s\n", indent, "", text_of(t).c_str());
    return;
  }
  std::printf("%*sIf[%s,\n", indent, "", text_of(XIf_Condition(t)).c_str());
  write_statement(XIf_T(t), indent + 4);
  std::printf("%*s  ,\n", indent, "");
  write_statement(XIf_F(t), indent + 4);
  std::printf("%*s]\n", indent, "");
}

void write_flat_list(tAsynt list) {
  drop_conversions(list);
  std::puts("Before:");
  for (; Asynt_Kind(list) == kExpression1; list = Expression1_Expressions(list))
    write_statement(Expression1_Expression(list), 2);
}

// The code of the one worker.
tAsynt code_of(tAsynt parexec) {
  for (;;) {
    const tAsynt expr = InOutExpr_Expr(InOutExpr1_InOutExpr(ParExec_InOutExprs(parexec)));
    if (Asynt_Kind(expr) != kParExec) return expr;
    parexec = expr;
  }
}

void write_rebuilt_list(tAsynt code) {
  drop_conversions(code);
  std::puts("After:");
  write_statement(code, 2);
}

// ---- the graph

std::vector<tDdg> graph_nodes;
std::unordered_map<tDdg, size_t> graph_numbers;
std::unordered_set<tDdg> tied_nodes;  // connected with the sentinels

void number_node(tDdg node) {
  if (graph_numbers.try_emplace(node, graph_nodes.size()).second) graph_nodes.push_back(node);
}

void note_tied(tDdg node) { tied_nodes.insert(node); }

// What a node reads, in the order in which it was met.
std::vector<tDdg> inputs_of(tDdg node) {
  std::vector<tDdg> inputs;
  for (tDdg c = Node_Children(node); Ddg_Kind(c) == kNode1; c = Node1_Nodes(c)) inputs.push_back(Node1_Node(c));
  std::reverse(inputs.begin(), inputs.end());
  return inputs;
}

// In the order of the list, each symbol where it is met first.
void number_nodes(tAsynt list) {
  number_node(Ddg_child);
  for (; Asynt_Kind(list) == kExpression1; list = Expression1_Expressions(list)) {
    const tDdg node = ddg_node_of(Symbol_SymInfo(Binary_LHS(Expression1_Expression(list))));
    for (tDdg input : inputs_of(node)) number_node(input);
    number_node(node);
  }
  number_node(Ddg_parent);
}

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

void write_node(size_t number) {
  const tDdg node = graph_nodes[number];
  const bool assigned = Asynt_Kind(Node_Op(node)) == kXSet;
  const std::string text = assigned ? text_of(Node_Op(node)) : unparse_string(mSymbol(Node_SymInfo(node)));
  const char* const shape = node == Ddg_parent || node == Ddg_child ? "point" : assigned ? "box" : "ellipse";
  std::printf("  n%zu [label=%s, shape=%s%s];\n", number, quoted(text).c_str(), shape,
              tied_nodes.contains(node) ? "" : ", style=dashed");
}

// An arrow leads the way that a value goes. What is not connected with the last assignment, and so is not measured
// either, has dashed lines.
void write_graph(tAsynt list) {
  drop_conversions(list);
  BuildDdg(list);
  TraverseDdgTD(Ddg_child, note_tied);
  tied_nodes.insert(Ddg_parent);
  number_nodes(list);
  std::puts("digraph dependences {");
  for (size_t i = 0; i < graph_nodes.size(); i++) write_node(i);
  for (size_t i = 0; i < graph_nodes.size(); i++)
    for (tDdg input : inputs_of(graph_nodes[i])) std::printf("  n%zu -> n%zu;\n", graph_numbers[input], i);
  std::puts("}");
}

// ---- the products

tAsynt parallelized(tAsynt system) {
  Begintype();
  Beginparel();
  const tAsynt parexec = Parallelize(system);
  Closeparel();
  return parexec;
}

// What a worker reads is declared in the schedule, and has a value there if it is a state variable.
void report_unset_inputs(tAsynt parexec) {
  const tAsynt outer = InOutExpr1_InOutExpr(ParExec_InOutExprs(parexec));
  const tAsynt worker = InOutExpr1_InOutExpr(ParExec_InOutExprs(InOutExpr_Expr(outer)));
  const Symbol_places states = Places_of(InOutExpr_In(outer));
  std::unordered_set<tAsynt> known;
  if (time_symbol) known.insert(Symbol_SymInfo(time_symbol));
  for (tAsynt l = InOutExpr_In(worker); Asynt_Kind(l) == kSymbol1; l = Symbol1_Symbols(l)) {
    const tAsynt symbol = Symbol1_Symbol(l);
    if (known.insert(Symbol_SymInfo(symbol)).second && Place_of(states, symbol) < 0)
      warning_msg("%s is not set by the schedule", unparse_string(symbol));
  }
}

void begin_fortran() {
  foutput_file = stdout;
  finit_output();
  finit_operator_name();
  fout_set(fout_implementation);
}

void write_schedule(tAsynt system, Language language) {
  genlang = language;
  const tAsynt parexec = parallelized(system);
  report_unset_inputs(parexec);
  if (language == fortran90) {
    begin_fortran();
    FunparseStmt(parexec);
    foutput_file = nullptr;
  } else {
    cpoutput_file = stdout;
    cpinit_operator_name();
    CPunparseVal(parexec);
    cpoutput_file = nullptr;
  }
}

// The instrument says nothing of what it cannot reach.
void measure(tAsynt list) {
  const int symbols = BuildDdg(list);
  TraverseDdgTD(Ddg_child, note_tied);
  int tied = 0;
  for (tDdg node : tied_nodes) tied += Ddg_Kind(node) == kNode && node != Ddg_child && node != Ddg_parent;
  if (tied < symbols)
    warning_msg("The table leaves out %d of %d symbols, which the last assignment is not connected with",
                symbols - tied, symbols);
  scheduleddg(list);
}

// The instrument's statuses: 5 says that the table is complete.
void end_of_table(int status) {
  if (status != 5) std::fputc('\n', stderr);
  close_output();
  std::exit(status == 5 ? 0 : status);
}

void write_product(tAsynt system, const Request& r) {
  simple_code = r.flat;
  do_ddg = r.product != schedule;
  switch (r.product) {
    case schedule: return write_schedule(system, r.language);
    case table:
      listsched_Exit = end_of_table;
      cse_schedule = measure;
      parallelized(system);
      return;
    case graph:
      cse_schedule = write_graph;
      parallelized(system);
      return;
    case lists:
      cse_schedule = write_flat_list;
      write_rebuilt_list(code_of(parallelized(system)));
      return;
  }
}

void not_a_system() {
  std::fputs("ozpar: a system has the form List[List[equations], List[time]], {{equations}, {time}} in a model\n",
             stderr);
  std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
  const Request r = read_arguments(argc, argv);
  bigbuf_init();
  init_operator_name();
  ode_Exit = not_a_system;
  const tAsynt system = r.model ? system_in_model(r.model, r.source) : system_in_text(r.source);
  if (r.output) open_output(r.output);
  write_product(system, r);
  close_output();
  return 0;
}
