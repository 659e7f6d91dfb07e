// SPDX-License-Identifier: MIT
#include "platform/shell/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

std::FILE* OpenRegularFile(const char* path) {
    // Opening a device can itself have an effect, so it is asked first what the path names; and again
    // afterwards, when it can no longer change. Opening a pipe without O_NONBLOCK would wait for a writer.
    struct stat info = {};
    if (stat(path, &info) != 0 || !S_ISREG(info.st_mode)) return nullptr;
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    if (fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode)) {
        if (std::FILE* file = fdopen(descriptor, "rb")) return file;
    }
    close(descriptor);
    return nullptr;
}
