// SPDX-License-Identifier: MIT
#include "platform/pulse/pulse_peak_meter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "platform/pulse/pulse_stream_end.h"

namespace {

using namespace std::chrono_literals;

constexpr auto kIdle = 1s;           // without a reading, until the meter goes
constexpr auto kOpenAgain = 500ms;   // between attempts
constexpr auto kStale = 250ms;       // without news: nothing sounds
constexpr std::uint32_t kRate = 25;  // peaks a second, a little more often than anyone looks

}  // namespace

PulsePeakMeter::PulsePeakMeter(PulseLoop& loop)
    : m_closing(loop, [this] {
          const auto idleFrom = m_lastRead + kIdle;
          if (PulseLoop::Clock::now() < idleFrom)
              m_closing.Set(idleFrom);
          else
              Close();
      }) {}

LONG PulsePeakMeter::Read(pa_context* context, std::uint32_t stream) {
    const auto now = PulseLoop::Clock::now();
    m_lastRead = now;
    if (m_meter != nullptr && m_stream != stream) Close();
    if (m_meter == nullptr) Open(context, stream);
    if (m_meter == nullptr || now - m_lastData > kStale) return 0;
    // Between two peaks the last one stands.
    const float peak = m_peak;
    m_fresh = false;
    return static_cast<LONG>(std::lround(std::clamp(peak, 0.0F, 1.0F) * 32767));
}

void PulsePeakMeter::Close() {
    m_closing.Cancel();
    if (m_meter == nullptr) return;
    EndStream(std::exchange(m_meter, nullptr));
    m_peak = 0;
    m_fresh = false;
}

void PulsePeakMeter::Open(pa_context* context, std::uint32_t stream) {
    const auto now = PulseLoop::Clock::now();
    if (stream == m_stream && now - m_lastOpen < kOpenAgain) return;
    m_lastOpen = now;
    m_stream = stream;

    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, kRate, 1};
    m_meter = pa_stream_new(context, "Level meter", &format, nullptr);
    if (m_meter == nullptr) return;
    pa_stream_set_state_callback(m_meter, PulseCallback<&PulsePeakMeter::OnState>{}, this);
    pa_stream_set_read_callback(m_meter, PulseCallback<&PulsePeakMeter::OnData>{}, this);
    pa_stream_set_monitor_stream(m_meter, stream);
    pa_buffer_attr buffer{};
    buffer.maxlength = static_cast<std::uint32_t>(-1);
    buffer.fragsize = sizeof(float);
    constexpr auto flags = static_cast<pa_stream_flags_t>(PA_STREAM_PEAK_DETECT | PA_STREAM_ADJUST_LATENCY |
                                                          PA_STREAM_DONT_MOVE);
    if (pa_stream_connect_record(m_meter, nullptr, &buffer, flags) < 0) {
        Close();
        return;
    }
    m_closing.Set(now + kIdle);
}

void PulsePeakMeter::OnState() {
    if (!PA_STREAM_IS_GOOD(pa_stream_get_state(m_meter))) Close();
}

void PulsePeakMeter::OnData(std::size_t) {
    const void* data = nullptr;
    std::size_t bytes = 0;
    while (pa_stream_readable_size(m_meter) > 0 && pa_stream_peek(m_meter, &data, &bytes) == 0 &&
           bytes != 0) {
        for (std::size_t at = 0; data != nullptr && at + sizeof(float) <= bytes; at += sizeof(float)) {
            float peak;
            std::memcpy(&peak, static_cast<const char*>(data) + at, sizeof peak);
            m_peak = std::exchange(m_fresh, true) ? std::max(m_peak, peak) : peak;
        }
        pa_stream_drop(m_meter);
        m_lastData = PulseLoop::Clock::now();
    }
}
