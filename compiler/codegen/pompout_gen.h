// What the C++ output layer asks of the commands.
#pragma once

namespace oz {

// Declares the global variables that were remembered; forgets them.
void perform_global_vardecls();
void purge_remembered_vardecls();

}  // namespace oz
