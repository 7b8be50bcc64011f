// The source unparser: a tree as text in the notation of the model language and the host.
//
// Unparse prints declarations, symbol information, types and lists, Unparse_expr expressions. Operators and their
// priorities come from operator_name.def: an operand stands in parentheses when its priority is not greater than that
// of the operator around it, on either side:
//
//   XSubtract(XSubtract(a, b), XTimes(c, d))      (a-b)-c*d
//
// Recursion follows the nesting of the tree, and lists are walked in loops. What a case needs beyond a line or two
// stands in a function of its own, so that the frames on the way down stay small.

#include "unparse.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <new>
#include <string>

#include "Asynt.h"
#include "operator_name.h"
#include "ozerrors.h"
#include "unparse_out.h"

namespace oz {

namespace {

constexpr std::array<uint8_t, kAsyntKinds> make_priorities() {
  std::array<uint8_t, kAsyntKinds> table{};
  table.fill(1);
#define SPELT(kind, priority, spelling, clash) table[k##kind] = priority;
#define PLAIN(kind, priority) table[k##kind] = priority;
#include "operator_name.def"
  return table;
}

constexpr std::array<const char*, kAsyntKinds> make_clashes() {
  std::array<const char*, kAsyntKinds> table{};
#define SPELT(kind, priority, spelling, clash) table[k##kind] = *clash ? clash : nullptr;
#include "operator_name.def"
  return table;
}

constexpr std::array<uint8_t, kAsyntKinds> kPriorities = make_priorities();
constexpr std::array<const char*, kAsyntKinds> kClashes = make_clashes();

// A dot behind a number or a blank would be taken for a part of it.
constexpr char kDot[] = ".";

void Unparse(tAsynt t);
void Unparse_expr(tAsynt t);

// ---- texts

// Most texts are names of a few characters: they are copied as they are read.
void Unparse_text(string s) {
  if (!s) return;
  constexpr size_t kShort = 15;
  if (up.watch || static_cast<size_t>(up.end - up.at) < kShort) [[unlikely]]
    return upout(s);
  char* const start = up.at;
  for (size_t i = 0; i < kShort; i++) {
    if (s[i] == '\0') {
      if (i > 0 && s[i - 1] == '\n') return upout(s);
      up.at = start + i;
      return;
    }
    start[i] = s[i];
  }
  upout(s);
}

// ---- lists

// The two kinds of node that the lists of the printed forms are made of.
enum ListRole : uint8_t { not_a_list = 0, list_cell, list_end };

constexpr std::array<ListRole, kAsyntKinds> make_list_roles() {
  std::array<ListRole, kAsyntKinds> table{};
  for (Asynt_tKind kind :
       {kObject1, kParent1, kCapsule1, kParticle1, kType1, kExpression1, kSymbol1, kIntConst1, kFilename1})
    table[kind] = list_cell;
  for (Asynt_tKind kind :
       {kObject0, kParent0, kCapsule0, kParticle0, kType0, kExpression0, kSymbol0, kIntConst0, kFilename0})
    table[kind] = list_end;
  return table;
}

constexpr std::array<ListRole, kAsyntKinds> kListRoles = make_list_roles();

bool is_cell(tAsynt t) { return kListRoles[Asynt_Kind(t)] == list_cell; }
bool is_list_end(tAsynt t) { return kListRoles[Asynt_Kind(t)] == list_end; }

// Head and tail of a cell of any kind.
tAsynt head(tAsynt cell) { return tree_raw_slot<tAsynt>(cell, 0); }
tAsynt tail(tAsynt cell) { return tree_raw_slot<tAsynt>(cell, 1); }

// Both children of each cell, without separators.
void Unparse_cells(tAsynt t) {
  for (; is_cell(t); t = tail(t)) Unparse(head(t));
  Unparse(t);
}

void Unparse_joined(tAsynt t, std::string_view sep) {
  for (bool first = true; is_cell(t); t = tail(t), first = false) {
    if (!first) upout(sep);
    Unparse(head(t));
  }
}

// An empty list prints nothing, not even the brackets.
void Unparse_arglist(tAsynt t, std::string_view lpar, std::string_view rpar) {
  if (!is_cell(t)) return;
  upout(lpar);
  Unparse_joined(t, ", ");
  upout(rpar);
}

// What the host is not to see: things set aside by a pass, and the description of an external function, which the
// generators of its stubs read from the definition itself.
bool is_hidden(tAsynt t) {
  const Asynt_tKind kind = Asynt_Kind(t);
  if (kind == kXSetDelayed) return Asynt_Kind(Binary_RHS(t)) == kExternalDeclaration;
  return kind == kNonAlgAuxiliary;
}

[[noreturn, gnu::noinline]] void bad_list(tAsynt t) {
  upout_end_file();
  die_msg("Impossible kind of node in Unparse_exprs = %s", Asynt_NodeName(Asynt_Kind(t)));
}

bool is_zero(tAsynt t) {
  return Asynt_Kind(t) == kExactIntConst && ExactIntConst_Val(t) && std::strcmp(ExactIntConst_Val(t), "0") == 0;
}

// The items of a list with separators, up to a cell or, without one, to the end. Hidden items count as absent; a
// comment ends its own line, so that no separator follows it. In a list "0" stands for an unknown size, which the host
// writes "_"; the arguments of calls and the operands of operators are not printed by this function and keep their 0.
// `due` tells whether a separator goes before the first item; the result, whether one goes behind the last.
bool Unparse_items(tAsynt t, tAsynt end, std::string_view sep, bool due) {
  for (; t != end && is_cell(t); t = tail(t)) {
    tAsynt item = head(t);
    if (is_hidden(item)) continue;
    if (due) upout(sep);
    if (is_zero(item))
      upout("_");
    else
      Unparse(item);
    due = Asynt_Kind(item) != kComment;
  }
  if (!end && !is_list_end(t)) bad_list(t);
  return due;
}

void Unparse_exprs(tAsynt t, std::string_view sep) { Unparse_items(t, nullptr, sep, false); }

constexpr std::string_view kStatementEnd = ";\n";

void Unparse_indented(tAsynt list) {
  up.indent++;
  Unparse_exprs(list, kStatementEnd);
  up.indent--;
}

// ---- operators

int Priority(tAsynt t) {
  while (Asynt_Kind(t) == kAlgAuxiliary) t = AlgAuxiliary_Expression(t);
  const Asynt_tKind kind = Asynt_Kind(t);
  if (kind == kXPlus) {
    tAsynt operands = Variadic_Expressions(t);
    const bool single = is_cell(operands) && !is_cell(tail(operands));
    if (single) return kPriorities[kXMinus];
  }
  return is_hidden(t) ? kPriorities[kNonAlgAuxiliary] : kPriorities[kind];
}

void Unparse_pri(int parent, tAsynt t) {
  if (parent < Priority(t)) return Unparse(t);
  upout("(");
  Unparse(t);
  upout(")");
}

// The spelling of an operator; its operand is kept apart if it would run together with it.
void Unparse_operator(Asynt_tKind kind) {
  Unparse_text(operator_name[kind]);
  if (kClashes[kind]) upout_guard(kClashes[kind]);
}

void Unparse_prefix(tAsynt t) {
  Unparse_operator(Asynt_Kind(t));
  Unparse_pri(Priority(t), Unary_Expression(t));
}

void Unparse_postfix(tAsynt t) {
  Unparse_pri(Priority(t), Unary_Expression(t));
  Unparse_operator(Asynt_Kind(t));
}

void Unparse_binary(tAsynt t, tAsynt left, tAsynt right) {
  const int priority = Priority(t);
  Unparse_pri(priority, left);
  Unparse_operator(Asynt_Kind(t));
  Unparse_pri(priority, right);
}

// >> and >>> with the file in quotes.
void Unparse_put(tAsynt t, tAsynt expression, tAsynt file) {
  Unparse_pri(Priority(t), expression);
  Unparse_operator(Asynt_Kind(t));
  Unparse(file);
}

// The operands with the spelling between them; a single operand prints alone, so that +a is a.
void Unparse_exprs_pri(tAsynt t) {
  const int priority = Priority(t);
  tAsynt list = Variadic_Expressions(t);
  for (bool first = true; is_cell(list); list = tail(list), first = false) {
    if (!first) Unparse_operator(Asynt_Kind(t));
    Unparse_pri(priority, head(list));
  }
}

void Unparse_compound(tAsynt t) {
  tAsynt list = Variadic_Expressions(t);
  if (is_cell(list) && !is_cell(tail(list))) return Unparse(head(list));
  Unparse_exprs_pri(t);
}

void Unparse_bracketed(std::string_view before, tAsynt t, std::string_view after) {
  upout(before);
  Unparse_exprs(Variadic_Expressions(t), ", ");
  upout(after);
}

void Unparse_part(tAsynt t) {
  tAsynt list = Variadic_Expressions(t);
  if (!is_cell(list)) return;
  Unparse_pri(Priority(t), head(list));
  upout("[[");
  Unparse_exprs(tail(list), ",");
  upout("]] ");
}

// The model language writes an order as so many primes. The full-form reader keeps its digits, and any expression can
// stand there.
void Unparse_derivative(tAsynt t) {
  if (Asynt_Kind(Binary_LHS(t)) != kIntConst) {
    upout("Derivative[");
    Unparse(Binary_LHS(t));
    upout("][");
    Unparse(Binary_RHS(t));
    return upout("]");
  }
  Unparse_pri(Priority(t), Binary_RHS(t));
  for (int order = IntConst_Val(Binary_LHS(t)); order > 0; order--) upout("'");
}

void Unparse_headed(tAsynt t, tAsynt left, tAsynt right) {
  Unparse_text(operator_name[Asynt_Kind(t)]);
  upout(" [ ");
  Unparse(left);
  upout(" , ");
  Unparse(right);
  upout(" ] ");
}

[[noreturn, gnu::noinline]] void bad_inequality(tAsynt exprs) {
  upout_end_file();
  die_msg("Malformed inequality list: %s", unparse_string(exprs));
}

// Operands and operators take turns, with an operand at either end.
void Unparse_inequality(tAsynt exprs, tAsynt parent) {
  tAsynt at = exprs;
  for (;;) {
    if (!is_cell(at)) bad_inequality(exprs);
    Unparse_pri(Priority(parent), head(at));
    at = tail(at);
    if (!is_cell(at)) return;
    if (!Asynt_IsType(head(at), kVariadic)) bad_inequality(exprs);
    upout(" ");
    Unparse_text(operator_name[Asynt_Kind(head(at))]);
    upout(" ");
    at = tail(at);
  }
}

// ---- calls

void Unparse_arguments(tAsynt args) {
  upout("[");
  Unparse_joined(args, ", ");
  upout("]");
}

// A head that is a call or a symbol needs no parentheses: f[i][x].
void Unparse_complex_call(tAsynt t) {
  tAsynt name = ComplexFFE_Name(t);
  if (Asynt_IsType(name, kFullFormExpression) || Asynt_Kind(name) == kSymbol)
    Unparse(name);
  else
    Unparse_pri(Priority(t), name);
  Unparse_arguments(FullFormExpression_Args(t));
}

void Unparse_simple_call(tAsynt t) {
  Unparse(SimpleFFE_Name(t));
  Unparse_arguments(FullFormExpression_Args(t));
}

void Unparse_function1(tAsynt t) {
  Unparse_text(operator_name[Asynt_Kind(t)]);
  upout("[");
  Unparse(CUnary_Arg(t));
  upout("]");
}

void Unparse_function2(tAsynt t) {
  Unparse_text(operator_name[Asynt_Kind(t)]);
  upout("[");
  Unparse(CBinary_Arg1(t));
  upout(",");
  Unparse(CBinary_Arg2(t));
  upout("]");
}

// ---- constants

// In quotes, which the language has no way to escape. One piece: a text that ends a line is not at its start.
void Unparse_string(string s) {
  upout("\"");
  Unparse_text(s);
  up.watch = up.fresh = false;
  upout("\"");
}

void Unparse_integer(long long value) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value);
  upout(std::string_view(digits, static_cast<size_t>(end.ptr - digits)));
}

