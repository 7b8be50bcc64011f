// Writing expressions. See tokenio.h.

#include <algorithm>
#include <cctype>
#include <cstring>

#include "tokenio.h"

using namespace algelink;

namespace {

constexpr size_t kPushSize = 65536;  // pending output is handed to the session in pieces of about this size
constexpr uint32_t kMoreChunks = 0x80000000;

template <class T>
void append_value(std::string* to, T value) {
  static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the protocol's numbers are written as they lie in memory");
  char bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  to->append(bytes, sizeof bytes);
}

int put_failure(ALINK link, int error) {
  link->error = error;
  return 0;
}

// Whether an expression may begin here.
bool may_put(ALINK link) {
  if (link->error != ALErrorNone) return false;
  if (link->out.in_string) return put_failure(link, ALErrorSequence) != 0;
  return true;
}

// Counts a token that was written: it is an expression, and `more` others have to follow for it.
int wrote(ALINK link, int64_t more) {
  Output& o = link->out;
  if (o.left == 0) o.left = 1;
  o.left += more - 1;
  o.in_packet = true;
  if (o.bytes.size() < kPushSize || push_output(link, Clock::time_point::max())) return 1;
  note_death(link);
  return 0;
}

void append_symbol(std::string* to, std::string_view name) {
  to->push_back(ALSymbolToken);
  append_value(to, static_cast<uint16_t>(name.size()));
  to->append(name);
}

// Writes a piece of a string in chunks; `last` when no other piece follows.
bool append_chunks(ALINK link, const char* bytes, size_t n, bool last) {
  std::string& to = link->out.bytes;
  do {
    const size_t size = std::min(n, kMaxChunk);
    const bool more = size < n || !last;
    append_value(&to, static_cast<uint32_t>(size) | (more ? kMoreChunks : 0));
    to.append(bytes, size);
    bytes += size;
    n -= size;
    if (to.size() >= kPushSize && !push_output(link, Clock::time_point::max())) return false;
  } while (n > 0);
  return true;
}

int put_bytes(ALINK link, const char* bytes, size_t n) {
  if (!may_put(link)) return 0;
  link->out.bytes.push_back(ALStringToken);
  if (append_chunks(link, bytes, n, true)) return wrote(link, 0);
  note_death(link);
  return 0;
}

void append_element(std::string* to, double v) {
  to->push_back(ALRealToken);
  append_value(to, v);
}

void append_element(std::string* to, int64_t v) {
  to->push_back(ALIntegerToken);
  append_value(to, v);
}

// Appends a run of numbers; the loop that arrays are sent with.
template <class T>
void append_run(std::string* to, int token, const T* values, size_t n) {
  constexpr size_t kToken = 1 + sizeof(T);
  const size_t before = to->size();
  to->resize(before + n * kToken);
  char* p = to->data() + before;
  for (size_t i = 0; i < n; i++, p += kToken) {
    *p = static_cast<char>(token);
    std::memcpy(p + 1, values + i, sizeof(T));
  }
}

template <class T>
int put_list(ALINK link, int token, const T* values, size_t n) {
  constexpr size_t kRun = kPushSize / (1 + sizeof(T));
  if (n > static_cast<size_t>(kMaxArguments)) return may_put(link) ? put_failure(link, ALErrorRange) : 0;
  if (!ALPutFunction(link, "List", static_cast<int>(n))) return 0;
  for (size_t done = 0; done < n;) {
    const size_t run = std::min(kRun, n - done);
    append_run(&link->out.bytes, token, values + done, run);
    link->out.left -= static_cast<int64_t>(run);
    done += run;
    if (push_output(link, Clock::time_point::max())) continue;
    note_death(link);
    return 0;
  }
  return 1;
}

}  // namespace

