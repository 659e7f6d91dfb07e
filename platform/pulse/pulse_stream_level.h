// SPDX-License-Identifier: MIT
// Volume and mute of what this program plays: of its stream while there is one, of what the server remembers
// for it while there is none. Changes are notified. Everything with the lock held.
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
#include <utility>

#include "platform/pulse/own_volumes.h"
#include "platform/pulse/pulse_connection.h"
#include "platform/pulse/pulse_level.h"
#include "platform/pulse/pulse_question.h"

class PulseStreamLevel {
public:
    // `answered` is called when Settled, Stream or Sink may have changed.
    PulseStreamLevel(const PulseConnection& connection, std::function<void()> answered)
        : m_connection(connection), m_onAnswered(std::move(answered)) {}

    void Connect(pa_context* context);  // the connection is there
    void Lose();                        // it is gone
    void OnStreamEvent(pa_subscription_event_type_t event, std::uint32_t index);

    // Whether the first answers have come.
    bool Settled() const { return m_context != nullptr && m_listed && m_read; }

    // The stream on the server and the sink that it is on, if there is one.
    std::optional<std::uint32_t> Stream() const { return m_stream; }
    bool Corked() const { return m_corked; }
    std::optional<std::uint32_t> Sink() const { return m_stream ? m_sink : std::nullopt; }

    PulseLevel Level() const { return m_level; }
    void SetVolume(DWORD value);
    void SetMuted(bool muted);

private:
    struct OwnStream {
        std::uint32_t index;
        std::uint32_t sink;
        std::uint8_t channels;
        bool corked;
        PulseLevel level;
    };

    void AskStreams();
    void AskRestore();
    void OnStream(const pa_sink_input_info* info, int end);
    void OnRestored(const pa_ext_stream_restore_info* info, int end);
    void Adopt(PulseLevel level);
    // What is not sent is left as it is: what is sent is remembered, and a mute may be the server's for a
    // call alone.
    void Send(bool sendVolume, bool sendMuted);

    const PulseConnection& m_connection;
    const std::function<void()> m_onAnswered;
    pa_context* m_context = nullptr;
    PulseQuestion m_streamQuestion;
    PulseQuestion m_restoreQuestion;
    bool m_listed = false;
    bool m_read = false;
    bool m_restores = false;  // the server has the extension

    std::optional<std::uint32_t> m_stream;
    std::optional<std::uint32_t> m_sink;
    std::uint8_t m_channels = 1;
    bool m_corked = false;
    PulseLevel m_level;
    OwnVolumes m_own;
    PulseLevel m_restored;  // what the server last said, or was told, that it remembers
    std::string m_device;   // that the server remembers for this program, kept when its entry is written

    // The answers being received.
    std::optional<OwnStream> m_newStream;
    std::optional<PulseLevel> m_newRestored;
};
