// Types and arguments of foreign routines. Fortran takes everything by address, C what it changes; both get the storage
// of arrays and complex numbers without a copy, and without its const. Their arrays are stored column by column alike.

#include "pompunp_extern.h"
#include "pompunp_fn.h"
#include "type.h"

namespace oz {
namespace {

constexpr int kMaxRank = 4;

// The types that have texts; others close the comment and write nothing.
enum Base { base_int, base_real, base_complex, base_string, base_other };

Base base_of(tAsynt typ) {
  if (Asynt_IsType(typ, kIntType)) return base_int;
  if (Asynt_IsType(typ, kRealType)) return base_real;
  if (Asynt_IsType(typ, kComplexType)) return base_complex;
  return Asynt_IsType(typ, kStringType) ? base_string : base_other;
}

struct Array_row {
  const char* text[kMaxRank];  // by rank
};

constexpr const char* kFortranScalars[] = {"  INTEGER */ int *", "  DOUBLE PRECISION */ double *",
                                           "  DOUBLE COMPLEX */ double *"};

constexpr Array_row kFortranArrays[] = {
    {{"  INTEGER(#) */  int *", "  INTEGER(#,#) */  int *", "  INTEGER(#,#,#) */  int *",
      "  INTEGER(#,#,#,#) */  int *"}},
    {{"  DOUBLE PRECISION (#) */ double *", "  DOUBLE PRECISION (#,#) */ double *",
      "  DOUBLE PRECISION (#,#,#) */ double *", "  DOUBLE PRECISION (#,#,#,#) */ double *"}},
    {{"  DOUBLE COMPLEX (#) */ double *", "  DOUBLE COMPLEX (#,#) */ double *", "  DOUBLE COMPLEX (#,#,#) */ double *",
      "  DOUBLE COMPLEX (#,#,#,#) */ double *"}}};

constexpr struct {
  const char *input, *output;
} kCScalars[] = {{"  int /input */ int ", "  int /output-inout */ int *"},
                 {"  double/input */ double ", "  double/output-inout */ double *"},
                 {"  complex/input */ double *", "  complex/output-inout */ double *"},
                 {"  char * /input */ char * ", "  char * /output-inout */ char *"}};

// "col*colsize+row" tells the author of the routine how a matrix is stored.
constexpr Array_row kCArrays[] = {
    {{"  int[] */  int *", "  int[col*colsize+row] */  int *", "  int[3d] */  int *", "  int[4d] */  int *"}},
    {{"  double */ double *", "  double[col*colsize+row] */ double *", "  double[3d] */  double *",
      "  double[4d] */  double *"}},
    {{"  complex */ double *", "  complex[col*colsize+row] */ double *", "  complex[3d] */  double *",
      "  complex[4d] */  double *"}},
    {{"  char *[] */  char * *", "  char *[col*colsize+row] */  char * *", "  char *[3d] */  char * *",
      "  char *[4d] */  char * *"}}};

const char* array_text(Foreign_language language, tAsynt typ) {
  const Base base = base_of(ArrayType_BasicType(typ));
  const int rank = CPgetDepth(ArrayType_Dimensions(typ));
  const Base last = language == foreign_c ? base_string : base_complex;
  if (base > last || rank < 1 || rank > kMaxRank) return "*/";
  cp_lmlev(rank);
  return (language == foreign_c ? kCArrays : kFortranArrays)[base].text[rank - 1];
}

const char* scalar_text(Foreign_language language, tAsynt typ, bool isinput) {
  const Base base = base_of(typ);
  if (language == foreign_fortran) return base > base_complex ? "*/" : kFortranScalars[base];
  if (base == base_other) return "*/";
  return isinput ? kCScalars[base].input : kCScalars[base].output;
}

// The name of what is passed, and what its identifier ends in.
struct Argument {
  tAsynt name;
  const char* suffix;
};

void output_identifier(const Argument& argument) {
  CPoutput_nest_name(argument.name);
  cpoutput_mangled_str(argument.suffix);
  cpflush_mangled_str();
}

// The object without its const.
void cast_object(tAsynt typ, const Argument& argument) {
  cpoutput("((");
  CPoutput_basetype_decl(typ);
  cpoutput("&)");
  output_identifier(argument);
  cpoutput(")");
}

void storage(tAsynt typ, const Argument& argument, const char* method) {
  cast_object(typ, argument);
  cpoutput(method);
}

void cpp_argument(tAsynt typ, bool isinput, const Argument& argument) {
  if (!isinput) {
    cpoutput("(");
    CPoutput_basetype_decl(typ);
    cpoutput("&)");
  }
  output_identifier(argument);
}

void number_argument(Foreign_language language, tAsynt typ, bool isinput, const Argument& argument) {
  if (language == foreign_c && !isinput) {
    cpoutput(" &");
    cast_object(typ, argument);
    return;
  }
  cpoutput(language == foreign_c ? "  " : " &");
  output_identifier(argument);
}

}  // namespace

void CP_foreign_type(Foreign_language language, tAsynt typ, bool isinput) {
  if (language == foreign_cpp) {
    cpoutput(isinput ? "*/ const " : "*/ ");
    CPoutput_basetype_decl(typ);
    cpoutput(" & ");
  } else if (Asynt_IsType(typ, kArrayType)) {
    cpoutput(array_text(language, typ));
  } else {
    cpoutput(scalar_text(language, typ, isinput));
  }
}

void CP_foreign_argument(Foreign_language language, tAsynt typ, bool isinput, tAsynt name, const char* suffix) {
  const Argument argument{name, suffix};
  const Base base = base_of(typ);
  if (language == foreign_cpp)
    cpp_argument(typ, isinput, argument);
  else if (Asynt_IsType(typ, kArrayType))
    storage(typ, argument, ".data()");
  else if (base == base_int || base == base_real)
    number_argument(language, typ, isinput, argument);
  else if (base == base_complex)
    storage(typ, argument, ".pairPtr()");
  else if (base == base_string && language == foreign_c)
    storage(typ, argument, ".getdata()");
}

}  // namespace oz
