// SPDX-License-Identifier: MIT
// Volume and mute of a sink, as the server last told: of the default one, or of the one that the player's
// stream is on. Everything with the lock held.
#pragma once

#include <pulse/context.h>
#include <pulse/introspect.h>

#include <cstdint>
#include <optional>
#include <string>

#include "platform/pulse/own_volumes.h"
#include "platform/pulse/pulse_level.h"
#include "platform/pulse/pulse_loop.h"
#include "platform/pulse/pulse_question.h"

class PulseSinkLevel {
public:
    explicit PulseSinkLevel(PulseLoop& loop) : m_loop(loop) {}

    void Connect(pa_context* context);  // the connection is there
    void Lose();                        // it is gone
    // The index of the sink to be followed; none for the default one.
    void Follow(std::optional<std::uint32_t> sink);
    // Something about the sinks has changed.
    void Ask();

    // Whether the first answer has come; the loop is signalled when it does.
    bool Settled() const { return m_settled; }
    bool Known() const { return m_known; }

    // While Known.
    const std::string& Description() const { return m_description; }
    PulseLevel Level() const { return {LoudestOf(m_volume), m_muted}; }
    void SetVolume(DWORD value);
    void SetMuted(bool muted);

private:
    void OnSink(const pa_sink_info* info, int end);

    PulseLoop& m_loop;
    pa_context* m_context = nullptr;
    PulseQuestion m_question;
    std::optional<std::uint32_t> m_followed;
    bool m_settled = false;

    bool m_known = false;
    std::uint32_t m_index = 0;
    std::string m_description;
    pa_cvolume m_volume{};
    pa_cvolume m_balance{};  // the channels' shares, which a volume of 0 has not
    bool m_muted = false;
    OwnVolumes m_own;

    // The answer being received.
    struct Answer {
        std::uint32_t index;
        pa_cvolume volume;
        bool muted;
        std::string description;
    };
    std::optional<Answer> m_answer;
};
