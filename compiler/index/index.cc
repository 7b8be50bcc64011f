// An Index is a list or a table behind one interface.
//
// The list ends in a sentinel whose key is set to the sought key, so that a search needs no end test:
//
//   first -> newest key -> ... -> oldest key -> tail (key: the sought one)
//
// A key stays in the list when its last entry is removed and is reused by a later insertion. When a list has more than
// a few keys, a KeyFinder takes over the searches; the order of the list stays.
#include "index.h"

#include <cstring>
#include <vector>

#include "ememory.h"
#include "hash.h"

namespace oz {

struct Iter {
  const Index* index;
  element* position;  // list: the next element; table: the rest of the bucket's chain
  int bucket;         // table only
  const char* last_key;
  bool ended;
  Iter* older;  // iterations of an index are freed with it
};

struct Index {
  element* first;     // list only
  element* tail;      // list only: the sentinel
  hashtable* table;   // table only
  KeyFinder* finder;  // list only, and only once the list is long
  int size_hint;      // initial number of entries per key
  int key_count;      // keys in the list, up to one more than makes it long
  Index_type type_flag;
  mutable Iter* iterations;
};

namespace {

constexpr int kLongList = 8;

std::vector<Index*> node_indices;

element* find_in_list(const Index* index, const char* key) {
  if (index->finder) return finder_get(index->finder, key, std::strlen(key) + 1);
  index->tail->str = const_cast<char*>(key);
  element* e = index->first;
  while (std::strcmp(e->str, key) != 0) e = e->next;
  return e == index->tail ? nullptr : e;
}

void start_finder(Index* index) {
  index->finder = make_finder();
  for (element* e = index->first; e != index->tail; e = e->next) finder_put(index->finder, e);
}

void add_to_list(Index* index, tAsynt entry, const char* key) {
  element* e = make_element(key, std::strlen(key) + 1, entry, index->size_hint);
  e->next = index->first;
  index->first = e;
  if (index->finder)
    finder_put(index->finder, e);
  else if (++index->key_count > kLongList)
    start_finder(index);
}

void clear_list(Index* index) {
  while (index->first != index->tail) {
    element* e = index->first;
    index->first = e->next;
    delete_element(e);
  }
  delete_finder(index->finder);
  index->finder = nullptr;
  index->key_count = 0;
}

element* find(const Index* index, const char* key) {
  return index->type_flag == linked_list ? find_in_list(index, key) : find_in_hashtable(index->table, key);
}

void add(Index* index, tAsynt entry, const char* key) {
  if (index->type_flag == linked_list)
    add_to_list(index, entry, key);
  else
    add_to_hashtable(index->table, key, entry, index->size_hint);
}

}  // namespace

Index* make_index(int type, int size_hint) {
  Index* index = static_cast<Index*>(emalloc(sizeof(Index)));
  *index = {};
  index->size_hint = size_hint < 1 ? 1 : size_hint;
  index->type_flag = type == linked_list ? linked_list : hash_table;
  if (index->type_flag == hash_table) {
    index->table = init_hashtable();
  } else {
    index->tail = static_cast<element*>(emalloc(sizeof(element)));
    *index->tail = {};
    index->first = index->tail;
  }
  return index;
}

Index* make_node_index(int size_hint) {
  node_indices.push_back(make_index(linked_list, size_hint));
  return node_indices.back();
}

void delete_node_indices() {
  for (Index* index : node_indices) delete_index(index);
  node_indices.clear();
}

char create_entry(Index* index, tAsynt entry, const char* key) {
  element* e = find(index, key);
  if (e && e->index_info.used_size > 0) return 0;
  if (e)
    append_entry(&e->index_info, entry);
  else
    add(index, entry, key);
  return 1;
}

int add_to_entry(Index* index, tAsynt entry, const char* key) {
  element* e = find(index, key);
  if (e) return append_entry(&e->index_info, entry);
  add(index, entry, key);
  return 1;
}

tAsynt* lookup(const Index* index, const char* key) {
  const element* e = index ? find(index, key) : nullptr;
  return e && e->index_info.used_size > 0 ? e->index_info.entries : nullptr;
}

int remove_from_entry(Index* index, const char* key) {
  if (index->type_flag == hash_table) return remove_from_hashtable(index->table, key);
  element* e = find_in_list(index, key);
  return e ? drop_entry(&e->index_info) : -1;
}

void clear_index(Index* index) {
  if (index->type_flag == linked_list) clear_list(index);
}

void delete_index(Index* index) {
  if (index->type_flag == linked_list) {
    clear_list(index);
    efree(index->tail);
  } else {
    delete_hashtable(index->table);
  }
  while (index->iterations) {
    Iter* iter = index->iterations;
    index->iterations = iter->older;
    efree(iter);
  }
  efree(index);
}

// The last iterator serves again when it has come to its end: an index that lives long is gone through many times.
Iter* start_iter(const Index* index) {
  Iter* iter = index->iterations;
  if (!iter || !iter->ended) {
    iter = static_cast<Iter*>(emalloc(sizeof(Iter)));
    iter->older = index->iterations;
    index->iterations = iter;
  }
  *iter = {index, index->first, -1, nullptr, false, iter->older};
  return iter;
}

tAsynt* iter_next(Iter* iter) {
  element* e = iter->position;
  if (iter->index->type_flag == hash_table)
    e = next_in_hashtable(iter->index->table, &iter->bucket, &iter->position);
  else if (e != iter->index->tail)
    iter->position = e->next;
  else
    e = nullptr;
  if (!e) {
    iter->ended = true;
    return nullptr;
  }
  iter->last_key = e->str;
  return e->index_info.entries;
}

const char* iter_key(const Iter* iter) { return iter->last_key; }

}  // namespace oz
