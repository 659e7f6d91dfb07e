// Volume and mute of the default sink, as the server last told. Everything with the lock held.
#pragma once

#include <pulse/context.h>
#include <pulse/introspect.h>
#include <pulse/subscribe.h>

#include <cstdint>
#include <functional>
#include <string>

#include "platform/pulse/pulse_mixer_controls.h"
#include "platform/pulse/pulse_question.h"

class PulseSinkLevel {
public:
    // `settled` is called whenever Settled may have become true.
    PulseSinkLevel(ControlChanged changed, std::function<void()> settled);

    void Connect(pa_context* context);  // the connection is there
    void Lose();                        // it is gone
    void OnServerChange();
    void OnSinkEvent(pa_subscription_event_type_t event, std::uint32_t index);

    // Whether the first answers have come.
    bool Settled() const { return m_settled; }
    bool Known() const { return m_known; }
    const std::string& Description() const { return m_description; }

    // While Known.
    DWORD Volume() const;
    bool Muted() const { return m_muted; }
    void SetVolume(DWORD value);
    void SetMuted(bool muted);

private:
    void AskServer();
    void AskSink();
    void OnServer(const pa_server_info* info);
    void OnSink(const pa_sink_info* info, bool end);
    void Settle();

    const ControlChanged m_changed;
    const std::function<void()> m_onSettled;
    pa_context* m_context = nullptr;
    PulseQuestion m_serverQuestion;
    PulseQuestion m_sinkQuestion;
    bool m_settled = false;
    std::string m_name;  // of the default sink; empty when there is none

    bool m_known = false;
    std::uint32_t m_index = 0;
    std::string m_description;
    pa_cvolume m_volume{};
    bool m_muted = false;

    // The answer being received.
    bool m_answered = false;
    std::uint32_t m_newIndex = 0;
    pa_cvolume m_newVolume{};
    bool m_newMuted = false;
};
