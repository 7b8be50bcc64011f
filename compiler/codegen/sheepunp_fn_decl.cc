// Declarations of the Fortran generator, one line each:
//
//   real(zc_real), intent(in) :: x(m,n)
//
// The visitors declare the symbols that they meet in a parameter or variable list. What has no type, or is predefined,
// is not declared; nothing below a symbol is looked at, or the sizes in its type would be declared with it.
#include "sheepout.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"

namespace oz {
namespace {

constexpr const char* kPlain = " ";
constexpr const char* kPointer = ", pointer :: ";
constexpr const char* kIn = ", intent(in) :: ";
constexpr const char* kOut = ", intent(out) :: ";
constexpr const char* kTargetIn = ", target, intent(in) :: ";

void no_shape(tAsynt) {}

// A line: type, attributes, name and the shape by one of the writers.
void declare(tAsynt sym, const char* attributes, void (*shape)(tAsynt)) {
  foutput_indentation(0);
  Foutput_type(SymInfo_Type(sym));
  foutput(attributes);
  Foutput_name(sym);
  shape(SymInfo_Type(sym));
  foutput("\n");
}

// A second line for what goes with a parameter: the type, and a name made from the parameter's.
void declare_companion(tAsynt sym, tAsynt typ, const char* attributes, const char* before, const char* after) {
  foutput_indentation(0);
  Foutput_type(typ);
  foutput(attributes);
  Foutput_name_with(before, sym, after);
  Foutput_array_dims_colon(typ);
  foutput("\n");
}

bool is_declared(tAsynt sym) {
  const tAsynt typ = SymInfo_Type(sym);
  return typ && !Asynt_IsType(typ, kNoType) && !Asynt_IsType(typ, kPreDef);
}

bool is_array(tAsynt sym) { return Is_array_type(SymInfo_Type(sym)); }
bool is_open(tAsynt sym) { return array_has_unknown_dims(SymInfo_Type(sym)); }
bool is_output(tAsynt sym) { return Asynt_IsType(sym, kOutParam); }

// Applies a declaration to a symbol; the answer of a visitor.
char visit(tAsynt t, void (*declaration)(tAsynt)) {
  if (Asynt_IsType(t, kAlgAuxiliary)) return 0;
  if (!Asynt_IsType(t, kSymInfo)) return 1;
  if (is_declared(t)) declaration(t);
  return 0;
}

void impl_param(tAsynt sym) {
  const char* attributes = !is_output(sym) ? kIn : is_open(sym) ? kPointer : kOut;
  declare(sym, attributes, Foutput_array_dims);
}

void impl_var(tAsynt sym) { declare(sym, is_open(sym) ? kPointer : kPlain, Foutput_array_dims); }

// The wrappers allocate what they fetch.
void if_var(tAsynt sym) { declare(sym, is_array(sym) ? kPointer : kPlain, Foutput_array_dims_colon); }

// A text is fetched with its length.
void if_param(tAsynt sym) {
  if_var(sym);
  if (!is_output(sym) && Asynt_IsType(SymInfo_Type(sym), kStringType))
    declare_companion(sym, mIntType(nullptr), kPlain, "", "___i");
}

// An array is sent through a pointer.
void cb_param(tAsynt sym) {
  if (is_output(sym)) return declare(sym, kOut, Foutput_array_dims);
  if (!is_array(sym)) return declare(sym, kIn, no_shape);
  declare(sym, kTargetIn, Foutput_array_dims);
  declare_companion(sym, SymInfo_Type(sym), kPointer, "zc_ptr_", "");
}

}  // namespace

char Foutput_impl_param_decl(tAsynt* t) { return visit(*t, impl_param); }
char Foutput_impl_var_decl(tAsynt* t) { return visit(*t, impl_var); }
char Foutput_if_param_decl(tAsynt* t) { return visit(*t, if_param); }
char Foutput_if_var_decl(tAsynt* t) { return visit(*t, if_var); }
char Foutput_cb_param_decl(tAsynt* t) { return visit(*t, cb_param); }
char Foutput_cb_var_decl(tAsynt* t) { return visit(*t, if_var); }

// ---- module variables

namespace {

constexpr int kMaxChain = 3;  // applications outside of the innermost one

// The applications without the innermost argument list: x[i][a][b] gives x[a][b].
tAsynt without_innermost(tAsynt e) {
  const tAsynt inner = ComplexFFE_Name(e);
  if (Asynt_IsType(inner, kSimpleFFE)) return mSimpleFFE(FullFormExpression_Args(e), SimpleFFE_Name(inner));
  return mComplexFFE(FullFormExpression_Args(e), without_innermost(inner));
}

// The length of a chain over a SimpleFFE; 0 for another expression.
int chain_length(tAsynt e) {
  int length = 0;
  for (; Asynt_IsType(e, kComplexFFE); e = ComplexFFE_Name(e)) length++;
  return Asynt_IsType(e, kSimpleFFE) ? length : 0;
}

}  // namespace

tAsynt WithoutDynIndices(tAsynt si) {
  if (!Asynt_IsType(si, kAbsoluteNest) || !Asynt_IsType(SymInfo_Type(si), kArrayType_s)) return si;
  const tAsynt e = AbsoluteNest_FullFormExpression(si);
  if (Asynt_IsType(e, kSimpleFFE))
    return Asynt_IsType(SimpleFFE_Name(e), kSymbol) ? Symbol_SymInfo(SimpleFFE_Name(e)) : si;
  const int length = chain_length(e);
  if (length < 1 || length > kMaxChain) return si;
  return mAbsoluteNest(mNoType(), SymInfo_Pos(si), without_innermost(e));
}

void Foutput_global_var_decl(tAsynt si) {
  const tAsynt typ = SymInfo_Type(si);
  foutput_indentation(0);
  Foutput_type(typ);
  if (is_open(si)) foutput(", pointer ::");
  foutput(" ");
  Foutput_name(WithoutDynIndices(si));
  if (is_open(si))
    Foutput_array_dims_colon(typ);
  else
    Foutput_array_dims(typ);
  foutput("\n");
}

}  // namespace oz
