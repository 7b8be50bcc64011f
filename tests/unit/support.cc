// Trees are written and read by walks over the field table: a kind's name is followed by its fields.

#include "support.h"

#include <cctype>
#include <cstring>
#include <functional>

#include "ffparse.h"
#include "veritrans.h"

namespace oz {

// ---- tables and texts

void bad_test(const std::string& what) {
  std::fprintf(stderr, "bad text for a test: %s\n", what.c_str());
  std::abort();
}

namespace {

std::string cell_of(std::string text) {
  text.erase(0, text.find_first_not_of(' '));
  text.erase(text.find_last_not_of(' ') + 1);
  std::string out;
  for (size_t i = 0; i < text.size(); i++) {
    if (text[i] != '\\') {
      out += text[i];
      continue;
    }
    const char c = text[++i];
    if (!c || !std::strchr("ns\\", c)) bad_test(text);
    out += c == 'n' ? '\n' : c == 's' ? ' ' : c;
  }
  return out;
}

std::vector<std::string> split(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  size_t at = 0;
  for (size_t end; (end = text.find(separator, at)) != std::string::npos; at = end + separator.size())
    parts.push_back(text.substr(at, end - at));
  parts.push_back(text.substr(at));
  return parts;
}

}  // namespace

std::vector<std::vector<std::string>> table_rows(const char* text) {
  std::vector<std::vector<std::string>> rows;
  std::string open;  // a line that goes on
  for (std::string line : split(text, "\n")) {
    line.erase(0, line.find_first_not_of(' '));
    if (line.starts_with("//") && open.empty()) continue;
    if (line.ends_with("\\") && !line.ends_with("\\\\")) {
      open += line.substr(0, line.size() - 1);
      continue;
    }
    for (const std::string& row : split(open + line, "   ")) {
      if (row.find_first_not_of(' ') == std::string::npos) continue;
      rows.emplace_back();
      for (const std::string& cell : split(row, "-->")) rows.back().push_back(cell_of(cell));
    }
    open.clear();
  }
  return rows;
}

std::vector<std::string> words(const std::string& text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), {}};
}

std::string repeated(const std::string& text, size_t count) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

std::string lines_of(const std::string& text) {
  std::string out;
  for (const std::string& line : split(text, "\n")) {
    const size_t first = line.find_first_not_of(' ');
    if (first != std::string::npos) out += (out.empty() ? "" : " | ") + line.substr(first);
  }
  return out;
}

std::string short_messages(const std::string& text) {
  std::istringstream lines(text);
  std::string out;
  size_t length = 0;
  for (std::string line; std::getline(lines, line);) {
    std::string start = out.empty() ? "" : " | ";
    unsigned row, column;
    int head = 0;
    if (std::sscanf(line.c_str(), "%u,%u: %n", &row, &column, &head) == 2 && head > 0) {
      start += line[static_cast<size_t>(head)];
      start += (row || column ? std::to_string(row) + ',' + std::to_string(column) : "") + ' ';
      line = line.substr(static_cast<size_t>(head) + std::strlen("Error       "));
    }
    out += length >= 250 ? line.substr(3) : start + line;
    length = line.size();
  }
  return out;
}

// ---- types as text

namespace {

std::string basic_name(Asynt_tKind kind) {
  std::string text = Asynt_NodeName(kind);
  text.erase(text.find("Type"), 4);
  text[0] = static_cast<char>(std::tolower(text[0]));
  return text == "no" ? "none" : text;
}

std::string size_text(tAsynt size) {
  if (Asynt_Kind(size) == kIntConst) return std::to_string(IntConst_Val(size));
  return Asynt_Kind(size) == kExactIntConst ? ExactIntConst_Val(size) : "?";
}

// Items of a list of whatever kind, joined by commas.
std::string joined(tAsynt cells, const std::function<std::string(tAsynt)>& text, const char* separator = ",") {
  std::string out;
  for (const char* between = ""; Asynt_Schema.kinds[Asynt_Kind(cells)].cell; between = separator) {
    out += between + text(tree_raw_slot<tAsynt>(cells, 0));
    cells = tree_raw_slot<tAsynt>(cells, 1);
  }
  return out;
}

}  // namespace

