#include "platform/sound/system_sound.h"

#include <memory>

#include "platform/pulse/pulse_connection.h"
#include "platform/pulse/pulse_mixer_driver.h"
#include "platform/pulse/pulse_wave_driver.h"
#include "platform/sound/mixer_driver.h"
#include "platform/sound/wave_driver.h"

void UseSystemSound() {
    const auto connection = std::make_shared<PulseConnection>();
    SetWaveDriver(std::make_shared<PulseWaveDriver>(connection));
    SetMixerDriver(std::make_shared<PulseMixerDriver>(connection));
}
