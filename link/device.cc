// The three devices. See device.h.

#include "device.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>

#include "algelink.h"

namespace algelink {

namespace {

constexpr int kBacklog = 1024;

int system_error() { return errno == EADDRINUSE ? ALErrorNameInUse : ALErrorSystem; }

void close_fd(int* fd) {
  if (*fd >= 0) close(*fd);
  *fd = -1;
}

// ---- sockets as byte streams ----

long socket_send(Channel* channel, const char* bytes, size_t n) {
  const ssize_t sent = send(channel->socket, bytes, n, MSG_NOSIGNAL | MSG_DONTWAIT);
  if (sent >= 0) return sent;
  return errno == EAGAIN || errno == EINTR ? kWouldBlock : kEnded;
}

long socket_receive(Channel* channel, char* bytes, size_t n) {
  const ssize_t got = recv(channel->socket, bytes, n, MSG_DONTWAIT);
  if (got > 0) return got;
  if (got == 0) return kEnded;
  return errno == EAGAIN || errno == EINTR ? kWouldBlock : kEnded;
}

void socket_wait(Channel* channel, bool want_room, int milliseconds) {
  const short events = static_cast<short>(want_room ? POLLIN | POLLOUT : POLLIN);
  pollfd fds[2] = {{channel->socket, events, 0}, {channel->wake, POLLIN, 0}};
  poll(fds, 2, milliseconds);
}

int accept_socket(Endpoint*, int listener, Channel* channel) {
  channel->socket = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  return channel->socket;
}

// ---- TCP ----

// A port number of 0 to 65535; -1 for anything else.
int port_of(const std::string& name) {
  if (name.empty() || name.size() > 5) return -1;
  int port = 0;
  for (const char c : name) {
    if (c < '0' || c > '9') return -1;
    port = port * 10 + (c - '0');
  }
  return port <= 65535 ? port : -1;
}

struct Address {
  sockaddr_storage bytes = {};
  socklen_t length = 0;
};

bool parse_address(const std::string& text, Address* a) {
  auto* v4 = reinterpret_cast<sockaddr_in*>(&a->bytes);
  auto* v6 = reinterpret_cast<sockaddr_in6*>(&a->bytes);
  if (inet_pton(AF_INET, text.c_str(), &v4->sin_addr) == 1) {
    v4->sin_family = AF_INET;
    a->length = sizeof *v4;
    return ntohl(v4->sin_addr.s_addr) >> 24 == 127;
  }
  if (inet_pton(AF_INET6, text.c_str(), &v6->sin6_addr) != 1) return false;
  v6->sin6_family = AF_INET6;
  a->length = sizeof *v6;
  return IN6_IS_ADDR_LOOPBACK(&v6->sin6_addr);
}

void set_port(Address* a, int port) {
  const uint16_t number = htons(static_cast<uint16_t>(port));
  if (a->bytes.ss_family == AF_INET)
    reinterpret_cast<sockaddr_in*>(&a->bytes)->sin_port = number;
  else
    reinterpret_cast<sockaddr_in6*>(&a->bytes)->sin6_port = number;
}

int bound_port(int fd) {
  Address a;
  a.length = sizeof a.bytes;
  if (getsockname(fd, reinterpret_cast<sockaddr*>(&a.bytes), &a.length) != 0) return -1;
  return a.bytes.ss_family == AF_INET ? ntohs(reinterpret_cast<sockaddr_in*>(&a.bytes)->sin_port)
                                      : ntohs(reinterpret_cast<sockaddr_in6*>(&a.bytes)->sin6_port);
}

std::string node_name() {
  utsname names;
  return uname(&names) == 0 ? names.nodename : "";
}

// The loopback addresses that the hosts file gives for this machine's name. Name servers are not asked: they may be
// slow to answer, and who runs one could send us elsewhere.
std::vector<std::string> node_addresses() {
  std::vector<std::string> found;
  const std::string node = node_name();
  std::ifstream hosts("/etc/hosts");
  for (std::string line; std::getline(hosts, line);) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string address;
    words >> address;
    Address a;
    for (std::string name; words >> name;)
      if (name == node && parse_address(address, &a)) found.push_back(address);
  }
  return found;
}

std::vector<std::string> listen_addresses() {
  std::vector<std::string> all = {"127.0.0.1", "::1"};
  for (const std::string& a : node_addresses())
    if (std::find(all.begin(), all.end(), a) == all.end()) all.push_back(a);
  return all;
}

// Binds and listens on one address; -1 with the error code, which stays 0 for a family that this machine does not have.
int listen_on(const Address& a, int* error) {
  const int family = a.bytes.ss_family;
  const int fd = socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const int one = 1;
  if (fd >= 0) {
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    if (family == AF_INET6) setsockopt(fd, IPPROTO_IPV6, IPV6_V6ONLY, &one, sizeof one);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&a.bytes), a.length) == 0 && listen(fd, kBacklog) == 0) return fd;
  }
  const bool absent = family == AF_INET6 && (errno == EAFNOSUPPORT || errno == EADDRNOTAVAIL);
  *error = absent ? ALErrorNone : system_error();
  if (fd >= 0) close(fd);
  return -1;
}

