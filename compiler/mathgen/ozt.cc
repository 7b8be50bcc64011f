// Declaration transformation: what the model language declares becomes ordinary definitions of the host language.
//
//     symbol a, b            Protect[a, b]
//     array[3] v             v = Array[oz$v$C, {3}];  Format[oz$v$C[i_]] := HoldForm[v[[i]]]
//     once f[x_] := e        f[x_] := (f[x] = e)
//     static x := e          C`x := e                 in a class C
//     x[i_] :== e            oz$x$P[i_] := e;  Lookup[x[i_]] := oz$x$P[i]
//     p => f                 Indirect[p, "f"]
//
// A node of the source stays where it is or moves; wherever it is needed a second time a copy is made, so that later
// passes, which visit a node once, meet every place. A form in the value of a form is transformed too: p => f => g
// becomes Indirect[Indirect[p, "f"], "g"].

#include "ozt.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Asynt.h"
#include "Errors.h"
#include "oz.h"
#include "ozerrors.h"
#include "scan.h"
#include "unparse.h"

namespace oz {

Index* class_index = nullptr;

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*ozt_Exit)() = leave;

namespace {

// The name symbol of the class being walked; null outside of classes.
tAsynt current_class = nullptr;

[[noreturn]] void routine_failed(const char* routine) {
  std::fprintf(stderr, "Error: module ozt, routine %s failed\n", routine);
  ozt_Exit();
  std::abort();  // the exit hook must not return
}

tAsynt nowhere() { return mkNonConvPos(NoPosition); }

tAsynt list1(tAsynt e) { return mExpression1(e, mExpression0()); }
tAsynt list2(tAsynt e1, tAsynt e2) { return mExpression1(e1, list1(e2)); }

// An Expression list that grows at its end.
struct Builder {
  tAsynt list = nullptr;
  tAsynt* tail = &list;
};

void append(Builder* b, tAsynt e) {
  *b->tail = mExpression1(e, nullptr);
  b->tail = &Expression1_Expressions(*b->tail);
}

// The list, ended by `end`.
tAsynt finish(Builder* b, tAsynt end) {
  *b->tail = end;
  return b->list;
}

// A call of any head.
tAsynt funcall(tAsynt head, tAsynt args) {
  return Asynt_Kind(head) == kSymbol ? mSimpleFFE(args, head) : mComplexFFE(args, head);
}

// ---- arrays

// exp = Array[oz$exp$C, {dims}]
tAsynt ArrayConstructor(tAsynt exp, tAsynt dims) {
  tAsynt sizes = mXList(nowhere(), IntConsts2Expressions(CopyAsynt(dims)));
  ozt(&sizes);
  const tAsynt elements = SuffMangle(CopyAsynt(exp), "C");
  return mAlgAuxiliary(mXSet(nowhere(), exp, FFE2("Array", elements, sizes)));
}

// Format[oz$exp$C[i_]] := HoldForm[exp[[i]]], by which the elements print as parts of the declared name.
tAsynt ArrayFormatter(tAsynt exp) {
  const tAsynt pattern = mXPattern(MkName("i"), mBlank(mEmpty()));
  const tAsynt element = funcall(SuffMangle(CopyAsynt(exp), "C"), list1(pattern));
  const tAsynt part = mXPart(nowhere(), list2(exp, MkName("i")));
  return mAlgAuxiliary(mXSetDelayed(nowhere(), FFE1("Format", element), FFE1("HoldForm", part)));
}

tAsynt DeclareArrays(tAsynt es, tAsynt dims) {
  Builder result;
  for (; Asynt_Kind(es) == kExpression1; es = Expression1_Expressions(es)) {
    append(&result, ArrayConstructor(CopyAsynt(Expression1_Expression(es)), dims));
    if (!disable_Format) append(&result, ArrayFormatter(CopyAsynt(Expression1_Expression(es))));
  }
  return finish(&result, mExpression0());
}

// ---- definitions

// The symbol that a left side defines: itself or the head of a call; null for any other left side.
tAsynt defined_symbol(tAsynt lhs) {
  if (Asynt_Kind(lhs) == kSimpleFFE) lhs = SimpleFFE_Name(lhs);
  return Asynt_Kind(lhs) == kSymbol ? lhs : nullptr;
}

// The left side as an expression: f[x] for f[x_].
tAsynt without_patterns(tAsynt lhs) {
  const tAsynt copy = CopyAsynt(lhs);
  if (Asynt_Kind(copy) == kSimpleFFE) FullFormExpression_Args(copy) = StripPatterns(FullFormExpression_Args(copy));
  return copy;
}

// once f := e. The value of e is kept at the first use: f := (f = e).
void transform_once(tAsynt definition) {
  const tAsynt position = CopyAsynt(Operator_PosConv(definition));
  tAsynt* rhs = &Binary_RHS(definition);
  *rhs = mXSet(position, without_patterns(Binary_LHS(definition)), *rhs);
  ozt(rhs);
}

// static f := e. The name belongs to the class, not to its instances; its uses keep the plain name.
void transform_static(tAsynt* t) {
  tAsynt* syminfo = &Symbol_SymInfo(defined_symbol(Binary_LHS(*t)));
  *syminfo = PrependContext(current_class, *syminfo);
  *t = mXSetDelayed(Operator_PosConv(*t), Binary_LHS(*t), Binary_RHS(*t));
  ozt(&Binary_RHS(*t));
}

// lhs :== e. The value is defined under a name of its own, and Lookup finds it.
tAsynt transform_substitute(tAsynt t) {
  const tPosition position = scan_Attribute.Position;
  ozt(&Substitute_RHS(t));
  const tAsynt lhs = Substitute_LHS(t);
  const tAsynt mangled = SuffMangle(CopyAsynt(lhs), "P");
  tAsynt value = CopyAsynt(mangled);
  NukePatterns(&value);
  const tAsynt definition = mXSetDelayed(mkNonConvPos(position), mangled, Substitute_RHS(t));
  const tAsynt access = mXSetDelayed(mkNonConvPos(position), FFE1("Lookup", lhs), value);
  return mXCompoundExpression(mkNonConvPos(position), list2(definition, access));
}

void transform_class(tAsynt t) {
  const tAsynt name = Symbol_SymInfo(Object_Name(t));
  if (Asynt_Kind(name) != kSimpleSymbol) return;
  current_class = Object_Name(t);
  ozt(&Object_Capsules(t));
  if (!create_entry(class_index, t, NamedSymbol_Name(name)))
    die_msg("Multiple definition of class %s", NamedSymbol_Name(name));
  current_class = nullptr;
}

// ---- the walk

// The families of operators and functions; the place to go on with, or null. All other kinds are left alone.
tAsynt* transform_family(tAsynt* t) {
  if (Asynt_IsType(*t, kUnary)) return &Unary_Expression(*t);
  if (Asynt_IsType(*t, kVariadic)) return &Variadic_Expressions(*t);
  if (Asynt_IsType(*t, kCUnary)) return &CUnary_Arg(*t);
  if (Asynt_IsType(*t, kBinary)) {
    ozt(&Binary_LHS(*t));
    return &Binary_RHS(*t);
  }
  return nullptr;
}

}  // namespace

