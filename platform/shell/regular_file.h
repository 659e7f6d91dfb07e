// SPDX-License-Identifier: MIT
// Opening files whose names come from outside.
#pragma once

#include <cstdio>

// Opens a regular file for reading; the caller closes it. Null when the path names nothing, or anything else:
// a pipe or a device could keep its reader waiting for ever, and with it the window. Any thread.
std::FILE* OpenRegularFile(const char* path);
