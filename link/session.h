// A link: the session between two proven peers.
//
// One reader thread for each connected link receives frames, queues the token bytes, answers pings and calls the
// message handler. The thread that uses the link fills `pending`, hands it over, and takes received bytes; both sides
// try to send at once, and what the device does not take is sent by the reader thread when there is room.
#pragma once

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include "algelink.h"
#include "device.h"
#include "frames.h"

struct ALHandlerRecord {
  ALMessageHandler function;
};

struct ALEnvironmentRecord {
  std::vector<std::unique_ptr<ALHandlerRecord>> handlers;
};

namespace algelink {

using Clock = std::chrono::steady_clock;

// What the reader thread and the user of the link share, under the mutex.
struct Shared {
  std::mutex mutex;
  std::condition_variable changed;
  FrameReader frames;
  std::vector<char> input;  // token bytes that have come
  std::string control;      // frames that go before waiting DATA
  bool pong_due = false;
  uint32_t credit_due = 0;  // bytes taken and not yet granted again
  std::string output;       // token bytes to send, from output_sent on
  size_t output_sent = 0;
  uint64_t send_credit = kStartCredit;
  std::string wire;  // frames that are being sent, from wire_sent on
  size_t wire_sent = 0;
  bool full = false;         // the device took no more; the reader thread waits for room
  bool deaf = false;         // the peer takes no more; what it has sent before is still read
  bool reader_idle = false;  // the reader thread waits without looking for room
  int dead = ALErrorNone;    // why the session is over
  bool terminated = false;   // a terminate message has come that no wait has told yet
  bool stop = false;         // the reader thread has to end
};

// The token bytes that are being read; `mark` is where the current token begins.
struct Input {
  std::vector<char> bytes;
  size_t position = 0;
  size_t mark = 0;
  int64_t left = 0;          // expressions that are still to come until the current one is whole
  bool in_packet = false;    // something has been read since the last end of a packet
  uint64_t packet_size = 0;  // bytes of this packet
};

// The token bytes that are being written.
struct Output {
  std::string bytes;
  int64_t left = 0;
  bool in_packet = false;
  bool in_string = false;  // begun in pieces
  bool first_piece = false;
  size_t string_left = 0;
};

// For tests of the other side: what a peer says wrong in its handshake.
struct Mischief {
  bool wrong_key = false;
  bool wrong_version = false;
};

}  // namespace algelink

struct ALLinkRecord {
  ALEnvironment env = nullptr;
  algelink::Endpoint endpoint;
  algelink::Channel channel;
  algelink::Shared shared;
  algelink::Input in;
  algelink::Output out;
  algelink::Mischief mischief;
  int error = ALErrorNone;
  std::atomic<ALMessageHandler> handler = nullptr;
  ALYielder yielder = nullptr;
  bool connected = false;
  bool has_thread = false;
  pthread_t thread = {};
  std::unordered_set<char*> texts;  // strings and arrays that the user holds
};

namespace algelink {

// All links, for the end of an environment and for forks. Opening registers a link.
void register_link(ALINK link);
void forget_link(ALINK link);
std::vector<ALINK> links_of(ALEnvironment env);

// Seconds of silence after which a link counts as dead, from OZLINK_DEAD_AFTER; 0 for never.
int dead_after();

// Starts the reader thread on a connected channel.
bool start_session(ALINK link);

// Hands bytes over for sending. Waits only while much is still unsent, until the time; false when the session is over.
bool session_send(ALINK link, std::string* bytes, Clock::time_point until);
// Waits until everything is sent; false when the session is over or the time is.
bool session_flush(ALINK link, Clock::time_point until);
// Appends received bytes to `to`, waiting for some; an error code.
int session_take(ALINK link, std::vector<char>* to);
// Waits for input, which may be there already: 1, or 0 for the end of the session or a terminate message.
int session_wait(ALINK link, bool unread);
// Sends frames as they are, before waiting DATA.
bool session_control(ALINK link, const std::string& frames);
// Ends the session for a reason of this side.
void session_fail(ALINK link, int error);
// Says goodbye, waits for the peer to see it until the time, and ends the reader thread.
void stop_session(ALINK link, Clock::time_point until);
// Ends the connection at once, as a peer does that is killed.
void drop_session(ALINK link);

// The handshake of a listener (with the first peer that proves itself) and of a connector; an error code.
int accept_peer(ALINK link);
int prove_to_listener(ALINK link);

}  // namespace algelink
