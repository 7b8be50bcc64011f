// What the unit tests share: tables of texts, trees and types as text and from text, messages, streams in memory.
//
// Tables: cells stand apart by "-->", rows by line ends or by at least three blanks. \n is a line end within a cell, \s
// a blank at its edge, \\ a backslash; a line that ends in \ goes on in the next one; // starts a line of comment.
//
// Trees as text:
//   x, `x`, "x"          a Symbol, by the text of its name; a StringConst
//   %Sin                 a Symbol on a predefined name
//   x:Int                a Symbol whose Type is an IntType; attributes follow as Int{unit="m"}
//   a`b`x                a FullSymbol or AbsoluteSymbol, its components in front
//   <f[1]:Real>          a Symbol on a RelativeNest or AbsoluteNest and its Type
//   T1, O1               a Symbol on a TempSymbol, on an OutParam, by their numbers
//   f[x,1]               a SimpleFFE; (f[x])[y] a ComplexFFE
//   17, 2.5              constants by their digits
//   XPlus[a,b]           any other node: its kind and fields; lists in braces, but bare where one is the only field
//
// Code as text is shorter: symbols by their names alone, types as below, f[x][y], #17 for an IntConst, & for an empty
// statement, a=b for an assignment, (a;b) for a compound, and of all other nodes only the children.
//
// Types as text:
//   int, real, complex, bool, string, none    basic types and NoType; int_s and so on for members of instance sets
//   real[2,0], real_s[-1,3]                   an ArrayType, an ArrayType_s; sizes by their digits
//   multi(real,int[0])                        a MultiType; predef any PreDef
//
// Trees from text:
//   x, C`f            a Symbol on an AbsoluteSymbol with the type it was declared with; %Pi on a predefined name
//   x[i], x[i][j]     a SimpleFFE, a ComplexFFE; %Sin[x] an application of a predefined head
//   17, #17, 2.5, "a" an ExactIntConst, an IntConst, an ExactRealConst, a StringConst
//   XPlus[i,2.5]      the node of that kind; a list field takes all arguments that are left. Operators stand at 7, 3
//   {a,b}             as a field: a list of it, of ranges Iterator[i,1,n], of Symbols; without braces the latter are
//                     empty
//   &                 an empty statement, the Expression of the kind Empty
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Asynt.h"
#include "Errors.h"
#include "index.h"
#include "nesting.h"
#include "operator_name.h"
#include "oz.h"
#include "type.h"
#include "unparse.h"

namespace oz {

// ---- tables and texts

std::vector<std::vector<std::string>> table_rows(const char* text);
[[noreturn]] void bad_test(const std::string& what);  // ends the test program

template <size_t n>
std::vector<std::array<std::string, n>> table(const char* text) {
  std::vector<std::array<std::string, n>> rows;
  for (const std::vector<std::string>& cells : table_rows(text)) {
    if (cells.size() != n) bad_test("number of cells in a row that starts with " + cells[0]);
    std::copy(cells.begin(), cells.end(), rows.emplace_back().begin());
  }
  return rows;
}

std::vector<std::string> words(const std::string& text);

inline testing::AssertionResult contains(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
  return testing::AssertionFailure() << '"' << part << "\" is not in \"" << text << '"';
}

std::string repeated(const std::string& text, size_t count);
inline std::string xs(size_t n) { return std::string(n, 'x'); }

// The lines of a text without margins and empty lines, joined by " | ".
std::string lines_of(const std::string& text);

// ---- messages and streams

// What a call writes to standard error; a fatal message ends the call instead of the process.
template <typename Call>
std::string message_of(Call call) {
  struct Ended {};
  void (*const hook)() = Errors_Exit;
  Errors_Exit = [] { throw Ended(); };
  testing::internal::CaptureStderr();
  try {
    call();
  } catch (const Ended&) {
  }
  Errors_Exit = hook;
  return testing::internal::GetCapturedStderr();
}

// Messages as "E7,3 text" joined by " | ": the class's first letter, and the place if there is one. A text that came
// out in pieces of 250 characters, the further ones behind "...", is put together again.
std::string short_messages(const std::string& text);
template <typename Call>
std::string said(Call call) {
  return short_messages(message_of(call));
}

// A stream whose text can be read at any time.
struct OutputStream {
  char* text = nullptr;
  size_t size = 0;
  FILE* f = open_memstream(&text, &size);
  ~OutputStream() {
    std::fclose(f);
    std::free(text);
  }
  std::string str() {
    std::fflush(f);
    return std::string(text, size);
  }
  // What a step adds.
  template <typename Step>
  std::string added(Step step) {
    const size_t before = str().size();
    step();
    return str().substr(before);
  }
};

// ---- trees

std::string tree_text(tAsynt t, bool positions = false);  // these stand as @line,column behind the kind or name
std::string code_text(tAsynt t);
std::string type_text(tAsynt type);

// The type of a text. Anything wrong in a text ends the test program, here and below.
tAsynt type_of_text(const std::string& text);

// The types of names in expressions from now on, "i:int x:real[3] C`f:none"; earlier declarations are dropped. Each
// name has one symbol information, declared at 4, 2.
void declare_types(const std::string& declarations);

tAsynt typed_tree(const std::string& text);

inline tAsynt info_of(const std::string& name) { return Symbol_SymInfo(typed_tree(name)); }

tAsynt list(const std::vector<tAsynt>& items);           // of expressions
tAsynt symbols(const std::vector<tAsynt>& items);        // of symbols
tAsynt name(const std::string& text, tPosition p = {});  // a Symbol on a SimpleSymbol
tAsynt compound(const std::vector<tAsynt>& items);
inline tAsynt no_place() { return mkNonConvPos(NoPosition); }
inline tAsynt set(tAsynt lhs, tAsynt rhs) { return mXSet(no_place(), lhs, rhs); }
inline tAsynt temporary(unsigned number, tAsynt type = mNoType()) {
  return mSymbol(mTempSymbol(type, NoPosition, number));
}
inline tAsynt out_param(const std::string& type, unsigned number) {
  return mSymbol(mOutParam(type_of_text(type), NoPosition, number));
}
const char* stored(const std::string& text);  // a copy that stays

// A tree that is as many levels deep as the readers allow: f around f, n times.
template <typename Level>
tAsynt nested(int n, tAsynt core, Level level) {
  while (n-- > 0) core = level(core);
  return core;
}

// ---- fixtures

// Trees can be printed and typed.
struct Trees : testing::Test {
  Trees();
};

}  // namespace oz
