// See session.h.

#include "session.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>

namespace algelink {

namespace {

constexpr size_t kReceiveSize = size_t{256} << 10;
constexpr size_t kWireSize = 4 * kDataPiece;
constexpr size_t kMuchUnsent = size_t{16} << 20;  // a put waits when more than this is unsent
constexpr uint32_t kGrantPiece = kStartCredit / 4;
constexpr auto kYieldTime = std::chrono::milliseconds(100);
constexpr auto kForever = Clock::time_point::max();

using Lock = std::unique_lock<std::mutex>;

size_t unsent(const Shared& s) { return s.output.size() - s.output_sent; }
bool all_sent(const Shared& s) { return unsent(s) == 0 && s.control.empty() && s.wire_sent == s.wire.size(); }

void die(Shared* s, int error) {
  if (s->dead == ALErrorNone) s->dead = error;
  s->changed.notify_all();
}

// Waits for a condition, the end of the session or the time. The yield function runs with the lock released.
template <class Ready>
bool wait_for(ALINK link, Lock* lock, Clock::time_point until, Ready ready) {
  Shared& s = link->shared;
  while (!ready() && s.dead == ALErrorNone) {
    if (!link->yielder && until == kForever) {
      s.changed.wait(*lock);
      continue;
    }
    const auto slice = std::min(until, Clock::now() + kYieldTime);
    if (s.changed.wait_until(*lock, slice) != std::cv_status::timeout) continue;
    if (Clock::now() >= until) break;
    if (!link->yielder) continue;
    lock->unlock();
    const bool end = link->yielder(link) != 0;
    lock->lock();
    if (end) die(&s, ALErrorLost);
  }
  return ready();
}

// ---- sending ----

void take_control(Shared* s) {
  if (s->pong_due) append_frame(&s->control, kPong, {});
  if (s->credit_due >= kGrantPiece) {
    append_frame(&s->control, kCredit, {s->credit_due});
    s->frames.grant(s->credit_due);
    s->credit_due = 0;
  }
  s->pong_due = false;
  s->wire += s->control;
  s->control.clear();
}

void take_data(Shared* s) {
  while (s->wire.size() < kWireSize) {
    const size_t n = std::min({unsent(*s), kDataPiece, static_cast<size_t>(s->send_credit)});
    if (n == 0) return;
    append_data_head(&s->wire, n);
    s->wire.append(s->output, s->output_sent, n);
    s->output_sent += n;
    s->send_credit -= n;
  }
}

// Sends what can be sent without waiting.
void pump(ALINK link) {
  Shared& s = link->shared;
  s.full = false;
  while (s.dead == ALErrorNone && !s.deaf) {
    if (s.wire_sent == s.wire.size()) {
      s.wire.clear();
      s.wire_sent = 0;
      take_control(&s);
      take_data(&s);
      if (s.wire.empty()) break;
    }
    const long n = link->channel.device->send(&link->channel, s.wire.data() + s.wire_sent, s.wire.size() - s.wire_sent);
    if (n == kBroken) return die(&s, ALErrorStream);
    s.deaf = n == kEnded;
    s.full = n == kWouldBlock;
    if (s.full || s.deaf) return;
    s.wire_sent += static_cast<size_t>(n);
  }
  if (unsent(s) == 0) {
    s.output.clear();
    s.output_sent = 0;
  }
  s.changed.notify_all();
}

// Sends from the thread that uses the link; the reader thread goes on when the device is full.
void pump_from_user(ALINK link) {
  Shared& s = link->shared;
  if (s.full) return;
  pump(link);
  if (s.full && s.reader_idle) wake_channel(&link->channel);
}

// ---- the reader thread ----

void take_event(Shared* s, const FrameEvent& event, std::vector<FrameEvent>* messages) {
  switch (event.type) {
    case kMessage: messages->push_back(event); return;
    case kCredit: s->send_credit = std::min<uint64_t>(s->send_credit + event.first, kStartCredit); return;
    case kPing: s->pong_due = true; return;
    case kBye: die(s, event.first == kByeClosed ? ALErrorClosed : ALErrorStream); return;
    case kPong:
    case kData: return;
  }
}

// Takes received bytes; the messages among them are for the handler.
void take_bytes(ALINK link, const char* bytes, size_t n, std::vector<FrameEvent>* messages) {
  Shared& s = link->shared;
  std::vector<FrameEvent> events;
  const Lock lock(s.mutex);
  const bool was_empty = s.input.empty();
  const bool good = s.frames.feed(bytes, n, &s.input, &events);
  for (const FrameEvent& event : events) take_event(&s, event, messages);
  if (!good) {
    append_frame(&s.control, kBye, {kByeStream});
    pump(link);
    die(&s, ALErrorStream);
  }
  if (was_empty && !s.input.empty()) s.changed.notify_all();
}

// The handler runs before a wait can tell of the message, so that the flags it sets are seen behind the wait.
void deliver(ALINK link, const std::vector<FrameEvent>& messages) {
  for (const FrameEvent& m : messages) {
    const ALMessageHandler handler = link->handler;
    if (handler) handler(link, static_cast<int>(m.first), static_cast<int>(m.second));
    if (m.first != ALTerminateMessage) continue;
    const Lock lock(link->shared.mutex);
    link->shared.terminated = true;
    link->shared.changed.notify_all();
  }
}

// Watches for a peer that has vanished without a word.
struct Silence {
  std::chrono::seconds limit{dead_after()};
  Clock::time_point last = Clock::now();
  bool asked = false;

