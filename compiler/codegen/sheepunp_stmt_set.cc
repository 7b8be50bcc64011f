// Assignments of the Fortran generator: what is no single assignment there becomes several.
//
//   a = b = c            b = c  a = b
//   {a, b} = {c, d}      a = c  b = d
//   {a, b} = f[x]        call f (x, a, b)
//   a = If[c, x, y]      a block if with an assignment in each branch
#include <cstring>

#include "oz.h"
#include "ozerrors.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"
#include "type.h"
#include "unparse.h"

namespace oz {
namespace {

// ---- lists

// One assignment per pair of elements.
void Funparse_list_assign(tAsynt set, tAsynt targets, tAsynt values) {
  for (; Is_cell(targets) && Is_cell(values);
       targets = Expression1_Expressions(targets), values = Expression1_Expressions(values))
    Funparse_set(mXSet(Operator_PosConv(set), Expression1_Expression(targets), Expression1_Expression(values)));
  if (!Asynt_IsType(targets, kExpression0) || !Asynt_IsType(values, kExpression0))
    die_msg("F90 unparser: Number of elements on each side differ in list assignment.\n");
}

// A function of several results has the targets as its last arguments; a function of one result declines.
bool Funparse_mulret_funcall(tAsynt targets, tAsynt call) {
  const tAsynt typ = Called_type(call);
  if (!Asynt_IsType(typ, kMultiType) && !Is_array_type(typ)) return false;
  const tAsynt args = FullFormExpression_Args(call);
  foutput_indentation(0);
  foutput("call ");
  Funparse_called_name(SimpleFFE_Name(call));
  foutput(" (");
  Funparse_exprs(args, ", ");
  if (Is_cell(args)) foutput(", ");
  Funparse_exprs(targets, ", ");
  foutput(")\n");
  return true;
}

// The elements of a list that has stayed an application, List[a, b]; of no other call.
tAsynt elements_of_call(tAsynt call) {
  const tAsynt name = SimpleFFE_Name(call);
  const bool list = Asynt_IsType(name, kSymbol) && Asynt_IsType(Symbol_SymInfo(name), kNamedSymbol) &&
                    std::strcmp(NamedSymbol_Name(Symbol_SymInfo(name)), "List") == 0;
  return list ? FullFormExpression_Args(call) : nullptr;
}

// Whether the assignment to a list was one of these forms.
bool list_set(tAsynt t) {
  const tAsynt targets = Variadic_Expressions(Binary_LHS(t));
  const tAsynt rhs = Binary_RHS(t);
  if (Asynt_IsType(rhs, kXList)) {
    Funparse_list_assign(t, targets, Variadic_Expressions(rhs));
    return true;
  }
  if (!Asynt_IsType(rhs, kSimpleFFE)) return false;
  if (!Funparse_mulret_funcall(targets, rhs)) Funparse_list_assign(t, targets, elements_of_call(rhs));
  return true;
}

// ---- a scalar spread over an array

constexpr int kMaxLoops = 'Z' - 'I' + 1;

// Opens a loop for each dimension that the value does not have, by the loop letters from I on; how many.
int open_loops(tAsynt dims, int n) {
  int loops = 0;
  for (; loops < n && Asynt_IsType(dims, kIntConst1); dims = IntConst1_IntConsts(dims), loops++) {
    const char letter[] = {static_cast<char>('I' + loops), '\0'};
    foutput_indentation(0);
    foutput("do ");
    foutput(letter);
    foutput("=1,");
    FunparseVal(IntConst1_IntConst(dims));
    foutput("\n");
    f_modify_indent(1);
  }
  return loops;
}

void Funparse_shapeconv_set(tAsynt target, tAsynt conversion) {
  const tAsynt to = ShapeConversion_To(conversion);
  const int n = CPgetDepth(to) - CPgetDepth(ShapeConversion_From(conversion));
  if (n > kMaxLoops) sheepunp_abort("Funparse_shapeconv_set");
  const int loops = open_loops(to, n);
  foutput_indentation(0);
  FunparseVal(target);
  for (int i = 0; i < loops; i++) {
    const char index[] = {'(', static_cast<char>('I' + i), ')', '\0'};
    foutput(index);
  }
  foutput(" = ");
  FunparseVal(TypeConversion_Expression(conversion));
  foutput("\n");
  for (int i = 0; i < loops; i++) {
    f_modify_indent(-1);
    foutput_indentation(0);
    foutput("end do\n");
  }
}

bool is_simple_conversion(tAsynt rhs) {
  if (!Asynt_IsType(rhs, kShapeConversion)) return false;
  const tAsynt value = TypeConversion_Expression(rhs);
  return Asynt_IsType(value, kConstant) || Asynt_IsType(value, kSymbol);
}

// ---- conditional values

void assign(tAsynt target, tAsynt value, int pri) {
  foutput_indentation(0);
  FunparseVal(target);
  foutput(" = ");
  funparse_pri(value, pri);
  foutput("\n");
}

void conditional(tAsynt target, tAsynt value);

// A conditional in a branch is a block of its own.
void branch(tAsynt target, tAsynt value) {
  if (Asynt_IsType(value, kXIf))
    conditional(target, value);
  else
    assign(target, value, 0);
}

void conditional(tAsynt target, tAsynt value) {
  foutput_indentation(0);
  foutput("if (");
  FunparseVal(XIf_Condition(value));
  foutput(") then\n");
  f_modify_indent(1);
  branch(target, XIf_T(value));
  f_modify_indent(-1);
  foutput_indentation(0);
  foutput("else\n");
  f_modify_indent(1);
  branch(target, XIf_F(value));
  f_modify_indent(-1);
  foutput_indentation(0);
  foutput("end if\n");
}

// ---- sections of arrays

void Funparse_section_assignment(tAsynt t) {
  const int reduction = Part_rank_reduction(Binary_LHS(t));
  const int array_rank = ArrayRank(Expression1_Expression(Variadic_Expressions(Binary_LHS(t))));
  const int value_rank = ArrayRank(Binary_RHS(t));
  if (value_rank != 0 && array_rank - reduction != value_rank)
    warning_msg("F90 unparser: Possibly incompatible ranks in assignment. Rank reduction = %d levels in %s.", reduction,
                unparse_string(t));
  foutput_indentation(0);
  Funparse_section(Binary_LHS(t));
  foutput(" = ");
  FunparseVal(Binary_RHS(t));
  foutput("\n");
}

// Whether the assignment to a part is done: to a section, or refused. One element is assigned like a variable.
bool part_set(tAsynt t) {
  const tAsynt list = Variadic_Expressions(Binary_LHS(t));
  if (!Is_cell(list)) return false;
  const int array_rank = ArrayRank(Expression1_Expression(list));
  const int part_rank = Part_rank(Binary_LHS(t));
  if (array_rank == part_rank) return false;
  if (array_rank > part_rank)
    Funparse_section_assignment(t);
  else
    error_msg("F90 unparser: Left side has higher rank than array in %s.\n", unparse_string(t));
  return true;
}

// ---- pointers

bool is_open_array(tAsynt symbol) { return array_has_unknown_dims(Type_of(symbol)); }

// Results of unknown size are pointers.
bool is_pointer_assignment(tAsynt target, tAsynt value) {
  return Asynt_IsType(target, kSymbol) && Asynt_IsType(value, kSymbol) &&
         Asynt_IsType(Symbol_SymInfo(target), kOutParam) && is_open_array(target) && is_open_array(value);
}

void assign_pointer(tAsynt target, tAsynt value) {
  foutput_indentation(0);
  FunparseVal(target);
  foutput(" => ");
  FunparseVal(value);
  foutput("\n");
}

}  // namespace

void Funparse_set(tAsynt t) {
  const tAsynt lhs = Binary_LHS(t);
  const tAsynt rhs = Binary_RHS(t);
  if (Asynt_IsType(rhs, kXSet)) {
    Funparse_set(rhs);
    return Funparse_set(mXSet(Operator_PosConv(t), lhs, Binary_LHS(rhs)));
  }
  if (Asynt_IsType(lhs, kXList) && list_set(t)) return;
  if (is_simple_conversion(rhs)) return Funparse_shapeconv_set(lhs, rhs);
  if (Asynt_IsType(rhs, kXIf)) return conditional(lhs, rhs);
  if (Asynt_IsType(lhs, kXPart) && part_set(t)) return;
  if (is_pointer_assignment(lhs, rhs)) return assign_pointer(lhs, rhs);
  assign(lhs, rhs, 1);
}

}  // namespace oz
