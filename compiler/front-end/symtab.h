// Tables of names: from text to symbol information, made so that tables can share what they have in common.
//
// A class sees its own names and those of all its ancestors. Copying them into every class would cost the square of the
// length of a chain of classes; uniting two tables here costs no more than the smaller one and shares the rest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "treefwd.h"

namespace oz {

struct SymtabNode;
using Symtab = SymtabNode*;  // null is the empty table

// The storage of tables; they live until their pool is cleared.
struct SymtabPool {
  std::vector<char*> blocks;
  size_t block = 0;  // blocks in use
  size_t used = 0;   // bytes in use of the last of them
};

// Forgets all tables of the pool; its memory is kept for new ones.
void symtab_clear(SymtabPool* pool);

uint32_t symtab_hash(const char* name);

// The symbol information that a name is bound to, or null. hash is symtab_hash(name).
tAsynt symtab_find(Symtab table, uint32_t hash, const char* name);

// The place of a name's symbol information, made with null in it if the name is new; the caller fills it. It is changed
// in place: no other table may share parts of this one. The text of the name is not copied.
tAsynt* symtab_place(SymtabPool* pool, Symtab* table, uint32_t hash, const char* name);

// All names of both tables, which stay as they are. Of a name in both the first table's binding is taken; clash, if not
// null, is told of the two symbol informations if they differ.
Symtab symtab_unite(SymtabPool* pool, Symtab first, Symtab second, void (*clash)(tAsynt taken, tAsynt left));

}  // namespace oz
