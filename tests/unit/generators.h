// The files of the generators in memory, and what a function of a model becomes in them.
#pragma once

#include "codegen.h"
#include "model_text.h"
#include "pompout.h"
#include "sheepout.h"
#include "sheepunp.h"

namespace oz {

struct PompFiles {
  OutputStream cc, h, icc, tm, wrappers, levels;

  PompFiles() {
    cpinit_operator_name();
    genlang = cplusplus;
    cpoutput_file = cc.f;
    cpoutput_h_file = h.f;
    cpoutput_icc_file = icc.f;
    cpoutput_tm_file = tm.f;
    cpoutput_if_file = wrappers.f;
    cpoutput_lm_file = levels.f;
    cpinit();
  }
  ~PompFiles() {
    for (FILE** f : {&cpoutput_file, &cpoutput_h_file, &cpoutput_icc_file, &cpoutput_tm_file, &cpoutput_if_file,
                     &cpoutput_lm_file})
      *f = nullptr;
    cpinit();
    glob_genmode_flag = evaluate_function_flag = 0;
    genlang = none;
  }
};

struct PompTexts {
  std::string cc, h, icc, tm, wrappers;
};

struct PompModel : ModelText, PompFiles {
  // What a step writes.
  template <typename Step>
  PompTexts texts(Step step) {
    const PompTexts before = all();
    step();
    const PompTexts after = all();
    return {after.cc.substr(before.cc.size()), after.h.substr(before.h.size()), after.icc.substr(before.icc.size()),
            after.tm.substr(before.tm.size()), after.wrappers.substr(before.wrappers.size())};
  }

  // The texts of a function f of the model; nothing may be reported.
  PompTexts function(const std::string& f, bool wrappers_too = true) {
    glob_genmode_flag = !wrappers_too;
    PompTexts result;
    EXPECT_EQ("", message_of([&] { result = texts([&] { EXPECT_STREQ("OK", funcgen(("M`" + f).c_str())); }); }));
    return result;
  }

 private:
  PompTexts all() { return {cc.str(), h.str(), icc.str(), tm.str(), wrappers.str()}; }
};

struct SheepFiles {
  OutputStream f90, i_f90, tm, external, macros;

  SheepFiles() {
    foutput_file = f90.f;
    foutput_i_file = i_f90.f;
    foutput_tm_file = tm.f;
    foutput_external_file = external.f;
    fmacro_file = macros.f;
    finit_operator_name();
    finit_output();
    fout_set(fout_implementation);
    genlang = fortran90;
  }
  ~SheepFiles() {
    for (FILE** f : {&foutput_file, &foutput_i_file, &foutput_tm_file, &foutput_external_file, &fmacro_file})
      *f = nullptr;
    finit_output();
    genlang = none;
  }
};

struct SheepText : Trees, SheepFiles {
  SheepText() {
    declare_types(
        "i:int j:int k:int x:real y:real z:complex p:bool q:bool s:string "
        "a:real[4] b:real[4] c:real[3,4] d:real[2,3,4] u:real[0] w:real[0] "
        "f:real g:int vec:real[4] two:multi(real,int) sub:multi() List:none");
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

  // A part of the report on a value or a statement, and what has been written by then.
  void expect_refusals(void (*write)(tAsynt), const char* rows) {
    for (const auto& [tree, message, text] : table<3>(rows)) {
      finit_output();
      const tAsynt t = typed_tree(tree);
      std::string report;
      EXPECT_EQ(text, lines_of(f90.added([&] { report = message_of([&] { write(t); }); }))) << tree;
      EXPECT_TRUE(contains(report, message)) << tree;
    }
  }
};

}  // namespace oz
