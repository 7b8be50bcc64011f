// The model and its objects: the part of the grammar above the definitions (parse_def.cc) and expressions
// (parse_expr.cc).

#include "parse.h"

#include "Errors.h"
#include "parse_rules.h"

namespace oz {

tAsynt model_tree = nullptr;

namespace parsing {
namespace {

constexpr TokenSet kVisibility = tokens(tokKeyHide, tokKeyReveal, tokKeyExpose);
constexpr TokenSet kObjectStart = tokens(tokKeyClass, tokKeyInstance);

// What is left of an object from each of its parts on.
constexpr Rest kObjEnd = need(tokKeyEnd) + may(tokId) + need(tokSemicolon);
constexpr Rest kFromBegin = may(tokKeyBegin) + kObjEnd;
constexpr Rest kFromBlocks = may(kVisibility) + kFromBegin;
constexpr Rest kFromParts = may(tokKeyPart) + kFromBlocks;
constexpr Rest kFromInherits = may(tokKeyInherits) + kFromParts;

// What is left of the model.
constexpr Rest kFromGlobals = may(kLocalDefStart) + may(kObjectStart);
constexpr Rest kFromPackages = may(tokKeyPackages) + kFromGlobals;

constexpr Rest kParents = need(tokId) + may(tokLParen) + may(tokComma);
constexpr Rest kPartTail = need(tokKeyInherits) + kParents + need(tokSemicolon) + may(tokKeyPart);

// Builds the list of the file names of a list that has the last one first; they are checked in that order.
tAsynt check_package_names(tAsynt names) {
  for (tAsynt cell = names; Asynt_Kind(cell) == kFilename1; cell = Filename1_Filenames(cell))
    check_package_name(Filename_Name(Filename1_Filename(cell)));
  return ReverseAsynt(names);
}

// packages = [ "packages" string { "," string } ";" ]
tAsynt packages() {
  constexpr Rest kClose = need(tokSemicolon) + kFromGlobals;
  at<kFromPackages>();
  tAsynt names = mFilename0();
  if (token != tokKeyPackages) return names;
  do {
    next();
    const string text = take<need(tokString) + may(tokComma) + kClose>(tokString).Text;
    names = mFilename1(mFilename(text), names);
    at<may(tokComma) + kClose>();
  } while (token == tokComma);
  names = check_package_names(names);
  take(tokSemicolon);
  return names;
}

// parent = id [ "(" actual_params ")" ]
tAsynt parent() {
  const tAsynt name = symbol_of(take<kParents>(tokId));
  at<may(tokLParen) + may(tokComma)>();
  if (token != tokLParen) return mParent(name, mExpression0());
  next();
  tAsynt args;
  {
    Frame<need(tokRParen) + may(tokComma)> behind;
    args = expr_list().list;
  }
  take(tokRParen);
  return mParent(name, args);
}

// parents = parent { "," parent }
tAsynt parents() {
  List list;
  bool more = true;
  while (more) {
    append(&list, mParent1(parent(), nullptr));
    at<may(tokComma)>();
    more = token == tokComma;
    if (more) next();
  }
  return finish(&list, mParent0());
}

// opt_inherits = [ "inherits" parents ]
tAsynt opt_inherits() {
  at<kFromInherits>();
  if (token != tokKeyInherits) return mParent0();
  next();
  Frame<kFromParts> behind;
  return parents();
}

struct InstName {
  tAsynt name;
  tAsynt indices;  // null without an index list
};

// indices = index_id { "," index_id }, in source order
tAsynt indices() {
  List list;
  for (;;) {
    const tAsynt symbol = symbol_of(take<need(tokId) + may(tokComma)>(tokId));
    append(&list, mSymbol1(set_type(symbol, mIntType(nullptr), nullptr), nullptr));
    at<may(tokComma)>();
    if (token != tokComma) return finish(&list, mSymbol0());
    next();
  }
}

// inst_name = id [ "[" indices "]" ]
template <Rest rest>
InstName inst_name() {
  const tAsynt name = symbol_of(take<need(tokId) + may(tokLBracket) + rest>(tokId));
  at<may(tokLBracket) + rest>();
  if (token != tokLBracket) return {name, nullptr};
  next();
  tAsynt list;
  {
    Frame<need(tokRBracket) + rest> behind;
    list = indices();
  }
  take(tokRBracket);
  return {name, list};
}

tAsynt instance(const InstName& n, tAsynt inherited, tAsynt capsules) {
  if (n.indices) return mInstanceSet(n.name, inherited, capsules, n.indices);
  return mInstance(n.name, inherited, capsules);
}

// part_def = "part" inst_name "inherits" parents ";"
tAsynt part_def() {
  next();
  const InstName n = inst_name<kPartTail>();
  take<kPartTail>(tokKeyInherits);
  tAsynt inherited;
  {
    Frame<need(tokSemicolon) + may(tokKeyPart)> behind;
    inherited = parents();
  }
  take(tokSemicolon);
  return mPartInstance(instance(n, inherited, mCapsule0()));
}

// part_defs = { part_def }
tAsynt part_defs() {
  List list;
  at<kFromParts>();
  while (token == tokKeyPart) {
    append(&list, mParticle1(part_def(), nullptr));
    at<kFromParts>();
  }
  return finish(&list, mParticle0());
}

// access_list = "{" id_list "}"
tAsynt access_list() {
  next();
  tAsynt list;
  {
    Frame<need(tokRBrace) + need(tokColon) + may(kLocalDefStart)> behind;
    list = id_list();
  }
  take(tokRBrace);
  return list;
}

// local_block = visibility [ access_list ] ":" local_defs; visibility = "hide" | "reveal" | "expose"
tAsynt local_block() {
  constexpr Rest kClose = need(tokColon) + may(kLocalDefStart);
  const char readable = token != tokKeyHide;
  const char writable = token == tokKeyExpose;
  next();
  at<may(tokLBrace) + kClose>();
  const tAsynt privileged = token == tokLBrace ? access_list() : mSymbol0();
  take<kClose>(tokColon);
  const tAsynt body = local_defs();
  return mCapsule(readable, writable, 1, privileged, body);
}

// local_blocks = { local_block }
tAsynt local_blocks() {
  List list;
  at<may(kVisibility)>();
  while (kVisibility.has(token)) {
    Frame<may(kVisibility)> behind;
    append(&list, mCapsule1(local_block(), nullptr));
  }
  return finish(&list, mCapsule0());
}

// opt_begin = [ "begin" [ expr ] ]; null without an expression
tAsynt opt_begin() {
  at<may(tokKeyBegin)>();
  if (token != tokKeyBegin) return nullptr;
  next();
  at<may(kExprStart)>();
  return kExprStart.has(token) ? expr().tree : nullptr;
}

// obj_body = part_defs local_blocks opt_begin
// The capsule of the behaviour comes first, then that of the parts, then the blocks.
tAsynt obj_body() {
  const tAsynt parts = part_defs();
  tAsynt blocks;
  {
    Frame<kFromBegin> behind;
    blocks = local_blocks();
  }
  tAsynt behaviour;
  {
    Frame<kObjEnd> behind;
    behaviour = opt_begin();
  }
  const tAsynt capsules = mCapsule1(mCapsule(0, 0, 1, mSymbol0(), parts), blocks);
  if (!behaviour) return capsules;
  const tAsynt body = mParticle1(behaviour, mParticle0());
  return mCapsule1(mCapsule(1, 1, 0, mSymbol0(), body), capsules);
}

// obj_end = "end" [ id ] ";"
// The name is not compared with the object's.
void obj_end() {
  take<kObjEnd>(tokKeyEnd);
  at<may(tokId) + need(tokSemicolon)>();
  if (token == tokId) next();
  take<need(tokSemicolon)>(tokSemicolon);
}

// class_name = id [ "(" id_list ")" ]; the formals in source order
tAsynt opt_formals() {
  at<may(tokLParen) + kFromInherits>();
  if (token != tokLParen) return mSymbol0();
  next();
  tAsynt list;
  {
    Frame<need(tokRParen) + kFromInherits> behind;
    list = id_list();
  }
  take(tokRParen);
  return ReverseAsynt(list);
}

// class_decl = "class" class_name opt_inherits obj_body obj_end
tAsynt class_decl() {
  next();
  const tAsynt name = symbol_of(take<need(tokId) + may(tokLParen) + kFromInherits>(tokId));
  const tAsynt formals = opt_formals();
  const tAsynt inherited = opt_inherits();
  const tAsynt capsules = obj_body();
  obj_end();
  return mClass(name, inherited, capsules, formals);
}

// inst_decl = "instance" inst_name opt_inherits obj_body obj_end
tAsynt inst_decl() {
  next();
  const InstName n = inst_name<kFromInherits>();
  const tAsynt inherited = opt_inherits();
  const tAsynt capsules = obj_body();
  obj_end();
  return instance(n, inherited, capsules);
}

// obj_decls = { class_decl | inst_decl }
tAsynt obj_decls() {
  List list;
  at<may(kObjectStart)>();
  while (kObjectStart.has(token)) {
    Frame<may(kObjectStart)> behind;
    append(&list, mObject1(token == tokKeyClass ? class_decl() : inst_decl(), nullptr));
    at<kNothing>();
  }
  return finish(&list, mObject0());
}

// model_file = "model" id ";" packages local_defs obj_decls
tAsynt model_file() {
  constexpr Rest kClose = need(tokSemicolon) + kFromPackages;
  take<need(tokKeyModel) + need(tokId) + kClose>(tokKeyModel);
  const tAsynt name = symbol_of(take<need(tokId) + kClose>(tokId));
  take<kClose>(tokSemicolon);
  const tAsynt needs = packages();
  tAsynt globals;
  {
    Frame<may(kObjectStart)> behind;
    globals = local_defs();
  }
  const tAsynt objects = obj_decls();
  return mModel(name, needs, globals, objects);
}

}  // namespace
}  // namespace parsing

void Beginparse() {
  model_tree = nullptr;
  parsing::nesting = 0;
  parsing::start();
}

void Closeparse() {}

int parse() {
  Beginparse();
  parsing::Frame<parsing::need(tokEndOfFile)> behind;
  model_tree = parsing::model_file();
  return parsing::error_count();
}

}  // namespace oz
