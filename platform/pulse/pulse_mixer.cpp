// SPDX-License-Identifier: MIT
#include "platform/pulse/pulse_mixer.h"

#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto kWait = 1s;
constexpr auto kLookAgain = 1s;

}  // namespace

PulseMixer::PulseMixer(std::shared_ptr<PulseConnection> connection)
    : m_connection(std::move(connection)), m_sink(m_connection->Loop()), m_stream(*m_connection, [this] {
          m_sink.Follow(m_stream.Sink());
          m_connection->Loop().Signal();
      }) {
    const std::scoped_lock lock(m_connection->Loop());
    m_meter.emplace(m_connection->Loop());
    m_connection->Watch(*this);
    if (m_connection->Ready() != nullptr) OnConnected();
}

PulseMixer::~PulseMixer() {
    const std::scoped_lock lock(m_connection->Loop());
    m_connection->Unwatch(*this);
    OnLost();
    m_meter.reset();
}

bool PulseMixer::Exists() {
    const auto deadline = PulseLoop::Clock::now() + kWait;
    const std::scoped_lock lock(m_connection->Loop());
    if (!m_connection->WaitReady(deadline)) return false;
    m_connection->Loop().WaitUntil(deadline, [this] {
        return m_connection->Ready() == nullptr || (m_sink.Settled() && m_stream.Settled());
    });
    return m_connection->Ready() != nullptr && m_sink.Known();
}

MMRESULT PulseMixer::GetName(std::string& name) {
    const std::scoped_lock lock(m_connection->Loop());
    if (!Available()) return MMSYSERR_NODRIVER;
    name = m_sink.Description();
    return MMSYSERR_NOERROR;
}

MMRESULT PulseMixer::GetValue(DWORD controlId, DWORD& value) {
    const std::scoped_lock lock(m_connection->Loop());
    const bool available = Available();
    if (controlId == kWavePeak) {
        // It must not go on showing the last sound. PipeWire's server does not answer, and shows a recorder
        // that stays, where what is corked is to be listened to.
        const std::optional<std::uint32_t> stream = m_stream.Stream();
        const bool sounds = available && stream && !m_stream.Corked();
        if (!sounds) m_meter->Close();
        value = sounds ? static_cast<DWORD>(m_meter->Read(m_connection->Ready(), *stream)) : 0;
        return MMSYSERR_NOERROR;
    }
    if (!available) return MMSYSERR_NODRIVER;
    const bool master = controlId == kMasterVolume || controlId == kMasterMute;
    const PulseLevel level = master ? m_sink.Level() : m_stream.Level();
    value = controlId == kMasterVolume || controlId == kWaveVolume ? level.volume : level.muted ? 1 : 0;
    return MMSYSERR_NOERROR;
}

MMRESULT PulseMixer::SetValue(DWORD controlId, DWORD value) {
    const std::scoped_lock lock(m_connection->Loop());
    if (!Available()) return MMSYSERR_NODRIVER;
    switch (controlId) {
        case kMasterVolume:
            m_sink.SetVolume(value);
            break;
        case kMasterMute:
            m_sink.SetMuted(value != 0);
            break;
        case kWaveVolume:
            m_stream.SetVolume(value);
            break;
        default:
            m_stream.SetMuted(value != 0);
            break;
    }
    return MMSYSERR_NOERROR;
}

bool PulseMixer::Available() {
    if (m_connection->Ready() != nullptr) return m_sink.Known();
    const auto now = PulseLoop::Clock::now();
    if (now - m_lastLook > kLookAgain) {
        m_lastLook = now;
        m_connection->Connect();
    }
    return false;
}

void PulseMixer::OnConnected() {
    pa_context* context = m_connection->Ready();
    m_sink.Connect(context);
    m_stream.Connect(context);
}

void PulseMixer::OnLost() {
    m_meter->Close();
    m_sink.Lose();
    m_stream.Lose();
}

void PulseMixer::OnChange(pa_subscription_event_type_t facility, pa_subscription_event_type_t type,
                          std::uint32_t index) {
    if (facility == PA_SUBSCRIPTION_EVENT_SINK_INPUT)
        m_stream.OnStreamEvent(type, index);
    else
        m_sink.Ask();
}