void Unparse_number(string digits) {
  Unparse_text(digits);
  upout_guard(kDot);
}

[[gnu::noinline]] void Unparse_real(double value) {
  char text[400];  // the longest has 309 digits before the point
  const int length = std::snprintf(text, sizeof text, "%f", value);
  upout(std::string_view(text, static_cast<size_t>(length)));
  upout_guard(kDot);
}

// "#" or "##"; the number is printed unless it is 1.
void Unparse_slot(std::string_view sign, int number) {
  upout(sign);
  if (number != 1) Unparse_integer(number);
}

// ---- patterns

void Unparse_blank(std::string_view sign, tAsynt t) {
  upout(sign);
  tAsynt head_of_blank = Blank_Head(t);
  if (Asynt_Kind(head_of_blank) == kEmpty)
    upout_guard(kDot);
  else
    Unparse_pri(Priority(t), head_of_blank);
}

bool is_optional_blank(tAsynt t) { return Asynt_Kind(t) == kOptional && Asynt_IsType(Optional_Patternexpr(t), kBlank); }

// x_, x__, x___ and x_. stand without the ":" of x:f[_].
void Unparse_pattern(tAsynt t) {
  tAsynt object = XPattern_PatternObject(t);
  if (!Asynt_IsType(object, kBlank) && !is_optional_blank(object)) return Unparse_binary(t, XPattern_Name(t), object);
  Unparse(XPattern_Name(t));
  Unparse(object);
}

