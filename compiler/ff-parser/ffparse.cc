// A state machine over the tokens. `here` is the list cell of the expression read last; a "[" behind it makes that
// expression the head of a call and puts the cell on the list of open calls, a "]" comes back to it:
//
//   f[a, b]      f -> cell 1;  [ -> f becomes f[...], cell 1 waits;  a -> cell 2;  b -> cell 3;  ] -> here is cell 1
//
// The text as a whole is the only cell of a list of its own.
//
// In oz$Type[a[1], oz$Real] the tokens up to the comma are a name; the call is then replaced by its first argument, one
// symbol that carries the type. From there on a[1] in the text is this symbol again.

#include "ffparse.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "Asynt.h"
#include "compelim.h"
#include "ffscan.h"
#include "index.h"
#include "nametrie.h"
#include "nesting.h"
#include "ozerrors.h"
#include "predef.h"
#include "scan_names.h"
#include "typepat.h"
#include "unparse.h"
#include "veritrans.h"

namespace oz {

tAsynt ff_oztype_sym, ff_ozmultitype_sym, ff_ozreal_sym, ff_ozint_sym, ff_ozbool_sym, ff_ozarraytype_sym;

// ---- names

namespace {

Index* ff_index = nullptr;  // the names of the text at work that are not predefined

tAsynt make_marker(string name, tAsynt type) {
  const tAsynt marker = mAbsoluteSymbol(type, NoPosition, name, mExpression0());
  create_entry(ff_index, marker, name);
  return marker;
}

string kept_name(std::string_view name) {
  uint64_t hash = kScanHashStart;
  for (const char c : name) hash = scan_hash_step(hash, c);
  return scan_intern(name.data(), name.size(), hash).text;
}

// a`b`x: the symbol x with the components a and b.
tAsynt make_context_symbol(std::string_view path, tPosition position) {
  tAsynt components = nullptr;
  tAsynt* tail = &components;
  for (size_t end; (end = path.find('`')) != std::string_view::npos; path.remove_prefix(end + 1)) {
    const tAsynt part = ff_find_symbol(kept_name(path.substr(0, end)), position, 0);
    *tail = mExpression1(mSymbol(part), nullptr);
    tail = &Expression1_Expressions(*tail);
  }
  *tail = mExpression0();
  return mAbsoluteSymbol(mNoType(), position, kept_name(path), components);
}

}  // namespace

const Index* predefined_names() {
  static Index* names = nullptr;
  if (!names) {
    names = make_index(hash_table, 1);
    index_init_predefs(names);
  }
  return names;
}

void ff_init_index() {
  if (ff_index) delete_index(ff_index);
  ff_index = make_index(hash_table, 1);
  ff_oztype_sym = make_marker("oz$Type", mNoType());
  ff_ozmultitype_sym = make_marker("oz$MultiType", mNoType());
  ff_ozreal_sym = make_marker("oz$Real", mRealType(nullptr));
  ff_ozint_sym = make_marker("oz$Int", mIntType(nullptr));
  ff_ozbool_sym = make_marker("oz$Bool", mBoolType(nullptr));
  ff_ozarraytype_sym = make_marker("oz$ArrayType", mNoType());
}

tAsynt ff_find_symbol(const char* p, tPosition posIn, char backq) {
  const tAsynt* known = lookup(ff_index, p);
  if (!known) known = lookup(predefined_names(), p);
  if (known) return known[0];
  const tAsynt info =
      backq ? make_context_symbol(p, posIn) : mAbsoluteSymbol(mNoType(), posIn, kept_name(p), mExpression0());
  create_entry(ff_index, info, p);
  return info;
}

// ---- types

namespace {

// The number that an array's size is written as.
int size_of(tAsynt constant) {
  string text = nullptr;
  switch (Asynt_Kind(constant)) {
    case kExactIntConst: text = ExactIntConst_Val(constant); break;
    case kExactRealConst: text = ExactRealConst_Val(constant); break;
    case kStringConst: text = StringConst_Val(constant); break;
    default: return 0;
  }
  return static_cast<int>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

void report_size() { error_msg("Strange index type. should be int."); }

std::string printed_name(tAsynt symbol) {
  const tAsynt info = Symbol_SymInfo(symbol);
  return Asynt_IsType(info, kNamedSymbol) ? NamedSymbol_Name(info) : unparse_string(symbol);
}

}  // namespace

tAsynt make_array_type(tAsynt arrayspec_list) {
  const tAsynt base = Get_type_node(Expression1_Expression(arrayspec_list));
  tAsynt sizes = Expression1_Expressions(arrayspec_list);
  tAsynt dimensions = nullptr;
  tAsynt* tail = &dimensions;
  if (Asynt_Kind(sizes) != kExpression1) {
    // An array has at least one dimension; its size is then unknown.
    report_size();
    *tail = mIntConst1(mIntConst(0), nullptr);
    tail = &IntConst1_IntConsts(*tail);
  }
  for (; Asynt_Kind(sizes) == kExpression1; sizes = Expression1_Expressions(sizes)) {
    const tAsynt size = Expression1_Expression(sizes);
    if (Asynt_Kind(size) != kExactIntConst) report_size();
    *tail = mIntConst1(mIntConst(size_of(size)), nullptr);
    tail = &IntConst1_IntConsts(*tail);
  }
  *tail = mIntConst0();
  return mArrayType(base, dimensions);
}

tAsynt make_multi_type(tAsynt types_list) {
  tAsynt types = nullptr;
  tAsynt* tail = &types;
  for (; Asynt_Kind(types_list) == kExpression1; types_list = Expression1_Expressions(types_list)) {
    const tAsynt type = Get_type_node(Expression1_Expression(types_list));
    if (Asynt_Kind(type) == kMultiType) die_msg("Nested MultiTypes not allowed (?)");
    *tail = mType1(type, nullptr);
    tail = &Type1_Types(*tail);
  }
  *tail = mType0();
  return types;
}

void set_sym_type(tAsynt sym, tAsynt type) {
  if (Asynt_Kind(sym) != kSymbol) {
    error_msg("Trying to set type for %s.\n", Asynt_NodeName(Asynt_Kind(sym)));
    return;
  }
  tAsynt& known = SymInfo_Type(Symbol_SymInfo(sym));
  if (Asynt_Kind(known) == kNoType)
    known = type;
  else if (!same_type(known, type))
    error_msg("Changing type for %s!\n", printed_name(sym).c_str());
}

// ---- the state machine

namespace {

enum State {
  sOperand = 0,   // an operand is expected
  sConstant = 1,  // a constant was read
  sClosed = 2,    // a symbol or a closed call was read
  sOpened = 3,    // just after "["
  sTypeHead = 4,  // the head oz$Type was read
};

// A call whose "]" is still to come.
struct OpenCall {
  tAsynt cell;     // that holds it
  NameState name;  // of its tokens so far
  int height;      // of the highest of its parts so far
};

// How far a text has been read.
struct Reading {
  State state = sOperand;
  tAsynt tree = nullptr;  // the list of the whole text
  tAsynt* tail = &tree;   // where the next cell of the list at work goes
  tAsynt here = nullptr;  // the cell of the expression read last
  NameState name = 0;     // the place of that expression among the names
  int height = 0;         // the calls in each other in that expression
  int type_level = -1;    // while the name in an annotation is read: the brackets that are open in the annotation
  std::vector<OpenCall> open;
  bool at_end = false;

