// What the Fortran generator writes, for tests to compare with.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "efunc.h"
#include "fatal_text.h"
#include "operator_name.h"
#include "output_stream.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "type.h"
#include "type_text.h"
#include "unparse.h"

namespace oz {

// The lines of a text without margins and empty lines, joined by " | ".
inline std::string lines_of(const std::string& text) {
  std::string out;
  for (size_t at = 0; at < text.size();) {
    const size_t end = text.find('\n', at);
    const size_t first = text.find_first_not_of(' ', at);
    if (first < end) out += (out.empty() ? "" : " | ") + text.substr(first, end - first);
    at = end == std::string::npos ? text.size() : end + 1;
  }
  return out;
}

class SheepText : public testing::Test {
 protected:
  OutputStream f90, i_f90, tm, external, macros;

  void SetUp() override {
    foutput_file = f90.f;
    foutput_i_file = i_f90.f;
    foutput_tm_file = tm.f;
    foutput_external_file = external.f;
    fmacro_file = macros.f;
    bigbuf_init();
    init_operator_name();
    finit_operator_name();
    finit_output();
    fout_set(fout_implementation);
    Begintype();
    genlang = fortran90;
    declare_types(
        "i:int j:int k:int x:real y:real z:complex p:bool q:bool s:string "
        "a:real[4] b:real[4] c:real[3,4] d:real[2,3,4] u:real[0] w:real[0] "
        "f:real g:int vec:real[4] two:multi(real,int) sub:multi() List:none");
  }
  void TearDown() override {
    foutput_file = foutput_i_file = foutput_tm_file = foutput_external_file = fmacro_file = nullptr;
    finit_output();
    genlang = none;
  }

  std::string value(const std::string& text) {
    const tAsynt t = typed_tree(text);
    foutput("\n");  // no line is broken
    return f90.added([&] { FunparseVal(t); });
  }
  std::string statement(tAsynt t) {
    return lines_of(f90.added([&] { FunparseStmt(t); }));
  }
  std::string statement(const std::string& text) { return statement(typed_tree(text)); }

  // A statement's report on standard error, and what it has written by then.
  std::string report(const std::string& text) {
    const tAsynt t = typed_tree(text);
    return message_of([&] { FunparseStmt(t); });
  }
  std::string value_report(const std::string& text) {
    const tAsynt t = typed_tree(text);
    return message_of([&] { FunparseVal(t); });
  }
};

}  // namespace oz