[[gnu::noinline]] void Unparse_other(tAsynt t) {
  upout(" ");
  upout(Asynt_NodeName(Asynt_Kind(t)));
  upout("[args...] ");
}

// The dot belongs to the pattern that it follows, so nothing is to keep them apart.
void Unparse_optional(tAsynt t) {
  tAsynt pattern = Optional_Patternexpr(t);
  if (Asynt_Kind(pattern) != kXPattern && !Asynt_IsType(pattern, kBlank)) return Unparse_other(t);
  Unparse(pattern);
  up.clash = nullptr;
  upout(".");
}

// ---- the larger forms

// Variables with their initial values. The two lists have one length.
void Unparse_init_list(tAsynt vars, tAsynt inits) {
  for (bool first = true; is_cell(vars) && is_cell(inits); vars = tail(vars), inits = tail(inits), first = false) {
    if (!first) upout(",\n");
    Unparse(head(vars));
    if (Asynt_Kind(head(inits)) == kEmpty) continue;
    upout(" = ");
    Unparse(head(inits));
  }
  if (is_cell(vars) == is_cell(inits)) return;
  upout_end_file();
  die_msg("Bad input to Unparse_init_list");
}

void Unparse_scope(std::string_view opening, tAsynt vars, tAsynt inits, tAsynt body) {
  upout(opening);
  up.indent++;
  Unparse_init_list(vars, inits);
  upout(" },\n");
  Unparse(body);
  up.indent--;
  upout("]");
}

