// SPDX-License-Identifier: MIT
#include "tools/export/ffmpeg.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

#include "tools/tool_error.h"

namespace tools {
namespace {

constexpr int kFirstInput = 3;
constexpr int kAboveInputs = 16;     // where ends of pipes wait for their number in the child
constexpr int kPipeBytes = 1 << 18;  // a picture
constexpr int kCheckEveryMs = 100;
constexpr std::size_t kMostComplaint = 2000;

// Both ends closed in every other child, and not among the numbers that the child's descriptors get.
std::array<int, 2> Pipe() {
    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw ToolError(std::string("no pipe: ") + std::strerror(errno));
    for (int& end : ends) {
        const int moved = fcntl(end, F_DUPFD_CLOEXEC, kAboveInputs);
        close(end);
        end = moved;
    }
    return ends;
}

// A write to a pipe that nobody reads any more returns an error here, whatever the process makes of the
// signal.
class WithoutPipeSignal {
public:
    WithoutPipeSignal() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        was_pending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~WithoutPipeSignal() {
        constexpr timespec kNow{};
        if (!was_pending_) sigtimedwait(&pipe_, nullptr, &kNow);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    WithoutPipeSignal(const WithoutPipeSignal&) = delete;
    WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;

private:
    sigset_t pipe_;
    sigset_t before_;
    bool was_pending_;
};

void CloseEnd(int& descriptor) {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
}

}  // namespace

const char* const Ffmpeg::kMissing =
    "the program ffmpeg is not installed, and films are written with it (Debian: apt install ffmpeg)";

std::string Ffmpeg::InputName(std::size_t input) {
    return "pipe:" + std::to_string(kFirstInput + static_cast<int>(input));
}

Ffmpeg::Ffmpeg(const std::vector<std::string>& arguments, std::size_t inputs, int output) {
    std::vector<int> child_ends;
    for (std::size_t i = 0; i < inputs; ++i) {
        const auto [reading, writing] = Pipe();
        child_ends.push_back(reading);
        inputs_.push_back({writing, {}, nullptr});
        fcntl(writing, F_SETFL, O_NONBLOCK);
        fcntl(writing, F_SETPIPE_SZ, kPipeBytes);  // where the system grants it
    }
    const auto [reading, writing] = Pipe();
    complaints_ = reading;
    fcntl(reading, F_SETFL, O_NONBLOCK);
    child_ends.push_back(writing);
    Spawn(arguments, child_ends, output, writing);
}

// Closes the child's ends here, whatever comes of it.
void Ffmpeg::Spawn(const std::vector<std::string>& arguments, const std::vector<int>& child_ends, int output,
                   int complaints) {
    std::vector<std::string> words = {"ffmpeg", "-hide_banner", "-nostdin", "-loglevel", "error", "-y"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (output < 0) {
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    } else if (output != STDOUT_FILENO) {
        posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    }
    posix_spawn_file_actions_adddup2(&files, complaints, STDERR_FILENO);
    for (std::size_t i = 0; i < inputs_.size(); ++i)
        posix_spawn_file_actions_adddup2(&files, child_ends[i], kFirstInput + static_cast<int>(i));

    // A Ctrl+C is for the caller, who then ends the child.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    const int error = posix_spawnp(&child_, argv[0], &files, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    for (const int end : child_ends) close(end);
    if (error == 0) return;
    child_ = -1;
    CloseInputs();
    CloseEnd(complaints_);
    throw ToolError(error == ENOENT ? kMissing
                                    : std::string("ffmpeg cannot be started: ") + std::strerror(error));
}

Ffmpeg::Ffmpeg(Ffmpeg&& other) noexcept
    : inputs_(std::move(other.inputs_)),
      complaints_(std::exchange(other.complaints_, -1)),
      output_(std::exchange(other.output_, -1)),
      complaint_(std::move(other.complaint_)),
      child_(std::exchange(other.child_, -1)) {
    other.inputs_.clear();
}

Ffmpeg::~Ffmpeg() {
    CloseInputs();
    CloseEnd(output_);
    if (child_ > 0) {
        kill(child_, SIGKILL);
        while (waitpid(child_, nullptr, 0) < 0 && errno == EINTR) continue;
    }
    CloseEnd(complaints_);
}

void Ffmpeg::CloseInputs() {
    for (Input& input : inputs_) CloseEnd(input.descriptor);
}

// False at the source's end, which closes the input.
bool Ffmpeg::Refill(Input& input) {
    if (input.descriptor < 0) return false;
    if (input.bytes.empty()) input.bytes = input.source->Next();
    if (!input.bytes.empty()) return true;
    CloseEnd(input.descriptor);
    return false;
}

void Ffmpeg::Write(Input& input) {
    const ssize_t count = write(input.descriptor, input.bytes.data(), input.bytes.size());
    if (count >= 0) {
        input.bytes = input.bytes.subspan(static_cast<std::size_t>(count));
    } else if (errno != EAGAIN && errno != EINTR) {
        CloseEnd(input.descriptor);  // the child has ended, or wants no more; its exit status says which
    }
}

void Ffmpeg::ReadComplaints() {
    std::array<char, 512> text;
    ssize_t count = 0;
    while ((count = read(complaints_, text.data(), text.size())) > 0) {
        complaint_.append(text.data(), static_cast<std::size_t>(count));
        if (complaint_.size() > kMostComplaint) complaint_.erase(0, complaint_.size() - kMostComplaint);
    }
    if (count == 0) CloseEnd(complaints_);
}

// The child reads whichever of its inputs it needs next, and stops reading the other meanwhile: both are
// offered all the time.
void Ffmpeg::Feed(std::span<ByteSource* const> sources, const std::function<void()>& check,
                  const std::string& what) {
    const WithoutPipeSignal without_signal;
    for (std::size_t i = 0; i < inputs_.size(); ++i) inputs_[i].source = sources[i];
    std::vector<pollfd> waits(inputs_.size() + 1);
    while (complaints_ >= 0) {
        check();
        for (std::size_t i = 0; i < inputs_.size(); ++i) {
            const bool more = Refill(inputs_[i]);
            waits[i] = {more ? inputs_[i].descriptor : -1, POLLOUT, 0};
        }
        waits.back() = {complaints_, POLLIN, 0};
        if (poll(waits.data(), waits.size(), kCheckEveryMs) <= 0) continue;
        for (std::size_t i = 0; i < inputs_.size(); ++i) {
            if (waits[i].revents != 0) Write(inputs_[i]);
        }
        if (waits.back().revents != 0) ReadComplaints();
    }
    const int status = Wait(what);
    // Some errors while writing, a full disk among them, leave its exit status at 0.
    if (status != 0 || !complaint_.empty())
        throw ToolError(what + ": cannot be written: " + LastComplaint(status));
}

Ffmpeg Ffmpeg::Reading(const std::vector<std::string>& arguments) {
    int reading = -1;
    int writing = -1;
    try {
        const auto ends = Pipe();
        reading = ends[0];
        writing = ends[1];
        Ffmpeg ffmpeg(arguments, 0, writing);
        close(writing);
        ffmpeg.output_ = reading;
        return ffmpeg;
    } catch (...) {
        CloseEnd(reading);
        CloseEnd(writing);
        throw;
    }
}

std::size_t Ffmpeg::Read(std::span<uint8_t> bytes, const std::function<void()>& check,
                         const std::string& what) {
    std::size_t filled = 0;
    while (output_ >= 0 && filled < bytes.size()) {
        check();
        pollfd waits[] = {{output_, POLLIN, 0}, {complaints_, POLLIN, 0}};
        if (poll(waits, std::size(waits), kCheckEveryMs) <= 0) continue;
        if (waits[1].revents != 0) ReadComplaints();
        if (waits[0].revents == 0) continue;
        const ssize_t count = read(output_, bytes.data() + filled, bytes.size() - filled);
        if (count > 0) filled += static_cast<std::size_t>(count);
        if (count == 0) CloseEnd(output_);
    }
    if (output_ < 0 && child_ > 0) {
        // What it says last may still be on its way.
        while (complaints_ >= 0) {
            pollfd wait = {complaints_, POLLIN, 0};
            if (poll(&wait, 1, -1) > 0) ReadComplaints();
        }
        const int status = Wait(what);
        // Without the stream that was asked for there is nothing to read, which is no error.
        if (status != 0 && complaint_.find("does not contain any stream") == std::string::npos)
            throw ToolError(what + ": cannot be read: " + LastComplaint(status));
    }
    return filled;
}

// The child has closed its standard error, as it does when it ends.
int Ffmpeg::Wait(const std::string& what) {
    int status = 0;
    while (waitpid(child_, &status, 0) < 0 && errno == EINTR) continue;
    child_ = -1;
    if (WIFSIGNALED(status))
        throw ToolError(what + ": ffmpeg was ended by signal " + std::to_string(WTERMSIG(status)));
    return WEXITSTATUS(status);
}

std::string Ffmpeg::LastComplaint(int status) const {
    const auto end = complaint_.find_last_not_of('\n');
    if (end == std::string::npos) return "ffmpeg: exit status " + std::to_string(status);
    const auto begin = complaint_.rfind('\n', end) + 1;
    return "ffmpeg: " + complaint_.substr(begin, end + 1 - begin);
}

}  // namespace tools