namespace algelink {

bool push_output(ALINK link, Clock::time_point until) {
  // Without a connection there is nobody to send to.
  return session_send(link, &link->out.bytes, until);
}

bool is_symbol(const char* bytes, size_t n) {
  if (n == 0 || n > kMaxSymbol) return false;
  return std::all_of(bytes, bytes + n, [](unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '$' || c == '`';
  });
}

bool is_number(const char* bytes, size_t n) {
  if (n > 0 && (*bytes == '-' || *bytes == '+')) bytes++, n--;
  return n > 0 && n < kMaxDigits && std::all_of(bytes, bytes + n, [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace algelink

extern "C" {

int ALPutByteString(ALINK link, const unsigned char* bytes, size_t n) {
  return put_bytes(link, reinterpret_cast<const char*>(bytes), n);
}

int ALPutString(ALINK link, const char* text) { return put_bytes(link, text, std::strlen(text)); }

int ALPutSymbol(ALINK link, const char* name) {
  if (!may_put(link)) return 0;
  const std::string_view text = name;
  if (!is_symbol(text.data(), text.size())) return put_failure(link, ALErrorRange);
  append_symbol(&link->out.bytes, text);
  return wrote(link, 0);
}

int ALPutInteger64(ALINK link, int64_t value) {
  if (!may_put(link)) return 0;
  append_element(&link->out.bytes, value);
  return wrote(link, 0);
}

int ALPutInteger(ALINK link, int value) { return ALPutInteger64(link, value); }

int ALPutBigInteger(ALINK link, const char* digits) {
  if (!may_put(link)) return 0;
  const std::string_view text = digits;
  if (!is_number(text.data(), text.size())) return put_failure(link, ALErrorRange);
  link->out.bytes.push_back(ALBigIntegerToken);
  append_value(&link->out.bytes, static_cast<uint32_t>(text.size()));
  link->out.bytes.append(text);
  return wrote(link, 0);
}

int ALPutReal(ALINK link, double value) {
  if (!may_put(link)) return 0;
  append_element(&link->out.bytes, value);
  return wrote(link, 0);
}

int ALPutArgCount(ALINK link, int arguments) {
  if (!may_put(link)) return 0;
  if (arguments < 0 || arguments > kMaxArguments) return put_failure(link, ALErrorRange);
  link->out.bytes.push_back(ALFunctionToken);
  append_value(&link->out.bytes, static_cast<uint32_t>(arguments));
  return wrote(link, int64_t{arguments} + 1);
}

int ALPutFunction(ALINK link, const char* head, int arguments) {
  if (!may_put(link)) return 0;
  if (!is_symbol(head, std::strlen(head))) return put_failure(link, ALErrorRange);
  return ALPutArgCount(link, arguments) && ALPutSymbol(link, head);
}

int ALPutReal64List(ALINK link, const double* values, size_t n) { return put_list(link, ALRealToken, values, n); }
int ALPutInteger64List(ALINK link, const int64_t* values, size_t n) {
  return put_list(link, ALIntegerToken, values, n);
}

int ALPutNext(ALINK link, int token) {
  if (!may_put(link)) return 0;
  if (token != ALStringToken) return put_failure(link, ALErrorSequence);
  link->out.bytes.push_back(ALStringToken);
  link->out.in_string = link->out.first_piece = true;
  return 1;
}

int ALPut8BitCharacters(ALINK link, size_t bytes_left, const unsigned char* bytes, size_t n) {
  Output& o = link->out;
  if (link->error != ALErrorNone) return 0;
  const bool fits = o.first_piece || (n <= o.string_left && bytes_left == o.string_left - n);
  if (!o.in_string || !fits) return put_failure(link, ALErrorSequence);
  o.first_piece = false;
  o.string_left = bytes_left;
  const bool last = bytes_left == 0;
  if ((n > 0 || last) && !append_chunks(link, reinterpret_cast<const char*>(bytes), n, last)) {
    note_death(link);
    return 0;
  }
  if (!last) return 1;
  o.in_string = false;
  return wrote(link, 0);
}

int ALEndPacket(ALINK link) {
  Output& o = link->out;
  if (link->error != ALErrorNone) return 0;
  if (o.in_string || o.left != 0 || !o.in_packet) return put_failure(link, ALErrorSequence);
  o.bytes.push_back(ALEndPacketToken);
  o.in_packet = false;
  return 1;
}

}  // extern "C"
