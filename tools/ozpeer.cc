// A peer for compile servers and link programs, driven by lines on standard input.
//
//   ozpeer connect 1742 << END
//   OpenFileInternal "out" "C++" False
//   GenerateFunctionInternal "Hold[Tank`flow]" 0
//   CloseFileInternal
//   END
//
// It learns the commands from the definitions that the program announces, calls them by name with the arguments in the
// host's order, and prints one line for each thing that happens. docs/link.md lists the lines.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "algelink.h"
#include "expr.h"
#include "pattern.h"
#include "session.h"

namespace {

using oz::Expr;
using Clock = std::chrono::steady_clock;

enum Status { kGood = 0, kFailed = 1, kLost = 2, kRefused = 3, kUsage = 64 };

struct Command {
  int number = 0;
  std::vector<std::string> names;  // of the arguments, in the host's order
  std::vector<std::string> types;
  std::vector<size_t> order;  // for each argument on the wire, its place in the host's order
};

struct Settings {
  std::string device = "TCP";
  std::string mode;  // connect, shm, run
  std::string name;
  std::string host;
  std::vector<char*> program;
  double timeout = 30;
  bool trace = false;
};

Settings settings;
ALEnvironment env = nullptr;
ALMessageHandlerObject handler = nullptr;
ALINK peer = nullptr;
bool ended = false;
pid_t child = 0;
bool child_reported = false;
int child_status = 0;
std::map<std::string, Command> commands;
std::map<std::string, Expr> replies;  // what evaluations of a function are answered with
std::string last_answer;              // or what the last packet held
Clock::time_point deadline;
std::atomic<int> messages[8];

void say(const std::string& line) {
  std::fputs((line + "\n").c_str(), stdout);
  std::fflush(stdout);
}

void trace(char direction, const std::string& token) { say(std::string(1, direction) + " " + token); }
oz::Tracer tracer() { return settings.trace ? trace : nullptr; }

[[noreturn]] void leave(int status) {
  ALEnd(env);
  if (child && !child_reported) kill(child, SIGTERM);
  std::exit(status);
}

[[noreturn]] void usage() {
  std::fputs(
      "usage: ozpeer [--trace] [--timeout SECONDS] connect PORT [--host HOST]\n"
      "       ozpeer [--trace] [--timeout SECONDS] shm NAME\n"
      "       ozpeer [--trace] [--timeout SECONDS] [--shm] run -- PROGRAM [ARGUMENT...]\n",
      stderr);
  std::exit(kUsage);
}

void wrong_line(const std::string& why) {
  std::fprintf(stderr, "ozpeer: %s\n", why.c_str());
  leave(kUsage);
}

// ---- waits

void start_time() { deadline = Clock::now() + std::chrono::milliseconds(static_cast<long>(settings.timeout * 1000)); }

// Notes that the started program has ended.
bool child_has_ended() {
  if (!child || child_reported) return child_reported;
  int status;
  if (waitpid(child, &status, WNOHANG) != child) return false;
  child_reported = true;
  child_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return true;
}

// Ends a wait at the deadline, and one for a program that has ended before it connected.
int end_wait(ALINK link) { return Clock::now() >= deadline || (!link->connected && child_has_ended()) ? 1 : 0; }

void count_message(ALINK, int message, int) {
  if (message > 0 && message < 8) messages[message]++;
}

void report_messages() {
  for (int m = 1; m < 8; m++)
    for (int n = messages[m].exchange(0); n > 0; n--) say("message " + std::to_string(m));
}

// The link has ended; tells so once.
void report_end() {
  report_messages();
  if (ended) return;
  ended = true;
  say(ALError(peer) == ALErrorClosed ? "end closed" : "end lost");
}

[[noreturn]] void lost() {
  report_end();
  leave(kLost);
}

// ---- the definitions

// From "Open[file_String, lang_String]" and "{ lang, file }".
bool learn(const std::string& pattern, const std::string& arguments, int number) {
  oz::Pattern p;
  std::vector<std::string> on_wire;
  if (!oz::parse_pattern(pattern, &p) || !oz::parse_name_list(arguments, &on_wire)) return false;
  Command c;
  c.number = number;
  for (const std::string& name : on_wire) {
    const size_t place = static_cast<size_t>(std::find(p.names.begin(), p.names.end(), name) - p.names.begin());
    if (place == p.names.size()) return false;
    c.order.push_back(place);
  }
  c.names = p.names;
  c.types = p.types;
  commands[p.name] = c;
  say("define " + std::to_string(number) + " " + p.name + " " + arguments);
  return true;
}

void read_definitions() {
  start_time();
  for (Expr e; oz::get_expr(peer, &e, tracer());) {
    if (e.type == ALSymbolToken && e.text == "End") return;
    const bool definition = e.parts.size() == 4 && e.parts[0].text == "DefineExternal" &&
                            learn(e.parts[1].text, e.parts[2].text, std::atoi(e.parts[3].text.c_str()));
    // A string is for a host to evaluate.
    if (!definition && e.type != ALStringToken) say("evaluate " + oz::expr_text(e));
  }
  lost();
}

// ---- connecting

ALINK open_peer(bool listen) {
  const std::string text = "-linkmode " + std::string(listen ? "listen" : "connect") + " -linkprotocol " +
                           settings.device + " -linkname " + settings.name +
                           (settings.host.empty() ? "" : " -linkhost " + settings.host);
  int error = ALErrorNone;
  ALINK link = ALOpenString(env, text.c_str(), &error);
  if (!link) {
    std::fprintf(stderr, "ozpeer: %s\n", ALErrorString(env, error));
    leave(error == ALErrorArguments ? kUsage : kRefused);
  }
  ALSetMessageHandler(link, handler);
  ALSetYieldFunction(link, end_wait);
  return link;
}

void start_program() {
  const std::string name = ALName(peer);
  const char* link_arguments[] = {"-linkmode", "connect",    "-linkprotocol", settings.device.c_str(),
                                  "-linkname", name.c_str(), nullptr};
  std::vector<char*> argv = settings.program;
  for (const char* argument : link_arguments) argv.push_back(const_cast<char*>(argument));
  child = fork();
  if (child != 0) return;
  execvp(argv[0], argv.data());
  std::perror(argv[0]);
  _exit(127);
}

void connect_peer() {
  if (peer) return;
  const bool run = settings.mode == "run";
  peer = open_peer(run);
  if (run) start_program();
  start_time();
  if (!ALConnect(peer)) {
    if (run && child_has_ended()) {
      say("status " + std::to_string(child_status));
      leave(kLost);
    }
    std::fprintf(stderr, "ozpeer: %s\n", ALErrorMessage(peer));
    leave(kRefused);
  }
  read_definitions();
}

// A connection that does its handshake wrong; it has to be refused.
void misbehave(bool wrong_key) {
  ALINK bad = open_peer(false);
  (wrong_key ? bad->mischief.wrong_key : bad->mischief.wrong_version) = true;
  start_time();
  say(ALConnect(bad) ? "connected" : "refused");
  ALClose(bad);
}

// Connections that come, say nothing and go.
void send_strangers(int n) {
  sockaddr_in a = {};
  a.sin_family = AF_INET;
  a.sin_port = htons(static_cast<uint16_t>(std::atoi(settings.name.c_str())));
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  for (int i = 0; i < n; i++) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) wrong_line(std::strerror(errno));
    if (i % 2) send(fd, "hello", 5, MSG_NOSIGNAL);
    close(fd);
  }
}

