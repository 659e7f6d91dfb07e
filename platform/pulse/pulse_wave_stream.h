// A playback stream of the sound server.
#pragma once

#include <pulse/stream.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/pulse/pulse_connection.h"
#include "platform/pulse/pulse_question.h"
#include "platform/sound/wave_clock.h"
#include "platform/sound/wave_driver.h"

// What is written is gathered into pieces, because the server gives each piece back and that wakes this
// process. At the server it waits behind the cork or behind what sounds; the server is asked for its position
// every 40 ms while there is something to be heard, and not otherwise.
class PulseWaveStream : public WaveStream {
public:
    PulseWaveStream(std::shared_ptr<PulseConnection> connection, std::shared_ptr<WaveListener> listener,
                    DWORD samplesPerSecond);
    ~PulseWaveStream() override;

    // Makes the stream on the server and waits for it, until the deadline at most. Once, before the rest.
    MMRESULT Open(PulseLoop::Clock::time_point deadline);

    void Write(const void* data, std::size_t bytes) override;
    void Pause() override;
    void Restart() override;
    void Reset() override;

private:
    // All of these with the lock held.
    void OnState();
    void SetCork(bool corked);
    void Tick();
    // What has been gathered, or something else.
    void Send();
    void SendBytes(const void* data, std::size_t bytes);
    void AskPosition();
    void OnPosition();
    void Reach(std::uint64_t position);
    // From a position to the end of a block whose report is due.
    PulseLoop::Clock::duration UntilReport(std::uint64_t position) const;
    void TickSoon(PulseLoop::Clock::duration delay);
    // The server or the stream is gone: from here on the clock says what would have been heard.
    void LoseServer();
    void ReleaseStream();

    const std::shared_ptr<PulseConnection> m_connection;
    const std::shared_ptr<WaveListener> m_listener;
    const DWORD m_rate;
    std::optional<PulseLoop::Timer> m_timer;

    pa_stream* m_stream = nullptr;    // null once the server is lost
    std::array<char, 3200> m_gather;  // a speech record's samples; the first m_gathered bytes wait
    std::size_t m_gathered = 0;
    PulseQuestion m_position;
    bool m_corked = true;         // as told to the server
    bool m_running = true;        // as told by the client; the cork follows at the first block
    std::uint64_t m_written = 0;  // bytes, since the stream was opened
    std::uint64_t m_heard = 0;    // never decreases
    std::uint64_t m_inSink = 0;   // bytes that have left the stream and are not heard yet
    WaveClock m_clock;            // used once the server is lost
};
