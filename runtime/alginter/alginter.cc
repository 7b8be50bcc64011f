// Values over the link, and the loop that answers calls.

#include "alginter.h"

#include <cstring>

ALINK stdlink = nullptr;

namespace {

[[noreturn]] void refuse(const char* name, const std::string& wanted) {
  const char* reason = ALError(stdlink) != ALErrorNone ? ALErrorMessage(stdlink) : nullptr;
  throw lumen_error("argument " + std::string(name) + " from the link: " + wanted + " is wanted" +
                    (reason ? std::string(" (") + reason + ")" : ""));
}

// ---- reading one value

bool read(int* value) { return ALGetInteger(stdlink, value); }
bool read(double* value) { return ALGetReal(stdlink, value); }
bool read(lm_complex* value) {
  double re = 0, im = 0;
  int n = 0;
  if (ALGetType(stdlink) == ALFunctionToken) {
    if (!ALTestHead(stdlink, "Complex", &n) || n != 2 || !read(&re) || !read(&im)) return false;
  } else if (!read(&re)) {
    return false;
  }
  *value = lm_complex(re, im);
  return true;
}
bool read(RWCString* value) {
  const char* text;
  if (!ALGetString(stdlink, &text)) return false;
  *value = text;
  ALReleaseString(stdlink, text);
  return true;
}

const char* type_name(int) { return "an integer"; }
const char* type_name(double) { return "a real number"; }
const char* type_name(const lm_complex&) { return "a complex number"; }
const char* type_name(const RWCString&) { return "a string"; }

template <class T>
T read_value(const char* name) {
  T value{};
  if (!read(&value)) refuse(name, type_name(value));
  return value;
}

// ---- reading arrays

// The elements in the order of lists, and the sizes. The first list at each level tells the size there.
template <class T, int N>
struct Reader {
  const char* name;
  lumen::Shape<N> shape{};
  bool known[N] = {};
  std::vector<T> values{};

  [[noreturn]] void wrong() {
    refuse(name, "an array of " + std::to_string(N) + " dimensions, each element " + type_name(T{}));
  }

  void read_list(int level) {
    int n;
    if (!ALTestHead(stdlink, "List", &n)) wrong();
    take_size(level, n);
    for (int i = 0; i < n; i++) {
      if (level < N - 1) {
        read_list(level + 1);
        continue;
      }
      T value{};
      if (!read(&value)) wrong();
      values.push_back(value);
    }
  }

  void take_size(int level, lumen::Index n) {
    if (known[level] && shape.d[level] != n)
      refuse(name, "an array whose parts are alike (" + std::to_string(shape.d[level]) + " and " + std::to_string(n) +
                       " elements at level " + std::to_string(level + 1) + ")");
    known[level] = true;
    shape.d[level] = n;
  }
};

template <class T, int N>
lumen::Array<T, N> read_array(const char* name) {
  Reader<T, N> reader{name};
  reader.read_list(0);
  lumen::Array<T, N> a(reader.shape);
  lumen::Index x[N] = {};
  for (const T& value : reader.values) {
    a.elements()[a.place(x)] = value;
    lumen::Array<T, N>::next_listed(x, reader.shape.d, N);
  }
  return a;
}

template <class T>
struct Get {
  static T from_link(const char* name) { return read_value<T>(name); }
};
template <class T, int N>
struct Get<lumen::Array<T, N>> {
  static lumen::Array<T, N> from_link(const char* name) { return read_array<T, N>(name); }
};

// ---- writing

void write(int value) { ALPutInteger(stdlink, value); }
void write(double value) { ALPutReal(stdlink, value); }
void write(const lm_complex& z) {
  ALPutFunction(stdlink, "Complex", 2);
  ALPutReal(stdlink, z.real());
  ALPutReal(stdlink, z.imag());
}
void write(const RWCString& text) { ALPutString(stdlink, text.c_str()); }

template <class T, int N>
void write_list(const lumen::Array<T, N>& a, lumen::Index* x, int level) {
  const lumen::Index n = a.shape().d[level];
  ALPutFunction(stdlink, "List", static_cast<int>(n));
  for (x[level] = 0; x[level] < n; x[level]++) {
    if (level < N - 1)
      write_list(a, x, level + 1);
    else
      write(a.elements()[a.place(x)]);
  }
}

template <class T, int N>
void write(const lumen::Array<T, N>& a) {
  lumen::Index x[N] = {};
  write_list(a, x, 0);
}
void write(const doubleN& v) { ALPutReal64List(stdlink, v.elements(), static_cast<size_t>(v.size())); }

}  // namespace