void ozt(tAsynt* t) {
  while (t) {
    switch (Asynt_Kind(*t)) {
      case kModel:
        if (class_index) delete_index(class_index);
        class_index = make_index(hash_table, 20);
        current_class = nullptr;
        ozt(&Model_Globals(*t));
        t = &Model_Objects(*t);
        continue;
      case kClass: return transform_class(*t);
      case kInstance:
      case kInstanceSet: t = &Object_Capsules(*t); continue;
      case kCapsule: t = &Capsule_Body(*t); continue;
      case kObject1:
        ozt(&Object1_Object(*t));
        t = &Object1_Objects(*t);
        continue;
      case kCapsule1:
        ozt(&Capsule1_Capsule(*t));
        t = &Capsule1_Capsules(*t);
        continue;
      case kParticle1:
        ozt(&Particle1_Particle(*t));
        t = &Particle1_Particles(*t);
        continue;
      case kExpression1:
        ozt(&Expression1_Expression(*t));
        t = &Expression1_Expressions(*t);
        continue;
      case kSymbolDecl: *t = mSimpleFFE(Symbols2Expressions(SymbolDecl_Symbols(*t)), MkName("Protect")); return;
      case kArrayDecl:
        *t = mXCompoundExpression(nowhere(), DeclareArrays(ArrayDecl_Expressions(*t), ArrayDecl_Dimensions(*t)));
        return;
      case kXSetDelayed:
        // A body in another language is kept for the generators, out of the host's sight.
        if (Asynt_Kind(Binary_RHS(*t)) == kExternBody) {
          *t = mNonAlgAuxiliary(*t);
          return;
        }
        break;
      case kSetOnce:
        if (Asynt_Kind(Binary_LHS(*t)) != kSymbol && Asynt_Kind(Binary_LHS(*t)) != kSimpleFFE) break;
        return transform_once(*t);
      case kSetStatic:
        if (!defined_symbol(Binary_LHS(*t))) break;
        return transform_static(t);
      case kSubstitute: *t = transform_substitute(*t); return;
      case kIndirect:
        ozt(&Indirect_Pointer(*t));
        *t = FFE2("Indirect", Indirect_Pointer(*t), Stringify(Indirect_Field(*t)));
        return;
      case kXModule:
        ozt(&XModule_Initializers(*t));
        t = &XModule_Body(*t);
        continue;
      case kXBlock:
        ozt(&XBlock_Initializers(*t));
        t = &XBlock_Body(*t);
        continue;
      case kComplexFFE:
        ozt(&ComplexFFE_Name(*t));
        t = &FullFormExpression_Args(*t);
        continue;
      case kSimpleFFE:
        ozt(&SimpleFFE_Name(*t));
        t = &FullFormExpression_Args(*t);
        continue;
      default: break;
    }
    t = transform_family(t);
  }
}

