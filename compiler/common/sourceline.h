// The lines of a source file, for quoting them in messages.
#pragma once

#include <string>

namespace oz {

// Appends line number `line` (from 1) of a regular file to *text, with its own line end. False, with nothing appended,
// when the file cannot be read or ends before. A line of more than 9,999 characters counts as several: every piece of
// 9,999 is one line. A byte 0 ends what is appended.
bool append_source_line(const char* file_name, unsigned line, std::string* text);

}  // namespace oz
