// The compile server: a finished run goes on in the background and serves the link commands on a TCP port.
#pragma once

#include "algelink.h"

namespace oz {

// Leaves a server behind that holds the kept model, and returns 0 when the connection text stands in the output file.
// The server process does not return.
int do_fork(const char* ofn);

// A listening link on the first free port from *base_port_nr on, which becomes that port; null when there is none. The
// host name is not looked at: the link listens on this machine alone.
ALINK open_algelink(const char* hostname, int* base_port_nr);

// The environment and the message handler of the server; and its whole service on an opened link.
void ALPreOpen(ALEnvironment* ep, ALMessageHandlerObject* handler);
void ALPostOpen(ALEnvironment ep, ALMessageHandlerObject handler, ALINK mlp);

// Tells the host, which waits for an answer, that the program ends with a fatal message.
void abort_trap();

// The way out of fatal messages of an installed program.
[[noreturn]] void last_exit_proc();

}  // namespace oz