void Unparse_tagged(tAsynt tag, tAsynt left, std::string_view sign, tAsynt right) {
  Unparse(tag);
  upout("/: ");
  Unparse(left);
  upout(sign);
  if (right) Unparse(right);
}

void Unparse_message(tAsynt t) {
  Unparse(Message_Symbol(t));
  upout("::");
  Unparse_string(Message_Tag(t));
  string language = Message_Language(t);
  if (!language || !*language) return;
  upout("::");
  Unparse_string(language);
}

// The name of a context as the host wants it: a string that ends in a backquote.
void Unparse_context_name(tAsynt name) {
  upout("\"");
  Unparse(name);
  upout("`\"");
}

void Unparse_context(tAsynt t) {
  upout("Begin[");
  Unparse_context_name(Context_Name(t));
  upout("];\n\n");
  Unparse_indented(Context_Body(t));
  upout("\n\n");
  upout("End[]");
}

void Unparse_package_head(tAsynt t) {
  upout("BeginPackage[");
  Unparse_context_name(Package_Name(t));
  if (is_cell(Package_Needs(t))) {
    upout(", { ");
    Unparse(Package_Needs(t));
    upout(" } ");
  }
  upout("];\n\n");
}

constexpr std::string_view kPackageEnd = "\nEndPackage[];\n";

