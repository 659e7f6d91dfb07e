#include "platform/sound/simulated_wave_driver.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <utility>

#include "platform/sound/wave_clock.h"

namespace {

constexpr std::size_t kHeardRoom = std::size_t{9} * 60 * 8000;

struct Piece {
    const std::byte* data;
    std::size_t bytes;
};

}  // namespace

struct SimulatedWaveDriver::State {
    State() { heard.reserve(kHeardRoom); }

    // Keeps the samples between two positions, the second of which has just been reached.
    void Hear(std::uint64_t from, std::uint64_t to);
    // Moves the position to where the clock is.
    void Update();

    mutable std::mutex lock;
    MMRESULT openResult = MMSYSERR_NOERROR;
    unsigned speed = 100;
    std::uint64_t nowUs = 0;
    unsigned opened = 0;
    std::size_t written = 0;
    std::vector<std::int16_t> heard;

    // The open output.
    bool open = false;
    bool failed = false;
    std::shared_ptr<WaveListener> listener;
    WaveClock clock{1};
    std::uint64_t position = 0;
    std::array<Piece, WAVEOUT_MAX_BLOCKS> pieces{};  // written and not wholly heard: [first, last)
    std::size_t first = 0;
    std::size_t last = 0;
    std::size_t firstHeard = 0;  // bytes of the first piece that have been heard
};

void SimulatedWaveDriver::State::Hear(std::uint64_t from, std::uint64_t to) {
    std::uint64_t left = to - from;
    while (left != 0) {
        const Piece& piece = pieces[first % pieces.size()];
        const std::size_t bytes =
            static_cast<std::size_t>(std::min<std::uint64_t>(left, piece.bytes - firstHeard));
        for (std::size_t at = firstHeard; !failed && at != firstHeard + bytes; at += sizeof(std::int16_t)) {
            std::int16_t sample;
            std::memcpy(&sample, piece.data + at, sizeof sample);
            heard.push_back(sample);
        }
        left -= bytes;
        firstHeard += bytes;
        if (firstHeard == piece.bytes) {
            ++first;
            firstHeard = 0;
        }
    }
}

void SimulatedWaveDriver::State::Update() {
    const std::uint64_t reached = clock.Heard(nowUs);
    Hear(position, reached);
    position = reached;
}

class SimulatedWaveDriver::Stream : public WaveStream {
public:
    explicit Stream(std::shared_ptr<State> state) : m_state(std::move(state)) {}

    ~Stream() override {
        const std::scoped_lock lock(m_state->lock);
        m_state->open = false;
        m_state->listener.reset();
    }

    void Write(const void* data, std::size_t bytes) override {
        const std::scoped_lock lock(m_state->lock);
        m_state->pieces[m_state->last++ % m_state->pieces.size()] = {static_cast<const std::byte*>(data),
                                                                     bytes};
        m_state->clock.Write(m_state->nowUs, bytes);
        ++m_state->written;
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
        m_state->position = m_state->clock.Written();
        m_state->first = m_state->last;
        m_state->firstHeard = 0;
    }

private:
    std::shared_ptr<State> m_state;
};

SimulatedWaveDriver::SimulatedWaveDriver() : m_state(std::make_shared<State>()) {}

SimulatedWaveDriver::~SimulatedWaveDriver() = default;

MMRESULT SimulatedWaveDriver::Open(const WAVEFORMATEX& format, std::shared_ptr<WaveListener> listener,
                                   std::unique_ptr<WaveStream>& stream) {
    const std::scoped_lock lock(m_state->lock);
    if (m_state->openResult != MMSYSERR_NOERROR) return m_state->openResult;
    if (m_state->open) return MMSYSERR_ALLOCATED;
    stream = std::make_unique<Stream>(m_state);
    m_state->open = true;
    m_state->failed = false;
    m_state->listener = std::move(listener);
    m_state->clock = WaveClock(format.nAvgBytesPerSec);
    m_state->clock.Restart(m_state->nowUs);
    m_state->position = 0;
    m_state->first = m_state->last = m_state->firstHeard = 0;
    ++m_state->opened;
    return MMSYSERR_NOERROR;
}

void SimulatedWaveDriver::Advance(unsigned milliseconds) {
    std::shared_ptr<WaveListener> listener;
    std::uint64_t position = 0;
    {
        const std::scoped_lock lock(m_state->lock);
        m_state->nowUs += std::uint64_t{milliseconds} * 10 * m_state->speed;
        if (!m_state->open) return;
        m_state->Update();
        listener = m_state->listener;
        position = m_state->position;
    }
    listener->OnHeard(position);
}

void SimulatedWaveDriver::SetOpenResult(MMRESULT result) {
    const std::scoped_lock lock(m_state->lock);
    m_state->openResult = result;
}

void SimulatedWaveDriver::SetSpeed(unsigned percent) {
    const std::scoped_lock lock(m_state->lock);
    m_state->speed = percent;
}

void SimulatedWaveDriver::FailMidPlay() {
    const std::scoped_lock lock(m_state->lock);
    m_state->failed = true;
}

bool SimulatedWaveDriver::IsOpen() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->open;
}

bool SimulatedWaveDriver::IsPaused() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->open && !m_state->clock.Running();
}

bool SimulatedWaveDriver::IsRunning() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->open && m_state->clock.Running();
}

unsigned SimulatedWaveDriver::OpenCount() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->opened;
}

std::size_t SimulatedWaveDriver::BlocksWritten() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->written;
}

std::size_t SimulatedWaveDriver::BytesQueued() const {
    const std::scoped_lock lock(m_state->lock);
    return m_state->open ? static_cast<std::size_t>(m_state->clock.Written() - m_state->position) : 0;
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
