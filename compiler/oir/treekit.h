// The half of a tree kit that is the same for every tree: nodes, the schema's tables, and the whole-tree operations
// written once against those tables.
//
// A node is a head of 8 bytes and one 8-byte slot per field. A whole-tree operation first counts, in the node marks,
// how often each node is referred to; it then clears each mark as it passes, so that between operations every mark is
// 0. A copy keeps in the marks which node became which. A walk that replaces nothing needs no marks: it leaves its own
// number in the nodes, and so passes each node once.
// All operations share module state: none may run inside another, except that a dump may be started within a dump.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "Positions.h"
#include "treefwd.h"

namespace oz {

// What every node begins with.
struct TreeNode {
  uint16_t yyKind;  // number of the node's kind
  uint16_t yySeen;  // number of the walk (see walk) that met the node last, 0 before the first
  uint32_t yyMark;  // what the operation at work counts or numbers, 0 between operations
};

// How the slot of a field is read and written in a dump.
enum class FieldType : uint8_t {
  tree,       // a child
  character,  // a truth value
  text,       // characters, null counts as empty
  position,   // tPosition
  word4,      // 4 bytes: int, unsigned, an enumeration
  word8,      // 8 bytes: double, a pointer
};

struct TreeField {
  const char* name;
  FieldType type;
  uint16_t kind;  // for a child: the kind that it must have, or a descendant of it; 0 for any tree
};

inline constexpr int kMaxChildren = 6;

struct TreeKind {
  const char* name;
  uint16_t last;                      // number of the last descendant
  uint8_t field_count;                // fields, each one slot
  uint8_t child_count;                // how many of them are children
  bool cell;                          // a list cell: the last child is the tail
  uint8_t children[kMaxChildren];     // their slots, ascending
  uint16_t first_kind[kMaxChildren];  // what each child may be: a kind from here
  uint16_t last_kind[kMaxChildren];   // to here
  const TreeField* fields;
};

// What a walk needs of a kind, in one word.
struct TreeShape {
  uint8_t field_count;
  uint8_t child_count;
  uint8_t children[kMaxChildren];
};
static_assert(sizeof(TreeShape) == 8);

struct TreeSchema {
  const char* tree_name;  // "Asynt"
  const char* null_name;  // what a dump writes for a null child, "NoAsynt"
  int kind_count;
  const TreeKind* kinds;
};

// The slot of a field whose kind the caller knows, without a check.
template <typename T, typename Node>
inline T& tree_raw_slot(Node* t, size_t slot) {
  static_assert(sizeof(T) <= 8);
  return *reinterpret_cast<T*>(reinterpret_cast<char*>(t) + sizeof(TreeNode) + 8 * slot);
}

// The internal-error exit of a field access to a null node or to a node of the wrong kind.
[[noreturn, gnu::cold]] void tree_access_failure(const char* file, int line);

// The slot of a field; the node's kind must lie in first..last. The check stays in release builds.
template <typename T, typename Node>
inline T& tree_slot(Node* t, unsigned first, unsigned last, size_t slot, const char* file, int line) {
  if (t == nullptr || t->yyKind - first > last - first) [[unlikely]]
    tree_access_failure(file, line);
  return tree_raw_slot<T>(t, slot);
}

// Bytes of a node of a kind.
inline size_t tree_node_size(const TreeKind& k) { return sizeof(TreeNode) + 8 * size_t{k.field_count}; }

}  // namespace oz
