// Fuzz target: what a peer sends over a link. The first byte chooses: the bytes are frames, token bytes read by all
// kinds of gets, or token bytes served as call packets. Whatever they are, the reader ends its link at worst, and what
// it took is within the limits.

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "algelink.h"
#include "frames.h"
#include "session.h"
#include "tokenio.h"

namespace {

using namespace algelink;

// Frames in two cuttings must give the same.
void read_frames(const char* bytes, size_t n) {
  std::vector<char> data[2];
  std::vector<FrameEvent> events[2];
  FrameReader whole, pieces;
  bool good = true;
  const bool all_good = whole.feed(bytes, n, &data[0], &events[0]);
  for (size_t i = 0; i < n && good; i++) good = pieces.feed(bytes + i, 1, &data[1], &events[1]);
  if (good != all_good || data[0].size() > kStartCredit) std::abort();
  if (good && (data[0] != data[1] || events[0].size() != events[1].size())) std::abort();
}

// A link whose peer has sent these token bytes and gone.
ALINK link_with(const char* bytes, size_t n) {
  auto* link = new ALLinkRecord;
  link->in.bytes.assign(bytes, bytes + n);
  link->shared.dead = ALErrorClosed;
  return link;
}

// Gets what is there, and in between something else, which must leave the token.
bool get_something(ALINK link, unsigned choice) {
  const char* text;
  const unsigned char* bytes;
  double* values;
  double real;
  int64_t wide;
  int number;
  size_t n;
  switch (choice % 12) {
    case 0: return ALGetString(link, &text);
    case 1: return ALGetByteString(link, &bytes, &n);
    case 2: return ALGetSymbol(link, &text);
    case 3: return ALGetInteger(link, &number);
    case 4: return ALGetInteger64(link, &wide);
    case 5: return ALGetReal(link, &real);
    case 6: return ALGetBigInteger(link, &text);
    case 7: return ALGetFunction(link, &text, &number);
    case 8: return ALTestHead(link, "List", &number);
    case 9: return ALGetReal64List(link, &values, &n);
    case 10: return ALNextPacket(link) != 0;
    default: return ALNewPacket(link);
  }
}

void check_state(ALINK link) {
  const Input& in = link->in;
  if (in.position > in.bytes.size() || in.mark > in.position || in.left < 0) std::abort();
}

void read_tokens(ALINK link, unsigned seed) {
  while (link->error < ALErrorClosed) {
    const size_t before = link->in.position;
    seed = seed * 1103515245 + 12345;
    get_something(link, seed >> 16);
    check_state(link);
    ALClearError(link);
    if (link->in.position == before && !skip_token(link)) {
      ALClearError(link);
      if (!ALNewPacket(link)) break;
    }
    check_state(link);
  }
}

void serve_calls(ALINK link) {
  while (ALNextPacket(link) == ALCallPacket) {
    int number, count;
    if (ALGetInteger(link, &number) && ALTestHead(link, "List", &count)) ALTransferExpression(link, link);
    ALClearError(link);
    if (!ALNewPacket(link)) return;
    check_state(link);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const auto* bytes = reinterpret_cast<const char*>(data) + 1;
  if (*data % 4 == 0) {
    read_frames(bytes, size - 1);
    return 0;
  }
  ALINK link = link_with(bytes, size - 1);
  if (*data % 4 == 1)
    serve_calls(link);
  else
    read_tokens(link, *data);
  ALClose(link);
  return 0;
}
