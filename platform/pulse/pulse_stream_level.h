// Volume and mute of what this program plays: of its stream while there is one, of what the server remembers
// for it while there is none. Everything with the lock held.
//
// A server that remembers nothing (no stream-restore extension) gets what was set here when a stream starts.
#pragma once

#include <pulse/context.h>
#include <pulse/ext-stream-restore.h>
#include <pulse/introspect.h>
#include <pulse/subscribe.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/pulse/pulse_mixer_controls.h"
#include "platform/pulse/pulse_question.h"

class PulseStreamLevel {
public:
    // `settled` is called whenever Settled may have become true.
    PulseStreamLevel(ControlChanged changed, std::function<void()> settled);

    void Connect(pa_context* context);  // the connection is there
    void Lose();                        // it is gone
    void OnStreamEvent(pa_subscription_event_type_t event, std::uint32_t index);
    void OnRestoreChange();

    // Whether the first answers have come.
    bool Settled() const { return m_context != nullptr && m_listed && m_read; }

    // The stream on the server, if there is one.
    std::optional<std::uint32_t> Stream() const { return m_stream; }

    DWORD Volume() const { return m_level.volume; }
    bool Muted() const { return m_level.muted; }
    void SetVolume(DWORD value);
    void SetMuted(bool muted);

private:
    struct Level {
        DWORD volume;
        bool muted;
    };
    struct OwnStream {
        std::uint32_t index;
        std::uint8_t channels;
        Level level;
    };

    void AskStreams();
    void AskRestore();
    void OnStream(const pa_sink_input_info* info, bool end);
    void OnRestored(const pa_ext_stream_restore_info* info, int end);
    void Adopt(Level level);
    void SendVolume();
    void SendMuted();
    void WriteRestore();

    const ControlChanged m_changed;
    const std::function<void()> m_onSettled;
    pa_context* m_context = nullptr;
    PulseQuestion m_streamQuestion;
    PulseQuestion m_restoreQuestion;
    bool m_listed = false;
    bool m_read = false;
    bool m_restores = false;  // the server has the extension

    std::optional<std::uint32_t> m_stream;
    std::uint8_t m_channels = 1;
    Level m_level;
    std::string m_device;  // that the server remembers for this program, kept when its entry is written

    // The answers being received.
    std::optional<OwnStream> m_newStream;
    std::optional<Level> m_newRestored;
};
