// SPDX-License-Identifier: MIT
// The desktop's sound system.
#pragma once

// Makes the desktop's sound server what the waveOut and mixer functions use. main() calls it early: it
// returns at once and the connection is made on a thread of its own, so that opening an output later costs
// next to nothing. Without a server nothing happens here; waveOutOpen tries again and says so.
void UseSystemSound();
