// Names of the model as identifiers of the generated C++.
//
//   Tank`level, a global        Tank_Tlevel
//   P$`x, a parameter; a local  x
//   an external function f      prefix, f, and an ending that tells the language of its stub
//   a[1][i, j], an element      a_L1_R_Li_Cj_R

#include <cstring>

#include "dig.h"
#include "efunc.h"
#include "ozerrors.h"
#include "pompout.h"
#include "pompunp_fn.h"

namespace oz {
namespace {

void mangle_name(tAsynt sym, bool capital, bool component);

// The name of an application, and of one that stands in a path.
void mangle_nest(tAsynt ffe, bool component);

void mangle_name_part(tAsynt sym, bool capital) {
  if (capital)
    cpoutput_mangled_str_capitalize(NamedSymbol_Name(sym));
  else
    cpoutput_mangled_str(NamedSymbol_Name(sym));
}

// What an external entity is declared as; an `extern "C"` body without a description gives null.
tAsynt external_declaration(tAsynt definition) {
  const tAsynt rhs = Binary_RHS(definition);
  return Asynt_Kind(rhs) == kExternalDeclaration ? rhs : nullptr;
}

// The definition of an external function or variable, else null.
tAsynt external_definition(tAsynt declaration) {
  return declaration && IsExternal(declaration) ? declaration : nullptr;
}

tAsynt declaration_of(tAsynt sym) {
  bool was_funcall = false;
  return find_declaration(sym, &was_funcall);
}

void mangle_list(tAsynt list, const char* separator, bool components) {
  for (bool first = true; Asynt_Kind(list) == kExpression1; list = Expression1_Expressions(list), first = false) {
    if (!first) cpoutput_mangled_str(separator);
    mangle_nest(Expression1_Expression(list), components);
  }
}

void mangle_external(tAsynt sym, bool capital, tAsynt declaration) {
  if (declaration && ExternalDeclaration_Prefix(declaration))
    cpoutput_mangled_str(ExternalDeclaration_Prefix(declaration));
  mangle_name_part(sym, capital);
  cpoutput_mangled_str(Make_language_suffix(declaration));
}

// A name is qualified if it is declared; a part of a path always, so that x of a`p and x of b`p differ.
void mangle_absolute(tAsynt sym, bool capital, bool component) {
  const tAsynt declaration = component ? nullptr : declaration_of(sym);
  if (const tAsynt definition = external_definition(declaration)) {
    mangle_external(sym, capital, external_declaration(definition));
    return;
  }
  const tAsynt components = AbsoluteSymbol_Components(sym);
  if (Asynt_Kind(components) == kExpression1 && (component || declaration)) {
    mangle_list(components, "_T", true);
    cpoutput_mangled_str("_T");
  }
  mangle_name_part(sym, capital);
}

void mangle_number(const char* prefix, unsigned number) {
  cpoutput_mangled_str("zc_");
  cpoutput_mangled_str(prefix);
  cpoutput_mangled_str(std::to_string(number));
}

void mangle_name(tAsynt sym, bool capital, bool component) {
  switch (Asynt_Kind(sym)) {
    case kAbsoluteSymbol: mangle_absolute(sym, capital, component); return;
    case kAbsoluteNest: CPoutput_nest_name(AbsoluteNest_FullFormExpression(sym)); return;
    case kSimpleSymbol: mangle_name_part(sym, capital); return;
    case kTempSymbol: mangle_number("T", TempSymbol_Number(sym)); return;
    case kOutParam: mangle_number("O", OutParam_Number(sym)); return;
    default: return;  // no other symbol has a name in generated code
  }
}

void mangle_application(tAsynt name, tAsynt args, bool component) {
  mangle_nest(name, component);
  cpoutput_mangled_str("_L");
  mangle_list(args, "_C", false);
  cpoutput_mangled_str("_R");
}

void mangle_nest(tAsynt ffe, bool component) {
  switch (Asynt_Kind(ffe)) {
    case kComplexFFE: mangle_application(ComplexFFE_Name(ffe), FullFormExpression_Args(ffe), component); return;
    case kSimpleFFE: mangle_application(SimpleFFE_Name(ffe), FullFormExpression_Args(ffe), component); return;
    case kSymbol: mangle_name(Symbol_SymInfo(ffe), false, component); return;
    case kIntConst: cpoutput_mangled_int(IntConst_Val(ffe)); return;
    case kRealConst: cpoutput_mangled_real(RealConst_Val(ffe)); return;
    case kExactIntConst: cpoutput_mangled_str(ExactIntConst_Val(ffe)); return;
    case kExactRealConst: cpoutput_mangled_str(ExactRealConst_Val(ffe)); return;
    default: error_msg("Illegal expression to output as mangled name:"); return;
  }
}

// The name of the first component: the model, or the instance that holds the symbol.
std::string model_prefix(tAsynt sym) {
  const tAsynt components = AbsoluteSymbol_Components(sym);
  if (Asynt_Kind(components) != kExpression1) return "";
  const tAsynt first = Expression1_Expression(components);
  if (Asynt_Kind(first) != kSymbol || !Asynt_IsType(Symbol_SymInfo(first), kNamedSymbol)) return "";
  return NamedSymbol_Name(Symbol_SymInfo(first));
}

}  // namespace

void CPoutput_mangled_name(tAsynt sym) { mangle_name(sym, false, false); }
void CPoutput_mangled_name_capitalize(tAsynt sym) { mangle_name(sym, true, false); }
void CPoutput_nest_name(tAsynt ffe) { mangle_nest(ffe, false); }

void CPoutput_symbol(tAsynt sym) {
  CPoutput_mangled_name(sym);
  cpflush_mangled_str();
}

const char* CPoriginal_name(tAsynt sym) {
  if (Asynt_Kind(sym) == kAbsoluteSymbol) return NamedSymbol_Name(sym);
  WriteAsynt(stderr, sym);
  die_msg_pos2(SymInfo_Pos(sym), "Unexpected kind of  symbol during   GetOriginalName");
}

// The text in the model stays as it is.
std::string CPfunction_context(tAsynt sym) {
  if (Asynt_Kind(sym) != kAbsoluteSymbol) return "";
  if (const tAsynt definition = external_definition(declaration_of(sym))) {
    const tAsynt declaration = external_declaration(definition);
    std::string context =
        declaration && ExternalDeclaration_Context(declaration) ? ExternalDeclaration_Context(declaration) : "";
    if (!context.empty() && context.back() == '`') context.pop_back();
    if (!context.empty()) return context;
  }
  return model_prefix(sym);
}

}  // namespace oz
