// SPDX-License-Identifier: MIT
#include "platform/pulse/pulse_wave_stream.h"

#include <pulse/proplist.h>

#include <algorithm>
#include <string_view>

#include "platform/pulse/identity.h"
#include "platform/pulse/pulse_stream_end.h"

namespace {

using namespace std::chrono_literals;

constexpr auto kOpenTime = 1s;
constexpr DWORD kBytesPerSample = 2;
constexpr auto kTick = 20ms;
// The player's blocks are 20 ms. Reporting just after every second one has ended is as prompt as reporting
// every 20 ms at any moment, and wakes this thread and the window's half as often.
constexpr DWORD kReportsPerSecond = 25;
// The server is asked so often, and between two answers the time says where it is; but only after an answer
// that was where the time had said, give or take so much.
constexpr auto kAskEvery = 400ms;
constexpr auto kAgrees = 5ms;
constexpr auto kJustAfter = 1ms;
constexpr DWORD kBlocksPerSecond = 50;
constexpr DWORD kStepBlocks = 20;
constexpr DWORD kLatencyBlocks = 3;
// How much waits at the server, so that a busy machine may wake this thread late.
constexpr auto kAhead = 1s;
// What is nearer to being played than this is not taken back: the server may be at it before the news reaches
// it.
constexpr auto kTooNear = 100ms;
// The end of the sound that a server does not play: shorter than this, and left over for so long.
constexpr auto kQuantum = 50ms;
constexpr auto kRemainsFor = 100ms;
constexpr auto kTryAgain = 100ms;
constexpr auto kTryAgainPaused = 1s;

std::uint64_t NowUs() {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(PulseLoop::Clock::now().time_since_epoch())
            .count());
}

std::uint64_t NotNegative(std::int64_t value) {
    return static_cast<std::uint64_t>(std::max<std::int64_t>(value, 0));
}

}  // namespace

MMRESULT PulseWaveDriver::Open(const WAVEFORMATEX& format, std::shared_ptr<WaveSource> source,
                               std::unique_ptr<WaveStream>& stream) {
    auto opened = std::make_unique<PulseWaveStream>(m_connection, std::move(source), format.nSamplesPerSec);
    const MMRESULT result = opened->Open(PulseLoop::Clock::now() + kOpenTime);
    if (result == MMSYSERR_NOERROR) stream = std::move(opened);
    return result;
}

PulseWaveStream::PulseWaveStream(std::shared_ptr<PulseConnection> connection,
                                 std::shared_ptr<WaveSource> source, DWORD samplesPerSecond)
    : m_connection(std::move(connection)),
      m_source(std::move(source)),
      m_rate(samplesPerSecond),
      m_clock(std::uint64_t{samplesPerSecond} * kBytesPerSample),
      m_output([this] { m_source->OnInterrupted(WOM_UNPLUGGED); }) {}

PulseWaveStream::~PulseWaveStream() {
    const std::scoped_lock lock(m_connection->Loop());
    m_connection->Unwatch(*this);
    ReleaseStream();
    m_output.Forget();
    m_timer.reset();
}

MMRESULT PulseWaveStream::Open(PulseLoop::Clock::time_point deadline) {
    PulseLoop& loop = m_connection->Loop();
    const std::scoped_lock lock(loop);
    m_timer.emplace(loop, [this] { Tick(); });
    if (!m_connection->WaitReady(deadline)) return MMSYSERR_NODRIVER;
    Create();
    if (!loop.WaitUntil(deadline, [this] { return m_live || m_stream == nullptr; })) {
        m_connection->Drop();
        return MMSYSERR_NODRIVER;
    }
    if (!m_live) return MMSYSERR_ALLOCATED;
    m_connection->Watch(*this);
    m_clock.Restart(NowUs());
    return MMSYSERR_NOERROR;
}

void PulseWaveStream::OnConnected() {
    m_nextTry = {};
    TickSoon({});
}

void PulseWaveStream::OnLost() {
    m_output.Forget();
}

