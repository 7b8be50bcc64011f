// Devices: how two sides meet, and how bytes then travel between them.
//
// An Endpoint is a link before it is connected, a Channel the connected byte stream. TCP carries the bytes in its
// socket; the other two carry them in a pair of rings in shared memory, with a socket beside them as the sign of life:
//
//   TCP            a port on the loopback interface, handshake
//   SharedMemory   a Unix socket in the user's own folder, handshake, the rings travel over the socket
//   IntraProcess   a table of names in the process, no handshake
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "keyfile.h"

namespace algelink {

struct Device;
struct RingPair;

struct Endpoint {
  const Device* device = nullptr;
  bool listen = false;
  std::string name;
  std::string host;
  std::vector<int> listeners;  // descriptors that show input when a peer comes
  std::string socket_path;     // of SharedMemory, to remove
  KeyFile key;
};

struct Channel {
  const Device* device = nullptr;
  int socket = -1;
  int wake = -1;  // event descriptor that ends a wait
  RingPair* rings = nullptr;
};

// Results of send and receive besides a number of bytes.
constexpr long kWouldBlock = 0;
constexpr long kEnded = -1;   // the peer is gone
constexpr long kBroken = -2;  // the peer wrote what it must not write

struct Device {
  const char* name;
  bool handshake;
  // Takes the name of a listener, or checks what a connector needs; an error code.
  int (*open)(Endpoint* endpoint);
  // A peer's socket from a listener that shows input; -1 for none.
  int (*accept)(Endpoint* endpoint, int listener, Channel* channel);
  // A socket that leads to the listener; -1 for none, with the error code.
  int (*connect)(Endpoint* endpoint, Channel* channel, int* error);
  long (*send)(Channel* channel, const char* bytes, size_t n);
  long (*receive)(Channel* channel, char* bytes, size_t n);
  // Waits for input, for room when that is wanted, for a wake, or for the time.
  void (*wait)(Channel* channel, bool want_room, int milliseconds);
};

extern const Device kTcpDevice;
extern const Device kSharedMemoryDevice;
extern const Device kIntraProcessDevice;

// The device of a name; null for none.
const Device* find_device(const std::string& name);

// Ends the waits of a channel, now and until they have been noticed.
void wake_channel(Channel* channel);
void drain_wake(Channel* channel);

// Close the descriptors; an endpoint also gives back its name.
void close_channel(Channel* channel);
void close_listeners(Endpoint* endpoint);
void close_endpoint(Endpoint* endpoint);
// In a forked child: closes the descriptors, and leaves names and files to the parent.
void abandon_endpoint(Endpoint* endpoint);

// The table of names within the process, held over a fork.
void lock_names();
void unlock_names();

// 1 to 64 letters, digits and "-".
bool is_plain_name(const std::string& name);

// ---- rings ----

// The descriptors of a pair of rings, as they are sent to the peer: the memory, the listener's and the connector's
// event.
struct RingDescriptors {
  int memory = -1;
  int listener_event = -1;
  int connector_event = -1;
};

bool make_ring_descriptors(RingDescriptors* d);
void close_ring_descriptors(RingDescriptors* d);
// Maps the rings into the channel; takes the descriptors over, also when it fails.
bool attach_rings(Channel* channel, RingDescriptors* d, bool listener);
void detach_rings(Channel* channel);

long ring_send(Channel* channel, const char* bytes, size_t n);
long ring_receive(Channel* channel, char* bytes, size_t n);
void ring_wait(Channel* channel, bool want_room, int milliseconds);

}  // namespace algelink
