// Ctrl-C as the cancel query of a run.
#pragma once

namespace orv {

// From now on the first Ctrl-C is kept for WasInterrupted, and a second one ends the program at once. A process that
// was started deaf to Ctrl-C stays so. System calls that wait are broken off by it (EINTR).
void CatchInterrupts();

// The user has pressed Ctrl-C since CatchInterrupts.
bool WasInterrupted();

}  // namespace orv
