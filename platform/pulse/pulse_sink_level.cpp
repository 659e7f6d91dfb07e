#include "platform/pulse/pulse_sink_level.h"

#include <utility>

#include "platform/pulse/volume_scale.h"

PulseSinkLevel::PulseSinkLevel(ControlChanged changed, std::function<void()> settled)
    : m_changed(std::move(changed)), m_onSettled(std::move(settled)) {}

void PulseSinkLevel::Connect(pa_context* context) {
    m_context = context;
    m_settled = false;
    AskServer();
}

void PulseSinkLevel::Lose() {
    m_serverQuestion.Cancel();
    m_sinkQuestion.Cancel();
    m_context = nullptr;
    m_known = false;
    m_name.clear();
}

void PulseSinkLevel::OnServerChange() {
    AskServer();
}

void PulseSinkLevel::OnSinkEvent(pa_subscription_event_type_t event, std::uint32_t index) {
    if (!m_known || index != m_index) return;
    if (event == PA_SUBSCRIPTION_EVENT_REMOVE)
        m_known = false;
    else
        AskSink();
}

DWORD PulseSinkLevel::Volume() const {
    return FromServer(pa_cvolume_max(&m_volume));
}

void PulseSinkLevel::SetVolume(DWORD value) {
    m_sinkQuestion.MakeStale();
    const bool differs = value != Volume();
    // The loudest channel takes the value and the others keep their share, so that the balance stays.
    pa_cvolume_scale(&m_volume, ToServer(value));
    Forget(pa_context_set_sink_volume_by_name(m_context, m_name.c_str(), &m_volume, nullptr, nullptr));
    if (differs) m_changed(kMasterVolumeId);
}

void PulseSinkLevel::SetMuted(bool muted) {
    m_sinkQuestion.MakeStale();
    Forget(pa_context_set_sink_mute_by_name(m_context, m_name.c_str(), muted ? 1 : 0, nullptr, nullptr));
    if (std::exchange(m_muted, muted) != muted) m_changed(kMasterMuteId);
}

void PulseSinkLevel::AskServer() {
    m_serverQuestion.Ask([this] {
        return pa_context_get_server_info(
            m_context,
            [](pa_context*, const pa_server_info* info, void* self) {
                static_cast<PulseSinkLevel*>(self)->OnServer(info);
            },
            this);
    });
}

void PulseSinkLevel::OnServer(const pa_server_info* info) {
    const char* name = info != nullptr ? info->default_sink_name : nullptr;
    if (!m_serverQuestion.IsCurrent()) {
        AskServer();
        return;
    }
    const bool other = m_name != (name != nullptr ? name : "");
    m_name = name != nullptr ? name : "";
    if (m_name.empty()) {
        m_known = false;
        Settle();
    } else if (other || !m_known) {
        AskSink();
    }
}

void PulseSinkLevel::AskSink() {
    m_sinkQuestion.Ask([this] {
        m_answered = false;
        return pa_context_get_sink_info_by_name(
            m_context, m_name.c_str(),
            [](pa_context*, const pa_sink_info* info, int end, void* self) {
                static_cast<PulseSinkLevel*>(self)->OnSink(info, end != 0);
            },
            this);
    });
}

void PulseSinkLevel::OnSink(const pa_sink_info* info, bool end) {
    if (!end) {
        m_answered = true;
        m_newIndex = info->index;
        m_newVolume = info->volume;
        m_newMuted = info->mute != 0;
        m_description = info->description != nullptr ? info->description : info->name;
        return;
    }
    if (!m_sinkQuestion.IsCurrent()) {
        AskSink();
        return;
    }
    // Another sink is announced even where its values are the same: its name is not.
    const bool other = !m_known || m_newIndex != m_index;
    const bool newVolume = m_answered && (other || FromServer(pa_cvolume_max(&m_newVolume)) != Volume());
    const bool newMuted = m_answered && (other || m_newMuted != m_muted);
    m_known = m_answered;
    m_index = m_newIndex;
    m_volume = m_newVolume;
    m_muted = m_newMuted;
    if (newVolume) m_changed(kMasterVolumeId);
    if (newMuted) m_changed(kMasterMuteId);
    Settle();
}

void PulseSinkLevel::Settle() {
    m_settled = true;
    m_onSettled();
}
