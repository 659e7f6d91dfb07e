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

#include "platform/framework/winuser.h"

namespace {

constexpr UINT started = 33;
constexpr UINT out_of_resources = 0;
constexpr UINT file_not_found = 2;
constexpr UINT access_denied = 5;
constexpr UINT bad_format = 11;

// The time in it, 1 ms after the display's start, is what the program's toolkit tells the window manager as
// the time of the person's wish: earlier than any use of the window that has the keyboard.
constexpr const char* notification_from_long_ago = "DESKTOP_STARTUP_ID=trvplayer_TIME1";

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
[[noreturn]] void Execute(const char* path, char* const* arguments, char* const* environment, int report) {
    for (int number = 1; number < NSIG; ++number) signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    execve(path, arguments, environment);
    const int error = errno;
    // When nobody reads the report any more there is nobody to tell.
    [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
    _exit(127);
}

// The first child ends at once, so that the program is nobody's child to wait for.
pid_t ForkTwice(const char* path, char* const* arguments, char* const* environment, int report) {
    const pid_t child = fork();
    if (child != 0) return child;
    setsid();
    const pid_t grandchild = fork();
    if (grandchild == 0) Execute(path, arguments, environment, report);
    if (grandchild < 0) {
        const int error = errno;
        [[maybe_unused]] const ssize_t written = write(report, &error, sizeof error);
    }
    _exit(0);
}

std::vector<char*> EnvironmentWithout(const std::string& name) {
    std::vector<char*> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (!std::string_view(*variable).starts_with(name + "=")) variables.push_back(*variable);
    }
    return variables;
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

int StartDetached(const std::vector<std::string>& arguments, const std::string& variable) {
    const std::string path = arguments.empty() ? std::string() : FindProgram(arguments.front());
    if (path.empty()) return ENOENT;
    std::vector<char*> words;
    for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    std::vector<char*> variables = EnvironmentWithout(variable.substr(0, variable.find('=')));
    if (!variable.empty()) variables.push_back(const_cast<char*>(variable.c_str()));
    variables.push_back(nullptr);

    // Closed by a successful start, else the error comes through it.
    std::array<int, 2> report{};
    if (pipe2(report.data(), O_CLOEXEC) != 0) return errno;
    const pid_t child = ForkTwice(path.c_str(), words.data(), variables.data(), report[1]);
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

UINT WinExec(LPCTSTR lpCmdLine, UINT uCmdShow) {
    const bool activate = uCmdShow != static_cast<UINT>(SW_SHOWNOACTIVATE);
    switch (StartDetached(SplitCommandLine(lpCmdLine), activate ? "" : notification_from_long_ago)) {
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