void Unparse_package(tAsynt t) {
  Unparse_package_head(t);
  Unparse(Package_Body(t));
  upout(kPackageEnd);
}

// Statements that were printed ahead have their place in the body.
void Unparse_package_around(tAsynt t, const KeptText& ahead, tAsynt at) {
  Unparse_package_head(t);
  up.indent++;
  bool due = Unparse_items(Package_Body(t), at, kStatementEnd, false);
  if (!ahead.empty()) {
    if (due) upout(kStatementEnd);
    upout_kept(ahead);
    due = true;
  }
  Unparse_items(at, nullptr, kStatementEnd, due);
  up.indent--;
  upout(kPackageEnd);
}

void Unparse_comment(tAsynt t) {
  upout("(* ");
  Unparse_text(Comment_What(t));
  Unparse_text(Comment_Text(t));
  upout(" *)\n");
}

// ---- declarations

void Unparse_parents(tAsynt parents) {
  if (!is_cell(parents)) return;
  upout(" inherits ");
  Unparse_joined(parents, ", ");
}

// From the name of a class or an instance to its end.
void Unparse_object(tAsynt t, tAsynt params, std::string_view lpar, std::string_view rpar) {
  Unparse(Object_Name(t));
  if (params) Unparse_arglist(params, lpar, rpar);
  Unparse_parents(Object_Parents(t));
  upout("\n");
  Unparse(Object_Capsules(t));
  upout("end;\n");
}

void Unparse_part_instance(tAsynt instance) {
  upout("part ");
  Unparse(Object_Name(instance));
  if (Asynt_Kind(instance) == kInstanceSet) Unparse_arglist(InstanceSet_IndexNames(instance), "[", "]");
  Unparse_parents(Object_Parents(instance));
}

void Unparse_particles(tAsynt t) {
  for (; Asynt_Kind(t) == kParticle1; t = Particle1_Particles(t)) {
    Unparse(Particle1_Particle(t));
    upout(";\n");
  }
}

// Symbol information under a path: the components, each with a backquote behind it, and the name.
void Unparse_path(tAsynt components, string name) {
  if (is_cell(components)) {
    Unparse_exprs(components, "`");
    upout("`");
  }
  Unparse_text(name);
}

[[gnu::noinline]] void Unparse_out_param(tAsynt t) {
  const tPosition pos = SymInfo_Pos(t);
  upout("Output (return) parameter no. ");
  Unparse_integer(OutParam_Number(t));
  upout(" at line ");
  Unparse_integer(pos.Line);
  upout(":");
  Unparse_integer(pos.Column);
  upout(" ");
}

void Unparse_array_type(tAsynt t) {
  upout(" Array [");
  Unparse_exprs(ArrayType_Dimensions(t), " ,");
  upout("] of ");
  Unparse(ArrayType_BasicType(t));
}

void Unparse_type(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kNoType: return upout(" undefined type ");
    case kIntType:
    case kIntType_s: return upout(" Integer ");
    case kRealType:
    case kRealType_s: return upout(" Real ");
    case kComplexType:
    case kComplexType_s: return upout(" Complex ");
    case kBoolType:
    case kBoolType_s: return upout(" Bool ");
    case kStringType:
    case kStringType_s: return upout(" String ");
    case kArrayType:
    case kArrayType_s: return Unparse_array_type(t);
    case kMultiType:
    case kMultiType_s:
      upout(" MultiType:[ ");
      Unparse(MultiType_Types(t));
      return upout(" ] ");
    case kPreDef: return upout("Predef");
    default: return Unparse_other(t);
  }
}

// ---- the two switches