std::string type_text(tAsynt type) {
  if (!type) return "null";
  const Asynt_tKind kind = Asynt_Kind(type);
  if (kind == kNoType || Asynt_IsType(type, kBasicType)) return basic_name(kind);
  if (kind == kPreDef) return "predef";
  if (Asynt_IsType(type, kMultiType)) return "multi(" + joined(MultiType_Types(type), type_text) + ")";
  if (!Asynt_IsType(type, kArrayType)) return Asynt_NodeName(kind);
  return basic_name(Asynt_Kind(ArrayType_BasicType(type))) + (kind == kArrayType_s ? "_s[" : "[") +
         joined(ArrayType_Dimensions(type), size_text) + "]";
}

// ---- trees as text

namespace {

// What the walk needs to know everywhere.
bool as_code, with_positions;

std::string written(tAsynt t);

const TreeKind& kind_of(tAsynt t) { return Asynt_Schema.kinds[Asynt_Kind(t)]; }
tAsynt child(tAsynt t, size_t slot) { return tree_raw_slot<tAsynt>(t, slot); }

// Cells are named X1, terminators X0.
bool is_list(tAsynt t) {
  return t && (kind_of(t).cell || (std::string(kind_of(t).name).back() == '0' && kind_of(t).field_count == 0));
}

// The items of a list; a tail that is no list shows.
std::string items(tAsynt cells, const char* separator = ",") {
  tAsynt tail = cells;
  while (tail && kind_of(tail).cell) tail = child(tail, 1);
  return joined(cells, written, separator) + (is_list(tail) ? "" : '|' + written(tail));
}

std::string quoted(string text) { return '"' + std::string(text ? text : "") + '"'; }

std::string position_text(tPosition p) {
  return with_positions ? '@' + std::to_string(p.Line) + ',' + std::to_string(p.Column) : "";
}

std::string attributes_text(const Index* attributes) {
  if (!attributes) return "";
  std::string out = "{";
  Iter* iter = start_iter(attributes);
  while (tAsynt* entries = iter_next(iter))
    out += (out == "{" ? "" : ",") + std::string(iter_key(iter)) + '=' + written(entries[0]);
  return out + '}';
}

std::string type_behind(tAsynt type) { return Asynt_Kind(type) == kNoType ? "" : ':' + written(type); }

std::string symbol_text(tAsynt info) {
  if (Asynt_Kind(info) == kTempSymbol) return 'T' + std::to_string(TempSymbol_Number(info));
  if (Asynt_Kind(info) == kOutParam) return 'O' + std::to_string(OutParam_Number(info));
  if (as_code) return NamedSymbol_Name(info);
  if (!Asynt_IsType(info, kNamedSymbol)) return '<' + written(child(info, 2)) + type_behind(SymInfo_Type(info)) + '>';
  const bool predefined = Asynt_Kind(SymInfo_Type(info)) == kPreDef;
  std::string out = predefined ? "%" : "";
  if (Asynt_Kind(info) != kSimpleSymbol)
    out += joined(
        child(info, 3), [](tAsynt component) { return written(component) + '`'; }, "");
  out += NamedSymbol_Name(info) + position_text(SymInfo_Pos(info));
  return predefined ? out : out + type_behind(SymInfo_Type(info));
}

std::string field_text(tAsynt t, const TreeField& field, size_t slot, bool only) {
  switch (field.type) {
    case FieldType::tree:
      if (!is_list(child(t, slot))) return written(child(t, slot));
      return only ? items(child(t, slot)) : '{' + items(child(t, slot)) + '}';
    case FieldType::character: return tree_raw_slot<char>(t, slot) ? "1" : "0";
    case FieldType::text: return quoted(tree_raw_slot<string>(t, slot));
    case FieldType::word4: return std::to_string(tree_raw_slot<int>(t, slot));
    default: return "?";
  }
}

std::string node_text(tAsynt t) {
  const TreeKind& kind = kind_of(t);
  const bool is_operator = Asynt_IsType(t, kOperator);
  std::string out = kind.name, fields;
  if (is_operator && !as_code) out += position_text(PosConv_Pos(child(t, 0)));
  std::vector<size_t> shown;
  for (size_t i = is_operator ? 1 : 0; i < kind.field_count; i++)
    if (!as_code || kind.fields[i].type == FieldType::tree) shown.push_back(i);
  for (size_t i : shown) fields += (i == shown[0] ? "" : ",") + field_text(t, kind.fields[i], i, shown.size() == 1);
  return shown.empty() ? out : out + '[' + fields + ']';
}

std::string written(tAsynt t) {
  const Asynt_tKind kind = Asynt_Kind(t);
  if (!t) return "null";
  if (as_code && Asynt_IsType(t, kType)) return type_text(t);
  switch (kind) {
    case kSymbol: return symbol_text(child(t, 0));
    case kSimpleFFE: return written(child(t, 1)) + '[' + items(child(t, 0)) + ']';
    case kComplexFFE:
      return (as_code ? written(child(t, 1)) : '(' + written(child(t, 1)) + ')') + '[' + items(child(t, 0)) + ']';
    case kExactIntConst:
    case kExactRealConst: return tree_raw_slot<string>(t, 0);
    case kIntConst: return (as_code ? "#" : "") + std::to_string(tree_raw_slot<int>(t, 0));
    case kStringConst: return quoted(tree_raw_slot<string>(t, 0));
    default: break;
  }
  if (as_code && kind == kEmpty) return "&";
  if (as_code && kind == kXSet) return written(Binary_LHS(t)) + '=' + written(Binary_RHS(t));
  if (as_code && kind == kXCompoundExpression) return '(' + items(Variadic_Expressions(t), ";") + ')';
  if (Asynt_IsType(t, kBasicType)) {
    const std::string text = Asynt_NodeName(kind);
    return text.substr(0, text.find("Type")) + (text.back() == 's' ? "_s" : "") +
           attributes_text(BasicType_attributes(t));
  }
  return is_list(t) ? '{' + items(t) + '}' : node_text(t);
}

}  // namespace