// ---- packets

void send_packet(const Expr& e) {
  // A link that has ended is noticed by the wait for the answer, which may have come before the end.
  if (oz::put_expr(peer, e, tracer()) && ALEndPacket(peer)) ALFlush(peer);
}

// Skips what belongs to the packet that was read.
void end_packet() {
  while (ALGetType(peer) == ALEndPacketToken) {
    ALNewPacket(peer);
    return;
  }
}

int packet_code(const Expr& e) {
  static const std::map<std::string, int> kCodes = {{"ReturnPacket", ALReturnPacket},
                                                    {"CallPacket", ALCallPacket},
                                                    {"SuspendPacket", ALSuspendPacket},
                                                    {"ResumePacket", ALResumePacket},
                                                    {"EvaluatePacket", ALEvaluatePacket}};
  if (e.type != ALFunctionToken) return 0;
  const auto found = kCodes.find(e.parts[0].text);
  return found == kCodes.end() ? 0 : found->second;
}

// Answers the evaluation of a function that has a reply.
void answer_evaluation(const Expr& e) {
  if (e.type != ALFunctionToken) return;
  const auto found = replies.find(e.parts[0].text);
  if (found != replies.end()) send_packet(oz::make_function("ReturnPacket", {found->second}));
}

// One packet of the program. True for an answer, false for another packet.
bool read_one() {
  start_time();
  Expr e;
  if (!oz::get_expr(peer, &e, tracer())) lost();
  end_packet();
  report_messages();
  const int code = packet_code(e);
  if (code != 0) {
    last_answer.clear();
    for (size_t i = 1; i < e.parts.size(); i++) last_answer += (i > 1 ? " " : "") + oz::expr_text(e.parts[i]);
    say("packet " + std::to_string(code) + (last_answer.empty() ? "" : " ") + last_answer);
    if (code == ALEvaluatePacket && e.parts.size() == 2) answer_evaluation(e.parts[1]);
    return false;
  }
  last_answer = oz::expr_text(e);
  say("answer " + last_answer);
  return true;
}

