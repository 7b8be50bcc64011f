// Functions of a model as C++ text in memory.
#pragma once

#include <string>

#include "al_cmds.h"
#include "codegen.h"
#include "dig.h"
#include "efunc.h"
#include "fatal_text.h"
#include "flatten.h"
#include "model_text.h"
#include "name.h"
#include "output_stream.h"
#include "ozt.h"
#include "pompout.h"
#include "type.h"
#include "unroll.h"

namespace oz {

struct PompTexts {
  std::string cc, h, icc, tm, wrappers;
};

struct PompModel : ModelText {
  OutputStream cc, h, icc, tm, wrappers, levels;

  void SetUp() override {
    cpinit_operator_name();
    Begintype();
    genlang = cplusplus;
    cpoutput_file = cc.f;
    cpoutput_h_file = h.f;
    cpoutput_icc_file = icc.f;
    cpoutput_tm_file = tm.f;
    cpoutput_if_file = wrappers.f;
    cpoutput_lm_file = levels.f;
    cpinit();
  }
  void TearDown() override {
    cpoutput_file = cpoutput_h_file = cpoutput_icc_file = cpoutput_tm_file = cpoutput_if_file = cpoutput_lm_file =
        nullptr;
    cpinit();
    glob_genmode_flag = evaluate_function_flag = 0;
    genlang = none;
  }

  // Keeps the model M with these definitions.
  static void keep(const std::string& text) {
    tAsynt t = parsed(text);
    tIndex instances = nullptr;
    Qualify(&t);
    ozt(&t);
    unroll(&t, &instances);
    flatten(&t);
    FixNests(t);
    remember(t, GetCompilables(t), instances);
  }

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

}  // namespace oz
