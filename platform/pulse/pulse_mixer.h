// SPDX-License-Identifier: MIT
// The sound server as a mixer: what is known of its volumes, kept up to date by what the server announces, so
// that reading costs nothing and waits for nobody.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/pulse/pulse_connection.h"
#include "platform/pulse/pulse_peak_meter.h"
#include "platform/pulse/pulse_sink_level.h"
#include "platform/pulse/pulse_stream_level.h"
#include "platform/sound/sound_drivers.h"

// The speakers are the sink that the player's stream is on, the default one while there is no stream.
class PulseMixer final : public MixerDriver, private ConnectionWatcher {
public:
    explicit PulseMixer(std::shared_ptr<PulseConnection> connection);
    ~PulseMixer() override;

    // Waits until the server has told its volumes. False when there is no sink or no server that answers.
    bool Exists() override;

    // While the server is away it is looked for again, once a second at most, and the meter reads 0.
    MMRESULT GetName(std::string& name) override;
    MMRESULT GetValue(DWORD controlId, DWORD& value) override;
    MMRESULT SetValue(DWORD controlId, DWORD value) override;

private:
    // Lock held, all of them.
    void OnConnected() override;
    void OnLost() override;
    void OnChange(pa_subscription_event_type_t facility, pa_subscription_event_type_t type,
                  std::uint32_t index) override;
    bool Available();

    const std::shared_ptr<PulseConnection> m_connection;
    PulseSinkLevel m_sink;
    PulseStreamLevel m_stream;
    std::optional<PulsePeakMeter> m_meter;
    PulseLoop::Clock::time_point m_lastLook{};
};
