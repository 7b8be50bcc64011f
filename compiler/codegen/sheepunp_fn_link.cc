// The two texts that connect a Fortran function with the host: the block of the link template
//
//   :Begin:
//   :Function:     al_f_
//   :Pattern:      f[ x_Real,n_Integer]
//   ...
//
// and the wrapper "subroutine al_f()", which fetches the arguments, calls the function and sends the result.
#include <cstring>

#include "ozerrors.h"
#include "sheepout.h"
#include "sheepunp.h"
#include "sheepunp_parts.h"
#include "type.h"

namespace oz {

// ---- the link template

namespace {

const char* delimeter;  // what goes before the next pattern

// The test behind "x_" for an array; # stands for the name.
const struct {
  bool numbers;   // real or complex; integers and booleans are numbers too up to rank 2
  bool integers;  // integer or boolean
  int rank;
  const char* pattern;
} kArrayPatterns[] = {
    {true, true, 1, "#_List/;VectorQ[#,NumberQ]"},
    {true, true, 2, "#_List/;MatrixQ[#,NumberQ]"},
    {true, false, 3, "#_/;VectorQ[Flatten[#],NumberQ]&&(Length[Dimensions[#]]==3)"},
    {true, false, 4, "#_/;VectorQ[Flatten[#],NumberQ]&&(Length[Dimensions[#]]==4)"},
    {false, true, 3, "#_/;VectorQ[Flatten[#],Function[Head[~1]==Integer]]&&(Length[Dimensions[#]]==3)"},
    {false, true, 4, "#_/;VectorQ[Flatten[#],Function[Head[~1]==Integer]]&&(Length[Dimensions[#]]==4)"},
};

const char* array_pattern(tAsynt typ) {
  const tAsynt base = Find_base(typ);
  const int rank = CPgetDepth(ArrayType_Dimensions(typ));
  if (Asynt_IsType(base, kStringType)) return rank == 1 ? "#_List/;VectorQ[#,StringQ]" : nullptr;
  const bool integers = Asynt_IsType(base, kIntType) || Asynt_IsType(base, kBoolType);
  const bool numbers = Asynt_IsType(base, kRealType) || Asynt_IsType(base, kComplexType);
  for (const auto& row : kArrayPatterns)
    if (rank == row.rank && ((integers && row.integers) || (numbers && row.numbers))) return row.pattern;
  return nullptr;
}

const char* pattern_of(tAsynt typ) {
  if (Is_array_type(typ)) return array_pattern(typ);
  if (Asynt_IsType(typ, kIntType) || Asynt_IsType(typ, kBoolType)) return "#_Integer";
  if (Asynt_IsType(typ, kStringType)) return "#_String";
  if (Asynt_IsType(typ, kRealType)) return "#_Real";
  if (Asynt_IsType(typ, kComplexType)) return "#_/;NumberQ[#]";
  return nullptr;
}

std::string plain_name(tAsynt sym) { return Asynt_IsType(sym, kNamedSymbol) ? NamedSymbol_Name(sym) : ""; }

void Foutput_tm_param_pattern(tAsynt typ, tAsynt sym) {
  const char* pattern = pattern_of(typ);
  if (!pattern)
    die_msg("F90 unparser: Not yet implemented a AlgeLink option for formal parameters of type %s.\n",
            plain_name(sym).c_str());
  for (const char* start = pattern; *start;) {
    const size_t length = std::strcspn(start, "#~");
    foutput(std::string(start, length));
    start += length;
    if (*start == '#') Foutput_symbol_name(sym, false);
    if (*start == '~') foutput("#");
    if (*start) start++;
  }
}

char Foutput_tm_param(tAsynt* t) {
  if (!Asynt_IsType(*t, kSymInfo)) return !Asynt_IsType(*t, kAlgAuxiliary);
  const tAsynt typ = SymInfo_Type(*t);
  if (Asynt_IsType(typ, kNoType) || Asynt_IsType(typ, kPreDef) || Asynt_IsType(*t, kOutParam)) return 0;
  foutput(delimeter);
  delimeter = ",";
  Foutput_tm_param_pattern(typ, *t);
  return 0;
}

void evaluate(const std::string& text) { foutput(":Evaluate: " + text + "\n"); }

}  // namespace

void Foutput_tm(tAsynt name, tAsynt params) {
  fout_set(fout_template);
  const std::string orig = GetOriginalName(name);
  Function f = Split_function(name, params);
  foutput("\n#ifdef TMLOWERCASE\n");
  foutput("#define AL_" + ToUpper(orig.c_str()) + " al_" + ToLower(orig.c_str()) + "\n#endif\n\n");
  evaluate("BeginPackage[\"" + GetFunctionPrefixContext(name) + "`\"]");
  evaluate(orig + ";");
  evaluate("Begin[\"`Private`\"];");
  foutput(":Begin:\n:Function:     ");
  foutput_tm_name(orig.c_str());
  foutput("\n:Pattern:      " + orig + "[");
  delimeter = " ";
  TraverseAsyntTD2(&f.args, Foutput_tm_param);
  foutput("]\n:Arguments:    {");
  Funparse_exprs(f.args, ", ");
  foutput("}\n:ArgumentTypes:{Manual}\n:ReturnType:   Manual\n:End:\n");
  evaluate("End[]");
  evaluate("EndPackage[]");
  Merge_function(&f);
}

// ---- the wrapper

namespace {

// A symbol that is a variable of the wrapper, the type of one.
bool is_input(tAsynt t) { return Asynt_IsType(t, kSymbol) && Asynt_IsType(Symbol_SymInfo(t), kAbsoluteSymbol); }
bool is_output(tAsynt t) { return Asynt_IsType(t, kSymbol) && Asynt_IsType(Symbol_SymInfo(t), kOutParam); }
tAsynt type_of(tAsynt symbol) { return SymInfo_Type(Symbol_SymInfo(symbol)); }

// What a visitor answers: symbols are not entered.
char above_symbols(tAsynt t) { return !Asynt_IsType(t, kSymbol) && !Asynt_IsType(t, kAlgAuxiliary); }

// "call getdouble(x)".
void link_call(const char* routine, tAsynt symbol) {
  foutput_indentation(0);
  foutput("call ");
  foutput(routine);
  foutput("(");
  Foutput_name(Symbol_SymInfo(symbol));
}

// A text is fetched with its length.
char Foutput_if_get(tAsynt* t) {
  if (!is_input(*t)) return above_symbols(*t);
  link_call(if_func_get[Type_code(type_of(*t))], *t);
  if (Asynt_IsType(type_of(*t), kStringType)) {
    foutput(",");
    Foutput_name_with("", Symbol_SymInfo(*t), "___i");
  }
  foutput(")\n");
  return 0;
}

// Inputs come allocated from the link, and results of unknown size from the function.
char Foutput_if_allocate(tAsynt* t) {
  if (!is_output(*t) || !Is_array_type(type_of(*t)) || array_has_unknown_dims(type_of(*t))) return above_symbols(*t);
  foutput_indentation(0);
  foutput("allocate(");
  Foutput_name(Symbol_SymInfo(*t));
  Foutput_array_dims(type_of(*t));
  foutput(")\n");
  return 0;
}

char Foutput_if_deallocate(tAsynt* t) {
  if ((!is_input(*t) && !is_output(*t)) || !Is_array_type(type_of(*t))) return above_symbols(*t);
  foutput_indentation(0);
  foutput("deallocate(");
  Foutput_name(Symbol_SymInfo(*t));
  foutput(")\n");
  return 0;
}

char Foutput_if_put(tAsynt* t) {
  if (!is_output(*t)) return above_symbols(*t);
  link_call(if_func_put[Type_code(type_of(*t))], *t);
  foutput(")\n");
  return 0;
}

void walk(tAsynt list, char (*visitor)(tAsynt*)) { TraverseAsyntTD2(&list, visitor); }

// The out-parameters in a list of expressions or symbols.
int CountOutParams(tAsynt list) {
  int n = 0;
  for (; Is_cell(list); list = Expression1_Expressions(list)) n += is_output(Expression1_Expression(list));
  for (; Asynt_IsType(list, kSymbol1); list = Symbol1_Symbols(list)) n += is_output(Symbol1_Symbol(list));
  return n;
}

// The name and the arguments of the function.
void invoke(const Function& f) {
  Foutput_name(f.name);
  foutput("(");
  Funparse_exprs(f.args, ", ");
  foutput(")\n");
}

void wrap_subroutine(const Function& f) {
  const int outputs = CountOutParams(f.args);
  walk(f.args, Foutput_if_get);
  walk(f.args, Foutput_if_allocate);
  foutput_indentation(0);
  foutput("call ");
  invoke(f);
  foutput_indentation(0);
  if (outputs > 0) {
    foutput("call ALIF_LIST(");
    foutput_int(outputs);
    foutput(")\n");
    walk(f.args, Foutput_if_put);
  } else {
    foutput("call putnull()\n");
  }
  walk(f.args, Foutput_if_deallocate);
}

// The function makes the storage of a result of unknown size.
void wrap_function(const Function& f) {
  walk(f.args, Foutput_if_get);
  walk(f.ret, Foutput_if_allocate);
  foutput_indentation(0);
  FunparseVal(f.ret);
  foutput(array_has_unknown_dims(type_of(f.ret)) ? " => " : " = ");
  invoke(f);
  walk(f.ret, Foutput_if_put);
  walk(f.args, Foutput_if_deallocate);
  walk(f.ret, Foutput_if_deallocate);
}

void Foutput_if_end(tAsynt name, tAsynt params) {
  Function f = Split_function(name, params);
  if (f.subr)
    wrap_subroutine(f);
  else
    wrap_function(f);
  Merge_function(&f);
  foutput("\n");
  f_modify_indent(-1);
  foutput_indentation(0);
  foutput("end subroutine ");
  foutput_if_name(GetOriginalName(name));
  foutput("\n\n");
}

}  // namespace

void Foutput_if(tAsynt name, tAsynt params) {
  fout_set(fout_interface);
  foutput_indentation(0);
  foutput("subroutine ");
  foutput_if_name(GetOriginalName(name));
  foutput("()\n\n");
  f_modify_indent(1);
  Foutput_use("ZentricaPrecision");
  Foutput_use("AlgeLinkInterface");
  Foutput_use("zc_" + GetFunctionPrefixContext(name));
  foutput_indentation(0);
  foutput("implicit none\n");
  walk(params, Foutput_if_param_decl);
  Foutput_if_end(name, params);
}

}  // namespace oz