std::string tree_text(tAsynt t, bool positions) {
  as_code = false;
  with_positions = positions;
  return written(t);
}

std::string code_text(tAsynt t) {
  as_code = true;
  return written(t);
}

// ---- trees from text

static tAsynt chained(const std::vector<tAsynt>& items, tAsynt chain, tAsynt (*cell)(tAsynt, tAsynt)) {
  for (size_t i = items.size(); i-- > 0;) chain = cell(items[i], chain);
  return chain;
}

tAsynt list(const std::vector<tAsynt>& items) { return chained(items, mExpression0(), mExpression1); }
tAsynt symbols(const std::vector<tAsynt>& items) { return chained(items, mSymbol0(), mSymbol1); }

tAsynt compound(const std::vector<tAsynt>& items) { return mXCompoundExpression(no_place(), list(items)); }

const char* stored(const std::string& text) { return strdup(text.c_str()); }

tAsynt name(const std::string& text, tPosition p) { return mSymbol(mSimpleSymbol(mNoType(), p, stored(text))); }

namespace {

const char* in;  // what is left of the text

bool eat(char c) {
  if (*in != c) return false;
  in++;
  return true;
}

void expect(char c) {
  if (!eat(c)) bad_test(in);
}

std::string read_while(bool (*wanted)(char)) {
  const char* start = in;
  while (*in && wanted(*in)) in++;
  return std::string(start, in);
}

bool in_name(char c) { return std::isalnum(static_cast<unsigned char>(c)) || std::strchr("`$_", c); }
bool in_number(char c) { return std::isdigit(static_cast<unsigned char>(c)) || c == '.' || c == '-'; }

int kind_named(const std::string& text) {
  for (int k = 0; k < kAsyntKinds; k++)
    if (text == Asynt_NodeName(static_cast<unsigned>(k))) return k;
  return -1;
}

// Items up to the end, with or without commas between them.
std::vector<tAsynt> read_items(char end, tAsynt (*read)()) {
  std::vector<tAsynt> all;
  while (!eat(end)) {
    if (!*in) bad_test("no end of a list");
    all.push_back(read());
    eat(',');
  }
  return all;
}

tAsynt read_basic_type(const std::string& text) {
  if (text == "none") return mNoType();
  const bool member = text.ends_with("_s");
  std::string kind = text.substr(0, text.size() - (member ? 2 : 0)) + "Type" + (member ? "_s" : "");
  kind[0] = static_cast<char>(std::toupper(kind[0]));
  const int k = kind_named(kind);
  if (k < 0) bad_test(text);
  return Asynt_New(static_cast<unsigned>(k), 1);
}

tAsynt read_type() {
  std::string text = read_while(in_name);
  if (text == "multi" && eat('(')) return mMultiType(chained(read_items(')', read_type), mType0(), mType1));
  if (!eat('[')) return read_basic_type(text);
  const bool member = text.ends_with("_s");
  const tAsynt base = read_basic_type(text.substr(0, text.size() - (member ? 2 : 0)));
  const tAsynt sizes = list(read_items(']', [] { return mIntConst(std::atoi(read_while(in_number).c_str())); }));
  return member ? mArrayType_s(base, sizes) : mArrayType(base, sizes);
}

std::map<std::string, tAsynt> declared;  // symbol informations

tAsynt declare(const std::string& text, tAsynt type) {
  const size_t end = text.rfind('`');
  if (end == std::string::npos) return mAbsoluteSymbol(type, tPosition{4, 2}, stored(text), mExpression0());
  return mAbsoluteSymbol(type, tPosition{4, 2}, stored(text.substr(end + 1)), list({name(text.substr(0, end))}));
}

tAsynt read_symbol(const std::string& text) {
  if (text[0] == '%') {
    tAsynt* entries = lookup(predefined_names(), text.c_str() + 1);
    if (!entries) bad_test(text);
    return mSymbol(entries[0]);
  }
  if (!declared.count(text)) bad_test(text);
  return mSymbol(declared[text]);
}

tAsynt read_expression();

std::vector<tAsynt> read_in_braces() { return eat('{') ? read_items('}', read_expression) : std::vector<tAsynt>{}; }

tAsynt read_field(Asynt_tKind kind) {
  switch (kind) {
    case kIterators: return chained(read_in_braces(), mIterator0(), mIterator1);
    case kSymbols: return symbols(read_in_braces());
    case kType: return *in == ']' ? mNoType() : read_type();
    case kFilename: return mFilename("file");
    default: return read_expression();
  }
}

tAsynt read_node(unsigned kind) {
  const TreeKind& k = Asynt_Schema.kinds[kind];
  const tAsynt t = Asynt_New(kind, k.field_count);
  if (Asynt_IsType(t, kOperator)) Operator_PosConv(t) = mkNonConvPos(tPosition{7, 3});
  if (!eat('[')) return t;
  for (int i = Asynt_IsType(t, kOperator) ? 1 : 0; i < k.child_count; i++) {
    const auto field = static_cast<Asynt_tKind>(k.fields[k.children[i]].kind);
    tAsynt& slot = tree_raw_slot<tAsynt>(t, k.children[i]);
    if (field == kExpressions && *in != '{') {
      slot = list(read_items(']', read_expression));
      return t;
    }
    const bool braces = (field == kExpressions || field == kNoAsynt) && eat('{');
    slot = braces ? list(read_items('}', read_expression)) : read_field(field);
    eat(',');
  }
  expect(']');
  return t;
}

tAsynt read_name() {
  std::string text = eat('%') ? "%" : "";
  text += read_while(in_name);
  if (text.empty()) bad_test(in);
  const int kind = kind_named(text);
  if (kind >= 0 && !declared.count(text)) return read_node(static_cast<unsigned>(kind));
  tAsynt t = read_symbol(text);
  while (eat('[')) {
    const tAsynt args = list(read_items(']', read_expression));
    t = Asynt_Kind(t) == kSymbol ? mSimpleFFE(args, t) : mComplexFFE(args, t);
  }
  return t;
}

tAsynt read_expression() {
  if (eat('&')) return mEmpty();
  if (eat('#')) return mIntConst(std::atoi(read_while(in_number).c_str()));
  if (eat('"')) {
    const std::string text = read_while([](char c) { return c != '"'; });
    expect('"');
    return mStringConst(stored(text));
  }
  if (!in_number(*in)) return read_name();
  const std::string digits = read_while(in_number);
  return digits.find('.') != std::string::npos ? mExactRealConst(stored(digits)) : mExactIntConst(stored(digits));
}

tAsynt whole(const std::string& text, tAsynt (*read)()) {
  in = text.c_str();
  const tAsynt t = read();
  if (*in) bad_test(in);
  return t;
}

}  // namespace

tAsynt type_of_text(const std::string& text) { return whole(text, read_type); }
tAsynt typed_tree(const std::string& text) { return whole(text, read_expression); }

void declare_types(const std::string& declarations) {
  declared.clear();
  in = declarations.c_str();
  while (*in) {
    const std::string text = read_while(in_name);
    expect(':');
    declared[text] = declare(text, read_type());
    while (eat(' ')) continue;
  }
}

Trees::Trees() {
  bigbuf_init();
  init_operator_name();
  Begintype();
  Set_declaration_finder(nullptr);
  allow_untyped = 0;  // a fatal message can have ended a command that set it
}

}  // namespace oz
