// lumenmat: the array library that generated C++ is written against. Header-only, C++17.
//
// Types
//   int, double, lm_complex      numbers; RWCString, texts
//   intN  intNN  intNNN  intNNNN                       arrays of 1, 2, 3, 4 dimensions; bool arrays are int arrays
//   doubleN ...  lm_complexN ...
//
// Arrays are values: they are copied when they are assigned and take the sizes of what is assigned to them. Subscripts
// begin at 1; below zero they count from the end. Elements are stored column by column, the first subscript fastest, as
// in Fortran.
//
//   doubleNN m(2, 3);            2 rows, 3 columns, all 0
//   m(2, 1) = 5;                 an element
//   m(1, All), m(R(1,2), 3)      a row; rows 1 and 2 of column 3: sections, to be read
//   m.Set(1, All, v);            a section is written
//   m.dimension(2)               3
//   m.elements()                 a pointer to the elements; m.data() for other languages: double* of complex ones, too
//   m = 2*m + n;                 element by element, in one pass, without arrays in between
//   m*v, m*n, v*v                products of matrices and vectors
//   ElemProduct(m, n), ElemQuotient(m, n), sin(m), pow(m, 2)
//   0 < m, m == n                int arrays, element by element; m == n as a bool: equal as a whole
//
// Errors throw lumen_error. LM_NO_CHECKS leaves out the checks of single subscripts (see lm_base.h).
//
//   lm_base.h     errors, shapes, ranges          lm_linear.h   products
//   lm_complex.h  lm_complex                      lm_list.h     lists: make_lumenN, Join, Drop, lumen_flatten ...
//   lm_scalar.h   functions of numbers            lm_stat.h     statistics
//   lm_array.h    arrays, sections, expressions   lm_io.h       texts, printing, files
//   lm_ops.h      element-wise operations
#ifndef LUMENMAT_H
#define LUMENMAT_H

#include "lm_io.h"
#include "lm_linear.h"
#include "lm_list.h"
#include "lm_stat.h"

#define LM_ARRAY_TYPES(T)            \
  using T##N = lumen::Array<T, 1>;   \
  using T##NN = lumen::Array<T, 2>;  \
  using T##NNN = lumen::Array<T, 3>; \
  using T##NNNN = lumen::Array<T, 4>;
using lumen::lm_complex;
LM_ARRAY_TYPES(int)
LM_ARRAY_TYPES(double)
LM_ARRAY_TYPES(lm_complex)
#undef LM_ARRAY_TYPES

// Generated code names everything without a prefix. Functions that have an argument of one of our classes are found by
// that; the others stand here.
using lumen::All;
using lumen::floor;
using lumen::FractionalPart;
using lumen::iceil;
using lumen::ifloor;
using lumen::IntegerPart;
using lumen::irint;
using lumen::lumen_error;
using lumen::lumen_export;
using lumen::lumen_export1;
using lumen::lumen_import1Ndouble;
using lumen::lumen_import1Nint;
using lumen::lumen_import1Nlm_complex;
using lumen::lumen_import1NNdouble;
using lumen::lumen_import1NNint;
using lumen::lumen_import1NNlm_complex;
using lumen::lumen_importNdouble;
using lumen::lumen_importNint;
using lumen::lumen_importNlm_complex;
using lumen::lumen_importNNdouble;
using lumen::lumen_importNNint;
using lumen::lumen_importNNlm_complex;
using lumen::make_lm_complex;
using lumen::make_lumenN;
using lumen::Max;
using lumen::Min;
using lumen::Mod;
using lumen::R;
using lumen::RWCString;
using lumen::sign;
using lumen::XAll;
using lumen::XFactorial;
using lumen::XFactorial2;
using lumen::XStringLength;
using lumen::XStringReverse;
using std::abs;
using std::cout;

// Of arrays, lm_complex(a, b) is an array, which no constructor can give. Since a parenthesis behind the name makes it
// a call, a type of functions with complex values is written auto(double) -> lm_complex.
#define lm_complex(...) make_lm_complex(__VA_ARGS__)

#endif
