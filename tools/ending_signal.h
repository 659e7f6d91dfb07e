// SPDX-License-Identifier: MIT
#pragma once

namespace tools {

// Thrown where work stops because a signal asked for the program's end, so that what is half made is removed
// on the way out.
struct Interrupted {};

// From here on SIGINT, SIGTERM and SIGHUP are noted instead of ending the program; reads that wait return
// early.
void CatchEndingSignals();
// Throws Interrupted once one has arrived. Any thread.
void ThrowIfInterrupted();
// Ends the program by the signal that has arrived, as its caller expects.
[[noreturn]] void EndBySignal();

}  // namespace tools
