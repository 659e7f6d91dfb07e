#include "tests/platform/sound/private_server.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tests/support/run_program.h"
#include "tests/support/test_files.h"

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr int kRate = 8000;

// The folder that everything private lives in, for as long as the process lives.
const fs::path& Private() {
    static const TestFolder folder;
    static const bool made = [] {
        for (const char* name : {"home", "config/pulse", "run"}) fs::create_directories(folder.Path(name));
        fs::permissions(folder.Path("run"), fs::perms::owner_all);
        std::ofstream(folder.Path("config/pulse/client.conf")) << "autospawn = no\n";
        setenv("HOME", folder.Path("home").c_str(), 1);
        setenv("XDG_CONFIG_HOME", folder.Path("config").c_str(), 1);
        setenv("XDG_RUNTIME_DIR", folder.Path("run").c_str(), 1);
        for (const char* name : {"PULSE_SERVER", "PULSE_SINK", "PULSE_SOURCE", "PULSE_COOKIE",
                                 "PULSE_RUNTIME_PATH", "PULSE_STATE_PATH", "PULSE_CLIENTCONFIG", "PULSE_PROP",
                                 "PULSE_LATENCY_MSEC", "DBUS_SESSION_BUS_ADDRESS"})
            unsetenv(name);
        return true;
    }();
    static_cast<void>(made);
    return folder.Path();
}

// Starts a program that dies with this one; `output` is its standard output, or -1 for none.
pid_t Spawn(const std::vector<std::string>& words, int output) {
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t pid = fork();
    if (pid < 0) throw std::runtime_error("cannot fork");
    if (pid != 0) return pid;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (output >= 0) dup2(output, STDOUT_FILENO);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

int End(pid_t pid, int signal) {
    kill(pid, signal);
    int status = 0;
    waitpid(pid, &status, 0);
    return status;
}

bool Answers(const fs::path& address) {
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    if (address.string().size() >= sizeof name.sun_path) throw std::runtime_error("socket path too long");
    std::strcpy(name.sun_path, address.c_str());
    const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool answers = connect(probe, reinterpret_cast<sockaddr*>(&name), sizeof name) == 0;
    close(probe);
    return answers;
}

}  // namespace

void PrivateServer::UsePrivateFolders() {
    Private();
}

void PrivateServer::ForgetVolumes() {
    for (const fs::directory_entry& entry : fs::directory_iterator(Private() / "config/pulse"))
        if (entry.path().extension() != ".conf") fs::remove_all(entry.path());
}

PrivateServer::PrivateServer(Sink sink) {
    const fs::path& folder = Private();
    const fs::path script = folder / "server.pa";
    std::ofstream(script) << "load-module module-native-protocol-unix\n"
                             "load-module module-stream-restore\n"
                             "load-module module-null-sink sink_name=test "
                          << (sink == Sink::kNoRewinds ? "norewinds=1 " : "")
                          << "rate=8000 channels=1 format=s16le\n"
                             "set-default-sink test\n";
    m_pid = Spawn({"pulseaudio", "-n", "-F", script.string(), "--daemonize=no", "--exit-idle-time=-1",
                   "--realtime=no", "--high-priority=no", "--log-level=error",
                   "--log-target=newfile:" + (folder / "server.log").string()},
                  -1);
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!Answers(folder / "run/pulse/native")) {
        if (waitpid(m_pid, nullptr, WNOHANG) == m_pid) {
            m_pid = -1;
            throw std::runtime_error("the sound server ended at once");
        }
        if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("no sound server");
        std::this_thread::sleep_for(5ms);
    }
}

PrivateServer::~PrivateServer() {
    Kill();
}

void PrivateServer::Kill() {
    if (m_pid > 0) End(m_pid, SIGKILL);
    m_pid = -1;
}

void PrivateServer::Freeze() {
    kill(m_pid, SIGSTOP);
}

void PrivateServer::Thaw() {
    kill(m_pid, SIGCONT);
}

std::string Pactl(std::vector<std::string> words) {
    words.insert(words.begin(), "pactl");
    ProgramRun run = RunProgram(words);
    if (run.status != 0) throw std::runtime_error("pactl failed: " + run.err);
    return run.out;
}

MonitorRecording::MonitorRecording() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    m_pid = Spawn({"parec", "-d", "test.monitor", "--raw", "--rate=8000", "--channels=1", "--format=s16le",
                   "--latency-msec=20", "--client-name=recorder"},
                  ends[1]);
    close(ends[1]);
    m_pipe = ends[0];
    pollfd wait{m_pipe, POLLIN, 0};
    if (poll(&wait, 1, 10000) != 1) throw std::runtime_error("the monitor gives nothing");
    m_reader = std::thread([this] { Read(); });
}

MonitorRecording::~MonitorRecording() {
    End(m_pid, SIGTERM);
    m_reader.join();
    close(m_pipe);
}

void MonitorRecording::Read() {
    char buffer[4096];
    ssize_t got;
    while ((got = read(m_pipe, buffer, sizeof buffer)) > 0) {
        const auto now = Clock::now();
        const std::scoped_lock lock(m_lock);
        const auto before = static_cast<std::int64_t>(m_bytes.size() / sizeof(std::int16_t));
        m_origin = std::min(m_origin, now - std::chrono::microseconds(before * 1000000 / kRate));
        m_bytes.insert(m_bytes.end(), buffer, buffer + got);
    }
}

std::vector<std::int16_t> MonitorRecording::Samples() const {
    const std::scoped_lock lock(m_lock);
    std::vector<std::int16_t> samples(m_bytes.size() / sizeof(std::int16_t));
    std::memcpy(samples.data(), m_bytes.data(), samples.size() * sizeof(std::int16_t));
    return samples;
}

MonitorRecording::Clock::time_point MonitorRecording::HeardAt(std::size_t sample) const {
    const std::scoped_lock lock(m_lock);
    return m_origin + std::chrono::microseconds(static_cast<std::int64_t>(sample) * 1000000 / kRate);
}
