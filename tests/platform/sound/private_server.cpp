// SPDX-License-Identifier: MIT
#include "tests/platform/sound/private_server.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

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
        // What PipeWire remembers of streams and sinks, which another process may have muted or moved.
        setenv("XDG_STATE_HOME", folder.Path("home/.local/state").c_str(), 1);
        for (const char* name : {"PULSE_SERVER", "PULSE_SINK", "PULSE_SOURCE", "PULSE_COOKIE",
                                 "PULSE_RUNTIME_PATH", "PULSE_STATE_PATH", "PULSE_CLIENTCONFIG", "PULSE_PROP",
                                 "PULSE_LATENCY_MSEC", "DBUS_SESSION_BUS_ADDRESS"})
            unsetenv(name);
        return true;
    }();
    static_cast<void>(made);
    return folder.Path();
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
    fs::remove_all(Private() / "home/.local");
    for (const fs::directory_entry& entry : fs::directory_iterator(Private() / "config/pulse"))
        if (entry.path().extension() != ".conf") fs::remove_all(entry.path());
}

bool PrivateServer::IsPipeWire() {
    const char* sound = std::getenv("TRV_TEST_SOUND");
    return sound != nullptr && std::strcmp(sound, "pipewire") == 0;
}

PrivateServer::PrivateServer() {
    Private();
    if (IsPipeWire())
        StartPipeWire();
    else
        StartPulseAudio();
}

void PrivateServer::StartPulseAudio() {
    const fs::path script = Private() / "server.pa";
    std::ofstream(script) << "load-module module-native-protocol-unix\n"
                             "load-module module-stream-restore\n"
                             "load-module module-null-sink sink_name=test norewinds=1 "
                             "rate=8000 channels=1 format=s16le\n"
                             "set-default-sink test\n";
    m_programs.emplace_back(std::vector<std::string>{"pulseaudio", "-n", "-F", script.string(),
                                                     "--daemonize=no", "--exit-idle-time=-1", "--realtime=no",
                                                     "--high-priority=no", "--log-level=error"});
    WaitFor("run/pulse/native");
}

// The clock at the sink's rate, so that nothing is resampled; no devices, and a bus that starts no services.
// The sink is there before there is anybody to ask for it. In a virtual machine the smallest quantum is 1024
// samples unless vm.overrides says otherwise.
void PrivateServer::StartPipeWire() {
    const fs::path config = Private() / "config";
    fs::create_directories(config / "pipewire/pipewire.conf.d");
    fs::create_directories(config / "wireplumber/main.lua.d");
    std::ofstream(config / "pipewire/pipewire.conf.d/test.conf")
        << "context.properties = { default.clock.rate = 8000 default.clock.allowed-rates = [ 8000 ] "
           "default.clock.min-quantum = 64 default.clock.quantum = 160 "
           "vm.overrides = { default.clock.min-quantum = 64 } }\n"
           "context.objects = [ { factory = adapter args = { factory.name = support.null-audio-sink "
           "node.name = test node.description = \"Null Output\" media.class = Audio/Sink audio.rate = 8000 "
           "audio.channels = 1 audio.position = [ MONO ] monitor.channel-volumes = true } } ]\n";
    std::ofstream(config / "wireplumber/main.lua.d/51-test.lua")
        << "alsa_monitor.enabled = false\nv4l2_monitor.enabled = false\nlibcamera_monitor.enabled = false\n";
    const fs::path bus = Private() / "run/sound-bus";
    std::ofstream(config / "bus.conf")
        << "<busconfig><type>session</type><listen>unix:path=" << bus.string()
        << "</listen><auth>EXTERNAL</auth>"
           R"(<policy context="default"><allow send_destination="*" eavesdrop="true"/>)"
           R"(<allow eavesdrop="true"/><allow own="*"/></policy></busconfig>)";
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    std::string said;
    const auto start = [&](const std::vector<std::string>& words) { m_programs.emplace_back(words); };
    // With clients already at the door its programs now and then do not come to have a sink: then once more.
    for (int attempt = 0; attempt < 3; ++attempt) {
        Kill();
        start({"dbus-daemon", "--nofork", "--config-file=" + (config / "bus.conf").string()});
        WaitFor("run/sound-bus");
        start({"pipewire"});
        WaitFor("run/pipewire-0");
        // The one that needs the bus; the others would wait for it half a minute should it not answer.
        start({"env", "DBUS_SESSION_BUS_ADDRESS=unix:path=" + bus.string(), "wireplumber"});
        start({"pipewire-pulse"});
        WaitFor("run/pulse/native");
        // The default once the session manager has seen it.
        const auto deadline = std::chrono::steady_clock::now() + 8s;
        while (std::chrono::steady_clock::now() < deadline) {
            const ProgramRun run = RunProgram({"timeout", "2", "pactl", "get-default-sink"});
            if (run.out == "test\n") return;
            said = std::to_string(run.status) + " " + run.out + run.err;
            std::this_thread::sleep_for(20ms);
        }
        std::fprintf(stderr, "PipeWire has no sink; pactl: %s\n", said.c_str());
    }
    throw std::runtime_error("no sink on PipeWire");
}

