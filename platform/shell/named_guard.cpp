// SPDX-License-Identifier: MIT
#include "platform/shell/named_guard.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using Clock = std::chrono::steady_clock;

// A whole packet: anything else that connects is no request.
constexpr std::string_view close_request = "close";
// How often a waiting newcomer looks whether a still newer one has come.
constexpr std::chrono::milliseconds glance{10};
// A holder of the lock gives way within a glance or the patience. One that is stopped with the lock held is
// not waited for longer than this.
constexpr std::chrono::milliseconds lock_patience{8000};
// A newcomer asks as soon as it is connected. Of more than so many connections the oldest is closed, so that
// programs that connect and say nothing do not use up the descriptors.
constexpr std::size_t most_waiting = 64;

std::string FileName(std::string_view name, std::string_view display) {
    std::string readable;
    for (const char c : name.substr(0, 40)) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        readable += plain ? c : '-';
    }
    // FNV-1a (Fowler, Noll, Vo) tells apart what the readable part does not.
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const std::string_view text : {name, std::string_view("\0", 1), display}) {
        for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
    std::array<char, 20> digits{};
    std::snprintf(digits.data(), digits.size(), "-%016llx", static_cast<unsigned long long>(hash));
    return readable + digits.data();
}

// A folder that no other user can enter, or -1.
int OpenPrivateFolder(const char* path, int flags) {
    const int folder = open(path, O_PATH | O_DIRECTORY | O_CLOEXEC | flags);
    struct stat status {};
    if (folder >= 0 && fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
        (status.st_mode & (S_IRWXG | S_IRWXO)) == 0) {
        return folder;
    }
    if (folder >= 0) close(folder);
    return -1;
}

int OpenRuntimeFolder() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    const int folder = runtime != nullptr && runtime[0] == '/' ? OpenPrivateFolder(runtime, 0) : -1;
    if (folder >= 0) return folder;
    const std::string fallback = "/tmp/runtime-" + std::to_string(geteuid());
    mkdir(fallback.c_str(), S_IRWXU);
    return OpenPrivateFolder(fallback.c_str(), O_NOFOLLOW);
}