void wait_for_answer() {
  while (!read_one()) continue;
}

void call_number(int number, std::vector<Expr> arguments) {
  send_packet(
      oz::make_function("CallPacket", {oz::make_integer(number), oz::make_function("List", std::move(arguments))}));
}

// A number without a point is a real one where that is wanted.
Expr as_declared(Expr e, const std::string& type) {
  if (type == "Real" && e.type == ALIntegerToken) e.type = ALRealToken;
  return e;
}

bool call_command(const std::string& name, const std::vector<Expr>& arguments) {
  const auto found = commands.find(name);
  if (found == commands.end()) return false;
  const Command& c = found->second;
  if (arguments.size() != c.names.size()) wrong_line(name + " takes " + std::to_string(c.names.size()) + " arguments");
  std::vector<Expr> on_wire;
  for (const size_t place : c.order) on_wire.push_back(as_declared(arguments[place], c.types[place]));
  call_number(c.number, std::move(on_wire));
  return true;
}

void send_coded_packet(const std::vector<Expr>& words) {
  static const std::map<std::string, const char*> kHeads = {{"3", "ReturnPacket"},
                                                            {"7", "CallPacket"},
                                                            {"17", "SuspendPacket"},
                                                            {"18", "ResumePacket"},
                                                            {"64", "EvaluatePacket"}};
  const auto head = kHeads.find(words.empty() ? "" : words[0].text);
  send_packet(oz::make_function(head == kHeads.end() ? "UnknownPacket" : head->second,
                                std::vector<Expr>(words.begin() + (words.empty() ? 0 : 1), words.end())));
}

// ---- lines

std::vector<Expr> arguments_of(const std::string& rest) {
  std::vector<Expr> all;
  if (!oz::parse_exprs(rest, &all)) wrong_line("this is no list of expressions: " + rest);
  return all;
}

void send_message(const std::string& rest) {
  static const std::map<std::string, int> kMessages = {
      {"terminate", ALTerminateMessage}, {"interrupt", ALInterruptMessage}, {"abort", ALAbortMessage}};
  const auto found = kMessages.find(rest);
  if (found == kMessages.end()) wrong_line("no such message: " + rest);
  ALPutMessage(peer, found->second, 0);
}

std::string bytes_of(const std::string& hex) {
  std::string bytes;
  if (!oz::parse_hex(hex, &bytes)) wrong_line("these are no hexadecimal digits: " + hex);
  return bytes;
}

void send_raw(const std::string& rest) {
  peer->out.bytes += bytes_of(rest);
  ALFlush(peer);
}

void send_frame(const std::string& rest) {
  size_t digits = 0;
  const int type = std::stoi("0" + rest, &digits);
  const std::string payload = bytes_of(digits > rest.size() ? "" : rest.substr(digits - 1));
  std::string frame;
  algelink::append_u32(&frame, static_cast<uint32_t>(payload.size()));
  algelink::append_u32(&frame, static_cast<uint32_t>(type));
  algelink::session_control(peer, frame + payload);
}

void expect(const std::string& wanted) {
  if (wanted == last_answer) return;
  std::fprintf(stderr, "ozpeer: expected %s\nozpeer: but got  %s\n", wanted.c_str(), last_answer.c_str());
  leave(kFailed);
}

// Waits for the end of the link, and of the program that was started; its status.
void wait_for_end() {
  if (!ended) {
    start_time();
    Expr e;
    while (ALError(peer) == ALErrorNone && ALWaitForLinkActivity(peer) == 1 && oz::get_expr(peer, &e, tracer()))
      say("answer " + oz::expr_text(e)), end_packet();
    if (ALError(peer) == ALErrorNone) ALGetType(peer);
    report_end();
  }
  if (!child || child_reported) return;
  start_time();
  while (!child_has_ended() && Clock::now() < deadline) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  if (child_reported) say("status " + std::to_string(child_status));
}

void expect_end(const std::string& status) {
  wait_for_end();
  if (child && !child_reported) leave(kFailed);
  if (status.empty() || std::to_string(child_status) == status) return;
  std::fprintf(stderr, "ozpeer: expected the status %s\n", status.c_str());
  leave(kFailed);
}

