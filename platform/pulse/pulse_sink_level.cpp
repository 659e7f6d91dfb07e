// SPDX-License-Identifier: MIT
#include "platform/pulse/pulse_sink_level.h"

#include <utility>

void PulseSinkLevel::Connect(pa_context* context) {
    m_context = context;
    m_settled = false;
    Ask();
}

void PulseSinkLevel::Lose() {
    m_question.Cancel();
    m_context = nullptr;
    m_known = false;
    m_own.Clear();
    m_followed.reset();
}

void PulseSinkLevel::Follow(std::optional<std::uint32_t> sink) {
    if (std::exchange(m_followed, sink) != sink) Ask();
}

void PulseSinkLevel::SetVolume(DWORD value) {
    m_question.MakeStale();
    const DWORD before = LoudestOf(m_volume);
    m_own.Set(before, value);
    // The loudest channel takes the value and the others keep their share.
    m_volume = m_balance;
    pa_cvolume_scale(&m_volume, ToServer(value));
    Forget(pa_context_set_sink_volume_by_index(m_context, m_index, &m_volume, nullptr, nullptr));
    if (value != before) NotifyControlChange(kMasterVolume);
}

void PulseSinkLevel::SetMuted(bool muted) {
    m_question.MakeStale();
    Forget(pa_context_set_sink_mute_by_index(m_context, m_index, muted ? 1 : 0, nullptr, nullptr));
    if (std::exchange(m_muted, muted) != muted) NotifyControlChange(kMasterMute);
}

void PulseSinkLevel::Ask() {
    m_question.Ask([this] {
        m_answer.reset();
        const PulseCallback<&PulseSinkLevel::OnSink> answered;
        return m_followed ? pa_context_get_sink_info_by_index(m_context, *m_followed, answered, this)
                          : pa_context_get_sink_info_by_name(m_context, "@DEFAULT_SINK@", answered, this);
    });
}

void PulseSinkLevel::OnSink(const pa_sink_info* info, int end) {
    if (end == 0) {
        m_answer = Answer{info->index, info->volume, info->mute != 0,
                          info->description != nullptr ? info->description : info->name};
        return;
    }
    if (!m_question.IsCurrent()) return Ask();
    m_settled = true;
    // Another sink is announced even where its values are the same: its name is not.
    const bool other = m_answer && (!m_known || m_answer->index != m_index);
    const PulseLevel before = Level();
    m_known = m_answer.has_value();
    if (m_known) {
        m_index = m_answer->index;
        m_description = std::move(m_answer->description);
        m_muted = m_answer->muted;
    }
    if (other) m_own.Clear();
    if (m_known && !m_own.IsOutdated(LoudestOf(m_answer->volume))) {
        // A volume of one's own making comes back rounded, and at 0 without shares.
        const bool silent = pa_cvolume_max(&m_answer->volume) == PA_VOLUME_MUTED;
        const bool own = !other && pa_cvolume_equal(&m_answer->volume, &m_volume) != 0;
        if (other || m_balance.channels != m_answer->volume.channels || (!own && !silent))
            m_balance = m_answer->volume;
        m_volume = m_answer->volume;
    }
    const PulseLevel now = Level();
    if (m_known && (other || now.volume != before.volume)) NotifyControlChange(kMasterVolume);
    if (m_known && (other || now.muted != before.muted)) NotifyControlChange(kMasterMute);
    m_loop.Signal();
}
