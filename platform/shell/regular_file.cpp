// SPDX-License-Identifier: MIT
#include "platform/shell/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace {

bool IsRegular(int descriptor) {
    struct stat info = {};
    return fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode);
}

}  // namespace

std::FILE* OpenRegularFile(const char* path) {
    // Opening a device can itself have an effect, and a pipe would wait for a writer. So the path is followed
    // once, without opening what it leads to; that, and nothing exchanged for it meanwhile, is then opened.
    const int place = open(path, O_PATH | O_CLOEXEC);
    if (place < 0) return nullptr;
    const std::string itself = "/proc/self/fd/" + std::to_string(place);
    constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    int descriptor = IsRegular(place) ? open(itself.c_str(), kFlags) : -1;
    // Without that file system it is looked at again once it is open.
    if (descriptor < 0 && errno == ENOENT && IsRegular(place)) descriptor = open(path, kFlags);
    close(place);
    if (descriptor < 0) return nullptr;
    if (IsRegular(descriptor)) {
        if (std::FILE* file = fdopen(descriptor, "rb")) return file;
    }
    close(descriptor);
    return nullptr;
}