int listen_everywhere(Endpoint* e) {
  int port = port_of(e->name);
  for (const std::string& text : listen_addresses()) {
    Address a;
    parse_address(text, &a);
    set_port(&a, port);
    int error = ALErrorNone;
    const int fd = listen_on(a, &error);
    if (fd < 0 && error != ALErrorNone) return error;
    if (fd < 0) continue;
    e->listeners.push_back(fd);
    if (port == 0) port = bound_port(fd);
  }
  e->name = std::to_string(port);
  return ALErrorNone;
}

int tcp_open(Endpoint* e) {
  const int port = port_of(e->name);
  if (port < 0 || (port == 0 && !e->listen)) return ALErrorArguments;
  if (!e->listen) return ALErrorNone;
  int error = listen_everywhere(e);
  if (error == ALErrorNone) error = make_key_file("tcp-" + e->name, &e->key);
  return error;
}

// Where a connector goes for a host: always to this machine.
std::vector<std::string> host_addresses(const std::string& host) {
  Address a;
  if (host.empty() || host == "localhost") return {"127.0.0.1", "::1"};
  if (host == node_name()) return listen_addresses();
  if (parse_address(host, &a)) return {host};
  return {};
}

bool finish_connect(int fd) {
  pollfd p = {fd, POLLOUT, 0};
  int error = 0;
  socklen_t n = sizeof error;
  return poll(&p, 1, 5000) == 1 && getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &n) == 0 && error == 0;
}

