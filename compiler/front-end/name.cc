// Qualification: every symbol that only spells a name is replaced by the symbol that it means.
//
// In
//     model Tank; real g := 9.81; class Vessel hide: real h; f[y_] := Module[{z = y}, g*h + z + q]; end;
// f and h stay relative, as locals of a class: an instance makes them its own. g becomes Tank`g, the pattern variable
// P$`y, the Module variable the absolute symbol z without components, and q, bound nowhere, an undeclared global.
//
// The walk first collects the locals of all objects and lets them inherit, so that a name may be used ahead of its
// declaration. Lists are followed in a loop, as is the last child of a node; recursion follows nesting alone.

#include "name.h"

#include "Asynt.h"
#include "env.h"
#include "ozerrors.h"

namespace oz {

namespace {

// A kind of node that cannot stand where the routine met it; the text of the message is fixed.
[[noreturn]] void refuse_kind(const char* routine, tAsynt t) {
  die_msg("Unimplemented type in %s: %s\n", routine, Asynt_NodeName(Asynt_Kind(t)));
}

bool is_simple(tAsynt symbol) { return Asynt_Kind(Symbol_SymInfo(symbol)) == kSimpleSymbol; }

// ---- locals

// Enters the names that a declaration declares in the current environment.
void Find_locals(tAsynt t) {
  for (;;) {
    switch (Asynt_Kind(t)) {
      case kCapsule0:
      case kParticle0:
      case kExternBody:
      case kExpression0:
      case kSymbol0: return;
      case kCapsule1:
        Find_locals(Capsule1_Capsule(t));
        t = Capsule1_Capsules(t);
        continue;
      case kParticle1:
        Find_locals(Particle1_Particle(t));
        t = Particle1_Particles(t);
        continue;
      case kExpression1:
        Find_locals(Expression1_Expression(t));
        t = Expression1_Expressions(t);
        continue;
      case kSymbol1:
        Find_locals(Symbol1_Symbol(t));
        t = Symbol1_Symbols(t);
        continue;
      case kCapsule:
        // The behaviour expression of an object declares nothing.
        if (!Capsule_Local(t)) return;
        t = Capsule_Body(t);
        continue;
      case kPartInstance: t = Object_Name(PartInstance_Instance(t)); continue;
      case kSymbolDecl: t = SymbolDecl_Symbols(t); continue;
      case kArrayDecl: t = ArrayDecl_Expressions(t); continue;
      case kComplexFFE: t = ComplexFFE_Name(t); continue;
      case kSimpleFFE: t = SimpleFFE_Name(t); continue;
      case kXSetDelayed:
      case kSetStatic:
      case kSetOnce: t = Binary_LHS(t); continue;
      case kSymbol: {
        // A predefined name and a path declare nothing.
        const tAsynt syminfo = Symbol_SymInfo(t);
        if (Asynt_Kind(syminfo) == kSimpleSymbol) add_local_sym(syminfo);
        if (Asynt_Kind(syminfo) != kRelativeNest) return;
        t = RelativeNest_FullFormExpression(syminfo);
        continue;
      }
      default: refuse_kind("Find_locals", t);
    }
  }
}

// Makes the environment of an object and fills it. Of two objects with one name the second shares the first's.
void Find_object_locals(tAsynt object) {
  const tAsynt name = Symbol_SymInfo(Object_Name(object));
  make_env(name, object, Object_Parents(object));
  change_env(name);
  if (Asynt_Kind(object) == kClass) Find_locals(Class_Formals(object));
  Find_locals(Object_Capsules(object));
}

void Find_all_locals(tAsynt model) {
  make_global_context(Model_Name(model));
  current_env = glob_env;
  Find_locals(Model_Globals(model));
  for (tAsynt l = Model_Objects(model); Asynt_Kind(l) == kObject1; l = Object1_Objects(l))
    Find_object_locals(Object1_Object(l));
}

// ---- pattern variables

// The variable of a named pattern. A path is no variable, and a predefined name cannot be one.
void Find_pattern_name(tAsynt name) {
  if (Asynt_Kind(name) != kSymbol) refuse_kind("Find_pattern", name);
  const tAsynt syminfo = Symbol_SymInfo(name);
  switch (Asynt_Kind(syminfo)) {
    case kSimpleSymbol: add_pattern_sym(syminfo); return;
    case kFullSymbol: return;
    default: refuse_kind("Find_pattern", syminfo);
  }
}

// Enters the pattern variables of a left side in the top pattern index.
void Find_pattern(tAsynt t) {
  for (;;) {
    switch (Asynt_Kind(t)) {
      case kXPattern: Find_pattern_name(XPattern_Name(t)); return;
      case kComplexFFE:
        Find_pattern(ComplexFFE_Name(t));
        t = FullFormExpression_Args(t);
        continue;
      case kSimpleFFE: t = FullFormExpression_Args(t); continue;
      case kXInequality: t = XInequality_Expressions(t); continue;
      case kXPut: t = XPut_Expression(t); continue;
      case kXPutAppend: t = XPutAppend_Expression(t); continue;
      case kIndirect: t = Indirect_Pointer(t); continue;
      case kBlank:
      case kBlankSequence:
      case kBlankNullSequence: t = Blank_Head(t); continue;
      case kXTagUnset: t = XTagUnset_Expression(t); continue;
      case kXTagSet:
        Find_pattern(XTagSet_LHS(t));
        t = XTagSet_RHS(t);
        continue;
      case kXTagSetDelayed:
        Find_pattern(XTagSetDelayed_LHS(t));
        t = XTagSetDelayed_RHS(t);
        continue;
      case kSubstitute:
        Find_pattern(Substitute_LHS(t));
        t = Substitute_RHS(t);
        continue;
      case kOptional:
        Find_pattern(Optional_Patternexpr(t));
        t = Optional_Default(t);
        continue;
      case kExpression1:
        Find_pattern(Expression1_Expression(t));
        t = Expression1_Expressions(t);
        continue;
      case kSymbol:
      case kThis:
      case kXGet:
      case kSlot:
      case kSlotSequence:
      case kMessage:
      case kEmpty:
      case kExpression0: return;
      default: break;
    }
    if (Asynt_IsType(t, kConstant)) return;
    if (Asynt_IsType(t, kUnary)) {
      t = Unary_Expression(t);
    } else if (Asynt_IsType(t, kVariadic)) {
      t = Variadic_Expressions(t);
    } else if (Asynt_IsType(t, kBinary)) {
      Find_pattern(Binary_LHS(t));
      t = Binary_RHS(t);
    } else {
      refuse_kind("Find_pattern", t);
    }
  }
}

void Find_all_patterns(tAsynt lhs) {
  push_pattern_index();
  Find_pattern(lhs);
}

// ---- module variables and the indices of sets

// Binds the variables of a Module. A predefined name among them ends the list: those behind it stay unbound.
void Make_module_vars(tAsynt varlist) {
  push_module_index();
  for (; Asynt_Kind(varlist) == kSymbol1 && is_simple(Symbol1_Symbol(varlist)); varlist = Symbol1_Symbols(varlist))
    add_module_sym(Symbol_SymInfo(Symbol1_Symbol(varlist)));
}

// An index is an undeclared global like any other unbound name. If the model or the object declares its name, the index
// is bound inside the set, where it wins.
void Bind_set_indices(tAsynt names) {
  push_set_index();
  for (; Asynt_Kind(names) == kSymbol1; names = Symbol1_Symbols(names)) {
    const tAsynt syminfo = Symbol_SymInfo(Symbol1_Symbol(names));
    if (Asynt_Kind(syminfo) == kSimpleSymbol && (lookup_local(syminfo) || is_model_global(syminfo)))
      add_set_sym(syminfo);
  }
}

// Qualifies the names of indices. A use in the set's body may have made the symbol; it has no type then.
void Qualify_set_indices(tAsynt names) {
  for (; Asynt_Kind(names) == kSymbol1; names = Symbol1_Symbols(names)) {
    tAsynt* syminfo = &Symbol_SymInfo(Symbol1_Symbol(names));
    const tAsynt type = SymInfo_Type(*syminfo);
    Qualify(syminfo);
    if (Asynt_Kind(SymInfo_Type(*syminfo)) == kNoType) SymInfo_Type(*syminfo) = type;
  }
}

// ---- paths and nests

bool Is_local_sym(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kThis: return true;
    case kSimpleFFE: return Is_local_sym(SimpleFFE_Name(t));
    case kSymbol: return Asynt_IsType(Symbol_SymInfo(t), kNamedSymbol) && lookup_local(Symbol_SymInfo(t));
    default: return false;
  }
}

// Qualifies the arguments of indexed components. The names of a path are those of other objects and stay.
void Qualify_comp(tAsynt components) {
  for (; Asynt_Kind(components) == kExpression1; components = Expression1_Expressions(components)) {
    const tAsynt component = Expression1_Expression(components);
    switch (Asynt_Kind(component)) {
      case kSymbol:
      case kThis: break;
      case kSimpleFFE: Qualify(&FullFormExpression_Args(component)); break;
      default: return;
    }
  }
}

// A path from a local or from `this` stays relative; any other is known from the root.
void Qualify_path(tAsynt* t) {
  const tAsynt components = FullSymbol_Components(*t);
  const bool relative = Asynt_Kind(components) == kExpression1 && Is_local_sym(Expression1_Expression(components));
  Qualify_comp(components);
  const auto make = relative ? mFullSymbol : mAbsoluteSymbol;
  *t = make(SymInfo_Type(*t), SymInfo_Pos(*t), NamedSymbol_Name(*t), components);
}

// An element such as a[i] in a declaration. Among the globals it is known from the root.
void Qualify_nest(tAsynt* t) {
  const tAsynt element = RelativeNest_FullFormExpression(*t);
  Qualify(&RelativeNest_FullFormExpression(*t));
  tAsynt head = element;
  while (Asynt_Kind(head) == kComplexFFE) head = ComplexFFE_Name(head);
  if (current_env == glob_env && Is_local_sym(head)) *t = mAbsoluteNest(SymInfo_Type(*t), SymInfo_Pos(*t), element);
}

// ---- types of variables

// The dimensions in the type of a pattern variable or a Module variable are expressions in its scope; those of all
// other symbols are left as written.
void Qualify_dimensions(tAsynt syminfo) {
  const tAsynt type = SymInfo_Type(syminfo);
  if (Asynt_IsType(type, kArrayType)) Qualify(&ArrayType_Dimensions(type));
}

void Qualify_pattern_name(tAsynt* name) {
  Qualify(name);
  if (Asynt_Kind(*name) != kSymbol) return;
  const tAsynt syminfo = Symbol_SymInfo(*name);
  if (Asynt_IsType(syminfo, kNamedSymbol) && lookup_pattern(syminfo) == syminfo) Qualify_dimensions(syminfo);
}

// ---- scopes

// Both XModule and XBlock. The initial values are outside of the variables' scope.
void Qualify_module(tAsynt* varlist, tAsynt* initializers, tAsynt* body) {
  Qualify(initializers);
  Make_module_vars(*varlist);
  Qualify(varlist);
  for (tAsynt l = *varlist; Asynt_Kind(l) == kSymbol1; l = Symbol1_Symbols(l))
    Qualify_dimensions(Symbol_SymInfo(Symbol1_Symbol(l)));
  Qualify(body);
  pop_module_index();
}

// A definition or a rule: the pattern variables of its left side are bound in both sides.
void Qualify_definition(tAsynt* lhs, tAsynt* rhs) {
  Find_all_patterns(*lhs);
  Qualify(lhs);
  Qualify(rhs);
  pop_pattern_index();
}

void Qualify_object(tAsynt object) {
  change_env(Symbol_SymInfo(Object_Name(object)));
  const bool is_set = Asynt_Kind(object) == kInstanceSet;
  if (is_set) Bind_set_indices(InstanceSet_IndexNames(object));
  Qualify(&Object_Parents(object));
  Qualify(&Object_Capsules(object));
  if (Asynt_Kind(object) == kClass) Qualify(&Class_Formals(object));
  if (!is_set) return;
  Qualify_set_indices(InstanceSet_IndexNames(object));
  pop_set_index();
}

// A part line belongs to the object around it; only what it hands to its classes is qualified.
void Qualify_part(tAsynt instance) {
  const bool is_set = Asynt_Kind(instance) == kInstanceSet;
  if (is_set) Bind_set_indices(InstanceSet_IndexNames(instance));
  Qualify(&Object_Parents(instance));
  if (!is_set) return;
  Qualify_set_indices(InstanceSet_IndexNames(instance));
  pop_set_index();
}

void Qualify_model(tAsynt model) {
  glob_env = make_global_env();
  Find_all_locals(model);
  inherit_locals();
  current_env = glob_env;
  Qualify(&Model_Globals(model));
  current_env = nullptr;
  Qualify(&Model_Objects(model));
}

// The families of operators and constants; the place to go on with, or null.
tAsynt* Qualify_family(tAsynt* t) {
  if (Asynt_IsType(*t, kUnary)) return &Unary_Expression(*t);
  if (Asynt_IsType(*t, kVariadic)) return &Variadic_Expressions(*t);
  if (Asynt_IsType(*t, kBinary)) {
    Qualify(&Binary_LHS(*t));
    return &Binary_RHS(*t);
  }
  if (Asynt_IsType(*t, kConstant)) return nullptr;
  refuse_kind("Qualify", *t);
}

}  // namespace

