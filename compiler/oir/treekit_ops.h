// The whole-tree operations, written once for every tree against its schema's tables. Included by the trees' own .cc
// files; what the operations promise is told in the trees' headers (Asynt.h).
//
// Each operation follows the last child of a node by iteration and the others by recursion: recursion follows nesting,
// which the readers bound, and lists of any length cost no stack.
#pragma once

#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Positions.h"
#include "treekit.h"

namespace oz {

// alloc makes a node with this many fields, whose head is clear; shapes are those of the tree's kinds.
template <typename Node, Node* (*alloc)(size_t fields), const TreeShape* shapes>
struct TreeKit {
  const TreeSchema& schema;
  // A field that a tree writes in its own way (null for none): true if it was written.
  bool (*write_special)(FILE* f, const Node* t, const TreeField& field, size_t slot) = nullptr;

  using Slot = Node*;

  // ---- shared by the operations

  const TreeKind& kind_of(const Node* t) const { return schema.kinds[t->yyKind]; }
  static const TreeShape& shape_of(const Node* t) { return shapes[t->yyKind]; }
  bool known(const Node* t) const { return t->yyKind < schema.kind_count; }
  static Slot& child(Node* t, size_t slot) { return tree_raw_slot<Slot>(t, slot); }
  static Node* child(const Node* t, size_t slot) { return tree_raw_slot<Slot>(const_cast<Node*>(t), slot); }
  // Counts the references into the tree: afterwards a node's mark is the number of places that point to it.
  void mark(Node* t) {
    while (t && ++t->yyMark == 1 && known(t)) {
      const TreeShape& k = shape_of(t);
      if (k.child_count == 0) return;
      for (int i = 0; i + 1 < k.child_count; i++) mark(child(t, k.children[i]));
      t = child(t, k.children[k.child_count - 1]);
    }
  }

  // Clears what marks are left below t.
  void clear(Node* t) {
    while (t && t->yyMark != 0) {
      t->yyMark = 0;
      if (!known(t)) return;
      const TreeShape& k = shape_of(t);
      if (k.child_count == 0) return;
      for (int i = 0; i + 1 < k.child_count; i++) clear(child(t, k.children[i]));
      t = child(t, k.children[k.child_count - 1]);
    }
  }

  // ---- copy

  // A node that was copied and can be met again: its mark is its number in this list, above kNoted.
  struct Forwarded {
    Node* old_node;
    Node* new_node;
  };
  std::vector<Forwarded> forwarded{};
  static constexpr uint32_t kNoted = 0x80000000;
  static constexpr size_t kKept = 100000;  // room that is kept from one copy to the next

  // With the references counted first, only nodes that are referred to more than once are noted. Without, all are,
  // which takes one walk less and 16 bytes a node more.
  template <bool kCounted>
  Node* copy(Node* t) {
    Node* result = nullptr;
    if (kCounted) mark(t);
    copy_into<kCounted>(t, &result);
    for (const Forwarded& f : forwarded) f.old_node->yyMark = 0;
    if (forwarded.size() > kKept) forwarded = {};
    forwarded.clear();
    return result;
  }

  void note_copy(Node* t, Node* n) {
    t->yyMark = kNoted + static_cast<uint32_t>(forwarded.size());
    forwarded.push_back({t, n});
  }

  // Copies t and stores the copy's address in *where. Counted, the mark of a node is the number of references to it
  // that are still to be followed.
  template <bool kCounted>
  void copy_into(Node* t, Slot* where) {
    while (t) {
      if (t->yyMark >= kNoted) {
        *where = forwarded[t->yyMark - kNoted].new_node;
        return;
      }
      const TreeShape& k = shape_of(t);
      Node* n = alloc(k.field_count);
      for (size_t i = 0; i < k.field_count; i++) tree_raw_slot<uint64_t>(n, i) = tree_raw_slot<uint64_t>(t, i);
      n->yyKind = t->yyKind;
      if (!kCounted || --t->yyMark > 0) note_copy(t, n);
      *where = n;
      if (k.child_count == 0) return;
      for (int i = 0; i + 1 < k.child_count; i++)
        copy_into<kCounted>(child(t, k.children[i]), &child(n, k.children[i]));
      const size_t last = k.children[k.child_count - 1];
      where = &child(n, last);
      t = child(t, last);
    }
    *where = nullptr;
  }

  // ---- compare

  // Kinds above this one compare equal without a look at their fields.
  static constexpr unsigned kLastCompared = 300;

