// What is known of the server's volumes, kept up to date by what the server announces, so that reading costs
// nothing and waits for nobody.
#pragma once

#include <pulse/subscribe.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/pulse/pulse_connection.h"
#include "platform/pulse/pulse_peak_meter.h"
#include "platform/pulse/pulse_sink_level.h"
#include "platform/pulse/pulse_stream_level.h"
#include "platform/sound/mixer_driver.h"

// Any thread, the lock not held, unless it says otherwise.
class PulseMixerState final : private ConnectionWatcher {
public:
    explicit PulseMixerState(std::shared_ptr<PulseConnection> connection);
    ~PulseMixerState() override;

    // Waits, a second at most, until the server has told its volumes. False when there is no default sink or
    // no server that answers.
    bool WaitKnown();

    void Add(std::shared_ptr<MixerListener> listener);
    void Remove(const std::shared_ptr<MixerListener>& listener);

    // MMSYSERR_NODRIVER while the server is away, but for the meter, which reads 0 then; the server is looked
    // for again, once a second at most.
    MMRESULT GetName(std::string& name);
    MMRESULT GetValue(DWORD controlId, DWORD& value);
    MMRESULT SetValue(DWORD controlId, DWORD value);

private:
    // Lock held, all of them.
    void OnConnected() override;
    void OnLost() override;
    void OnEvent(pa_subscription_event_type_t event, std::uint32_t index);
    void Announce(DWORD controlId);
    bool Available();

    const std::shared_ptr<PulseConnection> m_connection;
    PulseSinkLevel m_sink;
    PulseStreamLevel m_stream;
    std::optional<PulsePeakMeter> m_meter;
    std::vector<std::shared_ptr<MixerListener>> m_listeners;
    PulseLoop::Clock::time_point m_lastLook{};
};