void Unparse(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kModel: Unparse(Model_Globals(t)); return Unparse(Model_Objects(t));
    case kObject0:
    case kParent0:
    case kCapsule0:
    case kParticle0:
    case kExpression0:
    case kSymbol0:
    case kIntConst0:
    case kFilename0: return;
    case kObject1:
    case kCapsule1:
    case kSymbol1:
    case kType1: return Unparse_cells(t);
    case kParent1:
    case kFilename1: return Unparse_joined(t, ", ");
    case kParticle1: return Unparse_particles(t);
    case kExpression1: return Unparse_indented(t);
    case kClass: upout("class "); return Unparse_object(t, Class_Formals(t), "(", ")");
    case kInstance: upout("instance "); return Unparse_object(t, nullptr, "", "");
    case kInstanceSet: upout("instance "); return Unparse_object(t, InstanceSet_IndexNames(t), "[", "]");
    case kParent: Unparse(Parent_Name(t)); return Unparse_arglist(Parent_Args(t), "(", ")");
    case kCapsule: return Unparse(Capsule_Body(t));
    case kPartInstance: return Unparse_part_instance(PartInstance_Instance(t));
    case kSimpleSymbol: return Unparse_text(NamedSymbol_Name(t));
    case kFullSymbol: return Unparse_path(FullSymbol_Components(t), NamedSymbol_Name(t));
    case kAbsoluteSymbol: return Unparse_path(AbsoluteSymbol_Components(t), NamedSymbol_Name(t));
    case kRelativeNest: return Unparse(RelativeNest_FullFormExpression(t));
    case kAbsoluteNest: return Unparse(AbsoluteNest_FullFormExpression(t));
    case kTempSymbol: upout("Temp_"); return Unparse_integer(static_cast<int>(TempSymbol_Number(t)));
    case kOutParam: return Unparse_out_param(t);
    case kType0: return upout(" ");
    default:
      if (Asynt_IsType(t, kType)) return Unparse_type(t);
      return Unparse_expr(t);
  }
}

// What is left when no kind has a rule of its own: the families, and a stand-in for what has no notation.
void Unparse_family(tAsynt t) {
  if (Asynt_IsType(t, kCUnary)) return Unparse_function1(t);
  if (Asynt_IsType(t, kCBinary)) return Unparse_function2(t);
  if (Asynt_IsType(t, kUnary)) return Unparse_postfix(t);
  if (Asynt_IsType(t, kBinary)) return Unparse_binary(t, Binary_LHS(t), Binary_RHS(t));
  if (Asynt_IsType(t, kVariadic)) return Unparse_exprs_pri(t);
  Unparse_other(t);
}

