// See frames.h.

#include "frames.h"

#include <algorithm>
#include <initializer_list>

namespace algelink {

namespace {

void append_head(std::string* to, size_t length, FrameType type) {
  append_u32(to, static_cast<uint32_t>(length));
  append_u32(to, type);
}

// The length that a type's payload must have; -1 for any, -2 for no type.
int payload_length(uint8_t type) {
  switch (type) {
    case kData: return -1;
    case kMessage: return 8;
    case kCredit:
    case kBye: return 4;
    case kPing:
    case kPong: return 0;
    default: return -2;
  }
}

}  // namespace

void append_frame(std::string* to, FrameType type, std::initializer_list<uint32_t> numbers) {
  append_head(to, numbers.size() * 4, type);
  for (const uint32_t v : numbers) append_u32(to, v);
}

void append_data_head(std::string* to, size_t length) { append_head(to, length, kData); }

bool FrameReader::begin_frame() {
  left_ = read_u32(head_);
  const auto type = static_cast<uint8_t>(head_[4]);
  if (head_[5] != 0 || head_[6] != 0 || head_[7] != 0 || left_ > kMaxPayload) return false;
  const int wanted = payload_length(type);
  if (wanted == -2 || (wanted >= 0 && left_ != static_cast<uint32_t>(wanted))) return false;
  payload_.clear();
  if (type != kData) return true;
  credit_ -= left_;
  return credit_ >= 0;
}

void FrameReader::end_frame(std::vector<FrameEvent>* events) {
  const auto type = static_cast<FrameType>(head_[4]);
  head_length_ = 0;
  if (type == kData) return;
  FrameEvent event{type, 0, 0};
  if (payload_.size() >= 4) event.first = read_u32(payload_.data());
  if (payload_.size() >= 8) event.second = read_u32(payload_.data() + 4);
  events->push_back(event);
}

bool FrameReader::feed(const char* bytes, size_t n, std::vector<char>* data, std::vector<FrameEvent>* events) {
  while (n > 0) {
    size_t took;
    if (head_length_ < kFrameHead) {
      took = std::min(n, kFrameHead - head_length_);
      std::memcpy(head_ + head_length_, bytes, took);
      head_length_ += took;
      if (head_length_ == kFrameHead && !begin_frame()) return false;
    } else {
      took = std::min<size_t>(n, left_);
      if (head_[4] == kData)
        data->insert(data->end(), bytes, bytes + took);
      else
        payload_.append(bytes, took);
      left_ -= static_cast<uint32_t>(took);
    }
    bytes += took;
    n -= took;
    if (head_length_ == kFrameHead && left_ == 0) end_frame(events);
  }
  return true;
}

}  // namespace algelink
