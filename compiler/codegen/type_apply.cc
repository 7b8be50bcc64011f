// Applications and symbols: calls of declared functions, nests such as a[i][j], predefined heads and constants.
//
// A predefined head is typed by the node that its application is to become: Sin[x] by a copy XSin(x). The application
// itself stays in the tree, because converting is the business of a later walk over the whole body.

#include "ozerrors.h"
#include "predef.h"
#include "type_rules.h"
#include "unparse.h"

namespace oz {

namespace {

Declaration_finder declaration_finder = nullptr;

tAsynt declaration_of(tAsynt t, bool* was_funcall) {
  *was_funcall = false;
  return declaration_finder ? declaration_finder(t, was_funcall) : nullptr;
}

}  // namespace

void Set_declaration_finder(Declaration_finder finder) { declaration_finder = finder; }

tAsynt Type_of(tAsynt e) {
  for (;;) {
    switch (Asynt_Kind(e)) {
      case kSymbol: {
        const tAsynt typ = SymInfo_Type(Symbol_SymInfo(e));
        return typ ? typ : mNoType();
      }
      case kComplexFFE: e = ComplexFFE_Name(e); break;
      case kSimpleFFE: e = SimpleFFE_Name(e); break;
      case kXSetDelayed: e = Binary_LHS(e); break;
      default: return mNoType();
    }
  }
}

// ---- predefined heads

namespace {

// The PreDef of a bare symbol, or null.
tAsynt predef_of_symbol(tAsynt e) {
  if (Asynt_Kind(e) != kSymbol) return nullptr;
  const tAsynt typ = SymInfo_Type(Symbol_SymInfo(e));
  return Asynt_Kind(typ) == kPreDef ? typ : nullptr;
}

// The PreDef of the head of an application, or null.
tAsynt predef_of_head(tAsynt e) { return Asynt_Kind(e) == kSimpleFFE ? predef_of_symbol(SimpleFFE_Name(e)) : nullptr; }

tAsynt predef_constant(tAsynt e) {
  const tAsynt predef = predef_of_symbol(e);
  return predef && PreDef_type_flag(predef) == constant ? predef : nullptr;
}

tAsynt converted(tAsynt application, tAsynt predef);

// What e becomes: constants and applications of predefined heads are converted, all else stays.
tAsynt converted_argument(tAsynt e) {
  if (const tAsynt predef = predef_constant(e))
    return convert_predef_const_node(e, PreDef_fun(predef), PreDef_type_flag(predef));
  const tAsynt predef = predef_of_head(e);
  return predef ? converted(e, predef) : e;
}

// A new list of the arguments, converted.
tAsynt converted_arguments(tAsynt args) {
  const tAsynt end = mExpression0();
  tAsynt result = end;
  for (tAsynt* tail = &result; Is_cell(args); args = Expression1_Expressions(args)) {
    *tail = mExpression1(converted_argument(Expression1_Expression(args)), end);
    tail = &Expression1_Expressions(*tail);
  }
  return result;
}

// A chain of comparisons has no constructor; its operators are looked over by the promotion, so they may stay symbols.
tAsynt converted(tAsynt application, tAsynt predef) {
  const tAsynt args = converted_arguments(FullFormExpression_Args(application));
  if (PreDef_type_flag(predef) == predef_ineq) return mXInequality(args);
  const tPosition pos = SymInfo_Pos(Symbol_SymInfo(SimpleFFE_Name(application)));
  return convert_predef_node(pos, args, PreDef_fun(predef), PreDef_type_flag(predef), application);
}

tAsynt find_predefined_type(tAsynt application, tAsynt predef) {
  tAsynt copy = converted(application, predef);
  typing_copy++;
  const tAsynt typ = Find_type_reporting_once(application, &copy);
  typing_copy--;
  return typ;
}

}  // namespace

tAsynt Operands_of(tAsynt e, Asynt_tKind kind, voidp fun) {
  if (Asynt_Kind(e) == kind) return Asynt_IsType(e, kVariadic) ? Variadic_Expressions(e) : nullptr;
  const tAsynt predef = predef_of_head(e);
  return predef && PreDef_fun(predef) == fun ? FullFormExpression_Args(e) : nullptr;
}

bool Is_constant(tAsynt e, Asynt_tKind kind, voidp fun) {
  if (Asynt_Kind(e) == kind) return true;
  const tAsynt predef = predef_constant(e);
  return predef && PreDef_fun(predef) == fun;
}

// ---- symbols

namespace {

// The type of an untyped symbol's declaration, which the symbol then has too.
tAsynt Find_symbol_type(tAsynt s) {
  bool was_funcall;
  const tAsynt declaration = declaration_of(s, &was_funcall);
  if (!declaration) return mNoType();
  return SymInfo_Type(Symbol_SymInfo(s)) = Type_of(declaration);
}

}  // namespace

tAsynt Find_symbol(tAsynt t) {
  const tAsynt typ = SymInfo_Type(Symbol_SymInfo(t));
  if (!typ) return No_rule(t);
  if (Asynt_Kind(typ) == kNoType) return Find_symbol_type(t);
  if (!predef_constant(t)) return typ;
  tAsynt node = converted_argument(t);
  return Find_type(&node);
}

// ---- applications

namespace {

constexpr int kMaxIndexGroups = 3;  // ComplexFFEs above a SimpleFFE

[[noreturn]] void too_many_indices(tAsynt t) {
  fprintf(stderr, "Too many symbolic indices:\n%s\n", Unparsed(t).c_str());
  type_internal_error(__LINE__);
}

// The head symbol of f[x], f[i][x] and so on; null if something else stands there. *groups counts the outer brackets.
tAsynt head_symbol(tAsynt t, int* groups) {
  tAsynt e = t;
  for (*groups = 0; Asynt_Kind(e) == kComplexFFE; e = ComplexFFE_Name(e))
    if (++*groups > kMaxIndexGroups) too_many_indices(t);
  const tAsynt head = Asynt_Kind(e) == kSimpleFFE ? SimpleFFE_Name(e) : nullptr;
  return Asynt_Kind(head) == kSymbol ? head : nullptr;
}

// An application whose head has no type yet: a call, or a nest, which becomes one symbol.
tAsynt find_declared_type(tAsynt* t, tAsynt head) {
  bool was_funcall;
  const tAsynt declaration = declaration_of(*t, &was_funcall);
  if (!declaration) return mNoType();
  const tAsynt typ = Type_of(declaration);
  if (was_funcall)
    SymInfo_Type(Symbol_SymInfo(head)) = typ;
  else if (typing_copy == 0)
    *t = mSymbol(mAbsoluteNest(typ, NoPosition, *t));
  return typ;
}

// Whether a path begins with the context of function arguments.
bool is_argument(tAsynt components) {
  if (!Is_cell(components) || Asynt_Kind(Expression1_Expression(components)) != kSymbol) return false;
  const tAsynt info = Symbol_SymInfo(Expression1_Expression(components));
  return Asynt_Kind(info) == kSimpleSymbol && std::string(NamedSymbol_Name(info)) == "P$";
}

// Variables of a function are no functions: v[i] is an element only when written v[[i]].
void check_brackets(tAsynt head) {
  const tAsynt info = Symbol_SymInfo(head);
  if (Asynt_Kind(info) != kAbsoluteSymbol) return;
  const tAsynt components = AbsoluteSymbol_Components(info);
  const tAsynt typ = SymInfo_Type(info);
  const bool local = Asynt_Kind(components) == kExpression0;
  if (local && (Is_basic(typ) || Is_array(typ)))
    type_error(SymInfo_Pos(info),
               "One cannot use single brackets after local variable name (declared at the specified place) of %s "
               "type : %s",
               Is_basic(typ) ? "basic" : "array", Unparsed(head).c_str());
  if (is_argument(components))
    type_error(SymInfo_Pos(info), "Single brackets can not be used after local argument name : %s",
               Unparsed(head).c_str());
}

}  // namespace

bool Is_function_argument(tAsynt e) {
  return Asynt_Kind(e) == kSymbol && Asynt_Kind(Symbol_SymInfo(e)) == kAbsoluteSymbol &&
         is_argument(AbsoluteSymbol_Components(Symbol_SymInfo(e)));
}

// The type of an application is that of its head; the arguments are not looked at.
tAsynt Find_application_type(tAsynt* t) {
  int groups;
  const tAsynt head = head_symbol(*t, &groups);
  if (head) {
    const tAsynt typ = SymInfo_Type(Symbol_SymInfo(head));
    if (Asynt_Kind(typ) == kPreDef) return groups == 0 ? find_predefined_type(*t, typ) : typ;
    if (Asynt_Kind(typ) == kNoType) return find_declared_type(t, head);
    if (groups == 0) check_brackets(head);
  }
  return Find_type(Asynt_Kind(*t) == kSimpleFFE ? &SimpleFFE_Name(*t) : &ComplexFFE_Name(*t));
}

}  // namespace oz