void PulseWaveStream::OnChange(pa_subscription_event_type_t facility, pa_subscription_event_type_t type,
                               std::uint32_t index) {
    if (facility == PA_SUBSCRIPTION_EVENT_SINK && type == PA_SUBSCRIPTION_EVENT_CHANGE)
        m_output.OnSinkChanged(index);
}

void PulseWaveStream::Create() {
    const pa_sample_spec format{PA_SAMPLE_S16NE, m_rate, 1};
    pa_proplist* properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_MEDIA_NAME, kMediaName);
    m_stream = pa_stream_new_with_proplist(m_connection->Ready(), nullptr, &format, nullptr, properties);
    pa_proplist_free(properties);
    if (m_stream == nullptr) return;
    pa_stream_set_state_callback(m_stream, PulseCallback<&PulseWaveStream::OnState>{}, this);
    pa_stream_set_moved_callback(m_stream, PulseCallback<&PulseWaveStream::OnMoved>{}, this);
    pa_stream_set_event_callback(m_stream, PulseCallback<&PulseWaveStream::OnRequest>{}, this);

    // The server starts with the first 20 ms; left to itself it would with two seconds. Without a prebuffer
    // it would play on past the end of what is there. It asks for more in steps, which wakes this thread for
    // nothing, as the sound is sent by the position; so the steps are large. The sink's latency is what is
    // left when two steps are taken from what is asked for ahead: 60 ms.
    const std::uint32_t block = m_rate / kBlocksPerSecond * kBytesPerSample;
    pa_buffer_attr buffer{};
    buffer.maxlength = static_cast<std::uint32_t>(-1);
    buffer.tlength = 2 * kStepBlocks * block + kLatencyBlocks * block;
    buffer.prebuf = block;
    buffer.minreq = kStepBlocks * block;
    buffer.fragsize = static_cast<std::uint32_t>(-1);
    if (pa_stream_connect_playback(m_stream, nullptr, &buffer, PA_STREAM_START_CORKED, nullptr, nullptr) < 0)
        ReleaseStream();
}

void PulseWaveStream::OnState() {
    const pa_stream_state_t state = pa_stream_get_state(m_stream);
    if (!PA_STREAM_IS_GOOD(state)) {
        LoseStream();
    } else if (state == PA_STREAM_READY) {
        // From here on the server counts, where the clock has come to.
        Reach(m_clock.Heard(NowUs()));
        m_live = m_corked = true;
        m_sent = m_left = m_heard;
        m_seek = 0;
        if (m_heard != m_written) Send();
        if (m_heard != m_written && m_running) SetCork(false);
        OnMoved();
        if (m_connection->IsPulseAudio()) TakeRole();
    }
    m_connection->Loop().Signal();
}

void PulseWaveStream::OnMoved() {
    m_steady = false;
    m_output.Follow(m_connection->Ready(), pa_stream_get_device_index(m_stream));
    m_connection->Announce(PA_SUBSCRIPTION_EVENT_SINK_INPUT, PA_SUBSCRIPTION_EVENT_CHANGE,
                           pa_stream_get_index(m_stream));
}

void PulseWaveStream::OnRequest(const char* name, pa_proplist*) {
    const std::string_view request(name);
    if (request == PA_STREAM_EVENT_REQUEST_CORK) m_source->OnInterrupted(WOM_CALL_BEGINS);
    if (request == PA_STREAM_EVENT_REQUEST_UNCORK) m_source->OnInterrupted(WOM_CALL_ENDS);
}

// Only streams of certain roles are asked to be silent during a call. A role that is there from the start
// would become the name under which the server remembers volume, mute and sink.
void PulseWaveStream::TakeRole() {
    pa_proplist* role = pa_proplist_new();
    pa_proplist_sets(role, PA_PROP_MEDIA_ROLE, kMediaRole);
    Forget(pa_stream_proplist_update(m_stream, PA_UPDATE_MERGE, role, nullptr, nullptr));
    pa_proplist_free(role);
}

