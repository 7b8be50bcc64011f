// How the parser makes the nodes that are more than one constructor call.
#pragma once

#include "Asynt.h"

namespace oz::parsing {

// A parsed expression, with what the next operator needs to know of it.
struct Operand {
  tAsynt tree;
  int depth;  // levels of the tree, list cells not counted
};

// An operand from a new node above operands of this depth. Too many levels are fatal.
Operand node(tAsynt tree, int depth_below);

// A leaf.
inline Operand leaf(tAsynt tree) { return {tree, 1}; }

// The fatal message for too deep a nesting.
[[noreturn]] void nested_too_deeply();

// A list of operands, and the depth of the deepest.
struct Operands {
  tAsynt list;
  int depth;
};

// A list in the order of its making: appending never walks it.
struct List {
  tAsynt head = nullptr;
  tAsynt* hole = &head;
  List() = default;
  List(const List&) = delete;
  List& operator=(const List&) = delete;
};

// Appends a cell whose tail is still open; closes the list and yields it.
void append(List* list, tAsynt cell);
tAsynt finish(List* list, tAsynt terminator);

// A node's position: that of the token at hand, which is the one behind what the node was made from.
tAsynt here();

// The operators' nodes by kind.
tAsynt make_unary(Asynt_tKind kind, tAsynt expression);
tAsynt make_binary(Asynt_tKind kind, tAsynt lhs, tAsynt rhs);
tAsynt make_list(Asynt_tKind kind, tAsynt expressions);

// The last cell of the list of a flat operator's Variadic; null for a tree of another kind. Finding it walks no list if
// the tree is the one that make_variadic or make_prefix_plus made last.
tAsynt last_cell(Asynt_tKind kind, tAsynt tree);

// lop and rop under a Variadic: operands of the same kind are spliced, so that (a+b)+c and a+(b+c) are one sum.
// lop_last is the last cell of lop, to be asked for before rop is parsed.
Operand make_variadic(Asynt_tKind kind, const Operand& lop, tAsynt lop_last, const Operand& rop);

// "+" expr: a sum of one operand.
Operand make_prefix_plus(const Operand& expr);

// x' or, for an x that is a derivative, the derivative of the next order.
Operand make_derivative(const Operand& expr);

// fun[params]: simple for a symbol, complex for any other head.
tAsynt make_funcall(tAsynt fun, tAsynt params);

// lhs[[rhs]]; lhs itself without subscripts.
Operand make_part(const Operand& lhs, const Operands& rhs);

// a`b`c from its elements [a, b, c]; the last is an id or a call of one.
tAsynt make_full_symbol(tAsynt exprs);

// A declared name under its type: the name, or a Symbol on a nest where the name denotes an element.
tAsynt set_type(tAsynt name, tAsynt type, Index* atts);

// The array declarations of those symbols that have an array type, in list order, and expr behind them.
tAsynt make_array_decls(tAsynt syms, tAsynt expr);

// Reports what is wrong with the name of a package; the name.
string check_package_name(string str);

// The number of a slot; numbers beyond int become the largest one.
int atoi_and_free(string str);

}  // namespace oz::parsing
