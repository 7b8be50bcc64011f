// Type annotations: from calls such as oz$Type[x, oz$Real] to a type on the symbol x.
#pragma once

#include "treefwd.h"

namespace oz {

// Whether t is an annotation; the type of its first argument is then set.
char Do_type_annotation_stuff(tAsynt t);

// The type that a type expression stands for; what is none is fatal.
tAsynt Get_type_node(tAsynt t);

// Whether two types are equal.
bool same_type(tAsynt a, tAsynt b);

// Forgets the types that Get_type_node has made. To be called around the reading of a text.
void forget_types();

}  // namespace oz
