// Expressions: operands by descent, operators by climbing over the table of their levels.
//
// climb(limit) reads an operand and then applies to it, one by one, all operators whose level is within the limit. A
// right operand is read by climb with the limit of its operator, so that a tighter operator goes to it and a looser one
// to the whole:
//
//   a + b * c      "+" has level 15, its right operand is climb(14), and "*" of level 14 goes to b
//   a + b !        the right operand leaves "!" of level 18 alone: (a + b)!
//
// A prefix operator brings a limit of its own for its operand: -a ^ b is -(a ^ b), and in a . -b . c the second "."
// goes to b. Behind the prefixed operand the limit of the place is back.

#include <algorithm>

#include "parse_rules.h"

namespace oz::parsing {

int nesting = 0;

namespace {

// An operator behind an operand. apply starts at its token.
struct Operator {
  uint8_t level;
  Operand (*apply)(const Operator& op, const Operand& lhs);
  Asynt_tKind kind;
};

const Operator& operator_of(int code);

// Limits of operands that are not right operands: a whole expression, one that leaves ";" alone, the operand of prefix
// "++" and "--", of prefix "-" and "+", of prefix "!", of id ":", of the definition of a tag.
constexpr int kLoosest = 31;
constexpr int kAboveSemicolon = 30;
constexpr int kStepLimit = 3;
constexpr int kSignLimit = 12;
constexpr int kNotLimit = 18;
constexpr int kNamedLimit = 22;
constexpr int kTagLimit = 29;

// Where an expression ends although the operator is within its limit: the middle of a ~ f ~ b, the left side of a
// definition that belongs to a tag. Operands inside it know nothing of that.
constexpr TokenSet kNowhere = tokens();
constexpr TokenSet kAtTilde = tokens(tokTilde);
constexpr TokenSet kAtAssignment = tokens(tokSet, tokSetDelayed, tokUnset);

Operand climb(int limit, TokenSet stop = kNowhere);

int deeper(const Operand& a, const Operand& b) { return std::max(a.depth, b.depth); }

tAsynt one(tAsynt e) { return mExpression1(e, mExpression0()); }

// string_or_id = string | id
string string_or_id() {
  at<need(tokens(tokString, tokId))>();
  if (token == tokString) return take(tokString).Text;
  return NamedSymbol_Name(take(tokId).Symbol);
}

// message = id "::" string_or_id [ "::" string_or_id ]
Operand message(tAsynt symbol) {
  next();
  const string tag = string_or_id();
  string language = "";
  at<may(tokTag)>();
  if (token == tokTag) {
    next();
    language = string_or_id();
  }
  return node(mMessage(symbol, tag, language), 1);
}

// tag_definition = tag "/:" not_set_expr ( "=" expr | ":=" expr | "=." )
Operand tag_definition(tAsynt tag) {
  next();
  Operand lhs;
  {
    Frame<may(kOperators) + need(kAtAssignment)> behind;
    lhs = climb(kLoosest, kAtAssignment);
  }
  at<need(kAtAssignment)>();
  if (token != tokSet && token != tokSetDelayed) {
    take(tokUnset);
    return node(mXTagUnset(tag, lhs.tree), lhs.depth);
  }
  const bool delayed = token == tokSetDelayed;
  next();
  const Operand rhs = climb(kTagLimit);
  return node((delayed ? mXTagSetDelayed : mXTagSet)(tag, lhs.tree, rhs.tree), deeper(lhs, rhs));
}

Operand named_pattern(tAsynt name, const Operand& object) { return node(mXPattern(name, object.tree), object.depth); }

// id_operand = id | message | id ":" expr | tag_definition | id pattern_foo
Operand id_operand() {
  const tAsynt symbol = symbol_of(take(tokId));
  at<may(kIdTail)>();
  switch (token) {
    case tokTag: return message(symbol);
    case tokTagSet: return tag_definition(symbol);
    case tokColon: next(); return named_pattern(symbol, climb(kNamedLimit));
    case tokBlank:
    case tokBlankSequence:
    case tokBlankNullSequence:
    case tokOptionalBlank: return named_pattern(symbol, pattern_foo());
    default: return leaf(symbol);
  }
}

// Brackets around an operand list, the closing one not yet passed.
template <Rest closing>
Operands bracketed() {
  next();
  Frame<closing> behind;
  return expr_list();
}

// "(" expr ")" is the expression itself, so that (a+b)+c is one sum.
Operand parenthesised() {
  next();
  Operand inner;
  {
    Frame<need(tokRParen)> behind;
    inner = expr();
  }
  take<need(tokRParen)>(tokRParen);
  return inner;
}

// list = "{" expr_list "}"
Operand list() {
  const Operands items = bracketed<need(tokRBrace)>();
  take(tokRBrace);
  return node(make_list(kXList, items.list), items.depth);
}

// get = "<<" string_or_id
Operand get() {
  next();
  return node(mXGet(mFilename(string_or_id())), 1);
}

// A prefix operator and its operand.
Operand prefixed(Asynt_tKind kind, int limit) {
  next();
  const Operand e = climb(limit);
  return node(make_unary(kind, e.tree), e.depth);
}

Operand prefix_plus() {
  next();
  return make_prefix_plus(climb(kSignLimit));
}

// slot = "#" [ integer ] | "##" [ integer ]
Operand slot() {
  const bool sequence = token == tokSlotSequence;
  next();
  at<may(tokInteger)>();
  const int number = token == tokInteger ? atoi_and_free(take(tokInteger).Text) : 1;
  return leaf(sequence ? mSlotSequence(number) : mSlot(number));
}

// unset = "set" expr "=."
Operand unset() {
  next();
  Operand e;
  {
    Frame<need(tokUnset)> behind;
    e = expr();
  }
  take<need(tokUnset)>(tokUnset);
  return node(make_unary(kXUnset, e.tree), e.depth);
}

constexpr Rest kModuleBody = kExpr + need(tokRBracket);
constexpr Rest kModuleVars = may(kVarStart) + need(tokRBrace) + need(tokComma) + kModuleBody;

// module = ( "Module" | "Block" ) "[" "{" local_vars "}" "," expr "]"
Operand module() {
  const bool block = token == tokKeyBlock;
  next();
  take<need(tokLBracket) + need(tokLBrace) + kModuleVars>(tokLBracket);
  take<need(tokLBrace) + kModuleVars>(tokLBrace);
  tAsynt symbols;
  Operands values;
  {
    Frame<need(tokRBrace) + need(tokComma) + kModuleBody> behind;
    local_vars(&symbols, &values);
  }
  take(tokRBrace);
  take<need(tokComma) + kModuleBody>(tokComma);
  Operand body;
  {
    Frame<need(tokRBracket)> behind;
    body = expr();
  }
  take(tokRBracket);
  const int depth = std::max(values.depth, body.depth + 1);
  const tAsynt all = make_array_decls(symbols, body.tree);
  return node((block ? mXBlock : mXModule)(symbols, values.list, all), depth);
}

// context_elem = id { "[" expr_list "]" }
Operand context_elem() {
  Nest level;
  Operand e = leaf(symbol_of(take<need(tokId) + may(tokens(tokLBracket, tokBackquote))>(tokId)));
  for (;;) {
    at<may(tokens(tokLBracket, tokBackquote))>();
    if (token != tokLBracket) return e;
    const Operands args = bracketed<need(tokRBracket) + may(tokens(tokLBracket, tokBackquote))>();
    take(tokRBracket);
    e = node(make_funcall(e.tree, args.list), std::max(e.depth, args.depth));
  }
}

// context_exprs = [ expr ] "`" context_elems
// context_elems = context_elem { "`" context_elem }
// The expression in front, if there is one, is the first element.
Operand context_exprs(const Operand* front) {
  List elements;
  int depth = 0;
  if (front) {
    append(&elements, mExpression1(front->tree, nullptr));
    depth = front->depth;
  }
  do {
    next();
    const Operand e = context_elem();
    append(&elements, mExpression1(e.tree, nullptr));
    depth = std::max(depth, e.depth);
  } while (token == tokBackquote);
  return node(make_full_symbol(finish(&elements, mExpression0())), depth);
}

Operand integer() { return leaf(mExactIntConst(take(tokInteger).Text)); }
Operand real() { return leaf(mExactRealConst(take(tokReal).Text)); }
Operand text() { return leaf(mStringConst(take(tokString).Text)); }
Operand pre_increment() { return prefixed(kXPreIncrement, kStepLimit); }
Operand pre_decrement() { return prefixed(kXPreDecrement, kStepLimit); }
Operand minus() { return prefixed(kXMinus, kSignLimit); }
Operand logical_not() { return prefixed(kXNot, kNotLimit); }
Operand absolute_context() { return context_exprs(nullptr); }

Operand this_object() {
  next();
  return leaf(mThis());
}

using OperandRule = Operand (*)();
struct OperandTable {
  OperandRule of[kTokenCount];
};

// What each token begins in operand position. Any other token stands for a missing operand, which becomes an id.
constexpr OperandTable make_operands() {
  OperandTable table{};
  for (OperandRule& rule : table.of) rule = id_operand;
  for (int blank : {tokBlank, tokBlankSequence, tokBlankNullSequence, tokOptionalBlank}) table.of[blank] = pattern_foo;
  for (int sharp : {tokSlot, tokSlotSequence}) table.of[sharp] = slot;
  for (int block : {tokKeyModule, tokKeyBlock}) table.of[block] = module;
  table.of[tokInteger] = integer;
  table.of[tokReal] = real;
  table.of[tokString] = text;
  table.of[tokLParen] = parenthesised;
  table.of[tokLBrace] = list;
  table.of[tokGet] = get;
  table.of[tokIncrement] = pre_increment;
  table.of[tokDecrement] = pre_decrement;
  table.of[tokMinus] = minus;
  table.of[tokPlus] = prefix_plus;
  table.of[tokNot] = logical_not;
  table.of[tokBackquote] = absolute_context;
  table.of[tokKeyThis] = this_object;
  table.of[tokKeySet] = unset;
  return table;
}

constexpr OperandTable kOperandTable = make_operands();

// The forms of the table, each applied to the operator at hand and its left operand.

Operand context(const Operator&, const Operand& lhs) { return context_exprs(&lhs); }

Operand call(const Operator&, const Operand& fun) {
  const Operands args = bracketed<need(tokRBracket)>();
  take(tokRBracket);
  return node(make_funcall(fun.tree, args.list), std::max(fun.depth, args.depth));
}

Operand part(const Operator&, const Operand& lhs) {
  const Operands subscripts = bracketed<need(tokRBracket) + need(tokRBracket)>();
  take(tokRBracket);
  take<need(tokRBracket)>(tokRBracket);
  return make_part(lhs, subscripts);
}

// expr "=>" id
Operand indirect(const Operator&, const Operand& pointer) {
  next();
  return node(mIndirect(pointer.tree, symbol_of(take<need(tokId)>(tokId))), pointer.depth);
}

Operand postfix(const Operator& op, const Operand& e) {
  next();
  return node(make_unary(op.kind, e.tree), e.depth);
}

Operand derivative(const Operator&, const Operand& e) {
  next();
  return make_derivative(e);
}

// f @ x is f[x], x // f too.
Operand applied(const Operand& fun, const Operand& arg) {
  return node(make_funcall(fun.tree, one(arg.tree)), deeper(fun, arg));
}

Operand prefix_call(const Operator& op, const Operand& fun) {
  next();
  return applied(fun, climb(op.level));
}

Operand postfix_call(const Operator& op, const Operand& arg) {
  next();
  return applied(climb(op.level - 1), arg);
}

// a ~ f ~ b is f[a, b]. A "~" that the middle meets at its own level ends it.
Operand infix_call(const Operator& op, const Operand& a) {
  next();
  Operand fun;
  {
    Frame<may(kOperators) + need(tokTilde) + kOperand> behind;
    fun = climb(kLoosest, kAtTilde);
  }
  take<need(tokTilde) + kOperand>(tokTilde);
  const Operand b = climb(op.level - 1);
  const tAsynt args = mExpression1(a.tree, one(b.tree));
  return node(make_funcall(fun.tree, args), std::max(fun.depth, deeper(a, b)));
}

Operand left(const Operator& op, const Operand& lhs) {
  next();
  const Operand rhs = climb(op.level - 1);
  return node(make_binary(op.kind, lhs.tree, rhs.tree), deeper(lhs, rhs));
}

Operand right(const Operator& op, const Operand& lhs) {
  next();
  const Operand rhs = climb(op.level);
  return node(make_binary(op.kind, lhs.tree, rhs.tree), deeper(lhs, rhs));
}

Operand flat(const Operator& op, const Operand& lhs) {
  const tAsynt last = last_cell(op.kind, lhs.tree);
  next();
  return make_variadic(op.kind, lhs, last, climb(op.level - 1));
}

// expr ";" [ expr ]: a ";" with nothing behind it leaves no trace.
Operand compound(const Operator& op, const Operand& lhs) {
  const tAsynt last = last_cell(op.kind, lhs.tree);
  next();
  at<may(kExprStart)>();
  return kExprStart.has(token) ? make_variadic(op.kind, lhs, last, climb(op.level - 1)) : lhs;
}

// ineqs = ineq { ineq }; ineq = ( "==" | "!=" | ">" | ">=" | "<" | "<=" ) expr
// An operator's node stands at the place behind its right operand.
Operand chain(const Operator& op, const Operand& first) {
  List items;
  int depth = first.depth;
  append(&items, mExpression1(first.tree, nullptr));
  while (operator_of(token).level == op.level) {
    const Asynt_tKind kind = operator_of(token).kind;
    next();
    const Operand e = climb(op.level - 1);
    append(&items, mExpression1(make_list(kind, mExpression0()), nullptr));
    append(&items, mExpression1(e.tree, nullptr));
    depth = std::max(depth, e.depth);
  }
  return node(mXInequality(finish(&items, mExpression0())), depth);
}

Operand substitute(const Operator& op, const Operand& lhs) {
  next();
  const Operand rhs = climb(op.level);
  return node(mSubstitute(lhs.tree, rhs.tree), deeper(lhs, rhs));
}

// expr ( ">>" | ">>>" ) string_or_id
Operand put(const Operator&, const Operand& e) {
  const bool appended = token == tokPutAppend;
  next();
  const tAsynt file = mFilename(string_or_id());
  return node((appended ? mXPutAppend : mXPut)(e.tree, file), e.depth);
}

struct OperatorTable {
  Operator of[kTokenCount];
};

// A token that is no operator is looser than any limit.
constexpr OperatorTable make_operators() {
  OperatorTable table{};
  for (Operator& op : table.of) op = {UINT8_MAX, nullptr, kNoAsynt};
#define OPERATOR(code, level, form, kind) table.of[tok##code] = {level, form, k##kind};
#include "precedence.def"
#undef OPERATOR
  return table;
}

constexpr OperatorTable kOperatorTable = make_operators();

const Operator& operator_of(int code) { return kOperatorTable.of[code]; }

Operand climb(int limit, TokenSet stop) {
  Nest level;
  at<kOperand>();
  Operand e = kOperandTable.of[token]();
  for (;;) {
    at<kNothing>();
    const Operator& op = operator_of(token);
    if (op.level > limit || stop.has(token)) return e;
    e = op.apply(op, e);
  }
}

// The head of a blank takes everything that can be an expression, also across ";".
Operand blank(int code, tAsynt (*make)(tAsynt)) {
  take(code);
  at<may(kExprStart)>();
  if (!kExprStart.has(token)) return node(make(mEmpty()), 1);
  const Operand head = expr();
  return node(make(head.tree), head.depth);
}

}  // namespace

Operand expr() {
  Frame<may(kOperators)> behind;
  return climb(kLoosest);
}

Operand tight_expr() {
  Frame<may(kTightOperators)> behind;
  return climb(kAboveSemicolon);
}

// expr_list = [ expr { "," expr } ]
Operands expr_list() {
  List list;
  int depth = 0;
  at<may(kExprStart)>();
  bool more = kExprStart.has(token);
  while (more) {
    Operand e;
    {
      Frame<may(kOperators) + may(tokComma)> behind;
      e = climb(kLoosest);
    }
    append(&list, mExpression1(e.tree, nullptr));
    depth = std::max(depth, e.depth);
    more = token == tokComma;
    if (more) next();
  }
  return {finish(&list, mExpression0()), depth};
}

// pattern_foo = "_" [ expr ] | "__" [ expr ] | "___" [ expr ] | "_."
Operand pattern_foo() {
  switch (token) {
    case tokBlankSequence: return blank(token, mBlankSequence);
    case tokBlankNullSequence: return blank(token, mBlankNullSequence);
    case tokOptionalBlank: next(); return node(mOptional(mBlank(mEmpty()), mEmpty()), 1);
    default: return blank(tokBlank, mBlank);
  }
}

// pattern = [ id ] pattern_foo
Operand pattern() {
  at<kPattern>();
  if (token != tokId) return pattern_foo();
  const tAsynt name = symbol_of(take(tokId));
  at<need(kBlanks) + may(kExprStart)>();
  return named_pattern(name, pattern_foo());
}

}  // namespace oz::parsing