  bool equal(const Node* a, const Node* b) const {
    for (;;) {
      if (a == b) return true;
      if (!a || !b || a->yyKind != b->yyKind) return false;
      if (a->yyKind > kLastCompared || !known(a)) return true;
      const TreeKind& k = kind_of(a);
      for (size_t i = 0; i < k.field_count; i++)
        if (k.fields[i].type != FieldType::tree && !equal_field(a, b, k.fields[i].type, i)) return false;
      if (k.child_count == 0) return true;
      for (int i = 0; i + 1 < k.child_count; i++)
        if (!equal(child(a, k.children[i]), child(b, k.children[i]))) return false;
      const size_t last = k.children[k.child_count - 1];
      a = child(a, last);
      b = child(b, last);
    }
  }

  static bool equal_field(const Node* a, const Node* b, FieldType type, size_t slot) {
    Node* x = const_cast<Node*>(a);
    Node* y = const_cast<Node*>(b);
    switch (type) {
      case FieldType::tree: return true;
      case FieldType::character: return tree_raw_slot<char>(x, slot) == tree_raw_slot<char>(y, slot);
      case FieldType::text: {
        const string s = tree_raw_slot<string>(x, slot);
        const string u = tree_raw_slot<string>(y, slot);
        return s == u || (s && u && std::strcmp(s, u) == 0);
      }
      case FieldType::position:
        return Compare(tree_raw_slot<tPosition>(x, slot), tree_raw_slot<tPosition>(y, slot)) == 0;
      case FieldType::word4: return tree_raw_slot<uint32_t>(x, slot) == tree_raw_slot<uint32_t>(y, slot);
      case FieldType::word8: return tree_raw_slot<uint64_t>(x, slot) == tree_raw_slot<uint64_t>(y, slot);
    }
    return false;
  }

  // ---- check

  // Whether the child with a number is of the kind that its field declares.
  static bool child_is_good(const TreeKind& k, const Node* t, int number) {
    const Node* c = child(t, k.children[number]);
    return c && c->yyKind >= k.first_kind[number] && c->yyKind <= k.last_kind[number];
  }

  // Whether a node's kind is known and all its children are good.
  bool node_is_good(const Node* t) const {
    if (!known(t)) return false;
    const TreeKind& k = kind_of(t);
    for (int i = 0; i < k.child_count; i++)
      if (!child_is_good(k, t, i)) return false;
    return true;
  }

  // Walks with a number that no node bears and takes the nodes met off *left. Whether they are good, as far as the
  // walk came: it ends when *left is used up.
  bool good_within(const Node* t, uint16_t number, long* left) {
    while (t->yySeen != number) {
      if (--*left < 0) return true;
      const_cast<Node*>(t)->yySeen = number;
      if (!node_is_good(t)) return false;
      const TreeKind& k = kind_of(t);
      if (k.child_count == 0) return true;
      for (int i = 0; i + 1 < k.child_count; i++)
        if (!good_within(child(t, k.children[i]), number, left)) return false;
      t = child(t, k.children[k.child_count - 1]);
    }
    return true;
  }

  bool check(Node* t) {
    mark(t);
    return check_marked(t);
  }

  bool check_marked(Node* t) {
    bool good = t != nullptr;
    while (t && t->yyMark != 0 && known(t)) {
      t->yyMark = 0;
      const TreeKind& k = kind_of(t);
      if (k.child_count == 0) return good;
      for (int i = 0; i < k.child_count; i++) {
        if (child_is_good(k, t, i)) [[likely]]
          continue;
        report_bad_child(t, k.children[i]);
        good = false;
      }
      for (int i = 0; i + 1 < k.child_count; i++) {
        Node* c = child(t, k.children[i]);
        if (c && !check_marked(c)) good = false;
      }
      t = child(t, k.children[k.child_count - 1]);
    }
    return good;
  }

  void report_bad_child(const Node* t, size_t slot) const {
    std::fprintf(stderr, "CheckTree: parent = ");
    write_node(stderr, t);
    std::fprintf(stderr, "\nselector: %s child = ", kind_of(t).fields[slot].name);
    write_node(stderr, child(t, slot));
    std::fprintf(stderr, "\n");
  }

  // ---- dump

  int write_level = 0;  // how many dumps are under way
  unsigned label_count = 0;
  std::unordered_map<const Node*, unsigned> labels{};
  int indent = 0;

  void write(FILE* f, Node* t) {
    const int saved_indent = indent;
    if (write_level++ == 0) {
      label_count = 0;
      labels.clear();
    }
    indent = 0;
    mark(t);
    write_marked(f, t);
    indent = saved_indent;
    write_level--;
  }

