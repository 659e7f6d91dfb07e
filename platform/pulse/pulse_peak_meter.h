// SPDX-License-Identifier: MIT
// The loudest sample of what this program plays, after the stream's own volume. Everything with the lock
// held.
//
// The server shows who listens to its monitors, so the meter is there only while it is being read: the first
// reading opens it, and it goes when none has come for a second.
#pragma once

#include <pulse/context.h>
#include <pulse/stream.h>

#include <cstdint>

#include "platform/framework/wintypes.h"
#include "platform/pulse/pulse_loop.h"

class PulsePeakMeter {
public:
    explicit PulsePeakMeter(PulseLoop& loop);
    ~PulsePeakMeter() { Close(); }

    // The loudest sample since the last reading, 0 to 32767, of the stream of that index.
    LONG Read(pa_context* context, std::uint32_t stream);
    void Close();

private:
    void Open(pa_context* context, std::uint32_t stream);
    void OnState();
    void OnData(std::size_t bytes);

    PulseLoop::Timer m_closing;
    PulseLoop::Clock::time_point m_lastRead;
    PulseLoop::Clock::time_point m_lastOpen;
    PulseLoop::Clock::time_point m_lastData;
    pa_stream* m_meter = nullptr;
    std::uint32_t m_stream = 0;
    float m_peak = 0;      // since the last reading
    bool m_fresh = false;  // there has been one since
};
