// Names of the Fortran generator: identifiers for symbols, and the names that the host knows.
#include <cstring>

#include "dig.h"
#include "efunc.h"
#include "ozerrors.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"

namespace oz {

// ---- identifiers

namespace {

void mangled_arguments(tAsynt args) {
  foutput_mangled_str("_L");
  for (; Is_cell(args); args = Expression1_Expressions(args)) {
    Foutput_nest_name(Expression1_Expression(args));
    if (Is_cell(Expression1_Expressions(args))) foutput_mangled_str("_C");
  }
  foutput_mangled_str("_R");
}

void numbered(const char* letter, unsigned number) {
  foutput_mangled_str("zc_");
  foutput_mangled_str(letter);
  foutput_mangled_str(std::to_string(number));
}

}  // namespace

void Foutput_nest_name(tAsynt e) {
  switch (Asynt_Kind(e)) {
    case kIntConst: return foutput_mangled_int(IntConst_Val(e));
    case kRealConst: return foutput_mangled_real(RealConst_Val(e));
    case kExactIntConst: return foutput_mangled_str(ExactIntConst_Val(e));
    case kExactRealConst: return foutput_mangled_str(ExactRealConst_Val(e));
    case kSymbol: return Foutput_mangled_name(Symbol_SymInfo(e));
    case kSimpleFFE: Foutput_nest_name(SimpleFFE_Name(e)); return mangled_arguments(FullFormExpression_Args(e));
    case kComplexFFE: Foutput_nest_name(ComplexFFE_Name(e)); return mangled_arguments(FullFormExpression_Args(e));
    default: sheepunp_abort("Foutput_nest_name");
  }
}

// An external name is no different from any other.
void Foutput_mangled_name(tAsynt sym) {
  switch (Asynt_Kind(sym)) {
    case kAbsoluteSymbol:
    case kSimpleSymbol: return foutput_mangled_str(NamedSymbol_Name(sym));
    case kAbsoluteNest: return Foutput_nest_name(AbsoluteNest_FullFormExpression(sym));
    case kTempSymbol: return numbered("T", TempSymbol_Number(sym));
    case kOutParam: return numbered("O", OutParam_Number(sym));
    default: return;  // names that are not qualified have none in Fortran
  }
}

void Foutput_name(tAsynt sym) {
  Foutput_mangled_name(sym);
  flush_mangled_str();
}

void Foutput_name_with(const char* before, tAsynt sym, const char* after) {
  foutput_mangled_str(before);
  Foutput_mangled_name(sym);
  foutput_mangled_str(after);
  flush_mangled_str();
}

void Foutput_symbol_name(tAsynt sym, bool mangled) {
  if (mangled) return Foutput_name(sym);
  switch (Asynt_Kind(sym)) {
    case kAbsoluteSymbol:
    case kSimpleSymbol: return foutput(NamedSymbol_Name(sym));
    case kTempSymbol:
    case kOutParam: return Foutput_name(sym);
    default: error_msg("F90 unparser: Cannot unparse symbol name.\n");
  }
}

// ---- names of the host

const char* GetOriginalName(tAsynt sym) {
  if (Asynt_IsType(sym, kAbsoluteSymbol)) return NamedSymbol_Name(sym);
  WriteAsynt(stderr, sym);
  die_msg("F90 unparser: Unexpected kind of symbol during GetOriginalName.\n");
}

namespace {

// The first component of a name, as symbol information; null if it has none.
tAsynt first_component(tAsynt sym) {
  if (Asynt_IsType(sym, kAbsoluteNest)) {
    tAsynt e = AbsoluteNest_FullFormExpression(sym);
    while (Asynt_IsType(e, kComplexFFE)) e = ComplexFFE_Name(e);
    if (Asynt_IsType(e, kSimpleFFE)) e = SimpleFFE_Name(e);
    return Asynt_IsType(e, kSymbol) ? Symbol_SymInfo(e) : nullptr;
  }
  if (!Asynt_IsType(sym, kAbsoluteSymbol) || !Is_cell(AbsoluteSymbol_Components(sym))) return nullptr;
  tAsynt e = Expression1_Expression(AbsoluteSymbol_Components(sym));
  while (Asynt_IsType(e, kComplexFFE)) e = ComplexFFE_Name(e);
  if (Asynt_IsType(e, kSimpleFFE)) e = SimpleFFE_Name(e);
  return Asynt_IsType(e, kSymbol) ? Symbol_SymInfo(e) : nullptr;
}

// The model that a name belongs to: the outermost of its components. A function of an instance is found inward.
const char* GetModelPrefix(tAsynt sym) {
  do sym = first_component(sym);
  while (sym && !Asynt_IsType(sym, kSimpleSymbol));
  return sym ? NamedSymbol_Name(sym) : model_name;
}

}  // namespace

// A backquote at the end of a declared context is no part of the name.
std::string GetFunctionPrefixContext(tAsynt sym) {
  std::string context;
  if (IsExternal(sym)) {
    bool was_funcall = false;
    const tAsynt declaration = find_declaration(sym, &was_funcall);
    if (!Asynt_IsType(declaration, kXSetDelayed)) sheepunp_abort("GetFunctionPrefixContext");
    const tAsynt body = Binary_RHS(declaration);
    if (Asynt_IsType(body, kExternalDeclaration) && ExternalDeclaration_Context(body))
      context = ExternalDeclaration_Context(body);
    if (!context.empty() && context.back() == '`') context.pop_back();
  }
  return context.empty() ? GetModelPrefix(sym) : context;
}

}  // namespace oz
