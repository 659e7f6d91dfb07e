// SPDX-License-Identifier: MIT
// The C library's heap, as the framework's own library names what can be asked of it.
#pragma once

// Gives the system back what is free in the heap, also between blocks that are in use. Takes up to a
// millisecond, for which other threads wait with what they allocate or free. Any thread. Returns 0.
int _heapmin();