void PulseWaveStream::Write(std::uint64_t written) {
    const std::scoped_lock lock(m_connection->Loop());
    const bool first = m_heard == m_written;
    m_written = written;
    m_clock.Write(NowUs(), written);
    if (m_live) Send();
    if (!m_running) return;
    SetCork(false);
    // Ticks follow each other while there is something to be heard.
    if (first) TickSoon(kTick);
}

void PulseWaveStream::Pause() {
    const std::scoped_lock lock(m_connection->Loop());
    m_running = false;
    m_clock.Pause(NowUs());
    SetCork(true);
}

void PulseWaveStream::Restart() {
    const std::scoped_lock lock(m_connection->Loop());
    if (std::exchange(m_running, true)) return;
    m_clock.Restart(NowUs());
    if (m_heard == m_written) return;
    SetCork(false);
    m_asOf = PulseLoop::Clock::now();
    TickSoon(m_live ? kTick : 0ms);
}

void PulseWaveStream::Reset() {
    const std::scoped_lock lock(m_connection->Loop());
    m_clock.Reset(NowUs());
    if (m_live) {
        SetCork(true);
        Forget(pa_stream_flush(m_stream, nullptr, nullptr));
        m_position.MakeStale();
        m_timer->Cancel();
    }
    m_heard = m_left = m_sent = m_written;
    m_seek = 0;
    m_steady = false;
}

std::uint64_t PulseWaveStream::TakeBack() {
    const std::scoped_lock lock(m_connection->Loop());
    if (!m_live) return m_clock.Heard(NowUs());
    // The next write goes back to the place.
    const auto since = m_running ? PulseLoop::Clock::now() - m_asOf : PulseLoop::Clock::duration{};
    const std::uint64_t kept = std::min(m_sent, m_left + Bytes(since + kTooNear));
    m_seek += m_sent - kept;
    m_sent = kept;
    return kept;
}

std::uint64_t PulseWaveStream::Bytes(PulseLoop::Clock::duration time) const {
    const auto us = std::chrono::duration_cast<std::chrono::microseconds>(time).count();
    return static_cast<std::uint64_t>(us) * m_rate / 1000000 * kBytesPerSample;
}

void PulseWaveStream::SetCork(bool corked) {
    if (!m_live || m_corked == corked) return;
    Forget(pa_stream_cork(m_stream, corked ? 1 : 0, nullptr, nullptr));
    m_corked = corked;
    m_steady = false;
}

void PulseWaveStream::Tick() {
    if (m_live) return FollowServer();
    Reach(m_clock.Heard(NowUs()));
    const auto now = PulseLoop::Clock::now();
    if (m_stream == nullptr && now >= m_nextTry) {
        m_nextTry = now + kTryAgain;
        if (m_connection->Ready() != nullptr)
            Create();
        else
            m_connection->Connect();
    }
    // While something counts as heard, Reach has set the next tick.
    if (!m_running || m_heard == m_written) TickSoon(m_running ? kTryAgain : kTryAgainPaused);
}

void PulseWaveStream::Send() {
    const std::uint64_t end = std::min(m_written, m_left + Bytes(kAhead));
    while (m_live && m_sent < end) {
        void* room = nullptr;
        std::size_t bytes = static_cast<std::size_t>(end - m_sent);
        if (pa_stream_begin_write(m_stream, &room, &bytes) < 0) return LoseStream();
        bytes = m_source->Read(m_sent, room, std::min(bytes, static_cast<std::size_t>(end - m_sent)));
        if (bytes == 0) {
            pa_stream_cancel_write(m_stream);
            return;
        }
        const auto seek = static_cast<std::int64_t>(std::exchange(m_seek, 0));
        if (pa_stream_write(m_stream, room, bytes, nullptr, -seek, PA_SEEK_RELATIVE) < 0) return LoseStream();
        m_sent += bytes;
        m_lastSent = PulseLoop::Clock::now();
    }
}

