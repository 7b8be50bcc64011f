// One walk over the field table; symbols, calls and constants have a short form.

#include "tree_text.h"

#include <cstring>

#include "index.h"

namespace oz {
namespace {

// What the walk needs to know everywhere.
struct Writer {
  std::string out;
  bool positions;
};

void write(Writer* w, tAsynt t);

const TreeKind& kind_of(tAsynt t) { return Asynt_Schema.kinds[t->yyKind]; }

tAsynt child(tAsynt t, size_t slot) { return tree_raw_slot<tAsynt>(t, slot); }

void write_position(Writer* w, tPosition p) {
  if (w->positions) w->out += '@' + std::to_string(p.Line) + ',' + std::to_string(p.Column);
}

// Cells are named X1, terminators X0.
bool is_cell(tAsynt t) {
  const std::string name = kind_of(t).name;
  return kind_of(t).cell && name.back() == '1';
}

bool is_list(tAsynt t) {
  if (!t) return false;
  const std::string name = kind_of(t).name;
  return is_cell(t) || (name.back() == '0' && kind_of(t).field_count == 0);
}

// The items of a list; a tail that is no list shows.
void write_items(Writer* w, tAsynt list) {
  const char* separator = "";
  for (; is_list(list) && is_cell(list); list = child(list, 1)) {
    w->out += separator;
    write(w, child(list, 0));
    separator = ",";
  }
  if (!is_list(list)) {
    w->out += '|';
    write(w, list);
  }
}

void write_quoted(Writer* w, string text) { w->out += '"' + std::string(text ? text : "") + '"'; }

void write_attributes(Writer* w, const Index* attributes) {
  if (!attributes) return;
  w->out += '{';
  const char* separator = "";
  Iter* iter = start_iter(attributes);
  while (tAsynt* entries = iter_next(iter)) {
    w->out += std::string(separator) + iter_key(iter) + '=';
    write(w, entries[0]);
    separator = ",";
  }
  w->out += '}';
}

void write_type(Writer* w, tAsynt type) {
  if (Asynt_Kind(type) == kNoType) return;
  w->out += ':';
  write(w, type);
}

void write_symbol(Writer* w, tAsynt symbol) {
  const tAsynt info = child(symbol, 0);
  if (Asynt_Kind(info) == kTempSymbol || Asynt_Kind(info) == kOutParam) {
    const bool temp = Asynt_Kind(info) == kTempSymbol;
    w->out += (temp ? "T" : "O") + std::to_string(temp ? TempSymbol_Number(info) : OutParam_Number(info));
    return;
  }
  if (!Asynt_IsType(info, kNamedSymbol)) {
    w->out += '<';
    write(w, child(info, 2));
    write_type(w, SymInfo_Type(info));
    w->out += '>';
    return;
  }
  const bool predefined = Asynt_Kind(SymInfo_Type(info)) == kPreDef;
  if (predefined) w->out += '%';
  if (Asynt_Kind(info) != kSimpleSymbol)
    for (tAsynt c = child(info, 3); is_cell(c); c = child(c, 1)) {
      write(w, child(c, 0));
      w->out += '`';
    }
  w->out += NamedSymbol_Name(info);
  write_position(w, SymInfo_Pos(info));
  if (!predefined) write_type(w, SymInfo_Type(info));
}

void write_call(Writer* w, tAsynt call) {
  const bool simple = Asynt_Kind(call) == kSimpleFFE;
  if (!simple) w->out += '(';
  write(w, child(call, 1));
  if (!simple) w->out += ')';
  w->out += '[';
  write_items(w, child(call, 0));
  w->out += ']';
}

void write_field(Writer* w, tAsynt t, const TreeField& field, size_t slot, bool only) {
  switch (field.type) {
    case FieldType::tree:
      if (!is_list(child(t, slot))) return write(w, child(t, slot));
      if (!only) w->out += '{';
      write_items(w, child(t, slot));
      if (!only) w->out += '}';
      return;
    case FieldType::character: w->out += tree_raw_slot<char>(t, slot) ? '1' : '0'; return;
    case FieldType::text: return write_quoted(w, tree_raw_slot<string>(t, slot));
    case FieldType::word4: w->out += std::to_string(tree_raw_slot<int>(t, slot)); return;
    case FieldType::position:
    case FieldType::word8: w->out += '?'; return;
  }
}

void write_node(Writer* w, tAsynt t) {
  const TreeKind& kind = kind_of(t);
  w->out += kind.name;
  const bool has_position = Asynt_IsType(t, kOperator);
  if (has_position) write_position(w, PosConv_Pos(child(t, 0)));
  const size_t first = has_position ? 1 : 0;
  if (kind.field_count == first) return;
  w->out += '[';
  for (size_t i = first; i < kind.field_count; i++) {
    if (i > first) w->out += ',';
    write_field(w, t, kind.fields[i], i, kind.field_count == first + 1);
  }
  w->out += ']';
}

void write(Writer* w, tAsynt t) {
  const Asynt_tKind kind = Asynt_Kind(t);
  if (!t) {
    w->out += "null";
  } else if (kind == kSymbol) {
    write_symbol(w, t);
  } else if (kind == kSimpleFFE || kind == kComplexFFE) {
    write_call(w, t);
  } else if (kind == kExactIntConst || kind == kExactRealConst) {
    w->out += tree_raw_slot<string>(t, 0);
  } else if (kind == kIntConst) {
    w->out += std::to_string(tree_raw_slot<int>(t, 0));
  } else if (kind == kStringConst) {
    write_quoted(w, tree_raw_slot<string>(t, 0));
  } else if (Asynt_IsType(t, kBasicType)) {
    const std::string name = Asynt_NodeName(kind);
    w->out += name.substr(0, name.find("Type")) + (name.back() == 's' ? "_s" : "");
    write_attributes(w, BasicType_attributes(t));
  } else if (is_list(t)) {
    w->out += '{';
    write_items(w, t);
    w->out += '}';
  } else {
    write_node(w, t);
  }
}

}  // namespace

std::string tree_text(tAsynt t, bool positions) {
  Writer w{"", positions};
  write(&w, t);
  return w.out;
}

}  // namespace oz
