// The rewrite of parallel loops and what is written for one: the loops that fill the records and take them apart, the
// types of the records, the task procedure, and the routine that tells the run-time library of it.
#include "sheepforall.h"

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "Asynt.h"
#include "Errors.h"
#include "cse.h"
#include "efunc.h"
#include "index.h"
#include "oz.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"
#include "type.h"
#include "unparse.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*sheepforall_Exit)() = leave;

namespace {

[[noreturn]] void failed(const char* routine) {
  std::fprintf(stderr, "Error: module sheepforall, routine %s failed\n", routine);
  sheepforall_Exit();
  std::abort();  // the exit hook must not return
}

// ---- the shape

// A rewritten loop: the temporaries that hold the records, what they hold, the assignment.
struct Task {
  tAsynt in, out;    // Symbols
  tAsynt ins, outs;  // Expressions
  tAsynt body;
};

bool is_temporary(tAsynt t) { return Asynt_IsType(t, kSymbol) && Asynt_IsType(Symbol_SymInfo(t), kTempSymbol); }

bool has_two_cells(tAsynt list) { return Is_cell(list) && Is_cell(Expression1_Expressions(list)); }

bool task_of(tAsynt symbols, tAsynt inits, tAsynt body, Task* task) {
  if (!Asynt_IsType(symbols, kSymbol1) || !Asynt_IsType(Symbol1_Symbols(symbols), kSymbol1)) return false;
  if (!has_two_cells(inits)) return false;
  const tAsynt in = Symbol1_Symbol(symbols), out = Symbol1_Symbol(Symbol1_Symbols(symbols));
  const tAsynt ins = Expression1_Expression(inits), outs = Expression1_Expression(Expression1_Expressions(inits));
  if (!is_temporary(in) || !is_temporary(out) || !Asynt_IsType(ins, kXList) || !Asynt_IsType(outs, kXList))
    return false;
  *task = {in, out, Variadic_Expressions(ins), Variadic_Expressions(outs), body};
  return true;
}

// The parts of a loop that has been rewritten; false for any other.
bool task_of(tAsynt body, tAsynt procedure, Task* task) {
  if (!is_temporary(procedure)) return false;
  if (Asynt_IsType(body, kXModule))
    return task_of(XModule_Varlist(body), XModule_Initializers(body), XModule_Body(body), task);
  if (Asynt_IsType(body, kXBlock))
    return task_of(XBlock_Varlist(body), XBlock_Initializers(body), XBlock_Body(body), task);
  return false;
}

bool task_of(tAsynt t, Task* task) {
  return Asynt_IsType(t, kForAll) && task_of(ForAll_Body(t), ForAll_Procedure(t), task);
}

std::vector<tAsynt> iterators_of(tAsynt iters, const char* routine) {
  std::vector<tAsynt> list;
  for (; Asynt_IsType(iters, kIterator1); iters = Iterator1_Iterators(iters)) list.push_back(Iterator1_Iterator(iters));
  if (!Asynt_IsType(iters, kIterator0)) failed(routine);
  return list;
}

// Loops that a walk has met. What is done with one walks its tree again, so it waits for the end of the walk.
std::vector<tAsynt> loops;

void collect_loop(tAsynt t) {
  if (Asynt_IsType(t, kForAll)) loops.push_back(t);
}

// The parallel loops of a tree, outer ones first.
std::vector<tAsynt> loops_of(tAsynt t) {
  loops.clear();
  TraverseAsyntTD(t, collect_loop);
  return loops;
}

}  // namespace

bool Is_forall_task(tAsynt t) {
  Task task;
  return task_of(t, &task);
}

// ---- the rewrite

