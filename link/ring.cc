// Two rings of bytes in shared memory, one for each direction.
//
// Writer and reader each keep the true position of their own side in private memory and publish it; what the other side
// publishes is read once and checked before it is used, since the other side may be hostile. A side that would wait
// raises its flag, looks again, and sleeps on its event descriptor; who moves on looks at the flag and wakes it.

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

#include "device.h"

namespace algelink {

namespace {

constexpr size_t kRingSize = size_t{1} << 20;
constexpr size_t kHeadSize = 4096;
constexpr size_t kMemorySize = kHeadSize + 2 * kRingSize;

struct RingHead {
  alignas(64) std::atomic<uint64_t> written;
  alignas(64) std::atomic<uint64_t> read;
  alignas(64) std::atomic<uint32_t> reader_sleeps;
  alignas(64) std::atomic<uint32_t> writer_sleeps;
};
static_assert(2 * sizeof(RingHead) <= kHeadSize);
static_assert(std::atomic<uint64_t>::is_always_lock_free);

struct Ring {
  RingHead* head = nullptr;
  char* bytes = nullptr;
  uint64_t position = 0;  // our own side's
};

}  // namespace

struct RingPair {
  char* memory = nullptr;
  Ring in;
  Ring out;
  int own_event = -1;
  int peer_event = -1;
  std::atomic<bool> ended = false;  // the peer's socket is closed
};

namespace {

// Raises the event of a side that sleeps.
void rouse(std::atomic<uint32_t>* sleeps, int event) {
  std::atomic_thread_fence(std::memory_order_seq_cst);
  if (sleeps->load(std::memory_order_relaxed) == 0) return;
  sleeps->store(0, std::memory_order_relaxed);
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t n = write(event, &one, sizeof one);
}

// Copies between the ring, which begins anew at its end, and plain memory.
void copy_in(const Ring& r, const char* from, size_t n) {
  const size_t at = r.position % kRingSize;
  const size_t first = std::min(n, kRingSize - at);
  std::memcpy(r.bytes + at, from, first);
  std::memcpy(r.bytes, from + first, n - first);
}

void copy_out(const Ring& r, char* to, size_t n) {
  const size_t at = r.position % kRingSize;
  const size_t first = std::min(n, kRingSize - at);
  std::memcpy(to, r.bytes + at, first);
  std::memcpy(to + first, r.bytes, n - first);
}

// Bytes in the ring that we read, room in the ring that we write; over the size when the peer's position is wrong.
uint64_t bytes_in(const Ring& r) { return r.head->written.load(std::memory_order_acquire) - r.position; }
uint64_t bytes_out(const Ring& r) { return r.position - r.head->read.load(std::memory_order_acquire); }

// Nothing is sent over the socket of connected rings: input there is its end.
void look_for_end(Channel* channel) {
  char byte;
  const ssize_t n = recv(channel->socket, &byte, 1, MSG_DONTWAIT);
  if (n < 0 && (errno == EAGAIN || errno == EINTR)) return;
  channel->rings->ended = true;
}

void drain_event(int event) {
  uint64_t count;
  [[maybe_unused]] const ssize_t n = read(event, &count, sizeof count);
}

// Memory that the peer cannot take away under our hands.
bool is_sealed_memory(int fd) {
  const int seals = fcntl(fd, F_GET_SEALS);
  struct stat s;
  return seals >= 0 && (seals & F_SEAL_SHRINK) && fstat(fd, &s) == 0 && s.st_size >= static_cast<off_t>(kMemorySize);
}

void set_nonblocking(int fd) { fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK); }

}  // namespace

