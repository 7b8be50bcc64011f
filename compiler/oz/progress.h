// Signs of life for long runs: whole lines on standard error, only when that is a terminal.
#pragma once

namespace oz {

// Starts the clock of a run.
void BeginProgress();

// A pass has ended; tells so once the run has taken more than two seconds.
void ProgressPass(const char* pass);

}  // namespace oz
