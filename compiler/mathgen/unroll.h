// Unrolling: a Model of classes and instances becomes a Package of plain definitions.
#pragma once

#include "Asynt.h"
#include "index.h"

namespace oz {

// Replaces the Model *t by a Package; *instances becomes the index of instances. Anything but a Model is left alone.
void unroll(tAsynt* t, tIndex* instances);

// Who takes the objects of a model as they become complete.
class ObjectReader {
 public:
  virtual ~ObjectReader() = default;

  // Some objects more, as a list of statements of the package's body, and all nodes that were made for them. The reader
  // owns the nodes: nothing else refers to them.
  virtual void read(tAsynt statements, Asynt_Batch nodes) = 0;
};

// The same with the objects given to a reader: they are not part of the package, and there is no index of instances.
void unroll_for_reader(tAsynt* t, ObjectReader* reader);

// What a failure of the pass leaves through; initially Errors_Exit.
extern void (*unroll_Exit)();

// ctx`name as a Symbol on an AbsoluteSymbol; ctx null gives empty components. name and ctx are Symbols.
tAsynt AppendContext(tAsynt ctx, tAsynt name);

}  // namespace oz
