// Generation from the command line: the same commands that the link has, on a file set named like the model's file.
//
//   oz -s -l C++ -f Tank/outflow dir/tank.oz      dir/tank.cc, dir/tank.h, ... with the function Tank`outflow
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "al_cmds.h"
#include "driver_parts.h"
#include "oz.h"
#include "ozerrors.h"

namespace oz {
namespace {

void need_ok(const char* answer) {
  if (std::strcmp(answer, "OK") != 0) die_msg("%s", answer);
}

// The name of a file without its ending; the directory stays.
std::string without_ending(std::string name) {
  const size_t dot = name.rfind('.');
  const size_t slash = name.rfind('/');
  if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) name.resize(dot);
  return name;
}

// A path of contexts can be given with slashes, which need no quoting in a shell.
std::string held(std::string name) {
  std::replace(name.begin(), name.end(), '/', '`');
  return "Hold[" + name + "]";
}

// The bytes of a file as far as they can be read, and how many there should be.
struct Contents {
  std::string bytes;
  long required;
};

Contents read_whole(FILE* f) {
  Contents c = {"", 0};
  std::fseek(f, 0, SEEK_END);
  c.required = std::max(std::ftell(f), 0L);
  std::rewind(f);
  char block[4096];
  size_t left = static_cast<size_t>(c.required);
  while (left > 0) {
    const size_t got = std::fread(block, 1, std::min(left, sizeof block), f);
    if (got == 0) break;
    c.bytes.append(block, got);
    left -= got;
  }
  return c;
}

// The body in a file: one text in double quotes. The quotes and what follows the closing one become blanks.
std::string read_body(const char* file_name) {
  if (!file_name) die_msg(" -E filename required ");
  FILE* const f = std::fopen(file_name, "r");
  if (!f) die_msg("File %s not found", file_name);
  Contents c = read_whole(f);
  std::fclose(f);
  const long received = static_cast<long>(c.bytes.size());
  if (received < c.required)
    die_msg("File %s bad reading result, required %ld received %ld bytes", file_name, c.required, received);
  std::string& body = c.bytes;
  if (body.empty()) return " ";
  body[0] = ' ';
  size_t i = body.size() - 1;
  for (; i > 1 && body[i] != '"'; i--) body[i] = ' ';
  body[i] = ' ';
  return body;
}

const char* generate(const Options& o, const char* name) {
  switch (o.codegen_flag) {
    case var: return al_generate_variable(name);
    case fun: return al_generate_function(name, o.genmode_flag);
    case eval: return al_generate_evaluate_function(name, read_body(o.codegen_eval_file_name).c_str(), o.genmode_flag);
    case no_code: break;
  }
  std::abort();
}

}  // namespace

void generate_entity(const Options& o) {
  const std::string file_name = without_ending(o.input_file_name);
  need_ok(al_open_file(o.codegen_lang, file_name.c_str(), o.parallel_flag ? "True" : "False"));
  const std::string name = held(o.codegen_name);
  std::printf("Using %s\n", name.c_str());
  need_ok(generate(o, name.c_str()));
  need_ok(al_close_file());
}

bool reopen_stderr(const char* file_name) {
  std::fflush(stderr);
  const int file = open(file_name, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) return false;
  const bool reopened = dup2(file, STDERR_FILENO) >= 0;
  if (file != STDERR_FILENO) close(file);
  return reopened;
}

}  // namespace oz
