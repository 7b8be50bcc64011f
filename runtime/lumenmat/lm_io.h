// Texts, printing, and files of numbers.
//
// Formats of files: "csv" has one row of a matrix, or one element of a vector, on a line, numbers separated by commas;
// "list" has the elements of a vector, one a line. Reading takes any blanks around numbers and passes over empty lines.
// A complex number is written re+imI, as in 1.5-2I. Numbers are written with as many digits as reading them back needs.
#ifndef LM_IO_H
#define LM_IO_H

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "lm_ops.h"

namespace lumen {

class RWCString : public std::string {
 public:
  using std::string::string;
  RWCString() = default;
  RWCString(const std::string& s) : std::string(s) {}
  // For routines of other languages; the characters may be changed, their number may not.
  char* getdata() { return &(*this)[0]; }
};

inline int XStringLength(const RWCString& s) { return static_cast<int>(s.size()); }
inline RWCString XStringReverse(const RWCString& s) { return RWCString(std::string(s.rbegin(), s.rend())); }

// ---- printing: {{1, 2}, {3, 4}}

template <class T, int N>
void print_part(std::ostream& out, const Array<T, N>& a, Index* x, int k) {
  out << "{";
  for (x[k] = 0; x[k] < a.shape().d[k]; x[k]++) {
    if (x[k] > 0) out << ", ";
    if (k == N - 1)
      out << a.elements()[a.place(x)];
    else
      print_part(out, a, x, k + 1);
  }
  out << "}";
}

template <class A, IfArray<A> = 0>
std::ostream& operator<<(std::ostream& out, const A& a) {
  Index x[rank_of<A>] = {};
  print_part(out, value_of(a), x, 0);
  return out;
}

// ---- numbers as text

inline std::string number_text(int i) { return std::to_string(i); }
inline std::string number_text(double x) {
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", x);
  return text;
}
inline std::string number_text(const lm_complex& z) {
  const std::string im = number_text(z.imag());
  return number_text(z.real()) + (im[0] == '-' ? "" : "+") + im + "I";
}

inline const char* without_blanks(const char* p) {
  while (*p == ' ' || *p == '\t' || *p == '\r') p++;
  return p;
}

// Each reads one number and returns what follows it; null if there is none.
inline const char* read_number(const char* p, double* x) {
  char* end;
  *x = std::strtod(p, &end);
  return end == p ? nullptr : end;
}
inline const char* read_number(const char* p, int* i) {
  char* end;
  errno = 0;
  const long value = std::strtol(p, &end, 10);
  if (end == p || errno != 0 || value < INT_MIN || value > INT_MAX) return nullptr;
  *i = static_cast<int>(value);
  return end;
}
inline const char* read_number(const char* p, lm_complex* z) {
  double re, im = 0;
  const char* end = read_number(p, &re);
  if (!end) return nullptr;
  if (*end == 'I') {
    *z = lm_complex(0, re);
    return end + 1;
  }
  const char* imaginary = *end == '+' || *end == '-' ? read_number(end, &im) : nullptr;
  if (imaginary && *imaginary == 'I')
    end = imaginary + 1;
  else
    im = 0;
  *z = lm_complex(re, im);
  return end;
}

// ---- files

template <class T>
using Rows = std::vector<std::vector<T>>;

template <class T>
Rows<T> read_rows(const std::string& file, bool commas) {
  std::ifstream in(file);
  if (!in) fail("Import: cannot read " + file);
  Rows<T> rows;
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    number++;
    std::vector<T> row;
    for (const char* p = without_blanks(line.c_str()); *p;) {
      T value;
      p = read_number(p, &value);
      if (p) p = without_blanks(p);
      const bool more = p && commas && *p == ',';
      if (!p || (commas && *p && !more))
        fail("Import: " + file + ", line " + std::to_string(number) + ": not a number: " + line);
      if (more) p = without_blanks(p + 1);
      row.push_back(value);
    }
    if (!row.empty()) rows.push_back(std::move(row));
  }
  if (in.bad()) fail("Import: cannot read " + file);
  return rows;
}

// "csv" from "a/b.csv", in lower case.
inline std::string format_of(const std::string& file, const char* operation) {
  const std::size_t dot = file.rfind('.');
  if (dot == std::string::npos || file.find('/', dot) != std::string::npos)
    fail(std::string(operation) + ": the name " + file + " has no suffix that tells the format");
  return file.substr(dot + 1);
}

inline bool is_csv(std::string format, const char* operation) {
  for (char& c : format) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  if (format != "csv" && format != "list") fail(std::string(operation) + ": unknown format " + format);
  return format == "csv";
}

template <class T>
Array<T, 1> import_vector(const std::string& file, const std::string& format) {
  Index n = 0;
  const Rows<T> rows = read_rows<T>(file, is_csv(format, "Import"));
  for (const auto& row : rows) n += static_cast<Index>(row.size());
  Array<T, 1> v(n);
  T* to = v.elements();
  for (const auto& row : rows) to = std::copy(row.begin(), row.end(), to);
  return v;
}

template <class T>
Array<T, 2> import_matrix(const std::string& file, const std::string& format) {
  const Rows<T> rows = read_rows<T>(file, is_csv(format, "Import"));
  const std::size_t columns = rows.empty() ? 0 : rows[0].size();
  Array<T, 2> m(rows.size(), columns);
  for (std::size_t i = 0; i < rows.size(); i++) {
    if (rows[i].size() != columns)
      fail("Import: " + file + ": row " + std::to_string(i + 1) + " has " + std::to_string(rows[i].size()) +
           " numbers, the first one " + std::to_string(columns));
    for (std::size_t j = 0; j < columns; j++) m.elements()[i + j * rows.size()] = rows[i][j];
  }
  return m;
}

// The last two arguments of the import and export functions are for settings, of which there are none.
#define LM_IMPORT(name, T, read)                                                                             \
  inline auto lumen_import##name(const RWCString& file, const RWCString& format, const void*, const void*) { \
    return read<T>(file, format);                                                                            \
  }                                                                                                          \
  inline auto lumen_import1##name(const RWCString& file) { return read<T>(file, format_of(file, "Import")); }
LM_IMPORT(Nint, int, import_vector)
LM_IMPORT(Ndouble, double, import_vector)
LM_IMPORT(Nlm_complex, lm_complex, import_vector)
LM_IMPORT(NNint, int, import_matrix)
LM_IMPORT(NNdouble, double, import_matrix)
LM_IMPORT(NNlm_complex, lm_complex, import_matrix)
#undef LM_IMPORT

// Gives the name of the file.
template <class A, IfArray<A> = 0>
RWCString lumen_export(const RWCString& file, const A& a, const RWCString& format, const void*, const void*) {
  constexpr int N = rank_of<A>;
  static_assert(N <= 2, "Export takes a vector or a matrix");
  const auto& x = value_of(a);
  if (!is_csv(format, "Export") && N != 1) fail("Export: the format list is for vectors");
  std::ofstream out(file);
  for (Index i = 0; i < x.shape().d[0]; i++)
    for (Index j = 0, n = N == 2 ? x.shape().d[N - 1] : 1; j < n; j++)
      out << number_text(x.elements()[i + j * x.shape().d[0]]) << (j == n - 1 ? "\n" : ",");
  out.close();
  if (!out) fail("Export: cannot write " + file);
  return file;
}
template <class A, IfArray<A> = 0>
RWCString lumen_export1(const RWCString& file, const A& a, const void*, const void*) {
  return lumen_export(file, a, format_of(file, "Export"), nullptr, nullptr);
}

}  // namespace lumen

#endif
