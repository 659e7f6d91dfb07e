#include "platform/pulse/pulse_stream_level.h"

#include <pulse/channelmap.h>

#include <string_view>
#include <utility>

#include "platform/pulse/identity.h"
#include "platform/pulse/volume_scale.h"

PulseStreamLevel::PulseStreamLevel(ControlChanged changed, std::function<void()> settled)
    : m_changed(std::move(changed)), m_onSettled(std::move(settled)), m_level{kLoudestVolume, false} {}

void PulseStreamLevel::Connect(pa_context* context) {
    m_context = context;
    m_listed = m_read = m_restores = false;
    pa_ext_stream_restore_set_subscribe_cb(
        context, [](pa_context*, void* self) { static_cast<PulseStreamLevel*>(self)->OnRestoreChange(); },
        this);
    Forget(pa_ext_stream_restore_subscribe(context, 1, nullptr, nullptr));
    AskStreams();
    AskRestore();
}

void PulseStreamLevel::Lose() {
    m_streamQuestion.Cancel();
    m_restoreQuestion.Cancel();
    if (m_context != nullptr) pa_ext_stream_restore_set_subscribe_cb(m_context, nullptr, nullptr);
    m_context = nullptr;
    m_stream.reset();
}

void PulseStreamLevel::OnStreamEvent(pa_subscription_event_type_t event, std::uint32_t index) {
    if (event == PA_SUBSCRIPTION_EVENT_NEW) {
        AskStreams();
    } else if (m_stream == index) {
        if (event == PA_SUBSCRIPTION_EVENT_REMOVE) m_stream.reset();
        AskStreams();
    }
}

void PulseStreamLevel::OnRestoreChange() {
    // While there is a stream it says all there is to know.
    if (!m_stream) AskRestore();
}

void PulseStreamLevel::SetVolume(DWORD value) {
    m_streamQuestion.MakeStale();
    m_restoreQuestion.MakeStale();
    const bool differs = std::exchange(m_level.volume, value) != value;
    SendVolume();
    if (differs) m_changed(kWaveVolumeId);
}

void PulseStreamLevel::SetMuted(bool muted) {
    m_streamQuestion.MakeStale();
    m_restoreQuestion.MakeStale();
    const bool differs = std::exchange(m_level.muted, muted) != muted;
    SendMuted();
    if (differs) m_changed(kWaveMuteId);
}

void PulseStreamLevel::SendVolume() {
    if (!m_stream) return WriteRestore();
    pa_cvolume volume;
    pa_cvolume_set(&volume, m_channels, ToServer(m_level.volume));
    Forget(pa_context_set_sink_input_volume(m_context, *m_stream, &volume, nullptr, nullptr));
}

void PulseStreamLevel::SendMuted() {
    if (!m_stream) return WriteRestore();
    Forget(pa_context_set_sink_input_mute(m_context, *m_stream, m_level.muted ? 1 : 0, nullptr, nullptr));
}

void PulseStreamLevel::WriteRestore() {
    if (!m_restores) return;
    pa_ext_stream_restore_info entry{};
    entry.name = kRestoreName;
    pa_channel_map_init_mono(&entry.channel_map);
    pa_cvolume_set(&entry.volume, 1, ToServer(m_level.volume));
    entry.device = m_device.empty() ? nullptr : m_device.c_str();
    entry.mute = m_level.muted ? 1 : 0;
    Forget(pa_ext_stream_restore_write(m_context, PA_UPDATE_REPLACE, &entry, 1, 1, nullptr, nullptr));
}

void PulseStreamLevel::AskStreams() {
    m_streamQuestion.Ask([this] {
        m_newStream.reset();
        return pa_context_get_sink_input_info_list(
            m_context,
            [](pa_context*, const pa_sink_input_info* info, int end, void* self) {
                static_cast<PulseStreamLevel*>(self)->OnStream(info, end != 0);
            },
            this);
    });
}

void PulseStreamLevel::OnStream(const pa_sink_input_info* info, bool end) {
    if (!end) {
        if (info->client == pa_context_get_index(m_context))
            m_newStream = OwnStream{info->index,
                                    info->volume.channels,
                                    {FromServer(pa_cvolume_max(&info->volume)), info->mute != 0}};
        return;
    }
    if (!m_streamQuestion.IsCurrent()) {
        AskStreams();
        return;
    }
    const bool started = m_newStream && m_stream != m_newStream->index;
    m_stream.reset();
    if (m_newStream) {
        m_stream = m_newStream->index;
        m_channels = m_newStream->channels;
        if (started && m_read && !m_restores) {
            SendVolume();
            SendMuted();
        } else {
            Adopt(m_newStream->level);
        }
    }
    m_listed = true;
    m_onSettled();
}

void PulseStreamLevel::AskRestore() {
    m_restoreQuestion.Ask([this] {
        m_newRestored.reset();
        return pa_ext_stream_restore_read(
            m_context,
            [](pa_context*, const pa_ext_stream_restore_info* info, int end, void* self) {
                static_cast<PulseStreamLevel*>(self)->OnRestored(info, end);
            },
            this);
    });
}

void PulseStreamLevel::OnRestored(const pa_ext_stream_restore_info* info, int end) {
    if (end == 0) {
        if (std::string_view(info->name) != kRestoreName) return;
        m_device = info->device != nullptr ? info->device : "";
        m_newRestored =
            Level{info->volume.channels != 0 ? FromServer(pa_cvolume_max(&info->volume)) : kLoudestVolume,
                  info->mute != 0};
        return;
    }
    if (!m_restoreQuestion.IsCurrent()) {
        AskRestore();
        return;
    }
    m_restores = end > 0;
    if (m_restores && !m_stream) Adopt(m_newRestored.value_or(Level{kLoudestVolume, false}));
    m_read = true;
    m_onSettled();
}

void PulseStreamLevel::Adopt(Level level) {
    const Level before = std::exchange(m_level, level);
    if (before.volume != level.volume) m_changed(kWaveVolumeId);
    if (before.muted != level.muted) m_changed(kWaveMuteId);
}
