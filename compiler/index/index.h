// The compiler's map: from a text key to a null-terminated list of tree nodes.
// A linked list for the many small environments, a linear-hashing table for the large ones.
#pragma once

#include "treefwd.h"

namespace oz {

enum Index_type { linked_list = 0, hash_table = 1 };

struct Index;
using tIndex = Index*;
struct Iter;

// A new index; size_hint is the initial number of entries per key (below 1 counts as 1). Released by delete_index.
Index* make_index(int type, int size_hint);

// The same as a list that a field of a node holds; and the end of all these lists, which comes when all trees end.
Index* make_node_index(int size_hint);
void delete_node_indices();

// Adds a key with its first entry. 0 if the key already has entries, and then nothing changes; else 1.
// The key is copied, the entry stays the tree's.
char create_entry(Index* index, tAsynt entry, const char* key);

// Appends an entry, making the key if needed. Result: the number of entries of the key.
int add_to_entry(Index* index, tAsynt entry, const char* key);

// The entries of a key, ended by null; null for a null index, an unknown key or a key without entries.
// The array is the index's and is valid until the key is changed.
tAsynt* lookup(const Index* index, const char* key);

// Removes the most recently added entry of a key. Result: how many are left, -1 for an unknown key.
int remove_from_entry(Index* index, const char* key);

// Empties a list; leaves a table as it is.
void clear_index(Index* index);

// Frees an index and its keys, not the entries.
void delete_index(Index* index);

// Iteration over the keys: a list from the newest key to the oldest, a table by bucket. Entries of the key just
// returned may be removed meanwhile; where that takes a key out of a table, the table may shrink and a later key be
// passed over. There is no end call: an iterator is used until it has come to its end, and lives as long as its index.
Iter* start_iter(const Index* index);

// The entries of the next key, or null at the end; iter_key is the key of the last call.
tAsynt* iter_next(Iter* iter);
const char* iter_key(const Iter* iter);

}  // namespace oz
