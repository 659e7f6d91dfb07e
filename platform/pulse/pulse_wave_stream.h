// SPDX-License-Identifier: MIT
// The sound server as a wave driver, and a playback stream of it.
#pragma once

#include <pulse/stream.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "platform/pulse/pulse_connection.h"
#include "platform/pulse/pulse_output_watch.h"
#include "platform/pulse/pulse_question.h"
#include "platform/sound/sound_drivers.h"
#include "platform/sound/wave_clock.h"

class PulseWaveDriver : public WaveDriver {
public:
    explicit PulseWaveDriver(std::shared_ptr<PulseConnection> connection)
        : m_connection(std::move(connection)) {}

    // Connects if there is no connection; a server that does not answer within a second is given up.
    MMRESULT Open(const WAVEFORMATEX& format, std::shared_ptr<WaveSource> source,
                  std::unique_ptr<WaveStream>& stream) override;

private:
    const std::shared_ptr<PulseConnection> m_connection;
};

// At the server up to a second waits behind the cork or behind what sounds. While there is something to be
// heard it is reported every 40 ms. The server is asked for its position each time until it keeps time, and
// then every 400 ms, and is sent what it has played meanwhile. Otherwise no timer runs.
//
// When the server or its stream goes, a clock says what would have been heard until there is a stream again,
// which is tried ten times a second, and once a second while paused.
class PulseWaveStream : public WaveStream, private ConnectionWatcher {
public:
    PulseWaveStream(std::shared_ptr<PulseConnection> connection, std::shared_ptr<WaveSource> source,
                    DWORD samplesPerSecond);
    ~PulseWaveStream() override;

    // Makes the stream on the server and waits for it, until the deadline at most. Once, before the rest.
    MMRESULT Open(PulseLoop::Clock::time_point deadline);

    void Write(std::uint64_t written) override;
    void Pause() override;
    void Restart() override;
    void Reset() override;
    std::uint64_t TakeBack() override;

private:
    // All of these with the lock held.
    void OnConnected() override;
    void OnLost() override;
    void OnChange(pa_subscription_event_type_t facility, pa_subscription_event_type_t type,
                  std::uint32_t index) override;
    void Create();
    void OnState();
    void OnMoved();
    void OnRequest(const char* name, pa_proplist* properties);
    void TakeRole();
    void SetCork(bool corked);
    void Tick();
    void Send();
    void FollowServer();
    std::uint64_t Expected(PulseLoop::Clock::time_point now) const;
    void AskPosition();
    void OnPosition(int success);
    void Reach(std::uint64_t position);
    std::uint64_t ReportBytes() const;
    // From a position to the end of a block whose report is due.
    PulseLoop::Clock::duration UntilReport(std::uint64_t position) const;
    std::uint64_t Bytes(PulseLoop::Clock::duration time) const;
    void TickSoon(PulseLoop::Clock::duration delay);
    void LoseStream();
    void ReleaseStream();

    const std::shared_ptr<PulseConnection> m_connection;
    const std::shared_ptr<WaveSource> m_source;
    const DWORD m_rate;
    std::optional<PulseLoop::Timer> m_timer;

    pa_stream* m_stream = nullptr;
    bool m_live = false;  // the stream is there and plays; otherwise the clock counts
    WaveClock m_clock;
    PulseOutputWatch m_output;
    PulseLoop::Clock::time_point m_nextTry{};

    PulseQuestion m_position;
    bool m_corked = true;   // as told to the server
    bool m_running = true;  // as told by the client; the cork follows at the first block
    // Positions, heard <= left <= sent <= written.
    std::uint64_t m_written = 0;
    std::uint64_t m_sent = 0;  // to the server
    std::uint64_t m_left = 0;  // has left the stream for the sink, as of the last answer
    std::uint64_t m_seek = 0;  // bytes beyond m_sent that the next write replaces
    PulseLoop::Clock::time_point m_asOf{};
    // The last answer, and whether the time says where the server is from there on.
    std::uint64_t m_answer = 0;
    PulseLoop::Clock::time_point m_answered{};
    bool m_steady = false;
    PulseLoop::Clock::time_point m_lastSent{};
    std::uint64_t m_heard = 0;  // never decreases
};
