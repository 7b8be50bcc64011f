// Unrolling: a Model of classes and instances becomes a Package of plain definitions.
#pragma once

#include "index.h"
#include "treefwd.h"

namespace oz {

// Replaces the Model *t by a Package; *instances becomes the index of instances. Anything but a Model is left alone.
void unroll(tAsynt* t, tIndex* instances);

// What a failure of the pass leaves through; initially Errors_Exit.
extern void (*unroll_Exit)();

// ctx`name as a Symbol on an AbsoluteSymbol; ctx null gives empty components. name and ctx are Symbols.
tAsynt AppendContext(tAsynt ctx, tAsynt name);

}  // namespace oz
