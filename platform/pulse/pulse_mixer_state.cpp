#include "platform/pulse/pulse_mixer_state.h"

#include <algorithm>
#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto kWait = 1s;
constexpr auto kLookAgain = 1s;

}  // namespace

PulseMixerState::PulseMixerState(std::shared_ptr<PulseConnection> connection)
    : m_connection(std::move(connection)),
      m_sink([this](DWORD id) { Announce(id); }, [this] { m_connection->Loop().Signal(); }),
      m_stream([this](DWORD id) { Announce(id); }, [this] { m_connection->Loop().Signal(); }) {
    const auto lock = m_connection->Loop().Lock();
    m_meter.emplace(m_connection->Loop());
    m_connection->Watch(*this);
    if (m_connection->Ready() != nullptr) OnConnected();
}

PulseMixerState::~PulseMixerState() {
    const auto lock = m_connection->Loop().Lock();
    m_connection->Unwatch(*this);
    if (pa_context* context = m_connection->Ready())
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
    OnLost();
    m_meter.reset();
}

bool PulseMixerState::WaitKnown() {
    const auto deadline = PulseLoop::Clock::now() + kWait;
    auto lock = m_connection->Loop().Lock();
    if (!m_connection->WaitReady(lock, deadline)) return false;
    m_connection->Loop().WaitUntil(lock, deadline, [this] {
        return m_connection->Ready() == nullptr || (m_sink.Settled() && m_stream.Settled());
    });
    return m_connection->Ready() != nullptr && m_sink.Known();
}

void PulseMixerState::Add(std::shared_ptr<MixerListener> listener) {
    const auto lock = m_connection->Loop().Lock();
    m_listeners.push_back(std::move(listener));
}

void PulseMixerState::Remove(const std::shared_ptr<MixerListener>& listener) {
    const auto lock = m_connection->Loop().Lock();
    std::erase(m_listeners, listener);
}

MMRESULT PulseMixerState::GetName(std::string& name) {
    const auto lock = m_connection->Loop().Lock();
    if (!Available()) return MMSYSERR_NODRIVER;
    name = m_sink.Description();
    return MMSYSERR_NOERROR;
}

MMRESULT PulseMixerState::GetValue(DWORD controlId, DWORD& value) {
    const auto lock = m_connection->Loop().Lock();
    if (!Available()) {
        // A meter must not go on showing the last sound.
        if (controlId != kWavePeakId) return MMSYSERR_NODRIVER;
        value = 0;
        return MMSYSERR_NOERROR;
    }
    switch (controlId) {
        case kMasterVolumeId:
            value = m_sink.Volume();
            return MMSYSERR_NOERROR;
        case kMasterMuteId:
            value = m_sink.Muted() ? 1 : 0;
            return MMSYSERR_NOERROR;
        case kWaveVolumeId:
            value = m_stream.Volume();
            return MMSYSERR_NOERROR;
        case kWaveMuteId:
            value = m_stream.Muted() ? 1 : 0;
            return MMSYSERR_NOERROR;
        case kWavePeakId: {
            const std::optional<std::uint32_t> stream = m_stream.Stream();
            value = stream ? static_cast<DWORD>(m_meter->Read(m_connection->Ready(), *stream)) : 0;
            return MMSYSERR_NOERROR;
        }
        default:
            return MMSYSERR_ERROR;
    }
}

MMRESULT PulseMixerState::SetValue(DWORD controlId, DWORD value) {
    const auto lock = m_connection->Loop().Lock();
    if (!Available()) return MMSYSERR_NODRIVER;
    switch (controlId) {
        case kMasterVolumeId:
            m_sink.SetVolume(value);
            return MMSYSERR_NOERROR;
        case kMasterMuteId:
            m_sink.SetMuted(value != 0);
            return MMSYSERR_NOERROR;
        case kWaveVolumeId:
            m_stream.SetVolume(value);
            return MMSYSERR_NOERROR;
        case kWaveMuteId:
            m_stream.SetMuted(value != 0);
            return MMSYSERR_NOERROR;
        default:
            return MMSYSERR_NOTSUPPORTED;
    }
}

bool PulseMixerState::Available() {
    if (m_connection->Ready() != nullptr) return m_sink.Known();
    const auto now = PulseLoop::Clock::now();
    if (now - m_lastLook > kLookAgain) {
        m_lastLook = now;
        m_connection->Connect();
    }
    return false;
}

void PulseMixerState::OnConnected() {
    pa_context* context = m_connection->Ready();
    pa_context_set_subscribe_callback(
        context,
        [](pa_context*, pa_subscription_event_type_t event, std::uint32_t index, void* self) {
            static_cast<PulseMixerState*>(self)->OnEvent(event, index);
        },
        this);
    constexpr auto mask = static_cast<pa_subscription_mask_t>(
        PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SINK_INPUT | PA_SUBSCRIPTION_MASK_SERVER);
    Forget(pa_context_subscribe(context, mask, nullptr, nullptr));
    m_sink.Connect(context);
    m_stream.Connect(context);
}

void PulseMixerState::OnLost() {
    m_meter->Close();
    m_sink.Lose();
    m_stream.Lose();
}

void PulseMixerState::OnEvent(pa_subscription_event_type_t event, std::uint32_t index) {
    const auto type = static_cast<pa_subscription_event_type_t>(event & PA_SUBSCRIPTION_EVENT_TYPE_MASK);
    switch (event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) {
        case PA_SUBSCRIPTION_EVENT_SERVER:
            m_sink.OnServerChange();
            break;
        case PA_SUBSCRIPTION_EVENT_SINK:
            m_sink.OnSinkEvent(type, index);
            break;
        case PA_SUBSCRIPTION_EVENT_SINK_INPUT:
            m_stream.OnStreamEvent(type, index);
            break;
        default:
            break;
    }
}

void PulseMixerState::Announce(DWORD controlId) {
    for (const std::shared_ptr<MixerListener>& listener : m_listeners) {
        m_connection->Loop().Notify(
            listener,
            [](void* target, std::uint64_t id) {
                static_cast<MixerListener*>(target)->OnControlChange(static_cast<DWORD>(id));
            },
            controlId);
    }
}
