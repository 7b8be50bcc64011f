// The schedule of a system in Fortran. Each worker is a case of a computed "go to":
//
//         go to (1, 2) zc_WorkerID
//         stop
//    1      continue
//         x = zc_yin(1)           the state variables that it reads
//         x_out = -x              its code
//         zc_yout(1) = x_out      what it computes
//         go to 99
//
// A variable is declared once for all workers: the routine has one scope.
#include "sheepsched.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Asynt.h"
#include "Errors.h"
#include "schedule.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "unparse.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*sheepsched_Exit)() = leave;

namespace {

void failed(const char* routine) {
  std::fprintf(stderr, "Error: module sheepsched, routine %s failed\n", routine);
  sheepsched_Exit();
  std::abort();  // the exit hook must not return
}

int Type_size(tAsynt symbol) { return Schedule_type_size(Symbol_SymInfo(symbol), false, failed); }

void line(const std::string& text) {
  foutput_indentation(0);
  foutput(text);
  foutput("\n");
}

std::string number(int n) { return std::to_string(n); }

// ---- the start values

void get_real(int place, const std::string& name) {
  line("error = zc_get_real(zc_init_state(" + number(place) + "), '" + name + "')");
}

// An array is asked for element by element.
void Funparse_init_vars(tAsynt syms, int nr) {
  for (; Asynt_IsType(syms, kSymbol1); syms = Symbol1_Symbols(syms)) {
    const int size = Type_size(Symbol1_Symbol(syms));
    const std::string name = unparse_string(Symbol1_Symbol(syms));
    if (size == 1)
      get_real(nr, name);
    else
      for (int i = 0; i < size; i++) get_real(nr + i, name + "[" + number(i) + "]");
    nr += size;
  }
}

void initialize_state(const Schedule& s, int n) {
  line("subroutine zc_initialize_state (zc_init_state)");
  f_modify_indent(1);
  line("implicit none");
  line("integer error");
  line("real*8 zc_init_state(" + number(n) + ")");
  line("real*8 zc_get_real");
  foutput_comment();
  foutput("Initialize the state vector\n");
  Funparse_init_vars(s.in, 1);
  f_modify_indent(-1);
  line("end");
  foutput("\n\n");
}

// ---- the workers

// "do zc_i = 1, 3", and the line in the loop padded.
void element_loop(int size) {
  line("do zc_i = 1, " + number(size));
  foutput_indentation(1);
}

// An element of a vector from a place on.
std::string shifted(const char* vector, int place) {
  return std::string(vector) + "(zc_i" + (place == 1 ? "" : "+" + number(place - 1)) + ")";
}

// What a worker reads that is no state variable is left as it is.
void Split_vec(tAsynt vars, const Symbol_places& order) {
  for (; Asynt_IsType(vars, kSymbol1); vars = Symbol1_Symbols(vars)) {
    const tAsynt symbol = Symbol1_Symbol(vars);
    const int pos = Place_of(order, symbol);
    const int size = Type_size(symbol);
    if (pos < 0) continue;
    if (size == 1) {
      foutput_indentation(0);
      FunparseVal(symbol);
      foutput(" = zc_yin(" + number(pos) + ")\n");
    } else {
      element_loop(size);
      FunparseVal(symbol);
      foutput("(zc_i) = " + shifted("zc_yin", pos) + "\n");
      line("end do");
    }
  }
}

// The blank behind "end do" and its line end becomes part of the next line's margin.
void Concat_vec(tAsynt vars, const Symbol_places& order) {
  for (; Asynt_IsType(vars, kSymbol1); vars = Symbol1_Symbols(vars)) {
    const tAsynt symbol = Symbol1_Symbol(vars);
    const int pos = Place_of(order, symbol);
    const int size = Type_size(symbol);
    if (size == 1) {
      foutput_indentation(0);
      foutput("zc_yout(" + number(pos) + ") = ");
      FunparseVal(symbol);
      foutput("\n");
    } else {
      element_loop(size);
      foutput(shifted("zc_yout", pos) + " = ");
      FunparseVal(symbol);
      foutput("(zc_i)\n");
      foutput_indentation(0);
      foutput("end do\n ");
    }
  }
}

void Funparse_goto(tAsynt workers) {
  if (!Asynt_IsType(workers, kInOutExpr1)) return;
  foutput_indentation(0);
  foutput("go to (");
  for (int worker = 1; Asynt_IsType(workers, kInOutExpr1); workers = InOutExpr1_InOutExprs(workers), worker++) {
    if (worker > 1) foutput(", ");
    foutput_int(worker);
  }
  foutput(") zc_WorkerID\n");
}

void Funparse_w_case(const Schedule& s) {
  const Symbol_places in = Places_of(s.in), out = Places_of(s.out);
  int worker = 1;
  for (tAsynt w = s.workers; Asynt_IsType(w, kInOutExpr1); w = InOutExpr1_InOutExprs(w), worker++) {
    const tAsynt e = InOutExpr1_InOutExpr(w);
    foutput(" " + number(worker) + "      continue\n");
    Split_vec(InOutExpr_In(e), in);
    FunparseStmt(InOutExpr_Expr(e));
    foutput("\n");
    Concat_vec(InOutExpr_Out(e), out);
    line("go to 99");
  }
}

void assign_worker(const Schedule& s, int n) {
  line("subroutine zc_assign_worker (zc_WorkerID, zc_yin, zc_yout)");
  f_modify_indent(1);
  line("implicit none");
  line("integer zc_WorkerID, zc_i");
  line("real*8 zc_yin(" + number(n) + "), zc_yout(" + number(n) + ")");
  fmake_var_decls(s.workers);
  foutput("\n");
  Funparse_goto(s.workers);
  line("stop");
  foutput("\n");
  Funparse_w_case(s);
  foutput(" 99       continue\n");
  f_modify_indent(-1);
  line("end");
}

}  // namespace

void Funparse_symbols(tAsynt t, const char* sep) {
  for (; Asynt_IsType(t, kSymbol1); t = Symbol1_Symbols(t)) {
    FunparseVal(Symbol1_Symbol(t));
    if (Asynt_IsType(Symbol1_Symbols(t), kSymbol1)) foutput(sep);
  }
}

void Funparse_parel(tAsynt t) {
  Schedule schedule;
  if (!Schedule_of(t, &schedule)) return;
  const int n = Schedule_list_size(schedule.out, false, failed);
  initialize_state(schedule, n);
  assign_worker(schedule, n);
}

}  // namespace oz