  void write_marked(FILE* f, Node* t) {
    const int level_at_entry = indent;
    for (;;) {
      if (!t) {
        std::fprintf(f, " %s\n", schema.null_name);
        break;
      }
      if (t->yyMark == 0) {
        std::fprintf(f, "^%u\n", labels[t]);
        break;
      }
      if (t->yyMark > 1) {
        labels[t] = ++label_count;
        std::fprintf(f, "\n%06u:", label_count);
        for (int i = 8; i <= indent; i++) std::fputc(' ', f);
      } else {
        std::fputc(' ', f);
      }
      t->yyMark = 0;
      indent += 2;
      const TreeKind& k = kind_of(t);
      std::fprintf(f, "%s\n", k.name);
      const int last = k.child_count ? k.children[k.child_count - 1] : -1;
      for (int i = 0; i < k.field_count; i++)
        if (i != last) write_field(f, t, i);
      if (last < 0) break;
      write_selector(f, k.fields[last].name);
      t = child(t, static_cast<size_t>(last));
    }
    indent = level_at_entry;
  }

  void write_selector(FILE* f, const char* name) const { std::fprintf(f, "%*s%-16s = ", indent, "", name); }

  void write_field(FILE* f, Node* t, int slot) {
    const TreeField& field = kind_of(t).fields[slot];
    write_selector(f, field.name);
    if (field.type == FieldType::tree) {
      write_marked(f, child(t, static_cast<size_t>(slot)));
      return;
    }
    write_value(f, t, field, static_cast<size_t>(slot));
    std::fputc('\n', f);
  }

  static void write_bytes(FILE* f, const void* p, size_t n) {
    const unsigned char* bytes = static_cast<const unsigned char*>(p);
    for (size_t i = 0; i < n; i++) std::fprintf(f, "%02x ", bytes[i]);
  }

  void write_value(FILE* f, const Node* t, const TreeField& field, size_t slot) const {
    Node* node = const_cast<Node*>(t);
    if (write_special && write_special(f, t, field, slot)) return;
    switch (field.type) {
      case FieldType::tree: {
        Node* c = child(t, slot);
        if (c)
          write_bytes(f, &c, sizeof c);
        else
          std::fputs(schema.null_name, f);
        return;
      }
      case FieldType::character: std::fputc(tree_raw_slot<char>(node, slot) ? 'T' : 'F', f); return;
      case FieldType::text: {
        const string s = tree_raw_slot<string>(node, slot);
        if (s) std::fputs(s, f);
        return;
      }
      case FieldType::position: WritePosition(f, tree_raw_slot<tPosition>(node, slot)); return;
      case FieldType::word4: write_bytes(f, &tree_raw_slot<uint32_t>(node, slot), 4); return;
      case FieldType::word8: write_bytes(f, &tree_raw_slot<uint64_t>(node, slot), 8); return;
    }
  }

  // The kind's name, then each field on its own line.
  void write_node(FILE* f, const Node* t) const {
    if (!t) {
      std::fprintf(f, "%s\n", schema.null_name);
      return;
    }
    const TreeKind& k = kind_of(t);
    std::fprintf(f, "%s\n", k.name);
    for (size_t i = 0; i < k.field_count; i++) {
      std::fprintf(f, "%-16s = ", k.fields[i].name);
      write_value(f, t, k.fields[i], i);
      std::fputc('\n', f);
    }
  }

  // ---- browser

  // A line of standard input without its line end; false at the end of the input.
  static bool read_line(std::string* line) {
    line->clear();
    int c;
    while ((c = std::getchar()) != EOF && c != '\n') line->push_back(static_cast<char>(c));
    return c != EOF || !line->empty();
  }

  // The slot of the child field that a line names, or -1.
  int named_child(const Node* t, const std::string& line) const {
    const TreeKind& k = kind_of(t);
    for (int i = 0; i < k.child_count; i++)
      if (line == k.fields[k.children[i]].name) return k.children[i];
    return -1;
  }

  // The way down from the root is kept on a list: "parent" goes one step back, and past the root it ends.
  void query(Node* t) {
    if (!t) return;
    std::vector<Node*> path{t};
    std::string line;
    write_node(stdout, t);
    for (;;) {
      std::fputs("? ", stdout);
      std::fflush(stdout);
      if (!read_line(&line) || line == "quit") return;
      if (line == "parent") {
        path.pop_back();
        if (path.empty()) return;
        write_node(stdout, path.back());
        continue;
      }
      const int slot = named_child(path.back(), line);
      if (slot < 0) continue;
      Node* c = child(path.back(), static_cast<size_t>(slot));
      if (!c) continue;
      path.push_back(c);
      write_node(stdout, c);
    }
  }

  // ---- release

  void release(Node* t) {
    mark(t);
    release_marked(t);
  }

  void release_marked(Node* t) {
    while (t && t->yyMark != 0) {
      t->yyMark--;
      if (!known(t)) return;
      const TreeShape& k = shape_of(t);
      if (k.child_count == 0) return;
      for (int i = 0; i + 1 < k.child_count; i++) {
        Node* c = child(t, k.children[i]);
        child(t, k.children[i]) = nullptr;
        release_marked(c);
      }
      const size_t last = k.children[k.child_count - 1];
      Node* c = child(t, last);
      child(t, last) = nullptr;
      t = c;
    }
  }

