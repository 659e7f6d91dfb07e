// SPDX-License-Identifier: MIT
// Linked into a program, this takes the place of operator new, to count what is allocated and to refuse it.
#pragma once

namespace allocation_probe {

// Not so under the thread sanitizer: nothing is counted or refused there.
bool Counts();

// Allocations so far: by this thread, and by all others.
long OnThisThread();
long OnOtherThreads();

// From now on this thread is given so many allocations and no more; -1: all that it asks for.
void GiveOnly(long count);

}  // namespace allocation_probe
