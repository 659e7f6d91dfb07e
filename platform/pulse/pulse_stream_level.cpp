// SPDX-License-Identifier: MIT
#include "platform/pulse/pulse_stream_level.h"

#include <pulse/channelmap.h>

#include <string_view>
#include <utility>

#include "platform/pulse/identity.h"
#include "platform/pulse/pulse_loop.h"

void PulseStreamLevel::Connect(pa_context* context) {
    m_context = context;
    m_listed = m_read = m_restores = false;
    pa_ext_stream_restore_set_subscribe_cb(context, PulseCallback<&PulseStreamLevel::AskRestore>{}, this);
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
    m_own.Clear();
}

void PulseStreamLevel::OnStreamEvent(pa_subscription_event_type_t event, std::uint32_t index) {
    if (event != PA_SUBSCRIPTION_EVENT_NEW && m_stream != index) return;
    if (event == PA_SUBSCRIPTION_EVENT_REMOVE) {
        // What the server remembers may have changed without an announcement.
        m_stream.reset();
        AskRestore();
    }
    AskStreams();
}

void PulseStreamLevel::SetVolume(DWORD value) {
    if (m_stream) m_own.Set(m_level.volume, value);
    Adopt({value, m_level.muted});
    Send(true, false);
}

void PulseStreamLevel::SetMuted(bool muted) {
    Adopt({m_level.volume, muted});
    Send(false, true);
}

void PulseStreamLevel::Send(bool sendVolume, bool sendMuted) {
    m_streamQuestion.MakeStale();
    m_restoreQuestion.MakeStale();
    pa_cvolume volume;
    pa_cvolume_set(&volume, m_channels, ToServer(m_level.volume));
    if (m_stream) {
        if (sendVolume)
            Forget(pa_context_set_sink_input_volume(m_context, *m_stream, &volume, nullptr, nullptr));
        if (sendMuted)
            Forget(pa_context_set_sink_input_mute(m_context, *m_stream, m_level.muted ? 1 : 0, nullptr,
                                                  nullptr));
    } else if (m_restores) {
        pa_ext_stream_restore_info entry{};
        entry.name = kRestoreName;
        pa_channel_map_init_mono(&entry.channel_map);
        pa_cvolume_set(&entry.volume, 1, ToServer(m_level.volume));
        entry.device = m_device.empty() ? nullptr : m_device.c_str();
        entry.mute = m_level.muted ? 1 : 0;
        m_restored = m_level;
        Forget(pa_ext_stream_restore_write(m_context, PA_UPDATE_REPLACE, &entry, 1, 1, nullptr, nullptr));
    }
}

void PulseStreamLevel::AskStreams() {
    m_streamQuestion.Ask([this] {
        m_newStream.reset();
        return pa_context_get_sink_input_info_list(m_context, PulseCallback<&PulseStreamLevel::OnStream>{},
                                                   this);
    });
}

void PulseStreamLevel::OnStream(const pa_sink_input_info* info, int end) {
    if (end == 0) {
        if (info->client == pa_context_get_index(m_context))
            m_newStream = OwnStream{info->index,
                                    info->sink,
                                    info->volume.channels,
                                    info->corked != 0,
                                    {LoudestOf(info->volume), info->mute != 0}};
        return;
    }
    if (!m_streamQuestion.IsCurrent()) return AskStreams();
    const bool started = m_newStream && m_stream != m_newStream->index;
    m_stream.reset();
    if (!m_newStream || started) m_own.Clear();
    if (m_newStream) {
        m_stream = m_newStream->index;
        m_sink = m_newStream->sink;
        m_channels = m_newStream->channels;
        m_corked = m_newStream->corked;
        if (started && m_read && !m_restores)
            Send(true, true);
        else if (!started || m_newStream->level.volume != 0 || m_connection.IsPulseAudio())
            // PipeWire lists a new stream as silent until it knows its volume, which it then announces.
            Adopt({m_own.IsOutdated(m_newStream->level.volume) ? m_level.volume : m_newStream->level.volume,
                   m_newStream->level.muted});
    }
    m_listed = true;
    m_onAnswered();
}

void PulseStreamLevel::AskRestore() {
    m_restoreQuestion.Ask([this] {
        m_newRestored.reset();
        return pa_ext_stream_restore_read(m_context, PulseCallback<&PulseStreamLevel::OnRestored>{}, this);
    });
}

void PulseStreamLevel::OnRestored(const pa_ext_stream_restore_info* info, int end) {
    if (end == 0) {
        if (std::string_view(info->name) != kRestoreName) return;
        m_device = info->device != nullptr ? info->device : "";
        m_newRestored = PulseLevel{LoudestOf(info->volume), info->mute != 0};
        return;
    }
    if (!m_restoreQuestion.IsCurrent()) return AskRestore();
    m_restores = end > 0;
    // PipeWire's server says what was last written here, and not what it remembers of a stream since then; to
    // a client that came while it started it may say for good that there is nothing.
    const PulseLevel restored = m_newRestored.value_or(PulseLevel{});
    const bool news =
        m_connection.IsPulseAudio() || !m_read || (m_newRestored.has_value() && restored != m_restored);
    if (news) m_restored = restored;
    // While there is a stream it says all there is to know of the level.
    if (m_restores && !m_stream && news) Adopt(restored);
    m_read = true;
    m_onAnswered();
}

void PulseStreamLevel::Adopt(PulseLevel level) {
    const PulseLevel before = std::exchange(m_level, level);
    if (before.volume != level.volume) NotifyControlChange(kWaveVolume);
    if (before.muted != level.muted) NotifyControlChange(kWaveMute);
}
