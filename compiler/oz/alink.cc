// See alink.h. A command has a trampoline, a row in `commands` under its number, and a definition for the host:
//
//   {6, "GenerateVariableInternal[name_String]", "{ name }"}
//
// The host then sends CallPacket[6, {"Hold[M`x]"}], and _tr6 calls al_generate_variable("Hold[M`x]").

#include "alink.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "al_cmds.h"

namespace oz {

ALINK stdlink = nullptr;
ALEnvironment stdenv = nullptr;
ALMessageHandlerObject stdhandler = nullptr;
ALYielder stdyielder = nullptr;
std::atomic<int> ALAbort = 0;
std::atomic<int> ALDone = 0;

namespace {

// The arguments of one call. What was read is released in reverse order, also when a later read has failed.
class Arguments {
 public:
  explicit Arguments(ALINK mlp) : link_(mlp) {}
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;
  ~Arguments() {
    while (count_ > 0) release(texts_[--count_]);
  }

  bool string(const char** text) { return ALGetString(link_, text) && keep(*text, false); }
  bool symbol(const char** name) { return ALGetSymbol(link_, name) && keep(*name, true); }
  bool integer(int* value) { return ALGetInteger(link_, value) != 0; }
  // Drops the rest of the call packet.
  bool end() { return ALNewPacket(link_) != 0; }

 private:
  struct Text {
    const char* text;
    bool is_symbol;
  };

  bool keep(const char* text, bool is_symbol) {
    texts_[count_++] = {text, is_symbol};
    return true;
  }

  void release(const Text& t) {
    if (t.is_symbol)
      ALReleaseSymbol(link_, t.text);
    else
      ALReleaseString(link_, t.text);
  }

