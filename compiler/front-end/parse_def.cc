// Definitions: types, names, patterns in names, local definitions, descriptions of external functions.

#include <algorithm>
#include <vector>

#include "index.h"
#include "parse_rules.h"

namespace oz::parsing {
namespace {

constexpr Rest kName = need(tokId) + may(tokLBracket);
constexpr Rest kDimensions = need(tokLBracket) + may(kExprStart) + need(tokRBracket);

tAsynt base_node(int code) {
  switch (code) {
    case tokKeyReal: return mRealType(nullptr);
    case tokKeyBool: return mBoolType(nullptr);
    case tokKeyComplex: return mComplexType(nullptr);
    case tokKeyString: return mStringType(nullptr);
    default: return mIntType(nullptr);
  }
}

// base_type = "int" | "real" | "bool" | "complex" | "String"
tAsynt base_type() {
  const int code = kBaseType.has(token) ? token : int{tokKeyInt};
  take(code);
  return base_node(code);
}

// dimensions = "[" expr_list "]", in front of what the Rest tells.
template <Rest rest>
Operands dimensions() {
  Nest level;
  take<kDimensions + rest>(tokLBracket);
  Operands list;
  {
    Frame<need(tokRBracket) + rest> behind;
    list = expr_list();
  }
  take(tokRBracket);
  return list;
}

// Whether a "," leads to another item; it is passed.
bool another_item() {
  at<may(tokComma)>();
  if (token != tokComma) return false;
  next();
  return true;
}

// A call from a name and its bracketed arguments.
Operand name_call(const Operand& fun, const Operands& args) {
  return node(make_funcall(fun.tree, args.list), std::max(fun.depth, args.depth));
}

// name = id { "[" name_index_list "]" }; simple_name = id { "[" simple_name_arguments "]" }
// The id is there already.
Operand name_tail(Operand name, Operands (*arguments)()) {
  for (;;) {
    at<may(tokLBracket)>();
    if (token != tokLBracket) return name;
    next();
    Operands args;
    {
      Frame<need(tokRBracket) + may(tokLBracket)> behind;
      args = arguments();
    }
    take(tokRBracket);
    name = name_call(name, args);
  }
}

// The items of a list as arguments, in source order.
Operands argument_list(Operand (*item)()) {
  Nest level;
  List list;
  int depth = 0;
  do {
    Frame<may(tokComma)> behind;
    const Operand e = item();
    append(&list, mExpression1(e.tree, nullptr));
    depth = std::max(depth, e.depth);
  } while (another_item());
  return {finish(&list, mExpression0()), depth};
}

Operands name_index_list();
Operands simple_name_arguments();

Operand name() { return name_tail(leaf(symbol_of(take<kName>(tokId))), name_index_list); }
Operand simple_name() { return name_tail(leaf(symbol_of(take<kName>(tokId))), simple_name_arguments); }

// name_index = name | pattern | integer
Operand name_index() {
  at<need(kBlanks | tokens(tokId, tokInteger)) + may(kBlanks | tokens(tokLBracket))>();
  if (token == tokInteger) return leaf(mExactIntConst(take(tokInteger).Text));
  if (kBlanks.has(token)) return pattern_foo();
  const tAsynt symbol = symbol_of(take(tokId));
  at<may(kBlanks | tokens(tokLBracket))>();
  if (!kBlanks.has(token)) return name_tail(leaf(symbol), name_index_list);
  const Operand object = pattern_foo();
  return node(mXPattern(symbol, object.tree), object.depth);
}

// name_index_list = name_index { "," name_index }
Operands name_index_list() { return argument_list(name_index); }

// simple_name_index = simple_name | integer
Operand simple_name_index() {
  at<need(tokens(tokId, tokInteger)) + may(tokLBracket)>();
  if (token == tokInteger) return leaf(mExactIntConst(take(tokInteger).Text));
  return simple_name();
}

// typed_pattern = type pattern
// The type goes to the pattern's variable; without one it is dropped.
Operand typed_pattern() {
  Operand declared;
  {
    Frame<kPattern> behind;
    declared = type();
  }
  const Operand p = pattern();
  if (Asynt_Kind(p.tree) == kXPattern) SymInfo_Type(Symbol_SymInfo(XPattern_Name(p.tree))) = declared.tree;
  return {p.tree, std::max(p.depth, declared.depth)};
}

// simple_name_arguments = simple_name_index { "," simple_name_index } | optional_typed_patterns
// optional_typed_patterns = [ typed_pattern { "," typed_pattern } ]
Operands simple_name_arguments() {
  at<may(kBaseType | tokens(tokId, tokInteger))>();
  if (kBaseType.has(token)) return argument_list(typed_pattern);
  if (token == tokId || token == tokInteger) return argument_list(simple_name_index);
  return {mExpression0(), 0};
}

// local_var = [ type ] id [ "=" expr ]
void local_var(tAsynt* symbols, Operands* values) {
  Nest level;
  constexpr Rest kVar = need(tokId) + may(tokSet);
  at<need(kVarStart) + may(tokSet)>();
  Operand declared{};
  if (token != tokId && kBaseType.has(token)) {
    Frame<kVar> behind;
    declared = type();
  }
  const tAsynt symbol = symbol_of(take<kVar>(tokId));
  if (declared.tree) SymInfo_Type(Symbol_SymInfo(symbol)) = declared.tree;
  Operand value = leaf(nullptr);
  at<may(tokSet)>();
  if (token == tokSet) {
    next();
    value = expr();
  }
  *symbols = mSymbol1(symbol, *symbols);
  values->list = mExpression1(value.tree ? value.tree : mEmpty(), values->list);
  values->depth = std::max({values->depth, value.depth, declared.depth});
}

// type_list = type { "," type }, in source order
tAsynt type_list() {
  List list;
  do {
    Frame<may(tokComma)> behind;
    append(&list, mType1(type().tree, nullptr));
  } while (another_item());
  return finish(&list, mType0());
}

// return_type = "{" [ type_list ] "}" | type
tAsynt return_type() {
  if (token != tokLBrace) return type().tree;
  next();
  tAsynt types = nullptr;
  at<may(kBaseType) + need(tokRBrace)>();
  if (kBaseType.has(token)) {
    Frame<need(tokRBrace)> behind;
    types = type_list();
  }
  take(tokRBrace);
  return mMultiType(types ? types : mType0());
}

struct Attribute {
  string key;
  tAsynt value;
};

// attributes = attribute { attribute }; attribute = id "=" string
// Of two attributes of one name the last stays; the index lists them in source order.
Index* attributes() {
  constexpr Rest kValue = need(tokString) + may(tokId);
  std::vector<Attribute> list;
  do {
    const string key = NamedSymbol_Name(take<need(tokId) + need(tokSet) + kValue>(tokId).Symbol);
    take<need(tokSet) + kValue>(tokSet);
    list.push_back({key, mStringConst(take<kValue>(tokString).Text)});
    at<may(tokId)>();
  } while (token == tokId);
  Index* index = make_node_index(4);
  for (auto a = list.rbegin(); a != list.rend(); ++a) create_entry(index, a->value, a->key);
  return index;
}

// opt_attrs = [ "with" attributes ]
Index* opt_attrs() {
  if (token != tokKeyWith) return nullptr;
  next();
  return attributes();
}

// input = id [ "=" "dim" "(" id "," expr ")" ]
tAsynt input() {
  constexpr Rest kSize = need(tokComma) + kExpr + need(tokRParen);
  constexpr Rest kArray = need(tokLParen) + need(tokId) + kSize;
  const tAsynt name = symbol_of(take<need(tokId) + may(tokSet)>(tokId));
  at<may(tokSet)>();
  if (token != tokSet) return mInputParameter(name);
  next();
  take<need(tokKeyDim) + kArray>(tokKeyDim);
  take<kArray>(tokLParen);
  const tAsynt array = symbol_of(take<need(tokId) + kSize>(tokId));
  take<kSize>(tokComma);
  Frame<need(tokRParen)> behind;
  const tAsynt size = expr().tree;
  take(tokRParen);
  return mInputSizeParameter(name, array, size);
}

// output = id [ "(" expr_list ")" ]
tAsynt output() {
  const tAsynt name = symbol_of(take<need(tokId) + may(tokLParen)>(tokId));
  at<may(tokLParen)>();
  if (token != tokLParen) return mOutputParameter(name);
  next();
  Frame<need(tokRParen)> behind;
  const tAsynt sizes = expr_list().list;
  take(tokRParen);
  return mOutputSizeParameter(name, sizes);
}

constexpr TokenSet kElementStart = tokens(tokId, tokKeyInput, tokKeyOutput, tokKeyInOut);

// external_description_element = [ "Input" ] input | "Output" output | "InOut" id
tAsynt external_description_element() {
  at<need(kElementStart) + may(tokSet)>();
  switch (token) {
    case tokKeyInput: next(); return input();
    case tokKeyOutput: next(); return output();
    case tokKeyInOut: next(); return mInOutParameter(symbol_of(take<need(tokId)>(tokId)));
    default: return input();
  }
}

// external_description_elements = [ external_description_element { "," external_description_element } ]
// The last one comes first.
tAsynt external_description_elements() {
  tAsynt list = mParameterspec0();
  at<may(kElementStart)>();
  if (!kElementStart.has(token)) return list;
  do {
    Frame<may(tokComma)> behind;
    list = mParameterspec1(external_description_element(), list);
  } while (another_item());
  return list;
}

constexpr Rest kElements = need(tokLParen) + may(kElementStart) + need(tokRParen);
constexpr Rest kReturns = need(tokens(tokKeyFunction, tokKeyProcedure, tokKeyVariable)) + kElements;

tAsynt external_returns() {
  at<kReturns>();
  switch (token) {
    case tokKeyProcedure: next(); return mExternalProcedureReturns();
    case tokKeyVariable: next(); return mExternalVariableReturns();
    default: take(tokKeyFunction); return mExternalFunctionReturns();
  }
}

// external_description = string string string ( "function" | "procedure" | "variable" )
//                        "(" external_description_elements ")"
tAsynt external_description() {
  constexpr Rest kText = need(tokString);
  const string prefix = take<kText + kText + kText + kReturns>(tokString).Text;
  const string context = take<kText + kText + kReturns>(tokString).Text;
  const string language = take<kText + kReturns>(tokString).Text;
  const tAsynt returns = external_returns();
  take<kElements>(tokLParen);
  Frame<need(tokRParen)> behind;
  const tAsynt parameters = external_description_elements();
  take(tokRParen);
  return mExternalDeclaration(prefix, context, language, returns, parameters);
}

struct Definition {
  tAsynt def;
  tAsynt extra;  // the array declaration that goes in front, or null
};

// typed_value = expr | "extern" string | "externinfo" external_description
tAsynt typed_value() {
  constexpr Rest kOther = need(kExprStart | tokens(tokKeyExtern, tokKeyExterninfo));
  at<kOther + may(kIdTail) + may(kTightOperators)>();
  switch (token) {
    case tokKeyExtern: next(); return mExternBody(take<need(tokString)>(tokString).Text);
    case tokKeyExterninfo: next(); return external_description();
    default: return tight_expr().tree;
  }
}

// typed_def = return_type simple_name ( opt_attrs | ":=" typed_value )
Definition typed_def() {
  constexpr Rest kTail = may(tokens(tokKeyWith, tokSetDelayed));
  tAsynt declared;
  {
    Frame<kName + kTail> behind;
    declared = return_type();
  }
  tAsynt name;
  {
    Frame<kTail> behind;
    name = simple_name().tree;
  }
  at<kTail>();
  if (token == tokSetDelayed) {
    next();
    const tAsynt value = typed_value();
    return {make_binary(kXSetDelayed, set_type(name, declared, nullptr), value), nullptr};
  }
  const tAsynt def = set_type(name, declared, opt_attrs());
  if (!Asynt_IsType(declared, kArrayType)) return {def, nullptr};
  return {def, mArrayDecl(mExpression1(name, mExpression0()), ArrayType_Dimensions(declared))};
}

// marked_def = ( "static" | "once" ) name ":=" expr
tAsynt marked_def(Asynt_tKind kind) {
  next();
  tAsynt lhs;
  {
    Frame<need(tokSetDelayed) + kTightExpr> behind;
    lhs = name().tree;
  }
  take(tokSetDelayed);
  const tAsynt rhs = tight_expr().tree;
  return make_binary(kind, lhs, rhs);
}

// name_list = name { "," name }, in source order
tAsynt name_list() { return argument_list(name).list; }

// array_def = "array" dimensions name_list
tAsynt array_def() {
  next();
  const tAsynt sizes = dimensions<kName + may(tokComma)>().list;
  const tAsynt names = name_list();
  return mArrayDecl(names, sizes);
}

// name_def = name [ ":=" expr ]
tAsynt name_def() {
  tAsynt lhs;
  {
    Frame<may(tokSetDelayed)> behind;
    lhs = name().tree;
  }
  if (token != tokSetDelayed) return lhs;
  next();
  const tAsynt rhs = tight_expr().tree;
  return make_binary(kXSetDelayed, lhs, rhs);
}

// local_def = name_def | marked_def | array_def | "symbol" id_list | typed_def
Definition local_def() {
  switch (token) {
    case tokKeyStatic: return {marked_def(kSetStatic), nullptr};
    case tokKeyOnce: return {marked_def(kSetOnce), nullptr};
    case tokKeyArray: return {array_def(), nullptr};
    case tokKeySymbol: next(); return {mSymbolDecl(ReverseAsynt(id_list())), nullptr};
    case tokId: return {name_def(), nullptr};
    default: return typed_def();
  }
}

}  // namespace

// type = base_type [ "array" dimensions ]
Operand type() {
  at<need(kBaseType) + may(tokKeyArray)>();
  const tAsynt base = base_type();
  at<may(tokKeyArray)>();
  if (token != tokKeyArray) return leaf(base);
  next();
  const Operands sizes = dimensions<kNothing>();
  return node(mArrayType(base, sizes.list), sizes.depth);
}

// local_vars = [ local_var { "," local_var } ]
// The last one comes first in both lists.
void local_vars(tAsynt* symbols, Operands* values) {
  *symbols = mSymbol0();
  *values = {mExpression0(), 0};
  at<may(kVarStart)>();
  if (!kVarStart.has(token)) return;
  do {
    Frame<may(tokComma)> behind;
    local_var(symbols, values);
  } while (another_item());
}

// local_defs = { local_def ";" }
tAsynt local_defs() {
  constexpr Rest kClose = need(tokSemicolon) + may(kLocalDefStart);
  List list;
  at<may(kLocalDefStart)>();
  while (kLocalDefStart.has(token)) {
    Definition d;
    {
      Frame<kClose> behind;
      d = local_def();
    }
    take<kClose>(tokSemicolon);
    if (d.extra) append(&list, mParticle1(d.extra, nullptr));
    append(&list, mParticle1(d.def, nullptr));
    at<may(kLocalDefStart)>();
  }
  return finish(&list, mParticle0());
}

// id_list = id { "," id }
// The last one comes first.
tAsynt id_list() {
  tAsynt list = mSymbol0();
  do {
    const tAsynt symbol = symbol_of(take<need(tokId) + may(tokComma)>(tokId));
    list = mSymbol1(symbol, list);
  } while (another_item());
  return list;
}

}  // namespace oz::parsing
