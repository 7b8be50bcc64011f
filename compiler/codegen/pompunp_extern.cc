// External functions in C, Fortran and C++: in the .icc the declaration of the foreign routine, and an inline stub that
// has the calling convention of all generated code. For a function f[real x_] of the prefix "p", in C:
//
//   extern "C" { double  pf(
//           /* Input    double/input */ double x);
//   }
//    inline double pf_c (
//          const double &x)
//          {        return pf (
//            /* Input */    x);
//   }
//
// The directions tell, in the order of the foreign routine's arguments, which argument is read, written, or holds the
// size of another. Directions that carry something out belong to the OutParams of the parameter list, in order.

#include "pompunp_extern.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "al_cmds.h"
#include "ozerrors.h"
#include "pompunp_fn.h"
#include "type.h"
#include "unparse.h"

namespace oz {
namespace {

// ---- what a declaration says

bool Is_Lang(tAsynt t, const char* language) {
  return Asynt_Kind(t) == kExternalDeclaration && ExternalDeclaration_Language(t) &&
         std::strcmp(ExternalDeclaration_Language(t), language) == 0;
}

bool Is_C(tAsynt t) { return Is_Lang(t, "C"); }
bool Is_Fortran(tAsynt t) { return Is_Lang(t, "Fortran"); }
bool Is_CPP(tAsynt t) { return Is_Lang(t, "C++"); }
bool Is_Fortran_Or_C(tAsynt t) { return Is_Fortran(t) || Is_C(t); }

bool Is_directions_Exernal(tAsynt t) {
  return Asynt_Kind(t) == kExternalDeclaration && Asynt_Kind(ExternalDeclaration_Parameters(t)) == kParameterspec1;
}

bool returns_function(tAsynt b) { return Asynt_Kind(ExternalDeclaration_Returns(b)) == kExternalFunctionReturns; }
bool returns_procedure(tAsynt b) { return Asynt_Kind(ExternalDeclaration_Returns(b)) == kExternalProcedureReturns; }

Foreign_language language_of(tAsynt b) {
  if (Is_Fortran(b)) return foreign_fortran;
  return Is_C(b) ? foreign_c : foreign_cpp;
}

}  // namespace

char Is_Alg(tAsynt t) { return Is_Lang(t, "Alg"); }
char Is_CPP_NOCONST_External(tAsynt t) { return Is_Lang(t, "C++NOCONST"); }

const char* Make_language_suffix(tAsynt t) {
  if (Is_C(t)) return "_c";
  if (Is_Fortran(t)) return "_ftn";
  return Is_CPP(t) && Is_directions_Exernal(t) ? "_cpp" : "";
}

char Is_stub_generated(tAsynt t) { return Make_language_suffix(t)[0] != 0; }

namespace {

// ---- directions

bool is_direction(tAsynt list) { return Asynt_Kind(list) == kParameterspec1; }

bool carries_out(tAsynt item) {
  const Asynt_tKind kind = Asynt_Kind(item);
  return kind == kOutputParameter || kind == kOutputSizeParameter || kind == kInOutParameter;
}

tAsynt direction_name(tAsynt item) {
  switch (Asynt_Kind(item)) {
    case kInputParameter: return InputParameter_Name(item);
    case kInputSizeParameter: return InputSizeParameter_Name(item);
    case kOutputParameter: return OutputParameter_Name(item);
    case kOutputSizeParameter: return OutputSizeParameter_Name(item);
    default: return InOutParameter_Name(item);
  }
}

// The one output of a declaration, else null. An in-out item ends the count, so that an output ahead of it still
// counts as single: the result depends on the order of the list.
tAsynt single_output(tAsynt list) {
  tAsynt found = nullptr;
  for (; is_direction(list); list = Parameterspec1_Parameterspecs(list)) {
    const tAsynt item = Parameterspec1_Parameterspec(list);
    if (Asynt_Kind(item) == kInOutParameter) return found;
    if (!carries_out(item)) continue;
    if (found) return nullptr;
    found = item;
  }
  return found;
}

// The one in-out item of a declaration without outputs, else null.
tAsynt single_inout(tAsynt list) {
  tAsynt found = nullptr;
  for (; is_direction(list); list = Parameterspec1_Parameterspecs(list)) {
    const tAsynt item = Parameterspec1_Parameterspec(list);
    if (!carries_out(item)) continue;
    if (found || Asynt_Kind(item) != kInOutParameter) return nullptr;
    found = item;
  }
  return found;
}

// ---- the lists of the stub at work, for look-ups in constant time

std::unordered_map<std::string, tAsynt> arguments;  // symbol informations of what goes in, by the text of the name
std::vector<tAsynt> out_params;                     // symbol informations of the OutParams, in order
std::vector<tAsynt> out_directions;                 // directions that carry something out, in order

void list_params(tAsynt t) {
  arguments.clear();
  out_params.clear();
  for (; Asynt_Kind(t) == kExpression1; t = Expression1_Expressions(t)) {
    const tAsynt sym = CPsymbol_info(Expression1_Expression(t));
    if (Asynt_Kind(sym) == kOutParam)
      out_params.push_back(sym);
    else if (Asynt_Kind(sym) == kAbsoluteSymbol)
      arguments.emplace(unparse_string(sym), sym);
  }
}

void list_directions(tAsynt list) {
  out_directions.clear();
  for (; is_direction(list); list = Parameterspec1_Parameterspecs(list))
    if (carries_out(Parameterspec1_Parameterspec(list))) out_directions.push_back(Parameterspec1_Parameterspec(list));
}

// The argument that a direction names, or null.
tAsynt CP_Ftnc_Get_Inp(tAsynt name) {
  const auto found = arguments.find(unparse_string(name));
  return found == arguments.end() ? nullptr : found->second;
}

// The OutParam with an index from 1, or null with a note.
tAsynt CP_Ftnc_Get_Idx_Out(tAsynt t, size_t index) {
  if (index <= out_params.size()) return out_params[index - 1];
  std::fprintf(stderr, "\nFailed in CP_Ftnc_Get_Idx_Out %zu\n", index);
  WriteAsynt(stderr, t);
  std::fprintf(stderr, "\n****\n");
  return nullptr;
}

// The name of the direction with an index from 1 that carries something out, or null with a report.
tAsynt CP_Ftnc_outparam(tAsynt directions, long index) {
  const auto count = static_cast<long>(out_directions.size());
  if (index >= 1 && index <= count) return direction_name(out_directions[static_cast<size_t>(index - 1)]);
  error_msg("Not enough parameters, remaining is %ld\n", index - count);
  error_msg("Failure of CP_Ftnc_outparams\n");
  std::fprintf(stderr, "---Tree dump\n");
  WriteAsynt(stderr, directions);
  std::fprintf(stderr, "---End of Tree dump\n");
  return nullptr;
}

// ---- pieces

// The name of a direction is a Symbol, or what an instance has put in the place of one.
void output_name(tAsynt name) {
  CPoutput_nest_name(name);
  cpflush_mangled_str();
}

std::string message_name(tAsynt name) {
  const tAsynt sym = CPsymbol_info(name);
  return Asynt_IsType(sym, kNamedSymbol) ? NamedSymbol_Name(sym) : unparse_string(name);
}

tPosition name_position(tAsynt name) {
  const tAsynt sym = CPsymbol_info(name);
  return sym ? SymInfo_Pos(sym) : NoPosition;
}

std::string prefix_of(tAsynt b) { return ExternalDeclaration_Prefix(b) ? ExternalDeclaration_Prefix(b) : ""; }

// The name of the foreign routine.
void output_routine(tAsynt b, tAsynt name) {
  cpoutput(prefix_of(b));
  cpoutput(CPoriginal_name(name));
  if (Is_Fortran(b)) cpoutput("_");
}

void CP_maybe_comma(tAsynt list) {
  if (is_direction(Parameterspec1_Parameterspecs(list))) cpoutput(",\n        ");
}

// The word of an OutParam's type; nothing for one that is missing.
void output_out_type(tAsynt sym) {
  if (sym) CPoutput_basetype_decl(SymInfo_Type(sym));
}

// ---- the declaration of the foreign routine

// Closes the comment of an argument with its foreign type and writes its C type.
void CP_Ftnc_Decl_Extern_Simplified(tAsynt sym, bool isinput) {
  if (!sym) {
    cpoutput("*/");
    return;
  }
  CP_foreign_type(language_of(currentBody), SymInfo_Type(sym), isinput);
  if (Asynt_Kind(sym) == kAbsoluteSymbol) CPoutput_symbol(sym);
}

void declare_argument(tAsynt name, bool isinput) {
  const tAsynt sym = CP_Ftnc_Get_Inp(name);
  if (!sym)
    error_msg("Bad parameter %s is mentioned in parameter specifiers but not in argument list.",
              message_name(name).c_str());
  CP_Ftnc_Decl_Extern_Simplified(sym, isinput);
}

// An array that is written only would come without a shape.
void CP_Ftnc_check_array(tAsynt sym, tAsynt name) {
  if (!sym || !Asynt_IsType(SymInfo_Type(sym), kArrayType)) return;
  error_msg_pos2(name_position(name), "Impossible  Output parameter %s of array type %s", message_name(name).c_str(),
                 " - replace Output by InOut array parameter");
}

void declare_output(tAsynt t, tAsynt name, size_t index, bool check) {
  const tAsynt sym = CP_Ftnc_Get_Idx_Out(t, index);
  if (check) CP_Ftnc_check_array(sym, name);
  CP_Ftnc_Decl_Extern_Simplified(sym, false);
  output_name(name);
}

// One formal argument; whether it belongs to an OutParam.
bool declare_direction(tAsynt t, tAsynt item, size_t index) {
  const tAsynt name = direction_name(item);
  switch (Asynt_Kind(item)) {
    case kInputParameter:
      cpoutput("/* Input  ");
      declare_argument(name, true);
      return false;
    case kInOutParameter:
      cpoutput("/* InOut   ");
      declare_argument(name, false);
      return true;
    case kOutputParameter:
      cpoutput("/* Output  ");
      declare_output(t, name, index, true);
      return true;
    case kOutputSizeParameter:
      cpoutput("/* Output-sized  ");
      declare_output(t, name, index, false);
      return true;
    default:
      cpoutput("/* Input-size ");
      CP_foreign_type(language_of(currentBody), int_type_node, true);
      cpoutput(" ");
      output_name(name);
      return false;
  }
}

void CP_Ftnc_Decl_Extern1(tAsynt t, tAsynt list, size_t idx_out) {
  for (; is_direction(list); list = Parameterspec1_Parameterspecs(list)) {
    if (declare_direction(t, Parameterspec1_Parameterspec(list), idx_out)) idx_out++;
    CP_maybe_comma(list);
  }
}

// Some compilers link Fortran names in upper case and without an underscore.
void define_routine_name(tAsynt b, tAsynt name) {
  const std::string routine = prefix_of(b) + CPoriginal_name(name);
  cpoutput("\n#ifdef _MSC_VER\n#define ");
  cpoutput(routine + "_ ");
  cpoutput(capitalize(routine.c_str()));
  cpoutput("\n#endif\n\n");
}

// What the foreign routine returns. The first OutParam is used up if it is the routine's value: the index of the next.
size_t declare_result(tAsynt t, tAsynt b, tAsynt name, tAsynt type) {
  const tAsynt directions = ExternalDeclaration_Parameters(b);
  if (Asynt_IsType(type, kNoType)) {
    if (!returns_function(b)) {
      cpoutput("void ");
      return 1;
    }
    output_out_type(CP_Ftnc_Get_Idx_Out(t, 1));
    return 2;
  }
  if (single_inout(directions) || single_output(directions)) {
    cpoutput("void ");
  } else if (Asynt_IsType(type, kArrayType) && Is_Fortran_Or_C(b)) {
    error_msg("The return type of external Fortran or C function %s cannot be array. %s", CPoriginal_name(name),
              "Make an external procedure with more than one InOut or Output parameter instead");
    cpoutput(" IMPOSSIBLE_ARRAY_TYPE ");
  } else {
    CPoutput_basetype_decl(type);
  }
  return 1;
}

}  // namespace

void CP_Ftnc_Decl_Extern(tAsynt t, tAsynt b, tAsynt name, tAsynt type) {
  list_params(t);
  cpoutput_indentation(0);
  if (Is_Fortran(b)) define_routine_name(b, name);
  if (!Is_CPP(b)) cpoutput("extern \"C\" { ");
  const size_t idx_out = declare_result(t, b, name, type);
  if (Is_Fortran(b)) cpoutput(" ZC_STDCALL ");
  output_routine(b, name);
  cpoutput("(\n        ");
  ExternalDeclaration_Parameters(b) = ReverseAsynt(ExternalDeclaration_Parameters(b));
  CP_Ftnc_Decl_Extern1(t, ExternalDeclaration_Parameters(b), idx_out);
  cpoutput(");\n");
  if (!Is_CPP(b)) cpoutput("}\n");
}

// ---- the parameters of the stub: types to the .h and the .icc, names to the .icc

namespace {

// The routine's own value comes ahead of the directions.
void output_out_name(tAsynt b, tAsynt sym) {
  const bool function = returns_function(b);
  const auto number = static_cast<long>(OutParam_Number(sym));
  if (function && number == 1) {
    cpoutput("__FUNCVAL__");
  } else if (const tAsynt name = CP_Ftnc_outparam(ExternalDeclaration_Parameters(b), function ? number - 1 : number)) {
    output_name(name);
  } else {
    return;
  }
  cpoutput("_OUT");
}

// Scalars of Fortran are passed by value, so that there is a copy whose address the routine can get.
void output_param_type(tAsynt b, tAsynt sym) {
  const tAsynt typ = SymInfo_Type(sym);
  const bool out = Asynt_Kind(sym) == kOutParam;
  const bool by_value = !out && Is_Fortran(b) && !Asynt_IsType(typ, kArrayType);
  cpstart_h_icc_output();
  if (!out && !by_value) cpoutput("const ");
  CPoutput_basetype_decl(typ);
  if (!by_value) cpoutput("&");
  cpend_h_icc_output();
}

void CP_Ftnc_make_param_decl(tAsynt param, tAsynt b, const char* comma) {
  const tAsynt sym = CPsymbol_info(param);
  if (!sym) {
    cpstart_h_icc_output();
    cpoutput("/*?*/");
    cpend_h_icc_output();
    return;
  }
  if (!CPhas_type(sym)) return;
  output_param_type(b, sym);
  if (Asynt_Kind(sym) == kOutParam) {
    output_out_name(b, sym);
    return;
  }
  CPoutput_symbol(sym);
  if (glob_genmode_flag) return;
  cpoutput_tm(comma);
  CPoutput_if_tm_pattern(SymInfo_Type(sym), CPoriginal_name(sym));
}

}  // namespace

void CP_Ftnc_make_param_decls(tAsynt t, tAsynt b, const char* comma, char ignorelast) {
  list_directions(ExternalDeclaration_Parameters(b));
  while (const tAsynt cell = CPparam_cell(t, ignorelast)) {
    cpoutput(comma);
    cpoutput("\n       ");
    cpoutput_h(comma);
    CP_Ftnc_make_param_decl(Expression1_Expression(cell), b, comma);
    comma = ", ";
    t = Expression1_Expressions(cell);
  }
}

// ---- the body of the stub

namespace {

void save_inout(tAsynt name) {
  output_name(name);
  cpoutput("_OUT=");
  output_name(name);
  cpoutput(";\n");
}

void set_shape(tAsynt item) {
  output_name(OutputSizeParameter_Name(item));
  cpoutput("_OUT.SetShape(");
  CPunparse_exprs(OutputSizeParameter_Sizes(item), ",");
  cpoutput(");\n");
}

void fetch_size(tAsynt item) {
  const tAsynt name = InputSizeParameter_Name(item);
  if (!CP_Ftnc_Get_Inp(name)) cpoutput(" int ");
  output_name(name);
  cpoutput("=");
  output_name(InputSizeParameter_ArrayName(item));
  cpoutput(".dimension(");
  CPunparseVal(InputSizeParameter_Size(item));
  cpoutput(")");
  cpoutput(";\n");
}

// What happens before the call: values are copied to where the routine changes them, arrays that it fills get their
// shape, sizes are taken from the arrays.
void CP_Ftnc_Save_InOuts(tAsynt list, tAsynt t) {
  size_t id = 1;
  for (; is_direction(list); list = Parameterspec1_Parameterspecs(list)) {
    const tAsynt item = Parameterspec1_Parameterspec(list);
    const Asynt_tKind kind = Asynt_Kind(item);
    if (kind == kInOutParameter || kind == kOutputSizeParameter || kind == kInputSizeParameter) cpoutput("\n       ");
    if (kind == kInOutParameter) save_inout(InOutParameter_Name(item));
    if (kind == kOutputSizeParameter && CP_Ftnc_Get_Idx_Out(t, id)) set_shape(item);
    if (kind == kInputSizeParameter) fetch_size(item);
    if (carries_out(item)) id++;
  }
}

// An argument of the call; nothing for a direction that belongs to none.
void pass(tAsynt name, tAsynt sym, const char* suffix, bool isinput) {
  if (!sym) return;
  CP_foreign_argument(language_of(currentBody), SymInfo_Type(sym), isinput, name, suffix);
}

// One actual argument; whether it belongs to an OutParam.
bool pass_direction(tAsynt t, tAsynt item, size_t index, const char* suffix) {
  const tAsynt name = direction_name(item);
  switch (Asynt_Kind(item)) {
    case kInputParameter:
      cpoutput("/* Input */  ");
      pass(name, CP_Ftnc_Get_Inp(name), "", true);
      return false;
    case kInOutParameter:
      cpoutput("/* InOut  */  ");
      pass(name, CP_Ftnc_Get_Inp(name), suffix, false);
      return true;
    case kInputSizeParameter:
      CP_foreign_argument(language_of(currentBody), int_type_node, true, name, "");
      return false;
    default:
      cpoutput("/* Output */  ");
      pass(name, CP_Ftnc_Get_Idx_Out(t, index), suffix, false);
      return true;
  }
}

void CP_Ftnc_Call_Extern1(tAsynt t, tAsynt list, size_t idx_out, bool returnflag) {
  for (; is_direction(list); list = Parameterspec1_Parameterspecs(list)) {
    if (pass_direction(t, Parameterspec1_Parameterspec(list), idx_out, returnflag ? "" : "_OUT")) idx_out++;
    CP_maybe_comma(list);
  }
}

void return_argument(tAsynt item) {
  cpoutput("      return ");
  output_name(direction_name(item));
  cpoutput(";\n");
}

}  // namespace

// A stub with a value gets it from the routine, or from the one argument that carries something out: an output has a
// variable of its own, an in-out argument is changed in place.
void CP_Ftnc_Generate_Body(tAsynt name, tAsynt params, tAsynt body, char returnflag) {
  const tAsynt directions = ExternalDeclaration_Parameters(body);
  const tAsynt inout = returnflag ? single_inout(directions) : nullptr;
  const tAsynt output = returnflag ? single_output(directions) : nullptr;
  const tAsynt local = returns_procedure(body) ? output : nullptr;
  cpoutput("\n       {");
  if (returns_function(body) || !inout) CP_Ftnc_Save_InOuts(directions, params);
  cpoutput("      ");
  if (local) {
    output_out_type(CP_Ftnc_Get_Idx_Out(params, 1));
    output_name(direction_name(local));
    cpoutput(";\n      ");
  }
  if (returnflag && !inout && !output) cpoutput("  return ");
  const bool function_value = !returnflag && returns_function(body);
  if (function_value) cpoutput(" __FUNCVAL___OUT=");
  output_routine(body, name);
  cpoutput(" (\n         ");
  CP_Ftnc_Call_Extern1(params, directions, function_value ? 2 : 1, returnflag);
  cpoutput(");\n");
  if (inout) return_argument(inout);
  if (local) return_argument(local);
  cpoutput("}\n");
}

// ---- all together

void CPunparse_stub(tAsynt name, tAsynt params, tAsynt body, tAsynt type) {
  const bool value = !Asynt_IsType(type, kNoType);
  cpstart_icc_output();
  cpoutput(value ? "/* BRANCH 2 */\n" : "/* BRANCH 1 */\n");
  CP_Ftnc_Decl_Extern(params, body, name, type);
  cpoutput_indentation(0);
  cpoutput(value ? " inline " : "inline ");
  cpstart_h_icc_output();
  if (value)
    CPoutput_basetype_decl(type);
  else
    cpoutput("void ");
  CPoutput_symbol(name);
  cpoutput(" (");
  cpend_h_icc_output();
  CP_Ftnc_make_param_decls(params, body, " ", value);
  cpoutput(")");
  cpoutput_h(");\n\n");
  cpoutput_indentation(0);
  CP_Ftnc_Generate_Body(name, params, body, value);
  cpend_icc_output();
}

}  // namespace oz