void close_peer(bool drop) {
  if (drop) algelink::drop_session(peer);
  ALClose(peer);
  peer = nullptr;
  ended = true;
}

bool is_before_connection(const std::string& word) {
  return word == "badkey" || word == "badversion" || word == "strangers" || word == "sleep";
}

void run_before_connection(const std::string& word, const std::string& rest) {
  if (word == "sleep")
    std::this_thread::sleep_for(std::chrono::milliseconds(static_cast<long>(std::atof(rest.c_str()) * 1000)));
  else if (word == "strangers")
    send_strangers(std::atoi(rest.c_str()));
  else
    misbehave(word == "badkey");
}

// The lines that need the link.
void run_connected(const std::string& word, const std::string& rest) {
  if (word == "expect") return expect(rest);
  if (word == "wait-end") return expect_end(rest);
  if (ended) wrong_line("the link has ended");
  if (word == "answer") return static_cast<void>(read_one());
  if (word == "message") return send_message(rest);
  if (word == "raw") return send_raw(rest);
  if (word == "frame") return send_frame(rest);
  if (word == "close" || word == "drop") return close_peer(word == "drop");
  std::vector<Expr> words = arguments_of(rest);
  if (word == "packet") return send_coded_packet(words);
  if (word == "reply") {
    if (words.size() != 2) wrong_line("reply needs a function and a value");
    replies[words[0].text] = words[1];
    return;
  }
  if (word == "call") {
    if (words.empty()) wrong_line("call needs a number");
    const int number = std::atoi(words[0].text.c_str());
    words.erase(words.begin());
    call_number(number, std::move(words));
    return wait_for_answer();
  }
  if (word == "async") {
    if (words.empty()) wrong_line("async needs a command");
    const std::string name = words[0].text;
    words.erase(words.begin());
    if (!call_command(name, words)) wrong_line("no such command: " + name);
    return;
  }
  if (!call_command(word, words)) wrong_line("no such command: " + word);
  wait_for_answer();
}

void run_line(const std::string& line) {
  const size_t begin = line.find_first_not_of(" \t\r");
  if (begin == std::string::npos || line[begin] == '#') return;
  const size_t end = line.find_last_not_of(" \t\r") + 1;
  const size_t blank = std::min(line.find_first_of(" \t", begin), end);
  const size_t next = std::min(line.find_first_not_of(" \t", blank), end);
  const std::string word = line.substr(begin, blank - begin), rest = line.substr(next, end - next);
  if (is_before_connection(word)) return run_before_connection(word, rest);
  if (!ended) connect_peer();
  run_connected(word, rest);
}

// ---- arguments

bool parse_option(int argc, char** argv, int* i) {
  const std::string word = argv[*i];
  const auto value = [&] { return *i + 1 < argc ? argv[++*i] : (usage(), argv[0]); };
  if (word == "--trace") {
    settings.trace = true;
  } else if (word == "--shm") {
    settings.device = "SharedMemory";
  } else if (word == "--timeout") {
    settings.timeout = std::atof(value());
  } else if (word == "--host") {
    settings.host = value();
  } else {
    return false;
  }
  return true;
}

void parse_arguments(int argc, char** argv) {
  for (int i = 1; i < argc; i++) {
    const std::string word = argv[i];
    if (word == "--") {
      settings.program.assign(argv + i + 1, argv + argc);
      break;
    }
    if (parse_option(argc, argv, &i)) continue;
    if (settings.mode.empty())
      settings.mode = word;
    else if (settings.name.empty())
      settings.name = word;
    else
      usage();
  }
}

void check_arguments() {
  const bool run = settings.mode == "run";
  if (!run && settings.mode != "connect" && settings.mode != "shm") usage();
  if (run ? settings.program.empty() || !settings.name.empty() : settings.name.empty()) usage();
  if (settings.mode == "shm") settings.device = "SharedMemory";
  if (run) settings.name = settings.device == "TCP" ? "0" : "ozpeer-" + std::to_string(getpid());
}

}  // namespace

int main(int argc, char** argv) {
  parse_arguments(argc, argv);
  check_arguments();
  env = ALInitialize(nullptr);
  handler = ALCreateMessageHandler(env, count_message, nullptr);
  for (std::string line; std::getline(std::cin, line);) run_line(line);
  if (!ended && !peer) connect_peer();
  if (peer && !ended) close_peer(false);
  if (child && !child_reported) wait_for_end();
  ALEnd(env);
  return kGood;
}
