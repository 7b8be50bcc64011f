// Function transformation.
//
// A host function yields a value; a routine of the target languages has out-parameters. For
//
//   {real, real} f[real x_] := {x, 2 x}
//
// the head becomes f with the arguments x, OutParam 1, OutParam 2, and the body the compound OutParam 1 = x;
// OutParam 2 = 2 x. A single result keeps the declared type, and OutParam 1 stands for the function's value.

#include "fun.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_set>
#include <vector>

#include "Errors.h"
#include "fun_parts.h"
#include "index.h"
#include "oz.h"
#include "ozerrors.h"
#include "type.h"
#include "unparse.h"
#include "veritrans.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*fun_Exit)() = leave;

void fun_failure(const char* routine) {
  std::fprintf(stderr, "Error: module fun, routine %s failed\n", routine);
  fun_Exit();
  std::abort();
}

namespace {

bool simple_type = true;  // the return type of the function at work is a single value, no list of types

bool is_empty_list(tAsynt list) { return Asynt_IsType(list, kExpression0); }

// ---- lists

// The place of a list's end.
tAsynt* end_of_expressions(tAsynt* list) {
  while (Asynt_IsType(*list, kExpression1)) list = &Expression1_Expressions(*list);
  return list;
}

tAsynt* end_of_symbols(tAsynt* list) {
  while (Asynt_IsType(*list, kSymbol1)) list = &Symbol1_Symbols(*list);
  return list;
}

// Appends at *end, which is moved on.
void append_expression(tAsynt** end, tAsynt t) {
  **end = mExpression1(t, mExpression0());
  *end = &Expression1_Expressions(**end);
}

void append_symbol(tAsynt** end, tAsynt t) {
  **end = mSymbol1(t, mSymbol0());
  *end = &Symbol1_Symbols(**end);
}

// ---- out-parameters

// One OutParam per type, numbered in declared order.
void Make_out_param(tAsynt type, unsigned* outparamno, tAsynt** end) {
  if (!Asynt_IsType(type, kMultiType)) {
    append_expression(end, mSymbol(mOutParam(type, NoPosition, (*outparamno)++)));
    return;
  }
  simple_type = false;
  for (tAsynt types = MultiType_Types(type); Asynt_IsType(types, kType1); types = Type1_Types(types))
    Make_out_param(Type1_Type(types), outparamno, end);
}

// The results of a function as out-parameters. A routine with several results returns nothing itself.
tAsynt Create_out_params(tAsynt* type) {
  simple_type = true;
  unsigned outparamno = 1;
  tAsynt list = mExpression0();
  tAsynt* end = &list;
  Make_out_param(*type, &outparamno, &end);
  if (!simple_type) *type = mMultiType(mType0());
  return list;
}

// A copy of the arguments with each pattern replaced by its name.
tAsynt mangle_args(tAsynt list) {
  tAsynt result = mExpression0();
  tAsynt* end = &result;
  for (; Asynt_IsType(list, kExpression1); list = Expression1_Expressions(list)) {
    tAsynt pattern = Expression1_Expression(list);
    if (!Asynt_IsType(pattern, kXPattern)) die_msg("mangle_args: bad args");
    append_expression(&end, XPattern_Name(pattern));
  }
  if (!is_empty_list(list)) die_msg("mangle_args: bad args");
  return result;
}

// ---- return values

tPosition info_position(tAsynt symbol) { return SymInfo_Pos(Symbol_SymInfo(symbol)); }

// *expr becomes the assignment of its old self to var. A value that does not fit is reported, and assigned as well.
void make_retval_assign(tAsynt* expr, tAsynt var) {
  tAsynt rt = Find_type(expr);
  tAsynt vt = SymInfo_Type(Symbol_SymInfo(var));
  const tPosition pos = info_position(var);
  if (Narrower(vt, rt)) {
    error_msg_pos2(pos, "Incompatible types in return statement :");
    error_msg_pos2(pos, "   Assigned to %s", unparse_string(var));
    error_msg_pos2(pos, "   Of type %s", unparse_string(vt));
    error_msg_pos2(pos, "   Assigned from  %s", unparse_string(*expr));
    error_msg_pos2(pos, "   Of type %s", unparse_string(rt));
  }
  if (NarrowerInit(vt, rt)) {
    error_msg_pos2(pos,
                   "Incompatible types for class initialisation in return statement; consider using intermediate "
                   "variables for expansion :");
    error_msg_pos2(pos, "   Assigned to %s", unparse_string(var));
    error_msg_pos2(pos, "   Assigned from  %s", unparse_string(*expr));
  }
  *expr = mXSet(mkNonConvPos(pos), var, *expr);
}

// Walks values and out-parameters in step.
void setup_retval_assigns(tPosition pos, tAsynt exprs, tAsynt outs) {
  while (Asynt_IsType(exprs, kExpression1) && Asynt_IsType(outs, kExpression1)) {
    make_retval_assign(&Expression1_Expression(exprs), Expression1_Expression(outs));
    exprs = Expression1_Expressions(exprs);
    outs = Expression1_Expressions(outs);
  }
  if (!is_empty_list(exprs) || !is_empty_list(outs)) error_msg_pos2(pos, "Function returns wrong number of values.");
}

bool is_list_call(tAsynt t) {
  if (Asynt_Kind(t) != kSimpleFFE || !Asynt_IsType(SimpleFFE_Name(t), kSymbol)) return false;
  tAsynt info = Symbol_SymInfo(SimpleFFE_Name(t));
  return Asynt_Kind(info) == kAbsoluteSymbol && std::strcmp(NamedSymbol_Name(info), "List") == 0;
}

bool is_call_of_name(tAsynt t) {
  return Asynt_Kind(t) == kSimpleFFE && Asynt_IsType(SimpleFFE_Name(t), kSymbol) &&
         Asynt_Kind(Symbol_SymInfo(SimpleFFE_Name(t))) == kAbsoluteSymbol;
}

// A list of values becomes the compound of their assignments.
void assign_list(tAsynt* expr, tAsynt out) {
  const bool is_call = Asynt_Kind(*expr) == kSimpleFFE;
  tAsynt list = is_call ? FullFormExpression_Args(*expr) : Variadic_Expressions(*expr);
  const tPosition pos = is_call ? info_position(SimpleFFE_Name(*expr)) : PosConv_Pos(Operator_PosConv(*expr));
  setup_retval_assigns(is_call ? pos : NoPosition, list, out);
  *expr = mXCompoundExpression(mkNonConvPos(pos), list);
}

// The place of the expression that yields the value: the body of a module, the last statement of a sequence. Null for
// an empty sequence.
tAsynt* value_place(tAsynt* expr) {
  for (;;) {
    if (Asynt_Kind(*expr) == kXModule) {
      expr = &XModule_Body(*expr);
    } else if (Asynt_Kind(*expr) == kXBlock) {
      expr = &XBlock_Body(*expr);
    } else if (Asynt_Kind(*expr) == kXCompoundExpression) {
      tAsynt list = Variadic_Expressions(*expr);
      if (!Asynt_IsType(list, kExpression1)) return nullptr;
      while (Asynt_IsType(Expression1_Expressions(list), kExpression1)) list = Expression1_Expressions(list);
      expr = &Expression1_Expression(list);
    } else {
      return expr;
    }
  }
}

// Turns the expressions that yield the value into assignments to the out-parameters. A routine whose declared type is
// a list, even of one type, takes its values from a list; a call then yields the values by itself and is left alone,
// unless it is the one value.
void insert_retval_assigns(tAsynt* expr, tAsynt out) {
  if (is_empty_list(out)) return;
  expr = value_place(expr);
  if (!expr || Asynt_Kind(*expr) == kExternBody || Asynt_Kind(*expr) == kExternalDeclaration) return;
  const bool one_value = is_empty_list(Expression1_Expressions(out));
  const bool is_list = Asynt_Kind(*expr) == kXList || is_list_call(*expr);
  if (is_list && !simple_type)
    assign_list(expr, out);
  else if (one_value)
    make_retval_assign(expr, Expression1_Expression(out));
  else if (!is_call_of_name(*expr))
    error_msg("Return type and Right-hand-side do not match. Body is left empty.");
}

// ---- head and body

void Transform_fun(tAsynt* head, tAsynt* rhs) {
  Merge_member_head(head);
  if (!Asynt_IsType(*head, kSimpleFFE)) return;
  tAsynt out = Create_out_params(&SymInfo_Type(Symbol_SymInfo(SimpleFFE_Name(*head))));
  insert_retval_assigns(rhs, out);
  FullFormExpression_Args(*head) = append_exprs(mangle_args(FullFormExpression_Args(*head)), out);
}

// ---- temporaries

Index* temp_vars = nullptr;

// The symbol informations of temporaries that a list declares already: by number, and those that share their number
// with another.
std::vector<tAsynt> declared_numbers;
std::unordered_set<tAsynt> declared_besides;

void note_declared_temp(tAsynt info) {
  const size_t number = TempSymbol_Number(info);
  if (number >= declared_numbers.size()) declared_numbers.resize(std::max(number + 1, 2 * declared_numbers.size()));
  tAsynt& known = declared_numbers[number];
  if (!known)
    known = info;
  else if (known != info)
    declared_besides.insert(info);
}

void note_declared(tAsynt symbols) {
  for (; Asynt_IsType(symbols, kSymbol1); symbols = Symbol1_Symbols(symbols)) {
    const tAsynt info = Symbol_SymInfo(Symbol1_Symbol(symbols));
    if (Asynt_IsType(info, kTempSymbol)) note_declared_temp(info);
  }
}

bool is_declared_temp(tAsynt info) {
  const size_t number = TempSymbol_Number(info);
  return (number < declared_numbers.size() && declared_numbers[number] == info) || declared_besides.count(info) != 0;
}

// A module inside the body stands before what it declares in the walk.
char Ctv_hlp(tAsynt* t) {
  if (Asynt_Kind(*t) == kXModule) note_declared(XModule_Varlist(*t));
  if (Asynt_Kind(*t) == kXBlock) note_declared(XBlock_Varlist(*t));
  if (!Asynt_IsType(*t, kSymbol)) return 1;
  tAsynt info = Symbol_SymInfo(*t);
  if (!Asynt_IsType(info, kTempSymbol)) return 0;
  if (!is_declared_temp(info)) create_entry(temp_vars, *t, unparse_string(*t));
  return 1;
}

// Declares the temporaries of a body in its scope.
tAsynt Decl_temp_vars(tAsynt rhs) {
  if (Asynt_Kind(rhs) == kXModule) {
    collect_temp_vars(&XModule_Varlist(rhs), &XModule_Initializers(rhs), XModule_Body(rhs));
    return rhs;
  }
  if (Asynt_Kind(rhs) == kXBlock) {
    collect_temp_vars(&XBlock_Varlist(rhs), &XBlock_Initializers(rhs), XBlock_Body(rhs));
    return rhs;
  }
  tAsynt symbols = mSymbol0();
  tAsynt initializers = mExpression0();
  collect_temp_vars(&symbols, &initializers, rhs);
  return Asynt_IsType(symbols, kSymbol1) ? mXModule(symbols, initializers, rhs) : rhs;
}

// ---- search

tAsynt found_temp_syminfo = nullptr;
unsigned looking_for_temp = 0;

char IsTemp(tAsynt* t) {
  if (found_temp_syminfo) return 0;
  if (Asynt_Kind(*t) == kTempSymbol && TempSymbol_Number(*t) == looking_for_temp) found_temp_syminfo = *t;
  return found_temp_syminfo == nullptr;
}

}  // namespace

