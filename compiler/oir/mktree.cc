// Turns a tree schema (Asynt.tree, Ddg.tree) into the tree kit's generated half: enumerators, tables, constructors,
// accessors.
//
//   mktree SCHEMA OUTPUT      writes OUTPUT.h and OUTPUT.cc
//
// A schema line "118 Unary : Operator { Expression:Expression }" yields the enumerator kUnary, its row in the table of
// kinds, nUnary(), mUnary(PosConv, Expression) and the accessor Unary_Expression(t). The schema is rejected with file
// and line when a number is out of order, a kind is unknown or declared twice, or a kind lies outside its base's range.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Field {
  std::string name, type;
  int line;
};

struct Kind {
  std::string name, base;
  int line = 0;
  int base_number = -1;
  int last = 0;                         // number of the last descendant
  std::vector<Field> own;               // declared here
  std::vector<Field> fields;            // inherited ones first
  std::vector<std::string> introducer;  // per field: the kind that declares it
};

// A scalar field type: its C++ type and the name of its FieldType.
struct Scalar {
  const char* schema;
  const char* cpp;
  const char* field_type;
};

constexpr Scalar kScalars[] = {
    {"char", "char", "character"},
    {"int", "int", "word4"},
    {"unsigned", "unsigned", "word4"},
    {"string", "string", "text"},
    {"tPosition", "tPosition", "position"},
    {"tConversionTag", "tConversionTag", "word4"},
    {"ozmat_int", "ozmat_int", "word4"},
    {"ozmat_real", "ozmat_real", "word8"},
    {"voidp", "voidp", "word8"},
    {"pointerToIndex", "pointerToIndex", "word8"},
    {"predef_type", "predef_type", "word4"},
    {"double", "double", "word8"},
    {"tim_t", "tim_t", "word4"},
    {"ddg_pri_t", "ddg_pri_t", "word4"},
    {"sym", "tAsynt", "word8"},
    {"op", "tAsynt", "word8"},
};

std::string schema_name;
std::string tree_name;
std::vector<Kind> kinds;
std::map<std::string, int> number_of;

[[noreturn]] void reject(int line, const std::string& what) {
  std::fprintf(stderr, "%s:%d: %s\n", schema_name.c_str(), line, what.c_str());
  std::exit(1);
}

const Scalar* scalar(const std::string& type) {
  for (const Scalar& s : kScalars)
    if (type == s.schema) return &s;
  return nullptr;
}

std::string cpp_type(const std::string& type) {
  const Scalar* s = scalar(type);
  return s ? s->cpp : "t" + tree_name;
}

// NUMBER Kind [: Base] [{ field:type ... }]
void read_kind(const std::string& text, int line) {
  std::istringstream in(text);
  Kind k;
  int number = -1;
  std::string word;
  if (!(in >> number >> k.name)) reject(line, "expected a number and a kind");
  if (number != static_cast<int>(kinds.size())) reject(line, "kind " + k.name + " has the wrong number");
  if (!number_of.emplace(k.name, number).second) reject(line, "kind " + k.name + " is declared twice");
  k.line = line;
  if (in >> word && word == ":") {
    if (!(in >> k.base)) reject(line, "expected a base");
    word.clear();
    in >> word;
  }
  if (word == "{") {
    while (in >> word && word != "}") {
      size_t colon = word.find(':');
      if (colon == std::string::npos) reject(line, "expected field:type, found " + word);
      k.own.push_back({word.substr(0, colon), word.substr(colon + 1), line});
    }
    if (word != "}") reject(line, "the fields are not closed by }");
    word.clear();
    in >> word;
  }
  if (!word.empty()) reject(line, "unexpected " + word);
  kinds.push_back(k);
}

void read_schema() {
  std::ifstream in(schema_name);
  if (!in) reject(0, "cannot be read");
  std::string text;
  for (int line = 1; std::getline(in, text); line++) {
    text = text.substr(0, text.find('#'));
    if (text.find_first_not_of(" \t\r") == std::string::npos) continue;
    if (text.rfind("tree ", 0) == 0) {
      std::istringstream(text.substr(5)) >> tree_name;
      continue;
    }
    read_kind(text, line);
  }
  if (tree_name.empty()) reject(0, "no line tells the name of the tree");
}