int connect_to(const Address& a) {
  const int fd = socket(a.bytes.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return -1;
  const int done = connect(fd, reinterpret_cast<const sockaddr*>(&a.bytes), a.length);
  // A port of the range for outgoing connections can be met by itself; that is no listener.
  if ((done == 0 || errno == EINPROGRESS) && finish_connect(fd)) {
    Address self;
    self.length = sizeof self.bytes;
    getsockname(fd, reinterpret_cast<sockaddr*>(&self.bytes), &self.length);
    if (self.length != a.length || std::memcmp(&self.bytes, &a.bytes, a.length) != 0) return fd;
  }
  close(fd);
  return -1;
}

int tcp_connect(Endpoint* e, Channel* channel, int* error) {
  const std::vector<std::string> addresses = host_addresses(e->host);
  *error = addresses.empty() ? ALErrorArguments : read_key_file("tcp-" + e->name, &e->key);
  if (*error != ALErrorNone) return -1;
  *error = ALErrorRefused;
  for (const std::string& text : addresses) {
    Address a;
    parse_address(text, &a);
    set_port(&a, port_of(e->name));
    channel->socket = connect_to(a);
    if (channel->socket >= 0) break;
  }
  return channel->socket;
}

// ---- shared memory ----

bool fill_path(const std::string& path, sockaddr_un* a) {
  *a = {};
  a->sun_family = AF_UNIX;
  if (path.size() >= sizeof a->sun_path) return false;
  std::memcpy(a->sun_path, path.c_str(), path.size());
  return true;
}

int memory_listen(Endpoint* e) {
  sockaddr_un a;
  if (!fill_path(e->socket_path, &a)) return ALErrorArguments;
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return ALErrorSystem;
  e->listeners.push_back(fd);
  unlink(e->socket_path.c_str());  // the key file is ours, so a socket of this name is left over
  if (bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) return system_error();
  if (chmod(e->socket_path.c_str(), 0600) != 0 || listen(fd, kBacklog) != 0) return system_error();
  return ALErrorNone;
}

int memory_open(Endpoint* e) {
  if (!is_plain_name(e->name)) return ALErrorArguments;
  if (!e->listen) return ALErrorNone;
  const int error = make_key_file("shm-" + e->name, &e->key);
  if (error != ALErrorNone) return error;
  e->socket_path = e->key.path.substr(0, e->key.path.rfind('/') + 1) + e->name + ".sock";
  return memory_listen(e);
}

int memory_accept(Endpoint* e, int listener, Channel* channel) {
  if (accept_socket(e, listener, channel) < 0) return -1;
  ucred peer;
  socklen_t n = sizeof peer;
  if (getsockopt(channel->socket, SOL_SOCKET, SO_PEERCRED, &peer, &n) == 0 && peer.uid == geteuid())
    return channel->socket;
  close_fd(&channel->socket);
  return -1;
}

int memory_connect(Endpoint* e, Channel* channel, int* error) {
  std::string folder;
  sockaddr_un a;
  *error = ALErrorRefused;
  if (!key_folder(&folder, false) || !fill_path(folder + "/" + e->name + ".sock", &a)) return -1;
  *error = read_key_file("shm-" + e->name, &e->key);
  if (*error != ALErrorNone) return -1;
  *error = ALErrorRefused;
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return -1;
  if (connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0) return channel->socket = fd;
  close(fd);
  return -1;
}

// ---- within the process ----

// Names of listeners, and the socket that takes a connector's half of the channel to each.
std::mutex names_mutex;
std::map<std::string, int>& names() {
  static std::map<std::string, int> table;
  return table;
}

// What is handed to the listener, through a socket so that its wait is the same as for the other devices.
struct Half {
  int socket;
  RingDescriptors rings;
};

int process_open(Endpoint* e) {
  if (!is_plain_name(e->name)) return ALErrorArguments;
  if (!e->listen) return ALErrorNone;
  const std::lock_guard<std::mutex> lock(names_mutex);
  if (names().count(e->name)) return ALErrorNameInUse;
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) return ALErrorSystem;
  names()[e->name] = ends[1];
  e->listeners.push_back(ends[0]);
  return ALErrorNone;
}

int process_accept(Endpoint*, int listener, Channel* channel) {
  Half half;
  if (recv(listener, &half, sizeof half, MSG_DONTWAIT) != static_cast<ssize_t>(sizeof half)) return -1;
  channel->socket = half.socket;
  if (!attach_rings(channel, &half.rings, true)) close_fd(&channel->socket);
  return channel->socket;
}

// Copies of the descriptors, since each half closes its own.
bool copy_descriptors(const RingDescriptors& from, RingDescriptors* to) {
  to->memory = fcntl(from.memory, F_DUPFD_CLOEXEC, 0);
  to->listener_event = fcntl(from.listener_event, F_DUPFD_CLOEXEC, 0);
  to->connector_event = fcntl(from.connector_event, F_DUPFD_CLOEXEC, 0);
  if (to->memory >= 0 && to->listener_event >= 0 && to->connector_event >= 0) return true;
  close_ring_descriptors(to);
  return false;
}

