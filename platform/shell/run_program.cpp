#include "platform/shell/run_program.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace {

constexpr UINT started = 33;
constexpr UINT out_of_resources = 0;
constexpr UINT file_not_found = 2;
constexpr UINT access_denied = 5;
constexpr UINT bad_format = 11;

bool IsProgram(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
}

std::vector<std::string> SplitCommandLine(std::string_view line) {
    std::vector<std::string> words;
    bool in_word = false;
    bool quoted = false;
    for (const char c : line) {
        if (c == '"') {
            quoted = !quoted;
            if (!in_word) words.emplace_back();
            in_word = true;
        } else if (!quoted && (c == ' ' || c == '\t')) {
            in_word = false;
        } else {
            if (!in_word) words.emplace_back();
            in_word = true;
            words.back() += c;
        }
    }
    return words;
}

// In the child of a process that may have threads: only async-signal-safe calls.
[[noreturn]] void Execute(const char* path, char* const* arguments, int report) {
    for (int number = 1; number < NSIG; ++number) signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execv(path, arguments);
    const int error = errno;
    // When nobody reads the report any more there is nobody to tell.
    [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
    _exit(127);
}

// The first child ends at once, so that the program is nobody's child to wait for.
pid_t ForkTwice(const char* path, char* const* arguments, int report) {
    const pid_t child = fork();
    if (child != 0) return child;
    setsid();
    const pid_t grandchild = fork();
    if (grandchild == 0) Execute(path, arguments, report);
    if (grandchild < 0) {
        const int error = errno;
        [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
    }
    _exit(0);
}

}  // namespace

std::string FindProgram(std::string_view name) {
    if (name.empty()) return {};
    if (name.find('/') != std::string_view::npos) {
        std::string path(name);
        return IsProgram(path) ? path : std::string();
    }
    const char* path = std::getenv("PATH");
    std::string_view folders = path == nullptr ? "/usr/local/bin:/usr/bin:/bin" : path;
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folders.size(), folder.size() + 1));
        // A relative folder on PATH would run whatever lies in the current one.
        if (folder.empty() || folder.front() != '/') continue;
        const std::string candidate = std::string(folder) + "/" + std::string(name);
        if (IsProgram(candidate)) return candidate;
    }
    return {};
}

int StartDetached(const std::vector<std::string>& arguments) {
    const std::string path = arguments.empty() ? std::string() : FindProgram(arguments.front());
    if (path.empty()) return ENOENT;
    std::vector<char*> words;
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    // Closed by a successful start, else the error comes through it.
    std::array<int, 2> report{};
    if (pipe2(report.data(), O_CLOEXEC) != 0) return errno;
    const pid_t child = ForkTwice(path.c_str(), words.data(), report[1]);
    int error = child < 0 ? errno : 0;
    close(report[1]);
    if (child > 0) {
        while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) continue;
        int failure = 0;
        ssize_t size = 0;
        while ((size = read(report[0], &failure, sizeof failure)) < 0 && errno == EINTR) continue;
        if (size == static_cast<ssize_t>(sizeof failure)) error = failure;
    }
    close(report[0]);
    return error;
}

UINT WinExec(LPCTSTR lpCmdLine, UINT /*uCmdShow*/) {
    switch (StartDetached(SplitCommandLine(lpCmdLine))) {
        case 0:
            return started;
        case ENOENT:
        case ENOTDIR:
            return file_not_found;
        case EACCES:
        case EPERM:
            return access_denied;
        case ENOEXEC:
            return bad_format;
        default:
            return out_of_resources;
    }
}
