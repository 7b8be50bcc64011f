// alginter: what the generated wrappers (<base>if.cc) need to be called over the link.
//
// The host announces a call with its arguments; a wrapper reads them in order, calls the compiled function and sends
// back what it returns:
//
//   void AL_area() {
//     get_double(r);                    double r, read from stdlink
//     get_lumenNdouble(v);              doubleN v, read as a list
//     lmif_return(Shapes_Tarea(r,v));   the answer
//   }
//
// A callback goes the other way: AL_IF_start begins an evaluation in the host, lmif_return sends each argument,
// AL_IF_wait waits for the answer and cb_get reads it.
//
// A program that serves wrappers over a link; oztm writes it from <base>.tm:
//
//   const AL_IF_function AL_IF_functions[] = {{"area[r_Real, v_List/;VectorQ[v,NumberQ]]", "{r, v}", AL_area}};
//   const int AL_IF_function_count = 1;
//   int main(int argc, char** argv) { return AL_IF_main(argc, argv, AL_IF_functions, AL_IF_function_count); }
#ifndef ALGINTER_H
#define ALGINTER_H

#include "algelink.h"
#include "lumenmat.h"

// The link to the host. AL_IF_main and AL_IF_serve set it.
extern ALINK stdlink;

namespace alginter {

// Reads a value of the type from stdlink. If something else comes, or the link fails, lumen_error names the argument.
template <class T>
T get(const char* name);

#define ALGINTER_SCALARS(X) X(int) X(double) X(lm_complex) X(RWCString)
#define ALGINTER_ARRAYS(X, E) X(E##N) X(E##NN) X(E##NNN) X(E##NNNN)
#define ALGINTER_TYPES(X) \
  ALGINTER_SCALARS(X) ALGINTER_ARRAYS(X, int) ALGINTER_ARRAYS(X, double) ALGINTER_ARRAYS(X, lm_complex)
#define ALGINTER_DECLARE(T)   \
  template <>                 \
  T get<T>(const char* name); \
  void put(const T& value);
ALGINTER_TYPES(ALGINTER_DECLARE)
#undef ALGINTER_DECLARE

template <>
std::vector<RWCString> get<std::vector<RWCString>>(const char* name);

}  // namespace alginter

#define get_int(x) int x = alginter::get<int>(#x)
#define get_double(x) double x = alginter::get<double>(#x)
#define get_complex(x) lm_complex x = alginter::get<lm_complex>(#x)
#define get_string(x) RWCString x = alginter::get<RWCString>(#x)
#define get_Nstring(x) std::vector<RWCString> x = alginter::get<std::vector<RWCString>>(#x)
#define get_lumenNint(x) intN x = alginter::get<intN>(#x)
#define get_lumenNNint(x) intNN x = alginter::get<intNN>(#x)
#define get_lumenNNNint(x) intNNN x = alginter::get<intNNN>(#x)
#define get_lumenNNNNint(x) intNNNN x = alginter::get<intNNNN>(#x)
#define get_lumenNdouble(x) doubleN x = alginter::get<doubleN>(#x)
#define get_lumenNNdouble(x) doubleNN x = alginter::get<doubleNN>(#x)
#define get_lumenNNNdouble(x) doubleNNN x = alginter::get<doubleNNN>(#x)
#define get_lumenNNNNdouble(x) doubleNNNN x = alginter::get<doubleNNNN>(#x)
#define get_lumenNcomplex(x) lm_complexN x = alginter::get<lm_complexN>(#x)
#define get_lumenNNcomplex(x) lm_complexNN x = alginter::get<lm_complexNN>(#x)
#define get_lumenNNNcomplex(x) lm_complexNNN x = alginter::get<lm_complexNNN>(#x)
#define get_lumenNNNNcomplex(x) lm_complexNNNN x = alginter::get<lm_complexNNNN>(#x)

// Sends a value, or the symbol Null. Arrays go as nested lists, complex numbers as Complex[re, im].
void lmif_return();
template <class T>
void lmif_return(const T& value) {
  if constexpr (lumen::is_array<T>)
    alginter::put(lumen::value_of(value));
  else
    alginter::put(value);
}

// ---- callbacks

// Begins the evaluation of name[...] with so many arguments, which lmif_return sends.
void AL_IF_start(const char* name, int arguments);
// Sends it and waits for the answer; a call that the host makes in between fails.
void AL_IF_wait();
// Reads the answer, or passes over it.
void cb_get();
template <class T>
void cb_get(T& answer) {
  answer = alginter::get<T>("answer");
  cb_get();
}

// ---- serving

struct AL_IF_function {
  const char* pattern;  // as behind :Pattern: in the .tm file; or a text that the host evaluates, as behind :Evaluate:
  const char* arguments;  // in the order on the wire, as behind :Arguments:; null for a text
  void (*call)();         // the wrapper; null for a text
};

// What oztm writes.
extern const AL_IF_function AL_IF_functions[];
extern const int AL_IF_function_count;

// Announces the functions and answers calls of them until the link ends. A call that throws, that has too many or too
// few arguments, or whose arguments cannot be read, is answered with $Failed, and the text of an error goes to standard
// error. True if the link ended in order.
bool AL_IF_serve(ALINK link, const AL_IF_function* functions, int n);

// Opens the link that the arguments name, connects it and serves. The exit status of a program.
int AL_IF_main(int argc, char** argv, const AL_IF_function* functions, int n);

#endif