  // ---- traversals

  void traverse_td(Node* t, void (*proc)(Node*)) {
    mark(t);
    td_marked(t, proc);
  }

  void td_marked(Node* t, void (*proc)(Node*)) {
    while (t && t->yyMark != 0) {
      t->yyMark = 0;
      proc(t);
      if (!known(t)) return;
      const TreeShape& k = shape_of(t);
      if (k.child_count == 0) return;
      for (int i = 0; i + 1 < k.child_count; i++) td_marked(child(t, k.children[i]), proc);
      t = child(t, k.children[k.child_count - 1]);
    }
  }

  // Nodes that can keep a mark when the walk is over: met in a subtree without calls and referred to elsewhere too, or
  // below a node that was replaced.
  std::vector<Node*> leftovers{};

  void traverse_td2(Slot* t, char (*proc)(Slot*)) {
    mark(*t);
    td2_marked(t, proc);
    for (Node* n : leftovers) clear(n);
    leftovers.clear();
  }

  void td2_marked(Slot* where, char (*proc)(Slot*)) {
    while (*where && (*where)->yyMark != 0) {
      Node* before = *where;
      before->yyMark = 0;
      const bool descend = proc(where) != 0;
      Node* t = *where;
      if (t != before) {
        keep_children(before);
        if (!t) return;
        t->yyMark = 0;
      }
      if (!descend) {
        skip_children(t);
        return;
      }
      if (!known(t)) return;
      const TreeShape& k = shape_of(t);
      if (k.child_count == 0) return;
      for (int i = 0; i + 1 < k.child_count; i++) td2_marked(&child(t, k.children[i]), proc);
      where = &child(t, k.children[k.child_count - 1]);
    }
  }

  // Counts the marks below t down, without calls.
  void skip_children(Node* t) {
    for (;;) {
      if (!known(t)) return;
      const TreeShape& k = shape_of(t);
      if (k.child_count == 0) return;
      for (int i = 0; i + 1 < k.child_count; i++) {
        Node* c = child(t, k.children[i]);
        if (count_down(c)) skip_children(c);
      }
      t = child(t, k.children[k.child_count - 1]);
      if (!count_down(t)) return;
    }
  }

  // Takes one reference off a node's mark; true if that was the last one, so that the subtree is to be skipped as well.
  bool count_down(Node* t) {
    if (!t || t->yyMark == 0) return false;
    if (--t->yyMark == 0) return true;
    leftovers.push_back(t);
    return false;
  }

  void keep_children(Node* t) {
    if (!known(t)) return;
    const TreeShape& k = shape_of(t);
    for (int i = 0; i < k.child_count; i++)
      if (child(t, k.children[i])) leftovers.push_back(child(t, k.children[i]));
  }

  // Walks with a number that no node bears.
  void walk(Slot* where, uint16_t number, char (*proc)(Slot*)) {
    while (*where && (*where)->yySeen != number) {
      Node* const t = *where;
      t->yySeen = number;
      const bool descend = proc(where) != 0;
      if (*where != t) {
        if (*where) (*where)->yySeen = number;
        return;
      }
      if (!descend || !known(t)) return;
      const TreeShape& k = shape_of(t);
      if (k.child_count == 0) return;
      for (int i = 0; i + 1 < k.child_count; i++) walk(&child(t, k.children[i]), number, proc);
      where = &child(t, k.children[k.child_count - 1]);
    }
  }

  // ---- lists

  Node* reverse(Node* list) const {
    if (!list || !known(list) || !kind_of(list).cell) return list;
    const size_t tail = kind_of(list).children[1];
    const unsigned cell_kind = list->yyKind;
    Node* done = nullptr;
    Node* rest = list;
    while (rest && rest->yyKind == cell_kind) {
      Node* next = child(rest, tail);
      child(rest, tail) = done;
      done = rest;
      rest = next;
    }
    child(list, tail) = rest;  // the terminator
    return done;
  }

  // ---- for tests

  bool marks_are_zero(const Node* t) const {
    std::unordered_set<const Node*> seen;
    std::vector<const Node*> todo{t};
    while (!todo.empty()) {
      const Node* n = todo.back();
      todo.pop_back();
      if (!n || !known(n) || !seen.insert(n).second) continue;
      if (n->yyMark != 0) return false;
      const TreeKind& k = kind_of(n);
      for (int i = 0; i < k.child_count; i++) todo.push_back(child(n, k.children[i]));
    }
    return true;
  }
};

}  // namespace oz
