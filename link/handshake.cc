// The handshake: both sides show the protocol and its versions, the connector sends the first half of the listener's
// key file, the listener answers with the second half. Who fails or is slow loses its socket, and the listener goes on.
//
//   4F 5A 4C 4B 0D 0A 1A 00   01 00   01 00   00 00 00 00     magic, lowest and highest version, zero

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "session.h"

namespace algelink {

namespace {

constexpr size_t kHello = 16;
constexpr char kMagic[8] = {0x4F, 0x5A, 0x4C, 0x4B, 0x0D, 0x0A, 0x1A, 0x00};
constexpr unsigned kVersion = 1;
constexpr unsigned kNoVersion = 99;  // for tests
constexpr size_t kMostUnfinished = 8;
constexpr auto kHandshakeTime = std::chrono::seconds(5);
constexpr auto kYieldTime = std::chrono::milliseconds(100);

std::string hello(unsigned version) {
  std::string text(kMagic, sizeof kMagic);
  append_u32(&text, version | version << 16);
  append_u32(&text, 0);
  return text;
}

enum class Greeting { kGood, kForeign, kWrongVersion };

Greeting check_hello(const char* bytes) {
  if (std::memcmp(bytes, kMagic, sizeof kMagic) != 0 || read_u32(bytes + 12) != 0) return Greeting::kForeign;
  const uint32_t versions = read_u32(bytes + 8);
  const unsigned lowest = versions & 0xFFFF, highest = versions >> 16;
  if (lowest > highest) return Greeting::kForeign;
  const unsigned version = std::min(highest, kVersion);
  return version >= lowest && version >= kVersion ? Greeting::kGood : Greeting::kWrongVersion;
}

bool send_whole(int fd, const std::string& bytes) {
  return send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(bytes.size());
}

std::string half_key(const KeyFile& key, bool listener) {
  const auto* begin = reinterpret_cast<const char*>(key.key) + (listener ? kProofSize : 0);
  return std::string(begin, kProofSize);
}

bool same_half(const std::string& bytes, const KeyFile& key, bool listener) {
  const std::string wanted = half_key(key, listener);
  return same_proof(reinterpret_cast<const unsigned char*>(bytes.data()),
                    reinterpret_cast<const unsigned char*>(wanted.data()));
}

// ---- descriptors over a socket ----

union DescriptorSpace {
  char bytes[CMSG_SPACE(3 * sizeof(int))];
  cmsghdr align;
};

bool send_with_descriptors(int socket, const std::string& bytes, const RingDescriptors& d) {
  const int fds[3] = {d.memory, d.listener_event, d.connector_event};
  DescriptorSpace space = {};
  iovec part = {const_cast<char*>(bytes.data()), bytes.size()};
  msghdr message = {};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = space.bytes;
  message.msg_controllen = sizeof space.bytes;
  cmsghdr* head = CMSG_FIRSTHDR(&message);
  head->cmsg_level = SOL_SOCKET;
  head->cmsg_type = SCM_RIGHTS;
  head->cmsg_len = CMSG_LEN(sizeof fds);
  std::memcpy(CMSG_DATA(head), fds, sizeof fds);
  return sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(bytes.size());
}

void keep_descriptors(msghdr* message, RingDescriptors* d) {
  int fds[3] = {-1, -1, -1};
  for (cmsghdr* head = CMSG_FIRSTHDR(message); head; head = CMSG_NXTHDR(message, head)) {
    if (head->cmsg_level != SOL_SOCKET || head->cmsg_type != SCM_RIGHTS) continue;
    const size_t n = std::min(sizeof fds, static_cast<size_t>(head->cmsg_len - CMSG_LEN(0)));
    std::memcpy(fds, CMSG_DATA(head), n);
  }
  close_ring_descriptors(d);
  *d = {fds[0], fds[1], fds[2]};
}

ssize_t receive_with_descriptors(int socket, char* to, size_t n, RingDescriptors* d) {
  DescriptorSpace space = {};
  iovec part = {to, n};
  msghdr message = {};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = space.bytes;
  message.msg_controllen = sizeof space.bytes;
  const ssize_t got = recvmsg(socket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  if (got > 0 && message.msg_controllen > 0) keep_descriptors(&message, d);
  return got;
}

// ---- the listener ----

// A peer that has connected and not yet proven itself.
struct Pending {
  Channel channel;
  Clock::time_point until;
  std::string received;
};

enum class Progress { kWaiting, kProven, kFailed };

bool answer_proof(ALINK link, Channel* channel) {
  const std::string proof = half_key(link->endpoint.key, true);
  if (channel->device != &kSharedMemoryDevice) return send_whole(channel->socket, proof);
  RingDescriptors rings;
  if (!make_ring_descriptors(&rings)) return false;
  if (send_with_descriptors(channel->socket, proof, rings)) return attach_rings(channel, &rings, true);
  close_ring_descriptors(&rings);
  return false;
}

// Looks at what a peer has sent; never reads past its proof.
Progress advance(ALINK link, Pending* p) {
  char bytes[kHello + kProofSize];
  const size_t room = sizeof bytes - p->received.size();
  const ssize_t got = recv(p->channel.socket, bytes, room, MSG_DONTWAIT);
  if (got < 0) return errno == EAGAIN || errno == EINTR ? Progress::kWaiting : Progress::kFailed;
  if (got == 0) return Progress::kFailed;
  p->received.append(bytes, static_cast<size_t>(got));
  if (p->received.size() < kHello) return Progress::kWaiting;
  const Greeting greeting = check_hello(p->received.data());
  if (greeting == Greeting::kWrongVersion) {
    std::string bye;
    append_frame(&bye, kBye, {kByeVersion});
    send_whole(p->channel.socket, bye);
  }
  if (greeting != Greeting::kGood) return Progress::kFailed;
  if (p->received.size() < sizeof bytes) return Progress::kWaiting;
  const bool proven = same_half(p->received.substr(kHello), link->endpoint.key, false);
  return proven && answer_proof(link, &p->channel) ? Progress::kProven : Progress::kFailed;
}

class Waiting {
 public:
  explicit Waiting(ALINK link) : link_(link) {}
  ~Waiting() {
    for (Pending& p : all_) close_channel(&p.channel);
  }

  // Waits for something to happen, and deals with it. True when a peer has proven itself: the link has its channel.
  bool step() {
    std::vector<pollfd> fds;
    for (const int fd : link_->endpoint.listeners) fds.push_back({fd, POLLIN, 0});
    for (const Pending& p : all_) fds.push_back({p.channel.socket, POLLIN, 0});
    if (poll(fds.data(), fds.size(), wait_time()) <= 0) fds.clear();
    return take_finished() || accept_all();
  }

 private:
  int wait_time() const {
    if (link_->yielder) return kYieldTime.count();
    if (all_.empty()) return -1;
    Clock::time_point first = Clock::time_point::max();
    for (const Pending& p : all_) first = std::min(first, p.until);
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(first - Clock::now()).count() + 1;
    return static_cast<int>(std::clamp<long>(ms, 0, 10'000));
  }

  // Moves each peer on; the failed and the slow ones lose their sockets.
  bool take_finished() {
    for (size_t i = 0; i < all_.size();) {
      const Progress progress = advance(link_, &all_[i]);
      if (progress == Progress::kProven) return take(i);
      if (progress == Progress::kWaiting && Clock::now() < all_[i].until) {
        i++;
        continue;
      }
      close_channel(&all_[i].channel);
      all_.erase(all_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    return false;
  }

  bool take(size_t i) {
    link_->channel = all_[i].channel;
    all_.erase(all_.begin() + static_cast<std::ptrdiff_t>(i));
    return true;
  }

  // A peer that has come is looked at once, so that one that has gone again takes no place. When all places are taken
  // the oldest peer goes: it had the most time.
  bool accept_all() {
    const Device* device = link_->endpoint.device;
    for (const int listener : link_->endpoint.listeners) {
      for (;;) {
        Pending p{{}, Clock::now() + kHandshakeTime, {}};
        p.channel.device = device;
        if (device->accept(&link_->endpoint, listener, &p.channel) < 0) break;
        if (all_.size() == kMostUnfinished) {
          close_channel(&all_.front().channel);
          all_.erase(all_.begin());
        }
        all_.push_back(p);
        if (!device->handshake) return take(all_.size() - 1);
        send_whole(p.channel.socket, hello(kVersion));
        if (take_finished()) return true;
      }
    }
    return false;
  }

  ALINK link_;
  std::vector<Pending> all_;
};

// ---- the connector ----

// Reads exactly n bytes, until the time.
bool receive_whole(int socket, size_t n, Clock::time_point until, std::string* to, RingDescriptors* d) {
  to->assign(n, '\0');
  size_t have = 0;
  while (have < n) {
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()).count();
    pollfd p = {socket, POLLIN, 0};
    if (ms <= 0 || poll(&p, 1, static_cast<int>(ms)) == 0) return false;
    const ssize_t got = receive_with_descriptors(socket, to->data() + have, n - have, d);
    if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR)) return false;
    if (got > 0) have += static_cast<size_t>(got);
  }
  return true;
}

bool exchange_proofs(ALINK link, RingDescriptors* rings) {
  const int socket = link->channel.socket;
  const auto until = Clock::now() + kHandshakeTime;
  std::string proof = half_key(link->endpoint.key, false);
  if (link->mischief.wrong_key) proof[0] = static_cast<char>(~proof[0]);
  std::string received;
  if (!send_whole(socket, hello(link->mischief.wrong_version ? kNoVersion : kVersion))) return false;
  if (!receive_whole(socket, kHello, until, &received, rings)) return false;
  if (check_hello(received.data()) != Greeting::kGood || !send_whole(socket, proof)) return false;
  return receive_whole(socket, kProofSize, until, &received, rings) && same_half(received, link->endpoint.key, true);
}

}  // namespace

int accept_peer(ALINK link) {
  Waiting waiting(link);
  while (!waiting.step())
    if (link->yielder && link->yielder(link) != 0) return ALErrorLost;
  close_listeners(&link->endpoint);  // one link, one peer
  return ALErrorNone;
}

int prove_to_listener(ALINK link) {
  int error = ALErrorSystem;
  if (link->endpoint.device->connect(&link->endpoint, &link->channel, &error) < 0) return error;
  if (!link->endpoint.device->handshake) return ALErrorNone;
  RingDescriptors rings;
  bool proven = exchange_proofs(link, &rings);
  if (proven && link->endpoint.device == &kSharedMemoryDevice)
    proven = attach_rings(&link->channel, &rings, false);
  else
    close_ring_descriptors(&rings);
  return proven ? ALErrorNone : ALErrorRefused;
}

}  // namespace algelink