bool hand_over(const std::string& name, const Half& half) {
  const std::lock_guard<std::mutex> lock(names_mutex);
  const auto found = names().find(name);
  if (found == names().end()) return false;
  return send(found->second, &half, sizeof half, MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(sizeof half);
}

int process_connect(Endpoint* e, Channel* channel, int* error) {
  int ends[2];
  RingDescriptors ours;
  Half theirs{-1, {}};
  *error = ALErrorSystem;
  if (!make_ring_descriptors(&ours)) return -1;
  if (!copy_descriptors(ours, &theirs.rings) ||
      socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) {
    close_ring_descriptors(&ours);
    close_ring_descriptors(&theirs.rings);
    return -1;
  }
  channel->socket = ends[0];
  theirs.socket = ends[1];
  const bool attached = attach_rings(channel, &ours, false);
  if (attached && hand_over(e->name, theirs)) return channel->socket;
  *error = attached ? ALErrorRefused : ALErrorSystem;
  close(ends[1]);
  close_ring_descriptors(&theirs.rings);
  detach_rings(channel);
  close_fd(&channel->socket);
  return -1;
}

void forget_name(const Endpoint* e) {
  if (e->listeners.empty()) return;
  const std::lock_guard<std::mutex> lock(names_mutex);
  const auto found = names().find(e->name);
  if (found == names().end()) return;
  close(found->second);
  names().erase(found);
}

// Connectors that nobody has taken up see the end of their links.
void drop_waiting(Endpoint* e) {
  for (const int listener : e->listeners) {
    Channel channel;
    while (process_accept(e, listener, &channel) >= 0) close_channel(&channel);
  }
}

}  // namespace

const Device kTcpDevice = {"TCP", true, tcp_open, accept_socket, tcp_connect, socket_send, socket_receive, socket_wait};
const Device kSharedMemoryDevice = {"SharedMemory", true,      memory_open,  memory_accept,
                                    memory_connect, ring_send, ring_receive, ring_wait};
const Device kIntraProcessDevice = {"IntraProcess",  false,     process_open, process_accept,
                                    process_connect, ring_send, ring_receive, ring_wait};

const Device* find_device(const std::string& name) {
  for (const Device* d : {&kTcpDevice, &kSharedMemoryDevice, &kIntraProcessDevice})
    if (name == d->name) return d;
  return nullptr;
}

bool is_plain_name(const std::string& name) {
  if (name.empty() || name.size() > 64) return false;
  return std::all_of(name.begin(), name.end(),
                     [](unsigned char c) { return c == '-' || (c < 128 && std::isalnum(c)); });
}

void wake_channel(Channel* channel) {
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t n = write(channel->wake, &one, sizeof one);
}

void drain_wake(Channel* channel) {
  uint64_t count;
  [[maybe_unused]] const ssize_t n = read(channel->wake, &count, sizeof count);
}

void close_channel(Channel* channel) {
  detach_rings(channel);
  close_fd(&channel->socket);
  close_fd(&channel->wake);
}

void close_listeners(Endpoint* endpoint) {
  if (endpoint->device == &kIntraProcessDevice) {
    forget_name(endpoint);
    drop_waiting(endpoint);
  }
  for (int fd : endpoint->listeners) close_fd(&fd);
  endpoint->listeners.clear();
  if (!endpoint->socket_path.empty()) unlink(endpoint->socket_path.c_str());
  endpoint->socket_path.clear();
}

void close_endpoint(Endpoint* endpoint) {
  close_listeners(endpoint);
  remove_key_file(&endpoint->key);
}

void lock_names() { names_mutex.lock(); }
void unlock_names() { names_mutex.unlock(); }

void abandon_endpoint(Endpoint* endpoint) {
  if (endpoint->device == &kIntraProcessDevice) forget_name(endpoint);
  for (int fd : endpoint->listeners) close_fd(&fd);
  endpoint->listeners.clear();
  endpoint->socket_path.clear();
  close_fd(&endpoint->key.lock);
}

}  // namespace algelink