  int wait_time() const {
    if (limit.count() == 0) return -1;
    const auto next = last + (asked ? limit : limit / 3);
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(next - Clock::now()).count() + 1;
    return static_cast<int>(std::clamp<long>(ms, 0, 1'000'000));
  }
};

void check_silence(ALINK link, Silence* silence) {
  if (silence->limit.count() == 0) return;
  const auto quiet = Clock::now() - silence->last;
  Shared& s = link->shared;
  const Lock lock(s.mutex);
  if (quiet >= silence->limit) die(&s, ALErrorLost);
  if (quiet < silence->limit / 3 || silence->asked) return;
  silence->asked = true;
  append_frame(&s.control, kPing, {});
}

// Waits for input, or for room when the device is full. False when the thread has to end.
bool reader_wait(ALINK link, const Silence& silence) {
  Shared& s = link->shared;
  bool want_room;
  {
    const Lock lock(s.mutex);
    if (s.stop || s.dead != ALErrorNone) return false;
    want_room = s.full;
    s.reader_idle = !want_room;
  }
  link->channel.device->wait(&link->channel, want_room, silence.wait_time());
  const Lock lock(s.mutex);
  s.reader_idle = false;
  drain_wake(&link->channel);
  return !s.stop;
}

// Receives all that is there. False at the end of the stream.
bool reader_receive(ALINK link, std::vector<char>* buffer, Silence* silence) {
  std::vector<FrameEvent> messages;
  for (;;) {
    const long n = link->channel.device->receive(&link->channel, buffer->data(), buffer->size());
    if (n == kWouldBlock) return true;
    if (n < 0) {
      const Lock lock(link->shared.mutex);
      die(&link->shared, n == kBroken ? ALErrorStream : ALErrorLost);
      return false;
    }
    silence->last = Clock::now();
    silence->asked = false;
    messages.clear();
    take_bytes(link, buffer->data(), static_cast<size_t>(n), &messages);
    deliver(link, messages);
    const Lock lock(link->shared.mutex);
    if (link->shared.dead != ALErrorNone || link->shared.stop) return false;
    pump(link);
  }
}

void* reader_main(void* argument) {
  auto* link = static_cast<ALINK>(argument);
  std::vector<char> buffer(kReceiveSize);
  Silence silence;
  while (reader_wait(link, silence)) {
    if (!reader_receive(link, &buffer, &silence)) break;
    check_silence(link, &silence);
    const Lock lock(link->shared.mutex);
    pump(link);
  }
  shutdown(link->channel.socket, SHUT_RDWR);  // the peer sees at once that nobody reads any more
  return nullptr;
}

// ---- all links ----

struct Registry {
  std::mutex mutex;
  std::vector<ALINK> links;
};

Registry& registry() {
  static auto* r = new Registry;  // never destroyed: a fork may come late
  return *r;
}

void before_fork() {
  registry().mutex.lock();
  for (ALINK link : registry().links) link->shared.mutex.lock();
  lock_names();
}

void after_fork_in_parent() {
  unlock_names();
  for (ALINK link : registry().links) link->shared.mutex.unlock();
  registry().mutex.unlock();
}

// The child has no reader threads, and the links are the parent's: nothing is said over them, and no name is given
// back.
void after_fork_in_child() {
  unlock_names();
  for (ALINK link : registry().links) {
    abandon_endpoint(&link->endpoint);
    close_channel(&link->channel);
    link->has_thread = false;
    link->connected = false;
    link->shared.dead = ALErrorLost;
    link->shared.mutex.unlock();
  }
  registry().mutex.unlock();
}

void watch_forks() {
  static const int once = pthread_atfork(before_fork, after_fork_in_parent, after_fork_in_child);
  (void)once;
}

// The kernel gives up on a vanished peer as soon as we do.
void set_socket_options(ALINK link) {
  if (link->channel.device != &kTcpDevice) return;
  const int one = 1;
  setsockopt(link->channel.socket, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
  const int milliseconds = dead_after() * 1000;
  if (milliseconds > 0)
    setsockopt(link->channel.socket, IPPROTO_TCP, TCP_USER_TIMEOUT, &milliseconds, sizeof milliseconds);
}

}  // namespace

int dead_after() {
  const char* text = std::getenv("OZLINK_DEAD_AFTER");
  const long seconds = text ? std::strtol(text, nullptr, 10) : 45;
  return static_cast<int>(std::clamp<long>(seconds, 0, 1'000'000));
}

void register_link(ALINK link) {
  watch_forks();
  const std::lock_guard<std::mutex> lock(registry().mutex);
  registry().links.push_back(link);
}

void forget_link(ALINK link) {
  const std::lock_guard<std::mutex> lock(registry().mutex);
  std::erase(registry().links, link);
}

std::vector<ALINK> links_of(ALEnvironment env) {
  const std::lock_guard<std::mutex> lock(registry().mutex);
  std::vector<ALINK> found;
  for (ALINK link : registry().links)
    if (link->env == env) found.push_back(link);
  return found;
}

bool start_session(ALINK link) {
  set_socket_options(link);
  // Signals are for the threads of the program, not for ours.
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  link->has_thread = pthread_create(&link->thread, nullptr, reader_main, link) == 0;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  link->connected = link->has_thread;
  return link->connected;
}

bool session_send(ALINK link, std::string* bytes, Clock::time_point until) {
  Shared& s = link->shared;
  Lock lock(s.mutex);
  if (!link->connected || s.dead != ALErrorNone) return false;
  if (bytes->empty()) return true;
  if (s.output.empty()) {
    s.output.swap(*bytes);
  } else {
    if (s.output_sent > s.output.size() / 2) {
      s.output.erase(0, s.output_sent);
      s.output_sent = 0;
    }
    s.output += *bytes;
  }
  bytes->clear();
  pump_from_user(link);
  wait_for(link, &lock, until, [&s] { return unsent(s) <= kMuchUnsent; });
  return s.dead == ALErrorNone;
}

bool session_flush(ALINK link, Clock::time_point until) {
  Shared& s = link->shared;
  Lock lock(s.mutex);
  if (!link->connected || s.dead != ALErrorNone) return false;
  pump_from_user(link);
  wait_for(link, &lock, until, [&s] { return all_sent(s); });
  return all_sent(s) && s.dead == ALErrorNone;
}

int session_take(ALINK link, std::vector<char>* to) {
  Shared& s = link->shared;
  Lock lock(s.mutex);
  if (!wait_for(link, &lock, kForever, [&s] { return !s.input.empty(); })) return s.dead;
  const auto n = static_cast<uint32_t>(s.input.size());
  if (to->empty())
    to->swap(s.input);
  else
    to->insert(to->end(), s.input.begin(), s.input.end());
  s.input.clear();
  s.credit_due += n;
  if (s.credit_due >= kGrantPiece && s.dead == ALErrorNone) pump_from_user(link);
  return ALErrorNone;
}

int session_wait(ALINK link, bool unread) {
  Shared& s = link->shared;
  Lock lock(s.mutex);
  wait_for(link, &lock, kForever, [&] { return unread || !s.input.empty() || s.terminated; });
  if (s.terminated) {
    s.terminated = false;
    return 0;
  }
  return unread || !s.input.empty() ? 1 : 0;
}

bool session_control(ALINK link, const std::string& frames) {
  Shared& s = link->shared;
  const Lock lock(s.mutex);
  if (!link->connected || s.dead != ALErrorNone) return false;
  s.control += frames;
  pump_from_user(link);
  return s.dead == ALErrorNone;
}

void session_fail(ALINK link, int error) {
  Shared& s = link->shared;
  const Lock lock(s.mutex);
  if (link->connected && s.dead == ALErrorNone) {
    append_frame(&s.control, kBye, {kByeStream});
    pump(link);
  }
  die(&s, error);
  if (link->has_thread) wake_channel(&link->channel);
}

void stop_session(ALINK link, Clock::time_point until) {
  if (!link->has_thread) return;
  std::string bye;
  append_frame(&bye, kBye, {kByeClosed});
  Shared& s = link->shared;
  {
    Lock lock(s.mutex);
    // A goodbye may not overtake the data, and data that waits for credit would never go.
    if (s.dead == ALErrorNone && unsent(s) == 0) {
      s.control += bye;
      pump_from_user(link);
      wait_for(link, &lock, until, [&s] { return all_sent(s); });
    }
    // The peer ends the connection when it has read the goodbye. Closing first could destroy what it has not read.
    shutdown(link->channel.socket, SHUT_WR);
    wait_for(link, &lock, until, [] { return false; });
    s.stop = true;
    wake_channel(&link->channel);
  }
  pthread_join(link->thread, nullptr);
  link->has_thread = false;
}

void drop_session(ALINK link) {
  if (!link->has_thread) return;
  const linger at_once = {1, 0};
  setsockopt(link->channel.socket, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
  {
    const Lock lock(link->shared.mutex);
    link->shared.stop = true;
    die(&link->shared, ALErrorLost);
    wake_channel(&link->channel);
  }
  pthread_join(link->thread, nullptr);
  link->has_thread = false;
}

}  // namespace algelink