namespace {

unsigned unique_proc_id = 1;  // the number of the next task procedure
Index* variable_index;        // what extract_vars has met, by its text

tAsynt make_proc_symb(tAsynt typ) { return mTempSymbol(typ, NoPosition, unique_proc_id++); }

// A part of an array travels as one value; names of functions do not travel.
char Extract_variables_hlp(tAsynt* t) {
  const bool is_symbol = Asynt_IsType(*t, kSymbol);
  if (!is_symbol && !Asynt_IsType(*t, kXPart)) return 1;
  const char* key = unparse_string(*t);
  if (!is_symbol || !find_compilable(key)) create_entry(variable_index, *t, key);
  return 0;
}

// The variables of an expression, each once, in the reverse of the index's order.
tAsynt extract_vars(tAsynt t) {
  variable_index = make_index(hash_table, 5);
  TraverseAsyntTD2(&t, Extract_variables_hlp);
  tAsynt list = mExpression0();
  Iter* iter = start_iter(variable_index);
  while (tAsynt* entries = iter_next(iter)) list = mExpression1(entries[0], list);
  delete_index(variable_index);
  variable_index = nullptr;
  return list;
}

tAsynt Prepend_iter_vars(tAsynt iters, tAsynt list) {
  const std::vector<tAsynt> all = iterators_of(iters, "Prepend_iter_vars");
  for (size_t i = all.size(); i > 0; i--) list = mExpression1(Iterator_Variable(all[i - 1]), list);
  return list;
}

tAsynt int_type() { return mIntType(nullptr); }

void transform(tAsynt t) {
  if (!Asynt_IsType(ForAll_Body(t), kXSet)) return;
  const tAsynt set = ForAll_Body(t);
  const tPosition pos = PosConv_Pos(Operator_PosConv(set));
  ForAll_Procedure(t) = mSymbol(make_proc_symb(int_type()));
  const tAsynt in = mSymbol(make_temp_symb(int_type()));
  const tAsynt out = mSymbol(make_temp_symb(int_type()));
  const tAsynt ins = mXList(mkNonConvPos(pos), Prepend_iter_vars(ForAll_Iter(t), extract_vars(Binary_RHS(set))));
  const tAsynt outs = mXList(mkNonConvPos(pos), extract_vars(Binary_LHS(set)));
  ForAll_Body(t) =
      mXModule(mSymbol1(in, mSymbol1(out, mSymbol0())), mExpression1(ins, mExpression1(outs, mExpression0())), set);
  CheckAsynt(t);
}

}  // namespace

void Transform_forall(tAsynt* t) {
  for (tAsynt loop : loops_of(*t)) transform(loop);
  CheckAsynt(*t);
}

// ---- names

namespace {

void nl() {
  foutput("\n");
  foutput_indentation(0);
}

void line(const std::string& text) {
  foutput_indentation(0);
  foutput(text);
  foutput("\n");
}

// The name of a task procedure is added to the identifier being built; it is written.
void Foutput_mangled_proc_id(tAsynt s) {
  if (!is_temporary(s)) failed("Foutput_mangled_proc_id");
  foutput_mangled_str("zc_");
  foutput_mangled_str("P");
  foutput_mangled_str(std::to_string(TempSymbol_Number(Symbol_SymInfo(s))));
}

void Foutput_proc_id(tAsynt s) {
  Foutput_mangled_proc_id(s);
  flush_mangled_str();
}

// The name of what belongs to a task procedure: zc_P1_in.
void proc_name(tAsynt proc, const char* what) {
  Foutput_mangled_proc_id(proc);
  foutput_mangled_str(what);
  flush_mangled_str();
}

// "oz_arg%p1", as one name.
void record_part(const char* part, int number) {
  foutput_mangled_str(part);
  foutput_mangled_int(number);
  flush_mangled_str();
}

void assignment(void (*target)(tAsynt e, int n), void (*source)(tAsynt e, int n), tAsynt list) {
  int n = 1;
  for (; Is_cell(list); list = Expression1_Expressions(list), n++) {
    nl();
    target(Expression1_Expression(list), n);
    foutput(" = ");
    source(Expression1_Expression(list), n);
  }
}

void itself(tAsynt e, int) { FunparseVal(e); }

// ---- declarations

// "1:n,1:m"
void Foutput_iter_dims(tAsynt iters) {
  const char* sep = "";
  for (tAsynt it : iterators_of(iters, "Foutput_iter_dims")) {
    if (*sep) foutput(sep);
    FunparseVal(Iterator_Min(it));
    foutput(":");
    FunparseVal(Iterator_Max(it));
    sep = ",";
  }
}

void record_decl(tAsynt proc, const char* what, tAsynt temporary, tAsynt iters) {
  foutput("type(");
  proc_name(proc, what);
  foutput(") ");
  FunparseVal(temporary);
  foutput("(");
  Foutput_iter_dims(iters);
  foutput(")");
}

}  // namespace

char Fmake_forall_decl(tAsynt* t) {
  Task task;
  if (!task_of(*t, &task)) return 1;
  nl();
  record_decl(ForAll_Procedure(*t), "_in", task.in, ForAll_Iter(*t));
  nl();
  record_decl(ForAll_Procedure(*t), "_out", task.out, ForAll_Iter(*t));
  forall_atleast_one = 1;
  return 0;
}

// ---- the statement

