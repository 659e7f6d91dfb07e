// SPDX-License-Identifier: MIT
// A sound server of a test's own, with a null sink and no sound card, and a recording of what it plays.
//
// The first server made gives the process its own HOME, XDG folders and client configuration (no autospawn,
// nothing of the desktop's), so make it before any thread is started. The folder goes at the end of the
// process. Several such processes run side by side, as root too.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/run_program.h"

class PrivateServer {
public:
    // Whether the servers are PipeWire's, with its PulseAudio service, as TRV_TEST_SOUND=pipewire asks for,
    // and not PulseAudio's own.
    static bool IsPipeWire();

    // The process's private folders alone, without a server.
    static void UsePrivateFolders();

    // Drops what servers of this process have remembered (volumes of streams). Not while one runs.
    static void ForgetVolumes();

    // Starts a server with a sink "test" of 8000 samples a second, mono, 16 bits, and waits until it answers.
    // Throws std::runtime_error when it does not.
    PrivateServer();
    ~PrivateServer();
    PrivateServer(const PrivateServer&) = delete;
    PrivateServer& operator=(const PrivateServer&) = delete;

    void Kill();    // at once, as in a crash
    void Freeze();  // the server stops answering
    void Thaw();
    void RemoveSink();  // the sink goes while something may play on it

private:
    void StartPulseAudio();
    void StartPipeWire();
    // Waits until something listens at the socket.
    void WaitFor(const std::string& socket);

    std::vector<ChildProcess> m_programs;  // the one that clients talk to is the last
};

// What pactl says to these words; throws when it fails.
std::string Pactl(std::vector<std::string> words);

// What the sink plays from now on, as its monitor gives it.
class MonitorRecording {
public:
    using Clock = std::chrono::steady_clock;

    // Returns once the first samples have come.
    MonitorRecording();
    ~MonitorRecording();
    MonitorRecording(const MonitorRecording&) = delete;
    MonitorRecording& operator=(const MonitorRecording&) = delete;

    std::vector<std::int16_t> Samples() const;

    // When a sample is heard: the sink passes its samples at an even pace, and the chunk that came here with
    // the least delay, of those within a second of it, shows when. A busy machine loses samples now and then.
    Clock::time_point HeardAt(std::size_t sample) const;

private:
    void Read();

    std::FILE* m_recorder;
    std::atomic<bool> m_done = false;
    mutable std::mutex m_lock;
    std::vector<char> m_bytes;
    struct Chunk {
        std::int64_t first;        // sample
        Clock::time_point origin;  // when sample 0 would have been heard, by this chunk
    };
    std::vector<Chunk> m_chunks;
    std::thread m_reader;
};
