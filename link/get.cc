// Reading expressions, and packets. See tokenio.h.
//
// Every get works the same way: begin_token finds the type, the bytes are checked where they lie in the input, and
// consume moves on. The bytes of the token are kept until then, so that a get of the wrong kind leaves the token for
// the right one.

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "tokenio.h"

using namespace algelink;

namespace {

constexpr uint32_t kMoreChunks = 0x80000000;
constexpr size_t kMaxString = size_t{64} << 20;

// Bytes of a string at most; OZLINK_MAX_STRING changes it.
size_t max_string() {
  static const size_t limit = [] {
    const char* text = std::getenv("OZLINK_MAX_STRING");
    const long long n = text ? std::atoll(text) : 0;
    return n > 0 ? static_cast<size_t>(n) : kMaxString;
  }();
  return limit;
}

const char* here(ALINK link) { return link->in.bytes.data() + link->in.position; }

template <class T>
T value_at(const char* p) {
  T value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

// Adds what has come to the input. Only what lies before the current token is let go.
bool refill(ALINK link) {
  Input& in = link->in;
  in.bytes.erase(in.bytes.begin(), in.bytes.begin() + static_cast<std::ptrdiff_t>(in.mark));
  in.position -= in.mark;
  in.mark = 0;
  push_output(link, Clock::time_point::max());
  const int error = session_take(link, &in.bytes);
  if (error != ALErrorNone) link->error = error;
  return error == ALErrorNone;
}

// Begins a token that must have a type.
bool expect(ALINK link, int wanted) {
  unsigned char type;
  if (!begin_token(link, &type)) return false;
  if (type != wanted) return get_failure(link, type == ALEndPacketToken ? ALErrorSequence : ALErrorType) != 0;
  link->in.position++;
  return true;
}

// Moves over one chunk of a string, which may have `room` bytes at most; its length, and whether another one follows.
bool walk_chunk(ALINK link, size_t room, size_t* length, bool* more) {
  if (!need(link, 4)) return false;
  const auto head = value_at<uint32_t>(here(link));
  *length = head & ~kMoreChunks;
  *more = (head & kMoreChunks) != 0;
  if (*length > kMaxChunk) return stream_failure(link, ALErrorStream) != 0;
  if (*length > room) return stream_failure(link, ALErrorLimit) != 0;
  if (!need(link, 4 + *length)) return false;
  link->in.position += 4 + *length;
  return true;
}

// Moves over a string's chunks, the first of which begins at the position; its length.
bool walk_chunks(ALINK link, size_t* length) {
  *length = 0;
  size_t n = 0;
  for (bool more = true; more; *length += n)
    if (!walk_chunk(link, max_string() - *length, &n, &more)) return false;
  return true;
}

// Copies the chunks from `p` on into one text.
void join_chunks(const char* p, char* to, size_t length) {
  for (size_t have = 0; have < length;) {
    const size_t n = value_at<uint32_t>(p) & ~kMoreChunks;
    std::memcpy(to + have, p + 4, n);
    have += n;
    p += 4 + n;
  }
}

char* keep_text(ALINK link, size_t size) {
  auto* text = static_cast<char*>(std::malloc(size));
  if (!text) {
    stream_failure(link, ALErrorSystem);
    return nullptr;
  }
  link->texts.insert(text);
  return text;
}

char* copy_text(ALINK link, std::string_view text) {
  char* copy = keep_text(link, text.size() + 1);
  if (!copy) return nullptr;
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

void release_text(ALINK link, const void* text) {
  char* own = const_cast<char*>(static_cast<const char*>(text));
  if (link->texts.erase(own)) std::free(own);
}

// A string of any bytes, with a null byte behind it.
char* get_bytes(ALINK link, size_t* length) {
  if (!expect(link, ALStringToken) || !walk_chunks(link, length)) return nullptr;
  char* text = keep_text(link, *length + 1);
  if (!text) return nullptr;
  join_chunks(link->in.bytes.data() + link->in.mark + 1, text, *length);
  text[*length] = '\0';
  return text;
}

bool read_count(ALINK link, int* count) {
  if (!need(link, 4)) return false;
  const auto n = value_at<uint32_t>(here(link));
  if (n > static_cast<uint32_t>(kMaxArguments)) return stream_failure(link, ALErrorLimit) != 0;
  *count = static_cast<int>(n);
  link->in.position += 4;
  return true;
}

// A function with a symbol for its head; not consumed.
bool read_function(ALINK link, std::string_view* head, int* arguments) {
  if (!expect(link, ALFunctionToken) || !read_count(link, arguments) || !need(link, 1)) return false;
  if (*here(link) != ALSymbolToken) return get_failure(link, ALErrorType) != 0;
  link->in.position++;
  return read_symbol(link, head);
}

bool read_digits(ALINK link, std::string_view* digits) {
  if (!need(link, 4)) return false;
  const auto n = value_at<uint32_t>(here(link));
  if (n > kMaxDigits) return stream_failure(link, ALErrorLimit) != 0;
  if (!need(link, 4 + n)) return false;
  *digits = {here(link) + 4, n};
  if (!is_number(digits->data(), n)) return stream_failure(link, ALErrorStream) != 0;
  link->in.position += 4 + n;
  return true;
}

// Moves over the chunks without keeping them.
bool skip_chunks(ALINK link) {
  size_t n = 0;
  for (bool more = true; more;) {
    if (!walk_chunk(link, kMaxChunk, &n, &more)) return false;
    link->in.packet_size += link->in.position - link->in.mark;
    link->in.mark = link->in.position;
  }
  return true;
}

constexpr size_t kFirstRoom = 8192;  // numbers that an array has room for at first

char* grow_text(ALINK link, char* text, size_t size) {
  link->texts.erase(text);
  auto* grown = static_cast<char*>(std::realloc(text, size));
  if (grown) {
    link->texts.insert(grown);
    return grown;
  }
  std::free(text);
  stream_failure(link, ALErrorSystem);
  return nullptr;
}

// Takes the reals that lie in the input one behind the other; the loop that arrays are read with. Their number.
size_t take_run(ALINK link, char* to, size_t most) {
  constexpr size_t kToken = 1 + sizeof(double);
  Input& in = link->in;
  if (link->error != ALErrorNone || in.packet_size > kMaxPacket) return 0;
  const char* p = here(link);
  const size_t n = std::min(most, (in.bytes.size() - in.position) / kToken);
  size_t run = 0;
  for (; run < n && *p == ALRealToken; run++, p += kToken)
    std::memcpy(to + run * sizeof(double), p + 1, sizeof(double));
  in.position += run * kToken;
  in.left -= static_cast<int64_t>(run);
  in.packet_size += run * kToken;
  in.mark = in.position;
  return run;
}

struct PacketName {
  std::string_view head;
  int code;
};

constexpr PacketName kPackets[] = {
    {"ReturnPacket", ALReturnPacket}, {"CallPacket", ALCallPacket},         {"SuspendPacket", ALSuspendPacket},
    {"ResumePacket", ALResumePacket}, {"EvaluatePacket", ALEvaluatePacket},
};

int packet_code(std::string_view head) {
  for (const PacketName& p : kPackets)
    if (p.head == head) return p.code;
  return 0;
}

// The end of a packet: whatever comes next begins another one.
void consume_end(ALINK link) {
  Input& in = link->in;
  in.mark = ++in.position;
  in.in_packet = false;
  in.packet_size = 0;
}

}  // namespace

namespace algelink {

void note_death(ALINK link) {
  const std::lock_guard<std::mutex> lock(link->shared.mutex);
  if (link->error >= ALErrorClosed) return;
  link->error = link->shared.dead != ALErrorNone ? link->shared.dead : ALErrorLost;
}

bool has_unread(ALINK link) { return link->in.position < link->in.bytes.size(); }

bool need(ALINK link, size_t n) {
  Input& in = link->in;
  while (in.bytes.size() - in.position < n)
    if (!refill(link)) {
      in.position = in.mark;
      return false;
    }
  if (in.packet_size + (in.position - in.mark) + n <= kMaxPacket) return true;
  return stream_failure(link, ALErrorLimit) != 0;
}

int get_failure(ALINK link, int error) {
  link->in.position = link->in.mark;
  link->error = error;
  return 0;
}

int stream_failure(ALINK link, int error) {
  session_fail(link, error);
  return get_failure(link, error);
}

bool begin_token(ALINK link, unsigned char* type) {
  if (link->error != ALErrorNone) return false;
  link->in.mark = link->in.position;
  if (!need(link, 1)) return false;
  *type = static_cast<unsigned char>(*here(link));
  switch (*type) {
    case ALSymbolToken:
    case ALIntegerToken:
    case ALBigIntegerToken:
    case ALRealToken:
    case ALFunctionToken:
    case ALStringToken: return true;
    case ALEndPacketToken:
      if (link->in.left == 0 && link->in.in_packet) return true;
      [[fallthrough]];  // in the middle of an expression, or where no packet has begun
    default: return stream_failure(link, ALErrorStream) != 0;
  }
}

void consume(ALINK link, int64_t expressions) {
  Input& in = link->in;
  in.packet_size += in.position - in.mark;
  in.mark = in.position;
  if (in.left == 0) in.left = 1;
  in.left += expressions - 1;
  in.in_packet = true;
}

bool read_symbol(ALINK link, std::string_view* name) {
  if (!need(link, 2)) return false;
  const size_t n = value_at<uint16_t>(here(link));
  if (n > kMaxSymbol) return stream_failure(link, ALErrorStream) != 0;
  if (!need(link, 2 + n)) return false;
  *name = {here(link) + 2, n};
  if (!is_symbol(name->data(), n)) return stream_failure(link, ALErrorStream) != 0;
  link->in.position += 2 + n;
  return true;
}

bool skip_token(ALINK link) {
  unsigned char type;
  if (!begin_token(link, &type)) return false;
  link->in.position++;
  int count = 0;
  std::string_view text;
  switch (type) {
    case ALSymbolToken:
      if (!read_symbol(link, &text)) return false;
      break;
    case ALIntegerToken:
    case ALRealToken:
      if (!need(link, 8)) return false;
      link->in.position += 8;
      break;
    case ALBigIntegerToken:
      if (!read_digits(link, &text)) return false;
      break;
    case ALFunctionToken:
      if (!read_count(link, &count)) return false;
      count++;  // the head
      break;
    case ALStringToken:
      if (!skip_chunks(link)) return false;
      break;
    default: return get_failure(link, ALErrorSequence) != 0;
  }
  consume(link, count);
  return true;
}

}  // namespace algelink

extern "C" {

int ALGetType(ALINK link) {
  unsigned char type;
  return begin_token(link, &type) ? type : 0;
}

int ALGetByteString(ALINK link, const unsigned char** bytes, size_t* n) {
  const char* text = get_bytes(link, n);
  if (!text) return 0;
  *bytes = reinterpret_cast<const unsigned char*>(text);
  consume(link, 0);
  return 1;
}

int ALGetString(ALINK link, const char** text) {
  size_t n;
  char* bytes = get_bytes(link, &n);
  if (!bytes) return 0;
  if (std::memchr(bytes, 0, n)) {
    release_text(link, bytes);
    return get_failure(link, ALErrorNullByte);
  }
  *text = bytes;
  consume(link, 0);
  return 1;
}

int ALGetSymbol(ALINK link, const char** name) {
  std::string_view text;
  if (!expect(link, ALSymbolToken) || !read_symbol(link, &text)) return 0;
  *name = copy_text(link, text);
  if (!*name) return 0;
  consume(link, 0);
  return 1;
}

int ALGetBigInteger(ALINK link, const char** digits) {
  std::string_view text;
  if (!expect(link, ALBigIntegerToken) || !read_digits(link, &text)) return 0;
  *digits = copy_text(link, text);
  if (!*digits) return 0;
  consume(link, 0);
  return 1;
}

void ALReleaseString(ALINK link, const char* text) { release_text(link, text); }
void ALReleaseSymbol(ALINK link, const char* name) { release_text(link, name); }
void ALReleaseByteString(ALINK link, const unsigned char* bytes) { release_text(link, bytes); }
void ALReleaseReal64List(ALINK link, double* values) { release_text(link, values); }

int ALGetInteger64(ALINK link, int64_t* value) {
  if (!expect(link, ALIntegerToken) || !need(link, 8)) return 0;
  *value = value_at<int64_t>(here(link));
  link->in.position += 8;
  consume(link, 0);
  return 1;
}

int ALGetInteger(ALINK link, int* value) {
  if (!expect(link, ALIntegerToken) || !need(link, 8)) return 0;
  const auto wide = value_at<int64_t>(here(link));
  if (wide < INT_MIN || wide > INT_MAX) return get_failure(link, ALErrorRange);
  *value = static_cast<int>(wide);
  link->in.position += 8;
  consume(link, 0);
  return 1;
}

int ALGetReal(ALINK link, double* value) {
  unsigned char type;
  if (!begin_token(link, &type)) return 0;
  if (type != ALRealToken && type != ALIntegerToken)
    return get_failure(link, type == ALEndPacketToken ? ALErrorSequence : ALErrorType);
  if (!need(link, 9)) return 0;
  const char* at = here(link) + 1;
  *value = type == ALRealToken ? value_at<double>(at) : static_cast<double>(value_at<int64_t>(at));
  link->in.position += 9;
  consume(link, 0);
  return 1;
}

int ALGetArgCount(ALINK link, int* arguments) {
  if (!expect(link, ALFunctionToken) || !read_count(link, arguments)) return 0;
  consume(link, int64_t{*arguments} + 1);
  return 1;
}

int ALGetFunction(ALINK link, const char** head, int* arguments) {
  std::string_view text;
  if (!read_function(link, &text, arguments)) return 0;
  *head = copy_text(link, text);
  if (!*head) return 0;
  consume(link, *arguments);
  return 1;
}

int ALTestHead(ALINK link, const char* head, int* arguments) {
  std::string_view text;
  if (!read_function(link, &text, arguments)) return 0;
  if (text != head) return get_failure(link, ALErrorType);
  consume(link, *arguments);
  return 1;
}

int ALGetReal64List(ALINK link, double** values, size_t* n) {
  int count;
  if (!ALTestHead(link, "List", &count)) return 0;
  const auto wanted = static_cast<size_t>(count);
  // The array grows with the numbers that have come: the count alone is only a claim.
  size_t have = 0, room = std::min(wanted, kFirstRoom);
  char* array = keep_text(link, room * sizeof(double) + 1);
  while (array && have < wanted) {
    if (have == room) array = grow_text(link, array, (room = std::min(wanted, 2 * room)) * sizeof(double) + 1);
    if (!array) return 0;
    const size_t run = take_run(link, array + have * sizeof(double), room - have);
    have += run;
    double v;
    if (run > 0) continue;
    if (!ALGetReal(link, &v)) {
      release_text(link, array);
      return 0;
    }
    std::memcpy(array + have++ * sizeof(double), &v, sizeof v);
  }
  if (!array) return 0;
  *values = reinterpret_cast<double*>(array);
  *n = have;
  return 1;
}

int ALTransferExpression(ALINK to, ALINK from) {
  int64_t left = 1;
  while (left > 0) {
    int64_t integer;
    double real;
    int count;
    size_t n;
    const char* text;
    const unsigned char* bytes;
    int done = 0;
    left--;
    switch (ALGetType(from)) {
      case ALIntegerToken: done = ALGetInteger64(from, &integer) && ALPutInteger64(to, integer); break;
      case ALRealToken: done = ALGetReal(from, &real) && ALPutReal(to, real); break;
      case ALFunctionToken:
        done = ALGetArgCount(from, &count) && ALPutArgCount(to, count);
        if (done) left += int64_t{count} + 1;
        break;
      case ALSymbolToken:
        if (!ALGetSymbol(from, &text)) return 0;
        done = ALPutSymbol(to, text);
        release_text(from, text);
        break;
      case ALBigIntegerToken:
        if (!ALGetBigInteger(from, &text)) return 0;
        done = ALPutBigInteger(to, text);
        release_text(from, text);
        break;
      case ALStringToken:
        if (!ALGetByteString(from, &bytes, &n)) return 0;
        done = ALPutByteString(to, bytes, n);
        release_text(from, bytes);
        break;
      case ALEndPacketToken: return get_failure(from, ALErrorSequence);
      default: return 0;
    }
    if (!done) return 0;
  }
  return 1;
}

int ALNextPacket(ALINK link) {
  push_output(link, Clock::time_point::max());
  if (link->error != ALErrorNone) return 0;
  if (link->in.left != 0) return get_failure(link, ALErrorSequence);
  if (link->in.in_packet) {
    unsigned char type;
    if (!begin_token(link, &type)) return 0;
    if (type == ALEndPacketToken) consume_end(link);
  }
  unsigned char type;
  std::string_view head;
  int arguments;
  if (!begin_token(link, &type)) return 0;
  if (type != ALFunctionToken) return get_failure(link, ALErrorNoPacket);
  if (!read_function(link, &head, &arguments)) {
    if (link->error == ALErrorType) link->error = ALErrorNoPacket;
    return 0;
  }
  const int code = packet_code(head);
  if (code == 0) return get_failure(link, ALErrorNoPacket);
  consume(link, arguments);
  return code;
}

int ALNewPacket(ALINK link) {
  if (link->error != ALErrorNone) return 0;
  if (!link->in.in_packet) return 1;
  push_output(link, Clock::time_point::max());
  for (;;) {
    unsigned char type;
    if (!begin_token(link, &type)) return 0;
    if (type == ALEndPacketToken) break;
    if (!skip_token(link)) return 0;
  }
  consume_end(link);
  return 1;
}

}  // extern "C"
