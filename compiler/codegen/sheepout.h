// The output layer of the Fortran generator: free-form source on two files at once, with line filling, indentation and
// comments, and names turned into Fortran identifiers. Text for a stream that is not open is dropped; a failed write
// stays visible in the stream (ferror).
#pragma once

#include <cstdio>
#include <string>

#include "Asynt.h"

namespace oz {

// ---- streams

// Opened and closed by the commands that open and close a file set; null while closed.
extern FILE* foutput_file;           // implementation, "%s.f90"
extern FILE* foutput_i_file;         // interface, "%sif.f90"
extern FILE* foutput_tm_file;        // link template, "%s.tm"
extern FILE* foutput_external_file;  // interfaces of external functions, "%sExt.f90inc"
extern FILE* fmacro_file;            // abbreviations of long names, "%s.f90mac"

// Where text goes.
enum fout_t {
  fout_interface = 0,
  fout_implementation = 1,
  fout_both = 2,  // the same text on both
  fout_template = 3,
  fout_external = 4
};

// Selects a stream and remembers the one before it; goes back to that. One level of memory.
void fout_set(fout_t fout_new);
void fout_reset();

// Both files at the start of a line and of a statement, not indented; abbreviations afresh, on the macro file.
void finit_output();

// ---- text

// Writes a text to the selected stream. It is never split: what does not fit on the line goes to a continuation line.
void foutput(const char* s);
inline void foutput(const std::string& s) { foutput(s.c_str()); }

// The same on the interface file, whatever is selected.
void foutput_i(const char* s);

// Ends the line in the middle of a statement or comment and begins the next one.
void foutput_continuation_nl();
void foutput_continuation_nl_i();

// Changes the indentation by steps of two columns.
void f_modify_indent(int indent_change);
void f_modify_indent_i(int indent_change);

// Pads the line with blanks up to the indentation and mod steps more.
void foutput_indentation(int mod);
void foutput_indentation_i(int mod);

// Opens a comment, or a directive, on a line of its own.
void foutput_comment();
void foutput_comment_i();
void foutput_hpf_directive();
void foutput_hpf_directive_i();

// ---- numbers and names

void foutput_int(ozmat_int i);
void foutput_real(ozmat_real r);

// The name of a link wrapper, and of that wrapper in the link template.
void foutput_if_name(const char* originalName);
void foutput_tm_name(const char* originalName);

// An identifier is built up by any number of these and written by flush_mangled_str.
void foutput_mangled_str(const char* s);
inline void foutput_mangled_str(const std::string& s) { foutput_mangled_str(s.c_str()); }
void foutput_mangled_int(ozmat_int i);
void foutput_mangled_real(ozmat_real r);
void flush_mangled_str();

// Fills the table of the kinds' spellings; writes the spelling of a node's kind.
void finit_operator_name();
void foutput_operator(tAsynt op);

// Copies with the ASCII letters changed.
std::string ToUpper(const char* inp);
std::string ToLower(const char* inp);

// The text of an attribute, or null if there is none or its value is no text.
string attribute_value(pointerToIndex attributes, const char* name);

// ---- expression lists

// The last element of a list; what is no list is itself.
tAsynt LastExpression(tAsynt t);

// The list without its last element; the list itself is cut.
tAsynt ButLastExpression(tAsynt t);

// The number of cells.
int LengthExpressions(tAsynt t);

// ---- declarations and directives

// The value in parentheses if it binds no tighter than its context.
void funparse_pri(tAsynt t, int parent_pri);

// Adds to the directive line that fmake_hpf_directives writes: opens it, or goes behind ", " if it has been begun.
void foutput_directive(const char* d);

// The directive line of a variable of a type, from its attributes; nothing without attributes.
void fmake_hpf_directives(tAsynt s, tAsynt typ, pointerToIndex attrs);

// Declares a module variable, given by its symbol information or by the definition of an external variable.
void fmake_global_var_decl(tAsynt s);

// Declare the symbols under t as locals, as parameters.
void fmake_var_decls(tAsynt t);
void fmake_param_decls(tAsynt t);

// Declares what the parallel loops under t need.
void fmake_forall_decls(tAsynt t);

// ---- state of the module being generated

extern std::string f_module_name;  // name of the generated module
extern std::string f_cblock_name;  // name of its common block
extern int fcontains;              // whether its "contains" has been written
extern char forall_atleast_one;    // whether fmake_forall_decls met a parallel loop
extern tAsynt forall_init_procs;   // symbols of the task procedures

// The link routines that fetch an argument, send a result, and fetch the result of a callback, by type code.
inline constexpr int kTypeCodes = 26;
extern const char* const if_func_get[kTypeCodes];
extern const char* const if_func_put[kTypeCodes];
extern const char* const if_func_cbget[kTypeCodes];

}  // namespace oz
