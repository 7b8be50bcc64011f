// One walk over the field table.

#include "code_text.h"

#include "type_text.h"

namespace oz {
namespace {

const TreeKind& kind_of(tAsynt t) { return Asynt_Schema.kinds[Asynt_Kind(t)]; }
tAsynt child(tAsynt t, size_t slot) { return tree_raw_slot<tAsynt>(t, slot); }

// Cells are named X1, terminators X0.
bool is_list(tAsynt t) {
  const char last = std::string(kind_of(t).name).back();
  return kind_of(t).cell || (last == '0' && kind_of(t).field_count == 0);
}

std::string items(tAsynt list, const char* separator) {
  std::string out;
  for (; kind_of(list).cell; list = child(list, 1)) out += (out.empty() ? "" : separator) + code_text(child(list, 0));
  return out;
}

std::string symbol(tAsynt si) {
  if (Asynt_Kind(si) == kTempSymbol) return "T" + std::to_string(TempSymbol_Number(si));
  if (Asynt_Kind(si) == kOutParam) return "O" + std::to_string(OutParam_Number(si));
  return NamedSymbol_Name(si);
}

std::string fields(tAsynt t) {
  const TreeKind& k = kind_of(t);
  std::string out;
  const int first = Asynt_IsType(t, kOperator) ? 1 : 0;
  for (int i = first; i < k.child_count; i++) {
    const tAsynt c = child(t, k.children[i]);
    if (i > first) out += ',';
    if (!c)
      out += "null";
    else if (is_list(c))
      out += k.child_count == first + 1 ? items(c, ",") : '{' + items(c, ",") + '}';
    else
      out += code_text(c);
  }
  return k.child_count > first ? '[' + out + ']' : "";
}

}  // namespace

std::string code_text(tAsynt t) {
  if (Asynt_IsType(t, kType)) return type_text(t);
  switch (Asynt_Kind(t)) {
    case kNoAsynt: return "null";
    case kSymbol: return symbol(Symbol_SymInfo(t));
    case kSimpleFFE: return code_text(SimpleFFE_Name(t)) + '[' + items(FullFormExpression_Args(t), ",") + ']';
    case kComplexFFE: return code_text(ComplexFFE_Name(t)) + '[' + items(FullFormExpression_Args(t), ",") + ']';
    case kIntConst: return '#' + std::to_string(IntConst_Val(t));
    case kExactIntConst:
    case kExactRealConst: return tree_raw_slot<string>(t, 0);
    case kStringConst: return '"' + std::string(StringConst_Val(t)) + '"';
    case kEmpty: return "&";
    case kXSet: return code_text(Binary_LHS(t)) + '=' + code_text(Binary_RHS(t));
    case kXCompoundExpression: return '(' + items(Variadic_Expressions(t), ";") + ')';
    default: return is_list(t) ? '{' + items(t, ",") + '}' : kind_of(t).name + fields(t);
  }
}

}  // namespace oz
