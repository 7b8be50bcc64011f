// The heads of the host language that the compiler understands natively.
//
// predef_heads.def has one row per head: its spelling, how the arguments of an application are handed on, and the node
// constructor. A row becomes an AbsoluteSymbol whose Type is a PreDef, so that an application Sin[x] is recognised by
// the symbol it starts with and becomes mXSin(x). Constructors of different signatures are stored as untyped pointers;
// the predef_type beside the pointer tells the signature.

#include "predef.h"

#include <string>
#include <type_traits>

#include "oz.h"
#include "ozerrors.h"
#include "unparse.h"

namespace oz {

namespace {

// ---- the table

using Fun0 = tAsynt (*)();
using Fun1 = tAsynt (*)(tAsynt);
using Fun2 = tAsynt (*)(tAsynt, tAsynt);
using Fun3 = tAsynt (*)(tAsynt, tAsynt, tAsynt);
using Fun4 = tAsynt (*)(tAsynt, tAsynt, tAsynt, tAsynt);

// The signature of the constructors of a predef_type; operators take a position ahead of their operands.
template <predef_type type>
constexpr auto signature() {
  if constexpr (type == constant)
    return Fun0{};
  else if constexpr (type == cunary || type == cvariadic || type == cunary_second_ignored || type == type_arctan)
    return Fun1{};
  else if constexpr (type == cbinary || type == unary || type == variadic || type == variadic_two ||
                     type == variadic_one_two || type == predef_abs || type == predef_while || type == predef_put)
    return Fun2{};
  else if constexpr (type == binary || type == predef_if || type == predef_forall || type == predef_3)
    return Fun3{};
  else if constexpr (type == predef_for)
    return Fun4{};
  else
    return nullptr;
}

// The stored form of a constructor; one that does not fit its predef_type does not compile.
template <predef_type type>
void* stored(decltype(signature<type>()) fun) {
  if constexpr (std::is_null_pointer_v<decltype(fun)>)
    return nullptr;
  else
    return reinterpret_cast<void*>(fun);
}

template <typename... Node>
tAsynt call(void* fun, Node... nodes) {
  return reinterpret_cast<tAsynt (*)(Node...)>(fun)(nodes...);
}

void make_predef_entry(Index* i, string name, void* fun, predef_type type_flag) {
  create_entry(i, mAbsoluteSymbol(mPreDef(fun, type_flag), NoPosition, name, mExpression0()), name);
}

// ---- argument lists

bool is_cell(tAsynt list) { return Asynt_Kind(list) == kExpression1; }

// Element number n, from 1, of a list that has so many.
tAsynt element(tAsynt list, int n) {
  for (; n > 1; n--) list = Expression1_Expressions(list);
  return Expression1_Expression(list);
}

// ---- iterators

// The iterator {variable, min, max}; anything else dies with the message.
tAsynt make_iterator(tAsynt list, const char* message) {
  if (Asynt_Kind(list) != kXList) die_msg("%s", message);
  const tAsynt elements = Variadic_Expressions(list);
  if (expr_list_len(elements) != 3) die_msg("%s", message);
  return mIterator(element(elements, 1), element(elements, 2), element(elements, 3));
}

// The iterators of {{i, 1, n}, {j, 1, m}} in written order.
tAsynt make_iterators(tAsynt lists) {
  const tAsynt end = mIterator0();
  tAsynt result = end;
  tAsynt* tail = &result;
  for (; is_cell(lists); lists = Expression1_Expressions(lists)) {
    *tail = mIterator1(make_iterator(Expression1_Expression(lists), "Bad iterator in IReduce"), end);
    tail = &Iterator1_Iterators(*tail);
  }
  return result;
}

// ---- applications

[[noreturn]] void bad_unary(tPosition posIn, int noargs, tAsynt node) {
  die_msg_pos2(posIn, "%d arguments to unary function %s.", noargs, unparse_string(node));
}

[[noreturn]] void bad_binary(tPosition posIn, int noargs) {
  die_msg_pos2(posIn, "%d argument(s) to binary function.", noargs);
}

// The annotation oz$Parallel[lhs = rhs]: two lists are assigned in parallel, a single left side as ever.
tAsynt convert_parallel(tPosition posIn, tAsynt args, int noargs) {
  const tAsynt set = noargs == 1 ? element(args, 1) : nullptr;
  if (Asynt_Kind(set) == kXSet) {
    const tAsynt lhs = Binary_LHS(set);
    const tAsynt rhs = Binary_RHS(set);
    if (Asynt_Kind(lhs) != kXList) return set;
    if (Asynt_Kind(rhs) == kXList) return mParSet(Variadic_Expressions(lhs), Variadic_Expressions(rhs));
  }
  die_msg_pos2(posIn, "Bad oz$Parallel annotation.");
}

// Put[expression, file]: the file's name is the text of a constant.
tAsynt convert_put(tPosition posIn, tAsynt args) {
  const tAsynt file = element(args, 2);
  string name = nullptr;
  switch (Asynt_Kind(file)) {
    case kStringConst: name = StringConst_Val(file); break;
    case kExactIntConst: name = ExactIntConst_Val(file); break;
    case kExactRealConst: name = ExactRealConst_Val(file); break;
    default: die_msg_pos2(posIn, "The file of Put is not a constant: %s", unparse_string(file));
  }
  return mXPut(element(args, 1), mFilename(name));
}

// ---- untyped symbols

// The name of one component of a path, without its indices.
std::string component_name(tAsynt component) {
  while (Asynt_IsType(component, kFullFormExpression))
    component = Asynt_Kind(component) == kSimpleFFE ? SimpleFFE_Name(component) : ComplexFFE_Name(component);
  if (Asynt_Kind(component) == kSymbol && Asynt_IsType(Symbol_SymInfo(component), kNamedSymbol))
    return NamedSymbol_Name(Symbol_SymInfo(component));
  return unparse_string(component);
}

// A symbol's printed name; *is_private tells whether a component of its path is spelt Private.
std::string printed_name(tAsynt syminfo, bool* is_private) {
  *is_private = false;
  if (Asynt_Kind(syminfo) != kAbsoluteSymbol)
    return std::string("of type <") + Asynt_NodeName(Asynt_Kind(syminfo)) + ">\n";
  std::string name;
  for (tAsynt l = AbsoluteSymbol_Components(syminfo); is_cell(l); l = Expression1_Expressions(l)) {
    const std::string component = component_name(Expression1_Expression(l));
    if (component == "Private") *is_private = true;
    name += component + "`";
  }
  return name + NamedSymbol_Name(syminfo);
}

}  // namespace

void index_init_predefs(Index* i) {
#define PREDEF(head, type, constructor) make_predef_entry(i, head, stored<type>(constructor), type);
#include "predef_heads.def"
#undef PREDEF
}

int expr_list_len(tAsynt args) {
  int len = 0;
  for (; is_cell(args); args = Expression1_Expressions(args)) len++;
  return len;
}

tAsynt mangle_ireduce_iterators(tAsynt exprs) {
  if (Asynt_Kind(exprs) != kXList) die_msg("Bad IReduce.");
  const tAsynt elements = Variadic_Expressions(exprs);
  if (!is_cell(elements)) die_msg("Empty IReduce iterator list.");
  if (Asynt_Kind(element(elements, 1)) == kXList) return make_iterators(elements);
  return mIterator1(make_iterator(exprs, "Bad iterator in IReduce."), mIterator0());
}

tAsynt convert_predef_node(tPosition posIn, tAsynt args, void* fun, predef_type type, tAsynt node) {
  const int noargs = expr_list_len(args);
  const auto arg = [args](int n) { return element(args, n); };
  switch (type) {
    case constant:
      if (noargs != 0) die_msg_pos2(posIn, "Constant  with argument list, %d arguments.", noargs);
      return call(fun);
    case cunary:
      if (noargs != 1) bad_unary(posIn, noargs, node);
      return call(fun, arg(1));
    case cbinary:
      if (noargs != 2) bad_binary(posIn, noargs);
      return call(fun, arg(1), arg(2));
    case unary:
      if (noargs != 1) bad_unary(posIn, noargs, node);
      return call(fun, mkConvPos(posIn), arg(1));
    case binary:
      if (noargs != 2) bad_binary(posIn, noargs);
      return call(fun, mkConvPos(posIn), arg(1), arg(2));
    case variadic: return call(fun, mkConvPos(posIn), args);
    case variadic_two:
      if (noargs != 2) bad_binary(posIn, noargs);
      return call(fun, mkConvPos(posIn), args);
    case variadic_one_two:
      if (noargs < 1 || noargs > 2) die_msg_pos2(posIn, "%d argument(s) to binary or unary  function.", noargs);
      return call(fun, mkConvPos(posIn), args);
    case predef_if:
      if (noargs < 2 || noargs > 3) die_msg_pos2(posIn, "Wrong no of args to If.");
      return mXIf(arg(1), arg(2), noargs == 3 ? arg(3) : mEmpty());
    case predef_abs:
      // The Type is filled in when the argument's type is known.
      if (noargs != 1) die_msg_pos2(posIn, "Wrong no of args to Abs.");
      return mXAbs(arg(1), mNoType());
    case predef_for:
      if (noargs < 3 || noargs > 4) die_msg_pos2(posIn, "Wrong no of args to For.");
      return mXFor(arg(1), arg(2), arg(3), noargs == 4 ? arg(4) : mEmpty());
    case predef_forall:
      if (noargs != 2) die_msg_pos2(posIn, "Wrong no of args to ForAll.");
      return mForAll(arg(1), mangle_ireduce_iterators(arg(2)), mEmpty());
    case predef_while:
      if (noargs < 1 || noargs > 2) die_msg_pos2(posIn, "Wrong no of args to While.");
      return mXWhile(arg(1), noargs == 2 ? arg(2) : mEmpty());
    case predef_3:
      if (noargs != 3) die_msg_pos2(posIn, "Expected 3 arguments here.");
      return call(fun, arg(1), arg(2), arg(3));
    case type_arctan:
      if (noargs < 1 || noargs > 2) die_msg_pos2(posIn, "Wrong number of args to arctan: %d", noargs);
      return noargs == 1 ? mXArcTan(arg(1)) : mArcTan2(arg(1), arg(2));
    case predef_ireduce:
      if (noargs != 3) die_msg_pos2(posIn, "Wrong number of args for IReduce");
      return mIReduce(arg(1), arg(2), mangle_ireduce_iterators(arg(3)), mEmpty());
    case parallel_annotation: return convert_parallel(posIn, args, noargs);
    case predef_put:
      if (noargs != 2) die_msg_pos2(posIn, "%d argument(s) to Put function.", noargs);
      return convert_put(posIn, args);
    case cvariadic: return call(fun, args);
    case cunary_second_ignored:
      if (noargs < 1 || noargs > 2) die_msg("One or two arguments expected");
      return call(fun, arg(1));
    case predef_ineq: break;  // inequalities are converted by the caller
  }
  // The line number is part of the message's fixed text.
  die_msg("Internal error in line %d of %s", 428, "predef");
}

tAsynt convert_predef_const_node(tAsynt t, void* fun, predef_type type) { return type == constant ? call(fun) : t; }

void notype_error(tPosition posIn, tAsynt syminfo, tAsynt xset, int isFunc) {
  bool is_private;
  const std::string name = printed_name(syminfo, &is_private);
  if (isFunc)
    error_msg_pos2(posIn, "Undefined function symbol,  function not supported: %s", name.c_str());
  else if (is_private)
    error_msg_pos2(posIn,
                   "Duplicate (variable) symbol, probably defined twice (e.g.inside and outside package) in different "
                   "sense: %s",
                   name.c_str());
  else
    error_msg_pos2(posIn, "Undefined (variable) symbol: %s", name.c_str());
  if (xset && posIn.Line == 0) std::fprintf(stderr, "Last assignment seen:\n%s\n", unparse_string(xset));
}

}  // namespace oz