// Through the open folder, so that a long path still fits into an address.
bool FillAddress(sockaddr_un& address, int folder, const std::string& name) {
    const std::string path = "/proc/self/fd/" + std::to_string(folder) + "/" + name;
    address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

const sockaddr* Generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

bool IsSameUser(int socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

void CloseAndForget(int& descriptor) {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
}

bool Watch(int watch, int descriptor) {
    epoll_event event{EPOLLIN, {.fd = descriptor}};
    return epoll_ctl(watch, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

}  // namespace

std::string DisplayName() {
    if (const char* wayland = std::getenv("WAYLAND_DISPLAY"); wayland != nullptr && *wayland != '\0') {
        return wayland;
    }
    const char* x11 = std::getenv("DISPLAY");
    std::string name = x11 == nullptr ? "" : x11;
    const std::size_t colon = name.rfind(':');
    const std::size_t dot = colon == std::string::npos ? colon : name.find('.', colon);
    return name.substr(0, dot);
}

NamedGuard::NamedGuard(std::string_view name, std::string_view display)
    : m_strLock(FileName(name, display) + ".lock"), m_strSocket(FileName(name, display) + ".socket") {}

NamedGuard::~NamedGuard() {
    // Only with the lock is it certain that the socket's file is still this instance's own. Whoever holds the
    // lock now is taking over, and replaces the file.
    if (m_nListen >= 0 && flock(m_nLock, LOCK_EX | LOCK_NB) == 0 && !IsSuperseded()) {
        unlinkat(m_nFolder, m_strSocket.c_str(), 0);
    }
    CloseSockets();
    if (m_pCounter != nullptr) munmap(m_pCounter, sizeof m_nNumber);
    CloseAndForget(m_nLock);
    CloseAndForget(m_nFolder);
}

NamedGuard::Result NamedGuard::Acquire() {
    m_nFolder = OpenRuntimeFolder();
    if (m_nFolder < 0 || !OpenLockFile()) return Result::Unguarded;
    Result result = Lock() ? AskOlderToClose() : Result::Superseded;
    if ((result == Result::First || result == Result::TookOver) && !Listen()) {
        result = IsSuperseded() ? Result::Superseded : Result::Unguarded;
    }
    if (m_bLocked) flock(m_nLock, LOCK_UN);
    m_bLocked = false;
    return result;
}

// Opens the lock file and draws this instance's number from it.
bool NamedGuard::OpenLockFile() {
    using Counter = std::atomic_ref<unsigned long long>;
    static_assert(Counter::is_always_lock_free);
    m_nLock =
        openat(m_nFolder, m_strLock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    // The sticky bit keeps files in the runtime folder from being cleared away as unused.
    if (m_nLock < 0 || fchmod(m_nLock, S_IRUSR | S_IWUSR | S_ISVTX) != 0) return false;
    // The same size for everyone, so nobody loses what he has mapped.
    if (ftruncate(m_nLock, sizeof m_nNumber) != 0) return false;
    void* mapped = mmap(nullptr, sizeof m_nNumber, PROT_READ | PROT_WRITE, MAP_SHARED, m_nLock, 0);
    if (mapped == MAP_FAILED) return false;
    m_pCounter = mapped;
    m_nNumber = Counter(*static_cast<unsigned long long*>(m_pCounter)).fetch_add(1) + 1;
    return true;
}

bool NamedGuard::IsSuperseded() const {
    return std::atomic_ref(*static_cast<unsigned long long*>(m_pCounter)).load() != m_nNumber;
}

// False when a newer instance has come. Everyone who waits looks at the number again and again, so the newest
// waits only until the holder has done the same.
bool NamedGuard::Lock() {
    const auto deadline = Clock::now() + lock_patience;
    while (!IsSuperseded()) {
        m_bLocked = flock(m_nLock, LOCK_EX | LOCK_NB) == 0;
        if (m_bLocked || Clock::now() >= deadline) return !IsSuperseded();
        poll(nullptr, 0, static_cast<int>(glance.count()));
    }
    return false;
}

NamedGuard::Result NamedGuard::AskOlderToClose() {
    sockaddr_un address{};
    if (!FillAddress(address, m_nFolder, m_strSocket)) return Result::Unguarded;
    const int older = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (older < 0) return Result::Unguarded;
    const auto deadline = Clock::now() + patience;
    Result result = Result::First;
    bool asked = false;
    while (Clock::now() < deadline && !IsSuperseded()) {
        if (!asked) {
            const int status = connect(older, Generic(address), sizeof address);
            // Refused: the socket's file outlived its instance. A full queue is that of an instance that is
            // stuck, and may come round.
            if ((status != 0 && errno != EAGAIN) || (status == 0 && !IsSameUser(older))) break;
            result = Result::TookOver;
            asked = status == 0;
            if (asked && send(older, close_request.data(), close_request.size(), MSG_NOSIGNAL) < 0) break;
        }
        // The older instance answers nothing: the end of the connection tells that it has gone.
        pollfd end{older, POLLIN, 0};
        if (poll(&end, asked ? 1 : 0, static_cast<int>(glance.count())) > 0) break;
    }
    close(older);
    // Looked at last of all: whoever was held up until others no longer waited for the lock must not take
    // the name from a newer one.
    return IsSuperseded() ? Result::Superseded : result;
}

// The socket listens before it gets its name, so a newcomer never meets a name that nobody answers to yet.
bool NamedGuard::Listen() {
    const std::string unnamed = m_strSocket + ".new";
    sockaddr_un address{};
    if (!FillAddress(address, m_nFolder, unnamed)) return false;
    unlinkat(m_nFolder, unnamed.c_str(), 0);
    m_nListen = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    m_nWatch = epoll_create1(EPOLL_CLOEXEC);
    if (m_nListen >= 0 && m_nWatch >= 0 && bind(m_nListen, Generic(address), sizeof address) == 0 &&
        fchmodat(m_nFolder, unnamed.c_str(), S_IRUSR | S_IWUSR | S_ISVTX, 0) == 0 &&
        listen(m_nListen, 16) == 0 && Watch(m_nWatch, m_nListen) &&
        renameat(m_nFolder, unnamed.c_str(), m_nFolder, m_strSocket.c_str()) == 0) {
        return true;
    }
    unlinkat(m_nFolder, unnamed.c_str(), 0);
    CloseSockets();
    return false;
}

bool NamedGuard::TakeCloseRequest() {
    bool asked = false;
    epoll_event event{};
    while (m_nWatch >= 0 && epoll_wait(m_nWatch, &event, 1, 0) > 0) {
        if (event.data.fd != m_nListen) {
            asked |= ReadRequest(event.data.fd);
        } else if (!TakeNewcomer()) {
            break;
        }
    }
    return asked;
}

bool NamedGuard::TakeNewcomer() {
    const int newcomer = accept4(m_nListen, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (newcomer < 0) return false;
    if (!IsSameUser(newcomer) || !Watch(m_nWatch, newcomer)) {
        close(newcomer);
        return true;
    }
    if (m_waiting.size() == most_waiting) {
        close(m_waiting.front());
        m_waiting.erase(m_waiting.begin());
    }
    m_waiting.push_back(newcomer);
    return true;
}

// A newcomer that has asked is watched no longer, but its connection stays: it waits for the end of it.
bool NamedGuard::ReadRequest(int newcomer) {
    std::array<char, close_request.size() + 1> packet{};
    const ssize_t size = recv(newcomer, packet.data(), packet.size(), 0);
    epoll_ctl(m_nWatch, EPOLL_CTL_DEL, newcomer, nullptr);
    if (size > 0 && close_request == std::string_view(packet.data(), static_cast<std::size_t>(size)))
        return true;
    close(newcomer);
    std::erase(m_waiting, newcomer);
    return false;
}

void NamedGuard::CloseSockets() {
    CloseAndForget(m_nListen);
    CloseAndForget(m_nWatch);
    for (int& newcomer : m_waiting) CloseAndForget(newcomer);
    m_waiting.clear();
}
