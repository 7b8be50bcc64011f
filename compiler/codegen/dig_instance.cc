// Declarations of the variables of an instance. In Fortran the variables of an instance set are arrays over the set's
// indices, which a routine of the set makes room for:
//
//   instance a[i]: real x; array x2[3]
//
//     interface                                        on the interface file
//       subroutine a_set_range (oz_Li_R)               on both
//         use M, oz_this_a => a_set_range              implementation; oz_precision on the interface file
//         implicit none                                on both, with the declarations of the parameters
//         allocate (a_Tx(oz_Li_R))                     on the implementation file, as all that follows without a note
//         allocate (a_Tx2(oz_Li_R,3))
//       end subroutine a_set_range                     on both
//     end interface                                    on the interface file

#include "dig.h"
#include "dig_parts.h"
#include "efunc.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "type.h"

namespace oz {

namespace {

tAsynt this_in = nullptr;  // the index symbols of the set at work

// ---- index symbols: i becomes oz[i]

tAsynt PrependSymInfo(tAsynt symbol, string prefix) {
  const tAsynt si = Symbol_SymInfo(symbol);
  const tAsynt head = mSymbol(mAbsoluteSymbol(mNoType(), NoPosition, prefix, mExpression0()));
  const tAsynt call = mSimpleFFE(mExpression1(symbol, mExpression0()), head);
  return mAbsoluteNest(SymInfo_Type(si), SymInfo_Pos(si), call);
}

tAsynt PrependSymbols(tAsynt list, string prefix) {
  tAsynt result = nullptr;
  tAsynt* end = &result;
  for (; Asynt_Kind(list) == kSymbol1; list = Symbol1_Symbols(list)) {
    *end = mSymbol1(mSymbol(PrependSymInfo(Symbol1_Symbol(list), prefix)), nullptr);
    end = &Symbol1_Symbols(*end);
  }
  if (Asynt_Kind(list) != kSymbol0) dig_abort("PrependSymbols");
  *end = mSymbol0();
  return result;
}

void Funparse_symbs(tAsynt list) {
  for (bool first = true; Asynt_Kind(list) == kSymbol1; list = Symbol1_Symbols(list), first = false) {
    if (!first) foutput(",");
    FunparseVal(Symbol1_Symbol(list));
  }
}

// ---- names and sizes

// The name of a routine or module of the set, as one identifier.
void put_name(const char* before, tAsynt name, const char* behind) {
  foutput_mangled_str(before);
  Foutput_mangled_name(Info_of(name));
  foutput_mangled_str(behind);
  flush_mangled_str();
}

void put_size(tAsynt dimension) {
  if (Asynt_Kind(dimension) == kIntConst)
    foutput_int(IntConst_Val(dimension));
  else
    FunparseVal(dimension);
}

// The dimensions behind those of the set.
void Gen_additional_dims(tAsynt typ, bool print_as_colons) {
  if (!Asynt_IsType(typ, kArrayType)) return;
  for (tAsynt p = ArrayType_Dimensions(typ); Has_dimension(p, "Gen_additional_dims"); p = Other_dimensions(p)) {
    if (Is_dyn(First_dimension(p))) continue;
    foutput(",");
    if (print_as_colons)
      foutput(":");
    else
      put_size(First_dimension(p));
  }
}

// A set member as a line of the routine; nothing for a variable that all members share.
void Gen_allocate(tAsynt t) {
  const tAsynt si = Info_of(t);
  if (!Asynt_IsType(si, kSymInfo) || !Is_setmember(SymInfo_Type(si))) return;
  foutput_indentation(0);
  foutput("allocate (");
  Foutput_mangled_name(WithoutDynIndices(si));
  flush_mangled_str();
  foutput("(");
  Funparse_symbs(this_in);
  Gen_additional_dims(SymInfo_Type(si), false);
  foutput("))\n");
}

// ---- the routine

void start_line(fout_t stream, const char* text) {
  fout_set(stream);
  foutput_indentation(0);
  foutput(text);
}

// The module itself renames its routine, so that the name stays free; the interface needs the precisions alone.
void put_use_line(tAsynt name) {
  start_line(fout_both, "use ");
  fout_set(fout_implementation);
  foutput(f_module_name);
  foutput(", ");
  put_name("oz_this_", name, "");
  foutput(" => ");
  put_name("", name, "_set_range");
  foutput_i("oz_precision");
  fout_set(fout_both);
  foutput("\n");
}

void put_routine_head(tAsynt name, tAsynt in) {
  start_line(fout_both, "subroutine ");
  put_name("", name, "_set_range");
  foutput(" (");
  Funparse_symbs(in);
  foutput(")\n");
  f_modify_indent(1);
  put_use_line(name);
  start_line(fout_both, "implicit none\n");
  fmake_param_decls(in);
}

void Make_set_range_fun(tAsynt name, tIndex allvars, tAsynt in) {
  this_in = in;
  start_line(fout_interface, "interface\n");
  f_modify_indent(1);
  put_routine_head(name, in);
  fout_set(fout_implementation);
  ApplyForInstanceVars(Gen_allocate, name, allvars);
  fout_set(fout_both);
  f_modify_indent(-1);
  start_line(fout_both, "end subroutine ");
  put_name("", name, "_set_range");
  foutput("\n");
  fout_set(fout_interface);
  f_modify_indent(-1);
  start_line(fout_interface, "end interface\n\n");
  fout_set(fout_implementation);
  foutput("\n");
}

}  // namespace

void Gen_array_decl(tAsynt t) {
  const tAsynt si = Info_of(t);
  foutput_indentation(0);
  Foutput_type(SymInfo_Type(si));
  foutput(", target, allocatable, save :: ");
  put_name("oz_", si, "");
  foutput("(:");
  Gen_additional_dims(SymInfo_Type(si), true);
  foutput(")\n");
}

void GenVarDecls(tAsynt nam, tAsynt inames, tIndex allvars) {
  if (Asynt_IsType(inames, kSymbols) && genlang != cplusplus)
    Make_set_range_fun(nam, allvars, PrependSymbols(inames, "oz"));
  ApplyForInstanceVars(remember_vardecl, nam, allvars);
}

}  // namespace oz
