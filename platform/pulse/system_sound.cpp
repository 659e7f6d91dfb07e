// SPDX-License-Identifier: MIT
#include "platform/sound/system_sound.h"

#include <memory>

#include "platform/pulse/pulse_mixer.h"
#include "platform/pulse/pulse_wave_stream.h"

void UseSystemSound() {
    const auto connection = std::make_shared<PulseConnection>();
    SetSoundDrivers(std::make_shared<PulseWaveDriver>(connection), std::make_shared<PulseMixer>(connection));
}
