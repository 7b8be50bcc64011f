// Statements of the Fortran generator. Each pads its own lines and ends in a line end; what stands within another
// statement is two columns deeper.
#include <vector>

#include "efunc.h"
#include "oz.h"
#include "ozerrors.h"
#include "sheepforall.h"
#include "sheepout.h"
#include "sheepsched.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"
#include "type.h"
#include "unparse.h"

namespace oz {

// ---- parallel loops

tAsynt Unfold_ForAll(tAsynt body, tAsynt iters) {
  std::vector<tAsynt> loops;
  for (; Asynt_IsType(iters, kIterator1); iters = Iterator1_Iterators(iters))
    loops.push_back(Iterator1_Iterator(iters));
  for (size_t i = loops.size(); i > 0; i--) body = mDo(body, loops[i - 1]);
  return body;
}

namespace {

bool found_function;

// Elements of instance sets are applications within symbol informations, but no calls.
char look_for_function(tAsynt* t) {
  if (Asynt_IsType(*t, kSimpleFFE) || Asynt_IsType(*t, kComplexFFE)) found_function = true;
  return !found_function && !Asynt_IsType(*t, kSymInfo);
}

}  // namespace

bool Functionsp(tAsynt body) {
  found_function = false;
  WalkAsynt(&body, look_for_function);
  return found_function;
}

namespace {

[[noreturn]] void no_statement(tAsynt t) { Refuse_form(t, "A statement", "single expression"); }

// ---- lines

void line(const char* text) {
  foutput_indentation(0);
  foutput(text);
  foutput("\n");
}

// A line with a value in it.
void line_of(const char* before, tAsynt value, const char* after) {
  foutput_indentation(0);
  foutput(before);
  FunparseVal(value);
  foutput(after);
}

// A line of the construct around the statements that are being written.
void line_between(const char* text) {
  f_modify_indent(-1);
  line(text);
  f_modify_indent(1);
}

void condition_between(const char* before, tAsynt condition) {
  f_modify_indent(-1);
  line_of(before, condition, ") then\n");
  f_modify_indent(1);
}

void deeper(tAsynt statement) {
  f_modify_indent(1);
  Funparse_statement(statement);
  f_modify_indent(-1);
}

// ---- sequences

void Funparse_compound(tAsynt list) {
  for (; Is_cell(list); list = Expression1_Expressions(list)) Funparse_statement(Expression1_Expression(list));
}

void print(const char* before, tAsynt list) {
  foutput_indentation(0);
  foutput(before);
  Funparse_exprs(list, ", ");
  foutput("\n");
}

// Assigns the initial values of a scope.
void Foutput_var_inits(tAsynt symbols, tAsynt inits) {
  for (; Asynt_IsType(symbols, kSymbol1) && Is_cell(inits);
       symbols = Symbol1_Symbols(symbols), inits = Expression1_Expressions(inits)) {
    if (Asynt_IsType(Expression1_Expression(inits), kEmpty)) continue;
    foutput("\n");
    foutput_indentation(0);
    FunparseVal(Symbol1_Symbol(symbols));
    foutput(" = ");
    FunparseVal(Expression1_Expression(inits));
  }
  if (!Asynt_IsType(symbols, kSymbol0) || !Asynt_IsType(inits, kExpression0))
    die_msg("F90 unparser: Internal error in Foutput_var_inits.\n");
}

void scope(tAsynt symbols, tAsynt inits, tAsynt body) {
  Foutput_var_inits(symbols, inits);
  foutput("\n");
  Funparse_statement(body);
}

// ---- loops

void for_loop(tAsynt t) {
  foutput("\n");
  Funparse_statement(XFor_Start(t));
  line_of("do while (", XFor_Test(t), ")\n");
  f_modify_indent(1);
  Funparse_statement(XFor_Body(t));
  foutput("\n");
  Funparse_statement(XFor_Incr(t));
  foutput("\n");
  f_modify_indent(-1);
  line("end do");
}

void while_loop(tAsynt t) {
  line_of("do while (", XWhile_Test(t), ")\n");
  deeper(XWhile_Body(t));
  foutput("\n");
  line("end do");
}

// The opening line of a loop over a range: "do i = 1, n".
void range_line(const char* word, tAsynt iterator) {
  line_of(word, Iterator_Variable(iterator), " = ");
  FunparseVal(Iterator_Min(iterator));
  foutput(", ");
  FunparseVal(Iterator_Max(iterator));
  foutput("\n");
}

void do_loop(tAsynt t) {
  range_line("do ", Do_Iter(t));
  f_modify_indent(1);
  Funparse_statement(Do_Expr(t));
  foutput("\n");
  f_modify_indent(-1);
  line("end do");
}

// ---- parallel loops of both languages

void Funparse_hpf_forall(tAsynt body, tAsynt iters) {
  int depth = 0;
  for (; Asynt_IsType(iters, kIterator1); iters = Iterator1_Iterators(iters), depth++) {
    range_line("forall ", Iterator1_Iterator(iters));
    f_modify_indent(1);
  }
  Funparse_statement(body);
  foutput("\n");
  for (; depth > 0; depth--) {
    f_modify_indent(-1);
    line("end forall");
  }
}

// A body that calls functions is no forall of the language: it becomes loops under a directive.
void forall(tAsynt t) {
  if (genlang == hpf && !Functionsp(ForAll_Body(t))) return Funparse_hpf_forall(ForAll_Body(t), ForAll_Iter(t));
  if (genlang == hpf) {
    foutput_comment();
    foutput("HPF$");
    foutput("independent\n");
    return Funparse_statement(Unfold_ForAll(ForAll_Body(t), ForAll_Iter(t)));
  }
  Funparse_forall(ForAll_Body(t), ForAll_Iter(t), ForAll_Procedure(t));
  foutput("\n");
}

// ---- conditionals

// The condition and branch of an If whose line has been begun, and all that its else branches hold.
void Funparse_ifs(tAsynt t) {
  for (;;) {
    FunparseVal(XIf_Condition(t));
    foutput(") then\n");
    Funparse_statement(XIf_T(t));
    t = XIf_F(t);
    if (!Asynt_IsType(t, kXIf)) break;
    f_modify_indent(-1);
    foutput_indentation(0);
    f_modify_indent(1);
    foutput("else if (");
  }
  if (Asynt_IsType(t, kEmpty)) return;
  foutput("\n");
  line_between("else");
  Funparse_statement(t);
}

void if_statement(tAsynt t) {
  foutput_indentation(0);
  foutput("if (");
  f_modify_indent(1);
  Funparse_ifs(t);
  f_modify_indent(-1);
  foutput("\n");
  line("end if");
}

// The pairs of condition and value behind the first one.
void Funparse_which(tAsynt list) {
  while (Is_cell(list)) {
    const tAsynt rest = Expression1_Expressions(list);
    condition_between("else if (", Expression1_Expression(list));
    if (!Is_cell(rest)) die_msg("F90 unparser: Bad arguments to Which[], perhaps different length of parameters.\n");
    Funparse_statement(Expression1_Expression(rest));
    list = Expression1_Expressions(rest);
  }
}

void which(tAsynt list) {
  if (Asynt_IsType(list, kExpression0)) return;
  line_of("if (", Expression1_Expression(list), ") then\n");
  const tAsynt rest = Expression1_Expressions(list);
  if (!Is_cell(rest)) die_msg("F90 unparser: Bad arguments to Which[], perhaps different length of parameters.\n");
  f_modify_indent(1);
  Funparse_statement(Expression1_Expression(rest));
  Funparse_which(Expression1_Expressions(rest));
  f_modify_indent(-1);
  foutput("\n");
  line("end if");
}

// ---- shapes

// Gives an array of unknown size its shape; any other has it from its declaration.
void set_shape(tAsynt list) {
  if (!Is_cell(list)) sheepunp_abort("Funparse_set_shape");
  const tAsynt target = Expression1_Expression(list);
  if (!array_has_unknown_dims(Find_type(&Expression1_Expression(list)))) return;
  line_of("if (associated(", target, ")) nullify(");
  FunparseVal(target);
  foutput(")\n");
  line_of("allocate(", target, "(");
  Funparse_part_indices(Expression1_Expressions(list));
  foutput("))\n");
}

void call_statement(tAsynt t) {
  if (!IsSubroutine(Called_type(t))) no_statement(t);
  foutput_indentation(0);
  Funparse_call_statement(t);
}

}  // namespace

void Funparse_statement(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kXVoidFunc:
    case kEmpty:
    case kComment: return;
    case kXCompoundExpression: return Funparse_compound(Variadic_Expressions(t));
    case kXPut: return line_of("PRINT *, ", XPut_Expression(t), "\n");
    case kXPrint: return print("print *, ", XPrint_Expressions(t));
    case kXBreak: return line("exit");
    case kXModule: return scope(XModule_Varlist(t), XModule_Initializers(t), XModule_Body(t));
    case kXBlock: return scope(XBlock_Varlist(t), XBlock_Initializers(t), XBlock_Body(t));
    case kXFor: return for_loop(t);
    case kXWhile: return while_loop(t);
    case kDo: return do_loop(t);
    case kXIf: return if_statement(t);
    case kXWhich: return which(XWhich_Expressions(t));
    case kXSetShape: return set_shape(Variadic_Expressions(t));
    case kForAll: return forall(t);
    case kParExec: return Funparse_parel(t);
    case kSimpleFFE:
    case kComplexFFE: return call_statement(t);
    case kXSet: return Funparse_set(t);
    default: no_statement(t);
  }
}

void FunparseStmt(tAsynt t) {
  Begin_type_memory();
  Funparse_statement(t);
  End_type_memory();
}

}  // namespace oz