namespace {

tAsynt record;                      // the temporary that is being filled or taken apart
std::vector<tAsynt> record_places;  // the loop variables

// "zc_T1(i,j)%p2"
void element_part(tAsynt, int n) {
  FunparseVal(record);
  for (size_t i = 0; i < record_places.size(); i++) {
    foutput(i == 0 ? "(" : ",");
    FunparseVal(record_places[i]);
  }
  if (!record_places.empty()) foutput(")");
  record_part("%p", n);
}

void open_loops(const std::vector<tAsynt>& iters) {
  for (tAsynt it : iters) {
    nl();
    foutput("do ");
    FunparseVal(Iterator_Variable(it));
    foutput(" = ");
    FunparseVal(Iterator_Min(it));
    foutput(", ");
    FunparseVal(Iterator_Max(it));
    f_modify_indent(1);
  }
}

void close_loops(size_t n) {
  for (; n > 0; n--) {
    foutput("\n");
    f_modify_indent(-1);
    foutput_indentation(0);
    foutput("end do");
  }
}

// A nest of loops with an assignment for each expression.
void for_each_record(tAsynt s, const std::vector<tAsynt>& iters, tAsynt list, bool pack) {
  if (!Is_cell(list)) return;
  record = s;
  record_places.clear();
  for (tAsynt it : iters) record_places.push_back(Iterator_Variable(it));
  open_loops(iters);
  pack ? assignment(element_part, itself, list) : assignment(itself, element_part, list);
  close_loops(iters.size());
}

void Funparse_pack_forall(tAsynt s, tAsynt list, tAsynt iters) {
  for_each_record(s, iterators_of(iters, "Funparse_pack_forall"), list, true);
}

void Funparse_unpack_forall(tAsynt s, tAsynt list, tAsynt iters) {
  for_each_record(s, iterators_of(iters, "Funparse_unpack_forall"), list, false);
}

tAsynt pos_conv() { return mkNonConvPos(NoPosition); }

// Max - Min + 1 of an iterator.
tAsynt range_length(tAsynt it) {
  const tAsynt difference = mXSubtract(pos_conv(), Iterator_Max(it), Iterator_Min(it));
  return mXPlus(pos_conv(), mExpression1(difference, mExpression1(mIntConst(1), mExpression0())));
}

// The number of tasks.
tAsynt iteration_count(tAsynt iters) {
  const std::vector<tAsynt> all = iterators_of(iters, "Funparse_forall");
  tAsynt list = mExpression0();
  for (size_t i = all.size(); i > 0; i--) list = mExpression1(range_length(all[i - 1]), list);
  return mXTimes(pos_conv(), list);
}

}  // namespace

void Funparse_forall(tAsynt b, tAsynt i, tAsynt p) {
  Task task;
  if (!Asynt_IsType(b, kXModule) || !task_of(b, p, &task)) return FunparseStmt(Unfold_ForAll(b, i));
  Funparse_pack_forall(task.in, task.ins, i);
  nl();
  foutput("call ");
  foutput("zc_parallel");
  foutput("(");
  proc_name(p, "_id");
  foutput(", ");
  FunparseVal(iteration_count(i));
  foutput(", ");
  FunparseVal(task.in);
  foutput(", ");
  FunparseVal(task.out);
  foutput(")");
  Funparse_unpack_forall(task.out, task.outs, i);
}

// ---- the task procedure

