// The parse functions that call each other across files. Each bears the name of its rule and begins at the token at
// hand; what follows it must lie in a Frame.
#pragma once

#include "nesting.h"
#include "parse_build.h"
#include "parse_machine.h"

namespace oz::parsing {

// What can begin an expression.
inline constexpr TokenSet kExprStart =
    tokens(tokId, tokInteger, tokReal, tokString, tokBlank, tokBlankSequence, tokBlankNullSequence, tokOptionalBlank,
           tokLParen, tokLBrace, tokGet, tokIncrement, tokDecrement, tokMinus, tokPlus, tokNot, tokBackquote,
           tokKeyThis, tokSlot, tokSlotSequence, tokKeyModule, tokKeyBlock, tokKeySet);

inline constexpr TokenSet kBlanks = tokens(tokBlank, tokBlankSequence, tokBlankNullSequence, tokOptionalBlank);

// What can follow an id in operand position, operators apart.
inline constexpr TokenSet kIdTail = kBlanks | tokens(tokTag, tokColon, tokTagSet);

// What can follow an operand: all operators; all but the ";" that closes a definition.
inline constexpr TokenSet kOperators = tokens()
#define OPERATOR(code, level, form, kind) | tokens(tok##code)
#include "precedence.def"
#undef OPERATOR
    ;
inline constexpr TokenSet kTightOperators = without(kOperators, tokSemicolon);

inline constexpr TokenSet kBaseType = tokens(tokKeyInt, tokKeyReal, tokKeyBool, tokKeyComplex, tokKeyString);

inline constexpr TokenSet kLocalDefStart =
    kBaseType | tokens(tokId, tokKeyStatic, tokKeyOnce, tokKeyArray, tokKeySymbol, tokLBrace);

// What can begin a variable of Module.
inline constexpr TokenSet kVarStart = kBaseType | tokens(tokId);

// Places before a whole part: an operand, an expression, an expression that stops at ";", a pattern.
inline constexpr Rest kOperand = need(kExprStart) + may(kIdTail);
inline constexpr Rest kExpr = kOperand + may(kOperators);
inline constexpr Rest kTightExpr = kOperand + may(kTightOperators);
inline constexpr Rest kPattern = need(kBlanks | tokens(tokId)) + may(kExprStart);

// The nesting at work; 0 between parses.
extern int nesting;

// Counts a level of nesting for as long as it lives. Too many are fatal.
struct Nest {
  Nest() {
    if (nesting++ == kMaxNesting) nested_too_deeply();
  }
  ~Nest() { nesting--; }
  Nest(const Nest&) = delete;
  Nest& operator=(const Nest&) = delete;
};

// The Symbol of an id token's attribute.
inline tAsynt symbol_of(const scan_tScanAttribute& id) { return mSymbol(id.Symbol); }

Operand expr();        // with ";" as an operator
Operand tight_expr();  // up to ";"
Operands expr_list();  // may be empty
Operand pattern_foo();
Operand pattern();

Operand type();
void local_vars(tAsynt* symbols, Operands* values);
tAsynt local_defs();
tAsynt id_list();  // last first

}  // namespace oz::parsing
