// The parser: precedence, every form of the grammar, positions, lists, repair of errors, bounds.

#include "parse.h"

#include "model_text.h"

namespace oz {
namespace {

int parse_text(const std::string& text) {
  const SourceFile file(text);
  file.begin();
  const int errors = parse();
  Closeparse();
  return errors;
}

// The model's tree, without "Model[m," and the closing bracket.
std::string model(const std::string& text, bool positions = false) {
  EXPECT_EQ(0, parse_text("model m;" + text)) << text;
  EXPECT_TRUE(CheckAsynt(model_tree)) << text;
  const std::string tree = tree_text(model_tree, positions);
  const size_t start = tree.find(",{") + 1;
  return tree.substr(start, tree.size() - start - 1);
}

// The tree of an expression that stands alone on the right side of a definition, in parentheses.
std::string expression(const std::string& text) {
  EXPECT_EQ(0, parse_text("model m; z := (" + text + ");")) << text;
  return tree_text(Binary_RHS(Particle1_Particle(Model_Globals(model_tree))));
}

void expect_expressions(const char* rows) {
  for (const auto& [text, tree] : table<2>(rows)) EXPECT_EQ(tree, expression(text)) << text;
}

TEST(Parse, NeighbouringLevels) {
  expect_expressions(R"(
      a ? b`c --> XPatternTest[a,b`c]                 a ? b[c] --> (XPatternTest[a,b])[c]
      ++a[b]++ --> XIncrement[XPreIncrement[a[b]]]    a @ b++ --> a[XIncrement[b]]    a ~ f ~ b @ c --> f[a,b[c]]
      f /@ a ~ g ~ b --> XMap[f,g[a,b]]               f /@ a' --> Deriv[1,XMap[f,a]]
      a <> b' --> XStringJoin[a,Deriv[1,b]]           a ** b <> c --> XNonCommutativeMultiply[a,XStringJoin[b,c]]
      a . b ** c --> XDot[a,XNonCommutativeMultiply[b,c]]             a^b . c --> XPower[a,XDot[b,c]]
      a / b^c --> XDivide[a,XPower[b,c]]              a * b / c --> XTimes[a,XDivide[b,c]]
      a - b * c --> XSubtract[a,XTimes[b,c]]          a == b + c --> XInequality[a,XEqual[],XPlus[b,c]]
      a === b < c --> XSameQ[a,XInequality[b,XLess[],c]]              a === b! --> XFactorial[XSameQ[a,b]]
      a && b! --> XAnd[a,XFactorial[b]]               a || b && c --> XOr[a,XAnd[b,c]]
      a || b.. --> XRepeated[XOr[a,b]]                a | b... --> XAlternatives[a,XRepeatedNull[b]]
      a /; b | c --> XCondition[a,XAlternatives[b,c]]                 a -> b /; c --> XRule[a,XCondition[b,c]]
      a /. b :> c --> XReplaceAll[a,XRuleDelayed[b,c]]                a += b //. c --> XAddTo[a,XReplaceRepeated[b,c]]
      a -= b & --> XFunction[XSubtractFrom[a,b]]      a // b & --> (XFunction[b])[a]
      a = b // c --> XSet[a,c[b]]     a ^= b >> c --> XPut[XUpSet[a,b],Filename["c"]]
      a; b >>> "c" --> XCompoundExpression[a,XPutAppend[b,Filename["c"]]]
    )");
}

TEST(Parse, Grouping) {
  expect_expressions(R"(
      a ? b ? c --> XPatternTest[XPatternTest[a,b],c]         a @ b @ c --> a[b[c]]
      a ~ f ~ b ~ g ~ c --> g[f[a,b],c]         a /@ b //@ c @@ d --> XMap[a,XMapAll[b,XApply[c,d]]]
      a^b^c --> XPower[a,XPower[b,c]]           a/b/c --> XDivide[XDivide[a,b],c]
      a-b-c --> XSubtract[XSubtract[a,b],c]     a-(b-c) --> XSubtract[a,XSubtract[b,c]]
      a-b+c-d --> XSubtract[XPlus[XSubtract[a,b],c],d]        a+b+c --> XPlus[a,b,c]      a+(b+c) --> XPlus[a,b,c]
      (a+b)+c --> XPlus[a,b,c]    (a+b)+(c+d) --> XPlus[a,b,c,d]            a*(b*c)*d --> XTimes[a,b,c,d]
      a+(b*c+(d+e))+f --> XPlus[a,XTimes[b,c],d,e,f]          a == b < c --> XInequality[a,XEqual[],b,XLess[],c]
      a != b >= c <= d > e --> XInequality[a,XUnequal[],b,XGreaterEqual[],c,XLessEqual[],d,XGreater[],e]
      (a < b) < c --> XInequality[XInequality[a,XLess[],b],XLess[],c]       a === b =!= c --> XUnsameQ[XSameQ[a,b],c]
      a | b | c --> XAlternatives[XAlternatives[a,b],c]       a /; b /; c --> XCondition[XCondition[a,b],c]
      a:b:c /; d --> XCondition[XPattern[a,XPattern[b,c]],d]                a -> b :> c --> XRule[a,XRuleDelayed[b,c]]
      a *= b /= c --> XDivideBy[XTimesBy[a,b],c]              a // b // c --> c[b[a]]
      a = b := c ^:= d :== e --> XSet[a,XSetDelayed[b,XUpSetDelayed[c,Substitute[d,e]]]]
      a; (b; c); d; --> XCompoundExpression[a,b,c,d]
    )");
}

// Rules that the levels alone do not give.
TEST(Parse, PrefixAndPostfix) {
  expect_expressions(R"(
      -a^b --> XMinus[XPower[a,b]]    -a/b --> XDivide[XMinus[a],b]   -a*b --> XTimes[XMinus[a],b]
      a^-b/c --> XDivide[XPower[a,XMinus[b]],c]       a . -b . c --> XDot[a,XMinus[XDot[b,c]]]
      +a + b --> XPlus[a,b]           b + +a --> XPlus[b,a]           b * +a --> XTimes[b,XPlus[a]]
      --a[b] @ --c-- --> (XPreDecrement[a[b]])[XDecrement[XPreDecrement[c]]]
      ++-a^b --> XPreIncrement[XMinus[XPower[a,b]]]   !a! --> XNot[XFactorial[a]]     !a === b --> XNot[XSameQ[a,b]]
      !a && b --> XAnd[XNot[a],b]     a + !b === c && d --> XAnd[XPlus[a,XNot[XSameQ[b,c]]],d]
      a + b! --> XFactorial[XPlus[a,b]]               a^b! --> XFactorial[XPower[a,b]]
      a^b!! --> XPower[a,XFactorial2[b]]              a == b! --> XFactorial[XInequality[a,XEqual[],b]]
      x''' --> Deriv[3,x]             (x')'[t] --> (Deriv[2,x])[t]    a/b*c --> XTimes[XDivide[a,b],c]
      {a;, b; [c], (a + b;)[d]} --> XList[a,b[c],(XPlus[a,b])[d]]     a; -b --> XCompoundExpression[a,XMinus[b]]
      a;; b --> XCompoundExpression[a,b]
    )");
}

TEST(Parse, Forms) {
  expect_expressions(R"(
      {} --> XList[]              {a, 1, 2.5, "s"} --> XList[a,1,2.5,"s"]   f[] [a, b] --> (f[])[a,b]   a[[]] --> a
      a[[1, b[[2]]]] --> XPart[a,1,XPart[b,2]]                a => b => c[1] --> (Indirect[Indirect[a,b],c])[1]
      f::usage --> Message[f,"usage",""]        f::"usage"::en + 1 --> XPlus[Message[f,"usage","en"],1]
      {<<a, << "b"} --> XList[XGet[Filename["a"]],XGet[Filename["b"]]]      this`a --> This`a           a`b`c --> a`b`c
      `a`b --> a`b                `a --> a      a[i]`b`c[1] --> a[i]`b`c[1]               a`b[i][j]`c --> a`(b[i])[j]`c
      a`f[x][y] --> (a`f[x])[y]   a[[1]]`b --> XPart[a,1]`b   a`b[[1]] --> XPart[a`b,1]   -a`b --> XMinus[a`b]
      {#, #2, ##, ##3, # + 1} --> XList[Slot[1],Slot[2],SlotSequence[1],SlotSequence[3],XPlus[Slot[1],1]]
      #99999999999 --> Slot[2147483647]         a /: b = c = d --> XTagSet[a,b,XSet[c,d]]
      a /: f[b] := c; d --> XCompoundExpression[XTagSetDelayed[a,f[b],c],d]
      a /: b + c =. + d --> XPlus[XTagUnset[a,XPlus[b,c]],d]                set a + b =. --> XUnset[XPlus[a,b]]
      1 + set a =. * 2 --> XPlus[1,XTimes[XUnset[a],2]]       a ~ f & ~ b + c --> XPlus[(XFunction[f])[a,b],c]
      Block[{x, real y = 1; 2, int z}, x] --> XBlock[{z:Int,y:Real,x},{Empty,XCompoundExpression[1,2],Empty},x]
      Module[{real array[3] u, int v, int array[n, 2] w}, u] --> \
          XModule[{w:ArrayType[Int,{n,2}],v:Int,u:ArrayType[Real,{3}]},{Empty,Empty,Empty},\
          XCompoundExpression[ArrayDecl[{w:ArrayType[Int,{n,2}]},{n,2}],ArrayDecl[{u:ArrayType[Real,{3}]},{3}],u]]
    )");
}

TEST(Parse, Patterns) {
  expect_expressions(R"(
      {_, __, ___} --> XList[Blank[Empty],BlankSequence[Empty],BlankNullSequence[Empty]]
      {x_, x__, x___, _a} --> XList[XPattern[x,Blank[Empty]],XPattern[x,BlankSequence[Empty]],XPattern[x,\
          BlankNullSequence[Empty]],Blank[a]]
      {x_., _.} --> XList[XPattern[x,Optional[Blank[Empty],Empty]],Optional[Blank[Empty],Empty]]
      f[x_Int + 1; 2, y] --> f[XPattern[x,Blank[XCompoundExpression[XPlus[Int,1],2]]],y]
      x_ - y --> XPattern[x,Blank[XMinus[y]]]         x_ (y) --> XPattern[x,Blank[y]]
      x_ * y --> XTimes[XPattern[x,Blank[Empty]],y]   x_[1] --> (XPattern[x,Blank[Empty]])[1]
      a + b:_ && c --> XPlus[a,XPattern[b,XAnd[Blank[Empty],c]]]      x_y_z --> XPattern[x,Blank[XPattern[y,Blank[z]]]]
    )");
}

TEST(Parse, Definitions) {
  for (const auto& [text, tree] : table<2>(R"(
      x; x[i, 1, y_, _a][j]; --> x,(x[i,1,XPattern[y,Blank[Empty]],Blank[a]])[j]
      static s[i] := 1; once o := 2 = 3; --> SetStatic[s[i],1],SetOnce[o,XSet[2,3]]
      array[3, n] a, b[i]; --> ArrayDecl[{a,b[i]},{3,n}]        symbol a, b; --> SymbolDecl[a,b]
      int i; bool b; complex c; String s; --> i:Int,b:Bool,c:Complex,s:String
      real x with unit = "m" tol = "1" unit = "s"; --> x:Real{tol="1",unit="s"}
      real array[n, 3] v with unit = "m"; --> \
          ArrayDecl[{v:ArrayType[Real{unit="m"},{n,3}]},{n,3}],v:ArrayType[Real{unit="m"},{n,3}]
      real array[] v := 1; --> XSetDelayed[v:ArrayType[Real,{}],1]
      {} f[]; {real, int array[2]} g[real x_]; --> \
          f:MultiType[][],g:MultiType[Real,ArrayType[Int,{2}]][XPattern[x:Real,Blank[Empty]]]
      real f[int i_, real array[3] _] := i; --> XSetDelayed[f:Real[XPattern[i:Int,Blank[Empty]],Blank[Empty]],i]
      real a[1, b[2]]; real f[x][int i_]; real g[int _]; --> \
          <a[1,b[2]]:Real>,<f[x]:Real>[XPattern[i:Int,Blank[Empty]]],<g[Blank[Empty]]:Real>
      real f[] := extern "C"; --> XSetDelayed[f:Real[],ExternBody["C"]]
      real f[] := externinfo "p" "c" "l" procedure(); --> \
          XSetDelayed[f:Real[],ExternalDeclaration["p","c","l",ExternalProcedureReturns,{}]]
      real f[] := externinfo "p" "c" "l" variable(Input a, b, n = dim(a, 1), Input m = dim(b, k+1), Output o, Output \
          q(n, 2), InOut r); --> XSetDelayed[f:Real[],ExternalDeclaration["p","c","l",ExternalVariableReturns,\
          {InOutParameter[r],OutputSizeParameter[q,{n,2}],OutputParameter[o],InputSizeParameter[m,b,XPlus[k,1]],\
          InputSizeParameter[n,a,1],InputParameter[b],InputParameter[a]}]]
    )"))
    EXPECT_EQ(std::string("{},{") + tree + "},{}", model(text)) << text;
}

// CAPSULE is the one that an object has without one of its own.
TEST(Parse, Objects) {
  for (const auto& [text, tree] : table<2>(R"(
      --> {},{},{}                           packages "A`", "B`C`"; x; --> {Filename["A`"],Filename["B`C`"]},{x},{}
      class A end Wrong; class B(p, q) inherits A(1, p), C end; --> \
          {},{},{Class[A,{},{CAPSULE},{}],Class[B,{Parent[A,{1,p}],Parent[C,{}]},{CAPSULE},{p,q}]}
      instance a inherits A() begin end; instance s[i, j] end s; --> \
          {},{},{Instance[a,{Parent[A,{}]},{CAPSULE}],InstanceSet[s,{},{CAPSULE},{i:Int,j:Int}]}
      class A part p inherits C(1), D; part q[i] inherits C(i); begin a; b end; --> \
          {},{},{Class[A,{},{Capsule[1,1,0,{},{XCompoundExpression[a,b]}],Capsule[0,0,1,{},{PartInstance[Instance[p,\
          {Parent[C,{1}],Parent[D,{}]},{}]],PartInstance[InstanceSet[q,{Parent[C,{i}]},{},{i:Int}]]}]},{}]}
      class A hide: real x; y := 1; reveal {a, b}: expose: z; end; --> \
          {},{},{Class[A,{},{CAPSULE,Capsule[0,0,1,{},{x:Real,XSetDelayed[y,1]}],Capsule[1,0,1,{b,a},{}],Capsule[1,1,\
          1,{},{z}]},{}]}
    )")) {
    std::string shown = model(text);
    for (size_t at; (at = shown.find("Capsule[0,0,1,{},{}]")) != std::string::npos;) shown.replace(at, 20, "CAPSULE");
    EXPECT_EQ(tree, shown) << text;
  }
}

// A node stands at the token behind what it was made from.
TEST(Parse, Positions) {
  EXPECT_EQ("{},{XSetDelayed@3,1[a@1,9,XPlus@2,3[b@1,14,XMinus@2,3[c@2,1],d@2,4]]},{}",
            model("a := b +-\nc +d \n;", true));
  EXPECT_EQ("{},{XSetDelayed@1,21[a@1,9,XInequality[b@1,14,XLess@1,17[],c@1,16,XEqual@1,21[],d@1,20]]},{}",
            model("a := b<c== d;", true));
}

// Lists that are spliced in keep their end, so that the next term goes there.
TEST(Parse, SplicedListsGoOn) {
  EXPECT_EQ("XPlus[a" + repeated(",b,XTimes[c,c],d,e", 10) + "]",
            expression("a" + repeated(" + (b + c*c + d) + e", 10)));
  EXPECT_EQ("XPlus[a,XList[b,c],(XPlus[d,e])[f]]", expression("a + {b, c} + (d + e)[f]"));
}

const std::string kOperands = "id integer real string _ ( { << ++ -- ! - + Module Block this ` # ## set __ ___ _.";
const std::string kOperators =
    "? [[ => ++ -- @ ~ /@ //@ @@ ! !! ' <> ** . ^ - + / * == != > >= < <= === =!= && || .. ... | /; -> :> /. //. += -= "
    "*= /= & // ^= ^:= :== = := >> >>> `";

// Behind a ";" that is an operator.
const std::string kSequence =
    "id integer real string ; [ _ ( { << ? [[ => ++ -- @ ~ /@ //@ @@ ! !! ' <> ** . ^ - + / * == != > >= < <= === =!= "
    "&& || .. ... | /; -> :> /. //. += -= *= /= & // ^= ^:= :== = := >> >>> Module Block this ` # ## set __ ___ _.";

// What a syntax error reports: the error, the tokens that could stand there, and the repair.
TEST(Parse, RepairsErrors) {
  for (const auto& [text, messages, errors, tree] : table<4>(R"(
      --> E1,1 syntax error | I1,1 expected tokens: model | R1,1 token inserted : model | R1,1 token inserted : id | \
          R1,1 token inserted : ; --> 1 --> Model[,{},{},{}]
      // The token is of no use before the end of the operand: it is skipped.
      model m; a := x + ] y; --> E1,19 syntax error | I1,19 expected tokens: OPERANDS | I1,21 restart point --> 1 --> \
          Model[m,{},{XSetDelayed[a,XPlus[x,y]]},{}]
      // Behind an id in operand position more can come than behind another operand, and "}" only inside braces.
      model m; a := {1 b; --> E1,18 syntax error | I1,18 expected tokens: ; , [ } OPERATORS | R1,18 token inserted : \
          } | R1,18 token inserted : ; --> 1 --> Model[m,{},{XSetDelayed[a,XList[1]],b},{}]
      model m; a := x y; --> E1,17 syntax error | I1,17 expected tokens: ; [ _ :: ? [[ => ++ -- @ ~ /@ //@ @@ ! !! ' \
          <> ** . ^ - + / * == != > >= < <= === =!= && || .. ... | : /; -> :> /. //. += -= *= /= & // ^= ^:= :== /: = \
          := >> >>> ` __ ___ _. | R1,17 token inserted : ; --> 1 --> Model[m,{},{XSetDelayed[a,x],y},{}]
      // Two errors, the second one counted since a token was taken in between.
      model m; a := (b + ) c; --> \
          E1,20 syntax error | I1,20 expected tokens: OPERANDS | R1,20 token inserted : id | E1,22 syntax error | I1,\
          22 expected tokens: ; [ OPERATORS | R1,22 token inserted : ; --> 2 --> Model[m,{},{XSetDelayed[a,XPlus[b,]],\
          c},{}]
      model m; class C part p; end; --> \
          E1,24 syntax error | I1,24 expected tokens: [ inherits | R1,24 token inserted : inherits | R1,24 token \
          inserted : id --> 1 --> Model[m,{},{},{Class[C,{},{Capsule[0,0,1,{},{PartInstance[Instance[p,{Parent[,{}]},\
          {}]]}]},{}]}]
      model m; packages; --> E1,18 syntax error | I1,18 expected tokens: string | R1,18 token inserted : string | E1,\
          18 Empty package name --> 1 --> Model[m,{Filename[""]},{},{}]
      // A missing type becomes the first one.
      model m; {real, 3} f[]; --> \
          E1,17 syntax error | I1,17 expected tokens: int real bool complex String | I1,18 restart point | R1,18 \
          token inserted : int --> 1 --> Model[m,{},{f:MultiType[Real,Int][]},{}]
      // Nothing that is left of the object is in reach of the skipped tokens but its end.
      model m; class A ) , 3 end; class B end; --> \
          E1,18 syntax error | I1,18 expected tokens: ( inherits part hide reveal expose begin end | I1,24 restart \
          point --> 1 --> Model[m,{},{},{Class[A,{},{Capsule[0,0,1,{},{}]},{}],Class[B,{},{Capsule[0,0,1,{},{}]},{}]}]
      // The head of a blank runs across the ";" that would close the definition.
      model m; p := x_a; q := b; class A end; --> \
          E1,28 syntax error | I1,28 expected tokens: SEQUENCE | R1,28 token inserted : ; --> 1 --> Model[m,{},\
          {XSetDelayed[p,XPattern[x,Blank[XCompoundExpression[a,XSetDelayed[q,b]]]]]},{Class[A,{},{Capsule[0,0,1,{},\
          {}]},{}]}]
      model m; a := b ~ c; --> \
          E1,21 syntax error | I1,21 expected tokens: SEQUENCE | R1,21 token inserted : ~ | R1,21 token inserted : id \
          | R1,21 token inserted : ; --> 1 --> Model[m,{},{XSetDelayed[a,c[b,]]},{}]
      model m; real f[int 5] := 2; --> \
          E1,21 syntax error | I1,21 expected tokens: id _ array __ ___ _. | R1,21 token inserted : _ --> 1 --> \
          Model[m,{},{XSetDelayed[<f[Blank[5]]:Real>,2]},{}]
      model m; packages "a`", "b", "", "a.b"; --> \
          E1,39 Illegal character in package name | E1,39 Illegal package name (must end with `) | E1,39 Empty \
          package name | E1,39 Illegal package name (must end with `) --> 0 --> Model[m,{Filename["a`"],Filename["b"],\
          Filename[""],Filename["a.b"]},{},{}]
    )")) {
    int count = -1;
    std::string shown = said([&] { count = parse_text(text); });
    for (const auto& [whole, tag] :
         {std::pair(kOperands, "OPERANDS"), {kOperators, "OPERATORS"}, {kSequence, "SEQUENCE"}})
      if (const size_t at = shown.find(whole); at != std::string::npos) shown.replace(at, whole.size(), tag);
    EXPECT_EQ(messages, shown) << text;
    EXPECT_EQ(std::stoi(errors), count) << text;
    EXPECT_EQ(tree, tree_text(model_tree)) << text;
    EXPECT_TRUE(CheckAsynt(model_tree)) << text;
  }
}

TEST(Parse, NestingHasABound) {
  for (const auto& [open, close] : table<2>(R"(
      ( --> )         f[ --> ]        {1, --> }       - -->           a^ -->          a: -->          set\s --> =.
      --> -y          --> [1]         _ -->           a`b[ --> ]      --> =>y         --> /;y         a~f~( --> )
      a/:b= -->       Module[{v= --> },z]             Module[{real array[ --> ] w},z]
    )")) {
    const auto source = [&](size_t levels) {
      return "model m; a := {" + repeated(open, levels) + "x" + repeated(close, levels) + "};";
    };
    EXPECT_EQ(0, parse_text(source(kMaxNesting / 3 - 10))) << open << close;
    EXPECT_TRUE(
        contains(message_of([&] { parse_text(source(20 * kMaxNesting)); }),
                 "Fatal       expression nested too deeply (more than " + std::to_string(kMaxNesting) + " levels)\n"))
        << open << close;
  }
  for (const char* open : {"a[", "real a["})
    EXPECT_TRUE(contains(message_of([&] { parse_text("model m; " + repeated(open, 200000)); }), "nested too deeply"));
}

TEST(Parse, ListsHaveNone) {
  const size_t count = 20 * kMaxNesting;
  for (const char* link : {"+ x ", "; x ", "< x ", "+ (x + y) ", "` x ", "' "})
    EXPECT_EQ(0, parse_text("model m; a := (x " + repeated(link, count) + ");")) << link;
  EXPECT_EQ(0, parse_text("model m; a := {1" + repeated(",1", count) + "};" + repeated("x;", count)));
  EXPECT_EQ(0, parse_text("model m; " + repeated("(*", count) + repeated("*)", count)));
}

}  // namespace
}  // namespace oz
