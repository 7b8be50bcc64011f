// Assignments, the files that Import and Export name, and sizes set by hand.

#include <cctype>
#include <string>

#include "predef.h"
#include "type_rules.h"

namespace oz {

namespace {

// ---- names of files and formats

std::string lower_case(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

// The text from the last point on, in lower case; empty without a point.
std::string suffix_of(const std::string& name) {
  const size_t point = name.rfind('.');
  return point == std::string::npos ? "" : lower_case(name.substr(point));
}

std::string text_of(tAsynt constant) { return StringConst_Val(constant) ? StringConst_Val(constant) : ""; }

bool is_text(tAsynt e) { return Asynt_Kind(e) == kStringConst; }

bool is_string(tAsynt* e) { return Check_string_type(Find_type(e)); }

// ---- v = Import[...]

bool is_valid_import_type(tAsynt typ) {
  if (!Is_array(typ) || Rank(typ) >= 3) return false;
  const tAsynt base = ArrayType_BasicType(typ);
  return Is_int(base) || Asynt_IsType(base, kRealType) || Asynt_IsType(base, kComplexType);
}

// The type of a left side that can take what a file holds; null with a report if it cannot.
tAsynt CheckValidImportType(tPosition pos, tAsynt* v) {
  if (Asynt_Kind(*v) != kSymbol) {
    type_error(pos, "Import[] can be used only in statements V=Import[...], where V is a local variable .");
    return nullptr;
  }
  const tAsynt typ = Find_type(v);
  if (is_valid_import_type(typ)) return typ;
  type_error(pos,
             "Import[] can be used only in statements V=Import[...], where V is a local variable of base type Real, "
             "Int, Complex , one or two dimensions");
  return nullptr;
}

void check_import_name(tPosition pos, const std::string& name) {
  const std::string suffix = suffix_of(name);
  if (suffix.empty())
    type_error(pos, "Argument to Import[file] is \" %s \", has no suffix. You have to specify a format for Import",
               name.c_str());
  else if (suffix != ".csv")
    type_error(pos, "Argument to Import[file] has suffix \" %s \", this format is not supported in this version",
               suffix.c_str());
}

void check_import_format(tPosition pos, const std::string& name) {
  const std::string format = lower_case(name);
  if (format != "csv" && format != "list")
    type_error(pos, "The format %s  in Import[] is not supported in this version", format.c_str());
}

// Import[f], and Import[f, "format"], with a string f.
bool is_import_form(tAsynt args) {
  const int n = expr_list_len(args);
  if (n > 2 || (n == 2 && !is_text(*Element(args, 2)))) return false;
  return is_string(Element(args, 1));
}

// The assignment's type; null if it is to be checked like any other. In the forms that are not told here a file name
// counts only if it has the shared string type, as a constant has and a variable has not.
tAsynt find_import_type(tPosition pos, tAsynt* lhs, tAsynt args) {
  const tAsynt place = CheckValidImportType(pos, lhs);
  if (!place) return Find_type(lhs);
  tAsynt* file = Element(args, 1);
  if (is_import_form(args)) {
    if (expr_list_len(args) == 2)
      check_import_format(pos, text_of(*Element(args, 2)));
    else if (is_text(*file))
      check_import_name(pos, text_of(*file));
    return place;
  }
  const tAsynt typ = Find_type(file);
  if (typ == string_type_node) return nullptr;
  type_error(pos, "A string expression that stores a file name is expected, but value of type %s found",
             Unparsed(typ).c_str());
  return place;
}

// ---- assignments

void report_sides(tPosition pos, tAsynt t, tAsynt lt, tAsynt rt) {
  type_warning(pos, "... left side is %s", Unparsed(Binary_LHS(t)).c_str());
  type_warning(pos, ".... of type %s", Unparsed(lt).c_str());
  type_warning(pos, "... right side is %s", Unparsed(Binary_RHS(t)).c_str());
  type_warning(pos, ".... of type %s", Unparsed(rt).c_str());
}

void check_sides(tAsynt t, tAsynt lt, tAsynt rt) {
  const tPosition pos = GetPos(t);
  const bool part = Operands_of(Binary_LHS(t), kXPart, Constructor(mXPart)) != nullptr;
  const bool narrow = Narrower(lt, rt);
  const bool init = NarrowerInit(lt, rt) && !part;
  if (narrow) type_error(pos, "Incompatible types in assignment :");
  if (init)
    type_warning(pos,
                 "Such types in assignment are not supported in typed Algebratica, because assignment modifies "
                 "variable type. Consider using \"var[[_]]=\" instead. :");
  if (narrow || init) report_sides(pos, t, lt, rt);
}

}  // namespace

tAsynt Find_assignment_type(tAsynt t) {
  tAsynt* lhs = &Binary_LHS(t);
  const tAsynt import = Operands_of(Binary_RHS(t), kXImport, Constructor(mXImport));
  if (Is_cell(import))
    if (const tAsynt typ = find_import_type(GetPos(t), lhs, import)) return typ;
  if (Asynt_Kind(t) == kXSet && Is_function_argument(*lhs)) {
    type_error(GetPos(t), "Assignment to function input arguments is not permitted.");
    return Find_type(lhs);
  }
  const tAsynt lt = Find_type(lhs);
  check_sides(t, lt, Find_type(&Binary_RHS(t)));
  return lt;
}

// ---- Export

namespace {

bool is_rank_1_or_2(int rank) { return rank == 1 || rank == 2; }

tAsynt find_named_export(tPosition pos, tAsynt* file, int rank) {
  if (!is_text(*file)) {
    if (!is_rank_1_or_2(rank)) type_error(pos, "Second argument to Export[file,arg] must be 1D or 2D array");
    return string_type_node;
  }
  const std::string name = text_of(*file);
  const std::string suffix = suffix_of(name);
  if (suffix.empty())
    type_error(pos,
               "First argument to Export[file,arg] is \" %s \", has no suffix. You have to specify a format for Export",
               name.c_str());
  else if (suffix != ".csv")
    type_error(pos,
               "First argument to Export[file,arg] has suffix \" %s \", this format is not supported in this version",
               suffix.c_str());
  if (!is_rank_1_or_2(rank)) type_error(pos, "Second argument to Export[\"*.csv\",arg] must be 1D or 2D array");
  return string_type_node;
}

void check_export_format(tPosition pos, const std::string& name, int rank) {
  const std::string format = lower_case(name);
  if (format == "csv") {
    if (!is_rank_1_or_2(rank)) type_error(pos, "Second argument to Export[file,arg,\"csv\"] must be 1D or 2D array");
  } else if (format == "list") {
    if (rank != 1) type_error(pos, "Second argument to Export[file,arg,\"list\"] must be 1D  array");
  } else {
    type_error(pos, "The format %s  in Export[] is not supported in this version", format.c_str());
  }
}

}  // namespace

// Export[file, array] and Export[file, array, format]; a file or a format that is no string has no rule.
tAsynt Find_export_type(tPosition pos, tAsynt exprs) {
  const int n = expr_list_len(exprs);
  if (n != 2 && n != 3) return nullptr;
  tAsynt* file = Element(exprs, 1);
  if (!is_string(file)) return nullptr;
  const int rank = Rank(Find_type(Element(exprs, 2)));
  if (n == 2) return find_named_export(pos, file, rank);
  tAsynt* format = Element(exprs, 3);
  if (!is_string(format)) return nullptr;
  if (is_text(*format))
    check_export_format(pos, text_of(*format), rank);
  else if (!is_rank_1_or_2(rank))
    type_error(pos, "Second argument to Export[file,arg,format] must be 1D or 2D array");
  return string_type_node;
}

// ---- SetShape

// SetShape[x, n, m]: the sizes of a variable that is to be filled.
tAsynt Find_set_shape_type(tAsynt t) {
  const tAsynt exprs = Variadic_Expressions(t);
  if (!Is_cell(exprs)) return nullptr;
  tAsynt* x = &Expression1_Expression(exprs);
  const tAsynt typ = Find_type(x);
  if (Rank(typ) > expr_list_len(exprs) - 1)
    type_warning(GetPos(t), "In %s the call to SetShape sets the dimensions of %s %s ", Unparsed(t).c_str(),
                 "array but has too few indexes to do that in advance. You have to either declare array ",
                 "with correct dimensions, or fill array with scalars using a Table[]. Ignore this message if you "
                 "fixed it.");
  if (Asynt_Kind(*x) != kSymbol)
    type_warning(GetPos(t), "In %s the call to SetShape sets the dimensions of %s %s", Unparsed(t).c_str(),
                 Unparsed(*x).c_str(),
                 " array but it is applied to a fragment of array and therefore makes no effect. You have to either "
                 "declare array with correct  dimensions, or fill array with scalars using a Table[]. Ignore this "
                 "message if you fixed it.");
  return typ;
}

}  // namespace oz