void Qualify(tAsynt* t) {
  while (t) {
    switch (Asynt_Kind(*t)) {
      case kModel: return Qualify_model(*t);
      case kClass:
      case kInstance:
      case kInstanceSet: return Qualify_object(*t);
      case kPartInstance: return Qualify_part(PartInstance_Instance(*t));
      case kObject1:
        Qualify(&Object1_Object(*t));
        t = &Object1_Objects(*t);
        continue;
      case kParent1:
        Qualify(&Parent_Args(Parent1_Parent(*t)));
        t = &Parent1_Parents(*t);
        continue;
      case kCapsule1:
        Qualify(&Capsule1_Capsule(*t));
        t = &Capsule1_Capsules(*t);
        continue;
      case kCapsule: t = &Capsule_Body(*t); continue;
      case kParameterspec1:
        Qualify(&Parameterspec1_Parameterspec(*t));
        t = &Parameterspec1_Parameterspecs(*t);
        continue;
      case kInputParameter: t = &InputParameter_Name(*t); continue;
      case kInputSizeParameter:
        Qualify(&InputSizeParameter_Name(*t));
        Qualify(&InputSizeParameter_ArrayName(*t));
        t = &InputSizeParameter_Size(*t);
        continue;
      case kOutputParameter: t = &OutputParameter_Name(*t); continue;
      case kOutputSizeParameter:
        Qualify(&OutputSizeParameter_Name(*t));
        t = &OutputSizeParameter_Sizes(*t);
        continue;
      case kInOutParameter: t = &InOutParameter_Name(*t); continue;
      case kParticle1:
        Qualify(&Particle1_Particle(*t));
        t = &Particle1_Particles(*t);
        continue;
      case kSymbolDecl: t = &SymbolDecl_Symbols(*t); continue;
      case kArrayDecl: t = &ArrayDecl_Expressions(*t); continue;  // the dimensions are left as written
      case kExternalDeclaration: t = &ExternalDeclaration_Parameters(*t); continue;
      case kComplexFFE:
        Qualify(&ComplexFFE_Name(*t));
        t = &FullFormExpression_Args(*t);
        continue;
      case kSimpleFFE:
        Qualify(&SimpleFFE_Name(*t));
        t = &FullFormExpression_Args(*t);
        continue;
      case kXModule: return Qualify_module(&XModule_Varlist(*t), &XModule_Initializers(*t), &XModule_Body(*t));
      case kXBlock: return Qualify_module(&XBlock_Varlist(*t), &XBlock_Initializers(*t), &XBlock_Body(*t));
      case kXUpSet:
      case kXUpSetDelayed:
      case kXSet:
      case kXSetDelayed:
      case kSetStatic:
      case kSetOnce:
      case kXRule:
      case kXRuleDelayed: return Qualify_definition(&Binary_LHS(*t), &Binary_RHS(*t));
      case kSubstitute: return Qualify_definition(&Substitute_LHS(*t), &Substitute_RHS(*t));
      case kXTagSet: Qualify(&XTagSet_Tag(*t)); return Qualify_definition(&XTagSet_LHS(*t), &XTagSet_RHS(*t));
      case kXTagSetDelayed:
        Qualify(&XTagSetDelayed_Tag(*t));
        return Qualify_definition(&XTagSetDelayed_LHS(*t), &XTagSetDelayed_RHS(*t));
      case kXTagUnset:
        Qualify(&XTagUnset_Tag(*t));
        t = &XTagUnset_Expression(*t);
        continue;
      case kXInequality: t = &XInequality_Expressions(*t); continue;
      case kXPut: t = &XPut_Expression(*t); continue;
      case kXPutAppend: t = &XPutAppend_Expression(*t); continue;
      case kXPattern:
        Qualify_pattern_name(&XPattern_Name(*t));
        t = &XPattern_PatternObject(*t);
        continue;
      case kIndirect:
        Qualify(&Indirect_Pointer(*t));
        t = &Indirect_Field(*t);
        continue;
      case kBlank:
      case kBlankSequence:
      case kBlankNullSequence: t = &Blank_Head(*t); continue;
      case kOptional:
        Qualify(&Optional_Patternexpr(*t));
        t = &Optional_Default(*t);
        continue;
      case kMessage: t = &Message_Symbol(*t); continue;
      case kSymbol1:
        Qualify(&Symbol1_Symbol(*t));
        t = &Symbol1_Symbols(*t);
        continue;
      case kExpression1:
        Qualify(&Expression1_Expression(*t));
        t = &Expression1_Expressions(*t);
        continue;
      case kSymbol: t = &Symbol_SymInfo(*t); continue;
      case kSimpleSymbol: *t = lookup_any(*t); return;
      case kFullSymbol: return Qualify_path(t);
      case kRelativeNest: return Qualify_nest(t);
      case kAbsoluteSymbol:
      case kXGet:
      case kThis:
      case kSlot:
      case kSlotSequence:
      case kEmpty:
      case kExternBody:
      case kObject0:
      case kParent0:
      case kCapsule0:
      case kParameterspec0:
      case kParticle0:
      case kExpression0:
      case kSymbol0: return;
      default: t = Qualify_family(t); continue;
    }
  }
}

}  // namespace oz
