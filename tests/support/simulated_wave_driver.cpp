// SPDX-License-Identifier: MIT
#include "tests/support/simulated_wave_driver.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

#include "platform/sound/wave_clock.h"

namespace {

constexpr std::size_t kHeardRoom = std::size_t{9} * 60 * 8000;
constexpr std::uint64_t kAhead = 2560;  // bytes that wait at the server

}  // namespace

struct SimulatedWaveDriver::State {
    State() { heard.reserve(kHeardRoom); }

    // Has the server what it should have.
    void Send() {
        if (away) return;
        const std::uint64_t end = std::min(clock.Written(), position + kAhead);
        while (sent < end) {
            const std::size_t at = sent % server.size();
            const std::size_t bytes = std::min<std::size_t>(end - sent, server.size() - at);
            sent += source->Read(sent, server.data() + at, bytes);
        }
    }

    // Moves the position to where the clock is.
    void Update() {
        const std::uint64_t reached = clock.Heard(nowUs);
        if (away) position = sent = reached;
        while (position < reached) {
            Send();
            const std::size_t at = position % server.size() / sizeof(std::int16_t);
            std::int16_t sample;
            std::copy_n(server.data() + at * sizeof sample, sizeof sample, reinterpret_cast<char*>(&sample));
            heard.push_back(sample);
            position += sizeof sample;
        }
    }

    mutable std::mutex lock;
    MMRESULT openResult = MMSYSERR_NOERROR;
    bool away = false;
    std::uint64_t nowUs = 0;
    std::size_t written = 0;
    std::vector<std::int16_t> heard;

    // The open output.
    std::shared_ptr<WaveSource> source;
    WaveClock clock{1};
    std::uint64_t position = 0;
    std::uint64_t sent = 0;
    std::array<char, kAhead> server{};
};

class SimulatedWaveDriver::Stream : public WaveStream {
public:
    explicit Stream(std::shared_ptr<State> state) : m_state(std::move(state)) {}

    ~Stream() override {
        const std::scoped_lock lock(m_state->lock);
        m_state->source.reset();
    }

    void Write(std::uint64_t written) override {
        const std::scoped_lock lock(m_state->lock);
        if (written > m_state->clock.Written()) ++m_state->written;
        m_state->clock.Write(m_state->nowUs, written);
        m_state->Send();
    }

    void Pause() override {
        const std::scoped_lock lock(m_state->lock);
        m_state->clock.Pause(m_state->nowUs);
    }

    void Restart() override {
        const std::scoped_lock lock(m_state->lock);
        m_state->clock.Restart(m_state->nowUs);
    }

    void Reset() override {
        const std::scoped_lock lock(m_state->lock);
        m_state->clock.Reset(m_state->nowUs);
        m_state->position = m_state->sent = m_state->clock.Written();
    }

    std::uint64_t TakeBack() override {
        const std::scoped_lock lock(m_state->lock);
        return m_state->sent;
    }

private:
    const std::shared_ptr<State> m_state;
};

SimulatedWaveDriver::SimulatedWaveDriver() : m_state(std::make_shared<State>()) {}

SimulatedWaveDriver::~SimulatedWaveDriver() = default;

MMRESULT SimulatedWaveDriver::Open(const WAVEFORMATEX& format, std::shared_ptr<WaveSource> source,
                                   std::unique_ptr<WaveStream>& stream) {
    const std::scoped_lock lock(m_state->lock);
    if (m_state->openResult != MMSYSERR_NOERROR) return m_state->openResult;
    if (m_state->source) return MMSYSERR_ALLOCATED;
    stream = std::make_unique<Stream>(m_state);
    m_state->source = std::move(source);
    m_state->clock = WaveClock(format.nAvgBytesPerSec);
    m_state->clock.Restart(m_state->nowUs);
    m_state->position = m_state->sent = 0;
    return MMSYSERR_NOERROR;
}

void SimulatedWaveDriver::Advance(unsigned milliseconds) {
    std::shared_ptr<WaveSource> source;
    std::uint64_t position = 0;
    {
        const std::scoped_lock lock(m_state->lock);
        m_state->nowUs += std::uint64_t{milliseconds} * 1000;
        if (!m_state->source) return;
        m_state->Update();
        m_state->Send();
        source = m_state->source;
        position = m_state->position;
    }
    source->OnHeard(position);
}

void SimulatedWaveDriver::Interrupt(DWORD what) {
    std::shared_ptr<WaveSource> source;
    {
        const std::scoped_lock lock(m_state->lock);
        source = m_state->source;
    }
    source->OnInterrupted(what);
}

void SimulatedWaveDriver::SetServerAway(bool away) {
    const std::scoped_lock lock(m_state->lock);
    m_state->away = away;
    if (away)
        m_state->sent = m_state->position;
    else if (m_state->source)
        m_state->Send();
}

void SimulatedWaveDriver::SetOpenResult(MMRESULT result) {
    const std::scoped_lock lock(m_state->lock);
    m_state->openResult = result;
}

bool SimulatedWaveDriver::IsOpen() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->source != nullptr;
}

bool SimulatedWaveDriver::IsRunning() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->source != nullptr && m_state->clock.Running();
}

std::size_t SimulatedWaveDriver::BlocksWritten() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->written;
}

std::size_t SimulatedWaveDriver::BytesQueued() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->source ? static_cast<std::size_t>(m_state->clock.Written() - m_state->position) : 0;
}

std::vector<std::int16_t> SimulatedWaveDriver::Heard() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->heard;
}

std::size_t SimulatedWaveDriver::HeardCount() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->heard.size();
}

void SimulatedWaveDriver::ForgetHeard() {
    const std::scoped_lock lock(m_state->lock);
    m_state->heard.clear();
}
