// Statements as C++ text: control flow, local declarations, output and files. Assignments are in pompunp_stmt_set.cc.
//
// What can only stand alone is written by CPunparseStmt. What C++ also takes between commas is a small statement: it
// writes no semicolon of its own, so that x = 1 serves in "x = 1;" and in " ( x = 1,f (x) ) ".

#include "pompunp_stmt.h"

#include <vector>

#include "ozerrors.h"
#include "pompunp_fn.h"

namespace oz {
namespace {

// ---- blocks

// Whether a statement ends in a call, which has no semicolon of its own.
bool ends_in_call(tAsynt t) {
  for (;;) {
    switch (Asynt_Kind(t)) {
      case kXModule: t = XModule_Body(t); break;
      case kXBlock: t = XBlock_Body(t); break;
      default: return Asynt_IsType(t, kFullFormExpression);
    }
  }
}

// A statement that no sequence ends.
void write_single(tAsynt t) {
  CPunparseStmt(t);
  if (ends_in_call(t)) cpoutput_semicolon();
}

void write_indented(const char* s, int level = 0) {
  cpoutput_indentation(level);
  cpoutput(s);
}

// keyword test) and an open brace, one level deeper from there.
void open_block(const char* keyword, tAsynt test) {
  write_indented(keyword);
  CPwrite_call("", test, ")\n");
  write_indented("{\n");
  cp_modify_indent(1);
}

void close_block(const char* brace) {
  cp_modify_indent(-1);
  write_indented(brace);
}

// ---- loops

bool write_while(tAsynt t) {
  open_block("while (", XWhile_Test(t));
  write_single(XWhile_Body(t));
  cpoutput("\n");
  close_block("}");
  return true;
}

bool write_for(tAsynt t) {
  cpoutput_indentation(0);
  write_single(XFor_Start(t));
  cpoutput("\n");
  open_block("while (", XFor_Test(t));
  write_single(XFor_Body(t));
  cpoutput("\n");
  cpoutput_indentation(0);
  write_single(XFor_Incr(t));
  cpoutput("\n");
  close_block("}");
  return true;
}

void write_iterator_variable(tAsynt variable) {
  Find_type(&variable);  // an element such as i[1] becomes a symbol
  if (const tAsynt symbol = CPsymbol_info(variable))
    CPoutput_symbol(symbol);
  else
    CPunparseVal(variable);
}

// Upward in steps of 1.
bool write_do(tAsynt t) {
  const tAsynt iterator = Asynt_Kind(Do_Iter(t)) == kIterator1 ? Iterator1_Iterator(Do_Iter(t)) : Do_Iter(t);
  const tAsynt variable = Iterator_Variable(iterator);
  write_indented("for( ");
  write_iterator_variable(variable);
  CPwrite_call(" = ", Iterator_Min(iterator), "; ");
  write_iterator_variable(variable);
  CPwrite_call(" <= ", Iterator_Max(iterator), "; ");
  write_iterator_variable(variable);
  cpoutput("++)\n");
  write_indented("{");
  cp_modify_indent(1);
  write_single(Do_Expr(t));
  cp_modify_indent(-1);
  cpoutput("\n");
  write_indented("}");
  return true;
}

// ---- branches

void write_else(tAsynt f) {
  write_indented("}\n", -1);
  write_indented("else\n", -1);
  write_indented("{\n", -1);
  cpoutput_indentation(0);
  write_single(f);
  cpoutput("\n");
  close_block("}");
}

// Else branches that are an If each make a chain.
bool write_if(tAsynt t) {
  const bool chain = Asynt_Kind(XIf_F(t)) == kXIf;
  const bool alone = Asynt_Kind(XIf_F(t)) == kEmpty;
  open_block("if (", XIf_Condition(t));
  for (;; t = XIf_F(t)) {
    if (chain || !alone) cpoutput_indentation(0);
    write_single(XIf_T(t));
    cpoutput("\n");
    if (Asynt_Kind(XIf_F(t)) != kXIf) break;
    close_block("}\n");
    open_block("else if (", XIf_Condition(XIf_F(t)));
  }
  if (Asynt_Kind(XIf_F(t)) == kEmpty)
    close_block("}");
  else
    write_else(XIf_F(t));
  return true;
}

bool write_which(tAsynt tests) {
  for (const char* keyword = "if ("; CPis_cell(tests); tests = CPtail(CPtail(tests)), keyword = "else if (") {
    if (!CPis_cell(CPtail(tests))) die_msg("Bad arguments to Which[bool,stmt,...],  even number of parameters.\n");
    open_block(keyword, CPhead(tests));
    cpoutput_indentation(0);
    write_single(CPelement(tests, 2));
    close_block("}\n");
  }
  return true;
}

// ---- calls and texts

[[noreturn, gnu::noinline]] void several_results(tAsynt name) {
  const tAsynt symbol = CPsymbol_info(name);
  const std::string text = CPsource(name);
  die_msg_pos2(symbol ? SymInfo_Pos(symbol) : NoPosition,
               "The function %s is declared as returning multiple values. Therefore it cannot be used within an "
               "expression. Write a separate statement such as {a,b,c}=%s[d]; in order to obtain the output.",
               text.c_str(), text.c_str());
}

bool write_call(tAsynt t) {
  const bool simple = Asynt_Kind(t) == kSimpleFFE;
  const tAsynt name = simple ? SimpleFFE_Name(t) : ComplexFFE_Name(t);
  if (simple && Is_mulret_type(CPtype(t))) several_results(name);
  CPunparseVal(name);
  return CPwrite_list_call(" (", FullFormExpression_Args(t));
}

bool write_generated_code(tAsynt arg) {
  if (Asynt_Kind(arg) != kStringConst) return false;
  cpoutput("/*GenCode begin */");
  CPwrite(StringConst_Val(arg));
  cpoutput("/* end GenCode */");
  return true;
}

// ---- output and files

bool has_file_name(tAsynt t) { return Asynt_Kind(t) == kXPut && Filename_Name(XPut_Filename(t))[0]; }

bool write_file(tAsynt t) {
  write_indented("std::ofstream tmpfile(\"");
  CPwrite_call("", XPut_Filename(t), "\");\n");
  write_indented("tmpfile << ");
  CPwrite_call("", XPut_Expression(t), "<< \"\\n\" ;\n");
  write_indented("tmpfile.close();");
  return true;
}

bool write_put(tAsynt t) {
  if (has_file_name(t)) return false;
  const tAsynt e = XPut_Expression(t);
  const bool text = Asynt_Kind(e) == kStringConst;
  CPwrite_call(text ? "cout << " : "cout << (", e, text ? "/* " : ") /* ");
  return CPwrite_call("", XPut_Filename(t), " */");
}

bool write_export(tAsynt args) {
  if (CPhas_length(args, 2))
    return CPwrite_call2("lumen_export1(", CPhead(args), ",", CPelement(args, 2), ", NULL, NULL)");
  if (!CPhas_length(args, 3)) return false;
  CPwrite_call2("lumen_export(", CPhead(args), ",", CPelement(args, 2), ",");
  return CPwrite_call("", CPelement(args, 3), ", NULL, NULL)");
}

bool write_method(tAsynt list, const char* name) {
  if (!CPis_cell(list)) return false;
  cpoutput_indentation(0);
  CPa2Dop(list, name);
  return true;
}

// ---- the rules

// False: no statement of this kind and form.
bool write_stmt(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kEmpty:  // the body of a loop that has none
    case kXVoidFunc:
    case kXNull: return true;
    case kXWhile: return write_while(t);
    case kXFor: return write_for(t);
    case kDo: return write_do(t);
    case kXIf: return write_if(t);
    case kXWhich: return write_which(XWhich_Expressions(t));
    case kXCompoundExpression:
      if (CPis_cell(Variadic_Expressions(t))) CPunparse_exprs_semicolon(Variadic_Expressions(t));
      return true;
    case kXGenCodeString: return write_generated_code(CUnary_Arg(t));
    case kComplexFFE:
    case kSimpleFFE: return write_call(t);
    case kXPut: return has_file_name(t) && write_file(t);
    case kXSet: return CPunparse_set_statement(t);
    case kXSetDelayed: return CPunparse_import(t);
    default: return false;
  }
}

// False, and nothing is written: no small statement.
bool write_small_stmt(tAsynt t) {
  switch (Asynt_Kind(t)) {
    case kXBreak: write_indented("break"); return true;
    case kXPrint: CPunparse_printing(XPrint_Expressions(t)); return true;
    case kXSetSubMatrix: return write_method(Variadic_Expressions(t), "SetSubMatrix");
    case kXSetSubVector: return write_method(Variadic_Expressions(t), "SetSubVector");
    case kXSetCol: return write_method(Variadic_Expressions(t), "SetCol");
    case kXSetRow: return write_method(Variadic_Expressions(t), "SetRow");
    case kXSetCols: return write_method(Variadic_Expressions(t), "SetCols");
    case kXSetRows: return write_method(Variadic_Expressions(t), "SetRows");
    case kXSetShape: return write_method(Variadic_Expressions(t), "SetShape");
    case kXExport: return write_export(Variadic_Expressions(t));
    case kXPut: return write_put(t);
    case kXSet: CPunparse_set(t); return true;
    default: return false;
  }
}

[[noreturn, gnu::noinline]] void no_statement(tAsynt t) {
  die_msg(
      "A statement expected in a place where a single expression is detected.  Can't perform CPunparseStmt to generate "
      "code for type:\" %s \", expression is \" %s \"",
      Asynt_NodeName(Asynt_Kind(t)), CPsource(t).c_str());
}

}  // namespace

