// Environments, opening and closing.

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sstream>

#include "session.h"
#include "tokenio.h"

using namespace algelink;

namespace {

constexpr auto kCloseTime = std::chrono::seconds(2);
constexpr int kPortTries = 20;

ALEnvironment newest_environment = nullptr;

struct Arguments {
  std::string mode;
  std::string name;
  std::string protocol = "TCP";
  std::string host;
};

// Takes the arguments that are ours; false for one without its value.
bool parse_arguments(const std::vector<std::string>& words, Arguments* a) {
  for (size_t i = 0; i < words.size(); i++) {
    std::string* to = nullptr;
    if (words[i] == "-linkmode") to = &a->mode;
    if (words[i] == "-linkname") to = &a->name;
    if (words[i] == "-linkprotocol") to = &a->protocol;
    if (words[i] == "-linkhost") to = &a->host;
    if (!to) continue;
    if (++i == words.size()) return false;
    *to = words[i];
  }
  return true;
}

bool set_endpoint(const Arguments& a, Endpoint* e) {
  e->device = find_device(a.protocol);
  e->listen = a.mode == "listen";
  e->name = a.name;
  e->host = a.host;
  return e->device && (e->listen || a.mode == "connect");
}

// Any free port must be free on all addresses; another one is tried when it is not.
int open_endpoint(Endpoint* e) {
  const bool any_port = e->device == &kTcpDevice && e->listen && e->name == "0";
  for (int tries = any_port ? kPortTries : 1;; tries--) {
    const int error = e->device->open(e);
    if (error == ALErrorNone) return error;
    close_endpoint(e);
    if (error != ALErrorNameInUse || tries == 1) return error;
    e->name.assign(1, '0');
  }
}

ALINK open_link(ALEnvironment env, const std::vector<std::string>& words, int* error) {
  int ignored;
  if (!error) error = &ignored;
  Arguments a;
  auto* link = new ALLinkRecord;
  link->env = env;
  *error = parse_arguments(words, &a) && set_endpoint(a, &link->endpoint) ? open_endpoint(&link->endpoint)
                                                                          : ALErrorArguments;
  if (*error == ALErrorNone) {
    link->channel.device = link->endpoint.device;
    register_link(link);
    return link;
  }
  delete link;
  return nullptr;
}

}  // namespace

extern "C" {

ALEnvironment ALInitialize(const char*) {
  auto* env = new (std::nothrow) ALEnvironmentRecord;
  if (env) newest_environment = env;
  return env;
}

void ALEnd(ALEnvironment env) {
  if (!env) return;
  for (ALINK link : links_of(env)) ALClose(link);
  if (newest_environment == env) newest_environment = nullptr;
  delete env;
}

void ALDeinitialize(ALEnvironment env) { ALEnd(env); }

ALINK ALOpen(int argc, const char* const* argv, int* error) {
  return open_link(newest_environment, std::vector<std::string>(argv, argv + argc), error);
}

ALINK ALOpenArgcArgv(ALEnvironment env, char** argv, char** argv_end, int* error) {
  return open_link(env, std::vector<std::string>(argv, argv_end), error);
}

ALINK ALOpenString(ALEnvironment env, const char* commandline, int* error) {
  std::istringstream text(commandline);
  std::vector<std::string> words;
  for (std::string word; text >> word;) words.push_back(word);
  return open_link(env, words, error);
}

const char* ALName(ALINK link) { return link->endpoint.name.c_str(); }

int ALConnect(ALINK link) {
  if (link->connected) return 1;
  if (link->error != ALErrorNone) return 0;
  link->error = link->endpoint.listen ? accept_peer(link) : prove_to_listener(link);
  if (link->error == ALErrorNone) {
    link->channel.wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (link->channel.wake < 0 || !start_session(link)) link->error = ALErrorSystem;
  }
  if (link->error == ALErrorNone) return 1;
  close_channel(&link->channel);
  return 0;
}

void ALClose(ALINK link) {
  if (!link) return;
  const auto until = Clock::now() + kCloseTime;
  if (link->connected) {
    push_output(link, until);
    session_flush(link, until);
    stop_session(link, until);
  }
  forget_link(link);
  close_channel(&link->channel);
  close_endpoint(&link->endpoint);
  for (char* text : link->texts) std::free(text);
  delete link;
}

ALMessageHandlerObject ALCreateMessageHandler(ALEnvironment env, ALMessageHandler handler, void*) {
  if (!env) return nullptr;
  env->handlers.push_back(std::make_unique<ALHandlerRecord>(ALHandlerRecord{handler}));
  return env->handlers.back().get();
}

int ALSetMessageHandler(ALINK link, ALMessageHandlerObject handler) {
  link->handler = handler ? handler->function : nullptr;
  return 1;
}

int ALSetYieldFunction(ALINK link, ALYielder yielder) {
  link->yielder = yielder;
  return 1;
}

int ALError(ALINK link) { return link->error; }

int ALClearError(ALINK link) {
  if (link->error >= ALErrorClosed) return 0;
  link->error = ALErrorNone;
  return 1;
}

const char* ALErrorString(ALEnvironment, int error) {
  switch (error) {
    case ALErrorNone: return "no error";
    case ALErrorType: return "a token of another type is next";
    case ALErrorRange: return "the number is out of range";
    case ALErrorNullByte: return "the string has a null byte";
    case ALErrorNoPacket: return "what comes is no packet";
    case ALErrorSequence: return "the operation does not fit the expression so far";
    case ALErrorClosed: return "the peer has closed the link";
    case ALErrorLost: return "the link is lost";
    case ALErrorStream: return "the bytes of the peer break the protocol";
    case ALErrorLimit: return "a limit is exceeded";
    case ALErrorRefused: return "the connection was refused";
    case ALErrorNameInUse: return "the name of the link is in use";
    case ALErrorArguments: return "the arguments that open a link are missing or wrong";
    case ALErrorSystem: return "the system refused an operation";
    default: return "unknown error";
  }
}

const char* ALErrorMessage(ALINK link) { return ALErrorString(link->env, link->error); }

void ALAlert(ALEnvironment, const char* text) { std::fprintf(stderr, "link: %s\n", text); }

int ALPutMessage(ALINK link, int message, int argument) {
  std::string frame;
  append_frame(&frame, kMessage, {static_cast<uint32_t>(message), static_cast<uint32_t>(argument)});
  return session_control(link, frame) ? 1 : 0;
}

int ALWaitForLinkActivity(ALINK link) {
  push_output(link, Clock::time_point::max());
  return session_wait(link, has_unread(link));
}

int ALFlush(ALINK link) {
  if (link->error != ALErrorNone) return 0;
  const bool sent = push_output(link, Clock::time_point::max()) && session_flush(link, Clock::time_point::max());
  if (!sent) note_death(link);
  return sent ? 1 : 0;
}

}  // extern "C"
