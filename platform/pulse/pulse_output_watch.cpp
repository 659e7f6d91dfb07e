// SPDX-License-Identifier: MIT
#include "platform/pulse/pulse_output_watch.h"

#include "platform/pulse/pulse_loop.h"

namespace {

// At the ear of one person.
bool IsHeadphones(const pa_sink_port_info* port) {
    if (port == nullptr) return false;
    switch (port->type) {
        case PA_DEVICE_PORT_TYPE_HEADPHONES:
        case PA_DEVICE_PORT_TYPE_HEADSET:
        case PA_DEVICE_PORT_TYPE_HANDSET:
        case PA_DEVICE_PORT_TYPE_EARPIECE:
            return true;
        default:
            return false;
    }
}

}  // namespace

void PulseOutputWatch::Follow(pa_context* context, std::uint32_t sink) {
    if (m_sink == sink) return;
    Leave();
    m_context = context;
    m_sink = sink;
    AskPort();
}

void PulseOutputWatch::Leave() {
    if (!m_sink) return;
    m_portQuestion.Cancel();
    m_headphones = false;
    const std::uint32_t left = *std::exchange(m_sink, std::nullopt);
    if (m_leftQuestion.UnderWay()) return;
    m_leftQuestion.Ask([&] {
        m_stays = false;
        return pa_context_get_sink_info_by_index(m_context, left,
                                                 PulseCallback<&PulseOutputWatch::OnSinkLeft>{}, this);
    });
}

void PulseOutputWatch::OnSinkChanged(std::uint32_t sink) {
    if (m_sink == sink) AskPort();
}

void PulseOutputWatch::Forget() {
    m_portQuestion.Cancel();
    m_leftQuestion.Cancel();
    m_sink.reset();
    m_headphones = false;
}

void PulseOutputWatch::AskPort() {
    m_portQuestion.Ask([this] {
        return pa_context_get_sink_info_by_index(m_context, *m_sink,
                                                 PulseCallback<&PulseOutputWatch::OnSink>{}, this);
    });
}

void PulseOutputWatch::OnSink(const pa_sink_info* info, int end) {
    if (end == 0) {
        const bool headphones = IsHeadphones(info->active_port);
        if (std::exchange(m_headphones, headphones) && !headphones) m_onUnplugged();
    } else if (!m_portQuestion.IsCurrent()) {
        AskPort();
    }
}

// Headphones may be a sink of their own, which stays when they are unplugged.
void PulseOutputWatch::OnSinkLeft(const pa_sink_info* info, int end) {
    if (end == 0) {
        m_stays = !IsHeadphones(info->active_port) || info->active_port->available != PA_PORT_AVAILABLE_NO;
        return;
    }
    m_leftQuestion.IsCurrent();
    if (!m_stays) m_onUnplugged();
}
