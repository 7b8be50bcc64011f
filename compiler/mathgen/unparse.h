// The source unparser: a tree as text in the notation of the model language and the host.
#pragma once

#include <cstdio>
#include <string>

#include "treefwd.h"
#include "unparse_out.h"

namespace oz {

// The shared text buffer and its size; it grows, so that a pointer into it is valid until the next call.
extern char* bigbuf;
extern size_t bigbuf_allocated;

// Allocates bigbuf; to be called before the other operations.
void bigbuf_init();

// Prints into bigbuf; the result is bigbuf.
const char* unparse_string(tAsynt tree);

// Prints to a stream without indentation; with indentation.
void unparse_file(FILE* f, tAsynt tree);
void unparse_filep(FILE* f, tAsynt tree);

// Statements of a package's body that are printed before the rest of the body is known.
class StatementsAhead {
 public:
  // Prints a list of statements, with indentation, behind those before it; on any thread. False, with nothing printed,
  // if that comes to a fatal message, which is not reported, or there is no memory for the text.
  bool add(tAsynt list);

  const KeptText& text() const { return text_; }

 private:
  KeptText text_{};
};

// Prints a package with indentation; statements that were printed ahead come before the cell `at` of its body.
void unparse_package(FILE* f, tAsynt package, const StatementsAhead& ahead, tAsynt at);

// Prints sym into str and removes the first skipcount bracket groups of the text. A group begins with "[" where the one
// before it ended and goes to the next "]". False, with the text left as printed, if there are not so many groups.
bool unparse_and_skip_brackets(std::string* str, tAsynt sym, int skipcount);

}  // namespace oz