char CPunparseSmallStmt(tAsynt t) {
  const CPmemory memory;
  Find_type(&t);
  return write_small_stmt(t);
}

// Modules are entered by iteration: their bodies stand last.
void CPunparseStmt(tAsynt t) {
  const CPmemory memory;
  for (;;) {
    if (Asynt_Kind(t) == kXModule) {
      CPoutput_var_decls_and_inits(XModule_Varlist(t), XModule_Initializers(t));
      t = XModule_Body(t);
    } else if (Asynt_Kind(t) == kXBlock) {
      CPoutput_var_decls_and_inits(XBlock_Varlist(t), XBlock_Initializers(t));
      t = XBlock_Body(t);
    } else {
      break;
    }
  }
  if (write_stmt(t)) return;
  if (!CPunparseSmallStmt(t)) no_statement(t);
  cpoutput(";");
}

void CPunparse_exprs_semicolon(tAsynt t) {
  if (!CPis_cell(t)) return cpoutput_semicolon();
  for (; CPis_cell(t); t = CPtail(t)) {
    CPunparseStmt(CPhead(t));
    cpoutput_semicolon();
    if (CPis_cell(CPtail(t))) cpoutput("\n");
  }
}

// The last line has no semicolon: a print is a small statement.
void CPunparse_printing(tAsynt list) {
  for (; CPis_cell(list); list = CPtail(list)) {
    const bool text = Asynt_Kind(CPhead(list)) == kStringConst;
    write_indented(text ? "cout << " : "cout << (");
    CPwrite_call("", CPhead(list), text ? ";\n" : ");\n");
  }
  write_indented("cout << \"\\n\"");
}