namespace alginter {

#define ALGINTER_DEFINE(T)          \
  template <>                       \
  T get<T>(const char* name) {      \
    return Get<T>::from_link(name); \
  }                                 \
  void put(const T& value) { write(value); }
ALGINTER_TYPES(ALGINTER_DEFINE)
#undef ALGINTER_DEFINE

template <>
std::vector<RWCString> get<std::vector<RWCString>>(const char* name) {
  int n;
  if (!ALTestHead(stdlink, "List", &n)) refuse(name, "a list of strings");
  std::vector<RWCString> list;
  for (int i = 0; i < n; i++) list.push_back(read_value<RWCString>(name));
  return list;
}

}  // namespace alginter

void lmif_return() { ALPutSymbol(stdlink, "Null"); }

// ---- callbacks

void AL_IF_start(const char* name, int arguments) {
  ALPutFunction(stdlink, "EvaluatePacket", 1);
  ALPutFunction(stdlink, name, arguments);
}

void AL_IF_wait() {
  ALEndPacket(stdlink);
  ALFlush(stdlink);
  for (;;) {
    const int packet = ALNextPacket(stdlink);
    if (packet == ALReturnPacket) return;
    if (packet == 0 || packet == ALCallPacket)
      throw lumen_error(std::string("callback: ") +
                        (packet == 0 ? ALErrorMessage(stdlink) : "the host calls while an answer is awaited"));
    ALNewPacket(stdlink);
  }
}

void cb_get() { ALNewPacket(stdlink); }

// ---- serving

namespace {

// The number of a function is its place in the table.
bool announce(const AL_IF_function* functions, int n) {
  for (int i = 0; i < n; i++) {
    if (functions[i].call) {
      ALPutFunction(stdlink, "DefineExternal", 3);
      ALPutString(stdlink, functions[i].pattern);
      ALPutString(stdlink, functions[i].arguments);
      ALPutInteger(stdlink, i);
    } else {
      ALPutString(stdlink, functions[i].pattern);
    }
  }
  ALPutSymbol(stdlink, "End");
  return ALFlush(stdlink);
}

// How many names stand in "{r, v}".
int argument_count(const char* arguments) {
  int count = 0;
  bool in_name = false;
  for (const char* c = arguments; *c; c++) {
    const bool of_name = !std::strchr("{}, ", *c);
    if (of_name && !in_name) count++;
    in_name = of_name;
  }
  return count;
}

// The number of the function that is called, behind which the arguments stand; -1 if it is none of ours.
int called_function(const AL_IF_function* functions, int n) {
  int number, arguments;
  if (!ALGetInteger(stdlink, &number) || number < 0 || number >= n || !functions[number].call) return -1;
  if (!ALTestHead(stdlink, "List", &arguments)) return -1;
  return arguments == argument_count(functions[number].arguments) ? number : -1;
}

bool run(const AL_IF_function& function) {
  try {
    function.call();
    return ALError(stdlink) == ALErrorNone;
  } catch (const std::exception& e) {
    std::cerr << function.pattern << ": " << e.what() << std::endl;
    return false;
  }
}

bool answer_call(const AL_IF_function* functions, int n) {
  const int number = called_function(functions, n);
  if (number < 0 || !run(functions[number])) {
    if (!ALClearError(stdlink)) return false;
    ALPutSymbol(stdlink, "$Failed");
  }
  return ALEndPacket(stdlink) && ALNewPacket(stdlink) && ALFlush(stdlink);
}

}  // namespace

bool AL_IF_serve(ALINK link, const AL_IF_function* functions, int n) {
  stdlink = link;
  if (!announce(functions, n)) return false;
  while (ALWaitForLinkActivity(stdlink) == 1 && ALNextPacket(stdlink) == ALCallPacket && answer_call(functions, n))
    continue;
  // The host may close the link as soon as it has read the last answer.
  const int error = ALError(stdlink);
  return error == ALErrorNone || error == ALErrorClosed;
}

int AL_IF_main(int argc, char** argv, const AL_IF_function* functions, int n) {
  ALEnvironment env = ALInitialize(nullptr);
  int error = ALErrorNone;
  const ALINK link = env ? ALOpenArgcArgv(env, argv, argv + argc, &error) : nullptr;
  bool served = false;
  if (!link)
    std::cerr << (argc > 0 ? argv[0] : "") << ": " << (env ? ALErrorString(env, error) : "no memory") << std::endl;
  else if (ALConnect(link))
    served = AL_IF_serve(link, functions, n);
  if (link) ALClose(link);
  if (env) ALEnd(env);
  return served ? 0 : 1;
}
