// One function of the model as C++ text. For real f[real x_, int n_]:
//
//   .cc      double f ( const double &x, const int &n)      and the body
//   .h       double f ( const double &, const int &);
//   .tm      a template entry: the pattern f[ x_Real, n_Integer] by which the host finds it
//   if.cc    void AL_f(): fetches x and n from the link, calls f, sends the value back
//
// A function without a value hands its results out through OutParams, which are reference parameters; its wrapper
// declares a variable for each and sends them back as a list. An external function has a bare prototype, or a stub in
// the .icc. One of the language "Alg" is a callback: its definition stands in if.cc and asks the host.

#include "pompunp_fn.h"

#include <string>

#include "al_cmds.h"
#include "codegen.h"
#include "ememory.h"
#include "ozerrors.h"
#include "pompout.h"
#include "sheepunp.h"
#include "type.h"
#include "unparse.h"

namespace oz {

bool CPhas_type(tAsynt sym) {
  const tAsynt typ = SymInfo_Type(sym);
  return !Asynt_IsType(typ, kNoType) && !Asynt_IsType(typ, kPreDef);
}

tAsynt CPparam_cell(tAsynt list, bool ignorelast) {
  if (Asynt_Kind(list) != kExpression1) return nullptr;
  return ignorelast && Asynt_Kind(Expression1_Expressions(list)) != kExpression1 ? nullptr : list;
}

namespace {

// ---- small pieces

void if_output_type(tAsynt sym) {
  cpstart_if_output();
  CPoutput_basetype_decl(SymInfo_Type(sym));
  cpend_if_output();
}

void if_output_symbol(tAsynt sym) {
  cpstart_if_output();
  CPoutput_symbol(sym);
  cpend_if_output();
}

void tm_and_if(const char* s) {
  cpoutput_tm(s);
  cpoutput_if(s);
}

// ---- patterns of the .tm

std::string array_fetch(const std::string& base, int rank) {
  return "     get_lumen" + std::string(static_cast<size_t>(rank), 'N') + base + "(";
}

// A test of the host that the shape and the elements are what the function takes.
std::string array_pattern(const std::string& name, int rank, bool integers) {
  if (rank == 1) return name + "_List/;VectorQ[" + name + ",NumberQ]";
  if (rank == 2) return name + "_List/;MatrixQ[" + name + ",NumberQ]";
  const std::string test = integers ? "Function[Head[#1]==Integer]" : "NumberQ";
  return name + "_/;VectorQ[Flatten[" + name + "]," + test + "]&&(Length[Dimensions[" + name +
         "]]==" + std::to_string(rank) + ")";
}

struct Argument_text {
  std::string pattern, fetch;
  int level = 0;  // of the array library
};

Argument_text array_text(tAsynt typ, const std::string& name) {
  const tAsynt base = ArrayType_BasicType(typ);
  const int rank = CPgetDepth(ArrayType_Dimensions(typ));
  if (Asynt_IsType(base, kStringType) && rank == 1)
    return {name + "_List/;VectorQ[" + name + ",StringQ]", "     get_Nstring("};
  if (rank < 1 || rank > 4) return {};
  if (Asynt_IsType(base, kRealType)) return {array_pattern(name, rank, false), array_fetch("double", rank), rank};
  if (Asynt_IsType(base, kComplexType)) return {array_pattern(name, rank, false), array_fetch("complex", rank), rank};
  if (!Asynt_IsType(base, kIntType) && !Asynt_IsType(base, kBoolType)) return {};
  const std::string fetch = array_fetch("int", rank);  // that of rank 4 stands one column further left
  return {array_pattern(name, rank, true), rank == 4 ? fetch.substr(1) : fetch, rank};
}

Argument_text argument_text(tAsynt typ, const std::string& name) {
  if (Asynt_IsType(typ, kArrayType)) return array_text(typ, name);
  if (Asynt_IsType(typ, kIntType) || Asynt_IsType(typ, kBoolType)) return {name + "_Integer", "     get_int("};
  if (Asynt_IsType(typ, kStringType)) return {name + "_String", "     get_string("};
  if (Asynt_IsType(typ, kRealType)) return {name + "_Real", "     get_double("};
  if (Asynt_IsType(typ, kComplexType)) return {name + "_Complex", "     get_complex("};
  return {};
}

}  // namespace

void CPoutput_if_tm_pattern(tAsynt typ, const char* name) {
  const Argument_text text = argument_text(typ, name);
  if (text.fetch.empty()) die_msg("Not implemented yet a algelink option for formal parameters of this type:\n");
  if (text.level) cp_lmlev(text.level);
  cpoutput_tm(text.pattern.c_str());
  cpoutput_if((text.fetch + name + ");\n").c_str());
}

// ---- declarations

namespace {

void declare_variable(tAsynt sym) {
  CPoutput_basetype_decl(SymInfo_Type(sym));
  CPoutput_symbol(sym);
  CPoutput_array_dims(SymInfo_Type(sym));
  cpoutput(";\n");
}

// The name under which all members of an indexed set share one array: x of a set's x[i].
tAsynt without_set_indices(tAsynt sym) {
  if (Asynt_Kind(sym) != kAbsoluteNest || Asynt_Kind(SymInfo_Type(sym)) != kArrayType_s) return sym;
  return WithoutDynIndices(sym);
}

// The type word and the name to the .cc and the .h, the size to the .cc alone.
void declare_global(tAsynt sym, const char* in_cc, const char* end_in_cc) {
  cpoutput(in_cc);
  cpoutput_h("extern ");
  cpstart_h_output();
  CPoutput_basetype_decl(SymInfo_Type(sym));
  CPoutput_symbol(without_set_indices(sym));
  cpend_h_output();
  CPoutput_array_dims(SymInfo_Type(sym));
  cpoutput(end_in_cc);
  cpoutput_h(";\n");
}

bool defines_external_variable(tAsynt t) {
  if (Asynt_Kind(t) != kXSetDelayed || !Asynt_IsType(Binary_LHS(t), kSymbol)) return false;
  const tAsynt rhs = Binary_RHS(t);
  return Asynt_Kind(rhs) == kExternalDeclaration &&
         Asynt_Kind(ExternalDeclaration_Returns(rhs)) == kExternalVariableReturns;
}

// What is local to a body goes in front of it; the body proper.
tAsynt CPmake_local_decls(tAsynt t) {
  if (Asynt_Kind(t) == kXModule && evaluate_function_flag) {
    cpmake_var_decls(XModule_Varlist(t));
    return XModule_Body(t);
  }
  if (Asynt_Kind(t) == kXModule) {
    CPoutput_var_decls_and_inits(XModule_Varlist(t), XModule_Initializers(t));
    return XModule_Body(t);
  }
  if (Asynt_Kind(t) != kXBlock) return t;
  CPoutput_var_decls_and_inits(XBlock_Varlist(t), XBlock_Initializers(t));
  return XBlock_Body(t);
}

}  // namespace

char CPmake_var_decl(tAsynt* t) {
  if (!Asynt_IsType(*t, kSymInfo)) return 1;
  if (CPhas_type(*t)) declare_variable(*t);
  return 0;
}

// An external variable lives elsewhere: its definition is a comment.
void CPmake_global_var_decl(tAsynt t) {
  if (Asynt_IsType(t, kSymInfo))
    declare_global(t, "", ";\n");
  else if (defines_external_variable(t))
    declare_global(Symbol_SymInfo(Binary_LHS(t)), "/* EXTERNAL only ", "; */\n");
}

// ---- parameters

namespace {

// The pieces before the name go to the .cc and the .h, the name to the .cc alone: prototypes name no parameters.
void CPmake_param_decl(tAsynt param, const char* comma, bool cpp_external) {
  const tAsynt sym = CPsymbol_info(param);
  if (!sym || !CPhas_type(sym)) return;
  const tAsynt typ = SymInfo_Type(sym);
  const bool out = Asynt_Kind(sym) == kOutParam;
  if (!out) cpoutput(cpp_external && Asynt_IsType(typ, kArrayType) ? "     " : "const ");
  CPoutput_basetype_decl(typ);
  cpoutput("&");
  cpend_h_output();
  CPoutput_symbol(sym);
  cpstart_h_output();
  if (out || glob_genmode_flag) return;
  cpoutput_tm(comma);
  CPoutput_if_tm_pattern(typ, CPoriginal_name(sym));
}

}  // namespace

void CPmake_param_decls(tAsynt t, const char* comma, char ignorelast, char cpp_external) {
  cpstart_h_output();
  while (const tAsynt cell = CPparam_cell(t, ignorelast)) {
    cpoutput(comma);
    CPmake_param_decl(Expression1_Expression(cell), comma, cpp_external);
    comma = ", ";
    t = Expression1_Expressions(cell);
  }
  cpend_h_output();
}

namespace {

void CPmake_param_decl_for_end_of_tm_and_if(tAsynt param, const char* comma) {
  const tAsynt sym = CPsymbol_info(param);
  switch (Asynt_Kind(sym)) {
    case kAbsoluteSymbol:
      tm_and_if(comma);
      tm_and_if(NamedSymbol_Name(sym));
      return;
    case kOutParam:
      cpoutput_if(comma);
      if_output_symbol(sym);
      return;
    default:
      WriteAsynt(stderr, param);
      die_msg("Unexpected kind of  symbol during CPmake_param_decl_for_end_of_tm_and_if  ");
  }
}

}  // namespace

// The host hands over what goes in; the call has what comes out as well.
void CPmake_param_decls_for_end_of_tm_and_if(tAsynt t, const char* comma, char ignorelast) {
  while (const tAsynt cell = CPparam_cell(t, ignorelast)) {
    CPmake_param_decl_for_end_of_tm_and_if(Expression1_Expression(cell), comma);
    comma = ",";
    t = Expression1_Expressions(cell);
  }
}

namespace {

// Runs over the out-parameters; their number.
template <typename Step>
int each_outparam(tAsynt t, Step step) {
  int count = 0;
  for (; Asynt_Kind(t) == kExpression1; t = Expression1_Expressions(t)) {
    const tAsynt sym = CPsymbol_info(Expression1_Expression(t));
    if (Asynt_Kind(sym) != kOutParam) continue;
    step(sym);
    count++;
  }
  return count;
}

}  // namespace

int CPdeclare_outparam(tAsynt t) {
  return each_outparam(t, [](tAsynt sym) {
    cpoutput_if("     ");
    if_output_type(sym);
    cpoutput_if(" ");
    if_output_symbol(sym);
    cpoutput_if(";\n");
  });
}

void CPpass_lmif(tAsynt t) {
  each_outparam(t, [](tAsynt sym) {
    cpoutput_if("     lmif_return(");
    if_output_symbol(sym);
    cpoutput_if(");\n");
  });
}

// ---- callbacks: the definition in if.cc, behind the signature

namespace {

void CPmake_lmif_return1(tAsynt param) {
  const tAsynt sym = CPsymbol_info(param);
  const Asynt_tKind kind = Asynt_Kind(sym);
  if (kind != kAbsoluteSymbol && kind != kOutParam) return;
  cpoutput_if(kind == kOutParam ? "\n  /* ?? " : "\n   lmif_return(");
  if_output_symbol(sym);
  cpoutput_if(kind == kOutParam ? " */ " : ");");
}

int counted_length(tAsynt t, bool ignorelast) {
  int count = 0;
  for (; (t = CPparam_cell(t, ignorelast)); t = Expression1_Expressions(t)) count++;
  return count;
}

// The name of the callback at the host lacks its ending.
void start_callback(tAsynt params, tAsynt name, bool ignorelast) {
  const char* orig = CPoriginal_name(name);
  const char* host_name = cpRemoveAlg(orig);
  cpoutput_if("\n{\n   AL_IF_start(\"");
  cpoutput_if(host_name);
  cpoutput_if(("\"," + std::to_string(counted_length(params, ignorelast)) + ");\n").c_str());
  if (host_name != orig) efree(const_cast<char*>(host_name));
  for (tAsynt t = params; (t = CPparam_cell(t, ignorelast)); t = Expression1_Expressions(t))
    CPmake_lmif_return1(Expression1_Expression(t));
}

}  // namespace

void CPmake_param_decls_for_Alg(tAsynt params, tAsynt /*body*/, tAsynt name) {
  start_callback(params, name, false);
  cpoutput_if("\n   AL_IF_wait();cb_get();return;\n}\n\n");
}

// The semicolon at the head of the second line is part of the text.
void CPmake_param_decls_for_Alg_RetVal(tAsynt params, tAsynt /*body*/, tAsynt name, tAsynt type) {
  start_callback(params, name, true);
  cpoutput_if("\n   AL_IF_wait();\n   ");
  cpstart_if_output();
  CPoutput_basetype_decl(type);
  cpend_if_output();
  cpoutput_if(" CB__ret\n;   cb_get(CB__ret);\n  return CB__ret;\n}\n\n");
}

// ---- bodies

namespace {

// An external function has none: the prototype ends here.
bool external_body(tAsynt body) {
  const Asynt_tKind kind = Asynt_Kind(body);
  if (kind != kExternBody && kind != kExternalDeclaration) return false;
  cpoutput(";  /* EXTERNAL  ");
  if (kind == kExternBody && ExternBody_Language(body)) cpoutput(ExternBody_Language(body));
  cpoutput(" */\n\n");
  return true;
}

void begin_block() {
  cpoutput("{\n");
  cp_modify_indent(1);
}

void end_block() {
  cp_modify_indent(-1);
  cpoutput_indentation(0);
  cpoutput("}\n\n");
}

// Writes a list but for its last element, which is the result.
tAsynt all_but_last_of(tAsynt list) {
  if (Asynt_Kind(list) != kExpression1) die_msg("Malformed function body.");
  for (;;) {
    const tAsynt rest = Expression1_Expressions(list);
    if (Asynt_Kind(rest) != kExpression1) return Expression1_Expression(list);
    CPunparseStmt(Expression1_Expression(list));
    cpoutput_semicolon();
    cpoutput("\n");
    list = rest;
  }
}

// Writes what comes before the last statement of a body, with the variables of the modules that it enters; that
// statement.
tAsynt CPunparse_all_but_last(tAsynt t) {
  for (;;) {
    const Asynt_tKind kind = Asynt_Kind(t);
    if (kind == kXModule || kind == kXBlock)
      t = CPmake_local_decls(t);
    else if (kind == kXCompoundExpression)
      t = all_but_last_of(Variadic_Expressions(t));
    else
      return t;
  }
}

std::string text_of(tAsynt t) { return unparse_string(t); }

void check_returned_type(tAsynt set) {
  const tAsynt place = Find_type(&Binary_LHS(set));
  const tAsynt value = Find_type(&Binary_RHS(set));
  if (Check_equal_base(place, value)) return;
  error_msg("Type of returned expression (%s) must match exactly the return type of the function.",
            text_of(Binary_RHS(set)).c_str());
  error_msg("... Expression of type %s", text_of(value).c_str());
  error_msg("... Function of type %s", text_of(place).c_str());
}

// The last statement assigns the value.
void CP_Generate_Body_WithReturnedValue(tAsynt body) {
  if (external_body(body)) return;
  begin_block();
  const tAsynt last = CPunparse_all_but_last(CPmake_local_decls(body));
  if (Asynt_Kind(last) != kXSet) die_msg("Malformed function body.");
  cpoutput_indentation(0);
  Begin_type_memory();
  check_returned_type(last);
  cpoutput("return ");
  CPunparseVal(Binary_RHS(last));
  End_type_memory();
  cpoutput(";\n");
  end_block();
}

void CP_Generate_Body_WithNoReturnedValue(tAsynt body) {
  if (external_body(body)) return;
  begin_block();
  CPunparseStmt(CPmake_local_decls(body));
  cpoutput("; \n");
  end_block();
}

// ---- functions

// The function being written, and the number of its out-parameters.
struct {
  tAsynt name;
  int results;
} current;

// The type of a function's value, or null if it has none. Several values have become out-parameters by now.
tAsynt returned_type(tAsynt name) {
  const tAsynt typ = SymInfo_Type(name);
  if (!Asynt_IsType(typ, kMultiType)) return typ;
  const tAsynt types = MultiType_Types(typ);
  if (Asynt_Kind(types) != kType1) return nullptr;
  if (Asynt_Kind(Type1_Types(types)) == kType1)
    die_msg_pos2(SymInfo_Pos(name),
                 "CPunparse_fn recieved function with multiple return values. Use a separate statement.");
  return Type1_Type(types);
}

}  // namespace

void CPoutput_tm_beginning(tAsynt name) {
  const std::string orig = CPoriginal_name(name);
  cpoutput_tm(("\n:Evaluate: BeginPackage[\"" + CPfunction_context(name) + "`\"]\n").c_str());
  cpoutput_tm((":Evaluate: " + orig + ";\n").c_str());
  cpoutput_tm(":Evaluate: Begin[\"`Private`\"];\n:Begin:\n");
  cpoutput_tm((":Function:     AL_" + orig + "\n:Pattern:      " + orig + "[").c_str());
  cpoutput_if(("\n\nextern \"C\" void AL_" + orig + "();\n\nvoid AL_" + orig + "()\n{\n").c_str());
}

namespace {

void begin_callback(tAsynt name, bool value) {
  cpstart_if_output_too();
  if (glob_genmode_flag) return;
  constexpr const char* kMessage = "Callback function cannot be called via template. Disable template!";
  if (value) die_msg("%s", kMessage);
  die_msg_pos2(SymInfo_Pos(name), "%s", kMessage);
}

// "double f ( const double &x)" and a line end; the same without names, and a semicolon, to the .h.
void output_signature(tAsynt name, tAsynt params, tAsynt body, tAsynt type) {
  cpstart_h_output();
  cpoutput_indentation(0);
  if (type)
    CPoutput_basetype_decl(type);
  else
    cpoutput("void ");
  CPoutput_symbol(name);
  cpoutput(" (");
  CPmake_param_decls(params, " ", type != nullptr, Is_CPP_NOCONST_External(body));
  cpoutput(")\n");
  cpend_if_output_too();
  cpoutput_h(");\n\n");
}

void output_function(tAsynt name, tAsynt params, tAsynt body, tAsynt type) {
  const bool callback = Is_Alg(body);
  if (callback) begin_callback(name, type != nullptr);
  output_signature(name, params, body, type);
  cpoutput_indentation(0);
  if (type)
    CP_Generate_Body_WithReturnedValue(body);
  else
    CP_Generate_Body_WithNoReturnedValue(body);
  if (callback && type)
    CPmake_param_decls_for_Alg_RetVal(params, body, name, type);
  else if (callback)
    CPmake_param_decls_for_Alg(params, body, name);
}

// The call in if.cc up to its last argument, and the arguments in the .tm.
void wrapped_call(const char* before, tAsynt name, tAsynt params, bool ignorelast) {
  cpoutput_if(before);
  if_output_symbol(name);
  cpoutput_if("(");
  cpoutput_tm("]\n:Arguments:    {");
  CPmake_param_decls_for_end_of_tm_and_if(params, " ", ignorelast);
}

void output_void_wrapper(tAsynt name, tAsynt params) {
  const int results = CPdeclare_outparam(params);
  wrapped_call("     ", name, params, false);
  cpoutput_if(");\n");
  if (results == 0) {
    cpoutput_if("     lmif_return();\n");
  } else {
    cpoutput_if(("     ALPutFunction(stdlink,\"List\"," + std::to_string(results) + ");\n").c_str());
    CPpass_lmif(params);
  }
  cpoutput_if("}\n");
}

void output_value_wrapper(tAsynt name, tAsynt params) {
  wrapped_call("     lmif_return(", name, params, true);
  cpoutput_if("));\n}\n");
}

void output_tm_end() {
  cpoutput_tm("}\n:ArgumentTypes:{Manual}\n");
  cpoutput_tm(":ReturnType:   Manual\n");
  cpoutput_tm(":End:\n");
  cpoutput_tm(":Evaluate: End[]\n");
  cpoutput_tm(":Evaluate: EndPackage[]\n");
}

}  // namespace

int CPown_results(tAsynt sym) { return sym == current.name ? current.results : 0; }

void CPunparse_fn(tAsynt name, tAsynt params, tAsynt body) {
  currentBody = body;
  current = {name, each_outparam(params, [](tAsynt) {})};
  const tAsynt type = returned_type(name);
  if (!glob_genmode_flag) CPoutput_tm_beginning(name);
  if (Is_stub_generated(body))
    CPunparse_stub(name, params, body, type ? type : mNoType());
  else
    output_function(name, params, body, type);
  current = {};
  if (glob_genmode_flag) return;
  if (type)
    output_value_wrapper(name, params);
  else
    output_void_wrapper(name, params);
  output_tm_end();
}

}  // namespace oz
