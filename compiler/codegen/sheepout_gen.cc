// The part of the Fortran output layer that leans on the generator above it: values in parentheses, declarations, and
// the directive line of a variable:
//
//   !HPF$ dynamic, distribute (BLOCK) onto P :: x
#include "efunc.h"
#include "sheepforall.h"
#include "sheepout.h"
#include "sheepunp.h"

namespace oz {

namespace {

bool sep;  // the directive line has been begun, the next directive goes behind ", "

// The attributes of a declared type: an array's are those of its elements.
pointerToIndex attributes_of(tAsynt typ) {
  if (Asynt_IsType(typ, kArrayType)) typ = ArrayType_BasicType(typ);
  return Asynt_IsType(typ, kBasicType) ? BasicType_attributes(typ) : nullptr;
}

// The directives of a variable that has none written out in full.
void make_mapping_directives(pointerToIndex attrs) {
  if (attribute_value(attrs, "inherit")) foutput_directive("inherit");
  if (attribute_value(attrs, "dynamic")) foutput_directive("dynamic");
  if (string align = attribute_value(attrs, "align")) {
    foutput_directive("align ");
    foutput(align);
  }
  const string distribute = attribute_value(attrs, "distribute");
  if (distribute) {
    foutput_directive("distribute ");
    foutput(distribute);
  }
  if (string onto = attribute_value(attrs, "onto")) {
    if (!distribute) foutput_directive("distribute");
    foutput(" onto ");
    foutput(onto);
  }
}

}  // namespace

void funparse_pri(tAsynt t, int parent_pri) {
  const bool brackets = Fpri(t) <= parent_pri;
  if (brackets) foutput("(");
  FunparseVal(t);
  if (brackets) foutput(")");
}

void foutput_directive(const char* d) {
  if (sep)
    foutput(", ");
  else
    foutput_hpf_directive();
  foutput(d);
  sep = true;
}

// A text given for the whole directive stands alone, and so does a template.
void fmake_hpf_directives(tAsynt s, tAsynt typ, pointerToIndex attrs) {
  if (!attrs) return;
  sep = false;
  if (string whole = attribute_value(attrs, "hpf")) {
    foutput_directive(whole);
  } else if (string shape = attribute_value(attrs, "template")) {
    foutput_directive("template");
    foutput(shape);
    Foutput_array_dims(typ);
  } else {
    make_mapping_directives(attrs);
    foutput(" :: ");
    Foutput_mangled_name(s);
    flush_mangled_str();
  }
  foutput("\n");
}

void fmake_global_var_decl(tAsynt s) {
  if (Asynt_IsType(s, kXSetDelayed) && Asynt_IsType(Binary_LHS(s), kSymbol)) s = Symbol_SymInfo(Binary_LHS(s));
  fout_set(fout_implementation);
  Foutput_global_var_decl(s);
  if (genlang == hpf) fmake_hpf_directives(s, SymInfo_Type(s), attributes_of(SymInfo_Type(s)));
}

void fmake_var_decls(tAsynt t) { TraverseAsyntTD2(&t, Foutput_impl_var_decl); }

void fmake_param_decls(tAsynt t) { TraverseAsyntTD2(&t, Foutput_impl_param_decl); }

void fmake_forall_decls(tAsynt t) {
  forall_atleast_one = 0;
  if (genlang != fortran90) return;
  TraverseAsyntTD2(&t, Fmake_forall_decl);
  if (!forall_atleast_one) return;
  foutput("\n");
  foutput_indentation(0);
  foutput("external ");
  foutput("zc_parallel");
}

}  // namespace oz
