#include "platform/pulse/pulse_wave_stream.h"

#include <pulse/proplist.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/pulse/identity.h"

namespace {

using namespace std::chrono_literals;

constexpr DWORD kBytesPerSample = 2;
constexpr auto kTick = 20ms;
// The player's blocks are 20 ms. Asking just after every second one has ended is as prompt as asking every
// 20 ms at any moment, and wakes this thread and the window's half as often.
constexpr DWORD kReportsPerSecond = 25;
constexpr auto kJustAfter = 1ms;

std::uint64_t NowUs() {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(PulseLoop::Clock::now().time_since_epoch())
            .count());
}

std::uint64_t NotNegative(std::int64_t value) {
    return static_cast<std::uint64_t>(std::max<std::int64_t>(value, 0));
}

}  // namespace

PulseWaveStream::PulseWaveStream(std::shared_ptr<PulseConnection> connection,
                                 std::shared_ptr<WaveListener> listener, DWORD samplesPerSecond)
    : m_connection(std::move(connection)),
      m_listener(std::move(listener)),
      m_rate(samplesPerSecond),
      m_clock(std::uint64_t{samplesPerSecond} * kBytesPerSample) {}

PulseWaveStream::~PulseWaveStream() {
    const auto lock = m_connection->Loop().Lock();
    ReleaseStream();
    m_timer.reset();
}

MMRESULT PulseWaveStream::Open(PulseLoop::Clock::time_point deadline) {
    auto lock = m_connection->Loop().Lock();
    m_timer.emplace(m_connection->Loop(), [this] { Tick(); });
    if (!m_connection->WaitReady(lock, deadline)) return MMSYSERR_NODRIVER;

    const pa_sample_spec format{PA_SAMPLE_S16NE, m_rate, 1};
    pa_proplist* properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_MEDIA_NAME, kMediaName);
    m_stream = pa_stream_new_with_proplist(m_connection->Ready(), nullptr, &format, nullptr, properties);
    pa_proplist_free(properties);
    if (m_stream == nullptr) return MMSYSERR_ALLOCATED;
    pa_stream_set_state_callback(
        m_stream, [](pa_stream*, void* self) { static_cast<PulseWaveStream*>(self)->OnState(); }, this);

    // 100 ms asked for ahead, in steps of 20 ms; the server starts with the first 20 ms. Left to themselves
    // these would be two seconds. Without a prebuffer the server would play on past the end of what is there.
    const std::uint32_t block = m_rate / 50 * kBytesPerSample;
    pa_buffer_attr buffer{};
    buffer.maxlength = static_cast<std::uint32_t>(-1);
    buffer.tlength = 5 * block;
    buffer.prebuf = block;
    buffer.minreq = block;
    buffer.fragsize = static_cast<std::uint32_t>(-1);
    if (pa_stream_connect_playback(m_stream, nullptr, &buffer, PA_STREAM_START_CORKED, nullptr, nullptr) <
        0) {
        ReleaseStream();
        return MMSYSERR_ALLOCATED;
    }

    const auto creating = [this] {
        return m_stream != nullptr && pa_stream_get_state(m_stream) == PA_STREAM_CREATING;
    };
    if (!m_connection->Loop().WaitUntil(lock, deadline, [&] { return !creating(); })) {
        m_connection->Drop();
        return MMSYSERR_NODRIVER;
    }
    return m_stream != nullptr ? MMSYSERR_NOERROR : MMSYSERR_ALLOCATED;
}

void PulseWaveStream::Write(const void* data, std::size_t bytes) {
    const auto lock = m_connection->Loop().Lock();
    const bool first = m_heard == m_written;
    m_written += bytes;
    if (m_stream == nullptr) {
        m_clock.Write(NowUs(), bytes);
    } else {
        if (m_gathered + bytes > m_gather.size()) Send();
        if (bytes <= m_gather.size()) {
            std::memcpy(m_gather.data() + m_gathered, data, bytes);
            m_gathered += bytes;
        } else {
            SendBytes(data, bytes);
        }
        // With much still to be heard the rest of a burst can be waited for: a tick comes soon enough.
        const bool ample = !m_running || m_written - m_gathered - m_heard >= m_gather.size();
        if (m_gathered == m_gather.size() || !ample) Send();
        if (m_running && m_stream != nullptr) SetCork(false);
    }
    // Ticks follow each other while there is something to be heard.
    if (m_running && first) TickSoon(kTick);
}

void PulseWaveStream::Send() {
    if (m_gathered != 0) SendBytes(m_gather.data(), std::exchange(m_gathered, 0));
}

void PulseWaveStream::SendBytes(const void* data, std::size_t bytes) {
    if (m_stream != nullptr && pa_stream_write(m_stream, data, bytes, nullptr, 0, PA_SEEK_RELATIVE) < 0)
        LoseServer();
}

