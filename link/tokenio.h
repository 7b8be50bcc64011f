// Expressions as tokens: what the put and get operations write to and read from the DATA stream of a link.
//
//   List[1, "ab"]   05 02 00 00 00   01 04 00 4C 69 73 74   02 01 00 00 00 00 00 00 00   22 02 00 00 00 61 62
//                   function, 2      symbol List            integer 1                    string
//
// Both directions count the expressions that are still to come, so no state depends on the depth of nesting.
#pragma once

#include "session.h"

namespace algelink {

constexpr size_t kMaxChunk = 65536;
constexpr size_t kMaxSymbol = 1023;
constexpr size_t kMaxDigits = 1'000'000;
constexpr int kMaxArguments = 1 << 20;
constexpr uint64_t kMaxPacket = uint64_t{256} << 20;

// Hands pending output to the session.
bool push_output(ALINK link, Clock::time_point until);
// Takes over the reason for which the session is over as the link's error.
void note_death(ALINK link);
bool has_unread(ALINK link);

bool is_symbol(const char* bytes, size_t n);
bool is_number(const char* bytes, size_t n);

// For reading, shared by the get operations and the packets. A token is begun, its bytes are looked at, and it is
// consumed; a get that fails leaves the token where it is.
bool begin_token(ALINK link, unsigned char* type);
// Makes n bytes from the position on available.
bool need(ALINK link, size_t n);
void consume(ALINK link, int64_t expressions);
int get_failure(ALINK link, int error);
// The stream breaks the rules: the link is over.
int stream_failure(ALINK link, int error);
// Skips one token of any type.
bool skip_token(ALINK link);
// A symbol at the position, which moves behind it; a view into the input.
bool read_symbol(ALINK link, std::string_view* name);

}  // namespace algelink