  Reading();
  ~Reading();
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
};

Reading::Reading() {
  ff_init_index();
  nametrie_clear();
  forget_types();
}

// However the reading ends, nothing of it stays: the symbols live on without the index.
Reading::~Reading() {
  if (!at_end) ffscan_CloseFile();
  delete_index(ff_index);
  ff_index = nullptr;
  nametrie_clear();
  forget_types();
}

bool in_name(const Reading* r) { return r->type_level > 0; }

tAsynt& expression_of(Reading* r) { return Expression1_Expression(r->here); }

// Faults of the text's form. The number stands for the token that did not fit and is part of the message's fixed text.
[[noreturn]] void bad_token(int number) { die_msg("Internal error in line %d of %s", number, "ffparse"); }

void add_operand(Reading* r, State state) {
  r->here = mExpression1(ffscan_Attribute.Node, nullptr);
  *r->tail = r->here;
  r->tail = &Expression1_Expressions(r->here);
  r->name = nametrie_token(ffscan_TokenPtr, ffscan_TokenLength, in_name(r));
  r->height = 0;
  r->state = state;
}

void on_constant(Reading* r) {
  if (r->state != sOperand && r->state != sOpened) bad_token(288);
  add_operand(r, sConstant);
}

void on_symbol(Reading* r) {
  if (r->state != sOperand && r->state != sOpened)
    die_msg_pos2(ffscan_Attribute.Position, "Unexpected symbol '%s'", ffscan_Attribute.Text);
  add_operand(r, Symbol_SymInfo(ffscan_Attribute.Node) == ff_oztype_sym ? sTypeHead : sClosed);
}

// The passes recurse over nesting, so it is bounded here.
void check_nesting(const Reading* r) {
  if (static_cast<int>(r->open.size()) + r->height >= kMaxNesting)
    die_msg_pos2(ffscan_Attribute.Position, "expression nested too deeply (more than %d levels)", kMaxNesting);
}

void on_open(Reading* r) {
  if (r->state != sClosed && r->state != sTypeHead) bad_token(345);
  check_nesting(r);
  if (r->state == sTypeHead) r->type_level = 0;
  if (r->type_level >= 0) r->type_level++;
  tAsynt& head = expression_of(r);
  head = Asynt_Kind(head) == kSymbol ? mSimpleFFE(nullptr, head) : mComplexFFE(nullptr, head);
  r->tail = &FullFormExpression_Args(head);
  r->open.push_back({r->here, r->state == sTypeHead ? 0 : r->name, r->height});
  r->state = sOpened;
}

// Ends the argument read last.
void end_argument(Reading* r) {
  OpenCall& call = r->open.back();
  call.height = std::max(call.height, r->height);
  call.name = nametrie_argument(call.name, r->name, in_name(r));
}

// Goes back to the cell of the call that ends.
void close_call(Reading* r) {
  const OpenCall call = r->open.back();
  r->open.pop_back();
  *r->tail = mExpression0();
  r->here = call.cell;
  r->tail = &Expression1_Expressions(r->here);
  r->name = nametrie_call(call.name, in_name(r));
  r->height = call.height + 1;
  r->state = sClosed;
}

// What a closed call stands for: the symbol of an annotation, or that of a known name.
void replace_call(Reading* r) {
  tAsynt& call = expression_of(r);
  if (Do_type_annotation_stuff(call)) {
    call = Expression1_Expression(FullFormExpression_Args(call));
    r->name = 0;
  } else if (!in_name(r)) {
    const tAsynt nest = nametrie_nest(r->name);
    if (nest) call = mSymbol(nest);
  }
}

void on_close(Reading* r) {
  if (r->state != sConstant && r->state != sClosed && r->state != sOpened) bad_token(368);
  if (r->open.empty()) die_msg("Too many closing brackets.");
  if (r->state != sOpened) end_argument(r);
  close_call(r);
  // At level 0 the annotation ends without a comma, and so does the name.
  if (r->type_level > 0 && --r->type_level == 0) r->type_level = -1;
  replace_call(r);
}

// The name in an annotation is complete. A single token needs no nest: its symbol carries the type.
void finish_name(Reading* r) {
  r->type_level = -1;
  tAsynt& name = expression_of(r);
  if (Asynt_IsType(name, kFullFormExpression)) {
    if (!nametrie_nest(r->name)) nametrie_set_nest(r->name, mAbsoluteNest(mNoType(), NoPosition, name));
    name = mSymbol(nametrie_nest(r->name));
  }
  r->name = 0;
}

void on_comma(Reading* r) {
  if (r->state != sConstant && r->state != sClosed) bad_token(405);
  if (r->type_level == 1) finish_name(r);
  if (r->open.empty()) die_msg("I would have prefered an EOF instead of the comma.");
  end_argument(r);
  r->state = sOperand;
}

tAsynt on_end(Reading* r) {
  r->at_end = true;
  if ((r->state != sConstant && r->state != sClosed) || !r->open.empty())
    die_msg("The Evaluate-value generated for Evaluate-function has wrong syntax. Premature EOF found.");
  *r->tail = mExpression0();
  return expression_of(r);
}

tAsynt ffparse_aux() {
  Reading r;
  for (;;) {
    switch (ffscan_GetToken()) {
      case fftReal:
      case fftInteger:
      case fftString: on_constant(&r); break;
      case fftSymbol: on_symbol(&r); break;
      case fftOpen: on_open(&r); break;
      case fftClose: on_close(&r); break;
      case fftComma: on_comma(&r); break;
      default: return on_end(&r);
    }
  }
}

}  // namespace

tAsynt ffparse(char cheap_parse) {
  tAsynt tree = ffparse_aux();
  if (cheap_parse) return tree;
  CheckAsynt(tree);
  Comp_elim(tree, &tree, nullptr);
  CheckAsynt(tree);
  Veri_trans_tree(&tree);
  CheckAsynt(tree);
  return tree;
}

}  // namespace oz
