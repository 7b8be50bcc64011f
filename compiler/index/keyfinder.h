// Finds an item by its key in constant time, beside a container that keeps the items in an order of its own.
#pragma once

#include <cstddef>

namespace oz {

struct element;
struct KeyFinder;

KeyFinder* make_finder();
void delete_finder(KeyFinder* finder);

// The item of a key of len bytes, or null.
element* finder_get(const KeyFinder* finder, const char* key, size_t len);

// Adds an item under its own key, which must not be there yet; takes one out that is there.
void finder_put(KeyFinder* finder, element* item);
void finder_drop(KeyFinder* finder, const element* item);

}  // namespace oz
