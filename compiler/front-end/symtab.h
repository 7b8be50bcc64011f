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
  std::vector<SymtabNode*> blocks;
  size_t used = 0;  // nodes in use, over all blocks
};

// Forgets all tables of the pool; its memory is kept for new ones.
void symtab_clear(SymtabPool* pool);

uint64_t symtab_hash(const char* name);

// The symbol information that a name is bound to, or null. hash is symtab_hash(name).
tAsynt symtab_find(Symtab table, uint64_t hash, const char* name);

// Binds the Name of a NamedSymbol in place: no other table may share parts of this one. An earlier binding stays.
// Result: the symbol information that the name is bound to.
tAsynt symtab_add(SymtabPool* pool, Symtab* table, uint64_t hash, tAsynt syminfo);

// All names of both tables, which stay as they are. Of a name in both the first table's binding is taken; clash, if not
// null, is told of the two symbol informations if they differ.
Symtab symtab_unite(SymtabPool* pool, Symtab first, Symtab second, void (*clash)(tAsynt taken, tAsynt left));

}  // namespace oz