namespace {

tAsynt forall_params;     // the parameters of the function being written
tAsynt forall_localvars;  // its local variables, or an Empty

void record_type(tAsynt proc, const char* what, tAsynt list) {
  nl();
  foutput("type ");
  proc_name(proc, what);
  f_modify_indent(1);
  int n = 1;
  for (; Is_cell(list); list = Expression1_Expressions(list), n++) {
    const tAsynt typ = Find_type(&Expression1_Expression(list));
    nl();
    Foutput_type(typ);
    foutput(" p");
    foutput_int(n);
    Foutput_array_dims(typ);
  }
  f_modify_indent(-1);
  nl();
  foutput("end type ");
  proc_name(proc, what);
}

// The types of the records, and the number that stands for the procedure in the run-time library.
void Fmake_forall_types(tAsynt proc, const Task& task) {
  fout_set(fout_interface);
  nl();
  foutput("integer ");
  proc_name(proc, "_id");
  foutput("\n");
  foutput_indentation(0);
  foutput("common /");
  foutput(f_cblock_name);
  foutput("/ ");
  proc_name(proc, "_id");
  record_type(proc, "_in", task.ins);
  record_type(proc, "_out", task.outs);
  foutput("\n");
  fout_set(fout_implementation);
}

void record_argument(tAsynt proc, const char* what, const char* name) {
  foutput_indentation(0);
  foutput("type(");
  proc_name(proc, what);
  foutput(") ");
  foutput(name);
  foutput("\n");
}

void use_own_module() {
  line("use " + f_module_name);
  line("implicit none");
}

void subroutine_head(tAsynt proc, const char* what, const char* arguments) {
  nl();
  foutput("subroutine ");
  proc_name(proc, what);
  foutput(arguments);
  foutput("\n");
  f_modify_indent(1);
  use_own_module();
}

void subroutine_end(tAsynt proc, const char* what) {
  f_modify_indent(-1);
  foutput_indentation(0);
  foutput("end subroutine ");
  proc_name(proc, what);
  foutput("\n");
}

void comment(const char* text) {
  foutput_comment();
  foutput(text);
}

void Fmake_forall_proc(tAsynt proc, const Task& task) {
  subroutine_head(proc, "", " (oz_res, oz_arg)");
  record_argument(proc, "_in", "oz_arg");
  record_argument(proc, "_out", "oz_res");
  fmake_var_decls(forall_params);
  fmake_var_decls(forall_localvars);
  comment("unpack args");
  assignment(
      itself, [](tAsynt, int n) { record_part("oz_arg%p", n); }, task.ins);
  comment("body\n");
  FunparseStmt(task.body);
  comment("pack result");
  assignment([](tAsynt, int n) { record_part("oz_res%p", n); }, itself, task.outs);
  foutput("\n");
  subroutine_end(proc, "");
}

// Two records of each kind, so that the run-time library can tell their size from the distance between them.
void Fmake_forall_init(tAsynt proc) {
  subroutine_head(proc, "_init", " (init_func)");
  line("integer, external :: init_func");
  foutput_indentation(0);
  foutput("external ");
  Foutput_proc_id(proc);
  nl();
  foutput("type(");
  proc_name(proc, "_in");
  foutput(") in(2)\n");
  record_argument(proc, "_out", "out(2)");
  foutput_indentation(0);
  proc_name(proc, "_id");
  foutput(" = init_func(");
  Foutput_proc_id(proc);
  foutput(", in(1), in(2), out(1), out(2))\n");
  subroutine_end(proc, "_init");
  forall_init_procs = mSymbol1(proc, forall_init_procs);
}

void task_procedure(tAsynt t) {
  Task task;
  if (!task_of(t, &task)) return;
  Fmake_forall_types(ForAll_Procedure(t), task);
  Fmake_forall_proc(ForAll_Procedure(t), task);
  Fmake_forall_init(ForAll_Procedure(t));
}

}  // namespace

void Funparse_forall_fn(tAsynt params, tAsynt e) {
  forall_params = params;
  tAsynt body = e;
  if (Asynt_IsType(e, kXModule)) {
    forall_localvars = XModule_Varlist(e);
    body = XModule_Body(e);
  } else if (Asynt_IsType(e, kXBlock)) {
    forall_localvars = XBlock_Varlist(e);
    body = XBlock_Body(e);
  } else {
    forall_localvars = mEmpty();
  }
  for (tAsynt loop : loops_of(body)) task_procedure(loop);
}

// ---- the registering subroutine

namespace {

void for_each_proc(tAsynt procs, const char* before, const char* after) {
  for (; Asynt_IsType(procs, kSymbol1); procs = Symbol1_Symbols(procs)) {
    foutput_indentation(0);
    foutput(before);
    proc_name(Symbol1_Symbol(procs), "_init");
    foutput(after);
  }
  if (!Asynt_IsType(procs, kSymbol0)) failed("Fmake_forall_parallel_init");
}

}  // namespace

// The end line spells another name than the head: callers of the text know it so.
void Fmake_forall_parallel_init(tAsynt procs) {
  if (Asynt_IsType(procs, kSymbol0)) return;
  fout_set(fout_interface);
  foutput("\n");
  line("interface");
  fout_set(fout_both);
  line("subroutine zc_init_parallel(init_func)");
  line("use " + f_module_name + ", zc_this => zc_init_parallel");
  fout_set(fout_interface);
  line("use ZentricaPrecision");
  fout_set(fout_both);
  line("implicit none");
  line("integer, external :: init_func");
  fout_set(fout_implementation);
  for_each_proc(procs, "external ", "\n");
  comment("One call for each ForAll function");
  foutput("\n");
  for_each_proc(procs, "call ", "(init_func)\n");
  fout_set(fout_both);
  line("end subroutine oz_init_parallel");
  fout_set(fout_interface);
  line("end interface");
  fout_set(fout_implementation);
}

}  // namespace oz
