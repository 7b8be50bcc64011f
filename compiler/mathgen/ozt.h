// Declaration transformation: the model language's declaration forms become ordinary definitions of the host language.
#pragma once

#include "index.h"
#include "treefwd.h"

namespace oz {

// Class name to Class node, filled by ozt, read by unroll.
extern Index* class_index;

// Rewrites a qualified Model in place. Two classes of one name are fatal.
void ozt(tAsynt* t);

// What a failure of the pass leaves through; initially Errors_Exit.
extern void (*ozt_Exit)();

// ---- helpers that unrolling and the later passes share

// A symbol of the host: an AbsoluteSymbol without components, which prints bare everywhere. The text is not copied.
tAsynt MkName(const char* s);

// A call of MkName(s) with one or two arguments.
tAsynt FFE1(const char* s, tAsynt e);
tAsynt FFE2(const char* s, tAsynt e1, tAsynt e2);

// A StringConst with the printed text of e.
tAsynt Stringify(tAsynt e);

// Renames a symbol, or the head of a call, in place to "oz$NAME$SUFFIX". Result: exp.
tAsynt SuffMangle(tAsynt exp, const char* suffix);

// A new list in which each XPattern is replaced by its Name.
tAsynt StripPatterns(tAsynt list);

// In a tree of its own: replaces each XPattern by its name.
void NukePatterns(tAsynt* t);

// New Expression lists of the same elements; the cells of a (copied) ending in b.
tAsynt Symbols2Expressions(tAsynt list);
tAsynt IntConsts2Expressions(tAsynt list);
tAsynt AppendExps(tAsynt a, tAsynt b);

// sym under the context ctx, as symbol information: a FullSymbol if both are SimpleSymbols; sym itself if ctx is null.
tAsynt PrependContext(tAsynt ctx, tAsynt sym);

}  // namespace oz