void Unparse_expr(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kComplexFFE: return Unparse_complex_call(t);
    case kSimpleFFE: return Unparse_simple_call(t);
    case kXBlank: upout("_"); return upout_guard(kDot);
    case kXAll: return upout("All");
    case kXModule: return Unparse_scope("Module [ { ", XModule_Varlist(t), XModule_Initializers(t), XModule_Body(t));
    case kXBlock: return Unparse_scope("Block [ { ", XBlock_Varlist(t), XBlock_Initializers(t), XBlock_Body(t));
    case kXMinus:
    case kXNot:
    case kXPreIncrement:
    case kXPreDecrement: return Unparse_prefix(t);
    case kDeriv: return Unparse_derivative(t);
    case kXSetDelayed:
      if (is_hidden(t)) return;
      return Unparse_binary(t, Binary_LHS(t), Binary_RHS(t));
    case kXDrop:
    case kXAppend:
    case kXPrepend: return Unparse_headed(t, Binary_LHS(t), Binary_RHS(t));
    case kXCompoundExpression: return Unparse_compound(t);
    case kXList: return Unparse_bracketed(" { ", t, " } ");
    case kXDimensions: return Unparse_bracketed(" XDimensions[ ", t, " ] ");
    case kXSetShape: return Unparse_bracketed(" XSetShape[ ", t, " ] ");
    case kXJoin: return Unparse_bracketed(" Join[ ", t, " ] ");
    case kCross: return Unparse_bracketed("Cross[", t, "]");
    case kXPart: return Unparse_part(t);
    case kXInequality: return Unparse_inequality(XInequality_Expressions(t), t);
    case kSymbol: return Unparse(Symbol_SymInfo(t));
    case kIntConst: Unparse_integer(IntConst_Val(t)); return upout_guard(kDot);
    case kRealConst: return Unparse_real(RealConst_Val(t));
    case kStringConst: return Unparse_string(StringConst_Val(t));
    case kExactIntConst: return Unparse_number(ExactIntConst_Val(t));
    case kExactRealConst: return Unparse_number(ExactRealConst_Val(t));
    case kFilename: return Unparse_string(Filename_Name(t));
    case kXPi: return upout("Pi[]");
    case kXI: return upout("I ");
    case kThis: return upout("this");
    case kXGet: upout("<< "); return Unparse(XGet_Filename(t));
    case kXPut: return Unparse_put(t, XPut_Expression(t), XPut_Filename(t));
    case kXPutAppend: return Unparse_put(t, XPutAppend_Expression(t), XPutAppend_Filename(t));
    case kXTagSet: return Unparse_tagged(XTagSet_Tag(t), XTagSet_LHS(t), " = ", XTagSet_RHS(t));
    case kXTagSetDelayed:
      return Unparse_tagged(XTagSetDelayed_Tag(t), XTagSetDelayed_LHS(t), " := ", XTagSetDelayed_RHS(t));
    case kXTagUnset: return Unparse_tagged(XTagUnset_Tag(t), XTagUnset_Expression(t), " =.", nullptr);
    case kXPattern: return Unparse_pattern(t);
    case kContext: return Unparse_context(t);
    case kPackage: return Unparse_package(t);
    case kIndirect: return Unparse_binary(t, Indirect_Pointer(t), Indirect_Field(t));
    case kSubstitute: return Unparse_binary(t, Substitute_LHS(t), Substitute_RHS(t));
    case kSlot: return Unparse_slot("#", Slot_Index(t));
    case kSlotSequence: return Unparse_slot("##", SlotSequence_Start(t));
    case kBlank: return Unparse_blank("_", t);
    case kBlankSequence: return Unparse_blank("__", t);
    case kBlankNullSequence: return Unparse_blank("___", t);
    case kOptional: return Unparse_optional(t);
    case kMessage: return Unparse_message(t);
    case kAlgAuxiliary: return Unparse(AlgAuxiliary_Expression(t));
    case kNonAlgAuxiliary:
    case kEmpty: return;
    case kComment: return Unparse_comment(t);
    default: return Unparse_family(t);
  }
}

}  // namespace

const char* unparse_string(tAsynt tree) {
  upout_begin_string();
  Unparse(tree);
  return upout_end_string();
}

void unparse_file(FILE* f, tAsynt tree) {
  upout_begin_file(f, false);
  Unparse(tree);
  upout_end_file();
}

void unparse_filep(FILE* f, tAsynt tree) {
  upout_begin_file(f, true);
  Unparse(tree);
  upout_end_file();
}

bool StatementsAhead::add(tAsynt list) {
  const KeptText::End end = text_.end();
  const auto give_up = [&] {
    upout_drop_kept();
    text_.cut(end);
    return false;
  };
  const FatalsThrow fatals;
  try {
    if (!text_.empty()) text_.append(kStatementEnd);
    upout_begin_kept(&text_, 1);
    Unparse_exprs(list, kStatementEnd);
    upout_end_kept();
    return true;
  } catch (const FatalAhead&) {
    return give_up();
  } catch (const std::bad_alloc&) {
    return give_up();
  }
}

void unparse_package(FILE* f, tAsynt package, const StatementsAhead& ahead, tAsynt at) {
  upout_begin_file(f, true);
  Unparse_package_around(package, ahead.text(), at);
  upout_end_file();
}

bool unparse_and_skip_brackets(std::string* str, tAsynt sym, int skipcount) {
  *str = unparse_string(sym);
  if (skipcount <= 0) return true;
  const size_t start = str->find('[');
  size_t end = start;
  for (; skipcount > 0; skipcount--) {
    if (end >= str->size() || (*str)[end] != '[') return false;
    end = str->find(']', end);
    if (end == std::string::npos) return false;
    end++;
  }
  str->erase(start, end - start);
  return true;
}

}  // namespace oz