// Bases must come before their descendants, without a gap; a field's type must be known.
void resolve() {
  for (size_t i = 0; i < kinds.size(); i++) {
    Kind& k = kinds[i];
    k.last = static_cast<int>(i);
    if (!k.base.empty()) {
      auto found = number_of.find(k.base);
      if (found == number_of.end()) reject(k.line, "unknown base " + k.base);
      k.base_number = found->second;
      if (k.base_number >= static_cast<int>(i)) reject(k.line, "kind " + k.name + " stands before its base");
      const Kind& base = kinds[k.base_number];
      k.fields = base.fields;
      k.introducer = base.introducer;
      for (int b = k.base_number; b >= 0; b = kinds[b].base_number) {
        if (kinds[b].last != static_cast<int>(i) - 1)
          reject(k.line, "kind " + k.name + " lies outside the range of " + kinds[b].name);
        kinds[b].last = static_cast<int>(i);
      }
    }
    for (const Field& f : k.own) {
      if (!scalar(f.type) && f.type != tree_name && !number_of.count(f.type)) reject(f.line, "unknown kind " + f.type);
      k.fields.push_back(f);
      k.introducer.push_back(k.name);
    }
  }
}

void write_accessors(FILE* h, const Kind& k, int number) {
  int slot = static_cast<int>(k.fields.size() - k.own.size());
  for (const Field& f : k.own) {
    const std::string type = cpp_type(f.type);
    std::fprintf(h,
                 "inline %s& %s_%s(t%s t, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {\n"
                 "  return tree_slot<%s>(t, %d, %d, %d, file, line);\n}\n",
                 type.c_str(), k.name.c_str(), f.name.c_str(), tree_name.c_str(), type.c_str(), number, k.last, slot);
    slot++;
  }
}

void write_constructors(FILE* h, const Kind& k, int number) {
  const char* t = tree_name.c_str();
  std::fprintf(h, "inline t%s n%s() { return %s_New(k%s, %d); }\n", t, k.name.c_str(), t, k.name.c_str(),
               static_cast<int>(k.fields.size()));
  std::fprintf(h, "inline t%s m%s(", t, k.name.c_str());
  for (size_t i = 0; i < k.fields.size(); i++)
    std::fprintf(h, "%s%s a%zu", i ? ", " : "", cpp_type(k.fields[i].type).c_str(), i);
  std::fprintf(h, ") {\n  t%s t = %s_NewRaw(%d, %d);\n", t, t, number, static_cast<int>(k.fields.size()));
  for (size_t i = 0; i < k.fields.size(); i++)
    std::fprintf(h, "  tree_raw_slot<%s>(t, %zu) = a%zu;\n", cpp_type(k.fields[i].type).c_str(), i, i);
  std::fprintf(h, "  return t;\n}\n");
}

void write_header(FILE* h) {
  const char* t = tree_name.c_str();
  std::fprintf(h, "// Do not edit: made from %s.tree by mktree. Included by %s.h only.\n\n", t, t);
  std::fprintf(h, "enum %s_tKind : unsigned short {\n", t);
  for (size_t i = 0; i < kinds.size(); i++) std::fprintf(h, "  k%s = %zu,\n", kinds[i].name.c_str(), i);
  std::fprintf(h, "};\n\ninline constexpr int k%sKinds = %zu;\n\n", t, kinds.size());
  // The range table is constexpr, so that a test against a known kind compiles to one comparison.
  std::fprintf(h, "inline constexpr unsigned short %s_TypeRange[k%sKinds] = {", t, t);
  for (size_t i = 0; i < kinds.size(); i++) std::fprintf(h, "%s%d,", i % 20 ? " " : "\n    ", kinds[i].last);
  std::fprintf(h, "\n};\n\nextern const TreeShape %s_Shapes[k%sKinds];\n\n", t, t);
  for (size_t i = 0; i < kinds.size(); i++) {
    if (i == 0) continue;
    write_accessors(h, kinds[i], static_cast<int>(i));
    write_constructors(h, kinds[i], static_cast<int>(i));
  }
}

// Whether a kind is the cell of a list: Expression1, below Expressions, holds an Expression and the tail, Expressions.
bool is_cell(const Kind& k) {
  return k.own.size() == 2 && k.own.back().type == k.base && k.own.back().name == k.base &&
         k.own.front().name + "s" == k.base;
}

