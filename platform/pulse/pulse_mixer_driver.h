// The sound server's default sink as mixer device 0.
#pragma once

#include <memory>

#include "platform/pulse/pulse_connection.h"
#include "platform/sound/mixer_driver.h"

class PulseMixerState;

class PulseMixerDriver : public MixerDriver {
public:
    explicit PulseMixerDriver(std::shared_ptr<PulseConnection> connection);

    UINT Count() override;
    MMRESULT Open(UINT device, std::shared_ptr<MixerListener> listener,
                  std::unique_ptr<Mixer>& mixer) override;

private:
    std::shared_ptr<PulseMixerState> m_state;
};