void PulseWaveStream::Pause() {
    const auto lock = m_connection->Loop().Lock();
    m_running = false;
    m_clock.Pause(NowUs());
    SetCork(true);
}

void PulseWaveStream::Restart() {
    const auto lock = m_connection->Loop().Lock();
    if (std::exchange(m_running, true)) return;
    m_clock.Restart(NowUs());
    if (m_heard == m_written) return;
    Send();
    SetCork(false);
    TickSoon(kTick);
}

void PulseWaveStream::Reset() {
    const auto lock = m_connection->Loop().Lock();
    m_clock.Reset(NowUs());
    if (m_stream != nullptr) {
        SetCork(true);
        m_gathered = 0;
        Forget(pa_stream_flush(m_stream, nullptr, nullptr));
        m_position.MakeStale();
    }
    m_heard = m_written;
    m_inSink = 0;
    m_timer->Cancel();
}

void PulseWaveStream::OnState() {
    if (!PA_STREAM_IS_GOOD(pa_stream_get_state(m_stream))) LoseServer();
    m_connection->Loop().Signal();
}

void PulseWaveStream::SetCork(bool corked) {
    if (m_stream == nullptr || m_corked == corked) return;
    Forget(pa_stream_cork(m_stream, corked ? 1 : 0, nullptr, nullptr));
    m_corked = corked;
}

void PulseWaveStream::Tick() {
    Send();
    if (m_stream != nullptr)
        AskPosition();
    else
        Reach(m_clock.Heard(NowUs()));
}

void PulseWaveStream::AskPosition() {
    if (m_position.UnderWay()) return;
    m_position.Ask([this] {
        return pa_stream_update_timing_info(
            m_stream, [](pa_stream*, int, void* self) { static_cast<PulseWaveStream*>(self)->OnPosition(); },
            this);
    });
    if (!m_position.UnderWay()) TickSoon(kTick);
}

void PulseWaveStream::OnPosition() {
    const bool current = m_position.IsCurrent();
    const pa_timing_info* info = pa_stream_get_timing_info(m_stream);
    if (!current || info == nullptr || info->write_index_corrupt != 0 || info->read_index_corrupt != 0) {
        if (m_heard != m_written) TickSoon(0ms);
        return;
    }
    // Counted back from the end of what was written, so that no flush and no underrun needs any accounting:
    // still in the stream, and gone from it but not through the sink. When nothing plays, silence has pushed
    // the latter on.
    const std::uint64_t inStream = NotNegative(info->write_index - info->read_index);
    const std::uint64_t latency = (info->sink_usec * m_rate + 999999) / 1000000 * kBytesPerSample;
    const std::uint64_t silence = info->playing != 0 ? 0 : NotNegative(info->since_underrun);
    m_inSink = latency - std::min(latency, silence);
    const std::uint64_t sent = m_written - m_gathered;
    Reach(sent - std::min(sent, inStream + m_inSink));
}

void PulseWaveStream::Reach(std::uint64_t position) {
    if (position > m_heard) {
        m_heard = position;
        m_connection->Loop().Notify(
            m_listener,
            [](void* listener, std::uint64_t heard) { static_cast<WaveListener*>(listener)->OnHeard(heard); },
            position);
    }
    // What a pause has left in the sink is still heard.
    if (m_heard != m_written && (m_running || m_inSink != 0)) TickSoon(UntilReport(position));
}

PulseLoop::Clock::duration PulseWaveStream::UntilReport(std::uint64_t position) const {
    const std::uint64_t step = m_rate / kReportsPerSecond * kBytesPerSample;
    const std::uint64_t bytes = std::min(step - position % step, m_written - m_heard);
    return std::chrono::microseconds(bytes * 1000000 / (m_rate * kBytesPerSample)) + kJustAfter;
}

void PulseWaveStream::TickSoon(PulseLoop::Clock::duration delay) {
    m_timer->Set(PulseLoop::Clock::now() + delay);
}

void PulseWaveStream::LoseServer() {
    if (m_stream == nullptr) return;
    ReleaseStream();
    m_gathered = 0;
    m_inSink = 0;
    m_clock = WaveClock(std::uint64_t{m_rate} * kBytesPerSample, m_written, m_heard);
    if (!m_running) return;
    m_clock.Restart(NowUs());
    TickSoon(kTick);
}

void PulseWaveStream::ReleaseStream() {
    m_position.Cancel();
    if (m_stream == nullptr) return;
    pa_stream_set_state_callback(m_stream, nullptr, nullptr);
    pa_stream_disconnect(m_stream);
    pa_stream_unref(std::exchange(m_stream, nullptr));
}
