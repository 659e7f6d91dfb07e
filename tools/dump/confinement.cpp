// SPDX-License-Identifier: MIT
#include "tools/dump/confinement.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <span>

#ifdef TRV_SECCOMP
#include <linux/sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

#include <memory>
#endif

namespace tools {
namespace {

#ifdef TRV_SECCOMP

// The calls by which the C and C++ libraries do what a reach allows, on every machine: those that one of them
// does not have are passed over.
constexpr int kOpenFiles[] = {
    SCMP_SYS(read),           SCMP_SYS(readv),           SCMP_SYS(pread64),
    SCMP_SYS(write),          SCMP_SYS(writev),          SCMP_SYS(lseek),
    SCMP_SYS(_llseek),        SCMP_SYS(close),           SCMP_SYS(fstat),
    SCMP_SYS(fstat64),        SCMP_SYS(fcntl),           SCMP_SYS(fcntl64),
    SCMP_SYS(fadvise64),      SCMP_SYS(fadvise64_64),    SCMP_SYS(arm_fadvise64_64),
    SCMP_SYS(munmap),         SCMP_SYS(mremap),          SCMP_SYS(brk),
    SCMP_SYS(madvise),        SCMP_SYS(futex),           SCMP_SYS(futex_time64),
    SCMP_SYS(clock_gettime),  SCMP_SYS(clock_gettime64), SCMP_SYS(gettimeofday),
    SCMP_SYS(getrandom),      SCMP_SYS(rt_sigreturn),    SCMP_SYS(sigreturn),
    SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigaction),    SCMP_SYS(restart_syscall),
    SCMP_SYS(getpid),         SCMP_SYS(gettid),          SCMP_SYS(exit),
    SCMP_SYS(exit_group),
};
constexpr int kFilesToRead[] = {
    SCMP_SYS(set_robust_list), SCMP_SYS(rseq),       SCMP_SYS(sched_yield), SCMP_SYS(sched_getaffinity),
    SCMP_SYS(getcwd),          SCMP_SYS(newfstatat), SCMP_SYS(fstatat64),   SCMP_SYS(stat),
    SCMP_SYS(stat64),          SCMP_SYS(lstat),      SCMP_SYS(lstat64),     SCMP_SYS(statx),
    SCMP_SYS(readlink),        SCMP_SYS(readlinkat),
};
constexpr int kFiles[] = {
    SCMP_SYS(open),     SCMP_SYS(openat),    SCMP_SYS(dup),        SCMP_SYS(ftruncate), SCMP_SYS(ftruncate64),
    SCMP_SYS(fchmod),   SCMP_SYS(umask),     SCMP_SYS(mkdir),      SCMP_SYS(mkdirat),   SCMP_SYS(rename),
    SCMP_SYS(renameat), SCMP_SYS(renameat2), SCMP_SYS(unlink),     SCMP_SYS(unlinkat),  SCMP_SYS(rmdir),
    SCMP_SYS(access),   SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(getxattr),  SCMP_SYS(setxattr),
    SCMP_SYS(fsync),
};

struct Release {
    void operator()(void* filter) const { seccomp_release(filter); }
};
using Filter = std::unique_ptr<void, Release>;

bool Allow(const Filter& filter, std::span<const int> calls) {
    for (const int call : calls)
        if (seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0) != 0) return false;
    return true;
}

// Where the bits of one argument that the mask has are as they should be.
bool AllowWhere(const Filter& filter, int call, unsigned argument, scmp_datum_t mask, scmp_datum_t bits) {
    const scmp_arg_cmp where = {argument, SCMP_CMP_MASKED_EQ, mask, bits};
    return seccomp_rule_add_array(filter.get(), SCMP_ACT_ALLOW, call, 1, &where) == 0;
}

bool AllowOpenFiles(const Filter& filter) {
    constexpr scmp_datum_t kAll = ~scmp_datum_t{0};
    return Allow(filter, kOpenFiles) &&
           // Memory whose content cannot be run.
           AllowWhere(filter, SCMP_SYS(mmap), 2, PROT_EXEC, 0) &&
           AllowWhere(filter, SCMP_SYS(mmap2), 2, PROT_EXEC, 0) &&
           AllowWhere(filter, SCMP_SYS(mprotect), 2, PROT_EXEC, 0) &&
           // Whether something open is a terminal, and other facts of it.
           AllowWhere(filter, SCMP_SYS(ioctl), 1, kAll, TCGETS) &&
           AllowWhere(filter, SCMP_SYS(newfstatat), 3, AT_EMPTY_PATH, AT_EMPTY_PATH) &&
           AllowWhere(filter, SCMP_SYS(statx), 2, AT_EMPTY_PATH, AT_EMPTY_PATH) &&
           // Its own end by a signal.
           AllowWhere(filter, SCMP_SYS(tgkill), 0, kAll, static_cast<scmp_datum_t>(getpid()));
}

bool AllowFilesToRead(const Filter& filter) {
    constexpr scmp_datum_t kChanging = O_ACCMODE | O_CREAT | O_TRUNC;
    return Allow(filter, kFilesToRead) && AllowWhere(filter, SCMP_SYS(open), 1, kChanging, O_RDONLY) &&
           AllowWhere(filter, SCMP_SYS(openat), 2, kChanging, O_RDONLY) &&
           // Threads, but no processes. What clone3 is to do cannot be seen; without it the library uses
           // clone.
           AllowWhere(filter, SCMP_SYS(clone), 0, CLONE_THREAD, CLONE_THREAD) &&
           seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0;
}

#endif

void WriteAll(int descriptor, std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return;
        bytes = bytes.subspan(static_cast<std::size_t>(count < 0 ? 0 : count));
    }
}

std::vector<uint8_t> ReadAll(int descriptor) {
    std::vector<uint8_t> bytes;
    std::array<uint8_t, 65536> part;
    for (;;) {
        const ssize_t count = read(descriptor, part.data(), part.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return bytes;
        bytes.insert(bytes.end(), part.begin(), part.begin() + count);
    }
}

}  // namespace

bool Confine([[maybe_unused]] Reach reach) {
#ifdef TRV_SECCOMP
    const Filter filter(seccomp_init(SCMP_ACT_KILL_PROCESS));
    return filter && seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1) == 0 &&
           AllowOpenFiles(filter) && (reach < Reach::FilesToRead || AllowFilesToRead(filter)) &&
           (reach < Reach::Files || Allow(filter, kFiles)) && seccomp_load(filter.get()) == 0;
#else
    return false;
#endif
}

std::optional<std::vector<uint8_t>> MakeConfined(const std::function<std::vector<uint8_t>()>& make) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
    const pid_t maker = fork();
    if (maker == 0) {
        Confine(Reach::OpenFiles);
        try {
            WriteAll(ends[1], make());
        } catch (...) {
            _exit(1);
        }
        _exit(0);
    }
    close(ends[1]);
    const std::vector<uint8_t> made = ReadAll(ends[0]);
    close(ends[0]);
    int status = -1;
    while (maker > 0 && waitpid(maker, &status, 0) < 0 && errno == EINTR) {
    }
    if (maker < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
    return made;
}

}  // namespace tools
