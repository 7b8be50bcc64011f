// The output layer of the C++ generator: six files, the switches that say which of them gets the next text, line
// filling, indentation, comments, identifiers and numbers. Text for a file that is not open is dropped; a failed write
// stays visible in the stream (ferror).
#pragma once

#include <cstdio>
#include <string>

#include "Asynt.h"

namespace oz {

// ---- files

// Opened and closed by the commands that open and close a file set; null while closed.
extern FILE* cpoutput_file;      // "%s.cc" (or "%s.java"): bodies, the main text
extern FILE* cpoutput_h_file;    // "%s.h": prototypes, extern declarations
extern FILE* cpoutput_icc_file;  // "%s.icc": inline stubs of external functions
extern FILE* cpoutput_tm_file;   // "%s.tm": link template
extern FILE* cpoutput_if_file;   // "%sif.cc": wrappers that the host calls
extern FILE* cpoutput_lm_file;   // "%slm.h": levels of the array library, written by cp_lmlev alone

// Begins a file set: all state as at the start, the first lines of the .cc and the .h.
void cpinit();

// Ends the text of a file set with the declarations of global variables that were remembered.
void cpexit();

// ---- switches

// Each start sets a switch and each end clears it; they do not nest.
void cpstart_h_output();  // text for the .cc goes to the .h too
void cpend_h_output();
void cpstart_tm_output();  // text goes to the .tm only
void cpend_tm_output();
void cpstart_if_output();  // to if.cc only
void cpend_if_output();
void cpstart_icc_output();  // to the .icc only
void cpend_icc_output();
void cpstart_h_only_output();  // to the .h only
void cpend_h_only_output();
void cpstart_h_icc_output();  // to the .h and the .icc
void cpend_h_icc_output();
void cpstart_if_output_too();  // text for the .cc goes to if.cc too
void cpend_if_output_too();

// ---- text

// Writes a text to the files that the switches select. It is never split: what would pass column 80 of the .cc or the
// .h starts a new line.
void cpoutput(const char* s);
inline void cpoutput(const std::string& s) { cpoutput(s.c_str()); }

// To one file, whatever the switches say; only the .h has its lines filled.
void cpoutput_h(const char* s);
void cpoutput_tm(const char* s);
void cpoutput_if(const char* s);
void cpoutput_icc(const char* s);

void cpoutput_double_quote();

// A semicolon, unless one, or a closing brace, was the last significant character of the .cc.
void cpoutput_semicolon();

// Starts a // comment on a line of its own; it ends with the line.
void cpoutput_comment();

// Pads the line of the .cc up to the indentation and mod levels more. The blanks go past all switches: also when text
// is routed elsewhere they land in the .cc.
void cpoutput_indentation(int mod);

// Changes the indentation by levels of four columns. A negative result is fatal.
void cp_modify_indent(int indent_change);

// Break a line that is too long.
void cpoutput_continuation_nl();
void cpoutput_continuation_nl_h();

// Nonzero: lines of the .cc are not broken. Set around string constants.
extern int cp_unbreakable_mode;

// ---- numbers and names

void cpoutput_int(ozmat_int i);
void cpoutput_real(ozmat_real r);

// An identifier is built up by any number of these and written by cpflush_mangled_str.
void cpoutput_mangled_str(const char* s);
inline void cpoutput_mangled_str(const std::string& s) { cpoutput_mangled_str(s.c_str()); }
void cpoutput_mangled_str_capitalize(const char* s);
void cpoutput_mangled_int(ozmat_int i);
void cpoutput_mangled_real(ozmat_real r);
void cpflush_mangled_str();

// A number of the host language with its power of ten in C form: 2*^3 gives 2e3. The result lasts until the next call;
// a text that gives more than 256 characters is returned as it is, with a warning.
const char* alg_to_exp(const char* s);

// The value of a number of the host language, with a warning if the text is not all of a number or out of range.
double alg_atof(const char* s);
long alg_atoi(const char* s);

// A copy in upper case.
std::string capitalize(const char* inp);

// The name of a callback function without its ending "Alg", in a new copy (released by efree); any other name itself.
const char* cpRemoveAlg(const char* inp);

// One spelling per kind: the operator or function, or the kind's own name. Filled by cpinit_operator_name.
extern const char* cpoperator_name[kAsyntKinds];
void cpinit_operator_name();

// ---- expressions and declarations

// The value in parentheses if it binds no tighter than its context.
void cpunparse_pri(tAsynt t, int parent_pri);

// Declares the symbols under t.
void cpmake_var_decls(tAsynt t);

// Notes that arrays of a rank are in use.
void cp_lmlev(int level);

// Whether the generated text is for that platform: never.
int cp_win32();

// The body of the function being generated.
extern tAsynt currentBody;

}  // namespace oz
