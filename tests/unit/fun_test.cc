// Function preparation: out-parameters, return values, temporaries, members of instance sets, and the messages.

#include "fun.h"

#include <cctype>

#include "support.h"
#include "veritrans.h"

namespace oz {
namespace {

// y and yv are variables of an instance set, C`m and C`mv functions of it.
const char kNames[] =
    "P$`x:real P$`n:int v:real[3] y:real_s[-1] yv:real_s[-1,3] C`f:real C`g:real C`z:complex C`a:real[3] "
    "C`one:multi(real) C`two:multi(real,int) C`none:multi() C`m:real_s[-1] C`mv:real_s[-1,2]";

struct Fun : Trees {
  Fun() {
    Beginveritrans();
    declare_types(kNames);
  }
};

// A tree in one line, types of symbols left out.
std::string bare(tAsynt t) {
  const std::string text = tree_text(t);
  std::string out;
  for (size_t i = 0; i < text.size(); i++) {
    if (text[i] != ':') {
      out += text[i];
      continue;
    }
    while (std::isalpha(static_cast<unsigned char>(text[i + 1])) || text[i + 1] == '_') i++;
    const bool has_fields = text.compare(i - 3, 4, "Type") == 0 || text.compare(i - 5, 6, "Type_s") == 0;
    if (!has_fields || text[i + 1] != '[') continue;
    for (int depth = 0;;) {
      depth += text[++i] == '[' ? 1 : text[i] == ']' ? -1 : 0;
      if (depth == 0) break;
    }
  }
  return out;
}

// "TYPE HEAD := BODY" behind the preparation, and what was reported.
std::string prepared(tAsynt head, tAsynt body) {
  tAsynt t = mXSetDelayed(no_place(), head, body);
  std::string result;
  const std::string reports = said([&] {
    Prepare_fun(t);
    EXPECT_TRUE(CheckAsynt(t));
    EXPECT_TRUE(AsyntMarksAreZero(t));
    head = Binary_LHS(t);
    result = type_text(SymInfo_Type(Symbol_SymInfo(SimpleFFE_Name(head)))) + " " + bare(head) + " := ";
    result += bare(Binary_RHS(t));
  });
  return result + (result.empty() || reports.empty() ? "" : " | ") + reports;
}

// In the heads, x_ and n_ are the patterns of P$`x and P$`n.
std::string head_text(std::string text) {
  for (const std::string name : {"x", "n"})
    for (size_t at; (at = text.find(name + "_")) != std::string::npos;)
      text.replace(at, 2, "XPattern[P$`" + name + ",XBlank]");
  return text;
}

void check(const char* rows) {
  for (const auto& [head, body, expected] : table<3>(rows)) {
    declare_types(kNames);
    EXPECT_EQ(expected, prepared(typed_tree(head_text(head)), typed_tree(body))) << head << " " << body;
  }
}

TEST_F(Fun, OneResult) {
  check(R"(
      C`f[x_] --> %Sin[P$`x] --> real C`f[P$`x,O1] := XSet[O1,XSin[P$`x]]
      C`f[x_,n_] --> P$`n --> real C`f[P$`x,P$`n,O1] := XSet[O1,P$`n]
      C`a[] --> %List[1,%Times[-1,P$`x],%Pi] --> real[3] C`a[O1] := XSet[O1,XList[1,XMinus[P$`x],XPi]]
      C`f[x_] --> XModule[,{},XBlock[,{},XCompoundExpression[XBreak,XCompoundExpression[XBreak,P$`x]]]] --> \
          real C`f[P$`x,O1] := XModule[{},{},XBlock[{},{},XCompoundExpression[XBreak,XCompoundExpression[XBreak,\
          XSet[O1,P$`x]]]]]
      C`f[] --> XCompoundExpression[] --> real C`f[O1] := XCompoundExpression[]
      C`f[P$`x] --> 1 --> F mangle_args: bad args
      C`f[x_] --> ExternalDeclaration[ExternalFunctionReturns,Parameterspec0] --> \
          real C`f[P$`x,O1] := ExternalDeclaration["","","",ExternalFunctionReturns,{}]
      // Values that do not fit.
      C`f[] --> XI --> real C`f[O1] := XSet[O1,XI] | E Incompatible types in return statement : | \
          E \s\s Assigned to Output (return) parameter no. 1 at line 0:0  | E \s\s Of type  Real  | \
          E \s\s Assigned from  I  | E \s\s Of type  Complex\s
      C`a[x_] --> P$`x --> real[3] C`a[P$`x,O1] := XSet[O1,P$`x] | E Incompatible types for class initialisation in \
          return statement; consider using intermediate variables for expansion : | \
          E \s\s Assigned to Output (return) parameter no. 1 at line 0:0  | E \s\s Assigned from  P$`x
      C`z[x_] --> P$`x --> complex C`z[P$`x,O1] := XSet[O1,P$`x]
    )");
}

TEST_F(Fun, SeveralResults) {
  check(R"(
      C`two[x_] --> %List[P$`x,P$`n] --> multi() C`two[P$`x,O1,O2] := XCompoundExpression[XSet[O1,P$`x],XSet[O2,P$`n]]
      C`two[x_] --> XModule[,{},XCompoundExpression[XBreak,XList[1,2]]] --> \
          multi() C`two[P$`x,O1,O2] := XModule[{},{},XCompoundExpression[XBreak,XCompoundExpression[XSet[O1,1],\
          XSet[O2,2]]]]
      C`two[x_] --> XList[1,2,3] --> \
          multi() C`two[P$`x,O1,O2] := XCompoundExpression[XSet[O1,1],XSet[O2,2],3] | E Function returns wrong number \
          of values.
      C`two[x_] --> %List[1] --> \
          multi() C`two[P$`x,O1,O2] := XCompoundExpression[XSet[O1,1]] | E Function returns wrong number of values.
      C`two[x_] --> C`g[P$`x] --> multi() C`two[P$`x,O1,O2] := C`g[P$`x]
      C`two[x_] --> XPlus[P$`x,1] --> \
          multi() C`two[P$`x,O1,O2] := XPlus[P$`x,1] | E Return type and Right-hand-side do not match. Body is left \
          empty.
      C`two[x_] --> ExternBody --> multi() C`two[P$`x,O1,O2] := ExternBody[""]
      // A list of one type takes its value from a list, or takes the value itself.
      C`one[x_] --> XList[P$`x] --> multi() C`one[P$`x,O1] := XCompoundExpression[XSet[O1,P$`x]]
      C`one[x_] --> %List[P$`x] --> multi() C`one[P$`x,O1] := XCompoundExpression[XSet[O1,P$`x]]
      C`one[x_] --> C`g[P$`x] --> multi() C`one[P$`x,O1] := XSet[O1,C`g[P$`x]]
      C`none[x_] --> %Plus[P$`x,1] --> multi() C`none[P$`x] := XPlus[P$`x,1]
    )");
}

TEST_F(Fun, MembersOfInstanceSets) {
  check(R"(
      C`m[n_][x_] --> %Plus[y[P$`n],P$`x] --> real C`m[P$`n,P$`x,O1] := XSet[O1,XPlus[XPart[y,P$`n],P$`x]]
      C`mv[n_][x_] --> v --> real[2] C`mv[P$`n,P$`x,O1] := XSet[O1,v]
      C`m[n_][x_] --> C`m[P$`n][C`m[%Plus[P$`n,1]][P$`x]] --> \
          real C`m[P$`n,P$`x,O1] := XSet[O1,C`m[P$`n,C`m[XPlus[P$`n,1],P$`x]]]
      C`f[n_] --> XPart[yv[%Sign[y[P$`n]]],2] --> real C`f[P$`n,O1] := XSet[O1,XPart[XPart[yv,XSign[XPart[y,P$`n]]],2]]
      C`f[n_] --> C`m[P$`n][] --> real C`f[P$`n,O1] := XSet[O1,C`m[P$`n]]
      C`f[n_] --> C`g[P$`n][1] --> real C`f[P$`n,O1] := XSet[O1,(C`g[P$`n])[1]]
    )");
}

tAsynt nest_of(const std::string& call, const std::string& type) {
  return mSymbol(mAbsoluteNest(type_of_text(type), NoPosition, typed_tree(call)));
}

TEST_F(Fun, NestsOfMembers) {
  for (const auto& [call, type, expected] : table<3>(R"(
      v[1] --> real_s[-1] --> XPart[v,1]                        v[] --> real_s[-1] --> v
      v[1][2] --> real_s[-1] --> XPart[<v[2]>,1]                v[1][2][3] --> real_s[-1] --> XPart[<(v[2])[3]>,1]
      v[y[3]][y[4]] --> real_s[-1] --> XPart[<v[XPart[y,4]]>,XPart[y,3]]                     v[1] --> real --> <v[1]>
    )")) {
    declare_types(kNames);
    const std::string value = std::string("real C`f[O1] := XCompoundExpression[") + expected + ",XSet[O1,1]]";
    tAsynt body = mExpression1(nest_of(call, type), mExpression1(typed_tree("1"), mExpression0()));
    EXPECT_EQ(value, prepared(typed_tree("C`f[]"), mXCompoundExpression(no_place(), body))) << call;
  }
  // A node that stands in two places is rewritten in both.
  declare_types(kNames);
  tAsynt y = typed_tree("y[1]");
  tAsynt sum = mXSubtract(no_place(), y, y);
  EXPECT_EQ("real C`f[O1] := XSet[O1,XSubtract[XPart[y,1],XPart[y,1]]]", prepared(typed_tree("C`f[]"), sum));
}

tAsynt declaration;

TEST_F(Fun, MembersOfOtherObjects) {
  declare_types("a`y:none C`f:real C`g:none");
  declaration = mSymbol(mAbsoluteSymbol(type_of_text("real_s[-1]"), NoPosition, "y", mExpression0()));
  Set_declaration_finder([](tAsynt t, bool* was_funcall) {
    *was_funcall = false;
    return std::string(unparse_string(t)) == "a`y" ? declaration : nullptr;
  });
  EXPECT_EQ("real C`f[O1] := XSet[O1,XPlus[XPart[a`y,XPlus[1,2]],1]]",
            prepared(typed_tree("C`f[]"), typed_tree("XPlus[a`y[%Plus[1,2]],1]")));
  Set_declaration_finder(nullptr);
}

// ---- temporaries

tAsynt temp(unsigned number) { return temporary(number, mRealType(nullptr)); }
tAsynt set_to(tAsynt lhs, const char* rhs) { return set(lhs, typed_tree(rhs)); }

TEST_F(Fun, Temporaries) {
  const auto of_f = [](tAsynt body) { return prepared(typed_tree("C`f[]"), body); };
  tAsynt t1 = temp(1);
  const std::string start = "real C`f[O1] := XModule[", use = "XCompoundExpression[XSet[T1,2],XSet[O1,T1]]]";
  EXPECT_EQ(start + "{T1},{Empty}," + use, of_f(compound({set_to(t1, "2"), t1})));
  declare_types(kNames);
  tAsynt block = mXBlock(mSymbol1(typed_tree("v"), mSymbol0()), list({mEmpty()}), compound({set_to(t1, "2"), temp(1)}));
  EXPECT_EQ("real C`f[O1] := XBlock[{v,T1},{Empty,Empty}," + use, of_f(block));
  // What is declared already, here or by a module inside, is not declared again.
  declare_types(kNames);
  tAsynt csed = Make_csed_function(list({set_to(t1, "2"), set_to(typed_tree("XPart[v,1]"), "1"), t1}));
  const std::string inner = "{T1},{Empty},XCompoundExpression[XSet[T1,2],XSet[XPart[v,1],1],XSet[O1,T1]]]";
  EXPECT_EQ(start + inner, of_f(CopyAsynt(csed)));
  declare_types(kNames);
  EXPECT_EQ(start + "{},{},XModule[" + inner + "]", of_f(mXModule(mSymbol0(), mExpression0(), csed)));
}

TEST_F(Fun, ListsAndSearch) {
  tAsynt t1 = temp(1), t2 = temp(2);
  tAsynt body = compound({t2, t1, temp(1)});
  EXPECT_EQ(Symbol_SymInfo(t1), FindTempSi(body, 1));
  EXPECT_EQ(nullptr, FindTempSi(body, 3));
  EXPECT_EQ("{1,2,3}", tree_text(Merge_expressions(Make_expressions(typed_tree("XCompoundExpression[1,2]")),
                                                   Make_expressions(typed_tree("3")))));
  tAsynt tail = list({mXPi()});
  EXPECT_EQ(tail, Merge_expressions(mExpression0(), tail));
  EXPECT_EQ("XModule[{T1,T2},{1,2},XCompoundExpression[XPi,XPi,3]]",
            tree_text(Merge_xmodules(
                mXModule(mSymbol1(t1, mSymbol0()), list({typed_tree("1")}), mXPi()),
                mXModule(mSymbol1(t2, mSymbol0()), list({typed_tree("2")}), compound({mXPi(), typed_tree("3")})))));
  tAsynt one = list({mXE()});
  EXPECT_EQ("{XE,XPi}", tree_text(append_exprs(one, tail)));
  EXPECT_EQ("{XE}", tree_text(one));
  EXPECT_EQ("F mangle_args: bad args", said([&] { append_exprs(mXPi(), tail); }));
  EXPECT_EQ("Error: module fun, routine Make_temp_var_decls failed\n", message_of([] { Make_csed_function(mXPi()); }));
}

}  // namespace
}  // namespace oz