void PrivateServer::RemoveSink() {
    if (IsPipeWire())
        RunProgram({"pw-cli", "destroy", "test"});
    else
        Pactl({"unload-module", "module-null-sink"});
}

void PrivateServer::WaitFor(const std::string& socket) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!Answers(Private() / socket)) {
        if (m_programs.back().HasEnded()) throw std::runtime_error("the sound server ended at once");
        if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("no sound server");
        std::this_thread::sleep_for(5ms);
    }
}

PrivateServer::~PrivateServer() {
    Kill();
}

void PrivateServer::Kill() {
    while (!m_programs.empty()) m_programs.pop_back();
}

void PrivateServer::Freeze() {
    m_programs.back().Signal(SIGSTOP);
}

void PrivateServer::Thaw() {
    m_programs.back().Signal(SIGCONT);
}

std::string Pactl(std::vector<std::string> words) {
    words.insert(words.begin(), "pactl");
    ProgramRun run = RunProgram(words);
    if (run.status != 0) throw std::runtime_error("pactl failed: " + run.err);
    return run.out;
}

MonitorRecording::MonitorRecording() {
    // A recorder whose reader goes ends at its next write.
    m_recorder = popen(
        "exec parec -d test.monitor --raw --rate=8000 --channels=1 --format=s16le --latency-msec=20 "
        "--client-name=recorder",
        "re");
    if (m_recorder == nullptr) throw std::runtime_error("no recorder");
    pollfd wait{fileno(m_recorder), POLLIN, 0};
    if (poll(&wait, 1, 10000) != 1) throw std::runtime_error("the monitor gives nothing");
    m_reader = std::thread([this] { Read(); });
}

MonitorRecording::~MonitorRecording() {
    m_done = true;
    m_reader.join();
    pclose(m_recorder);
}

void MonitorRecording::Read() {
    char buffer[4096];
    ssize_t got;
    while (!m_done && (got = read(fileno(m_recorder), buffer, sizeof buffer)) > 0) {
        const auto now = Clock::now();
        const std::scoped_lock lock(m_lock);
        const auto before = static_cast<std::int64_t>(m_bytes.size() / sizeof(std::int16_t));
        m_chunks.push_back({before, now - std::chrono::microseconds(before * 1000000 / kRate)});
        m_bytes.insert(m_bytes.end(), buffer, buffer + got);
    }
}

std::vector<std::int16_t> MonitorRecording::Samples() const {
    const std::scoped_lock lock(m_lock);
    std::vector<std::int16_t> samples(m_bytes.size() / sizeof(std::int16_t));
    if (!samples.empty()) std::memcpy(samples.data(), m_bytes.data(), samples.size() * sizeof(std::int16_t));
    return samples;
}

MonitorRecording::Clock::time_point MonitorRecording::HeardAt(std::size_t sample) const {
    const std::scoped_lock lock(m_lock);
    const auto number = static_cast<std::int64_t>(sample);
    auto origin = Clock::time_point::max();
    for (const Chunk& chunk : m_chunks)
        if (std::abs(chunk.first - number) <= kRate) origin = std::min(origin, chunk.origin);
    return origin + std::chrono::microseconds(number * 1000000 / kRate);
}
