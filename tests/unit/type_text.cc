// A small reader over the field table: a kind's name is followed by its fields.

#include "type_text.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "ffparse.h"
#include "index.h"
#include "oz.h"

namespace oz {
namespace {

// ---- types

std::string basic_name(Asynt_tKind kind) {
  std::string name = Asynt_NodeName(kind);
  const size_t end = name.find("Type");
  name = name.substr(0, end) + name.substr(end + 4);
  name[0] = static_cast<char>(std::tolower(name[0]));
  return name == "no" ? "none" : name;
}

std::string size_text(tAsynt size) {
  if (Asynt_Kind(size) == kIntConst) return std::to_string(IntConst_Val(size));
  return Asynt_Kind(size) == kExactIntConst ? ExactIntConst_Val(size) : "?";
}

std::string sizes_text(tAsynt dims) {
  std::string out;
  for (; Asynt_Kind(dims) == kExpression1 || Asynt_Kind(dims) == kIntConst1;) {
    const bool plain = Asynt_Kind(dims) == kExpression1;
    out += (out.empty() ? "" : ",") + size_text(plain ? Expression1_Expression(dims) : IntConst1_IntConst(dims));
    dims = plain ? Expression1_Expressions(dims) : IntConst1_IntConsts(dims);
  }
  return out;
}

std::string types_text(tAsynt types) {
  std::string out;
  for (; Asynt_Kind(types) == kType1; types = Type1_Types(types))
    out += (out.empty() ? "" : ",") + type_text(Type1_Type(types));
  return out;
}

// ---- the reader

[[noreturn]] void fail(const char* at) {
  std::fprintf(stderr, "bad text for a test: %s\n", at);
  std::abort();
}

char* stored(const std::string& text) { return strdup(text.c_str()); }

const char* in;  // what is left of the text

bool eat(char c) {
  if (*in != c) return false;
  in++;
  return true;
}

void expect(char c) {
  if (!eat(c)) fail(in);
}

std::string read_while(bool (*wanted)(char)) {
  const char* start = in;
  while (*in && wanted(*in)) in++;
  return std::string(start, in);
}

bool in_name(char c) { return std::isalnum(static_cast<unsigned char>(c)) || std::strchr("`$_", c); }
bool in_number(char c) { return std::isdigit(static_cast<unsigned char>(c)) || c == '.' || c == '-'; }

int kind_named(const std::string& name) {
  for (int k = 0; k < kAsyntKinds; k++)
    if (name == Asynt_NodeName(static_cast<unsigned>(k))) return k;
  return -1;
}

tAsynt read_type();

tAsynt read_basic_type(const std::string& name) {
  if (name == "none") return mNoType();
  const bool member = name.size() > 2 && name.substr(name.size() - 2) == "_s";
  std::string kind = name.substr(0, name.size() - (member ? 2 : 0)) + "Type" + (member ? "_s" : "");
  kind[0] = static_cast<char>(std::toupper(kind[0]));
  const int k = kind_named(kind);
  if (k < 0) fail(name.c_str());
  return Asynt_New(static_cast<unsigned>(k), 1);
}

tAsynt read_sizes() {
  if (eat(']')) return mExpression0();
  const tAsynt size = mIntConst(std::atoi(read_while(in_number).c_str()));
  eat(',');
  return mExpression1(size, read_sizes());
}

tAsynt read_types() {
  if (eat(')')) return mType0();
  const tAsynt type = read_type();
  eat(',');
  return mType1(type, read_types());
}

tAsynt read_type() {
  std::string name = read_while(in_name);
  if (name == "multi" && eat('(')) return mMultiType(read_types());
  if (!eat('[')) return read_basic_type(name);
  const bool member = name.size() > 2 && name.substr(name.size() - 2) == "_s";
  if (member) name.resize(name.size() - 2);
  const tAsynt base = read_basic_type(name);
  const tAsynt sizes = read_sizes();
  return member ? mArrayType_s(base, sizes) : mArrayType(base, sizes);
}

std::map<std::string, tAsynt> declared;  // symbol informations

tAsynt info_of(const std::string& name, tAsynt type) {
  tAsynt components = mExpression0();
  size_t end = name.rfind('`');
  const std::string last = end == std::string::npos ? name : name.substr(end + 1);
  if (end != std::string::npos)
    components = mExpression1(mSymbol(mSimpleSymbol(mNoType(), NoPosition, stored(name.substr(0, end)))), components);
  return mAbsoluteSymbol(type, tPosition{4, 2}, stored(last), components);
}

tAsynt read_symbol(const std::string& name) {
  if (name[0] == '%') {
    tAsynt* entries = lookup(predefined_names(), name.c_str() + 1);
    if (!entries) fail(name.c_str());
    return mSymbol(entries[0]);
  }
  if (!declared.count(name)) fail(name.c_str());
  return mSymbol(declared[name]);
}

tAsynt read_expression();

tAsynt read_list(char end) {
  if (eat(end)) return mExpression0();
  const tAsynt head = read_expression();
  eat(',');
  return mExpression1(head, read_list(end));
}

tAsynt read_iterators() {
  if (eat('}')) return mIterator0();
  const tAsynt head = read_expression();
  eat(',');
  return mIterator1(head, read_iterators());
}

tAsynt read_symbols() {
  if (eat('}')) return mSymbol0();
  const tAsynt head = read_expression();
  eat(',');
  return mSymbol1(head, read_symbols());
}

tAsynt read_field(Asynt_tKind kind) {
  if (kind == kIterators) return eat('{') ? read_iterators() : mIterator0();
  if (kind == kSymbols) return eat('{') ? read_symbols() : mSymbol0();
  if (kind == kType) return *in == ']' ? mNoType() : read_type();
  if (kind == kFilename) return mFilename("file");
  return read_expression();
}

tAsynt read_node(unsigned kind) {
  const TreeKind& k = Asynt_Schema.kinds[kind];
  const tAsynt t = Asynt_New(kind, k.field_count);
  if (Asynt_IsType(t, kOperator)) Operator_PosConv(t) = mkNonConvPos(tPosition{7, 3});
  if (!eat('[')) return t;
  for (int i = Asynt_IsType(t, kOperator) ? 1 : 0; i < k.child_count; i++) {
    const auto field = static_cast<Asynt_tKind>(k.fields[k.children[i]].kind);
    tAsynt& child = tree_raw_slot<tAsynt>(t, k.children[i]);
    if (field == kExpressions && *in != '{') {
      child = read_list(']');
      return t;
    }
    const bool braces = (field == kExpressions || field == kNoAsynt) && eat('{');
    child = braces ? read_list('}') : read_field(field);
    eat(',');
  }
  expect(']');
  return t;
}

tAsynt read_name() {
  std::string name = eat('%') ? "%" : "";
  name += read_while(in_name);
  if (name.empty()) fail(in);
  const int kind = kind_named(name);
  if (kind >= 0 && !declared.count(name)) return read_node(static_cast<unsigned>(kind));
  tAsynt t = read_symbol(name);
  while (eat('[')) {
    const tAsynt args = read_list(']');
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
  if (digits.find('.') != std::string::npos) return mExactRealConst(stored(digits));
  return mExactIntConst(stored(digits));
}

}  // namespace

std::string type_text(tAsynt type) {
  if (!type) return "null";
  const Asynt_tKind kind = Asynt_Kind(type);
  if (kind == kNoType || Asynt_IsType(type, kBasicType)) return basic_name(kind);
  if (kind == kPreDef) return "predef";
  if (Asynt_IsType(type, kMultiType)) return "multi(" + types_text(MultiType_Types(type)) + ")";
  if (!Asynt_IsType(type, kArrayType)) return Asynt_NodeName(kind);
  return basic_name(Asynt_Kind(ArrayType_BasicType(type))) + (kind == kArrayType_s ? "_s[" : "[") +
         sizes_text(ArrayType_Dimensions(type)) + "]";
}

tAsynt type_of_text(const std::string& text) {
  in = text.c_str();
  const tAsynt type = read_type();
  if (*in) fail(in);
  return type;
}

void declare_types(const std::string& declarations) {
  declared.clear();
  in = declarations.c_str();
  while (*in) {
    const std::string name = read_while(in_name);
    expect(':');
    declared[name] = info_of(name, read_type());
    while (eat(' ')) {
    }
  }
}

tAsynt typed_tree(const std::string& text) {
  in = text.c_str();
  const tAsynt t = read_expression();
  if (*in) fail(in);
  return t;
}

}  // namespace oz