// The range of kinds that a child of a declared kind may have; the tree's own name stands for all of them.
int first_kind(const std::string& type) { return type == tree_name ? 0 : number_of[type]; }
int last_kind(const std::string& type) { return type == tree_name ? UINT16_MAX : kinds[number_of[type]].last; }

// The fields of a kind that are children.
std::vector<int> children_of(const Kind& k) {
  std::vector<int> children;
  for (size_t f = 0; f < k.fields.size(); f++)
    if (!scalar(k.fields[f].type)) children.push_back(static_cast<int>(f));
  return children;
}

void write_shapes(FILE* c) {
  const char* t = tree_name.c_str();
  std::fprintf(c, "const TreeShape %s_Shapes[k%sKinds] = {\n", t, t);
  for (const Kind& k : kinds) {
    const std::vector<int> children = children_of(k);
    std::fprintf(c, "    {%zu, %zu, {", k.fields.size(), children.size());
    for (int child : children) std::fprintf(c, "%d, ", child);
    std::fprintf(c, "}},\n");
  }
  std::fprintf(c, "};\n\n");
}

void write_tables(FILE* c) {
  const char* t = tree_name.c_str();
  std::fprintf(c, "// Do not edit: made from %s.tree by mktree.\n\n#include \"%s.h\"\n\nnamespace oz {\n\n", t, t);
  std::fprintf(c, "namespace {\n\n");
  for (size_t i = 0; i < kinds.size(); i++) {
    const Kind& k = kinds[i];
    if (k.fields.empty()) continue;
    std::fprintf(c, "constexpr TreeField fields_%zu[] = {", i);
    for (const Field& f : k.fields) {
      const Scalar* s = scalar(f.type);
      if (s)
        std::fprintf(c, "{\"%s\", FieldType::%s, 0}, ", f.name.c_str(), s->field_type);
      else
        std::fprintf(c, "{\"%s\", FieldType::tree, %d}, ", f.name.c_str(), f.type == t ? 0 : number_of[f.type]);
    }
    std::fprintf(c, "};\n");
  }
  std::fprintf(c, "\nconstexpr TreeKind kinds[] = {\n");
  for (size_t i = 0; i < kinds.size(); i++) {
    const Kind& k = kinds[i];
    const std::vector<int> children = children_of(k);
    std::string fields = k.fields.empty() ? "nullptr" : "fields_" + std::to_string(i);
    if (children.size() > 6) reject(k.line, "kind " + k.name + " has more than 6 children");
    std::fprintf(c, "    {\"%s\", %d, %zu, %zu, %s, {", k.name.c_str(), k.last, k.fields.size(), children.size(),
                 is_cell(k) ? "true" : "false");
    for (int child : children) std::fprintf(c, "%d, ", child);
    std::fprintf(c, "}, {");
    for (int child : children) std::fprintf(c, "%d, ", first_kind(k.fields[child].type));
    std::fprintf(c, "}, {");
    for (int child : children) std::fprintf(c, "%d, ", last_kind(k.fields[child].type));
    std::fprintf(c, "}, %s},\n", fields.c_str());
  }
  std::fprintf(c, "};\n\n}  // namespace\n\n");
  std::fprintf(c, "extern const TreeSchema %s_Schema = {\"%s\", \"No%s\", k%sKinds, kinds};\n\n", t, t, t, t);
  write_shapes(c);
  std::fprintf(c, "}  // namespace oz\n");
}

FILE* open_output(const std::string& name) {
  FILE* f = std::fopen(name.c_str(), "w");
  if (!f) {
    std::fprintf(stderr, "mktree: cannot write %s\n", name.c_str());
    std::exit(1);
  }
  return f;
}

void close_output(FILE* f) {
  if (std::fclose(f) != 0) {
    std::fprintf(stderr, "mktree: writing failed\n");
    std::exit(1);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: mktree SCHEMA OUTPUT\n");
    return 1;
  }
  schema_name = argv[1];
  read_schema();
  resolve();
  FILE* h = open_output(std::string(argv[2]) + ".h");
  write_header(h);
  close_output(h);
  FILE* c = open_output(std::string(argv[2]) + ".cc");
  write_tables(c);
  close_output(c);
  return 0;
}