// ---- local variables

namespace {

void CPoutput_var_typed_decl(tAsynt sym) {
  if (!CPhas_type(sym)) return;
  CPoutput_basetype_decl(SymInfo_Type(sym));
  CPoutput_symbol(sym);
  CPoutput_array_dims(SymInfo_Type(sym));
}

// An array is made with its dimensions and assigned to after that.
void write_initializer(tAsynt sym, tAsynt i) {
  if (Asynt_Kind(i) == kEmpty) return;
  if (Is_array_type(SymInfo_Type(sym))) {
    cpoutput(";\n");
    cpoutput_indentation(0);
    CPoutput_symbol(sym);
  }
  CPwrite_call(" = ", i, "");
}

}  // namespace

void CPoutput_var_decls_and_inits(tAsynt v, tAsynt i) {
  struct Declaration {
    tAsynt sym, init;
  };
  std::vector<Declaration> declarations;
  for (; Asynt_Kind(v) == kSymbol1 && CPis_cell(i); v = Symbol1_Symbols(v), i = CPtail(i))
    declarations.push_back({Symbol_SymInfo(Symbol1_Symbol(v)), CPhead(i)});
  if (Asynt_Kind(v) == kSymbol1 || CPis_cell(i)) die_msg("Internal error in CPoutput_var_decls_and_inits");
  for (; !declarations.empty(); declarations.pop_back()) {
    const Declaration& d = declarations.back();
    cpoutput_indentation(0);
    CPoutput_var_typed_decl(d.sym);
    write_initializer(d.sym, d.init);
    cpoutput(";\n");
  }
}

}  // namespace oz