// ---- helpers

tAsynt MkName(const char* s) { return mSymbol(mAbsoluteSymbol(mNoType(), NoPosition, s, mExpression0())); }

tAsynt FFE1(const char* s, tAsynt e) { return mSimpleFFE(list1(e), MkName(s)); }
tAsynt FFE2(const char* s, tAsynt e1, tAsynt e2) { return mSimpleFFE(list2(e1, e2), MkName(s)); }

tAsynt Stringify(tAsynt e) { return mStringConst(Asynt_KeepText(unparse_string(e))); }

tAsynt SuffMangle(tAsynt exp, const char* suffix) {
  tAsynt head = exp;
  while (Asynt_IsType(head, kFullFormExpression))
    head = Asynt_Kind(head) == kSimpleFFE ? SimpleFFE_Name(head) : ComplexFFE_Name(head);
  if (Asynt_Kind(head) != kSymbol || !Asynt_IsType(Symbol_SymInfo(head), kNamedSymbol)) routine_failed("SuffMangle");
  string* name = &NamedSymbol_Name(Symbol_SymInfo(head));
  *name = Asynt_KeepText(std::string("oz$") + *name + "$" + suffix);
  return exp;
}

tAsynt StripPatterns(tAsynt list) {
  Builder result;
  for (; Asynt_Kind(list) == kExpression1; list = Expression1_Expressions(list)) {
    const tAsynt e = Expression1_Expression(list);
    append(&result, Asynt_Kind(e) == kXPattern ? XPattern_Name(e) : e);
  }
  return finish(&result, mExpression0());
}

void NukePatterns(tAsynt* t) {
  TraverseAsyntTD2(t, [](tAsynt* place) -> char {
    if (Asynt_Kind(*place) == kXPattern) *place = XPattern_Name(*place);
    return true;
  });
}

tAsynt Symbols2Expressions(tAsynt list) {
  Builder result;
  for (; Asynt_Kind(list) == kSymbol1; list = Symbol1_Symbols(list)) append(&result, Symbol1_Symbol(list));
  return finish(&result, mExpression0());
}

tAsynt IntConsts2Expressions(tAsynt list) {
  Builder result;
  for (; Asynt_Kind(list) == kIntConst1; list = IntConst1_IntConsts(list)) append(&result, IntConst1_IntConst(list));
  // Declared dimensions are a list of expressions from the start.
  for (; Asynt_Kind(list) == kExpression1; list = Expression1_Expressions(list))
    append(&result, Expression1_Expression(list));
  return finish(&result, mExpression0());
}

tAsynt AppendExps(tAsynt a, tAsynt b) {
  Builder result;
  for (; Asynt_Kind(a) == kExpression1; a = Expression1_Expressions(a)) append(&result, Expression1_Expression(a));
  return finish(&result, b);
}

tAsynt PrependContext(tAsynt ctx, tAsynt sym) {
  if (!ctx || Asynt_Kind(Symbol_SymInfo(ctx)) != kSimpleSymbol || Asynt_Kind(sym) != kSimpleSymbol) return sym;
  return mFullSymbol(mNoType(), SymInfo_Pos(sym), NamedSymbol_Name(sym), list1(ctx));
}

}  // namespace oz