// ---- what other modules use

tAsynt append_exprs(tAsynt e1, tAsynt e2) {
  tAsynt result = e2;
  tAsynt* end = &result;
  for (; Asynt_IsType(e1, kExpression1); e1 = Expression1_Expressions(e1)) {
    *end = mExpression1(Expression1_Expression(e1), e2);
    end = &Expression1_Expressions(*end);
  }
  if (!is_empty_list(e1)) die_msg("mangle_args: bad args");
  return result;
}

tAsynt Merge_expressions(tAsynt e1, tAsynt e2) {
  *end_of_expressions(&e1) = e2;
  return e1;
}

tAsynt Merge_symbols(tAsynt s1, tAsynt s2) {
  *end_of_symbols(&s1) = s2;
  return s1;
}

tAsynt Make_expressions(tAsynt e) {
  if (Asynt_Kind(e) == kXCompoundExpression) return Variadic_Expressions(e);
  return mExpression1(e, mExpression0());
}

tAsynt Merge_xmodules(tAsynt m1, tAsynt m2) {
  tAsynt body = Merge_expressions(Make_expressions(XModule_Body(m1)), Make_expressions(XModule_Body(m2)));
  return mXModule(Merge_symbols(XModule_Varlist(m1), XModule_Varlist(m2)),
                  Merge_expressions(XModule_Initializers(m1), XModule_Initializers(m2)),
                  mXCompoundExpression(mkNonConvPos(NoPosition), body));
}

