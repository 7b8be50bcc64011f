// Frames: what travels on a connected byte stream.
//
// A frame is a u32 length, a u8 type, three zero bytes and the payload; all integers are little-endian. The reader
// takes bytes in any cutting and tells each whole frame, DATA also in parts, as it arrives:
//
//   05 00 00 00  01 00 00 00  22 00 ...     DATA, 5 bytes of tokens
//   08 00 00 00  02 00 00 00  03 00 00 00 00 00 00 00     MESSAGE abort
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace algelink {

enum FrameType : uint8_t { kData = 1, kMessage = 2, kCredit = 3, kPing = 4, kPong = 5, kBye = 6 };

// Why a side says goodbye.
enum ByeReason : uint32_t { kByeClosed = 0, kByeVersion = 1, kByeStream = 2 };

constexpr size_t kFrameHead = 8;
constexpr size_t kMaxPayload = 65536;
constexpr size_t kDataPiece = 16384;       // DATA is sent in pieces of this size at most
constexpr uint32_t kStartCredit = 262144;  // bytes of DATA that may be sent before the receiver grants more

inline void append_u32(std::string* to, uint32_t v) {
  for (int shift = 0; shift < 32; shift += 8) to->push_back(static_cast<char>(v >> shift));
}

inline uint32_t read_u32(const char* p) {
  const auto* u = reinterpret_cast<const unsigned char*>(p);
  return u[0] | uint32_t{u[1]} << 8 | uint32_t{u[2]} << 16 | uint32_t{u[3]} << 24;
}

// Appends a frame whose payload is the numbers.
void append_frame(std::string* to, FrameType type, std::initializer_list<uint32_t> numbers);

// Appends the head of a DATA frame.
void append_data_head(std::string* to, size_t length);

// What the frames of one receive came to.
struct FrameEvent {
  FrameType type;
  uint32_t first;
  uint32_t second;
};

class FrameReader {
 public:
  // Takes bytes; token bytes go to *data, other frames to *events. False for a stream that breaks the rules.
  bool feed(const char* bytes, size_t n, std::vector<char>* data, std::vector<FrameEvent>* events);

 private:
  bool begin_frame();
  void end_frame(std::vector<FrameEvent>* events);

  char head_[kFrameHead] = {};
  size_t head_length_ = 0;         // bytes of the head that have come
  uint32_t left_ = 0;              // payload bytes still to come
  std::string payload_;            // of a frame that is not DATA
  int64_t credit_ = kStartCredit;  // DATA bytes that the peer may still send

 public:
  // The receiver took n bytes and granted them again.
  void grant(uint32_t n) { credit_ += n; }
};

}  // namespace algelink