  ALINK link_;
  std::array<Text, 4> texts_ = {};
  size_t count_ = 0;
};

int put_answer(ALINK mlp, const char* answer) {
  if (ALAbort) return ALPutFunction(mlp, "Abort", 0);
  if (!answer) return ALPutSymbol(mlp, "$Failed");
  return ALPutString(mlp, answer);
}

// ---- the trampolines

// The commands of a licence check would be here; this program has none.
int _tr0(ALINK) { return 0; }
int _tr1(ALINK) { return 0; }
int _tr2(ALINK) { return 0; }

int _tr3(ALINK mlp) {
  Arguments a(mlp);
  const char *infile, *outfile, *errfile, *options;
  if (!(a.string(&infile) && a.string(&outfile) && a.string(&errfile) && a.string(&options) && a.end())) return 0;
  // The options are cut in place, which the link's own text is not for.
  std::vector<char> words(options, options + std::strlen(options) + 1);
  return put_answer(mlp, al_compile(infile, outfile, errfile, words.data()));
}

int _tr4(ALINK mlp) {
  Arguments a(mlp);
  const char *lang, *file, *parallel;
  if (!(a.string(&lang) && a.string(&file) && a.symbol(&parallel) && a.end())) return 0;
  return put_answer(mlp, al_open_file(lang, file, parallel));
}

int _tr5(ALINK mlp) {
  Arguments a(mlp);
  return a.end() ? put_answer(mlp, al_close_file()) : 0;
}

int _tr6(ALINK mlp) {
  Arguments a(mlp);
  const char* name;
  if (!(a.string(&name) && a.end())) return 0;
  return put_answer(mlp, al_generate_variable(name));
}

int _tr7(ALINK mlp) {
  Arguments a(mlp);
  const char* name;
  int disableAlgeLink;
  if (!(a.string(&name) && a.integer(&disableAlgeLink) && a.end())) return 0;
  return put_answer(mlp, al_generate_function(name, disableAlgeLink));
}

int _tr8(ALINK mlp) {
  Arguments a(mlp);
  const char *name, *body;
  int disableAlgeLink;
  if (!(a.string(&name) && a.string(&body) && a.integer(&disableAlgeLink) && a.end())) return 0;
  return put_answer(mlp, al_generate_evaluate_function(name, body, disableAlgeLink));
}

// ---- the commands

constexpr func commands[] = {
    {0, 0, _tr0, "0"},
    {0, 0, _tr1, "1"},
    {0, 0, _tr2, "2"},
    {4, 0, _tr3, "CompileInternal"},
    {3, 0, _tr4, "OpenFileInternal"},
    {0, 0, _tr5, "CloseFileInternal"},
    {1, 0, _tr6, "GenerateVariableInternal"},
    {2, 0, _tr7, "GenerateFunctionInternal"},
    {3, 0, _tr8, "GenerateEvaluateFunctionInternal"},
};

// What the host is told of a command: the pattern of its call, and the arguments in the order on the wire.
struct Definition {
  int number;
  const char* pattern;
  const char* arguments;
};

constexpr Definition definitions[] = {
    {3, "CompileInternal[infile_String, outfile_String, errfile_String, options_String]",
     "{ infile, outfile, errfile, options }"},
    {4, "OpenFileInternal[file_String, lang_String, parallel_Symbol]", "{ lang, file, parallel }"},
    {5, "CloseFileInternal[ ]", "{ }"},
    {6, "GenerateVariableInternal[name_String]", "{ name }"},
    {7, "GenerateFunctionInternal[name_String,disableAlgeLink_Integer]", "{ name, disableAlgeLink }"},
    {8, "GenerateEvaluateFunctionInternal[name_String, body_String,disableAlgeLink_Integer]",
     "{ name, body, disableAlgeLink }"},
};

// The texts that the host evaluates before the definitions: none, since only a licence check has messages of its own.
constexpr const char* const evaluated_texts[] = {nullptr};

// The n-th group of a table of null-terminated groups, which an empty group ends; null past the end.
const char* const* group_of(const char* const* table, int n) {
  for (; *table && n > 0; n--) {
    while (*table) table++;
    table++;
  }
  return *table ? table : nullptr;
}

// The packets that answer the refusal end with a suspend packet.
bool skip_to_suspend(ALINK mlp) {
  int code;
  while ((code = ALNextPacket(mlp)) != 0 && code != ALSuspendPacket)
    if (!ALNewPacket(mlp)) return false;
  ALNewPacket(mlp);
  return ALError(mlp) == ALErrorNone;
}

// The host resumes this program as its front end, which it is not. It gets
//
//   Module[{me = $ParentLink}, $ParentLink = LINK; Message[$ParentLink::"notfe", me]; me]
//
// to evaluate, LINK being what its resume packet holds.
bool refuse_to_be_a_frontend(ALINK mlp) {
  ALPutFunction(mlp, "EvaluatePacket", 1);
  ALPutFunction(mlp, "Module", 2);
  ALPutFunction(mlp, "List", 1);
  ALPutFunction(mlp, "Set", 2);
  ALPutSymbol(mlp, "me");
  ALPutSymbol(mlp, "$ParentLink");
  ALPutFunction(mlp, "CompoundExpression", 3);
  ALPutFunction(mlp, "Set", 2);
  ALPutSymbol(mlp, "$ParentLink");
  ALTransferExpression(mlp, mlp);
  ALPutFunction(mlp, "Message", 2);
  ALPutFunction(mlp, "MessageName", 2);
  ALPutSymbol(mlp, "$ParentLink");
  ALPutString(mlp, "notfe");
  ALPutSymbol(mlp, "me");
  ALPutSymbol(mlp, "me");
  ALEndPacket(mlp);
  return skip_to_suspend(mlp);
}

ALINK open_link(char** argv, char** argv_end, const char* commandline) {
  int error = ALErrorNone;
  const ALINK mlp =
      commandline ? ALOpenString(stdenv, commandline, &error) : ALOpenArgcArgv(stdenv, argv, argv_end, &error);
  if (!mlp) ALAlert(stdenv, ALErrorString(stdenv, error));
  return mlp;
}

void run_link(ALINK mlp) {
  if (stdyielder) ALSetYieldFunction(mlp, stdyielder);
  ALSetMessageHandler(mlp, stdhandler);
  if (ALInstall(mlp)) ServeLink(mlp);
  ALClose(mlp);
  stdlink = nullptr;
}

}  // namespace

int _doevalstr(ALINK mlp, const char* const* table, int n) {
  const char* const* group = group_of(table, n);
  if (!group) return 0;
  size_t left = 0;
  for (const char* const* piece = group; *piece; piece++) left += std::strlen(*piece);
  ALPutNext(mlp, ALStringToken);
  for (const char* const* piece = group; *piece; piece++) {
    const size_t length = std::strlen(*piece);
    left -= length;
    ALPut8BitCharacters(mlp, left, reinterpret_cast<const unsigned char*>(*piece), length);
  }
  return ALError(mlp) == ALErrorNone;
}

int _definepattern(ALINK mlp, const char* patt, const char* args, int func_n) {
  ALPutFunction(mlp, "DefineExternal", 3);
  ALPutString(mlp, patt);
  ALPutString(mlp, args);
  ALPutInteger(mlp, func_n);
  return ALError(mlp) == ALErrorNone;
}

int ALInstall(ALINK mlp) {
  if (!ALConnect(mlp)) return 0;
  for (int n = 0; group_of(evaluated_texts, n); n++)
    if (!_doevalstr(mlp, evaluated_texts, n)) return 0;
  for (const Definition& d : definitions)
    if (!_definepattern(mlp, d.pattern, d.arguments, d.number)) return 0;
  return ALPutSymbol(mlp, "End") && ALFlush(mlp);
}

namespace {

// Whether the call names a command and has the arguments for it.
bool read_call(ALINK mlp, const func* functable, int nfuncs, int* n) {
  if (!ALGetInteger(mlp, n) || *n < 0 || *n >= nfuncs) return false;
  const func& f = functable[*n];
  if (f.f_nargs < 0) return true;
  int len;
  if (!ALTestHead(mlp, "List", &len)) return false;
  return f.manual ? f.f_nargs <= len : f.f_nargs == len;
}

}  // namespace

int _ALDoCallPacket(ALINK mlp, const func* functable, int nfuncs) {
  int n;
  bool answered = false;
  if (read_call(mlp, functable, nfuncs, &n)) {
    stdlink = mlp;
    answered = functable[n].f_func(mlp) != 0;
  }
  if (!answered && ALClearError(mlp)) ALPutSymbol(mlp, "$Failed");
  return ALEndPacket(mlp) && ALNewPacket(mlp);
}

int ALDoCallPacket(ALINK mlp) { return _ALDoCallPacket(mlp, commands, std::size(commands)); }

int ALAnswer(ALINK mlp) {
  int code = 0;
  while (!ALDone && ALError(mlp) == ALErrorNone && ALWaitForLinkActivity(mlp) == 1) {
    code = ALNextPacket(mlp);
    if (code != ALCallPacket) break;
    code = 0;
    ALAbort = 0;
    if (!ALDoCallPacket(mlp)) break;
  }
  ALAbort = 0;
  return code;
}

void ServeLink(ALINK mlp) {
  while (ALAnswer(mlp) == ALResumePacket)
    if (!refuse_to_be_a_frontend(mlp)) return;
}

int ALEvaluate(ALINK mlp, const char* s) {
  if (ALAbort) return 0;
  return ALPutFunction(mlp, "EvaluatePacket", 1) && ALPutFunction(mlp, "ToExpression", 1) && ALPutString(mlp, s) &&
         ALEndPacket(mlp);
}

int ALEvaluateString(ALINK mlp, const char* s) {
  if (ALEvaluate(mlp, s)) {
    int code;
    while ((code = ALAnswer(mlp)) != 0 && code != ALReturnPacket) ALNewPacket(mlp);
    ALNewPacket(mlp);
  }
  return ALError(mlp) == ALErrorNone;
}

void ALDefaultHandler(ALINK, int message, int) {
  switch (message) {
    case ALTerminateMessage: ALDone = 1; [[fallthrough]];
    case ALInterruptMessage:
    case ALAbortMessage: ALAbort = 1; return;
    default: return;
  }
}

int _ALMain(char** argv, char** argv_end, const char* commandline) {
  if (!stdenv) stdenv = ALInitialize(nullptr);
  if (stdenv) {
    if (!stdhandler) stdhandler = ALCreateMessageHandler(stdenv, ALDefaultHandler, nullptr);
    if (const ALINK mlp = open_link(argv, argv_end, commandline)) run_link(mlp);
    ALEnd(stdenv);
    stdenv = nullptr;
    stdhandler = nullptr;  // it was the environment's
  }
  return ALDone ? 0 : 1;
}

int ALMain(int argc, char** argv) { return _ALMain(argv, argv + argc, nullptr); }

int ALMainString(const char* commandline) { return _ALMain(nullptr, nullptr, commandline); }

int ALMainArgv(char** argv, char** argv_end) {
  static char* copy[128];
  // Without a place for its null the copy is not made, and no link is opened.
  if (argv_end - argv >= static_cast<std::ptrdiff_t>(std::size(copy))) {
    ALAlert(nullptr, "too many arguments");
    return 1;
  }
  char** const end = std::copy(argv, argv_end, copy);
  *end = nullptr;
  return _ALMain(copy, end, nullptr);
}

}  // namespace oz
