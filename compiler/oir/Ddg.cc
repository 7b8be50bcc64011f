// The graph's pools and its operations.
//
// What the kit does by recursion and by following the last child is done here with a list of what is still to be done:
// a chain of assignments is a path as long as itself in either direction.

#include "Ddg.h"

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Memory.h"
#include "ememory.h"
#include "ozerrors.h"
#include "treekit_ops.h"
#include "unparse.h"

namespace oz {

namespace {

#ifndef OZ_SANITIZE
constexpr size_t kPoolSize = 20480;
char* pool_free = nullptr;
char* pool_end = nullptr;
#endif

char* alloc_node(size_t size) {
#ifdef OZ_SANITIZE
  char* const p = static_cast<char*>(std::malloc(size));
#else
  if (static_cast<size_t>(pool_end - pool_free) < size) {
    pool_free = Alloc(kPoolSize);
    pool_end = pool_free ? pool_free + kPoolSize : nullptr;
  }
  char* const p = pool_free;
  if (p) pool_free += size;
#endif
  if (!p) die_msg("Out of memory. malloc failed.");
  return p;
}

tDdg alloc_for_copy(size_t fields) { return Ddg_NewRaw(kNoDdg, fields); }

// A symbol is told by its name; its own tree belongs to the other family.
bool write_symbol(FILE* f, const Ddg_Node* t, const TreeField& field, size_t slot) {
  if (Ddg_Kind(t) != kNode || std::string(field.name) != "SymInfo") return false;
  const tAsynt si = tree_raw_slot<tAsynt>(const_cast<tDdg>(t), slot);
  if (si) std::fputs(unparse_string(mSymbol(si)), f);
  return true;
}

// Only for what looks at one node or walks no path.
TreeKit<Ddg_Node, alloc_for_copy, Ddg_Shapes> kit{Ddg_Schema, write_symbol};

const TreeKind& kind_of(const Ddg_Node* t) { return Ddg_Schema.kinds[t->yyKind]; }
const TreeKind& kind_of_number(unsigned kind) { return Ddg_Schema.kinds[kind]; }
bool known(const Ddg_Node* t) { return t->yyKind < kDdgKinds; }

tDdg& child(tDdg t, int number) { return tree_raw_slot<tDdg>(t, kind_of(t).children[number]); }

// Puts the children on the list of what is to be done, so that the first is taken off first.
void push_children(tDdg t, std::vector<tDdg>* todo) {
  if (!known(t)) return;
  for (int i = kind_of(t).child_count - 1; i >= 0; i--)
    if (child(t, i)) todo->push_back(child(t, i));
}

// All nodes that can be reached, in the order of a walk from above, with the references to each counted in its mark.
std::vector<tDdg> mark(tDdg t) {
  std::vector<tDdg> nodes, todo;
  if (t) todo.push_back(t);
  while (!todo.empty()) {
    const tDdg n = todo.back();
    todo.pop_back();
    if (++n->yyMark > 1) continue;
    nodes.push_back(n);
    push_children(n, &todo);
  }
  return nodes;
}

void clear(const std::vector<tDdg>& nodes) {
  for (tDdg n : nodes) n->yyMark = 0;
}

}  // namespace

tDdg Ddg_NewRaw(unsigned kind, size_t fields) {
  const tDdg t = reinterpret_cast<tDdg>(alloc_node(sizeof(TreeNode) + 8 * fields));
  t->yyKind = static_cast<uint16_t>(kind);
  t->yySeen = 0;
  t->yyMark = 0;
  return t;
}

void BeginDdg() {}
void CloseDdg() {}

tDdg ReverseDdg(tDdg list) { return kit.reverse(list); }
void QueryDdg(tDdg t) { kit.query(t); }
void WriteDdgNode(FILE* f, const Ddg_Node* t) { kit.write_node(f, t); }
bool DdgMarksAreZero(const Ddg_Node* t) { return kit.marks_are_zero(t); }

// ---- copy, compare, check, release

tDdg CopyDdg(tDdg t) {
  if (!t) return nullptr;
  const std::vector<tDdg> nodes = mark(t);
  std::unordered_map<tDdg, tDdg> copies;
  for (tDdg n : nodes) {
    const size_t fields = kind_of(n).field_count;
    const tDdg c = Ddg_NewRaw(n->yyKind, fields);
    for (size_t i = 0; i < fields; i++) tree_raw_slot<uint64_t>(c, i) = tree_raw_slot<uint64_t>(n, i);
    copies[n] = c;
  }
  for (const auto& [original, c] : copies)
    for (int i = 0; i < kind_of(c).child_count; i++)
      if (child(c, i)) child(c, i) = copies[child(c, i)];
  clear(nodes);
  return copies[t];
}

namespace {

// Whether two nodes have the same kind and the same values in their own fields.
bool same_values(const Ddg_Node* a, const Ddg_Node* b) {
  if (a->yyKind != b->yyKind) return false;
  const TreeKind& k = kind_of(a);
  for (size_t i = 0; i < k.field_count; i++)
    if (k.fields[i].type != FieldType::tree && !kit.equal_field(a, b, k.fields[i].type, i)) return false;
  return true;
}

}  // namespace

// A pair that is met again is equal unless some other pair is not.
bool IsEqualDdg(const Ddg_Node* a, const Ddg_Node* b) {
  using Pair = std::pair<tDdg, tDdg>;
  std::set<Pair> met;
  std::vector<Pair> todo{{const_cast<tDdg>(a), const_cast<tDdg>(b)}};
  while (!todo.empty()) {
    const Pair p = todo.back();
    todo.pop_back();
    if (p.first == p.second || !met.insert(p).second) continue;
    if (!p.first || !p.second || !same_values(p.first, p.second)) return false;
    for (int i = 0; i < kind_of(p.first).child_count; i++) todo.emplace_back(child(p.first, i), child(p.second, i));
  }
  return true;
}

bool CheckDdg(tDdg t) {
  const std::vector<tDdg> nodes = mark(t);
  bool good = t != nullptr;
  for (tDdg n : nodes) {
    if (!known(n)) continue;
    for (int i = 0; i < kind_of(n).child_count; i++) {
      if (kit.child_is_good(kind_of(n), n, i)) continue;
      kit.report_bad_child(n, kind_of(n).children[i]);
      good = false;
    }
  }
  clear(nodes);
  return good;
}

void ReleaseDdg(tDdg t) {
  const std::vector<tDdg> nodes = mark(t);
  for (tDdg n : nodes)
    for (int i = 0; known(n) && i < kind_of(n).child_count; i++) child(n, i) = nullptr;
  clear(nodes);
}

// ---- traversals

// Nodes that were there when the walk began have a mark until they are visited.
void TraverseDdgTD(tDdg t, void (*proc)(tDdg)) {
  const std::vector<tDdg> nodes = mark(t);
  std::vector<tDdg> todo;
  if (t) todo.push_back(t);
  while (!todo.empty()) {
    const tDdg n = todo.back();
    todo.pop_back();
    if (n->yyMark == 0) continue;
    n->yyMark = 0;
    proc(n);
    push_children(n, &todo);
  }
  clear(nodes);
}

void TraverseDdgBU(tDdg t, void (*proc)(tDdg)) {
  const std::vector<tDdg> nodes = mark(t);
  std::vector<std::pair<tDdg, int>> path;  // and the number of the next child
  if (t) {
    t->yyMark = 0;
    path.emplace_back(t, 0);
  }
  while (!path.empty()) {
    auto& [n, next] = path.back();
    if (!known(n) || next == kind_of(n).child_count) {
      proc(n);
      path.pop_back();
      continue;
    }
    const tDdg c = child(n, next++);
    if (!c || c->yyMark == 0) continue;
    c->yyMark = 0;
    path.emplace_back(c, 0);
  }
  clear(nodes);
}

void TraverseDdgTD2(tDdg* t, char (*proc)(tDdg*)) {
  const std::vector<tDdg> nodes = mark(*t);
  std::vector<tDdg*> todo{t};
  while (!todo.empty()) {
    tDdg* const where = todo.back();
    todo.pop_back();
    if (!*where || (*where)->yyMark == 0) continue;
    (*where)->yyMark = 0;
    if (!proc(where) || !*where || !known(*where)) continue;
    (*where)->yyMark = 0;
    for (int i = kind_of(*where).child_count - 1; i >= 0; i--) todo.push_back(&child(*where, i));
  }
  clear(nodes);
}

// ---- dump

namespace {

// A node whose fields are being written.
struct Level {
  tDdg node;
  int slot;    // the next field; the last tree field comes behind all others
  int indent;  // of the fields
};

struct Dump {
  FILE* f;
  std::vector<Level> levels{};
  std::unordered_map<tDdg, unsigned> labels{};
};

int last_tree_slot(tDdg t) { return kind_of(t).child_count ? kind_of(t).children[kind_of(t).child_count - 1] : -1; }

// The head of a node, or what stands for a node that has none of its own here.
void write_head(Dump* d, tDdg t, int indent) {
  if (!t) {
    std::fprintf(d->f, " %s\n", Ddg_Schema.null_name);
    return;
  }
  if (t->yyMark == 0) {
    std::fprintf(d->f, "^%u\n", d->labels[t]);
    return;
  }
  if (t->yyMark > 1) {
    const unsigned label = static_cast<unsigned>(d->labels.size()) + 1;
    d->labels[t] = label;
    std::fprintf(d->f, "\n%06u:%*s", label, indent > 7 ? indent - 7 : 0, "");
  } else {
    std::fputc(' ', d->f);
  }
  t->yyMark = 0;
  std::fprintf(d->f, "%s\n", kind_of(t).name);
  d->levels.push_back({t, 0, indent + 2});
}

void write_selector(const Dump& d, const Level& level, int slot) {
  std::fprintf(d.f, "%*s%-16s = ", level.indent, "", kind_of(level.node).fields[slot].name);
}

// Writes the next field of the innermost node, or leaves that node.
void write_step(Dump* d) {
  Level& level = d->levels.back();
  const tDdg t = level.node;
  const TreeKind& k = kind_of(t);
  const int last = last_tree_slot(t);
  if (level.slot == last) level.slot++;
  if (level.slot >= k.field_count) {
    const Level done = level;
    d->levels.pop_back();
    if (last < 0) return;
    write_selector(*d, done, last);
    return write_head(d, tree_raw_slot<tDdg>(t, static_cast<size_t>(last)), done.indent);
  }
  const int slot = level.slot++;
  write_selector(*d, level, slot);
  if (k.fields[slot].type == FieldType::tree)
    return write_head(d, tree_raw_slot<tDdg>(t, static_cast<size_t>(slot)), level.indent);
  kit.write_value(d->f, t, k.fields[slot], static_cast<size_t>(slot));
  std::fputc('\n', d->f);
}

}  // namespace

void WriteDdg(FILE* f, tDdg t) {
  const std::vector<tDdg> nodes = mark(t);
  Dump d{f};
  write_head(&d, t, 0);
  while (!d.levels.empty()) write_step(&d);
  clear(nodes);
}

// ---- the way back

namespace {

struct Reading {
  FILE* f;
  std::vector<Level> levels{};
  std::unordered_map<unsigned long, tDdg> labels{};
  bool good = true;
};

// A line without its line end; empty at the end of the file.
std::string read_line(FILE* f) {
  std::string line;
  int c;
  while ((c = std::getc(f)) != EOF && c != '\n') line.push_back(static_cast<char>(c));
  return line;
}

std::string without_blanks(const std::string& text) {
  const size_t start = text.find_first_not_of(' ');
  return start == std::string::npos ? "" : text.substr(start);
}

// A new node of a named kind, whose fields come next.
tDdg begin_node(Reading* r, const std::string& name) {
  for (unsigned kind = 1; kind < kDdgKinds; kind++) {
    if (name != kind_of_number(kind).name) continue;
    const tDdg t = Ddg_New(kind, kind_of_number(kind).field_count);
    r->levels.push_back({t, 0, 0});
    return t;
  }
  r->good = name == Ddg_Schema.null_name;
  return nullptr;
}

// What stands behind a selector: a reference, a node, or nothing, and then a labelled node on the next line.
tDdg read_head(Reading* r, const std::string& text) {
  if (text.starts_with('^')) {
    const auto found = r->labels.find(std::strtoul(text.c_str() + 1, nullptr, 10));
    r->good = found != r->labels.end();
    return r->good ? found->second : nullptr;
  }
  if (!without_blanks(text).empty()) return begin_node(r, without_blanks(text));
  const std::string line = read_line(r->f);
  const size_t colon = line.find(':');
  r->good = colon != std::string::npos;
  if (!r->good) return nullptr;
  const tDdg t = begin_node(r, without_blanks(line.substr(colon + 1)));
  r->labels[std::strtoul(line.c_str(), nullptr, 10)] = t;
  return t;
}

// The bytes of a value in the order of the dump.
void read_bytes(const std::string& text, unsigned char* bytes, int n) {
  const char* p = text.c_str();
  for (int i = 0; i < n; i++) {
    char* end;
    bytes[i] = static_cast<unsigned char>(std::strtoul(p, &end, 16));
    p = end;
  }
}

tAsynt symbol_named(const std::string& name) {
  char* const text = static_cast<char*>(emalloc(name.size() + 1));
  std::memcpy(text, name.c_str(), name.size() + 1);
  return mAbsoluteSymbol(mNoType(), NoPosition, text, mExpression0());
}

void read_value(const std::string& text, tDdg t, int slot) {
  const TreeField& field = kind_of(t).fields[slot];
  uint64_t& value = tree_raw_slot<uint64_t>(t, static_cast<size_t>(slot));
  if (std::string(field.name) == "SymInfo")
    value = reinterpret_cast<uint64_t>(text.empty() ? nullptr : symbol_named(text));
  else if (std::string(field.name) != "Op")
    read_bytes(text, reinterpret_cast<unsigned char*>(&value), field.type == FieldType::word4 ? 4 : 8);
}

// Reads the next field of the innermost node, or leaves that node.
void read_step(Reading* r) {
  Level& level = r->levels.back();
  const tDdg t = level.node;
  const int last = last_tree_slot(t);
  if (level.slot == last) level.slot++;
  const bool rest = level.slot >= kind_of(t).field_count;
  const int slot = rest ? last : level.slot++;
  if (rest) r->levels.pop_back();
  if (slot < 0) return;
  const TreeField& field = kind_of(t).fields[slot];
  const std::string line = without_blanks(read_line(r->f));
  const size_t sign = line.find(" = ");
  r->good = sign != std::string::npos && line.substr(0, line.find(' ')) == field.name;
  if (!r->good) return;
  if (field.type == FieldType::tree)
    tree_raw_slot<tDdg>(t, static_cast<size_t>(slot)) = read_head(r, line.substr(sign + 3));
  else
    read_value(line.substr(sign + 3), t, slot);
}

}  // namespace

tDdg ReadDdg(FILE* f) {
  Reading r{f};
  const tDdg t = read_head(&r, read_line(f));
  while (r.good && !r.levels.empty()) read_step(&r);
  return r.good ? t : nullptr;
}

}  // namespace oz
