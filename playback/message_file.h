#pragma once

#include <cstdio>

// Opens a message for reading; the caller closes it. Null when the path names nothing, or anything but a
// regular file: a pipe or a device could keep its reader waiting for ever, and with it the window.
std::FILE* OpenMessageFile(const char* path);
