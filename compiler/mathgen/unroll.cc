// Unrolling: classes disappear, and each instance receives what its classes define.
//
//     class Vessel(area) hide: h := v/area; end;      Begin["t`"]
//     instance t inherits Vessel(3) end;                 t`area := 3;  t`h := t`v/3
//                                                      End[]
//
// An instance becomes a Context of definitions under absolute names. An instance set stays one context, whose members
// are indexed by patterns. Inherited definitions stand ahead of the instance's own.

#include "unroll.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "Errors.h"
#include "oz.h"
#include "ozerrors.h"
#include "ozt.h"
#include "unparse.h"
#include "unroll_parts.h"

namespace oz {

namespace {
void leave() { Errors_Exit(); }
}  // namespace

void (*unroll_Exit)() = leave;

namespace unrolling {

std::vector<tAsynt> entered_nodes;
tAsynt model_name = nullptr;
tAsynt current_instance_context = nullptr;
tAsynt current_indices = nullptr;
tAsynt current_index_string = nullptr;
tAsynt blank_empty = nullptr;

namespace {

tIndex instance_index = nullptr;
std::vector<std::string> cleared;  // what the head of the package cleans up: the names in each finished instance
ObjectReader* reader = nullptr;    // null if the whole package is wanted
tAsynt lit_this = nullptr;
tAsynt lit_false = nullptr;
tAsynt lit_indices = nullptr;
tAsynt lit_empty_def_indices = nullptr;
int indent_level = 0;  // of the trace

// Parts of parts, and classes of parts: each level takes stack.
constexpr int kMaxInstanceNesting = 2000;
int instance_nesting = 0;

// What one instance changes and its surroundings want back.
struct Surroundings {
  tAsynt context = current_instance_context;
  tAsynt indices = current_indices;
  tAsynt index_string = current_index_string;
  Surroundings() = default;
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;
  ~Surroundings() {
    current_instance_context = context;
    current_indices = indices;
    current_index_string = index_string;
  }
};

// A name, copied for good.
string printed(tAsynt t) { return Asynt_KeepText(unparse_string(t)); }

// ---- the frame of an instance

// The definitions of an instance, its `this` first, ahead of everything that depends on the names' absolute form.
Chain BeginInst(tAsynt inst, const Actuals& actuals) {
  current_instance_context = AppendContext(current_instance_context, Object_Name(inst));
  if (verbose_flag) trace((std::string("instance ") + unparse_string(current_instance_context)).c_str());
  Chain es = Parents2Expressions(Object_Parents(inst), actuals);
  if (this_is_left()) This2Current(&es.first, current_instance_context);
  Chain own;
  append(&own, mComment("Instance body: ", printed(Object_Name(inst))));
  const auto own_definitions = objects_are_read() ? Capsules2Copy : Capsules2Expressions;
  own = join(own, own_definitions(Object_Capsules(inst), actuals));
  TakeOwn(&own.first, current_instance_context);
  es = join(es, own);
  if (current_index_string) MarkSetMembers(&es.first);
  Chain body;
  append(&body, definition(lit_this, current_instance_context));
  return join(body, es);
}

// The package first clears what an earlier load left of the instance.
void EndInst() { cleared.push_back(std::string(unparse_string(current_instance_context)) + "`*"); }

// The last finished instance comes first.
Chain laundry_list() {
  Chain chain;
  for (auto all = cleared.rbegin(); all != cleared.rend(); ++all) {
    append(&chain, FFE1("Clear", mStringConst(Asynt_KeepText(*all))));
    append(&chain, FFE1("Remove", mStringConst(Asynt_KeepText(*all))));
  }
  return chain;
}

bool in_set() { return Asynt_Kind(current_indices) == kExpression1; }

// DefineIndices[`indices, {i, j}]
tAsynt define_indices() {
  if (!in_set()) return lit_empty_def_indices;
  return FFE2("DefineIndices", lit_indices, mXList(nowhere(), current_indices));
}

tAsynt instance_context(tAsynt inst, const Actuals& actuals, SymbolLog* log) {
  Chain body = BeginInst(inst, actuals);
  if (in_set()) {
    InsertIndices(&body.first);
    AdjustTopLHS(&body.first, nullptr);  // only the context of a set keeps the rules
  }
  Absolutize(&body.first, current_instance_context, log);
  EndInst();
  prepend(&body, disable_DefineIndices ? mEmpty() : define_indices());
  return mContext(current_instance_context, finish(body));
}

tAsynt set_context(tAsynt inst, const Actuals& actuals, SymbolLog* log) {
  tAsynt names = Symbols2Expressions(InstanceSet_IndexNames(inst));
  if (objects_are_read()) names = CopyAsynt(names);
  current_indices = AppendExps(current_indices, names);
  current_index_string = AddToIndexString(current_index_string, inst, names);
  Chain body = BeginInst(inst, actuals);
  Chain format_list;
  InsertIndices(&body.first);
  AdjustTopLHS(&body.first, &format_list);
  Absolutize(&body.first, current_instance_context, log);
  NukeRightPatterns(format_list);
  if (!disable_DefineIndices) prepend(&format_list, define_indices());
  if (format_list.first) Absolutize(&format_list.first, current_instance_context, new_symbol_log());
  EndInst();
  return mContext(current_instance_context, finish(join(format_list, body)));
}

tAsynt Instantiate(tAsynt inst, const Actuals& actuals, SymbolLog* log) {
  const Surroundings surroundings;
  if (instance_nesting++ == kMaxInstanceNesting)
    die_msg("Instances are nested too deeply (more than %d levels)", kMaxInstanceNesting);
  tAsynt context;
  switch (Asynt_Kind(inst)) {
    case kInstance: context = instance_context(inst, actuals, log); break;
    case kInstanceSet: context = set_context(inst, actuals, log); break;
    default: routine_failed("Instantiate");
  }
  instance_nesting--;
  return context;
}

// Enters an instance: where it starts in the package, its name and, for a set, its indices and the emit flag.
void RememberInstance(tAsynt cell, tAsynt name, tAsynt inst) {
  const std::string key = unparse_string(name);
  if (!create_entry(instance_index, cell, key.c_str())) die_msg("Could not create_entry");
  if (add_to_entry(instance_index, name, key.c_str()) != 2) die_msg("Could not add name to instance index.");
  if (Asynt_Kind(inst) != kInstanceSet) return;
  if (add_to_entry(instance_index, InstanceSet_IndexNames(inst), key.c_str()) != 3)
    die_msg("Could not add indices to instance index.");
  if (add_to_entry(instance_index, lit_false, key.c_str()) != 4)
    die_msg("Could not initialize emit flag in instance index.");
}

Actuals no_actuals() { return {mSymbol0(), mExpression0(), mExpression0()}; }

// The context of a part, in a cell of its own.
tAsynt part_cell(tAsynt inst, const Actuals& actuals) {
  indent_level++;
  if (verbose_flag) trace("part:");
  SymbolLog* const log = new_symbol_log();
  Chain chain;
  append(&chain, Instantiate(inst, actuals, log));
  keep_symbol_log(Expression1_Expression(chain.first), log);
  indent_level--;
  RememberInstance(chain.first, AppendContext(current_instance_context, Object_Name(inst)), inst);
  return chain.first;
}

Chain Particles2Expressions(tAsynt particles, const Actuals& actuals) {
  Chain chain;
  for (; Asynt_Kind(particles) == kParticle1; particles = Particle1_Particles(particles)) {
    tAsynt p = Particle1_Particle(particles);
    if (Asynt_IsType(p, kExpression)) {
      append(&chain, p);
    } else if (Asynt_Kind(p) == kPartInstance) {
      tAsynt cell = part_cell(PartInstance_Instance(p), actuals);
      chain = join(chain, Chain{cell, cell});
    } else {
      break;
    }
  }
  return chain;
}

// An instance gives its name, by which the package knows it, and its context.
Chain object_items(tAsynt object) {
  tAsynt name = Object_Name(object);
  Chain items;
  append(&items, mSymbol(PrependContext(model_name, Symbol_SymInfo(name))));
  SymbolLog* const log = new_symbol_log();
  append(&items, Instantiate(object, no_actuals(), log));
  ShareSymis(log);
  close_symbol_logs();
  RememberInstance(items.first, name, object);
  return items;
}

// The reader gets some objects at a time: as many as a processor keeps at hand.
constexpr unsigned long kReadAtOnce = 512UL * 1024;

void give_to_reader(Chain* objects, Asynt_Place* start) {
  if (!objects->first) return;
  forget_names();
  forget_sets();
  reader->read(finish(*objects), Asynt_Detach(*start));
  *objects = Chain();
  *start = Asynt_BeginBatch();
}

// A class contributes nothing by itself.
Chain Objects2Expressions(tAsynt objects) {
  Chain chain;
  Asynt_Place start = reader ? Asynt_BeginBatch() : Asynt_Place();
  for (; Asynt_Kind(objects) == kObject1; objects = Object1_Objects(objects)) {
    tAsynt object = Object1_Object(objects);
    if (Asynt_Kind(object) == kClass) continue;
    if (!Asynt_IsType(object, kInstance)) routine_failed("Objects2Expressions");
    chain = join(chain, object_items(object));
    if (reader && Asynt_UsedSince(start) >= kReadAtOnce) give_to_reader(&chain, &start);
  }
  if (reader) give_to_reader(&chain, &start);
  return chain;
}

int CountClasses(tAsynt objects) {
  int count = 0;
  for (; Asynt_Kind(objects) == kObject1; objects = Object1_Objects(objects))
    count += Asynt_Kind(Object1_Object(objects)) == kClass;
  return count;
}

void make_constants() {
  lit_this = mThis();
  lit_false = mXFalse();
  blank_empty = mBlank(mEmpty());
  tAsynt nameless = mSymbol(mAbsoluteSymbol(mNoType(), NoPosition, "", mExpression0()));
  lit_indices = mSymbol(mAbsoluteSymbol(mNoType(), NoPosition, "indices", mExpression1(nameless, mExpression0())));
  lit_empty_def_indices = FFE2("DefineIndices", lit_indices, mXList(nowhere(), mExpression0()));
}

void begin_run(tAsynt model) {
  model_name = Model_Name(model);
  reader = nullptr;
  current_instance_context = nullptr;
  current_indices = mExpression0();
  current_index_string = nullptr;
  cleared.clear();
  indent_level = 0;
  instance_nesting = 0;
  instance_index = make_index(linked_list, 1);
  make_constants();
  begin_inheritance(CountClasses(Model_Objects(model)));
  begin_names();
  begin_sets();
}

tAsynt with_packages(tAsynt needs) {
  return mFilename1(mFilename("Operators`"), mFilename1(mFilename("Iterators`"), needs));
}

tAsynt package_of(tAsynt model) {
  tAsynt packages = with_packages(Model_Packages(model));
  const Chain objects = Objects2Expressions(Model_Objects(model));
  Chain globals = Particles2Expressions(Model_Globals(model), no_actuals());
  if (globals.first) Unsetify(&globals.first);
  return mPackage(Model_Name(model), packages, finish(join(laundry_list(), join(globals, objects))));
}

}  // namespace

// ---- shared

bool objects_are_read() { return reader != nullptr; }

void append(Chain* chain, tAsynt e) {
  tAsynt cell = mExpression1(e, nullptr);
  *chain = join(*chain, Chain{cell, cell});
}

void prepend(Chain* chain, tAsynt e) {
  tAsynt cell = mExpression1(e, nullptr);
  *chain = join(Chain{cell, cell}, *chain);
}

Chain join(Chain a, Chain b) {
  if (!a.first) return b;
  if (!b.first) return a;
  Expression1_Expressions(a.last) = b.first;
  return {a.first, b.last};
}

tAsynt finish(Chain chain) {
  if (!chain.first) return mExpression0();
  Expression1_Expressions(chain.last) = mExpression0();
  return chain.first;
}

Chain chain_of(tAsynt list) {
  Chain chain;
  if (Asynt_Kind(list) != kExpression1) return chain;
  chain.first = list;
  while (Asynt_Kind(Expression1_Expressions(list)) == kExpression1) list = Expression1_Expressions(list);
  Expression1_Expressions(list) = nullptr;
  chain.last = list;
  return chain;
}

void routine_failed(const char* routine) {
  std::fprintf(stderr, "Error: module unroll, routine %s failed\n", routine);
  unroll_Exit();
  std::abort();  // the exit hook must not return
}

tAsynt nowhere() { return mkNonConvPos(NoPosition); }
tAsynt definition(tAsynt lhs, tAsynt rhs) { return mXSetDelayed(nowhere(), lhs, rhs); }

void trace(const char* text) { std::printf("%*s%s\n", 2 * indent_level, "", text); }

tAsynt* components_of(tAsynt syminfo) {
  switch (Asynt_Kind(syminfo)) {
    case kFullSymbol: return &FullSymbol_Components(syminfo);
    case kAbsoluteSymbol: return &AbsoluteSymbol_Components(syminfo);
    default: return nullptr;
  }
}

tAsynt ContainerContext(tAsynt ctx) {
  tAsynt components = AbsoluteSymbol_Components(Symbol_SymInfo(ctx));
  return Asynt_Kind(components) == kExpression1 ? Expression1_Expression(components) : nullptr;
}

// Later capsules are computed first, which fixes the order in which parts are built.
Chain Capsules2Expressions(tAsynt capsules, const Actuals& actuals) {
  std::vector<tAsynt> bodies;
  for (; Asynt_Kind(capsules) == kCapsule1; capsules = Capsule1_Capsules(capsules))
    bodies.push_back(Capsule_Body(Capsule1_Capsule(capsules)));
  Chain chain;
  for (size_t i = bodies.size(); i-- > 0;) chain = join(Particles2Expressions(bodies[i], actuals), chain);
  return chain;
}

// Takes the first cell off a list.
Chain take_cell(tAsynt* list) {
  tAsynt cell = *list;
  *list = Expression1_Expressions(cell);
  Expression1_Expressions(cell) = nullptr;
  return {cell, cell};
}

// The definitions are copied at once, so that what they share stays shared. The contexts of parts are taken out before
// and put back behind: they were built for this use, and the index of instances knows their cells.
Chain Capsules2Copy(tAsynt capsules, const Actuals& actuals) {
  tAsynt rest = finish(Capsules2Expressions(capsules, actuals));
  Chain plain;
  std::vector<Chain> order;  // the cell of a context, or an empty chain for the next plain one
  while (Asynt_Kind(rest) == kExpression1) {
    const Chain cell = take_cell(&rest);
    const bool is_context = Asynt_Kind(Expression1_Expression(cell.first)) == kContext;
    order.push_back(is_context ? cell : Chain());
    if (!is_context) plain = join(plain, cell);
  }
  tAsynt copies = CopyAsyntQuickly(finish(plain));
  Chain result;
  for (const Chain& context : order) result = join(result, context.first ? context : take_cell(&copies));
  return result;
}

}  // namespace unrolling

tAsynt AppendContext(tAsynt ctx, tAsynt name) {
  tAsynt info = Symbol_SymInfo(name);
  tAsynt components = ctx ? mExpression1(ctx, mExpression0()) : mExpression0();
  return mSymbol(mAbsoluteSymbol(SymInfo_Type(info), SymInfo_Pos(info), NamedSymbol_Name(info), components));
}

void unroll(tAsynt* t, tIndex* instances) {
  using namespace unrolling;
  if (Asynt_Kind(*t) != kModel || !Model_Name(*t)) return;
  begin_run(*t);
  *t = package_of(*t);
  *instances = instance_index;
}

void unroll_for_reader(tAsynt* t, ObjectReader* object_reader) {
  using namespace unrolling;
  if (Asynt_Kind(*t) != kModel || !Model_Name(*t)) return;
  begin_run(*t);
  reader = object_reader;
  *t = package_of(*t);
  reader = nullptr;
  delete_index(instance_index);
}

}  // namespace oz
