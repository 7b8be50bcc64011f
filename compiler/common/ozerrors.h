// The messages of the passes: printf-style, with the source line and a caret where a place is known.
#pragma once

#include <cstdarg>

#include "Positions.h"

namespace oz {

// The model file whose lines are quoted in messages, or null. Set by the driver; the text stays the driver's.
extern const char* error_message_uses_input_file;

// Fatal: report at no place, at a line and column, at a position; leave through Errors_Exit.
[[noreturn]] void die_msg(const char* fstr, ...) __attribute__((format(printf, 1, 2)));
[[noreturn]] void die_msg_pos(unsigned l, unsigned c, const char* fstr, ...) __attribute__((format(printf, 3, 4)));
[[noreturn]] void die_msg_pos2(tPosition pos, const char* fstr, ...) __attribute__((format(printf, 2, 3)));

// Error: report and return; the run goes on.
void error_msg(const char* fstr, ...) __attribute__((format(printf, 1, 2)));
void error_msg_pos(unsigned l, unsigned c, const char* fstr, ...) __attribute__((format(printf, 3, 4)));
void error_msg_pos2(tPosition pos, const char* fstr, ...) __attribute__((format(printf, 2, 3)));

// Warning: report and return.
void warning_msg(const char* fstr, ...) __attribute__((format(printf, 1, 2)));
void warning_msg_pos2(tPosition pos, const char* fstr, ...) __attribute__((format(printf, 2, 3)));

// Sets the title that goes out, once, ahead of the next message; while it is set all messages are indented by two.
// A null or empty format clears it.
void title_msg(const char* fstr, ...) __attribute__((format(printf, 1, 2)));

// Fatal: "Internal compiler error: file line". Only the last part of the file's path is shown.
[[noreturn]] void internal_error(const char* file, int line);

// Work that is done ahead of its turn must not end the run: the message would come too early. While one of these lives,
// a fatal message of its thread is not reported but thrown; the work is done once more when its turn has come.
struct FatalAhead {};
class FatalsThrow {
 public:
  FatalsThrow();
  ~FatalsThrow();
  FatalsThrow(const FatalsThrow&) = delete;
  FatalsThrow& operator=(const FatalsThrow&) = delete;
};

}  // namespace oz
