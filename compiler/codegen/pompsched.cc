// The schedule of a system in C++. Each worker is a case of a switch:
//
//   case 1:
//       x = zc_yin[0];           the state variables that it reads
//       x_out = -x;              its code
//       zc_yout[0] = x_out;      what it computes
//       break;
//
// The start values are counted from 1, as in the Fortran text, although the workers count from 0.
#include "pompsched.h"

#include <cstdio>
#include <cstdlib>

#include "Asynt.h"
#include "Errors.h"
#include "pompout.h"
#include "pompunp.h"
#include "schedule.h"
#include "unparse.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*pompsched_Exit)() = leave;

namespace {

constexpr int kNowhere = 100'000;

void failed(const char* routine) {
  std::fprintf(stderr, "Error: module pompsched, routine %s failed\n", routine);
  pompsched_Exit();
  std::abort();  // the exit hook must not return
}

int Type_size(tAsynt symbol) { return Schedule_type_size(Symbol_SymInfo(symbol), true, failed); }

void line(const std::string& text, int deeper = 0) {
  cpoutput_indentation(deeper);
  cpoutput(text);
  cpoutput("\n");
}

std::string number(int n) { return std::to_string(n); }

// ---- the start values

void get_real(int place, const std::string& name) {
  cpoutput_indentation(0);
  cpoutput("error = zc_get_real(&zc_init_state[");
  cpoutput_int(place);
  cpoutput("], ");
  cpoutput_double_quote();
  cp_unbreakable_mode = 1;  // no line ends within the quotes
  cpoutput(name);
  cpoutput_double_quote();
  cp_unbreakable_mode = 0;
  cpoutput(");\n");
}

// An array is asked for element by element.
void CPunparse_init_vars(tAsynt v, int nr) {
  for (; Asynt_IsType(v, kSymbol1); v = Symbol1_Symbols(v)) {
    const int size = Type_size(Symbol1_Symbol(v));
    const std::string name = unparse_string(Symbol1_Symbol(v));
    if (size == 1)
      get_real(nr, name);
    else
      for (int i = 0; i < size; i++) get_real(nr + i, name + "[" + number(i) + "]");
    nr += size;
  }
}

void prototypes() {
  cpoutput("\n#include <stdlib.h>\n\n");
  line("extern \"C\"");
  line("{");
  line("void zc_initialize_state (double *);", 1);
  line("void zc_assign_worker (int *, double *, double *);", 1);
  line("int zc_get_real (double *, char *);", 1);
  line("}\n");
}

void initialize_state(const Schedule& s, int n) {
  line("void zc_initialize_state (double zc_init_state[" + number(n) + "])");
  line("{");
  cp_modify_indent(1);
  line("int error;");
  cpoutput_comment();
  line("Initialize the state vector");
  CPunparse_init_vars(s.in, 1);
  cp_modify_indent(-1);
  line("}\n\n");
}

// ---- the workers

void element_loop(int size) {
  line("for (zc_i = 0; zc_i < " + number(size) + "; zc_i++)");
  cpoutput_indentation(1);
}

// An element of a vector from a place on.
std::string shifted(const char* vector, int place) {
  return std::string(vector) + "[zc_i" + (place == 1 ? "" : "+" + number(place - 1)) + "]";
}

// What a worker reads that is no state variable is left as it is. An array is no statement, and ends the run here.
void Split_vec(tAsynt t, const Symbol_places& order) {
  for (; Asynt_IsType(t, kSymbol1); t = Symbol1_Symbols(t)) {
    const tAsynt symbol = Symbol1_Symbol(t);
    const int size = Type_size(symbol);
    const int pos = Place_of(order, symbol);
    if (pos < 0) continue;
    if (size == 1) {
      cpoutput_indentation(0);
      CPunparseVal(symbol);
      cpoutput(" = zc_yin[" + number(pos - 1) + "];\n");
    } else {
      element_loop(size);
      CPunparseStmt(symbol);
      cpoutput("(zc_i+1) = " + shifted("zc_yin", pos) + ";\n");
    }
  }
}

void Concat_vec(tAsynt t, const Symbol_places& order) {
  for (; Asynt_IsType(t, kSymbol1); t = Symbol1_Symbols(t)) {
    const tAsynt symbol = Symbol1_Symbol(t);
    const int size = Type_size(symbol);
    const int pos = Place_of(order, symbol);
    if (size == 1) {
      cpoutput_indentation(0);
      cpoutput("zc_yout[" + number(pos - 1) + "] = ");
      CPunparseVal(symbol);
      cpoutput(";\n");
    } else {
      element_loop(size);
      cpoutput(shifted("zc_yout", pos) + " = ");
      CPunparseVal(symbol);
      cpoutput("(zc_i+1);\n");
    }
  }
}

void CPunparse_w_case(const Schedule& s) {
  const Symbol_places in = Places_of(s.in), out = Places_of(s.out);
  int worker = 1;
  for (tAsynt w = s.workers; Asynt_IsType(w, kInOutExpr1); w = InOutExpr1_InOutExprs(w), worker++) {
    const tAsynt e = InOutExpr1_InOutExpr(w);
    line("case " + number(worker) + ":");
    cp_modify_indent(1);
    Split_vec(InOutExpr_In(e), in);
    CPunparseStmt(InOutExpr_Expr(e));
    cpoutput("\n");
    Concat_vec(InOutExpr_Out(e), out);
    line("break;\n");
    cp_modify_indent(-1);
  }
}

void assign_worker(const Schedule& s, int n) {
  cpoutput_indentation(0);
  cpoutput("void ");
  cpoutput("zc_assign_worker");
  cpoutput(" (int *zc_WorkerID, double zc_yin[");
  cpoutput_int(n);
  cpoutput("], ");
  cpoutput("double zc_yout[");
  cpoutput_int(n);
  cpoutput("])\n");
  line("{");
  cp_modify_indent(1);
  line("int zc_i;");
  cpmake_var_decls(s.workers);
  cpoutput("\n");
  line("switch (*zc_WorkerID)");
  line("{");
  CPunparse_w_case(s);
  line("default:");
  line("exit(1);", 1);
  line("}");
  cp_modify_indent(-1);
  line("}");
}

}  // namespace

void CPunparse_symbols(tAsynt t, const std::string& sep) {
  for (; Asynt_IsType(t, kSymbol1); t = Symbol1_Symbols(t)) {
    CPunparseVal(Symbol1_Symbol(t));
    if (Asynt_IsType(Symbol1_Symbols(t), kSymbol1)) cpoutput(sep);
  }
}

int Find_var_in_syms(tAsynt s, tAsynt t) {
  for (int place = 1; Asynt_IsType(t, kSymbol1); t = Symbol1_Symbols(t), place++)
    if (IsEqualAsynt(Symbol1_Symbol(t), s)) return place;
  if (!Asynt_IsType(t, kSymbol0)) failed("Find_var_in_syms");
  return kNowhere;
}

void CPunparse_parel(tAsynt t) {
  Schedule schedule;
  if (!Schedule_of(t, &schedule)) return;
  const int n = Schedule_list_size(schedule.out, true, failed);
  prototypes();
  initialize_state(schedule, n);
  assign_worker(schedule, n);
}

}  // namespace oz