void collect_temp_vars(tAsynt* sp, tAsynt* ip, tAsynt body) {
  temp_vars = make_index(hash_table, 5);
  note_declared(*sp);
  WalkAsynt(&body, Ctv_hlp);
  sp = end_of_symbols(sp);
  ip = end_of_expressions(ip);
  Iter* iter = start_iter(temp_vars);
  while (tAsynt* entries = iter_next(iter)) {
    append_symbol(&sp, entries[0]);
    append_expression(&ip, mEmpty());
  }
  delete_index(temp_vars);
  temp_vars = nullptr;
  declared_numbers = {};
  declared_besides.clear();
}

tAsynt Make_csed_function(tAsynt t) {
  tAsynt symbols = mSymbol0();
  tAsynt inits = mExpression0();
  tAsynt* symbols_end = &symbols;
  tAsynt* inits_end = &inits;
  tAsynt list = t;
  for (; Asynt_IsType(list, kExpression1); list = Expression1_Expressions(list)) {
    tAsynt statement = Expression1_Expression(list);
    if (Asynt_Kind(statement) != kXSet || !Asynt_IsType(Binary_LHS(statement), kSymbol)) continue;
    append_symbol(&symbols_end, Binary_LHS(statement));
    append_expression(&inits_end, mEmpty());
  }
  if (!is_empty_list(list)) fun_failure("Make_temp_var_decls");
  return mXModule(symbols, inits, mXCompoundExpression(mkNonConvPos(NoPosition), t));
}

tAsynt FindTempSi(tAsynt t, int tempno) {
  looking_for_temp = static_cast<unsigned>(tempno);
  found_temp_syminfo = nullptr;
  WalkAsynt(&t, IsTemp);
  return found_temp_syminfo;
}

// The value is typed before the verification runs, and a member of an instance set has the type of an array over the
// set until its access is written out: members are therefore rewritten first. The verification finds further ones,
// members of other objects among them, and leaves them as nests.
void Prepare_fun(tAsynt t) {
  Forget_members();
  if (Asynt_Kind(Binary_RHS(t)) == kExternBody) {
    Transform_fun(&Binary_LHS(t), &Binary_RHS(t));
    return;
  }
  Binary_RHS(t) = Decl_temp_vars(Binary_RHS(t));
  Transform_instance_set(&Binary_RHS(t));
  Transform_fun(&Binary_LHS(t), &Binary_RHS(t));
  Veri_trans_tree(&Binary_RHS(t));
  Transform_instance_set(&Binary_RHS(t));
}

}  // namespace oz