bool make_ring_descriptors(RingDescriptors* d) {
  d->memory = memfd_create("ozlink", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  d->listener_event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  d->connector_event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (d->memory >= 0 && d->listener_event >= 0 && d->connector_event >= 0 && ftruncate(d->memory, kMemorySize) == 0 &&
      fcntl(d->memory, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) == 0)
    return true;
  close_ring_descriptors(d);
  return false;
}

void close_ring_descriptors(RingDescriptors* d) {
  for (int* fd : {&d->memory, &d->listener_event, &d->connector_event}) {
    if (*fd >= 0) close(*fd);
    *fd = -1;
  }
}

bool attach_rings(Channel* channel, RingDescriptors* d, bool listener) {
  void* memory = MAP_FAILED;
  if (is_sealed_memory(d->memory))
    memory = mmap(nullptr, kMemorySize, PROT_READ | PROT_WRITE, MAP_SHARED, d->memory, 0);
  if (memory == MAP_FAILED) {
    close_ring_descriptors(d);
    return false;
  }
  auto* rings = new RingPair;
  rings->memory = static_cast<char*>(memory);
  auto* heads = reinterpret_cast<RingHead*>(rings->memory);  // a fresh memory file is zero, and so are the heads
  Ring* of_listener = listener ? &rings->in : &rings->out;   // the ring that the listener reads
  Ring* of_connector = listener ? &rings->out : &rings->in;
  *of_listener = Ring{heads, rings->memory + kHeadSize, 0};
  *of_connector = Ring{heads + 1, rings->memory + kHeadSize + kRingSize, 0};
  rings->own_event = listener ? d->listener_event : d->connector_event;
  rings->peer_event = listener ? d->connector_event : d->listener_event;
  set_nonblocking(rings->own_event);
  set_nonblocking(rings->peer_event);
  d->listener_event = d->connector_event = -1;
  close_ring_descriptors(d);
  channel->rings = rings;
  return true;
}

void detach_rings(Channel* channel) {
  RingPair* rings = channel->rings;
  if (!rings) return;
  munmap(rings->memory, kMemorySize);
  close(rings->own_event);
  close(rings->peer_event);
  delete rings;
  channel->rings = nullptr;
}

long ring_send(Channel* channel, const char* bytes, size_t n) {
  RingPair* rings = channel->rings;
  Ring& r = rings->out;
  const uint64_t used = bytes_out(r);
  if (used > kRingSize) return kBroken;
  if (rings->ended) return kEnded;
  n = std::min<size_t>(n, kRingSize - used);
  if (n == 0) return kWouldBlock;
  copy_in(r, bytes, n);
  r.position += n;
  r.head->written.store(r.position, std::memory_order_release);
  rouse(&r.head->reader_sleeps, rings->peer_event);
  return static_cast<long>(n);
}

long ring_receive(Channel* channel, char* bytes, size_t n) {
  RingPair* rings = channel->rings;
  Ring& r = rings->in;
  const bool ended = rings->ended;  // looked at before the ring: what was written before the end is still read
  const uint64_t used = bytes_in(r);
  if (used > kRingSize) return kBroken;
  n = std::min<size_t>(n, used);
  if (n == 0) return ended ? kEnded : kWouldBlock;
  copy_out(r, bytes, n);
  r.position += n;
  r.head->read.store(r.position, std::memory_order_release);
  rouse(&r.head->writer_sleeps, rings->peer_event);
  return static_cast<long>(n);
}

void ring_wait(Channel* channel, bool want_room, int milliseconds) {
  RingPair* rings = channel->rings;
  rings->in.head->reader_sleeps.store(1, std::memory_order_relaxed);
  if (want_room) rings->out.head->writer_sleeps.store(1, std::memory_order_relaxed);
  std::atomic_thread_fence(std::memory_order_seq_cst);
  // The room is reckoned from what both sides have published: our own position may be moving in another thread.
  const RingHead* out = rings->out.head;
  const bool ready = bytes_in(rings->in) != 0 || (want_room && out->written.load() - out->read.load() < kRingSize);
  pollfd fds[3] = {{rings->own_event, POLLIN, 0}, {channel->wake, POLLIN, 0}, {channel->socket, POLLIN, 0}};
  // The end is looked for only when nothing else is to do: then poll tells it at once.
  const nfds_t count = rings->ended ? 2 : 3;
  if (poll(fds, count, ready || rings->ended ? 0 : milliseconds) > 0) {
    if (fds[0].revents) drain_event(rings->own_event);
    if (count == 3 && fds[2].revents) look_for_end(channel);
  }
  rings->in.head->reader_sleeps.store(0, std::memory_order_relaxed);
}

}  // namespace algelink