// The end of what is there is never taken for heard on the word of the time alone.
void PulseWaveStream::FollowServer() {
    const auto now = PulseLoop::Clock::now();
    const std::uint64_t expected = Expected(now);
    if (m_steady && now - m_answered < kAskEvery && expected + ReportBytes() <= m_sent)
        Reach(expected);
    else
        AskPosition();
}

std::uint64_t PulseWaveStream::Expected(PulseLoop::Clock::time_point now) const {
    return m_answer + Bytes(now - m_answered);
}

void PulseWaveStream::AskPosition() {
    if (m_position.UnderWay()) return;
    m_position.Ask([this] {
        return pa_stream_update_timing_info(m_stream, PulseCallback<&PulseWaveStream::OnPosition>{}, this);
    });
    if (!m_position.UnderWay()) TickSoon(kTick);
}

void PulseWaveStream::OnPosition(int) {
    const bool current = m_position.IsCurrent();
    const pa_timing_info* info = pa_stream_get_timing_info(m_stream);
    if (!current || info == nullptr || info->write_index_corrupt != 0 || info->read_index_corrupt != 0) {
        if (m_heard != m_written) TickSoon({});
        return;
    }
    // Counted back from the end of what was sent, so that no flush and no underrun needs any accounting:
    // still in the stream, and gone from it but not through the sink. When nothing plays, silence has pushed
    // the latter on.
    std::uint64_t inStream = NotNegative(info->write_index - info->read_index);
    const std::uint64_t latency = (info->sink_usec * m_rate + 999999) / 1000000 * kBytesPerSample;
    const std::uint64_t silence = info->playing != 0 ? 0 : NotNegative(info->since_underrun);
    // PipeWire's server leaves what is less than its quantum in the stream and waits for more.
    const bool lasts = silence > Bytes(kRemainsFor) && PulseLoop::Clock::now() - m_lastSent > kRemainsFor;
    if (lasts && m_sent == m_written && inStream < Bytes(kQuantum)) inStream = 0;
    m_left = m_sent + m_seek - std::min(m_sent + m_seek, inStream);
    m_asOf = PulseLoop::Clock::now();
    const std::uint64_t position = m_left - std::min(m_left, latency - std::min(latency, silence));
    const std::uint64_t expected = Expected(m_asOf);
    const std::uint64_t apart = std::max(position, expected) - std::min(position, expected);
    m_steady = info->playing != 0 && !m_corked && apart <= Bytes(kAgrees);
    m_answer = position;
    m_answered = m_asOf;
    Send();
    if (m_live) Reach(position);
}

void PulseWaveStream::Reach(std::uint64_t position) {
    if (position > m_heard) {
        m_heard = position;
        m_source->OnHeard(position);
    }
    // What a pause has left in the sink is still heard.
    if (m_heard != m_written && (m_running || (m_live && m_heard < m_left))) TickSoon(UntilReport(position));
}

std::uint64_t PulseWaveStream::ReportBytes() const {
    return std::uint64_t{m_rate / kReportsPerSecond * kBytesPerSample};
}

PulseLoop::Clock::duration PulseWaveStream::UntilReport(std::uint64_t position) const {
    const std::uint64_t step = ReportBytes();
    const std::uint64_t bytes = std::min(step - position % step, m_written - m_heard);
    return std::chrono::microseconds(bytes * 1000000 / (m_rate * kBytesPerSample)) + kJustAfter;
}

void PulseWaveStream::TickSoon(PulseLoop::Clock::duration delay) {
    m_timer->Set(PulseLoop::Clock::now() + delay);
}

void PulseWaveStream::LoseStream() {
    ReleaseStream();
    m_output.Leave();
    if (!std::exchange(m_live, false)) return;
    m_clock = WaveClock(std::uint64_t{m_rate} * kBytesPerSample, m_written, m_heard);
    if (m_running) m_clock.Restart(NowUs());
    TickSoon(kTick);
}

void PulseWaveStream::ReleaseStream() {
    m_position.Cancel();
    if (m_stream == nullptr) return;
    EndStream(std::exchange(m_stream, nullptr));
}
