// SPDX-License-Identifier: MIT
// Whether what a stream was listened to on has been unplugged: headphones, or a device that is gone with its
// sink. Everything with the lock held.
//
// A person who moves the stream to another output has unplugged nothing, so when the stream leaves a sink the
// server is asked whether that is still there.
#pragma once

#include <pulse/context.h>
#include <pulse/introspect.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

#include "platform/pulse/pulse_question.h"

class PulseOutputWatch {
public:
    explicit PulseOutputWatch(std::function<void()> unplugged) : m_onUnplugged(std::move(unplugged)) {}

    // The stream is on this sink now.
    void Follow(pa_context* context, std::uint32_t sink);
    // It is on none any more, though the server is there.
    void Leave();
    // Something about a sink has changed.
    void OnSinkChanged(std::uint32_t sink);
    // The server is gone, or whoever wants to know.
    void Forget();

private:
    void AskPort();
    void OnSink(const pa_sink_info* info, int end);
    void OnSinkLeft(const pa_sink_info* info, int end);

    const std::function<void()> m_onUnplugged;
    pa_context* m_context = nullptr;
    PulseQuestion m_portQuestion;
    PulseQuestion m_leftQuestion;
    std::optional<std::uint32_t> m_sink;
    bool m_headphones = false;  // that sink plays through them
    bool m_stays = false;       // the answer being received: the sink that was left can still be heard
};
